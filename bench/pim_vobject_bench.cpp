#include <benchmark/benchmark.h>

#include <chrono>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <functional>
#include <random>
#include <string>

#include "handset/pim/OemPanaVbkm.h"
#include "handset/pim/QP.h"
#include "handset/pim/Vbkm.h"

namespace {

const size_t kQpBytes = 64u << 20;

// Mail-like text in a Western European language: mostly letters and spaces, 2 % punctuation
// that needs escaping, 1 % two-byte UTF-8 letters, CRLF every 60-80 bytes. No control bytes other
// than CR and LF, which would end an encoded text.
const std::string& PlainText() {
  static const std::string text = [] {
    std::string s;
    s.reserve(kQpBytes);
    std::mt19937 rng(42);
    const char common[] = "etaoinshrdlucmfwypvbgkqjxz ETAOINSHRDLU   ,.;:-'()0123456789";
    size_t line = 0;
    while (s.size() < kQpBytes) {
      unsigned r = rng() % 100;
      if (line > 60 + rng() % 20) {
        s += "\r\n";
        line = 0;
      } else if (r < 97) {
        s += common[rng() % (sizeof(common) - 1)];
        ++line;
      } else if (r < 99) {
        s += "=#@!$[]~"[rng() % 8];
        ++line;
      } else {
        s += "\xC3\xA9";
        line += 2;
      }
    }
    s.resize(kQpBytes);
    return s;
  }();
  return text;
}

const std::string& EncodedText() {
  static const std::string text = [] {
    CQP qp;
    const char* e = qp.Encode(PlainText().c_str());
    return std::string(e, qp.GetLength());
  }();
  return text;
}

void BM_QpEncode(benchmark::State& state) {
  const std::string& in = PlainText();
  CQP qp;
  for (auto _ : state) benchmark::DoNotOptimize(qp.Encode(in.c_str()));
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * in.size()));
}
BENCHMARK(BM_QpEncode)->Unit(benchmark::kMillisecond);

void BM_QpDecode(benchmark::State& state) {
  const std::string& in = EncodedText();
  CQP qp;
  for (auto _ : state) benchmark::DoNotOptimize(qp.Decode(in.c_str()));
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * in.size()));
}
BENCHMARK(BM_QpDecode)->Unit(benchmark::kMillisecond);

double SecondsOf(const std::function<void()>& f) {
  auto t0 = std::chrono::steady_clock::now();
  f();
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - t0).count();
}

// Python's C-accelerated binascii on the same bytes, measured in the same run as ours; the
// counters give both speeds and our advantage.
void BM_QpVersusPythonBinascii(benchmark::State& state) {
  namespace fs = std::filesystem;
  if (!fs::exists("/usr/bin/python3")) {
    state.SkipWithError("/usr/bin/python3 not found");
    return;
  }
  fs::path dir = fs::temp_directory_path();
  std::string plainPath = (dir / "hs-qp-bench-plain.bin").string();
  std::string encPath = (dir / "hs-qp-bench-enc.bin").string();
  for (auto [path, data] : {std::pair{plainPath, &PlainText()}, {encPath, &EncodedText()}}) {
    std::FILE* f = std::fopen(path.c_str(), "wb");
    if (!f) {
      state.SkipWithError("cannot write the data for python");
      return;
    }
    std::fwrite(data->data(), 1, data->size(), f);
    std::fclose(f);
  }
  std::string cmd =
      "/usr/bin/python3 -c \"import binascii, sys, time\n"
      "p = open(sys.argv[1], 'rb').read(); e = open(sys.argv[2], 'rb').read()\n"
      "t = time.perf_counter(); binascii.a2b_qp(e); d = time.perf_counter() - t\n"
      "t = time.perf_counter(); binascii.b2a_qp(p); c = time.perf_counter() - t\n"
      "print(d, c)\" " +
      plainPath + " " + encPath;
  double pyDec = 0, pyEnc = 0, ourDec = 0, ourEnc = 0;
  for (auto _ : state) {
    std::FILE* p = popen(cmd.c_str(), "r");
    if (!p || std::fscanf(p, "%lf %lf", &pyDec, &pyEnc) != 2) {
      if (p) pclose(p);
      state.SkipWithError("python3 binascii run failed");
      break;
    }
    pclose(p);
    // A warm object, as in the benchmarks above: its buffer is already in place.
    CQP qp;
    qp.Encode(PlainText().c_str());
    ourDec = SecondsOf([&] { benchmark::DoNotOptimize(qp.Decode(EncodedText().c_str())); });
    ourEnc = SecondsOf([&] { benchmark::DoNotOptimize(qp.Encode(PlainText().c_str())); });
  }
  fs::remove(plainPath);
  fs::remove(encPath);
  const double gb = 1e9;
  if (pyDec > 0 && pyEnc > 0 && ourDec > 0 && ourEnc > 0) {
    state.counters["py_decode_GBps"] = EncodedText().size() / pyDec / gb;
    state.counters["py_encode_GBps"] = PlainText().size() / pyEnc / gb;
    state.counters["hs_decode_GBps"] = EncodedText().size() / ourDec / gb;
    state.counters["hs_encode_GBps"] = PlainText().size() / ourEnc / gb;
    state.counters["decode_ratio"] = pyDec / ourDec;
    state.counters["encode_ratio"] = pyEnc / ourEnc;
  }
}
BENCHMARK(BM_QpVersusPythonBinascii)->Iterations(1)->Unit(benchmark::kMillisecond);

// 100,000 vBookmarks read and written back, as a phone's bookmark list would be.
template <class T>
void BM_VbkmParseCompose100k(benchmark::State& state) {
  T sample;
  sample.CreateEmptyProperties();
  sample.SetPropTableValue("TITLE", "Example bookmark title");
  sample.SetPropTableValue("URL", "http://www.example.com/some/path?query=1&x=y");
  sample.SetPropTableValue("X-IRMC-URL", "http://www.example.com/some/path?query=1&x=y");
  char* buf = nullptr;
  int size = 0;
  sample.Composing(buf, size);
  const std::string text(buf, static_cast<size_t>(size));
  delete[] buf;
  std::string work;
  size_t bytes = 0;
  for (auto _ : state) {
    for (int i = 0; i < 100000; ++i) {
      work = text;
      T v;
      if (!v.Parsing(&work[0], nullptr)) {
        state.SkipWithError("parse failed");
        return;
      }
      char* out = nullptr;
      int n = 0;
      v.Composing(out, n);
      bytes += static_cast<size_t>(n);
      delete[] out;
    }
  }
  benchmark::DoNotOptimize(bytes);
  state.counters["objects_per_s"] =
      benchmark::Counter(100000.0 * state.iterations(), benchmark::Counter::kIsRate);
}
BENCHMARK_TEMPLATE(BM_VbkmParseCompose100k, CVbkm)->Unit(benchmark::kMillisecond);
BENCHMARK_TEMPLATE(BM_VbkmParseCompose100k, COemPanaVbkm)->Unit(benchmark::kMillisecond);

}  // namespace
