#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "handset/pim/IEVbkm.h"
#include "handset/pim/OemPanaVbkm.h"
#include "handset/pim/QP.h"
#include "handset/pim/VObjLite.h"
#include "tests/TestUtil.h"

namespace {

extern const _FormalDef kCard[];
const _FormalDef kCard[] = {
    {"BEGIN:VCARD", "", "", nullptr, VOBJ_ROW_MANDATORY},
    {"VERSION", ":", "<version>", nullptr, VOBJ_ROW_MANDATORY},
    {"N", ":", "<name>", nullptr, VOBJ_ROW_OPTIONAL},
    {"TEL", ":", "", nullptr, VOBJ_ROW_OPTIONAL},
    {"PHOTO", ":", "", nullptr, VOBJ_ROW_OPTIONAL},
    {"END:VCARD", "", "", nullptr, VOBJ_ROW_CLOSING},
    {"", "", "", kCard, VOBJ_ROW_OPTIONAL},  // vCards nested in vCards
    {nullptr, nullptr, nullptr, nullptr, VOBJ_ROW_OPTIONAL},
};

const _FormalDef kEvent[] = {
    {"BEGIN:VEVENT", "", "", nullptr, VOBJ_ROW_MANDATORY},
    {"DTSTART", ":", "<start>", nullptr, VOBJ_ROW_OPTIONAL},
    {"SUMMARY", ":", "", nullptr, VOBJ_ROW_OPTIONAL},
    {"END:VEVENT", "", "", nullptr, VOBJ_ROW_CLOSING},
    {nullptr, nullptr, nullptr, nullptr, VOBJ_ROW_OPTIONAL},
};
const _FormalDef kCalendar[] = {
    {"BEGIN:VCALENDAR", "", "", nullptr, VOBJ_ROW_MANDATORY},
    {"VERSION", ":", "<version>", nullptr, VOBJ_ROW_OPTIONAL},
    {"", "", "", kEvent, VOBJ_ROW_OPTIONAL},
    {"END:VCALENDAR", "", "", nullptr, VOBJ_ROW_CLOSING},
    {nullptr, nullptr, nullptr, nullptr, VOBJ_ROW_OPTIONAL},
};

class CAnyObj : public CVObjLite {
 public:
  explicit CAnyObj(const _FormalDef* f) : CVObjLite(f) {}
  bool CreateEmptyProperties() override { return false; }

 protected:
  void _CreateEmptySample(CStringList&) override {}
};

// Every prefix of the first 512 bytes, every seventh up to 2 KB, then 8 more spread over the rest:
// enough to cut each construct at every byte without a quadratic run over the largest files.
std::vector<size_t> PrefixLengths(size_t size) {
  std::vector<size_t> lens;
  for (size_t n = 0; n <= size && n <= 512; ++n) lens.push_back(n);
  for (size_t n = 519; n <= size && n <= 2048; n += 7) lens.push_back(n);
  if (size > 2048) {
    size_t step = (size - 2048) / 8 + 1;
    for (size_t n = 2048 + step; n < size; n += step) lens.push_back(n);
  }
  lens.push_back(size);
  return lens;
}

void ParseEveryPrefix(const std::string& path, const _FormalDef* formal, bool shortcut) {
  auto bytes = hs::test::ReadBytes(path);
  std::string whole(bytes.begin(), bytes.end());
  for (size_t n : PrefixLengths(whole.size())) {
    std::string text = whole.substr(0, n);
    if (formal) {
      CAnyObj o(formal);
      std::string copy = text;
      o.Parsing(&copy[0], nullptr);
      char* buf = nullptr;
      int size = 0;
      o.Composing(buf, size);
      delete[] buf;
    }
    CVbkm v;
    std::string copy = text;
    v.Parsing(&copy[0], nullptr);
    CQP qp;
    qp.Decode(text.c_str());
    if (shortcut && n % 11 == 0) {
      CIEVbkm ie;
      CString name = "prefix.url";
      EXPECT_TRUE(ie.Parsing(&copy[0], &name)) << path << " at " << n;
    }
  }
}

TEST(VObjCorpus, EveryPrefixOfEveryFileParsesCleanly) {
  HS_SKIP_WITHOUT_CORPUS();
  size_t files = 0;
  for (const char* kind : {"vcf", "vcs", "url", "vbm"}) {
    for (const std::string& path : hs::test::CorpusFiles(kind)) {
      std::string k = kind;
      ParseEveryPrefix(path, k == "vcf" ? kCard : k == "vcs" ? kCalendar : nullptr, k == "url");
      ++files;
    }
  }
  EXPECT_GT(files, 0u);
}

// Whole files: the single-card ones read without a missing mandatory line.
TEST(VObjCorpus, WholeVCardsFindTheirMandatoryLines) {
  HS_SKIP_WITHOUT_CORPUS();
  for (const std::string& path : hs::test::CorpusFiles("vcf")) {
    auto bytes = hs::test::ReadBytes(path);
    std::string text(bytes.begin(), bytes.end());
    if (text.compare(0, 11, "BEGIN:VCARD") != 0 || path.find("malformed") != std::string::npos)
      continue;
    CAnyObj o(kCard);
    o.Parsing(&text[0], nullptr);
    EXPECT_EQ(o.GetErrorCode(), 0) << path;
    EXPECT_NE(o.GetPropTableValue("VERSION"), nullptr) << path;
  }
}

}  // namespace
