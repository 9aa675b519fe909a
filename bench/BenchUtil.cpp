#include "bench/BenchUtil.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>

#include "platform/Os.h"

namespace fs = std::filesystem;

namespace hs {
namespace bench {

std::vector<std::string> CorpusFiles(const std::string& sub) {
  std::vector<std::string> files;
  fs::path dir = fs::path(HANDSET_SOURCE_DIR).parent_path() / "shared" / "corpus";
  if (const char* env = std::getenv("HANDSET_CORPUS_DIR")) dir = env;
  std::error_code ec;
  for (const auto& e : fs::directory_iterator(dir / sub, ec))
    if (e.is_regular_file()) files.push_back(e.path().string());
  std::sort(files.begin(), files.end());
  return files;
}

std::vector<uint8_t> ReadBytes(const std::string& path) {
  std::vector<uint8_t> out;
  if (!hs::os::ReadFile(path, &out)) out.clear();
  return out;
}

}  // namespace bench
}  // namespace hs
