#pragma once

#include "handset/messaging/SmMedia.h"

/// A text-formatting range (EMS information element 0x0A). It starts at `m_nBeginPos` and covers
/// `m_nEffectLen` characters of text. `m_cFormat` is the formatting octet: bits 0-1 alignment
/// (0 left, 1 centre, 2 right, 3 language dependent), bits 2-3 font size (0 normal, 1 large,
/// 2 small), bit 4 bold, bit 5 italic, bit 6 underlined, bit 7 strikethrough. `m_cColor` is the
/// colour octet: foreground in bits 0-3, background in bits 4-7.
class HANDSET_API CSmTextFormat : public CSmMedia {
 public:
  CSmTextFormat() : CSmMedia(SMOBJ_TEXTFORMAT) {}
  CSmTextFormat(const CSmTextFormat& other) = default;
  CSmTextFormat& operator=(const CSmTextFormat& other) = default;

  CSmMedia* Clone() const override;
  /// Always 6 octets (48 bits).
  int EstimateEncodeSize(bool bOctets, ME_SMS_ENCODE enc) const override;
  /// 0x0A, 4, position, length (low byte), format, colour.
  int Encoder(ME_SMS_ENCODE enc, unsigned char*& out, int& room) override;
  /// ".m_eType", ".m_nBeginPos", ".m_nUsePos", ".m_nUserAnchor", then ".m_cFormat", ".m_cColor"
  /// and ".m_nEffectLen", each 4 bytes. No data block.
  bool PackData(const char* prefix, CPackageBlk& blk) const override;
  bool UnpackData(const char* prefix, CUnpackageBlk& blk) override;
  bool Load(CArchive& ar) override;
  bool Save(CArchive& ar) override;

  /// Decodes an IE 0x0A (3 or 4 octets of data; without a colour octet the colour stays 9) at
  /// `p`, which must hold the whole IE, and moves `p` past it. Null for any other IE.
  static CSmMedia* _IeDecoder(unsigned char*& p);
  /// The same, reading nothing at or past `end`.
  static CSmMedia* _IeDecoder(unsigned char*& p, const unsigned char* end);

  unsigned char m_cFormat = 3;
  unsigned char m_cColor = 9;
  int m_nEffectLen = 0;
};
