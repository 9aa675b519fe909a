#include "handset/pim/BkmkFuncs.h"

#include <algorithm>
#include <cstring>
#include <memory>
#include <set>
#include <vector>

#include "handset/pim/VbkmDialect.h"
#include "pim/bookmark/BkmkNames.h"
#include "platform/Folders.h"

namespace {

BKMK_SELECTFOLDER_PROC g_selectFolderProc = nullptr;
void* g_selectFolderContext = nullptr;
thread_local CString g_lastError;

void NoteFailure(const std::string& path, const char* operation, const std::string& reason) {
  if (!g_lastError.empty()) return;  // the first failure is the one to report
  g_lastError = path + ": " + operation;
  if (!reason.empty()) g_lastError += ": " + reason;
}

bool HasVbmExtension(const std::string& name) {
  return GetFileType(name.c_str()).CompareNoCase("vbm") == 0;
}

// The phone's name limits for a child: its own capabilities, else the nearest ancestor's.
hs::bkmk::NameLimits LimitsFor(const CBkmkGenCap* cap, bool folder) {
  hs::bkmk::NameLimits l;
  if (!cap) return l;
  int32_t c = folder ? cap->nFolderNameCLen : cap->nFileNameCLen;
  int32_t w = folder ? cap->nFolerNameWLen : cap->nFileNameWLen;
  l.bytes = c > 0 ? static_cast<size_t>(c) : 0;
  l.units = w > 0 ? static_cast<size_t>(w) : 0;
  return l;
}

struct ExportRun {
  int flag;
  CStringList* written;
};

bool ExportFile(CBkmkObj* child, const std::string& folder, const hs::bkmk::NameLimits& limits,
                hs::bkmk::NameSet& names, const ExportRun& run) {
  std::unique_ptr<CVbkm> vbkm(
      _VBKM_Create((run.flag & BKMK_FLAG_OEM) ? VBKM_DIALECT_OEM : VBKM_DIALECT_GENERIC));
  CVbkm* raw = vbkm.get();
  char* buffer = nullptr;
  int size = 0;
  if (!child->CreateVBKM(raw) || !vbkm->Composing(buffer, size)) {
    delete[] buffer;
    NoteFailure(child->m_strTitle, "compose", "the vBookmark could not be composed");
    return false;
  }
  std::unique_ptr<char[]> owner(buffer);
  const std::string base = _BKMK_LegalFileName(child->m_strTitle.c_str());
  // Names already in the folder are skipped without a try; one that turns up meanwhile (or one
  // the listing could not see, such as a link) makes the creation fail and the next one is taken.
  for (;;) {
    std::string file = hs::os::JoinPath(folder, names.TakeNext(base, ".vbm", limits));
    std::string reason;
    hs::os::CreateStatus st =
        hs::os::CreateNewFile(file, buffer, static_cast<size_t>(size), &reason);
    if (st == hs::os::CreateStatus::kNameTaken) continue;
    if (st != hs::os::CreateStatus::kCreated) {
      NoteFailure(file, "write", reason);
      return false;
    }
    if (run.written) run.written->AddTail(file);
    return true;
  }
}

int ExportInto(CBkmkObj* node, const std::string& folder, const CBkmkGenCap* cap,
               const ExportRun& run, int depth) {
  if (depth > 64) {
    NoteFailure(folder, "export", "the tree is more than 64 folders deep");
    return 0;
  }
  hs::bkmk::NameSet names;
  for (const hs::os::FolderEntry& e : hs::os::ListEntries(folder)) names.Take(e.name);
  int ok = 1;
  for (int i = 0; i < node->GetChildCount(); ++i) {
    CBkmkObj* child = node->GetChildBkmk(i);
    if (!child) continue;
    const CBkmkGenCap* childCap = child->m_pGenCap ? child->m_pGenCap : cap;
    if (child->m_enBkmkType != OBJECT_TYPE_FOLDER) {
      if (!ExportFile(child, folder, LimitsFor(childCap, false), names, run)) ok = 0;
      continue;
    }
    const std::string base = _BKMK_LegalFileName(child->m_strTitle.c_str());
    std::string sub;
    hs::os::CreateStatus st;
    std::string reason;
    do {
      sub = hs::os::JoinPath(folder, names.TakeNext(base, "", LimitsFor(childCap, true)));
      st = hs::os::CreateNewFolder(sub, &reason);
    } while (st == hs::os::CreateStatus::kNameTaken);
    if (st != hs::os::CreateStatus::kCreated) {
      NoteFailure(sub, "create folder", reason);
      ok = 0;
      continue;
    }
    if (!ExportInto(child, sub, childCap, run, depth + 1)) ok = 0;
  }
  return ok;
}

bool ImportFile(CBkmkObj* parent, const std::string& path, int flag) {
  std::unique_ptr<CVbkm> vbkm;
  {
    std::string text, reason;
    if (!hs::os::ReadWholeFile(path, &text, &reason)) {
      NoteFailure(path, "read", reason);
      return false;
    }
    VBKM_PARSE_RESULT r;
    vbkm.reset(_VBKM_Parse(text.c_str(), (flag & BKMK_FLAG_STRICT) == 0, &r));
    if (!vbkm) {
      NoteFailure(path, "read", "not a vBookmark: " + r.error);
      return false;
    }
  }
  auto node = std::make_unique<CBkmkObj>();
  if (!node->FromVBKM(vbkm.get())) {
    NoteFailure(path, "read", "the vBookmark has no title");
    return false;
  }
  parent->AddChild(node.release());
  return true;
}

struct ImportRun {
  std::string root;               // the imported folder, links resolved
  std::set<hs::os::FileId> seen;  // folders read so far
  int flag;
};

struct Entry {
  std::string name;
  std::string path;
};

CBkmkObj* ImportFolder(CBkmkObj* parent, const std::string& folder, const std::string& name,
                       ImportRun& run, int depth) {
  hs::os::FileId id;
  if (depth > 64 || !hs::os::GetFileId(folder, &id) || !run.seen.insert(id).second) return nullptr;
  CBkmkObj* node = new CBkmkObj(nullptr, name.c_str(), OBJECT_TYPE_FOLDER);
  parent->AddChild(node);
  // Links are followed only to what lies inside the imported folder, and a folder reached twice
  // is read once: real sub-folders first, so a link never takes a folder's place.
  std::vector<Entry> folders, linkedFolders, files;
  for (const hs::os::FolderEntry& e : hs::os::ListEntries(folder)) {
    std::string path = hs::os::JoinPath(folder, e.name);
    hs::os::EntryKind kind = e.kind;
    if (kind == hs::os::EntryKind::kLink) {
      path = hs::os::RealPath(path);
      if (path.empty() || !hs::os::IsInsideFolder(path, run.root)) continue;
      kind = hs::os::KindOf(path);
    }
    if (kind == hs::os::EntryKind::kFolder)
      (e.kind == hs::os::EntryKind::kLink ? linkedFolders : folders).push_back({e.name, path});
    else if (kind == hs::os::EntryKind::kFile && HasVbmExtension(e.name))
      files.push_back({e.name, path});
  }
  for (const auto* group : {&folders, &linkedFolders})
    for (const Entry& f : *group) ImportFolder(node, f.path, f.name, run, depth + 1);
  // Files go in the order of their names without extension, so "News" comes before "News(1)"
  // as it did before the export.
  std::stable_sort(files.begin(), files.end(), [](const Entry& a, const Entry& b) {
    return a.name.compare(0, a.name.size() - 4, b.name, 0, b.name.size() - 4) < 0;
  });
  for (const Entry& f : files) ImportFile(node, f.path, run.flag);
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

const char* _BKMK_GetLastError() {
  return g_lastError.c_str();
}

int _BKMK_ExportVbkm(CBkmkObj* node, const char* folder, int flag, CStringList* written) {
  g_lastError.clear();
  if (!node || !folder || !*folder) {
    NoteFailure(folder ? folder : "", "export", "no tree or no folder");
    return 0;
  }
  const std::string target = hs::os::FullPath(folder);
  if (!hs::os::CreateFolders(target.c_str())) {
    NoteFailure(target, "create folder", "it cannot be created");
    return 0;
  }
  return ExportInto(node, target, node->m_pGenCap, ExportRun{flag, written}, 0);
}

CBkmkObj* _BKMK_ImportVbkm(CBkmkObj* parent, const char* path, int flag) {
  g_lastError.clear();
  if (!parent || !path || !*path) {
    NoteFailure(path ? path : "", "import", "no parent or no path");
    return nullptr;
  }
  std::string native = hs::os::NativePath(path);
  if (hs::os::IsFolder(native.c_str())) {
    ImportRun run{hs::os::RealPath(native), {}, flag};
    CBkmkObj* node = ImportFolder(parent, native, hs::os::BaseName(native), run, 0);
    if (!node) NoteFailure(native, "read folder", "it cannot be read");
    return node;
  }
  if (!ImportFile(parent, native, flag)) return nullptr;
  return parent->GetChildBkmk(parent->GetChildCount() - 1);
}

bool _BKMK_ImportSelectedVbkms(CBkmkObj* parent, const CStringList& paths) {
  bool all = true;
  CString first;
  for (const CString& p : paths) {
    if (!_BKMK_ImportVbkm(parent, p.c_str(), BKMK_FLAG_NONE)) all = false;
    if (first.empty()) first = g_lastError;
  }
  g_lastError = first;
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
