#include "handset/pim/PersonalInfo.h"

#include <cstring>
#include <string>
#include <vector>

namespace {

constexpr int32_t kPIVersion = 0x1212;

const char* OrEmpty(const char* s) {
  return s ? s : "";
}

bool IsPhone(CINFO_TYPE type) {
  return ((static_cast<uint32_t>(type) >> 8) & 0xFF) == CINFO_FAMILY_PHONE;
}

bool IsEmptyText(const char* s) {
  return !s || !*s;
}

// The characters a phone dials besides the digits. Upper-case 'W' is not among them: the phone
// treats only the lower-case form as a wait.
constexpr char kDialChars[] = "*#+pPw,\"n?-";

void CopyField(char* dest, size_t capacity, const char* text) {
  size_t n = std::strlen(OrEmpty(text));
  if (n > capacity - 1) n = capacity - 1;
  std::memcpy(dest, OrEmpty(text), n);
  std::memset(dest + n, 0, capacity - n);
}

std::string Key(const char* prefix, const char* name) {
  return std::string(OrEmpty(prefix)) + name;
}

bool HasType(const CContactInfo& c, CINFO_TYPE type) {
  return c.GetType() == type;
}
bool HasNoInfo(const CContactInfo& c, CINFO_TYPE) {
  return IsEmptyText(c.GetInfoString());
}

}  // namespace

CPersonalInfo::CPersonalInfo() {
  Empty();
}

void CPersonalInfo::SetName(const char* name) {
  m_strName = OrEmpty(name);
}

CString CPersonalInfo::GetDisplayName() const {
  if (!m_strName.IsEmpty()) return m_strName;
  return CString(GetDefaultPhone());
}

void CPersonalInfo::SetOutlookHandle(const char* handle) {
  CopyField(m_szOutlookHandle, sizeof m_szOutlookHandle, handle);
}

uint32_t CPersonalInfo::GetCheckSum() const {
  CString own, more;
  own.Format("%s,%d,%d,%X,%d,", m_strName.c_str(), m_nGroup, m_nMemory, m_hHandle, m_nContacts);
  more.Format("%X,%s,%s,", m_nFlag, m_szOutlookHandle, OrEmpty(GetDefaultPhone()));
  uint32_t sum = HsCrc32(own.data(), own.size());
  sum = HsCrc32(more.data(), more.size(), sum);
  for (int i = 0; i < m_nContacts; ++i) {
    // Each entry's own sum is folded in, so the order of the entries counts.
    uint32_t entry = m_Contacts[i].GetCheckSum();
    uint8_t b[4] = {uint8_t(entry), uint8_t(entry >> 8), uint8_t(entry >> 16),
                    uint8_t(entry >> 24)};
    sum = HsCrc32(b, 4, sum);
  }
  return sum;
}

const char* CPersonalInfo::GetNote() const {
  return FindContactInfo(CINFO_NOTE, 0);
}

const char* CPersonalInfo::GetDefaultPhone() const {
  for (int i = 0; i < m_nContacts; ++i)
    if (m_Contacts[i].IsPhoneType() && !IsEmptyText(m_Contacts[i].GetInfoString()))
      return m_Contacts[i].GetInfoString();
  return nullptr;
}

const char* CPersonalInfo::GetMobilePhone() const {
  return FindContactInfo(CINFO_PHONE_MOBILE, 0);
}

int CPersonalInfo::GetPhoneCount() const {
  int n = 0;
  for (int i = 0; i < m_nContacts; ++i) n += m_Contacts[i].IsPhoneType() ? 1 : 0;
  return n;
}

int CPersonalInfo::GetTextCount() const {
  return m_nContacts - GetPhoneCount();
}

int CPersonalInfo::Add(CINFO_TYPE type, const CString& data, const char* label) {
  if (m_nContacts >= PI_MAX_CONTACTS) return 0;
  m_Contacts[m_nContacts++].Set(type, label, data.c_str());
  return 1;
}

int CPersonalInfo::Add(CINFO_TYPE type, const char* text, const char* label) {
  if (IsEmptyText(text)) return 0;
  return Add(type, CString(text), label);
}

int CPersonalInfo::AddPhone(CINFO_TYPE type, const char* number, const char* label,
                            const char* allowed) {
  if (!IsPhone(type)) return 0;
  if (IsEmptyText(number)) return Add(type, CString(), label);
  const char* keep = allowed ? allowed : kDialChars;
  CString filtered;
  for (const char* p = number; *p && filtered.GetLength() < PI_MAX_PHONE_LENGTH; ++p) {
    if ((*p >= '0' && *p <= '9') || std::strchr(keep, *p)) filtered.push_back(*p);
  }
  return Add(type, filtered.c_str(), label);
}

void CPersonalInfo::Empty() {
  m_strName.Empty();
  m_nGroup = -1;
  m_nMemory = 0;
  m_hHandle = 0;
  m_nFlag = 0;
  std::memset(m_szOutlookHandle, 0, sizeof m_szOutlookHandle);
  for (CContactInfo& c : m_Contacts) c.Empty();
  m_nContacts = 0;
  m_nIndex = 0;
}

bool CPersonalInfo::IsEmpty() const {
  return m_strName.IsEmpty() && m_nContacts == 0;
}

CString CPersonalInfo::Dump() const {
  CString out;
  out.Format("contact \"%s\" group %d memory %d handle 0x%X flag 0x%X index %u desktop \"%s\"\n",
             m_strName.c_str(), m_nGroup, m_nMemory, m_hHandle, m_nFlag, m_nIndex,
             m_szOutlookHandle);
  for (int i = 0; i < m_nContacts; ++i) {
    const CContactInfo& c = m_Contacts[i];
    CString line;
    line.Format("  [%d] type 0x%04X label \"%s\" info \"%s\"\n", i,
                static_cast<unsigned>(c.GetType()), OrEmpty(c.GetLabelName()),
                OrEmpty(c.GetInfoString()));
    out += line;
  }
  return out;
}

CContactInfo* CPersonalInfo::GetContactInfo(int i) {
  return i >= 0 && i < m_nContacts ? &m_Contacts[i] : nullptr;
}

const CContactInfo* CPersonalInfo::GetContactInfo(int i) const {
  return i >= 0 && i < m_nContacts ? &m_Contacts[i] : nullptr;
}

int CPersonalInfo::_FindNth(CINFO_TYPE type, int nth, const char* label) const {
  if (nth < 0) return -1;
  for (int i = 0; i < m_nContacts; ++i) {
    const CContactInfo& c = m_Contacts[i];
    if (c.GetType() != type) continue;
    if (label && std::strcmp(OrEmpty(c.GetLabelName()), label) != 0) continue;
    if (nth-- == 0) return i;
  }
  return -1;
}

CContactInfo* CPersonalInfo::FindContactInfoAddr(CINFO_TYPE type, int nth, const char* label) {
  int i = _FindNth(type, nth, label);
  return i < 0 ? nullptr : &m_Contacts[i];
}

const char* CPersonalInfo::FindContactInfo(CINFO_TYPE type, int nth) const {
  int i = _FindNth(type, nth, nullptr);
  return i < 0 ? nullptr : m_Contacts[i].GetInfoString();
}

int CPersonalInfo::FindContactIndex(CINFO_TYPE type, int nth) const {
  return _FindNth(type, nth, nullptr);
}

CContactInfo* CPersonalInfo::FindContactInfoEx(CINFO_TYPE type, int nth) {
  int i = _FindNth(type, nth, nullptr);
  return i < 0 ? nullptr : &m_Contacts[i];
}

int CPersonalInfo::_RemoveIf(bool (*pred)(const CContactInfo&, CINFO_TYPE), CINFO_TYPE type) {
  int kept = 0;
  for (int i = 0; i < m_nContacts; ++i) {
    if (pred(m_Contacts[i], type)) continue;
    if (kept != i) m_Contacts[kept] = m_Contacts[i];
    ++kept;
  }
  int removed = m_nContacts - kept;
  for (int i = kept; i < m_nContacts; ++i) m_Contacts[i].Empty();
  m_nContacts = kept;
  return removed;
}

int CPersonalInfo::Del(CINFO_TYPE type) {
  return _RemoveIf(HasType, type);
}

int CPersonalInfo::DelEmptyCInfo() {
  return _RemoveIf(HasNoInfo, CINFO_NONE);
}

int CPersonalInfo::ClearCInfoString(CINFO_TYPE type) {
  int n = 0;
  for (int i = 0; i < m_nContacts; ++i) {
    if (m_Contacts[i].GetType() != type) continue;
    m_Contacts[i].SetInfoString(nullptr);
    ++n;
  }
  return n;
}

bool CPersonalInfo::operator==(const CPersonalInfo& o) const {
  if (m_strName != o.m_strName || m_nGroup != o.m_nGroup || m_nMemory != o.m_nMemory ||
      m_hHandle != o.m_hHandle || m_nFlag != o.m_nFlag || m_nIndex != o.m_nIndex ||
      m_nContacts != o.m_nContacts || std::strcmp(m_szOutlookHandle, o.m_szOutlookHandle) != 0)
    return false;
  for (int i = 0; i < m_nContacts; ++i)
    if (m_Contacts[i] != o.m_Contacts[i]) return false;
  return true;
}

void CPersonalInfo::ReadFrom(const PI_RAW& raw) {
  Empty();
  const void* nul = std::memchr(raw.szName, 0, sizeof raw.szName);
  m_strName.assign(raw.szName, nul ? static_cast<const char*>(nul) - raw.szName
                                   : static_cast<std::ptrdiff_t>(sizeof raw.szName));
  m_nGroup = raw.nGroup;
  m_nMemory = raw.nMemory;
  m_hHandle = raw.hHandle;
  m_nFlag = raw.nFlag;
  std::memcpy(m_szOutlookHandle, raw.szOutlookHandle, sizeof m_szOutlookHandle);
  m_szOutlookHandle[sizeof m_szOutlookHandle - 1] = '\0';
  int count = raw.nContacts < 0                 ? 0
              : raw.nContacts > PI_MAX_CONTACTS ? PI_MAX_CONTACTS
                                                : raw.nContacts;
  for (int i = 0; i < count; ++i) m_Contacts[i].ReadFrom(raw.contacts[i]);
  m_nContacts = count;
  m_nIndex = raw.nIndex;
}

void CPersonalInfo::WriteTo(PI_RAW& raw) const {
  std::memset(&raw, 0, sizeof raw);
  CopyField(raw.szName, sizeof raw.szName, m_strName.c_str());
  raw.nGroup = m_nGroup;
  raw.nMemory = m_nMemory;
  raw.hHandle = m_hHandle;
  raw.nFlag = m_nFlag;
  CopyField(raw.szOutlookHandle, sizeof raw.szOutlookHandle, m_szOutlookHandle);
  raw.nContacts = m_nContacts;
  for (int i = 0; i < m_nContacts; ++i) m_Contacts[i].WriteTo(raw.contacts[i]);
  raw.nIndex = m_nIndex;
}

int CPersonalInfo::PackData(const char* prefix, CPackageBlk& blk) const {
  blk.AddInt(Key(prefix, "PI_VERSION").c_str(), kPIVersion);
  blk.AddString(Key(prefix, "m_pszName").c_str(), m_strName.c_str());
  blk.AddInt(Key(prefix, "m_nGroup").c_str(), m_nGroup);
  blk.AddInt(Key(prefix, "m_nMemory").c_str(), m_nMemory);
  blk.AddInt(Key(prefix, "m_hHandle").c_str(), static_cast<int32_t>(m_hHandle));
  blk.AddInt(Key(prefix, "m_nContacts").c_str(), m_nContacts);
  for (int i = 0; i < m_nContacts; ++i)
    m_Contacts[i].PackData((Key(prefix, "m_Contacts_") + std::to_string(i)).c_str(), blk);
  return 1;
}

int CPersonalInfo::UnpackData(const char* prefix, const CUnpackageBlk& blk) {
  Empty();
  int32_t v = 0;
  if (blk.GetInt(Key(prefix, "PI_VERSION").c_str(), &v) && v != kPIVersion) return 0;
  char name[PI_NAME_SIZE];
  if (blk.CopyString(Key(prefix, "m_pszName").c_str(), name, sizeof name)) m_strName = name;
  if (blk.GetInt(Key(prefix, "m_nGroup").c_str(), &v)) m_nGroup = v;
  if (blk.GetInt(Key(prefix, "m_nMemory").c_str(), &v)) m_nMemory = v;
  if (blk.GetInt(Key(prefix, "m_hHandle").c_str(), &v)) m_hHandle = static_cast<uint32_t>(v);
  int32_t count = 0;
  blk.GetInt(Key(prefix, "m_nContacts").c_str(), &count);
  count = count < 0 ? 0 : count > PI_MAX_CONTACTS ? PI_MAX_CONTACTS : count;
  for (int i = 0; i < count; ++i) {
    if (!m_Contacts[i].UnpackData((Key(prefix, "m_Contacts_") + std::to_string(i)).c_str(), blk)) {
      Empty();
      return 0;
    }
  }
  m_nContacts = count;
  return 1;
}
