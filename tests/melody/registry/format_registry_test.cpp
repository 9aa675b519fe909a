#include <gtest/gtest.h>

#include <fstream>

#include "handset/melody/FormatRegistry.h"
#include "handset/platform/Config.h"
#include "tests/TestUtil.h"

namespace {

// The tables are process-wide; every test starts from freshly initialised ones with MP3 hidden
// unless a test turns it on, so results do not depend on whether an MP3 codec is installed.
class FormatRegistry : public ::testing::Test {
 protected:
  void SetUp() override { Init(0); }
  void TearDown() override { Init(0); }
  static void Init(int mp3) {
    g_bMP3GlobalOn = mp3;
    InitialMelodyFormatArray();
    InitialAudioFormatArray();
  }
};

TEST_F(FormatRegistry, TablesWithoutMp3) {
  EXPECT_EQ(g_nMelodyFmtCount, 11);
  EXPECT_EQ(g_nAUXAudioFmtCount, 6);
  const MELODY_FORMAT_TABLE& last = g_MelodyFormatArray[g_nMelodyFmtCount - 1];
  EXPECT_EQ(last.strFmtName, "QV_UNKNOW");
  EXPECT_EQ(last.strFilter, "*.mid|*.midi|*.imy|*.emy|*.mmf|||*.wav|*.xmi|*.3gp|");
  EXPECT_EQ(last.dwMdyFmt, 0u);
  EXPECT_EQ(g_AUXAudioFormatArray[g_nAUXAudioFmtCount - 1].strFilter,
            "*.wav|*.amr|*.3gp|*.auf|*.xau");
  EXPECT_EQ(GetMDYFMTByMdyName("mp3"), 0u);
  InitialMelodyFormatArray();  // rebuilding appends no second set of rows
  EXPECT_EQ(g_nMelodyFmtCount, 11);
}

TEST_F(FormatRegistry, TablesWithMp3WhenACodecIsInstalled) {
  if (!CMP3Toolbox::IsCodecInstalled()) GTEST_SKIP() << "no MP3 decoder library installed";
  Init(1);
  EXPECT_EQ(IsMP3Enabled(), 1);
  EXPECT_EQ(g_nMelodyFmtCount, 12);
  EXPECT_EQ(g_nAUXAudioFmtCount, 7);
  EXPECT_EQ(g_MelodyFormatArray[11].strFilter,
            "*.mid|*.midi|*.imy|*.emy|*.mmf|||*.wav|*.xmi|*.mp3|*.3gp|");
  EXPECT_EQ(g_AUXAudioFormatArray[6].strFilter, "*.wav|*.amr|*.mp3|*.3gp|*.auf|*.xau");
  EXPECT_EQ(GetMDYFMTByAuxFileType("a.mp3"), MDYFMT_MP3);
}

TEST_F(FormatRegistry, ExtensionLookupsMatchOnTheFilterExtension) {
  EXPECT_EQ(GetMDYFMTByMdyFileType("song.MMF"), 0x4060u);
  EXPECT_EQ(GetMDYFMTByMdyFileType("song.mid"), MDYFMT_SPMIDI);
  EXPECT_EQ(GetMDYFMTByMdyFileType("song.midi"), MDYFMT_GMIDI);
  EXPECT_EQ(GetMDYFMTByMdyFileType("noext"), 0u);
  EXPECT_EQ(GetMDYFMTByAuxFileType("noext"), 0u);
  EXPECT_EQ(GetMDYFMTByAuxFileType("x.AMR"), MDYFMT_AMR);
  EXPECT_EQ(GetMDYFMTByAuxFileType("x.mid"), 0u);
  EXPECT_EQ(_IsMelodyFormatType("a.wav"), MDYFMT_WAVE);  // melody table wins
  EXPECT_EQ(_IsMelodyFormatType("a.amr"), MDYFMT_AMR);   // falls back to the auxiliary table
  EXPECT_EQ(_IsMelodyFormatType("a.auf"), MDYFMT_AUF);
}

TEST_F(FormatRegistry, NameAndRowLookups) {
  EXPECT_EQ(GetMDYFMTByMdyName("gmidi"), MDYFMT_GMIDI);
  EXPECT_EQ(GetMDYFMTByMdyName("qv_unknow"), 0u);  // the closing row is scanned; its format is 0
  EXPECT_EQ(GetMDYFMTByAuxName("Xau"), MDYFMT_XAU);
  EXPECT_EQ(GetMDYFMTByMdyName(nullptr), 0u);
  EXPECT_EQ(GetMdyTableByFmt(0x18), nullptr);
  EXPECT_EQ(GetMdyTableByFmt(0), nullptr);  // never the closing row
  ASSERT_NE(GetMdyTableByFmt(MDYFMT_MMF_MA5), nullptr);
  EXPECT_EQ(GetMdyTableByFmt(MDYFMT_MMF_MA5)->strFmtName, "MMF_MA5");
  ASSERT_NE(GetAuxMdyTableByFmt(MDYFMT_AMR), nullptr);
  EXPECT_EQ(GetAuxMdyTableByFmt(MDYFMT_AMR)->strFilter, "*.amr");
}

TEST_F(FormatRegistry, ContentSniffing) {
  const unsigned char mthd[] = "MThd\0\0\0\6";
  EXPECT_EQ(GetMdyFmtByMdyDataCont(mthd, 4), 0u);  // the length must exceed 4
  EXPECT_EQ(GetMdyFmtByMdyDataCont(mthd, 5), 0x18u);
  EXPECT_EQ(GetMdyFmtByMdyDataCont(reinterpret_cast<const unsigned char*>("MMMD...."), 8), 0x4060u);
  EXPECT_EQ(GetMdyFmtByMdyDataCont(reinterpret_cast<const unsigned char*>("RIFF...."), 8), 0x80u);
  EXPECT_EQ(GetMdyFmtByAuxDataCont(reinterpret_cast<const unsigned char*>("#!AMR-WB\n"), 9),
            MDYFMT_AMR);
  EXPECT_EQ(GetMdyFmtByAuxDataCont(reinterpret_cast<const unsigned char*>("#!AMR"), 5), 0u);
  EXPECT_EQ(GetMdyFmtByAuxDataCont(nullptr, 100), 0u);
}

TEST_F(FormatRegistry, FileSniffingUsesTwentyZeroFilledBytes) {
  std::string dir = hs::test::MakeTempDir("sniff");
  std::ofstream(dir + "/short", std::ios::binary) << "#!AMR";  // only 5 bytes on disk
  std::ofstream(dir + "/tone", std::ios::binary) << "MThd\0\0\0\6";
  EXPECT_EQ(_GetSoundFileFormatType((dir + "/short").c_str(), 1), MDYFMT_AMR);
  EXPECT_EQ(_GetSoundFileFormatType((dir + "/short").c_str(), 0), 0u);
  EXPECT_EQ(_GetSoundFileFormatType((dir + "/tone").c_str(), 1), 0x18u);
  EXPECT_EQ(_GetSoundFileFormatType((dir + "/missing").c_str(), 1), 0u);
  EXPECT_EQ(_GetSoundFileFormatType((dir + "/x.imy").c_str(), 1), MDYFMT_IMELODY);
}

TEST_F(FormatRegistry, TextForms) {
  EXPECT_EQ(TransToMdyFormatSTR(0x18), "GMIDI,SPMIDI,");
  EXPECT_EQ(TransToMdyFormatSTR(MDYFMT_MP3), "");
  EXPECT_EQ(TransToMdyFormatSTR(0), "");
  EXPECT_EQ(TransToMdyFormatSTR(MDYFMT_MMF_MA5 | MDYFMT_MMF_MA3 | MDYFMT_EXT_LOW),
            "MMF_MA3,MMF_MA5,EXT_LOW,");
  EXPECT_EQ(MdyFormatSTRToRawMdyFmt("gmidi"), 0u);
  EXPECT_EQ(MdyFormatSTRToRawMdyFmt("GMIDI,,AMR,bogus,"), MDYFMT_GMIDI | MDYFMT_AMR);
  // Every named bit survives the round trip.
  const uint32_t named =
      0x7FFFFF & ~(MDYFMT_MP3 | MDYFMT_3GP | 0x8000 | 0x20000 | 0x40000 | 0x80000);
  EXPECT_EQ(MdyFormatSTRToRawMdyFmt(TransToMdyFormatSTR(named).c_str()), named);
}

TEST_F(FormatRegistry, LookupsBeforeInitialisationFindNothing) {
  for (auto& row : g_MelodyFormatArray) row = MELODY_FORMAT_TABLE{};
  g_nMelodyFmtCount = 16;
  EXPECT_EQ(GetMDYFMTByMdyFileType("a.mid"), 0u);
  EXPECT_EQ(GetMDYFMTByMdyName("GMIDI"), 0u);
  EXPECT_EQ(GetMdyTableByFmt(MDYFMT_GMIDI), nullptr);
}

}  // namespace
