#include <gtest/gtest.h>

#include <chrono>
#include <memory>
#include <string>
#include <vector>

#include "handset/melody.h"
#include "handset/platform/Results.h"

namespace {

struct Note {
  uint32_t start, duration;
  int key, velocity;
};

std::string Imy(const std::string& melody, const std::string& header = "") {
  return "BEGIN:IMELODY\r\nVERSION:1.2\r\nFORMAT:CLASS1.0\r\n" + header + "MELODY:" + melody +
         "\r\nEND:IMELODY\r\n";
}

std::vector<Note> Notes(const CMidFileElement& file) {
  std::vector<Note> out;
  CMidTrackElement* t = file.GetTrackByIndex(0);
  for (CMidNoteElement* n = t ? t->GetFirstNote() : nullptr; n; n = n->GetNextElement())
    out.push_back({n->GetStartTime(), n->GetDuration(), n->GetNoteValue(), n->GetVelocity()});
  return out;
}

std::vector<int> Keys(const std::string& text, int* error = nullptr) {
  CiMelody2Mid conv;
  int err = -99;
  std::unique_ptr<CMidFileElement> f(conv.DoConvert(text, err));
  if (error) *error = err;
  std::vector<int> keys;
  if (f)
    for (const Note& n : Notes(*f)) keys.push_back(n.key);
  return keys;
}

int ErrorOf(const std::string& text) {
  int err = -99;
  Keys(text, &err);
  return err;
}

TEST(iMelody2Mid, SimpleMelodyGivesOneTrackTempoAndTenfoldSpacing) {
  CiMelody2Mid conv;
  int err = -99;
  std::unique_ptr<CMidFileElement> f(conv.DoConvert(Imy("c2d2", "BEAT:90\r\n"), err));
  ASSERT_TRUE(f);
  EXPECT_EQ(err, hs::imy2mid::kOk);
  EXPECT_EQ(f->GetTrackNum(), 1u);
  EXPECT_EQ(f->GetTempo(), 90);
  std::vector<Note> n = Notes(*f);
  ASSERT_EQ(n.size(), 2u);
  // A quarter lasts 120 ticks at division 120, and the next note starts ten times later.
  EXPECT_EQ(n[0].start, 0u);
  EXPECT_EQ(n[0].duration, 120u);
  EXPECT_EQ(n[0].key, 48);
  EXPECT_EQ(n[0].velocity, 92);  // default level 7
  EXPECT_EQ(n[1].start, 1200u);
  EXPECT_EQ(n[1].key, 50);
}

TEST(iMelody2Mid, NoteTokensPitchAndDuration) {
  CiMelody2Mid conv;
  int err = -99;
  // Each token is followed by another so its modifier is not the melody's last character.
  std::unique_ptr<CMidFileElement> f(
      conv.DoConvert(Imy("*5#f3.*3&c2*9e1b0;c5;d4:D2r2x0*7#b2c2."), err));
  ASSERT_TRUE(f) << err;
  std::vector<Note> n = Notes(*f);
  ASSERT_EQ(n.size(), 11u);
  EXPECT_EQ(n[0].key, 66);
  EXPECT_EQ(n[0].duration, 90u);  // code 41
  EXPECT_EQ(n[1].key, 35);
  EXPECT_EQ(n[2].key, 52);         // octave 9 reads as octave 4
  EXPECT_EQ(n[2].duration, 240u);  // 160
  EXPECT_EQ(n[3].key, 59);
  EXPECT_EQ(n[3].duration, 360u);  // whole ";" = dotted half 161
  EXPECT_EQ(n[4].duration, 15u);   // 10 stays 10 under ";"
  EXPECT_EQ(n[5].duration, 45u);   // ":" dots like "."
  EXPECT_EQ(n[6].key, 48);         // any other letter is c
  EXPECT_EQ(n[7].key, 0);          // a rest is a silent note of code 80
  EXPECT_EQ(n[7].velocity, 0);
  EXPECT_EQ(n[7].duration, 120u);
  EXPECT_EQ(n[8].key, 48);  // x0: whole c
  EXPECT_EQ(n[9].key, 96);
  EXPECT_EQ(n[10].key, 48);
  // Start times advance by the codes, read back in thirty-second units.
  EXPECT_EQ(n[9].start, (41u + 80 + 160 + 161 + 10 + 21 + 80 + 80 + 320) * 15);
  // The last character never starts a token (a bare letter adds nothing), but a final dot counts.
  EXPECT_EQ(Keys(Imy("c2d")), (std::vector<int>{48}));
  std::unique_ptr<CMidFileElement> g(conv.DoConvert(Imy("c2."), err));
  ASSERT_TRUE(g);
  EXPECT_EQ(Notes(*g)[0].duration, 180u);
}

TEST(iMelody2Mid, RepeatBlocksAndVolume) {
  EXPECT_EQ(Keys(Imy("(c3@3)")), (std::vector<int>{48, 48, 48}));
  EXPECT_EQ(Keys(Imy("(c3d3@1)e3")), (std::vector<int>{48, 50, 52}));
  EXPECT_EQ(Keys(Imy("(c3@0)e3")), (std::vector<int>{48, 52}));
  EXPECT_EQ(Keys(Imy("(c3e3@2)(d3")), (std::vector<int>{48, 52, 48, 52, 50}));  // "(" unclosed
  EXPECT_EQ(Keys(Imy("a2@3e3")), (std::vector<int>{57, 52}));  // "@" outside a block
  EXPECT_EQ(Keys(Imy("(c2@12)")).size(), 12u);

  CiMelody2Mid conv;
  int err = -99;
  // V- after "@" lowers the level before each extra pass: 7, 6, 5.
  std::unique_ptr<CMidFileElement> f(conv.DoConvert(Imy("(c2@3V-)V3d2V12e2V+f2V99g2"), err));
  ASSERT_TRUE(f) << err;
  std::vector<int> vel;
  for (const Note& n : Notes(*f)) vel.push_back(n.velocity);
  // "V+" is no volume change inside the melody; "V99" is out of range and resets to 7.
  EXPECT_EQ(vel, (std::vector<int>{92, 88, 84, 75, 113, 113, 92}));

  std::unique_ptr<CMidFileElement> g(
      conv.DoConvert(Imy("c2c2", "NAME:Tune\r\nCOMPOSER:Me\r\nSTYLE:S2\r\nVOLUME:V20\r\n"), err));
  ASSERT_TRUE(g);
  EXPECT_EQ(conv.GetName(), "Tune");
  EXPECT_EQ(conv.GetComposer(), "Me");
  EXPECT_EQ(conv.GetStyle(), 2);
  EXPECT_EQ(conv.GetVolumeLvl(), 7);
  std::unique_ptr<CMidFileElement> h(
      conv.DoConvert(Imy("V+c2V0d2c2", "STYLE:S5\r\nVOLUME:V15\r\n"), err));
  ASSERT_TRUE(h);
  EXPECT_EQ(conv.GetStyle(), 0);
  EXPECT_EQ(Notes(*h)[0].velocity, 126);  // V+ at 15 stays 15
  EXPECT_EQ(Notes(*h)[1].velocity, 0);    // level 0 is silent
}

TEST(iMelody2Mid, HeaderAndWordFailures) {
  EXPECT_EQ(ErrorOf(""), hs::imy2mid::kErrHeader);
  EXPECT_EQ(ErrorOf("BEGIN:IMELODY\nVERSION:1.2\nFORMAT:CLASS1.0\nMELODY:c2\nEND:IMELODY\n"),
            hs::imy2mid::kErrHeader);
  EXPECT_EQ(ErrorOf("BEGIN:IMELODY\r\nFORMAT:CLASS1.0\r\nMELODY:c2\r\nEND:IMELODY\r\n"),
            hs::imy2mid::kErrHeader);
  EXPECT_EQ(ErrorOf(" " + Imy("c2")), hs::imy2mid::kErrHeader);
  // Without the END line the text is cut to 12 characters: it converts, without notes.
  int err = -99;
  EXPECT_TRUE(
      Keys("BEGIN:IMELODY\r\nVERSION:1.2\r\nFORMAT:CLASS1.0\r\nMELODY:c2d2e2\r\n", &err).empty());
  EXPECT_EQ(err, hs::imy2mid::kOk);

  EXPECT_EQ(Keys(Imy("ledonc2vibeonbackond2e2")), (std::vector<int>{48, 50, 52}));
  EXPECT_EQ(Keys(Imy("backoffc2vibeoffd2")), (std::vector<int>{48, 50}));
  EXPECT_EQ(ErrorOf(Imy("backonc2backoffd2")), hs::imy2mid::kErrWord);
  EXPECT_EQ(Keys(Imy("b2ledoffc2")), (std::vector<int>{59, 48}));
  EXPECT_EQ(ErrorOf(Imy("ledonc2ledoffd2")), hs::imy2mid::kErrWord);  // off-word found first
  EXPECT_EQ(ErrorOf(Imy("lc2")), hs::imy2mid::kErrWord);
  EXPECT_EQ(ErrorOf(Imy("c2vibe")), hs::imy2mid::kErrWord);
  EXPECT_EQ(ErrorOf(Imy("backup2")), hs::imy2mid::kErrWord);
}

TEST(iMelody2Mid, ExpansionIsCappedQuickly) {
  auto start = std::chrono::steady_clock::now();
  EXPECT_EQ(ErrorOf(Imy("(c2d2e2f2@999999999)")), hs::imy2mid::kErrTooLong);
  EXPECT_EQ(ErrorOf(Imy("(@999999999999999999999)c2")), hs::imy2mid::kErrTooLong);
  std::string many;
  for (int i = 0; i < 300; ++i) many += "(c2d2@99)";
  EXPECT_EQ(ErrorOf(Imy(many)), hs::imy2mid::kErrTooLong);
  std::string flat(2 * (CiMelody2Mid::kMaxNotes + 1), '2');
  for (size_t i = 0; i < flat.size(); i += 2) flat[i] = 'c';
  EXPECT_EQ(ErrorOf(Imy(flat + "c2")), hs::imy2mid::kErrTooLong);
  EXPECT_EQ(Keys(Imy(flat.substr(4) + "c2")).size(), CiMelody2Mid::kMaxNotes);
  double ms =
      std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start).count();
  EXPECT_LT(ms, 3000.0);
}

}  // namespace
