#include "handset/pim/QP.h"

#include <cstdint>
#include <cstdlib>
#include <cstring>

namespace {

// Value of an escape digit, or -1. Lower-case letters are deliberately not digits: phones that
// write "=3d" expect the text to survive as it stands.
struct HexTable {
  int8_t v[256];
  constexpr HexTable() : v() {
    for (int i = 0; i < 256; ++i) v[i] = -1;
    for (int i = 0; i < 10; ++i) v['0' + i] = static_cast<int8_t>(i);
    for (int i = 0; i < 6; ++i) v['A' + i] = static_cast<int8_t>(10 + i);
  }
};
constexpr HexTable kHex;

// Per byte: up to four output bytes and how many of them count. A copied byte is itself; an
// escaped byte is '=' and its upper-case hex value without leading zero. Bytes below 0x10 (other
// than CR and LF) therefore get one digit and a NUL, which ends the text: length 0 marks them.
struct EncodeTable {
  char out[256][4];
  uint8_t len[256];
  constexpr EncodeTable() : out(), len() {
    const char digits[] = "0123456789ABCDEF";
    for (int c = 0; c < 256; ++c) {
      bool copy = c == '\n' || c == '\r' || c == ' ' || (c >= 0x25 && c <= 0x3C) || c == 0x3E ||
                  c == 0x3F || (c >= 'A' && c <= 'Z') || c == '_' || (c >= 'a' && c <= 'z');
      if (copy) {
        out[c][0] = static_cast<char>(c);
        len[c] = 1;
      } else if (c >= 0x10) {
        out[c][0] = '=';
        out[c][1] = digits[c >> 4];
        out[c][2] = digits[c & 15];
        len[c] = 3;
      } else {
        out[c][0] = '=';
        out[c][1] = digits[c];
        out[c][2] = '\0';
        len[c] = 0;
      }
    }
  }
};
constexpr EncodeTable kEnc;

}  // namespace

CQP::~CQP() { std::free(m_pBuffer); }

void CQP::_Reset() {
  // The storage is kept for the next result; only the text is given up.
  m_nLength = 0;
  if (m_pBuffer) m_pBuffer[0] = '\0';
}

bool CQP::_Reserve(size_t size) {
  if (size <= m_nCapacity && m_pBuffer) return true;
  std::free(m_pBuffer);
  m_pBuffer = static_cast<char*>(std::malloc(size));
  m_nCapacity = m_pBuffer ? size : 0;
  return m_pBuffer != nullptr;
}

const char* CQP::Decode(const char* text) {
  _Reset();
  if (!text) return nullptr;
  const size_t n = std::strlen(text);
  if (!_Reserve(n + 1)) return nullptr;
  const unsigned char* in = reinterpret_cast<const unsigned char*>(text);
  char* out = m_pBuffer;
  size_t i = 0;
  while (i < n) {
    const void* eq = std::memchr(in + i, '=', n - i);
    size_t run = eq ? static_cast<size_t>(static_cast<const unsigned char*>(eq) - (in + i)) : n - i;
    std::memcpy(out, in + i, run);
    out += run;
    i += run;
    if (i >= n) break;
    // Escapes often come in a row; stay in this loop while they do.
    while (i < n && in[i] == '=') {
      if (n - i < 3) {
        *out = '\0';
        m_nLength = static_cast<size_t>(out - m_pBuffer);
        return nullptr;
      }
      int hi = kHex.v[in[i + 1]], lo = kHex.v[in[i + 2]];
      if ((hi | lo) >= 0) {
        *out++ = static_cast<char>((hi << 4) | lo);
        i += 3;
      } else if (in[i + 1] == '\r' && in[i + 2] == '\n') {
        i += 3;
      } else {
        i += 1;
      }
    }
  }
  *out = '\0';
  m_nLength = static_cast<size_t>(out - m_pBuffer);
  return m_pBuffer;
}

const char* CQP::Encode(const char* text) {
  _Reset();
  if (!text) return nullptr;
  const size_t n = std::strlen(text);
  // Four bytes of slack: every byte stores a full table entry and advances by its length.
  if (!_Reserve(3 * n + 4)) return nullptr;
  const unsigned char* in = reinterpret_cast<const unsigned char*>(text);
  char* out = m_pBuffer;
  for (size_t i = 0; i < n; ++i) {
    const unsigned char c = in[i];
    std::memcpy(out, kEnc.out[c], 4);
    if (kEnc.len[c] == 0) {
      out += 2;
      break;
    }
    out += kEnc.len[c];
  }
  *out = '\0';
  m_nLength = static_cast<size_t>(out - m_pBuffer);
  return m_pBuffer;
}
