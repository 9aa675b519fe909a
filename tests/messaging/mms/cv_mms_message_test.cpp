#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "handset/messaging.h"
#include "handset/platform/Results.h"

namespace {

using Bytes = std::vector<uint8_t>;

Bytes Blob(const CPackageBlk& blk, const std::string& key) {
  auto it = blk.Entries().find(key);
  return it == blk.Entries().end() ? Bytes{0xEE, 0xEE} : it->second;
}

Bytes Text(const char* s) {
  std::string t(s);
  return Bytes(t.begin(), t.end() + 1);  // with its terminator
}

CCvMmsMessage Sample() {
  CCvMmsMessage m;
  m.m_strFileName = "inbox-7.mms";
  m.m_dwFileSize = 4242;
  m.m_eMmType = 0x84;
  m.m_handle = 0xA1B2C3D4;
  m.m_dwVer = 0x12;
  m.m_sTranId = "tid-1";
  m.m_bUtf8Text = true;
  m.m_lstTo.AddTail("+4911");
  m.m_lstTo.AddTail("a@b.example");
  m.m_lstCc.AddTail("+4922");
  m.m_lstBcc.AddTail("c@d.example");
  m.m_sSender = "+4933";
  m.m_sSubject =
      "Gr\xC3\xBC\xC3\x9F"
      "e";
  m.m_time = 1400000000;
  m.m_tExpiry = 1400086400;
  m.m_ePriority = 0x82;
  m.m_bDeliveryReport = true;
  m.m_bReadReply = false;
  m.m_eDeliverySt = 0x81;
  CMmsMediaObj* a = m.mmBody.CreateMediaObject("note.txt", "hi\0there", 8);
  a->SetContentID("<note>");
  a->SetMimeType(MIME_CNT_TEXT_PLAIN);
  CMmsMediaObj* b = m.mmBody.CreateMediaObject("pic.gif", "GIF89a", 6);
  b->SetMimeType(MIME_CNT_IMAGE_GIF);
  return m;
}

void ExpectSameRecord(const CCvMmsMessage& a, const CCvMmsMessage& b) {
  EXPECT_EQ(a.m_strFileName, b.m_strFileName);
  EXPECT_EQ(a.m_dwFileSize, b.m_dwFileSize);
  EXPECT_EQ(a.m_eMmType, b.m_eMmType);
  EXPECT_EQ(a.m_handle, b.m_handle);
  EXPECT_EQ(a.m_dwVer, b.m_dwVer);
  EXPECT_EQ(a.m_sTranId, b.m_sTranId);
  EXPECT_EQ(a.m_bUtf8Text, b.m_bUtf8Text);
  EXPECT_EQ(a.m_lstTo, b.m_lstTo);
  EXPECT_EQ(a.m_lstCc, b.m_lstCc);
  EXPECT_EQ(a.m_lstBcc, b.m_lstBcc);
  EXPECT_EQ(a.m_sSender, b.m_sSender);
  EXPECT_EQ(a.m_sSubject, b.m_sSubject);
  EXPECT_EQ(a.m_time, b.m_time);
  EXPECT_EQ(a.m_tExpiry, b.m_tExpiry);
  EXPECT_EQ(a.m_ePriority, b.m_ePriority);
  EXPECT_EQ(a.m_bDeliveryReport, b.m_bDeliveryReport);
  EXPECT_EQ(a.m_bReadReply, b.m_bReadReply);
  EXPECT_EQ(a.m_eDeliverySt, b.m_eDeliverySt);
  ASSERT_EQ(a.mmBody.GetCount(), b.mmBody.GetCount());
  for (int i = 0; i < a.mmBody.GetCount(); ++i) {
    const CMmsMediaObj* x = a.mmBody.GetAt(i);
    const CMmsMediaObj* y = b.mmBody.GetAt(i);
    EXPECT_EQ(x->GetFileName(), y->GetFileName()) << i;
    EXPECT_EQ(x->GetContentID(), y->GetContentID()) << i;
    EXPECT_EQ(x->GetMimeType(), y->GetMimeType()) << i;
    EXPECT_EQ(Bytes(x->GetData(), x->GetData() + x->GetSize()),
              Bytes(y->GetData(), y->GetData() + y->GetSize()))
        << i;
  }
}

// The stored layout: keys directly after the prefix, integers little-endian, bools one byte,
// texts with their terminator, body objects under "mmBody[i].".
TEST(CvMmsMessage, PackageKeysAndValues) {
  CPackageBlk blk;
  EXPECT_EQ(Sample().PackData("m.", blk, true), 1);
  struct Case {
    const char* key;
    Bytes value;
  } cases[] = {
      {"m.ClassID", Text("CCvMmsMessage")},
      {"m.m_eMmType", {0x84, 0, 0, 0}},
      {"m.m_handle", {0xD4, 0xC3, 0xB2, 0xA1}},
      {"m.m_dwVer", {0x12, 0, 0, 0}},
      {"m.m_sTranId", Text("tid-1")},
      {"m.m_bUtf8Text", {1}},
      {"m.[MMS_TO].Count", {2, 0, 0, 0}},
      {"m.[MMS_TO][0]", Text("+4911")},
      {"m.[MMS_TO][1]", Text("a@b.example")},
      {"m.[MMS_CC].Count", {1, 0, 0, 0}},
      {"m.[MMS_CC][0]", Text("+4922")},
      {"m.[MMS_BCC].Count", {1, 0, 0, 0}},
      {"m.[MMS_BCC][0]", Text("c@d.example")},
      {"m.m_sSender", Text("+4933")},
      {"m.m_sSubject", Text("Gr\xC3\xBC\xC3\x9F"
                            "e")},
      {"m.m_time", {0x00, 0x4E, 0x72, 0x53}},
      {"m.m_tExpiry", {0x80, 0x9F, 0x73, 0x53}},
      {"m.m_ePriority", {0x82, 0, 0, 0}},
      {"m.m_bDeliveryReport", {1}},
      {"m.m_bReadReply", {0}},
      {"m.m_eDeliverySt", {0x81, 0, 0, 0}},
      {"m.mmBody.Count", {2, 0, 0, 0}},
      {"m.mmBody[0].m_sFileName", Text("note.txt")},
      {"m.mmBody[0].m_sContentID", Text("<note>")},
      {"m.mmBody[0].m_pData", {'h', 'i', 0, 't', 'h', 'e', 'r', 'e'}},
      {"m.mmBody[0].[mime]", {1, 0, 0, 0}},
      {"m.mmBody[1].m_sContentID", {0}},
      {"m.mmBody[1].[mime]", {7, 0, 0, 0}},
      {"m.m_strFileName", Text("inbox-7.mms")},
  };
  for (const Case& c : cases) EXPECT_EQ(Blob(blk, c.key), c.value) << c.key;

  CPackageBlk plain;
  Sample().PackData(nullptr, plain, false);
  EXPECT_EQ(Blob(plain, "ClassID"), Text("CCvMmsMessage"));
  EXPECT_EQ(Blob(plain, "m_strFilePath"), Bytes({0xEE, 0xEE}));  // the base packs no folder
}

TEST(CvMmsMessage, RoundTripsThroughSerialisedBlocksCopiesAndClones) {
  CCvMmsMessage original = Sample();
  CPackageBlk blk;
  original.PackData("rec", blk, true);
  CUnpackageBlk un;
  Bytes bytes = blk.Serialize();
  ASSERT_TRUE(un.Unpack(bytes.data(), bytes.size()));
  CCvMmsMessage back;
  EXPECT_EQ(back.UnpackData("rec", un, true), 1);
  ExpectSameRecord(original, back);

  CCvMmsMessage copy(original);
  ExpectSameRecord(original, copy);
  original.mmBody.Reset();  // the copy owns its objects
  EXPECT_EQ(copy.mmBody.GetCount(), 2);
  std::unique_ptr<CMediaFile> clone(copy.Clone());
  auto* typed = dynamic_cast<CCvMmsMessage*>(clone.get());
  ASSERT_NE(typed, nullptr);
  ExpectSameRecord(copy, *typed);
  CCvMmsMessage assigned;
  assigned = copy;
  ExpectSameRecord(copy, assigned);
}

// Keys that are absent leave their fields; the lists and the body are rebuilt from counts.
TEST(CvMmsMessage, UnpackOverwritesOnlyWhatIsPresent) {
  CPackageBlk blk;
  blk.AddString("m_sSubject", "new");
  blk.AddInt("[MMS_CC].Count", 1);
  blk.AddString("[MMS_CC][0]", "+1");
  blk.AddInt("mmBody.Count", 1000000);  // far more than the block holds
  blk.AddString("mmBody[0].m_sFileName", "kept.txt");
  blk.Add("mmBody[0].m_pData", "x", 1);
  blk.AddString("mmBody[1].m_sFileName", "no-data.txt");
  blk.AddString("mmBody[2].m_sFileName", "");
  blk.Add("mmBody[2].m_pData", "y", 1);
  blk.AddString("mmBody[3].m_sFileName", "empty.txt");
  blk.Add("mmBody[3].m_pData", nullptr, 0);
  blk.Add("m_bReadReply", "\x01", 1);
  CUnpackageBlk un(blk);
  CCvMmsMessage m = Sample();
  m.UnpackData(nullptr, un, false);
  EXPECT_EQ(m.m_sSubject, "new");
  EXPECT_EQ(m.m_sSender, "+4933");
  EXPECT_EQ(m.m_eMmType, 0x84);
  EXPECT_EQ(m.m_handle, 0xA1B2C3D4u);
  EXPECT_TRUE(m.m_bReadReply);
  EXPECT_TRUE(m.m_bDeliveryReport);
  EXPECT_EQ(m.m_strFileName, "inbox-7.mms");
  EXPECT_TRUE(m.m_lstTo.IsEmpty());  // no count: rebuilt empty
  ASSERT_EQ(m.m_lstCc.GetCount(), 1);
  EXPECT_EQ(m.m_lstCc.GetAt(0), "+1");
  ASSERT_EQ(m.mmBody.GetCount(), 2);
  EXPECT_EQ(m.mmBody.GetAt(0)->GetFileName(), "kept.txt");
  EXPECT_EQ(m.mmBody.GetAt(1)->GetFileName(), "empty.txt");
  EXPECT_EQ(m.mmBody.GetAt(1)->GetSize(), 0u);
}

TEST(CvMmsMessage, ConvertsToAndFromAPdu) {
  CCvMmsMessage rec = Sample();
  rec.m_eMmType = MMS_M_SEND_REQ;
  Bytes pdu;
  ASSERT_EQ(rec.ExportToPdu(&pdu), hs::mmspdu::kOk);
  CCvMmsMessage back;
  ASSERT_EQ(back.ImportFromPdu(pdu.data(), pdu.size()), hs::mmspdu::kOk);
  EXPECT_EQ(back.m_eMmType, MMS_M_SEND_REQ);
  EXPECT_EQ(back.m_sTranId, "tid-1");
  EXPECT_EQ(back.m_sSubject, rec.m_sSubject);
  EXPECT_EQ(back.m_sSender, "+4933/TYPE=PLMN");
  EXPECT_EQ(back.m_lstTo.GetAt(0), "+4911/TYPE=PLMN");
  EXPECT_EQ(back.m_lstTo.GetAt(1), "a@b.example");
  EXPECT_EQ(back.m_time, rec.m_time);
  EXPECT_EQ(back.m_tExpiry, rec.m_tExpiry);
  EXPECT_EQ(back.m_ePriority, 0x82);
  EXPECT_TRUE(back.m_bDeliveryReport);
  EXPECT_FALSE(back.m_bReadReply);
  EXPECT_TRUE(back.m_bUtf8Text);  // the text part went out as UTF-8
  ASSERT_EQ(back.mmBody.GetCount(), 2);
  EXPECT_EQ(back.mmBody.GetAt(0)->GetContentID(), "<note>");
  EXPECT_EQ(back.mmBody.GetAt(1)->GetMimeType(), MIME_CNT_IMAGE_GIF);
  EXPECT_EQ(back.mmBody.GetAt(1)->GetContentID(), "<pic.gif>");

  Bytes garbage = {'n', 'o'};
  EXPECT_EQ(back.ImportFromPdu(garbage.data(), garbage.size()), hs::mmspdu::kErrNotMms);
  EXPECT_EQ(back.m_sTranId, "tid-1");
}

}  // namespace
