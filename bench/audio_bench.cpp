#include <benchmark/benchmark.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <vector>

#include "bench/BenchUtil.h"
#include "handset/audio.h"

namespace {

namespace fs = std::filesystem;

const double kMinutes = 10;

// Ten minutes of 12.2 kbit/s AMR-NB frames with a NO_DATA frame every tenth step, so the
// counter sees more than one frame size.
const std::vector<uint8_t>& AmrFrames() {
  static const std::vector<uint8_t> data = [] {
    std::vector<uint8_t> d;
    for (int i = 0; i < kMinutes * 60 * 50; ++i) {
      if (i % 10 == 9) {
        d.push_back(0x7C);
        continue;
      }
      d.push_back(0x3C);
      d.insert(d.end(), 31, static_cast<uint8_t>(i));
    }
    return d;
  }();
  return data;
}

size_t AdtsLength(const std::vector<uint8_t>& d, size_t u) {
  return ((d[u + 3] & 3u) << 11) | (d[u + 4] << 3) | (d[u + 5] >> 5);
}

// Ten minutes of real ADTS audio: the complete frames of a corpus clip repeated. Empty without
// the corpus.
const std::string& AdtsFile() {
  static const std::string path = []() -> std::string {
    std::vector<uint8_t> clip;
    for (const std::string& f : hs::bench::CorpusFiles("aac"))
      if (f.find("filetype-adts-mpeg2") != std::string::npos) clip = hs::bench::ReadBytes(f);
    size_t end = 0, frames = 0;
    while (end + 7 <= clip.size() && clip[end] == 0xFF &&
           end + AdtsLength(clip, end) <= clip.size()) {
      end += AdtsLength(clip, end);
      ++frames;
    }
    if (frames == 0) return std::string();
    size_t wanted = static_cast<size_t>(kMinutes * 60 * 44100 / 1024) + 1;
    std::string out = (fs::temp_directory_path() / "handset-bench-10min.aac").string();
    std::ofstream o(out, std::ios::binary);
    for (size_t n = 0; n < wanted; n += frames)
      o.write(reinterpret_cast<const char*>(clip.data()), end);
    return out;
  }();
  return path;
}

// The decoder module lives beside the built library, one folder above this binary.
void FindModules() {
  if (std::getenv("HANDSET_MODULE_PATH")) return;
  std::error_code ec;
  fs::path exe = fs::read_symlink("/proc/self/exe", ec);
  if (!ec) setenv("HANDSET_MODULE_PATH", exe.parent_path().parent_path().string().c_str(), 1);
}

void BM_AmrFrameCount(benchmark::State& state) {
  const std::vector<uint8_t>& d = AmrFrames();
  CAmr amr;
  CAmr::ConstructAmrObject(1, 1, const_cast<uint8_t*>(d.data()), d.size(), amr, true);
  for (auto _ : state) benchmark::DoNotOptimize(amr.GetNumSamples());
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * d.size()));
  state.counters["frames"] = static_cast<double>(amr.GetNumSamples());
}
BENCHMARK(BM_AmrFrameCount);

void BM_AdtsFrameCount(benchmark::State& state) {
  if (AdtsFile().empty()) return state.SkipWithError("corpus not found");
  CAac aac;
  if (!aac.Load(AdtsFile().c_str())) return state.SkipWithError("not loaded");
  for (auto _ : state) benchmark::DoNotOptimize(aac.GetNumSamples());
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * aac.GetBufferLength()));
  state.counters["frames"] = static_cast<double>(aac.GetNumSamples());
}
BENCHMARK(BM_AdtsFrameCount);

void BM_AacDecode10Minutes(benchmark::State& state) {
  FindModules();
  if (AdtsFile().empty()) return state.SkipWithError("corpus not found");
  if (!CAac::IsAACDllLoad()) return state.SkipWithError("AAC decoder module not found");
  CAac aac;
  if (!aac.Load(AdtsFile().c_str())) return state.SkipWithError("not loaded");
  int length = 0;
  for (auto _ : state) {
    WAVEFORMATEX fmt{};
    unsigned char* pcm = nullptr;
    if (!aac.Decode(&fmt, &pcm, &length)) return state.SkipWithError("decode failed");
    delete[] pcm;
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * aac.GetBufferLength()));
  state.counters["pcm_bytes"] = length;
}
BENCHMARK(BM_AacDecode10Minutes)->Unit(benchmark::kMillisecond)->Iterations(2);

}  // namespace
