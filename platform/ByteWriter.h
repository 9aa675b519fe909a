#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <vector>

namespace hs {

/// Growable byte writer with an optional hard capacity. A write that would pass the capacity
/// writes nothing and sets a sticky overflow flag. Length fields are written as placeholders and
/// filled in afterwards with `patch*`.
class ByteWriter {
 public:
  static constexpr size_t kUnlimited = static_cast<size_t>(-1);

  explicit ByteWriter(size_t capacity = kUnlimited) : cap_(capacity) {}

  size_t size() const { return buf_.size(); }
  bool ok() const { return !overflow_; }
  bool overflow() const { return overflow_; }
  const std::vector<uint8_t>& buffer() const { return buf_; }
  std::vector<uint8_t>& buffer() { return buf_; }
  std::vector<uint8_t> take() { return std::move(buf_); }
  const uint8_t* data() const { return buf_.data(); }
  void reserve(size_t n) { buf_.reserve(n < cap_ ? n : cap_); }
  void clear() {
    buf_.clear();
    overflow_ = false;
  }

  bool u8(uint8_t v) { return put(&v, 1); }
  bool u16be(uint16_t v) {
    uint8_t b[2] = {uint8_t(v >> 8), uint8_t(v)};
    return put(b, 2);
  }
  bool u16le(uint16_t v) {
    uint8_t b[2] = {uint8_t(v), uint8_t(v >> 8)};
    return put(b, 2);
  }
  bool u24be(uint32_t v) {
    uint8_t b[3] = {uint8_t(v >> 16), uint8_t(v >> 8), uint8_t(v)};
    return put(b, 3);
  }
  bool u32be(uint32_t v) {
    uint8_t b[4] = {uint8_t(v >> 24), uint8_t(v >> 16), uint8_t(v >> 8), uint8_t(v)};
    return put(b, 4);
  }
  bool u32le(uint32_t v) {
    uint8_t b[4] = {uint8_t(v), uint8_t(v >> 8), uint8_t(v >> 16), uint8_t(v >> 24)};
    return put(b, 4);
  }
  bool i32le(int32_t v) { return u32le(static_cast<uint32_t>(v)); }
  /// MIDI variable-length quantity (values above 0x0FFFFFFF are clamped to the 4-byte maximum).
  bool vlq(uint32_t v) {
    if (v > 0x0FFFFFFFu) v = 0x0FFFFFFFu;
    uint8_t b[4];
    int n = 0;
    b[3] = uint8_t(v & 0x7F);
    n = 1;
    while ((v >>= 7) != 0) {
      b[3 - n] = uint8_t((v & 0x7F) | 0x80);
      ++n;
    }
    return put(b + 4 - n, static_cast<size_t>(n));
  }
  bool fourcc(const char* tag) { return put(tag, 4); }
  bool bytes(const void* p, size_t n) { return put(p, n); }
  bool fill(uint8_t value, size_t n) {
    if (!room(n)) return false;
    buf_.insert(buf_.end(), n, value);
    return true;
  }

  /// Reserves a 32-bit field and returns its offset for a later `patch32be`/`patch32le`.
  size_t placeholder32() {
    size_t at = buf_.size();
    u32be(0);
    return at;
  }
  void patch32be(size_t at, uint32_t v) {
    if (at + 4 > buf_.size()) return;
    buf_[at] = uint8_t(v >> 24);
    buf_[at + 1] = uint8_t(v >> 16);
    buf_[at + 2] = uint8_t(v >> 8);
    buf_[at + 3] = uint8_t(v);
  }
  void patch32le(size_t at, uint32_t v) {
    if (at + 4 > buf_.size()) return;
    buf_[at] = uint8_t(v);
    buf_[at + 1] = uint8_t(v >> 8);
    buf_[at + 2] = uint8_t(v >> 16);
    buf_[at + 3] = uint8_t(v >> 24);
  }
  void patch16be(size_t at, uint16_t v) {
    if (at + 2 > buf_.size()) return;
    buf_[at] = uint8_t(v >> 8);
    buf_[at + 1] = uint8_t(v);
  }
  /// Fills the placeholder at `at` with the number of bytes written after it (big-endian).
  void closeLength32be(size_t at) { patch32be(at, static_cast<uint32_t>(buf_.size() - at - 4)); }

 private:
  bool room(size_t n) {
    if (overflow_ || n > cap_ || buf_.size() > cap_ - n) {
      overflow_ = true;
      return false;
    }
    return true;
  }
  bool put(const void* p, size_t n) {
    if (!room(n)) return false;
    const uint8_t* b = static_cast<const uint8_t*>(p);
    buf_.insert(buf_.end(), b, b + n);
    return true;
  }

  std::vector<uint8_t> buf_;
  size_t cap_;
  bool overflow_ = false;
};

}  // namespace hs
