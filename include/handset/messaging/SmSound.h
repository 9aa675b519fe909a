#pragma once

#include "handset/messaging/SmMedia.h"

/// A sound: one of the phone's predefined sounds (`m_nSoundIdx`, kind `SMOBJ_PREDEF_SOUND`) or a
/// user melody in iMelody text held in the data block (index -1, kind `SMOBJ_USER_MELODY`).
class HANDSET_API CSmSound : public CSmMedia {
 public:
  /// Predefined sound `idx`, or a user melody without text when `idx` is -1.
  explicit CSmSound(int idx = -1);
  CSmSound(const CSmSound& other) = default;
  CSmSound& operator=(const CSmSound& other) = default;

  /// The melody text (null for a predefined sound).
  void* GetData() override;
  /// 0 for a predefined sound, else the melody's string length.
  int GetLength() const override;
  CSmMedia* Clone() const override;
  /// Predefined: 4 octets; melody: string length + 3.
  int EstimateEncodeSize(bool bOctets, ME_SMS_ENCODE enc) const override;
  /// Predefined: 0x0B, 2, position, index modulo 10. Melody: 0x0C, length + 1, position, text;
  /// only a text that `IsValidIMelodyFormat` accepts and that fits an IE is written.
  int Encoder(ME_SMS_ENCODE enc, unsigned char*& out, int& room) override;
  /// The base keys, then ".m_nSoundIdx".
  bool PackData(const char* prefix, CPackageBlk& blk) const override;
  bool UnpackData(const char* prefix, CUnpackageBlk& blk) override;
  bool Load(CArchive& ar) override;
  bool Save(CArchive& ar) override;

  using CSmMedia::GetData;
  using CSmMedia::SetData;
  /// False for a user melody; otherwise stores the index in `*idx` (when given) and is true.
  virtual bool GetData(int* idx) const;
  /// Makes this a user melody holding a copy of `melody` (not validated). True when held.
  virtual bool SetData(const char* melody);
  /// Makes this predefined sound `idx` and drops any melody text. True.
  virtual bool SetData(int idx);

  bool IsPredefSound() const { return m_nSoundIdx != -1; }
  /// True when the text, compared without regard to letter case, starts with
  /// "BEGIN:IMELODY\r\n" and has "MELODY:" after that line and "END:IMELODY" after that.
  static bool IsValidIMelodyFormat(const char* text);

  /// Decodes an IE 0x0B or 0x0C at `p`, which must hold the whole IE, and moves `p` past it.
  /// Null for any other IE.
  static CSmMedia* _IeDecoder(unsigned char*& p);
  /// The same, reading nothing at or past `end`.
  static CSmMedia* _IeDecoder(unsigned char*& p, const unsigned char* end);

  int m_nSoundIdx;
};
