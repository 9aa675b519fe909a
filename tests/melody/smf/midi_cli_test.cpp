#include <gtest/gtest.h>

#include <string>

#include "handset/melody/MidFileElement.h"
#include "tests/TestUtil.h"

namespace {

std::string Cli() {
  return hs::test::CliPath();
}

TEST(MidiCli, InfoAndSave) {
  HS_SKIP_WITHOUT_CORPUS();
  const std::string in = hs::test::CorpusDir() + "/mid/x300-sys121.mid";
  std::string out;
  ASSERT_EQ(hs::test::RunCommand(Cli() + " midi info --json '" + in + "'", &out), 0);
  EXPECT_NE(out.find("\"format\":0"), std::string::npos) << out;
  EXPECT_NE(out.find("\"tempo\":135"), std::string::npos) << out;
  EXPECT_NE(out.find("\"peak_polyphony\""), std::string::npos) << out;
  EXPECT_NE(out.find("\"table_type\""), std::string::npos) << out;

  std::string dir = hs::test::MakeTempDir("midcli");
  std::string saved = dir + "/part.mid";
  ASSERT_EQ(hs::test::RunCommand(Cli() + " midi save '" + in + "' '" + saved +
                                     "' --format 1 --from 0 --to 960 --enabled-only",
                                 &out),
            0);
  CMidFileElement f;
  ASSERT_EQ(f.LoadMidiFile(saved.c_str()), 0);
  EXPECT_EQ(f.GetMidiFormat(), 1);
  EXPECT_LE(f.GetMaxTrackWidthCount(), 960u);
}

TEST(MidiCli, ErrorsNameTheFileAndCode) {
  std::string dir = hs::test::MakeTempDir("midcli");
  std::string bad = dir + "/bad.mid";
  std::string out;
  ASSERT_EQ(hs::test::RunCommand(
                "printf 'MThd\\0\\0\\0\\6\\0\\2\\0\\1\\0\\140MTrk' > '" + bad + "'", nullptr),
            0);
  EXPECT_EQ(hs::test::RunCommand(Cli() + " midi info '" + bad + "' 2>&1", &out), 1);
  EXPECT_NE(out.find(bad), std::string::npos) << out;
  EXPECT_NE(out.find("result 8"), std::string::npos) << out;
  EXPECT_EQ(hs::test::RunCommand(Cli() + " midi save a b --from 5 2>&1", &out), 2);
  EXPECT_EQ(hs::test::RunCommand(Cli() + " midi save a b --format 2 2>&1", &out), 2);
  EXPECT_EQ(hs::test::RunCommand(Cli() + " midi frobnicate x 2>&1", &out), 2);
  EXPECT_EQ(hs::test::RunCommand(Cli() + " midi --help", &out), 0);
  EXPECT_NE(out.find("--enabled-only"), std::string::npos);
}

}  // namespace
