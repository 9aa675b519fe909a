#include "handset/messaging/SmHtml.h"

#include <cstring>
#include <vector>

#include "messaging/sms/SmIo.h"
#include "platform/Os.h"

CSmHtml::CSmHtml(const CSmHtml& other) : CSmMedia(other) {
  SetData(other.Bytes(), other.StoredSize());
  m_nBeginPos = other.m_nBeginPos;
}

CSmHtml& CSmHtml::operator=(const CSmHtml& other) {
  if (this != &other) {
    CSmMedia::operator=(other);
    SetData(other.Bytes(), other.StoredSize());
    m_nBeginPos = other.m_nBeginPos;
  }
  return *this;
}

int CSmHtml::StoredSize() const {
  // The size field is public; never trust it beyond the block actually held.
  if (!m_pvRawData || m_nSize <= 0) return 0;
  return m_nSize < m_nRawSize ? m_nSize : m_nRawSize;
}

void* CSmHtml::GetData() {
  return m_pvRawData;
}

int CSmHtml::GetLength() const {
  return m_nSize;
}

bool CSmHtml::SetData(const unsigned char* p, int n) {
  FreeData();
  m_nSize = 0;
  if (n < 0 || n == 0x7FFFFFFF) return false;
  std::vector<unsigned char> block(static_cast<size_t>(n) + 1, 0);
  if (p && n) std::memcpy(block.data(), p, static_cast<size_t>(n));
  if (!CSmMedia::SetData(block.data(), n + 1)) return false;
  // The block keeps its NUL; the recorded sizes are those of the HTML itself.
  m_nSize = m_nRawSize = n;
  return true;
}

CSmMedia* CSmHtml::Clone() const {
  return new CSmHtml(*this);
}

int CSmHtml::EstimateEncodeSize(bool, ME_SMS_ENCODE) const {
  return 0;
}

int CSmHtml::Encoder(ME_SMS_ENCODE, unsigned char*&, int&) {
  return 0;
}

bool CSmHtml::PackData(const char* prefix, CPackageBlk& blk) const {
  CSmMedia::PackData(prefix, blk);
  hs::sms::PutInt(blk, prefix, ".m_nSize", m_nSize);
  return true;
}

bool CSmHtml::UnpackData(const char* prefix, CUnpackageBlk& blk) {
  CSmMedia::UnpackData(prefix, blk);
  m_nSize = 0;
  hs::sms::GetInt(blk, prefix, ".m_nSize", &m_nSize);
  // Rebuilt through SetData so the block is terminated again; a stored size beyond the stored
  // block is cut to it.
  std::vector<unsigned char> bytes(Bytes(), Bytes() + StoredSize());
  SetData(bytes.data(), static_cast<int>(bytes.size()));
  return true;
}

bool CSmHtml::Load(CArchive& ar) {
  int32_t n = 0;
  ar >> n;
  std::vector<uint8_t> bytes;
  if (!ar.IsGood() || !hs::sms::ReadBlock(ar, n, &bytes)) return false;
  return SetData(bytes.data(), n);
}

bool CSmHtml::Save(CArchive& ar) {
  ar << static_cast<uint8_t>(m_eType) << static_cast<int32_t>(StoredSize());
  if (StoredSize() > 0) ar.Write(m_pvRawData, static_cast<size_t>(StoredSize()));
  return ar.IsGood();
}

bool CSmHtml::SaveAs(const char* path) const {
  if (!path) return false;
  return hs::os::WriteFileAtomic(path, m_pvRawData, static_cast<size_t>(StoredSize()));
}

CSmMedia* CSmHtml::_IeDecoder(unsigned char*&) {
  return nullptr;
}
