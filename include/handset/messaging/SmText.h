#pragma once

#include "handset/messaging/SmMedia.h"

/// A run of message text: a NUL-terminated ANSI string (UTF-8 on POSIX) in the data block, with
/// `m_nRawSize` = length + 1. Its used positions are its UTF-16 units.
class HANDSET_API CSmText : public CSmMedia {
 public:
  /// A copy of `s` (null is the empty text).
  CSmText(const char* s = "");
  /// The text of `count` UTF-16 units (surrogate pairs kept whole).
  CSmText(const unsigned short* ucs2, int count);
  CSmText(const CSmText& other);
  CSmText& operator=(const CSmText& other);
  CSmText& operator=(const char* s);
  /// Appends the other text.
  CSmText& operator+=(const CSmText& other);
  CSmText operator+(const CSmText& other) const;
  /// The text; never null (an empty text gives "").
  operator char*();
  /// The byte at `i`; 0 outside the text.
  char operator[](int i) const;

  void* GetData() override;
  /// The string length; 0 when there is no text.
  int GetLength() const override;
  CSmMedia* Clone() const override;
  /// GSM 7-bit: bits = 7 x septets (octets rounded up); any other coding 16 bits per UTF-16 unit.
  /// `SMS_ENC_AUTO` picks GSM 7-bit when every character allows it.
  int EstimateEncodeSize(bool bOctets, ME_SMS_ENCODE enc) const override;
  /// Writes the text as user data without a header: GSM 7-bit septets packed from bit 0, or
  /// UCS-2 big-endian. Returns the octets written; 0 when it does not fit in `room`.
  int Encoder(ME_SMS_ENCODE enc, unsigned char*& out, int& room) override;
  /// As the base; a stored text without its NUL is terminated after its bytes.
  bool UnpackData(const char* prefix, CUnpackageBlk& blk) override;
  bool Load(CArchive& ar) override;
  bool Save(CArchive& ar) override;

  using CSmMedia::SetData;
  /// Stores a copy of `s`; `m_nUsePos` becomes its UTF-16 units. True when a copy is held.
  virtual bool SetData(const char* s);
  /// Writes the text bytes (no terminator) to `path` through the platform's file writer. False
  /// for an empty text or when the file cannot be written.
  virtual bool SaveAs(const char* path) const;

  /// UTF-16 units of the text (0 for none).
  int GetNumOfWords() const;
  /// Removes every byte equal to `c` and returns how many went. The size and used positions
  /// are left as they were, as stored records expect.
  int Remove(char c);
  /// Keeps the first part of the text that takes at most `nSize` octets in the coding `enc`
  /// (GSM 7-bit: `nSize` x 8 / 7 septets) and returns the rest as a new item owned by the
  /// caller; null when everything fits or `nSize` is below 1. An escape pair or a surrogate pair
  /// is never cut. When not even the first character fits, this item keeps nothing.
  CSmText* Separate(int nSize, ME_SMS_ENCODE enc);

  /// Texts travel outside the user data header, so no information element decodes to one:
  /// returns null and leaves `p` where it is. Present so that every item class has a decoder.
  static CSmMedia* _IeDecoder(unsigned char*& p);
};
