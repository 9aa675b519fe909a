#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

// Writing the primitives of the WAP binary header encoding. Header values are small and are built
// in a byte vector; the PDU goes to a sink that either stores or only counts, so the size of an
// encoding comes from the very code that writes it.
namespace hs {
namespace mms {

using Bytes = std::vector<uint8_t>;

/// Where an encoded PDU goes.
class PduSink {
 public:
  virtual ~PduSink() = default;
  virtual void Put(const uint8_t* data, size_t size) = 0;
  void Put(const Bytes& b) { Put(b.data(), b.size()); }
  /// Octets put so far.
  size_t Size() const { return size_; }
  /// True for a sink that only counts (what is put need not be exact, only its length).
  virtual bool Counting() const { return false; }

 protected:
  size_t size_ = 0;
};

/// Counts octets without keeping them.
class CountingSink : public PduSink {
 public:
  void Put(const uint8_t*, size_t size) override { size_ += size; }
  bool Counting() const override { return true; }
};

/// Appends to a byte vector.
class VectorSink : public PduSink {
 public:
  explicit VectorSink(Bytes* out) : out_(out) {}
  void Put(const uint8_t* data, size_t size) override {
    out_->insert(out_->end(), data, data + size);
    size_ += size;
  }

 private:
  Bytes* out_;
};

void PutUintvar(Bytes* b, uint32_t value);
/// Value-length: one octet up to 30, else 31 and a uintvar.
void PutValueLength(Bytes* b, size_t length);
/// Short-integer (0..127).
void PutShortInteger(Bytes* b, uint32_t value);
/// Long-integer in the fewest octets (at least one).
void PutLongInteger(Bytes* b, uint64_t value);
/// Short-integer when below 128, Long-integer otherwise.
void PutIntegerValue(Bytes* b, uint64_t value);
/// Text-string: the text up to any zero byte in it, a quote octet first when it starts with an
/// octet of 127 or more, then the terminator. Control characters other than tab, CR and LF
/// inside the text, and any first, are sent as blanks.
void PutTextString(Bytes* b, const std::string& text);
/// Quoted-string: '"', the text, the terminator.
void PutQuotedString(Bytes* b, const std::string& text);
/// Encoded-string-value: plain Text-string for ASCII, else with the UTF-8 charset.
void PutEncodedString(Bytes* b, const std::string& utf8);
/// `inner` preceded by its Value-length.
void PutWithLength(Bytes* b, const Bytes& inner);

}  // namespace mms
}  // namespace hs
