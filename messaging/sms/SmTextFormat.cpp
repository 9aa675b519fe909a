#include "handset/messaging/SmTextFormat.h"

#include "messaging/sms/SmIo.h"

namespace {
constexpr unsigned char kIei = 0x0A;
constexpr int kIeSize = 6;
}  // namespace

CSmMedia* CSmTextFormat::Clone() const {
  return new CSmTextFormat(*this);
}

int CSmTextFormat::EstimateEncodeSize(bool bOctets, ME_SMS_ENCODE) const {
  return bOctets ? kIeSize : kIeSize * 8;
}

int CSmTextFormat::Encoder(ME_SMS_ENCODE, unsigned char*& out, int& room) {
  if (!out || room < kIeSize) return 0;
  out[0] = kIei;
  out[1] = 4;
  out[2] = static_cast<unsigned char>(GetPosition());
  out[3] = static_cast<unsigned char>(m_nEffectLen);
  out[4] = m_cFormat;
  out[5] = m_cColor;
  out += kIeSize;
  room -= kIeSize;
  return kIeSize;
}

bool CSmTextFormat::PackData(const char* prefix, CPackageBlk& blk) const {
  using namespace hs::sms;
  PutInt(blk, prefix, ".m_eType", m_eType);
  PutInt(blk, prefix, ".m_nBeginPos", m_nBeginPos);
  PutInt(blk, prefix, ".m_nUsePos", m_nUsePos);
  PutInt(blk, prefix, ".m_nUserAnchor", m_nUserAnchor);
  PutInt(blk, prefix, ".m_cFormat", m_cFormat);
  PutInt(blk, prefix, ".m_cColor", m_cColor);
  PutInt(blk, prefix, ".m_nEffectLen", m_nEffectLen);
  return true;
}

bool CSmTextFormat::UnpackData(const char* prefix, CUnpackageBlk& blk) {
  using namespace hs::sms;
  Reset();
  m_cFormat = 3;
  m_cColor = 9;
  m_nEffectLen = 0;
  int32_t v = 0;
  if (GetInt(blk, prefix, ".m_eType", &v)) m_eType = static_cast<ESmObjType>(v);
  GetInt(blk, prefix, ".m_nBeginPos", &m_nBeginPos);
  GetInt(blk, prefix, ".m_nUsePos", &m_nUsePos);
  GetInt(blk, prefix, ".m_nUserAnchor", &m_nUserAnchor);
  if (GetInt(blk, prefix, ".m_cFormat", &v)) m_cFormat = static_cast<unsigned char>(v);
  if (GetInt(blk, prefix, ".m_cColor", &v)) m_cColor = static_cast<unsigned char>(v);
  GetInt(blk, prefix, ".m_nEffectLen", &m_nEffectLen);
  return true;
}

bool CSmTextFormat::Load(CArchive& ar) {
  int32_t pos = 0, len = 0;
  uint8_t format = 0, color = 0;
  ar >> pos >> format >> color >> len;
  if (!ar.IsGood()) return false;
  m_nBeginPos = pos;
  m_cFormat = format;
  m_cColor = color;
  m_nEffectLen = len;
  return true;
}

bool CSmTextFormat::Save(CArchive& ar) {
  ar << static_cast<uint8_t>(m_eType) << static_cast<int32_t>(m_nBeginPos) << m_cFormat << m_cColor
     << static_cast<int32_t>(m_nEffectLen);
  return ar.IsGood();
}

CSmMedia* CSmTextFormat::_IeDecoder(unsigned char*& p) {
  return p ? _IeDecoder(p, p + 2 + p[1]) : nullptr;
}

CSmMedia* CSmTextFormat::_IeDecoder(unsigned char*& p, const unsigned char* end) {
  if (!p || end - p < 2 || p[0] != kIei) return nullptr;
  int len = p[1];
  if (end - p - 2 < len || len < 3) return nullptr;
  CSmTextFormat* f = new CSmTextFormat;
  f->m_nBeginPos = p[2];
  f->m_nEffectLen = p[3];
  f->m_cFormat = p[4];
  if (len >= 4) f->m_cColor = p[5];
  p += 2 + len;
  return f;
}
