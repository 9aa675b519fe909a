#include "handset/pim/VObjLite.h"

#include <cstring>

#include "pim/vobject/ValueCodec.h"

namespace {

bool IsFormalDefEmpty(const _FormalDef& row) {
  return !row.name && !row.value && !row.sub;
}

size_t RowCount(const _FormalDef* formal) {
  size_t n = 0;
  while (!IsFormalDefEmpty(formal[n])) ++n;
  return n;
}

bool StartsWith(const CString& line, const char* prefix) {
  const char* p = line.c_str();
  while (*prefix && *p == *prefix) ++p, ++prefix;
  return *prefix == '\0';
}

// Splits at every CR and LF; empty lines (including the one between CR and LF) are dropped.
void SplitLines(const CString& text, CStringList& lines) {
  const char* p = text.data();
  const char* end = p + text.size();
  lines.reserve(16);
  while (p < end) {
    const char* q = p;
    while (q < end && *q != '\r' && *q != '\n') ++q;
    if (q > p) lines.emplace_back(p, static_cast<size_t>(q - p));
    p = q + 1;
  }
}

}  // namespace

CVObjLite::CVObjLite(const _FormalDef* formal) : m_pFormal(formal) {}

CVObjLite::~CVObjLite() {
  RemoveAllProperties();
  _FreePropVals();
}

CVObjLite::CVObjLite(const CVObjLite& other) : m_pFormal(other.m_pFormal) {
  _CopyFrom(other);
}

CVObjLite& CVObjLite::operator=(const CVObjLite& other) {
  if (this != &other) {
    RemoveAllProperties();
    _FreePropVals();
    m_pFormal = other.m_pFormal;
    _CopyFrom(other);
  }
  return *this;
}

void CVObjLite::_CopyFrom(const CVObjLite& other) {
  for (CProperty* p : other.m_props) m_props.AddTail(new CProperty(*p));
  for (_PropValDef* d : other.m_propVals) m_propVals.AddTail(new _PropValDef(*d));
  m_nErrorCode = other.m_nErrorCode;
  m_pErrorFormal = other.m_pErrorFormal;
  m_setAside = other.m_setAside;
}

void CVObjLite::_FreePropVals() {
  for (_PropValDef* d : m_propVals) delete d;
  m_propVals.RemoveAll();
}

void CVObjLite::RemoveAllProperties() {
  for (CProperty* p : m_props) delete p;
  m_props.RemoveAll();
}

bool CVObjLite::IsCtrlText(const char* text) {
  if (!text || !*text) return false;
  return text[0] == '<' && text[std::strlen(text) - 1] == '>';
}

_PropValDef* CVObjLite::SearchPropValTable(const char* key) {
  if (!key) return nullptr;
  for (_PropValDef* d : m_propVals)
    if (d->key && std::strcmp(d->key, key) == 0) return d;
  return nullptr;
}

_PropValDef* CVObjLite::AddPropValDef(const char* key, const char* value) {
  if (!key) return nullptr;
  _PropValDef* d = SearchPropValTable(key);
  if (!d) {
    d = new _PropValDef{key, CString()};
    m_propVals.AddTail(d);
  }
  d->value = value;
  return d;
}

CProperty* CVObjLite::_FindProperty(CPropertyList& props, const char* name) {
  for (CProperty* p : props) {
    if (p->m_bNested) {
      if (CProperty* q = _FindProperty(p->m_subProps, name)) return q;
    } else if (p->m_strName == name) {
      return p;
    }
  }
  return nullptr;
}

const char* CVObjLite::GetPropTableValue(const char* name) {
  if (!name) return nullptr;
  CProperty* p = _FindProperty(m_props, name);
  if (!p) return nullptr;
  if (!IsCtrlText(p->m_strValue.c_str())) return p->m_strValue.c_str();
  _PropValDef* d = SearchPropValTable(p->m_strValue.c_str());
  return d ? d->value.c_str() : nullptr;
}

const char* CVObjLite::SetPropTableValue(const char* name, const char* value) {
  if (!name) return nullptr;
  CProperty* p = _FindProperty(m_props, name);
  if (!p) return nullptr;
  if (!IsCtrlText(p->m_strValue.c_str())) {
    p->m_strValue = value;
    return p->m_strValue.c_str();
  }
  _PropValDef* d = SearchPropValTable(p->m_strValue.c_str());
  if (!d) return nullptr;
  d->value = value;
  return d->value.c_str();
}

void CVObjLite::_PreprocEscChars(CString& text) {
  static const char kQp[] = "QUOTED-PRINTABLE";
  size_t pos = 0;
  while (pos < text.size()) {
    size_t start = text.find(kQp, pos);
    if (start == CString::npos) return;
    // The value ends at the first line break not preceded by '='. CRLF is the rule; a bare LF is
    // accepted too because many exports use it.
    CString joined;
    size_t cur = start, end = text.size();
    bool folded = false;
    for (;;) {
      size_t lf = text.find('\n', cur);
      if (lf == CString::npos) {
        end = text.size();
        break;
      }
      size_t brk = (lf > start && text[lf - 1] == '\r') ? lf - 1 : lf;
      if (brk > start && text[brk - 1] == '=') {
        joined.append(text, cur, brk - 1 - cur);
        cur = lf + 1;
        folded = true;
        continue;
      }
      end = brk;
      break;
    }
    if (folded) {
      joined.append(text, cur, end - cur);
      size_t removed = end - start - joined.size();
      text.replace(start, end - start, joined);
      end -= removed;
    }
    pos = end;
  }
}

bool CVObjLite::Parsing(char* text, CString* error) {
  m_setAside.RemoveAll();
  if (!text) {
    if (error) *error = "no text";
    return false;
  }
  CString work(text);
  _PreprocEscChars(work);
  CStringList lines;
  SplitLines(work, lines);
  RemoveAllProperties();
  bool ok = ParseString(lines, m_props, m_pFormal);
  if (!ok && error) {
    if (m_nErrorCode < 0 && m_pErrorFormal) {
      const _FormalDef& row = m_pErrorFormal[-1 - m_nErrorCode];
      error->Format("line \"%s\" missing", row.name && *row.name ? row.name : "(nested object)");
    } else if (!m_setAside.IsEmpty()) {
      error->Format("%d line(s) not recognised, first: \"%.60s\"", m_setAside.GetCount(),
                    m_setAside.GetAt(0).c_str());
    } else {
      *error = "not a vObject of this kind";
    }
  }
  return ok;
}

namespace {

// The shared parse loop; `cur` walks the line list so nested objects consume from the same place.
struct ParseState {
  CStringList& lines;
  size_t cur;
};

}  // namespace

bool CVObjLite::ParseString(CStringList& lines, CPropertyList& props, const _FormalDef* formal) {
  m_nErrorCode = 0;
  m_pErrorFormal = nullptr;
  struct Impl {
    static bool Run(CVObjLite& self, ParseState& st, CPropertyList& props, const _FormalDef* formal,
                    int depth) {
      if (st.cur >= st.lines.size() || !formal || IsFormalDefEmpty(formal[0]) || !formal[0].name ||
          !StartsWith(st.lines[st.cur], formal[0].name)) {
        self.m_nErrorCode = -1;
        self.m_pErrorFormal = formal;
        return false;
      }
      const size_t rows = RowCount(formal);
      bool fixedSeen[32];
      std::vector<bool> moreSeen(rows > 32 ? rows : 0);
      auto seenAt = [&](size_t r) -> bool { return rows > 32 ? moreSeen[r] : fixedSeen[r]; };
      auto setSeen = [&](size_t r, bool v) {
        if (rows > 32)
          moreSeen[r] = v;
        else
          fixedSeen[r] = v;
      };
      for (size_t r = 0; r < rows; ++r)
        setSeen(r, !(formal[r].type == VOBJ_ROW_MANDATORY || formal[r].type == VOBJ_ROW_CLOSING));
      bool ok = true;
      while (st.cur < st.lines.size()) {
        const CString& line = st.lines[st.cur];
        size_t matched = rows;
        for (size_t r = 0; r < rows && matched == rows; ++r) {
          const _FormalDef& row = formal[r];
          if (row.sub) {
            // Deeply nested input is refused rather than recursed into without end.
            if (depth < 8 && !IsFormalDefEmpty(row.sub[0]) && row.sub[0].name &&
                StartsWith(line, row.sub[0].name)) {
              CProperty* nested = new CProperty;
              nested->m_bNested = true;
              nested->m_pFormal = &row;
              nested->m_strName = row.sub[0].name;
              if (!Run(self, st, nested->m_subProps, row.sub, depth + 1)) ok = false;
              props.AddTail(nested);
              matched = r;
            }
          } else if (row.name && StartsWith(line, row.name)) {
            // A line that matches its row but holds no usable value (no ':', a cut-short
            // escape) is dropped; the row still counts as present.
            CProperty* p = new CProperty;
            if (p->Build(line.c_str(), &row)) {
              self._BindValue(p, row);
              props.AddTail(p);
            } else {
              delete p;
            }
            ++st.cur;
            matched = r;
          }
        }
        if (matched == rows) {
          self.m_setAside.AddTail(line);
          ++st.cur;
          ok = false;
          continue;
        }
        setSeen(matched, true);
        if (formal[matched].type == VOBJ_ROW_CLOSING) break;
      }
      for (size_t r = 0; r < rows; ++r) {
        if (!seenAt(r)) {
          self.m_nErrorCode = -1 - static_cast<int>(r);
          self.m_pErrorFormal = formal;
          return false;
        }
      }
      return ok;
    }
  };
  ParseState st{lines, 0};
  bool ok = Impl::Run(*this, st, props, formal, 0);
  lines.erase(lines.begin(), lines.begin() + static_cast<std::ptrdiff_t>(st.cur));
  return ok;
}

void CVObjLite::_BindValue(CProperty* prop, const _FormalDef& row) {
  // A row whose sample value is a placeholder keeps the placeholder in the property and the real
  // value in the binding, so properties sharing a placeholder (URL and X-IRMC-URL) stay equal.
  if (!IsCtrlText(row.value)) return;
  _PropValDef* d = SearchPropValTable(row.value);
  if (!d)
    AddPropValDef(row.value, prop->m_strValue.c_str());
  else if (!prop->m_strValue.empty())
    d->value = prop->m_strValue;
  prop->m_strValue = row.value;
}

bool CVObjLite::_ComposeProperty(CProperty* prop, CStringList& lines) {
  if (!prop) return false;
  if (prop->m_bNested) {
    for (CProperty* sub : prop->m_subProps)
      if (!_ComposeProperty(sub, lines)) return false;
    return true;
  }
  const char* value = prop->m_strValue.c_str();
  if (IsCtrlText(value)) {
    _PropValDef* d = SearchPropValTable(value);
    if (!d) return false;
    value = d->value.c_str();
  }
  const char* sep =
      prop->m_pFormal && prop->m_pFormal->separator ? prop->m_pFormal->separator : ":";
  CString line = prop->m_strName;
  if (!*sep) {
    lines.AddTail(line);
    return true;
  }
  const bool literal = std::strcmp(sep, ":") != 0;
  if (literal) {
    // A fixed-format separator already carries the parameters.
    line += sep;
  } else {
    for (const VOBJ_PARAM& p : prop->m_params) {
      line += ';';
      if (p.kind != VOBJ_PARAM_OTHER) {
        line += CProperty::ParamName(p.kind);
        line += '=';
      }
      line += p.value;
    }
    line += ':';
  }
  CString v(value);
  if (prop->m_strName == "X-IRMC-URL") {
    if (!std::strstr(sep, "[InternetShortcut]")) line += "[InternetShortcut]URL=";
    bool qp = prop->m_nEncoding == VOBJ_ENC_QP || std::strstr(sep, "QUOTED-PRINTABLE");
    line += qp ? hs::vobj::EncodeQpValue(v) : v;
  } else if (prop->m_nEncoding == VOBJ_ENC_QP) {
    line += hs::vobj::EncodeQpValue(v);
  } else if (prop->m_nEncoding == VOBJ_ENC_BASE64) {
    line += _VObjBase64Encode(v.data(), v.size());
  } else {
    line += v;
  }
  lines.AddTail(line);
  return true;
}

bool CVObjLite::Composing(char*& buffer, int& size) {
  CStringList lines;
  bool ok = true;
  for (CProperty* p : m_props) {
    if (!_ComposeProperty(p, lines)) {
      ok = false;
      break;
    }
  }
  if (size != 0) return ok;
  size_t total = 0;
  for (const CString& l : lines) total += l.size() + 2;
  if (total > 0x7FFFFFFF) return false;
  size = static_cast<int>(total);
  buffer = new char[total]();
  size_t pos = 0;
  for (const CString& l : lines) {
    std::memcpy(buffer + pos, l.data(), l.size());
    pos += l.size();
    buffer[pos++] = '\r';
    buffer[pos++] = '\n';
  }
  return ok;
}

CString _StripURLScheme(const char* url) {
  if (!url) return CString();
  for (const char* scheme : {"http://", "https://", "rtsp://"}) {
    if (const char* at = std::strstr(url, scheme)) return CString(at + std::strlen(scheme));
  }
  return CString(url);
}

namespace {

int8_t B64Value(unsigned char c) {
  if (c >= 'A' && c <= 'Z') return static_cast<int8_t>(c - 'A');
  if (c >= 'a' && c <= 'z') return static_cast<int8_t>(c - 'a' + 26);
  if (c >= '0' && c <= '9') return static_cast<int8_t>(c - '0' + 52);
  if (c == '+') return 62;
  if (c == '/') return 63;
  return -1;
}

}  // namespace

CString _VObjBase64Encode(const void* data, size_t size) {
  static const char kAlpha[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  const unsigned char* p = static_cast<const unsigned char*>(data);
  CString out;
  if (!p) return out;
  out.reserve((size + 2) / 3 * 4);
  size_t i = 0;
  for (; i + 3 <= size; i += 3) {
    uint32_t v = (uint32_t(p[i]) << 16) | (uint32_t(p[i + 1]) << 8) | p[i + 2];
    out += kAlpha[v >> 18];
    out += kAlpha[(v >> 12) & 63];
    out += kAlpha[(v >> 6) & 63];
    out += kAlpha[v & 63];
  }
  if (size - i == 1) {
    uint32_t v = uint32_t(p[i]) << 16;
    out += kAlpha[v >> 18];
    out += kAlpha[(v >> 12) & 63];
    out += "==";
  } else if (size - i == 2) {
    uint32_t v = (uint32_t(p[i]) << 16) | (uint32_t(p[i + 1]) << 8);
    out += kAlpha[v >> 18];
    out += kAlpha[(v >> 12) & 63];
    out += kAlpha[(v >> 6) & 63];
    out += '=';
  }
  return out;
}

bool _VObjBase64Decode(const char* text, CString* out) {
  if (!text || !out) return false;
  CString result;
  uint32_t acc = 0;
  int bits = 0, pad = 0;
  for (const unsigned char* p = reinterpret_cast<const unsigned char*>(text); *p; ++p) {
    unsigned char c = *p;
    if (c == ' ' || c == '\t' || c == '\r' || c == '\n') continue;
    if (c == '=') {
      ++pad;
      continue;
    }
    int8_t v = B64Value(c);
    if (v < 0 || pad) return false;
    acc = (acc << 6) | static_cast<uint32_t>(v);
    bits += 6;
    if (bits >= 8) {
      bits -= 8;
      result += static_cast<char>((acc >> bits) & 0xFF);
    }
  }
  // Leftover bits must be padding zeros of a 2- or 3-character final group.
  if (bits >= 6 || pad > 2 || (acc & ((1u << bits) - 1)) != 0) return false;
  *out = std::move(result);
  return true;
}
