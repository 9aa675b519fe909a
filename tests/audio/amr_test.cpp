#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "audio/amr/AmrFrames.h"
#include "handset/audio.h"
#include "tests/TestUtil.h"
#include "tests/audio/AudioTestUtil.h"

namespace {

using Bytes = std::vector<uint8_t>;
using hs::test::WriteBytes;

// Frame header bytes: 12.2 kbit/s (32 bytes), 4.75 (13), NO_DATA (1), SID (6).
const uint8_t kFt7 = 0x3C, kFt0 = 0x04, kFt15 = 0x7C, kFt8 = 0x44;

// One step per header: `channels` frames of that type, channel c's payload bytes 0xA0 + c.
Bytes Frames(std::initializer_list<uint8_t> headers, int channels = 1) {
  Bytes out;
  for (uint8_t h : headers)
    for (int c = 0; c < channels; ++c) {
      out.push_back(h);
      out.insert(out.end(), hs::amr::FrameSize(h) - 1, static_cast<uint8_t>(0xA0 + c));
    }
  return out;
}

Bytes File(const char* header, const Bytes& body) {
  Bytes f(header, header + std::strlen(header));
  f.insert(f.end(), body.begin(), body.end());
  return f;
}

class AmrTest : public ::testing::Test {
 protected:
  // Writes `bytes` and loads them; false when CAmr refuses.
  bool Load(const Bytes& bytes) {
    WriteBytes(path_, bytes);
    return amr_.Load(path_.c_str());
  }
  std::string path_ = hs::test::MakeTempDir("amr") + "/f.amr";
  CAmr amr_;
};

TEST_F(AmrTest, HeadersAreMatchedInOrderAndWideBandIsNotNarrowBand) {
  const char* headers[] = {"#!AMR\n", "#!AMR-WB\n", "#!AMR_MC1.0\n", "#!AMR-WB_MC1.0\n"};
  for (short t = 1; t <= 4; ++t) {
    WriteBytes(path_, File(headers[t - 1], {}));
    short type = 0;
    EXPECT_TRUE(CAmr::IsAmrFormat(path_.c_str(), type) && type == t) << headers[t - 1];
  }
  EXPECT_FALSE(Load(File("#!AMR\n", {})));  // header only: no frame data
  EXPECT_FALSE(Load(File("#!AMR ", Frames({kFt7}))));
  short type = 0;
  EXPECT_FALSE(CAmr::IsAmrFormat((path_ + ".missing").c_str(), type));
}

TEST_F(AmrTest, FramesLengthAndEstimates) {
  ASSERT_TRUE(Load(File("#!AMR\n", Bytes(50, kFt15))));  // NO_DATA frames still last 20 ms
  EXPECT_EQ(amr_.GetNumSamples(), 50u);
  EXPECT_DOUBLE_EQ(amr_.GetAmrLength(), 1.0);
  ASSERT_TRUE(Load(File("#!AMR\n", Frames({kFt7, kFt0, kFt15, kFt8, kFt7}))));
  EXPECT_EQ(amr_.GetBufferLength(), 32u + 13 + 1 + 6 + 32);
  EXPECT_EQ(amr_.GetNumSamples(), 5u);
  EXPECT_EQ(CAmr::GetEstiFileSize(1000), 1606u);
  EXPECT_EQ(CAmr::GetEstiFileSize(19), 6u);
  // The narrow-band table is used for wide-band data too: a WB 23.85 frame (header 0x44, 61
  // bytes) reads as a 6-byte SID frame, its payload here as 55 NO_DATA frames.
  Bytes wb(61, kFt15);
  wb[0] = 0x44;
  ASSERT_TRUE(Load(File("#!AMR-WB\n", wb)));
  EXPECT_EQ(amr_.GetNumSamples(), 56u);
  CAmr empty;
  EXPECT_EQ(empty.GetNumSamples() + empty.GetSingleChannelSize(), 0u);
  EXPECT_EQ(empty.GetAmrLength(), 0.0);
}

TEST_F(AmrTest, MultichannelFilesLoseTheirLast28BytesAndSaveBigEndianChannels) {
  Bytes file = File("#!AMR_MC1.0\n", {0, 0, 0, 2});
  for (int i = 0; i < 100; ++i) file.push_back(static_cast<uint8_t>(i));
  ASSERT_TRUE(Load(file));
  EXPECT_EQ(amr_.GetAmrType(), 3);
  EXPECT_EQ(amr_.GetNumChannels(), 2);
  ASSERT_EQ(amr_.GetBufferLength(), 72u);
  EXPECT_EQ(amr_.GetBuffer()[71], 71);
  // Only the low 4 bits of the description count; 47 bytes of WB multichannel hold no data.
  file = File("#!AMR-WB_MC1.0\n", {0xFF, 0xFF, 0xFF, 0xF3});
  file.resize(48, kFt15);
  ASSERT_TRUE(Load(file));
  EXPECT_EQ(amr_.GetNumChannels(), 3);
  EXPECT_EQ(amr_.GetBufferLength(), 1u);
  file.pop_back();
  EXPECT_FALSE(Load(file));

  Bytes body = Frames({kFt7, kFt15, kFt0}, 3);
  CAmr mc;
  ASSERT_TRUE(CAmr::ConstructAmrObject(3, 3, body.data(), body.size(), mc, true));
  ASSERT_TRUE(mc.Save(path_.c_str()));
  EXPECT_EQ(hs::test::ReadBytes(path_), File("#!AMR_MC1.0\n", hs::test::Cat({0, 0, 0, 3}, body)));
  EXPECT_EQ(mc.GetNumSamples(), 3u);
  CAmr none, badType;
  CAmr::ConstructAmrObject(5, 1, body.data(), body.size(), badType, true);
  EXPECT_FALSE(none.Save(path_.c_str()));
  EXPECT_FALSE(badType.Save(path_.c_str()));
}

TEST_F(AmrTest, SingleChannelExtraction) {
  Bytes body = Frames({kFt7, kFt15, kFt0, kFt8}, 2);
  CAmr mc;
  CAmr::ConstructAmrObject(3, 2, body.data(), body.size(), mc, true);
  ASSERT_EQ(mc.GetSingleChannelSize(), body.size() / 2);
  std::vector<char> out(mc.GetSingleChannelSize());
  ASSERT_TRUE(mc.GetSingleChannel(1, out.data()));
  // Channel 1's frames, except the NO_DATA step, which gives its first byte.
  Bytes expect;
  for (uint8_t h : {kFt7, kFt15, kFt0, kFt8}) {
    expect.push_back(h);
    expect.insert(expect.end(), hs::amr::FrameSize(h) - 1, 0xA1);
  }
  EXPECT_EQ(Bytes(out.begin(), out.end()), expect);
  EXPECT_FALSE(mc.GetSingleChannel(2, out.data()));

  body.resize(body.size() - 3);  // a last step cut short cannot be copied out
  CAmr cut, noChannels;
  CAmr::ConstructAmrObject(3, 2, body.data(), body.size(), cut, true);
  EXPECT_FALSE(cut.GetSingleChannel(1, out.data()));
  CAmr::ConstructAmrObject(3, 0, body.data(), body.size(), noChannels, true);
  EXPECT_FALSE(noChannels.GetSingleChannel(0, out.data()));
  EXPECT_EQ(noChannels.GetNumSamples(), 0u);
}

TEST(AmrCorpus, TypeChannelsAndFramesMatchFfprobe) {
  HS_SKIP_WITHOUT_CORPUS();
  if (!hs::test::HaveTool("ffprobe")) GTEST_SKIP() << "ffprobe not installed";
  int checked = 0;
  for (const std::string& path : hs::test::CorpusFiles("amr")) {
    CAmr amr;
    if (!amr.Load(path.c_str())) {
      EXPECT_NE(hs::test::ReadBytes(path)[0], '#') << path;  // only headerless files are refused
      continue;
    }
    auto probe = hs::test::Probe(path);
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
    Bytes all = hs::test::ReadBytes(file);
    size_t step = all.size() > 2000 ? all.size() / 300 : 1;
    for (size_t n = 0; n <= all.size(); n += (n < 64 ? 1 : step)) {
      WriteBytes(path, Bytes(all.begin(), all.begin() + static_cast<long>(n)));
      CAmr amr;
      if (!amr.Load(path.c_str())) continue;
      EXPECT_LE(amr.GetNumSamples(), amr.GetBufferLength());
      std::vector<char> out(amr.GetSingleChannelSize() + 1);
      amr.GetSingleChannel(0, out.data());
    }
  }
}

}  // namespace
