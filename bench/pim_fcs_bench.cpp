#include <benchmark/benchmark.h>

#include <cstdint>
#include <random>
#include <vector>

#include "handset/pim/ContactInfo.h"

#if __has_include(<boost/crc.hpp>)
#include <boost/crc.hpp>
#define HS_HAVE_BOOST_CRC 1
#endif

namespace {

constexpr size_t kSize = size_t{256} << 20;

const std::vector<uint8_t>& Data() {
  static const std::vector<uint8_t> data = [] {
    std::vector<uint8_t> d(kSize);
    std::mt19937_64 gen(1);
    for (size_t i = 0; i + 8 <= d.size(); i += 8) {
      uint64_t v = gen();
      for (int k = 0; k < 8; ++k) d[i + k] = static_cast<uint8_t>(v >> (8 * k));
    }
    return d;
  }();
  return data;
}

void BM_ComputeFCS_256MB(benchmark::State& state) {
  const auto& d = Data();
  for (auto _ : state)
    benchmark::DoNotOptimize(ComputeFCS(d.data(), static_cast<unsigned int>(d.size())));
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * static_cast<int64_t>(kSize));
}
BENCHMARK(BM_ComputeFCS_256MB)->Unit(benchmark::kMillisecond);

// The plain one-byte-per-step table loop, for scale.
void BM_FcsBytewise_256MB(benchmark::State& state) {
  uint16_t table[256];
  for (unsigned i = 0; i < 256; ++i) {
    unsigned c = i;
    for (int k = 0; k < 8; ++k) c = (c & 1) ? (c >> 1) ^ 0x8408u : c >> 1;
    table[i] = static_cast<uint16_t>(c);
  }
  const auto& d = Data();
  for (auto _ : state) {
    uint16_t crc = 0xFFFF;
    for (uint8_t b : d) crc = static_cast<uint16_t>((crc >> 8) ^ table[(crc ^ b) & 0xFF]);
    benchmark::DoNotOptimize(crc ^ 0xFFFF);
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * static_cast<int64_t>(kSize));
}
BENCHMARK(BM_FcsBytewise_256MB)->Unit(benchmark::kMillisecond);

#if defined(HS_HAVE_BOOST_CRC)
void BM_BoostCrcX25_256MB(benchmark::State& state) {
  const auto& d = Data();
  for (auto _ : state) {
    boost::crc_optimal<16, 0x1021, 0xFFFF, 0xFFFF, true, true> crc;
    crc.process_bytes(d.data(), d.size());
    benchmark::DoNotOptimize(crc.checksum());
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * static_cast<int64_t>(kSize));
}
BENCHMARK(BM_BoostCrcX25_256MB)->Unit(benchmark::kMillisecond);
#endif

}  // namespace
