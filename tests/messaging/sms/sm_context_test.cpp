#include <gtest/gtest.h>

#include <cstring>
#include <ctime>
#include <string>
#include <vector>

#include "handset.h"

namespace {

std::string FullText(const CSmContext& ctx) {
  CSmText t("");
  ctx.GetContent()->GetFullText(&t);
  return static_cast<char*>(t);
}

TEST(SmHandle, BitsAndDecoders) {
  struct Case {
    int storage, index;
    bool longSms;
    unsigned long handle;
    int decodedStorage;
  } cases[] = {
      {0, 7, true, 0xAABBC107ul, 0},
      {2, 7, false, 0x00000007ul, 1},    // the storage number is not kept
      {1, 300, false, 0x0000002Cul, 1},  // 300 AND 0xFF = 44
      {0, 255, false, 0xAABBC0FFul, 0},
      {0, -1, true, 0xAABBC1FFul, 0},
  };
  for (const Case& c : cases) {
    unsigned long h = MakeSmHandle(c.storage, c.index, c.longSms);
    EXPECT_EQ(h, c.handle) << c.storage << "/" << c.index;
    EXPECT_EQ(CSmContext::MakeSmHandle(c.storage, c.index, c.longSms), c.handle);
    EXPECT_EQ(CSmContext::GetStorage(h), c.decodedStorage);
    EXPECT_EQ(CSmContext::GetIndex(h), c.index & 0xFF);
    EXPECT_EQ(CSmContext::IsLongSMS(h), c.longSms);
  }
}

TEST(SmNumbers, NormalisedOnConstructionAndAssignment) {
  CGsmPhoneNo a("+1 (234) 567-890");
  EXPECT_STREQ(static_cast<const char*>(a), "+1234567890");
  EXPECT_TRUE(a == "+1-234-567 890");
  EXPECT_TRUE(a == CGsmPhoneNo("+1234567890"));
  CGsmPhoneNo b;
  EXPECT_TRUE(b.IsEmpty());
  b = std::string(70, '9').c_str();
  EXPECT_EQ(std::strlen(b), 65u);
  b = "tel:*#06#";
  EXPECT_STREQ(static_cast<const char*>(b), "06");
  b.Empty();
  EXPECT_TRUE(b.IsEmpty());
  EXPECT_STREQ(CGsmPhoneNo::Normalize(nullptr), "");

  CMsgAddress m("Ann \x01<ann@example.com>\x7F\xC3\xA9");
  EXPECT_STREQ(static_cast<const char*>(m), "Ann <ann@example.com>");
  m = std::string(200, 'x').c_str();
  EXPECT_EQ(std::strlen(m), 128u);
}

TEST(SmContext, DefaultsCountsAndReset) {
  CSmContext c1(1);
  EXPECT_EQ(c1.GetCompoundCount(0), 0);
  EXPECT_EQ(c1.GetCompoundCount(1), 1);
  EXPECT_EQ(c1.GetCompoundCount(2), 1);
  EXPECT_EQ(c1.GetCompoundCount(7), 0);
  EXPECT_FALSE(c1.IsLongSMS());
  EXPECT_TRUE(c1.SetCompoundCount(1, 3));
  EXPECT_TRUE(c1.IsLongSMS());
  EXPECT_FALSE(c1.SetCompoundCount(2, 5));
  EXPECT_EQ(c1.GetCompoundCount(2), 3);
  c1.SetMemory(9);  // other memories leave the counts
  EXPECT_EQ(c1.GetCompoundCount(1), 3);
  c1.SetMemory(0);
  EXPECT_EQ(c1.GetCompoundCount(0), 1);
  EXPECT_EQ(c1.GetCompoundCount(1), 0);

  CSmContext c;
  EXPECT_EQ(c.m_hHandle, 0xFFFFFFFFu);
  ESmClass cls;
  int vp = 0;
  bool flag = true;
  c.GetExtraAttributes(&cls, &vp, &flag);
  EXPECT_EQ(cls, 2);
  EXPECT_EQ(vp, 255);
  EXPECT_FALSE(flag);
  c.m_dwParam = 0x81;
  c.SetExtraAttributes(SMCLASS_0, 167, true);
  EXPECT_EQ(c.m_dwParam, 0x83u);  // only bit 1 changes
  c.SetExtraAttributes(SMCLASS_0, 167, false);
  EXPECT_EQ(c.m_dwParam, 0x81u);
  c.GetExtraAttributes(nullptr, &vp, nullptr);
  EXPECT_EQ(vp, 167);

  c.SetPartyNum("+44 20");
  c.GetContent()->AddItem(new CSmText("x"), false, true);
  c.SetHandle(0x1234);
  c.Reset();
  EXPECT_TRUE(c.IsEmpty());
  EXPECT_TRUE(c.m_PartyNo.IsEmpty());
  EXPECT_EQ(c.m_hHandle, 0x1234u);  // kept by Reset
  EXPECT_EQ(c.m_calTime, ME_CAL_DATE(static_cast<time_t>(-1)));
}

TEST(SmContext, MailStringsAndFolderIdLimits) {
  CSmContext c;
  std::string id256(256, 'i'), id257(257, 'j');
  EXPECT_TRUE(c.SetFolderId(&id256[0]));
  EXPECT_EQ(std::string(c.GetFolderId()), id256);
  EXPECT_FALSE(c.SetFolderId(&id257[0]));
  EXPECT_EQ(std::string(c.GetFolderId()), id256);  // unchanged
  EXPECT_TRUE(c.SetFolderId(static_cast<char*>(nullptr)));
  EXPECT_STREQ(c.GetFolderId(), "");

  std::string longSubject(2000, 's'), longName(300, 'n');
  c.SetMailAttributes(MAILSTAT_READ, MAILTYPE_MAIL, MAILBOX_SENT, longName.c_str(), "f1",
                      longSubject.c_str(), nullptr);
  EXPECT_EQ(std::strlen(c.GetSubject()), 1792u);
  EXPECT_STREQ(c.GetPartyName(), "");
  char name[257], id[257], subject[1793], party[129];
  EMailStatus st;
  EMailBox box;
  c.GetMailAttributes(&st, nullptr, &box, name, id, subject, party);
  EXPECT_EQ(st, MAILSTAT_READ);
  EXPECT_EQ(box, MAILBOX_SENT);
  EXPECT_EQ(std::strlen(name), 256u);
  EXPECT_STREQ(id, "f1");
  EXPECT_EQ(std::strlen(subject), 1792u);
}

TEST(SmContext, ReferenceCounting) {
  CSmContext* c = new CSmContext;
  EXPECT_EQ(c->AddRef(), 2);
  EXPECT_EQ(c->Release(), 1);
  EXPECT_EQ(c->Release(), 0);  // destroyed here; the sanitizer build would catch a leak
}

TEST(SmContext, PackageKeysAndEmptyBlockDefaults) {
  CSmContext c(1, 0xAABBC107);
  c.SetPartyNum("+1 (234) 567-890");
  c.SetServiceCenterNum("+4479");
  c.SetTime(ME_CAL_DATE(2024, 2, 29, 23, 59, 58));
  c.SetStoreState(SMSTAT_REC_READ);
  c.SetMailAttributes(MAILSTAT_UNREAD, MAILTYPE_SMS, MAILBOX_INBOX, "Inbox", "7", "Hi", "Ann");
  c.GetContent()->AddItem(new CSmText("body"), false, true);
  CPackageBlk blk;
  c.PackData("ctx", blk);
  std::vector<std::string> keys;
  for (const auto& e : blk.Entries()) keys.push_back(e.first);
  std::vector<std::string> expect = {"ctx.m_PartyAdr",
                                     "ctx.m_PartyNo",
                                     "ctx.m_SmscNo",
                                     "ctx.m_calTime",
                                     "ctx.m_dwParam",
                                     "ctx.m_eClass",
                                     "ctx.m_eStoState",
                                     "ctx.m_eType",
                                     "ctx.m_hHandle",
                                     "ctx.m_nBox",
                                     "ctx.m_nCompoundCount[0]",
                                     "ctx.m_nCompoundCount[1]",
                                     "ctx.m_nMem",
                                     "ctx.m_nStatus",
                                     "ctx.m_nType",
                                     "ctx.m_nVP",
                                     "ctx.m_smMatter.ObjCount",
                                     "ctx.m_smMatter[0].ClassID",
                                     "ctx.m_smMatter[0].m_eType",
                                     "ctx.m_smMatter[0].m_nBeginPos",
                                     "ctx.m_smMatter[0].m_nUsePos",
                                     "ctx.m_smMatter[0].m_nUserAnchor",
                                     "ctx.m_smMatter[0].m_pvRawData",
                                     "ctx.m_szFdrId",
                                     "ctx.m_szFdrName",
                                     "ctx.m_szPartyName",
                                     "ctx.m_szSubject"};
  EXPECT_EQ(keys, expect);
  CUnpackageBlk u(blk);
  const void* p = nullptr;
  uint32_t n = 0;
  ASSERT_TRUE(u.GetData("ctx.m_calTime", &p, &n));
  const uint8_t date[24] = {0xE8, 7, 0, 0, 2,  0, 0, 0, 29, 0, 0, 0,
                            23,   0, 0, 0, 59, 0, 0, 0, 58, 0, 0, 0};
  ASSERT_EQ(n, 24u);
  EXPECT_EQ(std::memcmp(p, date, 24), 0);
  ASSERT_TRUE(u.GetData("ctx.m_PartyNo", &p, &n));
  EXPECT_EQ(std::string(static_cast<const char*>(p), n), std::string("+1234567890", 12));

  CSmContext back;
  back.UnpackData("ctx", u);
  EXPECT_EQ(back.m_nMem, 1);
  EXPECT_EQ(back.m_hHandle, 0xAABBC107u);
  EXPECT_EQ(back.GetCompoundCount(1), 1);
  EXPECT_STREQ(back.m_PartyNo, "+1234567890");
  EXPECT_EQ(back.m_calTime, ME_CAL_DATE(2024, 2, 29, 23, 59, 58));
  EXPECT_STREQ(back.GetPartyName(), "Ann");
  EXPECT_EQ(FullText(back), "body");

  CPackageBlk emptyBlk;
  CUnpackageBlk empty(emptyBlk);
  back.UnpackData("ctx", empty);
  EXPECT_EQ(back.m_eClass, 2);
  EXPECT_EQ(back.m_nVP, 255);
  EXPECT_EQ(back.m_eStoState, -1);
  EXPECT_EQ(back.m_eType, 0);
  EXPECT_STREQ(back.GetSubject(), "");
  EXPECT_STREQ(back.m_PartyNo, "");
  EXPECT_TRUE(back.IsEmpty());
  EXPECT_EQ(back.m_calTime, ME_CAL_DATE(static_cast<time_t>(-1)));
}

TEST(SmContext, UnpackCutsOverlongStoredStrings) {
  CPackageBlk blk;
  std::string subject(5000, 's'), party(1000, 'p'), adr(400, 'a');
  blk.AddString(".m_szSubject", subject.c_str());
  blk.AddString(".m_szPartyName", party.c_str());
  blk.AddString(".m_szFdrName", party.c_str());
  blk.AddString(".m_PartyAdr", adr.c_str());
  blk.AddString(".m_PartyNo", std::string(300, '5').c_str());
  blk.Add(".m_szFdrId", "no-terminator", 13);
  blk.Add(".m_nMem", "\x01\x02", 2);
  blk.Add(".m_calTime", "short", 5);  // not a whole date: ignored
  CUnpackageBlk u(blk);
  CSmContext c;
  c.UnpackData(nullptr, u);
  EXPECT_EQ(std::strlen(c.GetSubject()), 1792u);
  EXPECT_EQ(std::strlen(c.GetPartyName()), 128u);
  EXPECT_EQ(std::strlen(c.m_szFdrName), 256u);
  EXPECT_EQ(std::strlen(c.m_PartyAdr), 128u);
  EXPECT_EQ(std::strlen(c.m_PartyNo), 65u);
  EXPECT_STREQ(c.GetFolderId(), "no-terminator");
  EXPECT_EQ(c.m_nMem, 1);
  EXPECT_EQ(c.m_calTime, ME_CAL_DATE(static_cast<time_t>(-1)));
}

// A header padded to 140 octets, as received user data is kept.
std::vector<unsigned char> Ud(std::vector<unsigned char> header) {
  header.resize(140, 0);
  return header;
}

TEST(SmAssemble, MissingPartsAndOrder) {
  CSmAssemble a;
  EXPECT_FALSE(a.SetTarget(-1, 3, nullptr));
  EXPECT_FALSE(a.SetTarget(1, 0, nullptr));
  EXPECT_FALSE(a.SetTarget(1, 31, nullptr));
  CSmContext* target = new CSmContext;
  ASSERT_TRUE(a.SetTarget(7, 3, target));
  EXPECT_TRUE(a.CanAddPart(7, 3, 3));
  EXPECT_FALSE(a.CanAddPart(8, 3, 3));
  EXPECT_FALSE(a.CanAddPart(7, 4, 3));
  EXPECT_FALSE(a.CanAddPart(7, 1, 2));
  EXPECT_TRUE(a.AddPart(3, "three", nullptr, true));
  EXPECT_TRUE(a.AddPart(1, "one ", Ud({5, 0, 3, 7, 3, 1}).data(), true));
  EXPECT_TRUE(a.AddPart(1, "duplicate", nullptr, true));  // ignored, but still counted
  EXPECT_FALSE(a.AddPart(4, "four", nullptr, true));
  EXPECT_FALSE(a.CanAddPart(7, 1, 3));
  EXPECT_EQ(a.GetReceived(), 2);
  EXPECT_FALSE(a.CanAssemble());
  EXPECT_EQ(target->AddRef(), 5);  // 1 + three counted parts + this call
  CSmContext out;
  EXPECT_TRUE(a.DoAssemble(&out));
  EXPECT_EQ(FullText(out), "one {...}three");
  EXPECT_EQ(FullText(*target), "one {...}three");
  for (int i = 0; i < 5; ++i) target->Release();

  CSmAssemble b;
  b.SetTarget(1, 3, nullptr);
  const char* parts[] = {"a", "b", "c"};
  for (int seq : {2, 3, 1}) b.AddPart(seq, parts[seq - 1], nullptr, false);
  EXPECT_TRUE(b.CanAssemble());
  CSmContext ordered;
  b.DoAssemble(&ordered);
  EXPECT_EQ(b.GetTarget(), &ordered);
  EXPECT_EQ(FullText(ordered), "abc");

  CSmAssemble none;
  EXPECT_FALSE(none.DoAssemble(nullptr));
}

TEST(SmAssemble, KeepsAWholeSegmentOfMultiByteText) {
  std::string greek;
  for (int i = 0; i < 160; ++i) greek += "\xCE\x94";  // Δ: one septet, two bytes
  CSmAssemble a;
  a.SetTarget(0, 1, nullptr);
  a.AddPart(1, greek.c_str(), nullptr, false);
  CSmContext c;
  a.DoAssemble(&c);
  EXPECT_EQ(FullText(c), greek);
}

}  // namespace
