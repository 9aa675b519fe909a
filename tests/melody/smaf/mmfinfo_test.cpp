#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <fstream>

#include "handset/melody/MMFInfo.h"
#include "handset/platform/Results.h"
#include "tests/TestUtil.h"
#include "tests/melody/smaf/MmfImage.h"

namespace {

namespace rc = hs::smaf;
using hs::test::BuildMmf;
using hs::test::ReadBytes;
using hs::test::TrailerMatches;

class Probe : public CMMFInfo {
 public:
  using CMMFInfo::_CaculateCRC;
  using CMMFInfo::_SearchLabel;
  std::vector<uint8_t> Image() {
    const unsigned char* p = GetMMFBuffer();
    return p ? std::vector<uint8_t>(p, p + GetMMFSize()) : std::vector<uint8_t>();
  }
  int Led() {
    int ch = 99;
    GetMA2LedStatus(&ch);
    return ch;
  }
  int Vib(int track) {
    int on = 99;
    GetVibStatus(track, &on);
    return on;
  }
};

void Reseal(std::vector<uint8_t>& v) {
  uint16_t crc = hs::test::Genibus(v.data(), v.size() - 2);
  v[v.size() - 2] = static_cast<uint8_t>(crc >> 8);
  v.back() = static_cast<uint8_t>(crc);
}

TEST(MMFInfoCrc, CheckValueAndTableAgreeWithBitwiseCrc) {
  Probe info;
  EXPECT_EQ(info._CaculateCRC(reinterpret_cast<const unsigned char*>("123456789"), 9), 0xD64E);
  std::vector<uint8_t> noise(1000);
  uint32_t x = 12345;
  for (auto& b : noise) b = static_cast<uint8_t>((x = x * 1103515245u + 12345u) >> 16);
  EXPECT_EQ(info._CaculateCRC(noise.data(), noise.size()),
            hs::test::Genibus(noise.data(), noise.size()));
}

TEST(MMFInfoSearch, ReturnsOnePastTheMatchAndNeverLooksAtTheTail) {
  auto image = BuildMmf(0, "", {});
  std::memcpy(&image[image.size() - 4], "WXYZ", 4);
  Probe info;
  EXPECT_EQ(info.OpenMMFBuf(image.data(), image.size()), rc::kErrChecksum);  // image kept
  const int n = static_cast<int>(image.size());
  EXPECT_EQ(info._SearchLabel("CNTI", 0), 9);
  EXPECT_EQ(info._SearchLabel("CNTI", 9), -1);
  EXPECT_EQ(info._SearchLabel("WX", 0), n - 3);
  EXPECT_EQ(info._SearchLabel("XY", 0), -1);  // fits, but within the last length + 1 positions
  EXPECT_EQ(info._SearchLabel("YZ", 0), -1);
  EXPECT_EQ(info._SearchLabel(nullptr, 0), -1);
  EXPECT_EQ(info._SearchLabel("MMMD", -1), -1);
  EXPECT_EQ(info._SearchLabel("M", n), -1);
}

TEST(MMFInfoOpen, ParsesCopyStatusLedAndVibration) {
  auto image = BuildMmf(0x02, "CR:Someone,L2:\x05,", {{1, 0x44, 0x00}, {2, 0x00, 0x04}});
  Probe info;
  ASSERT_EQ(info.OpenMMFBuf(image.data(), image.size()), rc::kOk);
  EXPECT_EQ(info.GetMMFType(), 2);
  EXPECT_EQ(info.GetCopyStatus(), 0x03);  // the notice adds bit 0 to the file's 2
  EXPECT_EQ(info.Led(), 5);
  int on = -1;
  info.GetTrackLedStatus(5, &on);
  EXPECT_EQ(on, 1);
  const int expectVib[8] = {1, 1, 0, 0, 0, 0, 0, 1};
  for (int c = 0; c < 8; ++c) EXPECT_EQ(info.Vib(c), expectVib[c]) << "channel " << c;
  EXPECT_EQ(info.GetVibStatus(8, &on), rc::kErrTrack);
  EXPECT_EQ(on, 0);  // no score track: reported off
  on = 7;
  EXPECT_EQ(info.GetMA3LedStatus(16, &on), rc::kErrTrack);
  EXPECT_EQ(on, 7);  // outside 0..15 nothing is written
  EXPECT_FALSE(info.IsModified());
}

TEST(MMFInfoOpen, FailuresReportTheirCodeAndKeepTheImage) {
  Probe info;
  auto bad = BuildMmf(0, "", {{1, 0, 0}});
  bad.back() ^= 1;
  EXPECT_EQ(info.OpenMMFBuf(bad.data(), bad.size()), rc::kErrChecksum);
  EXPECT_TRUE(info.IsOpened());
  EXPECT_EQ(info.Image(), bad);
  EXPECT_EQ(info.OpenMMFBuf(bad.data(), 2), rc::kErrChecksum);

  auto led = BuildMmf(0, "L2:\x10,", {});
  EXPECT_EQ(info.OpenMMFBuf(led.data(), led.size()), rc::kErrLedChannel);
  EXPECT_EQ(info.Led(), -1);

  auto five = BuildMmf(0, "", {{1, 0, 0}, {2, 0, 0}, {3, 0, 0}, {4, 0, 0}, {5, 0, 0}});
  EXPECT_EQ(info.OpenMMFBuf(five.data(), five.size()), rc::kErrTooManyTracks);
  EXPECT_TRUE(info.IsValidTrack(15));  // values parsed before the failure stay

  auto cut = BuildMmf(0, "", {});  // status bytes of a last "MTR" would lie past the end
  cut.insert(cut.end() - 2, {'M', 'T', 'R', 1, 0, 0, 0, 0, 0, 0, 0});
  Reseal(cut);
  EXPECT_EQ(info.OpenMMFBuf(cut.data(), cut.size()), rc::kErrStatusPastEnd);

  EXPECT_EQ(info.OpenMMFBuf(nullptr, 10), rc::kErrNoData);
  EXPECT_EQ(info.OpenMMF(nullptr), rc::kErrPath);
  EXPECT_EQ(info.OpenMMF("/nonexistent/dir/x.mmf"), rc::kErrOpen);
  EXPECT_FALSE(info.IsOpened());
  EXPECT_EQ(info.GetCopyStatus(), 8);  // the not-open code handed back as a status byte
  EXPECT_EQ(info.SetVibStatus(0, 1), rc::kErrNotOpen);
  std::string dir = hs::test::MakeTempDir("mmf_empty");
  std::fclose(std::fopen((dir + "/e.mmf").c_str(), "wb"));
  EXPECT_EQ(info.OpenMMF((dir + "/e.mmf").c_str()), rc::kErrEmpty);
}

TEST(MMFInfoPatch, CopyStatusGoesToTheContentsInfoByte) {
  auto image = BuildMmf(0x00, "", {{1, 0, 0}});
  Probe info;
  ASSERT_EQ(info.OpenMMFBuf(image.data(), image.size()), rc::kOk);
  ASSERT_EQ(info.SetCopyStatus(0x42), rc::kOk);
  auto patched = info.Image();
  EXPECT_EQ(patched[19], 0x42);
  EXPECT_TRUE(TrailerMatches(patched));
  // Reopening from this object's own image must not read freed memory.
  ASSERT_EQ(info.OpenMMFBuf(info.GetMMFBuffer(), info.GetMMFSize()), rc::kOk);
  EXPECT_EQ(info.GetCopyStatus(), 0x42);

  image[10] = 'X';  // no "CNTI": both patches that need it fail and change nothing
  Reseal(image);
  ASSERT_EQ(info.OpenMMFBuf(image.data(), image.size()), rc::kOk);
  EXPECT_EQ(info.SetCopyStatus(5), rc::kErrChecksum);
  EXPECT_EQ(info.SetMA2LedStatus(3), rc::kErrNoCnti);
  EXPECT_EQ(info.GetCopyStatus(), 0);
  EXPECT_FALSE(info.IsModified());
  EXPECT_EQ(info.Image(), image);
}

TEST(MMFInfoPatch, LedInsertionGrowsFiveBytesAndWrapsSizeLowBytes) {
  // Padded so that the file chunk size ends in 0xFD: +5 wraps to 0x02 with no carry.
  size_t pad = (0x1FD - (BuildMmf(0, "", {{1, 0, 0}}).size() - 8)) & 0xFF;
  auto image = BuildMmf(0, "", {{1, 0, 0}}, pad);
  ASSERT_EQ(image[7], 0xFD);
  Probe info;
  ASSERT_EQ(info.OpenMMFBuf(image.data(), image.size()), rc::kOk);
  EXPECT_EQ(info.Led(), -1);
  ASSERT_EQ(info.SetMA2LedStatus(9), rc::kOk);
  auto grown = info.Image();
  ASSERT_EQ(grown.size(), image.size() + 5);
  auto head = std::vector<uint8_t>(image.begin(), image.begin() + 21);
  head[7] = 0x02;
  head[15] += 5;
  EXPECT_EQ(std::vector<uint8_t>(grown.begin(), grown.begin() + 21), head);
  EXPECT_EQ(std::string(grown.begin() + 21, grown.begin() + 26), std::string("L2:\x09,", 5));
  EXPECT_TRUE(std::equal(image.begin() + 21, image.end() - 2, grown.begin() + 26));
  EXPECT_TRUE(TrailerMatches(grown));

  // The second set lands one byte past the value, over the ","; a reopen reads the first.
  ASSERT_EQ(info.SetMA2LedStatus(4), rc::kOk);
  EXPECT_EQ(info.Led(), 4);
  auto twice = info.Image();
  EXPECT_EQ(twice.size(), grown.size());
  EXPECT_EQ(std::string(twice.begin() + 21, twice.begin() + 26), std::string("L2:\x09\x04", 5));
  EXPECT_TRUE(TrailerMatches(twice));
  Probe again;
  ASSERT_EQ(again.OpenMMFBuf(twice.data(), twice.size()), rc::kOk);
  EXPECT_EQ(again.Led(), 9);
  EXPECT_EQ(info.SetMA2LedStatus(16), rc::kErrLedChannel);
  EXPECT_EQ(info.SetMA2LedStatus(-2), rc::kErrLedChannel);
}

TEST(MMFInfoPatch, VibrationBitIsOnlyEverSet) {
  auto image = BuildMmf(0, "", {{1, 0x00, 0x00}, {2, 0x00, 0x00}});
  const size_t second = 21 + 18;  // the second score track
  Probe info;
  ASSERT_EQ(info.OpenMMFBuf(image.data(), image.size()), rc::kOk);
  ASSERT_EQ(info.SetVibStatus(5, 1), rc::kOk);  // 4k+1: low nibble of the first status byte
  ASSERT_EQ(info.SetVibStatus(6, 1), rc::kOk);  // 4k+2: high nibble of the second
  auto on = info.Image();
  EXPECT_EQ(on[second + 12], 0x04);
  EXPECT_EQ(on[second + 13], 0x40);
  EXPECT_TRUE(TrailerMatches(on));
  ASSERT_EQ(info.SetVibStatus(5, 0), rc::kOk);
  EXPECT_EQ(info.Vib(5), 0);
  EXPECT_EQ(info.Image(), on);  // the file keeps the bit
  Probe again;
  ASSERT_EQ(again.OpenMMFBuf(on.data(), on.size()), rc::kOk);
  EXPECT_EQ(again.Vib(5), 1);
  EXPECT_EQ(info.SetVibStatus(8, 1), rc::kErrTrack);

  auto ma3 = BuildMmf(0, "", {{5, 0x00, 0x00}});  // track number not track / 4 + 1
  ASSERT_EQ(info.OpenMMFBuf(ma3.data(), ma3.size()), rc::kOk);
  EXPECT_EQ(info.SetVibStatus(0, 1), rc::kErrTrackNumber);
  EXPECT_FALSE(info.IsModified());
  // The MA-3 LED switch is memory only: modified, yet the image is untouched.
  EXPECT_EQ(info.SetMA3LedStatus(2, 1), rc::kOk);
  EXPECT_TRUE(info.IsModified());
  EXPECT_EQ(info.Image(), ma3);
}

TEST(MMFInfoSave, OnlyPendingChangesAreWrittenAndOnlyWhereAsked) {
  std::string dir = hs::test::MakeTempDir("mmf_save");
  std::string a = dir + "/a.mmf", b = dir + "/b.mmf";
  auto image = BuildMmf(0, "", {{1, 0, 0}});
  std::ofstream(a, std::ios::binary)
      .write(reinterpret_cast<const char*>(image.data()), long(image.size()));
  Probe info;
  ASSERT_EQ(info.OpenMMF(a.c_str()), rc::kOk);
  ASSERT_EQ(info.SetCopyStatus(3), rc::kOk);
  info.CloseMMF(0);  // discards
  EXPECT_EQ(ReadBytes(a), image);

  ASSERT_EQ(info.OpenMMF(a.c_str()), rc::kOk);
  ASSERT_EQ(info.SetCopyStatus(3), rc::kOk);
  EXPECT_EQ(info.SaveMMF(b.c_str()), rc::kOk);
  EXPECT_FALSE(info.IsModified());
  EXPECT_EQ(ReadBytes(b)[19], 3);
  ASSERT_EQ(info.SetMA2LedStatus(1), rc::kOk);
  EXPECT_EQ(info.SaveMMF((dir + "/no/such.mmf").c_str()), rc::kErrCreate);
  EXPECT_TRUE(info.IsModified());
  ASSERT_EQ(info.OpenMMF(b.c_str()), rc::kOk);  // closing a.mmf first saves it
  EXPECT_EQ(ReadBytes(a).size(), image.size() + 5);
  {
    CMMFInfo scoped;
    ASSERT_EQ(scoped.OpenMMF(a.c_str()), rc::kOk);
    ASSERT_EQ(scoped.SetVibStatus(0, 1), rc::kOk);
  }  // the destructor saves
  Probe reread;
  ASSERT_EQ(reread.OpenMMF(a.c_str()), rc::kOk);
  EXPECT_EQ(reread.Vib(0), 1);
  EXPECT_EQ(reread.Led(), 1);
  EXPECT_EQ(reread.GetCopyStatus(), 3);

  ASSERT_EQ(info.OpenMMFBuf(image.data(), image.size()), rc::kOk);
  info.SetCopyStatus(1);
  EXPECT_EQ(info.SaveMMF(nullptr), rc::kErrPath);  // opened from memory: no path
}

TEST(MMFInfoMidiSupport, HoldsValuesWithoutAnImageAndNeverSaves) {
  Probe info;
  EXPECT_EQ(info.InitMIDISupport(4), rc::kErrType);
  EXPECT_FALSE(info.IsOpened());
  ASSERT_EQ(info.InitMIDISupport(2), rc::kOk);
  EXPECT_EQ(info.GetMMFSize(), 0u);
  EXPECT_EQ(info.GetMMFBuffer(), nullptr);
  EXPECT_EQ(info.SetMA2LedStatus(12), rc::kOk);
  EXPECT_EQ(info.SetVibStatus(15, 1), rc::kOk);
  EXPECT_EQ(info.Led(), 12);
  EXPECT_EQ(info.Vib(15), 1);
  EXPECT_TRUE(info.IsModified());
  EXPECT_EQ(info.SaveMMF("/nonexistent/x.mmf"), rc::kErrNoImage);
  Probe copy(info);
  EXPECT_EQ(copy.Led(), 12);

  ASSERT_EQ(info.InitMIDISupport(3), rc::kOk);  // starts afresh
  int on = 1;
  EXPECT_EQ(info.GetMA2LedStatus(&on), rc::kErrType);
  info.GetTrackLedStatus(0, &on);
  EXPECT_EQ(on, 0);
  EXPECT_EQ(info.Vib(15), 0);
}

}  // namespace
