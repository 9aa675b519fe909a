#include <gtest/gtest.h>

#include <fstream>
#include <string>

#include "tests/TestUtil.h"

namespace {

class ConvertCli : public ::testing::Test {
 protected:
  void SetUp() override {
    dir_ = hs::test::MakeTempDir("convert_cli");
    std::ofstream(dir_ + "/tune.imy", std::ios::binary)
        << "BEGIN:IMELODY\r\nVERSION:1.2\r\nFORMAT:CLASS1.0\r\nBEAT:140\r\n"
           "MELODY:*5c2*5d3.(e4@2)\r\nEND:IMELODY\r\n";
  }
  // Runs the CLI in the test folder; standard error is folded into `out`.
  int Run(const std::string& args, std::string* out) {
    return hs::test::RunCommand("cd " + dir_ + " && " + hs::test::CliPath() + " " + args + " 2>&1",
                                out);
  }
  std::string dir_, out_;
};

TEST_F(ConvertCli, ConvertsBothWaysChoosingTheDirectionByExtension) {
  ASSERT_EQ(Run("convert tune.imy tune.mid", &out_), 0) << out_;
  std::vector<uint8_t> mid = hs::test::ReadBytes(dir_ + "/tune.mid");
  ASSERT_GT(mid.size(), 14u);
  EXPECT_EQ(std::string(mid.begin(), mid.begin() + 4), "MThd");
  // Back to iMelody on standard output: the notes come back ten lengths apart, with rests.
  ASSERT_EQ(Run("convert tune.mid - --volume 9 --style 1 --name X", &out_), 0) << out_;
  size_t melody = out_.find("BEAT:140\r\nSTYLE:S1\r\nVOLUME:V9\r\nMELODY:*5c2r0");
  ASSERT_NE(melody, std::string::npos) << out_;
  EXPECT_LT(out_.find("*5d3.r", melody), out_.find("e4\r\nEND:IMELODY\r\n", melody)) << out_;
  ASSERT_EQ(Run("convert tune.mid - --max-notes 2 --max-bytes 1000", &out_), 0);
  EXPECT_NE(out_.find("MELODY:*5c2r0\r\nEND"), std::string::npos) << out_;
  ASSERT_EQ(Run("convert --json - again.mid < tune.imy", &out_), 0) << out_;
  EXPECT_NE(out_.find("\"direction\":\"imelody-to-midi\""), std::string::npos) << out_;
  EXPECT_EQ(hs::test::ReadBytes(dir_ + "/again.mid"), mid);
}

TEST_F(ConvertCli, ErrorsNameTheFileAndTheReason) {
  std::ofstream(dir_ + "/lf.imy") << "BEGIN:IMELODY\nVERSION:1.2\nFORMAT:CLASS1.0\nMELODY:c2\n";
  EXPECT_EQ(Run("convert lf.imy x.mid", &out_), 1);
  EXPECT_NE(out_.find("lf.imy: imelody-to-midi result 1"), std::string::npos) << out_;
  for (const char* usage : {"tune.imy x.imy", "- -", "tune.imy x.mid --volume 3",
                            "tune.mid x.imy --volume 16", "tune.mid x.imy --max-notes -2"})
    EXPECT_EQ(Run(std::string("convert ") + usage, &out_), 2) << usage;
  EXPECT_EQ(Run("convert missing.imy x.mid", &out_), 1);
  HS_SKIP_WITHOUT_CORPUS();
  EXPECT_EQ(
      Run("convert " + hs::test::CorpusDir() + "/mid/jazz-multichannel-chords-1.mid x.imy", &out_),
      1);
  EXPECT_NE(out_.find("has 3 tracks; iMelody holds one"), std::string::npos) << out_;
}

}  // namespace
