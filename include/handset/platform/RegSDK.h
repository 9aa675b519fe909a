#pragma once

#include "handset/export.h"
#include "handset/platform/Strings.h"

/// Profile store of the suite: multi-string values in sections below a key path under the
/// current user. On Windows this is the registry below HKEY_CURRENT_USER; elsewhere one file,
/// "profile.blk" in the library's configuration folder (HANDSET_CONFIG_DIR overrides the folder),
/// rewritten atomically on every change so a crash never leaves it half written.
class HANDSET_API CxRegSDK {
 public:
  /// `keyPath`: the key below HKEY_CURRENT_USER, with "\\" separators.
  explicit CxRegSDK(const char* keyPath);

  /// Reads the multi-string value `entry` of `section` into `values` (cleared first). False when
  /// the value does not exist.
  bool GetProfileMultiString(const char* section, const char* entry, CStringList& values) const;
  /// Writes `values` as the multi-string value `entry` of `section`, creating it as needed.
  /// Strings must not contain NUL bytes. False when the store cannot be written.
  bool WriteProfileMultiString(const char* section, const char* entry, const CStringList& values);
  /// Removes `section` with all its values. True also when it did not exist.
  bool RemoveSessionKey(const char* section);

 private:
  CString m_strKeyPath;
};
