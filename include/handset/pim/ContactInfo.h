#pragma once

#include <cstdint>

#include "handset/export.h"
#include "handset/platform/PackageBlk.h"
#include "handset/platform/Strings.h"

/// The type of a contact entry. Bits 8-15 give the family of the entry; the values in use are
/// exactly the 78 of the phone's type-number table (`Type0ToInfoType`). The names below are the
/// ones this library gives the values it relies on; any other table value is equally valid.
enum CINFO_TYPE : uint32_t {
  CINFO_NONE = 0x0000,
  CINFO_NAME = 0x0001,
  CINFO_NOTE = 0x0700,
  CINFO_EMAIL = 0x0800,
  CINFO_ADDRESS = 0x0900,
  CINFO_URL = 0x0A00,
  CINFO_PHONE_HOME = 0x0B02,
  CINFO_PHONE_MOBILE = 0x0B03,
  CINFO_PHONE_WORK = 0x0B06,
  CINFO_PHONE_GENERAL = 0x0B0A,
  CINFO_PHONE_FAX = 0x0B0F,
};

/// The family byte (bits 8-15) of the phone-number types.
constexpr uint32_t CINFO_FAMILY_PHONE = 0x0B;

/// Sizes, with the NUL, of the text fields of the raw records. Unpacking a package block cuts a
/// stored text that is longer to the same size, so a record never holds more than a raw record
/// can carry.
constexpr int CINFO_LABEL_SIZE = 128;
constexpr int CINFO_INFO_SIZE = 2048;

/// A contact entry as a plain record, for hosts that exchange fixed-size data.
struct CINFO_RAW {
  uint32_t nType;
  char szLabel[CINFO_LABEL_SIZE];
  char szInfo[CINFO_INFO_SIZE];
};

/// One typed entry of a contact: a phone number, an e-mail address, an address part, a note...
/// It owns copies of its label and info texts (either may be null).
class HANDSET_API CContactInfo {
 public:
  CContactInfo();
  CContactInfo(const CContactInfo& other);
  CContactInfo(CINFO_TYPE type, const char* label, const char* info);
  ~CContactInfo();
  CContactInfo& operator=(const CContactInfo& other);

  /// Sets the type, the label and the info text (copies; null clears a text).
  void Set(CINFO_TYPE type, const char* label, const char* info);
  void SetLabel(const char* label);
  void SetInfoString(const char* info);
  CINFO_TYPE GetType() const { return m_nType; }
  /// The info text, or null when there is none.
  const char* GetInfoString() const { return m_pszInfo; }
  /// The label, or null when there is none.
  const char* GetLabelName() const { return m_pszLabel; }
  /// True when the type is of the phone-number family.
  bool IsPhoneType() const;
  /// Frees both texts and sets the type to `CINFO_NONE`.
  void Empty();
  /// A 32-bit sum over the type, label and info; equal entries have equal sums.
  uint32_t GetCheckSum() const;
  /// Same type, label and info (a null text equals an empty one).
  bool operator==(const CContactInfo& other) const;
  bool operator!=(const CContactInfo& other) const { return !(*this == other); }

  /// Copies from a raw record (its texts are read up to their NUL or the field's end).
  void ReadFrom(const CINFO_RAW& raw);
  /// Copies into a raw record; texts longer than a field are cut and always terminated.
  void WriteTo(CINFO_RAW& raw) const;

  /// Writes "CINFO_VERSION", "CINFO_TYPE", "CINFO_LABEL" and "CINFO_INFO" after `prefix` (null
  /// is ""). Returns 1.
  int PackData(const char* prefix, CPackageBlk& blk) const;
  /// Empties the entry, then reads the same keys; a missing key leaves its field empty. A stored
  /// text is cut to its raw field, the label to 127 bytes and the info to 2047 (a block may claim
  /// any length; a record the phone takes holds no more). Returns 0 (entry left empty) when
  /// "CINFO_VERSION" is present with another value than 0x1120, 1 otherwise.
  int UnpackData(const char* prefix, const CUnpackageBlk& blk);

 private:
  CINFO_TYPE m_nType;
  char* m_pszLabel;
  char* m_pszInfo;
};

/// The type of the phone's type number `n` (0-77); 0 for any other number.
HANDSET_API CINFO_TYPE Type0ToInfoType(int n);
/// The phone's type number of `type`; -1 when the type is not in the table.
HANDSET_API int InfoTypeToType0(CINFO_TYPE type);

/// The PPP frame check sequence (FCS-16, CRC-16/X-25): reflected polynomial 0x8408, initial
/// value 0xFFFF, result complemented. 0 for a length of 0 (or null data); 0x906E for "123456789".
HANDSET_API uint16_t ComputeFCS(const unsigned char* data, unsigned int length);

/// Reads a whole file into a buffer allocated with new[] that the caller frees with delete[];
/// one NUL byte is appended after the content (not counted in `*size`). Returns 1, or 0 (with
/// `data` set to null) when the file cannot be read or is larger than 2 GB.
HANDSET_API int _ReadFile(const char* path, unsigned char*& data, int* size);
