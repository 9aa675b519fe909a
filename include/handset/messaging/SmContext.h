#pragma once

#include <cstdint>
#include <vector>

#include "handset/export.h"
#include "handset/messaging/GsmPhoneNo.h"
#include "handset/messaging/MsgAddress.h"
#include "handset/messaging/SmContent.h"
#include "handset/messaging/SmUserData.h"
#include "handset/pim/CalendarInfo.h"

/// Kind of a stored message.
enum ESmType : int {
  SMTYPE_DELIVER = 0,        ///< received short message
  SMTYPE_SUBMIT = 1,         ///< short message to send or sent
  SMTYPE_STATUS_REPORT = 2,  ///< delivery report
  SMTYPE_MAIL = 3,           ///< mail-like item
};

/// Message class of a short message (the class bits of its data coding).
enum ESmClass : int {
  SMCLASS_0 = 0,     ///< class 0: shown at once ("flash"), not stored
  SMCLASS_1 = 1,     ///< class 1: phone specific
  SMCLASS_NONE = 2,  ///< no class given (the default)
  SMCLASS_2 = 3,     ///< class 2: SIM specific
  SMCLASS_3 = 4,     ///< class 3: terminal equipment specific
};

/// Storage state of a stored short message, as AT+CMGL lists it.
enum ME_SMS_STAT : int {
  SMSTAT_UNKNOWN = -1,
  SMSTAT_REC_UNREAD = 0,
  SMSTAT_REC_READ = 1,
  SMSTAT_STO_UNSENT = 2,
  SMSTAT_STO_SENT = 3,
};

/// Status of a mail-like item.
enum EMailStatus : int { MAILSTAT_NONE = 0, MAILSTAT_UNREAD = 1, MAILSTAT_READ = 2 };
/// Kind of a mail-like item.
enum EMailType : int { MAILTYPE_NONE = 0, MAILTYPE_SMS = 1, MAILTYPE_MAIL = 2 };
/// Mail box holding a mail-like item.
enum EMailBox : int {
  MAILBOX_NONE = 0,
  MAILBOX_INBOX = 1,
  MAILBOX_OUTBOX = 2,
  MAILBOX_SENT = 3,
  MAILBOX_DRAFT = 4,
};

/// Information element identifiers of a user data header (3GPP TS 23.040).
enum ESmInfoElmtID : int {
  SMIE_CONCAT_8BIT = 0x00,       ///< concatenation, 8-bit reference
  SMIE_SPECIAL_SMS = 0x01,       ///< special message indication
  SMIE_PORT_8BIT = 0x04,         ///< application port, 8-bit
  SMIE_PORT_16BIT = 0x05,        ///< application port, 16-bit
  SMIE_CONCAT_16BIT = 0x08,      ///< concatenation, 16-bit reference
  SMIE_TEXT_FORMAT = 0x0A,       ///< text formatting
  SMIE_PREDEF_SOUND = 0x0B,      ///< predefined sound
  SMIE_USER_SOUND = 0x0C,        ///< user-defined sound (iMelody)
  SMIE_PREDEF_ANIMATION = 0x0D,  ///< predefined animation
  SMIE_LARGE_ANIMATION = 0x0E,   ///< four 16 x 16 frames
  SMIE_SMALL_ANIMATION = 0x0F,   ///< four 8 x 8 frames
  SMIE_LARGE_PICTURE = 0x10,     ///< 32 x 32 picture
  SMIE_SMALL_PICTURE = 0x11,     ///< 16 x 16 picture
  SMIE_VAR_PICTURE = 0x12,       ///< variable-size picture
  SMIE_UPI = 0x13,               ///< user prompt indicator
  SMIE_EXT_OBJECT = 0x14,        ///< extended object
};

/// The tag in the top 20 bits of a handle of a message in local storage.
constexpr unsigned long SM_LOCAL_HANDLE_TAG = 0xAABBC;

/// A message handle: bits 0-7 the index (its low byte), bit 8 set for a long (concatenated)
/// message, bits 12-31 `SM_LOCAL_HANDLE_TAG` for storage 0 and 0 for any other storage.
HANDSET_API unsigned long MakeSmHandle(int storage, int index, bool longSms);

/// One stored message - a short message, possibly concatenated and enhanced, or a mail-like item
/// - with its addressing, time, storage state, mail attributes and content. Reference counted:
/// it starts at 1, `AddRef` raises the count and `Release` destroys the object (which must then
/// have been made with new) when the count reaches 0.
class HANDSET_API CSmContext {
 public:
  /// Builds the context for memory `mem` (0 or 1 select one of the two segment counters) and
  /// `handle`, with every other field at its default (see `Reset`).
  CSmContext(unsigned char mem = 0, unsigned long handle = 0xFFFFFFFF);
  /// Copies every field and the content; the copy's reference count is 1.
  CSmContext(const CSmContext& other);
  /// Copies every field and the content; the reference count stays.
  CSmContext& operator=(const CSmContext& other);
  virtual ~CSmContext();

  /// What sending the content takes: whether it has EMS items (`*pbEnhanced`), whether it needs
  /// more than one segment (`*pbLong`) and the coding the automatic choice makes (`*pEncode`).
  /// Null outputs are skipped. Returns the number of segments, 0 when the content cannot be sent
  /// (an item too large for any segment).
  virtual int GetEncodeInfo(bool* pbEnhanced, bool* pbLong, ME_SMS_ENCODE* pEncode);
  /// Writes every field under `prefix` (null is ""); see the key list in the source. True.
  virtual bool PackData(const char* prefix, CPackageBlk& blk) const;
  /// Resets the context, then takes every key that is present. Strings longer than their field
  /// are cut to fit. True.
  virtual bool UnpackData(const char* prefix, CUnpackageBlk& blk);

  /// Sets every field to its default: type 0, class `SMCLASS_NONE` (2), validity period 255,
  /// flags 0, empty numbers and address, time built from the time value -1, storage state -1,
  /// empty content, mail status, type and box 0, empty mail strings, and the segment counts of
  /// the current memory ({1, 0} for memory 0, {0, 1} for memory 1). The memory, the handle and the
  /// reference count are kept.
  void Reset();
  int AddRef();
  int Release();

  static unsigned long MakeSmHandle(int storage, int index, bool longSms) {
    return ::MakeSmHandle(storage, index, longSms);
  }
  /// The index of a handle (its low byte).
  static int GetIndex(unsigned long h) { return static_cast<int>(h & 0xFF); }
  /// True when bit 8 of the handle is set.
  static bool IsLongSMS(unsigned long h) { return (h & 0x100) != 0; }
  /// 0 when the top 20 bits carry `SM_LOCAL_HANDLE_TAG`, else 1: the handle keeps no other
  /// storage number.
  static int GetStorage(unsigned long h) {
    return ((h & 0xFFFFFFFFul) >> 12) == SM_LOCAL_HANDLE_TAG ? 0 : 1;
  }

  bool SetMemory(unsigned char mem);
  /// Memory 2: the sum of both counts, at least 1; memory 0 or 1: that count; others 0.
  int GetCompoundCount(unsigned char mem) const;
  /// Sets the count of memory 0 or 1; false for any other memory.
  bool SetCompoundCount(unsigned char mem, int n);
  /// True when the two counts together (taken as at least 1) are above 1.
  bool IsLongSMS() const;

  void SetHandle(unsigned long h) { m_hHandle = static_cast<uint32_t>(h); }
  unsigned long GetHandle() const { return m_hHandle; }
  ESmType GetMessageType() const { return m_eType; }
  void SetMessageType(ESmType t) { m_eType = t; }
  bool GetServiceCenterNum(CGsmPhoneNo* no) const;
  void SetServiceCenterNum(const char* no) { m_SmscNo = no; }
  bool GetPartyNum(CGsmPhoneNo* no) const;
  void SetPartyNum(const char* no) { m_PartyNo = no; }
  bool GetPartyAdr(CMsgAddress* adr) const;
  void SetPartyAdr(const char* adr) { m_PartyAdr = adr; }
  bool GetTime(ME_CAL_DATE* t) const;
  void SetTime(const ME_CAL_DATE& t) { m_calTime = t; }
  bool GetStoreState(ME_SMS_STAT* s) const;
  void SetStoreState(ME_SMS_STAT s) { m_eStoState = s; }
  CSmContent* GetContent() { return &m_smMatter; }
  const CSmContent* GetContent() const { return &m_smMatter; }

  /// Class, validity period and the flag (bit 1 of `m_dwParam`); null outputs are skipped.
  bool GetExtraAttributes(ESmClass* cls, int* vp, bool* flag) const;
  /// Sets them; the other bits of `m_dwParam` are kept. True.
  bool SetExtraAttributes(ESmClass cls, int vp, bool flag);
  /// Each non-null output receives its value; the strings (to buffers of at least 257, 257,
  /// 1793 and 129 bytes) are copied whole and terminated. True.
  bool GetMailAttributes(EMailStatus* status, EMailType* type, EMailBox* box, char* folderName,
                         char* folderId, char* subject, char* partyName) const;
  /// Stores the values; each string is cut to its field (null empties it). True.
  bool SetMailAttributes(EMailStatus status, EMailType type, EMailBox box, const char* folderName,
                         const char* folderId, const char* subject, const char* partyName);
  const char* GetFolderId() const { return m_szFdrId; }
  const char* GetSubject() const { return m_szSubject; }
  const char* GetPartyName() const { return m_szPartyName; }
  /// Null empties the id (true); a text above 256 characters is refused (false, id unchanged).
  bool SetFolderId(char* id);
  bool SetFolderId(const char* id);

  /// True when the content has no item.
  bool IsEmpty() const { return m_smMatter.GetItemCount() == 0; }
  /// The information element `id` in the user data header `udh` (its length octet first; at
  /// most 140 octets are read). Returns a pointer to the element's identifier octet, or null.
  static const unsigned char* FindInfoElement(const unsigned char* udh, ESmInfoElmtID id);
  /// Appends one received segment to the content: `text` (its decoded text; null is "") split
  /// around the EMS objects of the header of `ud`, and the formats, with positions made absolute.
  /// `ud` is the segment's user data beginning with the header length octet (null or a length of
  /// 0 for none; at most 140 octets are read). Concatenation elements are left out; elements no
  /// item holds are kept as `CSmSource` items. True.
  bool ConstructContent(const unsigned char* ud, char* text);
  bool ConstructContent(const unsigned char* ud, const char* text);

  /// Segments the content needs in the coding `enc` (automatic by default); 0 when an item does
  /// not fit in any segment.
  int CalcSmUsedCount(ME_SMS_ENCODE enc = SMS_ENC_AUTO);
  /// Encodes the content into user-data segments of at most 140 octets (`out` is replaced).
  /// Several segments carry a concatenation element with the 8-bit reference `nRef` (low byte).
  /// A message class other than `SMCLASS_NONE` goes into the data coding. Empty content gives one
  /// empty segment. Returns the number of segments; 0 when an item does not fit in any segment or
  /// more than 255 segments would be needed (see `GetEncodeError`).
  int EncodeUserDataPdu(int nRef, std::vector<SM_UD_SEGMENT>* out,
                        ME_SMS_ENCODE enc = SMS_ENC_AUTO);
  /// The same in UCS-2 whatever the text.
  int EncodeUserDataPduUseUCS2(int nRef, std::vector<SM_UD_SEGMENT>* out);
  /// Why the last `EncodeUserDataPdu` or `CalcSmUsedCount` gave 0: an `hs::sms` code.
  int GetEncodeError() const { return m_nEncodeError; }

  unsigned char m_nMem = 0;
  uint32_t m_hHandle = 0xFFFFFFFF;
  ESmType m_eType = SMTYPE_DELIVER;
  ESmClass m_eClass = SMCLASS_NONE;
  int m_nVP = 255;
  uint32_t m_dwParam = 0;
  CGsmPhoneNo m_SmscNo;
  CGsmPhoneNo m_PartyNo;
  ME_CAL_DATE m_calTime;
  ME_SMS_STAT m_eStoState = SMSTAT_UNKNOWN;
  CSmContent m_smMatter;
  CMsgAddress m_PartyAdr;
  EMailStatus m_nStatus = MAILSTAT_NONE;
  EMailType m_nType = MAILTYPE_NONE;
  EMailBox m_nBox = MAILBOX_NONE;
  char m_szFdrName[257];
  char m_szFdrId[257];
  char m_szSubject[1793];
  char m_szPartyName[129];
  int m_nCompoundCount[2] = {1, 0};

 private:
  int m_nRefCount = 1;
  /// Most user-data octets of one segment.
  int m_nMaxUdOctets = 140;
  int m_nEncodeError = 0;
};
