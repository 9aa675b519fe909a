#include "platform/Folders.h"

#include <algorithm>
#include <cstring>
#include <filesystem>

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

}  // namespace os
}  // namespace hs
