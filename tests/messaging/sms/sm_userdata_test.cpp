#include <gtest/gtest.h>

#include <memory>
#include <random>
#include <string>
#include <vector>

#include "handset.h"

namespace {

std::string Hex(const unsigned char* p, int n) {
  static const char d[] = "0123456789abcdef";
  std::string s;
  for (int i = 0; i < n; ++i) s += {d[p[i] >> 4], d[p[i] & 15]};
  return s;
}

std::string Repeat(const std::string& s, int n) {
  std::string r;
  for (int i = 0; i < n; ++i) r += s;
  return r;
}

std::vector<SM_UD_SEGMENT> EncodeText(const std::string& text, int ref = 9,
                                      ME_SMS_ENCODE enc = SMS_ENC_AUTO) {
  CSmContext c;
  CSmText item(text.c_str());
  c.GetContent()->AddItem(&item, true, true);
  std::vector<SM_UD_SEGMENT> segs;
  c.EncodeUserDataPdu(ref, &segs, enc);
  return segs;
}

// Decodes segments back into one context through the reassembly buffer.
std::unique_ptr<CSmContext> DecodeAll(const std::vector<SM_UD_SEGMENT>& segs) {
  std::unique_ptr<CSmContext> ctx(new CSmContext);
  CSmAssemble a;
  a.SetTarget(0, static_cast<int>(segs.size()), nullptr);
  for (size_t i = 0; i < segs.size(); ++i) {
    CSmUserData ud;
    EXPECT_EQ(ud.Decode(segs[i].nDcs, segs[i].bUdhi, segs[i].nUdl, segs[i].abUd, segs[i].nLength),
              0);
    int ref = -1, total = 0, seq = static_cast<int>(i) + 1;
    if (segs.size() > 1) {
      EXPECT_TRUE(ud.GetConcat(&ref, &total, &seq));
    }
    a.AddPart(seq, ud.GetText().c_str(), ud.GetUd140().data(), false);
  }
  a.DoAssemble(ctx.get());
  return ctx;
}

std::string Text(const CSmContext& c) {
  CSmText t("");
  c.GetContent()->GetFullText(&t);
  return static_cast<char*>(t);
}

// Expected octets from the reference packer of the shared oracle script.
TEST(SmUserData, GsmSegmentsMatchTheReferencePacker) {
  struct Case {
    std::string text;
    std::vector<int> udl;
    std::vector<std::string> hex;  // a prefix of each segment's user data
  } cases[] = {
      {"hello", {5}, {"e8329bfd06"}},
      {std::string(161, 'a'),
       {160, 15},
       {"050003090201c2e170381c0e87", "050003090202c2e170381c0e8701"}},
      {std::string(160, 'a'), {160}, {"e170381c"}},
  };
  for (const Case& c : cases) {
    std::vector<SM_UD_SEGMENT> segs = EncodeText(c.text);
    ASSERT_EQ(segs.size(), c.udl.size()) << c.text.size();
    for (size_t i = 0; i < segs.size(); ++i) {
      EXPECT_EQ(segs[i].nUdl, c.udl[i]);
      EXPECT_EQ(segs[i].nDcs, 0);
      EXPECT_EQ(segs[i].bUdhi, segs.size() > 1);
      EXPECT_EQ(Hex(segs[i].abUd, segs[i].nLength).substr(0, c.hex[i].size()), c.hex[i]);
    }
  }
}

// Segment sizes as gammu.SMSCounter reports them: 153 septets per concatenated part, 67 UCS-2
// units, an escape pair or surrogate pair never split.
TEST(SmUserData, SegmentBoundaries) {
  struct Case {
    std::string text;
    ME_SMS_ENCODE coding;
    std::vector<int> textUnits;  // septets (GSM) or UTF-16 units per segment
  } cases[] = {
      {std::string(306, 'x'), SMS_ENC_GSM7, {153, 153}},
      {std::string(307, 'x'), SMS_ENC_GSM7, {153, 153, 1}},
      {Repeat("[", 81), SMS_ENC_GSM7, {152, 10}},
      {std::string(152, 'a') + "[" + std::string(10, 'b'), SMS_ENC_GSM7, {152, 12}},
      {Repeat("\xC5\x82", 70), SMS_ENC_UCS2, {70}},
      {Repeat("\xC5\x82", 71), SMS_ENC_UCS2, {67, 4}},
      {Repeat("\xF0\x9F\x98\x80", 36), SMS_ENC_UCS2, {66, 6}},
      {"a" + Repeat("\xF0\x9F\x98\x80", 35), SMS_ENC_UCS2, {67, 4}},
  };
  for (const Case& c : cases) {
    CSmContext ctx;
    CSmText item(c.text.c_str());
    ctx.GetContent()->AddItem(&item, true, true);
    bool enhanced = true, isLong = false;
    ME_SMS_ENCODE enc = SMS_ENC_AUTO;
    EXPECT_EQ(ctx.GetEncodeInfo(&enhanced, &isLong, &enc), static_cast<int>(c.textUnits.size()))
        << c.text.substr(0, 8) << " (" << c.text.size() << " bytes)";
    EXPECT_FALSE(enhanced);
    EXPECT_EQ(isLong, c.textUnits.size() > 1);
    EXPECT_EQ(enc, c.coding);
    std::vector<SM_UD_SEGMENT> segs;
    ASSERT_EQ(ctx.EncodeUserDataPdu(1, &segs), static_cast<int>(c.textUnits.size()));
    for (size_t i = 0; i < segs.size(); ++i) {
      int header = segs[i].bUdhi ? segs[i].abUd[0] + 1 : 0;
      int units = c.coding == SMS_ENC_GSM7 ? segs[i].nUdl - (header * 8 + 6) / 7
                                           : (segs[i].nUdl - header) / 2;
      EXPECT_EQ(units, c.textUnits[i]) << c.text.substr(0, 8) << " segment " << i;
      EXPECT_LE(segs[i].nLength, 140);
    }
    EXPECT_EQ(Text(*DecodeAll(segs)), c.text);
  }
}

TEST(SmUserData, EmsElementsGoWithTheirText) {
  CSmContext c;
  CSmContent* m = c.GetContent();
  m->AddItem(new CSmText("Hi "), false, true);
  m->AddItem(new CSmSound(3), false, true);
  m->AddItem(new CSmText("there"), false, true);
  std::vector<SM_UD_SEGMENT> segs;
  ASSERT_EQ(c.EncodeUserDataPdu(0, &segs), 1);
  EXPECT_EQ(segs[0].nUdl, 14);
  EXPECT_EQ(Hex(segs[0].abUd, segs[0].nLength), "040b02030320d3203aba2c2f03");

  CSmContext f;
  f.GetContent()->AddItem(new CSmText("ab[]"), false, true);
  CSmTextFormat* bold = new CSmTextFormat;
  bold->SetPosition(0);
  bold->m_nEffectLen = 2;
  bold->m_cFormat = 0x10;
  f.GetContent()->AddItem(bold, false, false);
  CSmAnimation* anim = new CSmAnimation(5);
  f.GetContent()->AddItem(anim, false, false);
  anim->SetPosition(2);
  ASSERT_EQ(f.EncodeUserDataPdu(0, &segs), 1);
  EXPECT_EQ(segs[0].nUdl, 19);
  EXPECT_EQ(Hex(segs[0].abUd, segs[0].nLength), "0a0a04000210090d020205088b37bc8d0f");
}

TEST(SmUserData, ElementsThatDoNotFitStartANewSegment) {
  // A 131-octet picture leaves 3 septets for text beside the concatenation element: "a", picture,
  // "b" fill the first segment; the second picture starts the next one, and so on.
  CSmContext c;
  CSmContent* m = c.GetContent();
  CBmpWrp bmp(32, 32);
  for (int i = 0; i < 3; ++i) {
    m->AddItem(new CSmText(std::string(1, static_cast<char>('a' + i)).c_str()), false, true);
    CSmPicture* p = new CSmPicture;
    p->SetData(bmp);
    m->AddItem(p, false, true);
  }
  std::vector<SM_UD_SEGMENT> segs;
  ASSERT_EQ(c.EncodeUserDataPdu(5, &segs), 3);
  const int positions[] = {1, 0, 0};  // relative to each segment's text
  const int chars[] = {2, 1, 0};
  for (int i = 0; i < 3; ++i) {
    const unsigned char* h = segs[i].abUd;
    EXPECT_EQ(Hex(h, 5), "8800030503");  // 136 header octets
    EXPECT_EQ(h[5], i + 1);
    EXPECT_EQ(h[6], 0x10);
    EXPECT_EQ(h[8], positions[i]) << i;
    EXPECT_EQ(segs[i].nUdl, 157 + chars[i]) << i;
  }
  std::unique_ptr<CSmContext> back = DecodeAll(segs);
  EXPECT_EQ(Text(*back), "abc");
  EXPECT_EQ(back->GetContent()->GetItemCount(SMOBJ_PICTURE), 3);
  for (int i = 0; i < 3; ++i) {
    CSmMedia* pic = back->GetContent()->GetItem(SMOBJ_PICTURE, i);
    EXPECT_EQ(back->GetContent()->GetTextPosition(pic->GetPosition()), i + 1);
  }

  CSmContext tooBig;
  std::string melody = "BEGIN:IMELODY\r\nMELODY:" + std::string(150, 'c') + "\r\nEND:IMELODY";
  CSmSound* s = new CSmSound(-1);
  s->SetData(melody.c_str());
  tooBig.GetContent()->AddItem(s, false, true);
  EXPECT_EQ(tooBig.EncodeUserDataPdu(0, &segs), 0);
  EXPECT_EQ(tooBig.GetEncodeError(), hs::sms::kErrItemTooLarge);
}

TEST(SmUserData, FormatsAreCutAtSegmentEnds) {
  CSmContext c;
  c.GetContent()->AddItem(new CSmText(std::string(200, 'f').c_str()), false, true);
  CSmTextFormat* f = new CSmTextFormat;
  f->SetPosition(140);
  f->m_nEffectLen = 20;
  c.GetContent()->AddItem(f, false, false);
  std::vector<SM_UD_SEGMENT> segs;
  ASSERT_EQ(c.EncodeUserDataPdu(0, &segs), 2);
  // 160 septets hold a 12-octet header (14 septets) and 146 characters.
  const unsigned char* a = CSmContext::FindInfoElement(segs[0].abUd, SMIE_TEXT_FORMAT);
  const unsigned char* b = CSmContext::FindInfoElement(segs[1].abUd, SMIE_TEXT_FORMAT);
  ASSERT_TRUE(a && b);
  int firstChars = segs[0].nUdl - 14;
  EXPECT_EQ(firstChars, 146);
  EXPECT_EQ(a[2], 140);
  EXPECT_EQ(a[2] + a[3], firstChars);  // the range ends with the first segment...
  EXPECT_EQ(b[2], 0);                  // ...and goes on at the start of the second
  EXPECT_EQ(a[3] + b[3], 20);

  // A range whose element no longer fits after 150 characters starts the next segment whole.
  f->SetPosition(150);
  f->m_nEffectLen = 10;
  ASSERT_EQ(c.EncodeUserDataPdu(0, &segs), 2);
  EXPECT_EQ(CSmContext::FindInfoElement(segs[0].abUd, SMIE_TEXT_FORMAT), nullptr);
  b = CSmContext::FindInfoElement(segs[1].abUd, SMIE_TEXT_FORMAT);
  ASSERT_TRUE(b);
  EXPECT_EQ(b[2], 0);
  EXPECT_EQ(b[3], 10);
}

TEST(SmUserData, DecodeRefusesInconsistentLengths) {
  const unsigned char ud[] = {0x05, 0x00, 0x03, 0x01, 0x02, 0x01, 0x41, 0x42};
  struct Case {
    unsigned char dcs;
    bool udhi;
    int udl, length;
    int result;
  } cases[] = {
      {0x04, true, 8, 8, 0},
      {0x04, true, 9, 8, hs::sms::kErrUdShort},
      {0x04, false, 141, 200, hs::sms::kErrUdlRange},
      {0x00, false, 161, 200, hs::sms::kErrUdlRange},
      {0x00, true, 6, 8, hs::sms::kErrUdhLength},  // 6 septets cannot hold a 6-octet header
      {0x08, true, 5, 8, hs::sms::kErrUdhLength},
      {0x24, false, 2, 8, hs::sms::kErrCompressed},
  };
  for (const Case& c : cases) {
    CSmUserData d;
    EXPECT_EQ(d.Decode(c.dcs, c.udhi, c.udl, ud, c.length), c.result) << int(c.dcs) << " " << c.udl;
  }
  CSmUserData d;
  ASSERT_EQ(d.Decode(0x04, true, 8, ud, 8), 0);
  EXPECT_EQ(d.GetText(), "AB");
  int ref = 0, total = 0, seq = 0;
  EXPECT_TRUE(d.GetConcat(&ref, &total, &seq));
  EXPECT_EQ(ref * 100 + total * 10 + seq, 121);
  const unsigned char ud16[] = {0x06, 0x08, 0x04, 0x12, 0x34, 0x03, 0x02};
  ASSERT_EQ(d.Decode(0x04, true, 7, ud16, 7), 0);
  EXPECT_TRUE(d.GetConcat(&ref, &total, &seq));
  EXPECT_EQ(ref, 0x1234);
  EXPECT_EQ(total * 10 + seq, 32);
}

TEST(SmUserData, UnknownAndMalformedElementsAreKeptNotFatal) {
  // A UPI element, a large animation, a picture whose rows are cut short, then a cut-off element.
  std::vector<unsigned char> udh = {0x13, 0x01, 0x02};
  std::vector<unsigned char> anim(131, 0x55);
  anim[0] = 0x0E;
  anim[1] = 129;
  anim[2] = 1;
  udh.insert(udh.end(), anim.begin(), anim.end());
  // Header length 134 would leave no room, so the animation is checked alone first.
  std::vector<unsigned char> ud = {static_cast<unsigned char>(udh.size())};
  ud.insert(ud.end(), udh.begin(), udh.end());
  ud.resize(140, 0);
  CSmContext c;
  c.ConstructContent(ud.data(), "xy");
  CSmContent* m = c.GetContent();
  ASSERT_EQ(m->GetItemCount(SMOBJ_SOURCE), 1);
  EXPECT_EQ(m->GetItem(SMOBJ_SOURCE, 0)->GetLength(), 3);
  CSmMedia* a = m->GetItem(SMOBJ_ANIMATION, 0);
  ASSERT_TRUE(a);
  EXPECT_EQ(a->GetLength(), 128);
  EXPECT_EQ(m->GetTextPosition(a->GetPosition()), 1);

  const unsigned char bad[] = {9, 0x12, 5, 0, 2, 9, 0xFF, 0xFF, 0x0B, 9};
  std::vector<unsigned char> ud2(bad, bad + sizeof bad);
  ud2.resize(140, 0);
  CSmContext d;
  d.ConstructContent(ud2.data(), "text");
  EXPECT_EQ(d.GetContent()->GetItemCount(SMOBJ_PICTURE), 0);
  EXPECT_EQ(d.GetContent()->GetItemCount(SMOBJ_SOURCE), 1);  // the short picture, kept whole
  EXPECT_EQ(Text(d), "text");
  EXPECT_EQ(CSmContext::FindInfoElement(ud2.data(), SMIE_PREDEF_SOUND), nullptr);  // cut off

  unsigned char cut[] = {0x0B, 5, 1};  // claims 5 octets, has 1
  unsigned char* p = cut;
  EXPECT_EQ(CSmSound::_IeDecoder(p, cut + sizeof cut), nullptr);
  EXPECT_EQ(p, cut);
}

// Random mixes of GSM, extension-table and other characters and EMS items go out and come back.
TEST(SmUserData, RandomContentRoundTrips) {
  const char* pieces[] = {"a",
                          "Z",
                          " ",
                          "[",
                          "\xE2\x82\xAC",
                          "\xCE\x94",
                          "\xC3\xA1",
                          "\xF0\x9F\x98\x80",
                          "\n",
                          "\xE4\xB8\xAD",
                          "~"};
  std::mt19937 rng(20240229);
  for (int round = 0; round < 200; ++round) {
    CSmContext c;
    CSmContent* m = c.GetContent();
    std::string all;
    int items = 1 + static_cast<int>(rng() % 5);
    int objects = 0;
    for (int i = 0; i < items; ++i) {
      std::string t;
      int n = static_cast<int>(rng() % 90);
      for (int k = 0; k < n; ++k) t += pieces[rng() % (round % 3 == 0 ? 11 : 6)];
      all += t;
      if (!t.empty()) m->AddItem(new CSmText(t.c_str()), false, true);
      if (rng() % 2) {
        m->AddItem(new CSmSound(static_cast<int>(rng() % 10)), false, true);
        ++objects;
      }
    }
    std::vector<SM_UD_SEGMENT> segs;
    int n = c.EncodeUserDataPdu(static_cast<int>(rng() % 256), &segs);
    ASSERT_GT(n, 0);
    std::unique_ptr<CSmContext> back = DecodeAll(segs);
    ASSERT_EQ(Text(*back), all) << "round " << round;
    ASSERT_EQ(back->GetContent()->GetItemCount(SMOBJ_PREDEF_SOUND), objects);
    for (int k = 0; k < objects; ++k) {
      CSmMedia* want = m->GetItem(SMOBJ_PREDEF_SOUND, k);
      CSmMedia* got = back->GetContent()->GetItem(SMOBJ_PREDEF_SOUND, k);
      EXPECT_EQ(back->GetContent()->GetTextPosition(got->GetPosition()),
                m->GetTextPosition(want->GetPosition()));
    }
  }
}

}  // namespace
