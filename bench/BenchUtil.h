#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace hs {
namespace bench {

/// Files of the shared corpus folder `sub`, sorted; empty when the corpus is absent.
std::vector<std::string> CorpusFiles(const std::string& sub);
std::vector<uint8_t> ReadBytes(const std::string& path);

}  // namespace bench
}  // namespace hs
