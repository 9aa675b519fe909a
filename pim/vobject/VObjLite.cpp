#include "handset/pim/VObjLite.h"

#include <algorithm>
#include <cstring>

#include "pim/vobject/ValueCodec.h"

namespace {

bool IsEmptyRow(const _FormalDef* row) {
  return !row || (!row->name && !row->value && !row->sub);
}

size_t RowCount(const _FormalDef* formal) {
  size_t n = 0;
  while (!IsEmptyRow(&formal[n])) ++n;
  return n;
}

bool StartsWith(const char* p, size_t len, const char* prefix) {
  size_t n = std::strlen(prefix);
  return n <= len && std::memcmp(p, prefix, n) == 0;
}

bool StartsWith(const CString& line, const char* prefix) {
  return StartsWith(line.data(), line.size(), prefix);
}

// The texts a line of `formal`'s object may begin with, nested objects included. `any` becomes
// true when an ordinary row has an empty name, which every line matches.
struct RowNames {
  std::vector<const char*> names;
  std::vector<const _FormalDef*> seen;
  bool any = false;

  void Collect(const _FormalDef* formal) {
    if (!formal || std::find(seen.begin(), seen.end(), formal) != seen.end()) return;
    seen.push_back(formal);
    for (const _FormalDef* row = formal; !IsEmptyRow(row); ++row) {
      if (row->sub)
        Collect(row->sub);
      else if (row->name && !*row->name)
        any = true;
      else if (row->name)
        names.push_back(row->name);
    }
  }
  bool Match(const char* p, size_t len) const {
    if (any) return true;
    for (const char* n : names)
      if (StartsWith(p, len, n)) return true;
    return false;
  }
};

}  // namespace

// The line list being parsed and the position of the next line; nested objects read on from the
// same position.
struct CVObjLite::ParseCursor {
  CStringList& lines;
  size_t cur;
};

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
  m_nSetAside = other.m_nSetAside;
  m_bParseBegun = other.m_bParseBegun;
}

void CVObjLite::_FreePropVals() {
  for (_PropValDef* d : m_propVals) delete d;
  m_propVals.RemoveAll();
}

void CVObjLite::RemoveAllProperties() {
  for (CProperty* p : m_props) delete p;
  m_props.RemoveAll();
}

bool CVObjLite::_IsFormalDefEmpty(const _FormalDef* row) {
  return IsEmptyRow(row);
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

const char* CVObjLite::_ResolveValue(const CProperty& prop) {
  if (!IsCtrlText(prop.m_strValue.c_str())) return prop.m_strValue.c_str();
  _PropValDef* d = SearchPropValTable(prop.m_strValue.c_str());
  return d ? d->value.c_str() : nullptr;
}

const char* CVObjLite::GetPropTableValue(const char* name) {
  if (!name) return nullptr;
  CProperty* p = _FindProperty(m_props, name);
  return p ? _ResolveValue(*p) : nullptr;
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

bool CVObjLite::GetPropDecodedValue(const char* name, CString* value) {
  // The virtual read first: subclasses may build their properties on first use.
  const char* held = GetPropTableValue(name);
  CProperty* p = held ? _FindProperty(m_props, name) : nullptr;
  return p && hs::vobj::DecodeValue(held, p->m_nEncoding, value);
}

const char* CVObjLite::SetPropDecodedValue(const char* name, const char* value) {
  if (!GetPropTableValue(name)) return nullptr;
  CProperty* p = _FindProperty(m_props, name);
  if (!p) return nullptr;
  CString encoded = hs::vobj::EncodeValue(CString(value), p->m_nEncoding);
  return SetPropTableValue(name, encoded.c_str());
}

void CVObjLite::_PreprocEscChars(CString& text) {
  static const char kQp[] = "QUOTED-PRINTABLE";
  // The joined text is built only once a soft line break turns up, and in one pass: `copied`
  // is how much of `text` is already in `out`.
  CString out;
  bool joining = false;
  size_t copied = 0;
  size_t pos = 0;
  while (pos < text.size()) {
    size_t start = text.find(kQp, pos);
    if (start == CString::npos) break;
    // The value ends at the first line break not preceded by '='. CRLF is the rule; a bare LF is
    // accepted too because many exports use it.
    size_t cur = start, end = text.size();
    for (;;) {
      size_t lf = text.find('\n', cur);
      if (lf == CString::npos) break;
      size_t brk = (lf > start && text[lf - 1] == '\r') ? lf - 1 : lf;
      if (!(brk > start && text[brk - 1] == '=')) {
        end = brk;
        break;
      }
      if (!joining) {
        out.reserve(text.size());
        joining = true;
      }
      out.append(text, copied, brk - 1 - copied);
      copied = cur = lf + 1;
    }
    pos = end;
  }
  if (!joining) return;
  out.append(text, copied, CString::npos);
  text.swap(out);
}

void CVObjLite::_SplitLines(const CString& text, CStringList& lines) {
  // Splits at every CR and LF; empty lines (including the one between CR and LF) are dropped. A
  // run of lines that no row of the template can match keeps only its first kSetAsideKept lines
  // and counts the rest: the parse would only set them aside.
  const size_t kRunKept = static_cast<size_t>(kSetAsideKept);
  RowNames rows;
  rows.Collect(m_pFormal);
  m_runs.clear();
  const char* p = text.data();
  const char* end = p + text.size();
  size_t run = 0;
  lines.reserve(16);
  while (p < end) {
    const char* q = p;
    while (q < end && *q != '\r' && *q != '\n') ++q;
    const size_t len = static_cast<size_t>(q - p);
    if (len > 0) {
      if (rows.Match(p, len)) {
        run = 0;
      } else if (++run == kRunKept + 1) {
        m_runs.push_back(LineRun{lines.size() - 1, 1});
      } else if (run > kRunKept + 1) {
        ++m_runs.back().more;
      }
      if (run <= kRunKept) lines.emplace_back(p, len);
    }
    p = q + 1;
  }
}

void CVObjLite::_SetAside(const CString& line, size_t more) {
  m_nSetAside += 1 + more;
  if (m_setAside.GetCount() < kSetAsideKept) m_setAside.AddTail(line);
}

bool CVObjLite::Parsing(char* text, CString* error) {
  m_setAside.RemoveAll();
  m_nSetAside = 0;
  m_bParseBegun = false;
  if (!text) {
    if (error) *error = "no text";
    return false;
  }
  CStringList lines;
  {
    CString work(text);
    _PreprocEscChars(work);
    _SplitLines(work, lines);
  }
  // Without its BEGIN line the text is not this object at all: what the object holds stays.
  if (!lines.empty() && !IsEmptyRow(m_pFormal) && m_pFormal[0].name &&
      StartsWith(lines[0], m_pFormal[0].name)) {
    RemoveAllProperties();
    m_bParseBegun = true;
  }
  m_pRunLines = &lines;
  bool ok = ParseString(lines, m_props, m_pFormal);
  m_pRunLines = nullptr;
  m_runs.clear();
  if (!ok && error) {
    if (m_nErrorCode < 0 && m_pErrorFormal && m_bParseBegun) {
      const _FormalDef& row = m_pErrorFormal[-1 - m_nErrorCode];
      error->Format("line \"%s\" missing", row.name && *row.name ? row.name : "(nested object)");
    } else if (m_nSetAside > 0) {
      error->Format("%zu line(s) not recognised, first: \"%.60s\"", m_nSetAside,
                    m_setAside.GetAt(0).c_str());
    } else {
      *error = "not a vObject of this kind";
    }
  }
  return ok;
}

bool CVObjLite::ParseString(CStringList& lines, CPropertyList& props, const _FormalDef* formal) {
  m_nErrorCode = 0;
  m_pErrorFormal = nullptr;
  ParseCursor cur{lines, 0};
  bool ok = _ParseRows(cur, props, formal, 0);
  lines.erase(lines.begin(), lines.begin() + static_cast<std::ptrdiff_t>(cur.cur));
  // Collapsed runs are indexed from the list's old front.
  if (&lines == m_pRunLines) m_pRunLines = nullptr;
  return ok;
}

bool CVObjLite::_ParseRows(ParseCursor& cur, CPropertyList& props, const _FormalDef* formal,
                           int depth) {
  if (cur.cur >= cur.lines.size() || IsEmptyRow(formal) || !formal[0].name ||
      !StartsWith(cur.lines[cur.cur], formal[0].name)) {
    m_nErrorCode = -1;
    m_pErrorFormal = formal;
    return false;
  }
  const size_t rows = RowCount(formal);
  // One "seen" flag per row: mandatory and closing rows start unseen.
  char fixed[32];
  std::vector<char> more(rows > sizeof fixed ? rows : 0);
  char* seen = rows > sizeof fixed ? more.data() : fixed;
  for (size_t r = 0; r < rows; ++r)
    seen[r] = !(formal[r].type == VOBJ_ROW_MANDATORY || formal[r].type == VOBJ_ROW_CLOSING);
  bool ok = true;
  while (cur.cur < cur.lines.size()) {
    size_t matched = rows;
    if (!_ParseLine(cur, props, formal, rows, depth, &matched)) ok = false;
    if (matched == rows) {
      size_t extra = 0;
      if (&cur.lines == m_pRunLines) {
        auto it = std::lower_bound(m_runs.begin(), m_runs.end(), cur.cur,
                                   [](const LineRun& r, size_t i) { return r.first < i; });
        if (it != m_runs.end() && it->first == cur.cur) extra = it->more;
      }
      _SetAside(cur.lines[cur.cur], extra);
      ++cur.cur;
      ok = false;
      continue;
    }
    seen[matched] = 1;
    if (formal[matched].type == VOBJ_ROW_CLOSING) break;
  }
  for (size_t r = 0; r < rows; ++r) {
    if (!seen[r]) {
      m_nErrorCode = -1 - static_cast<int>(r);
      m_pErrorFormal = formal;
      return false;
    }
  }
  return ok;
}

bool CVObjLite::_ParseLine(ParseCursor& cur, CPropertyList& props, const _FormalDef* formal,
                           size_t rows, int depth, size_t* matched) {
  const CString& line = cur.lines[cur.cur];
  for (size_t r = 0; r < rows; ++r) {
    const _FormalDef& row = formal[r];
    if (row.sub) {
      // Deeply nested input is refused rather than recursed into without end.
      if (depth >= 8 || IsEmptyRow(row.sub) || !row.sub[0].name ||
          !StartsWith(line, row.sub[0].name))
        continue;
      CProperty* nested = new CProperty;
      nested->m_bNested = true;
      nested->m_pFormal = &row;
      nested->m_strName = row.sub[0].name;
      bool ok = _ParseRows(cur, nested->m_subProps, row.sub, depth + 1);
      props.AddTail(nested);
      *matched = r;
      return ok;
    }
    if (!row.name || !StartsWith(line, row.name)) continue;
    // A line that matches its row but holds no usable value is dropped; the row still counts.
    CProperty* p = new CProperty;
    if (_ParseProperty(p, line.c_str(), &row)) {
      _BindValue(p, row);
      props.AddTail(p);
    } else {
      delete p;
    }
    ++cur.cur;
    *matched = r;
    return true;
  }
  *matched = rows;
  return true;
}

bool CVObjLite::_ParseProperty(CProperty* prop, const char* line, const _FormalDef* row) {
  return prop && prop->Build(line, row);
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

CString CVObjLite::_ComposeLine(const CProperty& prop, const char* value) {
  const char* sep = prop.m_pFormal && prop.m_pFormal->separator ? prop.m_pFormal->separator : ":";
  CString line = prop.m_strName;
  if (!*sep) return line;  // BEGIN and END lines
  if (std::strcmp(sep, ":") != 0) {
    // A fixed-format separator already carries the parameters.
    line += sep;
  } else {
    for (const VOBJ_PARAM& p : prop.m_params) {
      line += ';';
      if (p.kind != VOBJ_PARAM_OTHER) {
        line += CProperty::ParamName(p.kind);
        line += '=';
      }
      line += p.value;
    }
    line += ':';
  }
  line += value ? value : "";
  return line;
}

bool CVObjLite::_ComposeProperty(CProperty* prop, CStringList& lines) {
  if (!prop) return false;
  if (prop->m_bNested) {
    for (CProperty* sub : prop->m_subProps)
      if (!_ComposeProperty(sub, lines)) return false;
    return true;
  }
  const char* value = _ResolveValue(*prop);
  if (!value) return false;
  lines.AddTail(_ComposeLine(*prop, value));
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
