#pragma once

#include "handset/export.h"
#include "handset/platform/Strings.h"

class CMidFileElement;

/// Writes the first enabled track of a single-track MIDI model as iMelody text: the header
/// (BEGIN, VERSION 1.2, FORMAT CLASS1.0, BEAT limited to 25-900, STYLE, VOLUME), the MELODY line
/// broken after every 75 tokens, and END:IMELODY. Each line ends in CR LF.
///
/// Notes and rests come from the track's duration codes (mode MIDEVENT_MODE_MELODY, so chords
/// collapse to their first note); a note of velocity 0 is written as a rest. iMelody holds keys 47
/// (b, octave 3) to 96 (the sharp of b); a key outside that range is moved by whole octaves into
/// it (a C1 is written as the c of octave 4, key 108 as key 96), so the tune keeps its notes at a
/// playable pitch. Key 96 carries no octave prefix of its own: it is written "*4#b", which reads
/// back as 60. The name set by SetiMelodyName is not written. Note and size limits
/// cut the melody short and never fail.
class HANDSET_API CMid2iMelody {
 public:
  CMid2iMelody();
  virtual ~CMid2iMelody();

  /// Converts `file` (not taken over) into `text`. Returns hs::mid2imy::kOk, kErrNullFile for a
  /// null file, kErrMultiTrack when it holds more than one track, kErrNoEnabledTrack when its
  /// track is disabled (the text then has header, an empty MELODY line and footer).
  int DoConvertMidElelemt2Str(CMidFileElement* file, CString& text);
  /// Loads the MIDI file at `midiPath` and converts it. When the load fails its
  /// hs::midifile code is returned and GetLoadResult() tells it apart from the codes above.
  int DoConvert2Str(const char* midiPath, CString& text);
  /// As DoConvert2Str, then writes the text to `imelodyPath`; hs::midifile::kErrOpen when that
  /// file cannot be written.
  int DoConvert2File(const char* midiPath, const char* imelodyPath);
  /// The hs::midifile result of the last load by DoConvert2Str/DoConvert2File (0 = loaded).
  int GetLoadResult() const { return m_nLoadResult; }

  /// Cuts the melody after `noteLimit` tokens and keeps the whole text within `sizeLimit` bytes;
  /// -1 means no limit.
  void SetLimit(int noteLimit, int sizeLimit);
  void SetiMelodyName(const char* name) { m_strName = name; }
  /// Style 0-2; other values give 0.
  void SetStyle(int style) { m_nStyle = (style >= 0 && style <= 2) ? style : 0; }
  /// Volume level 0-15; other values give 15.
  void SetVolumeLvl(int level) { m_nVolumeLvl = (level >= 0 && level <= 15) ? level : 15; }

 protected:
  void _ProduceHeader();
  int _ProduceMelody();

  int m_bBusy = 0;
  int m_nSizeLimit = -1;
  int m_nNoteLimit = -1;
  CString m_strName;
  int m_nStyle = 0;
  CString m_strOutput;
  CMidFileElement* m_pMidFile = nullptr;
  int m_nVolumeLvl = 15;

 private:
  int m_bOwnsFile = 0;
  int m_nLoadResult = 0;
};
