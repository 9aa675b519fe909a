#include "handset/messaging/SmAssemble.h"

#include <cstring>

#include "handset/messaging/SmContext.h"

constexpr int CSmAssemble::kPartTextBytes;
constexpr int CSmAssemble::kPartUdBytes;

void CSmAssemble::Reset() {
  std::memset(m_parts, 0, sizeof m_parts);
  m_nTotal = 0;
  m_nReceived = 0;
  m_nRef = -1;
  m_pTarget = nullptr;
}

bool CSmAssemble::SetTarget(int ref, int total, CSmContext* target) {
  if (ref < 0 || total < 1 || total > SM_MAX_PARTS) return false;
  Reset();
  m_nTotal = total;
  m_nRef = ref;
  m_pTarget = target;
  return true;
}

bool CSmAssemble::CanAddPart(int ref, int seq, int total) const {
  return ref == m_nRef && total == m_nTotal && seq >= 1 && seq <= m_nTotal &&
         !m_parts[seq - 1].bReceived;
}

bool CSmAssemble::AddPart(int seq, const char* text160, const unsigned char* ud140, bool bCount) {
  if (seq < 1 || seq > m_nTotal) return false;
  Part& p = m_parts[seq - 1];
  if (!p.bReceived) {
    p.bReceived = 1;
    // Copied up to the terminator only: a caller's text may be shorter than the field.
    size_t n = 0;
    while (text160 && n + 1 < sizeof p.szText && text160[n]) ++n;
    if (n) std::memcpy(p.szText, text160, n);
    p.szText[n] = '\0';
    if (ud140) std::memcpy(p.abUd, ud140, sizeof p.abUd);
    ++m_nReceived;
  }
  if (bCount && m_pTarget) m_pTarget->AddRef();
  return true;
}

bool CSmAssemble::CanAssemble() const {
  if (m_nTotal < 1) return false;
  for (int i = 0; i < m_nTotal; ++i)
    if (!m_parts[i].bReceived) return false;
  return true;
}

bool CSmAssemble::DoAssemble(CSmContext* ctx) {
  if (!m_pTarget) m_pTarget = ctx;
  if (!m_pTarget) return false;
  static const unsigned char kNoHeader[kPartUdBytes] = {};
  for (int i = 0; i < m_nTotal; ++i) {
    const Part& p = m_parts[i];
    if (p.bReceived)
      m_pTarget->ConstructContent(p.abUd, p.szText);
    else
      m_pTarget->ConstructContent(kNoHeader, "{...}");
  }
  if (ctx && ctx != m_pTarget) *ctx = *m_pTarget;
  return true;
}
