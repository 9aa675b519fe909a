#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <fstream>
#include <iterator>

#include "handset/melody/MMFInfo.h"
#include "handset/platform/Results.h"
#include "tests/TestUtil.h"
#include "tests/melody/smaf/MmfImage.h"

namespace {

namespace rc = hs::smaf;
using hs::test::BuildMmf;
using hs::test::TrailerMatches;

class Probe : public CMMFInfo {
 public:
  using CMMFInfo::_CaculateCRC;
  using CMMFInfo::_SearchLabel;
  const std::vector<uint8_t> Image() {
    const unsigned char* p = GetMMFBuffer();
    return p ? std::vector<uint8_t>(p, p + GetMMFSize()) : std::vector<uint8_t>();
  }
};

std::vector<uint8_t> Slurp(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  return std::vector<uint8_t>(std::istreambuf_iterator<char>(in), {});
}

void Spill(const std::string& path, const std::vector<uint8_t>& bytes) {
  std::ofstream out(path, std::ios::binary);
  out.write(reinterpret_cast<const char*>(bytes.data()),
            static_cast<std::streamsize>(bytes.size()));
}

size_t Find(const std::vector<uint8_t>& v, const char* label) {
  auto it = std::search(v.begin(), v.end(), label, label + std::strlen(label));
  return it == v.end() ? std::string::npos : static_cast<size_t>(it - v.begin());
}

TEST(MMFInfoCrc, GenibusCheckValueAndTableAgreeWithBitwiseCrc) {
  Probe info;
  const char* check = "123456789";
  EXPECT_EQ(info._CaculateCRC(reinterpret_cast<const unsigned char*>(check), 9), 0xD64E);
  std::vector<uint8_t> noise(1000);
  uint32_t x = 12345;
  for (auto& b : noise) b = static_cast<uint8_t>((x = x * 1103515245u + 12345u) >> 16);
  EXPECT_EQ(info._CaculateCRC(noise.data(), noise.size()),
            hs::test::Genibus(noise.data(), noise.size()));
  EXPECT_EQ(info._CaculateCRC(noise.data(), 0), 0x0000);  // 0xFFFF complemented
}

TEST(MMFInfoSearch, ReturnsOnePastTheMatchAndNeverLooksAtTheTail) {
  Probe info;
  auto image = BuildMmf(0, "", {});
  ASSERT_EQ(info.OpenMMFBuf(image.data(), image.size()), rc::kOk);
  EXPECT_EQ(info._SearchLabel("CNTI", 0), 9);
  EXPECT_EQ(info._SearchLabel("CNTI", 9), -1);
  EXPECT_EQ(info._SearchLabel("MMMD", 0), 1);
  EXPECT_EQ(info._SearchLabel(nullptr, 0), -1);
  EXPECT_EQ(info._SearchLabel("MMMD", -1), -1);
  EXPECT_EQ(info._SearchLabel("M", static_cast<int>(image.size())), -1);

  // The last length + 1 positions are never matched, even where the label fits completely.
  auto tail = image;
  std::memcpy(&tail[tail.size() - 4], "WXYZ", 4);
  Probe t;
  EXPECT_EQ(t.OpenMMFBuf(tail.data(), tail.size()), rc::kErrChecksum);  // image kept anyway
  const int n = static_cast<int>(tail.size());
  EXPECT_EQ(t._SearchLabel("WX", 0), n - 3);
  EXPECT_EQ(t._SearchLabel("XY", 0), -1);
  EXPECT_EQ(t._SearchLabel("YZ", 0), -1);
}

TEST(MMFInfoOpen, ParsesCopyStatusLedAndVibrationFromTheImage) {
  auto image = BuildMmf(0x02, "CR:Someone,L2:\x05,", {{1, 0x44, 0x00}, {2, 0x00, 0x04}});
  CMMFInfo info;
  ASSERT_EQ(info.OpenMMFBuf(image.data(), image.size()), rc::kOk);
  EXPECT_EQ(info.GetMMFType(), 2);
  EXPECT_EQ(info.GetMMFSize(), image.size());
  EXPECT_EQ(info.GetCopyStatus(), 0x03);  // the notice adds bit 0; the file byte says 2
  int ch = 99;
  EXPECT_EQ(info.GetMA2LedStatus(&ch), rc::kOk);
  EXPECT_EQ(ch, 5);
  int on = -1;
  EXPECT_EQ(info.GetTrackLedStatus(5, &on), rc::kOk);
  EXPECT_EQ(on, 1);
  info.GetTrackLedStatus(4, &on);
  EXPECT_EQ(on, 0);
  const int expectVib[8] = {1, 1, 0, 0, 0, 0, 0, 1};
  for (int c = 0; c < 8; ++c) {
    EXPECT_TRUE(info.IsValidTrack(c));
    EXPECT_EQ(info.GetVibStatus(c, &on), rc::kOk);
    EXPECT_EQ(on, expectVib[c]) << "channel " << c;
  }
  on = 7;
  EXPECT_EQ(info.GetVibStatus(8, &on), rc::kErrTrack);
  EXPECT_EQ(on, 0);  // a channel without a score track reports off
  on = 7;
  EXPECT_EQ(info.GetMA3LedStatus(16, &on), rc::kErrTrack);
  EXPECT_EQ(on, 7);  // outside 0..15 nothing is written
  EXPECT_FALSE(info.IsValidTrack(-1));
  EXPECT_EQ(info.GetADPCMNum(), 0);
  EXPECT_FALSE(info.IsModified());
}

TEST(MMFInfoOpen, ParseFailuresKeepTheImageOpen) {
  auto bad = BuildMmf(0, "", {{1, 0, 0}});
  bad.back() ^= 1;
  CMMFInfo info;
  EXPECT_EQ(info.OpenMMFBuf(bad.data(), bad.size()), rc::kErrChecksum);
  EXPECT_TRUE(info.IsOpened());
  EXPECT_NE(info.GetMMFBuffer(), nullptr);
  EXPECT_EQ(info.GetMMFSize(), bad.size());

  const uint8_t tiny[2] = {0xFF, 0xFF};
  EXPECT_EQ(info.OpenMMFBuf(tiny, 1), rc::kErrChecksum);
  EXPECT_EQ(info.OpenMMFBuf(tiny, 2), rc::kErrChecksum);

  auto led = BuildMmf(0, "L2:\x10,", {});
  int ch = 0;
  EXPECT_EQ(info.OpenMMFBuf(led.data(), led.size()), rc::kErrLedChannel);
  info.GetMA2LedStatus(&ch);
  EXPECT_EQ(ch, -1);

  auto five = BuildMmf(0, "", {{1, 0, 0}, {2, 0, 0}, {3, 0, 0}, {4, 0, 0}, {5, 0, 0}});
  EXPECT_EQ(info.OpenMMFBuf(five.data(), five.size()), rc::kErrTooManyTracks);
  EXPECT_TRUE(info.IsValidTrack(15));  // the four tracks before it were taken

  // "MTR" whose status bytes would lie in or past the trailer.
  auto cut = BuildMmf(0, "", {});
  cut.insert(cut.end() - 2, {'M', 'T', 'R', 1, 0, 0, 0, 0, 0, 0, 0});
  uint16_t crc = hs::test::Genibus(cut.data(), cut.size() - 2);
  cut[cut.size() - 2] = static_cast<uint8_t>(crc >> 8);
  cut.back() = static_cast<uint8_t>(crc);
  EXPECT_EQ(info.OpenMMFBuf(cut.data(), cut.size()), rc::kErrStatusPastEnd);

  EXPECT_EQ(info.OpenMMFBuf(nullptr, 10), rc::kErrNoData);
  EXPECT_EQ(info.OpenMMFBuf(tiny, 0), rc::kErrNoData);
  EXPECT_EQ(info.OpenMMF(nullptr), rc::kErrPath);
  info.CloseMMF(0);
  EXPECT_EQ(info.OpenMMF("/nonexistent/dir/x.mmf"), rc::kErrOpen);
  EXPECT_FALSE(info.IsOpened());
  std::string dir = hs::test::MakeTempDir("mmf_empty");
  Spill(dir + "/empty.mmf", {});
  EXPECT_EQ(info.OpenMMF((dir + "/empty.mmf").c_str()), rc::kErrEmpty);
}

TEST(MMFInfoClosed, EveryOperationReportsNotOpen) {
  CMMFInfo info;
  int v = 0;
  EXPECT_EQ(info.GetCopyStatus(), 8);  // the not-open code handed back as a status byte
  EXPECT_EQ(info.SetCopyStatus(1), rc::kErrNotOpen);
  EXPECT_EQ(info.GetMA2LedStatus(&v), rc::kErrNotOpen);
  EXPECT_EQ(info.SetMA2LedStatus(1), rc::kErrNotOpen);
  EXPECT_EQ(info.GetTrackLedStatus(0, &v), rc::kErrNotOpen);
  EXPECT_EQ(info.GetVibStatus(0, &v), rc::kErrNotOpen);
  EXPECT_EQ(info.SetVibStatus(0, 1), rc::kErrNotOpen);
  EXPECT_EQ(info.GetMA3LedStatus(0, &v), rc::kErrNotOpen);
  EXPECT_EQ(info.SetMA3LedStatus(0, 1), rc::kErrNotOpen);
  EXPECT_EQ(info.SaveMMF("x"), rc::kErrNotOpen);
  EXPECT_EQ(info.GetMMFType(), -1);
  EXPECT_EQ(info.GetMMFBuffer(), nullptr);
  EXPECT_EQ(info.IsModified(), 0);
}

TEST(MMFInfoPatch, CopyStatusGoesToTheContentsInfoByte) {
  auto image = BuildMmf(0x00, "", {{1, 0, 0}});
  Probe info;
  ASSERT_EQ(info.OpenMMFBuf(image.data(), image.size()), rc::kOk);
  EXPECT_EQ(info.SetCopyStatus(0x42), rc::kOk);
  EXPECT_TRUE(info.IsModified());
  EXPECT_EQ(info.GetCopyStatus(), 0x42);
  auto patched = info.Image();
  EXPECT_EQ(patched[19], 0x42);
  EXPECT_TRUE(TrailerMatches(patched));
  CMMFInfo again;
  ASSERT_EQ(again.OpenMMFBuf(patched.data(), patched.size()), rc::kOk);
  EXPECT_EQ(again.GetCopyStatus(), 0x42);

  // Without "CNTI" the patch fails and nothing changes.
  auto noCnti = BuildMmf(0x00, "", {{1, 0, 0}});
  noCnti[10] = 'X';
  uint16_t crc = hs::test::Genibus(noCnti.data(), noCnti.size() - 2);
  noCnti[noCnti.size() - 2] = static_cast<uint8_t>(crc >> 8);
  noCnti.back() = static_cast<uint8_t>(crc);
  Probe none;
  ASSERT_EQ(none.OpenMMFBuf(noCnti.data(), noCnti.size()), rc::kOk);
  EXPECT_EQ(none.SetCopyStatus(5), rc::kErrChecksum);
  EXPECT_EQ(none.GetCopyStatus(), 0);
  EXPECT_FALSE(none.IsModified());
  EXPECT_EQ(none.Image(), noCnti);
  EXPECT_EQ(none.SetMA2LedStatus(3), rc::kErrNoCnti);
  EXPECT_FALSE(none.IsModified());
}

TEST(MMFInfoPatch, LedInsertionGrowsFiveBytesAndWrapsSizeLowBytes) {
  // Pad so that the file chunk size ends in 0xFD: +5 must wrap to 0x02 with no carry.
  auto probe = BuildMmf(0, "", {{1, 0, 0}});
  size_t pad = (0x1FD - (probe.size() - 8)) & 0xFF;
  auto image = BuildMmf(0, "", {{1, 0, 0}}, pad);
  ASSERT_EQ(image[7], 0xFD);
  Probe info;
  ASSERT_EQ(info.OpenMMFBuf(image.data(), image.size()), rc::kOk);
  int ch = 0;
  info.GetMA2LedStatus(&ch);
  EXPECT_EQ(ch, -1);
  ASSERT_EQ(info.SetMA2LedStatus(9), rc::kOk);
  auto grown = info.Image();
  ASSERT_EQ(grown.size(), image.size() + 5);
  EXPECT_EQ(std::vector<uint8_t>(grown.begin(), grown.begin() + 21), [&] {
    auto head = std::vector<uint8_t>(image.begin(), image.begin() + 21);
    head[7] = 0x02;  // 0xFD + 5, the higher bytes unchanged
    head[15] = static_cast<uint8_t>(head[15] + 5);
    return head;
  }());
  EXPECT_EQ(std::string(grown.begin() + 21, grown.begin() + 26), std::string("L2:\x09,", 5));
  EXPECT_TRUE(std::equal(image.begin() + 21, image.end() - 2, grown.begin() + 26));
  EXPECT_TRUE(TrailerMatches(grown));

  // Second set: written one byte past the value, over the ",". A reopen still reads the first.
  ASSERT_EQ(info.SetMA2LedStatus(4), rc::kOk);
  info.GetMA2LedStatus(&ch);
  EXPECT_EQ(ch, 4);
  auto twice = info.Image();
  EXPECT_EQ(twice.size(), grown.size());
  EXPECT_EQ(twice[24], 9);
  EXPECT_EQ(twice[25], 4);
  EXPECT_TRUE(TrailerMatches(twice));
  CMMFInfo again;
  ASSERT_EQ(again.OpenMMFBuf(twice.data(), twice.size()), rc::kOk);
  again.GetMA2LedStatus(&ch);
  EXPECT_EQ(ch, 9);

  EXPECT_EQ(info.SetMA2LedStatus(16), rc::kErrLedChannel);
  EXPECT_EQ(info.SetMA2LedStatus(-2), rc::kErrLedChannel);
  EXPECT_EQ(info.SetMA2LedStatus(-1), rc::kOk);
  EXPECT_EQ(info.Image()[25], 0xFF);
}

TEST(MMFInfoPatch, VibrationBitIsOnlyEverSet) {
  auto image = BuildMmf(0, "", {{1, 0x00, 0x00}, {2, 0x00, 0x00}});
  Probe info;
  ASSERT_EQ(info.OpenMMFBuf(image.data(), image.size()), rc::kOk);
  size_t second = Find(image, "MTR") + 18;
  ASSERT_EQ(image[second + 3], 2);
  ASSERT_EQ(info.SetVibStatus(5, 1), rc::kOk);  // channel 4k+1: low nibble of the first byte
  ASSERT_EQ(info.SetVibStatus(6, 1), rc::kOk);  // 4k+2: high nibble of the second byte
  auto on = info.Image();
  EXPECT_EQ(on[second + 12], 0x04);
  EXPECT_EQ(on[second + 13], 0x40);
  EXPECT_TRUE(TrailerMatches(on));

  ASSERT_EQ(info.SetVibStatus(5, 0), rc::kOk);
  int v = 1;
  info.GetVibStatus(5, &v);
  EXPECT_EQ(v, 0);
  EXPECT_EQ(info.Image(), on);  // the file keeps the bit
  CMMFInfo again;
  ASSERT_EQ(again.OpenMMFBuf(on.data(), on.size()), rc::kOk);
  again.GetVibStatus(5, &v);
  EXPECT_EQ(v, 1);

  EXPECT_EQ(info.SetVibStatus(8, 1), rc::kErrTrack);  // no third score track
  EXPECT_EQ(info.SetVibStatus(-1, 1), rc::kErrTrack);

  // A score track whose number byte does not follow the channel group is refused.
  auto odd = BuildMmf(0, "", {{5, 0x00, 0x00}});
  Probe ma3;
  ASSERT_EQ(ma3.OpenMMFBuf(odd.data(), odd.size()), rc::kOk);
  EXPECT_EQ(ma3.SetVibStatus(0, 1), rc::kErrTrackNumber);
  EXPECT_FALSE(ma3.IsModified());
  EXPECT_EQ(ma3.Image(), odd);
}

TEST(MMFInfoPatch, MA3LedLivesInMemoryOnly) {
  auto image = BuildMmf(0, "", {{1, 0, 0}});
  Probe info;
  ASSERT_EQ(info.OpenMMFBuf(image.data(), image.size()), rc::kOk);
  EXPECT_EQ(info.SetMA3LedStatus(2, 1), rc::kOk);
  EXPECT_EQ(info.SetMA3LedStatus(4, 1), rc::kErrTrack);
  int v = 0;
  EXPECT_EQ(info.GetMA3LedStatus(2, &v), rc::kOk);
  EXPECT_EQ(v, 1);
  EXPECT_TRUE(info.IsModified());
  EXPECT_EQ(info.Image(), image);
}

TEST(MMFInfoSave, SaveCloseAndDestructorWriteOnlyPendingChanges) {
  std::string dir = hs::test::MakeTempDir("mmf_save");
  std::string path = dir + "/a.mmf";
  auto image = BuildMmf(0, "", {{1, 0, 0}});
  Spill(path, image);

  CMMFInfo info;
  ASSERT_EQ(info.OpenMMF(path.c_str()), rc::kOk);
  EXPECT_EQ(info.SaveMMF(nullptr), rc::kOk);  // unmodified: nothing written
  ASSERT_EQ(info.SetCopyStatus(3), rc::kOk);
  info.CloseMMF(0);  // discards
  EXPECT_EQ(Slurp(path), image);

  ASSERT_EQ(info.OpenMMF(path.c_str()), rc::kOk);
  ASSERT_EQ(info.SetCopyStatus(3), rc::kOk);
  EXPECT_EQ(info.SaveMMF((dir + "/b.mmf").c_str()), rc::kOk);
  EXPECT_FALSE(info.IsModified());
  EXPECT_EQ(Slurp(dir + "/b.mmf")[19], 3);
  EXPECT_EQ(Slurp(path), image);
  ASSERT_EQ(info.SetMA2LedStatus(1), rc::kOk);
  EXPECT_EQ(info.SaveMMF((dir + "/no/such/dir.mmf").c_str()), rc::kErrCreate);
  EXPECT_TRUE(info.IsModified());
  // Opening another file closes this one and saves it first.
  ASSERT_EQ(info.OpenMMF((dir + "/b.mmf").c_str()), rc::kOk);
  EXPECT_EQ(Slurp(path).size(), image.size() + 5);

  {
    CMMFInfo scoped;
    ASSERT_EQ(scoped.OpenMMF(path.c_str()), rc::kOk);
    ASSERT_EQ(scoped.SetVibStatus(0, 1), rc::kOk);
  }
  auto saved = Slurp(path);
  EXPECT_TRUE(TrailerMatches(saved));
  CMMFInfo reread;
  ASSERT_EQ(reread.OpenMMF(path.c_str()), rc::kOk);
  int v = 0;
  reread.GetVibStatus(0, &v);
  EXPECT_EQ(v, 1);
  reread.GetMA2LedStatus(&v);
  EXPECT_EQ(v, 1);

  // Opened from memory there is no path to save to.
  CMMFInfo mem;
  ASSERT_EQ(mem.OpenMMFBuf(image.data(), image.size()), rc::kOk);
  mem.SetCopyStatus(1);
  EXPECT_EQ(mem.SaveMMF(nullptr), rc::kErrPath);
}

TEST(MMFInfoMidiSupport, HoldsValuesWithoutAnImage) {
  CMMFInfo info;
  EXPECT_EQ(info.InitMIDISupport(4), rc::kErrType);
  EXPECT_FALSE(info.IsOpened());
  ASSERT_EQ(info.InitMIDISupport(2), rc::kOk);
  EXPECT_TRUE(info.IsOpened());
  EXPECT_EQ(info.GetMMFSize(), 0u);
  EXPECT_EQ(info.GetMMFBuffer(), nullptr);
  for (int c = 0; c < 16; ++c) EXPECT_TRUE(info.IsValidTrack(c));
  EXPECT_EQ(info.SetMA2LedStatus(12), rc::kOk);
  EXPECT_EQ(info.SetVibStatus(15, 1), rc::kOk);
  EXPECT_EQ(info.SetCopyStatus(2), rc::kOk);
  int v = 0;
  info.GetMA2LedStatus(&v);
  EXPECT_EQ(v, 12);
  info.GetVibStatus(15, &v);
  EXPECT_EQ(v, 1);
  EXPECT_TRUE(info.IsModified());
  EXPECT_EQ(info.SaveMMF("/nonexistent/x.mmf"), rc::kErrNoImage);

  CMMFInfo copy(info);  // copies carry the settings
  copy.GetMA2LedStatus(&v);
  EXPECT_EQ(v, 12);

  ASSERT_EQ(info.InitMIDISupport(3), rc::kOk);  // starts afresh
  EXPECT_EQ(info.GetMA2LedStatus(&v), rc::kErrType);
  EXPECT_EQ(info.GetTrackLedStatus(0, &v), rc::kOk);
  EXPECT_EQ(v, 0);
  info.GetVibStatus(15, &v);
  EXPECT_EQ(v, 0);
  EXPECT_EQ(info.CloseMMF(1), rc::kOk);
  EXPECT_FALSE(info.IsOpened());
}

TEST(MMFInfoPresets, WaveConversionDefaults) {
  const MMF_WAVCNVT* all[] = {&g_DEFAULT_MA2LOWQTY, &g_DEFAULT_MA2HIQTY,  &g_DEFAULT_MA3LOWQTY,
                              &g_DEFAULT_MA3HIQTY,  &g_DEFAULT_MA5LOWQTY, &g_DEFAULT_MA5HIQTY};
  const int expect[6][4] = {{2, 4000, 16, 1},  {2, 8000, 16, 1}, {1, 4000, 8, 1},
                            {2, 16000, 16, 1}, {1, 4000, 8, 1},  {2, 24000, 16, 1}};
  for (int i = 0; i < 6; ++i) {
    EXPECT_EQ(all[i]->nMode, expect[i][0]);
    EXPECT_EQ(all[i]->nSampleRate, expect[i][1]);
    EXPECT_EQ(all[i]->nBitsPerSample, expect[i][2]);
    EXPECT_EQ(all[i]->nChannels, expect[i][3]);
  }
}

}  // namespace
