#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "handset/export.h"

/// A monochrome bitmap as message pictures carry it. Its record (what `GetRecord` returns and a
/// picture item stores) is four 32-bit little-endian words - the header size (16), the width and
/// the height in pixels, the bytes per row - followed by the rows from top to bottom, one bit per
/// pixel, most significant bit first, 1 for a black pixel, each row padded to whole bytes.
class HANDSET_API CBmpWrp {
 public:
  /// Largest width or height accepted, in pixels.
  static constexpr int kMaxSide = 4096;
  static constexpr int kHeaderSize = 16;

  CBmpWrp() = default;
  /// A white bitmap; see `Create`.
  CBmpWrp(int width, int height) { Create(width, height); }

  /// Makes a white bitmap of the given size. False (and empty) when a side is not 1..kMaxSide.
  bool Create(int width, int height);
  void Empty();
  bool IsEmpty() const { return width_ == 0 || height_ == 0; }
  int GetWidth() const { return width_; }
  int GetHeight() const { return height_; }
  int GetRowBytes() const { return (width_ + 7) / 8; }
  /// True for a black pixel; false outside the bitmap.
  bool GetPixel(int x, int y) const;
  /// Sets one pixel; outside the bitmap does nothing.
  void SetPixel(int x, int y, bool black);

  /// The record described above.
  std::vector<uint8_t> GetRecord() const;
  /// Takes a record. False (and empty) unless the header is intact and exactly the rows it
  /// announces follow.
  bool SetRecord(const void* data, size_t size);
  /// Takes `rows` rows of `rowBytes` packed bytes each (most significant bit first), `width`
  /// pixels wide. False when the sizes are out of range or `size` is too small.
  bool SetRows(int width, int rows, int rowBytes, const uint8_t* data, size_t size);

  /// Reads a portable bitmap ("P1" text or "P4" binary, with # comments). False with a reason in
  /// `error` when it is not one, is cut short, or is larger than kMaxSide.
  bool LoadPbm(const void* data, size_t size, std::string* error);
  /// The bitmap as a binary portable bitmap ("P4").
  std::vector<uint8_t> SavePbm() const;

 private:
  int width_ = 0;
  int height_ = 0;
  std::vector<uint8_t> bits_;
};
