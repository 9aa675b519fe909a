#include "tools/WavFile.h"

#include "platform/ByteReader.h"
#include "platform/ByteWriter.h"

namespace hs {
namespace cli {

bool ParseWav(const std::vector<uint8_t>& file, Wav* out, std::string* error) {
  ByteReader r(file.data(), file.size());
  if (!r.expect("RIFF", 4)) return *error = "not a RIFF file", false;
  r.u32le();
  if (!r.expect("WAVE", 4)) return *error = "not a WAVE file", false;
  bool haveFormat = false;
  while (r.has(8)) {
    std::string id = r.fourcc();
    uint32_t size = r.u32le();
    // A truncated last chunk keeps what is there: recorders often leave the size unpatched.
    ByteReader chunk = r.sub(size);
    if (size & 1) r.skip(1);
    if (id == "fmt ") {
      uint16_t tag = chunk.u16le();
      out->channels = chunk.u16le();
      out->sampleRate = chunk.u32le();
      chunk.skip(6);
      uint16_t bits = chunk.u16le();
      if (!chunk.ok()) return *error = "format chunk too short", false;
      if ((tag != 1 && tag != 0xFFFE) || bits != 16 || out->channels == 0)
        return *error = "not 16-bit PCM", false;
      haveFormat = true;
    } else if (id == "data") {
      if (!haveFormat) return *error = "data chunk before format chunk", false;
      size_t n = chunk.size() - chunk.size() % (2u * out->channels);
      const uint8_t* p = chunk.bytes(n);
      out->data.assign(p, p + n);
      return true;
    }
  }
  return *error = "no data chunk", false;
}

std::vector<uint8_t> BuildWav(uint16_t channels, uint32_t sampleRate, const uint8_t* pcm,
                              size_t size) {
  ByteWriter w;
  uint16_t align = static_cast<uint16_t>(channels * 2);
  w.bytes("RIFF", 4);
  w.u32le(static_cast<uint32_t>(36 + size));
  w.bytes("WAVE", 4);
  w.bytes("fmt ", 4);
  w.u32le(16);
  w.u16le(1);
  w.u16le(channels);
  w.u32le(sampleRate);
  w.u32le(sampleRate * align);
  w.u16le(align);
  w.u16le(16);
  w.bytes("data", 4);
  w.u32le(static_cast<uint32_t>(size));
  if (size) w.bytes(pcm, size);
  return w.take();
}

}  // namespace cli
}  // namespace hs
