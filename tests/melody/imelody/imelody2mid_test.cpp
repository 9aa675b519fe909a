#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "handset/melody.h"
#include "handset/platform/Results.h"

namespace {

std::string Imy(const std::string& melody, const std::string& header = "") {
  return "BEGIN:IMELODY\r\nVERSION:1.2\r\nFORMAT:CLASS1.0\r\n" + header + "MELODY:" + melody +
         "\r\nEND:IMELODY\r\n";
}

// Converts `text`; each note as {start, length, key, velocity}; `error` receives the result.
std::vector<std::vector<int>> Notes(const std::string& text, int* error = nullptr,
                                    CiMelody2Mid* conv = nullptr) {
  CiMelody2Mid local;
  int err = -99;
  std::unique_ptr<CMidFileElement> f((conv ? conv : &local)->DoConvert(text, err));
  if (error) *error = err;
  std::vector<std::vector<int>> out;
  if (f && f->GetTrackNum() == 1)
    for (CMidNoteElement* n = f->GetTrackByIndex(0)->GetFirstNote(); n; n = n->GetNextElement())
      out.push_back(
          {int(n->GetStartTime()), int(n->GetDuration()), n->GetNoteValue(), n->GetVelocity()});
  return out;
}

std::vector<int> Column(const std::vector<std::vector<int>>& notes, int col) {
  std::vector<int> out;
  for (const auto& n : notes) out.push_back(n[col]);
  return out;
}
std::vector<int> Keys(const std::string& text) {
  return Column(Notes(text), 2);
}
int ErrorOf(const std::string& text) {
  int err = -99;
  Notes(text, &err);
  return err;
}

TEST(iMelody2Mid, TempoTenfoldSpacingPitchesAndLengths) {
  CiMelody2Mid conv;
  int err = -99;
  std::unique_ptr<CMidFileElement> f(conv.DoConvert(Imy("c2d2", "BEAT:90\r\n"), err));
  ASSERT_TRUE(f);
  EXPECT_EQ(f->GetTempo(), 90);
  // A quarter lasts 120 ticks at division 120 and the next note starts ten times later.
  EXPECT_EQ(Notes(Imy("c2d2")),
            (std::vector<std::vector<int>>{{0, 120, 48, 92}, {1200, 120, 50, 92}}));
  // Octave prefixes, accidentals, modifiers, rests (silent key 0) and letters outside c-b (as c).
  auto n = Notes(Imy("*5#f3.*3&c2*9e1b0;c5;d4:D2r2x0*7#b2c2."));
  EXPECT_EQ(Column(n, 2), (std::vector<int>{66, 35, 52, 59, 48, 50, 48, 0, 48, 96, 48}));
  // The final "." sits in the last position, where no modifier is read.
  EXPECT_EQ(Column(n, 1), (std::vector<int>{90, 120, 240, 360, 15, 45, 120, 120, 480, 120, 120}));
  EXPECT_EQ(n[7][3], 0);
  EXPECT_EQ(n[10][0], (41 + 80 + 160 + 161 + 10 + 21 + 80 + 80 + 320 + 80) * 15);
  EXPECT_EQ(Keys(Imy("c2d")), (std::vector<int>{48}));  // the last character starts nothing
}

TEST(iMelody2Mid, RepeatBlocksAndVolume) {
  EXPECT_EQ(Keys(Imy("(c3@3)")), (std::vector<int>{48, 48, 48}));
  EXPECT_EQ(Keys(Imy("(c3d3@1)(c3@0)e3")), (std::vector<int>{48, 50, 48, 52}));
  EXPECT_EQ(Keys(Imy("(c3e3@2)(d3")), (std::vector<int>{48, 52, 48, 52, 50}));  // "(" unclosed
  EXPECT_EQ(Keys(Imy("a2@3e3")), (std::vector<int>{57, 52}));  // "@" outside a block
  EXPECT_EQ(Keys(Imy("(c2@12)")).size(),
            1u);  // one digit: "@1" adds nothing, the rest ends the block
  // V- after "@" lowers the level before each extra pass; "V+" is no change inside the melody;
  // "V99" is out of range and resets to 7.
  EXPECT_EQ(Column(Notes(Imy("(c2@3V-)V3d2V12e2V+f2V99g2")), 3),
            (std::vector<int>{92, 88, 84, 75, 113, 113, 92}));
  CiMelody2Mid conv;
  Notes(Imy("c2c2", "NAME:Tune\r\nCOMPOSER:Me\r\nSTYLE:S2\r\nVOLUME:V20\r\n"), nullptr, &conv);
  EXPECT_EQ(conv.GetName() + conv.GetComposer(), "TuneMe");
  EXPECT_EQ(conv.GetStyle(), 2);
  EXPECT_EQ(conv.GetVolumeLvl(), 7);
  auto n = Notes(Imy("V+c2V0d2c2", "STYLE:S5\r\nVOLUME:V15\r\n"), nullptr, &conv);
  EXPECT_EQ(conv.GetStyle(), 0);
  EXPECT_EQ(Column(n, 3), (std::vector<int>{126, 0, 0}));
}

TEST(iMelody2Mid, HeaderAndWordRules) {
  for (const std::string& bad :
       {std::string(), " " + Imy("c2"), std::string("BEGIN:IMELODY\r\nFORMAT:X\r\nMELODY:c2\r\n"),
        std::string("BEGIN:IMELODY\nVERSION:1\nFORMAT:X\nMELODY:c2\n")})
    EXPECT_EQ(ErrorOf(bad), hs::imy2mid::kErrHeader) << bad;
  // Without the END line the text is cut to 12 characters: it converts, without notes.
  int err = -99;
  EXPECT_TRUE(Notes("BEGIN:IMELODY\r\nVERSION:1\r\nFORMAT:X\r\nMELODY:c2d2\r\n", &err).empty());
  EXPECT_EQ(err, hs::imy2mid::kOk);
  EXPECT_EQ(Keys(Imy("ledonc2vibeonbackond2e2")), (std::vector<int>{48, 50, 52}));
  EXPECT_EQ(Keys(Imy("backoffc2vibeoffd2b2")), (std::vector<int>{48, 50, 59}));
  // The off-word is looked for first, anywhere ahead, so a later "ledoff" spoils a "ledon".
  for (const char* bad : {"ledonc2ledoffd2", "backonc2backoffd2", "lc2", "c2vibe", "backup2"})
    EXPECT_EQ(ErrorOf(Imy(bad)), hs::imy2mid::kErrWord) << bad;
}

TEST(iMelody2Mid, ExpansionIsCapped) {
  std::string many, flat;
  for (int i = 0; i < 1200; ++i) many += "(c2d2@9)";  // 21,600 notes from 9.6 KB of text
  for (uint32_t i = 0; i < CiMelody2Mid::kMaxNotes; ++i) flat += "c2";
  for (const std::string& big : {many, flat + "c2c2"})
    EXPECT_EQ(ErrorOf(Imy(big)), hs::imy2mid::kErrTooLong) << big.substr(0, 30);
  EXPECT_EQ(Keys(Imy(flat)).size(), CiMelody2Mid::kMaxNotes);
}

}  // namespace
