#include <gtest/gtest.h>

#include <signal.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

#include "platform/Folders.h"
#include "tests/TestUtil.h"

namespace fs = std::filesystem;

namespace {

std::string Slurp(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  std::ostringstream s;
  s << in.rdbuf();
  return s.str();
}

class FoldersTest : public ::testing::Test {
 protected:
  void SetUp() override {
    dir_ = hs::test::MakeTempDir("folders");
    fs::create_directories(dir_ + "/out");
    fs::create_directories(dir_ + "/outside");
    std::ofstream(dir_ + "/outside/existing.txt") << "old";
  }
  void TearDown() override { fs::remove_all(dir_); }
  std::string dir_;
};

// An exclusive creation takes only a free name: an existing file, a folder and links of every
// kind make it report the name taken, and nothing behind the name changes or appears.
TEST_F(FoldersTest, ExclusiveCreationNeverWritesThroughAnExistingName) {
  std::ofstream(dir_ + "/out/file.vbm") << "mine";
  fs::create_directory(dir_ + "/out/folder.vbm");
  fs::create_symlink("../outside/victim.txt", dir_ + "/out/dangling.vbm");
  fs::create_symlink("../outside/existing.txt", dir_ + "/out/link.vbm");
  fs::create_symlink("../outside", dir_ + "/out/dirlink.vbm");
  for (const char* name : {"file.vbm", "folder.vbm", "dangling.vbm", "link.vbm", "dirlink.vbm"}) {
    std::string reason;
    EXPECT_EQ(hs::os::CreateNewFile(dir_ + "/out/" + name, "new", 3, &reason),
              hs::os::CreateStatus::kNameTaken)
        << name;
    EXPECT_EQ(hs::os::CreateNewFolder(dir_ + "/out/" + name, &reason),
              hs::os::CreateStatus::kNameTaken)
        << name;
  }
  EXPECT_FALSE(fs::exists(dir_ + "/outside/victim.txt"));
  EXPECT_EQ(Slurp(dir_ + "/outside/existing.txt"), "old");
  EXPECT_EQ(Slurp(dir_ + "/out/file.vbm"), "mine");
  EXPECT_EQ(fs::directory_iterator(dir_ + "/outside/").operator*().path().filename(),
            "existing.txt");

  std::string reason;
  ASSERT_EQ(hs::os::CreateNewFile(dir_ + "/out/free.vbm", "new", 3, &reason),
            hs::os::CreateStatus::kCreated);
  EXPECT_EQ(Slurp(dir_ + "/out/free.vbm"), "new");
  EXPECT_EQ(hs::os::CreateNewFile(dir_ + "/nowhere/x.vbm", "x", 1, &reason),
            hs::os::CreateStatus::kFailed);
  EXPECT_EQ(reason, "No such file or directory");
}

// A write that fails half way (here: the file size limit, as a full disk would) removes the
// new file and gives the system's reason. Run in a child so the limit stays there.
TEST_F(FoldersTest, AFailedWriteLeavesNoFileBehind) {
  std::string path = dir_ + "/out/big.vbm";
  pid_t pid = fork();
  ASSERT_GE(pid, 0);
  if (pid == 0) {
    signal(SIGXFSZ, SIG_IGN);
    struct rlimit lim = {4096, 4096};
    setrlimit(RLIMIT_FSIZE, &lim);
    std::string data(100000, 'x'), reason;
    hs::os::CreateStatus st = hs::os::CreateNewFile(path, data.data(), data.size(), &reason);
    _exit(st == hs::os::CreateStatus::kFailed && reason == "File too large" ? 0 : 1);
  }
  int status = 0;
  waitpid(pid, &status, 0);
  ASSERT_TRUE(WIFEXITED(status));
  EXPECT_EQ(WEXITSTATUS(status), 0);
  EXPECT_FALSE(fs::exists(path));
}

TEST_F(FoldersTest, IdentitiesKindsAndContainment) {
  std::ofstream(dir_ + "/out/a.vbm") << "a";
  std::ofstream(dir_ + "/out/b.vbm") << "b";
  fs::create_symlink("a.vbm", dir_ + "/out/to-a");
  fs::create_symlink(".", dir_ + "/out/self");
  hs::os::FileId a, b, viaLink, out, self;
  ASSERT_TRUE(hs::os::GetFileId(dir_ + "/out/a.vbm", &a));
  ASSERT_TRUE(hs::os::GetFileId(dir_ + "/out/b.vbm", &b));
  ASSERT_TRUE(hs::os::GetFileId(dir_ + "/out/to-a", &viaLink));
  ASSERT_TRUE(hs::os::GetFileId(dir_ + "/out", &out));
  ASSERT_TRUE(hs::os::GetFileId(dir_ + "/out/self", &self));
  EXPECT_EQ(a, viaLink);
  EXPECT_FALSE(a == b);
  EXPECT_EQ(out, self);
  EXPECT_FALSE(hs::os::GetFileId(dir_ + "/out/missing", &a));

  auto entries = hs::os::ListEntries(dir_ + "/out");
  ASSERT_EQ(entries.size(), 4u);
  const std::pair<const char*, hs::os::EntryKind> want[] = {{"a.vbm", hs::os::EntryKind::kFile},
                                                            {"b.vbm", hs::os::EntryKind::kFile},
                                                            {"self", hs::os::EntryKind::kLink},
                                                            {"to-a", hs::os::EntryKind::kLink}};
  for (size_t i = 0; i < entries.size(); ++i) {
    EXPECT_EQ(entries[i].name, want[i].first);
    EXPECT_EQ(entries[i].kind, want[i].second) << entries[i].name;
  }
  EXPECT_EQ(hs::os::KindOf(dir_ + "/out/self"), hs::os::EntryKind::kFolder);
  EXPECT_EQ(hs::os::RealPath(dir_ + "/out/self/to-a"), hs::os::RealPath(dir_ + "/out/a.vbm"));
  EXPECT_EQ(hs::os::RealPath(dir_ + "/out/dangling"), "");

  const struct {
    const char* path;
    const char* folder;
    bool inside;
  } cases[] = {{"/a/b", "/a", true},  {"/a", "/a", true},     {"/a/bc", "/a/b", false},
               {"/a", "/a/b", false}, {"/ab/c", "/a", false}, {"/a/b/c", "/a/b/", true},
               {"", "/a", false}};
  for (const auto& c : cases)
    EXPECT_EQ(hs::os::IsInsideFolder(c.path, c.folder), c.inside) << c.path << " in " << c.folder;
}

TEST_F(FoldersTest, WholeFilesAreReadWithTheirReason) {
  std::string bytes("a\0b\r\n", 5);
  std::ofstream(dir_ + "/out/f", std::ios::binary) << bytes;
  std::string text, reason;
  ASSERT_TRUE(hs::os::ReadWholeFile(dir_ + "/out/f", &text, &reason));
  EXPECT_EQ(text, bytes);
  EXPECT_FALSE(hs::os::ReadWholeFile(dir_ + "/out/none", &text, &reason));
  EXPECT_EQ(reason, "No such file or directory");
  EXPECT_FALSE(hs::os::ReadWholeFile(dir_ + "/out", &text, &reason));  // a folder
}

}  // namespace
