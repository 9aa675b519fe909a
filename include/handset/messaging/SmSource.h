#pragma once

#include "handset/messaging/SmMedia.h"

/// Raw source bytes kept with a message: a mail's source, or received user data that no other
/// item holds (an information element of another kind, kept whole with its identifier and
/// length octets, or 8-bit data that is not text). Never sent as short-message data.
class HANDSET_API CSmSource : public CSmMedia {
 public:
  CSmSource() : CSmMedia(SMOBJ_SOURCE) {}
  CSmSource(const CSmSource& other) = default;
  CSmSource& operator=(const CSmSource& other) = default;

  void* GetData() override;
  /// `m_nSize`.
  int GetLength() const override;
  CSmMedia* Clone() const override;
  /// 0: not sent as short-message data.
  int EstimateEncodeSize(bool bOctets, ME_SMS_ENCODE enc) const override;
  /// Writes nothing (0).
  int Encoder(ME_SMS_ENCODE enc, unsigned char*& out, int& room) override;
  /// The base keys, then ".m_nSize".
  bool PackData(const char* prefix, CPackageBlk& blk) const override;
  bool UnpackData(const char* prefix, CUnpackageBlk& blk) override;
  bool Load(CArchive& ar) override;
  bool Save(CArchive& ar) override;

  using CSmMedia::SetData;
  /// Replaces the block by exactly the `n` bytes. True when a block is held.
  virtual bool SetData(const unsigned char* p, int n);
  /// Writes the `m_nSize` bytes to `path` through the platform's file writer; false when that
  /// fails.
  virtual bool SaveAs(const char* path) const;

  /// Keeps the information element at `p` (which must hold it whole) as raw bytes and moves `p`
  /// past it. Any identifier is accepted.
  static CSmMedia* _IeDecoder(unsigned char*& p);
  /// The same, reading nothing at or past `end`; null when the element is cut short.
  static CSmMedia* _IeDecoder(unsigned char*& p, const unsigned char* end);

  int m_nSize = 0;

 private:
  int StoredSize() const;
};
