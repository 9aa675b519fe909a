#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <random>
#include <string>
#include <vector>

#include "tests/TestUtil.h"

namespace fs = std::filesystem;

// What `handset sms encode` writes is read back by python3-gammu (DecodePDU, LinkSMS, DecodeSMS)
// and by tshark's gsm_sms dissector; tests/tools/sms_oracles.py does the reading and compares
// with what each case meant to send.
namespace {

const std::string kOracle = std::string(HANDSET_SOURCE_DIR) + "/tests/tools/sms_oracles.py";

bool HaveOracles(std::string* why) {
  if (!hs::test::HavePythonModule("gammu")) return *why = "python3-gammu is not installed", false;
  if (!hs::test::HaveTool("tshark") || !hs::test::HaveTool("text2pcap"))
    return *why = "tshark/text2pcap are not installed", false;
  return true;
}

void WriteText(const std::string& path, const std::string& text) {
  std::ofstream(path, std::ios::binary) << text;
}

std::string JsonString(const std::string& s) {
  std::string out = "\"";
  for (unsigned char c : s) {
    if (c == '"' || c == '\\') {
      out += '\\';
      out += static_cast<char>(c);
    } else if (c < 0x20) {
      char b[8];
      std::snprintf(b, sizeof b, "\\u%04x", c);
      out += b;
    } else {
      out += static_cast<char>(c);
    }
  }
  return out + "\"";
}

// One character of the generated texts and the UTF-16 units it takes.
struct Piece {
  const char* utf8;
  int units;
  bool gsm;
};
const Piece kPieces[] = {
    {"a", 1, true},
    {"Z", 1, true},
    {"7", 1, true},
    {" ", 1, true},
    {"@", 1, true},
    {"\xCE\x94", 1, true},  // Δ
    {"\xC3\xA9", 1, true},
    {"\n", 1, true},
    {"[", 1, true},
    {"}", 1, true},
    {"~", 1, true},
    {"\\", 1, true},
    {"\xE2\x82\xAC", 1, true},  // €
    {"\xC3\xA1", 1, false},
    {"\xC5\x82", 1, false},
    {"\xE4\xB8\xAD", 1, false},
    {"\xF0\x9F\x98\x80", 2, false},
    {"\xF0\x9F\x91\x8D", 2, false},
};

const size_t kBar = sizeof kPieces / sizeof kPieces[0] - 1;

struct Case {
  std::string text, args, expect;
};

// A random message: text of GSM, extension-table and (in some cases) other characters, EMS
// items at character boundaries, and up to two formatting ranges that do not overlap.
Case MakeCase(std::mt19937& rng, int n, const std::string& dir) {
  Case c;
  bool wide = n % 3 == 1;
  int len = static_cast<int>(rng() % (n % 4 == 0 ? 320 : 120));
  std::vector<int> bounds = {0};
  for (int i = 0; i < len; ++i) {
    size_t k = rng() % (wide ? 18 : 13);
    // gammu turns '~' of UCS-2 text into its own escape (it writes U+0001 and reads "~~"):
    // wide texts use '|' there instead.
    const Piece& p = wide && k == 10 ? kPieces[kBar] : kPieces[k];
    c.text += p.utf8;
    bounds.push_back(bounds.back() + p.units);
  }
  auto at = [&] { return bounds[rng() % bounds.size()]; };
  std::string objects;
  auto add = [&](const std::string& o) { objects += (objects.empty() ? "" : ",") + o; };
  int items = static_cast<int>(rng() % 5);
  for (int i = 0; i < items; ++i) {
    int pos = at(), kind = static_cast<int>(rng() % 4);
    if (kind == 0) {
      int k = static_cast<int>(rng() % 14);  // 10-13 are sent modulo 10
      c.args += " --sound " + std::to_string(k) + "@" + std::to_string(pos);
      add("{\"kind\":\"sound\",\"number\":" + std::to_string(k % 10) +
          ",\"pos\":" + std::to_string(pos) + "}");
    } else if (kind == 1) {
      int k = static_cast<int>(rng() % 18);  // 15-17 are sent modulo 15
      c.args += " --animation " + std::to_string(k) + "@" + std::to_string(pos);
      add("{\"kind\":\"animation\",\"number\":" + std::to_string(k % 15) +
          ",\"pos\":" + std::to_string(pos) + "}");
    } else if (kind == 2) {
      static const int sizes[][3] = {{16, 16, 16}, {32, 32, 32}, {24, 5, 5}, {45, 30, 25}};
      const int* s = sizes[rng() % 4];  // 45 x 30 goes as 40 wide, 1024 / 40 = 25 rows
      std::string file = dir + "/p" + std::to_string(n) + "_" + std::to_string(i) + ".pbm";
      std::string pbm = "P1\n" + std::to_string(s[0]) + " " + std::to_string(s[1]) + "\n";
      for (int y = 0; y < s[1]; ++y, pbm += "\n")
        for (int x = 0; x < s[0]; ++x) pbm += (x * y + n) % 3 ? "0" : "1";
      WriteText(file, pbm);
      c.args += " --picture " + file + "@" + std::to_string(pos);
      int w8 = s[0] == s[1] ? s[0] : s[0] / 8 * 8;
      add("{\"kind\":\"picture\",\"size\":\"" + std::to_string(w8) + "x" + std::to_string(s[2]) +
          "\",\"pos\":" + std::to_string(pos) + "}");
    } else {
      std::string file = dir + "/m" + std::to_string(n) + "_" + std::to_string(i) + ".imy";
      WriteText(file, "BEGIN:IMELODY\r\nVERSION:1.2\r\nFORMAT:CLASS1.0\r\nMELODY:c2d" +
                          std::to_string(i) + "e2\r\nEND:IMELODY\r\n");
      c.args += " --melody " + file + "@" + std::to_string(pos);
      add("{\"kind\":\"melody\",\"pos\":" + std::to_string(pos) + "}");
    }
  }
  std::string formats;
  int from = 0;
  for (int i = 0; i < 2 && bounds.size() > 2; ++i) {
    std::vector<int> later;
    for (int b : bounds)
      if (b >= from) later.push_back(b);
    if (later.size() < 2) break;
    int a = later[rng() % (later.size() - 1)], b = a;
    while (b <= a) b = later[rng() % later.size()];
    if (b - a > 255) b = a;  // the length octet
    if (b == a) break;
    int mode = (i == 0 ? 0x10 : 0x64) | static_cast<int>(rng() % 3);  // alignment 0-2
    c.args +=
        " --format " + std::to_string(a) + "," + std::to_string(b - a) + "," + std::to_string(mode);
    formats += std::string(formats.empty() ? "" : ",") + "{\"start\":" + std::to_string(a) +
               ",\"length\":" + std::to_string(b - a) + ",\"mode\":" + std::to_string(mode) + "}";
    from = b;
  }
  c.expect = "{\"text\":" + JsonString(c.text) + ",\"objects\":[" + objects + "],\"formats\":[" +
             formats + "]}";
  return c;
}

TEST(SmsOracle, IndependentDecodersReadWhatEncodeWrites) {
  std::string why;
  if (!HaveOracles(&why)) GTEST_SKIP() << why;
  std::string dir = hs::test::MakeTempDir("sms-oracle");
  std::mt19937 rng(1729);
  for (int n = 0; n < 18; ++n) {
    Case c = MakeCase(rng, n, dir);
    WriteText(dir + "/text.txt", c.text + "\n");  // one trailing line break is dropped
    WriteText(dir + "/expect.json", c.expect);
    std::string out;
    int rc = hs::test::RunCommand(hs::test::CliPath() + " sms encode --json --to +123 --text - " +
                                      c.args + " < " + dir + "/text.txt | /usr/bin/python3 " +
                                      kOracle + " compare " + dir + "/expect.json",
                                  &out);
    EXPECT_EQ(rc, 0) << "case " << n << ": " << c.args << "\n" << out;
  }
  fs::remove_all(dir);
}

// Segments and what is left in the last one, as gammu.SMSCounter counts them.
TEST(SmsOracle, CountsMatchGammuSmsCounter) {
  if (!hs::test::HavePythonModule("gammu"))
    GTEST_SKIP() << "python3-gammu is not installed (/usr/bin/python3 -c 'import gammu')";
  std::string dir = hs::test::MakeTempDir("sms-count");
  std::mt19937 rng(7);
  std::vector<std::pair<std::string, bool>> texts;
  for (int len : {0, 1, 70, 152, 153, 154, 159, 160, 161, 200, 305, 306, 307, 459, 460}) {
    texts.push_back({std::string(static_cast<size_t>(len), 'x'), false});
    std::string mixed;  // escapes land on segment ends now and then
    for (int i = 0; i < len; ++i) mixed += kPieces[rng() % 13].utf8;
    texts.push_back({mixed, false});
  }
  for (int len : {1, 33, 34, 35, 66, 67, 68, 69, 70, 71, 100, 134, 135}) {
    std::string wide;
    for (int i = 0; i < len; ++i) wide += kPieces[13 + rng() % 5].utf8;
    texts.push_back({wide, true});
  }
  std::string list = "[";
  for (size_t i = 0; i < texts.size(); ++i)
    list += (i ? "," : "") + std::string("[") + JsonString(texts[i].first) + "," +
            (texts[i].second ? "true" : "false") + "]";
  WriteText(dir + "/texts.json", list + "]");
  std::string gammu;
  ASSERT_EQ(
      hs::test::RunCommand("/usr/bin/python3 " + kOracle + " count " + dir + "/texts.json", &gammu),
      0);
  std::string ours = "[";
  for (size_t i = 0; i < texts.size(); ++i) {
    WriteText(dir + "/t.txt", texts[i].first + "\n");
    std::string out;
    ASSERT_EQ(
        hs::test::RunCommand(hs::test::CliPath() + " sms count --json - < " + dir + "/t.txt", &out),
        0);
    size_t seg = out.find("\"segments\":");
    ASSERT_NE(seg, std::string::npos) << out;
    ours += std::string(i ? "," : "") + "{" + out.substr(seg, out.find('}') - seg) + "}";
  }
  ours += "]\n";
  EXPECT_EQ(ours, gammu);
  fs::remove_all(dir);
}

}  // namespace
