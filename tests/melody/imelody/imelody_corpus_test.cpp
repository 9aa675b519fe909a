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

using KeyCode = std::pair<int, int>;  // key (0 for a rest) and duration code

std::string Text(const std::string& path) {
  std::vector<uint8_t> b = hs::test::ReadBytes(path);
  return std::string(b.begin(), b.end());
}

std::string Base(const std::string& path) {
  return path.substr(path.find_last_of('/') + 1);
}

TEST(iMelodyCorpus, SingleTrackMidiSurvivesTheRoundTrip) {
  HS_SKIP_WITHOUT_CORPUS();
  int checked = 0;
  for (const std::string& path : hs::test::CorpusFiles("mid")) {
    CMidFileElement mid;
    if (mid.LoadMidiFile(path.c_str()) != 0 || mid.GetTrackNum() != 1) continue;
    CMid2iMelody toImy;
    CString text;
    ASSERT_EQ(toImy.DoConvertMidElelemt2Str(&mid, text), hs::mid2imy::kOk) << path;
    // What the melody should hold: the track's single line, keys folded into iMelody's range.
    std::vector<KeyCode> want;
    NoteIDInfo id{};
    CMidTrackElement* t = mid.GetTrackByIndex(0);
    for (int more = t->GetFirstIDs(&id); more == 0; more = t->GetNextIDs(&id)) {
      bool rest = id.bRest || id.byVelocity == 0;
      want.emplace_back(rest ? 0 : hs::imy::FoldKeyIntoRange(id.byNoteValue), id.nDurationID);
    }
    CiMelody2Mid toMid;
    int err = -99;
    std::unique_ptr<CMidFileElement> back(toMid.DoConvert(text, err));
    ASSERT_TRUE(back) << Base(path) << " error " << err << "\n" << text;
    std::vector<KeyCode> got;
    for (CMidNoteElement* n = back->GetTrackByIndex(0)->GetFirstNote(); n; n = n->GetNextElement())
      got.emplace_back(n->GetNoteValue(), CMidTrackElement::GetDurationID(n->GetDuration()));
    EXPECT_EQ(got, want) << Base(path) << "\n" << text;
    ++checked;
  }
  EXPECT_GT(checked, 5);
}

TEST(iMelodyCorpus, EveryFileConvertsToMidiThatMidoReads) {
  HS_SKIP_WITHOUT_CORPUS();
  std::string dir = hs::test::MakeTempDir("imy2mid");
  std::vector<std::string> written;
  for (const std::string& path : hs::test::CorpusFiles("imy")) {
    std::string text = Text(path);
    CiMelody2Mid conv;
    int err = -99;
    std::unique_ptr<CMidFileElement> mid(conv.DoConvert(text, err));
    if (text.find("BEGIN:IMELODY\r\n") != 0) {
      EXPECT_EQ(err, hs::imy2mid::kErrHeader) << Base(path);  // LF-only lines
      continue;
    }
    ASSERT_TRUE(mid) << Base(path) << " error " << err;
    ASSERT_EQ(mid->GetTrackNum(), 1u);
    EXPECT_GT(mid->GetTrackByIndex(0)->GetNoteCount(), 5u) << Base(path);
    unsigned long size = 0;
    const unsigned char* bytes = mid->GetMidiFileBuf(0, &size);
    ASSERT_TRUE(bytes && size > 22) << Base(path);
    std::string out = dir + "/" + Base(path) + ".mid";
    std::ofstream(out, std::ios::binary).write(reinterpret_cast<const char*>(bytes), size);
    written.push_back(out);
  }
  ASSERT_FALSE(written.empty());
  if (!hs::test::HavePythonModule("mido")) GTEST_SKIP() << "python3-mido not installed";
  std::string cmd =
      "/usr/bin/python3 -c 'import sys, mido\nfor p in sys.argv[1:]:\n"
      "  m = mido.MidiFile(p)\n  n = sum(1 for t in m.tracks for e in t "
      "if e.type == \"note_on\")\n  print(p, len(m.tracks), n)' ";
  for (const std::string& w : written) cmd += " " + w;
  std::string out;
  ASSERT_EQ(hs::test::RunCommand(cmd + " 2>&1", &out), 0) << out;
  EXPECT_NE(out.find(" 1 "), std::string::npos) << out;
}

// Prefixes and random mutations of real ringtones: every outcome must be a clean result.
TEST(iMelodyCorpus, TruncatedAndMutatedTextsFailCleanly) {
  HS_SKIP_WITHOUT_CORPUS();
  const char kAlphabet[] = "()@V+-.:;*#&rlvb0123456789cdefgab\r\n\x80\xff";
  std::mt19937 gen(42);
  int converted = 0, runs = 0;
  for (const std::string& path : hs::test::CorpusFiles("imy")) {
    const std::string text = Text(path);
    for (size_t n = 0; n <= text.size(); ++n) {
      CiMelody2Mid conv;
      int err = -99;
      delete conv.DoConvert(text.substr(0, n), err);
    }
    for (int k = 0; k < 2000; ++k) {
      std::string m = text;
      for (int edits = 1 + static_cast<int>(gen() % 4); edits > 0 && !m.empty(); --edits) {
        size_t at = gen() % m.size();
        char c = (gen() % 4 == 0) ? static_cast<char>(gen())
                                  : kAlphabet[gen() % (sizeof(kAlphabet) - 1)];
        switch (gen() % 3) {
          case 0:
            m[at] = c;
            break;
          case 1:
            m.insert(at, 1, c);
            break;
          default:
            m.erase(at, 1);
        }
      }
      CiMelody2Mid conv;
      int err = -99;
      std::unique_ptr<CMidFileElement> mid(conv.DoConvert(m, err));
      ++runs;
      if (!mid) {
        EXPECT_TRUE(err == hs::imy2mid::kErrHeader || err == hs::imy2mid::kErrWord ||
                    err == hs::imy2mid::kErrTooLong)
            << err << "\n"
            << m;
        continue;
      }
      EXPECT_EQ(err, hs::imy2mid::kOk);
      ++converted;
      if (converted % 64 == 0) {
        unsigned long size = 0;
        EXPECT_TRUE(mid->GetMidiFileBuf(0, &size)) << m;
      }
    }
  }
  EXPECT_GT(converted, runs / 10);
}

}  // namespace
