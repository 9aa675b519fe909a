#pragma once

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include "tests/TestUtil.h"

namespace hs {
namespace test {

/// Lets the loader find the codec modules built beside the CLI, one folder above the tests.
inline void UseBuiltModules() {
  setenv("HANDSET_MODULE_PATH", std::filesystem::path(CliPath()).parent_path().c_str(), 1);
}

inline void WriteBytes(const std::string& path, const std::vector<uint8_t>& bytes) {
  std::ofstream(path, std::ios::binary)
      .write(reinterpret_cast<const char*>(bytes.data()), static_cast<long>(bytes.size()));
}

inline std::vector<uint8_t> Cat(std::vector<uint8_t> a, const std::vector<uint8_t>& b) {
  a.insert(a.end(), b.begin(), b.end());
  return a;
}

/// The first audio stream of `path` as ffprobe reports it (codec_name, channels, sample_rate,
/// nb_read_packets, duration_ts); empty when ffprobe cannot read it.
inline std::map<std::string, std::string> Probe(const std::string& path) {
  std::string out, line;
  RunCommand(
      "ffprobe -v quiet -count_packets -select_streams a:0 -show_entries stream=codec_name,"
      "channels,sample_rate,nb_read_packets,duration_ts -of default=nw=1 '" +
          path + "'",
      &out);
  std::map<std::string, std::string> m;
  std::istringstream in(out);
  while (std::getline(in, line))
    if (line.find('=') != std::string::npos)
      m[line.substr(0, line.find('='))] = line.substr(line.find('=') + 1);
  return m;
}

/// The samples and channel count of a canonical 16-bit WAV file (44-byte header, as both this
/// CLI and FAAD2's tool write them); empty for any other layout.
inline std::vector<int16_t> WavSamples(const std::vector<uint8_t>& wav, int* channels) {
  *channels = 0;
  if (wav.size() < 44 || std::string(wav.begin() + 36, wav.begin() + 40) != "data") return {};
  *channels = wav[22] | wav[23] << 8;
  std::vector<int16_t> s((wav.size() - 44) / 2);
  std::memcpy(s.data(), wav.data() + 44, s.size() * 2);
  return s;
}

}  // namespace test
}  // namespace hs
