#pragma once

#include "handset/messaging/SmMedia.h"

/// A file attached to a mail-like message, with its file name (at most 256 characters) and
/// content id (at most 128). Never sent as short-message data.
class HANDSET_API CSmAttach : public CSmMedia {
 public:
  CSmAttach();
  CSmAttach(const CSmAttach& other) = default;
  CSmAttach& operator=(const CSmAttach& other) = default;

  void* GetData() override;
  /// `m_nSize`.
  int GetLength() const override;
  CSmMedia* Clone() const override;
  /// 0: not sent as short-message data.
  int EstimateEncodeSize(bool bOctets, ME_SMS_ENCODE enc) const override;
  /// Writes nothing (0).
  int Encoder(ME_SMS_ENCODE enc, unsigned char*& out, int& room) override;
  /// The base keys, then ".m_nSize", ".m_szFileName", ".m_szContentID", ".m_bBuildInHtml".
  bool PackData(const char* prefix, CPackageBlk& blk) const override;
  /// Names longer than their fields are cut to fit.
  bool UnpackData(const char* prefix, CUnpackageBlk& blk) override;
  bool Load(CArchive& ar) override;
  bool Save(CArchive& ar) override;

  using CSmMedia::SetData;
  /// Replaces the block by a copy of the `n` bytes and the names (each cut to its limit; null
  /// leaves a name empty). True when a block is held.
  virtual bool SetData(const unsigned char* p, int n, const char* fileName, const char* contentId);
  virtual void SetBuildInFlag(bool flag);
  virtual bool GetBuildInFlag() const;
  virtual const char* GetFileName() const;
  virtual const char* GetContentID() const;
  /// Writes the `m_nSize` bytes to `path` through the platform's file writer; false when that
  /// fails.
  virtual bool SaveAs(const char* path) const;

  /// No information element carries attachments: null, `p` unchanged.
  static CSmMedia* _IeDecoder(unsigned char*& p);

  char m_szFileName[257];
  char m_szContentID[129];
  int m_nSize = 0;
  bool m_bBuildInHtml = false;

 private:
  int StoredSize() const;
};
