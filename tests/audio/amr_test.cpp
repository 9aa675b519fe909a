#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <string>

#include "audio/amr/AmrFrames.h"
#include "handset/audio.h"
#include "handset/platform/Streams.h"
#include "tests/TestUtil.h"
#include "tests/audio/AudioTestUtil.h"

namespace {

using hs::test::WriteBytes;

// Frame header bytes: type 7 (12.2 kbit/s, 32 bytes), type 0 (4.75, 13 bytes), type 15 (NO_DATA,
// 1 byte), type 8 (SID, 6 bytes).
const uint8_t kFt7 = 0x3C, kFt0 = 0x04, kFt15 = 0x7C, kFt8 = 0x44;

std::vector<uint8_t> Frames(std::initializer_list<uint8_t> headers, int channels = 1) {
  std::vector<uint8_t> out;
  for (uint8_t h : headers)
    for (int c = 0; c < channels; ++c) {
      size_t size = hs::amr::FrameSize(h);
      out.push_back(h);
      out.insert(out.end(), size - 1, static_cast<uint8_t>(0xA0 + c));
    }
  return out;
}

std::vector<uint8_t> File(const char* header, const std::vector<uint8_t>& body) {
  std::vector<uint8_t> f(header, header + std::strlen(header));
  f.insert(f.end(), body.begin(), body.end());
  return f;
}

class AmrTest : public ::testing::Test {
 protected:
  std::string Path(const std::string& name) { return dir_ + "/" + name; }
  std::string dir_ = hs::test::MakeTempDir("amr");
};

TEST_F(AmrTest, HeadersAreRecognisedInOrderAndWideBandIsNotNarrowBand) {
  const char* headers[] = {"#!AMR\n", "#!AMR-WB\n", "#!AMR_MC1.0\n", "#!AMR-WB_MC1.0\n"};
  for (int t = 0; t < 4; ++t) {
    WriteBytes(Path("h.amr"), File(headers[t], {}));
    short type = 0;
    EXPECT_TRUE(CAmr::IsAmrFormat(Path("h.amr").c_str(), type)) << headers[t];
    EXPECT_EQ(type, t + 1) << headers[t];
  }
  WriteBytes(Path("x.amr"), File("#!AMR ", Frames({kFt7})));
  short type = 0;
  EXPECT_FALSE(CAmr::IsAmrFormat(Path("x.amr").c_str(), type));
  EXPECT_FALSE(CAmr::IsAmrFormat(Path("missing.amr").c_str(), type));
  CAmr amr;
  WriteBytes(Path("h.amr"), File("#!AMR\n", {}));
  EXPECT_FALSE(amr.Load(Path("h.amr").c_str()));  // header only: no frame data
}

TEST_F(AmrTest, FramesLengthAndEstimates) {
  std::vector<uint8_t> body;
  for (int i = 0; i < 50; ++i) body.push_back(kFt15);  // NO_DATA frames still last 20 ms
  WriteBytes(Path("silence.amr"), File("#!AMR\n", body));
  CAmr amr;
  ASSERT_TRUE(amr.Load(Path("silence.amr").c_str()));
  EXPECT_EQ(amr.GetNumSamples(), 50u);
  EXPECT_DOUBLE_EQ(amr.GetAmrLength(), 1.0);

  WriteBytes(Path("mix.amr"), File("#!AMR\n", Frames({kFt7, kFt0, kFt15, kFt8, kFt7})));
  ASSERT_TRUE(amr.Load(Path("mix.amr").c_str()));
  EXPECT_EQ(amr.GetBufferLength(), 32u + 13 + 1 + 6 + 32);
  EXPECT_EQ(amr.GetNumSamples(), 5u);

  EXPECT_EQ(CAmr::GetEstiFileSize(1000), 1606u);
  EXPECT_EQ(CAmr::GetEstiFileSize(19), 6u);
  EXPECT_EQ(CAmr::GetEstiFileSize(0), 6u);

  CAmr empty;
  EXPECT_EQ(empty.GetNumSamples(), 0u);
  EXPECT_EQ(empty.GetAmrLength(), 0.0);
  EXPECT_EQ(empty.GetSingleChannelSize(), 0u);
}

TEST_F(AmrTest, WideBandFilesAreCountedWithTheNarrowBandTable) {
  // Header byte 0x44 is a WB 23.85 frame (61 bytes) but an NB SID frame (6 bytes) by the table.
  std::vector<uint8_t> body(61 * 2, kFt15);
  body[0] = 0x44;
  body[61] = 0x44;
  WriteBytes(Path("wb.awb"), File("#!AMR-WB\n", body));
  CAmr amr;
  ASSERT_TRUE(amr.Load(Path("wb.awb").c_str()));
  EXPECT_EQ(amr.GetAmrType(), 2);
  EXPECT_EQ(amr.GetNumSamples(), 1u + 55 + 1 + 55);  // a SID step, then 55 one-byte steps
}

TEST_F(AmrTest, MultichannelLoadLeavesOutTheLast28BytesAndSaveWritesBigEndianChannels) {
  std::vector<uint8_t> file = File("#!AMR_MC1.0\n", {0x00, 0x00, 0x00, 0x02});
  for (int i = 0; i < 100; ++i) file.push_back(static_cast<uint8_t>(i));
  WriteBytes(Path("mc.amr"), file);
  CAmr amr;
  ASSERT_TRUE(amr.Load(Path("mc.amr").c_str()));
  EXPECT_EQ(amr.GetAmrType(), 3);
  EXPECT_EQ(amr.GetNumChannels(), 2);
  EXPECT_EQ(amr.GetBufferLength(), 72u);
  EXPECT_EQ(amr.GetBuffer()[0], 0);
  EXPECT_EQ(amr.GetBuffer()[71], 71);

  // Only the low 4 bits of the description count; a file no longer than 44 bytes has no data.
  file = File("#!AMR-WB_MC1.0\n", {0xFF, 0xFF, 0xFF, 0xF3});
  file.resize(48, 0x7C);
  WriteBytes(Path("mcwb.awb"), file);
  ASSERT_TRUE(amr.Load(Path("mcwb.awb").c_str()));
  EXPECT_EQ(amr.GetNumChannels(), 3);
  EXPECT_EQ(amr.GetBufferLength(), 1u);
  file.resize(47);
  WriteBytes(Path("mcwb.awb"), file);
  EXPECT_FALSE(amr.Load(Path("mcwb.awb").c_str()));

  std::vector<uint8_t> body = Frames({kFt7, kFt15, kFt0}, 3);
  CAmr mc;
  ASSERT_TRUE(CAmr::ConstructAmrObject(3, 3, body.data(), body.size(), mc, true));
  ASSERT_TRUE(mc.Save(Path("saved.amr").c_str()));
  std::vector<uint8_t> saved = hs::test::ReadBytes(Path("saved.amr"));
  ASSERT_EQ(saved.size(), 12u + 4 + body.size());
  EXPECT_EQ(std::vector<uint8_t>(saved.begin() + 12, saved.begin() + 16),
            (std::vector<uint8_t>{0, 0, 0, 3}));
  EXPECT_EQ(mc.GetNumSamples(), 3u);

  CAmr none;
  EXPECT_FALSE(none.Save(Path("none.amr").c_str()));
  CAmr badType;
  CAmr::ConstructAmrObject(5, 1, body.data(), body.size(), badType, true);
  EXPECT_FALSE(badType.Save(Path("bad.amr").c_str()));
}

TEST_F(AmrTest, SingleChannelExtraction) {
  std::vector<uint8_t> body = Frames({kFt7, kFt15, kFt0, kFt8}, 2);
  CAmr mc;
  CAmr::ConstructAmrObject(3, 2, body.data(), body.size(), mc, true);
  ASSERT_EQ(mc.GetSingleChannelSize(), body.size() / 2);
  std::vector<char> out(mc.GetSingleChannelSize());
  ASSERT_TRUE(mc.GetSingleChannel(1, out.data()));
  // Channel 1's frames (payload 0xA1), except the NO_DATA step which keeps its first byte.
  std::vector<uint8_t> expect;
  for (uint8_t h : {kFt7, kFt15, kFt0, kFt8}) {
    expect.push_back(h);
    expect.insert(expect.end(), hs::amr::FrameSize(h) - 1, 0xA1);
  }
  EXPECT_EQ(std::vector<uint8_t>(out.begin(), out.end()), expect);
  EXPECT_FALSE(mc.GetSingleChannel(2, out.data()));

  // A last step cut short cannot be copied out of the data.
  body.resize(body.size() - 3);
  CAmr cut;
  CAmr::ConstructAmrObject(3, 2, body.data(), body.size(), cut, true);
  std::vector<char> small(cut.GetSingleChannelSize());
  EXPECT_FALSE(cut.GetSingleChannel(1, small.data()));
  CAmr noChannels;
  CAmr::ConstructAmrObject(3, 0, body.data(), body.size(), noChannels, true);
  EXPECT_FALSE(noChannels.GetSingleChannel(0, small.data()));
  EXPECT_EQ(noChannels.GetNumSamples(), 0u);
}

TEST_F(AmrTest, ConstructTakesOverOrCopies) {
  unsigned char* owned = new unsigned char[32]();
  owned[0] = kFt7;
  CAmr taken;
  ASSERT_TRUE(CAmr::ConstructAmrObject(1, 1, owned, 32, taken, false));
  EXPECT_EQ(taken.GetBuffer(), owned);
  EXPECT_EQ(taken.GetNumSamples(), 1u);

  unsigned char local[32] = {kFt7};
  CAmr copied;
  ASSERT_TRUE(CAmr::ConstructAmrObject(1, 1, local, 32, copied, true));
  EXPECT_NE(copied.GetBuffer(), local);
  local[0] = 0;
  EXPECT_EQ(copied.GetBuffer()[0], kFt7);
  copied.Release();
  EXPECT_EQ(copied.GetBuffer(), nullptr);
  EXPECT_EQ(copied.GetNumChannels(), 0);
}

TEST(AmrCorpus, TypeChannelsAndFramesMatchFfprobe) {
  HS_SKIP_WITHOUT_CORPUS();
  if (!hs::test::HaveTool("ffprobe")) GTEST_SKIP() << "ffprobe not installed";
  int checked = 0;
  for (const std::string& path : hs::test::CorpusFiles("amr")) {
    CAmr amr;
    if (!amr.Load(path.c_str())) {
      std::vector<uint8_t> head = hs::test::ReadBytes(path);
      EXPECT_NE(std::string(head.begin(), head.begin() + 2), "#!") << path;
      continue;
    }
    auto probe = hs::test::Probe(path);
    ASSERT_FALSE(probe.empty()) << path;
    bool wide = amr.GetAmrType() == 2 || amr.GetAmrType() == 4;
    EXPECT_EQ(probe["codec_name"], wide ? "amr_wb" : "amr_nb") << path;
    EXPECT_EQ(probe["sample_rate"], wide ? "16000" : "8000") << path;
    EXPECT_EQ(probe["channels"], std::to_string(amr.GetNumChannels())) << path;
    // The narrow-band table miscounts wide-band files on purpose; ffprobe's AMR duration is a
    // bit-rate estimate, so the length checked is frames x 20 ms.
    if (amr.GetAmrType() == 1) {
      EXPECT_EQ(probe["nb_read_packets"], std::to_string(amr.GetNumSamples())) << path;
      EXPECT_DOUBLE_EQ(amr.GetAmrLength(), amr.GetNumSamples() * 0.02) << path;
    }
    ++checked;
  }
  EXPECT_GT(checked, 0);
}

TEST(AmrCorpus, EveryPrefixLoadsOrFailsCleanly) {
  HS_SKIP_WITHOUT_CORPUS();
  std::string path = hs::test::MakeTempDir("amrprefix") + "/p.amr";
  for (const std::string& file : hs::test::CorpusFiles("amr")) {
    std::vector<uint8_t> all = hs::test::ReadBytes(file);
    size_t step = all.size() > 2000 ? all.size() / 500 : 1;
    for (size_t n = 0; n <= all.size(); n += (n < 64 ? 1 : step)) {
      WriteBytes(path, std::vector<uint8_t>(all.begin(), all.begin() + n));
      CAmr amr;
      if (!amr.Load(path.c_str())) continue;
      EXPECT_LE(amr.GetNumSamples(), amr.GetBufferLength());
      std::vector<char> out(amr.GetSingleChannelSize() + 1);
      amr.GetSingleChannel(0, out.data());
    }
  }
}

}  // namespace
