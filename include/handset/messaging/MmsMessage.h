#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "handset/export.h"
#include "handset/messaging/MmsBody.h"
#include "handset/messaging/MmsHeaderField.h"
#include "handset/platform/Strings.h"

/// MMS message types (the X-Mms-Message-Type octet).
enum EMmsMessageType : int {
  MMS_M_SEND_REQ = 0x80,
  MMS_M_SEND_CONF = 0x81,
  MMS_M_NOTIFICATION_IND = 0x82,
  MMS_M_NOTIFYRESP_IND = 0x83,
  MMS_M_RETRIEVE_CONF = 0x84,
  MMS_M_ACKNOWLEDGE_IND = 0x85,
  MMS_M_DELIVERY_IND = 0x86,
  MMS_M_READ_REC_IND = 0x87,
  MMS_M_READ_ORIG_IND = 0x88
};

/// An MMS message as sent over the air: its headers and a body of media objects. Octet-valued
/// headers hold the octet as sent (for example X-Mms-Priority 0x80 low, 0x81 normal, 0x82
/// high; the yes/no headers 0x80 yes, 0x81 no), and 0 when the header is absent.
class HANDSET_API CMmsMessage {
 public:
  CMmsMessage() = default;

  CMmsBody& GetBody() { return m_body; }
  const CMmsBody& GetBody() const { return m_body; }
  /// Back to a new m-send-req without headers or media objects.
  void Reset();

  int m_nMessageType = MMS_M_SEND_REQ;
  CString m_sTransactionId;  ///< empty: the encoder makes one from the content
  int m_nVersion = 0x12;     ///< X-Mms-MMS-Version: major in bits 4-6, minor in bits 0-3
  int64_t m_tDate = 0;       ///< seconds since 1970 (UTC); 0 when not known
  CString m_sFrom;           ///< empty: the relay inserts the sender's address
  CStringList m_lstTo;
  CStringList m_lstCc;
  CStringList m_lstBcc;
  CString m_sSubject;         ///< UTF-8
  int m_nSubjectCharset = 0;  ///< charset the subject was read in (IANA MIBenum), 0 for none
  int m_nMessageClass = 0;    ///< 0x80 personal, 0x81 advertisement, 0x82 informational, 0x83 auto
  CString m_sMessageClass;    ///< a class sent as text (when m_nMessageClass is 0)
  int m_nPriority = 0;
  int m_nDeliveryReport = 0;
  int m_nReadReport = 0;
  int m_nSenderVisibility = 0;     ///< 0x80 hide, 0x81 show
  int64_t m_tExpiry = 0;           ///< 0 when absent
  bool m_bExpiryRelative = false;  ///< m_tExpiry counts seconds from the time of sending
  int64_t m_tDeliveryTime = 0;
  bool m_bDeliveryTimeRelative = false;
  CString m_sMessageId;
  CString m_sContentLocation;   ///< X-Mms-Content-Location of a notification
  uint64_t m_nMessageSize = 0;  ///< X-Mms-Message-Size of a notification
  int m_nStatus = 0;            ///< X-Mms-Status of a delivery report
  int m_nResponseStatus = 0;
  int m_nRetrieveStatus = 0;
  int m_nReadStatus = 0;

  /// The message's Content-Type as read (empty for a message built here: the encoder then sends
  /// multipart.related when a SMIL part exists and multipart.mixed otherwise).
  CString m_sContentType;
  /// The Start parameter as read.
  CString m_sStart;
  /// False when the message body was a single entity rather than a multipart: the body then
  /// holds that one object.
  bool m_bMultipart = true;

  /// Every header as it was read, in order.
  std::vector<CMmsHeaderField> m_headers;
  /// Headers read that have no field above; the encoder writes them back as they came.
  std::vector<CMmsHeaderField> m_extraHeaders;

 private:
  CMmsBody m_body;
};

/// Decodes an MMS PDU of any message type into `msg` (which is reset first). Every length and
/// count in the PDU is checked against the bytes that remain; unknown headers are kept in
/// `m_extraHeaders`. Returns hs::mmspdu::kOk, or kErrEmpty, kErrNotMms, kErrTruncated,
/// kErrBadValue, kErrBadHeader or kErrBadBody (`HsResultText(HS_RESULT_MMS_PDU, code)`); on
/// failure `msg` holds what was read before the fault. `*errorOffset`, when given, receives the
/// offset where decoding stopped.
HANDSET_API int MmsDecodePdu(const void* data, size_t size, CMmsMessage* msg,
                             size_t* errorOffset = nullptr);

/// Encodes `msg` as a PDU (replacing `*out`): X-Mms-Message-Type, X-Mms-Transaction-Id and
/// X-Mms-MMS-Version first, then every header that is set, Content-Type last, then the body.
/// Returns hs::mmspdu::kOk, or kErrTooLarge when a part or the whole passes 4 GB - 1.
HANDSET_API int MmsEncodePdu(const CMmsMessage& msg, std::vector<uint8_t>* out);

/// The exact length in octets of `msg` encoded as an m-send-req by MmsEncodePdu, worked out
/// without building the PDU. 0 for a null message, -1 when the length passes INT_MAX.
HANDSET_API int MmsCalcSendReqPduSize(const CMmsMessage& msg);
HANDSET_API int MmsCalcSendReqPduSize(const CMmsMessage* msg);

/// The name of a message type octet ("m-send-req"), or null when unknown.
HANDSET_API const char* MmsMessageTypeName(int type);

/// Writes every media object of `msg` into the folder `dir` (created when missing) under its
/// Content-Location, else its name parameter, content id or "part<N>" with an extension for its
/// type. Names are cut to their last path component, characters that are not legal in file
/// names are replaced, and a name already used or already present in `dir` (a file, folder or
/// link of any kind) gets "-1", "-2", ... before its extension, so nothing outside `dir` or
/// already there is ever written. `written`, when given, receives the paths written. Returns
/// hs::mmspdu::kOk, kErrFolder or kErrWrite (the objects after a failed one are not written).
HANDSET_API int MmsExtractParts(const CMmsMessage& msg, const char* dir, CStringList* written);
