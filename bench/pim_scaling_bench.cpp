#include <benchmark/benchmark.h>

#include <unistd.h>

#include <filesystem>
#include <string>

#include "handset/pim/BkmkFuncs.h"
#include "handset/pim/BkmkObj.h"
#include "handset/pim/VObjLite.h"

// Growth of the personal-data paths whose input can grow: vObject properties and folded values,
// bookmark siblings with equal and with different titles (renaming, export, import). Each runs
// over 1x to 1000x its smallest size; the complexity fit must come out O(N).
namespace {

namespace fs = std::filesystem;

const _FormalDef kList[] = {
    {"BEGIN:VLIST", "", "", nullptr, VOBJ_ROW_MANDATORY},
    {"ITEM", ":", "", nullptr, VOBJ_ROW_OPTIONAL},
    {"END:VLIST", "", "", nullptr, VOBJ_ROW_CLOSING},
    {nullptr, nullptr, nullptr, nullptr, VOBJ_ROW_OPTIONAL},
};

class CList : public CVObjLite {
 public:
  CList() : CVObjLite(kList) {}
  bool CreateEmptyProperties() override { return false; }

 protected:
  void _CreateEmptySample(CStringList&) override {}
};

void ParseList(benchmark::State& state, const char* item) {
  std::string text = "BEGIN:VLIST\r\n";
  for (int64_t i = 0; i < state.range(0); ++i) text += item;
  text += "END:VLIST\r\n";
  for (auto _ : state) {
    CList list;  // Parsing reads the text and never writes to it
    benchmark::DoNotOptimize(list.Parsing(&text[0], nullptr));
  }
  state.SetComplexityN(state.range(0));
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * text.size()));
}

void BM_VObjPlainProperties(benchmark::State& state) {
  ParseList(state, "ITEM:http://www.example.com/some/path?q=1\r\n");
}
BENCHMARK(BM_VObjPlainProperties)->RangeMultiplier(10)->Range(100, 100000)->Complexity();

void BM_VObjFoldedValues(benchmark::State& state) {
  ParseList(state,
            "ITEM;ENCODING=QUOTED-PRINTABLE:http://www.example.com/=\r\nsome/path=\r\n?q=3D1\r\n");
}
BENCHMARK(BM_VObjFoldedValues)->RangeMultiplier(10)->Range(100, 100000)->Complexity();

void BM_VObjUnknownLines(benchmark::State& state) {
  ParseList(state, "X-UNKNOWN-PROPERTY:some value the template does not know\r\n");
}
BENCHMARK(BM_VObjUnknownLines)->RangeMultiplier(10)->Range(100, 100000)->Complexity();

CBkmkObj* Siblings(int64_t n, bool equal) {
  CBkmkObj* root = new CBkmkObj(nullptr, "", OBJECT_TYPE_FOLDER);
  for (int64_t i = 0; i < n; ++i) {
    std::string title = equal ? (i % 2 ? "News" : "news") : "News " + std::to_string(i);
    CBkmkObj* b = new CBkmkObj("h", title.c_str(), OBJECT_TYPE_FILE);
    b->m_strURL = "http://news.example/" + std::to_string(i);
    root->AddChild(b);
  }
  return root;
}

void BM_BkmkRenameSiblings(benchmark::State& state) {
  const bool equal = state.range(1) != 0;
  for (auto _ : state) {
    state.PauseTiming();
    CBkmkObj* root = Siblings(state.range(0), equal);
    state.ResumeTiming();
    _BKMK_PreProcessVbkmFileName(root);
    state.PauseTiming();
    delete root;
    state.ResumeTiming();
  }
  state.SetComplexityN(state.range(0));
  state.SetLabel(equal ? "equal titles" : "unique titles");
}
BENCHMARK(BM_BkmkRenameSiblings)->ArgsProduct({{10, 100, 1000, 10000}, {1}})->Complexity();
BENCHMARK(BM_BkmkRenameSiblings)->ArgsProduct({{10, 100, 1000, 10000}, {0}})->Complexity();

// A memory file system where there is one: the export measures names, not the disk.
std::string ScratchDir(const char* tag) {
  std::error_code ec;
  fs::path base =
      fs::is_directory("/dev/shm", ec) ? fs::path("/dev/shm") : fs::temp_directory_path();
  fs::path dir = base / ("handset-bench-" + std::string(tag) + "-" + std::to_string(getpid()));
  fs::remove_all(dir, ec);
  fs::create_directories(dir, ec);
  return dir.string();
}

void BM_BkmkExportSiblings(benchmark::State& state) {
  const bool equal = state.range(1) != 0;
  CBkmkObj* root = Siblings(state.range(0), equal);
  const std::string dir = ScratchDir("export");
  for (auto _ : state) {
    if (!_BKMK_ExportVbkm(root, dir.c_str(), BKMK_FLAG_NONE, nullptr)) {
      state.SkipWithError(_BKMK_GetLastError());
      break;
    }
    state.PauseTiming();
    std::error_code ec;
    for (const auto& e : fs::directory_iterator(dir, ec)) fs::remove(e.path(), ec);
    state.ResumeTiming();
  }
  std::error_code ec;
  fs::remove_all(dir, ec);
  delete root;
  state.SetComplexityN(state.range(0));
  state.SetLabel(equal ? "equal titles" : "unique titles");
}
BENCHMARK(BM_BkmkExportSiblings)
    ->ArgsProduct({{10, 100, 1000, 10000}, {1}})
    ->Unit(benchmark::kMillisecond)
    ->Complexity();
BENCHMARK(BM_BkmkExportSiblings)
    ->ArgsProduct({{10, 100, 1000, 10000}, {0}})
    ->Unit(benchmark::kMillisecond)
    ->Complexity();

void BM_BkmkImportSiblings(benchmark::State& state) {
  const bool equal = state.range(1) != 0;
  CBkmkObj* tree = Siblings(state.range(0), equal);
  const std::string dir = ScratchDir("import");
  if (!_BKMK_ExportVbkm(tree, dir.c_str(), BKMK_FLAG_NONE, nullptr)) {
    state.SkipWithError(_BKMK_GetLastError());
    delete tree;
    return;
  }
  delete tree;
  for (auto _ : state) {
    CBkmkObj root;
    benchmark::DoNotOptimize(_BKMK_ImportVbkm(&root, dir.c_str(), BKMK_FLAG_NONE));
  }
  std::error_code ec;
  fs::remove_all(dir, ec);
  state.SetComplexityN(state.range(0));
  state.SetLabel(equal ? "equal titles" : "unique titles");
}
BENCHMARK(BM_BkmkImportSiblings)
    ->ArgsProduct({{10, 100, 1000, 10000}, {1}})
    ->Unit(benchmark::kMillisecond)
    ->Complexity();
BENCHMARK(BM_BkmkImportSiblings)
    ->ArgsProduct({{10, 100, 1000, 10000}, {0}})
    ->Unit(benchmark::kMillisecond)
    ->Complexity();

}  // namespace
