#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>
#include <map>
#include <sstream>
#include <string>

#include "handset/messaging.h"
#include "handset/platform/Results.h"
#include "messaging/mms/SmilScanner.h"
#include "tests/TestUtil.h"

namespace fs = std::filesystem;

namespace {

using Bytes = std::vector<uint8_t>;

std::string Helper(const char* name) {
  return std::string("/usr/bin/python3 ") + HANDSET_SOURCE_DIR + "/tests/messaging/mms/" + name;
}

std::string Quote(const std::string& s) {
  std::string q = "'";
  for (char c : s) q += c == '\'' ? std::string("'\\''") : std::string(1, c);
  return q + "'";
}

/// What the independent MMS dissector reads from a PDU file.
struct Dissected {
  bool malformed = true;
  std::string type, version, tid, from, subjectHex;
  std::vector<std::string> to, cc, bcc;
  struct Part {
    std::string type, id, location;
    size_t size = 0;
  };
  std::vector<Part> parts;
};

std::vector<std::string> Split(const std::string& line) {
  std::vector<std::string> f;
  std::stringstream ss(line);
  std::string item;
  while (std::getline(ss, item, '\t')) f.push_back(item);
  if (!line.empty() && line.back() == '\t') f.push_back("");
  return f;
}

/// What the dissector reads from each file (one tshark run for all of them).
std::map<std::string, Dissected> Dissect(const std::vector<std::string>& files) {
  std::string args, out;
  for (const std::string& f : files) args += " " + Quote(f);
  std::map<std::string, Dissected> result;
  if (hs::test::RunCommand(Helper("tshark_mms.py") + args, &out) != 0) return result;
  std::stringstream ss(out);
  std::string line;
  Dissected* d = nullptr;
  while (std::getline(ss, line)) {
    std::vector<std::string> f = Split(line);
    if (f.size() < 2) continue;
    const std::string& k = f[0];
    if (k == "file") d = &result[f[1]];
    if (!d) continue;
    if (k == "malformed") d->malformed = f[1] != "0";
    if (k == "type") d->type = f[1];
    if (k == "version") d->version = f[1];
    if (k == "tid") d->tid = f[1];
    if (k == "from") d->from = f[1];
    if (k == "to") d->to.push_back(f[1]);
    if (k == "cc") d->cc.push_back(f[1]);
    if (k == "bcc") d->bcc.push_back(f[1]);
    if (k == "subject_hex") d->subjectHex = f[1];
    if (k == "part" && f.size() >= 5)
      d->parts.push_back({f[1], f[2], f[3], static_cast<size_t>(std::stoul(f[4]))});
  }
  return result;
}

std::string HexOf(const std::string& s) {
  std::string h;
  char b[3];
  for (unsigned char c : s) std::snprintf(b, sizeof b, "%02x", c), h += b;
  return h;
}

std::string Lower(std::string s) {
  for (char& c : s) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  return s;
}

std::vector<std::string> List(const CStringList& l) {
  return std::vector<std::string>(l.begin(), l.end());
}

bool HaveTshark() {
  return hs::test::HaveTool("tshark");
}

#define HS_SKIP_WITHOUT_TSHARK()                                                          \
  do {                                                                                    \
    if (!HaveTshark()) GTEST_SKIP() << "tshark is not installed (Debian package tshark)"; \
  } while (0)

void ExpectSameMessage(const CMmsMessage& m, const Dissected& d, const std::string& file) {
  char type[8];
  std::snprintf(type, sizeof type, "0x%02x", m.m_nMessageType);
  EXPECT_EQ(d.type, type) << file;
  EXPECT_EQ(d.tid, m.m_sTransactionId) << file;
  EXPECT_EQ(d.from == "<insert address>" ? "" : d.from, m.m_sFrom) << file;
  EXPECT_EQ(d.to, List(m.m_lstTo)) << file;
  EXPECT_EQ(d.cc, List(m.m_lstCc)) << file;
  EXPECT_EQ(d.bcc, List(m.m_lstBcc)) << file;
  if (!m.m_sSubject.empty()) {
    EXPECT_NE(d.subjectHex.find(HexOf(m.m_sSubject)), std::string::npos) << file;
  }
  if (!m.m_bMultipart) return;
  ASSERT_EQ(d.parts.size(), static_cast<size_t>(m.GetBody().GetCount())) << file;
  for (size_t i = 0; i < d.parts.size(); ++i) {
    const CMmsMediaObj* obj = m.GetBody().GetAt(static_cast<int>(i));
    EXPECT_EQ(Lower(d.parts[i].type), Lower(obj->GetContentType())) << file << " part " << i;
    EXPECT_EQ(d.parts[i].size, obj->GetSize()) << file << " part " << i;
    EXPECT_EQ(d.parts[i].id, obj->GetContentID()) << file << " part " << i;
    EXPECT_EQ(d.parts[i].location, obj->GetExplicitContentLocation()) << file << " part " << i;
  }
}

// Every sample message reads as the dissector reads it; the ones it calls malformed are
// either refused here (the garbage) or were checked by hand (a notify response it does not
// expect a status in).
TEST(MmsOracle, SampleMessagesReadAsTsharkReadsThem) {
  HS_SKIP_WITHOUT_CORPUS();
  HS_SKIP_WITHOUT_TSHARK();
  int compared = 0;
  std::vector<std::string> files = hs::test::CorpusFiles("mms");
  std::map<std::string, Dissected> dissected = Dissect(files);
  for (const std::string& file : files) {
    const Dissected& d = dissected[file];
    Bytes pdu = hs::test::ReadBytes(file);
    CMmsMessage m;
    int rc = MmsDecodePdu(pdu.data(), pdu.size(), &m);
    if (file.find("garbage") != std::string::npos) {
      EXPECT_TRUE(d.malformed);
      EXPECT_EQ(rc, hs::mmspdu::kErrNotMms);
      continue;
    }
    ASSERT_EQ(rc, hs::mmspdu::kOk) << file;
    if (d.malformed) {
      EXPECT_NE(file.find("notifyresp"), std::string::npos) << file;
      continue;
    }
    ExpectSameMessage(m, d, file);
    ++compared;
  }
  EXPECT_GE(compared, 20);
}

std::string Cli(const std::string& args, int* status) {
  std::string out;
  *status = hs::test::RunCommand(hs::test::CliPath() + " " + args, &out);
  return out;
}

// What `mms encode` writes is read back whole: type, version, ids, recipients, subject and one
// entry per media file with the type its extension stands for (from the MIME registrations).
TEST(MmsOracle, EncodedPresentationsDecodeCleanly) {
  HS_SKIP_WITHOUT_CORPUS();
  HS_SKIP_WITHOUT_TSHARK();
  const char* const kTypes[][2] = {{"gif", "image/gif"},
                                   {"jpg", "image/jpeg"},
                                   {"txt", "text/plain"},
                                   {"smil", "application/smil"},
                                   {"smi", "application/smil"}};
  std::string tmp = hs::test::MakeTempDir("mms-oracle");
  const char* subjects[] = {"Match report",
                            "Gr\xC3\xBC\xC3\x9F"
                            "e aus K\xC3\xB6ln"};
  std::vector<fs::path> smils;
  std::vector<std::string> outs;
  for (const auto& entry : fs::recursive_directory_iterator(hs::test::CorpusDir() + "/smil")) {
    std::string ext = entry.path().extension().string();
    if (ext != ".smil" && ext != ".smi") continue;
    std::string out = tmp + "/" + std::to_string(smils.size()) + ".mms";
    const char* subject = subjects[smils.size() % 2];
    int status = 0;
    Cli("mms encode " + Quote(entry.path().string()) + " -o " + out +
            " --to '+49 170 1234567' --to a@b.example --cc 0301234 --subject " + Quote(subject),
        &status);
    ASSERT_EQ(status, 0) << entry.path();
    smils.push_back(entry.path());
    outs.push_back(out);
  }
  std::map<std::string, Dissected> dissected = Dissect(outs);
  for (size_t n = 0; n < smils.size(); ++n) {
    std::string smil = smils[n].string();
    const char* subject = subjects[n % 2];
    const Dissected& d = dissected[outs[n]];
    EXPECT_FALSE(d.malformed) << smil;
    EXPECT_EQ(d.type, "0x80") << smil;
    EXPECT_EQ(d.version, "1.2") << smil;
    EXPECT_FALSE(d.tid.empty()) << smil;
    EXPECT_EQ(d.from, "<insert address>") << smil;
    EXPECT_EQ(d.to, (std::vector<std::string>{"+491701234567/TYPE=PLMN", "a@b.example"})) << smil;
    EXPECT_EQ(d.cc, std::vector<std::string>{"0301234/TYPE=PLMN"}) << smil;
    EXPECT_NE(d.subjectHex.find(HexOf(subject)), std::string::npos) << smil;
    // The presentation first, then every media file that is there and not empty.
    std::vector<std::string> files = {smils[n].filename().string()};
    Bytes smilBytes = hs::test::ReadBytes(smil);
    std::string smilText(smilBytes.begin(), smilBytes.end());
    CString folder;
    CStringList refs;
    ASSERT_TRUE(GetSMILRelationFile(smil.c_str(), folder, refs));
    for (const CString& r : refs) {
      std::error_code ec;
      if (fs::file_size(fs::path(folder.c_str()) / r.c_str(), ec) > 0 && !ec) files.push_back(r);
    }
    ASSERT_EQ(d.parts.size(), files.size()) << smil;
    for (size_t i = 0; i < files.size(); ++i) {
      std::string type = "?";
      std::string fext = Lower(fs::path(files[i]).extension().string());
      for (const auto& t : kTypes)
        if (fext == std::string(".") + t[0]) type = t[1];
      EXPECT_EQ(d.parts[i].type, type) << smil << " " << files[i];
      EXPECT_EQ(d.parts[i].location, files[i]) << smil;
      // A part the presentation names by content id ("cid:1") is sent with that id.
      std::string stem = fs::path(files[i]).stem().string();
      bool byCid = smilText.find("cid:" + stem + "\"") != std::string::npos;
      EXPECT_EQ(d.parts[i].id, "<" + (byCid ? stem : files[i]) + ">") << smil;
      fs::path source = i == 0 ? smils[n] : fs::path(folder.c_str()) / files[i];
      EXPECT_EQ(d.parts[i].size, fs::file_size(source)) << smil << " " << files[i];
    }
  }
  EXPECT_GE(smils.size(), 10u);
  fs::remove_all(tmp);
}

// The tolerant scanner lists the same media as libxml2's recovering parser for every sample
// presentation, UTF-16 and malformed ones included.
TEST(SmilOracle, MediaListsAgreeWithLibxml2) {
  HS_SKIP_WITHOUT_CORPUS();
  if (!hs::test::HavePythonModule("lxml"))
    GTEST_SKIP() << "python3-lxml is not installed (/usr/bin/python3 -c 'import lxml')";
  std::string args;
  std::vector<std::string> files;
  for (const auto& entry : fs::recursive_directory_iterator(hs::test::CorpusDir() + "/smil")) {
    std::string ext = entry.path().extension().string();
    if (ext != ".smil" && ext != ".smi") continue;
    files.push_back(entry.path().string());
    args += " " + Quote(entry.path().string());
  }
  std::string out;
  ASSERT_EQ(hs::test::RunCommand(Helper("smil_lxml.py") + args, &out), 0);
  std::map<std::string, std::vector<std::string>> oracle;
  std::stringstream ss(out);
  std::string line, current;
  while (std::getline(ss, line)) {
    std::vector<std::string> f = Split(line);
    if (f.size() < 2) continue;
    if (f[0] == "file") current = f[1], oracle[current];
    if (f[0] == "ref") oracle[current].push_back(f[1]);
  }
  ASSERT_EQ(oracle.size(), files.size());
  for (const std::string& file : files) {
    Bytes b = hs::test::ReadBytes(file);
    EXPECT_EQ(hs::mms::SmilMediaReferences(b.data(), b.size()), oracle[file]) << file;
    EXPECT_EQ(GetMMSFileFormat(file.c_str()), MMS_FILE_SMIL) << file;
  }
}

}  // namespace
