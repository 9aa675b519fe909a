#include <gtest/gtest.h>

#include <string>

#include "handset/messaging.h"
#include "handset/platform/Results.h"
#include "tests/TestUtil.h"
#include "tests/messaging/mms/MmsTestUtil.h"

namespace {

using hs::test::HexBytes;
using Bytes = std::vector<uint8_t>;

// The encoder marks bare phone numbers as such; compare addresses without that mark.
std::string Unmarked(std::string a) {
  const std::string mark = "/TYPE=PLMN";
  if (a.size() > mark.size() && a.compare(a.size() - mark.size(), mark.size(), mark) == 0)
    a.resize(a.size() - mark.size());
  return a;
}

std::vector<std::string> Unmarked(const CStringList& list) {
  std::vector<std::string> out;
  for (const CString& a : list) out.push_back(Unmarked(a));
  return out;
}

Bytes Encode(const CMmsMessage& m) {
  Bytes out;
  EXPECT_EQ(MmsEncodePdu(m, &out), hs::mmspdu::kOk);
  return out;
}

// A one-part m-send-req written out octet by octet from the encapsulation rules.
TEST(MmsPduEncoder, SmallSendRequestOctetByOctet) {
  CMmsMessage m;
  m.m_sTransactionId = "t1";
  m.m_lstTo.AddTail("+123");
  m.m_sSubject = "Hi";
  m.GetBody().CreateMediaObject("a.txt", "hello", 5);
  Bytes expect = HexBytes(
      "8c 80  98 't1' 00  8d 92  89 01 81  97 '+123/TYPE=PLMN' 00  96 'Hi' 00  84 a3"
      "01  15 05  03 83 81 ea  c0 22 '<a.txt>' 00  8e 'a.txt' 00  'hello'");
  EXPECT_EQ(Encode(m), expect);
  EXPECT_EQ(MmsCalcSendReqPduSize(m), static_cast<int>(expect.size()));
  EXPECT_EQ(MmsCalcSendReqPduSize(&m), static_cast<int>(expect.size()));
  EXPECT_EQ(MmsCalcSendReqPduSize(nullptr), 0);
}

TEST(MmsPduEncoder, RelatedBodyWithOptionalHeaders) {
  CMmsMessage m;
  m.m_sTransactionId = "t2";
  m.m_tDate = 0x5F5E1000;
  m.m_sFrom = "+4912";
  m.m_lstCc.AddTail("a@b.example");
  m.m_sSubject =
      "Gr\xC3\xBC\xC3\x9F"
      "e";
  m.m_tExpiry = 3600;
  m.m_bExpiryRelative = true;
  m.m_nPriority = 0x82;
  m.m_nDeliveryReport = 0x80;
  m.m_nReadReport = 0x81;
  m.GetBody().CreateMediaObject("dir/s.smil", "<smil/>", 7);
  m.GetBody().CreateMediaObject("img.gif", "GIF89a", 6)->SetContentID("img");
  Bytes expect = HexBytes(
      "8c 80  98 't2' 00  8d 92  85 04 5f 5e 10 00  89 11 80 '+4912/TYPE=PLMN' 00"
      "82 'a@b.example' 00  96 09 ea 'Gr' c3 bc c3 9f 'e' 00  88 04 81 02 0e 10  8f 82"
      "86 80  90 81  84 1d b3 8a '<s.smil>' 00 89 'application/smil' 00  02"
      "27 07  13 'application/smil' 00 81 ea  c0 22 '<s.smil>' 00  8e 's.smil' 00  '<smil/>'"
      "12 06  9d  c0 22 '<img>' 00  8e 'img.gif' 00  'GIF89a'");
  EXPECT_EQ(Encode(m), expect);
  EXPECT_EQ(MmsCalcSendReqPduSize(m), static_cast<int>(expect.size()));
}

TEST(MmsPduEncoder, AddressesForSending) {
  struct Case {
    const char* in;
    const char* out;
  } cases[] = {
      {"+1 (234) 567-890", "+1234567890/TYPE=PLMN"},
      {"0170.123", "0170123/TYPE=PLMN"},
      {"a@b.example", "a@b.example"},
      {"John <j@x.example>", "John <j@x.example>"},
      {"+49/TYPE=PLMN", "+49/TYPE=PLMN"},
      {"12+3", "12+3"},
      {"+", "+"},
  };
  for (const Case& c : cases) {
    CMmsMessage m;
    m.m_sTransactionId = "t";
    m.m_lstBcc.AddTail(c.in);
    CMmsMessage back;
    Bytes pdu = Encode(m);
    ASSERT_EQ(MmsDecodePdu(pdu.data(), pdu.size(), &back), hs::mmspdu::kOk) << c.in;
    ASSERT_EQ(back.m_lstBcc.GetCount(), 1);
    EXPECT_EQ(back.m_lstBcc.GetAt(0), c.out);
  }
}

// The size comes from the writing code itself: it must match for long values (two-octet
// lengths), large parts (three-octet uintvars) and generated transaction ids.
TEST(MmsPduEncoder, SizeMatchesTheEncodingForEveryShape) {
  std::string longSubject(300, 'x');
  Bytes big(70000, 0x5A);
  for (int shape = 0; shape < 4; ++shape) {
    CMmsMessage m;
    if (shape & 1) m.m_sSubject = longSubject + "\xC3\xA9";
    if (shape & 2) m.GetBody().CreateMediaObject("big.bin", big.data(), 70000);
    m.GetBody().CreateMediaObject("t.txt", "\xFF\xFEh\0i\0", 6);
    Bytes pdu = Encode(m);
    EXPECT_EQ(MmsCalcSendReqPduSize(m), static_cast<int>(pdu.size())) << shape;
    CMmsMessage back;
    ASSERT_EQ(MmsDecodePdu(pdu.data(), pdu.size(), &back), hs::mmspdu::kOk) << shape;
    EXPECT_EQ(back.m_sTransactionId.size(), 9u);
    EXPECT_EQ(back.m_sSubject, m.m_sSubject);
    EXPECT_EQ(back.GetBody().GetCount(), m.GetBody().GetCount());
    EXPECT_EQ(back.GetBody().GetAt(back.GetBody().GetCount() - 1)->GetCharset(), 1015);
  }
}

// A text must not start with a control character (it would be read as a length) nor with the
// quote octet; such texts from a decoded message still encode to something readable.
TEST(MmsPduEncoder, TextsNeverReadAsLengthsOrQuotes) {
  struct Case {
    const char* in;
    const char* out;
  } cases[] = {{"\x03!", " !"},
               {"a\x01"
                "b\tc",
                "a b\tc"},
               {"\x7F"
                "x",
                "\x7F"
                "x"},
               {"\n", " "}};
  for (const Case& c : cases) {
    CMmsMessage m;
    m.m_sTransactionId = c.in;
    m.m_sSubject = c.in;
    Bytes pdu = Encode(m);
    CMmsMessage back;
    ASSERT_EQ(MmsDecodePdu(pdu.data(), pdu.size(), &back), hs::mmspdu::kOk) << c.in;
    EXPECT_EQ(back.m_sTransactionId, c.out);
    EXPECT_EQ(back.m_sSubject, c.out);
  }
}

TEST(MmsPduDecoder, RefusesMalformedPdusWithTheRightCode) {
  struct Case {
    const char* hex;
    int code;
  } cases[] = {
      {"", hs::mmspdu::kErrEmpty},
      {"'This is not a PDU'", hs::mmspdu::kErrNotMms},
      {"8c", hs::mmspdu::kErrNotMms},
      {"8c 80 98 't1'", hs::mmspdu::kErrTruncated},
      {"8c 80 89 05 80 'ab' 00", hs::mmspdu::kErrTruncated},
      {"8c 80 05 00", hs::mmspdu::kErrBadHeader},
      {"8c 84 84 a3 05 01 00", hs::mmspdu::kErrBadBody},
      {"8c 84 84 a3 01 05 09 83", hs::mmspdu::kErrTruncated},
      {"8c 84 84 a3 01 01 09 83", hs::mmspdu::kErrTruncated},
      {"8c 84 84 a3 01 00 00 00", hs::mmspdu::kErrBadBody},
      {"8c 84 84 a3 01 81 81 81 81 81 01 00", hs::mmspdu::kErrBadValue},
      {"8c 84 84 1f 8f ff ff ff 7f", hs::mmspdu::kErrTruncated},
  };
  for (const Case& c : cases) {
    Bytes b = HexBytes(c.hex);
    CMmsMessage m;
    EXPECT_EQ(MmsDecodePdu(b.data(), b.size(), &m), c.code) << c.hex;
  }
}

TEST(MmsPduDecoder, KeepsUnknownAndMisshapenHeaders) {
  Bytes pdu = HexBytes("8c 80 98 'x' 00 c5 80 'X-Foo' 00 'bar' 00 8f 'high' 00 8d 92");
  CMmsMessage m;
  ASSERT_EQ(MmsDecodePdu(pdu.data(), pdu.size(), &m), hs::mmspdu::kOk);
  ASSERT_EQ(m.m_extraHeaders.size(), 3u);
  EXPECT_EQ(m.m_extraHeaders[0].m_nCode, 0x45);
  EXPECT_EQ(m.m_extraHeaders[1].m_sName, "X-Foo");
  EXPECT_EQ(m.m_extraHeaders[1].m_sValue, "bar");
  EXPECT_EQ(m.m_extraHeaders[2].m_sName, "X-Mms-Priority");
  EXPECT_EQ(m.m_nPriority, 0);
  EXPECT_EQ(m.m_headers.size(), 6u);
  CMmsMessage again;
  Bytes re = Encode(m);
  ASSERT_EQ(MmsDecodePdu(re.data(), re.size(), &again), hs::mmspdu::kOk);
  ASSERT_EQ(again.m_extraHeaders.size(), 3u);
  EXPECT_EQ(again.m_extraHeaders[1].m_sValue, "bar");
}

// What the sample messages hold, from their descriptions and from an independent dissector.
TEST(MmsPduDecoder, ReadsTheSampleMessages) {
  HS_SKIP_WITHOUT_CORPUS();
  struct Case {
    const char* file;
    int type;
    const char* subject;
    const char* from;
    int to;
    int parts;
  } cases[] = {
      {"gammu-HelloWorld.mms", 0x80, "My first MMS Message", "+34660785634/TYPE=PLMN", 1, 5},
      {"gammu-worldcupupdate_nosmil.mms", 0x84, "World Cup Update", "mms-editor@toolkit", 1, 5},
      {"gammu-worldcupupdate_withsmil.mms", 0x84, "World Cup Update", "mms-editor@toolkit", 1, 6},
      {"sailfish-m-acknowledge.ind", 0x85, "", "", 0, 0},
      {"sailfish-m-delivery_1.ind", 0x86, "", "", 1, 0},
      {"sailfish-m-notification_1.ind", 0x82, "", "+79050000000/TYPE=PLMN", 0, 0},
      {"sailfish-m-notifyresp.ind", 0x83, "", "", 0, 0},
      {"sailfish-m-read-orig.ind", 0x88, "", "+358500000000/TYPE=PLMN", 1, 0},
      {"sailfish-m-read-rec.ind", 0x87, "", "", 1, 0},
      {"sailfish-m-retrieve_1.conf", 0x84, "", "+79050000000/TYPE=PLMN", 2, 3},
      {"sailfish-m-retrieve_9.conf", 0x84,
       "\xEC\x9D\x98\xEB\xA3\x8C\xEB\xB3\xB4\xEC\xA1\xB0\xEA\xB8\x88 \xEC\xA7\x80\xEA\xB8\x89 "
       "\xEC\x95\x88\xEB\x82\xB4",
       "0444444444", 0, 1},
      {"sailfish-m-send_1.conf", 0x81, "", "", 0, 0},
      {"sailfish-m-send_1.req", 0x80, "Fw: another test", "", 1, 2},
  };
  for (const Case& c : cases) {
    Bytes pdu = hs::test::ReadBytes(hs::test::CorpusDir() + "/mms/" + c.file);
    CMmsMessage m;
    ASSERT_EQ(MmsDecodePdu(pdu.data(), pdu.size(), &m), hs::mmspdu::kOk) << c.file;
    EXPECT_EQ(m.m_nMessageType, c.type) << c.file;
    EXPECT_EQ(m.m_sSubject, c.subject) << c.file;
    EXPECT_EQ(m.m_sFrom, c.from) << c.file;
    EXPECT_EQ(m.m_lstTo.GetCount(), c.to) << c.file;
    EXPECT_EQ(m.GetBody().GetCount(), c.parts) << c.file;
  }
  Bytes garbage = hs::test::ReadBytes(hs::test::CorpusDir() + "/mms/sailfish-garbage-retrieve.bin");
  CMmsMessage m;
  EXPECT_EQ(MmsDecodePdu(garbage.data(), garbage.size(), &m), hs::mmspdu::kErrNotMms);
}

// Decoding what the encoder wrote from a decoded sample gives the same message again, and no
// cut-off copy of a sample is read as complete once the cut reaches into its last part.
TEST(MmsPduDecoder, SamplesSurviveReencodingAndTruncation) {
  HS_SKIP_WITHOUT_CORPUS();
  for (const std::string& file : hs::test::CorpusFiles("mms")) {
    Bytes pdu = hs::test::ReadBytes(file);
    CMmsMessage m;
    if (MmsDecodePdu(pdu.data(), pdu.size(), &m) != hs::mmspdu::kOk) continue;
    CMmsMessage back;
    Bytes re = Encode(m);
    ASSERT_EQ(MmsDecodePdu(re.data(), re.size(), &back), hs::mmspdu::kOk) << file;
    EXPECT_EQ(back.m_nMessageType, m.m_nMessageType) << file;
    EXPECT_EQ(back.m_sTransactionId, m.m_sTransactionId) << file;
    EXPECT_EQ(back.m_tDate, m.m_tDate) << file;
    EXPECT_EQ(Unmarked(back.m_sFrom), Unmarked(m.m_sFrom)) << file;
    EXPECT_EQ(Unmarked(back.m_lstTo), Unmarked(m.m_lstTo)) << file;
    EXPECT_EQ(Unmarked(back.m_lstCc), Unmarked(m.m_lstCc)) << file;
    EXPECT_EQ(back.m_sSubject, m.m_sSubject) << file;
    EXPECT_EQ(back.m_tExpiry, m.m_tExpiry) << file;
    EXPECT_EQ(back.m_extraHeaders.size(), m.m_extraHeaders.size()) << file;
    ASSERT_EQ(back.GetBody().GetCount(), m.GetBody().GetCount()) << file;
    for (int i = 0; i < m.GetBody().GetCount(); ++i) {
      const CMmsMediaObj* a = m.GetBody().GetAt(i);
      const CMmsMediaObj* b = back.GetBody().GetAt(i);
      EXPECT_EQ(b->GetContentType(), a->GetContentType()) << file << " part " << i;
      EXPECT_EQ(Bytes(b->GetData(), b->GetData() + b->GetSize()),
                Bytes(a->GetData(), a->GetData() + a->GetSize()))
          << file << " part " << i;
    }
    if (m.m_nMessageType == 0x80) {
      EXPECT_EQ(MmsCalcSendReqPduSize(m), static_cast<int>(re.size())) << file;
    }
    if (m.GetBody().GetCount() == 0 || !m.m_bMultipart) continue;
    uint32_t last = m.GetBody().GetAt(m.GetBody().GetCount() - 1)->GetSize();
    size_t step = last / 97 + 1;  // about a hundred cuts spread over the last part
    for (size_t cut = 1; cut <= last && cut < pdu.size(); cut += step) {
      CMmsMessage part;
      ASSERT_EQ(MmsDecodePdu(pdu.data(), pdu.size() - cut, &part), hs::mmspdu::kErrTruncated)
          << file << " cut " << cut;
    }
  }
}

}  // namespace
