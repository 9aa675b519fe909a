#include <benchmark/benchmark.h>

#include <memory>
#include <string>
#include <vector>

#include "bench/BenchUtil.h"
#include "handset/melody.h"

namespace {

std::vector<std::string> CorpusTexts() {
  std::vector<std::string> out;
  for (const std::string& p : hs::bench::CorpusFiles("imy")) {
    std::vector<uint8_t> b = hs::bench::ReadBytes(p);
    std::string text(b.begin(), b.end());
    CiMelody2Mid conv;
    int err = 0;
    std::unique_ptr<CMidFileElement> f(conv.DoConvert(text, err));
    if (f) out.push_back(text);  // only texts that convert
  }
  return out;
}

// Single-track MIDI models loaded from the corpus.
std::vector<std::unique_ptr<CMidFileElement>> CorpusModels() {
  std::vector<std::unique_ptr<CMidFileElement>> out;
  for (const std::string& p : hs::bench::CorpusFiles("mid")) {
    std::unique_ptr<CMidFileElement> f(new CMidFileElement());
    if (f->LoadMidiFile(p.c_str()) == 0 && f->GetTrackNum() == 1) out.push_back(std::move(f));
  }
  return out;
}

std::unique_ptr<CMidFileElement> Generated(int notes) {
  std::unique_ptr<CMidFileElement> f(new CMidFileElement());
  CMidTrackElement* t = f->AddTrack(-1, 0xFF);
  static const uint32_t kLen[] = {60, 120, 90, 240, 30, 120, 180};
  uint32_t at = 0;
  for (int i = 0; i < notes; ++i) {
    uint32_t len = kLen[i % 7];
    t->InsertNoteTicks(at, len, static_cast<uint8_t>(48 + (i * 7) % 40), 100);
    at += len + (i % 5 == 0 ? 120 : 0);  // a rest every fifth note
  }
  return f;
}

void BM_iMelodyToMidi_Corpus(benchmark::State& state) {
  std::vector<std::string> texts = CorpusTexts();
  if (texts.empty()) return state.SkipWithError("no iMelody corpus");
  size_t bytes = 0;
  for (auto _ : state) {
    for (const std::string& t : texts) {
      CiMelody2Mid conv;
      int err = 0;
      std::unique_ptr<CMidFileElement> f(conv.DoConvert(t, err));
      benchmark::DoNotOptimize(f.get());
      bytes += t.size();
    }
  }
  state.SetItemsProcessed(state.iterations() * static_cast<int64_t>(texts.size()));
  state.SetBytesProcessed(static_cast<int64_t>(bytes));
  state.counters["files"] = static_cast<double>(texts.size());
}

void BM_MidiToiMelody_Corpus(benchmark::State& state) {
  auto models = CorpusModels();
  if (models.empty()) return state.SkipWithError("no single-track MIDI corpus");
  for (auto _ : state) {
    for (auto& m : models) {
      CMid2iMelody conv;
      CString text;
      conv.DoConvertMidElelemt2Str(m.get(), text);
      benchmark::DoNotOptimize(text.data());
    }
  }
  state.SetItemsProcessed(state.iterations() * static_cast<int64_t>(models.size()));
  state.counters["files"] = static_cast<double>(models.size());
}

// The same with the MIDI bytes parsed on every pass, as a host converting a file would.
void BM_MidiBytesToiMelody_Corpus(benchmark::State& state) {
  std::vector<std::vector<uint8_t>> files;
  for (auto& m : CorpusModels()) {
    unsigned long size = 0;
    const unsigned char* b = m->GetMidiFileBuf(0, &size);
    if (b) files.emplace_back(b, b + size);
  }
  if (files.empty()) return state.SkipWithError("no single-track MIDI corpus");
  for (auto _ : state) {
    for (const auto& bytes : files) {
      CMidFileElement f;
      f.LoadFromMemory(bytes.data(), bytes.size());
      CMid2iMelody conv;
      CString text;
      conv.DoConvertMidElelemt2Str(&f, text);
      benchmark::DoNotOptimize(text.data());
    }
  }
  state.SetItemsProcessed(state.iterations() * static_cast<int64_t>(files.size()));
}

void BM_MidiToiMelody_1000Notes(benchmark::State& state) {
  auto model = Generated(1000);
  for (auto _ : state) {
    CMid2iMelody conv;
    CString text;
    conv.DoConvertMidElelemt2Str(model.get(), text);
    benchmark::DoNotOptimize(text.data());
  }
  state.SetItemsProcessed(state.iterations());
}

void BM_iMelodyToMidi_1000Notes(benchmark::State& state) {
  auto model = Generated(1000);
  CMid2iMelody toImy;
  CString text;
  toImy.DoConvertMidElelemt2Str(model.get(), text);
  for (auto _ : state) {
    CiMelody2Mid conv;
    int err = 0;
    std::unique_ptr<CMidFileElement> f(conv.DoConvert(text, err));
    benchmark::DoNotOptimize(f.get());
  }
  state.SetItemsProcessed(state.iterations());
  state.counters["text_bytes"] = static_cast<double>(text.size());
}

BENCHMARK(BM_iMelodyToMidi_Corpus);
BENCHMARK(BM_MidiToiMelody_Corpus);
BENCHMARK(BM_MidiBytesToiMelody_Corpus);
BENCHMARK(BM_MidiToiMelody_1000Notes);
BENCHMARK(BM_iMelodyToMidi_1000Notes);

}  // namespace
