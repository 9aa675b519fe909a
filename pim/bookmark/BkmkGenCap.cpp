#include "handset/pim/BkmkObj.h"

namespace {

CString Key(const char* prefix, const char* name) {
  return CString(prefix ? prefix : "") + name;
}

}  // namespace

bool CBkmkGenCap::operator==(const CBkmkGenCap& o) const {
  return nFolderNameCLen == o.nFolderNameCLen && nFolerNameWLen == o.nFolerNameWLen &&
         nFileNameCLen == o.nFileNameCLen && nFileNameWLen == o.nFileNameWLen &&
         strVBKMversion == o.strVBKMversion && nTitleCLen == o.nTitleCLen &&
         nTitleWLen == o.nTitleWLen && enTitleEncode == o.enTitleEncode &&
         enTitleCharset == o.enTitleCharset && nUrlCLen == o.nUrlCLen && nUrlWLen == o.nUrlWLen;
}

int CBkmkGenCap::PackData(const char* prefix, CPackageBlk& blk) const {
  blk.AddInt(Key(prefix, "nFolderNameCLen").c_str(), nFolderNameCLen);
  blk.AddInt(Key(prefix, "nFolerNameWLen").c_str(), nFolerNameWLen);
  blk.AddInt(Key(prefix, "nFileNameCLen").c_str(), nFileNameCLen);
  blk.AddInt(Key(prefix, "nFileNameWLen").c_str(), nFileNameWLen);
  blk.AddString(Key(prefix, "strVBKMversion").c_str(), strVBKMversion.c_str());
  blk.AddInt(Key(prefix, "nTitleCLen").c_str(), nTitleCLen);
  blk.AddInt(Key(prefix, "nTitleWLen").c_str(), nTitleWLen);
  blk.AddInt(Key(prefix, "enTitleEncode").c_str(), enTitleEncode);
  blk.AddInt(Key(prefix, "enTitleCharset").c_str(), enTitleCharset);
  blk.AddInt(Key(prefix, "nUrlCLen").c_str(), nUrlCLen);
  blk.AddInt(Key(prefix, "nUrlWLen").c_str(), nUrlWLen);
  return 1;
}

int CBkmkGenCap::UnpackData(const char* prefix, const CUnpackageBlk& blk) {
  blk.GetInt(Key(prefix, "nFolderNameCLen").c_str(), &nFolderNameCLen);
  blk.GetInt(Key(prefix, "nFolerNameWLen").c_str(), &nFolerNameWLen);
  blk.GetInt(Key(prefix, "nFileNameCLen").c_str(), &nFileNameCLen);
  blk.GetInt(Key(prefix, "nFileNameWLen").c_str(), &nFileNameWLen);
  char version[kMaxVersion];
  if (blk.CopyString(Key(prefix, "strVBKMversion").c_str(), version, sizeof(version)))
    strVBKMversion = version;
  blk.GetInt(Key(prefix, "nTitleCLen").c_str(), &nTitleCLen);
  blk.GetInt(Key(prefix, "nTitleWLen").c_str(), &nTitleWLen);
  blk.GetInt(Key(prefix, "enTitleEncode").c_str(), &enTitleEncode);
  blk.GetInt(Key(prefix, "enTitleCharset").c_str(), &enTitleCharset);
  blk.GetInt(Key(prefix, "nUrlCLen").c_str(), &nUrlCLen);
  blk.GetInt(Key(prefix, "nUrlWLen").c_str(), &nUrlWLen);
  return 1;
}
