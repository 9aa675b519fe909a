#include <cstdint>

#include "handset/pim/ContactInfo.h"

namespace {

// Slicing-by-16: table k gives the effect of a byte followed by k zero bytes, so sixteen input
// bytes fold into the register with sixteen independent lookups. Table 0 is the classic byte table,
// and the result equals feeding the bytes one at a time.
struct FcsTables {
  uint16_t t[16][256];
  constexpr FcsTables() : t() {
    for (unsigned i = 0; i < 256; ++i) {
      unsigned c = i;
      for (int k = 0; k < 8; ++k) c = (c & 1) ? (c >> 1) ^ 0x8408u : c >> 1;
      t[0][i] = static_cast<uint16_t>(c);
    }
    for (unsigned i = 0; i < 256; ++i)
      for (int k = 1; k < 16; ++k)
        t[k][i] = static_cast<uint16_t>((t[k - 1][i] >> 8) ^ t[0][t[k - 1][i] & 0xFF]);
  }
};

constexpr FcsTables kTables;

}  // namespace

uint16_t ComputeFCS(const unsigned char* data, unsigned int length) {
  if (!data) return 0;
  const auto& t = kTables.t;
  uint32_t crc = 0xFFFF;
  unsigned int i = 0;
  for (; length - i >= 16; i += 16) {
    const unsigned char* p = data + i;
    uint32_t lo = crc ^ (p[0] | (uint32_t{p[1]} << 8));
    crc = t[15][lo & 0xFF] ^ t[14][lo >> 8] ^ t[13][p[2]] ^ t[12][p[3]] ^ t[11][p[4]] ^
          t[10][p[5]] ^ t[9][p[6]] ^ t[8][p[7]] ^ t[7][p[8]] ^ t[6][p[9]] ^ t[5][p[10]] ^
          t[4][p[11]] ^ t[3][p[12]] ^ t[2][p[13]] ^ t[1][p[14]] ^ t[0][p[15]];
  }
  for (; i < length; ++i) crc = (crc >> 8) ^ t[0][(crc ^ data[i]) & 0xFF];
  return static_cast<uint16_t>(crc ^ 0xFFFF);
}
