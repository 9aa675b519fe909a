#include "platform/Folders.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>

#if defined(_WIN32)
#include <windows.h>
#else
#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#endif

namespace fs = std::filesystem;

namespace hs {
namespace os {

std::string NativePath(const char* path) {
  if (!path) return std::string();
  static const char kLong[] = "\\\\?\\";
#if defined(_WIN32)
  // The wide and ANSI file APIs accept the prefix as it stands.
  return std::string(path);
#else
  if (std::strncmp(path, kLong, sizeof(kLong) - 1) == 0) {
    std::string rest(path + sizeof(kLong) - 1);
    std::replace(rest.begin(), rest.end(), '\\', '/');
    return rest;
  }
  return std::string(path);
#endif
}

bool PathExists(const char* path) {
  std::error_code ec;
  std::string p = NativePath(path);
  return !p.empty() && fs::exists(fs::u8path(p), ec);
}

bool IsFolder(const char* path) {
  std::error_code ec;
  std::string p = NativePath(path);
  return !p.empty() && fs::is_directory(fs::u8path(p), ec);
}

bool EntryExists(const char* path) {
  std::error_code ec;
  std::string p = NativePath(path);
  if (p.empty()) return false;
  fs::file_status st = fs::symlink_status(fs::u8path(p), ec);
  // An entry that cannot be looked at counts as present, so nothing is written over it.
  return st.type() != fs::file_type::not_found && (ec || st.type() != fs::file_type::none);
}

bool CreateFolders(const char* path) {
  std::string p = NativePath(path);
  if (p.empty()) return false;
  std::error_code ec;
  fs::create_directories(fs::u8path(p), ec);
  return fs::is_directory(fs::u8path(p), ec);
}

std::string FullPath(const char* path) {
  std::string p = NativePath(path);
  if (p.empty()) return p;
  std::error_code ec;
  fs::path abs = fs::absolute(fs::u8path(p), ec);
  return ec ? p : abs.lexically_normal().u8string();
}

std::string JoinPath(const std::string& folder, const std::string& name) {
  return (fs::u8path(folder) / fs::u8path(name)).u8string();
}

std::string BaseName(const std::string& path) {
  fs::path p = fs::u8path(NativePath(path.c_str()));
  if (!p.has_filename()) p = p.parent_path();
  return p.filename().u8string();
}

std::vector<std::string> ListFolder(const char* folder, bool folders) {
  std::vector<std::string> names;
  std::error_code ec;
  fs::directory_iterator it(fs::u8path(NativePath(folder)), ec), end;
  for (; !ec && it != end; it.increment(ec)) {
    std::error_code ec2;
    bool isDir = it->is_directory(ec2);
    bool isFile = it->is_regular_file(ec2);
    if ((folders && isDir) || (!folders && isFile))
      names.push_back(it->path().filename().u8string());
  }
  std::sort(names.begin(), names.end());
  return names;
}

namespace {

#if defined(_WIN32)
std::string LastErrorText() {
  char buf[256] = {0};
  DWORD n = FormatMessageA(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr,
                           GetLastError(), 0, buf, sizeof(buf), nullptr);
  while (n > 0 && (buf[n - 1] == '\r' || buf[n - 1] == '\n' || buf[n - 1] == '.')) buf[--n] = 0;
  return buf;
}
std::wstring Wide(const std::string& path) {
  return fs::u8path(NativePath(path.c_str())).wstring();
}
#endif

void SetReason(std::string* reason, const std::string& text) {
  if (reason) *reason = text;
}

}  // namespace

bool GetFileId(const std::string& path, FileId* id) {
  if (!id) return false;
#if defined(_WIN32)
  HANDLE h =
      CreateFileW(Wide(path).c_str(), 0, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                  nullptr, OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr);
  if (h == INVALID_HANDLE_VALUE) return false;
  BY_HANDLE_FILE_INFORMATION info;
  bool ok = GetFileInformationByHandle(h, &info) != 0;
  CloseHandle(h);
  if (!ok) return false;
  id->device = info.dwVolumeSerialNumber;
  id->inode = (uint64_t(info.nFileIndexHigh) << 32) | info.nFileIndexLow;
#else
  struct stat st;
  if (::stat(NativePath(path.c_str()).c_str(), &st) != 0) return false;
  id->device = static_cast<uint64_t>(st.st_dev);
  id->inode = static_cast<uint64_t>(st.st_ino);
#endif
  return true;
}

std::vector<FolderEntry> ListEntries(const std::string& folder) {
  std::vector<FolderEntry> entries;
#if defined(_WIN32)
  std::error_code ec;
  fs::directory_iterator it(fs::u8path(NativePath(folder.c_str())), ec), end;
  for (; !ec && it != end; it.increment(ec)) {
    std::error_code ec2;
    fs::file_status st = it->symlink_status(ec2);
    EntryKind kind = fs::is_symlink(st)        ? EntryKind::kLink
                     : fs::is_directory(st)    ? EntryKind::kFolder
                     : fs::is_regular_file(st) ? EntryKind::kFile
                                               : EntryKind::kOther;
    entries.push_back(FolderEntry{it->path().filename().u8string(), kind});
  }
#else
  // The kind comes with the entry on most file systems; only where it does not is each entry
  // looked at (without following links).
  std::string native = NativePath(folder.c_str());
  DIR* d = ::opendir(native.c_str());
  if (!d) return entries;
  while (struct dirent* e = ::readdir(d)) {
    if (std::strcmp(e->d_name, ".") == 0 || std::strcmp(e->d_name, "..") == 0) continue;
    unsigned char type = e->d_type;
    if (type == DT_UNKNOWN) {
      struct stat st;
      std::string path = native + "/" + e->d_name;
      type = ::lstat(path.c_str(), &st) != 0 ? DT_UNKNOWN
             : S_ISLNK(st.st_mode)           ? DT_LNK
             : S_ISDIR(st.st_mode)           ? DT_DIR
             : S_ISREG(st.st_mode)           ? DT_REG
                                             : DT_UNKNOWN;
    }
    EntryKind kind = type == DT_LNK   ? EntryKind::kLink
                     : type == DT_DIR ? EntryKind::kFolder
                     : type == DT_REG ? EntryKind::kFile
                                      : EntryKind::kOther;
    entries.push_back(FolderEntry{e->d_name, kind});
  }
  ::closedir(d);
#endif
  std::sort(entries.begin(), entries.end(),
            [](const FolderEntry& a, const FolderEntry& b) { return a.name < b.name; });
  return entries;
}

EntryKind KindOf(const std::string& path) {
  std::error_code ec;
  fs::file_status st = fs::status(fs::u8path(NativePath(path.c_str())), ec);
  if (ec) return EntryKind::kOther;
  return fs::is_directory(st)      ? EntryKind::kFolder
         : fs::is_regular_file(st) ? EntryKind::kFile
                                   : EntryKind::kOther;
}

std::string RealPath(const std::string& path) {
  std::error_code ec;
  fs::path p = fs::canonical(fs::u8path(NativePath(path.c_str())), ec);
  return ec ? std::string() : p.u8string();
}

bool IsInsideFolder(const std::string& path, const std::string& folder) {
  if (path.empty() || folder.empty()) return false;
  fs::path p = fs::u8path(path), f = fs::u8path(folder);
  // Component by component, so "/a/bc" is not inside "/a/b".
  auto pi = p.begin();
  for (auto fi = f.begin(); fi != f.end(); ++fi, ++pi) {
    if (fi->empty() && std::next(fi) == f.end()) break;  // a trailing separator
    if (pi == p.end() || *pi != *fi) return false;
  }
  return true;
}

void MaxNameLength(size_t* bytes, size_t* units) {
#if defined(_WIN32)
  if (bytes) *bytes = 0;
  if (units) *units = 255;
#else
  if (bytes) *bytes = 255;
  if (units) *units = 0;
#endif
}

CreateStatus CreateNewFile(const std::string& path, const void* data, size_t size,
                           std::string* reason) {
#if defined(_WIN32)
  std::wstring w = Wide(path);
  // CREATE_NEW fails on any existing name, a link included, without opening what it points to.
  HANDLE h = CreateFileW(w.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW,
                         FILE_ATTRIBUTE_NORMAL | FILE_FLAG_OPEN_REPARSE_POINT, nullptr);
  if (h == INVALID_HANDLE_VALUE) {
    DWORD err = GetLastError();
    if (err == ERROR_FILE_EXISTS || err == ERROR_ALREADY_EXISTS) return CreateStatus::kNameTaken;
    SetReason(reason, LastErrorText());
    return CreateStatus::kFailed;
  }
  const char* p = static_cast<const char*>(data);
  bool ok = true;
  while (ok && size > 0) {
    DWORD chunk = size > 0x40000000 ? 0x40000000 : static_cast<DWORD>(size), done = 0;
    ok = WriteFile(h, p, chunk, &done, nullptr) != 0 && done == chunk;
    p += done;
    size -= done;
  }
  if (!ok) SetReason(reason, LastErrorText());
  if (!CloseHandle(h) && ok) {
    ok = false;
    SetReason(reason, LastErrorText());
  }
  if (!ok) DeleteFileW(w.c_str());
#else
  std::string native = NativePath(path.c_str());
  // O_EXCL refuses every existing name, a dangling link included; O_NOFOLLOW says so twice.
  int fd = ::open(native.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0666);
  if (fd < 0) {
    if (errno == EEXIST) return CreateStatus::kNameTaken;
    SetReason(reason, std::strerror(errno));
    return CreateStatus::kFailed;
  }
  const char* p = static_cast<const char*>(data);
  bool ok = true;
  while (ok && size > 0) {
    ssize_t n = ::write(fd, p, size);
    if (n < 0 && errno == EINTR) continue;
    if (n <= 0) {
      ok = false;
      SetReason(reason, n < 0 ? std::strerror(errno) : "nothing written");
      break;
    }
    p += n;
    size -= static_cast<size_t>(n);
  }
  if (::close(fd) != 0 && ok) {
    ok = false;
    SetReason(reason, std::strerror(errno));
  }
  if (!ok) ::unlink(native.c_str());
#endif
  return ok ? CreateStatus::kCreated : CreateStatus::kFailed;
}

CreateStatus CreateNewFolder(const std::string& path, std::string* reason) {
#if defined(_WIN32)
  if (CreateDirectoryW(Wide(path).c_str(), nullptr)) return CreateStatus::kCreated;
  if (GetLastError() == ERROR_ALREADY_EXISTS) return CreateStatus::kNameTaken;
  SetReason(reason, LastErrorText());
#else
  if (::mkdir(NativePath(path.c_str()).c_str(), 0777) == 0) return CreateStatus::kCreated;
  if (errno == EEXIST) return CreateStatus::kNameTaken;
  SetReason(reason, std::strerror(errno));
#endif
  return CreateStatus::kFailed;
}

bool ReadWholeFile(const std::string& path, std::string* out, std::string* reason) {
  if (!out) return false;
  out->clear();
#if defined(_WIN32)
  std::error_code ec;
  fs::path p = fs::u8path(NativePath(path.c_str()));
  std::FILE* f = _wfopen(p.wstring().c_str(), L"rb");
  if (!f) {
    SetReason(reason, std::strerror(errno));
    return false;
  }
  uintmax_t hint = fs::file_size(p, ec);
  if (!ec && hint > 0 && hint < (uintmax_t(1) << 40)) out->reserve(static_cast<size_t>(hint));
  char buf[65536];
  size_t n;
  while ((n = std::fread(buf, 1, sizeof buf, f)) > 0) out->append(buf, n);
  bool ok = !std::ferror(f);
  if (!ok) SetReason(reason, std::strerror(errno));
  std::fclose(f);
  return ok;
#else
  int fd = ::open(NativePath(path.c_str()).c_str(), O_RDONLY | O_CLOEXEC);
  if (fd < 0) {
    SetReason(reason, std::strerror(errno));
    return false;
  }
  // Sized first, then read to the true end: the size is a hint, the bytes present decide.
  struct stat st;
  size_t have = 0;
  if (::fstat(fd, &st) == 0 && S_ISREG(st.st_mode) && st.st_size > 0 &&
      static_cast<uintmax_t>(st.st_size) < (uintmax_t(1) << 40))
    out->resize(static_cast<size_t>(st.st_size) + 1);
  bool ok = true;
  for (;;) {
    if (have == out->size()) out->resize(have < 65536 ? 65536 : have * 2);
    ssize_t n = ::read(fd, &(*out)[have], out->size() - have);
    if (n < 0 && errno == EINTR) continue;
    if (n < 0) {
      ok = false;
      SetReason(reason, std::strerror(errno));
    }
    if (n <= 0) break;
    have += static_cast<size_t>(n);
  }
  ::close(fd);
  out->resize(ok ? have : 0);
  return ok;
#endif
}

}  // namespace os
}  // namespace hs
