#include <gtest/gtest.h>

#include <cstdio>
#include <memory>
#include <string>

#include "handset/melody.h"
#include "handset/platform/Results.h"
#include "tests/TestUtil.h"

namespace {

const char kHeader120[] =
    "BEGIN:IMELODY\r\nVERSION:1.2\r\nFORMAT:CLASS1.0\r\nBEAT:120\r\nSTYLE:S0\r\nVOLUME:V15\r\n";

// A one-track model; notes are (start, length, key) in ticks at division 120.
std::unique_ptr<CMidFileElement> Model(std::initializer_list<std::array<uint32_t, 3>> notes) {
  std::unique_ptr<CMidFileElement> f(new CMidFileElement());
  CMidTrackElement* t = f->AddTrack(-1, 0xFF);
  for (const auto& n : notes)
    t->InsertNoteTicks(n[0], n[1], static_cast<uint8_t>(n[2]), n[2] ? 100 : 0);
  return f;
}

std::string Convert(CMid2iMelody& conv, CMidFileElement* f, int* rc = nullptr) {
  CString text;
  int r = conv.DoConvertMidElelemt2Str(f, text);
  if (rc) *rc = r;
  return text;
}

TEST(Mid2iMelody, WorkedExampleGivesHeaderMelodyAndFooter) {
  // c (quarter), d (dotted eighth), a quarter of silence, then e: cut after three tokens.
  auto f = Model({{0, 120, 60}, {120, 90, 62}, {330, 120, 64}});
  CMid2iMelody conv;
  conv.SetLimit(3, -1);
  conv.SetiMelodyName("Not written");
  int rc = -99;
  EXPECT_EQ(Convert(conv, f.get(), &rc),
            std::string(kHeader120) + "MELODY:*5c2*5d3.r2\r\nEND:IMELODY\r\n");
  EXPECT_EQ(rc, hs::mid2imy::kOk);

  // A silent note (how iMelody rests come back from MIDI) is a rest; keys fold into 47..96.
  auto g = Model({{0, 120, 49}, {120, 120, 0}, {240, 480, 30}, {720, 60, 100}});
  CMid2iMelody plain;
  plain.SetStyle(2);
  plain.SetVolumeLvl(9);
  std::string text = Convert(plain, g.get());
  EXPECT_NE(text.find("STYLE:S2\r\nVOLUME:V9\r\nMELODY:#c2r2#f0*7e3\r\n"), std::string::npos)
      << text;
}

TEST(Mid2iMelody, BeatIsClampedAndLinesBreakEvery75Tokens) {
  auto f = Model({});
  CMidTrackElement* t = f->GetTrackByIndex(0);
  for (uint32_t i = 0; i < 80; ++i) t->InsertNoteTicks(i * 120, 120, 48, 100);
  f->SetTempo(1000);
  CMid2iMelody conv;
  std::string text = Convert(conv, f.get());
  std::string line1 = "MELODY:", line2;
  for (int i = 0; i < 75; ++i) line1 += "c2";
  for (int i = 0; i < 5; ++i) line2 += "c2";
  EXPECT_NE(text.find("BEAT:900\r\n"), std::string::npos);
  EXPECT_NE(text.find("\r\n" + line1 + "\r\n" + line2 + "\r\nEND:IMELODY\r\n"), std::string::npos);
  f->SetTempo(10);
  EXPECT_NE(Convert(conv, f.get()).find("BEAT:25\r\n"), std::string::npos);

  conv.SetLimit(-1, 100);
  std::string cut = Convert(conv, f.get());
  EXPECT_LE(cut.size(), 100u);
  EXPECT_EQ(cut.substr(cut.size() - 17), "c2\r\nEND:IMELODY\r\n");
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
  EXPECT_EQ(Convert(conv, off.get(), &rc), std::string(kHeader120) + "MELODY:\r\nEND:IMELODY\r\n");
  EXPECT_EQ(rc, hs::mid2imy::kErrNoEnabledTrack);

  EXPECT_NE(conv.DoConvert2Str("/nonexistent/x.mid", text), hs::mid2imy::kOk);
  EXPECT_EQ(conv.GetLoadResult(), hs::midifile::kErrOpen);
}

TEST(Mid2iMelody, ConvertsAFileFromDiskAndWritesIt) {
  std::string dir = hs::test::MakeTempDir("mid2imy");
  auto f = Model({{0, 240, 67}, {240, 240, 65}});
  ASSERT_EQ(f->SaveAsMidiFile((dir + "/in.mid").c_str(), 0), 0);
  CMid2iMelody conv;
  ASSERT_EQ(conv.DoConvert2File((dir + "/in.mid").c_str(), (dir + "/out.imy").c_str()), 0);
  std::vector<uint8_t> out = hs::test::ReadBytes(dir + "/out.imy");
  std::string text(out.begin(), out.end());
  EXPECT_NE(text.find("MELODY:*5g1*5f1\r\n"), std::string::npos) << text;
  EXPECT_EQ(conv.DoConvert2File((dir + "/in.mid").c_str(), (dir + "/no/such/dir.imy").c_str()),
            hs::midifile::kErrOpen);
}

}  // namespace
