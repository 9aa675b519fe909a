#include <cstdio>
#include <string>

#include "handset/messaging/MmsMessage.h"
#include "handset/platform/Results.h"
#include "messaging/mms/MmsValueText.h"
#include "messaging/mms/WspReader.h"
#include "messaging/mms/WspTables.h"

namespace hs {
namespace mms {

namespace {

bool IsMultipart(const ContentTypeValue& ct) {
  switch (ct.code) {
    case 0x0B:
    case 0x0C:
    case 0x0D:
    case 0x0E:
    case 0x0F:
    case 0x22:
    case 0x23:
    case 0x24:
    case 0x25:
    case 0x26:
    case 0x33:
      return true;
    default:
      break;
  }
  std::string m = ct.media.substr(0, 30);
  return EqualNoCase(m.substr(0, 10), "multipart/") ||
         EqualNoCase(m, "application/vnd.wap.multipart.");
}

WspReader RawReader(const std::vector<uint8_t>& raw) {
  return WspReader(raw.data(), raw.size());
}

class Decoder {
 public:
  Decoder(const uint8_t* data, size_t size, CMmsMessage* msg) : r_(data, size), msg_(msg) {}

  int Run(size_t* errorOffset) {
    int rc = Headers();
    if (rc == mmspdu::kOk && sawContentType_) rc = Body();
    if (errorOffset) *errorOffset = rc == mmspdu::kOk ? r_.tell() : failedAt_;
    return rc;
  }

 private:
  int Fail(int code) { return code ? code : mmspdu::kErrBadValue; }

  int Headers() {
    if (r_.remaining() < 2 || r_.Peek() != (0x80 | kFieldMessageType)) return mmspdu::kErrNotMms;
    while (!r_.atEnd()) {
      failedAt_ = r_.tell();
      uint8_t b = r_.Peek();
      CMmsHeaderField h;
      if (b & 0x80) {
        h.m_nCode = r_.Octet() & 0x7F;
        const char* name = MmsFieldName(h.m_nCode);
        h.m_sName = name ? name : "X-Mms-Field-0x" + Hex(static_cast<uint8_t>(h.m_nCode));
        if (h.m_nCode == kFieldContentType) return ContentTypeHeader(&h);
        if (!r_.RawValue(&h.m_raw)) return Fail(r_.error());
        bool typed = Interpret(&h);
        if (!typed) msg_->m_extraHeaders.push_back(h);
      } else if (b >= 32 && b < 127) {
        std::string name;
        if (!r_.TextString(&name) || !r_.RawValue(&h.m_raw)) return Fail(r_.error());
        h.m_sName = SanitizeText(name);
        h.m_sValue = GenericValueText(-1, h.m_raw);
        msg_->m_extraHeaders.push_back(h);
      } else {
        return mmspdu::kErrBadHeader;
      }
      msg_->m_headers.push_back(std::move(h));
    }
    return mmspdu::kOk;
  }

  int ContentTypeHeader(CMmsHeaderField* h) {
    size_t start = r_.tell();
    if (!r_.ContentType(&ct_)) return Fail(r_.error());
    h->m_raw.assign(r_.cursor() - (r_.tell() - start), r_.cursor());
    h->m_sValue = SanitizeText(ct_.ToString());
    msg_->m_sContentType = SanitizeText(ct_.media);
    msg_->m_sStart = SanitizeText(ct_.start);
    msg_->m_headers.push_back(*h);
    sawContentType_ = true;
    return mmspdu::kOk;
  }

  /// Fills the typed field of a known header; false keeps it as an extra header.
  bool Interpret(CMmsHeaderField* h) {
    WspReader v = RawReader(h->m_raw);
    ValueText vt;
    bool ok = ReadMmsValue(h->m_nCode, v, &vt) && v.atEnd();
    h->m_sValue = ok ? vt.text : GenericValueText(h->m_nCode, h->m_raw);
    if (!ok) return false;
    CMmsMessage& m = *msg_;
    switch (h->m_nCode) {
      case kFieldMessageType:
        m.m_nMessageType = static_cast<int>(vt.number);
        return true;
      case kFieldTransactionId:
        m.m_sTransactionId = vt.text;
        return true;
      case kFieldMmsVersion:
        m.m_nVersion = static_cast<int>(vt.number);
        return true;
      case kFieldDate:
        m.m_tDate = static_cast<int64_t>(vt.number);
        return true;
      case kFieldFrom:
        m.m_sFrom = vt.insertAddress ? CString() : CString(vt.text);
        return true;
      case kFieldTo:
        m.m_lstTo.AddTail(vt.text);
        return true;
      case kFieldCc:
        m.m_lstCc.AddTail(vt.text);
        return true;
      case kFieldBcc:
        m.m_lstBcc.AddTail(vt.text);
        return true;
      case kFieldSubject:
        m.m_sSubject = vt.text;
        m.m_nSubjectCharset = vt.charset;
        return true;
      case kFieldMessageClass:
        m.m_nMessageClass = vt.isToken ? static_cast<int>(vt.number) : 0;
        m.m_sMessageClass = vt.isToken ? CString() : CString(vt.text);
        return true;
      case kFieldPriority:
        m.m_nPriority = static_cast<int>(vt.number);
        return true;
      case kFieldDeliveryReport:
        m.m_nDeliveryReport = static_cast<int>(vt.number);
        return true;
      case kFieldReadReport:
        m.m_nReadReport = static_cast<int>(vt.number);
        return true;
      case kFieldSenderVisibility:
        m.m_nSenderVisibility = static_cast<int>(vt.number);
        return true;
      case kFieldExpiry:
        m.m_tExpiry = static_cast<int64_t>(vt.number);
        m.m_bExpiryRelative = vt.relative;
        return true;
      case kFieldDeliveryTime:
        m.m_tDeliveryTime = static_cast<int64_t>(vt.number);
        m.m_bDeliveryTimeRelative = vt.relative;
        return true;
      case kFieldMessageId:
        m.m_sMessageId = vt.text;
        return true;
      case kFieldContentLocation:
        m.m_sContentLocation = vt.text;
        return true;
      case kFieldMessageSize:
        m.m_nMessageSize = vt.number;
        return true;
      case kFieldStatus:
        m.m_nStatus = static_cast<int>(vt.number);
        return true;
      case kFieldResponseStatus:
        m.m_nResponseStatus = static_cast<int>(vt.number);
        return true;
      case kFieldRetrieveStatus:
        m.m_nRetrieveStatus = static_cast<int>(vt.number);
        return true;
      case kFieldReadStatus:
        m.m_nReadStatus = static_cast<int>(vt.number);
        return true;
      default:
        return false;
    }
  }

  int Body() {
    CMmsMessage& m = *msg_;
    if (!IsMultipart(ct_)) {
      m.m_bMultipart = false;
      if (r_.atEnd()) return mmspdu::kOk;
      CMmsMediaObj* obj = new CMmsMediaObj;
      m.GetBody().AddObject(obj);
      ApplyContentType(obj, ct_);
      obj->SetData(r_.cursor(), static_cast<uint32_t>(r_.remaining()));
      r_.Skip(r_.remaining());
      return mmspdu::kOk;
    }
    failedAt_ = r_.tell();
    if (r_.atEnd()) return mmspdu::kOk;  // a multipart type without entries
    uint32_t count = 0;
    if (!r_.Uintvar(&count)) return Fail(r_.error());
    // Every entry takes at least three octets, so a larger count cannot be true.
    if (count > r_.remaining() / 3) return mmspdu::kErrBadBody;
    for (uint32_t i = 0; i < count; ++i) {
      failedAt_ = r_.tell();
      int rc = Entry();
      if (rc != mmspdu::kOk) return rc;
    }
    return mmspdu::kOk;
  }

  int Entry() {
    uint32_t headersLen = 0, dataLen = 0;
    if (!r_.Uintvar(&headersLen) || !r_.Uintvar(&dataLen)) return Fail(r_.error());
    if (headersLen == 0) return mmspdu::kErrBadBody;
    if (headersLen > r_.remaining()) return mmspdu::kErrTruncated;
    WspReader headers = r_.Sub(headersLen);
    if (dataLen > r_.remaining()) return mmspdu::kErrTruncated;
    const uint8_t* data = r_.cursor();
    r_.Skip(dataLen);
    ContentTypeValue ct;
    if (!headers.ContentType(&ct)) return mmspdu::kErrBadBody;
    CMmsMediaObj* obj = new CMmsMediaObj;
    msg_->GetBody().AddObject(obj);
    ApplyContentType(obj, ct);
    PartHeaders(headers, obj);
    obj->SetData(data, dataLen);
    return mmspdu::kOk;
  }

  static void ApplyContentType(CMmsMediaObj* obj, const ContentTypeValue& ct) {
    obj->SetContentType(SanitizeText(ct.media).c_str());
    obj->SetCharset(ct.charset);
    if (!ct.name.empty()) obj->SetFileName(SanitizeText(ct.name).c_str());
  }

  /// The part headers after the content type. They are bounded by the entry's header length,
  /// so whatever cannot be read there ends the headers of this part only.
  static void PartHeaders(WspReader& h, CMmsMediaObj* obj) {
    while (!h.atEnd() && h.ok()) {
      uint8_t b = h.Peek();
      CMmsHeaderField f;
      if (b & 0x80) {
        f.m_nCode = h.Octet() & 0x7F;
        const char* name = WspHeaderName(f.m_nCode);
        f.m_sName = name ? name : "Header-0x" + Hex(static_cast<uint8_t>(f.m_nCode));
      } else if (b == 127) {  // shift to another header code page
        h.Octet(), h.Octet();
        continue;
      } else if (b >= 1 && b <= 31) {  // short-cut shift
        h.Octet();
        continue;
      } else if (b >= 32) {
        std::string name;
        if (!h.TextString(&name)) break;
        f.m_sName = SanitizeText(name);
      } else {
        break;
      }
      if (!h.RawValue(&f.m_raw)) break;
      f.m_sValue = PartValueText(f.m_nCode, f.m_raw);
      ApplyPartHeader(f, obj);
      obj->m_headers.push_back(std::move(f));
    }
  }

  static void ApplyPartHeader(const CMmsHeaderField& f, CMmsMediaObj* obj) {
    bool location = f.m_nCode == kWspContentLocation ||
                    (f.m_nCode < 0 && EqualNoCase(f.m_sName, "Content-Location"));
    bool id = f.m_nCode == kWspContentId || (f.m_nCode < 0 && EqualNoCase(f.m_sName, "Content-ID"));
    if (location && !f.m_sValue.IsEmpty()) {
      obj->SetContentLocation(f.m_sValue.c_str());
      obj->SetFileName(f.m_sValue.c_str());
    } else if (id) {
      obj->SetContentID(f.m_sValue.c_str());
    }
  }

  WspReader r_;
  CMmsMessage* msg_;
  ContentTypeValue ct_;
  bool sawContentType_ = false;
  size_t failedAt_ = 0;
};

}  // namespace

}  // namespace mms
}  // namespace hs

int MmsDecodePdu(const void* data, size_t size, CMmsMessage* msg, size_t* errorOffset) {
  if (errorOffset) *errorOffset = 0;
  if (!msg) return hs::mmspdu::kErrEmpty;
  msg->Reset();
  if (!data || size == 0) return hs::mmspdu::kErrEmpty;
  hs::mms::Decoder d(static_cast<const uint8_t*>(data), size, msg);
  return d.Run(errorOffset);
}
