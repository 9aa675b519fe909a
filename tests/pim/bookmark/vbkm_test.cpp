#include <gtest/gtest.h>

#include <fstream>
#include <map>
#include <sstream>
#include <string>

#include "handset/pim/IEVbkm.h"
#include "handset/pim/OemPanaVbkm.h"
#include "handset/pim/Vbkm.h"
#include "tests/TestUtil.h"

namespace {

std::string Compose(CVObjLite& v) {
  char* buf = nullptr;
  int size = 0;
  v.Composing(buf, size);
  std::string s(buf ? buf : "", static_cast<size_t>(size));
  delete[] buf;
  return s;
}

TEST(Vbkm, GenericSampleSharesTheUrlWithTheShortcut) {
  CVbkm v;
  ASSERT_TRUE(v.CreateEmptyProperties());
  EXPECT_STREQ(v.GetPropTableValue("VERSION"), "1.0");
  EXPECT_STREQ(v.GetPropTableValue("URL"), "");
  EXPECT_EQ(v.GetPropTableValue("X-S-BROWSERTYPE"), nullptr);
  ASSERT_NE(v.SetPropTableValue("URL", "http://example.com/?a=b"), nullptr);
  ASSERT_NE(v.SetPropTableValue("TITLE", "Example"), nullptr);
  EXPECT_STREQ(v.GetPropTableValue("X-IRMC-URL"), "http://example.com/?a=b");
  EXPECT_EQ(
      Compose(v),
      "BEGIN:VBKM\r\nVERSION:1.0\r\nURL:http://example.com/?a=b\r\nTITLE:Example\r\n"
      "BEGIN:ENV\r\n"
      "X-IRMC-URL;ENCODING=QUOTED-PRINTABLE:[InternetShortcut]URL=http://example.com/?a=3Db\r\n"
      "END:ENV\r\nEND:VBKM\r\n");
  // What it writes it reads back.
  std::string text = Compose(v);
  CVbkm back;
  CString err;
  ASSERT_TRUE(back.Parsing(&text[0], &err)) << err;
  EXPECT_STREQ(back.GetPropTableValue("URL"), "http://example.com/?a=b");
  EXPECT_STREQ(back.GetPropTableValue("X-IRMC-URL"), "http://example.com/?a=b");
  EXPECT_STREQ(back.GetPropTableValue("TITLE"), "Example");
}

TEST(Vbkm, OemDialectWritesNineLinesAndTheTitleParameters) {
  COemPanaVbkm v;
  EXPECT_STREQ(v.GetPropTableValue("X-S-BROWSERTYPE"), "FULL");
  v.SetPropTableValue("TITLE", "A=B");
  v.SetPropTableValue("URL", "http://x.jp/");
  v.SetPropTableValue("X-IRMC-URL", "http://x.jp/");
  std::string text = Compose(v);
  EXPECT_EQ(text,
            "BEGIN:VBKM\r\nVERSION:1.0\r\nURL:http://x.jp/\r\n"
            "TITLE;ENCODING=QUOTED-PRINTABLE;CHARSET=SHIFT_JIS:A=3DB\r\n"
            "X-S-BROWSERTYPE:FULL\r\nBEGIN:ENV\r\n"
            "X-IRMC-URL;ENCODING=QUOTED-PRINTABLE:[InternetShortcut]URL=http://x.jp/\r\n"
            "END:ENV\r\nEND:VBKM\r\n");
  COemPanaVbkm back;
  ASSERT_TRUE(back.Parsing(&text[0], nullptr));
  EXPECT_STREQ(back.GetPropTableValue("TITLE"), "A=3DB");  // as it stands in the text
  CString title;
  ASSERT_TRUE(back.GetPropDecodedValue("TITLE", &title));
  EXPECT_EQ(title, "A=B");
  EXPECT_EQ(Compose(back), text);  // a title read encoded is written as it stands
  // The generic template does not know X-S-BROWSERTYPE: the line is set aside.
  CVbkm generic;
  EXPECT_FALSE(generic.Parsing(&text[0], nullptr));
  EXPECT_EQ(generic.GetErrorCode(), 0);
  EXPECT_EQ(generic.GetSetAsideLines().GetCount(), 1);
}

TEST(Vbkm, ForeignShapesOfTheShortcutAndMissingRows) {
  std::string folded =
      "BEGIN:VBKM\r\nVERSION:1.0\r\nTITLE:t\r\nURL:http://a/\r\nBEGIN:ENV\r\n"
      "X-IRMC-URL;QUOTED-PRINTABLE:=\r\n[InternetShortcut]=0D=0A=\r\nURL=3Dhttp://a/\r\nEND:ENV\r\n"
      "END:VBKM\r\n";
  CVbkm v;
  CString err;
  // A block encoded whole (its line break "=0D=0A", its key "URL=3D") gives the same URL.
  ASSERT_TRUE(v.Parsing(&folded[0], &err)) << err;
  EXPECT_STREQ(v.GetPropTableValue("TITLE"), "t");
  EXPECT_STREQ(v.GetPropTableValue("X-IRMC-URL"), "http://a/");
  EXPECT_STREQ(v.GetPropTableValue("URL"), "http://a/");
  std::string noTitle = "BEGIN:VBKM\nVERSION:1.0\nURL:u\nEND:VBKM\n";
  CVbkm w;
  EXPECT_FALSE(w.Parsing(&noTitle[0], nullptr));
  EXPECT_EQ(w.GetErrorCode(), -4);
}

TEST(IEVbkm, ExtractFilename) {
  CIEVbkm v;
  const std::pair<const char*, const char*> cases[] = {
      {"Search.url", "Search"}, {"archive.backup", "archive.backup"},
      {"a.b.htm", "a.b"},       {"noext", "noext"},
      {"x.html", "x"},          {"", ""}};
  for (const auto& [in, out] : cases) EXPECT_EQ(v._ExtractFilename(in), out) << in;
  EXPECT_EQ(v._ExtractFilename(nullptr), "");
}

TEST(IEVbkm, ReadsAShortcutThroughTheIniReader) {
  std::string text =
      "[{000214A0-0000-0000-C000-000000000046}]\r\nProp3=19,2\r\n"
      "[InternetShortcut]\r\nIDList=\r\nURL=https://example.org/a?b=c\r\n";
  CIEVbkm v;
  EXPECT_STREQ(v.GetPropTableValue("X-S-BROWSERTYPE"), "FULL");
  CString name = "My Site.url";
  ASSERT_TRUE(v.Parsing(&text[0], &name));
  EXPECT_STREQ(v.GetPropTableValue("TITLE"), "My Site");
  EXPECT_STREQ(v.GetPropTableValue("URL"), "https://example.org/a?b=c");
  EXPECT_STREQ(v.GetPropTableValue("X-IRMC-URL"), "https://example.org/a?b=c");
  EXPECT_STREQ(v.GetPropTableValue("X-S-BROWSERTYPE"), "FULL");
  std::string noUrl = "[InternetShortcut]\nIconIndex=0\n";
  CIEVbkm w;
  ASSERT_TRUE(w.Parsing(&noUrl[0], &name));
  EXPECT_STREQ(w.GetPropTableValue("URL"), "");
}

// The corpus describes each shortcut's URL scheme and length; the INI reading must agree.
TEST(IEVbkm, EveryCorpusShortcutIsRead) {
  HS_SKIP_WITHOUT_CORPUS();
  std::map<std::string, std::string> described;
  std::ifstream manifest(hs::test::CorpusDir() + "/MANIFEST.tsv");
  std::string line;
  while (std::getline(manifest, line)) {
    if (line.compare(0, 4, "url/") != 0) continue;
    described[line.substr(4, line.find('\t') - 4)] = line;
  }
  auto files = hs::test::CorpusFiles("url");
  ASSERT_FALSE(files.empty());
  for (const std::string& path : files) {
    std::string base = path.substr(path.find_last_of('/') + 1);
    auto bytes = hs::test::ReadBytes(path);
    std::string text(bytes.begin(), bytes.end());
    CIEVbkm v;
    CString name = base.c_str();
    ASSERT_TRUE(v.Parsing(&text[0], &name)) << path;
    std::string url = v.GetPropTableValue("URL");
    const std::string& desc = described[base];
    size_t at = desc.find("URL scheme ");
    if (at == std::string::npos) {
      EXPECT_EQ(url, "") << path;
      continue;
    }
    std::istringstream in(desc.substr(at + 11));
    std::string scheme;
    size_t chars = 0;
    in >> scheme >> chars;
    scheme.pop_back();  // the comma
    EXPECT_EQ(url.substr(0, scheme.size() + 1), scheme + ":") << path;
    EXPECT_EQ(url.size(), chars) << path;
  }
}

}  // namespace
