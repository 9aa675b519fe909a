#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "handset.h"

namespace {

std::string Hex(const std::vector<unsigned char>& v) {
  static const char d[] = "0123456789abcdef";
  std::string s;
  for (unsigned char b : v) s += {d[b >> 4], d[b & 15]};
  return s;
}

// Runs an item's encoder into a buffer of `room` bytes; the bytes written.
std::vector<unsigned char> Encode(CSmMedia& m, int room = 200, ME_SMS_ENCODE enc = SMS_ENC_AUTO) {
  std::vector<unsigned char> buf(static_cast<size_t>(room) + 1, 0xEE);
  unsigned char* p = buf.data();
  int left = room;
  int n = m.Encoder(enc, p, left);
  EXPECT_EQ(p - buf.data(), n);
  EXPECT_EQ(left, room - n);
  EXPECT_EQ(buf[static_cast<size_t>(room)], 0xEE) << "wrote past room";
  buf.resize(static_cast<size_t>(n));
  return buf;
}

CBmpWrp Checker(int w, int h) {
  CBmpWrp b(w, h);
  for (int y = 0; y < h; ++y)
    for (int x = 0; x < w; ++x) b.SetPixel(x, y, (x + y) % 2 == 0);
  return b;
}

TEST(SmItems, PredefinedIndicesAreSentModuloTheirRange) {
  CSmSound sound(13);
  sound.SetPosition(7);
  EXPECT_EQ(Hex(Encode(sound)), "0b020703");  // sound 13 is sent as 3
  CSmAnimation anim(17);
  anim.SetPosition(0x104);                   // only the low byte of the position is sent
  EXPECT_EQ(Hex(Encode(anim)), "0d020402");  // animation 17 as 2
  EXPECT_EQ(sound.EstimateEncodeSize(true, SMS_ENC_AUTO), 4);
  EXPECT_EQ(anim.EstimateEncodeSize(false, SMS_ENC_AUTO), 32);
  CSmAnimation user(-1);
  EXPECT_EQ(Encode(user).size(), 0u);  // a non-predefined animation sends nothing
  EXPECT_EQ(user.EstimateEncodeSize(true, SMS_ENC_AUTO), 0);
  EXPECT_EQ(Encode(sound, 3).size(), 0u);  // does not fit: nothing written
}

TEST(SmItems, SoundKindFollowsItsData) {
  CSmSound s(-1);
  EXPECT_EQ(s.GetType(), SMOBJ_USER_MELODY);
  EXPECT_EQ(s.GetUsedPosition(), 1);
  s.SetData(4);
  EXPECT_EQ(s.GetType(), SMOBJ_PREDEF_SOUND);
  int idx = 0;
  EXPECT_TRUE(s.GetData(&idx));
  EXPECT_EQ(idx, 4);
  EXPECT_EQ(s.GetLength(), 0);
  s.SetData("not a melody");
  EXPECT_EQ(s.GetType(), SMOBJ_USER_MELODY);
  EXPECT_FALSE(s.GetData(&idx));
  EXPECT_EQ(s.GetLength(), 12);
  EXPECT_EQ(Encode(s).size(), 0u);  // not iMelody: not sent
  EXPECT_EQ(s.EstimateEncodeSize(true, SMS_ENC_GSM7), 15);

  CSmAnimation a(3);
  a.CSmMedia::SetData("xy", 2);
  a.SetData(5);  // unlike a sound the kind stays and the data goes
  EXPECT_EQ(a.GetType(), SMOBJ_ANIMATION);
  EXPECT_EQ(a.m_nRawSize, 0);
}

TEST(SmItems, IMelodyCheckIgnoresCaseButNotTheLineBreak) {
  struct Case {
    const char* text;
    bool valid;
  } cases[] = {
      {"begin:imelody\r\nmelody:c\r\nend:imelody", true},
      {"BEGIN:IMELODY\r\nVERSION:1.2\r\nFORMAT:CLASS1.0\r\nMELODY:c2d2\r\nEND:IMELODY\r\n", true},
      {"begin:imelody\nmelody:c\r\nend:imelody", false},
      {"BEGIN:IMELODY\r\nEND:IMELODY", false},
      {"BEGIN:IMELODY\r\nMELODY:END:IMELODY", true},  // the end is looked for after "MELODY:"
      {"BEGIN:IMELODY\r\nMELODY:c2", false},
      {" BEGIN:IMELODY\r\nMELODY:c\r\nEND:IMELODY", false},
      {"", false},
      {nullptr, false},
  };
  for (const Case& c : cases)
    EXPECT_EQ(CSmSound::IsValidIMelodyFormat(c.text), c.valid) << (c.text ? c.text : "null");
}

TEST(SmItems, MelodyEncodesAsUserDefinedSound) {
  const char* melody = "begin:imelody\r\nmelody:c\r\nend:imelody";
  CSmSound s(-1);
  s.SetData(melody);
  s.SetPosition(2);
  std::vector<unsigned char> ie = Encode(s);
  size_t n = std::strlen(melody);
  ASSERT_EQ(ie.size(), n + 3);
  EXPECT_EQ(ie[0], 0x0C);
  EXPECT_EQ(ie[1], n + 1);
  EXPECT_EQ(ie[2], 2);
  EXPECT_EQ(std::string(ie.begin() + 3, ie.end()), melody);
  EXPECT_EQ(s.EstimateEncodeSize(true, SMS_ENC_AUTO), static_cast<int>(n + 3));
  std::string longer = "BEGIN:IMELODY\r\nMELODY:" + std::string(240, 'c') + "\r\nEND:IMELODY";
  s.SetData(longer.c_str());
  EXPECT_EQ(Encode(s, 300).size(), 0u);  // 254 bytes is the most an IE length octet allows
}

TEST(SmItems, PictureShapesFollowTheSizeRules) {
  struct Case {
    int w, h;
    int iei, ieLen, total;
    int widthOctets, rows;  // variable pictures only
  } cases[] = {
      {32, 32, 0x10, 129, 131, 0, 0},  {16, 16, 0x11, 33, 35, 0, 0}, {24, 24, 0x12, 75, 77, 3, 24},
      {200, 9, 0x12, 128, 130, 25, 5},  // at most 1024 bits: 1024 / 200 = 5 rows
      {21, 4, 0x12, 11, 13, 2, 4},      // width rounded down to 16
      {16, 32, 0x12, 67, 69, 2, 32},
  };
  for (const Case& c : cases) {
    CSmPicture pic;
    ASSERT_TRUE(pic.SetData(Checker(c.w, c.h)));
    pic.SetPosition(9);
    std::vector<unsigned char> ie = Encode(pic, 200);
    ASSERT_EQ(static_cast<int>(ie.size()), c.total) << c.w << "x" << c.h;
    EXPECT_EQ(ie[0], c.iei);
    EXPECT_EQ(ie[1], c.ieLen);
    EXPECT_EQ(ie[2], 9);
    if (c.iei == 0x12) {
      EXPECT_EQ(ie[3], c.widthOctets);
      EXPECT_EQ(ie[4], c.rows);
    }
    EXPECT_EQ(pic.EstimateEncodeSize(true, SMS_ENC_AUTO), c.total);
    // The first row of a checkerboard starts with a black pixel: 1010...
    EXPECT_EQ(ie[c.iei == 0x12 ? 5 : 3], 0xAA);
    unsigned char* p = ie.data();
    std::unique_ptr<CSmMedia> back(CSmPicture::_IeDecoder(p, ie.data() + ie.size()));
    ASSERT_TRUE(back);
    CBmpWrp got;
    ASSERT_TRUE(static_cast<CSmPicture*>(back.get())->GetBitmap(&got));
    int w8 = c.iei == 0x12 ? c.widthOctets * 8 : c.w;
    EXPECT_EQ(got.GetWidth(), w8);
    EXPECT_EQ(got.GetHeight(), c.iei == 0x12 ? c.rows : c.h);
    for (int y = 0; y < got.GetHeight(); ++y)
      for (int x = 0; x < got.GetWidth(); ++x) ASSERT_EQ(got.GetPixel(x, y), (x + y) % 2 == 0);
    EXPECT_EQ(back->GetPosition(), 9);
  }
  // Records of other writers: only the width and height words are certain.
  struct Foreign {
    std::vector<int32_t> words;  // header words; rows follow as 0xF0 bytes
    int rowBytes;
    int total;
  } foreign[] = {
      {{0, 24, 24}, 0, 77},                 // no rows at all: a white picture
      {{40, 200, 10, 1, 1}, 25 * 10, 130},  // a 40-byte-style header, all rows present
  };
  for (const Foreign& f : foreign) {
    std::vector<uint8_t> rec;
    for (int32_t w : f.words)
      for (int k = 0; k < 4; ++k) rec.push_back(static_cast<uint8_t>(w >> (8 * k)));
    rec.insert(rec.end(), static_cast<size_t>(f.rowBytes), 0xF0);
    CSmPicture pic;
    pic.CSmMedia::SetData(rec.data(), static_cast<int>(rec.size()));
    std::vector<unsigned char> ie = Encode(pic, 200);
    ASSERT_EQ(static_cast<int>(ie.size()), f.total) << f.words[1];
    EXPECT_EQ(ie[5], f.rowBytes ? 0xF0 : 0x00);
  }
  CSmPicture empty;
  EXPECT_EQ(empty.EstimateEncodeSize(true, SMS_ENC_AUTO), 0);
  EXPECT_EQ(Encode(empty).size(), 0u);
  CSmPicture narrow;
  narrow.SetData(Checker(7, 7));
  EXPECT_EQ(Encode(narrow).size(), 0u);  // no whole octet of width
}

TEST(SmItems, TextFormatIeAndEstimates) {
  CSmTextFormat f;
  EXPECT_EQ(f.m_cFormat, 3);
  EXPECT_EQ(f.m_cColor, 9);
  f.SetPosition(3);
  f.m_nEffectLen = 0x104;
  f.m_cFormat = 0x11;  // bold, centred
  EXPECT_EQ(Hex(Encode(f)), "0a0403041109");
  EXPECT_EQ(f.EstimateEncodeSize(true, SMS_ENC_UCS2), 6);

  struct Case {
    const char* text;
    ME_SMS_ENCODE enc;
    int octets, bits;
  } cases[] = {
      {"hello", SMS_ENC_AUTO, 5, 35},
      {"[]", SMS_ENC_GSM7, 4, 28},
      {"hello", SMS_ENC_UCS2, 10, 80},
      {"h\xC3\xA1", SMS_ENC_AUTO, 4, 32},             // á is not GSM: 2 octets per unit
      {"\xF0\x9F\x98\x80", SMS_ENC_AUTO, 4, 32},      // a surrogate pair is 2 units
      {"abc", static_cast<ME_SMS_ENCODE>(4), 6, 48},  // any other coding counts as UCS-2
  };
  for (const Case& c : cases) {
    CSmText t(c.text);
    EXPECT_EQ(t.EstimateEncodeSize(true, c.enc), c.octets) << c.text;
    EXPECT_EQ(t.EstimateEncodeSize(false, c.enc), c.bits) << c.text;
  }
}

TEST(SmItems, TextEncoderWritesGsmOrUcs2) {
  CSmText gsm("hellohello");
  EXPECT_EQ(Hex(Encode(gsm)), "e8329bfd4697d9ec37");
  CSmText ucs2(
      "\xE2\x82\xAC"
      "a\xF0\x9F\x98\x80");
  EXPECT_EQ(Hex(Encode(ucs2)), "20ac0061d83dde00");
  EXPECT_EQ(Hex(Encode(gsm, 9, SMS_ENC_UCS2)), "");  // 20 octets do not fit in 9
}

TEST(SmItems, SeparateNeverCutsEscapesOrPairs) {
  struct Case {
    const char* text;
    int size;
    ME_SMS_ENCODE enc;
    const char* first;
    const char* rest;  // null: everything fits
  } cases[] = {
      {"abcdefghij", 5, SMS_ENC_GSM7, "abcde", "fghij"},  // 5 octets hold 5 septets
      {"abcdefghij", 7, SMS_ENC_GSM7, "abcdefgh", "ij"},  // 7 octets hold 8 septets
      {"abcdefg[", 7, SMS_ENC_GSM7, "abcdefg", "["},      // the escape pair stays whole
      {"abcdefgh", 7, SMS_ENC_GSM7, "abcdefgh", nullptr},
      {"ab\xF0\x9F\x98\x80"
       "c",
       6, SMS_ENC_UCS2, "ab",
       "\xF0\x9F\x98\x80"
       "c"},
      {"ab\xF0\x9F\x98\x80"
       "c",
       8, SMS_ENC_AUTO, "ab\xF0\x9F\x98\x80", "c"},
      {"\xE2\x82\xAC\xE2\x82\xAC", 2, SMS_ENC_UCS2, "\xE2\x82\xAC", "\xE2\x82\xAC"},
  };
  for (const Case& c : cases) {
    CSmText t(c.text);
    t.SetPosition(10);
    std::unique_ptr<CSmText> rest(t.Separate(c.size, c.enc));
    EXPECT_STREQ(static_cast<char*>(t), c.first) << c.text;
    if (!c.rest) {
      EXPECT_FALSE(rest) << c.text;
      continue;
    }
    ASSERT_TRUE(rest) << c.text;
    EXPECT_STREQ(static_cast<char*>(*rest), c.rest) << c.text;
    EXPECT_EQ(rest->GetPosition(), 10 + t.GetNumOfWords()) << c.text;
    EXPECT_EQ(t.GetUsedPosition(), t.GetNumOfWords());
  }
}

TEST(SmItems, TextOperatorsAndRemove) {
  CSmText a("ab\xC3\xA9");
  EXPECT_EQ(a.GetLength(), 4);
  EXPECT_EQ(a.GetNumOfWords(), 3);
  EXPECT_EQ(a.GetUsedPosition(), 3);
  CSmText sum = a + CSmText("cd");
  EXPECT_STREQ(static_cast<char*>(sum),
               "ab\xC3\xA9"
               "cd");
  EXPECT_EQ(sum[1], 'b');
  EXPECT_EQ(sum[99], '\0');
  const unsigned short units[] = {'h', 0xD83D, 0xDE00};
  CSmText fromUnits(units, 3);
  EXPECT_STREQ(static_cast<char*>(fromUnits), "h\xF0\x9F\x98\x80");
  CSmText r("a-b-c");
  EXPECT_EQ(r.Remove('-'), 2);
  EXPECT_STREQ(static_cast<char*>(r), "abc");
  EXPECT_EQ(r.m_nRawSize, 6);         // deliberately not updated
  EXPECT_EQ(r.GetUsedPosition(), 5);  // nor the used positions
  CSmText none("");
  EXPECT_EQ(none.Remove('x'), 0);
  EXPECT_EQ(none.GetNumOfWords(), 0);
}

TEST(SmItems, HtmlSourceAndAttachmentBlocks) {
  CSmHtml h;
  const unsigned char html[] = {'<', 'p', '>'};
  ASSERT_TRUE(h.SetData(html, 3));
  EXPECT_EQ(h.m_nSize, 3);
  EXPECT_EQ(h.m_nRawSize, 3);
  EXPECT_STREQ(static_cast<char*>(h.GetData()), "<p>");  // always terminated
  std::unique_ptr<CSmMedia> hc(h.Clone());
  EXPECT_STREQ(static_cast<char*>(hc->GetData()), "<p>");

  CSmAttach a;
  std::string longName(300, 'n'), longId(200, 'i');
  ASSERT_TRUE(a.SetData(html, 3, longName.c_str(), longId.c_str()));
  EXPECT_EQ(std::strlen(a.GetFileName()), 256u);
  EXPECT_EQ(std::strlen(a.GetContentID()), 128u);
  a.SetData(html, 2, nullptr, "x");
  EXPECT_STREQ(a.GetFileName(), "");
  EXPECT_EQ(a.GetLength(), 2);
  for (CSmMedia* m : std::vector<CSmMedia*>{&h, &a}) {
    EXPECT_EQ(m->EstimateEncodeSize(true, SMS_ENC_AUTO), 0);
    EXPECT_EQ(Encode(*m).size(), 0u);
  }
}

}  // namespace
