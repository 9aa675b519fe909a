#include <gtest/gtest.h>

#include <string>
#include <tuple>
#include <vector>

#include "handset/melody/MidTrackElement.h"

namespace {

std::string Fields(std::initializer_list<long long> values) {
  std::string out;
  for (long long v : values) out += (out.empty() ? "{" : ",") + std::to_string(v);
  return out + "}";
}

// The notes as "{start,stop,key,velocity}" in chain order.
std::string Notes(const CMidTrackElement& t) {
  std::string out;
  for (CMidNoteElement* n = t.GetFirstNote(); n; n = n->GetNextElement())
    out += Fields({n->GetStartTime(), n->GetStopTime(), n->GetNoteValue(), n->GetVelocity()});
  return out;
}

// The chain must be consistent both ways and with the stored count and ends.
void ExpectChainIntact(const CMidTrackElement& t) {
  uint32_t count = 0;
  CMidNoteElement* prev = nullptr;
  for (CMidNoteElement* n = t.GetFirstNote(); n; n = n->GetNextElement()) {
    EXPECT_EQ(n->GetPrevElement(), prev);
    if (prev) {
      EXPECT_LE(prev->GetStartTime(), n->GetStartTime());
    }
    prev = n;
    ++count;
  }
  EXPECT_EQ(t.GetLastNote(), prev);
  EXPECT_EQ(t.GetNoteCount(), count);
  EXPECT_EQ(t.CountNoteElement(), count);
}

TEST(MidTrackModel, NotePairingAndClosingOpenNotes) {
  CMidTrackElement t;
  // C4 on at 0, on again at 10, off at 20: the off closes the nearer note.
  t.AppendNoteEvent(1, 60, 100, 0);
  t.AppendNoteEvent(1, 60, 90, 10);
  t.AppendNoteEvent(0, 60, 64, 10);
  EXPECT_EQ(t.GetNowNoteEventTime(), 20u);
  EXPECT_EQ(Notes(t), "{0,0,60,100}{10,20,60,90}");
  // An off without an open note of its key opens one; nothing later closes it.
  t.AppendNoteEvent(0, 62, 50, 5);
  // An off whose nearest same-key note is closed opens a note too.
  t.AppendNoteEvent(0, 60, 40, 5);
  EXPECT_EQ(t.GetNoteCount(), 4u);
  EXPECT_EQ(t.FixNonStopNote(), 2);
  EXPECT_EQ(Notes(t), "{0,10,60,100}{10,20,60,90}");
  ExpectChainIntact(t);
}

TEST(MidTrackModel, NoteOffsFindTheirNoteAfterEditsAndCopies) {
  CMidTrackElement t;
  t.AppendNoteEvent(1, 60, 100, 100);
  t.AppendNoteEvent(1, 64, 100, 0);
  t.GetFirstNote()->SetNoteValue(61);  // edited through the chain
  t.AppendNoteEvent(0, 60, 0, 10);     // no note of key 60 is left: opens one
  t.InsertNoteTicks(0, 0, 64, 1);      // inserted in front of the chain
  CMidTrackElement* copy = t.Duplicate();
  copy->AppendNoteEvent(0, 64, 0, 5);  // the copy closes its own open 64 at 100
  t.AppendNoteEvent(0, 61, 0, 20);
  EXPECT_EQ(Notes(t), "{0,0,64,1}{100,130,61,100}{100,0,64,100}{110,0,60,0}");
  EXPECT_EQ(Notes(*copy), "{0,0,64,1}{100,0,61,100}{100,115,64,100}{110,0,60,0}");
  delete copy;
}

TEST(MidTrackModel, VelocityRules) {
  CMidTrackElement t;
  t.InsertNoteTicks(0, 10, 60, 120);
  t.InsertNoteTicks(10, 10, 62, 0);  // a silent note is never counted or changed
  t.InsertNoteTicks(20, 10, 64, 31);
  int max = -1, min = -1, avg = -1, sum = -1, count = -1;
  t.GetVelocity(&max, &min, &avg, &sum, &count);
  EXPECT_EQ(std::make_tuple(max, min, avg, sum, count), std::make_tuple(120, 31, 75, 151, 2));
  t.GetVelocity(nullptr, nullptr, nullptr, nullptr, nullptr);

  t.SetModified(0);
  EXPECT_EQ(t.CheckSetVelocityValid(10), 0);
  EXPECT_EQ(t.SetVelocity(10), -1);
  EXPECT_EQ(t.CheckSetVelocityValid(-31), 0);
  EXPECT_EQ(t.GetFirstNote()->GetVelocity(), 120);
  EXPECT_EQ(t.IsModified(), 0);
  EXPECT_EQ(t.SetVelocity(7), 0);
  EXPECT_EQ(Notes(t), "{0,10,60,127}{10,20,62,0}{20,30,64,38}");
  EXPECT_EQ(t.IsModified(), 1);

  CMidTrackElement silent;
  silent.InsertNoteTicks(0, 10, 60, 0);
  silent.GetVelocity(&max, &min, &avg, &sum, &count);
  EXPECT_EQ(std::make_tuple(max, min, avg, count), std::make_tuple(0, 0, 0, 0));
}

TEST(MidTrackModel, TableTypeCountsLowAndHighKeys) {
  auto typeOf = [](std::vector<int> keys) {
    CMidTrackElement t;
    uint32_t at = 0;
    for (int k : keys) t.InsertNoteTicks(at += 10, 5, static_cast<uint8_t>(k), 100);
    return t.DecideTrackTableType();
  };
  EXPECT_EQ(typeOf({30, 31, 80}), 2);
  EXPECT_EQ(typeOf({30, 80}), 1);
  EXPECT_EQ(typeOf({}), 1);
  EXPECT_EQ(typeOf({20, 25, 100}), 1);     // outside 26-95 nothing counts
  EXPECT_EQ(typeOf({47, 48, 73, 74}), 1);  // 48 and 73 are neither low nor high
  EXPECT_EQ(typeOf({26, 95, 27}), 2);
}

TEST(MidTrackModel, DurationCodesBothWays) {
  const std::vector<std::pair<double, int>> cases = {
      {16, 11}, {120, 80}, {122, 81},   {700, 321}, {800, 320}, {15, 10},   {14, 10},   {1, 10},
      {22, 11}, {100, 80}, {119.5, 80}, {480, 320}, {481, 321}, {720, 321}, {722, 320}, {0, 10}};
  for (auto [ticks, code] : cases) EXPECT_EQ(CMidTrackElement::GetDurationID(ticks), code) << ticks;
  const int codes[] = {10, 11, 20, 21, 40, 41, 80, 81, 160, 161, 320, 321};
  for (int code : codes)
    EXPECT_EQ(CMidTrackElement::GetDurationID(CMidTrackElement::GetDurationByID(code)), code);
  EXPECT_EQ(CMidTrackElement::GetDurationByID(81), 180u);
  EXPECT_EQ(CMidTrackElement::GetDurationByID(30), 0u);
}

TEST(MidTrackModel, ReservedVoicesFollowTheSlotTable) {
  CMidTrackElement t;
  EXPECT_EQ(t.CaculateReservedValue(), 0);
  EXPECT_EQ(t.GetReservedValue(), -1);  // not stored when nothing sounds
  // Three-note chord, then a repeated key ending exactly where it restarts.
  t.InsertNoteTicks(0, 100, 60, 90);
  t.InsertNoteTicks(0, 100, 64, 90);
  t.InsertNoteTicks(0, 100, 67, 90);
  t.InsertNoteTicks(100, 50, 60, 90);
  t.InsertNoteTicks(100, 50, 62, 90);
  EXPECT_EQ(t.CaculateReservedValue(), 3);
  EXPECT_EQ(t.GetReservedValue(), 3);
  EXPECT_EQ(t.GetPeakPolyphony(), 3);
  // Key 0 looks like a free slot, so it never takes one.
  CMidTrackElement zero;
  zero.InsertNoteTicks(0, 10, 0, 90);
  zero.InsertNoteTicks(0, 10, 0, 90);
  zero.InsertNoteTicks(0, 10, 5, 90);
  EXPECT_EQ(zero.CaculateReservedValue(), 1);
  EXPECT_EQ(zero.GetPeakPolyphony(), 3);
}

TEST(MidTrackModel, SequenceIterationOrdersOffsBeforeOnsAndClipsRanges) {
  CMidTrackElement t;
  t.InsertNoteTicks(0, 10, 60, 100);
  t.InsertNoteTicks(10, 10, 60, 90);  // repeated key starting where the first one ends
  t.InsertNoteTicks(5, 30, 64, 80);
  NoteEventInfo e;
  auto events = [&](uint32_t from, uint32_t to) {  // "{on,tick,key}" per event
    std::string got;
    for (int rc = t.GetFirstNoteBySequence(&e, from, to); rc == 0; rc = t.GetNextNoteBySequence(&e))
      got += Fields({e.nEventType, int(e.nTime), e.byNoteValue});
    return got;
  };
  EXPECT_EQ(events(0, 0), "{1,0,60}{1,5,64}{0,10,60}{1,10,60}{0,20,60}{0,35,64}");
  EXPECT_EQ(events(5, 15), "{1,5,64}{1,10,60}{0,15,64}{0,15,60}");
  CMidTrackElement empty;
  EXPECT_EQ(empty.GetFirstNoteBySequence(&e), -1);
}

TEST(MidTrackModel, NotesAndRestsWithDurationCodes) {
  CMidTrackElement t;
  t.SetDivision(480);                           // codes are taken at 120 ticks per quarter
  t.InsertNoteTicks(0, 480, 60, 100);           // quarter
  t.InsertNoteTicks(960, 720, 62, 100);         // quarter rest, then dotted quarter
  t.InsertNoteTicks(960, 240, 67, 100);         // chord member
  t.InsertNoteTicks(1680 + 2, 240, 64, 90);     // a 2-tick gap is no rest
  t.InsertNoteTicks(1922 + 4800, 240, 65, 90);  // 2.5 whole notes of silence: whole + dotted whole
  auto walk = [&t](uint32_t from, uint32_t to) {
    std::string out;  // "{rest,key,code}" per step
    NoteIDInfo id;
    for (int rc = t.GetFirstIDs(&id, from, to); rc == 0; rc = t.GetNextIDs(&id))
      out += Fields({int(id.bRest), id.byNoteValue, id.nDurationID});
    return out;
  };
  t.SetGetMidiEventMode(MIDEVENT_MODE_MELODY);
  EXPECT_EQ(walk(0, 0), "{0,60,80}{1,0,80}{0,62,81}{0,64,40}{1,0,320}{1,0,321}{0,65,40}");
  t.SetGetMidiEventMode(MIDEVENT_MODE_ALL);
  EXPECT_EQ(walk(0, 1200), "{0,60,80}{1,0,80}{0,62,40}{0,67,40}");  // the range cuts the 62
}

TEST(MidTrackModel, NamesAndWaveList) {
  CMidTrackElement t;
  std::string longName(100, 'x');
  EXPECT_EQ(t.SetTrackName(longName.c_str()), 0);
  EXPECT_EQ(std::string(t.GetTrackName()), std::string(79, 'x'));
  EXPECT_EQ(t.SetInstrumentName("Piano!", 5), 0);
  EXPECT_STREQ(t.GetInstrumentName(), "Piano");
  EXPECT_EQ(t.SetTrackName(nullptr), -1);
  EXPECT_EQ(std::string(t.GetTrackName()), std::string(79, 'x'));

  EXPECT_EQ(t.GetMMFWavFileLst(), nullptr);
  EXPECT_EQ(t.SetMMFWavFileLst("a.wav,b.wav", 5), 0);
  EXPECT_STREQ(t.GetMMFWavFileLst(), "a.wav");
  EXPECT_EQ(t.SetMMFWavFileLst("c.wav", 0), -1);
  EXPECT_EQ(t.SetMMFWavFileLst(nullptr, 3), -1);
  EXPECT_STREQ(t.GetMMFWavFileLst(), "a.wav");
  EXPECT_EQ(t.SetMMFWavFileLst("c.wav"), 0);
  EXPECT_STREQ(t.GetMMFWavFileLst(), "c.wav");
}

TEST(MidTrackModel, ConverterUnitsAndNoteEditing) {
  CMidTrackElement t;
  t.SetDivision(240);
  // Start 10 thirty-seconds = 10 x 15 x 240 / 120 ticks; a quarter code lasts 240 ticks.
  EXPECT_EQ(t.InsertNoteEvent(10, 80, 60, 90), 0);
  EXPECT_EQ(t.InsertNoteEvent(0, 41, 62, 90), 0);
  EXPECT_EQ(t.InsertNoteEvent(10, 10, 64, 90), 0);  // same start: goes behind the first
  EXPECT_EQ(t.InsertNoteEvent(0, 30, 64, 90), -1);
  EXPECT_EQ(Notes(t), "{0,180,62,90}{300,540,60,90}{300,330,64,90}");
  EXPECT_EQ(t.DelNoteEvent(300), 0);
  EXPECT_EQ(t.DelNoteEvent(301), -1);
  EXPECT_EQ(Notes(t), "{0,180,62,90}{300,330,64,90}");
  ExpectChainIntact(t);
}

TEST(MidTrackModel, PeriodEditing) {
  auto make = [](CMidTrackElement& t) {
    t.InsertNoteTicks(0, 150, 60, 90);    // sounds into the period
    t.InsertNoteTicks(100, 50, 62, 90);   // inside
    t.InsertNoteTicks(200, 100, 64, 90);  // after
    t.InsertNoteTicks(50, 400, 65, 90);   // spans the whole period
  };
  {
    CMidTrackElement t;
    make(t);
    EXPECT_EQ(t.DelPeriod(100, 200), 0);
    EXPECT_EQ(Notes(t), "{0,100,60,90}{50,350,65,90}{100,200,64,90}");
    EXPECT_EQ(t.DelPeriod(5, 5), -1);
    ExpectChainIntact(t);
  }
  {
    CMidTrackElement t;
    make(t);
    EXPECT_EQ(t.InsertPeriod(100, 1000), 0);
    EXPECT_EQ(Notes(t), "{0,1150,60,90}{50,1450,65,90}{1100,1150,62,90}{1200,1300,64,90}");
    EXPECT_EQ(t.InsertPeriod(0, 0), -1);
  }
  {
    CMidTrackElement t;
    make(t);
    EXPECT_EQ(t.ShiftPeriod(0, 101, 150), 0);  // moves the notes at 0, 50 and 100
    EXPECT_EQ(Notes(t), "{150,300,60,90}{200,300,64,90}{200,600,65,90}{250,300,62,90}");
    EXPECT_EQ(t.ShiftPeriod(200, 201, -1000), 0);  // clamped at 0, lengths kept
    EXPECT_EQ(Notes(t).rfind("{0,100,", 0), 0u);
    ExpectChainIntact(t);
  }
  {
    CMidTrackElement t;
    make(t);
    CMidNoteElement *first = nullptr, *last = nullptr;
    EXPECT_EQ(t.GetMarkedNotes(40, 150, &first, &last), 0);
    EXPECT_EQ(first->GetStartTime(), 50u);
    EXPECT_EQ(last->GetStartTime(), 100u);
    EXPECT_EQ(t.DeleteMarkedNotes(first, last), 2);
    EXPECT_EQ(t.GetMarkedNotes(40, 150, &first, &last), -1);
    EXPECT_EQ(first, nullptr);
    CMidNoteElement foreign;
    EXPECT_EQ(t.DeleteMarkedNotes(&foreign, &foreign), -1);
    EXPECT_EQ(t.GetWidthCount(), 300u);
    ExpectChainIntact(t);
  }
}

TEST(MidTrackModel, SimplifyDuplicateAndReset) {
  CMidTrackElement t;
  t.SetChannelNum(3);
  t.SetProgram(12);
  t.SetBankSelectLSB(7);
  t.SetTrackName("melody");
  t.SetMMFWavFileLst("x.wav");
  t.InsertNoteTicks(0, 10, 60, 90);
  t.InsertNoteTicks(10, 0, 61, 90);  // zero length
  t.InsertNoteTicks(20, 10, 0, 0);   // silent rest
  CMidTrackElement* copy = t.Duplicate();
  EXPECT_EQ(t.DoSimplied(), 2);
  EXPECT_EQ(t.GetNoteCount(), 1u);
  // The copy is deep: it keeps its own notes and list.
  EXPECT_EQ(copy->GetNoteCount(), 3u);
  EXPECT_EQ(copy->GetChannelNum(), 3);
  EXPECT_EQ(copy->GetProgram(), 12);
  uint8_t v = 0;
  EXPECT_EQ(copy->GetBankSelectMSB(&v), -1);
  EXPECT_EQ(copy->GetBankSelectLSB(&v), 0);
  EXPECT_EQ(v, 7);
  EXPECT_STREQ(copy->GetTrackName(), "melody");
  EXPECT_NE(copy->GetMMFWavFileLst(), t.GetMMFWavFileLst());
  ExpectChainIntact(*copy);

  CMidTrackElement other;
  copy->AppendNewTrack(&other);
  copy->ResetContent();
  EXPECT_EQ(copy->GetNoteCount(), 0u);
  EXPECT_EQ(copy->GetFirstNote(), nullptr);
  EXPECT_EQ(copy->GetChannelNum(), 0xFF);
  EXPECT_EQ(copy->GetProgram(), -1);
  EXPECT_EQ(copy->GetMMFWavFileLst(), nullptr);
  EXPECT_EQ(copy->GetNextElement(), &other);  // links survive a reset
  other.SetPrevElement(nullptr);
  copy->SetNextElement(nullptr);
  delete copy;
}

}  // namespace
