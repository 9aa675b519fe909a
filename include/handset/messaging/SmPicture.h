#pragma once

#include "handset/messaging/SmMedia.h"
#include "handset/platform/BmpWrp.h"

/// A monochrome picture. The data block is a `CBmpWrp` record: four 32-bit little-endian words
/// (header size 16, width, height, bytes per row), then the rows, one bit per pixel.
class HANDSET_API CSmPicture : public CSmMedia {
 public:
  CSmPicture();
  CSmPicture(const CSmPicture& other) = default;
  CSmPicture& operator=(const CSmPicture& other) = default;

  CSmMedia* Clone() const override;
  /// 16 x 16 and 32 x 32: width x height / 8 + 3 octets; any other size rows x w8 / 8 + 5, where
  /// w8 is the width rounded down to a multiple of 8 and rows = min(height, 1024 / w8). 0 without
  /// a bitmap.
  int EstimateEncodeSize(bool bOctets, ME_SMS_ENCODE enc) const override;
  /// 32 x 32: IE 0x10; 16 x 16: IE 0x11; otherwise the variable picture 0x12 (position, w8 / 8,
  /// rows, rows x w8 / 8 bitmap octets). Nothing without a bitmap or below 8 pixels of width.
  int Encoder(ME_SMS_ENCODE enc, unsigned char*& out, int& room) override;
  bool Load(CArchive& ar) override;
  bool Save(CArchive& ar) override;

  using CSmMedia::SetData;
  /// Takes the record of `bmp`. True when a block is held.
  virtual bool SetData(const CBmpWrp& bmp);
  /// The bitmap of the data block. A block that is not a `CBmpWrp` record but has a sane width
  /// and height in its 2nd and 3rd words still gives a bitmap: its rows are the block's last
  /// bytes when it holds them all, else the bytes after those words, the rest white. False (and
  /// `bmp` empty) otherwise.
  bool GetBitmap(CBmpWrp* bmp) const;

  /// Decodes an IE 0x10, 0x11 or 0x12 at `p`, which must hold the whole IE, and moves `p` past
  /// it. Null for any other IE or a variable picture whose rows are cut short.
  static CSmMedia* _IeDecoder(unsigned char*& p);
  /// The same, reading nothing at or past `end`.
  static CSmMedia* _IeDecoder(unsigned char*& p, const unsigned char* end);
};
