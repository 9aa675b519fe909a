#include "handset/platform/Strings.h"

#include <cstdarg>
#include <cstdio>
#include <cstring>

#include "platform/Text.h"

int CString::CompareNoCase(const char* other) const {
  return hs::os::CompareNoCase(c_str(), other);
}

void CString::Format(const char* fmt, ...) {
  va_list args;
  va_start(args, fmt);
  va_list copy;
  va_copy(copy, args);
  int n = std::vsnprintf(nullptr, 0, fmt, copy);
  va_end(copy);
  if (n < 0) {
    clear();
  } else {
    std::string out(static_cast<size_t>(n) + 1, '\0');
    std::vsnprintf(&out[0], out.size(), fmt, args);
    out.resize(static_cast<size_t>(n));
    assign(std::move(out));
  }
  va_end(args);
}

int CxStringList::AddTokens(const char* text, const char* separators, bool keepEmpty) {
  if (!text) return 0;
  if (!separators) separators = "";
  int added = 0;
  const char* start = text;
  for (const char* p = text;; ++p) {
    bool end = (*p == '\0');
    if (end || std::strchr(separators, *p)) {
      if (keepEmpty || p != start) {
        push_back(CString(start, static_cast<size_t>(p - start)));
        ++added;
      }
      if (end) break;
      start = p + 1;
    }
  }
  return added;
}

CString GetFileType(const char* path) {
  if (!path) return CString();
  const char* dot = std::strrchr(path, '.');
  if (!dot) return CString();
  // A dot before the last separator is part of a directory, not an extension.
  if (std::strchr(dot, '/') || std::strchr(dot, '\\')) return CString();
  return CString(dot + 1);
}
