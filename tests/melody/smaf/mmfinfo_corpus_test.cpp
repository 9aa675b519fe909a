#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <map>
#include <set>

#include "handset/melody/MMFInfo.h"
#include "handset/platform/Results.h"
#include "tests/TestUtil.h"
#include "tests/melody/smaf/MmfImage.h"

namespace {

namespace rc = hs::smaf;
using hs::test::TrailerMatches;

std::vector<uint8_t> ImageOf(CMMFInfo& info) {
  const unsigned char* p = info.GetMMFBuffer();
  return std::vector<uint8_t>(p, p + info.GetMMFSize());
}

int LedByteOf(const std::vector<uint8_t>& bytes) {
  const char label[] = "L2:";
  auto it = std::search(bytes.begin(), bytes.end() - 3, label, label + 3);
  return it == bytes.end() - 3 ? -1 : *(it + 3);
}

// Every file opens exactly when its trailer is the CRC; each kind of patch then leaves a valid
// trailer and the patched image reopens with the new values.
TEST(MMFInfoCorpus, EveryFileOpensAndTakesEachKindOfPatch) {
  HS_SKIP_WITHOUT_CORPUS();
  auto files = hs::test::CorpusFiles("mmf");
  ASSERT_FALSE(files.empty());
  int opened = 0, vibPatched = 0, ledInserted = 0;
  for (const auto& path : files) {
    SCOPED_TRACE(path);
    auto bytes = hs::test::ReadBytes(path);
    CMMFInfo info;
    int result = info.OpenMMF(path.c_str());
    if (!TrailerMatches(bytes)) {
      // Files with bytes after the declared chunk end carry their CRC too early.
      EXPECT_EQ(result, rc::kErrChecksum);
      EXPECT_NE(path.find("trailing"), std::string::npos);
      continue;
    }
    ASSERT_EQ(result, rc::kOk);
    ++opened;
    EXPECT_EQ(info.GetMMFType(), 2);
    EXPECT_EQ(info.GetMMFSize(), bytes.size());
    int oldLed = 0;
    ASSERT_EQ(info.GetMA2LedStatus(&oldLed), rc::kOk);
    EXPECT_EQ(oldLed, LedByteOf(bytes));
    EXPECT_EQ(info.GetCopyStatus() & 0xFE, bytes[19] & 0xFE);

    ASSERT_EQ(info.OpenMMFBuf(bytes.data(), bytes.size()), rc::kOk);
    ASSERT_EQ(info.SetCopyStatus(0x02), rc::kOk);
    EXPECT_TRUE(TrailerMatches(ImageOf(info)));
    ASSERT_EQ(info.SetMA2LedStatus(7), rc::kOk);
    auto afterLed = ImageOf(info);
    EXPECT_TRUE(TrailerMatches(afterLed));
    EXPECT_EQ(afterLed.size(), bytes.size() + (oldLed < 0 ? 5 : 0));
    ledInserted += oldLed < 0;
    int vib = info.IsValidTrack(0) ? info.SetVibStatus(0, 1) : rc::kErrTrack;
    if (vib == rc::kOk) {
      ++vibPatched;
      EXPECT_TRUE(TrailerMatches(ImageOf(info)));
    } else {
      // Only MA-2 numbering (track 1 for channels 0-3) is patched; other files keep their bytes.
      EXPECT_TRUE(vib == rc::kErrTrackNumber || vib == rc::kErrTrack) << vib;
      EXPECT_EQ(ImageOf(info), afterLed);
    }

    auto patched = ImageOf(info);
    CMMFInfo again;
    ASSERT_EQ(again.OpenMMFBuf(patched.data(), patched.size()), rc::kOk);
    int led = 0, on = 0;
    again.GetMA2LedStatus(&led);
    EXPECT_EQ(led, oldLed < 0 ? 7 : oldLed);  // an existing item is patched one byte late
    EXPECT_EQ(again.GetCopyStatus() & 0xFE, 0x02);
    again.GetVibStatus(0, &on);
    EXPECT_TRUE(vib != rc::kOk || on == 1);
    info.CloseMMF(0);
  }
  EXPECT_GE(opened, 40);
  EXPECT_GT(vibPatched, 5);
  EXPECT_GT(ledInserted, 30);
}

// Prefixes of every file, as is and re-sealed with a valid CRC so that parsing reaches the cut.
// Every length is tried up to 1 KiB (the whole of the smallest ringtones), then the last 16,
// a coarse stride and every cut near a label the reader looks for; this keeps the quadratic cost
// in seconds under the sanitizers. Cuts near a label (the value true) also get every patch, since
// the patch offsets count from those labels. HANDSET_SMAF_EVERY_PREFIX=N tries every length of
// the files of at most N bytes (quadratic: 32768 takes about a minute).
std::map<size_t, bool> CutLengths(const std::vector<uint8_t>& bytes) {
  const size_t n = bytes.size(), kHead = 1024, kTail = 16, kNear = 16;
  std::map<size_t, bool> lengths;
  const char* every = std::getenv("HANDSET_SMAF_EVERY_PREFIX");
  if (every && n <= std::strtoul(every, nullptr, 10))
    for (size_t len = 0; len <= n; ++len) lengths.emplace(len, false);
  for (size_t len = 0; len <= std::min(n, kHead); ++len) lengths.emplace(len, false);
  for (size_t len = n > kTail ? n - kTail : 0; len <= n; ++len) lengths.emplace(len, false);
  for (size_t len = 0; len <= n; len += std::max<size_t>(n / 32, 1)) lengths.emplace(len, false);
  for (const char* label : {"CNTI", "CR:", "L2:", "MTR"}) {
    auto at = bytes.begin();
    while ((at = std::search(at, bytes.end(), label, label + std::strlen(label))) != bytes.end()) {
      size_t p = static_cast<size_t>(at - bytes.begin());
      for (size_t len = p > kNear ? p - kNear : 0; len <= std::min(n, p + kNear); ++len)
        lengths[len] = true;
      ++at;
    }
  }
  return lengths;
}

TEST(MMFInfoCorpus, EveryPrefixEndsInAResultCode) {
  HS_SKIP_WITHOUT_CORPUS();
  const std::set<int> known = {rc::kOk,
                               rc::kErrChecksum,
                               rc::kErrLedChannel,
                               rc::kErrStatusPastEnd,
                               rc::kErrTooManyTracks,
                               rc::kErrNoData};
  for (const auto& path : hs::test::CorpusFiles("mmf")) {
    SCOPED_TRACE(path);
    auto bytes = hs::test::ReadBytes(path);
    std::vector<uint8_t> sealed;
    uint16_t running = 0xFFFF;  // CRC register over bytes[0, covered)
    size_t covered = 0;
    CMMFInfo info;
    for (const auto& [len, nearLabel] : CutLengths(bytes)) {
      int result = info.OpenMMFBuf(len ? bytes.data() : nullptr, len);
      ASSERT_TRUE(known.count(result)) << "length " << len << " gave " << result;
      if (len < 3) continue;
      sealed.assign(bytes.begin(), bytes.begin() + len);
      for (; covered < len - 2; ++covered) running = hs::test::GenibusStep(running, bytes[covered]);
      uint16_t crc = static_cast<uint16_t>(running ^ 0xFFFF);
      sealed[len - 2] = static_cast<uint8_t>(crc >> 8);
      sealed[len - 1] = static_cast<uint8_t>(crc);
      result = info.OpenMMFBuf(sealed.data(), sealed.size());
      ASSERT_TRUE(known.count(result)) << "sealed length " << len << " gave " << result;
      if (result != rc::kOk || !nearLabel) continue;
      // A parsed prefix must also take every patch without reaching past its end.
      int r1 = info.SetCopyStatus(1), r2 = info.SetVibStatus(0, 1), r3 = info.SetMA2LedStatus(3);
      EXPECT_TRUE(r1 == rc::kOk || r1 == rc::kErrChecksum) << len;
      EXPECT_TRUE(r2 == rc::kOk || r2 == rc::kErrTrack || r2 == rc::kErrTrackNumber ||
                  r2 == rc::kErrStatusPastEnd)
          << len;
      EXPECT_TRUE(r3 == rc::kOk || r3 == rc::kErrNoCnti) << len;
      info.CloseMMF(0);
    }
  }
}

}  // namespace
