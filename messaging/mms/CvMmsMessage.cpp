#include "handset/messaging/CvMmsMessage.h"

#include <climits>
#include <cstring>

#include "handset/platform/Results.h"

namespace {

CString Key(const char* prefix, const char* name) {
  return CString(prefix ? prefix : "") + name;
}

CString Indexed(const char* prefix, const char* format, int index) {
  CString s;
  s.Format(format, index);
  return CString(prefix ? prefix : "") + s;
}

const char* const kListNames[] = {"[MMS_TO]", "[MMS_CC]", "[MMS_BCC]"};

void AddBool(CPackageBlk& blk, const CString& key, bool value) {
  uint8_t b = value ? 1 : 0;
  blk.Add(key.c_str(), &b, 1);
}

void GetBool(const CUnpackageBlk& blk, const CString& key, bool* value) {
  const void* p = nullptr;
  uint32_t n = 0;
  if (blk.GetData(key.c_str(), &p, &n) && n >= 1) *value = *static_cast<const uint8_t*>(p) != 0;
}

/// A count read from the block, or 0; never more than the block has keys, since every element
/// takes a key of its own.
int GetCount(const CUnpackageBlk& blk, const CString& key) {
  int32_t count = 0;
  if (!blk.GetInt(key.c_str(), &count) || count < 0) return 0;
  return count < blk.GetCount() ? count : blk.GetCount();
}

int32_t ClampTime(int64_t t) {
  return t > INT32_MAX ? INT32_MAX : t < INT32_MIN ? INT32_MIN : static_cast<int32_t>(t);
}

bool IsTextPart(const CMmsMediaObj& obj) {
  CString type = obj.GetContentType();
  return type.compare(0, 5, "text/") == 0 || type.CompareNoCase("application/smil") == 0;
}

}  // namespace

CCvMmsMessage::~CCvMmsMessage() = default;

CMediaFile* CCvMmsMessage::Clone() const {
  return new CCvMmsMessage(*this);
}

CStringList& CCvMmsMessage::GetRecipients(int kind) {
  return kind == MMS_CC ? m_lstCc : kind == MMS_BCC ? m_lstBcc : m_lstTo;
}

const CStringList& CCvMmsMessage::GetRecipients(int kind) const {
  return kind == MMS_CC ? m_lstCc : kind == MMS_BCC ? m_lstBcc : m_lstTo;
}

int CCvMmsMessage::PackData(const char* prefix, CPackageBlk& blk, bool flag) const {
  blk.AddString(Key(prefix, "ClassID").c_str(), "CCvMmsMessage");
  CMediaFile::PackData(prefix, blk, flag);
  blk.AddInt(Key(prefix, "m_eMmType").c_str(), m_eMmType);
  blk.AddInt(Key(prefix, "m_handle").c_str(), static_cast<int32_t>(m_handle));
  blk.AddInt(Key(prefix, "m_dwVer").c_str(), static_cast<int32_t>(m_dwVer));
  blk.AddString(Key(prefix, "m_sTranId").c_str(), m_sTranId.c_str());
  AddBool(blk, Key(prefix, "m_bUtf8Text"), m_bUtf8Text);
  for (int kind = MMS_TO; kind <= MMS_BCC; ++kind) {
    const CStringList& list = GetRecipients(kind);
    CString name = kListNames[kind];
    blk.AddInt(Key(prefix, (name + ".Count").c_str()).c_str(), list.GetCount());
    for (int i = 0; i < list.GetCount(); ++i)
      blk.AddString(Indexed(prefix, (name + "[%d]").c_str(), i).c_str(), list.GetAt(i).c_str());
  }
  blk.AddString(Key(prefix, "m_sSender").c_str(), m_sSender.c_str());
  blk.AddString(Key(prefix, "m_sSubject").c_str(), m_sSubject.c_str());
  blk.AddInt(Key(prefix, "m_time").c_str(), m_time);
  blk.AddInt(Key(prefix, "m_tExpiry").c_str(), m_tExpiry);
  blk.AddInt(Key(prefix, "m_ePriority").c_str(), m_ePriority);
  AddBool(blk, Key(prefix, "m_bDeliveryReport"), m_bDeliveryReport);
  AddBool(blk, Key(prefix, "m_bReadReply"), m_bReadReply);
  blk.AddInt(Key(prefix, "m_eDeliverySt").c_str(), m_eDeliverySt);
  blk.AddInt(Key(prefix, "mmBody.Count").c_str(), mmBody.GetCount());
  for (int i = 0; i < mmBody.GetCount(); ++i) {
    const CMmsMediaObj* obj = mmBody.GetAt(i);
    CString sub = Indexed(prefix, "mmBody[%d].", i);
    blk.AddString(Key(sub.c_str(), "m_sFileName").c_str(), obj->GetFileName().c_str());
    blk.AddString(Key(sub.c_str(), "m_sContentID").c_str(), obj->GetContentID().c_str());
    blk.Add(Key(sub.c_str(), "m_pData").c_str(), obj->GetData(), obj->GetSize());
    blk.AddInt(Key(sub.c_str(), "[mime]").c_str(), obj->GetMimeType());
  }
  return 1;
}

int CCvMmsMessage::UnpackData(const char* prefix, CUnpackageBlk& blk, bool flag) {
  CMediaFile::UnpackData(prefix, blk, flag);
  blk.GetInt(Key(prefix, "m_eMmType").c_str(), &m_eMmType);
  int32_t v = 0;
  if (blk.GetInt(Key(prefix, "m_handle").c_str(), &v)) m_handle = static_cast<uint32_t>(v);
  if (blk.GetInt(Key(prefix, "m_dwVer").c_str(), &v)) m_dwVer = static_cast<uint32_t>(v);
  blk.GetString(Key(prefix, "m_sTranId").c_str(), &m_sTranId);
  GetBool(blk, Key(prefix, "m_bUtf8Text"), &m_bUtf8Text);
  for (int kind = MMS_TO; kind <= MMS_BCC; ++kind) {
    CStringList& list = GetRecipients(kind);
    CString name = kListNames[kind];
    int count = GetCount(blk, Key(prefix, (name + ".Count").c_str()));
    list.RemoveAll();
    for (int i = 0; i < count; ++i) {
      CString address;
      if (blk.GetString(Indexed(prefix, (name + "[%d]").c_str(), i).c_str(), &address))
        list.AddTail(address);
    }
  }
  blk.GetString(Key(prefix, "m_sSender").c_str(), &m_sSender);
  blk.GetString(Key(prefix, "m_sSubject").c_str(), &m_sSubject);
  blk.GetInt(Key(prefix, "m_time").c_str(), &m_time);
  blk.GetInt(Key(prefix, "m_tExpiry").c_str(), &m_tExpiry);
  blk.GetInt(Key(prefix, "m_ePriority").c_str(), &m_ePriority);
  GetBool(blk, Key(prefix, "m_bDeliveryReport"), &m_bDeliveryReport);
  GetBool(blk, Key(prefix, "m_bReadReply"), &m_bReadReply);
  blk.GetInt(Key(prefix, "m_eDeliverySt").c_str(), &m_eDeliverySt);
  mmBody.Reset();
  int count = GetCount(blk, Key(prefix, "mmBody.Count"));
  for (int i = 0; i < count; ++i) {
    CString sub = Indexed(prefix, "mmBody[%d].", i);
    CString name, contentId;
    blk.GetString(Key(sub.c_str(), "m_sFileName").c_str(), &name);
    blk.GetString(Key(sub.c_str(), "m_sContentID").c_str(), &contentId);
    const void* data = nullptr;
    uint32_t size = 0;
    bool hasData = blk.GetData(Key(sub.c_str(), "m_pData").c_str(), &data, &size);
    int32_t mime = MIME_CNT_UNKNOWN;
    blk.GetInt(Key(sub.c_str(), "[mime]").c_str(), &mime);
    if (name.IsEmpty() || !hasData) continue;
    CMmsMediaObj* obj = mmBody.CreateMediaObject(name.c_str(), data, size);
    if (!obj) continue;
    obj->SetContentID(contentId.c_str());
    obj->SetMimeType(static_cast<EMimeCntType>(mime));
  }
  return 1;
}

void CCvMmsMessage::ExportToMessage(CMmsMessage* msg) const {
  if (!msg) return;
  msg->Reset();
  msg->m_nMessageType = m_eMmType ? (m_eMmType & 0xFF) : MMS_M_SEND_REQ;
  msg->m_sTransactionId = m_sTranId;
  msg->m_tDate = m_time;
  msg->m_sFrom = m_sSender;
  msg->m_lstTo = m_lstTo;
  msg->m_lstCc = m_lstCc;
  msg->m_lstBcc = m_lstBcc;
  msg->m_sSubject = m_sSubject;
  msg->m_tExpiry = m_tExpiry;
  if (m_ePriority >= 0x80 && m_ePriority <= 0x82) msg->m_nPriority = m_ePriority;
  msg->m_nDeliveryReport = m_bDeliveryReport ? 0x80 : 0;
  msg->m_nReadReport = m_bReadReply ? 0x80 : 0;
  if (m_eDeliverySt >= 0x80 && m_eDeliverySt <= 0xFF) msg->m_nStatus = m_eDeliverySt;
  msg->GetBody() = mmBody;
  if (m_bUtf8Text)
    for (CMmsMediaObj* obj : msg->GetBody().GetObjects())
      if (!obj->GetCharset() && IsTextPart(*obj)) obj->SetCharset(106);
}

void CCvMmsMessage::ImportFromMessage(const CMmsMessage& msg) {
  m_eMmType = msg.m_nMessageType;
  m_sTranId = msg.m_sTransactionId;
  m_time = ClampTime(msg.m_tDate);
  m_sSender = msg.m_sFrom;
  m_lstTo = msg.m_lstTo;
  m_lstCc = msg.m_lstCc;
  m_lstBcc = msg.m_lstBcc;
  m_sSubject = msg.m_sSubject;
  m_tExpiry = ClampTime(msg.m_bExpiryRelative ? msg.m_tDate + msg.m_tExpiry : msg.m_tExpiry);
  m_ePriority = msg.m_nPriority;
  m_bDeliveryReport = msg.m_nDeliveryReport == 0x80;
  m_bReadReply = msg.m_nReadReport == 0x80;
  m_eDeliverySt = msg.m_nStatus;
  mmBody = msg.GetBody();
  m_bUtf8Text = false;
  for (const CMmsMediaObj* obj : mmBody.GetObjects())
    if (obj->GetCharset() == 106 && IsTextPart(*obj)) m_bUtf8Text = true;
}

int CCvMmsMessage::ImportFromPdu(const void* data, size_t size) {
  CMmsMessage msg;
  int rc = MmsDecodePdu(data, size, &msg);
  if (rc == hs::mmspdu::kOk) ImportFromMessage(msg);
  return rc;
}

int CCvMmsMessage::ExportToPdu(std::vector<uint8_t>* out) const {
  CMmsMessage msg;
  ExportToMessage(&msg);
  return MmsEncodePdu(msg, out);
}
