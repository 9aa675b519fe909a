#include "handset/pim/MediaFile.h"

namespace {

CString Key(const char* prefix, const char* name) {
  return CString(prefix ? prefix : "") + name;
}

}  // namespace

CMediaFile::~CMediaFile() = default;

CMediaFile* CMediaFile::Clone() const {
  return new CMediaFile(*this);
}

int CMediaFile::PackData(const char* prefix, CPackageBlk& blk, bool withPath) const {
  blk.AddString(Key(prefix, "m_strFileName").c_str(), m_strFileName.c_str());
  if (withPath) blk.AddString(Key(prefix, "m_strFilePath").c_str(), m_strFilePath.c_str());
  blk.AddInt(Key(prefix, "m_dwFileSize").c_str(), static_cast<int32_t>(m_dwFileSize));
  blk.AddInt(Key(prefix, "m_tModified").c_str(), m_tModified);
  return 1;
}

int CMediaFile::UnpackData(const char* prefix, CUnpackageBlk& blk, bool withPath) {
  blk.GetString(Key(prefix, "m_strFileName").c_str(), &m_strFileName);
  if (withPath) blk.GetString(Key(prefix, "m_strFilePath").c_str(), &m_strFilePath);
  int32_t v = 0;
  if (blk.GetInt(Key(prefix, "m_dwFileSize").c_str(), &v)) m_dwFileSize = static_cast<uint32_t>(v);
  blk.GetInt(Key(prefix, "m_tModified").c_str(), &m_tModified);
  return 1;
}
