#include <benchmark/benchmark.h>

#include <chrono>
#include <cstdio>
#include <string>
#include <vector>

#include "bench/BenchUtil.h"
#include "handset/melody/MidFileElement.h"

namespace {

struct Sample {
  std::string path;
  std::vector<uint8_t> bytes;
};

// The corpus MIDI files this reader accepts.
const std::vector<Sample>& CorpusSamples() {
  static const std::vector<Sample> samples = [] {
    std::vector<Sample> out;
    for (const std::string& path : hs::bench::CorpusFiles("mid")) {
      Sample s{path, hs::bench::ReadBytes(path)};
      CMidFileElement f;
      if (!s.bytes.empty() && f.LoadFromMemory(s.bytes.data(), s.bytes.size()) == 0)
        out.push_back(std::move(s));
    }
    return out;
  }();
  return samples;
}

// 16 tracks of 700 notes each (11,200 notes), chords and runs, written as format 1.
const std::vector<uint8_t>& LargeFile() {
  static const std::vector<uint8_t> bytes = [] {
    CMidFileElement f;
    for (int ch = 0; ch < 16; ++ch) {
      CMidTrackElement* t = f.AddTrack();
      t->SetProgram(ch * 7 % 128);
      t->SetTrackName("generated");
      for (uint32_t i = 0; i < 700; ++i)
        t->InsertNoteTicks(i * 60 + (ch % 3) * 5, 50 + (i % 4) * 20,
                           static_cast<uint8_t>(36 + (i * 7 + ch) % 60),
                           static_cast<uint8_t>(40 + (i * 13) % 87));
    }
    unsigned long size = 0;
    const unsigned char* p = f.GetMidiFileBuf(1, &size);
    return std::vector<uint8_t>(p, p + size);
  }();
  return bytes;
}

size_t LoadAndWrite(const std::vector<uint8_t>& bytes) {
  CMidFileElement f;
  if (f.LoadFromMemory(bytes.data(), bytes.size()) != 0) return 0;
  unsigned long size = 0;
  f.GetMidiFileBuf(CMidFileElement::kFormatLoaded, &size);
  return size;
}

void BM_MidiCorpusLoadWrite(benchmark::State& state) {
  const auto& samples = CorpusSamples();
  if (samples.empty()) {
    state.SkipWithError("corpus not found");
    return;
  }
  size_t bytes = 0;
  for (auto _ : state) {
    for (const Sample& s : samples) {
      benchmark::DoNotOptimize(LoadAndWrite(s.bytes));
      bytes += s.bytes.size();
    }
  }
  state.SetBytesProcessed(static_cast<int64_t>(bytes));
  state.counters["files"] = static_cast<double>(samples.size());
}
BENCHMARK(BM_MidiCorpusLoadWrite)->Unit(benchmark::kMicrosecond);

void BM_MidiLargeLoadWrite(benchmark::State& state) {
  const auto& bytes = LargeFile();
  for (auto _ : state) benchmark::DoNotOptimize(LoadAndWrite(bytes));
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * bytes.size()));
  state.counters["input_bytes"] = static_cast<double>(bytes.size());
}
BENCHMARK(BM_MidiLargeLoadWrite)->Unit(benchmark::kMicrosecond);

// One pass of mido loading the same corpus files (best of several passes, in-process timing),
// against one pass of this library's load + write; the ratio is reported as a counter.
void BM_MidiVersusMido(benchmark::State& state) {
  const auto& samples = CorpusSamples();
  if (samples.empty()) {
    state.SkipWithError("corpus not found");
    return;
  }
  std::string cmd =
      "/usr/bin/python3 -c \"import sys, time, mido\n"
      "paths = sys.argv[1:]\n"
      "best = None\n"
      "for _ in range(5):\n"
      "    t = time.perf_counter()\n"
      "    for p in paths:\n"
      "        try: mido.MidiFile(p, clip=True)\n"
      "        except Exception: pass\n"
      "    d = time.perf_counter() - t\n"
      "    best = d if best is None else min(best, d)\n"
      "print(best)\" ";
  for (const Sample& s : samples) cmd += " '" + s.path + "'";
  double midoSeconds = -1;
  for (auto _ : state) {
    std::FILE* p = popen((cmd + " 2>/dev/null").c_str(), "r");
    if (p) {
      if (std::fscanf(p, "%lf", &midoSeconds) != 1) midoSeconds = -1;
      pclose(p);
    }
  }
  if (midoSeconds <= 0) {
    state.SkipWithError("python3-mido not available");
    return;
  }
  double best = 1e9;
  for (int rep = 0; rep < 20; ++rep) {
    auto t0 = std::chrono::steady_clock::now();
    for (const Sample& s : samples) benchmark::DoNotOptimize(LoadAndWrite(s.bytes));
    best = std::min(best,
                    std::chrono::duration<double>(std::chrono::steady_clock::now() - t0).count());
  }
  size_t total = 0;
  for (const Sample& s : samples) total += s.bytes.size();
  state.counters["mido_ms_per_pass"] = midoSeconds * 1e3;
  state.counters["handset_ms_per_pass"] = best * 1e3;
  state.counters["speedup"] = midoSeconds / best;
  state.counters["handset_MB_per_s"] = total / best / 1e6;
}
BENCHMARK(BM_MidiVersusMido)->Iterations(1)->Unit(benchmark::kMillisecond);

}  // namespace
