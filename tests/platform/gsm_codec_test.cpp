#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "handset/platform/BmpWrp.h"
#include "handset/platform/GsmCodec.h"
#include "platform/Os.h"

namespace {

std::vector<unsigned char> Septets(const char* text) {
  std::vector<unsigned char> out(512);
  out.resize(static_cast<size_t>(EncodeGsm7BitChars(text, out.data(), 512)));
  return out;
}

std::string Hex(const unsigned char* p, int n) {
  static const char d[] = "0123456789abcdef";
  std::string s;
  for (int i = 0; i < n; ++i) s += {d[p[i] >> 4], d[p[i] & 15]};
  return s;
}

// Codes typed in from the TS 23.038 default alphabet and extension table.
TEST(GsmCodec, CharactersMapToTheirTableCodes) {
  struct Case {
    const char* text;
    std::vector<unsigned char> codes;
  } cases[] = {
      {"@\xC2\xA3$\xCE\x94_", {0x00, 0x01, 0x02, 0x10, 0x11}},         // @ £ $ Δ _
      {"\xC3\x87\xC3\xA0\xC2\xA7\xC2\xBF", {0x09, 0x7F, 0x5F, 0x60}},  // Ç à § ¿
      {"\n\r \xC2\xA4", {0x0A, 0x0D, 0x20, 0x24}},                     // LF CR space ¤
      {"\xE2\x82\xAC", {0x1B, 0x65}},                                  // euro sign
      {"[]{}~^|\\\f",
       {0x1B, 0x3C, 0x1B, 0x3E, 0x1B, 0x28, 0x1B, 0x29, 0x1B, 0x3D, 0x1B, 0x14, 0x1B, 0x40, 0x1B,
        0x2F, 0x1B, 0x0A}},
      {"\xC3\xA1\xE4\xB8\xAD", {'?', '?'}},  // á and a CJK character are not GSM
      {"\xF0\x9F\x98\x80x", {'?', 'x'}},     // a surrogate pair is one '?'
  };
  for (const Case& c : cases) EXPECT_EQ(Septets(c.text), c.codes) << c.text;
}

TEST(GsmCodec, AlphabetTestAndLength) {
  struct Case {
    const char* text;
    int gsm;
    int septets;
  } cases[] = {
      {"", 1, 0},
      {"abc", 1, 3},
      {"[]", 1, 4},                    // gammu.SMSCounter: [] is 4
      {"abc\xE2\x82\xAC", 1, 5},       // abc€ is 5
      {"{}~\xE2\x82\xAC^|\\", 1, 14},  // all escapes: 14
      {"\xC3\xA1", 0, 1},
      {"caf\xC3\xA9", 1, 4},  // é is in the table, á is not
      {"\xF0\x9F\x98\x80", 0, 1},
  };
  for (const Case& c : cases) {
    EXPECT_EQ(IsGsm7BitAlphabet(c.text) != 0, c.gsm != 0) << c.text;
    EXPECT_EQ(Gsm7BitAlphabetLength(c.text), c.septets) << c.text;
  }
  EXPECT_EQ(IsGsm7BitAlphabet(nullptr), 1);
  EXPECT_EQ(Gsm7BitAlphabetLength(nullptr), 0);
}

TEST(GsmCodec, EncodingNeverCutsAnEscapePair) {
  unsigned char out[8];
  EXPECT_EQ(EncodeGsm7BitChars("a[", out, 2), 1);  // '[' needs two septets, only one left
  EXPECT_EQ(EncodeGsm7BitChars("a[", out, 3), 3);
  const unsigned short units[] = {'A', 0x20AC, 0xD83D, 0xDE00};
  EXPECT_EQ(UCS2ToGsm7Bit(units, 4, out, 8), 4);
  EXPECT_EQ(Hex(out, 4), "411b653f");
}

TEST(GsmCodec, DecodingReadsEscapesAndUnknownEscapes) {
  const unsigned char septets[] = {0x48, 0x1B, 0x65, 0x1B, 0x41, 0x10, 0x1B};
  unsigned short out[16];
  int n = Gsm7BitToUCS2(septets, 7, out, 16);
  ASSERT_EQ(n, 5);
  // H, €, an undefined escape reads as its default-alphabet character 'A', Δ, a trailing escape
  // reads as a space.
  EXPECT_EQ(std::vector<unsigned short>(out, out + n),
            (std::vector<unsigned short>{'H', 0x20AC, 'A', 0x394, ' '}));
}

// Packed octets from the reference packer in the shared oracle script (pack7) and the classic
// "hellohello" example.
TEST(GsmCodec, PackingWithFillBitsMatchesWorkedExamples) {
  struct Case {
    const char* text;
    int fill;
    const char* hex;
  } cases[] = {
      {"hellohello", 0, "e8329bfd4697d9ec37"},
      {"abcdefg", 0, "61f1985c369f01"},
      {"abcdefgh", 0, "61f1985c369fd1"},
      {"Hi", 1, "9069"},                    // after the 6-octet header 05 00 03 CE 02 02
      {"[x\xE2\x82\xAC", 2, "6c78f84d19"},  // after the 5-octet header 04 0B 02 02 03
  };
  for (const Case& c : cases) {
    std::vector<unsigned char> s = Septets(c.text);
    unsigned char packed[160];
    int n = PackGsm7Bit(s.data(), static_cast<int>(s.size()), c.fill, packed, 160);
    EXPECT_EQ(Hex(packed, n), c.hex) << c.text;
    unsigned char back[160];
    int m = UnpackGsm7Bit(packed, n, c.fill, static_cast<int>(s.size()), back);
    EXPECT_EQ(std::vector<unsigned char>(back, back + m), s) << c.text;
  }
  unsigned char small[2];
  const unsigned char three[] = {1, 2, 3};
  EXPECT_EQ(PackGsm7Bit(three, 3, 0, small, 2), 0);  // 21 bits need 3 octets
  unsigned char out[8];
  const unsigned char one[] = {0xFF};
  EXPECT_EQ(UnpackGsm7Bit(one, 1, 2, 5, out), 0);  // 6 bits left: no whole septet
}

TEST(BmpWrp, RecordAndPortableBitmapRoundTrip) {
  std::string pbm = "P1\n# a diagonal\n10 3\n1000000000\n0100000001\n0010000000\n";
  CBmpWrp bmp;
  std::string err;
  ASSERT_TRUE(bmp.LoadPbm(pbm.data(), pbm.size(), &err)) << err;
  EXPECT_EQ(bmp.GetWidth(), 10);
  EXPECT_EQ(bmp.GetHeight(), 3);
  EXPECT_TRUE(bmp.GetPixel(1, 1));
  EXPECT_TRUE(bmp.GetPixel(9, 1));
  EXPECT_FALSE(bmp.GetPixel(9, 0));
  std::vector<uint8_t> rec = bmp.GetRecord();
  const uint8_t expect[] = {16, 0, 0, 0, 10, 0,    0,    0,    3,    0,    0,
                            0,  2, 0, 0, 0,  0x80, 0x00, 0x40, 0x40, 0x20, 0x00};
  EXPECT_EQ(rec, std::vector<uint8_t>(expect, expect + sizeof expect));
  std::vector<uint8_t> p4 = bmp.SavePbm();
  CBmpWrp again;
  ASSERT_TRUE(again.LoadPbm(p4.data(), p4.size(), &err)) << err;
  EXPECT_EQ(again.GetRecord(), rec);

  const char* bad[] = {"P2\n1 1\n0", "P1\n0 4\n", "P1\n5000 1\n", "P4\n16 2\n\x01", "P1\n2 1\n1"};
  for (const char* b : bad) EXPECT_FALSE(again.LoadPbm(b, std::string(b).size(), &err)) << b;
  rec.pop_back();
  EXPECT_FALSE(again.SetRecord(rec.data(), rec.size()));  // a row cut short
}

TEST(TextConversion, Utf16ToAnsiInvertsAnsiToUtf16) {
  const char* texts[] = {"plain", "caf\xC3\xA9 \xE2\x82\xAC", "\xF0\x9F\x98\x80!", ""};
  for (const char* t : texts) {
    std::u16string u = hs::os::AnsiToUtf16(t, std::strlen(t));
    EXPECT_EQ(hs::os::Utf16ToAnsi(u.data(), u.size()), t);
  }
  const char16_t lone[] = {u'a', 0xD800, u'b'};
  EXPECT_EQ(hs::os::Utf16ToAnsi(lone, 3),
            "a\xEF\xBF\xBD"
            "b");  // U+FFFD for a lone surrogate
}

}  // namespace
