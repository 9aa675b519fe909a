#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "handset/export.h"
#include "handset/messaging/MmsBody.h"
#include "handset/messaging/MmsMessage.h"
#include "handset/pim/MediaFile.h"
#include "handset/platform/PackageBlk.h"
#include "handset/platform/Strings.h"

/// Index of a recipient list of CCvMmsMessage (see GetRecipients).
enum EMmsRecipient { MMS_TO = 0, MMS_CC = 1, MMS_BCC = 2 };

/// The stored record of one multimedia message in the media library: the header fields and a
/// body of media objects.
///
/// Octet-valued fields hold the octet of the message header they come from, 0 when it is not
/// given: m_eMmType the X-Mms-Message-Type (0x80 m-send-req ...), m_ePriority X-Mms-Priority
/// (0x80 low, 0x81 normal, 0x82 high), m_eDeliverySt X-Mms-Status (0x80 expired, 0x81
/// retrieved, ...). Times are seconds since 1970 (UTC); m_tExpiry is an absolute time.
///
/// Package keys, each under the caller's prefix with no separator added: "ClassID" (the text
/// "CCvMmsMessage"), the CMediaFile keys, "m_eMmType", "m_handle", "m_dwVer" (4 bytes each),
/// "m_sTranId" (text), "m_bUtf8Text" (1 byte), "[MMS_TO].Count" and "[MMS_TO][i]", the same for
/// "[MMS_CC]" and "[MMS_BCC]", "m_sSender", "m_sSubject" (texts), "m_time", "m_tExpiry",
/// "m_ePriority" (4 bytes), "m_bDeliveryReport", "m_bReadReply" (1 byte), "m_eDeliverySt"
/// (4 bytes), "mmBody.Count" (4 bytes) and per media object i under "mmBody[i].":
/// "m_sFileName", "m_sContentID" (texts), "m_pData" (the bytes), "[mime]" (4 bytes,
/// EMimeCntType).
class HANDSET_API CCvMmsMessage : public CMediaFile {
 public:
  CCvMmsMessage() = default;
  ~CCvMmsMessage() override;
  /// Copies every field and every media object (with its own copy of the data).
  CCvMmsMessage(const CCvMmsMessage& other) = default;
  CCvMmsMessage& operator=(const CCvMmsMessage& other) = default;

  /// A new copy of this record; the caller deletes it.
  CMediaFile* Clone() const override;
  /// Writes the keys listed above under `prefix` (null is ""); `flag` is passed to CMediaFile.
  /// Returns 1.
  int PackData(const char* prefix, CPackageBlk& blk, bool flag) const override;
  /// Reads the CMediaFile part, then each key present overwrites its field and absent keys leave
  /// it. The recipient lists are rebuilt from their counts (empty when a count is absent). The
  /// body is emptied and rebuilt from "mmBody.Count" entries; an entry without a file name or
  /// without data is skipped. Counts beyond what the block can hold are cut to it. Returns 1.
  int UnpackData(const char* prefix, CUnpackageBlk& blk, bool flag) override;

  /// The To, Cc or Bcc list (`kind` is an EMmsRecipient; anything else gives To).
  CStringList& GetRecipients(int kind);
  const CStringList& GetRecipients(int kind) const;

  /// Fills `msg` (reset first) with this record as a message to send or store: type, ids,
  /// addresses, subject, times, priority, report requests (only "yes" is written), status and a
  /// copy of the body; with m_bUtf8Text, text parts without a charset are marked UTF-8.
  void ExportToMessage(CMmsMessage* msg) const;
  /// Takes the fields of `msg` into this record (the CMediaFile part is left as it is). A
  /// relative expiry is counted from the message's date (from 0 when it has none).
  void ImportFromMessage(const CMmsMessage& msg);
  /// Decodes a PDU into this record; returns an hs::mmspdu code (the record is unchanged on
  /// failure).
  int ImportFromPdu(const void* data, size_t size);
  /// Encodes this record as a PDU; returns an hs::mmspdu code.
  int ExportToPdu(std::vector<uint8_t>* out) const;

  int32_t m_eMmType = MMS_M_SEND_REQ;
  uint32_t m_handle = 0;  ///< the message's handle on the phone
  uint32_t m_dwVer = 0;   ///< version value, kept as given
  CString m_sTranId;
  bool m_bUtf8Text = false;  ///< text parts are UTF-8
  CMmsBody mmBody;
  CStringList m_lstTo;
  CStringList m_lstCc;
  CStringList m_lstBcc;
  CString m_sSender;
  CString m_sSubject;
  int32_t m_time = 0;
  int32_t m_tExpiry = 0;
  int32_t m_ePriority = 0;
  bool m_bDeliveryReport = false;
  bool m_bReadReply = false;
  int32_t m_eDeliverySt = 0;
};
