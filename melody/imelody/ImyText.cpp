#include "melody/imelody/ImyText.h"

namespace hs {
namespace imy {

namespace {

// Length of the closing "END:IMELODY\r\n" line.
constexpr size_t kFooterLen = 13;

// Natural letter and sharp flag per pitch class; black keys are the sharp of the natural below.
const char kLetter[12] = {'c', 'c', 'd', 'd', 'e', 'f', 'f', 'g', 'g', 'a', 'a', 'b'};
const bool kSharp[12] = {false, true,  false, true,  false, false,
                         true,  false, true,  false, true,  false};

const char* OctavePrefix(int key) {
  // 96 has no octave of its own here and takes the default "*4" like any key outside the table,
  // so it reads back an octave lower (as 60).
  if (key >= 37 && key <= 47) return "*3";
  if (key >= 48 && key <= 59) return "";
  if (key >= 60 && key <= 71) return "*5";
  if (key >= 72 && key <= 83) return "*6";
  if (key >= 84 && key <= 95) return "*7";
  return "*4";
}

}  // namespace

int FoldKeyIntoRange(int key) {
  while (key < kLowestKey) key += 12;
  while (key > kHighestKey) key -= 12;
  return key;
}

char DurationDigit(int code) {
  switch (code - code % 10) {
    case 320:
      return '0';
    case 160:
      return '1';
    case 80:
      return '2';
    case 40:
      return '3';
    case 20:
      return '4';
    default:
      return '5';
  }
}

void AppendNoteToken(std::string* out, bool isRest, int key, int code) {
  if (isRest) {
    out->push_back('r');
  } else {
    key = FoldKeyIntoRange(key);
    out->append(OctavePrefix(key));
    if (key == kHighestKey) {
      out->append("#b");
    } else {
      if (kSharp[key % 12]) out->push_back('#');
      out->push_back(kLetter[key % 12]);
    }
  }
  out->push_back(DurationDigit(code));
  if (code % 10 != 0) out->push_back('.');
}

bool MelodyLines::Add(bool isRest, int key, int code) {
  m_strToken.clear();
  AppendNoteToken(&m_strToken, isRest, key, code);
  ++m_nTokens;
  if (m_nNoteLimit >= 0 && m_nTokens > m_nNoteLimit) return false;
  if (m_nSizeLimit >= 0) {
    size_t total =
        m_nBefore + m_strDone.size() + m_strLine.size() + m_strToken.size() + kFooterLen + 2;
    if (total > static_cast<size_t>(m_nSizeLimit)) return false;
  }
  m_strLine += m_strToken;
  if (++m_nLineTokens == kTokensPerLine) {
    m_strDone += m_strLine;
    m_strDone += "\r\n";
    m_strLine.clear();
    m_nLineTokens = 0;
  }
  return true;
}

const std::string& MelodyLines::Finish() {
  if (!m_strLine.empty()) {
    m_strDone += m_strLine;
    m_strDone += "\r\n";
    m_strLine.clear();
  }
  return m_strDone;
}

}  // namespace imy
}  // namespace hs
