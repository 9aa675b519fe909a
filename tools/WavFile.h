#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace hs {
namespace cli {

/// 16-bit PCM wave data of the audio commands.
struct Wav {
  uint16_t channels = 0;
  uint32_t sampleRate = 0;
  std::vector<uint8_t> data;  ///< interleaved 16-bit little-endian samples
};

/// Parses a RIFF/WAVE file holding 16-bit PCM. False with `error` set otherwise.
bool ParseWav(const std::vector<uint8_t>& file, Wav* out, std::string* error);
/// A RIFF/WAVE file of 16-bit PCM (44-byte header, then the samples).
std::vector<uint8_t> BuildWav(uint16_t channels, uint32_t sampleRate, const uint8_t* pcm,
                              size_t size);

}  // namespace cli
}  // namespace hs
