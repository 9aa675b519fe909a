#pragma once

#include <cstddef>
#include <cstdint>

#include "handset/audio/Amr.h"

namespace hs {
namespace amr {

/// Bytes one frame occupies, header byte included, from the frame's header byte.
inline uint32_t FrameSize(uint8_t header) {
  short bits = CAmr::NBspeechBits[(header & 0x78) >> 3];
  return bits >= 1 ? static_cast<uint32_t>((bits + 7) / 8 + 1) : 1u;
}

/// Frames of interleaved multichannel data: steps of channels x the first channel's frame size.
size_t CountFrames(const uint8_t* data, size_t size, uint32_t channels);

}  // namespace amr
}  // namespace hs
