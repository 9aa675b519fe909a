#include "handset/pim/ContactInfo.h"

#include <cstring>
#include <limits>
#include <string>
#include <vector>

#include "platform/Os.h"

namespace {

constexpr int32_t kCInfoVersion = 0x1120;

char* Duplicate(const char* text) {
  if (!text) return nullptr;
  size_t n = std::strlen(text);
  char* copy = new char[n + 1];
  std::memcpy(copy, text, n + 1);
  return copy;
}

const char* OrEmpty(const char* s) {
  return s ? s : "";
}

// Copies `text` into a fixed field, cut to fit and always terminated.
void CopyField(char* dest, size_t capacity, const char* text) {
  size_t n = std::strlen(OrEmpty(text));
  if (n > capacity - 1) n = capacity - 1;
  std::memcpy(dest, OrEmpty(text), n);
  std::memset(dest + n, 0, capacity - n);
}

// A field of a raw record may lack its NUL: read at most its size.
std::string ReadField(const char* field, size_t capacity) {
  const void* nul = std::memchr(field, 0, capacity);
  size_t n = nul ? static_cast<size_t>(static_cast<const char*>(nul) - field) : capacity;
  return std::string(field, n);
}

std::string Key(const char* prefix, const char* name) {
  return std::string(OrEmpty(prefix)) + name;
}

}  // namespace

CContactInfo::CContactInfo() : m_nType(CINFO_NONE), m_pszLabel(nullptr), m_pszInfo(nullptr) {}

CContactInfo::CContactInfo(const CContactInfo& other)
    : m_nType(other.m_nType),
      m_pszLabel(Duplicate(other.m_pszLabel)),
      m_pszInfo(Duplicate(other.m_pszInfo)) {}

CContactInfo::CContactInfo(CINFO_TYPE type, const char* label, const char* info)
    : m_nType(type), m_pszLabel(Duplicate(label)), m_pszInfo(Duplicate(info)) {}

CContactInfo::~CContactInfo() {
  Empty();
}

CContactInfo& CContactInfo::operator=(const CContactInfo& other) {
  if (this != &other) Set(other.m_nType, other.m_pszLabel, other.m_pszInfo);
  return *this;
}

void CContactInfo::Set(CINFO_TYPE type, const char* label, const char* info) {
  m_nType = type;
  SetLabel(label);
  SetInfoString(info);
}

void CContactInfo::SetLabel(const char* label) {
  char* copy = Duplicate(label);  // before freeing: `label` may point into the old text
  delete[] m_pszLabel;
  m_pszLabel = copy;
}

void CContactInfo::SetInfoString(const char* info) {
  char* copy = Duplicate(info);
  delete[] m_pszInfo;
  m_pszInfo = copy;
}

bool CContactInfo::IsPhoneType() const {
  return ((static_cast<uint32_t>(m_nType) >> 8) & 0xFF) == CINFO_FAMILY_PHONE;
}

void CContactInfo::Empty() {
  delete[] m_pszLabel;
  delete[] m_pszInfo;
  m_pszLabel = nullptr;
  m_pszInfo = nullptr;
  m_nType = CINFO_NONE;
}

uint32_t CContactInfo::GetCheckSum() const {
  CString text;
  text.Format("%d%s%s", static_cast<int>(m_nType), OrEmpty(m_pszLabel), OrEmpty(m_pszInfo));
  return HsCrc32(text.data(), text.size());
}

bool CContactInfo::operator==(const CContactInfo& other) const {
  return m_nType == other.m_nType &&
         std::strcmp(OrEmpty(m_pszLabel), OrEmpty(other.m_pszLabel)) == 0 &&
         std::strcmp(OrEmpty(m_pszInfo), OrEmpty(other.m_pszInfo)) == 0;
}

void CContactInfo::ReadFrom(const CINFO_RAW& raw) {
  Set(static_cast<CINFO_TYPE>(raw.nType), ReadField(raw.szLabel, sizeof raw.szLabel).c_str(),
      ReadField(raw.szInfo, sizeof raw.szInfo).c_str());
}

void CContactInfo::WriteTo(CINFO_RAW& raw) const {
  raw.nType = m_nType;
  CopyField(raw.szLabel, sizeof raw.szLabel, m_pszLabel);
  CopyField(raw.szInfo, sizeof raw.szInfo, m_pszInfo);
}

int CContactInfo::PackData(const char* prefix, CPackageBlk& blk) const {
  blk.AddInt(Key(prefix, "CINFO_VERSION").c_str(), kCInfoVersion);
  blk.AddInt(Key(prefix, "CINFO_TYPE").c_str(), static_cast<int32_t>(m_nType));
  blk.AddString(Key(prefix, "CINFO_LABEL").c_str(), m_pszLabel);
  blk.AddString(Key(prefix, "CINFO_INFO").c_str(), m_pszInfo);
  return 1;
}

int CContactInfo::UnpackData(const char* prefix, const CUnpackageBlk& blk) {
  Empty();
  int32_t version = 0;
  if (blk.GetInt(Key(prefix, "CINFO_VERSION").c_str(), &version) && version != kCInfoVersion)
    return 0;
  int32_t type = 0;
  if (blk.GetInt(Key(prefix, "CINFO_TYPE").c_str(), &type)) m_nType = static_cast<CINFO_TYPE>(type);
  std::vector<char> field(CINFO_INFO_SIZE);
  if (blk.CopyString(Key(prefix, "CINFO_LABEL").c_str(), field.data(), CINFO_LABEL_SIZE))
    SetLabel(field[0] ? field.data() : nullptr);  // stored empty: null and "" are one
  if (blk.CopyString(Key(prefix, "CINFO_INFO").c_str(), field.data(), CINFO_INFO_SIZE))
    SetInfoString(field[0] ? field.data() : nullptr);
  return 1;
}

int _ReadFile(const char* path, unsigned char*& data, int* size) {
  data = nullptr;
  if (size) *size = 0;
  std::vector<uint8_t> bytes;
  if (!path || !hs::os::ReadFile(path, &bytes)) return 0;
  if (bytes.size() > static_cast<size_t>(std::numeric_limits<int>::max() - 1)) return 0;
  data = new unsigned char[bytes.size() + 1];
  if (!bytes.empty()) std::memcpy(data, bytes.data(), bytes.size());
  data[bytes.size()] = 0;
  if (size) *size = static_cast<int>(bytes.size());
  return 1;
}
