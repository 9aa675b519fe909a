#include <gtest/gtest.h>

#include <fstream>
#include <memory>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "handset/melody.h"
#include "handset/platform/Results.h"
#include "melody/imelody/ImyText.h"
#include "tests/TestUtil.h"

namespace {

std::string Text(const std::string& path) {
  std::vector<uint8_t> b = hs::test::ReadBytes(path);
  return std::string(b.begin(), b.end());
}

std::unique_ptr<CMidFileElement> ToMidi(const std::string& text, int* err) {
  CiMelody2Mid conv;
  return std::unique_ptr<CMidFileElement>(conv.DoConvert(text, *err));
}

TEST(iMelodyCorpus, SingleTrackMidiSurvivesTheRoundTrip) {
  HS_SKIP_WITHOUT_CORPUS();
  int checked = 0;
  for (const std::string& path : hs::test::CorpusFiles("mid")) {
    CMidFileElement mid;
    if (mid.LoadMidiFile(path.c_str()) != 0 || mid.GetTrackNum() != 1) continue;
    CString text;
    ASSERT_EQ(CMid2iMelody().DoConvertMidElelemt2Str(&mid, text), hs::mid2imy::kOk) << path;
    // The track's single line as (key or 0 for a rest, duration code), keys folded into range;
    // 96 is written with the default octave and comes back as 60.
    std::vector<std::pair<int, int>> want, got;
    NoteIDInfo id{};
    CMidTrackElement* t = mid.GetTrackByIndex(0);
    for (int more = t->GetFirstIDs(&id); more == 0; more = t->GetNextIDs(&id)) {
      int key = id.bRest || !id.byVelocity ? 0 : hs::imy::FoldKeyIntoRange(id.byNoteValue);
      want.emplace_back(key == 96 ? 60 : key, id.nDurationID);
    }
    int err = -99;
    auto back = ToMidi(text, &err);
    ASSERT_TRUE(back) << path << " error " << err << "\n" << text;
    for (CMidNoteElement* n = back->GetTrackByIndex(0)->GetFirstNote(); n; n = n->GetNextElement())
      got.emplace_back(n->GetNoteValue(), CMidTrackElement::GetDurationID(n->GetDuration()));
    // A modifier in the melody's last position is not read, so a final dotted value comes back
    // undotted.
    if (!want.empty() && want.back().second % 2 == 1) --want.back().second;
    EXPECT_EQ(got, want) << path << "\n" << text;
    ++checked;
  }
  EXPECT_GT(checked, 5);
}

TEST(iMelodyCorpus, EveryFileConvertsToMidiThatMidoReads) {
  HS_SKIP_WITHOUT_CORPUS();
  std::string dir = hs::test::MakeTempDir("imy2mid"), files;
  for (const std::string& path : hs::test::CorpusFiles("imy")) {
    std::string text = Text(path);
    int err = -99;
    auto mid = ToMidi(text, &err);
    if (text.find("BEGIN:IMELODY\r\n") != 0) {  // LF-only lines fail the header check
      EXPECT_EQ(err, hs::imy2mid::kErrHeader) << path;
      continue;
    }
    ASSERT_TRUE(mid) << path << " error " << err;
    EXPECT_GT(mid->GetTrackByIndex(0)->GetNoteCount(), 5u) << path;
    unsigned long size = 0;
    const unsigned char* bytes = mid->GetMidiFileBuf(0, &size);
    ASSERT_TRUE(bytes) << path;
    std::string out = dir + "/" + std::to_string(files.size()) + ".mid";
    std::ofstream(out, std::ios::binary).write(reinterpret_cast<const char*>(bytes), size);
    files += " " + out;
  }
  ASSERT_FALSE(files.empty());
  if (!hs::test::HavePythonModule("mido")) GTEST_SKIP() << "python3-mido not installed";
  std::string out;
  EXPECT_EQ(hs::test::RunCommand("/usr/bin/python3 -c 'import sys, mido\nfor p in sys.argv[1:]:\n"
                                 "  assert len(mido.MidiFile(p).tracks) == 1, p' " +
                                     files + " 2>&1",
                                 &out),
            0)
      << out;
}

// Prefixes and random edits of real ringtones: every outcome must be a clean result.
TEST(iMelodyCorpus, TruncatedAndMutatedTextsFailCleanly) {
  HS_SKIP_WITHOUT_CORPUS();
  const char kBytes[] = "()@V+-.:;*#&rlvb0123456789cdefgab\r\n\x80\xff";
  std::mt19937 gen(42);
  int converted = 0, runs = 0, err = 0;
  for (const std::string& path : hs::test::CorpusFiles("imy")) {
    const std::string text = Text(path);
    for (size_t n = 0; n <= text.size(); ++n) ToMidi(text.substr(0, n), &err);
    for (int k = 0; k < 2000; ++k, ++runs) {
      std::string m = text;
      for (int edits = 1 + int(gen() % 4); edits > 0 && !m.empty(); --edits) {
        size_t at = gen() % m.size();
        char c = gen() % 4 ? kBytes[gen() % (sizeof(kBytes) - 1)] : char(gen());
        int op = int(gen() % 3);
        if (op == 0) m[at] = c;
        if (op == 1) m.insert(at, 1, c);
        if (op == 2) m.erase(at, 1);
      }
      auto mid = ToMidi(m, &err);
      if (!mid) {
        EXPECT_TRUE(err == hs::imy2mid::kErrHeader || err == hs::imy2mid::kErrWord ||
                    err == hs::imy2mid::kErrTooLong)
            << err << "\n"
            << m;
      } else if (++converted % 64 == 0) {
        unsigned long size = 0;
        EXPECT_TRUE(mid->GetMidiFileBuf(0, &size)) << m;
      }
    }
  }
  EXPECT_GT(converted, runs / 10);
}

}  // namespace
