#include <gtest/gtest.h>

#include <fstream>
#include <string>

#include "tests/TestUtil.h"

namespace {

const char kTune[] =
    "BEGIN:IMELODY\r\nVERSION:1.2\r\nFORMAT:CLASS1.0\r\nBEAT:140\r\nMELODY:*5c2*5d3.(e4@2)\r\n"
    "END:IMELODY\r\n";

class ConvertCli : public ::testing::Test {
 protected:
  void SetUp() override {
    dir_ = hs::test::MakeTempDir("convert_cli");
    std::ofstream(dir_ + "/tune.imy", std::ios::binary) << kTune;
  }
  // Runs the CLI with `args`; standard error is folded into the output.
  int Run(const std::string& args, std::string* out) {
    return hs::test::RunCommand("cd " + dir_ + " && " + hs::test::CliPath() + " " + args + " 2>&1",
                                out);
  }
  std::string dir_;
};

TEST_F(ConvertCli, ConvertsBothWaysChoosingTheDirectionByExtension) {
  std::string out;
  ASSERT_EQ(Run("convert tune.imy tune.mid", &out), 0) << out;
  std::vector<uint8_t> mid = hs::test::ReadBytes(dir_ + "/tune.mid");
  ASSERT_GT(mid.size(), 14u);
  EXPECT_EQ(std::string(mid.begin(), mid.begin() + 4), "MThd");
  // Back to iMelody on standard output: the repeat is expanded, notes are ten lengths apart.
  ASSERT_EQ(Run("convert tune.mid - --volume 9 --style 1", &out), 0) << out;
  EXPECT_NE(out.find("BEAT:140\r\nSTYLE:S1\r\nVOLUME:V9\r\n"), std::string::npos) << out;
  size_t melody = out.find("MELODY:*5c2r0");
  ASSERT_NE(melody, std::string::npos) << out;
  EXPECT_LT(out.find("*5d3.r", melody), out.find("e4\r\nEND:IMELODY\r\n", melody)) << out;
  ASSERT_EQ(Run("convert tune.mid cut.imy --max-notes 3 --max-bytes 1000 --name X", &out), 0);
  std::vector<uint8_t> cut = hs::test::ReadBytes(dir_ + "/cut.imy");
  std::string cutText(cut.begin(), cut.end());
  EXPECT_NE(cutText.find("MELODY:*5c2r0"), std::string::npos) << cutText;
  EXPECT_EQ(cutText.find("d3"), std::string::npos) << cutText;
  ASSERT_EQ(Run("convert --json - again.mid < tune.imy", &out), 0) << out;
  EXPECT_NE(out.find("\"direction\":\"imelody-to-midi\""), std::string::npos) << out;
  EXPECT_EQ(hs::test::ReadBytes(dir_ + "/again.mid"), mid);
}

TEST_F(ConvertCli, ErrorsNameTheFileAndTheReason) {
  std::string out;
  std::ofstream(dir_ + "/lf.imy") << "BEGIN:IMELODY\nVERSION:1.2\nFORMAT:CLASS1.0\nMELODY:c2\n";
  EXPECT_EQ(Run("convert lf.imy x.mid", &out), 1);
  EXPECT_NE(out.find("lf.imy: imelody-to-midi result 1"), std::string::npos) << out;
  EXPECT_EQ(Run("convert tune.imy x.imy", &out), 2);
  EXPECT_EQ(Run("convert - -", &out), 2);
  EXPECT_EQ(Run("convert tune.imy x.mid --volume 3", &out), 2);
  EXPECT_EQ(Run("convert tune.mid x.imy --volume 16", &out), 2);
  EXPECT_EQ(Run("convert missing.imy x.mid", &out), 1);
  EXPECT_EQ(Run("convert --help", &out), 0);
  EXPECT_NE(out.find("--max-bytes"), std::string::npos);

  HS_SKIP_WITHOUT_CORPUS();
  std::string chords = hs::test::CorpusDir() + "/mid/jazz-multichannel-chords-1.mid";
  EXPECT_EQ(Run("convert " + chords + " x.imy", &out), 1);
  EXPECT_NE(out.find("has 3 tracks; iMelody holds one"), std::string::npos) << out;
  std::string notMidi = hs::test::CorpusDir() + "/mid/jazz-not-a-midi-file.mid";
  EXPECT_EQ(Run("convert " + notMidi + " x.imy", &out), 1);
  EXPECT_NE(out.find("midi-file result 2"), std::string::npos) << out;
}

}  // namespace
