#include <gtest/gtest.h>

#include <cstdio>
#include <cstring>
#include <random>
#include <string>

#include "handset/pim/QP.h"

namespace {

std::string Dec(CQP& qp, const char* in) {
  const char* r = qp.Decode(in);
  return r ? std::string(r) : std::string("<null>");
}

TEST(QpDecode, EscapesSoftBreaksAndCutShortInput) {
  CQP qp;
  const std::pair<const char*, const char*> cases[] = {
      {"=41=42", "AB"},
      {"=4a", "4a"},  // lower-case digits are no escape: only '=' goes
      {"=3d", "3d"},
      {"abc=\r\ndef", "abcdef"},
      {"a=\rb", "a\rb"},  // CR without LF is no soft break
      {"x=G1y", "xG1y"},
      {"==41", "A"},
      {"abc=", "<null>"},
      {"abc=4", "<null>"},
      {"=\r", "<null>"},
      {"", ""},
      {"caf=C3=A9", "caf\xC3\xA9"}};
  for (const auto& [in, out] : cases) EXPECT_EQ(Dec(qp, in), out) << in;
  EXPECT_EQ(qp.GetLength(), 5u);  // of the last text decoded
  EXPECT_EQ(qp.Decode(nullptr), nullptr);
}

TEST(QpEncode, CopySetHexAndTheSingleDigitQuirk) {
  CQP qp;
  // Every other byte value is checked against a model below.
  EXPECT_STREQ(qp.Encode("a=b#[%<>?_ Zz09\xC3\xA9"), "a=3Db=23=5B%<>?_ Zz09=C3=A9");
  // A tab gives one digit and a NUL: the text ends there.
  const char* tab = qp.Encode("a\tb");
  EXPECT_EQ(std::memcmp(tab, "a=9\0", 5), 0);
  EXPECT_EQ(qp.GetLength(), 3u);
  std::string longLine(500, 'x');
  std::string in = longLine + "\r\n" + longLine;
  EXPECT_EQ(std::string(qp.Encode(in.c_str())), in);  // no soft breaks, CR LF kept
  EXPECT_EQ(qp.Encode(nullptr), nullptr);
}

TEST(QpRoundTrip, EncodeThenDecodeGivesTheInputBackForBytesFrom0x10) {
  std::mt19937 rng(7);
  CQP enc, dec;
  for (int round = 0; round < 200; ++round) {
    std::string s(static_cast<size_t>(rng() % 300), ' ');
    for (char& c : s) c = static_cast<char>(0x10 + rng() % 0xF0);
    const char* e = enc.Encode(s.c_str());
    ASSERT_NE(e, nullptr);
    const char* d = dec.Decode(e);
    ASSERT_NE(d, nullptr);
    ASSERT_EQ(std::string(d), s);
  }
}

// Straightforward byte-at-a-time models of the two coders, to check the block-wise code against.
std::string ModelDecode(const std::string& in, bool* ok) {
  auto hex = [](char c) {
    return (c >= '0' && c <= '9') ? c - '0' : (c >= 'A' && c <= 'F') ? c - 'A' + 10 : -1;
  };
  std::string out;
  *ok = true;
  for (size_t i = 0; i < in.size();) {
    if (in[i] != '=') {
      out += in[i++];
    } else if (i + 2 >= in.size()) {
      *ok = false;
      return out;
    } else if (hex(in[i + 1]) >= 0 && hex(in[i + 2]) >= 0) {
      out += static_cast<char>(hex(in[i + 1]) * 16 + hex(in[i + 2]));
      i += 3;
    } else if (in[i + 1] == '\r' && in[i + 2] == '\n') {
      i += 3;
    } else {
      i += 1;
    }
  }
  return out;
}

std::string ModelEncode(const std::string& in) {
  std::string out;
  for (unsigned char c : in) {
    if (c == '\n' || c == '\r' || c == ' ' || (c >= 0x25 && c <= 0x3C) || c == 0x3E || c == 0x3F ||
        (c >= 'A' && c <= 'Z') || c == '_' || (c >= 'a' && c <= 'z')) {
      out += static_cast<char>(c);
      continue;
    }
    char buf[4];
    std::snprintf(buf, sizeof(buf), "%X", c);
    out += '=';
    out += buf;
    if (c < 0x10) break;  // the NUL after the single digit ends the text
  }
  return out;
}

TEST(QpBlocks, EveryByteValueInsideALongText) {
  CQP qp;
  for (int c = 1; c < 256; ++c) {
    for (size_t at : {0u, 7u, 15u, 16u, 31u}) {
      std::string s(48, 'q');
      s[at] = static_cast<char>(c);
      ASSERT_EQ(std::string(qp.Encode(s.c_str())), ModelEncode(s)) << c << " at " << at;
    }
  }
}

TEST(QpBlocks, LongRandomTextsMatchAByteAtATimeModel) {
  std::mt19937 rng(5);
  const char alphabet[] = "==\r\n0123456789ABCDEFabcdef xyz#@\xC3\xA9\t";
  CQP qp;
  for (int round = 0; round < 400; ++round) {
    std::string s(static_cast<size_t>(rng() % 200), ' ');
    int density = 1 + static_cast<int>(rng() % 30);  // from dense escapes to long clean runs
    for (char& c : s) {
      if (static_cast<int>(rng() % 32) < density)
        c = rng() % 8 ? alphabet[rng() % (sizeof(alphabet) - 1)] : char(rng() % 255 + 1);
      else
        c = static_cast<char>('a' + rng() % 26);
    }
    bool ok = false;
    std::string want = ModelDecode(s, &ok);
    const char* got = qp.Decode(s.c_str());
    ASSERT_EQ(got != nullptr, ok) << s;
    if (ok) {
      ASSERT_EQ(std::string(got, qp.GetLength()), want) << s;
    }
    const char* enc = qp.Encode(s.c_str());
    ASSERT_EQ(std::string(enc), ModelEncode(s)) << s;
  }
}

}  // namespace
