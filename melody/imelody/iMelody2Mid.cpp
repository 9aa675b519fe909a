#include "handset/melody/iMelody2Mid.h"

#include <cstdlib>
#include <cstring>
#include <string>

#include "handset/melody/MidFileElement.h"
#include "handset/platform/Results.h"

namespace {

const char kBegin[] = "BEGIN:IMELODY\r\n";
const char kEnd[] = "END:IMELODY\r\n";
const size_t kEndLen = sizeof(kEnd) - 1;
// Work charged per walk on top of its length, so repeating an empty block still costs something.
const uint32_t kPassCost = 16;

// Natural keys of c d e f g a b per octave 3..7; any other octave reads as octave 4.
const int kNaturalKeys[5][7] = {
    {36, 38, 40, 41, 43, 45, 47}, {48, 50, 52, 53, 55, 57, 59}, {60, 62, 64, 65, 67, 69, 71},
    {72, 74, 76, 77, 79, 81, 83}, {84, 86, 88, 89, 91, 93, 95},
};

bool IsDigit(char c) {
  return c >= '0' && c <= '9';
}
bool IsLetter(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}
bool IsModifier(char c) {
  return c == '.' || c == ':' || c == ';';
}

// Character at `i`, or NUL past the end: the walk looks ahead without reading outside the text.
char At(const CString& s, int i) {
  return (i >= 0 && i < s.GetLength()) ? s[static_cast<size_t>(i)] : '\0';
}

// A decimal number that saturates instead of overflowing; stops at the first non-digit.
long ReadNumber(const char* p, const char* end, long cap) {
  long v = 0;
  for (; p < end && IsDigit(*p); ++p) {
    v = v * 10 + (*p - '0');
    if (v > cap) return cap;
  }
  return v;
}

// The value after `key` up to the next carriage return (or the text end); false when absent.
bool HeaderValue(const CString& text, const char* key, CString* value) {
  size_t pos = text.find(key);
  if (pos == std::string::npos) return false;
  pos += std::strlen(key);
  size_t cr = text.find('\r', pos);
  *value = text.substr(pos, cr == std::string::npos ? std::string::npos : cr - pos);
  return true;
}

}  // namespace

CiMelody2Mid::CiMelody2Mid() = default;

CiMelody2Mid::~CiMelody2Mid() {
  delete m_pMidFile;
}

CMidFileElement* CiMelody2Mid::DoConvert(const char* text, int& error) {
  return DoConvert(CString(text), error);
}

CMidFileElement* CiMelody2Mid::DoConvert(const CString& text, int& error) {
  delete m_pMidFile;
  m_pMidFile = nullptr;
  m_nVolumeLvl = 7;
  m_nStyle = 0;
  m_nBeat = 120;
  m_strName.Empty();
  m_strComposer.Empty();
  m_nNotes = 0;
  m_nWork = 0;
  error = hs::imy2mid::kOk;
  if (text.IsEmpty()) {
    error = hs::imy2mid::kErrHeader;
    return nullptr;
  }
  m_strText = text;
  int rc = _CheckFormat();
  if (rc != 0) {
    error = rc;
    return nullptr;
  }
  m_pMidFile = new CMidFileElement();
  rc = hs::imy2mid::kErrNoTrack;
  if (m_pMidFile->AddTrack(-1, 0xFF)) {
    m_nInsertTime = 0;
    // A tempo below 4 bpm does not fit the 24-bit MIDI tempo; above 65535 not the model's field.
    m_pMidFile->SetTempo(m_nBeat < 4 ? 4 : (m_nBeat > 65535 ? 65535 : m_nBeat));
    rc = _ParesiMelody(m_strText);
  }
  if (rc != 0) {
    delete m_pMidFile;
    m_pMidFile = nullptr;
    error = rc;
    return nullptr;
  }
  CMidFileElement* out = m_pMidFile;
  m_pMidFile = nullptr;
  return out;
}

int CiMelody2Mid::_CheckFormat() {
  CString& t = m_strText;
  if (t.compare(0, sizeof(kBegin) - 1, kBegin) != 0) return hs::imy2mid::kErrHeader;
  if (t.find("VERSION:") == std::string::npos || t.find("FORMAT:") == std::string::npos ||
      t.find("MELODY:") == std::string::npos)
    return hs::imy2mid::kErrHeader;
  // Without an END line the cut falls after the 12th character, so no melody remains.
  size_t end = t.find(kEnd);
  t.resize(end == std::string::npos ? kEndLen - 1 : end + kEndLen);

  CString v;
  if (HeaderValue(t, "NAME:", &v)) m_strName = v;
  if (HeaderValue(t, "COMPOSER:", &v)) m_strComposer = v;
  if (HeaderValue(t, "BEAT:", &v)) {
    long beat = std::strtol(v.c_str(), nullptr, 10);
    if (beat > 1000000) beat = 1000000;
    if (beat < -1000000) beat = -1000000;
    m_nBeat = static_cast<int>(beat);
  }
  if (HeaderValue(t, "STYLE:", &v) && v.size() >= 2 && v[0] == 'S' && IsDigit(v[1]))
    m_nStyle = v[1] - '0' > 2 ? 0 : v[1] - '0';
  if (HeaderValue(t, "VOLUME:", &v)) _GetVolumeLvl(v);
  return hs::imy2mid::kOk;
}

void CiMelody2Mid::_GetVolumeLvl(const CString& token) {
  if (token.size() < 2 || token[0] != 'V') return;
  if (IsDigit(token[1])) {
    long level = ReadNumber(token.data() + 1, token.data() + token.size(), 1000);
    m_nVolumeLvl = level > 15 ? 7 : static_cast<int>(level);
  } else if (token[1] == '+') {
    if (m_nVolumeLvl < 15) ++m_nVolumeLvl;
  } else if (token[1] == '-') {
    if (m_nVolumeLvl > 0) --m_nVolumeLvl;
  }
}

int CiMelody2Mid::_ParesiMelody(const CString& text) {
  CString melody;
  size_t start = text.find("MELODY:");
  if (start != std::string::npos) {
    start += 7;
    size_t end = text.find(kEnd, start);
    melody = text.substr(start, end == std::string::npos ? std::string::npos : end - start);
  } else {
    melody = text;
  }
  CString clean;
  clean.reserve(melody.size());
  for (char c : melody)
    if (c != '\r' && c != '\n') clean.push_back(c);
  return _WalkMelody(clean, 0);
}

int CiMelody2Mid::_PassUnsupportSymbol(const CString& text, int& index, const char* offWord,
                                       const char* onWord) {
  const char* word = offWord;
  size_t pos = text.find(offWord, static_cast<size_t>(index));
  if (pos == std::string::npos) {
    word = onWord;
    pos = text.find(onWord, static_cast<size_t>(index));
  }
  if (pos != static_cast<size_t>(index)) return hs::imy2mid::kErrWord;
  index += static_cast<int>(std::strlen(word)) - 1;
  return hs::imy2mid::kOk;
}

int CiMelody2Mid::_WalkMelody(const CString& s, int depth) {
  const int len = s.GetLength();
  m_nWork += static_cast<uint32_t>(len) + kPassCost;
  if (m_nWork > kMaxWork) return hs::imy2mid::kErrTooLong;
  // The last character never starts a token, and a modifier is read only before it: a melody
  // that ends in a dotted note loses that last dot, as phones reading this format do.
  const int last = len - 1;
  int rc = 0;
  for (int i = 0; i < last; ++i) {
    const char c = s[static_cast<size_t>(i)];
    const char next = At(s, i + 1);
    if (c == 'l') {
      rc = _PassUnsupportSymbol(s, i, "ledoff", "ledon");
    } else if (c == 'v') {
      rc = _PassUnsupportSymbol(s, i, "vibeoff", "vibeon");
    } else if (c == 'b' && s.compare(static_cast<size_t>(i), 4, "back") == 0) {
      rc = _PassUnsupportSymbol(s, i, "backoff", "backon");
    } else if (c == 'V' && IsDigit(next)) {
      int tokenLen = (IsDigit(At(s, i + 2)) && i + 2 < last) ? 3 : 2;
      _GetVolumeLvl(s.substr(static_cast<size_t>(i), static_cast<size_t>(tokenLen)));
      i += tokenLen - 1;
    } else if (c == '(') {
      size_t close = s.find(')', static_cast<size_t>(i) + 1);
      if (close == std::string::npos) continue;
      rc = _WalkMelody(s.substr(static_cast<size_t>(i) + 1, close - static_cast<size_t>(i) - 1),
                       depth + 1);
      i = static_cast<int>(close);
    } else if (c == '@' && IsDigit(next) && depth > 0) {
      // The count is the one digit after "@"; anything after it in the block is not walked.
      const long count = next - '0';
      CString prefix = s.substr(0, static_cast<size_t>(i));
      size_t v = s.find('V', static_cast<size_t>(i));
      CString volume = v == std::string::npos ? CString() : CString(s.substr(v));
      // Refuse a repeat that cannot fit before doing any of it.
      uint64_t cost =
          static_cast<uint64_t>(count > 0 ? count - 1 : 0) * (prefix.size() + kPassCost);
      if (m_nWork + cost > kMaxWork) return hs::imy2mid::kErrTooLong;
      for (long k = 1; k < count; ++k) {
        if (!volume.IsEmpty()) _GetVolumeLvl(volume);
        rc = _WalkMelody(prefix, depth + 1);
        if (rc != 0) return rc;
      }
      return hs::imy2mid::kOk;
    } else if (c == 'r' && IsDigit(next)) {
      char mod = (i + 2 < last && IsModifier(At(s, i + 2))) ? At(s, i + 2) : '\0';
      rc = _AddNote2Mid(true, 4, 'r', '\0', next, mod);
      i += mod ? 2 : 1;
    } else if (IsLetter(c) || c == '*' || c == '#' || c == '&') {
      int j = i;
      int octave = 4;
      if (At(s, j) == '*') {
        if (!IsDigit(At(s, j + 1))) continue;
        octave = At(s, j + 1) - '0';
        if (octave > 8) octave = 4;
        j += 2;
      }
      char accidental = '\0';
      if (At(s, j) == '#' || At(s, j) == '&') accidental = At(s, j++);
      const char letter = At(s, j);
      const char digit = At(s, j + 1);
      if (!IsLetter(letter) || !IsDigit(digit)) continue;
      j += 2;
      char mod = (j < last && IsModifier(At(s, j))) ? At(s, j) : '\0';
      rc = _AddNote2Mid(false, octave, letter, accidental, digit, mod);
      i = mod ? j : j - 1;
    }
    if (rc != 0) return rc;
  }
  return hs::imy2mid::kOk;
}

int CiMelody2Mid::_AddNote2Mid(bool isRest, int octave, char noteChar, char accidental,
                               char durationDigit, char modifier) {
  if (!m_pMidFile) return hs::imy2mid::kErrNoFile;
  if (++m_nNotes > kMaxNotes) return hs::imy2mid::kErrTooLong;
  int code = _GetDurationID(durationDigit, modifier);
  int key = 0;
  int velocity = 0;
  if (!isRest) {
    key = _GetNoteValue(octave, noteChar, accidental);
    velocity = _VolLvl2Velocity(m_nVolumeLvl);
  }
  int rc = m_pMidFile->InsertNoteEvent(0, m_nInsertTime, code, static_cast<uint8_t>(key),
                                       static_cast<uint8_t>(velocity));
  if (rc != 0) return rc;
  m_nInsertTime += static_cast<uint32_t>(code);
  return hs::imy2mid::kOk;
}

int CiMelody2Mid::_GetNoteValue(int octave, char noteChar, char accidental) {
  int row = (octave >= 3 && octave <= 7) ? octave - 3 : 1;
  int key = kNaturalKeys[row][_NoteChar2TblIdxOffset(noteChar)];
  if (accidental == '#') ++key;
  if (accidental == '&') --key;
  return key;
}

int CiMelody2Mid::_NoteChar2TblIdxOffset(char noteChar) {
  switch (noteChar) {
    case 'd':
      return 1;
    case 'e':
      return 2;
    case 'f':
      return 3;
    case 'g':
      return 4;
    case 'a':
      return 5;
    case 'b':
      return 6;
    default:
      return 0;
  }
}

int CiMelody2Mid::_GetDurationID(char digit, char modifier) {
  static const int kCodes[] = {320, 160, 80, 40, 20};
  int code = (digit >= '0' && digit <= '4') ? kCodes[digit - '0'] : 10;
  if (modifier == '.' || modifier == ':') return code + 1;
  if (modifier == ';') return code == 10 ? 10 : code / 2 + 1;
  return code;
}

int CiMelody2Mid::_VolLvl2Velocity(int level) {
  if (level <= 0) return 0;
  int v = level * 63 / 15 + 63;
  return v > 127 ? 127 : v;
}
