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
  // Composing stops at it, and the lines before it are still written.
  CTestObj unbound(kNote);
  ASSERT_TRUE(unbound.Parse("BEGIN:VNOTE\nBODY:x\nX-TAG:a\nEND:VNOTE\n"));
  EXPECT_EQ(unbound.SetPropTableValue("NOPE", "v"), nullptr);
  ASSERT_NE(unbound.SetPropTableValue("X-TAG", "<unbound>"), nullptr);
  char* buf = nullptr;
  int size = 0;
  EXPECT_FALSE(unbound.Composing(buf, size));
  EXPECT_EQ(std::string(buf, static_cast<size_t>(size)), "BEGIN:VNOTE\r\nBODY:x\r\n");
  delete[] buf;
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
  struct Case {
    bool charset;
    const char* text;
    int32_t value;  // 0: not recognised
  } cases[] = {{false, "ENCODING=quoted-printable", VOBJ_ENC_QP},
               {false, "ENCODING=Base64", VOBJ_ENC_BASE64},
               {false, "ENCODING=8BIT", 0},
               {true, "CHARSET=UTF_8", VOBJ_CHARSET_UTF_8},
               {true, "CHARSET=SHIFT_JIS", VOBJ_CHARSET_SHIFT_JIS},
               {true, "CHARSET=utf_8", 0},
               {true, "CHARSET=UTF-8", 0},
               {true, "CHARSET=Shift_JIS", 0},
               {true, "CHARSET=", 0}};
  for (const Case& c : cases) {
    int32_t v = -1;
    bool ok = c.charset ? CProperty::ReadCharset(c.text, &v) : CProperty::ReadEncoding(c.text, &v);
    EXPECT_EQ(ok, c.value != 0) << c.text;
    EXPECT_EQ(v, c.value) << c.text;
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
  // A line of a known row without a usable value is dropped, yet its row counts as present.
  for (const char* body :
       {"BODY;ENCODING=BASE64:a$b", "BODY", "BODY;ENCODING=QUOTED-PRINTABLE:a=4"}) {
    CTestObj bad(kNote);
    EXPECT_TRUE(bad.Parse(std::string("BEGIN:VNOTE\n") + body + "\nEND:VNOTE\n")) << body;
    EXPECT_EQ(bad.GetPropTableValue("BODY"), nullptr) << body;
    EXPECT_TRUE(bad.GetSetAsideLines().IsEmpty()) << body;
  }
}

TEST(VObjHelpers, CtrlTextUrlSchemesAndBase64) {
  for (const char* t : {"<title>", "<>"}) EXPECT_TRUE(CVObjLite::IsCtrlText(t)) << t;
  for (const char* t : {"<title", "title>", "<", "", static_cast<const char*>(nullptr)})
    EXPECT_FALSE(CVObjLite::IsCtrlText(t)) << (t ? t : "null");
  const std::pair<const char*, const char*> urls[] = {
      {"http://a.b/c", "a.b/c"},
      {"see https://x", "x"},
      {"rtsp://m/s", "m/s"},
      {"https://a/?u=http://b", "b"},  // "http://" is tried first
      {"ftp://f", "ftp://f"}};
  for (const auto& [in, out] : urls) EXPECT_EQ(_StripURLScheme(in), out) << in;
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
