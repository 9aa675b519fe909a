#include "handset/messaging/SmSource.h"

#include <vector>

#include "messaging/sms/SmIo.h"
#include "platform/Os.h"

int CSmSource::StoredSize() const {
  // The size field is public; never trust it beyond the block actually held.
  if (!m_pvRawData || m_nSize <= 0) return 0;
  return m_nSize < m_nRawSize ? m_nSize : m_nRawSize;
}

void* CSmSource::GetData() {
  return m_pvRawData;
}

int CSmSource::GetLength() const {
  return m_nSize;
}

bool CSmSource::SetData(const unsigned char* p, int n) {
  FreeData();
  m_nSize = 0;
  if (n <= 0) return false;
  std::vector<unsigned char> copy(p, p + n);
  if (!CSmMedia::SetData(copy.data(), n)) return false;
  m_nSize = n;
  return true;
}

CSmMedia* CSmSource::Clone() const {
  return new CSmSource(*this);
}

int CSmSource::EstimateEncodeSize(bool, ME_SMS_ENCODE) const {
  return 0;
}

int CSmSource::Encoder(ME_SMS_ENCODE, unsigned char*&, int&) {
  return 0;
}

bool CSmSource::PackData(const char* prefix, CPackageBlk& blk) const {
  CSmMedia::PackData(prefix, blk);
  hs::sms::PutInt(blk, prefix, ".m_nSize", m_nSize);
  return true;
}

bool CSmSource::UnpackData(const char* prefix, CUnpackageBlk& blk) {
  CSmMedia::UnpackData(prefix, blk);
  m_nSize = 0;
  hs::sms::GetInt(blk, prefix, ".m_nSize", &m_nSize);
  m_nSize = StoredSize();
  return true;
}

bool CSmSource::Load(CArchive& ar) {
  int32_t n = 0;
  ar >> n;
  std::vector<uint8_t> bytes;
  if (!ar.IsGood() || !hs::sms::ReadBlock(ar, n, &bytes)) return false;
  FreeData();
  m_nSize = 0;
  if (n > 0) SetData(bytes.data(), n);
  return true;
}

bool CSmSource::Save(CArchive& ar) {
  ar << static_cast<uint8_t>(m_eType) << static_cast<int32_t>(StoredSize());
  if (StoredSize() > 0) ar.Write(m_pvRawData, static_cast<size_t>(StoredSize()));
  return ar.IsGood();
}

bool CSmSource::SaveAs(const char* path) const {
  if (!path) return false;
  return hs::os::WriteFileAtomic(path, m_pvRawData, static_cast<size_t>(StoredSize()));
}

CSmMedia* CSmSource::_IeDecoder(unsigned char*& p) {
  return p ? _IeDecoder(p, p + 2 + p[1]) : nullptr;
}

CSmMedia* CSmSource::_IeDecoder(unsigned char*& p, const unsigned char* end) {
  if (!p || end - p < 2 || end - p - 2 < p[1]) return nullptr;
  CSmSource* s = new CSmSource;
  s->SetData(p, 2 + p[1]);
  p += 2 + p[1];
  return s;
}
