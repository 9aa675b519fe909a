#include <gtest/gtest.h>

#include <strings.h>

#include <cstdint>
#include <cstring>
#include <random>
#include <sstream>
#include <string>

#include "handset/platform/Strings.h"
#include "platform/Text.h"
#include "tests/TestUtil.h"

namespace {

std::string Utf8(uint32_t cp) {
  std::string s;
  if (cp < 0x80) {
    s += static_cast<char>(cp);
  } else if (cp < 0x800) {
    s += static_cast<char>(0xC0 | (cp >> 6));
    s += static_cast<char>(0x80 | (cp & 0x3F));
  } else if (cp < 0x10000) {
    s += static_cast<char>(0xE0 | (cp >> 12));
    s += static_cast<char>(0x80 | ((cp >> 6) & 0x3F));
    s += static_cast<char>(0x80 | (cp & 0x3F));
  } else {
    s += static_cast<char>(0xF0 | (cp >> 18));
    s += static_cast<char>(0x80 | ((cp >> 12) & 0x3F));
    s += static_cast<char>(0x80 | ((cp >> 6) & 0x3F));
    s += static_cast<char>(0x80 | (cp & 0x3F));
  }
  return s;
}

// Pairs from the Unicode code charts: capital and small forms compare equal; letters whose
// lower case is not one code point, or that only casefold (not lower) together, do not.
TEST(CompareNoCase, FoldsLettersBeyondAscii) {
  struct Case {
    const char* a;
    const char* b;
    bool equal;
  } cases[] = {
      {"Caf\xC3\x89", "caf\xC3\xA9", true},            // É é
      {"\xCE\xA9\xCE\xA3", "\xCF\x89\xCF\x83", true},  // ΩΣ ωσ
      {"\xD0\x96\xD0\x81", "\xD0\xB6\xD1\x91", true},  // ЖЁ жё
      {"\xD4\xB1", "\xD5\xA1", true},                  // Armenian Ա ա
      {"\xC5\xB8", "\xC3\xBF", true},                  // Ÿ ÿ
      {"\xC7\x84", "\xC7\x86", true},                  // Ǆ ǆ
      {"\xEF\xBC\xA1", "\xEF\xBD\x81", true},          // fullwidth Ａ ａ
      {"\xE2\x92\xB6", "\xE2\x93\x90", true},          // circled Ⓐ ⓐ
      {"\xF0\x90\x90\x80", "\xF0\x90\x90\xA8", true},  // Deseret 𐐀 𐐨
      {"NEWS", "news", true},
      {"\xC3\x9F", "ss", false},        // ß has no one-letter capital
      {"\xC4\xB0", "i", false},         // İ lowers to two code points
      {"\xCF\x82", "\xCF\x83", false},  // final ς is not σ
      {"\xC4\xB1", "I", false},         // dotless ı
      {"\xC3\x80", "A", false},         // accents are letters of their own
      {"\xFF\xC3", "\xFF\xC3", true},   // bytes that are no character
      {"\xC0\x81", "A", false},         // an overlong form is not 'A'
      {"\xC3(", "\xC3(", true},
  };
  for (const Case& c : cases) {
    EXPECT_EQ(CString(c.a).CompareNoCase(c.b) == 0, c.equal) << c.a << " / " << c.b;
    EXPECT_EQ(CString(c.b).CompareNoCase(c.a) == 0, c.equal) << c.b << " / " << c.a;
  }
  EXPECT_GT(CString("x").CompareNoCase(nullptr), 0);
  EXPECT_EQ(CString("").CompareNoCase(nullptr), 0);
}

// On ASCII the order is that of the C library's strcasecmp.
TEST(CompareNoCase, AsciiOrderMatchesStrcasecmp) {
  std::mt19937 rng(7);
  const char alphabet[] = "aAbBzZ[]_`@09 ";
  for (int i = 0; i < 5000; ++i) {
    std::string a, b;
    for (int k = rng() % 5; k > 0; --k) a += alphabet[rng() % (sizeof alphabet - 1)];
    for (int k = rng() % 5; k > 0; --k) b += alphabet[rng() % (sizeof alphabet - 1)];
    int want = strcasecmp(a.c_str(), b.c_str());
    int got = CString(a).CompareNoCase(b.c_str());
    EXPECT_EQ((want > 0) - (want < 0), (got > 0) - (got < 0)) << a << " / " << b;
  }
}

// Python's Unicode database is the oracle: every letter whose lower case is one other code point
// folds to it, and a sample of the rest folds to itself.
TEST(CompareNoCase, AgreesWithPythonLowerOnEveryLetter) {
  if (!hs::test::HavePythonModule("unicodedata")) GTEST_SKIP() << "/usr/bin/python3 not found";
  std::string out;
  ASSERT_EQ(
      hs::test::RunCommand("/usr/bin/python3 -c \"import sys\n"
                           "for cp in list(range(0x80, 0x3000)) + list(range(0xA640, 0xA800)) +"
                           " list(range(0xFF00, 0x10000)) + list(range(0x10400, 0x10500)):\n"
                           "    if 0xD800 <= cp < 0xE000: continue\n"
                           "    l = chr(cp).lower()\n"
                           "    print(cp, ord(l) if len(l) == 1 else -1)\"",
                           &out),
      0);
  std::istringstream in(out);
  long cp = 0, lower = 0;
  size_t letters = 0, others = 0;
  while (in >> cp >> lower) {
    std::string s = Utf8(static_cast<uint32_t>(cp));
    std::string folded = hs::os::FoldCase(s.data(), s.size());
    if (lower >= 0 && lower != cp) {
      EXPECT_EQ(folded, Utf8(static_cast<uint32_t>(lower))) << std::hex << cp;
      ++letters;
    } else {
      EXPECT_EQ(folded, s) << std::hex << cp;
      ++others;
    }
  }
  EXPECT_GT(letters, 1000u);
  EXPECT_GT(others, 10000u);
}

TEST(TextMeasure, BoundariesAndUtf16Units) {
  struct Case {
    const char* text;
    size_t pos;
    size_t boundary;
  } cuts[] = {
      {"a\xC3\xA9", 2, 1},          // inside é
      {"a\xC3\xA9", 3, 3},          // after it
      {"\xE2\x82\xAC", 2, 0},       // inside €
      {"\xF0\x90\x90\x80x", 3, 0},  // inside a 4-byte character
      {"\xF0\x90\x90\x80x", 4, 4},
      {"\x80\x80\x80\x80", 2, 2},  // stray continuation bytes stand alone
      {"ab", 9, 2},
  };
  for (const Case& c : cuts)
    EXPECT_EQ(hs::os::CharBoundary(c.text, std::strlen(c.text), c.pos), c.boundary)
        << c.text << " at " << c.pos;
  const std::pair<const char*, size_t> units[] = {
      {"abc", 3}, {"\xC3\xA9", 1}, {"\xE2\x82\xAC", 1}, {"\xF0\x90\x90\x80", 2}, {"\xFF\xFE", 2}};
  for (const auto& [text, n] : units) EXPECT_EQ(hs::os::Utf16Length(text, std::strlen(text)), n);
}

}  // namespace
