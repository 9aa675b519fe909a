#include "bench/BenchUtil.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>

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
  std::FILE* f = std::fopen(path.c_str(), "rb");
  if (!f) return out;
  uint8_t buf[65536];
  size_t n;
  while ((n = std::fread(buf, 1, sizeof(buf), f)) > 0) out.insert(out.end(), buf, buf + n);
  std::fclose(f);
  return out;
}

}  // namespace bench
}  // namespace hs
