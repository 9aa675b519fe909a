#include <gtest/gtest.h>

#include <fstream>
#include <sstream>

#include "handset/melody/FormatRegistry.h"
#include "handset/platform/Config.h"
#include "tests/TestUtil.h"

namespace {

struct ManifestRow {
  std::string path;
  std::string description;
};

std::vector<ManifestRow> ReadManifest() {
  std::vector<ManifestRow> rows;
  std::ifstream in(hs::test::CorpusDir() + "/MANIFEST.tsv");
  std::string line;
  std::getline(in, line);  // column names
  while (std::getline(in, line)) {
    std::vector<std::string> cols;
    std::stringstream ss(line);
    std::string col;
    while (std::getline(ss, col, '\t')) cols.push_back(col);
    if (cols.size() >= 6) rows.push_back({cols[0], cols[5]});
  }
  return rows;
}

bool Has(const std::string& text, const char* word) {
  return text.find(word) != std::string::npos;
}

// What the first bytes of the file must show, judged from the manifest's own description.
MDYFMT ExpectedContent(const ManifestRow& row) {
  const std::string& d = row.description;
  if (Has(d, "RIFF RMID") || Has(d, "WAVE")) return MDYFMT_WAVE;
  if (Has(d, "SMF format")) return MDYFMT_ANY_MIDI;
  if (Has(d, "SMAF MMMD")) return MDYFMT_ANY_MMF;
  if ((Has(d, "AMR-NB storage format") || Has(d, "AMR-WB storage format")) &&
      !Has(d, "no \"#!AMR\" header"))
    return MDYFMT_AMR;
  return 0;
}

MDYFMT ExpectedExtension(const std::string& path) {
  std::string folder = path.substr(0, path.find('/'));
  CString ext = GetFileType(path.c_str());
  if (folder == "mid" && ext == "mid") return MDYFMT_SPMIDI;  // ".mid" matches only SPMIDI's filter
  if (folder == "mmf") return MDYFMT_ANY_MMF;
  if (folder == "wav") return MDYFMT_WAVE;
  if (folder == "imy") return MDYFMT_IMELODY;
  if (folder == "amr" && ext == "amr") return MDYFMT_AMR;
  return 0;
}

TEST(Identify, EveryCorpusFileMatchesItsManifestDescription) {
  HS_SKIP_WITHOUT_CORPUS();
  g_bMP3GlobalOn = 0;
  InitialMelodyFormatArray();
  InitialAudioFormatArray();
  std::vector<ManifestRow> rows = ReadManifest();
  ASSERT_GT(rows.size(), 100u);
  int sniffed = 0;
  for (const ManifestRow& row : rows) {
    std::string full = hs::test::CorpusDir() + "/" + row.path;
    EXPECT_EQ(_IsMelodyFormatType(full.c_str()), ExpectedExtension(row.path)) << row.path;
    std::vector<uint8_t> head = hs::test::ReadBytes(full);
    head.resize(20, 0);
    MDYFMT content =
        GetMdyFmtByAuxDataCont(head.data(), 20) | GetMdyFmtByMdyDataCont(head.data(), 20);
    EXPECT_EQ(content, ExpectedContent(row)) << row.path << ": " << row.description;
    sniffed += content != 0;
    // With no extension to go by, the file's bytes decide.
    if (ExpectedExtension(row.path) == 0) {
      EXPECT_EQ(_GetSoundFileFormatType(full.c_str(), 1), ExpectedContent(row)) << row.path;
    }
  }
  EXPECT_GT(sniffed, 80);
}

TEST(IdentifyCli, ReportsFormatsAndFailsOnUnreadableFiles) {
  std::string dir = hs::test::MakeTempDir("identify");
  std::ofstream(dir + "/tone.mid", std::ios::binary)
      << std::string("MThd\0\0\0\6\0\0\0\1\0\x60", 14);
  std::string out;
  std::string cli = hs::test::CliPath();
  EXPECT_EQ(hs::test::RunCommand(cli + " identify " + dir + "/tone.mid", &out), 0);
  EXPECT_NE(out.find("ext 0x10 SPMIDI\tcontent 0x18 GMIDI,SPMIDI"), std::string::npos) << out;

  EXPECT_EQ(hs::test::RunCommand(cli + " identify --json --no-content " + dir + "/tone.mid", &out),
            0);
  EXPECT_NE(out.find("\"extension\":{\"value\":16,\"names\":\"SPMIDI\"}"), std::string::npos)
      << out;
  EXPECT_EQ(out.find("content"), std::string::npos);

  // A missing file is reported, the others are still identified, and the status is non-zero.
  EXPECT_EQ(hs::test::RunCommand(
                cli + " identify " + dir + "/missing.amr " + dir + "/tone.mid 2>/dev/null", &out),
            1);
  EXPECT_NE(out.find("tone.mid"), std::string::npos);
  EXPECT_EQ(hs::test::RunCommand(cli + " identify --bogus x 2>/dev/null", &out), 2);
  EXPECT_EQ(hs::test::RunCommand(cli + " identify --help", &out), 0);
  EXPECT_NE(out.find("usage: handset identify"), std::string::npos);
}

}  // namespace
