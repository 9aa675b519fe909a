#include <gtest/gtest.h>

#include <fstream>
#include <string>
#include <vector>

#include "handset.h"
#include "tests/TestUtil.h"

namespace {

struct Decoded {
  int lines = 0, refused = 0;
  std::vector<CSmContext*> messages;  // one per decoded line
  ~Decoded() {
    for (CSmContext* c : messages) c->Release();
  }
};

void DecodeFile(const std::string& path, Decoded* d) {
  std::ifstream in(path);
  for (std::string line; std::getline(in, line);) {
    if (line.empty() || line[0] == '#') continue;
    ++d->lines;
    CSmPdu pdu;
    CSmUserData ud;
    if (pdu.ParseHex(line.c_str(), nullptr) != 0 ||
        (pdu.m_bHasUd && pdu.DecodeUserData(&ud) != 0)) {
      ++d->refused;
      continue;
    }
    CSmContext* c = new CSmContext;
    ud.ToContent(c);
    d->messages.push_back(c);
  }
}

// Each sample line is decoded or refused; the EMS samples give their items (sizes from the
// element headers in the sample comments: a 72 x 14 variable picture, a CLASS1.0 iMelody, four
// 16 x 16 animation frames).
TEST(SmCorpus, SamplePdusGiveTheirItems) {
  HS_SKIP_WITHOUT_CORPUS();
  struct Expect {
    const char* file;
    int lines, refused;
  } expects[] = {{"gammu-at-sms-failing.txt", 10, 10},
                 {"gammu-at-sms.txt", 36, 1},
                 {"gnokii-testsuite.txt", 34, 1},
                 {"python-gsmmodem-test-pdu.txt", 20, 1}};
  int pictures = 0, melodies = 0, animations = 0;
  for (const Expect& e : expects) {
    Decoded d;
    DecodeFile(hs::test::CorpusDir() + "/pdu/" + e.file, &d);
    EXPECT_EQ(d.lines, e.lines) << e.file;
    EXPECT_EQ(d.refused, e.refused) << e.file;
    for (CSmContext* c : d.messages) {
      const CSmContent* m = c->GetContent();
      for (int i = 0; i < m->GetItemCount(SMOBJ_PICTURE); ++i) {
        CBmpWrp b;
        ASSERT_TRUE(static_cast<CSmPicture*>(m->GetItem(SMOBJ_PICTURE, i))->GetBitmap(&b));
        if (b.GetWidth() == 72) {
          EXPECT_EQ(b.GetHeight(), 14);
        }
        ++pictures;
      }
      if (CSmMedia* s = m->GetItem(SMOBJ_USER_MELODY, 0)) {
        EXPECT_TRUE(CSmSound::IsValidIMelodyFormat(static_cast<char*>(s->GetData())));
        ++melodies;
      }
      if (CSmMedia* a = m->GetItem(SMOBJ_ANIMATION, 0)) {
        EXPECT_EQ(a->GetLength(), 128);
        ++animations;
      }
    }
  }
  EXPECT_GE(pictures, 4);
  EXPECT_GE(melodies, 3);
  EXPECT_GE(animations, 2);
}

}  // namespace
