#include <gtest/gtest.h>

#include <signal.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <set>
#include <sstream>
#include <string>

#include "handset/pim/BkmkFuncs.h"
#include "handset/pim/BkmkObj.h"
#include "tests/TestUtil.h"

namespace fs = std::filesystem;

namespace {

std::string Slurp(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  std::ostringstream s;
  s << in.rdbuf();
  return s.str();
}

CBkmkObj* Add(CBkmkObj* parent, const std::string& title, OBJECT_TYPE type,
              const char* url = "http://x.example/") {
  CBkmkObj* b = new CBkmkObj("h", title.c_str(), type);
  if (type == OBJECT_TYPE_FILE) b->m_strURL = url;
  parent->AddChild(b);
  return b;
}

std::set<std::string> Names(const std::string& dir) {
  std::set<std::string> names;
  for (const auto& e : fs::directory_iterator(dir)) names.insert(e.path().filename().string());
  return names;
}

TEST(BkmkNames, TitlesBecomeNamesEveryFileSystemTakes) {
  const std::pair<const char*, const char*> cases[] = {
      {"CON", "CON_"},
      {"nul", "nul_"},
      {"COM1", "COM1_"},
      {"LPT1.txt", "LPT1_.txt"},
      {"aux", "aux_"},
      {"NUL .txt", "NUL_ .txt"},
      {"COM\xC2\xB9", "COM\xC2\xB9_"},  // COM with superscript one
      {"com10", "com10"},
      {"CONSOLE", "CONSOLE"},
      {"PRN.tar.gz", "PRN_.tar.gz"},
      {"a.", "a_"},
      {"b  ", "b__"},
      {"x\x7Fy", "x_y"},
      {"tab\there", "tab_here"},
      {".", "_"},
      {"..", "_"},
      {"", "_"},
      {"...", "___"},
      {"a/b:c", "a_b_c"},
      {"q*?<>|\"\\", "q_______"},
      {"caf\xC3\xA9", "caf\xC3\xA9"},
  };
  for (const auto& [title, name] : cases) EXPECT_EQ(_BKMK_LegalFileName(title), name) << title;
}

class BkmkExportPaths : public ::testing::Test {
 protected:
  void SetUp() override {
    base_ = hs::test::MakeTempDir("bkmk-paths");
    out_ = base_ + "/out";
    fs::create_directories(out_);
    fs::create_directories(base_ + "/outside");
  }
  void TearDown() override { fs::remove_all(base_); }
  int Export(CBkmkObj& root, CStringList* written = nullptr) {
    return _BKMK_ExportVbkm(&root, out_.c_str(), BKMK_FLAG_NONE, written);
  }
  std::string base_, out_;
};

// Names are shortened to the file system's 255 bytes and to the phone's limits, keeping ".vbm"
// and the counter that makes them unique. Expected names counted by hand.
TEST_F(BkmkExportPaths, NamesFitThePhoneAndTheFileSystem) {
  CBkmkObj root(nullptr, "", OBJECT_TYPE_FOLDER);
  const std::string longTitle(300, 'a');
  Add(&root, longTitle, OBJECT_TYPE_FILE);
  Add(&root, longTitle, OBJECT_TYPE_FILE);
  Add(&root, std::string(300, 'f'), OBJECT_TYPE_FOLDER);
  ASSERT_EQ(Export(root), 1) << _BKMK_GetLastError();
  EXPECT_EQ(Names(out_),
            (std::set<std::string>{std::string(251, 'a') + ".vbm",
                                   std::string(248, 'a') + "(1).vbm", std::string(255, 'f')}));

  struct Case {
    int32_t bytes, units;
    bool folder;
    std::vector<std::string> titles;
    std::set<std::string> names;
  } cases[] = {
      {8, 0, false, {"Newsroom Daily", "Newsroom Daily"}, {"Newsroom.vbm", "Newsr(1).vbm"}},
      {5, 0, false, {"News roomX"}, {"News_.vbm"}},  // the cut ends in a space
      {5, 0, false, {"\xC3\xA9\xC3\xA9\xC3\xA9"}, {"\xC3\xA9\xC3\xA9.vbm"}},  // never half an é
      {0, 2, false, {"\xC3\xA9\xC3\xA9\xC3\xA9"}, {"\xC3\xA9\xC3\xA9.vbm"}},
      {3, 0, false, {"CONSOLE", "Console"}, {"CO_.vbm", "C(1).vbm"}},
      {4, 0, false, {"CON\xC3\xA9"}, {"CON_.vbm"}},  // the cut leaves a device name
      {6, 0, false, {"CONSOLE"}, {"CONSOL.vbm"}},
      {4, 0, true, {"Folder", "folder"}, {"Fold", "f(1)"}},
      {0, 0, false, {"News", "news", "NEWS"}, {"News.vbm", "news(1).vbm", "NEWS(2).vbm"}},
  };
  for (const Case& c : cases) {
    fs::remove_all(out_);
    CBkmkObj tree(nullptr, "", OBJECT_TYPE_FOLDER);
    CBkmkGenCap cap;
    (c.folder ? cap.nFolderNameCLen : cap.nFileNameCLen) = c.bytes;
    (c.folder ? cap.nFolerNameWLen : cap.nFileNameWLen) = c.units;
    tree.SetGenCap(&cap);
    for (const std::string& t : c.titles)
      Add(&tree, t, c.folder ? OBJECT_TYPE_FOLDER : OBJECT_TYPE_FILE);
    ASSERT_EQ(Export(tree), 1) << _BKMK_GetLastError();
    EXPECT_EQ(Names(out_), c.names) << c.titles[0];
  }
}

// Names already in the folder count ignoring case, files and folders alike.
TEST_F(BkmkExportPaths, ExistingNamesAreSkippedIgnoringCase) {
  std::ofstream(out_ + "/mail.vbm") << "old";
  fs::create_directory(out_ + "/work");
  CBkmkObj root(nullptr, "", OBJECT_TYPE_FOLDER);
  Add(&root, "Mail", OBJECT_TYPE_FILE);
  Add(Add(&root, "Work", OBJECT_TYPE_FOLDER), "w", OBJECT_TYPE_FILE);
  CStringList written;
  ASSERT_EQ(Export(root, &written), 1);
  EXPECT_EQ(Names(out_), (std::set<std::string>{"mail.vbm", "Mail(1).vbm", "work", "Work(1)"}));
  EXPECT_EQ(Slurp(out_ + "/mail.vbm"), "old");
  ASSERT_EQ(written.GetCount(), 2);
  EXPECT_EQ(written.GetAt(0), out_ + "/Mail(1).vbm");
  EXPECT_EQ(written.GetAt(1), out_ + "/Work(1)/w.vbm");
}

// A name held by a link is never written through, whether the link dangles, points at a file
// or at a folder outside: the bookmark takes the next name and nothing outside changes.
TEST_F(BkmkExportPaths, LinksInTheTargetAreNeverFollowed) {
  std::ofstream(base_ + "/outside/kept.txt") << "precious";
  fs::create_symlink("../outside/victim.txt", out_ + "/News.vbm");
  fs::create_symlink("../outside/kept.txt", out_ + "/Kept.vbm");
  fs::create_symlink("../outside", out_ + "/Sub");
  CBkmkObj root(nullptr, "", OBJECT_TYPE_FOLDER);
  Add(&root, "News", OBJECT_TYPE_FILE);
  Add(&root, "Kept", OBJECT_TYPE_FILE);
  Add(Add(&root, "Sub", OBJECT_TYPE_FOLDER), "Inner", OBJECT_TYPE_FILE);
  ASSERT_EQ(Export(root), 1) << _BKMK_GetLastError();
  EXPECT_FALSE(fs::exists(base_ + "/outside/victim.txt"));
  EXPECT_EQ(Slurp(base_ + "/outside/kept.txt"), "precious");
  EXPECT_EQ(Names(base_ + "/outside"), std::set<std::string>{"kept.txt"});
  EXPECT_TRUE(fs::is_symlink(out_ + "/News.vbm"));
  for (const char* made : {"News(1).vbm", "Kept(1).vbm", "Sub(1)/Inner.vbm"})
    EXPECT_TRUE(fs::is_regular_file(out_ + "/" + made)) << made;
  EXPECT_NE(Slurp(out_ + "/News(1).vbm").find("TITLE:News\r\n"), std::string::npos);
}

// A write that fails (the file size limit stands in for a full disk) leaves no partial file and
// names the file and the system's reason; the files written before it stay.
TEST_F(BkmkExportPaths, AFailedWriteLeavesNoPartialFile) {
  pid_t pid = fork();
  ASSERT_GE(pid, 0);
  if (pid == 0) {
    signal(SIGXFSZ, SIG_IGN);
    struct rlimit lim = {4096, 4096};
    setrlimit(RLIMIT_FSIZE, &lim);
    CBkmkObj root(nullptr, "", OBJECT_TYPE_FOLDER);
    Add(&root, "Small", OBJECT_TYPE_FILE);
    std::string huge = "http://x.example/" + std::string(20000, 'p');
    Add(&root, "Huge", OBJECT_TYPE_FILE, huge.c_str());
    int rc = Export(root);
    std::string why = _BKMK_GetLastError();
    bool ok = rc == 0 && why.find("Huge.vbm: write: File too large") != std::string::npos;
    _exit(ok ? 0 : 1);
  }
  int status = 0;
  waitpid(pid, &status, 0);
  ASSERT_TRUE(WIFEXITED(status));
  EXPECT_EQ(WEXITSTATUS(status), 0);
  EXPECT_EQ(Names(out_), std::set<std::string>{"Small.vbm"});
}

class BkmkImportLinks : public BkmkExportPaths {
 protected:
  void Write(const std::string& path, const char* title) {
    std::ofstream(path) << "BEGIN:VBKM\nVERSION:1.0\nURL:http://" << title << "\nTITLE:" << title
                        << "\nEND:VBKM\n";
  }
  // The tree as "folder/" and "title" lines in import order.
  static void Dump(const CBkmkObj& n, const std::string& indent, std::string* out) {
    for (int i = 0; i < n.GetChildCount(); ++i) {
      const CBkmkObj* c = n.GetChildBkmk(i);
      bool folder = c->m_enBkmkType == OBJECT_TYPE_FOLDER;
      *out += indent + c->m_strTitle.c_str() + (folder ? "/\n" : "\n");
      if (folder) Dump(*c, indent + " ", out);
    }
  }
};

// Links that lead back into the folder (a -> ., b -> .) do not make the walk loop; links that
// lead out of it are not followed; a folder reached again is read once.
TEST_F(BkmkImportLinks, LinksStayInsideAndFoldersAreReadOnce) {
  Write(out_ + "/top.vbm", "top");
  fs::create_directory(out_ + "/sub");
  Write(out_ + "/sub/inner.vbm", "inner");
  Write(base_ + "/outside/secret.vbm", "secret");
  fs::create_directory(base_ + "/outside/more");
  Write(base_ + "/outside/more/leak.vbm", "leak");
  fs::create_symlink(".", out_ + "/a");
  fs::create_symlink(".", out_ + "/b");
  fs::create_symlink("..", out_ + "/sub/up");
  fs::create_symlink("sub", out_ + "/alias");
  fs::create_symlink("../outside/secret.vbm", out_ + "/secret.vbm");
  fs::create_symlink("../outside/more", out_ + "/more");
  fs::create_symlink("/etc/passwd", out_ + "/passwd.vbm");
  fs::create_symlink("top.vbm", out_ + "/again.vbm");
  fs::create_symlink("missing", out_ + "/dangling.vbm");
  CBkmkObj root;
  CBkmkObj* node = _BKMK_ImportVbkm(&root, out_.c_str(), BKMK_FLAG_NONE);
  ASSERT_NE(node, nullptr);
  std::string tree;
  Dump(*node, "", &tree);
  // The linked file inside is read under its own name; the folder "sub" only once, as itself.
  EXPECT_EQ(tree, "sub/\n inner\ntop\ntop\n");
}

}  // namespace
