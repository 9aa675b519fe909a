#include <gtest/gtest.h>

#include <string>

#include "melody/imelody/ImyText.h"

namespace {

std::string Token(bool rest, int key, int code) {
  std::string s;
  hs::imy::AppendNoteToken(&s, rest, key, code);
  return s;
}

TEST(ImyText, TokensCarryOctavePrefixSharpLetterDigitAndDot) {
  EXPECT_EQ(Token(false, 48, 80), "c2");
  EXPECT_EQ(Token(false, 49, 80), "#c2");
  EXPECT_EQ(Token(false, 60, 80), "*5c2");
  EXPECT_EQ(Token(false, 62, 41), "*5d3.");
  EXPECT_EQ(Token(false, 47, 320), "*3b0");
  EXPECT_EQ(Token(false, 59, 160), "b1");
  EXPECT_EQ(Token(false, 70, 20), "*5#a4");
  EXPECT_EQ(Token(false, 83, 10), "*6b5");
  EXPECT_EQ(Token(false, 95, 321), "*7b0.");
  EXPECT_EQ(Token(false, 96, 80), "*7#b2");  // reads back as 96, not as octave 4
  EXPECT_EQ(Token(true, 0, 80), "r2");
  EXPECT_EQ(Token(true, 0, 161), "r1.");
  // Codes outside the table fall to the shortest digit; only the last decimal digit marks a dot.
  EXPECT_EQ(Token(true, 0, 0), "r5");
  EXPECT_EQ(Token(true, 0, 11), "r5.");
  EXPECT_EQ(Token(true, 0, 999), "r5.");
}

TEST(ImyText, KeysOutsideTheRangeMoveByOctaves) {
  EXPECT_EQ(hs::imy::FoldKeyIntoRange(46), 58);
  EXPECT_EQ(hs::imy::FoldKeyIntoRange(36), 48);
  EXPECT_EQ(hs::imy::FoldKeyIntoRange(35), 47);
  EXPECT_EQ(hs::imy::FoldKeyIntoRange(0), 48);
  EXPECT_EQ(hs::imy::FoldKeyIntoRange(97), 85);
  EXPECT_EQ(hs::imy::FoldKeyIntoRange(108), 96);
  EXPECT_EQ(hs::imy::FoldKeyIntoRange(127), 91);
  for (int k = 47; k <= 96; ++k) EXPECT_EQ(hs::imy::FoldKeyIntoRange(k), k);
  EXPECT_EQ(Token(false, 24, 80), "c2");
  EXPECT_EQ(Token(false, 121, 80), "*7#c2");
}

TEST(ImyText, LinesBreakAfterSeventyFiveTokens) {
  hs::imy::MelodyLines lines("", -1, -1);
  for (int i = 0; i < 80; ++i) ASSERT_TRUE(lines.Add(false, 48, 80));
  std::string out = lines.Finish();
  std::string first = "MELODY:", second;
  for (int i = 0; i < 75; ++i) first += "c2";
  for (int i = 0; i < 5; ++i) second += "c2";
  EXPECT_EQ(out, first + "\r\n" + second + "\r\n");

  hs::imy::MelodyLines exact("", -1, -1);
  for (int i = 0; i < 150; ++i) exact.Add(true, 0, 10);
  std::string two = exact.Finish();
  EXPECT_EQ(two.size(), 7 + 150 * 2 + 2 * 2u);  // no empty third line
  EXPECT_EQ(two.substr(two.size() - 4), "r5\r\n");

  hs::imy::MelodyLines none("", -1, -1);
  EXPECT_EQ(none.Finish(), "MELODY:\r\n");
}

TEST(ImyText, LimitsCutTheMelodyWithoutBreakingIt) {
  hs::imy::MelodyLines notes("", 3, -1);
  EXPECT_TRUE(notes.Add(false, 60, 80));
  EXPECT_TRUE(notes.Add(false, 62, 41));
  EXPECT_TRUE(notes.Add(true, 0, 80));
  EXPECT_FALSE(notes.Add(false, 64, 80));
  EXPECT_EQ(notes.Finish(), "MELODY:*5c2*5d3.r2\r\n");

  hs::imy::MelodyLines zero("", 0, -1);
  EXPECT_FALSE(zero.Add(false, 60, 80));

  // Room is kept for "END:IMELODY\r\n" plus two bytes: 10 + 7 + 2 + 13 + 2 = 34 fits exactly.
  const std::string header(10, 'h');
  hs::imy::MelodyLines size(header, -1, 34);
  EXPECT_TRUE(size.Add(false, 48, 80));
  EXPECT_FALSE(size.Add(false, 48, 80));
  std::string text = header + size.Finish() + "END:IMELODY\r\n";
  EXPECT_LE(text.size(), 34u);
  hs::imy::MelodyLines tight(header, -1, 33);
  EXPECT_FALSE(tight.Add(false, 48, 80));
}

}  // namespace
