#include "handset/messaging/SmAnimation.h"

#include "messaging/sms/SmIo.h"

namespace {
constexpr unsigned char kPredefIei = 0x0D;
constexpr unsigned char kLargeIei = 0x0E;  // four frames of 16 x 16
constexpr unsigned char kSmallIei = 0x0F;  // four frames of 8 x 8
constexpr int kLargeBytes = 128;
constexpr int kSmallBytes = 32;
}  // namespace

CSmAnimation::CSmAnimation(int idx) : CSmMedia(SMOBJ_ANIMATION), m_nAnmIdx(idx) {
  m_nUsePos = 1;
}

int CSmAnimation::GetLength() const {
  return IsPredefAnimation() ? 0 : m_nRawSize;
}

bool CSmAnimation::GetData(int* idx) const {
  if (!IsPredefAnimation()) return false;
  if (idx) *idx = m_nAnmIdx;
  return true;
}

bool CSmAnimation::SetData(int idx) {
  FreeData();
  m_nAnmIdx = idx;
  return true;
}

CSmMedia* CSmAnimation::Clone() const {
  return new CSmAnimation(*this);
}

int CSmAnimation::EstimateEncodeSize(bool bOctets, ME_SMS_ENCODE) const {
  int octets = IsPredefAnimation() ? 4 : 0;
  return bOctets ? octets : octets * 8;
}

int CSmAnimation::Encoder(ME_SMS_ENCODE, unsigned char*& out, int& room) {
  if (!IsPredefAnimation() || !out || room < 4) return 0;
  out[0] = kPredefIei;
  out[1] = 2;
  out[2] = static_cast<unsigned char>(GetPosition());
  out[3] = static_cast<unsigned char>(m_nAnmIdx % 15);
  out += 4;
  room -= 4;
  return 4;
}

bool CSmAnimation::PackData(const char* prefix, CPackageBlk& blk) const {
  CSmMedia::PackData(prefix, blk);
  hs::sms::PutInt(blk, prefix, ".m_nAnmIdx", m_nAnmIdx);
  return true;
}

bool CSmAnimation::UnpackData(const char* prefix, CUnpackageBlk& blk) {
  CSmMedia::UnpackData(prefix, blk);
  m_nAnmIdx = -1;
  hs::sms::GetInt(blk, prefix, ".m_nAnmIdx", &m_nAnmIdx);
  return true;
}

bool CSmAnimation::Load(CArchive& ar) {
  int32_t pos = 0, idx = 0;
  ar >> pos >> idx;
  if (!ar.IsGood()) return false;
  SetData(static_cast<int>(idx));
  m_nBeginPos = pos;
  return true;
}

bool CSmAnimation::Save(CArchive& ar) {
  ar << static_cast<uint8_t>(m_eType) << static_cast<int32_t>(m_nBeginPos)
     << static_cast<int32_t>(m_nAnmIdx);
  return ar.IsGood();
}

CSmMedia* CSmAnimation::_IeDecoder(unsigned char*& p) {
  return p ? _IeDecoder(p, p + 2 + p[1]) : nullptr;
}

CSmMedia* CSmAnimation::_IeDecoder(unsigned char*& p, const unsigned char* end) {
  if (!p || end - p < 2) return nullptr;
  unsigned char iei = p[0];
  int len = p[1];
  if (end - p - 2 < len) return nullptr;
  CSmAnimation* a = nullptr;
  if (iei == kPredefIei && len >= 2) {
    a = new CSmAnimation(p[3]);
  } else if ((iei == kLargeIei && len == kLargeBytes + 1) ||
             (iei == kSmallIei && len == kSmallBytes + 1)) {
    a = new CSmAnimation(-1);
    a->CSmMedia::SetData(p + 3, len - 1);
  } else {
    return nullptr;
  }
  a->m_nBeginPos = p[2];
  p += 2 + len;
  return a;
}
