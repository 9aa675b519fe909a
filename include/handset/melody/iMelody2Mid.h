#pragma once

#include <cstdint>

#include "handset/export.h"
#include "handset/platform/Strings.h"

class CMidFileElement;

/// Converts an iMelody text (BEGIN:IMELODY ... END:IMELODY, lines ending in CR LF) into a new
/// single-track MIDI model. Notes and rests go into track 0 one after another; a rest is a silent
/// note (key 0, velocity 0). Start times advance by duration codes (a quarter is 80) while the
/// track reads them in thirty-second units, so notes sit ten times their length apart.
///
/// Repeat blocks are expanded, so a short text can ask for a huge melody. A conversion stops with
/// hs::imy2mid::kErrTooLong once it would add more than kMaxNotes notes or walk more than
/// kMaxWork characters (repetitions included). A "@" outside a block repeats nothing. The last
/// character of the melody never starts a token and a ".", ":" or ";" there is not read, so a
/// melody ending in a dotted note reads back with that last note undotted.
class HANDSET_API CiMelody2Mid {
 public:
  /// Most notes and rests one conversion may produce.
  static constexpr uint32_t kMaxNotes = 20000;
  /// Most melody characters one conversion may walk, counting every repetition of a block.
  static constexpr uint32_t kMaxWork = 1u << 20;

  CiMelody2Mid();
  virtual ~CiMelody2Mid();

  /// Converts `text`. Returns a new model owned by the caller (delete it), or null with `error`
  /// set: hs::imy2mid::kErrHeader for an empty text or a bad header, kErrWord for a led/vibe/back
  /// word that is not allowed where it stands, kErrTooLong past the limits above, or the track
  /// codes 17-19 from inserting a note. `error` is kOk on success. A BEAT the MIDI tempo cannot
  /// hold is limited to 4..65535 for the model; GetBeat() keeps the value read.
  CMidFileElement* DoConvert(const CString& text, int& error);
  /// The same for a NUL-terminated text; null counts as empty.
  CMidFileElement* DoConvert(const char* text, int& error);

  /// Header values of the last conversion.
  const CString& GetName() const { return m_strName; }
  const CString& GetComposer() const { return m_strComposer; }
  int GetBeat() const { return m_nBeat; }
  int GetStyle() const { return m_nStyle; }
  /// The volume level (0-15) after the last conversion, volume changes in the melody included.
  int GetVolumeLvl() const { return m_nVolumeLvl; }

 protected:
  int _CheckFormat();
  int _ParesiMelody(const CString& text);
  int _PassUnsupportSymbol(const CString& text, int& index, const char* offWord,
                           const char* onWord);
  int _AddNote2Mid(bool isRest, int octave, char noteChar, char accidental, char durationDigit,
                   char modifier);
  void _GetVolumeLvl(const CString& token);
  int _GetNoteValue(int octave, char noteChar, char accidental);
  int _GetDurationID(char digit, char modifier);
  int _VolLvl2Velocity(int level);
  int _NoteChar2TblIdxOffset(char noteChar);

  uint32_t m_nInsertTime = 0;
  int m_nVolumeLvl = 7;
  int m_nStyle = 0;
  int m_nBeat = 120;
  CString m_strText;
  CString m_strName;
  CString m_strComposer;
  CMidFileElement* m_pMidFile = nullptr;

 private:
  int _WalkMelody(const CString& melody, int depth);

  uint32_t m_nNotes = 0;
  uint32_t m_nWork = 0;
};
