#include <cstring>

#include "handset/pim/VObjLite.h"

namespace {

struct NamedValue {
  int32_t value;
  const char* text;
};

const NamedValue kEncodings[] = {{VOBJ_ENC_BASE64, "BASE64"}, {VOBJ_ENC_QP, "QUOTED-PRINTABLE"}};
// Not in the order of the texts, and with underscores: phones send exactly these spellings.
const NamedValue kCharsets[] = {
    {VOBJ_CHARSET_SHIFT_JIS, "SHIFT_JIS"}, {VOBJ_CHARSET_UCS2, "UCS2"},
    {VOBJ_CHARSET_US_ASCII, "US_ASCII"},   {VOBJ_CHARSET_ISO_8859_1, "ISO_8859_1"},
    {VOBJ_CHARSET_UTF_7, "UTF_7"},         {VOBJ_CHARSET_UTF_8, "UTF_8"},
};
const NamedValue kParams[] = {{VOBJ_PARAM_TYPE, "TYPE"},
                              {VOBJ_PARAM_VALUE, "VALUE"},
                              {VOBJ_PARAM_ENCODING, "ENCODING"},
                              {VOBJ_PARAM_CHARSET, "CHARSET"},
                              {VOBJ_PARAM_LANGUAGE, "LANGUAGE"}};

// The second token of a parameter text split at ";=" with empty pieces dropped ("ENCODING=BASE64"
// gives "BASE64"). Found in place: properties are built by the hundred thousand.
CString SecondToken(const char* param) {
  const char* p = param;
  for (int token = 0; token < 2; ++token) {
    p += std::strspn(p, ";=");
    size_t len = std::strcspn(p, ";=");
    if (token == 1) return CString(p, len);
    p += len;
  }
  return CString();
}

}  // namespace

CProperty::~CProperty() {
  RemoveAllSubProps();
}

CProperty::CProperty(const CProperty& other) {
  *this = other;
}

CProperty& CProperty::operator=(const CProperty& other) {
  if (this == &other) return *this;
  RemoveAllSubProps();
  m_strName = other.m_strName;
  m_params = other.m_params;
  m_strValue = other.m_strValue;
  m_nEncoding = other.m_nEncoding;
  m_nCharset = other.m_nCharset;
  m_pFormal = other.m_pFormal;
  m_bNested = other.m_bNested;
  for (CProperty* p : other.m_subProps) m_subProps.AddTail(new CProperty(*p));
  return *this;
}

void CProperty::RemoveAllSubProps() {
  for (CProperty* p : m_subProps) delete p;
  m_subProps.RemoveAll();
}

bool CProperty::ReadEncoding(const char* param, int32_t* encoding) {
  int32_t v = VOBJ_ENC_NONE;
  if (param) {
    CString tok = SecondToken(param);
    for (const NamedValue& e : kEncodings)
      if (tok.CompareNoCase(e.text) == 0) v = e.value;
  }
  if (encoding) *encoding = v;
  return v != VOBJ_ENC_NONE;
}

bool CProperty::ReadCharset(const char* param, int32_t* charset) {
  int32_t v = VOBJ_CHARSET_NONE;
  if (param) {
    CString tok = SecondToken(param);
    for (const NamedValue& c : kCharsets)
      if (tok == c.text) v = c.value;
  }
  if (charset) *charset = v;
  return v != VOBJ_CHARSET_NONE;
}

const char* CProperty::EncodingName(int32_t encoding) {
  for (const NamedValue& e : kEncodings)
    if (e.value == encoding) return e.text;
  return nullptr;
}

const char* CProperty::CharsetName(int32_t charset) {
  for (const NamedValue& c : kCharsets)
    if (c.value == charset) return c.text;
  return nullptr;
}

const char* CProperty::ParamName(int32_t kind) {
  for (const NamedValue& p : kParams)
    if (p.value == kind) return p.text;
  return nullptr;
}

void CProperty::AddParam(int32_t kind, const char* value) {
  VOBJ_PARAM p{kind, CString(value)};
  if (kind == VOBJ_PARAM_ENCODING) {
    m_nEncoding = VOBJ_ENC_NONE;
    for (const NamedValue& e : kEncodings)
      if (p.value.CompareNoCase(e.text) == 0) m_nEncoding = e.value;
  } else if (kind == VOBJ_PARAM_CHARSET) {
    m_nCharset = VOBJ_CHARSET_NONE;
    for (const NamedValue& c : kCharsets)
      if (p.value == c.text) m_nCharset = c.value;
  }
  m_params.push_back(std::move(p));
}

bool CProperty::Build(const char* line, const _FormalDef* row) {
  if (!line || !row || !row->name) return false;
  m_pFormal = row;
  m_strName = row->name;
  const char* rest = line + std::strlen(row->name);
  if (!row->separator || !*row->separator) {
    // BEGIN and END lines carry no value.
    m_strValue.clear();
    return true;
  }
  const char* colon = std::strchr(rest, ':');
  if (!colon) return false;
  CString header(rest, static_cast<size_t>(colon - rest));
  size_t semi = header.find(';');
  // A longer name than the row's ("TELX" for "TEL") stays whole.
  m_strName += header.substr(0, semi);
  while (semi != CString::npos) {
    size_t next = header.find(';', semi + 1);
    CString tok = header.substr(semi + 1, next == CString::npos ? CString::npos : next - semi - 1);
    semi = next;
    if (tok.empty()) continue;
    size_t eq = tok.find('=');
    if (eq == CString::npos) {
      // vCard 2.1 lets a bare value stand for its parameter (";QUOTED-PRINTABLE", ";CELL").
      int32_t enc = VOBJ_ENC_NONE;
      CString asParam = "ENCODING=" + tok;
      if (ReadEncoding(asParam.c_str(), &enc)) m_nEncoding = enc;
      m_params.push_back(VOBJ_PARAM{VOBJ_PARAM_OTHER, tok});
      continue;
    }
    CString pname = tok.substr(0, eq);
    int32_t kind = VOBJ_PARAM_OTHER;
    for (const NamedValue& p : kParams)
      if (pname.CompareNoCase(p.text) == 0) kind = p.value;
    if (kind == VOBJ_PARAM_OTHER) {
      m_params.push_back(VOBJ_PARAM{VOBJ_PARAM_OTHER, tok});
    } else {
      m_params.push_back(VOBJ_PARAM{kind, tok.substr(eq + 1)});
      if (kind == VOBJ_PARAM_ENCODING) ReadEncoding(tok.c_str(), &m_nEncoding);
      if (kind == VOBJ_PARAM_CHARSET) ReadCharset(tok.c_str(), &m_nCharset);
    }
  }
  CString raw(colon + 1);
  // A fixed-format separator ends in literal text after its ':' ("[InternetShortcut]URL="); a
  // line that carries the literal holds the value after it, as the composer writes it.
  if (std::strcmp(row->separator, ":") != 0) {
    const char* literal = std::strchr(row->separator, ':');
    size_t n = literal ? std::strlen(literal + 1) : 0;
    if (n > 0 && raw.compare(0, n, literal + 1) == 0) raw.erase(0, n);
  }
  m_strValue = std::move(raw);
  return true;
}

bool CProperty::HasQpLabel() const {
  for (const VOBJ_PARAM& p : m_params) {
    if ((p.kind == VOBJ_PARAM_ENCODING || p.kind == VOBJ_PARAM_OTHER) &&
        p.value.CompareNoCase("QUOTED-PRINTABLE") == 0)
      return true;
  }
  return false;
}
