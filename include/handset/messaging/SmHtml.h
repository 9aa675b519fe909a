#pragma once

#include "handset/messaging/SmMedia.h"

/// The HTML body of a mail-like message. The data block holds `m_nSize` bytes and a NUL after
/// them. Never sent as short-message data.
class HANDSET_API CSmHtml : public CSmMedia {
 public:
  CSmHtml() : CSmMedia(SMOBJ_HTML) {}
  CSmHtml(const CSmHtml& other);
  CSmHtml& operator=(const CSmHtml& other);

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
  /// As the base keys and ".m_nSize" (cut to the stored block, which is terminated again).
  bool UnpackData(const char* prefix, CUnpackageBlk& blk) override;
  bool Load(CArchive& ar) override;
  bool Save(CArchive& ar) override;

  using CSmMedia::SetData;
  /// Replaces the block by the `n` bytes and a NUL. True when a block is held.
  virtual bool SetData(const unsigned char* p, int n);
  /// Writes the `m_nSize` bytes to `path` through the platform's file writer; false when that
  /// fails.
  virtual bool SaveAs(const char* path) const;

  /// No information element carries HTML: null, `p` unchanged.
  static CSmMedia* _IeDecoder(unsigned char*& p);

  int m_nSize = 0;

 private:
  int StoredSize() const;
};
