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

using tarvox::cpp::AmrNBCodec;
using tarvox::cpp::MemoryReader;
using tarvox::cpp::MemoryWriter;

std::vector<char> Tone(size_t samples) {
  std::vector<char> pcm(samples * 2);
  for (size_t i = 0; i < samples; ++i) {
    int16_t v = static_cast<int16_t>(8000 * std::sin(2 * M_PI * 440 * i / 8000.0));
    pcm[2 * i] = static_cast<char>(v & 0xFF);
    pcm[2 * i + 1] = static_cast<char>((v >> 8) & 0xFF);
  }
  return pcm;
}

std::string Cli(const std::string& args, int* status) {
  std::string out;
  *status = hs::test::RunCommand("'" + hs::test::CliPath() + "' " + args + " 2>&1", &out);
  return out;
}

TEST(AmrNBCodecTest, EncodesAndDecodesFramesOf160Samples) {
  if (!AmrNBCodec::isAvailable()) GTEST_SKIP() << "opencore-amrnb not installed";
  std::vector<char> pcm = Tone(8000 + 10);  // one second and a partial frame
  MemoryReader in(pcm.data(), static_cast<unsigned long>(pcm.size()));
  MemoryWriter amr(6 + 51 * 32);
  ASSERT_TRUE(AmrNBCodec::encodeAmrStorageFromPCM(in, amr));
  ASSERT_EQ(amr.getPosition(), 6u + 51 * 32);
  EXPECT_EQ(std::string(amr.getData(), 6), "#!AMR\n");
  EXPECT_EQ(static_cast<unsigned char>(amr.getData()[6]), 0x3C);  // 12.2 kbit/s frames

  // A cut last frame is dropped; the rest decodes to 160 samples a frame with the tone's power.
  MemoryReader back(amr.getData(), amr.getPosition() - 5);
  MemoryWriter out(51 * 320);
  ASSERT_TRUE(AmrNBCodec::decodeAmrStorageToPCM(back, out));
  ASSERT_EQ(out.getPosition(), 50u * 320);
  double in2 = 0, out2 = 0;
  for (size_t i = 1600; i < 16000; i += 2) {
    int16_t a = static_cast<int16_t>((pcm[i] & 0xFF) | ((pcm[i + 1] & 0xFF) << 8));
    int16_t b =
        static_cast<int16_t>((out.getData()[i] & 0xFF) | ((out.getData()[i + 1] & 0xFF) << 8));
    in2 += double(a) * a;
    out2 += double(b) * b;
  }
  EXPECT_NEAR(out2 / in2, 1.0, 0.5);

  const char wrong[] = "#!AMR-WB\n\x3c";
  MemoryReader bad(wrong, sizeof wrong - 1);
  EXPECT_FALSE(AmrNBCodec::decodeAmrStorageToPCM(bad, out));
  MemoryReader none(nullptr, 0);
  EXPECT_FALSE(AmrNBCodec::encodeAmrStorageFromPCM(none, amr));
  // Stream errors reach the caller.
  MemoryReader again(pcm.data(), static_cast<unsigned long>(pcm.size()));
  MemoryWriter tiny(10);
  EXPECT_THROW(AmrNBCodec::encodeAmrStorageFromPCM(again, tiny), tarvox::cpp::WriterException);
}

TEST(AmrNBCodecTest, MissingCodecFailsWithoutTouchingTheStreams) {
  hs::codec::SetAmrNbModuleName("handset-no-such-codec");
  std::vector<char> pcm = Tone(320);
  MemoryReader in(pcm.data(), static_cast<unsigned long>(pcm.size()));
  MemoryWriter out(1000);
  EXPECT_FALSE(AmrNBCodec::isAvailable());
  EXPECT_FALSE(AmrNBCodec::encodeAmrStorageFromPCM(in, out));
  EXPECT_FALSE(AmrNBCodec::decodeAmrStorageToPCM(in, out));
  EXPECT_EQ(in.getPosition(), 0u);
  EXPECT_EQ(out.getPosition(), 0u);
  hs::codec::SetAmrNbModuleName(nullptr);
}

TEST(AmrCli, EncodeToneThenDecodeItBack) {
  if (!AmrNBCodec::isAvailable()) GTEST_SKIP() << "opencore-amrnb not installed";
  if (!hs::test::HaveTool("ffmpeg") || !hs::test::HaveTool("ffprobe"))
    GTEST_SKIP() << "ffmpeg/ffprobe not installed";
  std::string dir = hs::test::MakeTempDir("amrcli");
  // FFmpeg's WAV carries a LIST chunk before the samples, which the reader must step over.
  ASSERT_EQ(hs::test::RunCommand("ffmpeg -v quiet -f lavfi -i sine=frequency=440:duration=5:"
                                 "sample_rate=8000 -ac 1 -c:a pcm_s16le " +
                                     dir + "/tone.wav",
                                 nullptr),
            0);
  int status = 0;
  std::string out = Cli("amr encode " + dir + "/tone.wav " + dir + "/tone.amr", &status);
  ASSERT_EQ(status, 0) << out;
  auto probe = hs::test::Probe(dir + "/tone.amr");
  EXPECT_EQ(probe["codec_name"], "amr_nb");
  EXPECT_EQ(probe["nb_read_packets"], "250");

  out = Cli("amr info --json " + dir + "/tone.amr", &status);
  EXPECT_EQ(status, 0);
  EXPECT_NE(out.find("\"frames\":250"), std::string::npos) << out;
  EXPECT_NE(out.find("\"seconds\":5"), std::string::npos) << out;

  out = Cli("amr decode " + dir + "/tone.amr " + dir + "/back.wav", &status);
  ASSERT_EQ(status, 0) << out;
  probe = hs::test::Probe(dir + "/back.wav");
  EXPECT_EQ(probe["codec_name"], "pcm_s16le");
  EXPECT_EQ(probe["sample_rate"], "8000");
  EXPECT_EQ(probe["channels"], "1");
  EXPECT_EQ(probe["duration_ts"], "40000");

  ASSERT_EQ(hs::test::RunCommand("ffmpeg -v quiet -f lavfi -i sine=duration=1:sample_rate=16000 "
                                 "-ac 2 -c:a pcm_s16le " +
                                     dir + "/stereo.wav",
                                 nullptr),
            0);
  out = Cli("amr encode " + dir + "/stereo.wav " + dir + "/x.amr", &status);
  EXPECT_EQ(status, 1);
  EXPECT_NE(out.find("stereo.wav"), std::string::npos) << out;
}

TEST(AmrCli, ChannelExtractionWritesASingleChannelFile) {
  std::string dir = hs::test::MakeTempDir("amrch");
  // Two steps of two 12.2 frames, then one step of NO_DATA bytes.
  std::vector<uint8_t> body;
  for (int step = 0; step < 2; ++step)
    for (int c = 0; c < 2; ++c) {
      body.push_back(0x3C);
      body.insert(body.end(), 31, static_cast<uint8_t>(0x10 * step + c));
    }
  body.push_back(0x7C);
  body.push_back(0x7C);
  CAmr mc;
  CAmr::ConstructAmrObject(3, 2, body.data(), body.size(), mc, true);
  ASSERT_TRUE(mc.Save((dir + "/mc.amr").c_str()));
  // Loading drops the last 28 bytes of a multichannel file: pad so nothing real is lost.
  std::vector<uint8_t> file = hs::test::ReadBytes(dir + "/mc.amr");
  file.resize(file.size() + 28, 0);
  hs::test::WriteBytes(dir + "/mc.amr", file);

  int status = 0;
  std::string out = Cli("amr channel " + dir + "/mc.amr 1 " + dir + "/one.amr", &status);
  ASSERT_EQ(status, 0) << out;
  std::vector<uint8_t> one = hs::test::ReadBytes(dir + "/one.amr");
  ASSERT_EQ(one.size(), 6u + 32 + 32 + 1);
  EXPECT_EQ(std::string(one.begin(), one.begin() + 6), "#!AMR\n");
  EXPECT_EQ(one[7], 0x01);
  EXPECT_EQ(one[6 + 32 + 1], 0x11);
  EXPECT_EQ(one.back(), 0x7C);

  out = Cli("amr channel " + dir + "/mc.amr 2 " + dir + "/two.amr", &status);
  EXPECT_EQ(status, 1);
  EXPECT_NE(out.find("mc.amr"), std::string::npos) << out;
  out = Cli("amr frobnicate x", &status);
  EXPECT_EQ(status, 2);
}

TEST(AacCli, InfoReportsTheStreamParameters) {
  HS_SKIP_WITHOUT_CORPUS();
  int status = 0;
  std::string out =
      Cli("aac info --json " + hs::test::CorpusDir() + "/aac/filetype-adts-mpeg2.aac", &status);
  ASSERT_EQ(status, 0) << out;
  for (const char* field : {"\"type\":2", "\"channels\":2", "\"sample_rate\":44100",
                            "\"frames\":51", "\"bit_rate_1024\":"})
    EXPECT_NE(out.find(field), std::string::npos) << out;
  out = Cli("aac info " + hs::test::CorpusDir() + "/aac/opencore-test_raw-noheader.aac", &status);
  EXPECT_EQ(status, 1);
  EXPECT_NE(out.find("not an AAC file"), std::string::npos) << out;
}

}  // namespace
