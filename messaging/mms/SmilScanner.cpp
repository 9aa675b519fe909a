#include "messaging/mms/SmilScanner.h"

#include <cstdlib>

#include "messaging/mms/MimeText.h"
#include "messaging/mms/WspTables.h"

namespace hs {
namespace mms {

namespace {

bool IsBlank(char c) {
  return c == ' ' || c == '\t' || c == '\r' || c == '\n';
}

bool IsNameStart(char c) {
  return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || c == '_' || c == ':' ||
         static_cast<unsigned char>(c) >= 0x80;
}

bool IsNameChar(char c) {
  return IsNameStart(c) || (c >= '0' && c <= '9') || c == '-' || c == '.';
}

void AppendCodePoint(std::string* out, unsigned long cp) {
  if (cp == 0 || cp > 0x10FFFF || (cp >= 0xD800 && cp <= 0xDFFF)) cp = 0xFFFD;
  uint8_t units[4];
  size_t n;
  if (cp < 0x80) {
    units[0] = static_cast<uint8_t>(cp), n = 1;
  } else if (cp < 0x800) {
    units[0] = static_cast<uint8_t>(0xC0 | (cp >> 6));
    units[1] = static_cast<uint8_t>(0x80 | (cp & 0x3F)), n = 2;
  } else if (cp < 0x10000) {
    units[0] = static_cast<uint8_t>(0xE0 | (cp >> 12));
    units[1] = static_cast<uint8_t>(0x80 | ((cp >> 6) & 0x3F));
    units[2] = static_cast<uint8_t>(0x80 | (cp & 0x3F)), n = 3;
  } else {
    units[0] = static_cast<uint8_t>(0xF0 | (cp >> 18));
    units[1] = static_cast<uint8_t>(0x80 | ((cp >> 12) & 0x3F));
    units[2] = static_cast<uint8_t>(0x80 | ((cp >> 6) & 0x3F));
    units[3] = static_cast<uint8_t>(0x80 | (cp & 0x3F)), n = 4;
  }
  out->append(reinterpret_cast<const char*>(units), n);
}

/// An attribute value as XML reads it: character and predefined entity references decoded,
/// line ends and tabs as blanks. Unknown references stay as written.
std::string DecodeAttribute(const std::string& raw) {
  std::string out;
  for (size_t i = 0; i < raw.size(); ++i) {
    char c = raw[i];
    if (c == '\r') {
      out += ' ';
      if (i + 1 < raw.size() && raw[i + 1] == '\n') ++i;
      continue;
    }
    if (c == '\n' || c == '\t') {
      out += ' ';
      continue;
    }
    size_t semi = c == '&' ? raw.find(';', i) : std::string::npos;
    if (semi == std::string::npos || semi - i > 12) {
      out += c;
      continue;
    }
    std::string ent = raw.substr(i + 1, semi - i - 1);
    static const char* const kNames[][2] = {
        {"lt", "<"}, {"gt", ">"}, {"amp", "&"}, {"quot", "\""}, {"apos", "'"}};
    bool done = false;
    for (const auto& e : kNames)
      if (ent == e[0]) out += e[1], done = true;
    if (!done && ent.size() > 1 && ent[0] == '#') {
      bool hex = ent[1] == 'x' || ent[1] == 'X';
      std::string digits = ent.substr(hex ? 2 : 1);
      char* end = nullptr;
      unsigned long cp = std::strtoul(digits.c_str(), &end, hex ? 16 : 10);
      if (!digits.empty() && end && *end == '\0' && digits[0] != '-' && digits[0] != '+') {
        AppendCodePoint(&out, cp);
        done = true;
      }
    }
    if (!done) {
      out += c;
      continue;
    }
    i = semi;
  }
  return out;
}

/// Index of the first '>' at or after `from` outside quotes and brackets, or npos.
size_t DeclarationEnd(const std::string& t, size_t from) {
  char quote = 0;
  int depth = 0;
  for (size_t i = from; i < t.size(); ++i) {
    char c = t[i];
    if (quote) {
      if (c == quote) quote = 0;
    } else if (c == '"' || c == '\'') {
      quote = c;
    } else if (c == '[') {
      ++depth;
    } else if (c == ']' && depth > 0) {
      --depth;
    } else if (c == '>' && depth == 0) {
      return i;
    }
  }
  return std::string::npos;
}

/// Reads the attributes of a start tag from `i`; returns where scanning goes on.
size_t ReadAttributes(const std::string& t, size_t i, MarkupTag* tag) {
  const size_t n = t.size();
  while (i < n) {
    while (i < n && IsBlank(t[i])) ++i;
    if (i >= n) break;
    if (t[i] == '>') return i + 1;
    if (t[i] == '<') return i;  // the tag was never closed: the next one begins here
    if (t[i] == '/' || t[i] == '?') {
      ++i;
      continue;
    }
    size_t nameStart = i;
    while (i < n && !IsBlank(t[i]) && t[i] != '=' && t[i] != '>' && t[i] != '<' && t[i] != '/') ++i;
    std::string name = t.substr(nameStart, i - nameStart);
    if (name.empty()) {
      ++i;  // a stray '=' or the like
      continue;
    }
    size_t j = i;
    while (j < n && IsBlank(t[j])) ++j;
    std::string value;
    if (j < n && t[j] == '=') {
      ++j;
      while (j < n && IsBlank(t[j])) ++j;
      if (j < n && (t[j] == '"' || t[j] == '\'')) {
        size_t close = t.find(t[j], j + 1);
        size_t stop = close == std::string::npos ? t.find('>', j + 1) : close;
        if (stop == std::string::npos) stop = n;
        value = t.substr(j + 1, stop - j - 1);
        j = close == std::string::npos ? stop : close + 1;
      } else {
        size_t s = j;
        while (j < n && !IsBlank(t[j]) && t[j] != '>' && t[j] != '<') ++j;
        if (j > s && t[j - 1] == '/' && j < n && t[j] == '>') --j;  // "a=b/>"
        value = t.substr(s, j - s);
      }
      i = j;
    }
    tag->attributes.emplace_back(name, DecodeAttribute(value));
  }
  return n;
}

std::string LocalName(const std::string& name) {
  size_t colon = name.rfind(':');
  return colon == std::string::npos ? name : name.substr(colon + 1);
}

}  // namespace

const std::string* MarkupTag::Find(const char* attr) const {
  for (const auto& a : attributes)
    if (EqualNoCase(LocalName(a.first), attr)) return &a.second;
  return nullptr;
}

void ScanStartTags(const std::string& t, const std::function<bool(const MarkupTag&)>& onTag) {
  const size_t n = t.size();
  size_t i = 0;
  while (i < n) {
    size_t lt = t.find('<', i);
    if (lt == std::string::npos) return;
    size_t end;
    if (t.compare(lt, 4, "<!--") == 0) {
      end = t.find("-->", lt + 4);
      i = end == std::string::npos ? n : end + 3;
    } else if (t.compare(lt, 9, "<![CDATA[") == 0) {
      end = t.find("]]>", lt + 9);
      i = end == std::string::npos ? n : end + 3;
    } else if (t.compare(lt, 2, "<!") == 0 || t.compare(lt, 2, "<?") == 0 ||
               t.compare(lt, 2, "</") == 0) {
      end = DeclarationEnd(t, lt + 2);
      i = end == std::string::npos ? n : end + 1;
    } else if (lt + 1 < n && IsNameStart(t[lt + 1])) {
      size_t s = lt + 1, e = s;
      while (e < n && IsNameChar(t[e])) ++e;
      MarkupTag tag;
      tag.name = LocalName(t.substr(s, e - s));
      i = ReadAttributes(t, e, &tag);
      if (!onTag(tag)) return;
    } else {
      i = lt + 1;  // a lone '<' in text
    }
  }
}

bool IsSmilText(const uint8_t* data, size_t size) {
  if (!data || size == 0) return false;
  bool smil = false;
  ScanStartTags(SniffTextToUtf8(data, size), [&](const MarkupTag& tag) {
    smil = EqualNoCase(tag.name, "smil");
    return false;
  });
  return smil;
}

std::vector<std::string> SmilMediaReferences(const uint8_t* data, size_t size) {
  static const char* const kMedia[] = {"img", "text",      "audio",     "video",
                                       "ref", "animation", "textstream"};
  std::vector<std::string> refs;
  if (!data || size == 0) return refs;
  ScanStartTags(SniffTextToUtf8(data, size), [&](const MarkupTag& tag) {
    for (const char* m : kMedia) {
      if (!EqualNoCase(tag.name, m)) continue;
      if (const std::string* src = tag.Find("src")) refs.push_back(*src);
      break;
    }
    return true;
  });
  return refs;
}

}  // namespace mms
}  // namespace hs
