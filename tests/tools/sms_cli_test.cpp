#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "tests/TestUtil.h"

namespace fs = std::filesystem;

namespace {

int RunCli(const std::string& args, std::string* out) {
  return hs::test::RunCommand(hs::test::CliPath() + " " + args, out);
}

void WriteText(const std::string& path, const std::string& text) {
  std::ofstream(path, std::ios::binary) << text;
}

std::string ReadText(const std::string& path) {
  std::vector<uint8_t> b = hs::test::ReadBytes(path);
  return std::string(b.begin(), b.end());
}

// The PDU lines (not the "# AT+CMGS" lines) that `sms encode` printed.
std::vector<std::string> PduLines(const std::string& out) {
  std::vector<std::string> lines;
  std::istringstream in(out);
  for (std::string l; std::getline(in, l);)
    if (!l.empty() && l[0] != '#') lines.push_back(l);
  return lines;
}

// Values worked out by hand from the segment sizes (160 septets or 70 units alone, 153 or 67 with
// a concatenation element) and confirmed with gammu.SMSCounter.
TEST(SmsCli, CountShowsCodingSizeSegmentsAndWhatIsLeft) {
  std::string l71;
  for (int i = 0; i < 71; ++i) l71 += "\xC5\x82";
  struct Case {
    std::string args;
    std::string json;
  } cases[] = {
      {"'[]'", "{\"encoding\":\"gsm7\",\"septets\":4,\"segments\":1,\"left\":156}"},
      {"'abc\xE2\x82\xAC'", "{\"encoding\":\"gsm7\",\"septets\":5,\"segments\":1,\"left\":155}"},
      {std::string(161, 'a'),
       "{\"encoding\":\"gsm7\",\"septets\":161,\"segments\":2,\"left\":145}"},
      {l71, "{\"encoding\":\"ucs2\",\"units\":71,\"segments\":2,\"left\":63}"},
      {"--encoding ucs2 hello", "{\"encoding\":\"ucs2\",\"units\":5,\"segments\":1,\"left\":65}"},
      {"''", "{\"encoding\":\"gsm7\",\"septets\":0,\"segments\":1,\"left\":160}"},
  };
  for (const Case& c : cases) {
    std::string out;
    ASSERT_EQ(RunCli("sms count --json " + c.args, &out), 0) << c.args;
    EXPECT_EQ(out, c.json + "\n") << c.args;
  }
  std::string out;
  EXPECT_EQ(hs::test::RunCommand("printf 'x[\\n' | " + hs::test::CliPath() + " sms count -", &out),
            0);
  EXPECT_EQ(out, "encoding: gsm7\nseptets: 3\nsegments: 1\nleft: 157\n");
}

TEST(SmsCli, UsageErrors) {
  std::string out;
  for (const char* args : {"sms", "sms frob", "sms count", "sms count --encoding utf8 x",
                           "sms encode --sound x", "sms encode --text hi --sound 1@9",
                           "sms encode --format 0,1,blink --text hi", "sms encode extra"})
    EXPECT_EQ(RunCli(std::string(args) + " 2>/dev/null", &out), 2) << args;
  EXPECT_EQ(RunCli("sms --help", &out), 0);
  EXPECT_NE(out.find("example:"), std::string::npos);
}

TEST(SmsCli, EncodedItemsComeBackAndAreExtracted) {
  std::string dir = hs::test::MakeTempDir("sms-cli");
  std::string melody =
      "BEGIN:IMELODY\r\nVERSION:1.2\r\nFORMAT:CLASS1.0\r\nMELODY:c2d2e2\r\nEND:IMELODY\r\n";
  WriteText(dir + "/m.imy", melody);
  std::string pbm = "P1\n24 5\n";
  for (int y = 0; y < 5; ++y)
    pbm += y % 2 ? "010101010101010101010101\n" : "110011001100110011001100\n";
  WriteText(dir + "/p.pbm", pbm);
  std::string out;
  ASSERT_EQ(RunCli("sms encode --text 'Tune: go, look' --melody " + dir + "/m.imy@5 --picture " +
                       dir + "/p.pbm@14 --sound 13@0 --to +4915551234 > " + dir + "/pdu.txt",
                   &out),
            0);
  ASSERT_EQ(RunCli("sms decode --extract " + dir + " " + dir + "/pdu.txt", &out), 0);
  EXPECT_NE(out.find("  to: +4915551234\n"), std::string::npos) << out;
  EXPECT_NE(out.find("  text: Tune: go, look\n"), std::string::npos) << out;
  EXPECT_NE(out.find("  sound at 0: predefined 3\n"), std::string::npos) << out;  // 13 as 3
  EXPECT_NE(out.find("  melody at 5: "), std::string::npos) << out;
  EXPECT_NE(out.find("  picture at 14: 24x5\n    ##..##..##..##..##..##..\n"), std::string::npos)
      << out;
  EXPECT_EQ(ReadText(dir + "/message1-1-melody.imy"), melody);
  std::string back = ReadText(dir + "/message1-2-picture.pbm");
  EXPECT_EQ(back.substr(0, 8), "P4\n24 5\n");
  EXPECT_EQ(back.size(), 8u + 15u);
  EXPECT_EQ(static_cast<unsigned char>(back[8]), 0xCC);
  fs::remove_all(dir);
}

TEST(SmsCli, ReassemblyMarksGapsAndOrdersParts) {
  std::string dir = hs::test::MakeTempDir("sms-parts");
  std::string text;
  for (int i = 0; i < 400; ++i) text += static_cast<char>('a' + i % 26);
  std::string out;
  ASSERT_EQ(RunCli("sms encode --ref 77 --text " + text, &out), 0);
  std::vector<std::string> pdus = PduLines(out);
  ASSERT_EQ(pdus.size(), 3u);  // 153 + 153 + 94 characters
  WriteText(dir + "/gap.txt", pdus[2] + "\n# the middle part never came\n" + pdus[0] + "\n");
  ASSERT_EQ(RunCli("sms decode " + dir + "/gap.txt", &out), 0);
  EXPECT_NE(out.find("  parts: 2 of 3 received, reference 77\n"), std::string::npos) << out;
  EXPECT_NE(out.find("  text: " + text.substr(0, 153) + "{...}" + text.substr(306) + "\n"),
            std::string::npos)
      << out;
  WriteText(dir + "/shuffled.txt", pdus[1] + "\n" + pdus[2] + "\n" + pdus[0] + "\n");
  ASSERT_EQ(RunCli("sms decode --json " + dir + "/shuffled.txt", &out), 0);
  EXPECT_NE(out.find("\"text\":\"" + text + "\""), std::string::npos) << out;
  fs::remove_all(dir);
}

TEST(SmsCli, BadLinesAreReportedAndTheRestDecoded) {
  std::string dir = hs::test::MakeTempDir("sms-bad");
  WriteText(dir + "/mixed.txt",
            "0001000B917228001011F100000CC8329BFD065DDF72363904\n"  // SUBMIT "Hello World!"
            "00010G\n"                                              // not hex
            "0001000B917228001011F100000CC8329BFD06\n"              // user data cut short
            "07914400000000F01100099121436587F90008F40A4E16754C60A8597DFF01\n");
  std::string out;
  int rc = RunCli("sms decode " + dir + "/mixed.txt 2>" + dir + "/err.txt", &out);
  EXPECT_EQ(rc, 1);
  std::string err = ReadText(dir + "/err.txt");
  EXPECT_NE(err.find(dir + "/mixed.txt:2: decode: 'G' at column 6 is not a hex digit"),
            std::string::npos)
      << err;
  EXPECT_NE(err.find(dir + "/mixed.txt:3: decode: user data needs 11 octets, 5 present"),
            std::string::npos)
      << err;
  EXPECT_NE(out.find("  text: Hello World!\n"), std::string::npos) << out;
  // A UCS-2 SUBMIT from the same collection: "Hello world!" in Chinese.
  EXPECT_NE(out.find("  text: \xE4\xB8\x96\xE7\x95\x8C\xE6\x82\xA8\xE5\xA5\xBD\xEF\xBC\x81\n"),
            std::string::npos)
      << out;
  fs::remove_all(dir);
}

// Every sample PDU decodes or is refused with a message; EMS samples show their items.
TEST(SmsCli, CorpusPdusDecodeOrAreRefused) {
  HS_SKIP_WITHOUT_CORPUS();
  std::string dir = hs::test::MakeTempDir("sms-corpus");
  struct Expect {
    const char* file;
    int refused;
    std::vector<std::string> shows;
  } expects[] = {
      {"gammu-at-sms-failing.txt", 10, {}},
      {"gammu-at-sms.txt", 1, {"picture at ", "status: "}},
      {"gnokii-testsuite.txt",
       1,
       {"picture at 0: 72x14", "melody at 0:", "animation at 0: 4 frames of 16x16"}},
      {"python-gsmmodem-test-pdu.txt", 1, {"parts: 3 of 3 received", "status: "}},
  };
  for (const Expect& e : expects) {
    std::string path = hs::test::CorpusDir() + "/pdu/" + e.file, out;
    int rc = RunCli("sms decode " + path + " 2>" + dir + "/err.txt", &out);
    EXPECT_EQ(rc, e.refused ? 1 : 0) << e.file;  // never a crash
    std::string err = ReadText(dir + "/err.txt");
    int lines = 0;
    for (size_t at = 0; (at = err.find("handset: ", at)) != std::string::npos; ++at) ++lines;
    EXPECT_EQ(lines, e.refused) << e.file << "\n" << err;
    for (const std::string& s : e.shows)
      EXPECT_NE(out.find(s), std::string::npos) << e.file << ": " << s;
  }
  fs::remove_all(dir);
}

}  // namespace
