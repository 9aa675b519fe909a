#include <gtest/gtest.h>

#include <cstring>
#include <fstream>
#include <string>
#include <vector>

#include "handset/melody/MidFileElement.h"
#include "handset/platform/Results.h"
#include "tests/TestUtil.h"

namespace mf = hs::midifile;

namespace {

using Bytes = std::vector<uint8_t>;

Bytes Cat(std::initializer_list<Bytes> parts) {
  Bytes out;
  for (const Bytes& p : parts) out.insert(out.end(), p.begin(), p.end());
  return out;
}

Bytes Header(int format, int tracks, int division = 96) {
  Bytes h = {'M', 'T', 'h', 'd', 0, 0, 0, 6, 0, uint8_t(format)};
  for (int v : {tracks, division}) h.insert(h.end(), {uint8_t(v >> 8), uint8_t(v)});
  return h;
}

Bytes operator+(Bytes a, const Bytes& b) {
  a.insert(a.end(), b.begin(), b.end());
  return a;
}

Bytes Chunk(const Bytes& body) {
  size_t n = body.size();
  Bytes out = {'M', 'T', 'r', 'k', uint8_t(n >> 24), uint8_t(n >> 16), uint8_t(n >> 8), uint8_t(n)};
  out.insert(out.end(), body.begin(), body.end());
  return out;
}

Bytes Text(uint8_t type, const std::string& s) {
  Bytes out = {0x00, 0xFF, type, uint8_t(s.size())};
  for (char c : s) out.push_back(uint8_t(c));
  return out;
}

const Bytes kEot = {0x00, 0xFF, 0x2F, 0x00};

int Load(CMidFileElement& f, const Bytes& b) {
  return f.LoadFromMemory(b.data(), static_cast<unsigned long>(b.size()));
}

// Loads a format 0 file whose one chunk holds `events` and the end of track.
int LoadEvents(CMidFileElement& f, const Bytes& events) {
  return Load(f, Header(0, 1) + Chunk(events + kEot));
}

// A track's notes as "{start,stop,key,velocity}" in chain order.
std::string NotesOf(const CMidFileElement& f, int track) {
  std::string out;
  CMidTrackElement* t = f.GetTrackByIndex(track);
  for (CMidNoteElement* n = t ? t->GetFirstNote() : nullptr; n; n = n->GetNextElement())
    out += "{" + std::to_string(n->GetStartTime()) + "," + std::to_string(n->GetStopTime()) + "," +
           std::to_string(n->GetNoteValue()) + "," + std::to_string(n->GetVelocity()) + "}";
  return out;
}

Bytes Produce(CMidFileElement& f, int format, uint32_t from = 0, uint32_t to = 0, int en = 0) {
  unsigned long size = 0;
  const unsigned char* p = f.GetMidiFileBuf(format, &size, from, to, en);
  return p ? Bytes(p, p + size) : Bytes();
}

size_t Find(const Bytes& hay, const Bytes& needle, size_t from = 0) {
  return static_cast<size_t>(
      std::search(hay.begin() + long(from), hay.end(), needle.begin(), needle.end()) - hay.begin());
}
bool Contains(const Bytes& hay, const Bytes& needle) {
  return Find(hay, needle) != hay.size();
}

TEST(MidFileLoad, HeaderAndChunkResultCodes) {
  CMidFileElement f;
  const Bytes track = Chunk(Cat({{0x00, 0x90, 60, 100, 0x10, 0x80, 60, 0}, kEot}));
  Bytes fourteen = Header(0, 1);
  EXPECT_EQ(Load(f, fourteen), mf::kErrTooShort);
  EXPECT_EQ(f.LoadFromMemory(nullptr, 20), mf::kErrNoData);
  EXPECT_EQ(f.LoadFromMemory(fourteen.data(), 0), mf::kErrNoData);
  Bytes len7 = Cat({Header(0, 1), track});
  len7[7] = 7;
  EXPECT_EQ(Load(f, len7), mf::kErrNotMThd);
  EXPECT_EQ(Load(f, Cat({Header(2, 1), track})), mf::kErrFormat);
  EXPECT_EQ(Load(f, Cat({Header(0, 2), track, track})), mf::kErrTrackCount);
  EXPECT_EQ(Load(f, Cat({Header(1, 0), track})), mf::kErrTrackCount);
  Bytes junk = Cat({Header(0, 1), track});
  junk[14] = 'X';
  EXPECT_EQ(Load(f, junk), mf::kErrNotMTrk);
  Bytes overrun = Cat({Header(0, 1), track});
  overrun.pop_back();
  EXPECT_EQ(Load(f, overrun), mf::kErrTrackOverrun);
  EXPECT_EQ(Load(f, Cat({Header(0, 1), {'M', 'T', 'r', 'k', 0}})), mf::kErrTrackOverrun);
  // A failed load leaves nothing to edit or save.
  EXPECT_FALSE(f.IsLoaded());
  EXPECT_EQ(f.GetTrackNum(), 0u);
  EXPECT_EQ(f.SaveAsMidiFile("/tmp/never.mid"), mf::kErrNotLoaded);
  EXPECT_EQ(f.InsertNoteEvent(0, 0, 80, 60, 90), mf::kErrNotLoaded);
  EXPECT_EQ(f.SetGetMidEventMode(2), mf::kErrNotLoaded);

  // Three declared, two present: loads with two. Stray bytes after the last chunk are ignored.
  EXPECT_EQ(Load(f, Cat({Header(1, 3), track, track})), mf::kOk);
  EXPECT_EQ(f.GetDeclaredTrackNum(), 2);
  EXPECT_EQ(Load(f, Cat({Header(0, 1), track, {0x55}})), mf::kOk);
  EXPECT_STREQ(f.GetMidiFileName(), "Melody");
  EXPECT_EQ(f.GetLoadedData().size(), 14u + track.size() + 1);

  EXPECT_EQ(f.LoadMidiFile("/nonexistent/none.mid"), mf::kErrOpen);
  std::string dir = hs::test::MakeTempDir("midfile");
  std::ofstream(dir + "/short.mid", std::ios::binary).write("MThd\0\0\0\6\0\0\0\1\0", 14);
  EXPECT_EQ(f.LoadMidiFile((dir + "/short.mid").c_str()), mf::kErrTooShort);
}

TEST(MidFileLoad, EventsRunningStatusAndDroppedData) {
  // Format 0, two channels; running status through notes; velocity-0 note-on as note-off; a
  // data byte after a meta event is read as another meta event of the same kind.
  Bytes body = Cat({Text(0x03, "Song"),
                    Text(0x02, "(c) Someone"),
                    {0x00, 0xFF, 0x58, 0x04, 3, 3, 12, 8},  // 3/8
                    {0x00, 0xC1, 5, 0x00, 0xB1, 0, 2, 0x00, 0xB1, 32, 3},
                    {0x00, 0x91, 50, 80, 0x10, 52, 81, 0x10, 50, 0},  // running status, vel 0
                    {0x00, 0x90, 60, 100},
                    {0x00, 0xFF, 0x01, 0x02, 'h', 'i'},  // plain text: ignored silently
                    {0x00, 0x01, 0x01, 'x'},             // data byte: text again via running status
                    {0x00, 0xF0, 0x03, 0x43, 0x10, 0xF7},  // other SysEx: silently dropped
                    {0x20, 0x80, 60, 64, 0x00, 0x81, 52, 0}});
  CMidFileElement f;
  ASSERT_EQ(LoadEvents(f, body), mf::kOk);
  EXPECT_EQ(f.IsInformationLost(), 0);
  EXPECT_STREQ(f.GetSongTitle(), "Song");
  EXPECT_STREQ(f.GetCopyRight(), "(c) Someone");
  EXPECT_EQ(f.IsCopyRight(), 1);
  EXPECT_EQ(0, std::memcmp(f.GetTimeSignature(), "\x03\x03\x0c\x08", 4));
  ASSERT_EQ(f.GetTrackNum(), 2u);
  CMidTrackElement* t1 = f.GetTrackByIndex(0);
  EXPECT_EQ(t1->GetChannelNum(), 1);
  EXPECT_EQ(t1->GetProgram(), 5);
  uint8_t v = 0;
  EXPECT_EQ(t1->GetBankSelectMSB(&v), 0);
  EXPECT_EQ(v, 2);
  EXPECT_EQ(t1->GetBankSelectLSB(&v), 0);
  EXPECT_EQ(v, 3);
  EXPECT_STREQ(t1->GetTrackName(), "Song");  // the pending name of format 0
  EXPECT_EQ(NotesOf(f, 0), "{0,32,50,80}{16,64,52,81}");
  EXPECT_EQ(NotesOf(f, 1), "{32,64,60,100}");
  EXPECT_EQ(f.GetTrackByIndex(1)->GetProgram(), -1);

  // Each kind of dropped data raises the information-lost flag.
  const Bytes lossy[] = {
      {0x00, 0xE0, 0x00, 0x40},      {0x00, 0xB0, 7, 100},           {0x00, 0xD0, 5},
      {0x00, 0xA0, 60, 5},           {0x00, 0xFF, 0x21, 0x01, 0x00}, {0x00, 0xF2, 0x01, 0x02},
      {0x00, 0xFF, 0x00, 0x02, 0, 1}};
  for (const Bytes& ev : lossy) {
    ASSERT_EQ(LoadEvents(f, ev + Bytes{0x00, 0x90, 60, 1, 0x01, 60, 0}), mf::kOk);
    EXPECT_EQ(f.IsInformationLost(), 1) << int(ev[1]);
    EXPECT_EQ(NotesOf(f, 0), "{0,1,60,1}") << int(ev[1]);
  }
}

TEST(MidFileLoad, Format1NamesAndChannelsSpreadOverChunks) {
  Bytes conductor = Cat({Text(0x03, "Title"), kEot});
  Bytes a = Cat({Text(0x03, "Lead"),
                 Text(0x04, "Flute"),
                 {0x00, 0xC0, 73},
                 {0x00, 0x90, 72, 90, 0x60, 0x80, 72, 0},
                 Text(0x03, "Renamed"),
                 kEot});
  // Channel 0 again in a later chunk: its notes continue from the track's running time.
  Bytes b = Cat({{0x10, 0x90, 40, 70, 0x10, 0x80, 40, 0}, kEot});
  CMidFileElement f;
  ASSERT_EQ(Load(f, Cat({Header(1, 3, 480), Chunk(conductor), Chunk(a), Chunk(b)})), mf::kOk);
  EXPECT_STREQ(f.GetSongTitle(), "Title");
  ASSERT_EQ(f.GetTrackNum(), 1u);
  CMidTrackElement* t = f.GetTrackByIndex(0);
  EXPECT_STREQ(t->GetTrackName(), "Renamed");
  EXPECT_STREQ(t->GetInstrumentName(), "Flute");
  EXPECT_EQ(t->GetProgram(), 73);
  EXPECT_EQ(t->GetDivision(), 480);
  EXPECT_EQ(NotesOf(f, 0), "{0,96,72,90}{112,128,40,70}");
}

TEST(MidFileLoad, TempoAccountingKeepsOneTempo) {
  auto tempo = [](uint32_t us) {
    return Bytes{0xFF, 0x51, 0x03, uint8_t(us >> 16), uint8_t(us >> 8), uint8_t(us)};
  };
  const Bytes note = {0x90, 60, 9, 0x10, 0x80, 60, 0};
  const std::pair<Bytes, int> cases[] = {
      {Cat({{0x00}, tempo(500000), {0x00}, note}), 120},
      // 600000 rules 10 ticks; 500000 gets no entry of its own, so its 990 ticks are lost;
      // 400000 is appended and rules 100 ticks until 300000, whose own span is never counted.
      {Cat({{0x00},
            tempo(600000),
            {0x0A},
            tempo(500000),
            {0x87, 0x5E},
            tempo(400000),
            {0x64},
            tempo(300000),
            {0x83, 0x60},
            note}),
       150},
      {Cat({{0x00}, note}), 120},
      {Cat({{0x00}, tempo(700000)}), 85}};  // 60000000 / 700000 = 85.7 is truncated
  for (const auto& [body, bpm] : cases) {
    CMidFileElement f;
    ASSERT_EQ(LoadEvents(f, body), mf::kOk);
    EXPECT_EQ(f.GetTempo(), bpm);
  }
}

const char kLed[] = "*-<QV_MMF_LED>-*";
const char kVib[] = "*-<QV_MMF_VIB>-*";
const char kWave[] = "*-<QV_MMF_WAVE>-*";

TEST(MidFileSmaf, TagsAreReadIntoTheModelAndWrittenBack) {
  std::string wave = std::string(kWave) + "01" + "\x05\x01" + "a.wav";
  Bytes conductor = Cat({Text(0x01, std::string(kLed) + "01"), Text(0x01, std::string(kVib) + "00"),
                         Text(0x01, std::string(kVib) + "1x"), kEot});
  Bytes t0 = Cat({{0x00, 0x90, 60, 90, 0x10, 0x80, 60, 0}, kEot});
  Bytes t1 = Cat({Text(0x01, wave), {0x00, 0x91, 62, 90, 0x10, 0x81, 62, 0}, kEot});
  CMidFileElement f;
  ASSERT_EQ(Load(f, Cat({Header(1, 3), Chunk(conductor), Chunk(t0), Chunk(t1)})), mf::kOk);
  int led = -1, vib = 0;
  EXPECT_EQ(f.GetMA2LedStatus(&led), 0);
  EXPECT_EQ(led, 1);
  EXPECT_EQ(f.GetVibStatus(0, &vib), 0);
  EXPECT_EQ(vib, 1);
  EXPECT_EQ(f.GetVibStatus(1, &vib), 0);
  EXPECT_EQ(vib, 0);
  EXPECT_EQ(f.GetWaveTrackIndex(), 1);
  EXPECT_STREQ(f.GetTrackByIndex(1)->GetMMFWavFileLst(), "a.wav");
  uint8_t w0 = 0, w1 = 0;
  f.GetWaveType(&w0, &w1);
  EXPECT_EQ(w0, 5);
  EXPECT_EQ(w1, 1);
  EXPECT_EQ(f.GetTrackByIndex(0)->IsMMFWaveTrack(), 0);

  Bytes out = Produce(f, 1);
  auto at = [&out](const std::string& text) {  // where the text event (without delta) starts
    Bytes e = Text(0x01, text);
    return Find(out, Bytes(e.begin() + 1, e.end()));
  };
  // Each tag goes to its own track chunk, before the notes.
  size_t second = Find(out, {'M', 'T', 'r', 'k'}, 15),
         third = Find(out, {'M', 'T', 'r', 'k'}, second + 1);
  ASSERT_LT(third, out.size());
  EXPECT_GT(at(std::string(kVib) + "00"), second);
  EXPECT_LT(at(std::string(kVib) + "00"), third);
  EXPECT_GT(at(std::string(kLed) + "01"), third);
  EXPECT_GT(at(wave), third);
  EXPECT_LT(at(wave), Find(out, {0x91, 62}));

  CMidFileElement back;
  ASSERT_EQ(Load(back, out), mf::kOk);
  EXPECT_EQ(back.GetMA2LedStatus(&led), 0);
  EXPECT_EQ(led, 1);
  EXPECT_EQ(back.GetWaveTrackIndex(), 1);
  EXPECT_STREQ(back.GetTrackByIndex(1)->GetMMFWavFileLst(), "a.wav");
}

TEST(MidFileSpMidi, MipMessageOrdersTracksAndIsWritten) {
  // MIP lists channel 2 before channel 0.
  Bytes sysex = {0x00, 0xF0, 0x09, 0x7F, 0x7F, 0x0B, 0x01, 2, 4, 0, 6, 0xF7};
  Bytes body = Cat({sysex,
                    {0x00, 0x90, 60, 90, 0x00, 0x92, 64, 90, 0x00, 0x92, 67, 90},
                    {0x10, 0x80, 60, 0, 0x00, 0x82, 64, 0, 0x00, 0x82, 67, 0}});
  CMidFileElement f;
  ASSERT_EQ(LoadEvents(f, body), mf::kOk);
  EXPECT_EQ(f.IsSPMidi(), 1);
  EXPECT_EQ(f.GetMIPDeviceID(), 0x7F);
  uint8_t ch[16], mip[16];
  ASSERT_EQ(f.GetMIPData(ch, mip), 2);
  EXPECT_EQ(ch[0], 2);
  EXPECT_EQ(mip[1], 6);
  ASSERT_EQ(f.GetTrackNum(), 2u);
  EXPECT_EQ(f.GetTrackByIndex(0)->GetChannelNum(), 2);
  EXPECT_EQ(f.GetTrackByIndex(1)->GetChannelNum(), 0);

  // Reserved voices 2 and 1, limit 16: the first keeps 2, the second gets the rest of the limit.
  int values[16];
  ASSERT_EQ(f.CalcMIPValues(values), 2);
  EXPECT_EQ(values[0], 2);
  EXPECT_EQ(values[1], 16);
  Bytes out = Produce(f, 1);
  EXPECT_TRUE(Contains(out, {0x00, 0xF0, 0x09, 0x7F, 0x7F, 0x0B, 0x01, 2, 2, 0, 16, 0xF7}));
  // A limit of 3 below the reserved count: the running sums are written instead.
  f.SetSPMidiMode(1, 2);
  ASSERT_EQ(f.CalcMIPValues(values), 2);
  EXPECT_EQ(values[0], 2);
  EXPECT_EQ(values[1], 3);
  // r >= L with both above 3: r becomes L - 2 and the rest is shared out evenly.
  f.SetSPMidiMode(1, 5);
  f.AddTrack(-1, 5)->InsertNoteTicks(0, 10, 1, 1);
  f.GetTrackByIndex(0)->InsertNoteTicks(0, 10, 70, 90);
  f.GetTrackByIndex(0)->InsertNoteTicks(0, 10, 71, 90);
  f.GetTrackByIndex(0)->InsertNoteTicks(0, 10, 72, 90);  // 5 voices now
  ASSERT_EQ(f.CalcMIPValues(values), 3);
  EXPECT_EQ(values[0], 3);
  EXPECT_EQ(values[1], 4);
  EXPECT_EQ(values[2], 5);
  // An enabled empty track adds to the declared length but writes no pair.
  f.AddTrack(-1, 6);
  out = Produce(f, 1);
  const size_t sx = Find(out, {0xF0});
  ASSERT_LT(sx + 14, out.size());
  EXPECT_EQ(out[sx + 1], 5 + 2 * 4);
  EXPECT_EQ(out[sx + 12], 0xF7);
  // Running sums take the empty track's stored count of -1.
  f.SetSPMidiMode(1, 2);
  ASSERT_EQ(f.CalcMIPValues(values), 4);
  EXPECT_EQ(values[2], 7);
  EXPECT_EQ(values[3], 6);
  f.SetSPMidiMode(0);
  EXPECT_FALSE(Contains(Produce(f, 1), {0xF0}));
}

TEST(MidFileWrite, ElementOrderOfBothFormats) {
  Bytes body =
      Cat({Text(0x03, "T"),
           Text(0x02, "C"),
           {0x00, 0xB0, 0, 1, 0x00, 0xC0, 9},
           {0x00, 0x90, 60, 200, 0x60, 0x80, 60, 0, 0x00, 0x90, 62, 90, 0x60, 0x80, 62, 0}});
  CMidFileElement f;
  ASSERT_EQ(LoadEvents(f, body), mf::kOk);
  // Velocity 200 is written as 127 and each note-off repeats its note's velocity.
  const Bytes tempo = {0x00, 0xFF, 0x51, 0x03, 0x07, 0xA1, 0x20},
              sig = {0x00, 0xFF, 0x58, 4, 4, 2, 24, 8};
  const Bytes notes = Bytes{0x00, 0xB0, 0x00, 1,    0x00, 0xC0, 9,  0x00, 0x90, 60, 127, 0x60,
                            0x80, 60,   127,  0x00, 0x90, 62,   90, 0x60, 0x80, 62, 90} +
                      kEot;
  const Bytes trk = {'M', 'T', 'r', 'k', 0, 0, 0};
  Bytes zero = Produce(f, 0);
  EXPECT_EQ(zero, Header(0, 1, 96) + trk + Bytes{0x34} + tempo + sig + Text(0x02, "C") +
                      Text(0x03, "T") + notes);
  EXPECT_EQ(Produce(f, 1), Header(1, 2, 96) + trk + Bytes{0x18} + sig + tempo + Text(0x02, "C") +
                               kEot + trk + Bytes{0x20} + Text(0x03, "T") + notes);
  EXPECT_EQ(Produce(f, CMidFileElement::kFormatLoaded), zero);
  EXPECT_EQ(Produce(f, 2), Bytes());
  EXPECT_EQ(f.GetLastResult(), mf::kErrFormat);

  // A selection keeps notes starting inside it, moved to tick 0 and cut at its end.
  Bytes part = Produce(f, 0, 0x50, 0x90);
  EXPECT_TRUE(Contains(part, {0x10, 0x90, 62, 90, 0x30, 0x80, 62, 90, 0x00, 0xFF, 0x2F}));
  EXPECT_FALSE(Contains(part, {0x90, 60}));

  // With a second track format 1 is written whatever was asked.
  f.AddTrack()->InsertNoteTicks(0, 10, 70, 70);
  Bytes forced = Produce(f, 0);
  EXPECT_EQ(Bytes(forced.begin(), forced.begin() + 14), Header(1, 3, 96));
  f.GetTrackByIndex(1)->SetEnable(0);
  Bytes enabled = Produce(f, 0, 0, 0, 1);
  EXPECT_EQ(Bytes(enabled.begin(), enabled.begin() + 14), Header(1, 2, 96));
  // An enabled empty track is counted in the header but gets no chunk.
  f.AddTrack();
  enabled = Produce(f, 0, 0, 0, 1);
  EXPECT_EQ(Bytes(enabled.begin(), enabled.begin() + 14), Header(1, 3, 96));
  size_t chunks = 0;
  for (size_t at = Find(enabled, trk); at < enabled.size(); at = Find(enabled, trk, at + 1))
    ++chunks;
  EXPECT_EQ(chunks, 2u);

  CMidFileElement none;
  none.AddTrack();
  none.DelTrack(0);
  EXPECT_EQ(Produce(none, 0), Bytes());
  EXPECT_EQ(none.GetLastResult(), mf::kErrNoTrackToWrite);
  EXPECT_EQ(Produce(none, 1).size(), 14u + 8 + 19);  // the conductor track alone
}

TEST(MidFileWrite, OutputCapacityIsNeverPassed) {
  CMidFileElement f;
  CMidTrackElement* t = f.AddTrack();
  t->InsertNoteTicks(0, 10, 60, 90);
  t->SetMMFWaveTrack(1);
  // A wave list of 5 MiB cannot fit beside the headers.
  std::string list(CMidFileElement::kOutputCapacity, 'w');
  t->SetMMFWavFileLst(list.c_str());
  std::string dir = hs::test::MakeTempDir("midcap");
  std::string path = dir + "/big.mid";
  std::ofstream(path) << "keep";
  EXPECT_EQ(f.SaveAsMidiFile(path.c_str(), 0), mf::kErrNothingProduced);
  EXPECT_EQ(hs::test::ReadBytes(path).size(), 4u);  // untouched
  EXPECT_EQ(Produce(f, 1), Bytes());
  EXPECT_EQ(f.GetLastResult(), mf::kErrNothingProduced);
  // Exactly at the capacity it fits: header 14, chunk 8, tempo 7, time signature 8, the tag's
  // event header 3 + 4-byte length, tag 17 + 4, notes 8, end 4.
  size_t room = CMidFileElement::kOutputCapacity - (14 + 8 + 7 + 8 + 3 + 4 + 21 + 8 + 4);
  t->SetMMFWavFileLst(list.c_str(), static_cast<int>(room));
  EXPECT_EQ(Produce(f, 0).size(), size_t(CMidFileElement::kOutputCapacity));
  t->SetMMFWavFileLst(list.c_str(), static_cast<int>(room + 1));
  EXPECT_EQ(Produce(f, 0), Bytes());
}

TEST(MidFileTracks, ManagementAndForwarding) {
  CMidFileElement f;
  for (int i = 0; i < 16; ++i) ASSERT_NE(f.AddTrack(), nullptr);
  EXPECT_EQ(f.AddTrack(), nullptr);
  EXPECT_EQ(f.DuplicateTrack(0), mf::kErrTrackInsert);
  EXPECT_EQ(f.GetTrackNum(), 16u);
  for (int i = 15; i >= 3; --i) ASSERT_EQ(f.DelTrack(i), mf::kOk);
  EXPECT_EQ(f.DelTrack(3), mf::kErrTrackIndex);
  EXPECT_EQ(f.AddTrack(-1, 1), nullptr);  // channel taken
  EXPECT_EQ(f.AddTrack(0, 9)->GetChannelNum(), 9);
  auto channels = [&f]() {
    std::vector<int> out;
    for (uint32_t i = 0; i < f.GetTrackNum(); ++i)
      out.push_back(f.GetTrackByIndex(int(i))->GetChannelNum());
    return out;
  };
  EXPECT_EQ(channels(), (std::vector<int>{9, 0, 1, 2}));
  EXPECT_EQ(f.SwitchTrackByIndex(0), mf::kOk);
  EXPECT_EQ(f.SwitchTrackByIndex(3), mf::kErrTrackIndex);
  EXPECT_EQ(channels(), (std::vector<int>{0, 9, 1, 2}));
  EXPECT_EQ(f.MoveTrackByIndex(0, 3), mf::kOk);
  EXPECT_EQ(channels(), (std::vector<int>{9, 1, 2, 0}));
  EXPECT_EQ(f.MoveTrackByIndex(3, 1), mf::kOk);
  EXPECT_EQ(channels(), (std::vector<int>{9, 0, 1, 2}));
  EXPECT_EQ(f.MoveTrackByIndex(0, 4), mf::kErrTrackIndex);

  EXPECT_EQ(f.InsertNoteEvent(1, 0, 80, 60, 100), mf::kOk);
  EXPECT_EQ(f.InsertNoteEvent(1, 8, 40, 64, 20), mf::kOk);
  EXPECT_EQ(f.InsertNoteEvent(4, 0, 80, 60, 100), mf::kErrTrackIndex);
  EXPECT_EQ(f.InsertNoteEvent(1, 0, 7, 60, 100), mf::kErrTrackInsert);
  EXPECT_EQ(f.DelNoteEvent(1, 5), mf::kErrTrackInsert);
  EXPECT_EQ(f.DuplicateTrack(1), mf::kOk);
  EXPECT_EQ(channels(), (std::vector<int>{9, 0, 3, 1, 2}));
  EXPECT_EQ(f.GetTrackByIndex(2)->GetNoteCount(), 2u);
  EXPECT_EQ(f.DelNoteEvent(2, 120), mf::kOk);
  EXPECT_EQ(f.GetTrackByIndex(1)->GetNoteCount(), 2u);

  int min = 0, max = 0, avg = 0;
  f.GetVelocity(&min, &max, &avg);
  EXPECT_EQ(std::make_tuple(min, max, avg), std::make_tuple(20, 100, 73));
  EXPECT_EQ(f.CheckSetVelocityValid(28), 0);
  EXPECT_EQ(f.SetVelocity(28), -1);
  EXPECT_EQ(f.SetVelocity(-19), mf::kOk);
  f.GetVelocity(&min, &max, &avg);
  EXPECT_EQ(std::make_tuple(min, max), std::make_tuple(1, 81));

  EXPECT_EQ(f.SetWaveTrackIndex(3), mf::kOk);
  EXPECT_EQ(f.GetWaveTrackIndex(), 3);
  EXPECT_EQ(f.SetWaveTrackIndex(9), mf::kErrTrackIndex);
  EXPECT_EQ(f.SetGetMidEventMode(2), mf::kOk);
  EXPECT_EQ(f.GetTrackByIndex(4)->GetMidiEventMode(), 2);
  EXPECT_EQ(f.SetGetMidEventMode(MIDEVENT_MODE_KEEP), mf::kOk);
  EXPECT_EQ(f.GetTrackByIndex(4)->GetMidiEventMode(), 2);
  EXPECT_EQ(f.GetEnabledTrackNum(), 5);

  // Deep copies do not share tracks.
  CMidFileElement* copy = f.Duplicate();
  f.DelTrack(1);
  EXPECT_EQ(copy->GetTrackNum(), 5u);
  EXPECT_EQ(copy->GetTrackByIndex(1)->GetNoteCount(), 2u);
  EXPECT_EQ(copy->DoSimplied(), mf::kOk);
  EXPECT_EQ(copy->GetTrackNum(), 2u);  // only the two tracks with notes stay
  EXPECT_EQ(copy->IsEmpty(), 0);
  delete copy;

  // Play time: 480 ticks at 96 per quarter and 120 bpm.
  CMidFileElement g;
  g.AddTrack()->InsertNoteTicks(0, 480, 60, 90);
  EXPECT_DOUBLE_EQ(g.GetMaxPlayTime(), 480.0 / 120 * 60 / 120);
  EXPECT_EQ(g.SetTempo(240), mf::kOk);
  EXPECT_DOUBLE_EQ(g.GetTempoAdjustRate(), 2.0);
  EXPECT_DOUBLE_EQ(g.GetMaxPlayTime(), 1.0);
  EXPECT_EQ(g.SetTempo(0), -1);
  EXPECT_EQ(g.IsModified(), 1);
}

}  // namespace
