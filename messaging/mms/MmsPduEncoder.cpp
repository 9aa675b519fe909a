#include "messaging/mms/MmsPduEncoder.h"

#include <climits>
#include <cstdio>

#include "handset/platform/PackageBlk.h"
#include "handset/platform/Results.h"
#include "messaging/mms/MimeText.h"
#include "messaging/mms/WspTables.h"

namespace hs {
namespace mms {

namespace {

const size_t kMaxUint32 = 0xFFFFFFFFu;

/// Field code with its high bit, as a header starts.
void PutField(Bytes* b, int code) {
  b->push_back(static_cast<uint8_t>(0x80 | code));
}

void PutOctetHeader(PduSink& sink, int code, int value) {
  if (!value) return;
  Bytes b;
  PutField(&b, code);
  b.push_back(static_cast<uint8_t>(value));
  sink.Put(b);
}

void PutTextHeader(PduSink& sink, int code, const std::string& text) {
  if (text.empty()) return;
  Bytes b;
  PutField(&b, code);
  PutTextString(&b, text);
  sink.Put(b);
}

void PutTimeHeader(PduSink& sink, int code, int64_t value, bool relative) {
  if (!value) return;
  Bytes inner;
  inner.push_back(relative ? 0x81 : 0x80);
  PutLongInteger(&inner, static_cast<uint64_t>(value));
  Bytes b;
  PutField(&b, code);
  PutWithLength(&b, inner);
  sink.Put(b);
}

void PutAddresses(PduSink& sink, int code, const CStringList& list) {
  for (const CString& a : list) {
    Bytes b;
    PutField(&b, code);
    PutEncodedString(&b, AddressForSending(a));
    sink.Put(b);
  }
}

void PutFrom(PduSink& sink, const CString& from) {
  Bytes inner;
  if (from.IsEmpty()) {
    inner.push_back(0x81);  // insert-address token: the relay fills in the sender
  } else {
    inner.push_back(0x80);
    PutEncodedString(&inner, AddressForSending(from));
  }
  Bytes b;
  PutField(&b, kFieldFrom);
  PutWithLength(&b, inner);
  sink.Put(b);
}

void PutMessageClass(PduSink& sink, const CMmsMessage& msg) {
  if (msg.m_nMessageClass) return PutOctetHeader(sink, kFieldMessageClass, msg.m_nMessageClass);
  PutTextHeader(sink, kFieldMessageClass, msg.m_sMessageClass);
}

/// An identifier of fixed length made from the content, so that equal messages encode equally
/// and the size is known without it.
std::string MakeTransactionId(const CMmsMessage& msg, bool counting) {
  if (counting) return "T00000000";
  uint32_t crc = 0;
  for (const CMmsMediaObj* obj : msg.GetBody().GetObjects()) {
    std::string loc = obj->GetContentLocation();
    crc = HsCrc32(loc.data(), loc.size(), crc);
    crc = HsCrc32(obj->GetData(), obj->GetSize(), crc);
  }
  crc = HsCrc32(msg.m_sSubject.data(), msg.m_sSubject.size(), crc);
  char id[16];
  std::snprintf(id, sizeof(id), "T%08X", crc);
  return id;
}

void PutMessageHeaders(PduSink& sink, const CMmsMessage& msg, int type, bool counting) {
  Bytes b = {static_cast<uint8_t>(0x80 | kFieldMessageType), static_cast<uint8_t>(type)};
  sink.Put(b);
  bool needsId = type == kSendReq || type == kSendConf || type == kNotificationInd ||
                 type == kNotifyRespInd || type == kAcknowledgeInd;
  std::string tid = msg.m_sTransactionId;
  if (tid.empty() && needsId) tid = MakeTransactionId(msg, counting);
  PutTextHeader(sink, kFieldTransactionId, tid);
  PutOctetHeader(sink, kFieldMmsVersion, 0x80 | (msg.m_nVersion ? msg.m_nVersion & 0x7F : 0x12));
  if (msg.m_tDate > 0) {
    b.clear();
    PutField(&b, kFieldDate);
    PutLongInteger(&b, static_cast<uint64_t>(msg.m_tDate));
    sink.Put(b);
  }
  PutTextHeader(sink, kFieldMessageId, msg.m_sMessageId);
  // What a phone sends carries From, with the insert-address token when it is not known.
  bool fromPhone = type == kSendReq || type == kReadRecInd || type == 0x89;  // 0x89 forward-req
  if (fromPhone || !msg.m_sFrom.IsEmpty()) PutFrom(sink, msg.m_sFrom);
  PutAddresses(sink, kFieldTo, msg.m_lstTo);
  PutAddresses(sink, kFieldCc, msg.m_lstCc);
  PutAddresses(sink, kFieldBcc, msg.m_lstBcc);
  if (!msg.m_sSubject.IsEmpty()) {
    b.clear();
    PutField(&b, kFieldSubject);
    PutEncodedString(&b, msg.m_sSubject);
    sink.Put(b);
  }
  PutMessageClass(sink, msg);
  PutTimeHeader(sink, kFieldExpiry, msg.m_tExpiry, msg.m_bExpiryRelative);
  PutTimeHeader(sink, kFieldDeliveryTime, msg.m_tDeliveryTime, msg.m_bDeliveryTimeRelative);
  PutOctetHeader(sink, kFieldPriority, msg.m_nPriority);
  PutOctetHeader(sink, kFieldSenderVisibility, msg.m_nSenderVisibility);
  PutOctetHeader(sink, kFieldDeliveryReport, msg.m_nDeliveryReport);
  PutOctetHeader(sink, kFieldReadReport, msg.m_nReadReport);
  PutOctetHeader(sink, kFieldStatus, msg.m_nStatus);
  PutOctetHeader(sink, kFieldResponseStatus, msg.m_nResponseStatus);
  PutOctetHeader(sink, kFieldRetrieveStatus, msg.m_nRetrieveStatus);
  PutOctetHeader(sink, kFieldReadStatus, msg.m_nReadStatus);
  PutTextHeader(sink, kFieldContentLocation, msg.m_sContentLocation);
  if (msg.m_nMessageSize) {
    b.clear();
    PutField(&b, kFieldMessageSize);
    PutLongInteger(&b, msg.m_nMessageSize);
    sink.Put(b);
  }
  for (const CMmsHeaderField& h : msg.m_extraHeaders) {
    b.clear();
    if (h.m_nCode >= 0)
      PutField(&b, h.m_nCode);
    else
      PutTextString(&b, h.m_sName);
    b.insert(b.end(), h.m_raw.begin(), h.m_raw.end());
    sink.Put(b);
  }
}

bool IsTextType(const std::string& mime) {
  return mime.compare(0, 5, "text/") == 0 || EqualNoCase(mime, "application/smil") ||
         EqualNoCase(mime, "application/xhtml+xml");
}

/// The charset a text part is sent with: the one set, else UTF-16 for data with a byte-order
/// mark, UTF-8 for well-formed UTF-8 and ISO-8859-1 for anything else.
int CharsetFor(const CMmsMediaObj& obj, const std::string& mime) {
  if (!IsTextType(mime)) return 0;
  if (obj.GetCharset()) return obj.GetCharset();
  const uint8_t* d = obj.GetData();
  size_t n = obj.GetSize();
  if (n >= 2 && ((d[0] == 0xFF && d[1] == 0xFE) || (d[0] == 0xFE && d[1] == 0xFF)))
    return kCharsetUtf16;
  return IsUtf8(reinterpret_cast<const char*>(d), n) ? kCharsetUtf8 : kCharsetLatin1;
}

/// Content-type-value: a well-known type as one octet, any other as text, and the general form
/// with a length when parameters follow.
void PutContentType(Bytes* b, const std::string& mime, const Bytes& params) {
  Bytes media;
  int code = WspContentTypeCode(mime);
  if (code >= 0)
    PutShortInteger(&media, static_cast<uint32_t>(code));
  else
    PutTextString(&media, mime);
  if (params.empty()) {
    b->insert(b->end(), media.begin(), media.end());
    return;
  }
  media.insert(media.end(), params.begin(), params.end());
  PutWithLength(b, media);
}

Bytes PartHeaders(const CMmsMediaObj& obj) {
  std::string mime = obj.GetContentType();
  Bytes params;
  if (int charset = CharsetFor(obj, mime)) {
    PutShortInteger(&params, kParamCharset);
    PutIntegerValue(&params, static_cast<uint64_t>(charset));
  }
  Bytes h;
  PutContentType(&h, mime, params);
  PutField(&h, kWspContentId);
  PutQuotedString(&h, ContentIdForSending(obj));
  PutField(&h, kWspContentLocation);
  PutTextString(&h, obj.GetContentLocation());
  for (const CMmsHeaderField& f : obj.m_headers) {
    if (f.m_nCode == kWspContentId || f.m_nCode == kWspContentLocation ||
        f.m_nCode == kWspContentType)
      continue;
    if (f.m_nCode >= 0)
      PutField(&h, f.m_nCode);
    else
      PutTextString(&h, f.m_sName);
    h.insert(h.end(), f.m_raw.begin(), f.m_raw.end());
  }
  return h;
}

const CMmsMediaObj* FindSmil(const CMmsBody& body) {
  for (const CMmsMediaObj* obj : body.GetObjects())
    if (EqualNoCase(obj->GetContentType(), "application/smil")) return obj;
  return nullptr;
}

void PutMessageContentType(PduSink& sink, const CMmsMessage& msg) {
  Bytes b;
  PutField(&b, kFieldContentType);
  if (!msg.m_bMultipart && msg.GetBody().GetCount() == 1) {
    const CMmsMediaObj& obj = *msg.GetBody().GetAt(0);
    Bytes params;
    std::string mime = obj.GetContentType();
    if (int charset = CharsetFor(obj, mime)) {
      PutShortInteger(&params, kParamCharset);
      PutIntegerValue(&params, static_cast<uint64_t>(charset));
    }
    PutContentType(&b, mime, params);
  } else if (const CMmsMediaObj* smil = FindSmil(msg.GetBody())) {
    Bytes params;
    PutShortInteger(&params, kParamStart);
    PutTextString(&params, ContentIdForSending(*smil));
    PutShortInteger(&params, kParamRelatedType);
    PutTextString(&params, "application/smil");
    PutContentType(&b, "application/vnd.wap.multipart.related", params);
  } else {
    PutContentType(&b, "application/vnd.wap.multipart.mixed", Bytes());
  }
  sink.Put(b);
}

bool PutBody(PduSink& sink, const CMmsMessage& msg) {
  const CMmsBody& body = msg.GetBody();
  if (!msg.m_bMultipart && body.GetCount() == 1) {
    sink.Put(body.GetAt(0)->GetData(), body.GetAt(0)->GetSize());
    return true;
  }
  Bytes b;
  PutUintvar(&b, static_cast<uint32_t>(body.GetCount()));
  sink.Put(b);
  for (const CMmsMediaObj* obj : body.GetObjects()) {
    Bytes headers = PartHeaders(*obj);
    if (headers.size() > kMaxUint32) return false;
    b.clear();
    PutUintvar(&b, static_cast<uint32_t>(headers.size()));
    PutUintvar(&b, obj->GetSize());
    sink.Put(b);
    sink.Put(headers);
    sink.Put(obj->GetData(), obj->GetSize());
  }
  return true;
}

bool CarriesBody(const CMmsMessage& msg, int type) {
  return type == kSendReq || type == kRetrieveConf || msg.GetBody().GetCount() > 0;
}

}  // namespace

std::string AddressForSending(const std::string& address) {
  std::string number;
  bool isNumber = !address.empty();
  for (size_t i = 0; i < address.size() && isNumber; ++i) {
    char c = address[i];
    if (c >= '0' && c <= '9')
      number += c;
    else if (c == '+' && number.empty())
      number += c;
    else if (c != ' ' && c != '-' && c != '.' && c != '(' && c != ')')
      isNumber = false;
  }
  if (isNumber && !number.empty() && number != "+") return number + "/TYPE=PLMN";
  return address;
}

std::string ContentIdForSending(const CMmsMediaObj& obj) {
  std::string id = obj.GetContentID();
  if (id.empty()) id = obj.GetContentLocation();
  if (id.empty() || id[0] != '<') id = "<" + id + ">";
  return id;
}

bool EncodePdu(const CMmsMessage& msg, PduSink& sink, bool asSendReq) {
  int type = asSendReq ? kSendReq : (msg.m_nMessageType & 0xFF);
  PutMessageHeaders(sink, msg, type, sink.Counting());
  if (CarriesBody(msg, type)) {
    PutMessageContentType(sink, msg);
    if (!PutBody(sink, msg)) return false;
  }
  return sink.Size() <= kMaxUint32;
}

}  // namespace mms
}  // namespace hs

int MmsEncodePdu(const CMmsMessage& msg, std::vector<uint8_t>* out) {
  if (!out) return hs::mmspdu::kErrEmpty;
  out->clear();
  hs::mms::CountingSink counter;
  if (!hs::mms::EncodePdu(msg, counter, false)) return hs::mmspdu::kErrTooLarge;
  out->reserve(counter.Size());
  hs::mms::VectorSink sink(out);
  if (!hs::mms::EncodePdu(msg, sink, false)) return hs::mmspdu::kErrTooLarge;
  return hs::mmspdu::kOk;
}

int MmsCalcSendReqPduSize(const CMmsMessage& msg) {
  hs::mms::CountingSink counter;
  if (!hs::mms::EncodePdu(msg, counter, true) || counter.Size() > INT_MAX) return -1;
  return static_cast<int>(counter.Size());
}

int MmsCalcSendReqPduSize(const CMmsMessage* msg) {
  return msg ? MmsCalcSendReqPduSize(*msg) : 0;
}
