#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>

namespace hs {

/// Bounds-checked reader over a borrowed byte range. Every read past the end returns zero (or an
/// empty range), leaves the position at the end and sets a sticky overrun flag, so a parser can
/// read a whole record and test `ok()` once.
class ByteReader {
 public:
  ByteReader() = default;
  ByteReader(const void* data, size_t size)
      : data_(static_cast<const uint8_t*>(data)), size_(data ? size : 0) {}

  size_t size() const { return size_; }
  size_t tell() const { return pos_; }
  size_t remaining() const { return size_ - pos_; }
  bool atEnd() const { return pos_ >= size_; }
  bool ok() const { return !overrun_; }
  bool overrun() const { return overrun_; }
  const uint8_t* data() const { return data_; }
  /// Pointer to the current position (valid for `remaining()` bytes).
  const uint8_t* cursor() const { return data_ ? data_ + pos_ : nullptr; }

  /// Moves to an absolute position; past the end clamps and sets the overrun flag.
  bool seek(size_t pos) {
    if (pos > size_) {
      pos_ = size_;
      overrun_ = true;
      return false;
    }
    pos_ = pos;
    return true;
  }
  bool skip(size_t n) {
    if (n > remaining()) {
      pos_ = size_;
      overrun_ = true;
      return false;
    }
    pos_ += n;
    return true;
  }
  /// True when `n` more bytes can be read; does not touch the overrun flag.
  bool has(size_t n) const { return n <= remaining(); }

  uint8_t u8() {
    if (!has(1)) return fail<uint8_t>();
    return data_[pos_++];
  }
  /// The byte at the current position without consuming it; 0 (no flag) at the end.
  uint8_t peek8() const { return has(1) ? data_[pos_] : 0; }
  uint16_t u16be() {
    if (!has(2)) return fail<uint16_t>();
    uint16_t v = static_cast<uint16_t>((data_[pos_] << 8) | data_[pos_ + 1]);
    pos_ += 2;
    return v;
  }
  uint16_t u16le() {
    if (!has(2)) return fail<uint16_t>();
    uint16_t v = static_cast<uint16_t>(data_[pos_] | (data_[pos_ + 1] << 8));
    pos_ += 2;
    return v;
  }
  uint32_t u24be() {
    if (!has(3)) return fail<uint32_t>();
    uint32_t v = (uint32_t{data_[pos_]} << 16) | (uint32_t{data_[pos_ + 1]} << 8) |
                 uint32_t{data_[pos_ + 2]};
    pos_ += 3;
    return v;
  }
  uint32_t u32be() {
    if (!has(4)) return fail<uint32_t>();
    uint32_t v = (uint32_t{data_[pos_]} << 24) | (uint32_t{data_[pos_ + 1]} << 16) |
                 (uint32_t{data_[pos_ + 2]} << 8) | uint32_t{data_[pos_ + 3]};
    pos_ += 4;
    return v;
  }
  uint32_t u32le() {
    if (!has(4)) return fail<uint32_t>();
    uint32_t v = uint32_t{data_[pos_]} | (uint32_t{data_[pos_ + 1]} << 8) |
                 (uint32_t{data_[pos_ + 2]} << 16) | (uint32_t{data_[pos_ + 3]} << 24);
    pos_ += 4;
    return v;
  }
  int32_t i32le() { return static_cast<int32_t>(u32le()); }
  int32_t i32be() { return static_cast<int32_t>(u32be()); }

  /// A MIDI variable-length quantity: at most four bytes, seven bits each. A number cut short by
  /// the end of the data sets the overrun flag and returns 0.
  uint32_t vlq() {
    uint32_t v = 0;
    for (int i = 0; i < 4; ++i) {
      if (!has(1)) return fail<uint32_t>();
      uint8_t b = data_[pos_++];
      v = (v << 7) | (b & 0x7Fu);
      if (!(b & 0x80)) return v;
    }
    return v;  // a fifth continuation byte is left for the caller, as most readers do
  }

  /// Reads a four-character code as text; empty and overrun when fewer than four bytes remain.
  std::string fourcc() {
    if (!has(4)) return fail<std::string>();
    std::string s(reinterpret_cast<const char*>(data_ + pos_), 4);
    pos_ += 4;
    return s;
  }
  /// True and consumed when the next bytes equal `tag` (compared as bytes); otherwise false and
  /// the position is unchanged. Never sets the overrun flag.
  bool expect(const char* tag, size_t n) {
    if (!has(n) || std::memcmp(data_ + pos_, tag, n) != 0) return false;
    pos_ += n;
    return true;
  }
  bool startsWith(const char* tag, size_t n) const {
    return has(n) && std::memcmp(data_ + pos_, tag, n) == 0;
  }

  /// Copies `n` bytes to `out`; on overrun copies nothing and returns false.
  bool read(void* out, size_t n) {
    if (!has(n)) {
      fail<int>();
      return false;
    }
    if (n) std::memcpy(out, data_ + pos_, n);
    pos_ += n;
    return true;
  }
  /// Borrows `n` bytes and advances; null (and overrun) when they are not all there.
  const uint8_t* bytes(size_t n) {
    if (!has(n)) return fail<const uint8_t*>();
    const uint8_t* p = data_ + pos_;
    pos_ += n;
    return p;
  }
  /// A reader over the next `n` bytes, advancing past them. When fewer remain, the sub-reader gets
  /// what is there and this reader's overrun flag is set.
  ByteReader sub(size_t n) {
    size_t take = n <= remaining() ? n : remaining();
    ByteReader r(data_ ? data_ + pos_ : nullptr, take);
    pos_ += take;
    if (take < n) overrun_ = true;
    return r;
  }

 private:
  template <class T>
  T fail() {
    pos_ = size_;
    overrun_ = true;
    return T();
  }

  const uint8_t* data_ = nullptr;
  size_t size_ = 0;
  size_t pos_ = 0;
  bool overrun_ = false;
};

}  // namespace hs
