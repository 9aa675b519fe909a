#include <gtest/gtest.h>

#include <cstring>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "handset.h"
#include "tests/TestUtil.h"

namespace {

std::vector<std::string> Keys(const CPackageBlk& blk) {
  std::vector<std::string> k;
  for (const auto& e : blk.Entries()) k.push_back(e.first);
  return k;
}

int32_t IntAt(const CPackageBlk& blk, const std::string& key) {
  CUnpackageBlk u(blk);
  int32_t v = -12345;
  EXPECT_TRUE(u.GetInt(key.c_str(), &v)) << key;
  return v;
}

std::vector<uint8_t> SaveItems(CSmContent& c) {
  std::vector<uint8_t> buf;
  CArchive ar(&buf, CArchive::store);
  EXPECT_TRUE(c.Save(ar));
  return buf;
}

TEST(SmContent, AddItemKeepsTheCloneAtItsOldPosition) {
  CSmContent c;
  CSmText empty("");
  EXPECT_EQ(c.AddItem(&empty, true, true), 0);  // empty list: 0
  EXPECT_EQ(c.GetItemCount(), 0);
  c.AddItem(new CSmText("Hello "), false, true);
  CSmSound sound(3);
  sound.SetPosition(99);
  EXPECT_EQ(c.AddItem(&sound, true, true), 1);
  EXPECT_EQ(sound.GetPosition(), 6);           // the object passed in moves
  EXPECT_EQ(c.GetItem(1)->GetPosition(), 99);  // the stored clone keeps its old position
  EXPECT_NE(c.GetItem(1), &sound);
  EXPECT_EQ(c.AddItem(&empty, false, true), 1);  // still count - 1
  EXPECT_EQ(c.GetLastInsPos(), 7);               // 6 characters and one sound
  CSmText* world = new CSmText("world");
  c.AddItem(world, false, true);
  EXPECT_EQ(world->GetPosition(), 7);
  EXPECT_EQ(c.GetItem(2), world);
  EXPECT_EQ(c.GetLastInsPos(), 12);
}

TEST(SmContent, FindsCountsAndFullText) {
  CSmContent c;
  c.AddItem(new CSmText("a-b"), false, true);
  c.AddItem(new CSmPicture, false, true);
  c.AddItem(new CSmText("-c"), false, true);
  c.AddItem(new CSmSound(1), false, true);
  c.AddItem(new CSmSound(2), false, true);
  EXPECT_EQ(c.GetItemCount(), 5);
  EXPECT_EQ(c.GetItemCount(SMOBJ_TEXT), 2);
  EXPECT_EQ(c.GetItemCount(SMOBJ_PREDEF_SOUND), 2);
  EXPECT_EQ(c.GetItem(SMOBJ_PREDEF_SOUND, 1)->GetPosition(), 7);
  EXPECT_EQ(c.GetItem(SMOBJ_ANIMATION, 0), nullptr);
  EXPECT_EQ(c.GetItem(9), nullptr);
  EXPECT_TRUE(c.IsEnhancedContent());
  CSmText full("stale");
  EXPECT_TRUE(c.GetFullText(&full));
  EXPECT_STREQ(static_cast<char*>(full), "a-b-c");
  EXPECT_EQ(_GetSmGroupFullText(c.GetList(), &full), 2);
  EXPECT_EQ(c.RemoveChar('-'), 2);
  c.GetFullText(&full);
  EXPECT_STREQ(static_cast<char*>(full), "abc");
  EXPECT_FALSE(c.DelItem(5));
  EXPECT_TRUE(c.DelItem(1));
  EXPECT_EQ(c.GetItemCount(), 4);
  CSmContent copy(c);
  c.Reset();
  EXPECT_EQ(copy.GetItemCount(), 4);
  EXPECT_FALSE(c.GetFullText(&full));
  EXPECT_STREQ(static_cast<char*>(full), "");
}

// Keys of every item kind, typed in from the record layout.
TEST(SmContent, PackageKeysPerItemKind) {
  CSmContent c;
  c.AddItem(new CSmText("hi"), false, true);
  CSmTextFormat* f = new CSmTextFormat;
  f->m_nEffectLen = 2;
  c.AddItem(f, false, false);
  c.AddItem(new CSmSound(5), false, true);
  c.AddItem(new CSmAnimation(2), false, true);
  CSmAttach* a = new CSmAttach;
  const unsigned char data[] = {1, 2, 3};
  a->SetData(data, 3, "a.bin", "");
  c.AddItem(a, false, false);
  CPackageBlk blk;
  c.PackData("M", blk);
  std::vector<std::string> expect = {
      "M.ObjCount",         "M[0].ClassID",       "M[0].m_eType",        "M[0].m_nBeginPos",
      "M[0].m_nUsePos",     "M[0].m_nUserAnchor", "M[0].m_pvRawData",    "M[1].ClassID",
      "M[1].m_cColor",      "M[1].m_cFormat",     "M[1].m_eType",        "M[1].m_nBeginPos",
      "M[1].m_nEffectLen",  "M[1].m_nUsePos",     "M[1].m_nUserAnchor",  "M[2].ClassID",
      "M[2].m_eType",       "M[2].m_nBeginPos",   "M[2].m_nSoundIdx",    "M[2].m_nUsePos",
      "M[2].m_nUserAnchor", "M[2].m_pvRawData",   "M[3].ClassID",        "M[3].m_eType",
      "M[3].m_nAnmIdx",     "M[3].m_nBeginPos",   "M[3].m_nUsePos",      "M[3].m_nUserAnchor",
      "M[3].m_pvRawData",   "M[4].ClassID",       "M[4].m_bBuildInHtml", "M[4].m_eType",
      "M[4].m_nBeginPos",   "M[4].m_nSize",       "M[4].m_nUsePos",      "M[4].m_nUserAnchor",
      "M[4].m_pvRawData",   "M[4].m_szContentID", "M[4].m_szFileName"};
  EXPECT_EQ(Keys(blk), expect);  // the block lists its keys sorted
  EXPECT_EQ(IntAt(blk, "M.ObjCount"), 5);
  EXPECT_EQ(IntAt(blk, "M[2].ClassID"), 2);
  EXPECT_EQ(IntAt(blk, "M[2].m_nBeginPos"), 2);
  EXPECT_EQ(IntAt(blk, "M[1].m_cColor"), 9);
  CUnpackageBlk u(blk);
  const void* p = nullptr;
  uint32_t n = 0;
  ASSERT_TRUE(u.GetData("M[0].m_pvRawData", &p, &n));
  EXPECT_EQ(std::string(static_cast<const char*>(p), n), std::string("hi", 3));
  ASSERT_TRUE(u.GetData("M[4].m_szContentID", &p, &n));
  EXPECT_EQ(n, 1u);  // an empty name is one zero byte

  CSmContent back;
  back.UnpackData("M", u);
  ASSERT_EQ(back.GetItemCount(), 5);
  EXPECT_EQ(back.GetItem(2)->GetType(), SMOBJ_PREDEF_SOUND);
  EXPECT_EQ(static_cast<CSmTextFormat*>(back.GetItem(1))->m_nEffectLen, 2);
  EXPECT_STREQ(static_cast<CSmAttach*>(back.GetItem(4))->GetFileName(), "a.bin");
  EXPECT_EQ(back.GetItem(4)->GetLength(), 3);
}

TEST(SmContent, UnpackSkipsKindSixAndUnknownAndBoundsStoredData) {
  CPackageBlk blk;
  blk.AddInt(".ObjCount", 4);
  blk.AddInt("[0].ClassID", 6);  // no class
  blk.AddInt("[1].ClassID", 0);
  blk.Add("[1].m_pvRawData", "unterminated", 12);
  // [2] has no class id at all
  blk.AddInt("[3].ClassID", 8);
  blk.Add("[3].m_pvRawData", "<b>", 3);
  blk.AddInt("[3].m_nSize", 1000);  // more than stored: cut to the block
  CUnpackageBlk u(blk);
  CSmContent c;
  c.UnpackData(nullptr, u);
  ASSERT_EQ(c.GetItemCount(), 2);
  EXPECT_STREQ(static_cast<char*>(c.GetItem(0)->GetData()), "unterminated");
  EXPECT_EQ(c.GetItem(1)->GetLength(), 3);
  EXPECT_STREQ(static_cast<char*>(c.GetItem(1)->GetData()), "<b>");

  CPackageBlk huge;
  huge.AddInt(".ObjCount", 0x7FFFFFFF);  // a claimed count never drives the work
  CUnpackageBlk hu(huge);
  c.UnpackData("", hu);
  EXPECT_EQ(c.GetItemCount(), 0);
}

// Archive records typed in byte by byte from the record table.
TEST(SmContent, ArchiveRecords) {
  struct Case {
    std::function<CSmMedia*()> make;
    std::vector<uint8_t> record;
  } cases[] = {
      {[] {
         CSmText* t = new CSmText("Hi");
         t->SetPosition(3);
         return t;
       },
       {0, 3, 0, 0, 0, 3, 0, 0, 0, 'H', 'i', 0}},
      {[] {
         CSmTextFormat* f = new CSmTextFormat;
         f->SetPosition(1);
         f->m_nEffectLen = 4;
         return f;
       },
       {1, 1, 0, 0, 0, 3, 9, 4, 0, 0, 0}},
      {[] { return new CSmSound(5); }, {2, 0, 0, 0, 0, 5, 0, 0, 0}},
      {[] {
         CSmSound* s = new CSmSound(-1);
         s->SetData("m");
         return s;
       },
       {3, 0, 0, 0, 0, 0xFF, 0xFF, 0xFF, 0xFF, 2, 0, 0, 0, 'm', 0}},
      {[] {
         CSmAnimation* a = new CSmAnimation(-1);
         a->CSmMedia::SetData("frames", 6);  // a user animation loses its data
         return a;
       },
       {5, 0, 0, 0, 0, 0xFF, 0xFF, 0xFF, 0xFF}},
      {[] {
         CSmAttach* a = new CSmAttach;
         const unsigned char d[] = {7, 8};
         a->SetData(d, 2, "f", "id");
         a->SetBuildInFlag(true);
         return a;
       },
       {7, 2, 0, 0, 0, 1, 'f', 2, 'i', 'd', 7, 8, 1, 0, 0, 0}},
      {[] {
         CSmSource* s = new CSmSource;
         const unsigned char d[] = {0};
         s->SetData(d, 1);
         return s;
       },
       {9, 1, 0, 0, 0, 0}},
  };
  for (const Case& c : cases) {
    CSmContent content;
    content.AddItem(c.make(), false, false);
    std::vector<uint8_t> expect = {1, 0, 0, 0};
    expect.insert(expect.end(), c.record.begin(), c.record.end());
    std::vector<uint8_t> got = SaveItems(content);
    EXPECT_EQ(got, expect) << "kind " << int(c.record[0]);
    CArchive in(got.data(), got.size());
    CSmContent back;
    ASSERT_TRUE(back.Load(in));
    ASSERT_EQ(back.GetItemCount(), 1);
    EXPECT_EQ(SaveItems(back), expect);
  }
}

TEST(SmContent, ArchiveLoadStopsAtUnknownKindsAndShortRecords) {
  CSmContent c;
  c.AddItem(new CSmText("a"), false, false);
  c.AddItem(new CSmSound(5), false, false);
  std::vector<uint8_t> good = SaveItems(c);
  std::vector<uint8_t> six = good;
  six[0] = 3;        // one more item claimed...
  six.push_back(6);  // ...of kind 6
  CArchive ar(six.data(), six.size());
  CSmContent back;
  EXPECT_FALSE(back.Load(ar));
  EXPECT_EQ(back.GetItemCount(), 2);  // the items before stay
  std::vector<uint8_t> cut(good.begin(), good.end() - 2);
  CArchive ar2(cut.data(), cut.size());
  EXPECT_FALSE(back.Load(ar2));
  EXPECT_EQ(back.GetItemCount(), 1);
  const uint8_t claim[] = {1, 0, 0, 0, 0, 0, 0, 0, 0, 0xFF, 0xFF, 0xFF, 0x7F, 'x'};
  CArchive ar3(claim, sizeof claim);
  EXPECT_FALSE(back.Load(ar3));  // a text that claims 2 GB of a 1-byte archive
  // A reloaded sound saved with index 5 is a predefined sound without text.
  CArchive ar4(good.data(), good.size());
  ASSERT_TRUE(back.Load(ar4));
  EXPECT_EQ(back.GetItem(1)->GetType(), SMOBJ_PREDEF_SOUND);
  EXPECT_EQ(back.GetItem(1)->GetLength(), 0);
}

TEST(SmContent, SaveAsWritesTheBytesWithoutTerminator) {
  std::string dir = hs::test::MakeTempDir("sm-saveas");
  CSmText t("caf\xC3\xA9");
  ASSERT_TRUE(t.SaveAs((dir + "/t.txt").c_str()));
  EXPECT_EQ(hs::test::ReadBytes(dir + "/t.txt"), (std::vector<uint8_t>{'c', 'a', 'f', 0xC3, 0xA9}));
  CSmText empty("");
  EXPECT_FALSE(empty.SaveAs((dir + "/e.txt").c_str()));
  CSmSource s;
  const unsigned char d[] = {0, 1, 2};
  s.SetData(d, 3);
  ASSERT_TRUE(s.SaveAs((dir + "/s.bin").c_str()));
  EXPECT_EQ(hs::test::ReadBytes(dir + "/s.bin"), (std::vector<uint8_t>{0, 1, 2}));
  EXPECT_FALSE(s.SaveAs("/proc/no-such-file-here/x"));
}

}  // namespace
