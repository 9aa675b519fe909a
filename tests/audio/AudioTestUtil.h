#pragma once

#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include "tests/TestUtil.h"

namespace hs {
namespace test {

/// Lets the loader find the codec modules built beside the CLI (the test binary lives one
/// folder below them).
inline void UseBuiltModules() {
  std::string dir = std::filesystem::path(CliPath()).parent_path().string();
  setenv("HANDSET_MODULE_PATH", dir.c_str(), 1);
}

inline void WriteBytes(const std::string& path, const std::vector<uint8_t>& bytes) {
  std::ofstream(path, std::ios::binary)
      .write(reinterpret_cast<const char*>(bytes.data()),
             static_cast<std::streamsize>(bytes.size()));
}

/// First audio stream of `path` as ffprobe sees it (codec_name, channels, sample_rate,
/// nb_read_packets, duration_ts ...); empty when ffprobe cannot read it.
inline std::map<std::string, std::string> Probe(const std::string& path) {
  std::string out;
  RunCommand(
      "ffprobe -v quiet -count_packets -select_streams a:0 -show_entries "
      "stream=codec_name,channels,sample_rate,nb_read_packets,duration_ts,bits_per_sample "
      "-of default=nw=1 '" +
          path + "'",
      &out);
  std::map<std::string, std::string> m;
  std::istringstream in(out);
  std::string line;
  while (std::getline(in, line)) {
    size_t eq = line.find('=');
    if (eq != std::string::npos) m[line.substr(0, eq)] = line.substr(eq + 1);
  }
  return m;
}

/// 16-bit samples and channel count of a canonical 44-byte-header WAV as the CLI writes it;
/// or of any WAV after a "data" chunk search.
inline std::vector<int16_t> WavSamples(const std::vector<uint8_t>& wav, int* channels) {
  std::vector<int16_t> s;
  *channels = 0;
  if (wav.size() < 44) return s;
  *channels = wav[22] | (wav[23] << 8);
  size_t pos = 12;
  while (pos + 8 <= wav.size()) {
    uint32_t size =
        wav[pos + 4] | (wav[pos + 5] << 8) | (wav[pos + 6] << 16) | (uint32_t{wav[pos + 7]} << 24);
    if (std::string(wav.begin() + pos, wav.begin() + pos + 4) == "data") {
      size_t end = pos + 8 + size < wav.size() ? pos + 8 + size : wav.size();
      for (size_t i = pos + 8; i + 1 < end; i += 2)
        s.push_back(static_cast<int16_t>(wav[i] | (wav[i + 1] << 8)));
      return s;
    }
    pos += 8 + size + (size & 1);
  }
  return s;
}

}  // namespace test
}  // namespace hs
