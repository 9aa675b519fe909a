#include "pim/vobject/ValueCodec.h"

#include <cstring>

#include "handset/pim/QP.h"

namespace hs {
namespace vobj {

namespace {

bool CopiedAsIs(unsigned char c) {
  return c == ' ' || (c >= 0x25 && c <= 0x3C) || c == 0x3E || c == 0x3F || (c >= 'A' && c <= 'Z') ||
         c == '_' || (c >= 'a' && c <= 'z');
}

bool IsUpperHex(char c) {
  return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'F');
}

// True when every '=' starts a complete upper-case escape: only then is the text surely encoded
// (a bare URL such as "?a=1" must not lose its '=').
bool LooksEncoded(const CString& s) {
  for (size_t i = 0; i < s.size(); ++i) {
    if (s[i] != '=') continue;
    if (i + 2 >= s.size() || !IsUpperHex(s[i + 1]) || !IsUpperHex(s[i + 2])) return false;
    i += 2;
  }
  return true;
}

bool StartsWith(const CString& s, size_t pos, const char* lit) {
  return s.compare(pos, std::strlen(lit), lit) == 0;
}

}  // namespace

CString EncodeQpValue(const CString& value) {
  static const char kDigits[] = "0123456789ABCDEF";
  CString out;
  out.reserve(value.size() + value.size() / 4);
  for (unsigned char c : value) {
    if (CopiedAsIs(c)) {
      out.push_back(static_cast<char>(c));
    } else {
      out.push_back('=');
      out.push_back(kDigits[c >> 4]);
      out.push_back(kDigits[c & 15]);
    }
  }
  return out;
}

CString ExtractShortcutUrl(const CString& raw, bool quotedPrintable) {
  const char kSection[] = "[InternetShortcut]";
  if (!StartsWith(raw, 0, kSection)) return raw;
  size_t pos = sizeof(kSection) - 1;
  // Phones put the line break of the embedded shortcut file either encoded or literally.
  for (;;) {
    if (StartsWith(raw, pos, "=0D=0A")) {
      pos += 6;
    } else if (StartsWith(raw, pos, "=0A")) {
      pos += 3;
    } else if (pos < raw.size() && (raw[pos] == '\r' || raw[pos] == '\n' || raw[pos] == ' ')) {
      ++pos;
    } else {
      break;
    }
  }
  if (StartsWith(raw, pos, "URL=")) pos += 4;
  size_t end = pos;
  while (end < raw.size() && raw[end] != '\r' && raw[end] != '\n' &&
         !(raw[end] == '=' && (StartsWith(raw, end, "=0D") || StartsWith(raw, end, "=0A"))))
    ++end;
  CString url = raw.substr(pos, end - pos);
  if (quotedPrintable && url.find('=') != CString::npos && LooksEncoded(url)) {
    CQP qp;
    if (const char* d = qp.Decode(url.c_str())) url = d;
  }
  return url;
}

}  // namespace vobj
}  // namespace hs
