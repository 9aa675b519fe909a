#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <string>
#include <tuple>

#include "handset/messaging.h"
#include "handset/platform/Results.h"
#include "tests/TestUtil.h"

namespace fs = std::filesystem;

namespace {

int RunCli(const std::string& args, std::string* out) {
  return hs::test::RunCommand(hs::test::CliPath() + " " + args, out);
}

std::string Corpus(const std::string& rel) {
  return hs::test::CorpusDir() + "/" + rel;
}

std::vector<fs::path> Presentations() {
  std::vector<fs::path> out;
  for (const auto& e : fs::recursive_directory_iterator(Corpus("smil"))) {
    std::string ext = e.path().extension().string();
    if (ext == ".smil" || ext == ".smi") out.push_back(e.path());
  }
  std::sort(out.begin(), out.end());
  return out;
}

TEST(MmsCli, ShowPrintsPartsAndRefusesGarbage) {
  HS_SKIP_WITHOUT_CORPUS();
  std::string out;
  ASSERT_EQ(RunCli("mms show " + Corpus("mms/gammu-HelloWorld.mms"), &out), 0);
  for (const char* line : {": m-send-req\n", "  Subject: My first MMS Message\n", "parts: 5\n",
                           "  1\timage/gif\tSmileyFace.gif\t1403 bytes\n",
                           "  5\tapplication/smil\t<lskdjfie>\t703 bytes\n"})
    EXPECT_NE(out.find(line), std::string::npos) << line << out;
  ASSERT_EQ(RunCli("mms show " + Corpus("mms/sailfish-m-retrieve_5.conf"), &out), 0);
  EXPECT_NE(out.find("body: text/plain, 22 bytes\n"), std::string::npos) << out;

  std::string garbage = Corpus("mms/sailfish-garbage-retrieve.bin");
  EXPECT_EQ(RunCli("mms show " + garbage + " 2>&1 >/dev/null", &out), 1);
  EXPECT_NE(out.find(garbage + ": cannot decode the MMS PDU: not an MMS PDU"), std::string::npos)
      << out;
  EXPECT_EQ(RunCli("mms show /nonexistent.mms 2>/dev/null", &out), 1);
  EXPECT_EQ(RunCli("mms 2>/dev/null", &out), 2);
  EXPECT_EQ(RunCli("mms play x 2>/dev/null", &out), 2);
  EXPECT_EQ(RunCli("mms encode x.smil 2>/dev/null", &out), 2);
  EXPECT_EQ(RunCli("mms show --bogus x 2>/dev/null", &out), 2);
}

// --json over every sample (the garbage too, which is left out with an error) is valid JSON.
TEST(MmsCli, ShowJsonIsValid) {
  HS_SKIP_WITHOUT_CORPUS();
  std::string files;
  for (const std::string& f : hs::test::CorpusFiles("mms")) files += " " + f;
  std::string dir = hs::test::MakeTempDir("mms-json");
  std::string out;
  EXPECT_EQ(RunCli("mms show --json" + files + " 2>/dev/null >" + dir + "/all.json", &out), 1);
  std::string py =
      "/usr/bin/python3 -c \"import json,sys; d=json.load(open(sys.argv[1])); "
      "print(len(d), sum(len(m['parts']) for m in d))\" " +
      dir + "/all.json";
  ASSERT_EQ(hs::test::RunCommand(py, &out), 0);
  EXPECT_EQ(out, std::to_string(hs::test::CorpusFiles("mms").size() - 1) +
                     " 29\n");  // 29 entries as tshark counts them
  fs::remove_all(dir);
}

// The size reported equals the length of what encode writes, with and without headers.
TEST(MmsCli, SizeEqualsTheEncodedLength) {
  HS_SKIP_WITHOUT_CORPUS();
  std::string dir = hs::test::MakeTempDir("mms-size");
  const char* options[] = {"",
                           " --from +4930123 --to 0170-555 --cc x@y.example --bcc +1 "
                           "--subject 'Gr\xC3\xBC\xC3\x9F"
                           "e'"};
  int n = 0;
  for (const fs::path& smil : Presentations()) {
    for (const char* opt : options) {
      std::string out, pdu = dir + "/" + std::to_string(n++) + ".mms";
      ASSERT_EQ(RunCli("mms encode '" + smil.string() + "' -o " + pdu + opt, &out), 0) << smil;
      ASSERT_EQ(RunCli("mms size '" + smil.string() + "'" + opt, &out), 0) << smil;
      EXPECT_EQ(out, std::to_string(fs::file_size(pdu)) + "\n") << smil << opt;
    }
  }
  EXPECT_GE(n, 20);
  std::string out;
  EXPECT_EQ(RunCli("mms size " + Corpus("mms/gammu-HelloWorld.mms") + " 2>/dev/null", &out), 1);
  EXPECT_EQ(RunCli("mms encode " + Corpus("mms/gammu-HelloWorld.mms") + " -o " + dir +
                       "/x.mms 2>/dev/null",
                   &out),
            1);
  fs::remove_all(dir);
}

using PartKey = std::tuple<std::string, std::vector<uint8_t>>;

std::vector<PartKey> Parts(const std::string& file) {
  std::vector<uint8_t> pdu = hs::test::ReadBytes(file);
  CMmsMessage m;
  EXPECT_EQ(MmsDecodePdu(pdu.data(), pdu.size(), &m), hs::mmspdu::kOk) << file;
  std::vector<PartKey> parts;
  for (const CMmsMediaObj* obj : m.GetBody().GetObjects())
    parts.emplace_back(obj->GetContentType(),
                       std::vector<uint8_t>(obj->GetData(), obj->GetData() + obj->GetSize()));
  std::sort(parts.begin(), parts.end());
  return parts;
}

// A retrieved message taken apart and sent again carries the same parts.
TEST(MmsCli, ExtractThenEncodeKeepsTheParts) {
  HS_SKIP_WITHOUT_CORPUS();
  const char* samples[] = {"gammu-HelloWorld.mms",        "gammu-worldcupupdate_withsmil.mms",
                           "sailfish-m-retrieve_1.conf",  "sailfish-m-retrieve_8.conf",
                           "sailfish-m-retrieve_10.conf", "sailfish-m-send_1.req"};
  std::string root = hs::test::MakeTempDir("mms-extract-cli");
  int n = 0;
  for (const char* sample : samples) {
    std::string dir = root + "/" + std::to_string(n++), out;
    ASSERT_EQ(RunCli("mms extract " + Corpus(std::string("mms/") + sample) + " " + dir, &out), 0);
    std::string smil;
    for (const auto& e : fs::directory_iterator(dir)) {
      std::string ext = e.path().extension().string();
      if (ext == ".smil" || ext == ".smi") smil = e.path().string();
    }
    ASSERT_FALSE(smil.empty()) << sample;
    ASSERT_EQ(RunCli("mms encode '" + smil + "' -o " + dir + ".mms", &out), 0) << sample;
    EXPECT_EQ(Parts(dir + ".mms"), Parts(Corpus(std::string("mms/") + sample))) << sample;
  }
  fs::remove_all(root);
}

}  // namespace
