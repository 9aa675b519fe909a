#include "pim/bookmark/BkmkNames.h"

#include <cstring>
#include <vector>

#include "handset/pim/BkmkFuncs.h"
#include "platform/Folders.h"
#include "platform/Text.h"

namespace hs {
namespace bkmk {

namespace {

std::string Fold(const std::string& s) {
  return hs::os::FoldCase(s.data(), s.size());
}

bool EqualsNoCaseAscii(const std::string& s, size_t n, const char* lit) {
  if (std::strlen(lit) != n) return false;
  for (size_t i = 0; i < n; ++i) {
    char c = s[i];
    if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
    if (c != lit[i]) return false;
  }
  return true;
}

// Windows opens these as devices whatever the extension; the superscript digits are there in
// UTF-8 and in the single-byte Western code page.
bool IsReservedStem(const std::string& s, size_t n) {
  for (const char* dev : {"CON", "PRN", "AUX", "NUL", "CONIN$", "CONOUT$"})
    if (EqualsNoCaseAscii(s, n, dev)) return true;
  if (n < 4 || !(EqualsNoCaseAscii(s, 3, "COM") || EqualsNoCaseAscii(s, 3, "LPT"))) return false;
  std::string digit = s.substr(3, n - 3);
  if (digit.size() == 1 && digit[0] >= '0' && digit[0] <= '9') return true;
  for (const char* sup : {"\xC2\xB9", "\xC2\xB2", "\xC2\xB3", "\xB9", "\xB2", "\xB3"})
    if (digit == sup) return true;
  return false;
}

// The end of the character that starts at `pos`.
size_t NextBoundary(const std::string& s, size_t pos) {
  size_t next = pos + 1;
  while (next < s.size() && hs::os::CharBoundary(s.data(), s.size(), next) != next) ++next;
  return next;
}

// The longest prefix of `s` ending at a character boundary within `bytes` and `units` (0: no
// limit).
size_t FitPrefix(const std::string& s, size_t bytes, size_t units) {
  size_t cut = 0, used = 0;
  while (cut < s.size()) {
    size_t next = NextBoundary(s, cut);
    size_t u = hs::os::Utf16Length(s.data() + cut, next - cut);
    if ((bytes && next > bytes) || (units && used + u > units)) break;
    used += u;
    cut = next;
  }
  return cut;
}

size_t Minus(size_t limit, size_t used) {
  if (!limit) return 0;
  return limit > used ? limit - used : 1;  // 1: the counter alone is already too long
}

}  // namespace

size_t CleanNameEnds(std::string* name) {
  for (size_t i = name->size(); i > 0 && ((*name)[i - 1] == '.' || (*name)[i - 1] == ' '); --i)
    (*name)[i - 1] = '_';
  size_t stem = name->find('.');
  if (stem == std::string::npos) stem = name->size();
  size_t n = stem;
  while (n > 0 && (*name)[n - 1] == ' ') --n;  // "NUL .txt" is the device too
  if (!IsReservedStem(*name, n)) return std::string::npos;
  name->insert(n, 1, '_');
  return n;
}

std::string FitName(const std::string& base, const std::string& suffix, const std::string& ext,
                    const NameLimits& phone) {
  size_t fsBytes = 0, fsUnits = 0;
  hs::os::MaxNameLength(&fsBytes, &fsUnits);
  const size_t suffixUnits = hs::os::Utf16Length(suffix.data(), suffix.size());
  const size_t tailUnits = suffixUnits + hs::os::Utf16Length(ext.data(), ext.size());
  size_t bytes = Minus(phone.bytes, suffix.size());
  size_t units = Minus(phone.units, suffixUnits);
  size_t fsB = Minus(fsBytes, suffix.size() + ext.size()), fsU = Minus(fsUnits, tailUnits);
  if (fsB && (!bytes || fsB < bytes)) bytes = fsB;
  if (fsU && (!units || fsU < units)) units = fsU;
  std::string b = base;
  size_t cut = FitPrefix(b, bytes, units);
  if (cut == 0 && !b.empty()) cut = NextBoundary(b, 0);
  b.resize(cut);
  // A cut may end the base in a dot or a space, as a title never does once made legal.
  for (size_t i = b.size(); i > 0 && (b[i - 1] == '.' || b[i - 1] == ' '); --i) b[i - 1] = '_';
  std::string name = b + suffix + ext;
  size_t at = CleanNameEnds(&name);
  // A cut that leaves a device name ("CONSOLE" cut to "CON") gets its '_' too; when that breaks
  // the limit, the device name's last letter becomes the '_' instead.
  if (at == std::string::npos || at > b.size() || FitPrefix(b + '_', bytes, units) > b.size())
    return name;
  name.erase(at, 1);
  name[at - 1] = '_';
  return name;
}

bool NameSet::Take(const std::string& name) {
  return used_.insert(Fold(name)).second;
}

std::string NameSet::TakeNext(const std::string& base, const std::string& ext,
                              const NameLimits& phone) {
  // Every name tried and found taken stays taken, so the next call for the same base and
  // extension goes on from where this one stopped.
  std::string key = Fold(base) + '\0' + ext;
  int& next = next_[key];
  for (;; ++next) {
    std::string suffix = next == 0 ? std::string() : "(" + std::to_string(next) + ")";
    std::string name = FitName(base, suffix, ext, phone);
    if (Take(name)) {
      ++next;
      return name;
    }
  }
}

}  // namespace bkmk
}  // namespace hs

CString _BKMK_LegalFileName(const char* title) {
  std::string s(title ? title : "");
  for (char& c : s) {
    // Characters no common file system accepts in a name, control bytes and DEL.
    unsigned char u = static_cast<unsigned char>(c);
    if (std::strchr("\\/:*?<>|\"", c) || u < 0x20 || u == 0x7F) c = '_';
  }
  if (s.empty() || s == "." || s == "..") return CString("_");
  hs::bkmk::CleanNameEnds(&s);
  return CString(s);
}

namespace {

// Each child is compared with the names its earlier siblings have by then, ignoring case (export
// targets may ignore it): a set of those names, and per name the next counter to try.
void RenameChildren(CBkmkObj* node) {
  std::unordered_set<std::string> used;
  std::unordered_map<std::string, int> next;
  for (int i = 0; i < node->GetChildCount(); ++i) {
    CBkmkObj* c = node->GetChildBkmk(i);
    if (!c) continue;
    const std::string original = c->m_strTitle;
    const std::string key = hs::os::FoldCase(original.data(), original.size());
    if (used.insert(key).second) continue;
    int& counter = next[key];
    std::string name;
    for (counter = counter < 1 ? 1 : counter;; ++counter) {
      name = original + "(" + std::to_string(counter) + ")";
      if (used.insert(hs::os::FoldCase(name.data(), name.size())).second) break;
    }
    ++counter;
    c->SetTitle(name.c_str());
  }
}

}  // namespace

void _BKMK_PreProcessVbkmFileName(CBkmkObj* node) {
  // Every folder's children are renamed among themselves only, so the order of folders does not
  // matter; a list instead of recursion takes trees of any depth.
  std::vector<CBkmkObj*> folders;
  if (node) folders.push_back(node);
  while (!folders.empty()) {
    CBkmkObj* f = folders.back();
    folders.pop_back();
    for (int i = 0; i < f->GetChildCount(); ++i) {
      CBkmkObj* c = f->GetChildBkmk(i);
      if (c && c->m_enBkmkType == OBJECT_TYPE_FOLDER) folders.push_back(c);
    }
    RenameChildren(f);
  }
}
