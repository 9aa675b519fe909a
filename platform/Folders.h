#pragma once

#include <cstddef>
#include <cstdint>
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

/// The identity of a file system object: device and inode on POSIX, volume serial number and
/// file index on Windows. Two paths name the same object exactly when their identities are equal.
struct FileId {
  uint64_t device = 0;
  uint64_t inode = 0;
  bool operator==(const FileId& o) const { return device == o.device && inode == o.inode; }
  bool operator<(const FileId& o) const {
    return device != o.device ? device < o.device : inode < o.inode;
  }
};
/// The identity of what `path` names, links followed; false when it cannot be read.
bool GetFileId(const std::string& path, FileId* id);

/// What a folder entry is, the entry itself looked at (a link is a link, wherever it points).
enum class EntryKind { kFile, kFolder, kLink, kOther };
struct FolderEntry {
  std::string name;
  EntryKind kind;
};
/// The entries directly in `folder` (links not followed), sorted by name; empty when the folder
/// cannot be read.
std::vector<FolderEntry> ListEntries(const std::string& folder);
/// What `path` names with links followed: kFile, kFolder or kOther (also for a dangling link).
EntryKind KindOf(const std::string& path);

/// The absolute form of `path` with every link resolved; empty when it cannot be resolved (a
/// dangling link, a missing component, a loop).
std::string RealPath(const std::string& path);
/// True when `path` is `folder` or lies below it. Both must be results of RealPath.
bool IsInsideFolder(const std::string& path, const std::string& folder);

/// The longest name (one path component) the file system takes: 255 bytes on POSIX, 255 UTF-16
/// units on Windows. The measure that does not apply is 0.
void MaxNameLength(size_t* bytes, size_t* units);

/// Outcome of an exclusive creation.
enum class CreateStatus {
  kCreated,
  kNameTaken,  ///< something of that name exists: a file, a folder or a link (even a dangling one)
  kFailed,     ///< any other failure; `reason` holds the system's text
};
/// Creates `path` as a new file holding `size` bytes of `data`. The name must be free: an existing
/// entry of any kind, links included, is never opened, so nothing is written through a link. Every
/// write and the close are checked; on failure the new file is removed again. The data is not
/// flushed to disk: a new file replaces nothing, so a crash loses at most the files just written.
CreateStatus CreateNewFile(const std::string& path, const void* data, size_t size,
                           std::string* reason);
/// Creates the folder `path` (its parent must exist); kNameTaken when anything has that name.
CreateStatus CreateNewFolder(const std::string& path, std::string* reason);

/// Reads a whole file into `out`, sized from the file first; false (with the system's text in
/// `reason`, which may be null) when it cannot be opened or read.
bool ReadWholeFile(const std::string& path, std::string* out, std::string* reason);

}  // namespace os
}  // namespace hs
