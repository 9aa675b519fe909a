#include "handset/melody/MidNoteElement.h"

#include <new>

#if defined(__SANITIZE_ADDRESS__)
#define HS_NOTE_POOL 0
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define HS_NOTE_POOL 0
#endif
#endif
#ifndef HS_NOTE_POOL
#define HS_NOTE_POOL 1
#endif

namespace {

// Freed notes of this thread, linked through their first bytes. Kept out of sanitizer builds so
// that a note used after deletion is still reported. The list itself is trivially destructible
// (no per-access guard); a separate per-thread cleaner, armed on first use, frees it at exit.
struct NodeLink {
  NodeLink* next;
};
struct NotePool {
  NodeLink* head;
  size_t count;
  bool armed;
};
thread_local NotePool t_pool = {nullptr, 0, false};
constexpr size_t kMaxKeptNotes = 1 << 16;

struct NotePoolCleaner {
  ~NotePoolCleaner() {
    while (t_pool.head) {
      NodeLink* n = t_pool.head;
      t_pool.head = n->next;
      ::operator delete(n);
    }
    t_pool.count = 0;
  }
};

}  // namespace

void* CMidNoteElement::operator new(size_t size) {
  if (HS_NOTE_POOL && size == sizeof(CMidNoteElement) && t_pool.head) {
    NodeLink* n = t_pool.head;
    t_pool.head = n->next;
    --t_pool.count;
    return n;
  }
  return ::operator new(size);
}

void CMidNoteElement::operator delete(void* p, size_t size) {
  if (!p) return;
  if (HS_NOTE_POOL && size == sizeof(CMidNoteElement) && t_pool.count < kMaxKeptNotes) {
    if (!t_pool.armed) {
      static thread_local NotePoolCleaner cleaner;
      (void)cleaner;
      t_pool.armed = true;
    }
    NodeLink* n = static_cast<NodeLink*>(p);
    n->next = t_pool.head;
    t_pool.head = n;
    ++t_pool.count;
    return;
  }
  ::operator delete(p);
}

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
