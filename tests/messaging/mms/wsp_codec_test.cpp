#include <gtest/gtest.h>

#include "handset/platform/Results.h"
#include "messaging/mms/MimeText.h"
#include "messaging/mms/WspReader.h"
#include "messaging/mms/WspWriter.h"
#include "tests/messaging/mms/MmsTestUtil.h"

namespace {

using hs::test::HexBytes;
using Bytes = std::vector<uint8_t>;

// Unsigned variable-length integers: seven bits per octet, most significant first.
TEST(WspPrimitives, UintvarBothWays) {
  struct Case {
    uint32_t value;
    const char* hex;
  } cases[] = {
      {0, "00"},
      {0x7F, "7f"},
      {0x80, "81 00"},
      {0x3FFF, "ff 7f"},
      {0x4000, "81 80 00"},
      {0x0FFFFFFF, "ff ff ff 7f"},
      {0xFFFFFFFF, "8f ff ff ff 7f"},
  };
  for (const Case& c : cases) {
    Bytes b;
    hs::mms::PutUintvar(&b, c.value);
    EXPECT_EQ(b, HexBytes(c.hex)) << c.value;
    hs::mms::WspReader r(b.data(), b.size());
    uint32_t v = 0;
    EXPECT_TRUE(r.Uintvar(&v));
    EXPECT_EQ(v, c.value);
    EXPECT_TRUE(r.atEnd());
  }
  struct Bad {
    const char* hex;
    int error;
  } bad[] = {
      {"81 80", hs::mmspdu::kErrTruncated},             // continuation on the last octet
      {"90 80 80 80 00", hs::mmspdu::kErrBadValue},     // 33 bits
      {"81 81 81 81 81 00", hs::mmspdu::kErrBadValue},  // six octets
  };
  for (const Bad& c : bad) {
    Bytes b = HexBytes(c.hex);
    hs::mms::WspReader r(b.data(), b.size());
    uint32_t v = 0;
    EXPECT_FALSE(r.Uintvar(&v)) << c.hex;
    EXPECT_EQ(r.error(), c.error) << c.hex;
  }
}

TEST(WspPrimitives, IntegersLengthsAndTexts) {
  struct Case {
    const char* what;
    Bytes got;
    const char* hex;
  } cases[] = {
      {"long 0", {}, "01 00"},
      {"long 0x1234", {}, "02 12 34"},
      {"integer 127", {}, "ff"},
      {"integer 128", {}, "01 80"},
      {"integer 1015", {}, "02 03 f7"},
      {"length 30", {}, "1e"},
      {"length 31", {}, "1f 1f"},
      {"length 200", {}, "1f 81 48"},
      {"text", {}, "'abc' 00"},
      {"text high first", {}, "7f c3 a4 00"},
      {"quoted", {}, "22 '<a>' 00"},
      {"encoded ascii", {}, "'Hi' 00"},
      {"encoded utf-8", {}, "06 ea 'Gr' c3 bc 00"},
      {"encoded utf-8 first", {}, "05 ea 7f c3 84 00"},
  };
  hs::mms::PutLongInteger(&cases[0].got, 0);
  hs::mms::PutLongInteger(&cases[1].got, 0x1234);
  hs::mms::PutIntegerValue(&cases[2].got, 127);
  hs::mms::PutIntegerValue(&cases[3].got, 128);
  hs::mms::PutIntegerValue(&cases[4].got, 1015);
  hs::mms::PutValueLength(&cases[5].got, 30);
  hs::mms::PutValueLength(&cases[6].got, 31);
  hs::mms::PutValueLength(&cases[7].got, 200);
  hs::mms::PutTextString(&cases[8].got, "abc");
  hs::mms::PutTextString(&cases[9].got, "\xC3\xA4");
  hs::mms::PutQuotedString(&cases[10].got, "<a>");
  hs::mms::PutEncodedString(&cases[11].got, "Hi");
  hs::mms::PutEncodedString(&cases[12].got, "Gr\xC3\xBC");
  hs::mms::PutEncodedString(&cases[13].got, "\xC3\x84");
  for (const Case& c : cases) EXPECT_EQ(c.got, HexBytes(c.hex)) << c.what;
}

// Encoded-string-values as phones send them: plain, with a charset, UTF-16 with a byte-order
// mark, and MIME encoded-words inside a plain text.
TEST(WspPrimitives, EncodedStringValues) {
  struct Case {
    const char* hex;
    const char* text;
    int charset;
  } cases[] = {
      {"'plain' 00", "plain", 0},
      {"07 83 'ascii' 00", "ascii", 3},
      {"06 84 'Caf' e9 00", "Caf\xC3\xA9", 4},
      {"1f 06 ea 'Gr' c3 bc 00", "Gr\xC3\xBC", 106},
      {"0a 02 03 f7 ff fe 'A' 00 'B' 00 00", "AB", 1015},
      {"07 02 03 e8 00 'A' 00 00", "A", 1000},
      {"'=?utf-8?B?R3LDvMOfZQ==?=' 00",
       "Gr\xC3\xBC\xC3\x9F"
       "e",
       0},
      {"'=?ISO-8859-1?Q?Caf=E9_au?= =?utf-8?Q?_lait?=' 00", "Caf\xC3\xA9 au lait", 0},
      {"'=?bad' 00", "=?bad", 0},
  };
  for (const Case& c : cases) {
    Bytes b = HexBytes(c.hex);
    hs::mms::WspReader r(b.data(), b.size());
    hs::mms::EncodedString s;
    ASSERT_TRUE(r.EncodedStringValue(&s)) << c.hex;
    EXPECT_EQ(s.text, c.text) << c.hex;
    EXPECT_EQ(s.charset, c.charset) << c.hex;
    EXPECT_TRUE(r.atEnd()) << c.hex;
  }
  // A length that passes the end, and a text without its terminator.
  for (const char* hex : {"09 ea 'abc' 00", "'abc'"}) {
    Bytes b = HexBytes(hex);
    hs::mms::WspReader r(b.data(), b.size());
    hs::mms::EncodedString s;
    EXPECT_FALSE(r.EncodedStringValue(&s)) << hex;
    EXPECT_EQ(r.error(), hs::mmspdu::kErrTruncated) << hex;
  }
}

TEST(WspPrimitives, ContentTypeValues) {
  struct Case {
    const char* hex;
    const char* media;
    int charset;
    const char* start;
    const char* startType;
    const char* name;
  } cases[] = {
      {"9d", "image/gif", 0, "", "", ""},
      {"'audio/amr' 00", "audio/amr", 0, "", "", ""},
      {"03 83 81 ea", "text/plain", 106, "", "", ""},
      {"1b b3 89 'application/smil' 00 8a '<smil>' 00", "application/vnd.wap.multipart.related", 0,
       "<smil>", "application/smil", ""},
      {"0f 83 85 'text_1.txt' 00 81 ea", "text/plain", 106, "", "", "text_1.txt"},
      {"11 'audio/amr' 00 'Name' 00 'a' 00", "audio/amr", 0, "", "", "a"},
      {"05 83 81 02 03 f7", "text/plain", 1015, "", "", ""},
  };
  for (const Case& c : cases) {
    Bytes b = HexBytes(c.hex);
    hs::mms::WspReader r(b.data(), b.size());
    hs::mms::ContentTypeValue ct;
    ASSERT_TRUE(r.ContentType(&ct)) << c.hex;
    EXPECT_TRUE(r.atEnd()) << c.hex;
    EXPECT_EQ(ct.media, c.media) << c.hex;
    EXPECT_EQ(ct.charset, c.charset) << c.hex;
    EXPECT_EQ(ct.start, c.start) << c.hex;
    EXPECT_EQ(ct.startType, c.startType) << c.hex;
    EXPECT_EQ(ct.name, c.name) << c.hex;
  }
}

TEST(MimeText, CharsetsAndSniffing) {
  struct Case {
    const char* hex;
    int mib;
    const char* utf8;
  } cases[] = {
      {"fe ff 00 41 d8 3d de 00", 1015, "A\xF0\x9F\x98\x80"},  // surrogate pair
      {"ff fe 41 00", 1000, "A"},
      {"00 41 d8 3d", 1013, "A\xEF\xBF\xBD"},  // unpaired high surrogate
      {"41 00 42", 1014, "A"},                 // odd last octet dropped
      {"e9", 4, "\xC3\xA9"},
      {"c3 a9", 106, "\xC3\xA9"},
      {"e9", 0, "\xC3\xA9"},  // not UTF-8: read as Latin-1
      {"c3 a9", 2026, "\xC3\xA9"},
  };
  for (const Case& c : cases) {
    Bytes b = HexBytes(c.hex);
    EXPECT_EQ(hs::mms::DecodeCharset(b.data(), b.size(), c.mib), c.utf8) << c.hex;
  }
  struct Sniff {
    const char* hex;
    const char* utf8;
  } sniffs[] = {
      {"ef bb bf '<a>'", "<a>"}, {"ff fe '<' 00 'a' 00", "<a"},
      {"'<' 00 'a' 00", "<a"},   {"00 '<' 00 'a'", "<a"},
      {"'<a>'", "<a>"},
  };
  for (const Sniff& s : sniffs) {
    Bytes b = HexBytes(s.hex);
    EXPECT_EQ(hs::mms::SniffTextToUtf8(b.data(), b.size()), s.utf8) << s.hex;
  }
  EXPECT_EQ(hs::mms::SanitizeUtf8("a\xC0\x80"
                                  "b\xED\xA0\x80"),
            "a\xEF\xBF\xBD\xEF\xBF\xBD"
            "b\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD");
}

}  // namespace
