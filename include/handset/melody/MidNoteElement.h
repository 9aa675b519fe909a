#pragma once

#include <cstddef>
#include <cstdint>

#include "handset/export.h"

/// One note of a MIDI track: start and stop time in ticks, key and velocity. Notes form a doubly
/// linked chain in order of start time, owned by their `CMidTrackElement`. A stop time of 0 means
/// the note is still open (its note-off has not been seen).
class HANDSET_API CMidNoteElement {
 public:
  CMidNoteElement();
  CMidNoteElement(uint32_t startTime, uint32_t stopTime, uint8_t noteValue, uint8_t velocity);
  virtual ~CMidNoteElement();
  /// Notes are small and made by the thousand on every load; freed notes are kept per thread
  /// for reuse (a bounded number).
  static void* operator new(size_t size);
  static void operator delete(void* p, size_t size);

  CMidNoteElement* GetNextElement() const { return m_pNextElement; }
  CMidNoteElement* GetPrevElement() const { return m_pPrevElement; }
  void SetNextElement(CMidNoteElement* note) { m_pNextElement = note; }
  void SetPrevElement(CMidNoteElement* note) { m_pPrevElement = note; }

  uint32_t GetStartTime() const { return m_nStartTime; }
  uint32_t GetStopTime() const { return m_nStopTime; }
  void SetStartTime(uint32_t t) { m_nStartTime = t; }
  void SetStopTime(uint32_t t) { m_nStopTime = t; }
  /// Stop minus start time; 0 for an open note or a stop before the start.
  uint32_t GetDuration() const;
  /// Start time minus the previous note's start time, or the start time for the first note.
  uint32_t GetDeltaTime() const;
  /// The stored delta value (kept for callers that track their own deltas).
  uint32_t GetStoredDelta() const { return m_nDeltaTime; }
  void SetStoredDelta(uint32_t delta) { m_nDeltaTime = delta; }
  uint8_t GetNoteValue() const { return m_byNoteValue; }
  uint8_t GetVelocity() const { return m_byVelocity; }
  void SetNoteValue(uint8_t key) { m_byNoteValue = key; }
  void SetVelocity(uint8_t velocity) { m_byVelocity = velocity; }

  /// A new note with the same times, key and velocity, without links. Owned by the caller.
  CMidNoteElement* Duplicate() const;
  /// Walks to the last note of this chain and links `note` behind it. Null is ignored.
  void AppendNoteEvent(CMidNoteElement* note);
  /// Walks backwards from this note (this note included) and returns the first note whose key
  /// equals `key`, or null.
  CMidNoteElement* RewindSearchNoteByNoteValue(uint8_t key);
  /// Links `note` (unlinked) directly in front of this note.
  void InsertNoteBefore(CMidNoteElement* note);
  /// Unlinks this note: its neighbours are joined and its own links cleared. Call before deleting
  /// a note that sits in a chain.
  void ModifyDataChainBeforeDel();

 protected:
  CMidNoteElement* m_pNextElement = nullptr;
  CMidNoteElement* m_pPrevElement = nullptr;
  uint32_t m_nStartTime = 0;
  uint32_t m_nStopTime = 0;
  uint32_t m_nDeltaTime = 0;
  uint8_t m_byNoteValue = 0;
  uint8_t m_byVelocity = 0;
};
