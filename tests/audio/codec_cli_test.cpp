#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

#include "handset/audio.h"
#include "handset/platform.h"
#include "platform/CodecModules.h"
#include "tests/TestUtil.h"
#include "tests/audio/AudioTestUtil.h"

namespace {

using namespace tarvox::cpp;

std::string Cli(const std::string& args, int* status) {
  std::string out;
  *status = hs::test::RunCommand("'" + hs::test::CliPath() + "' " + args + " 2>&1", &out);
  return out;
}

TEST(AmrNBCodecTest, PartialFramesAndStreamErrors) {
  if (!AmrNBCodec::isAvailable()) GTEST_SKIP() << "opencore-amrnb not installed";
  std::vector<char> pcm(2 * (1600 + 10));  // ten frames of silence and a partial one
  MemoryReader in(pcm.data(), static_cast<unsigned long>(pcm.size()));
  MemoryWriter amr(6 + 11 * 32);
  ASSERT_TRUE(AmrNBCodec::encodeAmrStorageFromPCM(in, amr));
  ASSERT_EQ(amr.getPosition(), amr.getSize());  // the partial frame is padded to a whole one
  EXPECT_EQ(std::string(amr.getData(), 7), "#!AMR\n\x3C");
  MemoryReader cut(amr.getData(), amr.getPosition() - 5);  // a cut last frame is dropped
  MemoryWriter out(11 * 320);
  ASSERT_TRUE(AmrNBCodec::decodeAmrStorageToPCM(cut, out));
  EXPECT_EQ(out.getPosition(), 10u * 320);

  MemoryReader wb("#!AMR-WB\n\x3C", 10), none(nullptr, 0);
  EXPECT_FALSE(AmrNBCodec::decodeAmrStorageToPCM(wb, out));
  EXPECT_FALSE(AmrNBCodec::encodeAmrStorageFromPCM(none, amr));
  MemoryReader again(pcm.data(), static_cast<unsigned long>(pcm.size()));
  MemoryWriter tiny(10);
  EXPECT_THROW(AmrNBCodec::encodeAmrStorageFromPCM(again, tiny), WriterException);
}

TEST(AmrNBCodecTest, MissingCodecFailsWithoutTouchingTheStreams) {
  hs::codec::SetAmrNbModuleName("handset-no-such-codec");
  char pcm[640] = {0};
  MemoryReader in(pcm, sizeof pcm);
  MemoryWriter out(1000);
  EXPECT_FALSE(AmrNBCodec::isAvailable());
  EXPECT_FALSE(AmrNBCodec::encodeAmrStorageFromPCM(in, out));
  EXPECT_FALSE(AmrNBCodec::decodeAmrStorageToPCM(in, out));
  EXPECT_EQ(in.getPosition() + out.getPosition(), 0u);
  hs::codec::SetAmrNbModuleName(nullptr);
}

TEST(AmrCli, EncodeToneThenDecodeItBack) {
  if (!AmrNBCodec::isAvailable()) GTEST_SKIP() << "opencore-amrnb not installed";
  if (!hs::test::HaveTool("ffmpeg") || !hs::test::HaveTool("ffprobe"))
    GTEST_SKIP() << "ffmpeg/ffprobe not installed";
  std::string dir = hs::test::MakeTempDir("amrcli"), gen = "ffmpeg -v quiet -f lavfi -i sine=";
  // FFmpeg's WAV has a LIST chunk before the samples, which the reader must step over.
  ASSERT_EQ(hs::test::RunCommand(gen + "duration=5:sample_rate=8000 " + dir + "/tone.wav", nullptr),
            0);
  int status = 0;
  std::string out = Cli("amr encode " + dir + "/tone.wav " + dir + "/tone.amr", &status);
  ASSERT_EQ(status, 0) << out;
  auto probe = hs::test::Probe(dir + "/tone.amr");
  EXPECT_EQ(probe["codec_name"], "amr_nb");
  EXPECT_EQ(probe["nb_read_packets"], "250");
  out = Cli("amr info --json " + dir + "/tone.amr", &status);
  EXPECT_NE(out.find("\"frames\":250,\"seconds\":5"), std::string::npos) << out;

  out = Cli("amr decode " + dir + "/tone.amr " + dir + "/back.wav", &status);
  ASSERT_EQ(status, 0) << out;
  probe = hs::test::Probe(dir + "/back.wav");
  EXPECT_EQ(probe["codec_name"] + probe["sample_rate"] + probe["channels"], "pcm_s16le80001");
  EXPECT_EQ(probe["duration_ts"], "40000");
  int ch = 0;
  std::vector<int16_t> back = hs::test::WavSamples(hs::test::ReadBytes(dir + "/back.wav"), &ch);
  double power = 0;
  for (size_t i = 8000; i < back.size(); ++i) power += double(back[i]) * back[i];
  // FFmpeg's tone has amplitude 1/8 of full scale: mean power (4096^2)/2 comes back roughly.
  EXPECT_NEAR(power / (back.size() - 8000) / (4096.0 * 4096 / 2), 1.0, 0.5);

  ASSERT_EQ(
      hs::test::RunCommand(gen + "duration=1:sample_rate=16000 -ac 2 " + dir + "/st.wav", nullptr),
      0);
  out = Cli("amr encode " + dir + "/st.wav " + dir + "/x.amr", &status);
  EXPECT_EQ(status, 1);
  EXPECT_NE(out.find("st.wav: AMR-NB needs mono PCM at 8000 Hz"), std::string::npos) << out;
}

TEST(AmrCli, ChannelExtractionWritesASingleChannelFile) {
  std::string dir = hs::test::MakeTempDir("amrch");
  std::vector<uint8_t> body;  // two steps of two 12.2 frames, then a step of NO_DATA bytes
  for (int frame = 0; frame < 4; ++frame) {
    body.push_back(0x3C);
    body.insert(body.end(), 31, static_cast<uint8_t>(frame));
  }
  body.insert(body.end(), 2, 0x7C);
  body.resize(body.size() + 28);  // loading leaves out the last 28 bytes of such files
  CAmr mc;
  CAmr::ConstructAmrObject(3, 2, body.data(), body.size(), mc, true);
  ASSERT_TRUE(mc.Save((dir + "/mc.amr").c_str()));
  int status = 0;
  std::string out = Cli("amr channel " + dir + "/mc.amr 1 " + dir + "/one.amr", &status);
  ASSERT_EQ(status, 0) << out;
  std::vector<uint8_t> one = hs::test::ReadBytes(dir + "/one.amr");
  std::vector<uint8_t> expect = {'#', '!', 'A', 'M', 'R', '\n'};
  for (uint8_t frame : {1, 3}) {
    expect.push_back(0x3C);
    expect.insert(expect.end(), 31, frame);
  }
  expect.push_back(0x7C);
  EXPECT_EQ(one, expect);
  out = Cli("amr channel " + dir + "/mc.amr 2 " + dir + "/two.amr", &status);
  EXPECT_EQ(status, 1);
  EXPECT_NE(out.find("mc.amr: has 2 channel(s)"), std::string::npos) << out;
  Cli("amr frobnicate x", &status);
  EXPECT_EQ(status, 2);
}

}  // namespace
