#include <set>
#include <string>

#include "handset/messaging/MmsMessage.h"
#include "handset/platform/Results.h"
#include "messaging/mms/MimeText.h"
#include "platform/Folders.h"
#include "platform/Os.h"

namespace {

const size_t kMaxNameBytes = 100;

std::string Lower(std::string s) {
  for (char& c : s)
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
  return s;
}

/// Cuts `s` to at most `max` bytes without splitting a UTF-8 sequence.
std::string CutUtf8(const std::string& s, size_t max) {
  if (s.size() <= max) return s;
  size_t n = max;
  while (n > 0 && (static_cast<unsigned char>(s[n]) & 0xC0) == 0x80) --n;
  return s.substr(0, n);
}

bool IsReservedDeviceName(const std::string& stem) {
  static const char* const kNames[] = {"con", "prn", "aux", "nul"};
  std::string s = Lower(stem);
  for (const char* n : kNames)
    if (s == n) return true;
  return s.size() == 4 && (s.compare(0, 3, "com") == 0 || s.compare(0, 3, "lpt") == 0) &&
         s[3] >= '1' && s[3] <= '9';
}

/// A name that is legal as one file name on every system the library runs on.
std::string LegalName(const std::string& wanted) {
  std::string name = wanted;
  // Some relays send a content id ("<name>") as the location.
  if (name.size() > 2 && name.front() == '<' && name.back() == '>')
    name = name.substr(1, name.size() - 2);
  size_t slash = name.find_last_of("/\\");
  if (slash != std::string::npos) name = name.substr(slash + 1);
  name = hs::mms::SanitizeUtf8(name);
  for (char& c : name) {
    unsigned char u = static_cast<unsigned char>(c);
    if (u < 0x20 || u == 0x7F || std::string("<>:\"|?*").find(c) != std::string::npos) c = '_';
  }
  size_t b = name.find_first_not_of(" .");
  size_t e = name.find_last_not_of(" .");
  name = b == std::string::npos ? std::string() : name.substr(b, e - b + 1);
  size_t dot = name.rfind('.');
  std::string stem = dot == std::string::npos ? name : name.substr(0, dot);
  std::string ext = dot == std::string::npos ? std::string() : name.substr(dot);
  if (ext.size() > 16) stem = name, ext.clear();
  if (IsReservedDeviceName(stem)) stem = "_" + stem;
  stem = CutUtf8(stem, kMaxNameBytes - ext.size());
  return stem.empty() ? std::string() : stem + ext;
}

/// The name a part is written under, before it is made unique.
std::string PartName(const CMmsMediaObj& obj, int index) {
  std::string name = LegalName(obj.GetExplicitContentLocation());
  if (name.empty()) name = LegalName(obj.GetFileName());
  if (name.empty()) {
    std::string id = obj.GetContentID();
    if (id.size() >= 2 && id.front() == '<' && id.back() == '>') id = id.substr(1, id.size() - 2);
    name = LegalName(id);
    if (name.empty()) name = "part" + std::to_string(index + 1);
    EMimeCntType type = obj.GetMimeType();
    if (type == MIME_CNT_UNKNOWN) type = MmsMimeTypeFromName(obj.GetContentType().c_str());
    const char* ext = MmsMimeTypeExtension(type);
    if (ext && name.find('.') == std::string::npos) name += std::string(".") + ext;
  }
  return name;
}

/// `name`, or `name` with "-1", "-2", ... before its extension, that is neither taken by this
/// extraction nor present in `dir` as an entry of any kind.
std::string UniqueName(const std::string& dir, const std::string& name,
                       const std::set<std::string>& taken) {
  size_t dot = name.rfind('.');
  std::string stem = dot == std::string::npos || dot == 0 ? name : name.substr(0, dot);
  std::string ext = dot == std::string::npos || dot == 0 ? std::string() : name.substr(dot);
  for (int n = 0;; ++n) {
    std::string candidate = n == 0 ? name : stem + "-" + std::to_string(n) + ext;
    if (taken.count(Lower(candidate))) continue;
    if (hs::os::EntryExists(hs::os::JoinPath(dir, candidate).c_str())) continue;
    return candidate;
  }
}

}  // namespace

int MmsExtractParts(const CMmsMessage& msg, const char* dir, CStringList* written) {
  if (!dir || !*dir) return hs::mmspdu::kErrFolder;
  std::string folder = hs::os::NativePath(dir);
  if (!hs::os::IsFolder(folder.c_str()) && !hs::os::CreateFolders(folder.c_str()))
    return hs::mmspdu::kErrFolder;
  std::set<std::string> taken;
  const CMmsBody& body = msg.GetBody();
  for (int i = 0; i < body.GetCount(); ++i) {
    const CMmsMediaObj* obj = body.GetAt(i);
    std::string name = UniqueName(folder, PartName(*obj, i), taken);
    taken.insert(Lower(name));
    std::string path = hs::os::JoinPath(folder, name);
    // The writer creates a new temporary file beside the target and renames it into place, so
    // no link is ever followed.
    if (!hs::os::WriteFileAtomic(path, obj->GetData(), obj->GetSize()))
      return hs::mmspdu::kErrWrite;
    if (written) written->AddTail(path);
  }
  return hs::mmspdu::kOk;
}
