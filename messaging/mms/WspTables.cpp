#include "messaging/mms/WspTables.h"

#include <cctype>
#include <cstring>

namespace hs {
namespace mms {

namespace {

struct Field {
  int code;
  const char* name;
  ValueKind kind;
};

const Field kFields[] = {
    {kFieldBcc, "Bcc", kValueEncoded},
    {kFieldCc, "Cc", kValueEncoded},
    {kFieldContentLocation, "X-Mms-Content-Location", kValueText},
    {kFieldContentType, "Content-Type", kValueContentType},
    {kFieldDate, "Date", kValueDate},
    {kFieldDeliveryReport, "X-Mms-Delivery-Report", kValueToken},
    {kFieldDeliveryTime, "X-Mms-Delivery-Time", kValueTime},
    {kFieldExpiry, "X-Mms-Expiry", kValueTime},
    {kFieldFrom, "From", kValueAddress},
    {kFieldMessageClass, "X-Mms-Message-Class", kValueMessageClass},
    {kFieldMessageId, "Message-ID", kValueText},
    {kFieldMessageType, "X-Mms-Message-Type", kValueToken},
    {kFieldMmsVersion, "X-Mms-MMS-Version", kValueVersion},
    {kFieldMessageSize, "X-Mms-Message-Size", kValueLong},
    {kFieldPriority, "X-Mms-Priority", kValueToken},
    {kFieldReadReport, "X-Mms-Read-Report", kValueToken},
    {kFieldReportAllowed, "X-Mms-Report-Allowed", kValueToken},
    {kFieldResponseStatus, "X-Mms-Response-Status", kValueToken},
    {kFieldResponseText, "X-Mms-Response-Text", kValueEncoded},
    {kFieldSenderVisibility, "X-Mms-Sender-Visibility", kValueToken},
    {kFieldStatus, "X-Mms-Status", kValueToken},
    {kFieldSubject, "Subject", kValueEncoded},
    {kFieldTo, "To", kValueEncoded},
    {kFieldTransactionId, "X-Mms-Transaction-Id", kValueText},
    {kFieldRetrieveStatus, "X-Mms-Retrieve-Status", kValueToken},
    {kFieldRetrieveText, "X-Mms-Retrieve-Text", kValueEncoded},
    {kFieldReadStatus, "X-Mms-Read-Status", kValueToken},
    {kFieldReplyCharging, "X-Mms-Reply-Charging", kValueToken},
    {kFieldReplyChargingDeadline, "X-Mms-Reply-Charging-Deadline", kValueTime},
    {kFieldReplyChargingId, "X-Mms-Reply-Charging-ID", kValueText},
    {kFieldReplyChargingSize, "X-Mms-Reply-Charging-Size", kValueLong},
    {kFieldPreviouslySentBy, "X-Mms-Previously-Sent-By", kValueSentBy},
    {kFieldPreviouslySentDate, "X-Mms-Previously-Sent-Date", kValueSentDate},
    // Later protocol versions; their values are kept as they come.
    {0x22, "X-Mms-Store", kValueToken},
    {0x23, "X-Mms-MM-State", kValueToken},
    {0x24, "X-Mms-MM-Flags", kValueRaw},
    {0x25, "X-Mms-Store-Status", kValueToken},
    {0x26, "X-Mms-Store-Status-Text", kValueEncoded},
    {0x27, "X-Mms-Stored", kValueToken},
    {0x28, "X-Mms-Attributes", kValueRaw},
    {0x29, "X-Mms-Totals", kValueToken},
    {0x2A, "X-Mms-Mbox-Totals", kValueRaw},
    {0x2B, "X-Mms-Quotas", kValueToken},
    {0x2C, "X-Mms-Mbox-Quotas", kValueRaw},
    {0x2D, "X-Mms-Message-Count", kValueRaw},
    {0x2E, "Content", kValueRaw},
    {0x2F, "X-Mms-Start", kValueRaw},
    {0x30, "Additional-headers", kValueRaw},
    {0x31, "X-Mms-Distribution-Indicator", kValueToken},
    {0x32, "X-Mms-Element-Descriptor", kValueRaw},
    {0x33, "X-Mms-Limit", kValueRaw},
    {0x34, "X-Mms-Recommended-Retrieval-Mode", kValueToken},
    {0x35, "X-Mms-Recommended-Retrieval-Mode-Text", kValueEncoded},
    {0x36, "X-Mms-Status-Text", kValueEncoded},
    {0x37, "X-Mms-Applic-ID", kValueText},
    {0x38, "X-Mms-Reply-Applic-ID", kValueText},
    {0x39, "X-Mms-Aux-Applic-Info", kValueText},
    {0x3A, "X-Mms-Content-Class", kValueToken},
    {0x3B, "X-Mms-DRM-Content", kValueToken},
    {0x3C, "X-Mms-Adaptation-Allowed", kValueToken},
    {0x3D, "X-Mms-Replace-ID", kValueText},
    {0x3E, "X-Mms-Cancel-ID", kValueText},
    {0x3F, "X-Mms-Cancel-Status", kValueToken},
};

const Field* FindField(int code) {
  for (const Field& f : kFields)
    if (f.code == code) return &f;
  return nullptr;
}

struct Token {
  int value;
  const char* name;
};

const Token kMessageTypes[] = {
    {0x80, "m-send-req"},         {0x81, "m-send-conf"},        {0x82, "m-notification-ind"},
    {0x83, "m-notifyresp-ind"},   {0x84, "m-retrieve-conf"},    {0x85, "m-acknowledge-ind"},
    {0x86, "m-delivery-ind"},     {0x87, "m-read-rec-ind"},     {0x88, "m-read-orig-ind"},
    {0x89, "m-forward-req"},      {0x8A, "m-forward-conf"},     {0x8B, "m-mbox-store-req"},
    {0x8C, "m-mbox-store-conf"},  {0x8D, "m-mbox-view-req"},    {0x8E, "m-mbox-view-conf"},
    {0x8F, "m-mbox-upload-req"},  {0x90, "m-mbox-upload-conf"}, {0x91, "m-mbox-delete-req"},
    {0x92, "m-mbox-delete-conf"}, {0x93, "m-mbox-descr"},       {0x94, "m-delete-req"},
    {0x95, "m-delete-conf"},      {0x96, "m-cancel-req"},       {0x97, "m-cancel-conf"},
};
const Token kMessageClass[] = {
    {0x80, "Personal"}, {0x81, "Advertisement"}, {0x82, "Informational"}, {0x83, "Auto"}};
const Token kYesNo[] = {{0x80, "Yes"}, {0x81, "No"}};
const Token kPriority[] = {{0x80, "Low"}, {0x81, "Normal"}, {0x82, "High"}};
const Token kVisibility[] = {{0x80, "Hide"}, {0x81, "Show"}};
const Token kReadStatus[] = {{0x80, "Read"}, {0x81, "Deleted without being read"}};
const Token kStatus[] = {{0x80, "Expired"},   {0x81, "Retrieved"},    {0x82, "Rejected"},
                         {0x83, "Deferred"},  {0x84, "Unrecognised"}, {0x85, "Indeterminate"},
                         {0x86, "Forwarded"}, {0x87, "Unreachable"}};
const Token kReplyCharging[] = {{0x80, "Requested"},
                                {0x81, "Requested text only"},
                                {0x82, "Accepted"},
                                {0x83, "Accepted text only"}};
const Token kResponseStatus[] = {
    {0x80, "Ok"},
    {0x81, "Error-unspecified"},
    {0x82, "Error-service-denied"},
    {0x83, "Error-message-format-corrupt"},
    {0x84, "Error-sending-address-unresolved"},
    {0x85, "Error-message-not-found"},
    {0x86, "Error-network-problem"},
    {0x87, "Error-content-not-accepted"},
    {0x88, "Error-unsupported-message"},
    {0xC0, "Error-transient-failure"},
    {0xC1, "Error-transient-sending-address-unresolved"},
    {0xC2, "Error-transient-message-not-found"},
    {0xC3, "Error-transient-network-problem"},
    {0xC4, "Error-transient-partial-success"},
    {0xE0, "Error-permanent-failure"},
    {0xE1, "Error-permanent-service-denied"},
    {0xE2, "Error-permanent-message-format-corrupt"},
    {0xE3, "Error-permanent-sending-address-unresolved"},
    {0xE4, "Error-permanent-message-not-found"},
    {0xE5, "Error-permanent-content-not-accepted"},
    {0xE6, "Error-permanent-reply-charging-limitations-not-met"},
    {0xE7, "Error-permanent-reply-charging-request-not-accepted"},
    {0xE8, "Error-permanent-reply-charging-forwarding-denied"},
    {0xE9, "Error-permanent-reply-charging-not-supported"},
    {0xEA, "Error-permanent-address-hiding-not-supported"},
};
const Token kRetrieveStatus[] = {
    {0x80, "Ok"},
    {0xC0, "Error-transient-failure"},
    {0xC1, "Error-transient-message-not-found"},
    {0xC2, "Error-transient-network-problem"},
    {0xE0, "Error-permanent-failure"},
    {0xE1, "Error-permanent-service-denied"},
    {0xE2, "Error-permanent-message-not-found"},
    {0xE3, "Error-permanent-content-unsupported"},
};

template <size_t N>
const char* Lookup(const Token (&table)[N], int value) {
  for (const Token& t : table)
    if (t.value == value) return t.name;
  return nullptr;
}

const char* const kContentTypes[] = {
    "*/*",
    "text/*",
    "text/html",
    "text/plain",
    "text/x-hdml",
    "text/x-ttml",
    "text/x-vCalendar",
    "text/x-vCard",
    "text/vnd.wap.wml",
    "text/vnd.wap.wmlscript",
    "text/vnd.wap.wta-event",
    "multipart/*",
    "multipart/mixed",
    "multipart/form-data",
    "multipart/byterantes",
    "multipart/alternative",
    "application/*",
    "application/java-vm",
    "application/x-www-form-urlencoded",
    "application/x-hdmlc",
    "application/vnd.wap.wmlc",
    "application/vnd.wap.wmlscriptc",
    "application/vnd.wap.wta-eventc",
    "application/vnd.wap.uaprof",
    "application/vnd.wap.wtls-ca-certificate",
    "application/vnd.wap.wtls-user-certificate",
    "application/x-x509-ca-cert",
    "application/x-x509-user-cert",
    "image/*",
    "image/gif",
    "image/jpeg",
    "image/tiff",
    "image/png",
    "image/vnd.wap.wbmp",
    "application/vnd.wap.multipart.*",
    "application/vnd.wap.multipart.mixed",
    "application/vnd.wap.multipart.form-data",
    "application/vnd.wap.multipart.byteranges",
    "application/vnd.wap.multipart.alternative",
    "application/xml",
    "text/xml",
    "application/vnd.wap.wbxml",
    "application/x-x968-cross-cert",
    "application/x-x968-ca-cert",
    "application/x-x968-user-cert",
    "text/vnd.wap.si",
    "application/vnd.wap.sic",
    "text/vnd.wap.sl",
    "application/vnd.wap.slc",
    "text/vnd.wap.co",
    "application/vnd.wap.coc",
    "application/vnd.wap.multipart.related",
    "application/vnd.wap.sia",
    "text/vnd.wap.connectivity-xml",
    "application/vnd.wap.connectivity-wbxml",
    "application/pkcs7-mime",
    "application/vnd.wap.hashed-certificate",
    "application/vnd.wap.signed-certificate",
    "application/vnd.wap.cert-response",
    "application/xhtml+xml",
    "application/wml+xml",
    "text/css",
    "application/vnd.wap.mms-message",
    "application/vnd.wap.rollover-certificate",
    "application/vnd.wap.locc+wbxml",
    "application/vnd.wap.loc+xml",
    "application/vnd.syncml.dm+wbxml",
    "application/vnd.syncml.dm+xml",
    "application/vnd.syncml.notification",
    "application/vnd.wap.xhtml+xml",
    "application/vnd.wv.csp.cir",
    "application/vnd.oma.dd+xml",
    "application/vnd.oma.drm.message",
    "application/vnd.oma.drm.content",
    "application/vnd.oma.drm.rights+xml",
    "application/vnd.oma.drm.rights+wbxml",
    "application/vnd.wv.csp+xml",
    "application/vnd.wv.csp+wbxml",
    "application/vnd.syncml.ds.notification",
    "audio/*",
    "video/*",
    "application/vnd.oma.dd2+xml",
    "application/mikey",
};
const int kContentTypeCount = static_cast<int>(sizeof(kContentTypes) / sizeof(kContentTypes[0]));

const char* const kHeaderNames[] = {
    "Accept",
    "Accept-Charset",
    "Accept-Encoding",
    "Accept-Language",
    "Accept-Ranges",
    "Age",
    "Allow",
    "Authorization",
    "Cache-Control",
    "Connection",
    "Content-Base",
    "Content-Encoding",
    "Content-Language",
    "Content-Length",
    "Content-Location",
    "Content-MD5",
    "Content-Range",
    "Content-Type",
    "Date",
    "ETag",
    "Expires",
    "From",
    "Host",
    "If-Modified-Since",
    "If-Match",
    "If-None-Match",
    "If-Range",
    "If-Unmodified-Since",
    "Location",
    "Last-Modified",
    "Max-Forwards",
    "Pragma",
    "Proxy-Authenticate",
    "Proxy-Authorization",
    "Public",
    "Range",
    "Referer",
    "Retry-After",
    "Server",
    "Transfer-Encoding",
    "Upgrade",
    "User-Agent",
    "Vary",
    "Via",
    "Warning",
    "WWW-Authenticate",
    "Content-Disposition",
    "X-Wap-Application-Id",
    "X-Wap-Content-URI",
    "X-Wap-Initiator-URI",
    "Accept-Application",
    "Bearer-Indication",
    "Push-Flag",
    "Profile",
    "Profile-Diff",
    "Profile-Warning",
    "Expect",
    "TE",
    "Trailer",
    "Accept-Charset",
    "Accept-Encoding",
    "Cache-Control",
    "Content-Range",
    "X-Wap-Tod",
    "Content-ID",
    "Set-Cookie",
    "Cookie",
    "Encoding-Version",
    "Profile-Warning",
    "Content-Disposition",
    "X-Wap-Security",
    "Cache-Control",
};
const int kHeaderNameCount = static_cast<int>(sizeof(kHeaderNames) / sizeof(kHeaderNames[0]));

const char* const kParameterNames[] = {
    "Q",
    "Charset",
    "Level",
    "Type",
    "",
    "Name",
    "Filename",
    "Differences",
    "Padding",
    "Type",
    "Start",
    "Start-info",
    "Comment",
    "Domain",
    "Max-Age",
    "Path",
    "Secure",
    "SEC",
    "MAC",
    "Creation-date",
    "Modification-date",
    "Read-date",
    "Size",
    "Name",
    "Filename",
    "Start",
    "Start-info",
    "Comment",
    "Domain",
    "Path",
};
const int kParameterCount = static_cast<int>(sizeof(kParameterNames) / sizeof(kParameterNames[0]));

struct CharsetRow {
  int mib;
  const char* name;
  const char* aliases;  ///< space-separated, lower case
};

const CharsetRow kCharsets[] = {
    {kCharsetUsAscii, "us-ascii", "ascii ansi_x3.4-1968 iso646-us"},
    {kCharsetLatin1, "iso-8859-1", "latin1 iso8859-1 iso_8859-1 l1"},
    {5, "iso-8859-2", "latin2"},
    {6, "iso-8859-3", "latin3"},
    {7, "iso-8859-4", "latin4"},
    {8, "iso-8859-5", ""},
    {9, "iso-8859-6", ""},
    {10, "iso-8859-7", ""},
    {11, "iso-8859-8", ""},
    {12, "iso-8859-9", "latin5"},
    {17, "shift_jis", "sjis"},
    {38, "euc-kr", ""},
    {kCharsetUtf8, "utf-8", "utf8"},
    {113, "gbk", ""},
    {kCharsetUcs2, "iso-10646-ucs-2", "ucs-2 ucs2"},
    {kCharsetUtf16Be, "utf-16be", ""},
    {kCharsetUtf16Le, "utf-16le", ""},
    {kCharsetUtf16, "utf-16", "utf16"},
    {2025, "gb2312", ""},
    {2026, "big5", ""},
    {2084, "koi8-r", ""},
    {2252, "windows-1252", "cp1252"},
};

std::string Lower(const std::string& s) {
  std::string out(s);
  for (char& c : out) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  return out;
}

}  // namespace

bool EqualNoCase(const std::string& a, const std::string& b) {
  return a.size() == b.size() && Lower(a) == Lower(b);
}

const char* MmsFieldName(int code) {
  const Field* f = FindField(code);
  return f ? f->name : nullptr;
}

ValueKind MmsFieldKind(int code) {
  const Field* f = FindField(code);
  return f ? f->kind : kValueRaw;
}

const char* MmsTokenName(int code, int value) {
  switch (code) {
    case kFieldMessageType:
      return Lookup(kMessageTypes, value);
    case kFieldDeliveryReport:
    case kFieldReadReport:
    case kFieldReportAllowed:
    case 0x22:  // Store
    case 0x27:  // Stored
    case 0x29:  // Totals
    case 0x2B:  // Quotas
    case 0x31:  // Distribution-Indicator
    case 0x3B:  // DRM-Content
    case 0x3C:  // Adaptation-Allowed
      return Lookup(kYesNo, value);
    case kFieldPriority:
      return Lookup(kPriority, value);
    case kFieldMessageClass:
      return Lookup(kMessageClass, value);
    case kFieldSenderVisibility:
      return Lookup(kVisibility, value);
    case kFieldStatus:
      return Lookup(kStatus, value);
    case kFieldReadStatus:
      return Lookup(kReadStatus, value);
    case kFieldReplyCharging:
      return Lookup(kReplyCharging, value);
    case kFieldResponseStatus:
      return Lookup(kResponseStatus, value);
    case kFieldRetrieveStatus:
      return Lookup(kRetrieveStatus, value);
    default:
      return nullptr;
  }
}

const char* WspContentTypeName(int code) {
  return code >= 0 && code < kContentTypeCount ? kContentTypes[code] : nullptr;
}

int WspContentTypeCode(const std::string& name) {
  for (int i = 0; i < kContentTypeCount; ++i)
    if (EqualNoCase(name, kContentTypes[i])) return i;
  return -1;
}

const char* WspHeaderName(int code) {
  return code >= 0 && code < kHeaderNameCount ? kHeaderNames[code] : nullptr;
}

const char* WspParameterName(int code) {
  if (code < 0 || code >= kParameterCount || !*kParameterNames[code]) return nullptr;
  return kParameterNames[code];
}

const char* CharsetName(int mib) {
  for (const CharsetRow& c : kCharsets)
    if (c.mib == mib) return c.name;
  return nullptr;
}

int CharsetMib(const std::string& name) {
  std::string n = Lower(name);
  for (const CharsetRow& c : kCharsets) {
    if (n == c.name) return c.mib;
    std::string aliases = std::string(" ") + c.aliases + " ";
    if (!n.empty() && aliases.find(" " + n + " ") != std::string::npos) return c.mib;
  }
  return 0;
}

}  // namespace mms
}  // namespace hs
