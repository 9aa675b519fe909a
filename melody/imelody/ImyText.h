#pragma once

#include <string>

namespace hs {
namespace imy {

/// Lowest and highest key an iMelody token can carry here: b in octave 3 up to the sharp of b
/// (96, written with the default octave prefix "*4").
constexpr int kLowestKey = 47;
constexpr int kHighestKey = 96;
/// Tokens per melody line before the line is broken.
constexpr int kTokensPerLine = 75;

/// Moves a key outside 47..96 by whole octaves into that range, so the pitch class survives.
int FoldKeyIntoRange(int key);

/// The duration digit of a duration code: 320 "0", 160 "1", 80 "2", 40 "3", 20 "4", anything else
/// "5". Dotted codes (last decimal digit not 0) map by their undotted part.
char DurationDigit(int code);

/// Appends the token of one note (`key` folded into range first) or rest with duration `code`:
/// octave prefix, "#" for a black key, the letter, the duration digit, "." for a dotted code.
void AppendNoteToken(std::string* out, bool isRest, int key, int code);

/// Builds the melody lines: "MELODY:" and up to 75 tokens per line, each line ending in CR LF,
/// stopping at a note limit or a size limit (-1 for none). The size limit counts `before` (the
/// text already produced ahead of the melody) and leaves room for the closing line.
class MelodyLines {
 public:
  MelodyLines(const std::string& before, int noteLimit, int sizeLimit)
      : m_nBefore(before.size()), m_nNoteLimit(noteLimit), m_nSizeLimit(sizeLimit) {}
  /// Adds one token; false when a limit stops the melody (the token is not added).
  bool Add(bool isRest, int key, int code);
  /// The finished lines; the current line is closed first.
  const std::string& Finish();

 private:
  size_t m_nBefore;
  int m_nNoteLimit;
  int m_nSizeLimit;
  int m_nTokens = 0;
  int m_nLineTokens = 0;
  std::string m_strDone;
  std::string m_strLine = "MELODY:";
  std::string m_strToken;
};

}  // namespace imy
}  // namespace hs
