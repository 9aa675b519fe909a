#include "handset/melody/MidTrackElement.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <iterator>

namespace {

struct DurationRow {
  int id;
  uint32_t ticks;
};

// Ascending by length: the "first longer row" rule depends on this order.
const DurationRow kDurations[] = {{10, 15},   {11, 22},   {20, 30},   {21, 45},
                                  {40, 60},   {41, 90},   {80, 120},  {81, 180},
                                  {160, 240}, {161, 360}, {320, 480}, {321, 720}};

// Gaps shorter than half a thirty-second (at 120 ticks per quarter) are articulation, not rests.
const double kMinRestTicks = 7.5;
const double kWholeTicks = 480.0;
const double kLongestTicks = 720.0;
const double kMaxRestTicks = 16 * 480.0;

// A note's note-off time; an open note (stop 0) ends where it starts.
uint32_t OffTime(const CMidNoteElement* n) {
  return n->GetStopTime() < n->GetStartTime() ? n->GetStartTime() : n->GetStopTime();
}

bool InRange(uint32_t t, uint32_t from, uint32_t to) {
  return from >= to || (t >= from && t < to);
}

// Note-on and note-off events of a chain in writing order: by time; on one tick the note-offs of
// sounding notes come first (a repeated key is ended before it starts again), then note-ons, then
// the note-offs of zero-length notes (which must follow their own note-on); otherwise chain order.
void CollectEvents(const CMidNoteElement* first, uint32_t from, uint32_t to,
                   std::vector<NoteEventInfo>* out) {
  // Note-ons come sorted with the chain; only the note-offs need sorting, and they are merged in.
  // Each note-off is sorted by one key: time, then rank (0 ends a sounding note, 2 ends a
  // zero-length note and must follow its own note-on), then chain order.
  thread_local std::vector<uint64_t> keys;
  thread_local std::vector<NoteEventInfo> ons;
  thread_local std::vector<NoteEventInfo> offs;
  keys.clear();
  ons.clear();
  offs.clear();
  for (const CMidNoteElement* n = first; n; n = n->GetNextElement()) {
    if (!InRange(n->GetStartTime(), from, to)) continue;
    uint32_t off = OffTime(n);
    if (from < to && off > to) off = to;
    uint64_t rank = off == n->GetStartTime() ? 2 : 0;
    keys.push_back((uint64_t{off} << 32) | (rank << 30) | offs.size());
    // Filled field by field in place: building a temporary and copying it stalls on the
    // partial stores, which made this loop the writer's hot spot.
    NoteEventInfo& on = ons.emplace_back();
    on.nEventType = NOTE_EVENT_ON;
    on.nTime = n->GetStartTime();
    on.byNoteValue = n->GetNoteValue();
    on.byVelocity = n->GetVelocity();
    NoteEventInfo& end = offs.emplace_back();
    end.nEventType = NOTE_EVENT_OFF;
    end.nTime = off;
    end.byNoteValue = on.byNoteValue;
    end.byVelocity = on.byVelocity;
  }
  if (!std::is_sorted(keys.begin(), keys.end())) std::sort(keys.begin(), keys.end());
  out->resize(ons.size() * 2);
  size_t i = 0, j = 0, k = 0;
  while (i < ons.size() || j < keys.size()) {
    bool takeOff = false;
    if (j < keys.size()) {
      uint32_t offTime = static_cast<uint32_t>(keys[j] >> 32);
      takeOff = i == ons.size() || offTime < ons[i].nTime ||
                (offTime == ons[i].nTime && ((keys[j] >> 30) & 3) == 0);
    }
    (*out)[k++] = takeOff ? offs[keys[j++] & 0x3FFFFFFFu] : ons[i++];
  }
}

int CopyName(char* field, const char* text, int length) {
  if (!text) return -1;
  std::memset(field, 0, CMidTrackElement::kNameSize);
  size_t n = 0;
  while (n < CMidTrackElement::kNameSize - 1 && (length < 0 || n < static_cast<size_t>(length)) &&
         text[n])
    ++n;
  if (n > CMidTrackElement::kNameSize - 1) n = CMidTrackElement::kNameSize - 1;
  std::memcpy(field, text, n);
  return 0;
}

}  // namespace

CMidTrackElement::CMidTrackElement() = default;

CMidTrackElement::~CMidTrackElement() {
  ResetContent();
}

int CMidTrackElement::AppendNewTrack(CMidTrackElement* track) {
  if (!track || track == this) return -1;
  CMidTrackElement* last = this;
  while (last->m_pNextElement) last = last->m_pNextElement;
  last->m_pNextElement = track;
  track->m_pPrevElement = last;
  track->m_pNextElement = nullptr;
  return 0;
}

int CMidTrackElement::InsertNewTrack(int index, CMidTrackElement* track) {
  if (!track || track == this) return -1;
  CMidTrackElement* at = this;
  int pos = 0;
  if (index < 0) index = 0x7FFFFFFF;
  while (pos < index && at->m_pNextElement) {
    at = at->m_pNextElement;
    ++pos;
  }
  if (pos < index) {  // past the end: append
    at->m_pNextElement = track;
    track->m_pPrevElement = at;
    track->m_pNextElement = nullptr;
    return pos + 1;
  }
  track->m_pPrevElement = at->m_pPrevElement;
  track->m_pNextElement = at;
  if (at->m_pPrevElement) at->m_pPrevElement->m_pNextElement = track;
  at->m_pPrevElement = track;
  return pos;
}

CMidTrackElement* CMidTrackElement::SearchTrackByChannelNum(uint8_t channel) {
  for (CMidTrackElement* t = this; t; t = t->m_pNextElement)
    if (t->m_byChannel == channel) return t;
  return nullptr;
}

int CMidTrackElement::GetTrackIndex() const {
  int index = 0;
  for (const CMidTrackElement* t = m_pPrevElement; t; t = t->m_pPrevElement) ++index;
  return index;
}

void CMidTrackElement::SetBankSelectMSB(uint8_t v) {
  m_byBankMSB = v;
  m_bBankMSBExist = 1;
}

void CMidTrackElement::SetBankSelectLSB(uint8_t v) {
  m_byBankLSB = v;
  m_bBankLSBExist = 1;
}

int CMidTrackElement::GetBankSelectMSB(uint8_t* value) const {
  if (!m_bBankMSBExist) return -1;
  if (value) *value = m_byBankMSB;
  return 0;
}

int CMidTrackElement::GetBankSelectLSB(uint8_t* value) const {
  if (!m_bBankLSBExist) return -1;
  if (value) *value = m_byBankLSB;
  return 0;
}

int CMidTrackElement::SetTrackName(const char* text, int length) {
  return CopyName(m_szTrackName, text, length);
}

int CMidTrackElement::SetInstrumentName(const char* text, int length) {
  return CopyName(m_szInstrumentName, text, length);
}

int CMidTrackElement::SetMMFWavFileLst(const char* text, int length) {
  if (!text) return -1;
  if (length == -1) length = static_cast<int>(std::strlen(text));
  if (length <= 0) return -1;
  char* copy = new char[static_cast<size_t>(length) + 1];
  std::memcpy(copy, text, static_cast<size_t>(length));
  copy[length] = '\0';
  delete[] m_pWavFileLst;
  m_pWavFileLst = copy;
  return 0;
}

int CMidTrackElement::DecideTrackTableType() {
  int low = 0, high = 0;
  for (CMidNoteElement* n = m_pFirstNote; n; n = n->GetNextElement()) {
    int key = n->GetNoteValue();
    if (key < 26 || key > 95) continue;
    if (key < 48) ++low;
    if (key > 73) ++high;
  }
  m_nTableType = high < low ? 2 : 1;
  return m_nTableType;
}

// Slot table of sounding keys as the SMAF converter sizes its voice reservation: a free slot holds
// 0, so a key 0 counts as already sounding. A note-on reuses the last free slot before growing.
int CMidTrackElement::CaculateReservedValue() {
  // Reused between calls: every save asks each track for this.
  thread_local std::vector<NoteEventInfo> events;
  CollectEvents(m_pFirstNote, 0, 0, &events);
  uint8_t slots[kMaxReservedSlots] = {0};
  int used = 0;
  for (const NoteEventInfo& e : events) {
    if (e.nEventType == NOTE_EVENT_OFF) {
      for (int i = 0; i < used; ++i)
        if (slots[i] == e.byNoteValue) {
          slots[i] = 0;
          break;
        }
      continue;
    }
    int freeSlot = -1;
    bool present = false;
    for (int i = 0; i < used; ++i) {
      if (slots[i] == e.byNoteValue) {
        present = true;
        break;
      }
      if (slots[i] == 0) freeSlot = i;
    }
    if (present) continue;
    if (freeSlot >= 0)
      slots[freeSlot] = e.byNoteValue;
    else if (used < kMaxReservedSlots)
      slots[used++] = e.byNoteValue;
  }
  if (used > 0) m_nReservedValue = used;
  return used;
}

void CMidTrackElement::_LinkNoteAfter(CMidNoteElement* after, CMidNoteElement* note) {
  if (after != m_pLastNote)
    m_bKeyIndexValid = 0;
  else
    m_pLastByKey[note->GetNoteValue()] = note;  // appended: now the last note of its key
  if (!after) {
    note->SetPrevElement(nullptr);
    note->SetNextElement(m_pFirstNote);
    if (m_pFirstNote) m_pFirstNote->SetPrevElement(note);
    m_pFirstNote = note;
    if (!m_pLastNote) m_pLastNote = note;
  } else {
    note->SetPrevElement(after);
    note->SetNextElement(after->GetNextElement());
    if (after->GetNextElement()) after->GetNextElement()->SetPrevElement(note);
    after->SetNextElement(note);
    if (after == m_pLastNote) m_pLastNote = note;
  }
  ++m_nNoteCount;
}

void CMidTrackElement::_UnlinkNote(CMidNoteElement* note) {
  m_bKeyIndexValid = 0;
  if (note == m_pFirstNote) m_pFirstNote = note->GetNextElement();
  if (note == m_pLastNote) m_pLastNote = note->GetPrevElement();
  note->ModifyDataChainBeforeDel();
  if (m_nNoteCount) --m_nNoteCount;
}

void CMidTrackElement::_InsertNoteSorted(CMidNoteElement* note) {
  CMidNoteElement* after = m_pLastNote;
  while (after && after->GetStartTime() > note->GetStartTime()) after = after->GetPrevElement();
  _LinkNoteAfter(after, note);
}

void CMidTrackElement::_RebuildKeyIndex() {
  std::fill(std::begin(m_pLastByKey), std::end(m_pLastByKey), nullptr);
  for (CMidNoteElement* n = m_pFirstNote; n; n = n->GetNextElement())
    m_pLastByKey[n->GetNoteValue()] = n;
  m_bKeyIndexValid = 1;
}

int CMidTrackElement::AppendNoteEvent(int isOn, uint8_t key, uint8_t velocity, uint32_t delta) {
  m_nEventTime += delta;
  if (!m_bKeyIndexValid) _RebuildKeyIndex();
  if (!isOn && m_pLastNote) {
    // The nearest earlier note of this key (what a backward search from the last note finds).
    CMidNoteElement* match = m_pLastByKey[key];
    if (match && match->GetStopTime() == 0) {
      match->SetStopTime(m_nEventTime);
      return 0;
    }
  }
  // A note-off without an open note of its key opens one; FixNonStopNote settles it later.
  CMidNoteElement* note = new CMidNoteElement(m_nEventTime, 0, key, velocity);
  note->SetStoredDelta(delta);
  _LinkNoteAfter(m_pLastNote, note);
  return 0;
}

// One backward pass: the start of the next note of each key is known when a note is reached. A
// deleted open note still counts as the next note for earlier notes of its key.
int CMidTrackElement::FixNonStopNote() {
  int deleted = 0;
  uint32_t nextStart[256];
  bool hasNext[256] = {false};
  CMidNoteElement* n = m_pLastNote;
  while (n) {
    CMidNoteElement* prev = n->GetPrevElement();
    const uint8_t key = n->GetNoteValue();
    const uint32_t start = n->GetStartTime();
    if (n->GetStopTime() == 0) {
      if (hasNext[key]) {
        n->SetStopTime(nextStart[key]);
      } else {
        _UnlinkNote(n);
        delete n;
        ++deleted;
      }
    }
    nextStart[key] = start;
    hasNext[key] = true;
    n = prev;
  }
  return deleted;
}

int CMidTrackElement::InsertNoteEvent(uint32_t start, int durationID, uint8_t key,
                                      uint8_t velocity) {
  uint32_t length = GetDurationByID(durationID);
  if (length == 0) return -1;
  uint64_t startTicks = uint64_t{start} * 15u * m_nDivision / 120u;
  uint64_t durTicks = uint64_t{length} * m_nDivision / 120u;
  if (startTicks + durTicks > 0xFFFFFFFFu) return -1;
  return InsertNoteTicks(static_cast<uint32_t>(startTicks), static_cast<uint32_t>(durTicks), key,
                         velocity);
}

int CMidTrackElement::InsertNoteTicks(uint32_t start, uint32_t duration, uint8_t key,
                                      uint8_t velocity) {
  if (uint64_t{start} + duration > 0xFFFFFFFFu) return -1;
  _InsertNoteSorted(new CMidNoteElement(start, start + duration, key, velocity));
  m_bModified = 1;
  return 0;
}

int CMidTrackElement::DelNoteEvent(uint32_t time) {
  for (CMidNoteElement* n = m_pFirstNote; n; n = n->GetNextElement()) {
    if (n->GetStartTime() != time) continue;
    _UnlinkNote(n);
    delete n;
    m_bModified = 1;
    return 0;
  }
  return -1;
}

int CMidTrackElement::DelPeriod(uint32_t from, uint32_t to) {
  if (from >= to) return -1;
  const uint32_t len = to - from;
  CMidNoteElement* n = m_pFirstNote;
  while (n) {
    CMidNoteElement* next = n->GetNextElement();
    uint32_t start = n->GetStartTime(), stop = n->GetStopTime();
    if (start >= from && start < to) {
      _UnlinkNote(n);
      delete n;
    } else if (start < from) {
      if (stop > from) n->SetStopTime(stop >= to ? stop - len : from);
    } else {
      n->SetStartTime(start - len);
      if (stop) n->SetStopTime(stop - len);
    }
    n = next;
  }
  m_nEventTime =
      m_nEventTime >= to ? m_nEventTime - len : (m_nEventTime > from ? from : m_nEventTime);
  m_bModified = 1;
  return 0;
}

int CMidTrackElement::InsertPeriod(uint32_t at, uint32_t length) {
  if (length == 0) return -1;
  for (CMidNoteElement* n = m_pFirstNote; n; n = n->GetNextElement()) {
    uint32_t start = n->GetStartTime(), stop = n->GetStopTime();
    if (uint64_t{OffTime(n)} + length > 0xFFFFFFFFu) return -1;
    if (start >= at) {
      n->SetStartTime(start + length);
      if (stop) n->SetStopTime(stop + length);
    } else if (stop > at) {
      n->SetStopTime(stop + length);
    }
  }
  if (m_nEventTime >= at) m_nEventTime += length;
  m_bModified = 1;
  return 0;
}

int CMidTrackElement::ShiftPeriod(uint32_t from, uint32_t to, int32_t offset) {
  if (from >= to) return -1;
  std::vector<CMidNoteElement*> moved;
  for (CMidNoteElement* n = m_pFirstNote; n;) {
    CMidNoteElement* next = n->GetNextElement();
    if (n->GetStartTime() >= from && n->GetStartTime() < to) {
      _UnlinkNote(n);
      moved.push_back(n);
    }
    n = next;
  }
  for (CMidNoteElement* n : moved) {
    int64_t start = int64_t{n->GetStartTime()} + offset;
    if (start < 0) start = 0;
    if (start > 0xFFFFFFFFll - n->GetDuration()) start = 0xFFFFFFFFll - n->GetDuration();
    uint32_t dur = n->GetDuration();
    bool open = n->GetStopTime() == 0;
    n->SetStartTime(static_cast<uint32_t>(start));
    n->SetStopTime(open ? 0 : static_cast<uint32_t>(start) + dur);
    _InsertNoteSorted(n);
  }
  if (!moved.empty()) m_bModified = 1;
  return 0;
}

int CMidTrackElement::GetMarkedNotes(uint32_t from, uint32_t to, CMidNoteElement** first,
                                     CMidNoteElement** last) {
  m_bKeyIndexValid = 0;  // the caller gets pointers it may edit
  CMidNoteElement* f = nullptr;
  CMidNoteElement* l = nullptr;
  for (CMidNoteElement* n = m_pFirstNote; n; n = n->GetNextElement()) {
    if (n->GetStartTime() < from || n->GetStartTime() >= to) continue;
    if (!f) f = n;
    l = n;
  }
  if (first) *first = f;
  if (last) *last = l;
  return f ? 0 : -1;
}

int CMidTrackElement::DeleteMarkedNotes(CMidNoteElement* first, CMidNoteElement* last) {
  if (!first) return -1;
  CMidNoteElement* n = m_pFirstNote;
  while (n && n != first) n = n->GetNextElement();
  if (!n) return -1;
  int deleted = 0;
  while (n) {
    CMidNoteElement* next = n->GetNextElement();
    bool end = n == last;
    _UnlinkNote(n);
    delete n;
    ++deleted;
    if (end) break;
    n = next;
  }
  m_bModified = 1;
  return deleted;
}

uint32_t CMidTrackElement::CountNoteElement() const {
  uint32_t count = 0;
  for (CMidNoteElement* n = m_pFirstNote; n; n = n->GetNextElement()) ++count;
  return count;
}

uint32_t CMidTrackElement::GetWidthCount() const {
  uint32_t width = 0;
  for (CMidNoteElement* n = m_pFirstNote; n; n = n->GetNextElement())
    width = std::max(width, OffTime(n));
  return width;
}

int CMidTrackElement::GetPeakPolyphony() const {
  std::vector<NoteEventInfo> events;
  CollectEvents(m_pFirstNote, 0, 0, &events);
  int sounding = 0, peak = 0;
  for (const NoteEventInfo& e : events) {
    sounding += e.nEventType == NOTE_EVENT_ON ? 1 : -1;
    peak = std::max(peak, sounding);
  }
  return peak;
}

int CMidTrackElement::DoSimplied() {
  int removed = 0;
  CMidNoteElement* n = m_pFirstNote;
  while (n) {
    CMidNoteElement* next = n->GetNextElement();
    if (n->GetVelocity() == 0 || n->GetDuration() == 0) {
      _UnlinkNote(n);
      delete n;
      ++removed;
    }
    n = next;
  }
  if (removed) m_bModified = 1;
  return removed;
}

void CMidTrackElement::_BuildEventList(uint32_t from, uint32_t to) {
  CollectEvents(m_pFirstNote, from, to, &m_events);
  m_nEventPos = 0;
}

int CMidTrackElement::GetFirstNoteBySequence(NoteEventInfo* info, uint32_t from, uint32_t to) {
  _BuildEventList(from, to);
  return GetNextNoteBySequence(info);
}

int CMidTrackElement::GetNextNoteBySequence(NoteEventInfo* info) {
  if (m_nEventPos >= m_events.size()) return -1;
  if (info) *info = m_events[m_nEventPos];
  ++m_nEventPos;
  return 0;
}

int CMidTrackElement::GetFirstIDs(NoteIDInfo* info, uint32_t from, uint32_t to) {
  m_pIDNote = m_pFirstNote;
  m_nIDFrom = from;
  m_nIDTo = to;
  m_nIDCursor = from < to ? from : 0;
  return GetNextIDs(info);
}

int CMidTrackElement::GetNextIDs(NoteIDInfo* info) {
  const bool ranged = m_nIDFrom < m_nIDTo;
  const double scale = 120.0 / m_nDivision;
  for (; m_pIDNote; m_pIDNote = m_pIDNote->GetNextElement()) {
    CMidNoteElement* n = m_pIDNote;
    if (ranged && n->GetStartTime() < m_nIDFrom) continue;
    if (ranged && n->GetStartTime() >= m_nIDTo) break;
    if (m_nEventMode == MIDEVENT_MODE_MELODY && n->GetStartTime() < m_nIDCursor) continue;
    NoteIDInfo out{};
    if (n->GetStartTime() > m_nIDCursor &&
        (n->GetStartTime() - m_nIDCursor) * scale >= kMinRestTicks) {
      // Rests longer than the longest code are given out a whole note at a time; a silence of
      // more than 16 whole notes is shortened to 16 so a stray huge delta cannot flood a writer.
      uint32_t gap = n->GetStartTime() - m_nIDCursor;
      if (gap * scale > kMaxRestTicks + kLongestTicks) {
        gap = static_cast<uint32_t>(kMaxRestTicks / scale);
        m_nIDCursor = n->GetStartTime() - gap;
      }
      if (gap * scale > kLongestTicks + 1) gap = static_cast<uint32_t>(kWholeTicks / scale);
      if (gap == 0) gap = 1;
      out.bRest = 1;
      out.nStartTime = m_nIDCursor;
      out.nDuration = gap;
      out.nDurationID = GetDurationID(gap * scale);
      m_nIDCursor += gap;
      if (info) *info = out;
      return 0;
    }
    uint32_t stop = OffTime(n);
    if (ranged && stop > m_nIDTo) stop = m_nIDTo;
    out.bRest = 0;
    out.byNoteValue = n->GetNoteValue();
    out.byVelocity = n->GetVelocity();
    out.nStartTime = n->GetStartTime();
    out.nDuration = stop - n->GetStartTime();
    out.nDurationID = GetDurationID(out.nDuration * scale);
    m_nIDCursor = std::max(m_nIDCursor, stop);
    m_pIDNote = n->GetNextElement();
    if (info) *info = out;
    return 0;
  }
  m_pIDNote = nullptr;
  return -1;
}

// A length matches a row when it lies strictly within one tick of it, so 16 ticks is not a
// thirty-second but rounds up to the dotted one; other lengths take the next longer row.
int CMidTrackElement::GetDurationID(double ticks) {
  for (const DurationRow& r : kDurations)
    if (std::fabs(ticks - r.ticks) < 1.0) return r.id;
  for (const DurationRow& r : kDurations)
    if (r.ticks > ticks) return r.id;
  return 320;  // very long notes fall back to a whole note
}

uint32_t CMidTrackElement::GetDurationByID(int durationID) {
  for (const DurationRow& r : kDurations)
    if (r.id == durationID) return r.ticks;
  return 0;
}

int CMidTrackElement::GetVelocity(int* max, int* min, int* average, int* sum, int* count) const {
  int hi = 0, lo = 0, total = 0, num = 0;
  for (CMidNoteElement* n = m_pFirstNote; n; n = n->GetNextElement()) {
    int v = n->GetVelocity();
    if (v == 0) continue;
    if (v > hi) hi = v;
    if (lo == 0 || v < lo) lo = v;
    total += v;
    ++num;
  }
  if (lo == 0 && hi != 0) lo = hi;
  if (max) *max = hi;
  if (min) *min = lo;
  if (average) *average = num ? total / num : 0;
  if (sum) *sum = total;
  if (count) *count = num;
  return 0;
}

int CMidTrackElement::CheckSetVelocityValid(int delta) const {
  for (CMidNoteElement* n = m_pFirstNote; n; n = n->GetNextElement()) {
    int v = n->GetVelocity();
    if (v == 0) continue;
    if (v + delta < 1 || v + delta > 127) return 0;
  }
  return 1;
}

int CMidTrackElement::SetVelocity(int delta) {
  if (!CheckSetVelocityValid(delta)) return -1;
  bool changed = false;
  for (CMidNoteElement* n = m_pFirstNote; n; n = n->GetNextElement()) {
    if (n->GetVelocity() == 0 || delta == 0) continue;
    n->SetVelocity(static_cast<uint8_t>(n->GetVelocity() + delta));
    changed = true;
  }
  if (changed) m_bModified = 1;
  return 0;
}

CMidTrackElement* CMidTrackElement::Duplicate() const {
  CMidTrackElement* t = new CMidTrackElement;
  t->CopyFrom(*this);
  return t;
}

int CMidTrackElement::CopyFrom(const CMidTrackElement& other) {
  if (&other == this) return 0;
  CMidTrackElement* next = m_pNextElement;
  CMidTrackElement* prev = m_pPrevElement;
  ResetContent();
  m_pNextElement = next;
  m_pPrevElement = prev;
  m_nTableType = other.m_nTableType;
  m_nEventTime = other.m_nEventTime;
  for (CMidNoteElement* n = other.m_pFirstNote; n; n = n->GetNextElement())
    _LinkNoteAfter(m_pLastNote, n->Duplicate());
  if (other.m_pWavFileLst) SetMMFWavFileLst(other.m_pWavFileLst, -1);
  m_bMMFWaveTrack = other.m_bMMFWaveTrack;
  m_nReservedValue = other.m_nReservedValue;
  m_nDivision = other.m_nDivision;
  m_bEnabled = other.m_bEnabled;
  m_byChannel = other.m_byChannel;
  std::memcpy(m_szTrackName, other.m_szTrackName, sizeof(m_szTrackName));
  std::memcpy(m_szInstrumentName, other.m_szInstrumentName, sizeof(m_szInstrumentName));
  m_nProgram = other.m_nProgram;
  m_byBankMSB = other.m_byBankMSB;
  m_bBankMSBExist = other.m_bBankMSBExist;
  m_byBankLSB = other.m_byBankLSB;
  m_bBankLSBExist = other.m_bBankLSBExist;
  m_bModified = other.m_bModified;
  m_nEventMode = other.m_nEventMode;
  return 0;
}

void CMidTrackElement::_ResetFields() {
  m_nTableType = 1;
  m_nEventTime = 0;
  m_bMMFWaveTrack = 0;
  m_nReservedValue = -1;
  m_nDivision = 120;
  m_bEnabled = 1;
  m_byChannel = 0xFF;
  std::memset(m_szTrackName, 0, sizeof(m_szTrackName));
  std::memset(m_szInstrumentName, 0, sizeof(m_szInstrumentName));
  m_nProgram = -1;
  m_byBankMSB = 0;
  m_bBankMSBExist = 0;
  m_byBankLSB = 0;
  m_bBankLSBExist = 0;
  m_bModified = 0;
  m_nEventMode = MIDEVENT_MODE_ALL;
  m_events.clear();
  m_nEventPos = 0;
  m_pIDNote = nullptr;
  m_nIDCursor = m_nIDFrom = m_nIDTo = 0;
}

void CMidTrackElement::ResetContent() {
  CMidNoteElement* n = m_pFirstNote;
  while (n) {
    CMidNoteElement* next = n->GetNextElement();
    delete n;
    n = next;
  }
  m_pFirstNote = m_pLastNote = nullptr;
  m_nNoteCount = 0;
  std::fill(std::begin(m_pLastByKey), std::end(m_pLastByKey), nullptr);
  m_bKeyIndexValid = 1;
  delete[] m_pWavFileLst;
  m_pWavFileLst = nullptr;
  _ResetFields();
}
