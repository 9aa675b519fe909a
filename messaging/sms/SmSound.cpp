#include "handset/messaging/SmSound.h"

#include <cctype>
#include <cstring>
#include <string>
#include <vector>

#include "messaging/sms/SmIo.h"

namespace {
constexpr unsigned char kPredefIei = 0x0B;
constexpr unsigned char kMelodyIei = 0x0C;
}  // namespace

CSmSound::CSmSound(int idx)
    : CSmMedia(idx != -1 ? SMOBJ_PREDEF_SOUND : SMOBJ_USER_MELODY), m_nSoundIdx(idx) {
  m_nUsePos = 1;
}

void* CSmSound::GetData() {
  return m_pvRawData;
}

int CSmSound::GetLength() const {
  if (IsPredefSound() || !m_pvRawData || m_nRawSize <= 0) return 0;
  const void* nul = std::memchr(m_pvRawData, 0, static_cast<size_t>(m_nRawSize));
  return nul ? static_cast<int>(static_cast<const char*>(nul) -
                                static_cast<const char*>(m_pvRawData))
             : m_nRawSize;
}

bool CSmSound::GetData(int* idx) const {
  if (!IsPredefSound()) return false;
  if (idx) *idx = m_nSoundIdx;
  return true;
}

bool CSmSound::SetData(const char* melody) {
  std::string copy = melody ? melody : "";
  FreeData();
  m_nSoundIdx = -1;
  m_eType = SMOBJ_USER_MELODY;
  return copy.size() + 1 <= 0x7FFFFFFF &&
         CSmMedia::SetData(copy.c_str(), static_cast<int>(copy.size() + 1));
}

bool CSmSound::SetData(int idx) {
  FreeData();
  m_nSoundIdx = idx;
  m_eType = SMOBJ_PREDEF_SOUND;
  return true;
}

CSmMedia* CSmSound::Clone() const {
  return new CSmSound(*this);
}

int CSmSound::EstimateEncodeSize(bool bOctets, ME_SMS_ENCODE) const {
  int octets = IsPredefSound() ? 4 : GetLength() + 3;
  return bOctets ? octets : octets * 8;
}

int CSmSound::Encoder(ME_SMS_ENCODE, unsigned char*& out, int& room) {
  if (!out) return 0;
  if (IsPredefSound()) {
    if (room < 4) return 0;
    out[0] = kPredefIei;
    out[1] = 2;
    out[2] = static_cast<unsigned char>(GetPosition());
    out[3] = static_cast<unsigned char>(m_nSoundIdx % 10);
    out += 4;
    room -= 4;
    return 4;
  }
  int n = GetLength();
  const char* text = static_cast<const char*>(m_pvRawData);
  // The IE length octet counts the position octet too, so a melody has at most 254 bytes.
  if (n == 0 || n + 1 > 255 || room < n + 3) return 0;
  std::string checked(text, static_cast<size_t>(n));
  if (!IsValidIMelodyFormat(checked.c_str())) return 0;
  out[0] = kMelodyIei;
  out[1] = static_cast<unsigned char>(n + 1);
  out[2] = static_cast<unsigned char>(GetPosition());
  std::memcpy(out + 3, text, static_cast<size_t>(n));
  out += n + 3;
  room -= n + 3;
  return n + 3;
}

bool CSmSound::IsValidIMelodyFormat(const char* text) {
  if (!text || !*text) return false;
  std::string up(text);
  for (char& c : up) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
  static const char kBegin[] = "BEGIN:IMELODY\r\n";
  if (up.compare(0, 15, kBegin) != 0) return false;
  size_t melody = up.find("MELODY:", 15);
  if (melody == std::string::npos) return false;
  return up.find("END:IMELODY", melody + 7) != std::string::npos;
}

bool CSmSound::PackData(const char* prefix, CPackageBlk& blk) const {
  CSmMedia::PackData(prefix, blk);
  hs::sms::PutInt(blk, prefix, ".m_nSoundIdx", m_nSoundIdx);
  return true;
}

bool CSmSound::UnpackData(const char* prefix, CUnpackageBlk& blk) {
  CSmMedia::UnpackData(prefix, blk);
  m_nSoundIdx = -1;
  hs::sms::GetInt(blk, prefix, ".m_nSoundIdx", &m_nSoundIdx);
  // A melody text stored without its NUL is terminated after its bytes.
  if (m_pvRawData && !std::memchr(m_pvRawData, 0, static_cast<size_t>(m_nRawSize))) {
    std::string s(static_cast<const char*>(m_pvRawData), static_cast<size_t>(m_nRawSize));
    CSmMedia::SetData(s.c_str(), m_nRawSize + 1);
  }
  return true;
}

bool CSmSound::Load(CArchive& ar) {
  int32_t pos = 0, idx = 0;
  ar >> pos >> idx;
  if (!ar.IsGood()) return false;
  if (idx == -1) {
    int32_t n = 0;
    ar >> n;
    std::vector<uint8_t> bytes;
    if (!ar.IsGood() || !hs::sms::ReadBlock(ar, n, &bytes)) return false;
    bytes.push_back(0);
    SetData(reinterpret_cast<const char*>(bytes.data()));
  } else {
    SetData(static_cast<int>(idx));
  }
  m_nBeginPos = pos;
  return true;
}

bool CSmSound::Save(CArchive& ar) {
  ar << static_cast<uint8_t>(m_eType) << static_cast<int32_t>(m_nBeginPos)
     << static_cast<int32_t>(m_nSoundIdx);
  if (m_nSoundIdx == -1) {
    int n = GetLength();
    ar << static_cast<int32_t>(n + 1);
    if (n) ar.Write(m_pvRawData, static_cast<size_t>(n));
    ar << static_cast<uint8_t>(0);
  }
  return ar.IsGood();
}

CSmMedia* CSmSound::_IeDecoder(unsigned char*& p) {
  return p ? _IeDecoder(p, p + 2 + p[1]) : nullptr;
}

CSmMedia* CSmSound::_IeDecoder(unsigned char*& p, const unsigned char* end) {
  if (!p || end - p < 2 || (p[0] != kPredefIei && p[0] != kMelodyIei)) return nullptr;
  int len = p[1];
  if (end - p - 2 < len) return nullptr;
  CSmSound* s = nullptr;
  if (p[0] == kPredefIei) {
    if (len < 2) return nullptr;
    s = new CSmSound(p[3]);
  } else {
    if (len < 1) return nullptr;
    s = new CSmSound(-1);
    s->SetData(
        std::string(reinterpret_cast<const char*>(p + 3), static_cast<size_t>(len - 1)).c_str());
  }
  s->m_nBeginPos = p[2];
  p += 2 + len;
  return s;
}
