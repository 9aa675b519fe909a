#include "handset/messaging/MmsProject.h"

#include <algorithm>
#include <cstring>
#include <string>
#include <vector>

#include "handset/messaging/MmFile.h"
#include "handset/messaging/MmsMessage.h"
#include "messaging/mms/SmilScanner.h"
#include "messaging/mms/WspTables.h"
#include "platform/Folders.h"
#include "platform/Os.h"

namespace {

/// One media file of a presentation: how the presentation names it and where it is.
struct SmilMedia {
  std::string ref;        ///< the reference as written ("img.gif", "cid:1")
  std::string file;       ///< the file, relative to the presentation's folder
  std::string contentId;  ///< for "cid:" references, the id
};

bool HasScheme(const std::string& ref) {
  size_t colon = ref.find(':');
  if (colon == std::string::npos) return false;
  size_t slash = ref.find_first_of("/\\");
  if (slash != std::string::npos && slash < colon) return false;
  return true;
}

bool IsUnsafePath(const std::string& ref) {
  if (ref.empty() || ref[0] == '/' || ref[0] == '\\') return true;
  if (ref.size() >= 2 && ref[1] == ':') return true;  // a drive letter
  size_t start = 0;
  while (start <= ref.size()) {
    size_t end = ref.find_first_of("/\\", start);
    if (end == std::string::npos) end = ref.size();
    if (ref.compare(start, end - start, "..") == 0 && end - start == 2) return true;
    start = end + 1;
  }
  return false;
}

std::string Trim(const std::string& s) {
  size_t b = s.find_first_not_of(" \t\r\n");
  if (b == std::string::npos) return std::string();
  size_t e = s.find_last_not_of(" \t\r\n");
  return s.substr(b, e - b + 1);
}

/// The file of the folder a content id stands for: the file of that name, else the first
/// whose name without extension is the id.
std::string ResolveContentId(const std::string& folder, const std::string& id,
                             std::vector<std::string>* listing, bool* listed) {
  if (id.empty() || IsUnsafePath(id)) return std::string();
  if (!*listed) {
    *listing = hs::os::ListFolder(folder.c_str(), false);
    *listed = true;
  }
  for (const std::string& f : *listing)
    if (f == id) return f;
  for (const std::string& f : *listing) {
    size_t dot = f.rfind('.');
    if (dot != std::string::npos && f.compare(0, dot, id) == 0 && dot == id.size()) return f;
  }
  return std::string();
}

bool CollectSmilMedia(const char* path, std::string* folder, std::vector<SmilMedia>* media,
                      std::vector<uint8_t>* smilBytes) {
  media->clear();
  if (!path || !*path || !hs::os::ReadFile(hs::os::NativePath(path), smilBytes)) return false;
  if (!hs::mms::IsSmilText(smilBytes->data(), smilBytes->size())) return false;
  std::string full = hs::os::FullPath(path);
  size_t sep = full.find_last_of("/\\");
  *folder = sep == std::string::npos ? std::string(".") : full.substr(0, sep == 0 ? 1 : sep);
  std::vector<std::string> listing;
  bool listed = false;
  for (const std::string& raw :
       hs::mms::SmilMediaReferences(smilBytes->data(), smilBytes->size())) {
    SmilMedia m;
    m.ref = Trim(raw);
    if (m.ref.size() > 4 && hs::mms::EqualNoCase(m.ref.substr(0, 4), "cid:")) {
      std::string id = m.ref.substr(4);
      if (id.size() >= 2 && id.front() == '<' && id.back() == '>') id = id.substr(1, id.size() - 2);
      m.contentId = "<" + id + ">";
      m.file = ResolveContentId(*folder, id, &listing, &listed);
    } else if (!HasScheme(m.ref) && !IsUnsafePath(m.ref)) {
      m.file = m.ref.compare(0, 2, "./") == 0 ? m.ref.substr(2) : m.ref;
    }
    if (m.file.empty()) continue;
    bool seen = std::any_of(media->begin(), media->end(),
                            [&](const SmilMedia& o) { return o.file == m.file; });
    if (!seen) media->push_back(m);
  }
  return true;
}

/// Reads a file into a buffer the body takes over; null for a file that is missing or empty.
uint8_t* ReadOwned(const std::string& path, uint32_t* size) {
  std::vector<uint8_t> bytes;
  if (!hs::os::ReadFile(path, &bytes) || bytes.empty() || bytes.size() > 0xFFFFFFFFu)
    return nullptr;
  uint8_t* data = new uint8_t[bytes.size()];
  std::memcpy(data, bytes.data(), bytes.size());
  *size = static_cast<uint32_t>(bytes.size());
  return data;
}

}  // namespace

int GetMMSFileFormat(const char* path) {
  if (!path || !*path) return MMS_FILE_UNKNOWN;
  std::vector<uint8_t> bytes;
  if (!hs::os::ReadFile(hs::os::NativePath(path), &bytes)) return MMS_FILE_UNKNOWN;
  if (hs::mms::IsSmilText(bytes.data(), bytes.size())) return MMS_FILE_SMIL;
  CString ext = GetFileType(path);
  if (ext.CompareNoCase("mcf") == 0) return MMS_FILE_MCF;
  if (ext.CompareNoCase("xmm") == 0) return MMS_FILE_XMM;
  return MMS_FILE_UNKNOWN;
}

bool GetSMILRelationFile(const char* path, CString& strFolder, CStringList& lstFiles) {
  strFolder.Empty();
  lstFiles.RemoveAll();
  std::string folder;
  std::vector<SmilMedia> media;
  std::vector<uint8_t> bytes;
  if (!CollectSmilMedia(path, &folder, &media, &bytes)) return false;
  strFolder = folder;
  for (const SmilMedia& m : media) lstFiles.AddTail(m.file);
  return true;
}

bool UnpackMCFFile(const char*, const char*, const char*, CString& strFolder,
                   CStringList& lstFiles) {
  strFolder.Empty();
  lstFiles.RemoveAll();
  return false;
}

int MmsAddPresentationToBody(const char* smilPath, CMmsBody* body) {
  std::string folder;
  std::vector<SmilMedia> media;
  std::vector<uint8_t> smil;
  if (!body || !CollectSmilMedia(smilPath, &folder, &media, &smil)) return -1;
  std::string full = hs::os::FullPath(smilPath);
  CMmsMediaObj* first =
      body->CreateMediaObject(full.c_str(), smil.data(), static_cast<uint32_t>(smil.size()));
  first->SetMimeType(MIME_CNT_APP_SMIL);
  int added = 1;
  for (const SmilMedia& m : media) {
    std::string path = hs::os::JoinPath(folder, m.file);
    uint32_t size = 0;
    uint8_t* data = ReadOwned(path, &size);
    if (!data) continue;  // missing or empty media are left out
    CMmsMediaObj* obj = body->CreateMediaObjectRef(path.c_str(), data, size, true);
    obj->SetContentLocation(m.contentId.empty() ? m.ref.c_str() : m.file.c_str());
    if (!m.contentId.empty()) obj->SetContentID(m.contentId.c_str());
    ++added;
  }
  return added;
}

int GetMMSReqPduSize(const char* path, const char* workFolder, const char* projectName) {
  int format = GetMMSFileFormat(path);
  CMmFile file(80, 60);
  CMmsBody& body = file.GetMessage().GetBody();
  if (format == MMS_FILE_SMIL) {
    if (MmsAddPresentationToBody(path, &body) < 0) return 0;
  } else if (format == MMS_FILE_MCF || format == MMS_FILE_XMM) {
    if (!projectName || !*projectName) return 0;
    std::string work = workFolder && *workFolder ? workFolder : hs::os::TempPath();
    CString folder;
    CStringList files;
    if (!UnpackMCFFile(path, work.c_str(), projectName, folder, files)) return 0;
    for (const CString& name : files) {
      std::string media = hs::os::JoinPath(folder, name);
      uint32_t size = 0;
      if (uint8_t* data = ReadOwned(media, &size))
        body.CreateMediaObjectRef(media.c_str(), data, size, true);
    }
  } else {
    return 0;
  }
  int size = MmsCalcSendReqPduSize(file.GetMessage());
  return size > 0 ? size : 0;
}
