#include "handset/messaging/SmUserData.h"

#include <algorithm>
#include <cstring>
#include <string>

#include "handset/messaging/SmContext.h"
#include "handset/platform/GsmCodec.h"
#include "handset/platform/Results.h"
#include "platform/Os.h"

namespace {

constexpr int kMaxUd = 140;
constexpr int kMaxSeptets = 160;

bool Printable(const std::vector<uint8_t>& bytes) {
  for (uint8_t b : bytes)
    if (!((b >= 0x20 && b < 0x7F) || b == '\r' || b == '\n' || b == '\t')) return false;
  return true;
}

}  // namespace

ESmAlphabet CSmUserData::AlphabetOfDcs(unsigned char dcs, bool* compressed, int* msgClass) {
  bool comp = false;
  int cls = -1;
  ESmAlphabet a = SMALPHA_GSM7;
  unsigned group = dcs >> 4;
  if (group <= 0x7) {  // general data coding, with or without automatic deletion
    comp = (dcs & 0x20) != 0;
    if (dcs & 0x10) cls = dcs & 3;
    unsigned alpha = (dcs >> 2) & 3;
    a = alpha == 1 ? SMALPHA_8BIT : alpha == 2 ? SMALPHA_UCS2 : SMALPHA_GSM7;
  } else if (group == 0xE) {  // message waiting, store, UCS-2
    a = SMALPHA_UCS2;
  } else if (group == 0xF) {  // data coding and message class
    a = (dcs & 4) ? SMALPHA_8BIT : SMALPHA_GSM7;
    cls = dcs & 3;
  }
  if (compressed) *compressed = comp;
  if (msgClass) *msgClass = cls;
  return a;
}

int CSmUserData::Decode(unsigned char dcs, bool udhi, int udl, const unsigned char* ud,
                        int length) {
  *this = CSmUserData();
  bool compressed = false;
  m_eAlphabet = AlphabetOfDcs(dcs, &compressed, nullptr);
  if (compressed) return hs::sms::kErrCompressed;
  if (!ud) length = 0;
  bool gsm = m_eAlphabet == SMALPHA_GSM7;
  if (udl < 0 || udl > (gsm ? kMaxSeptets : kMaxUd)) return hs::sms::kErrUdlRange;
  int octets = gsm ? (udl * 7 + 7) / 8 : udl;
  if (octets > length) return hs::sms::kErrUdShort;
  int headerOctets = 0;
  if (udhi && octets > 0) {
    headerOctets = ud[0] + 1;
    if (headerOctets > octets) return hs::sms::kErrUdhLength;
    m_header.assign(ud, ud + headerOctets);
  }
  m_body.assign(ud + headerOctets, ud + octets);
  if (gsm) {
    int headerSeptets = (headerOctets * 8 + 6) / 7;
    if (headerSeptets > udl) return hs::sms::kErrUdhLength;
    m_nFillBits = headerSeptets * 7 - headerOctets * 8;
    unsigned char septets[kMaxSeptets];
    int n = UnpackGsm7Bit(ud + headerOctets, octets - headerOctets, m_nFillBits,
                          udl - headerSeptets, septets);
    unsigned short units[kMaxSeptets];
    int u = Gsm7BitToUCS2(septets, n, units, kMaxSeptets);
    m_text = hs::os::Utf16ToAnsi(reinterpret_cast<const char16_t*>(units), static_cast<size_t>(u));
    m_nTextLength = n;
  } else if (m_eAlphabet == SMALPHA_UCS2) {
    std::u16string units;
    for (size_t i = 0; i + 1 < m_body.size(); i += 2)
      units.push_back(static_cast<char16_t>((m_body[i] << 8) | m_body[i + 1]));
    m_text = hs::os::Utf16ToAnsi(units.data(), units.size());
    m_nTextLength = static_cast<int>(m_body.size());
  } else {
    if (Printable(m_body)) m_text.assign(m_body.begin(), m_body.end());
    m_nTextLength = static_cast<int>(m_body.size());
  }
  return hs::sms::kOk;
}

std::vector<uint8_t> CSmUserData::GetUd140() const {
  std::vector<uint8_t> ud(m_header);
  ud.resize(kMaxUd, 0);
  return ud;
}

bool CSmUserData::GetConcat(int* ref, int* total, int* seq) const {
  if (m_header.empty()) return false;
  const unsigned char* ie = CSmContext::FindInfoElement(m_header.data(), SMIE_CONCAT_8BIT);
  int r = 0;
  if (ie && ie[1] == 3) {
    r = ie[2];
    ie += 3;
  } else {
    ie = CSmContext::FindInfoElement(m_header.data(), SMIE_CONCAT_16BIT);
    if (!ie || ie[1] != 4) return false;
    r = (ie[2] << 8) | ie[3];
    ie += 4;
  }
  if (ref) *ref = r;
  if (total) *total = ie[0];
  if (seq) *seq = ie[1];
  return true;
}

bool CSmUserData::ToContent(CSmContext* ctx) const {
  if (!ctx) return false;
  std::vector<uint8_t> ud = GetUd140();
  ctx->ConstructContent(ud.data(), m_text.c_str());
  if (m_eAlphabet == SMALPHA_8BIT && m_text.empty() && !m_body.empty()) {
    CSmSource* s = new CSmSource;
    s->SetData(m_body.data(), static_cast<int>(m_body.size()));
    ctx->GetContent()->AddItem(s, false, true);
  }
  return true;
}
