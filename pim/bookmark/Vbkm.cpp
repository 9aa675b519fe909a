#include "handset/pim/Vbkm.h"

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
  m_bSampleDue = false;
  return CVObjLite::Parsing(text, error);
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
