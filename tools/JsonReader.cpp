#include "tools/JsonReader.h"

#include <cstdlib>
#include <cstring>

namespace hs {
namespace cli {

namespace {

class Parser {
 public:
  explicit Parser(const std::string& t) : t_(t) {}

  bool Document(JsonValue* v) {
    if (!Value(v, 0)) return false;
    Blank();
    return pos_ == t_.size() || Fail("text after the value");
  }
  std::string error;

 private:
  bool Fail(const char* what) {
    if (error.empty()) error = std::string(what) + " at byte " + std::to_string(pos_);
    return false;
  }
  void Blank() {
    while (pos_ < t_.size() && std::strchr(" \t\r\n", t_[pos_]) && t_[pos_]) ++pos_;
  }
  bool Literal(const char* word) {
    size_t n = std::strlen(word);
    if (t_.compare(pos_, n, word) != 0) return Fail("unknown literal");
    pos_ += n;
    return true;
  }
  bool Value(JsonValue* v, int depth) {
    if (depth > 64) return Fail("nesting too deep");
    Blank();
    if (pos_ >= t_.size()) return Fail("unexpected end");
    char c = t_[pos_];
    if (c == '{') return Object(v, depth);
    if (c == '[') return Array(v, depth);
    if (c == '"') {
      v->type = JsonValue::String;
      return String(&v->str);
    }
    if (c == 't' || c == 'f') {
      v->type = JsonValue::Bool;
      v->boolean = c == 't';
      return Literal(c == 't' ? "true" : "false");
    }
    if (c == 'n') return Literal("null");
    return Number(v);
  }
  bool Number(JsonValue* v) {
    size_t start = pos_;
    while (pos_ < t_.size() && std::strchr("+-0123456789.eE", t_[pos_]) && t_[pos_]) ++pos_;
    if (start == pos_) return Fail("unexpected character");
    std::string num = t_.substr(start, pos_ - start);
    char* end = nullptr;
    v->type = JsonValue::Number;
    v->number = std::strtod(num.c_str(), &end);
    return (end && *end == '\0') || Fail("bad number");
  }
  static void PutUtf8(unsigned cp, std::string* out) {
    if (cp < 0x80) {
      *out += static_cast<char>(cp);
    } else if (cp < 0x800) {
      *out += static_cast<char>(0xC0 | (cp >> 6));
      *out += static_cast<char>(0x80 | (cp & 0x3F));
    } else if (cp < 0x10000) {
      *out += static_cast<char>(0xE0 | (cp >> 12));
      *out += static_cast<char>(0x80 | ((cp >> 6) & 0x3F));
      *out += static_cast<char>(0x80 | (cp & 0x3F));
    } else {
      *out += static_cast<char>(0xF0 | (cp >> 18));
      *out += static_cast<char>(0x80 | ((cp >> 12) & 0x3F));
      *out += static_cast<char>(0x80 | ((cp >> 6) & 0x3F));
      *out += static_cast<char>(0x80 | (cp & 0x3F));
    }
  }
  bool Hex4(unsigned* cp) {
    if (t_.size() - pos_ < 4) return Fail("short \\u escape");
    *cp = 0;
    for (int i = 0; i < 4; ++i) {
      char c = t_[pos_++];
      unsigned d = (c >= '0' && c <= '9')   ? unsigned(c - '0')
                   : (c >= 'a' && c <= 'f') ? unsigned(c - 'a' + 10)
                   : (c >= 'A' && c <= 'F') ? unsigned(c - 'A' + 10)
                                            : 16u;
      if (d > 15) return Fail("bad \\u escape");
      *cp = *cp * 16 + d;
    }
    return true;
  }
  bool String(std::string* out) {
    ++pos_;  // the opening quote
    while (pos_ < t_.size()) {
      char c = t_[pos_++];
      if (c == '"') return true;
      if (static_cast<unsigned char>(c) < 0x20) return Fail("control character in string");
      if (c != '\\') {
        *out += c;
        continue;
      }
      if (pos_ >= t_.size()) break;
      char e = t_[pos_++];
      const char* simple = std::strchr("\"\\/bfnrt", e);
      if (simple && e) {
        *out += "\"\\/\b\f\n\r\t"[simple - "\"\\/bfnrt"];
      } else if (e == 'u') {
        unsigned cp = 0;
        if (!Hex4(&cp)) return false;
        if (cp >= 0xD800 && cp < 0xDC00 && t_.compare(pos_, 2, "\\u") == 0) {
          pos_ += 2;
          unsigned lo = 0;
          if (!Hex4(&lo)) return false;
          if (lo < 0xDC00 || lo > 0xDFFF) return Fail("bad surrogate pair");
          cp = 0x10000 + ((cp - 0xD800) << 10) + (lo - 0xDC00);
        }
        PutUtf8(cp, out);
      } else {
        return Fail("bad escape");
      }
    }
    return Fail("unterminated string");
  }
  bool Array(JsonValue* v, int depth) {
    v->type = JsonValue::Array;
    ++pos_;
    Blank();
    if (pos_ < t_.size() && t_[pos_] == ']') return ++pos_, true;
    for (;;) {
      v->items.emplace_back();
      if (!Value(&v->items.back(), depth + 1)) return false;
      Blank();
      if (pos_ < t_.size() && t_[pos_] == ',') {
        ++pos_;
        continue;
      }
      if (pos_ < t_.size() && t_[pos_] == ']') return ++pos_, true;
      return Fail("expected ',' or ']'");
    }
  }
  bool Object(JsonValue* v, int depth) {
    v->type = JsonValue::Object;
    ++pos_;
    Blank();
    if (pos_ < t_.size() && t_[pos_] == '}') return ++pos_, true;
    for (;;) {
      Blank();
      if (pos_ >= t_.size() || t_[pos_] != '"') return Fail("expected a key");
      std::string key;
      if (!String(&key)) return false;
      Blank();
      if (pos_ >= t_.size() || t_[pos_] != ':') return Fail("expected ':'");
      ++pos_;
      v->members.emplace_back(std::move(key), JsonValue());
      if (!Value(&v->members.back().second, depth + 1)) return false;
      Blank();
      if (pos_ < t_.size() && t_[pos_] == ',') {
        ++pos_;
        continue;
      }
      if (pos_ < t_.size() && t_[pos_] == '}') return ++pos_, true;
      return Fail("expected ',' or '}'");
    }
  }

  const std::string& t_;
  size_t pos_ = 0;
};

}  // namespace

const JsonValue* JsonValue::Find(const std::string& key) const {
  for (const auto& m : members)
    if (m.first == key) return &m.second;
  return nullptr;
}

bool ParseJson(const std::string& text, JsonValue* out, std::string* error) {
  Parser p(text);
  *out = JsonValue();
  if (p.Document(out)) return true;
  if (error) *error = p.error;
  return false;
}

}  // namespace cli
}  // namespace hs
