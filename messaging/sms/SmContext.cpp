#include "handset/messaging/SmContext.h"

#include <algorithm>
#include <cstring>
#include <ctime>
#include <string>
#include <vector>

#include "messaging/sms/SmIo.h"
#include "messaging/sms/SmSegmenter.h"
#include "platform/Os.h"

namespace {

constexpr size_t kFolderMax = 256;
constexpr size_t kSubjectMax = 1792;
constexpr size_t kPartyNameMax = 128;
constexpr int kMaxUd = 140;

void PutDate(CPackageBlk& blk, const char* prefix, const ME_CAL_DATE& d) {
  const int32_t f[6] = {d.nYear, d.nMonth, d.nDay, d.nHour, d.nMinute, d.nSecond};
  uint8_t b[24];
  for (int i = 0; i < 6; ++i)
    for (int k = 0; k < 4; ++k)
      b[i * 4 + k] = static_cast<uint8_t>(static_cast<uint32_t>(f[i]) >> (8 * k));
  blk.Add(hs::sms::Key(prefix, ".m_calTime").c_str(), b, sizeof b);
}

void GetDate(const CUnpackageBlk& blk, const char* prefix, ME_CAL_DATE* d) {
  const uint8_t* b = nullptr;
  uint32_t size = 0;
  if (!hs::sms::GetBytes(blk, prefix, ".m_calTime", &b, &size) || size < 24) return;
  int32_t f[6];
  for (int i = 0; i < 6; ++i) {
    uint32_t u = 0;
    for (int k = 0; k < 4; ++k) u |= uint32_t{b[i * 4 + k]} << (8 * k);
    f[i] = static_cast<int32_t>(u);
  }
  *d = ME_CAL_DATE(f[0], f[1], f[2], f[3], f[4], f[5]);
}

}  // namespace

unsigned long MakeSmHandle(int storage, int index, bool longSms) {
  unsigned long h = static_cast<unsigned long>(index) & 0xFFul;
  if (longSms) h |= 0x100ul;
  if (storage == 0) h |= SM_LOCAL_HANDLE_TAG << 12;
  return h;
}

CSmContext::CSmContext(unsigned char mem, unsigned long handle) {
  Reset();
  m_hHandle = static_cast<uint32_t>(handle);
  m_nMem = mem;
  m_nRefCount = 1;
  m_eType = SMTYPE_DELIVER;
  if (mem == 0) m_nCompoundCount[0] = 1, m_nCompoundCount[1] = 0;
  if (mem == 1) m_nCompoundCount[0] = 0, m_nCompoundCount[1] = 1;
}

CSmContext::CSmContext(const CSmContext& other) : m_smMatter(other.m_smMatter) {
  *this = other;
  m_nRefCount = 1;
}

CSmContext& CSmContext::operator=(const CSmContext& other) {
  if (this == &other) return *this;
  m_nMem = other.m_nMem;
  m_hHandle = other.m_hHandle;
  m_eType = other.m_eType;
  m_eClass = other.m_eClass;
  m_nVP = other.m_nVP;
  m_dwParam = other.m_dwParam;
  m_SmscNo = other.m_SmscNo;
  m_PartyNo = other.m_PartyNo;
  m_calTime = other.m_calTime;
  m_eStoState = other.m_eStoState;
  m_smMatter = other.m_smMatter;
  m_PartyAdr = other.m_PartyAdr;
  m_nStatus = other.m_nStatus;
  m_nType = other.m_nType;
  m_nBox = other.m_nBox;
  std::memcpy(m_szFdrName, other.m_szFdrName, sizeof m_szFdrName);
  std::memcpy(m_szFdrId, other.m_szFdrId, sizeof m_szFdrId);
  std::memcpy(m_szSubject, other.m_szSubject, sizeof m_szSubject);
  std::memcpy(m_szPartyName, other.m_szPartyName, sizeof m_szPartyName);
  m_nCompoundCount[0] = other.m_nCompoundCount[0];
  m_nCompoundCount[1] = other.m_nCompoundCount[1];
  m_nMaxUdOctets = other.m_nMaxUdOctets;
  return *this;
}

CSmContext::~CSmContext() = default;

void CSmContext::Reset() {
  m_eType = SMTYPE_DELIVER;
  m_eClass = SMCLASS_NONE;
  m_nVP = 255;
  m_dwParam = 0;
  m_SmscNo.Empty();
  m_PartyNo.Empty();
  m_calTime = ME_CAL_DATE(static_cast<time_t>(-1));
  m_eStoState = SMSTAT_UNKNOWN;
  m_smMatter.Reset();
  m_PartyAdr.Empty();
  m_nStatus = MAILSTAT_NONE;
  m_nType = MAILTYPE_NONE;
  m_nBox = MAILBOX_NONE;
  std::memset(m_szFdrName, 0, sizeof m_szFdrName);
  std::memset(m_szFdrId, 0, sizeof m_szFdrId);
  std::memset(m_szSubject, 0, sizeof m_szSubject);
  std::memset(m_szPartyName, 0, sizeof m_szPartyName);
  SetMemory(m_nMem);
  m_nMaxUdOctets = kMaxUd;
}

int CSmContext::AddRef() {
  return ++m_nRefCount;
}

int CSmContext::Release() {
  int n = --m_nRefCount;
  if (n == 0) delete this;
  return n;
}

bool CSmContext::SetMemory(unsigned char mem) {
  m_nMem = mem;
  if (mem == 0) m_nCompoundCount[0] = 1, m_nCompoundCount[1] = 0;
  if (mem == 1) m_nCompoundCount[0] = 0, m_nCompoundCount[1] = 1;
  return true;
}

int CSmContext::GetCompoundCount(unsigned char mem) const {
  if (mem == 2) return std::max(1, m_nCompoundCount[0] + m_nCompoundCount[1]);
  return mem < 2 ? m_nCompoundCount[mem] : 0;
}

bool CSmContext::SetCompoundCount(unsigned char mem, int n) {
  if (mem > 1) return false;
  m_nCompoundCount[mem] = n;
  return true;
}

bool CSmContext::IsLongSMS() const {
  return GetCompoundCount(2) > 1;
}

bool CSmContext::GetServiceCenterNum(CGsmPhoneNo* no) const {
  if (!no) return false;
  *no = m_SmscNo;
  return true;
}

bool CSmContext::GetPartyNum(CGsmPhoneNo* no) const {
  if (!no) return false;
  *no = m_PartyNo;
  return true;
}

bool CSmContext::GetPartyAdr(CMsgAddress* adr) const {
  if (!adr) return false;
  *adr = m_PartyAdr;
  return true;
}

bool CSmContext::GetTime(ME_CAL_DATE* t) const {
  if (!t) return false;
  *t = m_calTime;
  return true;
}

bool CSmContext::GetStoreState(ME_SMS_STAT* s) const {
  if (!s) return false;
  *s = m_eStoState;
  return true;
}

bool CSmContext::GetExtraAttributes(ESmClass* cls, int* vp, bool* flag) const {
  if (cls) *cls = m_eClass;
  if (vp) *vp = m_nVP;
  if (flag) *flag = (m_dwParam & 2u) != 0;
  return true;
}

bool CSmContext::SetExtraAttributes(ESmClass cls, int vp, bool flag) {
  m_eClass = cls;
  m_nVP = vp;
  m_dwParam = flag ? (m_dwParam | 2u) : (m_dwParam & ~2u);
  return true;
}

bool CSmContext::GetMailAttributes(EMailStatus* status, EMailType* type, EMailBox* box,
                                   char* folderName, char* folderId, char* subject,
                                   char* partyName) const {
  if (status) *status = m_nStatus;
  if (type) *type = m_nType;
  if (box) *box = m_nBox;
  if (folderName) hs::sms::CopyCut(folderName, m_szFdrName, kFolderMax);
  if (folderId) hs::sms::CopyCut(folderId, m_szFdrId, kFolderMax);
  if (subject) hs::sms::CopyCut(subject, m_szSubject, kSubjectMax);
  if (partyName) hs::sms::CopyCut(partyName, m_szPartyName, kPartyNameMax);
  return true;
}

bool CSmContext::SetMailAttributes(EMailStatus status, EMailType type, EMailBox box,
                                   const char* folderName, const char* folderId,
                                   const char* subject, const char* partyName) {
  m_nStatus = status;
  m_nType = type;
  m_nBox = box;
  // Copied out first: a caller may pass this context's own fields back.
  std::string name = folderName ? folderName : "", id = folderId ? folderId : "",
              subj = subject ? subject : "", party = partyName ? partyName : "";
  hs::sms::CopyCut(m_szFdrName, name.c_str(), kFolderMax);
  hs::sms::CopyCut(m_szFdrId, id.c_str(), kFolderMax);
  hs::sms::CopyCut(m_szSubject, subj.c_str(), kSubjectMax);
  hs::sms::CopyCut(m_szPartyName, party.c_str(), kPartyNameMax);
  return true;
}

bool CSmContext::SetFolderId(char* id) {
  return SetFolderId(static_cast<const char*>(id));
}

bool CSmContext::SetFolderId(const char* id) {
  if (!id) {
    m_szFdrId[0] = '\0';
    return true;
  }
  size_t n = 0;
  while (n <= kFolderMax && id[n]) ++n;
  if (n > kFolderMax) return false;
  std::memmove(m_szFdrId, id, n);
  m_szFdrId[n] = '\0';
  return true;
}

bool CSmContext::PackData(const char* prefix, CPackageBlk& blk) const {
  using namespace hs::sms;
  PutInt(blk, prefix, ".m_nMem", m_nMem);
  PutInt(blk, prefix, ".m_hHandle", static_cast<int32_t>(m_hHandle));
  PutInt(blk, prefix, ".m_eClass", m_eClass);
  PutInt(blk, prefix, ".m_nVP", m_nVP);
  PutInt(blk, prefix, ".m_dwParam", static_cast<int32_t>(m_dwParam));
  PutInt(blk, prefix, ".m_eType", m_eType);
  PutText(blk, prefix, ".m_SmscNo", m_SmscNo);
  PutText(blk, prefix, ".m_PartyNo", m_PartyNo);
  PutDate(blk, prefix, m_calTime);
  PutInt(blk, prefix, ".m_eStoState", m_eStoState);
  PutText(blk, prefix, ".m_PartyAdr", m_PartyAdr);
  PutInt(blk, prefix, ".m_nStatus", m_nStatus);
  PutInt(blk, prefix, ".m_nType", m_nType);
  PutInt(blk, prefix, ".m_nBox", m_nBox);
  PutText(blk, prefix, ".m_szFdrName", m_szFdrName);
  PutText(blk, prefix, ".m_szFdrId", m_szFdrId);
  PutText(blk, prefix, ".m_szSubject", m_szSubject);
  PutText(blk, prefix, ".m_szPartyName", m_szPartyName);
  for (int i = 0; i < 2; ++i) {
    std::string name = ".m_nCompoundCount[" + std::to_string(i) + "]";
    PutInt(blk, prefix, name.c_str(), m_nCompoundCount[i]);
  }
  m_smMatter.PackData(Key(prefix, ".m_smMatter").c_str(), blk);
  return true;
}

bool CSmContext::UnpackData(const char* prefix, CUnpackageBlk& blk) {
  using namespace hs::sms;
  Reset();
  int32_t v = 0;
  const uint8_t* b = nullptr;
  uint32_t size = 0;
  if (GetBytes(blk, prefix, ".m_nMem", &b, &size) && size > 0) m_nMem = b[0];
  if (GetInt(blk, prefix, ".m_hHandle", &v)) m_hHandle = static_cast<uint32_t>(v);
  if (GetInt(blk, prefix, ".m_eClass", &v)) m_eClass = static_cast<ESmClass>(v);
  GetInt(blk, prefix, ".m_nVP", &m_nVP);
  if (GetInt(blk, prefix, ".m_dwParam", &v)) m_dwParam = static_cast<uint32_t>(v);
  if (GetInt(blk, prefix, ".m_eType", &v)) m_eType = static_cast<ESmType>(v);
  // Numbers go through the text assignment, so they are normalised again; every stored string
  // is cut to its field.
  char text[kSubjectMax + 1];
  if (GetText(blk, prefix, ".m_SmscNo", text, sizeof text)) m_SmscNo = text;
  if (GetText(blk, prefix, ".m_PartyNo", text, sizeof text)) m_PartyNo = text;
  GetDate(blk, prefix, &m_calTime);
  if (GetInt(blk, prefix, ".m_eStoState", &v)) m_eStoState = static_cast<ME_SMS_STAT>(v);
  if (GetText(blk, prefix, ".m_PartyAdr", text, sizeof text)) m_PartyAdr = text;
  if (GetInt(blk, prefix, ".m_nStatus", &v)) m_nStatus = static_cast<EMailStatus>(v);
  if (GetInt(blk, prefix, ".m_nType", &v)) m_nType = static_cast<EMailType>(v);
  if (GetInt(blk, prefix, ".m_nBox", &v)) m_nBox = static_cast<EMailBox>(v);
  GetText(blk, prefix, ".m_szFdrName", m_szFdrName, sizeof m_szFdrName);
  GetText(blk, prefix, ".m_szFdrId", m_szFdrId, sizeof m_szFdrId);
  GetText(blk, prefix, ".m_szSubject", m_szSubject, sizeof m_szSubject);
  GetText(blk, prefix, ".m_szPartyName", m_szPartyName, sizeof m_szPartyName);
  for (int i = 0; i < 2; ++i) {
    std::string name = ".m_nCompoundCount[" + std::to_string(i) + "]";
    GetInt(blk, prefix, name.c_str(), &m_nCompoundCount[i]);
  }
  m_smMatter.UnpackData(Key(prefix, ".m_smMatter").c_str(), blk);
  return true;
}

const unsigned char* CSmContext::FindInfoElement(const unsigned char* udh, ESmInfoElmtID id) {
  if (!udh) return nullptr;
  const unsigned char* p = udh + 1;
  const unsigned char* end = p + std::min<int>(udh[0], kMaxUd - 1);
  while (end - p >= 2 && end - p - 2 >= p[1]) {
    if (p[0] == id) return p;
    p += 2 + p[1];
  }
  return nullptr;
}

bool CSmContext::ConstructContent(const unsigned char* ud, char* text) {
  return ConstructContent(ud, static_cast<const char*>(text));
}

namespace {

// One EMS element read from a segment's header, at its text position within the segment.
struct Placed {
  int pos;
  CSmMedia* item;
};

CSmMedia* DecodeIe(unsigned char*& p, const unsigned char* end) {
  unsigned char* start = p;
  CSmMedia* m = nullptr;
  switch (p[0]) {
    case SMIE_TEXT_FORMAT:
      m = CSmTextFormat::_IeDecoder(p, end);
      break;
    case SMIE_PREDEF_SOUND:
    case SMIE_USER_SOUND:
      m = CSmSound::_IeDecoder(p, end);
      break;
    case SMIE_PREDEF_ANIMATION:
    case SMIE_LARGE_ANIMATION:
    case SMIE_SMALL_ANIMATION:
      m = CSmAnimation::_IeDecoder(p, end);
      break;
    case SMIE_LARGE_PICTURE:
    case SMIE_SMALL_PICTURE:
    case SMIE_VAR_PICTURE:
      m = CSmPicture::_IeDecoder(p, end);
      break;
    default:
      break;
  }
  if (m) return m;
  p = start;  // anything else - or a malformed element - is kept whole
  return CSmSource::_IeDecoder(p, end);
}

}  // namespace

bool CSmContext::ConstructContent(const unsigned char* ud, const char* text) {
  std::u16string units = hs::os::AnsiToUtf16(text ? text : "", text ? std::strlen(text) : 0);
  int size = static_cast<int>(units.size());
  std::vector<Placed> objects, formats;
  if (ud && ud[0]) {
    // The header is copied so the decoders, which take a writable cursor, never touch `ud`.
    std::vector<unsigned char> h(ud + 1, ud + 1 + std::min<int>(ud[0], kMaxUd - 1));
    unsigned char* p = h.data();
    const unsigned char* end = h.data() + h.size();
    while (end - p >= 2 && end - p - 2 >= p[1]) {
      unsigned char iei = p[0];
      if (iei == SMIE_CONCAT_8BIT || iei == SMIE_CONCAT_16BIT) {
        p += 2 + p[1];
        continue;
      }
      unsigned char* next = p + 2 + p[1];
      CSmMedia* m = DecodeIe(p, end);
      p = next;
      if (!m) continue;
      int pos = m->GetType() == SMOBJ_SOURCE ? 0 : std::min(m->GetPosition(), size);
      (m->GetType() == SMOBJ_TEXTFORMAT ? formats : objects).push_back({pos, m});
    }
  }
  std::stable_sort(objects.begin(), objects.end(),
                   [](const Placed& a, const Placed& b) { return a.pos < b.pos; });
  int base = m_smMatter.GetLastInsPos();
  int cursor = 0;
  auto addText = [&](int to) {
    if (to <= cursor) return;
    m_smMatter.AddItem(
        new CSmText(reinterpret_cast<const unsigned short*>(units.data() + cursor), to - cursor),
        false, true);
    cursor = to;
  };
  for (const Placed& o : objects) {
    addText(o.pos);
    m_smMatter.AddItem(o.item, false, true);
  }
  addText(size);
  // A range starts at the item position of its first character: after every object anchored at
  // or before that character.
  for (const Placed& f : formats) {
    int before = 0;
    for (const Placed& o : objects) before += o.pos <= f.pos ? o.item->GetUsedPosition() : 0;
    f.item->SetPosition(base + f.pos + before);
    m_smMatter.AddItem(f.item, false, false);
  }
  return true;
}

int CSmContext::GetEncodeInfo(bool* pbEnhanced, bool* pbLong, ME_SMS_ENCODE* pEncode) {
  hs::sms::Segmenter seg(m_smMatter, SMS_ENC_AUTO, m_nMaxUdOctets);
  int n = seg.Run(0, 0, nullptr);
  if (pbEnhanced) *pbEnhanced = m_smMatter.IsEnhancedContent();
  if (pbLong) *pbLong = n > 1;
  if (pEncode) *pEncode = seg.Coding();
  return n;
}

int CSmContext::CalcSmUsedCount(ME_SMS_ENCODE enc) {
  hs::sms::Segmenter seg(m_smMatter, enc, m_nMaxUdOctets);
  int n = seg.Run(0, 0, nullptr);
  m_nEncodeError = seg.Error();
  return n;
}

namespace {

// The message class bits of the data coding: bit 4 and the class, when a class is set.
unsigned char ClassBits(ESmClass c) {
  switch (c) {
    case SMCLASS_0:
      return 0x10;
    case SMCLASS_1:
      return 0x11;
    case SMCLASS_2:
      return 0x12;
    case SMCLASS_3:
      return 0x13;
    default:
      return 0;
  }
}

}  // namespace

int CSmContext::EncodeUserDataPdu(int nRef, std::vector<SM_UD_SEGMENT>* out, ME_SMS_ENCODE enc) {
  hs::sms::Segmenter seg(m_smMatter, enc, m_nMaxUdOctets);
  std::vector<SM_UD_SEGMENT> segs;
  int n = seg.Run(nRef & 0xFF, ClassBits(m_eClass), &segs);
  m_nEncodeError = seg.Error();
  if (out) *out = segs;
  return n;
}

int CSmContext::EncodeUserDataPduUseUCS2(int nRef, std::vector<SM_UD_SEGMENT>* out) {
  return EncodeUserDataPdu(nRef, out, SMS_ENC_UCS2);
}
