#pragma once

#include <cstdint>
#include <vector>

#include "handset/export.h"
#include "handset/melody/MMFInfo.h"
#include "handset/melody/MidTrackElement.h"

namespace hs {
class ByteReader;
}

/// One standard MIDI file (format 0 or 1) as an editable model: a chain of `CMidTrackElement`,
/// one per MIDI channel, plus the file-wide settings. Loading keeps notes, programs, bank selects,
/// names, one tempo, the time signature, the copyright, the song title, the SP-MIDI polyphony
/// message and the private SMAF tag texts; anything else is dropped and `IsInformationLost`
/// reports it. Writing produces a new file, so the input is never reproduced byte for byte.
///
/// Results are the codes of `hs::midifile` (handset/platform/Results.h) unless stated. Most
/// editing and saving calls return kErrNotLoaded until a file was loaded or a track added.
class HANDSET_API CMidFileElement {
 public:
  enum : int {
    kTextSize = 80,
    kFileNameSize = 512,
    kMaxMipPairs = 16,
    kMaxTracks = 16,
    kOutputCapacity = 0x500000,
    kFormatLoaded = 0xFF,  ///< write in the format the file was loaded with
  };

  CMidFileElement();
  virtual ~CMidFileElement();
  CMidFileElement(const CMidFileElement&) = delete;
  CMidFileElement& operator=(const CMidFileElement&) = delete;

  /// Reads the whole file and builds the model. kErrBusy, kErrOpen, kErrTooShort, kErrNoMemory,
  /// kErrShortRead, or any load code of `LoadFromMemory`. A failed load leaves the object empty.
  int LoadMidiFile(const char* path);
  /// Copies `length` bytes and builds the model; the file name becomes "Melody". kErrNoData for
  /// null data or length 0, kErrTooShort, kErrNotMThd, kErrTrackCount, kErrFormat, kErrNotMTrk,
  /// kErrTrackOverrun, kErrNoteNoTrack.
  int LoadFromMemory(const unsigned char* data, unsigned long length);
  /// Frees tracks and buffers and resets every setting to its default.
  void ReleaseMidFile();

  /// Produces the file (see `GetMidiFileBuf`) and writes it to `path`. kErrNotLoaded, kErrFormat,
  /// kErrNoTrackToWrite, kErrNothingProduced (nothing fits the output capacity; no file is
  /// touched), kErrOpen when the file cannot be created.
  int SaveAsMidiFile(const char* path, int format = kFormatLoaded, uint32_t startTime = 0,
                     uint32_t stopTime = 0, int enabledOnly = 0);
  /// Saves to the file the model was loaded from, in its loaded format. kErrOpen when the model
  /// did not come from a file.
  int SaveMidiFile();
  /// Produces a standard MIDI file in memory and returns its bytes (owned by this object, valid
  /// until the next produce or `ReleaseMidiFileBuf`), or null with `GetLastResult` set. `format`
  /// 0, 1 or kFormatLoaded; a model of more than one track is always written as format 1. When
  /// startTime < stopTime only the notes starting in [startTime, stopTime) are written, moved so
  /// that startTime becomes tick 0. `enabledOnly` skips disabled and empty tracks.
  const unsigned char* GetMidiFileBuf(int format, unsigned long* size, uint32_t startTime = 0,
                                      uint32_t stopTime = 0, int enabledOnly = 0);
  void ReleaseMidiFileBuf();
  /// The result of the last `GetMidiFileBuf`.
  int GetLastResult() const { return m_nLastResult; }
  /// The bytes of the last successful load.
  const std::vector<uint8_t>& GetLoadedData() const { return m_loadedData; }

  int GetMidiFormat() const { return m_nMidiFormat; }
  /// 0 or 1, else kErrFormat.
  int SetMidiFormat(int format);
  uint16_t GetDivision() const { return m_nDivision; }
  uint16_t GetDeclaredTrackNum() const { return m_nDeclaredTrackNum; }
  int GetTempo() const { return m_nTempo; }
  /// Sets the tempo in beats per minute (1-65535, else -1) and marks the model modified.
  int SetTempo(int bpm);
  /// The tempo relative to the default 120 bpm (1.0 at 120, 2.0 at 240).
  double GetTempoAdjustRate() const;
  /// Seconds from the start to the end of the longest track at the kept tempo.
  double GetMaxPlayTime() const;
  /// The largest `CMidTrackElement::GetWidthCount` of all tracks, in ticks.
  uint32_t GetMaxTrackWidthCount() const;
  const char* GetMidiFileName() const { return m_szFileName; }
  /// 1 when a copyright text exists.
  int IsCopyRight() const { return m_szCopyright[0] ? 1 : 0; }
  const char* GetCopyRight() const { return m_szCopyright; }
  const char* GetSongTitle() const { return m_szSongTitle; }
  /// The four raw time-signature bytes (numerator, log2 denominator, clocks, 32nds).
  const uint8_t* GetTimeSignature() const { return m_byTimeSignature; }
  void SetTimeSignature(const uint8_t bytes[4]);
  /// 1 when no track holds a note.
  int IsEmpty() const;
  /// Removes silent and zero-length notes from every track, then tracks left without notes.
  int DoSimplied();
  int IsLoaded() const { return m_bLoaded; }
  int IsInformationLost() const { return m_bInformationLost; }
  int IsModified() const;
  void SetModified(int modified);

  // Tracks.
  uint32_t GetTrackNum() const { return m_nTrackNum; }
  /// Adds a track with the pending track and instrument names. `index` -1 appends, otherwise the
  /// track is inserted at that position; `channel` 0xFF takes the lowest free channel. Marks the
  /// model loaded, so a model built from nothing can be saved. Null when 16 tracks exist, the
  /// channel is taken or out of range.
  CMidTrackElement* AddTrack(int index = -1, int channel = 0xFF);
  /// kErrNotLoaded, kErrTrackIndex.
  int DelTrack(int index);
  /// Inserts a copy of track `index` behind it on the lowest free channel. kErrNotLoaded,
  /// kErrTrackIndex, kErrTrackInsert when all 16 channels are taken.
  int DuplicateTrack(int index);
  /// Swaps tracks `index` and `index` + 1. kErrNotLoaded, kErrTrackIndex.
  int SwitchTrackByIndex(int index);
  /// Moves a track by successive swaps of neighbours. kErrNotLoaded, kErrTrackIndex.
  int MoveTrackByIndex(int from, int to);
  /// The track at `index`, or null.
  CMidTrackElement* GetTrackByIndex(int index) const;
  int GetEnabledTrackNum() const;
  /// Index of the first SMAF wave track, or -1.
  int GetWaveTrackIndex() const;
  /// Makes track `index` the only wave track (-1: none). kErrNotLoaded, kErrTrackIndex.
  int SetWaveTrackIndex(int index);
  void SetWaveType(uint8_t first, uint8_t second);
  void GetWaveType(uint8_t* first, uint8_t* second) const;
  /// Classifies every track's pitch range (`CMidTrackElement::DecideTrackTableType`).
  int DecideTrackTableType();
  /// Inserts a note in converter units into track `trackIndex` (see
  /// `CMidTrackElement::InsertNoteEvent`). kErrNotLoaded, kErrNoTrack when the model has no
  /// track, kErrTrackIndex, kErrTrackInsert when the track refuses the note.
  int InsertNoteEvent(int trackIndex, uint32_t start, int durationID, uint8_t key,
                      uint8_t velocity);
  /// Deletes the first note starting at `time` in track `trackIndex`. kErrNotLoaded,
  /// kErrNoTrack, kErrTrackIndex, kErrTrackInsert when no note starts there.
  int DelNoteEvent(int trackIndex, uint32_t time);
  /// Replaces this model with a deep copy of `other`.
  int CopyFrom(const CMidFileElement& other);
  /// A deep copy, owned by the caller.
  CMidFileElement* Duplicate() const;

  // Velocity, over every track.
  /// 1 when every track accepts the change (`CMidTrackElement::CheckSetVelocityValid`).
  int CheckSetVelocityValid(int delta) const;
  /// Adds `delta` to every nonzero velocity of every track; -1 (nothing changed) when any track
  /// refuses.
  int SetVelocity(int delta);
  /// Minimum, maximum and integer average of the nonzero velocities of all tracks (0 when none).
  int GetVelocity(int* min, int* max, int* average) const;

  /// Stores the note-event mode and, unless it is MIDEVENT_MODE_KEEP, gives it to every track.
  int SetGetMidEventMode(int mode);
  int GetGetMidEventMode() const { return m_nEventMode; }

  // Selection (ticks).
  uint32_t GetSelectStartTimePoint() const { return m_nSelectStart; }
  uint32_t GetSelectStopTimePoint() const { return m_nSelectStop; }
  void SetSelectStartTimePoint(uint32_t t) { m_nSelectStart = t; }
  void SetSelectStopTimePoint(uint32_t t) { m_nSelectStop = t; }

  // SP-MIDI.
  /// Writes the MIP message on save when `enable` is nonzero; `limit` (unless -1) becomes the
  /// polyphony limit the MIP values are shared out from.
  int SetSPMidiMode(int enable, int limit = -1);
  int IsSPMidi() const { return m_bMIPExist; }
  int GetPolyphonyLimit() const { return m_nPolyphonyLimit; }
  uint8_t GetMIPDeviceID() const { return m_byDeviceID; }
  /// The (channel, MIP) pairs read from the file; returns their count.
  int GetMIPData(uint8_t channels[kMaxMipPairs], uint8_t mips[kMaxMipPairs]) const;
  /// The MIP values the writer would give the enabled tracks, in chain order; returns their
  /// count (at most 16).
  int CalcMIPValues(int values[kMaxMipPairs]);

  // SMAF settings carried as text events.
  int SetMA2LedStatus(int track);
  int GetMA2LedStatus(int* track) const;
  int SetVibStatus(int track, int on);
  int GetVibStatus(int track, int* on) const;
  const CMMFInfo& GetMMFInfo() const { return m_MMFInfo; }

 protected:
  int _LoadBuffer(const uint8_t* data, size_t size);
  int _ParseMidiTrack(const uint8_t* data, size_t size, int chunkIndex);
  void _ReadMetaEvent(hs::ByteReader& r, int chunkIndex);
  void _ReadSysEx(const uint8_t* data, size_t length);
  void _ReadSMAFTag(const uint8_t* text, size_t length);
  void _AccountTempo(uint32_t microseconds);
  void _ReduceTempo();
  CMidTrackElement* _GetChannelTrack(uint8_t channel);
  CMidTrackElement* _CreateTrack(uint8_t channel, int index);
  void _SetChannelProgram(uint8_t channel, int program);
  int _PickFreeChannelNum() const;
  int _ApplyMIP2TrackOrder();
  void _UnlinkTrack(CMidTrackElement* track);
  int _Produce(int format, uint32_t startTime, uint32_t stopTime, int enabledOnly);
  void _ResetMembers();

  std::vector<uint8_t> m_rawBuffer;   ///< the bytes being loaded
  int m_bLoading = 0;                 ///< a load is in progress
  std::vector<uint8_t> m_loadedData;  ///< copy of the bytes of the last successful load

  CMidTrackElement* m_pTrackHead = nullptr;
  CMidTrackElement* m_pCurTrack = nullptr;
  uint32_t m_nTrackNum = 0;
  uint16_t m_nMidiFormat = 0;
  uint16_t m_nDeclaredTrackNum = 0;
  uint16_t m_nDivision = 120;
  uint16_t m_nTempo = 120;
  uint8_t m_byTimeSignature[4] = {4, 2, 24, 8};
  char m_szCopyright[kTextSize + 1] = {0};
  char m_szSongTitle[kTextSize + 1] = {0};
  char m_szPendingTrackName[kTextSize + 1] = {0};
  char m_szPendingInstrumentName[kTextSize + 1] = {0};
  char m_szFileName[kFileNameSize + 1] = {0};
  int m_bFromFile = 0;

  int m_bMIPExist = 0;
  uint8_t m_byDeviceID = 0xFF;
  uint8_t m_byMIPChannel[kMaxMipPairs];
  uint8_t m_byMIPValue[kMaxMipPairs];
  int m_nMIPCount = 0;
  int m_nPolyphonyLimit = 16;

  int m_bPendingWave = 0;
  std::vector<char> m_pendingWaveList;
  uint8_t m_byWaveType[2] = {4, 0};
  CMMFInfo m_MMFInfo;

  int m_bLoaded = 0;
  int m_bInformationLost = 0;
  int m_bModified = 0;
  int m_bNoteOffByZeroVelocity = 0;
  int m_nEventMode = MIDEVENT_MODE_ALL;
  uint32_t m_nSelectStart = 0;
  uint32_t m_nSelectStop = 0;

  std::vector<uint8_t> m_outBuffer;
  int m_nLastResult = 0;

  // Load-time state.
  struct TempoEntry {
    uint32_t microseconds;
    uint32_t ticks;
  };
  std::vector<TempoEntry> m_tempoList;
  int m_bTempoSeen = 0;
  uint32_t m_nCurTempo = 0;
  uint32_t m_nTicksSinceTempo = 0;
  int m_nChannelProgram[16];
  int m_nChannelBankMSB[16];
  int m_nChannelBankLSB[16];
  CMidTrackElement* m_pChannelTrack[16];  ///< track of each channel while loading
};
