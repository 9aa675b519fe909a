#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>

#include "tests/TestUtil.h"

namespace fs = std::filesystem;

namespace {

std::string Cli() {
  return hs::test::CliPath();
}

int RunCli(const std::string& args, std::string* out) {
  return hs::test::RunCommand(Cli() + " " + args, out);
}

void WriteText(const std::string& path, const std::string& text) {
  std::ofstream(path, std::ios::binary) << text;
}

TEST(QpCli, EncodesDecodesAndFailsOnACutEscape) {
  std::string dir = hs::test::MakeTempDir("qp-cli");
  WriteText(dir + "/in.txt", "abc=\r\ndef=41=4a");
  std::string out;
  EXPECT_EQ(RunCli("qp decode " + dir + "/in.txt", &out), 0);
  EXPECT_EQ(out, "abcdefA4a");
  EXPECT_EQ(hs::test::RunCommand("printf 'a=b#[' | " + Cli() + " qp encode -", &out), 0);
  EXPECT_EQ(out, "a=3Db=23=5B");
  EXPECT_EQ(hs::test::RunCommand("printf 'abc=4' | " + Cli() + " qp decode 2>/dev/null", &out), 1);
  EXPECT_EQ(RunCli("qp rot13 2>/dev/null", &out), 2);
  fs::remove_all(dir);
}

// An independent vObject reader must see the same title and URL in what `vbkm new` writes.
TEST(VbkmCli, NewIsReadByAnIndependentReader) {
  if (!hs::test::HavePythonModule("vobject"))
    GTEST_SKIP() << "python3-vobject is not installed (/usr/bin/python3 -c 'import vobject')";
  std::string dir = hs::test::MakeTempDir("vbkm-cli");
  struct Case {
    const char* dialect;
    const char* title;
    const char* url;
  } cases[] = {
      {"generic", "Caf\xC3\xA9 = news", "http://example.com/a?b=c&d=%20~e#f"},
      {"generic", "Plain", "rtsp://media.example/stream"},
      {"oem", "Mail [inbox]", "https://mail.example/?q=a=b"},
  };
  int n = 0;
  for (const Case& c : cases) {
    std::string file = dir + "/" + std::to_string(n++) + ".vbm";
    std::string out;
    ASSERT_EQ(RunCli(std::string("vbkm new --dialect ") + c.dialect + " --title '" + c.title +
                         "' --url '" + c.url + "' -o " + file,
                     &out),
              0);
    std::string py =
        "/usr/bin/python3 -c \"import sys, vobject\n"
        "o = vobject.readOne(open(sys.argv[1], encoding='utf-8').read(), allowQP=True)\n"
        "sys.stdout.write(o.title.value + '\\n' + o.url.value)\" " +
        file;
    ASSERT_EQ(hs::test::RunCommand(py, &out), 0) << file;
    EXPECT_EQ(out, std::string(c.title) + "\n" + c.url) << c.dialect;
    ASSERT_EQ(RunCli("vbkm show --json " + file, &out), 0);
    EXPECT_NE(out.find(std::string("\"dialect\":\"") + c.dialect + "\""), std::string::npos) << out;
  }
  fs::remove_all(dir);
}

TEST(VbkmCli, FromUrlAndShowErrors) {
  std::string dir = hs::test::MakeTempDir("vbkm-url");
  WriteText(dir + "/Search.url", "[InternetShortcut]\nURL=http://search.example/\n");
  std::string out;
  ASSERT_EQ(RunCli("vbkm from-url " + dir + "/Search.url -o " + dir + "/s.vbm", &out), 0);
  ASSERT_EQ(RunCli("vbkm show " + dir + "/s.vbm", &out), 0);
  EXPECT_NE(out.find("title\tSearch\n"), std::string::npos) << out;
  EXPECT_NE(out.find("url\thttp://search.example/\n"), std::string::npos) << out;
  WriteText(dir + "/bad.vbm", "BEGIN:VBKM\nVERSION:1.0\nEND:VBKM\n");
  std::string err;
  EXPECT_EQ(RunCli("vbkm show " + dir + "/bad.vbm 2>&1", &err), 1);
  EXPECT_NE(err.find("bad.vbm"), std::string::npos) << err;
  EXPECT_NE(err.find("error code"), std::string::npos) << err;
  fs::remove_all(dir);
}

TEST(BookmarksCli, ExportedTreeImportsBackAsTheSameJson) {
  std::string dir = hs::test::MakeTempDir("bookmarks-cli");
  // Written in the order and form that import prints it.
  std::string tree =
      "{\"title\":\"\",\"type\":\"folder\",\"children\":["
      "{\"title\":\"Work\",\"type\":\"folder\",\"children\":["
      "{\"title\":\"Inner\",\"type\":\"folder\",\"children\":[]},"
      "{\"title\":\"Wiki \\\"main\\\"\",\"type\":\"bookmark\",\"url\":\"http://wiki/?a=1\"}]},"
      "{\"title\":\"News\",\"type\":\"bookmark\",\"url\":\"http://n/1\"},"
      "{\"title\":\"News\",\"type\":\"bookmark\",\"url\":\"http://n/2\"},"
      "{\"title\":\"a/b:c\",\"type\":\"bookmark\",\"url\":\"https://\\u00e9.example/\"}]}";
  WriteText(dir + "/tree.json", tree);
  std::string out;
  ASSERT_EQ(RunCli("bookmarks export " + dir + "/tree.json " + dir + "/out", &out), 0);
  EXPECT_TRUE(fs::exists(dir + "/out/a_b_c.vbm"));
  EXPECT_TRUE(fs::exists(dir + "/out/News(1).vbm"));
  ASSERT_EQ(RunCli("bookmarks import --json " + dir + "/out", &out), 0);
  std::string expected = tree;
  expected.replace(expected.find("\\u00e9"), 6, "\xC3\xA9");
  EXPECT_EQ(out, expected + "\n");
  WriteText(dir + "/broken.json", "{\"title\":\"x\",\"children\":[{\"type\":\"disk\"}]}");
  EXPECT_EQ(RunCli("bookmarks export " + dir + "/broken.json " + dir + "/o2 2>/dev/null", &out), 1);
  WriteText(dir + "/broken.json", "{\"title\":[[[[");
  EXPECT_EQ(RunCli("bookmarks export " + dir + "/broken.json " + dir + "/o2 2>/dev/null", &out), 1);
  fs::remove_all(dir);
}

// Failures name the folder, the file, the operation and the reason; a folder that links back into
// itself imports once and ends.
TEST(BookmarksCli, FailuresGiveTheReasonAndLinkLoopsEnd) {
  std::string dir = hs::test::MakeTempDir("bookmarks-cli-fail");
  WriteText(dir + "/tree.json",
            "{\"title\":\"\",\"type\":\"folder\",\"children\":["
            "{\"title\":\"News\",\"type\":\"bookmark\",\"url\":\"http://n/\"}]}");
  WriteText(dir + "/file", "not a folder");
  std::string err;
  EXPECT_EQ(RunCli("bookmarks export " + dir + "/tree.json " + dir + "/file/sub 2>&1", &err), 1);
  EXPECT_NE(err.find("file/sub"), std::string::npos) << err;
  EXPECT_NE(err.find("create folder"), std::string::npos) << err;

  fs::create_directories(dir + "/loop");
  WriteText(dir + "/loop/one.vbm", "BEGIN:VBKM\nVERSION:1.0\nURL:http://1/\nTITLE:One\nEND:VBKM\n");
  fs::create_symlink(".", dir + "/loop/a");
  fs::create_symlink(".", dir + "/loop/b");
  std::string out;
  ASSERT_EQ(RunCli("bookmarks import " + dir + "/loop", &out), 0);
  EXPECT_EQ(out, "One\thttp://1/\n");
  WriteText(dir + "/loop/two.vbm", "BEGIN:VCARD\nEND:VCARD\n");
  EXPECT_EQ(RunCli("bookmarks import " + dir + "/loop/two.vbm 2>&1", &err), 1);
  EXPECT_NE(err.find("two.vbm: read: not a vBookmark"), std::string::npos) << err;
  fs::remove_all(dir);
}

}  // namespace
