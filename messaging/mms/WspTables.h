#pragma once

#include <string>

// Assigned numbers of the WAP binary header encoding and of the MMS encapsulation: content types,
// header field names, parameters, character sets and the MMS header values.
namespace hs {
namespace mms {

/// MMS header field codes (the value without the 0x80 bit).
enum MmsField : int {
  kFieldBcc = 0x01,
  kFieldCc = 0x02,
  kFieldContentLocation = 0x03,
  kFieldContentType = 0x04,
  kFieldDate = 0x05,
  kFieldDeliveryReport = 0x06,
  kFieldDeliveryTime = 0x07,
  kFieldExpiry = 0x08,
  kFieldFrom = 0x09,
  kFieldMessageClass = 0x0A,
  kFieldMessageId = 0x0B,
  kFieldMessageType = 0x0C,
  kFieldMmsVersion = 0x0D,
  kFieldMessageSize = 0x0E,
  kFieldPriority = 0x0F,
  kFieldReadReport = 0x10,
  kFieldReportAllowed = 0x11,
  kFieldResponseStatus = 0x12,
  kFieldResponseText = 0x13,
  kFieldSenderVisibility = 0x14,
  kFieldStatus = 0x15,
  kFieldSubject = 0x16,
  kFieldTo = 0x17,
  kFieldTransactionId = 0x18,
  kFieldRetrieveStatus = 0x19,
  kFieldRetrieveText = 0x1A,
  kFieldReadStatus = 0x1B,
  kFieldReplyCharging = 0x1C,
  kFieldReplyChargingDeadline = 0x1D,
  kFieldReplyChargingId = 0x1E,
  kFieldReplyChargingSize = 0x1F,
  kFieldPreviouslySentBy = 0x20,
  kFieldPreviouslySentDate = 0x21,
};

/// How the value of a known MMS header is laid out.
enum ValueKind {
  kValueRaw,           ///< unknown: kept as bytes
  kValueText,          ///< Text-string
  kValueEncoded,       ///< Encoded-string-value
  kValueAddress,       ///< From-value (address or insert-address token)
  kValueToken,         ///< one octet with a named meaning
  kValueLong,          ///< Long-integer
  kValueDate,          ///< Long-integer seconds since 1970 (UTC)
  kValueTime,          ///< Value-length, absolute (Date) or relative (seconds) token
  kValueVersion,       ///< Short-integer, major in bits 4-6, minor in bits 0-3
  kValueMessageClass,  ///< class token or Token-text
  kValueContentType,   ///< Content-type-value
  kValueSentBy,        ///< Value-length, forward count, Encoded-string-value
  kValueSentDate,      ///< Value-length, forward count, Date
};

/// The name of MMS header field `code` ("X-Mms-Message-Type"), or null when unknown.
const char* MmsFieldName(int code);
/// The layout of the value of field `code`.
ValueKind MmsFieldKind(int code);
/// The text of a one-octet value of field `code` ("Yes", "High", "m-send-req"), or null.
const char* MmsTokenName(int code, int value);

/// Well-known content type `code` ("image/gif"), or null.
const char* WspContentTypeName(int code);
/// The well-known code of a content type (compared without regard to ASCII case), or -1.
int WspContentTypeCode(const std::string& name);
/// The name of WAP header field `code` ("Content-Location"), or null.
const char* WspHeaderName(int code);
/// The name of content-type parameter `code` ("Charset", "Start"), or null.
const char* WspParameterName(int code);

/// Well-known WAP header field codes used in multipart entries.
enum WspHeader : int {
  kWspContentLocation = 0x0E,
  kWspContentType = 0x11,
  kWspContentId = 0x40,
};
/// Well-known content-type parameter codes.
enum WspParam : int {
  kParamQ = 0x00,
  kParamCharset = 0x01,
  kParamType = 0x03,
  kParamName = 0x05,
  kParamFilename = 0x06,
  kParamRelatedType = 0x09,
  kParamStart = 0x0A,
  kParamStartInfo = 0x0B,
  kParamName14 = 0x17,
  kParamFilename14 = 0x18,
  kParamStart14 = 0x19,
  kParamStartInfo14 = 0x1A,
};

/// Character sets by IANA MIBenum.
enum Charset : int {
  kCharsetUsAscii = 3,
  kCharsetLatin1 = 4,
  kCharsetUtf8 = 106,
  kCharsetUcs2 = 1000,
  kCharsetUtf16Be = 1013,
  kCharsetUtf16Le = 1014,
  kCharsetUtf16 = 1015,
};
/// The preferred MIME name of charset `mib` ("utf-8"), or null when unknown.
const char* CharsetName(int mib);
/// The MIBenum of a charset name (ASCII case ignored, common aliases accepted), or 0.
int CharsetMib(const std::string& name);

/// Message types.
enum MessageType : int {
  kSendReq = 0x80,
  kSendConf = 0x81,
  kNotificationInd = 0x82,
  kNotifyRespInd = 0x83,
  kRetrieveConf = 0x84,
  kAcknowledgeInd = 0x85,
  kDeliveryInd = 0x86,
  kReadRecInd = 0x87,
  kReadOrigInd = 0x88,
};

/// Case-insensitive ASCII comparison.
bool EqualNoCase(const std::string& a, const std::string& b);

}  // namespace mms
}  // namespace hs
