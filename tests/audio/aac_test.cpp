#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <memory>
#include <string>

#include "audio/aac/AdtsFrames.h"
#include "handset/audio.h"
#include "handset/platform.h"
#include "platform/CodecModules.h"
#include "platform/Os.h"
#include "tests/TestUtil.h"
#include "tests/audio/AudioTestUtil.h"

namespace {

using hs::test::WriteBytes;

// An ADTS frame header with the accepted sync byte `b1`, sampling-frequency index `sf`, channel
// configuration `ch` and total length `len`, followed by filler up to `len`.
std::vector<uint8_t> AdtsFrame(uint8_t b1, int sf, int ch, int len) {
  std::vector<uint8_t> f = {0xFF,
                            b1,
                            static_cast<uint8_t>(0x40 | (sf << 2) | ((ch >> 2) & 1)),
                            static_cast<uint8_t>(((ch & 3) << 6) | ((len >> 11) & 3)),
                            static_cast<uint8_t>((len >> 3) & 0xFF),
                            static_cast<uint8_t>(((len & 7) << 5) | 0x1F),
                            0xFC};
  f.resize(static_cast<size_t>(len), 0x11);
  return f;
}

std::vector<uint8_t> Id3(uint32_t size) {
  return {'I',
          'D',
          '3',
          4,
          0,
          0,
          static_cast<uint8_t>((size >> 21) & 0x7F),
          static_cast<uint8_t>((size >> 14) & 0x7F),
          static_cast<uint8_t>((size >> 7) & 0x7F),
          static_cast<uint8_t>(size & 0x7F)};
}

std::vector<uint8_t> Cat(std::vector<uint8_t> a, const std::vector<uint8_t>& b) {
  a.insert(a.end(), b.begin(), b.end());
  return a;
}

struct Boxes {
  int count = 0;
  std::string text;
  unsigned flags = 0;
};

int CountBox(const char* text, const char*, unsigned flags, void* user) {
  Boxes* b = static_cast<Boxes*>(user);
  ++b->count;
  b->text = text ? text : "";
  b->flags = flags;
  return 1;
}

// Decodes `path` through CAac; empty when it fails.
std::vector<int16_t> DecodeFile(const std::string& path, WAVEFORMATEX* fmt) {
  CAac aac;
  unsigned char* pcm = nullptr;
  int length = 0;
  if (!aac.Load(path.c_str()) || !aac.Decode(fmt, &pcm, &length)) return {};
  std::unique_ptr<unsigned char[]> owned(pcm);
  std::vector<int16_t> s(static_cast<size_t>(length) / 2);
  std::memcpy(s.data(), pcm, s.size() * 2);
  return s;
}

class AacTest : public ::testing::Test {
 protected:
  void SetUp() override {
    hs::test::UseBuiltModules();
    HsSetMessageBoxHandler(CountBox, &boxes_);
  }
  void TearDown() override {
    HsSetMessageBoxHandler(nullptr, nullptr);
    hs::codec::SetAacModuleName(nullptr);
    g_strRCLanguageID = "";
  }
  std::string Path(const std::string& name) { return dir_ + "/" + name; }
  std::string dir_ = hs::test::MakeTempDir("aac");
  Boxes boxes_;
};

TEST_F(AacTest, AdtsRecognitionAcceptsOnlyF9AndF8) {
  struct Case {
    uint8_t b1;
    int sf, ch;
    bool ok;
    int rate;
  } cases[] = {{0xF9, 4, 2, true, 44100}, {0xF8, 11, 1, true, 8000}, {0xF9, 3, 6, true, 48000},
               {0xF9, 13, 2, true, 0},    {0xF1, 4, 2, false, 0},    {0xF0, 4, 2, false, 0}};
  for (const Case& c : cases) {
    WriteBytes(Path("a.aac"), AdtsFrame(c.b1, c.sf, c.ch, 64));
    CAac aac;
    short type = 0;
    ASSERT_EQ(aac.IsAACFormat(Path("a.aac").c_str(), type), c.ok) << int(c.b1);
    if (!c.ok) continue;
    EXPECT_EQ(type, 2);
    EXPECT_EQ(aac.GetNumChannels(), c.ch);
    EXPECT_EQ(aac.GetSamplingFreq(), c.rate);
  }
}

TEST_F(AacTest, Id3TagIsSkippedUnlessItReachesTheEnd) {
  std::vector<uint8_t> frames = Cat(AdtsFrame(0xF9, 4, 2, 300), AdtsFrame(0xF9, 4, 2, 300));
  std::vector<uint8_t> tag(200, 0);
  WriteBytes(Path("t.aac"), Cat(Cat(Id3(200), tag), frames));
  CAac aac;
  ASSERT_TRUE(aac.Load(Path("t.aac").c_str()));
  EXPECT_EQ(aac.GetAACType(), 2);
  EXPECT_EQ(aac.GetBufferLength(), frames.size());
  EXPECT_EQ(aac.GetNumSamples(), 2u);
  EXPECT_DOUBLE_EQ(aac.GetAACLength(), 2048.0 / 44100);
  // The whole file counts, tag included: 810 bytes in 2048/44100 s, in units of 1024 bit/s.
  EXPECT_EQ(aac.GetBitRate(), static_cast<unsigned long>(810 * 8 / (2048.0 / 44100 * 1024)));

  short type = 0;
  WriteBytes(Path("end.aac"), Cat(Id3(200), tag));
  EXPECT_FALSE(aac.IsAACFormat(Path("end.aac").c_str(), type));
  WriteBytes(Path("past.aac"), Cat(Id3(0x0FFFFFFF), tag));
  EXPECT_FALSE(aac.IsAACFormat(Path("past.aac").c_str(), type));
}

TEST_F(AacTest, AdtsCountJumpsByFrameLengthAndSkipsJunk) {
  std::vector<uint8_t> data = Cat(AdtsFrame(0xF9, 4, 2, 100), {0x00, 0xFF, 0x00});
  data = Cat(data, AdtsFrame(0xF8, 4, 2, 8191));
  // A sync inside a frame's payload is jumped over, not counted.
  data[50] = 0xFF;
  data[51] = 0xF9;
  EXPECT_EQ(hs::aac::CountAdtsFrames(data.data(), data.size()), 2u);
  // A header claiming length 0 moves on by one byte instead of stalling; one cut at the end
  // still counts.
  std::vector<uint8_t> zero = {0xFF, 0xF9, 0x50, 0x80, 0x00, 0x00, 0xFF, 0xF9};
  EXPECT_EQ(hs::aac::CountAdtsFrames(zero.data(), zero.size()), 2u);
  EXPECT_EQ(hs::aac::CountAdtsFrames(nullptr, 10), 0u);
}

TEST_F(AacTest, WithoutTheModuleConstructionWorksAndDecodeFails) {
  hs::codec::SetAacModuleName("handset-no-such-module");
  EXPECT_FALSE(CAac::IsAACDllLoad());
  CAac aac;
  WriteBytes(Path("a.aac"), Cat(AdtsFrame(0xF9, 4, 2, 64), AdtsFrame(0xF9, 4, 2, 64)));
  ASSERT_TRUE(aac.Load(Path("a.aac").c_str()));
  EXPECT_EQ(aac.GetNumSamples(), 2u);
  WAVEFORMATEX fmt{};
  unsigned char* pcm = nullptr;
  int length = -1;
  EXPECT_FALSE(aac.Decode(&fmt, &pcm, &length));
  EXPECT_EQ(pcm, nullptr);
  std::vector<uint8_t> adif = {'A', 'D', 'I', 'F', 0, 0x3E, 0x80, 0, 0, 0, 0};
  adif.resize(200, 0);
  WriteBytes(Path("adif.aac"), adif);
  short type = 0;
  EXPECT_FALSE(aac.IsAACFormat(Path("adif.aac").c_str(), type));
}

TEST_F(AacTest, WithTheModuleTheDecoderOpensAndDecodes) {
  if (!CAac::IsAACDllLoad()) GTEST_SKIP() << "AAC decoder module not built (FAAD2 missing)";
  if (!hs::test::HaveTool("ffmpeg")) GTEST_SKIP() << "ffmpeg not installed";
  // A mono tone as MPEG-4 ADTS, then relabelled MPEG-2 (0xF9), the form recognised here.
  std::string src = Path("mono4.aac");
  ASSERT_EQ(hs::test::RunCommand("ffmpeg -v quiet -y -f lavfi -i sine=frequency=440:duration=1:"
                                 "sample_rate=22050 -ac 1 -c:a aac -b:a 48k -f adts '" +
                                     src + "'",
                                 nullptr),
            0);
  std::vector<uint8_t> data = hs::test::ReadBytes(src);
  for (size_t u = 0; u + 6 < data.size();) {
    ASSERT_EQ(data[u], 0xFF);
    data[u + 1] |= 0x08;
    u += ((data[u + 3] & 3u) << 11) | (data[u + 4] << 3) | (data[u + 5] >> 5);
  }
  WriteBytes(Path("mono.aac"), data);
  CAac aac;
  ASSERT_TRUE(aac.Load(Path("mono.aac").c_str()));
  EXPECT_EQ(aac.GetNumChannels(), 1);
  WAVEFORMATEX fmt{};
  std::vector<int16_t> pcm = DecodeFile(Path("mono.aac"), &fmt);
  EXPECT_EQ(fmt.wFormatTag, 1);
  EXPECT_EQ(fmt.nChannels, 1);
  EXPECT_EQ(fmt.nSamplesPerSec, 22050u);
  EXPECT_EQ(fmt.wBitsPerSample, 16);
  EXPECT_EQ(fmt.nBlockAlign, 2);
  EXPECT_EQ(fmt.nAvgBytesPerSec, 44100u);
  EXPECT_EQ(pcm.size(), aac.GetNumSamples() * 1024);
  EXPECT_EQ(boxes_.count, 0);

  // A trailing ID3v1 tag stops decoding quietly; without the stop its bytes would be an error.
  std::vector<uint8_t> tagged = Cat(data, {'T', 'A', 'G'});
  tagged.resize(tagged.size() + 125, 'x');
  WriteBytes(Path("tagged.aac"), tagged);
  EXPECT_EQ(DecodeFile(Path("tagged.aac"), &fmt), pcm);
  EXPECT_EQ(boxes_.count, 0);
}

TEST_F(AacTest, DecodeErrorShowsTheMessageAndKeepsEarlierFrames) {
  if (!CAac::IsAACDllLoad()) GTEST_SKIP() << "AAC decoder module not built (FAAD2 missing)";
  HS_SKIP_WITHOUT_CORPUS();
  std::vector<uint8_t> good =
      hs::test::ReadBytes(hs::test::CorpusDir() + "/aac/mutagen-empty-libfaac.aac");
  ASSERT_FALSE(good.empty());
  // Ten good frames, then garbage that is no ADTS frame.
  size_t u = 0;
  for (int i = 0; i < 10; ++i)
    u += ((good[u + 3] & 3u) << 11) | (good[u + 4] << 3) | (good[u + 5] >> 5);
  std::vector<uint8_t> bad(good.begin(), good.begin() + static_cast<long>(u));
  bad.resize(bad.size() + 400, 0xA5);
  WriteBytes(Path("bad.aac"), bad);
  g_strRCLanguageID = "Arabic";
  WAVEFORMATEX fmt{};
  std::vector<int16_t> pcm = DecodeFile(Path("bad.aac"), &fmt);
  EXPECT_EQ(boxes_.count, 1);
  EXPECT_EQ(boxes_.text, "Errors occured during AAC decoding process.");
  EXPECT_TRUE(boxes_.flags & HS_MB_RTLREADING);
  EXPECT_EQ(pcm.size(), 10u * 1024 * 2);
}

TEST(AacCorpus, TypeChannelsRateAndFramesMatchTheOracles) {
  HS_SKIP_WITHOUT_CORPUS();
  if (!hs::test::HaveTool("ffprobe")) GTEST_SKIP() << "ffprobe not installed";
  hs::test::UseBuiltModules();
  bool module = CAac::IsAACDllLoad();
  int adts = 0;
  for (const std::string& path : hs::test::CorpusFiles("aac")) {
    CAac aac;
    if (!aac.Load(path.c_str())) continue;
    if (aac.GetAACType() == 2) {
      auto probe = hs::test::Probe(path);
      EXPECT_EQ(probe["codec_name"], "aac") << path;
      EXPECT_EQ(probe["channels"], std::to_string(aac.GetNumChannels())) << path;
      EXPECT_EQ(probe["sample_rate"], std::to_string(aac.GetSamplingFreq())) << path;
      EXPECT_EQ(probe["nb_read_packets"], std::to_string(aac.GetNumSamples())) << path;
      ++adts;
    } else if (hs::test::HaveTool("faad")) {
      // ffprobe misreads ADIF headers; FAAD2's own tool reports rate and bit rate.
      ASSERT_TRUE(module);
      std::string info;
      hs::test::RunCommand("faad -i '" + path + "' 2>&1", &info);
      EXPECT_NE(info.find("ADIF"), std::string::npos) << path;
      unsigned long kbps = 0, hz = 0;
      size_t at = info.find("file info:");
      ASSERT_NE(at, std::string::npos) << info;
      ASSERT_EQ(
          std::sscanf(info.c_str() + at, "file info:\nADIF, %*f sec, %lu kbps, %lu Hz", &kbps, &hz),
          2)
          << info;
      EXPECT_EQ(hz, static_cast<unsigned long>(aac.GetSamplingFreq())) << path;
      EXPECT_EQ(kbps * 1000 / 1024, aac.GetBitRate()) << path;
    }
  }
  EXPECT_GT(adts, 0);
}

}  // namespace

namespace {

// Signal-to-noise ratio of `test` against `ref` (interleaved, `ch` channels) with `test`
// shifted by `lag` sample frames.
double Snr(const std::vector<int16_t>& ref, const std::vector<int16_t>& test, int ch, long lag,
           size_t limit) {
  double signal = 0, noise = 0;
  size_t frames = ref.size() / ch;
  if (frames > limit) frames = limit;
  for (size_t i = 0; i < frames; ++i) {
    long j = static_cast<long>(i) + lag;
    if (j < 0 || static_cast<size_t>(j) >= test.size() / ch) continue;
    for (int c = 0; c < ch; ++c) {
      double r = ref[i * ch + c], t = test[static_cast<size_t>(j) * ch + c];
      signal += r * r;
      noise += (r - t) * (r - t);
    }
  }
  return noise == 0 ? 1e9 : 10 * std::log10(signal / noise);
}

TEST(AacCorpus, DecodeMatchesFaad2AndFfmpeg) {
  HS_SKIP_WITHOUT_CORPUS();
  hs::test::UseBuiltModules();
  if (!CAac::IsAACDllLoad()) GTEST_SKIP() << "AAC decoder module not built (FAAD2 missing)";
  if (!hs::test::HaveTool("faad") || !hs::test::HaveTool("ffmpeg"))
    GTEST_SKIP() << "faad or ffmpeg not installed";
  std::string dir = hs::test::MakeTempDir("aacdec");
  int compared = 0;
  for (const std::string& path : hs::test::CorpusFiles("aac")) {
    CAac probe;
    if (!probe.Load(path.c_str()) || probe.GetAACType() != 2) continue;
    std::string wav = dir + "/out.wav", ref = dir + "/faad.wav", err;
    ASSERT_EQ(hs::test::RunCommand(
                  "'" + hs::test::CliPath() + "' aac decode '" + path + "' " + wav + " 2>&1", &err),
              0)
        << err;
    auto header = hs::test::Probe(wav);
    EXPECT_EQ(header["codec_name"], "pcm_s16le") << path;
    EXPECT_EQ(header["channels"], std::to_string(probe.GetNumChannels())) << path;
    EXPECT_EQ(header["sample_rate"], std::to_string(probe.GetSamplingFreq())) << path;

    int ch = 0, refCh = 0;
    std::vector<int16_t> ours = hs::test::WavSamples(hs::test::ReadBytes(wav), &ch);
    hs::test::RunCommand("faad -q -o " + ref + " '" + path + "' >/dev/null 2>&1", nullptr);
    std::vector<int16_t> lib = hs::test::WavSamples(hs::test::ReadBytes(ref), &refCh);
    ASSERT_EQ(ch, refCh) << path;
    // The decoder gives nothing for its first frame (its one-frame delay), which stays a frame
    // of silence here; everything after it is FAAD2's output sample for sample.
    size_t priming = 1024u * ch;
    ASSERT_GE(ours.size(), priming) << path;
    EXPECT_TRUE(std::all_of(ours.begin(), ours.begin() + priming, [](int16_t s) { return !s; }));
    std::vector<int16_t> rest(ours.begin() + priming, ours.end());
    ASSERT_LE(rest.size(), lib.size()) << path;
    EXPECT_TRUE(std::equal(rest.begin(), rest.end(), lib.begin())) << path;

    // FFmpeg's own decoder, aligned by the best lag within two frames.
    std::string raw;
    hs::test::RunCommand("ffmpeg -v quiet -i '" + path + "' -f s16le -", &raw);
    std::vector<int16_t> ff(raw.size() / 2);
    std::memcpy(ff.data(), raw.data(), ff.size() * 2);
    double best = -1e9;
    for (long lag = -2048; lag <= 2048; ++lag) best = std::max(best, Snr(ff, ours, ch, lag, 4096));
    long bestLag = 0;
    for (long lag = -2048; lag <= 2048; ++lag)
      if (Snr(ff, ours, ch, lag, 4096) == best) {
        bestLag = lag;
        break;
      }
    EXPECT_GE(Snr(ff, ours, ch, bestLag, ff.size()), 90.0) << path << " lag " << bestLag;
    ++compared;
  }
  EXPECT_GT(compared, 0);
}

TEST(AacCorpus, EveryPrefixLoadsOrFailsCleanly) {
  HS_SKIP_WITHOUT_CORPUS();
  hs::test::UseBuiltModules();
  Boxes boxes;
  HsSetMessageBoxHandler(CountBox, &boxes);
  // Held open so that each CAac below finds the module already loaded.
  hs::os::Module held;
  held.Open(hs::codec::AacModuleName());
  std::string path = hs::test::MakeTempDir("aacprefix") + "/p.aac";
  for (const std::string& file : hs::test::CorpusFiles("aac")) {
    std::vector<uint8_t> all = hs::test::ReadBytes(file);
    size_t step = all.size() > 20000 ? all.size() / 40 : all.size() / 80 + 1;
    for (size_t n = 0; n <= all.size(); n += (n < 120 ? 1 : step)) {
      WriteBytes(path, std::vector<uint8_t>(all.begin(), all.begin() + static_cast<long>(n)));
      CAac aac;
      try {
        if (!aac.Load(path.c_str())) continue;
      } catch (const tarvox::cpp::ReaderException&) {
        continue;  // a failed read of the file reader reaches the caller
      }
      aac.GetBitRate();
      if (n > 40000) continue;  // decoding long prefixes adds time, not cases
      WAVEFORMATEX fmt{};
      unsigned char* pcm = nullptr;
      int length = 0;
      if (aac.Decode(&fmt, &pcm, &length)) {
        EXPECT_GE(length, 0);
        delete[] pcm;
      }
    }
  }
  HsSetMessageBoxHandler(nullptr, nullptr);
}

}  // namespace
