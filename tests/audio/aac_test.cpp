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

using Bytes = std::vector<uint8_t>;
using hs::test::Cat;
using hs::test::WriteBytes;

// An ADTS frame of `len` bytes with sync byte `b1`, sampling-frequency index `sf`, channel
// configuration `ch`.
Bytes AdtsFrame(uint8_t b1, int sf, int ch, int len) {
  Bytes f = {0xFF,
             b1,
             uint8_t(0x40 | sf << 2 | (ch >> 2 & 1)),
             uint8_t((ch & 3) << 6 | len >> 11),
             uint8_t(len >> 3),
             uint8_t((len & 7) << 5 | 0x1F),
             0xFC};
  f.resize(static_cast<size_t>(len), 0x11);
  return f;
}

// An ID3v2 header announcing `size` tag bytes (7 bits per byte), followed by `present` of them.
Bytes Id3(uint32_t size, size_t present) {
  Bytes t = {'I', 'D', '3', 4, 0, 0};
  for (int shift = 21; shift >= 0; shift -= 7) t.push_back(uint8_t(size >> shift & 0x7F));
  t.resize(t.size() + present, 0);
  return t;
}

size_t AdtsLength(const Bytes& d, size_t u) {
  return (d[u + 3] & 3u) << 11 | d[u + 4] << 3 | d[u + 5] >> 5;
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
    language_ = g_strRCLanguageID;
  }
  void TearDown() override {
    HsSetMessageBoxHandler(nullptr, nullptr);
    hs::codec::SetAacModuleName(nullptr);
    g_strRCLanguageID = language_;
  }
  std::string Path(const std::string& name) { return dir_ + "/" + name; }
  std::string dir_ = hs::test::MakeTempDir("aac");
  Boxes boxes_;
  CString language_;
};

TEST_F(AacTest, AdtsRecognitionAcceptsOnlyF9AndF8) {
  struct Case {
    uint8_t b1;
    int sf, ch, rate;
  } cases[] = {{0xF9, 4, 2, 44100}, {0xF8, 11, 1, 8000}, {0xF9, 3, 6, 48000},
               {0xF9, 13, 2, 0},    {0xF1, 4, 2, -1},    {0xF0, 4, 2, -1}};
  for (const Case& c : cases) {
    WriteBytes(Path("a.aac"), AdtsFrame(c.b1, c.sf, c.ch, 64));
    CAac aac;
    short type = 0;
    ASSERT_EQ(aac.IsAACFormat(Path("a.aac").c_str(), type), c.rate >= 0) << int(c.b1);
    if (c.rate < 0) continue;
    EXPECT_EQ(type, 2);
    EXPECT_EQ(aac.GetNumChannels(), c.ch);
    EXPECT_EQ(aac.GetSamplingFreq(), c.rate);
  }
}

TEST_F(AacTest, Id3TagIsSkippedUnlessItReachesTheEnd) {
  Bytes frames = Cat(AdtsFrame(0xF9, 4, 2, 300), AdtsFrame(0xF9, 4, 2, 300));
  WriteBytes(Path("t.aac"), Cat(Id3(200, 200), frames));
  CAac aac;
  ASSERT_TRUE(aac.Load(Path("t.aac").c_str()));
  EXPECT_EQ(aac.GetBufferLength(), frames.size());
  EXPECT_EQ(aac.GetNumSamples(), 2u);
  EXPECT_DOUBLE_EQ(aac.GetAACLength(), 2048.0 / 44100);
  // The whole file counts, tag included: 810 bytes in 2048/44100 s, in units of 1024 bit/s.
  EXPECT_EQ(aac.GetBitRate(), static_cast<unsigned long>(810 * 8 / (2048.0 / 44100 * 1024)));
  short type = 0;
  WriteBytes(Path("end.aac"), Id3(200, 200));
  EXPECT_FALSE(aac.IsAACFormat(Path("end.aac").c_str(), type));
  WriteBytes(Path("past.aac"), Id3(0x0FFFFFFF, 200));
  EXPECT_FALSE(aac.IsAACFormat(Path("past.aac").c_str(), type));
}

TEST_F(AacTest, AdtsCountJumpsByFrameLengthAndSkipsJunk) {
  Bytes data =
      Cat(Cat(AdtsFrame(0xF9, 4, 2, 100), {0x00, 0xFF, 0x00}), AdtsFrame(0xF8, 4, 2, 8191));
  data[50] = 0xFF;  // a sync inside a payload is jumped over
  data[51] = 0xF9;
  EXPECT_EQ(hs::aac::CountAdtsFrames(data.data(), data.size()), 2u);
  // A header claiming length 0 moves on by one byte; a header cut at the end still counts.
  Bytes zero = {0xFF, 0xF9, 0x50, 0x80, 0x00, 0x00, 0xFF, 0xF9};
  EXPECT_EQ(hs::aac::CountAdtsFrames(zero.data(), zero.size()), 2u);
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
  Bytes adif = {'A', 'D', 'I', 'F', 0, 0x3E, 0x80};
  adif.resize(200, 0);
  WriteBytes(Path("adif.aac"), adif);
  short type = 0;
  EXPECT_FALSE(aac.IsAACFormat(Path("adif.aac").c_str(), type));
}

TEST_F(AacTest, MonoStaysMonoAndATrailingTagEndsDecoding) {
  if (!CAac::IsAACDllLoad()) GTEST_SKIP() << "AAC decoder module not built (FAAD2 missing)";
  if (!hs::test::HaveTool("ffmpeg")) GTEST_SKIP() << "ffmpeg not installed";
  // A mono tone as MPEG-4 ADTS, relabelled MPEG-2 (0xF9), the form recognised here.
  ASSERT_EQ(hs::test::RunCommand("ffmpeg -v quiet -f lavfi -i sine=duration=1:sample_rate=22050 "
                                 "-ac 1 -c:a aac -b:a 48k -f adts " +
                                     Path("m4.aac"),
                                 nullptr),
            0);
  Bytes data = hs::test::ReadBytes(Path("m4.aac"));
  for (size_t u = 0; u + 6 < data.size(); u += AdtsLength(data, u)) data[u + 1] |= 0x08;
  WriteBytes(Path("mono.aac"), data);
  WAVEFORMATEX fmt{};
  std::vector<int16_t> pcm = DecodeFile(Path("mono.aac"), &fmt);
  EXPECT_EQ(std::make_tuple(fmt.wFormatTag, fmt.nChannels, fmt.nSamplesPerSec, fmt.nBlockAlign,
                            fmt.nAvgBytesPerSec),
            std::make_tuple(1, 1, 22050u, 2, 44100u));
  EXPECT_EQ(pcm.size(), hs::aac::CountAdtsFrames(data.data(), data.size()) * 1024);
  // Without the stop at "TAG" the tag's bytes would be a decoding error.
  Bytes tagged = Cat(data, {'T', 'A', 'G'});
  tagged.resize(tagged.size() + 125, 'x');
  WriteBytes(Path("tagged.aac"), tagged);
  EXPECT_EQ(DecodeFile(Path("tagged.aac"), &fmt), pcm);
  EXPECT_EQ(boxes_.count, 0);
}

TEST_F(AacTest, DecodeErrorShowsTheMessageAndKeepsEarlierFrames) {
  if (!CAac::IsAACDllLoad()) GTEST_SKIP() << "AAC decoder module not built (FAAD2 missing)";
  HS_SKIP_WITHOUT_CORPUS();
  Bytes good = hs::test::ReadBytes(hs::test::CorpusDir() + "/aac/mutagen-empty-libfaac.aac");
  ASSERT_FALSE(good.empty());
  size_t u = 0;
  for (int i = 0; i < 10; ++i) u += AdtsLength(good, u);
  Bytes bad(good.begin(), good.begin() + static_cast<long>(u));  // ten frames, then garbage
  bad.resize(bad.size() + 400, 0xA5);
  WriteBytes(Path("bad.aac"), bad);
  g_strRCLanguageID = "Arabic";
  WAVEFORMATEX fmt{};
  EXPECT_EQ(DecodeFile(Path("bad.aac"), &fmt).size(), 10u * 1024 * 2);
  EXPECT_EQ(boxes_.count, 1);
  EXPECT_EQ(boxes_.text, "Errors occured during AAC decoding process.");
  EXPECT_TRUE(boxes_.flags & HS_MB_RTLREADING);
}

TEST(AacCorpus, TypeChannelsRateAndFramesMatchTheOracles) {
  HS_SKIP_WITHOUT_CORPUS();
  if (!hs::test::HaveTool("ffprobe")) GTEST_SKIP() << "ffprobe not installed";
  hs::test::UseBuiltModules();
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
      std::string info;
      hs::test::RunCommand("faad -i '" + path + "' 2>&1", &info);
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

// SNR in dB of `test` shifted by `lag` sample frames against `ref`, over at most `limit` frames.
double Snr(const std::vector<int16_t>& ref, const std::vector<int16_t>& test, int ch, long lag,
           size_t limit) {
  double signal = 0, noise = 0;
  for (size_t i = 0; i < std::min(ref.size() / ch, limit); ++i) {
    long j = static_cast<long>(i) + lag;
    if (j < 0 || static_cast<size_t>(j) >= test.size() / ch) continue;
    for (int c = 0; c < ch; ++c) {
      double r = ref[i * ch + c], d = r - test[static_cast<size_t>(j) * ch + c];
      signal += r * r;
      noise += d * d;
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
  std::string dir = hs::test::MakeTempDir("aacdec"), wav = dir + "/out.wav", ref = dir + "/f.wav";
  int compared = 0;
  for (const std::string& path : hs::test::CorpusFiles("aac")) {
    CAac aac;
    if (!aac.Load(path.c_str()) || aac.GetAACType() != 2) continue;
    std::string err;
    ASSERT_EQ(hs::test::RunCommand(
                  "'" + hs::test::CliPath() + "' aac decode '" + path + "' " + wav + " 2>&1", &err),
              0)
        << err;
    std::string info;
    hs::test::RunCommand("'" + hs::test::CliPath() + "' aac info --json '" + path + "'", &info);
    EXPECT_NE(info.find("\"frames\":" + std::to_string(aac.GetNumSamples())), std::string::npos);
    auto header = hs::test::Probe(wav);
    EXPECT_EQ(header["codec_name"], "pcm_s16le") << path;
    EXPECT_EQ(header["channels"], std::to_string(aac.GetNumChannels())) << path;
    EXPECT_EQ(header["sample_rate"], std::to_string(aac.GetSamplingFreq())) << path;

    int ch = 0, refCh = 0;
    std::vector<int16_t> ours = hs::test::WavSamples(hs::test::ReadBytes(wav), &ch);
    hs::test::RunCommand("faad -q -o " + ref + " '" + path + "' >/dev/null 2>&1", nullptr);
    std::vector<int16_t> lib = hs::test::WavSamples(hs::test::ReadBytes(ref), &refCh);
    ASSERT_EQ(ch, refCh) << path;
    // FAAD2 gives nothing for the first frame (its one-frame delay), which stays a frame of
    // silence here; after it comes FAAD2's output sample for sample.
    size_t priming = 1024u * ch;
    ASSERT_GE(ours.size(), priming) << path;
    EXPECT_TRUE(std::all_of(ours.begin(), ours.begin() + priming, [](int16_t s) { return !s; }));
    ASSERT_LE(ours.size() - priming, lib.size()) << path;
    EXPECT_TRUE(std::equal(ours.begin() + priming, ours.end(), lib.begin())) << path;

    // FFmpeg's decoder, aligned by the best lag within two frames.
    std::string raw;
    hs::test::RunCommand("ffmpeg -v quiet -i '" + path + "' -f s16le -", &raw);
    std::vector<int16_t> ff(raw.size() / 2);
    std::memcpy(ff.data(), raw.data(), ff.size() * 2);
    long bestLag = -2048;
    for (long lag = -2048; lag <= 2048; ++lag)
      if (Snr(ff, ours, ch, lag, 4096) > Snr(ff, ours, ch, bestLag, 4096)) bestLag = lag;
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
  hs::os::Module held;  // keeps the module loaded for the many CAac objects below
  held.Open(hs::codec::AacModuleName());
  std::string path = hs::test::MakeTempDir("aacprefix") + "/p.aac";
  for (const std::string& file : hs::test::CorpusFiles("aac")) {
    Bytes all = hs::test::ReadBytes(file);
    size_t step = all.size() > 20000 ? all.size() / 40 : all.size() / 80 + 1;
    for (size_t n = 0; n <= all.size(); n += (n < 120 ? 1 : step)) {
      WriteBytes(path, Bytes(all.begin(), all.begin() + static_cast<long>(n)));
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
      if (aac.Decode(&fmt, &pcm, &length)) delete[] pcm;
    }
  }
  HsSetMessageBoxHandler(nullptr, nullptr);
}

}  // namespace
