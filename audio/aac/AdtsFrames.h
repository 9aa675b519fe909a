#pragma once

#include <cstddef>
#include <cstdint>

namespace hs {
namespace aac {

/// The ADTS sync this library accepts: 0xFF then 0xF9 or 0xF8.
inline bool IsAdtsSync(uint8_t b0, uint8_t b1) {
  return b0 == 0xFF && (b1 == 0xF9 || b1 == 0xF8);
}

/// Counts ADTS frames: at a sync, count one and jump by the frame length of its header; else
/// move one byte on.
size_t CountAdtsFrames(const uint8_t* data, size_t size);

}  // namespace aac
}  // namespace hs
