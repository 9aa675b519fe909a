#include "handset/messaging/SmMedia.h"

#include <cstdlib>
#include <cstring>

#include "messaging/sms/SmIo.h"

CSmMedia::CSmMedia(const CSmMedia& other)
    : m_eType(other.m_eType),
      m_nBeginPos(other.m_nBeginPos),
      m_nUsePos(other.m_nUsePos),
      m_nUserAnchor(other.m_nUserAnchor) {
  if (other.m_pvRawData && other.m_nRawSize > 0)
    CSmMedia::SetData(other.m_pvRawData, other.m_nRawSize);
}

CSmMedia& CSmMedia::operator=(const CSmMedia& other) {
  if (this == &other) return *this;
  FreeData();
  m_eType = other.m_eType;
  m_nBeginPos = other.m_nBeginPos;
  m_nUsePos = other.m_nUsePos;
  m_nUserAnchor = other.m_nUserAnchor;
  if (other.m_pvRawData && other.m_nRawSize > 0)
    CSmMedia::SetData(other.m_pvRawData, other.m_nRawSize);
  return *this;
}

CSmMedia::~CSmMedia() {
  FreeData();
}

void CSmMedia::FreeData() {
  std::free(m_pvRawData);
  m_pvRawData = nullptr;
  m_nRawSize = 0;
}

void CSmMedia::Reset() {
  FreeData();
  m_nBeginPos = 0;
}

void* CSmMedia::GetData() {
  return m_pvRawData;
}

int CSmMedia::GetLength() const {
  return m_nRawSize;
}

int CSmMedia::GetPosition() const {
  return m_nBeginPos;
}

void CSmMedia::SetPosition(int pos) {
  m_nBeginPos = pos;
}

bool CSmMedia::SetData(const void* p, int n) {
  if (n <= 0) {
    FreeData();
    return false;
  }
  // A block that is part of this item's own data cannot be copied into after reallocation.
  const unsigned char* src = static_cast<const unsigned char*>(p);
  const unsigned char* own = Bytes();
  if (src && own && src >= own && src < own + m_nRawSize) {
    void* copy = std::malloc(static_cast<size_t>(n));
    if (!copy) return false;
    std::memcpy(copy, src, static_cast<size_t>(n));
    std::free(m_pvRawData);
    m_pvRawData = copy;
    m_nRawSize = n;
    return true;
  }
  void* block = m_pvRawData ? std::realloc(m_pvRawData, static_cast<size_t>(n))
                            : std::calloc(static_cast<size_t>(n), 1);
  if (!block) return false;  // the old block stays as it was
  m_pvRawData = block;
  if (src)
    std::memcpy(block, src, static_cast<size_t>(n));
  else
    std::memset(block, 0, static_cast<size_t>(n));
  m_nRawSize = n;
  return true;
}

bool CSmMedia::PackData(const char* prefix, CPackageBlk& blk) const {
  using namespace hs::sms;
  PutInt(blk, prefix, ".m_eType", m_eType);
  PutInt(blk, prefix, ".m_nBeginPos", m_nBeginPos);
  PutInt(blk, prefix, ".m_nUsePos", m_nUsePos);
  blk.Add(Key(prefix, ".m_pvRawData").c_str(), m_pvRawData,
          m_pvRawData ? static_cast<uint32_t>(m_nRawSize) : 0);
  PutInt(blk, prefix, ".m_nUserAnchor", m_nUserAnchor);
  return true;
}

bool CSmMedia::UnpackData(const char* prefix, CUnpackageBlk& blk) {
  using namespace hs::sms;
  Reset();
  int32_t v = 0;
  if (GetInt(blk, prefix, ".m_eType", &v)) m_eType = static_cast<ESmObjType>(v);
  GetInt(blk, prefix, ".m_nBeginPos", &m_nBeginPos);
  GetInt(blk, prefix, ".m_nUsePos", &m_nUsePos);
  const uint8_t* data = nullptr;
  uint32_t size = 0;
  if (GetBytes(blk, prefix, ".m_pvRawData", &data, &size) && size > 0 && size <= 0x7FFFFFFF)
    CSmMedia::SetData(data, static_cast<int>(size));
  GetInt(blk, prefix, ".m_nUserAnchor", &m_nUserAnchor);
  return true;
}

void CSmMedia::Dump() const {}
