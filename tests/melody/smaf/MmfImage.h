#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace hs {
namespace test {

/// One byte into a CRC-16/GENIBUS register, bit by bit (independent of the library's table).
inline uint16_t GenibusStep(uint16_t crc, uint8_t byte) {
  crc ^= static_cast<uint16_t>(byte << 8);
  for (int b = 0; b < 8; ++b)
    crc = static_cast<uint16_t>((crc & 0x8000) ? (crc << 1) ^ 0x1021 : crc << 1);
  return crc;
}

/// CRC-16/GENIBUS: initial 0xFFFF, MSB first, complemented result.
inline uint16_t Genibus(const uint8_t* data, size_t size) {
  uint16_t crc = 0xFFFF;
  for (size_t i = 0; i < size; ++i) crc = GenibusStep(crc, data[i]);
  return static_cast<uint16_t>(crc ^ 0xFFFF);
}

/// True when the last two bytes are the big-endian CRC of everything before them.
inline bool TrailerMatches(const std::vector<uint8_t>& image) {
  if (image.size() < 3) return false;
  uint16_t crc = Genibus(image.data(), image.size() - 2);
  return image[image.size() - 2] == (crc >> 8) && image.back() == (crc & 0xFF);
}

inline void PutBe32(std::vector<uint8_t>& v, uint32_t x) {
  for (int s = 24; s >= 0; s -= 8) v.push_back(static_cast<uint8_t>(x >> s));
}

/// One MA-2 score track: number byte and the two channel-status bytes.
struct ScoreTrack {
  uint8_t number;
  uint8_t statusHigh;
  uint8_t statusLow;
};

/// A minimal SMAF image: file chunk, contents-info chunk (class, type, code type, copy status,
/// copy count, then `options`), the score tracks (each with a 4-byte sequence body), `padding`
/// zero bytes and the CRC trailer. Size fields are correct.
inline std::vector<uint8_t> BuildMmf(uint8_t copyStatus, const std::string& options,
                                     const std::vector<ScoreTrack>& tracks, size_t padding = 0) {
  std::vector<uint8_t> body;
  body.insert(body.end(), {'C', 'N', 'T', 'I'});
  PutBe32(body, static_cast<uint32_t>(5 + options.size()));
  body.insert(body.end(), {0x00, 0x01, 0x00, copyStatus, 0x00});
  body.insert(body.end(), options.begin(), options.end());
  for (const ScoreTrack& t : tracks) {
    body.insert(body.end(), {'M', 'T', 'R', t.number});
    PutBe32(body, 10);
    body.insert(body.end(), {0x00, 0x00, 0x02, 0x02, t.statusHigh, t.statusLow});
    body.insert(body.end(), {0x00, 0x01, 0x02, 0x03});
  }
  body.insert(body.end(), padding, 0x00);
  std::vector<uint8_t> image = {'M', 'M', 'M', 'D'};
  PutBe32(image, static_cast<uint32_t>(body.size() + 2));
  image.insert(image.end(), body.begin(), body.end());
  uint16_t crc = Genibus(image.data(), image.size());
  image.push_back(static_cast<uint8_t>(crc >> 8));
  image.push_back(static_cast<uint8_t>(crc & 0xFF));
  return image;
}

}  // namespace test
}  // namespace hs
