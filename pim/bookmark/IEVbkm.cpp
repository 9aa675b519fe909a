#include "handset/pim/IEVbkm.h"

#include <cstring>
#include <vector>

#include "handset/pim/OemPanaVbkm.h"
#include "pim/bookmark/VbkmSample.h"
#include "platform/Os.h"

CIEVbkm::CIEVbkm(const _FormalDef* formal) : CVbkm(formal ? formal : g_oemVbkmFormalDef) {
  AddPropValDef("<browser-type>", "FULL");
}

CString CIEVbkm::_ExtractFilename(const char* name) {
  if (!name || !*name) return CString();
  CString s(name);
  size_t dot = s.rfind('.');
  if (dot != CString::npos && s.size() - dot - 1 <= 4) s.resize(dot);
  return s;
}

bool CIEVbkm::ParseString(CStringList& lines, CPropertyList& props, const _FormalDef* formal) {
  return CVbkm::ParseString(lines, props, formal);
}

bool CIEVbkm::Parsing(char* text, CString* name) {
  if (!text) return false;
  m_bSampleDue = false;
  // The shortcut is read with the system's INI reader, which only reads files.
  std::string path = hs::os::TempFileName(hs::os::TempPath(), "QVv");
  if (path.empty()) return false;
  size_t len = std::strlen(text);
  bool written = hs::os::WriteFile(path, text, len);
  std::vector<char> url;
  if (written) {
    url.resize(len + 1);
    hs::os::GetPrivateProfileString("InternetShortcut", "URL", "", url.data(),
                                    static_cast<uint32_t>(url.size()), path.c_str());
  }
  hs::os::DeleteFile(path);
  if (!written) return false;

  // The bookmark is built on a working object of the dialect and taken over whole, so a failed
  // build leaves this object as it was.
  COemPanaVbkm work;
  if (!work.CreateEmptyProperties()) return false;
  work.SetTitleAndUrl(_ExtractFilename(name ? name->c_str() : nullptr).c_str(), url.data());
  work.SetPropTableValue("X-S-BROWSERTYPE", "FULL");
  CVObjLite::operator=(work);
  return true;
}

void CIEVbkm::_CreateEmptySample(CStringList& lines) {
  hs::vbkm::OemSample(lines);
}
