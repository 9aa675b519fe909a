#include "handset/audio/ByteBlock.h"

#include <cstring>

CByteBlock::CByteBlock(uint32_t size)
    : m_nSize(size), m_pData(size ? new unsigned char[size]() : nullptr) {}

CByteBlock::~CByteBlock() {
  Free();
}

void CByteBlock::Attach(void* data, uint32_t size) {
  unsigned char* p = static_cast<unsigned char*>(data);
  if (p == m_pData) {
    m_nSize = p ? size : 0;
    return;
  }
  Free();
  m_pData = p;
  m_nSize = p ? size : 0;
}

bool CByteBlock::CopyIn(const void* source, uint32_t offset, uint32_t count, uint32_t* copied) {
  if (copied) *copied = 0;
  if (!m_pData || !source) return false;
  uint32_t n = count < m_nSize ? count : m_nSize;
  if (n) std::memcpy(m_pData, static_cast<const unsigned char*>(source) + offset, n);
  if (copied) *copied = n;
  return true;
}

bool CByteBlock::HandOver(CByteBlock& target) {
  if (&target == this) return false;
  target.Free();
  target.m_pData = m_pData;
  target.m_nSize = m_nSize;
  m_pData = nullptr;
  m_nSize = 0;
  return true;
}

void CByteBlock::Free() {
  delete[] m_pData;
  m_pData = nullptr;
  m_nSize = 0;
}
