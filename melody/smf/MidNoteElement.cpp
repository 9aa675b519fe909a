#include "handset/melody/MidNoteElement.h"

CMidNoteElement::CMidNoteElement() = default;

CMidNoteElement::CMidNoteElement(uint32_t startTime, uint32_t stopTime, uint8_t noteValue,
                                 uint8_t velocity)
    : m_nStartTime(startTime),
      m_nStopTime(stopTime),
      m_byNoteValue(noteValue),
      m_byVelocity(velocity) {}

CMidNoteElement::~CMidNoteElement() = default;

uint32_t CMidNoteElement::GetDuration() const {
  return m_nStopTime > m_nStartTime ? m_nStopTime - m_nStartTime : 0;
}

uint32_t CMidNoteElement::GetDeltaTime() const {
  if (!m_pPrevElement) return m_nStartTime;
  uint32_t prev = m_pPrevElement->m_nStartTime;
  return m_nStartTime >= prev ? m_nStartTime - prev : 0;
}

CMidNoteElement* CMidNoteElement::Duplicate() const {
  CMidNoteElement* n = new CMidNoteElement(m_nStartTime, m_nStopTime, m_byNoteValue, m_byVelocity);
  n->m_nDeltaTime = m_nDeltaTime;
  return n;
}

void CMidNoteElement::AppendNoteEvent(CMidNoteElement* note) {
  if (!note) return;
  CMidNoteElement* last = this;
  while (last->m_pNextElement) last = last->m_pNextElement;
  last->m_pNextElement = note;
  note->m_pPrevElement = last;
  note->m_pNextElement = nullptr;
}

CMidNoteElement* CMidNoteElement::RewindSearchNoteByNoteValue(uint8_t key) {
  for (CMidNoteElement* n = this; n; n = n->m_pPrevElement)
    if (n->m_byNoteValue == key) return n;
  return nullptr;
}

void CMidNoteElement::InsertNoteBefore(CMidNoteElement* note) {
  if (!note) return;
  note->m_pPrevElement = m_pPrevElement;
  note->m_pNextElement = this;
  if (m_pPrevElement) m_pPrevElement->m_pNextElement = note;
  m_pPrevElement = note;
}

void CMidNoteElement::ModifyDataChainBeforeDel() {
  if (m_pPrevElement) m_pPrevElement->m_pNextElement = m_pNextElement;
  if (m_pNextElement) m_pNextElement->m_pPrevElement = m_pPrevElement;
  m_pPrevElement = nullptr;
  m_pNextElement = nullptr;
}
