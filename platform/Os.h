#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

// The operating-system services the library needs, behind one small interface. Only the files
// of this folder know which system they run on.
namespace hs {
namespace os {

/// A module (shared library) loaded at run time.
class Module {
 public:
  Module() = default;
  ~Module();
  Module(const Module&) = delete;
  Module& operator=(const Module&) = delete;

  /// Loads the module named `base` by the platform's convention: "<base>.dll" on Windows,
  /// "lib<base>.so" (then "lib<base>.so.N") on POSIX. Looked for first in the folder named by
  /// HANDSET_MODULE_PATH, then next to this library, then on the loader's path.
  bool Open(const char* base);
  void Close();
  bool IsOpen() const { return handle_ != nullptr; }
  /// The address of an exported symbol, or null.
  void* Symbol(const char* name) const;
  /// The file names tried for `base`, in order, for messages.
  static std::vector<std::string> FileNames(const char* base);
  /// True when `base` can be loaded (it is loaded and released again).
  static bool CanLoad(const char* base);

 private:
  void* handle_ = nullptr;
};

/// The folder for temporary files, ending in a separator (GetTempPathA behaviour).
std::string TempPath();
/// Creates a new, empty, uniquely named file in `dir` whose name starts with `prefix` and returns
/// its path; empty on failure (GetTempFileNameA behaviour with a unique number of 0).
std::string TempFileName(const std::string& dir, const std::string& prefix);
/// Deletes a file; false when it could not be deleted.
bool DeleteFile(const std::string& path);

/// Reads `key` of `section` from an INI file (GetPrivateProfileStringA behaviour): section and key
/// names compare without regard to ASCII case, surrounding blanks of the value are trimmed, one
/// pair of surrounding quotes is removed. Copies at most `size - 1` bytes and a NUL into `out` and
/// returns the count copied; a missing file, section or key copies `def` instead.
uint32_t GetPrivateProfileString(const char* section, const char* key, const char* def, char* out,
                                 uint32_t size, const char* path);

/// Number of UTF-16 units of an ANSI text (UTF-8 on POSIX; invalid bytes count one unit each).
size_t AnsiToUtf16Length(const char* text, size_t length);
/// ANSI (UTF-8 on POSIX) to UTF-16.
std::u16string AnsiToUtf16(const char* text, size_t length);
/// UTF-16 to ANSI (UTF-8 on POSIX). A lone surrogate becomes the replacement character.
std::string Utf16ToAnsi(const char16_t* units, size_t count);

/// The per-user configuration folder of the library (HANDSET_CONFIG_DIR overrides it).
std::string ConfigDir();
/// Reads a whole file; false when it cannot be opened or read.
bool ReadFile(const std::string& path, std::vector<uint8_t>* out);
/// Creates or truncates a file and writes `size` bytes to it; false when anything fails.
bool WriteFile(const std::string& path, const void* data, size_t size);
/// Writes a file atomically: a temporary file beside it, flushed, then renamed over it.
bool WriteFileAtomic(const std::string& path, const void* data, size_t size);

}  // namespace os
}  // namespace hs
