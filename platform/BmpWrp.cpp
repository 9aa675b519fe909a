#include "handset/platform/BmpWrp.h"

#include <cctype>
#include <cstring>

#include "platform/ByteReader.h"
#include "platform/ByteWriter.h"

constexpr int CBmpWrp::kMaxSide;
constexpr int CBmpWrp::kHeaderSize;

bool CBmpWrp::Create(int width, int height) {
  Empty();
  if (width < 1 || height < 1 || width > kMaxSide || height > kMaxSide) return false;
  width_ = width;
  height_ = height;
  bits_.assign(static_cast<size_t>(GetRowBytes()) * static_cast<size_t>(height), 0);
  return true;
}

void CBmpWrp::Empty() {
  width_ = height_ = 0;
  bits_.clear();
}

bool CBmpWrp::GetPixel(int x, int y) const {
  if (x < 0 || y < 0 || x >= width_ || y >= height_) return false;
  return (bits_[static_cast<size_t>(y) * GetRowBytes() + x / 8] >> (7 - x % 8)) & 1;
}

void CBmpWrp::SetPixel(int x, int y, bool black) {
  if (x < 0 || y < 0 || x >= width_ || y >= height_) return;
  uint8_t& b = bits_[static_cast<size_t>(y) * GetRowBytes() + x / 8];
  uint8_t mask = static_cast<uint8_t>(0x80 >> (x % 8));
  b = black ? static_cast<uint8_t>(b | mask) : static_cast<uint8_t>(b & ~mask);
}

std::vector<uint8_t> CBmpWrp::GetRecord() const {
  hs::ByteWriter w;
  w.reserve(kHeaderSize + bits_.size());
  w.u32le(kHeaderSize);
  w.u32le(static_cast<uint32_t>(width_));
  w.u32le(static_cast<uint32_t>(height_));
  w.u32le(static_cast<uint32_t>(GetRowBytes()));
  w.bytes(bits_.data(), bits_.size());
  return w.take();
}

bool CBmpWrp::SetRecord(const void* data, size_t size) {
  Empty();
  hs::ByteReader r(data, size);
  uint32_t header = r.u32le();
  int32_t width = r.i32le(), height = r.i32le(), rowBytes = r.i32le();
  if (!r.ok() || header != kHeaderSize) return false;
  if (width < 1 || height < 1 || width > kMaxSide || height > kMaxSide ||
      rowBytes != (width + 7) / 8)
    return false;
  if (r.remaining() != static_cast<size_t>(rowBytes) * static_cast<size_t>(height)) return false;
  return SetRows(width, height, rowBytes, r.cursor(), r.remaining());
}

bool CBmpWrp::SetRows(int width, int rows, int rowBytes, const uint8_t* data, size_t size) {
  if (rowBytes < (width + 7) / 8 || rowBytes <= 0 || !data ||
      size / static_cast<size_t>(rowBytes) < static_cast<size_t>(rows > 0 ? rows : 0))
    return false;
  if (!Create(width, rows)) return false;
  size_t stride = static_cast<size_t>(GetRowBytes());
  for (int y = 0; y < rows; ++y) {
    std::memcpy(&bits_[y * stride], data + static_cast<size_t>(y) * rowBytes, stride);
    // Bits past the width are padding: keep them clear so equal pictures compare equal.
    if (width % 8) bits_[y * stride + stride - 1] &= static_cast<uint8_t>(0xFF << (8 - width % 8));
  }
  return true;
}

namespace {

// Skips blanks and # comments of a portable bitmap header.
void SkipSpace(hs::ByteReader& r) {
  while (!r.atEnd()) {
    uint8_t c = r.peek8();
    if (c == '#') {
      while (!r.atEnd() && r.peek8() != '\n') r.u8();
    } else if (std::isspace(c)) {
      r.u8();
    } else {
      break;
    }
  }
}

// A decimal header number; -1 when there is none or it exceeds `limit`.
long ReadNumber(hs::ByteReader& r, long limit) {
  SkipSpace(r);
  long v = -1;
  while (!r.atEnd() && std::isdigit(r.peek8())) {
    v = (v < 0 ? 0 : v) * 10 + (r.u8() - '0');
    if (v > limit) return -1;
  }
  return v;
}

}  // namespace

bool CBmpWrp::LoadPbm(const void* data, size_t size, std::string* error) {
  std::string dummy;
  std::string& err = error ? *error : dummy;
  Empty();
  hs::ByteReader r(data, size);
  bool binary = r.startsWith("P4", 2);
  if (!binary && !r.startsWith("P1", 2)) return err = "not a portable bitmap (P1 or P4)", false;
  r.skip(2);
  long w = ReadNumber(r, kMaxSide), h = ReadNumber(r, kMaxSide);
  if (w < 1 || h < 1) return err = "width or height missing, 0 or above 4096", false;
  size_t rowBytes = (static_cast<size_t>(w) + 7) / 8;
  if (binary) {
    r.u8();  // the single blank after the height
    if (r.remaining() < rowBytes * static_cast<size_t>(h))
      return err = "pixel data cut short", false;
    return SetRows(static_cast<int>(w), static_cast<int>(h), static_cast<int>(rowBytes), r.cursor(),
                   r.remaining());
  }
  // Every pixel of a text bitmap takes at least one byte, so the size is checked first.
  if (r.remaining() < static_cast<size_t>(w) * static_cast<size_t>(h))
    return err = "pixel data cut short", false;
  Create(static_cast<int>(w), static_cast<int>(h));
  for (long i = 0; i < w * h; ++i) {
    SkipSpace(r);
    uint8_t c = r.u8();
    if (c != '0' && c != '1') {
      Empty();
      return err = r.ok() ? "a pixel is not 0 or 1" : "pixel data cut short", false;
    }
    SetPixel(static_cast<int>(i % w), static_cast<int>(i / w), c == '1');
  }
  return true;
}

std::vector<uint8_t> CBmpWrp::SavePbm() const {
  std::string head = "P4\n" + std::to_string(width_) + " " + std::to_string(height_) + "\n";
  std::vector<uint8_t> out(head.begin(), head.end());
  out.insert(out.end(), bits_.begin(), bits_.end());
  return out;
}
