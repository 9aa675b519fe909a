#pragma once

#include <cstdint>

#include "handset/export.h"
#include "handset/platform/PackageBlk.h"
#include "handset/platform/Strings.h"

/// A file record of the media library: the name shown, the folder holding the file, its size and
/// time of change. Records of particular kinds (an MMS message, ...) derive from it.
///
/// Package keys (caller's prefix + name, no separator added): "m_strFileName" (text),
/// "m_strFilePath" (text, only when packed with the path), "m_dwFileSize" and "m_tModified"
/// (4 bytes each).
class HANDSET_API CMediaFile {
 public:
  CMediaFile() = default;
  explicit CMediaFile(const char* fileName) : m_strFileName(fileName) {}
  virtual ~CMediaFile();
  CMediaFile(const CMediaFile&) = default;
  CMediaFile& operator=(const CMediaFile&) = default;

  /// A new copy of this record, of the same class; the caller deletes it.
  virtual CMediaFile* Clone() const;
  /// Writes the record's keys under `prefix` (null is ""); the folder only when `withPath`.
  /// Returns 1.
  virtual int PackData(const char* prefix, CPackageBlk& blk, bool withPath) const;
  /// Reads the keys under `prefix`: each key present overwrites its field, absent keys leave it
  /// as it was; the folder is read only when `withPath`. Returns 1.
  virtual int UnpackData(const char* prefix, CUnpackageBlk& blk, bool withPath);

  CString m_strFileName;  ///< the name shown in the media library
  CString m_strFilePath;  ///< the folder that holds the file
  uint32_t m_dwFileSize = 0;
  int32_t m_tModified = 0;  ///< seconds since 1970, as the platform's time value
};
