#include "handset/pim/Vbkm.h"

#include <cstring>

#include "pim/vobject/ValueCodec.h"

#define VBKM_END_ROW \
  { nullptr, nullptr, nullptr, nullptr, VOBJ_ROW_OPTIONAL }

const _FormalDef g_vbkmEnvFormalDef[] = {
    {"BEGIN:ENV", "", "", nullptr, VOBJ_ROW_MANDATORY},
    {"X-IRMC-URL", ";ENCODING=QUOTED-PRINTABLE:[InternetShortcut]URL=", "<url-value>", nullptr,
     VOBJ_ROW_MANDATORY},
    {"END:ENV", "", "", nullptr, VOBJ_ROW_CLOSING},
    VBKM_END_ROW,
};

const _FormalDef g_vbkmFormalDef[] = {
    {"BEGIN:VBKM", "", "", nullptr, VOBJ_ROW_MANDATORY},
    {"VERSION", ":", "<version>", nullptr, VOBJ_ROW_MANDATORY},
    {"URL", ":", "<url-value>", nullptr, VOBJ_ROW_MANDATORY},
    {"TITLE", ":", "<title>", nullptr, VOBJ_ROW_MANDATORY},
    {"END:VBKM", "", "", nullptr, VOBJ_ROW_CLOSING},
    {"", "", "", g_vbkmEnvFormalDef, VOBJ_ROW_OPTIONAL},
    VBKM_END_ROW,
};

const _FormalDef g_oemVbkmEnvFormalDef[] = {
    {"BEGIN:ENV", "", "", nullptr, VOBJ_ROW_MANDATORY},
    {"X-IRMC-URL", ":", "<internet-shortcut-url-value>", nullptr, VOBJ_ROW_MANDATORY},
    {"END:ENV", "", "", nullptr, VOBJ_ROW_CLOSING},
    VBKM_END_ROW,
};

const _FormalDef g_oemVbkmFormalDef[] = {
    {"BEGIN:VBKM", "", "", nullptr, VOBJ_ROW_MANDATORY},
    {"VERSION", ":", "<version>", nullptr, VOBJ_ROW_MANDATORY},
    {"URL", ":", "<url-value>", nullptr, VOBJ_ROW_MANDATORY},
    {"TITLE", ":", "<title>", nullptr, VOBJ_ROW_MANDATORY},
    {"X-S-BROWSERTYPE", ":", "<browser-type>", nullptr, VOBJ_ROW_MANDATORY},
    {"END:VBKM", "", "", nullptr, VOBJ_ROW_CLOSING},
    {"", "", "", g_oemVbkmEnvFormalDef, VOBJ_ROW_OPTIONAL},
    VBKM_END_ROW,
};

CVbkm::CVbkm(const _FormalDef* formal) : CVObjLite(formal ? formal : g_vbkmFormalDef) {}

bool CVbkm::CreateEmptyProperties() {
  m_bSampleDue = false;
  RemoveAllProperties();
  m_setAside.RemoveAll();
  CStringList lines;
  _CreateEmptySample(lines);
  return ParseString(lines, m_props, m_pFormal);
}

void CVbkm::_EnsureSample() {
  if (m_bSampleDue) CreateEmptyProperties();
}

bool CVbkm::Parsing(char* text, CString* error) {
  bool ok = CVObjLite::Parsing(text, error);
  // A text without the BEGIN line leaves the object as it was, the sample still due included.
  if (m_bParseBegun) m_bSampleDue = false;
  return ok;
}

bool CVbkm::Composing(char*& buffer, int& size) {
  _EnsureSample();
  return CVObjLite::Composing(buffer, size);
}

const char* CVbkm::GetPropTableValue(const char* name) {
  _EnsureSample();
  return CVObjLite::GetPropTableValue(name);
}

const char* CVbkm::SetPropTableValue(const char* name, const char* value) {
  _EnsureSample();
  return CVObjLite::SetPropTableValue(name, value);
}

void CVbkm::_CreateEmptySample(CStringList& lines) {
  for (const char* l :
       {"BEGIN:VBKM", "VERSION:1.0", "URL:", "TITLE:", "BEGIN:ENV",
        "X-IRMC-URL;ENCODING=QUOTED-PRINTABLE:[InternetShortcut]URL=", "END:ENV", "END:VBKM"})
    lines.AddTail(l);
}

bool CVbkm::SetTitleAndUrl(const char* title, const char* url) {
  bool ok = SetPropDecodedValue("TITLE", title ? title : "") != nullptr;
  ok = SetPropDecodedValue("URL", url ? url : "") != nullptr && ok;
  SetPropDecodedValue("X-IRMC-URL", url ? url : "");
  return ok;
}

namespace {

const char kShortcutSection[] = "[InternetShortcut]";
const char kShortcutKey[] = "URL=";

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

bool At(const CString& s, size_t pos, const char* lit) {
  return s.compare(pos, std::strlen(lit), lit) == 0;
}

// The bare URL of an X-IRMC-URL value ("[InternetShortcut]" ... "URL=" ...). Values in other
// shapes are taken as the URL itself.
CString ExtractShortcutUrl(const CString& raw, bool quotedPrintable) {
  size_t pos = 0;
  if (At(raw, 0, kShortcutSection)) {
    pos = sizeof(kShortcutSection) - 1;
    // Phones put the line break of the embedded shortcut file either encoded or literally. A
    // block encoded whole encodes the key's '=' too ("URL=3D"); the template's own shape writes
    // the section and key as they are.
    bool encodedBreak = false;
    for (;;) {
      if (At(raw, pos, "=0D=0A")) {
        pos += 6;
        encodedBreak = true;
      } else if (At(raw, pos, "=0A")) {
        pos += 3;
        encodedBreak = true;
      } else if (pos < raw.size() && (raw[pos] == '\r' || raw[pos] == '\n' || raw[pos] == ' ')) {
        ++pos;
      } else {
        break;
      }
    }
    if (quotedPrintable && encodedBreak && At(raw, pos, "URL=3D"))
      pos += 6;
    else if (At(raw, pos, kShortcutKey))
      pos += sizeof(kShortcutKey) - 1;
  }
  size_t end = pos;
  while (end < raw.size() && raw[end] != '\r' && raw[end] != '\n' &&
         !(raw[end] == '=' && (At(raw, end, "=0D") || At(raw, end, "=0A"))))
    ++end;
  CString url = raw.substr(pos, end - pos);
  if (quotedPrintable && url.find('=') != CString::npos && LooksEncoded(url)) {
    CString decoded;
    if (hs::vobj::DecodeValue(url.c_str(), VOBJ_ENC_QP, &decoded)) url = decoded;
  }
  return url;
}

bool IsShortcut(const CProperty* prop) {
  return prop && !prop->m_bNested && prop->m_strName == "X-IRMC-URL";
}

}  // namespace

bool CVbkm::_ParseProperty(CProperty* prop, const char* line, const _FormalDef* row) {
  if (!CVObjLite::_ParseProperty(prop, line, row)) return false;
  if (IsShortcut(prop)) {
    const char* sep = row && row->separator ? row->separator : "";
    bool qp = prop->m_nEncoding == VOBJ_ENC_QP || std::strstr(sep, "QUOTED-PRINTABLE");
    prop->m_strValue = ExtractShortcutUrl(prop->m_strValue, qp);
    prop->m_nEncoding = VOBJ_ENC_NONE;  // held as the bare, decoded URL
  }
  return true;
}

bool CVbkm::_ComposeProperty(CProperty* prop, CStringList& lines) {
  if (!IsShortcut(prop)) return CVObjLite::_ComposeProperty(prop, lines);
  const char* url = _ResolveValue(*prop);
  if (!url) return false;
  const char* sep = prop->m_pFormal && prop->m_pFormal->separator ? prop->m_pFormal->separator : "";
  bool qp = prop->HasQpLabel() || std::strstr(sep, "QUOTED-PRINTABLE");
  CString value = qp ? hs::vobj::EncodeQpValue(url) : CString(url);
  // The generic template's separator ends in the section and key already.
  if (!std::strstr(sep, kShortcutSection)) value = CString(kShortcutSection) + kShortcutKey + value;
  lines.AddTail(_ComposeLine(*prop, value.c_str()));
  return true;
}
