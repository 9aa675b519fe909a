#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "handset/pim/VObjLite.h"

namespace {

const _FormalDef kNote[] = {
    {"BEGIN:VNOTE", "", "", nullptr, VOBJ_ROW_MANDATORY},
    {"BODY", ":", "<body>", nullptr, VOBJ_ROW_MANDATORY},
    {"X-TAG", ":", "", nullptr, VOBJ_ROW_OPTIONAL},
    {"END:VNOTE", "", "", nullptr, VOBJ_ROW_CLOSING},
    {nullptr, nullptr, nullptr, nullptr, VOBJ_ROW_OPTIONAL},
};

const _FormalDef kInner[] = {
    {"BEGIN:IN", "", "", nullptr, VOBJ_ROW_MANDATORY},
    {"DATA", ":", "<data>", nullptr, VOBJ_ROW_MANDATORY},
    {"END:IN", "", "", nullptr, VOBJ_ROW_CLOSING},
    {nullptr, nullptr, nullptr, nullptr, VOBJ_ROW_OPTIONAL},
};
const _FormalDef kOuter[] = {
    {"BEGIN:OUT", "", "", nullptr, VOBJ_ROW_MANDATORY},
    {"NAME", ":", "<name>", nullptr, VOBJ_ROW_MANDATORY},
    {"END:OUT", "", "", nullptr, VOBJ_ROW_CLOSING},
    {"", "", "", kInner, VOBJ_ROW_OPTIONAL},
    {nullptr, nullptr, nullptr, nullptr, VOBJ_ROW_OPTIONAL},
};

class CTestObj : public CVObjLite {
 public:
  explicit CTestObj(const _FormalDef* f) : CVObjLite(f) {}
  bool CreateEmptyProperties() override { return false; }
  bool Parse(std::string text) { return Parsing(&text[0], &error); }
  std::string Compose() {
    char* buf = nullptr;
    int size = 0;
    Composing(buf, size);
    std::string s(buf ? buf : "", static_cast<size_t>(size));
    delete[] buf;
    return s;
  }
  CString error;

 protected:
  void _CreateEmptySample(CStringList&) override {}
};

TEST(VObjParse, MandatoryRowsSetAsideLinesAndTrailingLines) {
  CTestObj ok(kNote);
  EXPECT_TRUE(ok.Parse("BEGIN:VNOTE\r\n\r\nBODY:hello\r\nEND:VNOTE\r\n"));  // empty lines ignored
  EXPECT_EQ(ok.GetErrorCode(), 0);
  EXPECT_STREQ(ok.GetPropTableValue("BODY"), "hello");
  EXPECT_EQ(ok.GetPropTableValue("X-TAG"), nullptr);

  CTestObj missing(kNote);
  EXPECT_FALSE(missing.Parse("BEGIN:VNOTE\nX-TAG:a\nEND:VNOTE\n"));
  EXPECT_EQ(missing.GetErrorCode(), -2);                  // row 1 (BODY)
  EXPECT_STREQ(missing.GetPropTableValue("X-TAG"), "a");  // built properties stay

  CTestObj noEnd(kNote);
  EXPECT_FALSE(noEnd.Parse("BEGIN:VNOTE\nBODY:x\n"));
  EXPECT_EQ(noEnd.GetErrorCode(), -4);

  CTestObj unknown(kNote);
  EXPECT_FALSE(unknown.Parse("BEGIN:VNOTE\nBODY:x\nFOO:bar\nEND:VNOTE\n"));
  EXPECT_EQ(unknown.GetErrorCode(), 0);
  ASSERT_EQ(unknown.GetSetAsideLines().GetCount(), 1);
  EXPECT_EQ(unknown.GetSetAsideLines().GetAt(0), "FOO:bar");

  CTestObj wrongBegin(kNote);
  EXPECT_FALSE(wrongBegin.Parse("BEGIN:VCARD\nBODY:x\nEND:VNOTE\n"));
  EXPECT_TRUE(wrongBegin.GetProperties().IsEmpty());

  // Lines after the closing line are left for the caller.
  CTestObj lines(kNote);
  CStringList l;
  for (const char* s : {"BEGIN:VNOTE", "BODY:a", "END:VNOTE", "BEGIN:VNOTE"}) l.AddTail(s);
  CPropertyList props;
  EXPECT_TRUE(lines.ParseString(l, props, kNote));
  ASSERT_EQ(l.GetCount(), 1);
  EXPECT_EQ(l.GetAt(0), "BEGIN:VNOTE");
  for (CProperty* p : props) delete p;
}

TEST(VObjParse, NestedObjectsAndPlaceholderBindings) {
  CTestObj o(kOuter);
  ASSERT_TRUE(o.Parse("BEGIN:OUT\r\nNAME:n\r\nBEGIN:IN\r\nDATA:d\r\nEND:IN\r\nEND:OUT\r\n"))
      << o.error;
  EXPECT_STREQ(o.GetPropTableValue("DATA"), "d");
  ASSERT_NE(o.SetPropTableValue("DATA", "e"), nullptr);
  EXPECT_STREQ(o.SearchPropValTable("<data>")->value.c_str(), "e");
  EXPECT_EQ(o.Compose(), "BEGIN:OUT\r\nNAME:n\r\nBEGIN:IN\r\nDATA:e\r\nEND:IN\r\nEND:OUT\r\n");

  CTestObj broken(kOuter);
  EXPECT_FALSE(broken.Parse("BEGIN:OUT\nNAME:n\nBEGIN:IN\nEND:IN\nEND:OUT\n"));
  EXPECT_EQ(broken.GetErrorCode(), -2);  // DATA, row 1 of the nested template

  // A placeholder without a binding has no value and cannot be composed.
  CTestObj unbound(kNote);
  ASSERT_TRUE(unbound.Parse("BEGIN:VNOTE\nBODY:x\nEND:VNOTE\n"));
  EXPECT_EQ(unbound.SetPropTableValue("NOPE", "v"), nullptr);
}

TEST(VObjParse, QuotedPrintableFoldedOverThreeLinesIsOneValue) {
  CTestObj o(kNote);
  ASSERT_TRUE(
      o.Parse("BEGIN:VNOTE\r\nBODY;ENCODING=QUOTED-PRINTABLE:one=\r\n two=\r\n=41\r\n"
              "END:VNOTE\r\n"))
      << o.error;
  EXPECT_STREQ(o.GetPropTableValue("BODY"), "one twoA");
  // Composed back on one line, encoded again.
  EXPECT_EQ(o.Compose(), "BEGIN:VNOTE\r\nBODY;ENCODING=QUOTED-PRINTABLE:one twoA\r\nEND:VNOTE\r\n");
  CTestObj bare(kNote);
  ASSERT_TRUE(
      bare.Parse("BEGIN:VNOTE\nBODY;CHARSET=UTF-8;QUOTED-PRINTABLE:a=3Db=\nc\nEND:VNOTE\n"));
  EXPECT_STREQ(bare.GetPropTableValue("BODY"), "a=bc");
}

TEST(VObjParams, EncodingIgnoresCaseCharsetIsExact) {
  int32_t v = -1;
  EXPECT_TRUE(CProperty::ReadEncoding("ENCODING=quoted-printable", &v));
  EXPECT_EQ(v, VOBJ_ENC_QP);
  EXPECT_TRUE(CProperty::ReadEncoding("ENCODING=Base64", &v));
  EXPECT_EQ(v, VOBJ_ENC_BASE64);
  EXPECT_FALSE(CProperty::ReadEncoding("ENCODING=8BIT", &v));
  EXPECT_EQ(v, 0);
  EXPECT_TRUE(CProperty::ReadCharset("CHARSET=UTF_8", &v));
  EXPECT_EQ(v, VOBJ_CHARSET_UTF_8);
  EXPECT_TRUE(CProperty::ReadCharset("CHARSET=SHIFT_JIS", &v));
  EXPECT_EQ(v, VOBJ_CHARSET_SHIFT_JIS);
  for (const char* bad : {"CHARSET=utf_8", "CHARSET=UTF-8", "CHARSET=Shift_JIS", "CHARSET="}) {
    EXPECT_FALSE(CProperty::ReadCharset(bad, &v)) << bad;
    EXPECT_EQ(v, 0) << bad;
  }
}

TEST(VObjCompose, SizeContractParametersAndBase64) {
  CTestObj o(kNote);
  ASSERT_TRUE(o.Parse("BEGIN:VNOTE\nBODY;ENCODING=BASE64;LANGUAGE=en;X-Y=z:aGk=\nEND:VNOTE\n"));
  EXPECT_STREQ(o.GetPropTableValue("BODY"), "hi");
  char* buf = nullptr;
  int size = 5;
  o.Composing(buf, size);  // non-zero size: nothing written or allocated
  EXPECT_EQ(buf, nullptr);
  EXPECT_EQ(size, 5);
  o.SetPropTableValue("BODY", "hello");
  EXPECT_EQ(o.Compose(),
            "BEGIN:VNOTE\r\nBODY;ENCODING=BASE64;LANGUAGE=en;X-Y=z:aGVsbG8=\r\nEND:VNOTE\r\n");
  CTestObj bad(kNote);
  EXPECT_FALSE(bad.Parse("BEGIN:VNOTE\nBODY;ENCODING=BASE64:a$b\nEND:VNOTE\n"));
  EXPECT_EQ(bad.GetSetAsideLines().GetCount(), 1);
}

TEST(VObjHelpers, CtrlTextUrlSchemesAndBase64) {
  EXPECT_TRUE(CVObjLite::IsCtrlText("<title>"));
  EXPECT_TRUE(CVObjLite::IsCtrlText("<>"));
  EXPECT_FALSE(CVObjLite::IsCtrlText("<title"));
  EXPECT_FALSE(CVObjLite::IsCtrlText("title>"));
  EXPECT_FALSE(CVObjLite::IsCtrlText("<"));
  EXPECT_FALSE(CVObjLite::IsCtrlText(""));
  EXPECT_FALSE(CVObjLite::IsCtrlText(nullptr));
  EXPECT_EQ(_StripURLScheme("http://a.b/c"), "a.b/c");
  EXPECT_EQ(_StripURLScheme("see https://x"), "x");
  EXPECT_EQ(_StripURLScheme("rtsp://m/s"), "m/s");
  EXPECT_EQ(_StripURLScheme("https://a/?u=http://b"), "b");  // "http://" is tried first
  EXPECT_EQ(_StripURLScheme("ftp://f"), "ftp://f");
  CString out;
  for (const char* s : {"", "f", "fo", "foo", "foob", "fooba", "foobar"}) {
    ASSERT_TRUE(_VObjBase64Decode(_VObjBase64Encode(s, std::strlen(s)).c_str(), &out));
    EXPECT_EQ(out, s);
  }
  EXPECT_EQ(_VObjBase64Encode("foobar", 6), "Zm9vYmFy");
  EXPECT_TRUE(_VObjBase64Decode("Zm9v\r\n YmE=", &out));
  EXPECT_EQ(out, "fooba");
  EXPECT_FALSE(_VObjBase64Decode("Zm9=v", &out));
  EXPECT_FALSE(_VObjBase64Decode("Z", &out));
}

}  // namespace
