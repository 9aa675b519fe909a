#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "handset/pim/OemPanaVbkm.h"
#include "handset/pim/Vbkm.h"
#include "tests/TestUtil.h"

namespace fs = std::filesystem;

// Values are held as they stand in the text and decoded on request. python3-vobject, which
// decodes quoted-printable while it reads, must agree with that decoding on texts it reads, and
// must read back what the library composes.
namespace {

const _FormalDef kNote[] = {
    {"BEGIN:VNOTE", "", "", nullptr, VOBJ_ROW_MANDATORY},
    {"BODY", ":", "<body>", nullptr, VOBJ_ROW_MANDATORY},
    {"END:VNOTE", "", "", nullptr, VOBJ_ROW_CLOSING},
    {nullptr, nullptr, nullptr, nullptr, VOBJ_ROW_OPTIONAL},
};

class CNote : public CVObjLite {
 public:
  CNote() : CVObjLite(kNote) {}
  bool CreateEmptyProperties() override {
    CStringList lines;
    _CreateEmptySample(lines);
    return ParseString(lines, m_props, m_pFormal);
  }

 protected:
  void _CreateEmptySample(CStringList& lines) override {
    for (const char* l :
         {"BEGIN:VNOTE", "BODY;CHARSET=UTF-8;ENCODING=QUOTED-PRINTABLE:", "END:VNOTE"})
      lines.AddTail(l);
  }
};

std::string Compose(CVObjLite& v) {
  char* buf = nullptr;
  int size = 0;
  v.Composing(buf, size);
  std::string s(buf ? buf : "", static_cast<size_t>(size));
  delete[] buf;
  return s;
}

std::string FromHex(const std::string& hex) {
  std::string out;
  for (size_t i = 0; i + 1 < hex.size(); i += 2)
    out += static_cast<char>(std::stoi(hex.substr(i, 2), nullptr, 16));
  return out;
}

// The values python3-vobject reads from `text` at the dotted attribute paths ("title",
// "env.x_irmc_url"), as UTF-8.
std::vector<std::string> PythonReads(const std::string& text,
                                     const std::vector<std::string>& paths) {
  std::string dir = hs::test::MakeTempDir("vobject-oracle");
  std::string file = dir + "/in.txt";
  std::ofstream(file, std::ios::binary) << text;
  std::string cmd =
      "/usr/bin/python3 -c \"import sys, vobject\n"
      "o = vobject.readOne(open(sys.argv[1], encoding='utf-8', newline='').read(), allowQP=True)\n"
      "for path in sys.argv[2:]:\n"
      "    v = o\n"
      "    for part in path.split('.'): v = getattr(v, part)\n"
      "    print(v.value.encode('utf-8').hex())\" " +
      file;
  for (const std::string& p : paths) cmd += " " + p;
  std::string out;
  int rc = hs::test::RunCommand(cmd + " 2>&1", &out);
  fs::remove_all(dir);
  std::vector<std::string> values;
  if (rc != 0) {
    ADD_FAILURE() << "python3-vobject failed on:\n" << text << "\n" << out;
    return values;
  }
  std::istringstream in(out);
  std::string line;
  while (std::getline(in, line)) values.push_back(FromHex(line));
  return values;
}

#define HS_SKIP_WITHOUT_VOBJECT()             \
  if (!hs::test::HavePythonModule("vobject")) \
  GTEST_SKIP() << "python3-vobject is not installed (/usr/bin/python3 -c 'import vobject')"

// Direction one: a text written elsewhere. The library holds each value as written; decoded on
// request it equals what python3-vobject reads.
TEST(VObjOracle, ValuesReadAsWrittenDecodeAsAnIndependentReaderDecodes) {
  HS_SKIP_WITHOUT_VOBJECT();
  const std::string text =
      "BEGIN:VBKM\r\nVERSION:1.0\r\nURL:http://example.com/a?b=c\r\n"
      "TITLE;CHARSET=UTF-8;ENCODING=QUOTED-PRINTABLE:Caf=C3=A9 =3D News=20=\r\n"
      "and more=7E\r\n"
      "BEGIN:ENV\r\n"
      "X-IRMC-URL;ENCODING=QUOTED-PRINTABLE:[InternetShortcut]=0D=0AURL=3Dhttp://example.com/"
      "a?b=3Dc\r\nEND:ENV\r\nEND:VBKM\r\n";
  std::vector<std::string> py = PythonReads(text, {"title", "url", "env.x_irmc_url"});
  ASSERT_EQ(py.size(), 3u);
  CVbkm v;
  std::string copy = text;
  CString err;
  ASSERT_TRUE(v.Parsing(&copy[0], &err)) << err;
  EXPECT_STREQ(v.GetPropTableValue("TITLE"), "Caf=C3=A9 =3D News=20and more=7E");
  CString title, url;
  ASSERT_TRUE(v.GetPropDecodedValue("TITLE", &title));
  EXPECT_EQ(title, py[0]);
  ASSERT_TRUE(v.GetPropDecodedValue("URL", &url));
  EXPECT_EQ(url, py[1]);
  // The shortcut block holds the same URL after its "URL=" key.
  size_t key = py[2].rfind("URL=");
  ASSERT_NE(key, std::string::npos) << py[2];
  EXPECT_EQ(py[2].substr(key + 4), url);
  EXPECT_STREQ(v.GetPropTableValue("X-IRMC-URL"), url.c_str());
}

// Direction two: what the library composes. Titles and URLs full of the bytes quoted-printable
// must escape ('=', '~', non-ASCII, a literal "=3D") read back unchanged.
TEST(VObjOracle, ComposedValuesReadBackUnchanged) {
  HS_SKIP_WITHOUT_VOBJECT();
  const struct {
    bool oem;
    const char* title;
    const char* url;
  } cases[] = {
      {false, "Caf\xC3\xA9 & a=b ~ 100%", "http://x.example/?x=1&y=~z"},
      {false, "Literal =3D stays", "https://x.example/=3D/"},
      {true, "Mail =3D [inbox] ~", "http://x.example/?q=a=b&r=~"},
  };
  for (const auto& c : cases) {
    std::unique_ptr<CVbkm> v(c.oem ? new COemPanaVbkm : new CVbkm);
    ASSERT_TRUE(v->SetTitleAndUrl(c.title, c.url));
    std::string text = Compose(*v);
    std::vector<std::string> py = PythonReads(text, {"title", "url", "env.x_irmc_url"});
    ASSERT_EQ(py.size(), 3u) << text;
    EXPECT_EQ(py[0], c.title) << text;
    EXPECT_EQ(py[1], c.url) << text;
    EXPECT_EQ(py[2], std::string("[InternetShortcut]URL=") + c.url) << text;
  }
  // A value set decoded is encoded for its quoted-printable line, line breaks included.
  CNote note;
  ASSERT_TRUE(note.CreateEmptyProperties());
  const char body[] = "line one\r\nline two \xC3\xA9=\tend";
  ASSERT_NE(note.SetPropDecodedValue("BODY", body), nullptr);
  std::string text = Compose(note);
  EXPECT_EQ(text.find("\r\nline"), std::string::npos) << text;  // one physical line
  std::vector<std::string> py = PythonReads(text, {"body"});
  ASSERT_EQ(py.size(), 1u);
  EXPECT_EQ(py[0], body);
}

}  // namespace
