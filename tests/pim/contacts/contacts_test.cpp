#include <gtest/gtest.h>

#include <climits>
#include <cstring>
#include <memory>
#include <random>
#include <string>

#include "handset/pim.h"
#include "handset/platform/Config.h"
#include "handset/platform/RegSDK.h"
#include "platform/Env.h"
#include "tests/TestUtil.h"

namespace {

TEST(ContactTypes, TableIsItsOwnInverseAndMatchesTheReference) {
  long long sum = 0, weighted = 0;
  for (int n = 0; n < 78; ++n) {
    CINFO_TYPE t = Type0ToInfoType(n);
    EXPECT_EQ(InfoTypeToType0(t), n) << n;  // also proves the 78 values distinct
    sum += t;
    weighted += static_cast<long long>(t) * (n + 1);
  }
  // Sums of the reference table, so any mistyped or swapped value shows.
  EXPECT_EQ(sum, 1234057);
  EXPECT_EQ(weighted, 60931177);
  EXPECT_EQ(Type0ToInfoType(23), 0u);
  EXPECT_EQ(InfoTypeToType0(CINFO_NONE), 23);
  for (int n : {78, 255, -1, INT_MIN, INT_MAX}) EXPECT_EQ(Type0ToInfoType(n), 0u) << n;
  for (uint32_t t : {0x0B01u, 0x0B00u, 0xFFFFu, 0x10B0Au})
    EXPECT_EQ(InfoTypeToType0(static_cast<CINFO_TYPE>(t)), -1) << t;
}

// Bit by bit, as RFC 1662 defines the FCS, to check the sliced tables against.
uint16_t BitwiseFcs(const uint8_t* p, size_t n) {
  uint16_t crc = 0xFFFF;
  for (size_t i = 0; i < n; ++i) {
    crc ^= p[i];
    for (int k = 0; k < 8; ++k) crc = (crc & 1) ? (crc >> 1) ^ 0x8408 : crc >> 1;
  }
  return crc ^ 0xFFFF;
}

TEST(Fcs, CheckValuesAndAgreementWithTheBitwiseDefinition) {
  const unsigned char digits[] = "123456789";
  EXPECT_EQ(ComputeFCS(digits, 9), 0x906E);
  EXPECT_EQ(ComputeFCS(digits, 0), 0x0000);
  EXPECT_EQ(ComputeFCS(nullptr, 5), 0x0000);
  std::mt19937 gen(3);
  std::vector<uint8_t> buf(4096 + 16);
  for (auto& b : buf) b = static_cast<uint8_t>(gen());
  for (size_t offset = 0; offset < 8; ++offset)  // every alignment and every tail length
    for (size_t n = 0; n < 80; ++n)
      ASSERT_EQ(ComputeFCS(buf.data() + offset, n), BitwiseFcs(buf.data() + offset, n)) << n;
  EXPECT_EQ(ComputeFCS(buf.data() + 3, 4096), BitwiseFcs(buf.data() + 3, 4096));
  // A frame followed by its FCS (low byte first) leaves the "good FCS" residue 0xF0B8.
  uint16_t fcs = ComputeFCS(buf.data(), 1000);
  buf[1000] = static_cast<uint8_t>(fcs);
  buf[1001] = static_cast<uint8_t>(fcs >> 8);
  EXPECT_EQ(ComputeFCS(buf.data(), 1002) ^ 0xFFFF, 0xF0B8);
}

TEST(Fcs, CommandLine) {
  std::string dir = hs::test::MakeTempDir("fcs");
  std::string out;
  ASSERT_EQ(hs::test::RunCommand(
                "printf 123456789 > " + dir + "/d && " + hs::test::CliPath() + " fcs " + dir + "/d",
                &out),
            0);
  EXPECT_EQ(out, "0x906E\n");
  EXPECT_EQ(
      hs::test::RunCommand("printf 123456789 | " + hs::test::CliPath() + " fcs --json -", &out), 0);
  EXPECT_EQ(out, "{\"file\":\"-\",\"length\":9,\"fcs\":\"0x906E\"}\n");
  EXPECT_EQ(hs::test::RunCommand(hs::test::CliPath() + " fcs " + dir + "/none 2>&1", &out), 1);
  EXPECT_NE(out.find(dir + "/none"), std::string::npos);
}

TEST(ContactInfo, OwnsItsTextsAndComparesByContent) {
  CContactInfo a(CINFO_PHONE_MOBILE, "Mobile", "555");
  CContactInfo b(a);
  a.SetInfoString("777");
  EXPECT_STREQ(b.GetInfoString(), "555");
  b = b;  // self-assignment keeps the texts
  EXPECT_STREQ(b.GetLabelName(), "Mobile");
  b.SetLabel(b.GetLabelName() + 1);  // a text taken from the entry itself
  EXPECT_STREQ(b.GetLabelName(), "obile");
  EXPECT_TRUE(b.IsPhoneType());
  EXPECT_FALSE(CContactInfo(CINFO_URL, nullptr, "x").IsPhoneType());
  EXPECT_EQ(CContactInfo(CINFO_NOTE, nullptr, "n"), CContactInfo(CINFO_NOTE, "", "n"));
  EXPECT_NE(CContactInfo(CINFO_NOTE, "a", "n"), CContactInfo(CINFO_NOTE, "b", "n"));
  CContactInfo c(CINFO_EMAIL, "home", "a@b.c"), d(c);
  EXPECT_EQ(c.GetCheckSum(), d.GetCheckSum());
  d.SetInfoString("a@b.d");
  EXPECT_NE(c.GetCheckSum(), d.GetCheckSum());
  d.Empty();
  EXPECT_EQ(d.GetType(), CINFO_NONE);
  EXPECT_EQ(d.GetInfoString(), nullptr);
}

TEST(PersonalInfo, AddingEntriesAndPhoneNumbers) {
  CPersonalInfo p;
  EXPECT_TRUE(p.IsEmpty());
  EXPECT_EQ(p.Add(CINFO_NOTE, ""), 0);         // the text form refuses an empty text
  EXPECT_EQ(p.Add(CINFO_NOTE, CString()), 1);  // the data form keeps it
  EXPECT_EQ(p.AddPhone(CINFO_EMAIL, "123"), 0);
  EXPECT_EQ(p.AddPhone(CINFO_PHONE_HOME, "+1 (800) 555-0100"), 1);
  EXPECT_STREQ(p.FindContactInfo(CINFO_PHONE_HOME), "+1800555-0100");
  EXPECT_EQ(p.AddPhone(CINFO_PHONE_HOME, "*31#p1w2W3,\"n?x"), 1);
  EXPECT_STREQ(p.FindContactInfo(CINFO_PHONE_HOME, 1), "*31#p1w23,\"n?");
  EXPECT_EQ(p.AddPhone(CINFO_PHONE_WORK, "+1 (800) 555", "Desk", "()"), 1);
  EXPECT_STREQ(p.FindContactInfo(CINFO_PHONE_WORK), "1(800)555");
  EXPECT_EQ(p.AddPhone(CINFO_PHONE_FAX, ""), 1);     // an empty number is an empty entry
  EXPECT_EQ(p.AddPhone(CINFO_PHONE_FAX, "abc"), 0);  // nothing left to keep
  EXPECT_EQ(p.AddPhone(CINFO_PHONE_MOBILE, std::string(3000, '7').c_str()), 1);
  EXPECT_EQ(std::string(p.GetMobilePhone()).size(), 1024u);
  EXPECT_EQ(p.GetContactInfoCount(), 6);
  EXPECT_EQ(p.GetPhoneCount(), 5);
  EXPECT_EQ(p.GetTextCount(), 1);
  while (p.GetContactInfoCount() < PI_MAX_CONTACTS) ASSERT_EQ(p.Add(CINFO_URL, "u"), 1);
  EXPECT_EQ(p.Add(CINFO_URL, "u"), 0);  // the 121st
  EXPECT_EQ(p.AddPhone(CINFO_PHONE_HOME, "1"), 0);
  EXPECT_EQ(p.GetContactInfoCount(), PI_MAX_CONTACTS);
}

CPersonalInfo Sample() {
  CPersonalInfo p;
  p.Add(CINFO_PHONE_FAX, CString());
  p.AddPhone(CINFO_PHONE_HOME, "111", "Home");
  p.Add(CINFO_NOTE, "first note");
  p.AddPhone(CINFO_PHONE_MOBILE, "222");
  p.AddPhone(CINFO_PHONE_HOME, "333", "Flat");
  p.Add(CINFO_EMAIL, CString(), "empty");
  return p;
}

TEST(PersonalInfo, FindsAndDeletesKeepEntriesDense) {
  CPersonalInfo p = Sample();
  EXPECT_EQ(p.GetDisplayName(), "111");  // no name: the first non-empty number
  p.SetName("Ann");
  EXPECT_EQ(p.GetDisplayName(), "Ann");
  EXPECT_STREQ(p.GetNote(), "first note");
  EXPECT_STREQ(p.GetMobilePhone(), "222");
  EXPECT_EQ(p.FindContactIndex(CINFO_PHONE_HOME, 1), 4);
  EXPECT_EQ(p.FindContactIndex(CINFO_PHONE_HOME, 2), -1);
  EXPECT_EQ(p.FindContactInfo(CINFO_URL), nullptr);
  ASSERT_NE(p.FindContactInfoAddr(CINFO_PHONE_HOME, 0, "Flat"), nullptr);
  EXPECT_STREQ(p.FindContactInfoAddr(CINFO_PHONE_HOME, 0, "Flat")->GetInfoString(), "333");
  EXPECT_EQ(p.FindContactInfoAddr(CINFO_PHONE_HOME, 1, "Flat"), nullptr);
  EXPECT_EQ(p.FindContactInfoEx(CINFO_PHONE_MOBILE), p.GetContactInfo(3));

  EXPECT_EQ(p.DelEmptyCInfo(), 2);
  EXPECT_EQ(p.GetContactInfoCount(), 4);
  EXPECT_EQ(p.Del(CINFO_PHONE_HOME), 2);
  ASSERT_EQ(p.GetContactInfoCount(), 2);
  EXPECT_EQ(p.GetContactInfo(0)->GetType(), CINFO_NOTE);
  EXPECT_EQ(p.GetContactInfo(1)->GetType(), CINFO_PHONE_MOBILE);
  EXPECT_EQ(p.ClearCInfoString(CINFO_NOTE), 1);
  EXPECT_EQ(p.GetNote(), nullptr);
  EXPECT_EQ(p.GetContactInfoCount(), 2);

  CPersonalInfo q = Sample(), r = Sample();
  EXPECT_EQ(q, r);
  EXPECT_EQ(q.GetCheckSum(), r.GetCheckSum());
  r.SetFlag(1);
  EXPECT_NE(q, r);
  EXPECT_NE(q.GetCheckSum(), r.GetCheckSum());
  r = q;
  std::swap(*r.GetContactInfo(1), *r.GetContactInfo(2));  // same entries, other order
  EXPECT_NE(q, r);
  EXPECT_NE(q.GetCheckSum(), r.GetCheckSum());
}

CPersonalInfo Full() {
  CPersonalInfo p;
  p.SetName("Zoë Example");
  p.SetGroup(3);
  p.SetMemory(2);
  p.SetHandle(0xDEADBEEF);
  for (int i = 0; i < PI_MAX_CONTACTS; ++i) {
    CString text;
    text.Format("entry %d", i);
    p.Add(Type0ToInfoType(i % 78), text, i % 3 ? nullptr : "lbl");
  }
  return p;
}

TEST(PersonalInfo, SurvivesPackingThroughSerialisedBlocks) {
  CPersonalInfo p = Full(), other = Sample();
  CPackageBlk blk;
  p.PackData("pb[0].", blk);
  other.PackData("pb[1].", blk);
  std::vector<uint8_t> bytes = blk.Serialize();
  CUnpackageBlk un;
  ASSERT_TRUE(un.Unpack(bytes.data(), bytes.size()));
  int32_t v = 0;
  EXPECT_TRUE(un.GetInt("pb[0].PI_VERSION", &v));
  EXPECT_EQ(v, 0x1212);
  EXPECT_TRUE(un.GetInt("pb[0].m_Contacts_119CINFO_VERSION", &v));
  EXPECT_EQ(v, 0x1120);
  const void* data;
  uint32_t size = 0;
  EXPECT_TRUE(un.GetData("pb[1].m_pszName", &data, &size));
  EXPECT_EQ(size, 1u);  // no name: one NUL

  CPersonalInfo back, back2;
  EXPECT_EQ(back.UnpackData("pb[0].", un), 1);
  EXPECT_EQ(back2.UnpackData("pb[1].", un), 1);
  EXPECT_EQ(back, p);
  EXPECT_EQ(back.GetCheckSum(), p.GetCheckSum());
  EXPECT_EQ(back2, other);

  // Flag, index and desktop handle are not part of the block.
  p.SetFlag(5);
  p.SetIndex(6);
  p.SetOutlookHandle("X");
  CPackageBlk blk2;
  p.PackData(nullptr, blk2);
  CUnpackageBlk un2(blk2);
  back.UnpackData(nullptr, un2);
  EXPECT_EQ(back.GetFlag(), 0u);
  EXPECT_EQ(back.GetIndex(), 0u);
  EXPECT_STREQ(back.GetOutlookHandle(), "");
  EXPECT_EQ(back.GetContactInfoCount(), PI_MAX_CONTACTS);

  auto raw = std::make_unique<PI_RAW>();
  p.WriteTo(*raw);
  CPersonalInfo fromRaw;
  fromRaw.ReadFrom(*raw);
  EXPECT_EQ(fromRaw, p);
}

TEST(PersonalInfo, HostileBlocksAreCutClampedOrRefused) {
  CPackageBlk blk;
  blk.AddString("m_pszName", std::string(1000, 'n').c_str());
  blk.AddInt("m_nContacts", 500);
  blk.AddString("m_Contacts_0CINFO_LABEL", std::string(500, 'l').c_str());
  blk.Add("m_Contacts_0CINFO_INFO", std::string(5000, 'i').data(), 5000);  // no NUL at all
  blk.AddInt("m_Contacts_1CINFO_TYPE", 0x0B03);
  CPersonalInfo p;
  ASSERT_EQ(p.UnpackData("", CUnpackageBlk(blk)), 1);
  EXPECT_EQ(std::string(p.GetName()).size(), static_cast<size_t>(PI_NAME_SIZE - 1));
  EXPECT_EQ(p.GetGroup(), -1);  // missing key: empty value
  ASSERT_EQ(p.GetContactInfoCount(), PI_MAX_CONTACTS);
  EXPECT_EQ(std::string(p.GetContactInfo(0)->GetLabelName()).size(),
            static_cast<size_t>(CINFO_LABEL_SIZE - 1));
  EXPECT_EQ(std::string(p.GetContactInfo(0)->GetInfoString()).size(),
            static_cast<size_t>(CINFO_INFO_SIZE - 1));
  EXPECT_EQ(p.GetContactInfo(1)->GetType(), CINFO_PHONE_MOBILE);
  EXPECT_EQ(p.GetContactInfo(119)->GetType(), CINFO_NONE);

  blk.AddInt("m_nContacts", -4);
  ASSERT_EQ(p.UnpackData("", CUnpackageBlk(blk)), 1);
  EXPECT_EQ(p.GetContactInfoCount(), 0);
  blk.AddInt("m_nContacts", 2);
  blk.AddInt("m_Contacts_1CINFO_VERSION", 0x1121);
  EXPECT_EQ(p.UnpackData("", CUnpackageBlk(blk)), 0);
  EXPECT_TRUE(p.IsEmpty());
  blk.AddInt("PI_VERSION", 0x1213);
  EXPECT_EQ(Full().UnpackData("", CUnpackageBlk(blk)), 0);

  auto raw = std::make_unique<PI_RAW>();
  std::memset(raw.get(), 'r', sizeof *raw);  // no field terminated, count garbage
  p.ReadFrom(*raw);
  EXPECT_EQ(std::string(p.GetName()).size(), static_cast<size_t>(PI_NAME_SIZE));
  EXPECT_EQ(p.GetContactInfoCount(), PI_MAX_CONTACTS);
  EXPECT_EQ(std::string(p.GetContactInfo(5)->GetInfoString()).size(),
            static_cast<size_t>(CINFO_INFO_SIZE));
}

class ContactGroups : public ::testing::Test {
 protected:
  void SetUp() override {
    dir_ = hs::test::MakeTempDir("groups");
    ASSERT_TRUE(hs::os::SetEnv("HANDSET_CONFIG_DIR", dir_.c_str()));
  }
  std::string dir_;
};

TEST_F(ContactGroups, SurviveSaveLoadAndAFreshProcess) {
  CContactGroupList list;
  list.AddTail({"1", "Family"});
  list.AddTail({"7", "Work mates"});
  list.AddTail({"3", "Zoë"});
  EXPECT_EQ(SaveContactGroups(list), 3);
  CContactGroupList loaded;
  loaded.AddTail({"stale", "entry"});
  EXPECT_EQ(LoadContactGroups(loaded), 3);
  EXPECT_EQ(loaded, list);

  std::string out;
  ASSERT_EQ(hs::test::RunCommand(hs::test::CliPath() + " groups list --json", &out), 0);
  EXPECT_EQ(out,
            "[{\"id\":\"1\",\"name\":\"Family\"},{\"id\":\"7\",\"name\":\"Work mates\"},"
            "{\"id\":\"3\",\"name\":\"Zoë\"}]\n");
  ASSERT_EQ(hs::test::RunCommand(hs::test::CliPath() + " groups save 9=Solo", &out), 0);
  EXPECT_EQ(LoadContactGroups(loaded), 1);  // saving replaced the whole section
  EXPECT_EQ(loaded[0], (CONTACT_GROUP{"9", "Solo"}));
}

TEST_F(ContactGroups, DamagedValuesAreSkippedButTheNumberingGoesOn) {
  CString path;
  path.Format("%s\\GUI\\[PhoneBk]", g_szRegRootPath);
  CxRegSDK reg(path.c_str());
  CStringList one, two;
  one.AddTail("lonely");
  two.AddTail("2");
  two.AddTail("Two");
  ASSERT_TRUE(reg.WriteProfileMultiString("ContactGroup", "[0]", one));
  ASSERT_TRUE(reg.WriteProfileMultiString("ContactGroup", "[1]", two));
  ASSERT_TRUE(reg.WriteProfileMultiString("ContactGroup", "[3]", two));  // after a gap
  CContactGroupList loaded;
  EXPECT_EQ(LoadContactGroups(loaded), 1);
  EXPECT_EQ(loaded[0], (CONTACT_GROUP{"2", "Two"}));
  EXPECT_EQ(SaveContactGroups(CContactGroupList()), 0);
  EXPECT_EQ(LoadContactGroups(loaded), 0);
}

TEST(ReadFile, WholeFileInANewBuffer) {
  std::string dir = hs::test::MakeTempDir("readfile");
  ASSERT_EQ(hs::test::RunCommand("printf 'ab\\0c' > " + dir + "/f", nullptr), 0);
  unsigned char* data = nullptr;
  int size = -1;
  ASSERT_EQ(_ReadFile((dir + "/f").c_str(), data, &size), 1);
  EXPECT_EQ(size, 4);
  EXPECT_EQ(std::string(reinterpret_cast<char*>(data), 5), std::string("ab\0c\0", 5));
  delete[] data;
  EXPECT_EQ(_ReadFile((dir + "/missing").c_str(), data, &size), 0);
  EXPECT_EQ(data, nullptr);
}

}  // namespace
