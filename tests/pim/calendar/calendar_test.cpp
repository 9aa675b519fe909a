#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <ctime>
#include <limits>
#include <string>
#include <vector>

#include "handset/pim.h"
#include "platform/LocalTime.h"

namespace {

TEST(CalDate, LenientValidity) {
  EXPECT_TRUE(ME_CAL_DATE(2007, 2, 29).IsValid());  // February allows 29 days in every year
  EXPECT_TRUE(ME_CAL_DATE(2999, 12, 31, 23, 59, 59).IsValid());
  EXPECT_TRUE(ME_CAL_DATE(1, 1, 1).IsValid());
  for (const ME_CAL_DATE& d :
       {ME_CAL_DATE(2007, 2, 30), ME_CAL_DATE(3000, 1, 1), ME_CAL_DATE(0, 1, 1),
        ME_CAL_DATE(-5, 1, 1), ME_CAL_DATE(2007, 0, 1), ME_CAL_DATE(2007, 13, 1),
        ME_CAL_DATE(2007, 4, 31), ME_CAL_DATE(2007, 1, 0), ME_CAL_DATE(2007, 1, 1, 24),
        ME_CAL_DATE(2007, 1, 1, 0, 60), ME_CAL_DATE(2007, 1, 1, 0, 0, 60),
        ME_CAL_DATE(2007, 1, 1, -1), ME_CAL_DATE()})
    EXPECT_FALSE(d.IsValid()) << d.nYear << "-" << d.nMonth << "-" << d.nDay << " " << d.nHour;
}

TEST(CalDate, CompareIsChronological) {
  const ME_CAL_DATE sorted[] = {
      ME_CAL_DATE(),
      ME_CAL_DATE(1999, 12, 31, 23, 59, 59),
      ME_CAL_DATE(2000, 1, 1),
      ME_CAL_DATE(2000, 1, 1, 0, 0, 1),
      ME_CAL_DATE(2000, 1, 1, 0, 1, 0),
      ME_CAL_DATE(2000, 1, 1, 1, 0, 0),
      ME_CAL_DATE(2000, 1, 2),
      ME_CAL_DATE(2000, 2, 1),
  };
  const int n = sizeof sorted / sizeof sorted[0];
  for (int i = 0; i < n; ++i)
    for (int j = 0; j < n; ++j) {
      int c = sorted[i].Compare(sorted[j]);
      EXPECT_EQ(c < 0, i < j) << i << " " << j;
      EXPECT_EQ(c == 0, i == j) << i << " " << j;
    }
}

// Runs the conversions in a fixed zone and puts the process zone back afterwards.
class CalTime : public ::testing::Test {
 protected:
  void SetUp() override {
    const char* tz = std::getenv("TZ");
    had_ = tz != nullptr;
    if (tz) saved_ = tz;
  }
  void TearDown() override { hs::os::SetTimeZone(had_ ? saved_.c_str() : nullptr); }
  bool had_ = false;
  std::string saved_;
};

TEST_F(CalTime, ConversionsInUtc) {
  hs::os::SetTimeZone("UTC0");
  ME_CAL_DATE epoch(static_cast<time_t>(0));
  EXPECT_EQ(epoch, ME_CAL_DATE(1970, 1, 1));
  EXPECT_EQ(ME_CAL_DATE(2007, 2, 28, 12).ToTimeT(), static_cast<time_t>(1172664000));
  ME_CAL_DATE d(2007, 2, 28, 12);
  EXPECT_EQ(d.FromTimeT(1172664000 + 86400 + 61), 1);
  EXPECT_EQ(d, ME_CAL_DATE(2007, 3, 1, 12, 1, 1));

  const time_t huge = std::numeric_limits<time_t>::max();
  ME_CAL_DATE bad(huge);
  EXPECT_EQ(bad, ME_CAL_DATE());  // a time the library cannot convert gives all zero
  EXPECT_EQ(d.FromTimeT(huge), 0);
  EXPECT_EQ(d, ME_CAL_DATE(2007, 3, 1, 12, 1, 1));  // and a failed conversion changes nothing
}

TEST_F(CalTime, DaylightSavingNeverMovesADate) {
  // One hour east of UTC, one more in summer (last Sunday of March to last Sunday of October).
  hs::os::SetTimeZone("CET-1CEST,M3.5.0,M10.5.0/3");
  ME_CAL_DATE summer(static_cast<time_t>(1183291200));   // 2007-07-01 12:00 UTC
  EXPECT_EQ(summer, ME_CAL_DATE(2007, 7, 1, 13, 0, 0));  // standard time, not 14:00
  EXPECT_EQ(ME_CAL_DATE(2007, 7, 1, 13).ToTimeT(), static_cast<time_t>(1183291200));
  EXPECT_EQ(ME_CAL_DATE(2007, 1, 1, 13).ToTimeT(), static_cast<time_t>(1167652800));
  // Across both changes, hour by hour: time -> date -> time and date -> time -> date are exact,
  // including 02:30 on the spring day, which a summer clock skips.
  for (time_t start : {1174690800, 1193529600})
    for (time_t t = start; t < start + 3 * 86400; t += 1800) EXPECT_EQ(ME_CAL_DATE(t).ToTimeT(), t);
  ME_CAL_DATE skipped(2007, 3, 25, 2, 30, 0);
  EXPECT_EQ(ME_CAL_DATE(skipped.ToTimeT()), skipped);
}

void Fill(char* field, size_t size, char c, size_t len) {
  std::memset(field, 0, size);
  std::memset(field, c, len);
}

CCalendarInfo Sample() {
  CCalendarInfo c;
  c.m_nType = 2;
  c.m_calStart = ME_CAL_DATE(2007, 2, 29, 9, 30, 0);
  c.m_calEnd = ME_CAL_DATE(2007, 3, 1, 10, 0, 0);
  c.m_calAlarm = ME_CAL_DATE(2007, 2, 28, 9, 15, 5);
  c.m_calModified = ME_CAL_DATE(2006, 12, 24);
  c.m_calRepeatEnd = ME_CAL_DATE(2008, 1, 1);
  c.m_nRepeat = 3;
  c.SetHandle(0x80000001u);
  c.SetIndex(42);
  Fill(c.m_szSubject, sizeof c.m_szSubject, 'S', 511);
  Fill(c.m_szContact, sizeof c.m_szContact, 'C', 512);
  std::strcpy(c.m_szPhone, "P");
  Fill(c.m_szCategory, sizeof c.m_szCategory, 'K', 64);
  Fill(c.m_szAlarmFile, sizeof c.m_szAlarmFile, 'F', 259);
  c.m_nAlarmSound = -7;
  return c;
}

uint32_t WordAt(const std::vector<uint8_t>& img, size_t at) {
  return img[at] | (img[at + 1] << 8) | (img[at + 2] << 16) | (uint32_t{img[at + 3]} << 24);
}

std::vector<uint8_t> Image(const CCalendarInfo& c) {
  std::vector<uint8_t> img(CALINFO_IMAGE_SIZE);
  c._PackImage(img.data());
  return img;
}

TEST(CalendarInfo, EmptyRecordAndImageLayout) {
  CCalendarInfo c;
  EXPECT_TRUE(c.IsEmpty());
  std::vector<uint8_t> img = Image(c);
  for (size_t at = 0; at < img.size(); at += 4)
    if (at != 8 && at != 116 && at < 168) {
      EXPECT_EQ(WordAt(img, at), 0u) << at;
    }
  EXPECT_EQ(WordAt(img, 8), 1u);
  EXPECT_EQ(WordAt(img, 116), 0x7FFFFFFFu);

  img = Image(Sample());
  // Type, start day, alarm second, repeat, handle, index, alarm sound.
  const std::pair<size_t, uint32_t> words[] = {{0, 2},
                                               {12 + 8, 29},
                                               {60 + 20, 5},
                                               {108, 3},
                                               {148, 0x80000001u},
                                               {164, 42},
                                               {4080, static_cast<uint32_t>(-7)}};
  for (const auto& [at, v] : words) EXPECT_EQ(WordAt(img, at), v) << at;
  // Unaligned text fields: each starts at its offset and ends before the next one.
  const std::pair<size_t, char> bytes[] = {{168, 'S'}, {679, 0},    {2216, 'C'}, {2727, 'C'},
                                           {2728, 0},  {2729, 'P'}, {3755, 'K'}, {3820, 'F'}};
  for (const auto& [at, c] : bytes) EXPECT_EQ(img[at], c) << at;

  CCalendarInfo e = Sample();
  e.Empty();
  EXPECT_TRUE(e.IsEmpty());
  EXPECT_EQ(e.m_szSubject[0], '\0');
  EXPECT_EQ(e.m_calStart, ME_CAL_DATE());
  EXPECT_EQ(e.GetHandle(), 0x80000001u);  // the phone's handle and index stay
}

TEST(CalendarInfo, SurvivesPackingThroughSerialisedBlocks) {
  CCalendarInfo a = Sample(), b;
  b.m_nType = 1;
  std::strcpy(b.m_szLocation, "Room 4");
  CPackageBlk blk;
  a.PackData("cal[0]", blk);
  b.PackData("cal[1]", blk);
  std::vector<uint8_t> bytes = blk.Serialize();
  CUnpackageBlk un;
  ASSERT_TRUE(un.Unpack(bytes.data(), bytes.size()));
  const void* data;
  uint32_t size = 0;
  ASSERT_TRUE(un.GetData("cal[0].CALINFO_VERSION", &data, &size));
  EXPECT_EQ(std::string(static_cast<const char*>(data), size), "\x10\x10");
  ASSERT_TRUE(un.GetData("cal[1].this", &data, &size));
  EXPECT_EQ(size, 4084u);

  CCalendarInfo a2, b2;
  ASSERT_EQ(a2.UnpackData("cal[0]", un), 1);
  ASSERT_EQ(b2.UnpackData("cal[1]", un), 1);
  EXPECT_EQ(Image(a2), Image(a));
  EXPECT_EQ(Image(b2), Image(b));
  CCalendarInfo copy;
  copy = a2;
  EXPECT_EQ(Image(copy), Image(a));
}

TEST(CalendarInfo, EveryDamagedBlockIsRefusedAndChangesNothing) {
  const std::vector<uint8_t> good = Image(Sample());
  const std::vector<uint8_t> before = Image(CCalendarInfo());
  auto refused = [&](const CPackageBlk& blk) {
    CCalendarInfo c;
    int rc = c.UnpackData("", CUnpackageBlk(blk));
    return rc == 0 && Image(c) == before;
  };
  for (size_t n = 0; n <= good.size() + 1; ++n) {  // every truncation, and one byte too many
    if (n == good.size()) continue;
    std::vector<uint8_t> img(good.begin(), good.begin() + std::min(n, good.size()));
    if (n > good.size()) img.push_back(0);
    CPackageBlk blk;
    blk.Add(".CALINFO_VERSION", "\x10\x10", 2);
    blk.Add(".this", img.data(), static_cast<uint32_t>(img.size()));
    ASSERT_TRUE(refused(blk)) << n;
  }
  for (const std::string& version : {std::string("\x11\x10"), std::string("\x10"),
                                     std::string("\x10\x10\0\0", 4), std::string()}) {
    CPackageBlk blk;
    blk.Add(".CALINFO_VERSION", version.data(), static_cast<uint32_t>(version.size()));
    blk.Add(".this", good.data(), static_cast<uint32_t>(good.size()));
    EXPECT_TRUE(refused(blk)) << version.size();
  }
  CPackageBlk noImage;
  noImage.Add(".CALINFO_VERSION", "\x10\x10", 2);
  EXPECT_TRUE(refused(noImage));
  // Only a version that is there and differs refuses a block: one without the key is read.
  CPackageBlk noVersion;
  noVersion.Add(".this", good.data(), static_cast<uint32_t>(good.size()));
  CCalendarInfo taken;
  ASSERT_EQ(taken.UnpackData("", CUnpackageBlk(noVersion)), 1);
  EXPECT_EQ(Image(taken), good);

  // A text stored without its NUL is cut inside its field.
  std::vector<uint8_t> img = good;
  std::memset(img.data() + 680, 'L', 512);
  std::memset(img.data() + 3755, 'K', 65);
  CPackageBlk blk;
  blk.Add(".CALINFO_VERSION", "\x10\x10", 2);
  blk.Add(".this", img.data(), static_cast<uint32_t>(img.size()));
  CCalendarInfo c;
  ASSERT_EQ(c.UnpackData("", CUnpackageBlk(blk)), 1);
  EXPECT_EQ(std::strlen(c.m_szLocation), 511u);
  EXPECT_EQ(std::strlen(c.m_szCategory), 64u);
  EXPECT_EQ(c.m_szAlarmFile[0], 'F');
}

}  // namespace
