#include "handset/platform/RegSDK.h"

#include <cstring>
#include <filesystem>
#include <string>
#include <vector>

#include "handset/platform/PackageBlk.h"
#include "platform/Os.h"

#if defined(_WIN32)
#include <windows.h>
#endif

namespace {

// Multi-strings are stored as on Windows: each string followed by NUL, then one more NUL.
std::vector<uint8_t> JoinMulti(const CStringList& values) {
  std::vector<uint8_t> out;
  for (const CString& v : values) {
    out.insert(out.end(), v.begin(), v.end());
    out.push_back(0);
  }
  out.push_back(0);
  return out;
}

void SplitMulti(const uint8_t* data, size_t size, CStringList& values) {
  values.RemoveAll();
  size_t start = 0;
  for (size_t i = 0; i < size; ++i) {
    if (data[i] != 0) continue;
    if (i == start) break;  // the empty string that ends the list
    values.AddTail(CString(reinterpret_cast<const char*>(data + start), i - start));
    start = i + 1;
  }
  if (start < size && data[size - 1] != 0)  // tolerate a missing terminator
    values.AddTail(CString(reinterpret_cast<const char*>(data + start), size - start));
}

#if !defined(_WIN32)
std::string StorePath() {
  return (std::filesystem::path(hs::os::ConfigDir()) / "profile.blk").string();
}

// Reads the whole store; a missing file is an empty store. False when the file exists but is
// corrupt, so a bad store is never overwritten by a partial copy.
bool LoadStore(CPackageBlk* store) {
  std::vector<uint8_t> bytes;
  if (!hs::os::ReadFile(StorePath(), &bytes)) return true;
  return store->Deserialize(bytes.data(), bytes.size());
}

bool SaveStore(const CPackageBlk& store) {
  std::vector<uint8_t> bytes = store.Serialize();
  return hs::os::WriteFileAtomic(StorePath(), bytes.data(), bytes.size());
}

std::string SectionKey(const CString& keyPath, const char* section) {
  return keyPath + "\\" + (section ? section : "") + "\\";
}
#endif

}  // namespace

CxRegSDK::CxRegSDK(const char* keyPath) : m_strKeyPath(keyPath) {}

#if defined(_WIN32)

bool CxRegSDK::GetProfileMultiString(const char* section, const char* entry,
                                     CStringList& values) const {
  values.RemoveAll();
  std::string sub = m_strKeyPath + "\\" + (section ? section : "");
  HKEY key;
  if (RegOpenKeyExA(HKEY_CURRENT_USER, sub.c_str(), 0, KEY_READ, &key) != ERROR_SUCCESS)
    return false;
  DWORD type = 0, size = 0;
  bool ok = RegQueryValueExA(key, entry, nullptr, &type, nullptr, &size) == ERROR_SUCCESS &&
            type == REG_MULTI_SZ;
  std::vector<uint8_t> data(size);
  if (ok) ok = RegQueryValueExA(key, entry, nullptr, &type, data.data(), &size) == ERROR_SUCCESS;
  RegCloseKey(key);
  if (ok) SplitMulti(data.data(), size, values);
  return ok;
}

bool CxRegSDK::WriteProfileMultiString(const char* section, const char* entry,
                                       const CStringList& values) {
  std::string sub = m_strKeyPath + "\\" + (section ? section : "");
  HKEY key;
  if (RegCreateKeyExA(HKEY_CURRENT_USER, sub.c_str(), 0, nullptr, 0, KEY_WRITE, nullptr, &key,
                      nullptr) != ERROR_SUCCESS)
    return false;
  std::vector<uint8_t> data = JoinMulti(values);
  bool ok = RegSetValueExA(key, entry, 0, REG_MULTI_SZ, data.data(),
                           static_cast<DWORD>(data.size())) == ERROR_SUCCESS;
  RegCloseKey(key);
  return ok;
}

bool CxRegSDK::RemoveSessionKey(const char* section) {
  std::string sub = m_strKeyPath + "\\" + (section ? section : "");
  LSTATUS rc = RegDeleteTreeA(HKEY_CURRENT_USER, sub.c_str());
  return rc == ERROR_SUCCESS || rc == ERROR_FILE_NOT_FOUND;
}

#else

bool CxRegSDK::GetProfileMultiString(const char* section, const char* entry,
                                     CStringList& values) const {
  values.RemoveAll();
  CPackageBlk store;
  if (!entry || !LoadStore(&store)) return false;
  auto it = store.Entries().find(SectionKey(m_strKeyPath, section) + entry);
  if (it == store.Entries().end()) return false;
  SplitMulti(it->second.data(), it->second.size(), values);
  return true;
}

bool CxRegSDK::WriteProfileMultiString(const char* section, const char* entry,
                                       const CStringList& values) {
  CPackageBlk store;
  if (!entry || !LoadStore(&store)) return false;
  std::vector<uint8_t> data = JoinMulti(values);
  std::string key = SectionKey(m_strKeyPath, section) + entry;
  store.Add(key.c_str(), data.data(), static_cast<uint32_t>(data.size()));
  return SaveStore(store);
}

bool CxRegSDK::RemoveSessionKey(const char* section) {
  CPackageBlk store;
  if (!LoadStore(&store)) return false;
  std::string prefix = SectionKey(m_strKeyPath, section);
  CPackageBlk kept;
  bool removed = false;
  for (const auto& e : store.Entries()) {
    if (e.first.compare(0, prefix.size(), prefix) == 0) {
      removed = true;
      continue;
    }
    kept.Add(e.first.c_str(), e.second.data(), static_cast<uint32_t>(e.second.size()));
  }
  return !removed || SaveStore(kept);
}

#endif
