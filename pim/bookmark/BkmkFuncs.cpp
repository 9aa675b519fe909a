#include "handset/pim/BkmkFuncs.h"

#include <algorithm>
#include <cstring>
#include <memory>
#include <vector>

#include "handset/pim/OemPanaVbkm.h"
#include "platform/Folders.h"
#include "platform/Os.h"

namespace {

BKMK_SELECTFOLDER_PROC g_selectFolderProc = nullptr;
void* g_selectFolderContext = nullptr;

// Parses a vBookmark file with the generic template, then the one with a browser type. Without
// `strict`, an object with all its mandatory lines is taken even if it holds unknown lines.
std::unique_ptr<CVbkm> ReadVbkmFile(const std::string& path, bool strict) {
  std::vector<uint8_t> bytes;
  if (!hs::os::ReadFile(path, &bytes)) return nullptr;
  std::string text(bytes.begin(), bytes.end());
  std::unique_ptr<CVbkm> lenient;
  std::unique_ptr<CVbkm> candidates[2] = {std::make_unique<CVbkm>(),
                                          std::make_unique<COemPanaVbkm>()};
  for (auto& v : candidates) {
    std::string copy = text;
    if (v->Parsing(&copy[0], nullptr)) return std::move(v);
    if (!strict && !lenient && v->GetErrorCode() == 0) lenient = std::move(v);
  }
  return lenient;
}

bool HasVbmExtension(const std::string& name) {
  return GetFileType(name.c_str()).CompareNoCase("vbm") == 0;
}

CString WithCounter(const CString& base, int n) {
  CString s;
  s.Format("%s(%d)", base.c_str(), n);
  return s;
}

int ExportInto(CBkmkObj* node, const std::string& folder, int flag, CStringList* written,
               int depth) {
  if (depth > 64 || !hs::os::CreateFolders(folder.c_str())) return 0;
  int ok = 1;
  for (int i = 0; i < node->GetChildCount(); ++i) {
    CBkmkObj* child = node->GetChildBkmk(i);
    if (!child) continue;
    CString base = _BKMK_LegalFileName(child->m_strTitle.c_str());
    if (child->m_enBkmkType == OBJECT_TYPE_FOLDER) {
      std::string sub = hs::os::JoinPath(folder, base);
      for (int n = 1; hs::os::PathExists(sub.c_str()); ++n)
        sub = hs::os::JoinPath(folder, WithCounter(base, n));
      if (!ExportInto(child, sub, flag, written, depth + 1)) ok = 0;
      continue;
    }
    std::string file = hs::os::JoinPath(folder, base + ".vbm");
    for (int n = 1; hs::os::PathExists(file.c_str()); ++n)
      file = hs::os::JoinPath(folder, WithCounter(base, n) + ".vbm");
    CVbkm* vbkm = (flag & BKMK_FLAG_OEM) ? new COemPanaVbkm : new CVbkm;
    std::unique_ptr<CVbkm> owner(vbkm);
    char* buffer = nullptr;
    int size = 0;
    if (!child->CreateVBKM(vbkm) || !vbkm->Composing(buffer, size)) {
      delete[] buffer;
      ok = 0;
      continue;
    }
    bool wrote = hs::os::WriteFile(file, buffer, static_cast<size_t>(size));
    delete[] buffer;
    if (!wrote) {
      ok = 0;
      continue;
    }
    if (written) written->AddTail(file);
  }
  return ok;
}

CBkmkObj* ImportFolder(CBkmkObj* parent, const std::string& folder, int flag, int depth) {
  if (depth > 64) return nullptr;
  CBkmkObj* node = new CBkmkObj(nullptr, hs::os::BaseName(folder).c_str(), OBJECT_TYPE_FOLDER);
  parent->AddChild(node);
  for (const std::string& name : hs::os::ListFolder(folder.c_str(), true))
    ImportFolder(node, hs::os::JoinPath(folder, name), flag, depth + 1);
  // Files go in the order of their names without extension, so "News" comes before "News(1)"
  // as it did before the export.
  std::vector<std::string> files;
  for (const std::string& name : hs::os::ListFolder(folder.c_str(), false))
    if (HasVbmExtension(name)) files.push_back(name);
  std::stable_sort(files.begin(), files.end(), [](const std::string& a, const std::string& b) {
    return a.compare(0, a.size() - 4, b, 0, b.size() - 4) < 0;
  });
  for (const std::string& name : files)
    _BKMK_ImportVbkm(node, hs::os::JoinPath(folder, name).c_str(), flag);
  return node;
}

}  // namespace

bool _BKMK_IsPathExist(const char* path) {
  return hs::os::PathExists(path);
}

bool _BKMK_CreatePathFolder(const char* path) {
  return hs::os::CreateFolders(path);
}

void _BKMK_SetSelectFolderProc(BKMK_SELECTFOLDER_PROC proc, void* context) {
  g_selectFolderProc = proc;
  g_selectFolderContext = context;
}

bool _BKMK_SelectFolder(const char* title, CString* folder) {
  if (!g_selectFolderProc || !folder) return false;
  return g_selectFolderProc(g_selectFolderContext, title ? title : "", folder);
}

CString _BKMK_LegalFileName(const char* title) {
  CString s(title);
  for (char& c : s) {
    // Characters no common file system accepts in a name, and control bytes.
    if (std::strchr("\\/:*?<>|\"", c) || static_cast<unsigned char>(c) < 0x20) c = '_';
  }
  if (s.empty() || s == "." || s == "..") s = "_";
  return s;
}

void _BKMK_PreProcessVbkmFileName(CBkmkObj* node) {
  if (!node) return;
  const int n = node->GetChildCount();
  for (int i = 0; i < n; ++i) {
    CBkmkObj* c = node->GetChildBkmk(i);
    if (c && c->m_enBkmkType == OBJECT_TYPE_FOLDER) _BKMK_PreProcessVbkmFileName(c);
  }
  for (int i = 0; i < n; ++i) {
    CBkmkObj* c = node->GetChildBkmk(i);
    if (!c) continue;
    const CString original = c->m_strTitle;
    // Export targets may ignore case, so "news" clashes with "News".
    auto clashes = [&](const CString& name) {
      for (int j = 0; j < i; ++j) {
        CBkmkObj* o = node->GetChildBkmk(j);
        if (o && o->m_strTitle.CompareNoCase(name.c_str()) == 0) return true;
      }
      return false;
    };
    CString name = original;
    for (int counter = 1; clashes(name); ++counter) name = WithCounter(original, counter);
    if (name != original) c->SetTitle(name.c_str());
  }
}

int _BKMK_ExportVbkm(CBkmkObj* node, const char* folder, int flag, CStringList* written) {
  if (!node || !folder || !*folder) return 0;
  return ExportInto(node, hs::os::FullPath(folder), flag, written, 0);
}

CBkmkObj* _BKMK_ImportVbkm(CBkmkObj* parent, const char* path, int flag) {
  if (!parent || !path || !*path) return nullptr;
  std::string native = hs::os::NativePath(path);
  if (hs::os::IsFolder(native.c_str())) return ImportFolder(parent, native, flag, 0);
  std::unique_ptr<CVbkm> vbkm = ReadVbkmFile(native, (flag & BKMK_FLAG_STRICT) != 0);
  if (!vbkm) return nullptr;
  auto node = std::make_unique<CBkmkObj>();
  if (!node->FromVBKM(vbkm.get())) return nullptr;
  CBkmkObj* raw = node.release();
  parent->AddChild(raw);
  return raw;
}

bool _BKMK_ImportSelectedVbkms(CBkmkObj* parent, const CStringList& paths) {
  bool all = true;
  for (const CString& p : paths)
    if (!_BKMK_ImportVbkm(parent, p.c_str(), BKMK_FLAG_NONE)) all = false;
  return all;
}

int _BKMK_GetContainFileNames(const char* folder, CStringList& names) {
  int n = 0;
  for (const std::string& name : hs::os::ListFolder(folder, false)) {
    if (!HasVbmExtension(name)) continue;
    names.AddTail(name);
    ++n;
  }
  return n;
}

int _BKMK_GetContainFolderNames(const char* folder, CStringList& names) {
  int n = 0;
  for (const std::string& name : hs::os::ListFolder(folder, true)) {
    names.AddTail(name);
    ++n;
  }
  return n;
}
