#include <gtest/gtest.h>

#include "tests/TestUtil.h"
#include "tests/audio/AudioTestUtil.h"
#include "tests/melody/smaf/MmfImage.h"

namespace {

using hs::test::BuildMmf;
using hs::test::TrailerMatches;

int Cli(const std::string& args, std::string* out) {
  return hs::test::RunCommand(hs::test::CliPath() + " mmf " + args + " 2>&1", out);
}

TEST(CmdMmf, SetPatchesInPlaceOrToAnotherFileWithTheCrcRecomputed) {
  std::string dir = hs::test::MakeTempDir("cmd_mmf");
  auto image = BuildMmf(0x00, "", {{1, 0x00, 0x00}, {2, 0x00, 0x00}});
  hs::test::WriteBytes(dir + "/a.mmf", image);
  std::string out;
  ASSERT_EQ(
      Cli("set " + dir + "/a.mmf -o " + dir + "/b.mmf --led 4 --vib 5=on --copy-status 0x21", &out),
      0)
      << out;
  EXPECT_EQ(hs::test::ReadBytes(dir + "/a.mmf"), image);
  auto b = hs::test::ReadBytes(dir + "/b.mmf");
  ASSERT_EQ(b.size(), image.size() + 5);
  EXPECT_TRUE(TrailerMatches(b));
  EXPECT_EQ(b[19], 0x21);
  EXPECT_EQ(std::string(b.begin() + 21, b.begin() + 26), std::string("L2:\x04,", 5));

  ASSERT_EQ(Cli("info --json " + dir + "/b.mmf", &out), 0) << out;
  EXPECT_NE(out.find("\"crc_ok\":true"), std::string::npos) << out;
  EXPECT_NE(out.find("\"led_channel\":4"), std::string::npos) << out;
  EXPECT_NE(out.find("\"copy_status\":33"), std::string::npos) << out;
  EXPECT_NE(out.find("{\"channel\":5,\"valid\":true,\"vibration\":true}"), std::string::npos);
  EXPECT_NE(out.find("{\"channel\":8,\"valid\":false,\"vibration\":false}"), std::string::npos);

  ASSERT_EQ(Cli("set " + dir + "/a.mmf --vib 0=on", &out), 0) << out;
  auto a = hs::test::ReadBytes(dir + "/a.mmf");
  EXPECT_TRUE(TrailerMatches(a));
  EXPECT_EQ(a[21 + 12], 0x40);
}

TEST(CmdMmf, FailuresNameTheFileAndTheResultCode) {
  std::string dir = hs::test::MakeTempDir("cmd_mmf_fail");
  auto image = BuildMmf(0x00, "", {{1, 0x00, 0x00}});
  image.back() ^= 0xFF;
  hs::test::WriteBytes(dir + "/bad.mmf", image);
  std::string out;
  EXPECT_EQ(Cli("info " + dir + "/bad.mmf", &out), 1);
  EXPECT_NE(out.find("crc: mismatch"), std::string::npos) << out;
  EXPECT_NE(out.find("bad.mmf: smaf result 11:"), std::string::npos) << out;
  EXPECT_EQ(Cli("set " + dir + "/bad.mmf --led 1", &out), 1);
  EXPECT_EQ(hs::test::ReadBytes(dir + "/bad.mmf"), image);

  image.back() ^= 0xFF;
  hs::test::WriteBytes(dir + "/ok.mmf", image);
  EXPECT_EQ(Cli("set " + dir + "/ok.mmf --vib 4=on", &out), 1);  // no second score track
  EXPECT_NE(out.find("smaf result 9:"), std::string::npos) << out;
  EXPECT_EQ(Cli("set " + dir + "/ok.mmf --vib 3=maybe", &out), 2);
  EXPECT_EQ(Cli("set " + dir + "/ok.mmf", &out), 2);
  EXPECT_EQ(hs::test::ReadBytes(dir + "/ok.mmf"), image);
}

}  // namespace
