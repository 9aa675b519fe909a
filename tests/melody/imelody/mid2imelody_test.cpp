#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "handset/melody.h"
#include "handset/platform/Results.h"

namespace {

const char kHeader[] =
    "BEGIN:IMELODY\r\nVERSION:1.2\r\nFORMAT:CLASS1.0\r\nBEAT:120\r\nSTYLE:S0\r\nVOLUME:V15\r\n";

// A one-track model; notes are (start, length, key) in ticks at division 120; key 0 is silent.
std::unique_ptr<CMidFileElement> Model(std::initializer_list<std::array<uint32_t, 3>> notes) {
  std::unique_ptr<CMidFileElement> f(new CMidFileElement());
  CMidTrackElement* t = f->AddTrack(-1, 0xFF);
  for (const auto& n : notes) t->InsertNoteTicks(n[0], n[1], uint8_t(n[2]), n[2] ? 100 : 0);
  return f;
}

std::string Convert(CMid2iMelody& conv, CMidFileElement* f, int* rc = nullptr) {
  CString text;
  int r = conv.DoConvertMidElelemt2Str(f, text);
  if (rc) *rc = r;
  return text;
}

TEST(Mid2iMelody, WorkedExampleSilentNotesAndFoldedKeys) {
  // c quarter, dotted eighth d, a quarter of silence, then e: cut after three tokens.
  auto f = Model({{0, 120, 60}, {120, 90, 62}, {330, 120, 64}});
  CMid2iMelody conv;
  conv.SetLimit(3, -1);
  conv.SetiMelodyName("Not written");
  int rc = -99;
  EXPECT_EQ(Convert(conv, f.get(), &rc),
            std::string(kHeader) + "MELODY:*5c2*5d3.r2\r\nEND:IMELODY\r\n");
  EXPECT_EQ(rc, hs::mid2imy::kOk);
  // Keys outside 47..96 move by octaves; 96 takes the default "*4"; silent notes are rests.
  auto g = Model({{0, 120, 49},
                  {120, 120, 0},
                  {240, 480, 30},
                  {720, 60, 100},
                  {780, 45, 96},
                  {825, 15, 121},
                  {840, 720, 47}});
  CMid2iMelody plain;
  plain.SetStyle(2);
  plain.SetVolumeLvl(9);
  EXPECT_NE(Convert(plain, g.get())
                .find("STYLE:S2\r\nVOLUME:V9\r\nMELODY:#c2r2#f0*7e3*4#b4.*7#c5*3b0.\r\n"),
            std::string::npos);
}

TEST(Mid2iMelody, BeatClampLineBreaksAndSizeLimit) {
  auto f = Model({});
  for (uint32_t i = 0; i < 80; ++i) f->GetTrackByIndex(0)->InsertNoteTicks(i * 120, 120, 48, 90);
  f->SetTempo(1000);
  CMid2iMelody conv;
  std::string text = Convert(conv, f.get());
  std::string line1 = "MELODY:" + std::string(150, 'c'), line2(10, 'c');
  for (size_t i = 8; i < line1.size(); i += 2) line1[i] = '2';
  for (size_t i = 1; i < line2.size(); i += 2) line2[i] = '2';
  EXPECT_NE(text.find("BEAT:900\r\n"), std::string::npos);
  EXPECT_NE(text.find("\r\n" + line1 + "\r\n" + line2 + "\r\nEND:IMELODY\r\n"), std::string::npos);
  f->SetTempo(10);
  EXPECT_NE(Convert(conv, f.get()).find("BEAT:25\r\n"), std::string::npos);
  // Room is kept for the closing line plus two bytes: 76 + 7 + 2n + 13 + 2 <= 106 gives n = 4,
  // and the text then fills the limit exactly.
  conv.SetLimit(-1, 106);
  EXPECT_EQ(Convert(conv, f.get()).substr(76), "MELODY:c2c2c2c2\r\nEND:IMELODY\r\n");
}

TEST(Mid2iMelody, RefusesWhatIMelodyCannotHold) {
  CMid2iMelody conv;
  CString text;
  EXPECT_EQ(conv.DoConvertMidElelemt2Str(nullptr, text), hs::mid2imy::kErrNullFile);
  auto two = Model({{0, 120, 60}});
  two->AddTrack(-1, 0xFF);
  EXPECT_EQ(conv.DoConvertMidElelemt2Str(two.get(), text), hs::mid2imy::kErrMultiTrack);
  auto off = Model({{0, 120, 60}});
  off->GetTrackByIndex(0)->SetEnable(0);
  int rc = -99;
  EXPECT_EQ(Convert(conv, off.get(), &rc), std::string(kHeader) + "END:IMELODY\r\n");
  EXPECT_EQ(rc, hs::mid2imy::kErrNoEnabledTrack);
  EXPECT_EQ(conv.DoConvert2File("/nonexistent/x.mid", "/tmp/x.imy"), hs::midifile::kErrOpen);
  EXPECT_EQ(conv.GetLoadResult(), hs::midifile::kErrOpen);
}

}  // namespace
