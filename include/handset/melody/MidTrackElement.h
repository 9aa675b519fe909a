#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "handset/export.h"
#include "handset/melody/MidNoteElement.h"

/// One note-on or note-off event yielded by `CMidTrackElement::GetFirstNoteBySequence`.
struct NoteEventInfo {
  int nEventType;       ///< NOTE_EVENT_ON or NOTE_EVENT_OFF
  uint32_t nTime;       ///< absolute tick
  uint8_t byNoteValue;  ///< MIDI key
  uint8_t byVelocity;   ///< the note's velocity (also given with its note-off)
};

enum : int { NOTE_EVENT_OFF = 0, NOTE_EVENT_ON = 1 };

/// One note or rest yielded by `CMidTrackElement::GetFirstIDs`/`GetNextIDs`.
struct NoteIDInfo {
  int bRest;            ///< 1 for a rest formed from a gap between notes
  uint8_t byNoteValue;  ///< key (0 for a rest)
  uint8_t byVelocity;   ///< velocity (0 for a rest)
  int nDurationID;      ///< duration code (10 ... 321) of the length scaled to 120 ticks/quarter
  uint32_t nStartTime;  ///< absolute tick
  uint32_t nDuration;   ///< length in ticks of the track's division
};

/// Note-event modes (`SetGetMidiEventMode`): how `GetFirstIDs`/`GetNextIDs` treat notes that
/// start while an earlier note still sounds.
enum : int {
  MIDEVENT_MODE_ALL = 0,     ///< every note is yielded (chords give notes without rests)
  MIDEVENT_MODE_MELODY = 2,  ///< single line: a note starting under an earlier one is skipped
  MIDEVENT_MODE_KEEP = 3,    ///< file level only: leave the tracks' modes unchanged
};

/// One track of a MIDI model: the notes of one channel as a chain of `CMidNoteElement`, plus the
/// track's names, program, bank select and the SMAF settings the SMAF converter consumes. Tracks
/// form a doubly linked chain owned by `CMidFileElement`. Results are 0 for success and -1 for
/// failure (`hs::track`) unless stated.
class HANDSET_API CMidTrackElement {
 public:
  enum : int { kNameSize = 80, kMaxReservedSlots = 77 };

  CMidTrackElement();
  virtual ~CMidTrackElement();
  CMidTrackElement(const CMidTrackElement&) = delete;
  CMidTrackElement& operator=(const CMidTrackElement&) = delete;

  // Chain.
  CMidTrackElement* GetNextElement() const { return m_pNextElement; }
  CMidTrackElement* GetPrevElement() const { return m_pPrevElement; }
  void SetNextElement(CMidTrackElement* t) { m_pNextElement = t; }
  void SetPrevElement(CMidTrackElement* t) { m_pPrevElement = t; }
  /// Links `track` (unlinked) behind the last track of this chain.
  int AppendNewTrack(CMidTrackElement* track);
  /// Links `track` (unlinked) so that it becomes the `index`-th track counted from this one
  /// (0 = in front of this track); an index past the end or negative appends. Returns the
  /// position reached (counted from this track), or -1 for a null track.
  int InsertNewTrack(int index, CMidTrackElement* track);
  /// From this track onward, the first track of `channel`, or null.
  CMidTrackElement* SearchTrackByChannelNum(uint8_t channel);
  /// Position in the chain: the number of tracks in front of this one (0 for the head and for a
  /// lone track, so the only track of a file still numbers its SMAF tags).
  int GetTrackIndex() const;

  // Identity.
  void SetChannelNum(uint8_t channel) { m_byChannel = channel; }
  uint8_t GetChannelNum() const { return m_byChannel; }
  void SetProgram(int program) { m_nProgram = program; }
  int GetProgram() const { return m_nProgram; }
  void SetBankSelectMSB(uint8_t v);
  void SetBankSelectLSB(uint8_t v);
  int IsBankSelectMSBExist() const { return m_bBankMSBExist; }
  int IsBankSelectLSBExist() const { return m_bBankLSBExist; }
  /// Writes the value (when `value` is not null); -1 when no bank select MSB was set.
  int GetBankSelectMSB(uint8_t* value) const;
  int GetBankSelectLSB(uint8_t* value) const;
  /// Clears the 80-byte field and copies at most 79 bytes (fewer when `length` is smaller; -1
  /// means the text's own length). A null text gives -1.
  int SetTrackName(const char* text, int length = -1);
  int SetInstrumentName(const char* text, int length = -1);
  const char* GetTrackName() const { return m_szTrackName; }
  const char* GetInstrumentName() const { return m_szInstrumentName; }
  void SetEnable(int enable) { m_bEnabled = enable ? 1 : 0; }
  int IsEnabled() const { return m_bEnabled; }
  /// 1 when the track holds no note.
  int IsEmpty() const { return m_pFirstNote == nullptr; }
  void SetModified(int modified) { m_bModified = modified; }
  int IsModified() const { return m_bModified; }
  void SetDivision(uint16_t division) { m_nDivision = division ? division : 120; }
  uint16_t GetDivision() const { return m_nDivision; }
  void SetGetMidiEventMode(int mode) { m_nEventMode = mode; }
  int GetMidiEventMode() const { return m_nEventMode; }

  // SMAF settings, stored for the SMAF converter.
  void SetMMFWaveTrack(int flag) { m_bMMFWaveTrack = flag; }
  int IsMMFWaveTrack() const { return m_bMMFWaveTrack; }
  /// Stores a copy of `length` bytes of `text` (-1: its own length) plus a terminator. A null
  /// text or a length that is not positive gives -1 and keeps the old list.
  int SetMMFWavFileLst(const char* text, int length = -1);
  /// The wave file list, or null when none is set.
  const char* GetMMFWavFileLst() const { return m_pWavFileLst; }
  /// 2 when more of the keys in 26-95 lie below 48 than above 73, else 1; stored and returned.
  int DecideTrackTableType();
  int GetTableType() const { return m_nTableType; }
  /// Peak number of sounding-key slots over the track (at most 77; see the source for the slot
  /// rule); stored as the reserved voice count when positive. Returns the peak.
  int CaculateReservedValue();
  /// The stored reserved voice count; -1 until `CaculateReservedValue` found a positive value.
  int GetReservedValue() const { return m_nReservedValue; }

  // Notes.
  /// Adds `delta` to the running event time T, then applies a note-on (a new open note at T) or
  /// a note-off (closes the nearest earlier note of `key` when it is open; otherwise opens a new
  /// note at T exactly like a note-on).
  int AppendNoteEvent(int isOn, uint8_t key, uint8_t velocity, uint32_t delta);
  /// Closes every open note at the start of the next note of the same key; an open note with no
  /// later note of its key is deleted. Returns the number of notes deleted.
  int FixNonStopNote();
  /// Inserts a note from converter units: `start` counts thirty-second notes (start x 15 x
  /// division / 120 ticks) and `durationID` is a duration code (its length x division / 120
  /// ticks). The note goes behind every note starting at or before it. -1 for an unknown code.
  int InsertNoteEvent(uint32_t start, int durationID, uint8_t key, uint8_t velocity);
  /// Inserts a note given in ticks (start, length) in start-time order.
  int InsertNoteTicks(uint32_t start, uint32_t duration, uint8_t key, uint8_t velocity);
  /// Deletes the first note starting at `time`; -1 when there is none.
  int DelNoteEvent(uint32_t time);
  /// Cuts the span [from, to) out of the track: notes starting in it are deleted, later notes
  /// move earlier by to - from, and a note sounding into the span loses the part inside it.
  /// -1 when from >= to.
  int DelPeriod(uint32_t from, uint32_t to);
  /// Opens a silent span of `length` ticks at `at`: notes starting at or after `at` move later by
  /// `length`; a note sounding across `at` is held through the span. -1 when length is 0.
  int InsertPeriod(uint32_t at, uint32_t length);
  /// Moves the notes starting in [from, to) by `offset` ticks (a start would go below 0: the
  /// note is moved to 0, keeping its length) and restores start-time order. -1 when from >= to.
  int ShiftPeriod(uint32_t from, uint32_t to, int32_t offset);
  /// The first and last note starting in [from, to); -1 (both null) when there is none.
  int GetMarkedNotes(uint32_t from, uint32_t to, CMidNoteElement** first, CMidNoteElement** last);
  /// Deletes the notes from `first` through `last` along the chain. Returns the number deleted,
  /// or -1 when `first` is null or not in this track.
  int DeleteMarkedNotes(CMidNoteElement* first, CMidNoteElement* last);
  /// Counts the notes by walking the chain.
  uint32_t CountNoteElement() const;
  uint32_t GetNoteCount() const { return m_nNoteCount; }
  /// The chain ends. The notes may be edited through these pointers.
  CMidNoteElement* GetFirstNote() const {
    m_bKeyIndexValid = 0;
    return m_pFirstNote;
  }
  CMidNoteElement* GetLastNote() const {
    m_bKeyIndexValid = 0;
    return m_pLastNote;
  }
  /// The running event time (sum of the deltas given to `AppendNoteEvent`).
  uint32_t GetNowNoteEventTime() const { return m_nEventTime; }
  /// The width of the track on a time line: the latest stop (or start) time of its notes in
  /// ticks, 0 without notes.
  uint32_t GetWidthCount() const;
  /// The highest number of notes sounding at once (a note ends before one starting at its stop
  /// time).
  int GetPeakPolyphony() const;
  /// Removes what a small player cannot use: notes with velocity 0 (silent notes) and notes of
  /// length 0. Returns the number removed.
  int DoSimplied();

  // Event iteration for writers.
  /// Starts yielding the note-on and note-off events in time order; on the same tick note-offs
  /// come before note-ons (so a repeated key is ended before it sounds again). When from < to,
  /// only notes starting in [from, to) are taken and their note-offs are cut at `to`. Times are
  /// absolute. -1 when there is no event.
  int GetFirstNoteBySequence(NoteEventInfo* info, uint32_t from = 0, uint32_t to = 0);
  /// The next event; -1 at the end.
  int GetNextNoteBySequence(NoteEventInfo* info);
  /// Starts yielding notes and rests with duration codes (lengths scaled to 120 ticks/quarter).
  /// A gap of at least half a thirty-second between the end of the line so far and the next note
  /// yields a rest first (a whole note at a time when longer than a dotted whole; silences over 16
  /// whole notes are shortened to 16). In MIDEVENT_MODE_MELODY a note starting before the previous
  /// yielded note ends is skipped. The range works as for `GetFirstNoteBySequence`. -1 when empty.
  int GetFirstIDs(NoteIDInfo* info, uint32_t from = 0, uint32_t to = 0);
  int GetNextIDs(NoteIDInfo* info);
  /// The duration code of a length in ticks at 120 ticks per quarter note.
  static int GetDurationID(double ticks);
  /// The length in ticks (120 per quarter) of a duration code; 0 for an unknown code.
  static uint32_t GetDurationByID(int durationID);

  // Velocity.
  /// Over notes with nonzero velocity: maximum, minimum, integer average, sum and count. Every
  /// pointer may be null. Returns 0.
  int GetVelocity(int* max, int* min, int* average, int* sum, int* count) const;
  /// 1 when adding `delta` to every nonzero velocity keeps it within 1-127, else 0.
  int CheckSetVelocityValid(int delta) const;
  /// Adds `delta` to every nonzero velocity; -1 (nothing changed) when the check fails.
  int SetVelocity(int delta);

  /// A deep copy with all notes and settings, unlinked. Owned by the caller.
  CMidTrackElement* Duplicate() const;
  /// Replaces this track's notes and settings with copies of `other`'s (links stay).
  int CopyFrom(const CMidTrackElement& other);
  /// Deletes all notes and resets every field to its default; the chain links stay.
  void ResetContent();

 protected:
  void _LinkNoteAfter(CMidNoteElement* after, CMidNoteElement* note);
  void _UnlinkNote(CMidNoteElement* note);
  void _InsertNoteSorted(CMidNoteElement* note);
  void _BuildEventList(uint32_t from, uint32_t to);
  void _ResetFields();
  void _RebuildKeyIndex();

  CMidTrackElement* m_pNextElement = nullptr;
  CMidTrackElement* m_pPrevElement = nullptr;
  int m_nTableType = 1;
  uint32_t m_nEventTime = 0;
  CMidNoteElement* m_pLastNote = nullptr;
  CMidNoteElement* m_pFirstNote = nullptr;
  uint32_t m_nNoteCount = 0;
  char* m_pWavFileLst = nullptr;
  int m_bMMFWaveTrack = 0;
  int m_nReservedValue = -1;
  uint16_t m_nDivision = 120;
  int m_bEnabled = 1;
  uint8_t m_byChannel = 0xFF;
  char m_szTrackName[kNameSize] = {0};
  char m_szInstrumentName[kNameSize] = {0};
  int m_nProgram = -1;
  uint8_t m_byBankMSB = 0;
  int m_bBankMSBExist = 0;
  uint8_t m_byBankLSB = 0;
  int m_bBankLSBExist = 0;
  int m_bModified = 0;
  int m_nEventMode = MIDEVENT_MODE_ALL;

  // Where the last event earlier than the running time was placed; a chunk continuing a channel
  // inserts in rising order, so the next search starts here instead of at the end.
  // The last note of each key, so appending a note-off finds its note without walking the
  // chain. Valid while notes were only appended since it was built.
  CMidNoteElement* m_pLastByKey[256] = {nullptr};
  mutable int m_bKeyIndexValid = 1;

  // Iteration state of GetFirstNoteBySequence/GetFirstIDs.
  std::vector<NoteEventInfo> m_events;
  size_t m_nEventPos = 0;
  CMidNoteElement* m_pIDNote = nullptr;
  uint32_t m_nIDCursor = 0;
  uint32_t m_nIDFrom = 0;
  uint32_t m_nIDTo = 0;
};
