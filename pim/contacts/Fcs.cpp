#include <cstdint>

#include "handset/pim/ContactInfo.h"

namespace {

// Slicing-by-8: table k gives the effect of a byte followed by k zero bytes, so eight input bytes
// fold into the register with eight independent lookups. Table 0 is the classic byte table, and
// the result equals feeding the bytes one at a time.
struct FcsTables {
  uint16_t t[8][256];
  constexpr FcsTables() : t() {
    for (unsigned i = 0; i < 256; ++i) {
      unsigned c = i;
      for (int k = 0; k < 8; ++k) c = (c & 1) ? (c >> 1) ^ 0x8408u : c >> 1;
      t[0][i] = static_cast<uint16_t>(c);
    }
    for (unsigned i = 0; i < 256; ++i)
      for (int k = 1; k < 8; ++k)
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
  for (; length - i >= 8; i += 8) {
    const unsigned char* p = data + i;
    uint32_t lo = crc ^ (p[0] | (uint32_t{p[1]} << 8));
    crc = t[7][lo & 0xFF] ^ t[6][lo >> 8] ^ t[5][p[2]] ^ t[4][p[3]] ^ t[3][p[4]] ^ t[2][p[5]] ^
          t[1][p[6]] ^ t[0][p[7]];
  }
  for (; i < length; ++i) crc = (crc >> 8) ^ t[0][(crc ^ data[i]) & 0xFF];
  return static_cast<uint16_t>(crc ^ 0xFFFF);
}
