#include "platform/Os.h"

#include <cctype>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <random>
#include <system_error>

#if defined(_WIN32)
#include <windows.h>
#else
#include <dlfcn.h>
#include <fcntl.h>
#include <unistd.h>
#endif

namespace fs = std::filesystem;

namespace hs {
namespace os {

namespace {

#if !defined(_WIN32)
std::string ThisLibraryDir() {
  Dl_info info{};
  if (dladdr(reinterpret_cast<void*>(&TempPath), &info) && info.dli_fname) {
    std::error_code ec;
    fs::path p = fs::absolute(info.dli_fname, ec);
    if (!ec) return p.parent_path().string();
  }
  return std::string();
}
#endif

void* LoadFile(const std::string& file) {
#if defined(_WIN32)
  return reinterpret_cast<void*>(LoadLibraryA(file.c_str()));
#else
  return dlopen(file.c_str(), RTLD_NOW | RTLD_LOCAL);
#endif
}

}  // namespace

Module::~Module() {
  Close();
}

std::vector<std::string> Module::FileNames(const char* base) {
  std::vector<std::string> names;
  if (!base || !*base) return names;
#if defined(_WIN32)
  names.push_back(std::string(base) + ".dll");
#else
  std::string stem = std::string("lib") + base + ".so";
  names.push_back(stem);
  for (int v = 0; v <= 9; ++v) names.push_back(stem + "." + std::to_string(v));
#endif
  return names;
}

bool Module::Open(const char* base) {
  Close();
  std::vector<std::string> dirs;
  if (const char* env = std::getenv("HANDSET_MODULE_PATH"))
    if (*env) dirs.push_back(env);
#if !defined(_WIN32)
  std::string here = ThisLibraryDir();
  if (!here.empty()) dirs.push_back(here);
#endif
  for (const std::string& name : FileNames(base)) {
    for (const std::string& dir : dirs) {
      std::error_code ec;
      fs::path p = fs::path(dir) / name;
      if (fs::exists(p, ec) && (handle_ = LoadFile(p.string())) != nullptr) return true;
    }
    if ((handle_ = LoadFile(name)) != nullptr) return true;
  }
  return false;
}

void Module::Close() {
  if (!handle_) return;
#if defined(_WIN32)
  FreeLibrary(reinterpret_cast<HMODULE>(handle_));
#else
  dlclose(handle_);
#endif
  handle_ = nullptr;
}

void* Module::Symbol(const char* name) const {
  if (!handle_ || !name) return nullptr;
#if defined(_WIN32)
  return reinterpret_cast<void*>(GetProcAddress(reinterpret_cast<HMODULE>(handle_), name));
#else
  return dlsym(handle_, name);
#endif
}

bool Module::CanLoad(const char* base) {
  Module m;
  return m.Open(base);
}

std::string TempPath() {
  std::error_code ec;
  fs::path p = fs::temp_directory_path(ec);
  if (ec) p = ".";
  std::string s = p.string();
  if (s.empty() || (s.back() != '/' && s.back() != '\\'))
    s += static_cast<char>(fs::path::preferred_separator);
  return s;
}

std::string TempFileName(const std::string& dir, const std::string& prefix) {
  std::random_device rd;
  std::mt19937 gen(rd());
  std::uniform_int_distribution<unsigned> dist(0, 0xFFFF);
  // Like the system call, the name is the prefix (up to three characters), a hex number and ".tmp".
  std::string pre = prefix.substr(0, 3);
  for (int attempt = 0; attempt < 1000; ++attempt) {
    char num[8];
    std::snprintf(num, sizeof(num), "%X", dist(gen));
    fs::path p = fs::path(dir.empty() ? TempPath() : dir) / (pre + num + ".tmp");
    std::string path = p.string();
#if defined(_WIN32)
    HANDLE h = CreateFileA(path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW,
                           FILE_ATTRIBUTE_NORMAL, nullptr);
    if (h != INVALID_HANDLE_VALUE) {
      CloseHandle(h);
      return path;
    }
    if (GetLastError() != ERROR_FILE_EXISTS) return std::string();
#else
    int fd = ::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL, 0600);
    if (fd >= 0) {
      ::close(fd);
      return path;
    }
    if (errno != EEXIST) return std::string();
#endif
  }
  return std::string();
}

bool DeleteFile(const std::string& path) {
  std::error_code ec;
  return fs::remove(path, ec) && !ec;
}

namespace {

std::string Trim(const std::string& s) {
  size_t b = 0, e = s.size();
  while (b < e && (s[b] == ' ' || s[b] == '\t' || s[b] == '\r' || s[b] == '\n')) ++b;
  while (e > b && (s[e - 1] == ' ' || s[e - 1] == '\t' || s[e - 1] == '\r' || s[e - 1] == '\n'))
    --e;
  return s.substr(b, e - b);
}

bool EqualNoCase(const std::string& a, const char* b) {
  size_t n = std::strlen(b);
  if (a.size() != n) return false;
  for (size_t i = 0; i < n; ++i)
    if (std::tolower(static_cast<unsigned char>(a[i])) !=
        std::tolower(static_cast<unsigned char>(b[i])))
      return false;
  return true;
}

uint32_t CopyOut(const std::string& value, char* out, uint32_t size) {
  if (!out || size == 0) return 0;
  uint32_t n = value.size() < size - 1 ? static_cast<uint32_t>(value.size()) : size - 1;
  std::memcpy(out, value.data(), n);
  out[n] = '\0';
  return n;
}

}  // namespace

uint32_t GetPrivateProfileString(const char* section, const char* key, const char* def, char* out,
                                 uint32_t size, const char* path) {
  std::string fallback = Trim(def ? def : "");
  std::vector<uint8_t> data;
  if (!section || !key || !path || !ReadFile(path, &data)) return CopyOut(fallback, out, size);
  std::string text(data.begin(), data.end());
  bool inSection = false;
  size_t pos = 0;
  while (pos < text.size()) {
    size_t eol = text.find_first_of("\r\n", pos);
    if (eol == std::string::npos) eol = text.size();
    std::string line = Trim(text.substr(pos, eol - pos));
    pos = eol + 1;
    if (line.empty() || line[0] == ';') continue;
    if (line[0] == '[') {
      size_t close = line.find(']');
      inSection =
          close != std::string::npos && EqualNoCase(Trim(line.substr(1, close - 1)), section);
      continue;
    }
    if (!inSection) continue;
    size_t eq = line.find('=');
    if (eq == std::string::npos || !EqualNoCase(Trim(line.substr(0, eq)), key)) continue;
    std::string value = Trim(line.substr(eq + 1));
    if (value.size() >= 2 && ((value.front() == '"' && value.back() == '"') ||
                              (value.front() == '\'' && value.back() == '\'')))
      value = value.substr(1, value.size() - 2);
    return CopyOut(value, out, size);
  }
  return CopyOut(fallback, out, size);
}

size_t AnsiToUtf16Length(const char* text, size_t length) {
  if (!text) return 0;
  return AnsiToUtf16(text, length).size();
}

std::u16string AnsiToUtf16(const char* text, size_t length) {
  std::u16string out;
  if (!text) return out;
#if defined(_WIN32)
  int n = MultiByteToWideChar(CP_ACP, 0, text, static_cast<int>(length), nullptr, 0);
  if (n > 0) {
    std::wstring w(static_cast<size_t>(n), L'\0');
    MultiByteToWideChar(CP_ACP, 0, text, static_cast<int>(length), &w[0], n);
    out.assign(w.begin(), w.end());
  }
#else
  const unsigned char* s = reinterpret_cast<const unsigned char*>(text);
  size_t i = 0;
  out.reserve(length);
  while (i < length) {
    unsigned c = s[i];
    int extra = c < 0x80 ? 0 : (c >> 5) == 6 ? 1 : (c >> 4) == 14 ? 2 : (c >> 3) == 30 ? 3 : -1;
    uint32_t cp = extra == 1 ? (c & 0x1F) : extra == 2 ? (c & 0x0F) : extra == 3 ? (c & 0x07) : c;
    bool valid = extra >= 0 && i + static_cast<size_t>(extra) < length;
    for (int k = 1; valid && k <= extra; ++k) {
      unsigned cc = s[i + static_cast<size_t>(k)];
      if ((cc & 0xC0) != 0x80) valid = false;
      cp = (cp << 6) | (cc & 0x3F);
    }
    if (valid &&
        ((extra == 1 && cp < 0x80) || (extra == 2 && cp < 0x800) ||
         (extra == 3 && (cp < 0x10000 || cp > 0x10FFFF)) || (cp >= 0xD800 && cp <= 0xDFFF)))
      valid = false;
    if (!valid) {
      // An invalid byte stands for itself, as the replacement character.
      out.push_back(u'\xFFFD');
      ++i;
      continue;
    }
    if (cp >= 0x10000) {
      cp -= 0x10000;
      out.push_back(static_cast<char16_t>(0xD800 + (cp >> 10)));
      out.push_back(static_cast<char16_t>(0xDC00 + (cp & 0x3FF)));
    } else {
      out.push_back(static_cast<char16_t>(cp));
    }
    i += static_cast<size_t>(extra) + 1;
  }
#endif
  return out;
}

std::string Utf16ToAnsi(const char16_t* units, size_t count) {
  std::string out;
  if (!units || count == 0) return out;
#if defined(_WIN32)
  std::wstring w(units, units + count);
  int n = WideCharToMultiByte(CP_ACP, 0, w.data(), static_cast<int>(w.size()), nullptr, 0, nullptr,
                              nullptr);
  if (n > 0) {
    out.resize(static_cast<size_t>(n));
    WideCharToMultiByte(CP_ACP, 0, w.data(), static_cast<int>(w.size()), &out[0], n, nullptr,
                        nullptr);
  }
#else
  out.reserve(count);
  for (size_t i = 0; i < count; ++i) {
    uint32_t cp = units[i];
    if (cp >= 0xD800 && cp <= 0xDBFF && i + 1 < count && units[i + 1] >= 0xDC00 &&
        units[i + 1] <= 0xDFFF) {
      cp = 0x10000 + ((cp - 0xD800) << 10) + (units[i + 1] - 0xDC00u);
      ++i;
    } else if (cp >= 0xD800 && cp <= 0xDFFF) {
      cp = 0xFFFD;
    }
    if (cp < 0x80) {
      out.push_back(static_cast<char>(cp));
    } else if (cp < 0x800) {
      out.push_back(static_cast<char>(0xC0 | (cp >> 6)));
      out.push_back(static_cast<char>(0x80 | (cp & 0x3F)));
    } else if (cp < 0x10000) {
      out.push_back(static_cast<char>(0xE0 | (cp >> 12)));
      out.push_back(static_cast<char>(0x80 | ((cp >> 6) & 0x3F)));
      out.push_back(static_cast<char>(0x80 | (cp & 0x3F)));
    } else {
      out.push_back(static_cast<char>(0xF0 | (cp >> 18)));
      out.push_back(static_cast<char>(0x80 | ((cp >> 12) & 0x3F)));
      out.push_back(static_cast<char>(0x80 | ((cp >> 6) & 0x3F)));
      out.push_back(static_cast<char>(0x80 | (cp & 0x3F)));
    }
  }
#endif
  return out;
}

std::string ConfigDir() {
  if (const char* env = std::getenv("HANDSET_CONFIG_DIR"))
    if (*env) return env;
#if defined(_WIN32)
  if (const char* app = std::getenv("APPDATA")) return (fs::path(app) / "handset").string();
#else
  if (const char* xdg = std::getenv("XDG_CONFIG_HOME"))
    if (*xdg) return (fs::path(xdg) / "handset").string();
  if (const char* home = std::getenv("HOME"))
    if (*home) return (fs::path(home) / ".config" / "handset").string();
#endif
  return (fs::path(TempPath()) / "handset-config").string();
}

bool ReadFile(const std::string& path, std::vector<uint8_t>* out) {
  std::FILE* f = std::fopen(path.c_str(), "rb");
  if (!f) return false;
  out->clear();
  uint8_t buf[65536];
  size_t n;
  while ((n = std::fread(buf, 1, sizeof(buf), f)) > 0) out->insert(out->end(), buf, buf + n);
  bool ok = !std::ferror(f);
  std::fclose(f);
  return ok;
}

bool WriteFile(const std::string& path, const void* data, size_t size) {
  std::FILE* f = std::fopen(path.c_str(), "w+b");
  if (!f) return false;
  bool ok = size == 0 || std::fwrite(data, 1, size, f) == size;
  return std::fclose(f) == 0 && ok;
}

bool WriteFileAtomic(const std::string& path, const void* data, size_t size) {
  std::error_code ec;
  fs::path target(path);
  if (target.has_parent_path()) fs::create_directories(target.parent_path(), ec);
  std::string tmp = TempFileName(target.has_parent_path() ? target.parent_path().string() : ".",
                                 target.filename().string());
  if (tmp.empty()) return false;
  std::FILE* f = std::fopen(tmp.c_str(), "wb");
  bool ok = f != nullptr;
  if (ok && size) ok = std::fwrite(data, 1, size, f) == size;
  if (f) {
    ok = std::fflush(f) == 0 && ok;
#if !defined(_WIN32)
    ok = ::fsync(fileno(f)) == 0 && ok;
#endif
    ok = std::fclose(f) == 0 && ok;
  }
  if (ok) {
    fs::rename(tmp, target, ec);
    ok = !ec;
  }
  if (!ok) DeleteFile(tmp);
  return ok;
}

}  // namespace os
}  // namespace hs
