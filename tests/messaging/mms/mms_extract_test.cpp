#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

#include "handset/messaging.h"
#include "handset/platform/Results.h"
#include "tests/TestUtil.h"

namespace fs = std::filesystem;

namespace {

std::string Slurp(const fs::path& p) {
  std::ifstream in(p, std::ios::binary);
  std::stringstream ss;
  ss << in.rdbuf();
  return ss.str();
}

// Every part lands in the folder under a legal name of its own; names from the message never
// reach outside, and nothing already there (files or links) is written over or through.
TEST(MmsExtract, NamesAreLegalUniqueAndStayInside) {
  fs::path root = hs::test::MakeTempDir("mms-extract");
  fs::path dir = root / "out";
  fs::path outside = root / "outside.txt";
  std::ofstream(outside) << "keep";
  fs::create_directories(dir);
  fs::create_symlink(outside, dir / "link.txt");
  fs::create_symlink(root / "nowhere.txt", dir / "dangling.txt");

  CMmsMessage m;
  struct Part {
    const char* location;
    const char* contentId;
    const char* type;
    const char* expectName;
  } parts[] = {
      {"../../evil.txt", "", "text/plain", "evil.txt"},
      {"a:b?*.txt", "", "text/plain", "a_b__.txt"},
      {"same.gif", "", "image/gif", "same.gif"},
      {"SAME.gif", "", "image/gif", "SAME-1.gif"},
      {"CON.txt", "", "text/plain", "_CON.txt"},
      {"", "<pic>", "image/jpeg", "pic.jpg"},
      {"", "", "audio/amr", "part7.amr"},
      {"link.txt", "", "text/plain", "link-1.txt"},
      {"dangling.txt", "", "text/plain", "dangling-1.txt"},
      {" .. ", "", "application/x-unknown", "part10"},
      {"dir\\x.txt", "", "text/plain", "x.txt"},
  };
  int i = 0;
  for (const Part& p : parts) {
    std::string data = "data" + std::to_string(i++);
    CMmsMediaObj* obj =
        m.GetBody().CreateMediaObject(p.location, data.data(), static_cast<uint32_t>(data.size()));
    if (*p.location) obj->SetContentLocation(p.location);
    obj->SetContentID(p.contentId);
    obj->SetContentType(p.type);
  }
  CStringList written;
  ASSERT_EQ(MmsExtractParts(m, dir.string().c_str(), &written), hs::mmspdu::kOk);
  ASSERT_EQ(written.GetCount(), static_cast<int>(sizeof(parts) / sizeof(parts[0])));
  for (int k = 0; k < written.GetCount(); ++k) {
    fs::path w(written.GetAt(k).c_str());
    EXPECT_EQ(w.parent_path(), dir) << k;
    EXPECT_EQ(w.filename().string(), parts[k].expectName) << k;
    EXPECT_FALSE(fs::is_symlink(w)) << k;
    EXPECT_EQ(Slurp(w), "data" + std::to_string(k)) << k;
  }
  EXPECT_EQ(Slurp(outside), "keep");
  EXPECT_FALSE(fs::exists(root / "nowhere.txt"));
  EXPECT_FALSE(fs::exists(root / "evil.txt"));

  std::ofstream(root / "file") << "x";
  EXPECT_EQ(MmsExtractParts(m, (root / "file").string().c_str(), nullptr), hs::mmspdu::kErrFolder);
  fs::remove_all(root);
}

}  // namespace
