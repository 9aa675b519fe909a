#include <benchmark/benchmark.h>

#include <cstdint>
#include <vector>

#include "bench/BenchUtil.h"
#include "handset/melody/MMFInfo.h"

namespace {

uint16_t Crc(const std::vector<uint8_t>& v) {
  uint16_t crc = 0xFFFF;
  for (uint8_t byte : v) {
    crc ^= static_cast<uint16_t>(byte << 8);
    for (int b = 0; b < 8; ++b)
      crc = static_cast<uint16_t>((crc & 0x8000) ? (crc << 1) ^ 0x1021 : crc << 1);
  }
  return static_cast<uint16_t>(~crc);
}

void PutBe32(std::vector<uint8_t>& v, uint32_t x) {
  for (int s = 24; s >= 0; s -= 8) v.push_back(static_cast<uint8_t>(x >> s));
}

// An MA-2 image of about `bytes` bytes: contents info, four score tracks sharing the sequence
// data (a note-like byte pattern without any label in it), CRC trailer.
std::vector<uint8_t> LargeImage(size_t bytes) {
  std::vector<uint8_t> v = {'M', 'M', 'M', 'D', 0, 0, 0, 0, 'C', 'N', 'T', 'I'};
  PutBe32(v, 5);
  v.insert(v.end(), {0x00, 0x01, 0x00, 0x00, 0x00});
  const size_t perTrack = bytes / 4;
  for (uint8_t t = 1; t <= 4; ++t) {
    v.insert(v.end(), {'M', 'T', 'R', t});
    PutBe32(v, static_cast<uint32_t>(6 + perTrack));
    v.insert(v.end(), {0x00, 0x00, 0x02, 0x02, 0x00, 0x00});
    for (size_t i = 0; i < perTrack; ++i) v.push_back(static_cast<uint8_t>((i * 37 + t) & 0x7F));
  }
  const uint32_t size = static_cast<uint32_t>(v.size() - 8 + 2);
  for (int i = 0; i < 4; ++i) v[4 + i] = static_cast<uint8_t>(size >> (24 - 8 * i));
  uint16_t crc = Crc(v);
  v.push_back(static_cast<uint8_t>(crc >> 8));
  v.push_back(static_cast<uint8_t>(crc));
  return v;
}

// Open (CRC check and label scans), then the three patches, each recomputing the CRC.
void OpenPatch(benchmark::State& state, const std::vector<std::vector<uint8_t>>& images) {
  size_t total = 0;
  for (const auto& img : images) total += img.size();
  for (auto _ : state) {
    for (const auto& img : images) {
      CMMFInfo info;
      int r = info.OpenMMFBuf(img.data(), static_cast<unsigned long>(img.size()));
      if (r == 0) {
        info.SetCopyStatus(1);
        info.SetMA2LedStatus(2);
        if (info.IsValidTrack(0)) info.SetVibStatus(0, 1);
      }
      benchmark::DoNotOptimize(info.GetMMFBuffer());
      info.CloseMMF(0);
    }
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * total));
  state.counters["files"] = static_cast<double>(images.size());
}

void BM_SmafCorpusOpenPatch(benchmark::State& state) {
  std::vector<std::vector<uint8_t>> images;
  for (const auto& path : hs::bench::CorpusFiles("mmf"))
    images.push_back(hs::bench::ReadBytes(path));
  if (images.empty()) {
    state.SkipWithError("no SMAF corpus (../shared/corpus/mmf or HANDSET_CORPUS_DIR)");
    return;
  }
  OpenPatch(state, images);
}
BENCHMARK(BM_SmafCorpusOpenPatch)->Unit(benchmark::kMillisecond);

void BM_SmafLargeOpenPatch(benchmark::State& state) {
  OpenPatch(state, {LargeImage(4 * 1024 * 1024)});
}
BENCHMARK(BM_SmafLargeOpenPatch)->Unit(benchmark::kMillisecond);

}  // namespace
