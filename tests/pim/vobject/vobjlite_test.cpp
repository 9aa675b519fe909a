#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "handset/pim/VObjLite.h"
#include "handset/pim/Vbkm.h"

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
  // One line, still encoded as written; decoded on request.
  EXPECT_STREQ(o.GetPropTableValue("BODY"), "one two=41");
  CString plain;
  ASSERT_TRUE(o.GetPropDecodedValue("BODY", &plain));
  EXPECT_EQ(plain, "one twoA");
  EXPECT_EQ(o.Compose(),
            "BEGIN:VNOTE\r\nBODY;ENCODING=QUOTED-PRINTABLE:one two=41\r\nEND:VNOTE\r\n");
  CTestObj bare(kNote);
  ASSERT_TRUE(
      bare.Parse("BEGIN:VNOTE\nBODY;CHARSET=UTF-8;QUOTED-PRINTABLE:a=3Db=\nc\nEND:VNOTE\n"));
  EXPECT_STREQ(bare.GetPropTableValue("BODY"), "a=3Dbc");
  ASSERT_TRUE(bare.GetPropDecodedValue("BODY", &plain));
  EXPECT_EQ(plain, "a=bc");
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
  EXPECT_STREQ(o.GetPropTableValue("BODY"), "aGk=");
  CString plain;
  ASSERT_TRUE(o.GetPropDecodedValue("BODY", &plain));
  EXPECT_EQ(plain, "hi");
  char* buf = nullptr;
  int size = 5;
  o.Composing(buf, size);  // non-zero size: nothing written or allocated
  EXPECT_EQ(buf, nullptr);
  EXPECT_EQ(size, 5);
  ASSERT_STREQ(o.SetPropDecodedValue("BODY", "hello"), "aGVsbG8=");
  EXPECT_EQ(o.Compose(),
            "BEGIN:VNOTE\r\nBODY;ENCODING=BASE64;LANGUAGE=en;X-Y=z:aGVsbG8=\r\nEND:VNOTE\r\n");
  // What the host stores with SetPropTableValue is written as given.
  o.SetPropTableValue("BODY", "Zm9v");
  EXPECT_EQ(o.Compose(),
            "BEGIN:VNOTE\r\nBODY;ENCODING=BASE64;LANGUAGE=en;X-Y=z:Zm9v\r\nEND:VNOTE\r\n");

  // A line without ':' is dropped, yet its row counts as present. A value that does not decode
  // is kept as written and only fails when decoded.
  struct Case {
    const char* body;
    const char* held;  // null: dropped
  } cases[] = {{"BODY;ENCODING=BASE64:a$b", "a$b"},
               {"BODY", nullptr},
               {"BODY;ENCODING=QUOTED-PRINTABLE:a=4", "a=4"}};
  for (const Case& c : cases) {
    CTestObj bad(kNote);
    EXPECT_TRUE(bad.Parse(std::string("BEGIN:VNOTE\n") + c.body + "\nEND:VNOTE\n")) << c.body;
    if (c.held)
      EXPECT_STREQ(bad.GetPropTableValue("BODY"), c.held) << c.body;
    else
      EXPECT_EQ(bad.GetPropTableValue("BODY"), nullptr) << c.body;
    EXPECT_FALSE(bad.GetPropDecodedValue("BODY", &plain)) << c.body;
    EXPECT_TRUE(bad.GetSetAsideLines().IsEmpty()) << c.body;
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

namespace {

class CRowProbe : public CTestObj {
 public:
  using CTestObj::CTestObj;
  using CVObjLite::_IsFormalDefEmpty;
  using CVObjLite::_PreprocEscChars;
};

// A template row is empty when name, value and sub are all null, whatever its separator and type.
TEST(VObjTemplate, EmptyRowIsNameValueAndSubNull) {
  const _FormalDef rows[] = {
      {nullptr, nullptr, nullptr, nullptr, VOBJ_ROW_OPTIONAL},
      {nullptr, ":", nullptr, nullptr, VOBJ_ROW_MANDATORY},
      {"", nullptr, nullptr, nullptr, VOBJ_ROW_OPTIONAL},
      {nullptr, nullptr, "", nullptr, VOBJ_ROW_OPTIONAL},
      {nullptr, nullptr, nullptr, kNote, VOBJ_ROW_OPTIONAL},
  };
  const bool empty[] = {true, true, false, false, false};
  for (size_t i = 0; i < sizeof rows / sizeof rows[0]; ++i) {
    EXPECT_EQ(CRowProbe::_IsFormalDefEmpty(&rows[i]), empty[i]) << i;
    EXPECT_EQ(CRowProbe::_IsFormalDefEmpty(rows[i]), empty[i]) << i;
  }
  EXPECT_TRUE(CRowProbe::_IsFormalDefEmpty(static_cast<const _FormalDef*>(nullptr)));
  // A template whose first row is empty reads nothing.
  CTestObj none(rows);
  EXPECT_FALSE(none.Parse("BEGIN:VNOTE\nEND:VNOTE\n"));
}

// Without its BEGIN line a text leaves the object as it was; with it, the text replaces it.
TEST(VObjParse, FailedBeginLeavesThePropertiesAsTheyWere) {
  for (const char* text : {"TITLE:x\r\nEND:VBKM\r\n", "", "\r\n\r\n", "BEGIN:VCARD\r\nEND:VCARD"}) {
    CVbkm v;
    ASSERT_TRUE(v.CreateEmptyProperties());
    ASSERT_NE(v.SetPropTableValue("TITLE", "Kept"), nullptr);
    std::string copy = text;
    EXPECT_FALSE(v.Parsing(&copy[0], nullptr)) << text;
    EXPECT_STREQ(v.GetPropTableValue("TITLE"), "Kept") << text;
    EXPECT_STREQ(v.GetPropTableValue("VERSION"), "1.0") << text;
  }
  // A lazily built sample is still there after such a failure.
  CVbkm fresh;
  std::string junk = "junk\r\n";
  EXPECT_FALSE(fresh.Parsing(&junk[0], nullptr));
  EXPECT_STREQ(fresh.GetPropTableValue("VERSION"), "1.0");
  // A text that begins right but lacks a line replaces the old properties with what it has.
  CVbkm begun;
  begun.CreateEmptyProperties();
  begun.SetPropTableValue("TITLE", "Old");
  std::string partial = "BEGIN:VBKM\r\nVERSION:2.0\r\nTITLE:New\r\nEND:VBKM\r\n";
  EXPECT_FALSE(begun.Parsing(&partial[0], nullptr));
  EXPECT_EQ(begun.GetErrorCode(), -3);  // URL, row 2
  EXPECT_STREQ(begun.GetPropTableValue("TITLE"), "New");
  EXPECT_EQ(begun.GetPropTableValue("URL"), nullptr);
}

// Lines no row matches are all counted; only the first 16 are kept, in order. Lines after the
// closing line are the caller's, not set aside.
TEST(VObjParse, SetAsideLinesAreCountedAndTheFirstKept) {
  struct Case {
    std::string text;
    size_t count;
    std::vector<std::string> first;  // expected first kept lines
  };
  std::string many = "BEGIN:VNOTE\n";
  for (int i = 0; i < 1000; ++i) many += "X-" + std::to_string(i) + ":v\n";
  many += "BODY:b\nEND:VNOTE\nAFTER:1\nAFTER:2\n";
  std::string runs = "BEGIN:OUT\nA1\nA2\nNAME:n\n";
  for (int i = 0; i < 20; ++i) runs += "B" + std::to_string(i) + "\n";
  runs += "BEGIN:IN\nDATA:d\nNAME:inner\nC\nEND:IN\nEND:OUT\n";
  const Case cases[] = {
      {many, 1000, {"X-0:v", "X-1:v", "X-15:v"}},
      {runs, 24, {"A1", "A2", "B0", "B13"}},  // NAME inside IN is set aside there too
  };
  for (const Case& c : cases) {
    CTestObj o(c.text[6] == 'V' ? kNote : kOuter);
    EXPECT_FALSE(o.Parse(c.text));
    EXPECT_EQ(o.GetErrorCode(), 0);
    EXPECT_EQ(o.GetSetAsideCount(), c.count);
    ASSERT_EQ(o.GetSetAsideLines().GetCount(), CVObjLite::kSetAsideKept);
    for (size_t i = 0; i < c.first.size(); ++i) {
      size_t at = i + 1 == c.first.size() ? CVObjLite::kSetAsideKept - 1 : i;
      EXPECT_EQ(o.GetSetAsideLines().GetAt(static_cast<int>(at)), c.first[i]);
    }
    EXPECT_NE(o.error.find(std::to_string(c.count) + " line(s)"), CString::npos) << o.error;
  }
}

// Soft line breaks are removed from the QUOTED-PRINTABLE marker to the end of its value only;
// expected texts worked out by hand.
TEST(VObjParse, UnfoldingJoinsOnlyQuotedPrintableValues) {
  const std::pair<const char*, const char*> cases[] = {
      {"A;ENCODING=QUOTED-PRINTABLE:a=\r\nb=\r\nc\r\nB:d=\r\ne\r\n",
       "A;ENCODING=QUOTED-PRINTABLE:abc\r\nB:d=\r\ne\r\n"},
      {"A;QUOTED-PRINTABLE:x=\ny\nC;QUOTED-PRINTABLE:1=\r\n2=\n3\n",
       "A;QUOTED-PRINTABLE:xy\nC;QUOTED-PRINTABLE:123\n"},
      {"A;QUOTED-PRINTABLE:no break\r\nB:=\r\nc", "A;QUOTED-PRINTABLE:no break\r\nB:=\r\nc"},
      {"A;QUOTED-PRINTABLE:end=\r\n", "A;QUOTED-PRINTABLE:end"},
      {"QUOTED-PRINTABLE=\r\n=\r\nz", "QUOTED-PRINTABLEz"},
      {"plain=\r\ntext", "plain=\r\ntext"},
  };
  for (const auto& [in, out] : cases) {
    CRowProbe o(kNote);
    CString text(in);
    o._PreprocEscChars(text);
    EXPECT_EQ(text, out) << in;
  }
}

}  // namespace
