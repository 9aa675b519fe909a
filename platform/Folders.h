#pragma once

#include <string>
#include <vector>

// Folder services for the bookmark import and export. Paths may carry the Windows long-path
// prefix "\\?\"; it is kept where the system understands it and removed elsewhere.
namespace hs {
namespace os {

/// `path` as the file system API of this platform takes it.
std::string NativePath(const char* path);
/// True when `path` names an existing file or folder.
bool PathExists(const char* path);
bool IsFolder(const char* path);
/// True when `path` names any directory entry at all, a dangling or foreign link included (the
/// entry itself is looked at, never what a link points to).
bool EntryExists(const char* path);
/// Creates the folder and any missing parents; true when it exists afterwards.
bool CreateFolders(const char* path);
/// The absolute form of `path` (unchanged when that fails).
std::string FullPath(const char* path);
/// `folder` joined with `name` by the platform's separator.
std::string JoinPath(const std::string& folder, const std::string& name);
/// The last component of `path`.
std::string BaseName(const std::string& path);
/// Names of the regular files (or of the sub-folders) directly in `folder`, sorted.
std::vector<std::string> ListFolder(const char* folder, bool folders);

}  // namespace os
}  // namespace hs
