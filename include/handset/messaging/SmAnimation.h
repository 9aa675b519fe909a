#pragma once

#include "handset/messaging/SmMedia.h"

/// An animation: one of the phone's predefined animations (`m_nAnmIdx`), or, with index -1, the
/// frames of a received user animation in the data block - four frames of 16 x 16 pixels
/// (128 bytes) or of 8 x 8 pixels (32 bytes), one bit per pixel, rows top to bottom. User
/// animations are kept for display; they are not sent again and not saved in archives.
class HANDSET_API CSmAnimation : public CSmMedia {
 public:
  explicit CSmAnimation(int idx = -1);
  CSmAnimation(const CSmAnimation& other) = default;
  CSmAnimation& operator=(const CSmAnimation& other) = default;

  /// 0 for a predefined animation, else the data size.
  int GetLength() const override;
  CSmMedia* Clone() const override;
  /// Predefined: 4 octets; otherwise 0.
  int EstimateEncodeSize(bool bOctets, ME_SMS_ENCODE enc) const override;
  /// Predefined: 0x0D, 2, position, index modulo 15. Otherwise nothing (0).
  int Encoder(ME_SMS_ENCODE enc, unsigned char*& out, int& room) override;
  /// The base keys, then ".m_nAnmIdx".
  bool PackData(const char* prefix, CPackageBlk& blk) const override;
  bool UnpackData(const char* prefix, CUnpackageBlk& blk) override;
  bool Load(CArchive& ar) override;
  bool Save(CArchive& ar) override;

  using CSmMedia::GetData;
  using CSmMedia::SetData;
  /// False for a user animation; otherwise stores the index in `*idx` (when given), true.
  virtual bool GetData(int* idx) const;
  /// Sets the index and frees the data block; the kind is unchanged. True.
  virtual bool SetData(int idx);

  bool IsPredefAnimation() const { return m_nAnmIdx != -1; }

  /// Decodes an IE 0x0D (predefined), 0x0E (four 16 x 16 frames) or 0x0F (four 8 x 8 frames) at
  /// `p`, which must hold the whole IE, and moves `p` past it. Null for any other IE.
  static CSmMedia* _IeDecoder(unsigned char*& p);
  /// The same, reading nothing at or past `end`.
  static CSmMedia* _IeDecoder(unsigned char*& p, const unsigned char* end);

  int m_nAnmIdx;
};
