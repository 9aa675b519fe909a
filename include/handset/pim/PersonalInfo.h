#pragma once

#include <cstdint>
#include <vector>

#include "handset/export.h"
#include "handset/pim/ContactInfo.h"
#include "handset/platform/PackageBlk.h"
#include "handset/platform/Strings.h"

/// The most entries one contact holds.
constexpr int PI_MAX_CONTACTS = 120;
/// Size, with the NUL, of the desktop address-book handle field.
constexpr int PI_DESKTOP_HANDLE_SIZE = 256;
/// Size, with the NUL, of the name in a raw record; unpacked names are cut to it as well.
constexpr int PI_NAME_SIZE = 256;
/// The most characters `AddPhone` keeps of a number.
constexpr int PI_MAX_PHONE_LENGTH = 1024;

/// A contact as a plain record (about 260 KB: allocate it on the heap).
struct PI_RAW {
  char szName[PI_NAME_SIZE];
  int32_t nGroup;
  int32_t nMemory;
  uint32_t hHandle;
  uint32_t nFlag;
  char szOutlookHandle[PI_DESKTOP_HANDLE_SIZE];
  int32_t nContacts;
  CINFO_RAW contacts[PI_MAX_CONTACTS];
  uint32_t nIndex;
};

/// One contact of the phone book: a name, its place on the phone (group, memory, handle, index)
/// and up to 120 typed entries kept dense at the front of the array.
class HANDSET_API CPersonalInfo {
 public:
  CPersonalInfo();
  CPersonalInfo(const CPersonalInfo& other) = default;
  CPersonalInfo& operator=(const CPersonalInfo& other) = default;

  void SetName(const char* name);
  /// The name, or null when there is none.
  const char* GetName() const { return m_strName.IsEmpty() ? nullptr : m_strName.c_str(); }
  /// What a list shows for the contact: the name, else the default phone number, else "".
  CString GetDisplayName() const;
  void SetGroup(int group) { m_nGroup = group; }
  int GetGroup() const { return m_nGroup; }
  void SetMemory(int memory) { m_nMemory = memory; }
  int GetMemory() const { return m_nMemory; }
  void SetFlag(uint32_t flag) { m_nFlag = flag; }
  uint32_t GetFlag() const { return m_nFlag; }
  void SetHandle(uint32_t handle) { m_hHandle = handle; }
  uint32_t GetHandle() const { return m_hHandle; }
  void SetIndex(uint32_t index) { m_nIndex = index; }
  uint32_t GetIndex() const { return m_nIndex; }
  /// Copies the handle of the linked desktop address-book item, cut to 255 characters.
  void SetOutlookHandle(const char* handle);
  const char* GetOutlookHandle() const { return m_szOutlookHandle; }

  /// A 32-bit sum over the contact's own fields and all its entries in order.
  uint32_t GetCheckSum() const;
  /// The info text of the first `CINFO_NOTE` entry, or null.
  const char* GetNote() const;
  /// The first non-empty number of the phone family, in entry order, or null.
  const char* GetDefaultPhone() const;
  /// The info text of the first `CINFO_PHONE_MOBILE` entry, or null.
  const char* GetMobilePhone() const;
  /// The number of entries of the phone family.
  int GetPhoneCount() const;
  /// The number of entries outside the phone family.
  int GetTextCount() const;

  /// Appends an entry holding `data`, which may be empty. 0 when the contact is full, else 1.
  int Add(CINFO_TYPE type, const CString& data, const char* label = nullptr);
  /// Appends an entry holding `text`. 0 when the contact is full or the text is null or empty.
  int Add(CINFO_TYPE type, const char* text, const char* label = nullptr);
  /// Appends a phone number, keeping only the digits and the characters of `allowed` (null:
  /// the dialling characters * # + p P w , " n ? -) and at most 1024 of them. An empty number
  /// becomes an empty entry; a number with nothing left to keep is refused. 0 when `type` is not
  /// of the phone family, the contact is full, or nothing is kept; 1 otherwise.
  int AddPhone(CINFO_TYPE type, const char* number, const char* label = nullptr,
               const char* allowed = nullptr);

  /// Clears every field: no name, group -1, no entries, everything else 0 or empty.
  void Empty();
  /// True when there is no name and no entry.
  bool IsEmpty() const;
  /// A readable multi-line description, for diagnostics.
  CString Dump() const;

  int GetContactInfoCount() const { return m_nContacts; }
  /// Entry `i` (0 .. count - 1), or null.
  CContactInfo* GetContactInfo(int i);
  const CContactInfo* GetContactInfo(int i) const;
  /// The `nth` entry (from 0) of `type` whose label equals `label` (any label when null), or null.
  CContactInfo* FindContactInfoAddr(CINFO_TYPE type, int nth, const char* label = nullptr);
  /// The info text of the `nth` entry (from 0) of `type`, or null.
  const char* FindContactInfo(CINFO_TYPE type, int nth = 0) const;
  /// The position in the array of the `nth` entry (from 0) of `type`, or -1.
  int FindContactIndex(CINFO_TYPE type, int nth = 0) const;
  /// The `nth` entry (from 0) of `type` itself, or null.
  CContactInfo* FindContactInfoEx(CINFO_TYPE type, int nth = 0);
  /// Removes every entry of `type`, keeping the others dense and in order; returns how many.
  int Del(CINFO_TYPE type);
  /// Clears the info text of every entry of `type` (the entries stay); returns how many.
  int ClearCInfoString(CINFO_TYPE type);
  /// Removes every entry whose info text is empty; returns how many.
  int DelEmptyCInfo();

  /// All fields equal, entries compared in order.
  bool operator==(const CPersonalInfo& other) const;
  bool operator!=(const CPersonalInfo& other) const { return !(*this == other); }

  /// Copies from a raw record; a count outside 0-120 is clamped.
  void ReadFrom(const PI_RAW& raw);
  /// Copies into a raw record; texts are cut to their fields, unused entries zeroed.
  void WriteTo(PI_RAW& raw) const;

  /// Writes "PI_VERSION", "m_pszName", "m_nGroup", "m_nMemory", "m_hHandle", "m_nContacts"
  /// after `prefix` (null is ""), and each entry's own keys after prefix + "m_Contacts_" + i.
  /// The flag, the index and the desktop handle are not part of the block. Returns 1.
  int PackData(const char* prefix, CPackageBlk& blk) const;
  /// Empties the contact, then reads the same keys; a missing key leaves its field empty, a
  /// stored count is clamped to 0-120. The name is cut to 255 bytes and each entry's texts as
  /// `CContactInfo::UnpackData` cuts them: a block may claim any length, the raw record holds no
  /// more. Returns 0 (contact left empty) when "PI_VERSION" or an entry's version is present with
  /// another value, else 1.
  int UnpackData(const char* prefix, const CUnpackageBlk& blk);

 private:
  int _FindNth(CINFO_TYPE type, int nth, const char* label) const;
  int _RemoveIf(bool (*pred)(const CContactInfo&, CINFO_TYPE), CINFO_TYPE type);

  CString m_strName;
  int32_t m_nGroup;
  int32_t m_nMemory;
  uint32_t m_hHandle;
  uint32_t m_nFlag;
  char m_szOutlookHandle[PI_DESKTOP_HANDLE_SIZE];
  int32_t m_nContacts;
  CContactInfo m_Contacts[PI_MAX_CONTACTS];
  uint32_t m_nIndex;
};

/// A contact group as the phone book screens show it: an identifier and a name.
struct CONTACT_GROUP {
  CString strID;
  CString strName;
  bool operator==(const CONTACT_GROUP& o) const { return strID == o.strID && strName == o.strName; }
};

/// An ordered list of contact groups.
class HANDSET_API CContactGroupList : public std::vector<CONTACT_GROUP> {
 public:
  void AddTail(const CONTACT_GROUP& g) { push_back(g); }
  int GetCount() const { return static_cast<int>(size()); }
  void RemoveAll() { clear(); }
};

/// Loads the contact groups from the profile store, below g_szRegRootPath + "\\GUI\\[PhoneBk]",
/// section "ContactGroup", values "[0]", "[1]", ... until one is missing. `list` is cleared
/// first; a value with fewer than two strings is skipped. Returns the number of groups loaded.
HANDSET_API int LoadContactGroups(CContactGroupList& list);
/// Replaces the stored contact groups with `list`, in order. A multi-string cannot hold an empty
/// string, so a group with an empty identifier or name is written but not loaded back. Returns
/// the number of groups written (fewer than the list holds when the store cannot be written).
HANDSET_API int SaveContactGroups(const CContactGroupList& list);
