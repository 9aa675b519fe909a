#include "messaging/mms/MimeText.h"

#include <cctype>

#include "messaging/mms/WspTables.h"

namespace hs {
namespace mms {

namespace {

void AppendUtf8(std::string* out, uint32_t cp) {
  if (cp < 0x80) {
    out->push_back(static_cast<char>(cp));
  } else if (cp < 0x800) {
    out->push_back(static_cast<char>(0xC0 | (cp >> 6)));
    out->push_back(static_cast<char>(0x80 | (cp & 0x3F)));
  } else if (cp < 0x10000) {
    out->push_back(static_cast<char>(0xE0 | (cp >> 12)));
    out->push_back(static_cast<char>(0x80 | ((cp >> 6) & 0x3F)));
    out->push_back(static_cast<char>(0x80 | (cp & 0x3F)));
  } else {
    out->push_back(static_cast<char>(0xF0 | (cp >> 18)));
    out->push_back(static_cast<char>(0x80 | ((cp >> 12) & 0x3F)));
    out->push_back(static_cast<char>(0x80 | ((cp >> 6) & 0x3F)));
    out->push_back(static_cast<char>(0x80 | (cp & 0x3F)));
  }
}

/// Length of the well-formed UTF-8 sequence at `p` (at most `n` bytes available), or 0.
size_t Utf8SequenceLength(const unsigned char* p, size_t n) {
  unsigned char c = p[0];
  if (c < 0x80) return 1;
  size_t len;
  uint32_t min;
  uint32_t cp;
  if ((c & 0xE0) == 0xC0) {
    len = 2, min = 0x80, cp = c & 0x1F;
  } else if ((c & 0xF0) == 0xE0) {
    len = 3, min = 0x800, cp = c & 0x0F;
  } else if ((c & 0xF8) == 0xF0) {
    len = 4, min = 0x10000, cp = c & 0x07;
  } else {
    return 0;
  }
  if (len > n) return 0;
  for (size_t i = 1; i < len; ++i) {
    if ((p[i] & 0xC0) != 0x80) return 0;
    cp = (cp << 6) | (p[i] & 0x3F);
  }
  if (cp < min || cp > 0x10FFFF || (cp >= 0xD800 && cp <= 0xDFFF)) return 0;
  return len;
}

int HexValue(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  return -1;
}

int Base64Value(char c) {
  if (c >= 'A' && c <= 'Z') return c - 'A';
  if (c >= 'a' && c <= 'z') return c - 'a' + 26;
  if (c >= '0' && c <= '9') return c - '0' + 52;
  if (c == '+') return 62;
  if (c == '/') return 63;
  return -1;
}

bool Base64Decode(const std::string& in, std::string* out) {
  uint32_t acc = 0;
  int bits = 0;
  for (char c : in) {
    if (c == '=') break;
    int v = Base64Value(c);
    if (v < 0) return false;
    acc = (acc << 6) | static_cast<uint32_t>(v);
    bits += 6;
    if (bits >= 8) {
      bits -= 8;
      out->push_back(static_cast<char>((acc >> bits) & 0xFF));
    }
  }
  return true;
}

bool QDecode(const std::string& in, std::string* out) {
  for (size_t i = 0; i < in.size(); ++i) {
    char c = in[i];
    if (c == '_') {
      out->push_back(' ');
    } else if (c == '=') {
      if (i + 2 >= in.size()) return false;
      int hi = HexValue(in[i + 1]), lo = HexValue(in[i + 2]);
      if (hi < 0 || lo < 0) return false;
      out->push_back(static_cast<char>(hi * 16 + lo));
      i += 2;
    } else {
      out->push_back(c);
    }
  }
  return true;
}

/// Decodes one encoded-word starting at `text[pos]` ("=?"); on success sets `*end` past it.
bool DecodeWord(const std::string& text, size_t pos, size_t* end, std::string* out) {
  size_t q1 = text.find('?', pos + 2);
  if (q1 == std::string::npos || q1 + 2 >= text.size() || text[q1 + 2] != '?') return false;
  size_t stop = text.find("?=", q1 + 3);
  if (stop == std::string::npos) return false;
  std::string charset = text.substr(pos + 2, q1 - pos - 2);
  size_t star = charset.find('*');  // RFC 2231 language suffix
  if (star != std::string::npos) charset.resize(star);
  char mode = static_cast<char>(std::toupper(static_cast<unsigned char>(text[q1 + 1])));
  std::string payload = text.substr(q1 + 3, stop - q1 - 3);
  if (payload.find(' ') != std::string::npos) return false;
  std::string raw;
  if (mode == 'B' ? !Base64Decode(payload, &raw) : mode == 'Q' ? !QDecode(payload, &raw) : true)
    return false;
  int mib = CharsetMib(charset);
  *out += DecodeCharset(reinterpret_cast<const uint8_t*>(raw.data()), raw.size(), mib);
  *end = stop + 2;
  return true;
}

}  // namespace

bool IsUtf8(const char* text, size_t size) {
  const unsigned char* p = reinterpret_cast<const unsigned char*>(text);
  for (size_t i = 0; i < size;) {
    size_t n = Utf8SequenceLength(p + i, size - i);
    if (!n) return false;
    i += n;
  }
  return true;
}

bool IsAscii(const char* text, size_t size) {
  for (size_t i = 0; i < size; ++i)
    if (static_cast<unsigned char>(text[i]) >= 0x80) return false;
  return true;
}

std::string SanitizeUtf8(const std::string& text) {
  std::string out;
  out.reserve(text.size());
  const unsigned char* p = reinterpret_cast<const unsigned char*>(text.data());
  for (size_t i = 0; i < text.size();) {
    size_t n = Utf8SequenceLength(p + i, text.size() - i);
    if (n) {
      out.append(text, i, n);
      i += n;
    } else {
      AppendUtf8(&out, 0xFFFD);
      ++i;
    }
  }
  return out;
}

std::string Utf16ToUtf8(const uint8_t* data, size_t size, bool bigEndian) {
  std::string out;
  out.reserve(size);
  auto unit = [&](size_t i) -> uint32_t {
    return bigEndian ? (uint32_t{data[i]} << 8) | data[i + 1]
                     : (uint32_t{data[i + 1]} << 8) | data[i];
  };
  for (size_t i = 0; i + 1 < size; i += 2) {
    uint32_t u = unit(i);
    if (u >= 0xD800 && u <= 0xDBFF && i + 3 < size) {
      uint32_t lo = unit(i + 2);
      if (lo >= 0xDC00 && lo <= 0xDFFF) {
        AppendUtf8(&out, 0x10000 + ((u - 0xD800) << 10) + (lo - 0xDC00));
        i += 2;
        continue;
      }
    }
    AppendUtf8(&out, (u >= 0xD800 && u <= 0xDFFF) ? 0xFFFD : u);
  }
  return out;
}

std::string Latin1ToUtf8(const uint8_t* data, size_t size) {
  std::string out;
  out.reserve(size);
  for (size_t i = 0; i < size; ++i) AppendUtf8(&out, data[i]);
  return out;
}

std::string DecodeCharset(const uint8_t* data, size_t size, int mib) {
  switch (mib) {
    case kCharsetUcs2:
    case kCharsetUtf16:
      if (size >= 2 && data[0] == 0xFF && data[1] == 0xFE)
        return Utf16ToUtf8(data + 2, size - 2, false);
      if (size >= 2 && data[0] == 0xFE && data[1] == 0xFF)
        return Utf16ToUtf8(data + 2, size - 2, true);
      return Utf16ToUtf8(data, size, true);
    case kCharsetUtf16Be:
      return Utf16ToUtf8(data, size, true);
    case kCharsetUtf16Le:
      return Utf16ToUtf8(data, size, false);
    case kCharsetLatin1:
      return Latin1ToUtf8(data, size);
    default: {
      const char* text = reinterpret_cast<const char*>(data);
      if (IsUtf8(text, size)) return std::string(text, size);
      return Latin1ToUtf8(data, size);
    }
  }
}

std::string SniffTextToUtf8(const uint8_t* data, size_t size) {
  if (size >= 3 && data[0] == 0xEF && data[1] == 0xBB && data[2] == 0xBF)
    return SanitizeUtf8(std::string(reinterpret_cast<const char*>(data + 3), size - 3));
  if (size >= 2 && ((data[0] == 0xFF && data[1] == 0xFE) || (data[0] == 0xFE && data[1] == 0xFF)))
    return DecodeCharset(data, size, kCharsetUtf16);
  // Markup in UTF-16 without a mark starts with a character below 0x80 and a zero byte.
  if (size >= 4 && size % 2 == 0) {
    if (data[0] == 0 && data[1] != 0 && data[2] == 0) return Utf16ToUtf8(data, size, true);
    if (data[0] != 0 && data[1] == 0 && data[3] == 0) return Utf16ToUtf8(data, size, false);
  }
  return DecodeCharset(data, size, 0);
}

std::string DecodeMimeWords(const std::string& text) {
  std::string out;
  size_t i = 0;
  size_t lastWordEnd = std::string::npos;  // where the previous encoded-word ended in `text`
  while (i < text.size()) {
    size_t start = text.find("=?", i);
    if (start == std::string::npos) {
      out.append(text, i, std::string::npos);
      break;
    }
    std::string between = text.substr(i, start - i);
    size_t end = 0;
    std::string word;
    if (!DecodeWord(text, start, &end, &word)) {
      out.append(text, i, start + 2 - i);
      i = start + 2;
      lastWordEnd = std::string::npos;
      continue;
    }
    bool onlyBlanks = between.find_first_not_of(" \t\r\n") == std::string::npos;
    if (!(lastWordEnd == i && onlyBlanks)) out += between;
    out += word;
    i = lastWordEnd = end;
  }
  return out;
}

}  // namespace mms
}  // namespace hs
