#include "handset/pim/QP.h"

#include <cstdint>
#include <cstdlib>
#include <cstring>

#if defined(__SSE2__)
#include <emmintrin.h>
#define HS_QP_SSE2 1
#endif

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

// Per byte, packed in one word: up to three output bytes and, in the top byte, how many count.
// A copied byte is itself; an escaped byte is '=' and its upper-case hex value without leading
// zero. Bytes below 0x10 (other than CR and LF) therefore get one digit and a NUL, which ends
// the text: count 0 marks them.
struct EncodeTable {
  uint32_t e[256];
  constexpr EncodeTable() : e() {
    const char digits[] = "0123456789ABCDEF";
    for (unsigned c = 0; c < 256; ++c) {
      bool copy = c == '\n' || c == '\r' || c == ' ' || (c >= 0x25 && c <= 0x3C) || c == 0x3E ||
                  c == 0x3F || (c >= 'A' && c <= 'Z') || c == '_' || (c >= 'a' && c <= 'z');
      uint32_t b0 = copy ? c : uint32_t('=');
      uint32_t b1 = copy ? 0 : c >= 0x10 ? uint32_t(digits[c >> 4]) : uint32_t(digits[c]);
      uint32_t b2 = copy || c < 0x10 ? 0 : uint32_t(digits[c & 15]);
      uint32_t len = copy ? 1 : c >= 0x10 ? 3 : 0;
      e[c] = b0 | (b1 << 8) | (b2 << 16) | (len << 24);
    }
  }
};
constexpr EncodeTable kEnc;

#if HS_QP_SSE2
// 16 bytes at a time: a bit per byte that is NOT copied as it stands.
inline unsigned EscapeMask(__m128i c) {
  auto eq = [&](char v) { return _mm_cmpeq_epi8(c, _mm_set1_epi8(v)); };
  // lo <= x <= hi as one signed compare: shift the range to start at -128.
  auto range = [](__m128i x, int lo, int hi) {
    __m128i t = _mm_add_epi8(x, _mm_set1_epi8(static_cast<char>(0x80 - lo)));
    return _mm_cmplt_epi8(t, _mm_set1_epi8(static_cast<char>(hi - lo + 1 - 128)));
  };
  // Folding case with 0x20 makes one range of both alphabets.
  __m128i letters = range(_mm_or_si128(c, _mm_set1_epi8(0x20)), 'a', 'z');
  __m128i copy = _mm_or_si128(_mm_or_si128(eq('\n'), eq('\r')), _mm_or_si128(eq(' '), eq('_')));
  copy = _mm_or_si128(copy, _mm_or_si128(range(c, 0x25, 0x3C), range(c, 0x3E, 0x3F)));
  copy = _mm_or_si128(copy, letters);
  return ~static_cast<unsigned>(_mm_movemask_epi8(copy)) & 0xFFFFu;
}
#endif

}  // namespace

CQP::~CQP() {
  std::free(m_pBuffer);
}

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
#if HS_QP_SSE2
    // The output never runs ahead of the input, so 16-byte stores stay in the buffer; with 32
    // bytes left, every load and escape below stays inside the text.
    if (n - i >= 32) {
      __m128i c = _mm_loadu_si128(reinterpret_cast<const __m128i*>(in + i));
      unsigned m = static_cast<unsigned>(_mm_movemask_epi8(_mm_cmpeq_epi8(c, _mm_set1_epi8('='))));
      _mm_storeu_si128(reinterpret_cast<__m128i*>(out), c);
      if (!m) {
        out += 16;
        i += 16;
        continue;
      }
      // Each '=' of the block in turn: the clean run before it, then the escape.
      const size_t base = i;
      unsigned prev = 0;
      while (m) {
        const unsigned k = static_cast<unsigned>(__builtin_ctz(m));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(out),
                         _mm_loadu_si128(reinterpret_cast<const __m128i*>(in + base + prev)));
        out += k - prev;
        const unsigned char* p = in + base + k;
        int hi = kHex.v[p[1]], lo = kHex.v[p[2]];
        if ((hi | lo) >= 0) {
          *out++ = static_cast<char>((hi << 4) | lo);
          prev = k + 3;
        } else if (p[1] == '\r' && p[2] == '\n') {
          prev = k + 3;
        } else {
          prev = k + 1;
        }
        m &= prev >= 16 ? 0u : ~((1u << prev) - 1u);
      }
      if (prev < 16) {
        _mm_storeu_si128(reinterpret_cast<__m128i*>(out),
                         _mm_loadu_si128(reinterpret_cast<const __m128i*>(in + base + prev)));
        out += 16 - prev;
        prev = 16;
      }
      i = base + prev;
      continue;
    }
#endif
    {
      const void* eq = std::memchr(in + i, '=', n - i);
      size_t run =
          eq ? static_cast<size_t>(static_cast<const unsigned char*>(eq) - (in + i)) : n - i;
      std::memcpy(out, in + i, run);
      out += run;
      i += run;
      if (i >= n) break;
    }
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
  size_t i = 0;
  while (i < n) {
    size_t end = n;
#if HS_QP_SSE2
    // At most three output bytes per input byte so far, so 16-byte stores fit in 3 * n + 4;
    // with 32 bytes left, every load below stays inside the text.
    if (n - i >= 32) {
      __m128i c = _mm_loadu_si128(reinterpret_cast<const __m128i*>(in + i));
      unsigned m = EscapeMask(c);
      _mm_storeu_si128(reinterpret_cast<__m128i*>(out), c);
      if (!m) {
        out += 16;
        i += 16;
        continue;
      }
      // Each escaped byte of the block in turn: the clean run before it, then its table word.
      unsigned prev = 0;
      while (m) {
        const unsigned k = static_cast<unsigned>(__builtin_ctz(m));
        m &= m - 1;
        _mm_storeu_si128(reinterpret_cast<__m128i*>(out),
                         _mm_loadu_si128(reinterpret_cast<const __m128i*>(in + i + prev)));
        out += k - prev;
        const uint32_t e = kEnc.e[in[i + k]];
        std::memcpy(out, &e, 4);
        if ((e >> 24) == 0) {
          out += 2;
          *out = '\0';
          m_nLength = static_cast<size_t>(out - m_pBuffer);
          return m_pBuffer;
        }
        out += e >> 24;
        prev = k + 1;
      }
      _mm_storeu_si128(reinterpret_cast<__m128i*>(out),
                       _mm_loadu_si128(reinterpret_cast<const __m128i*>(in + i + prev)));
      out += 16 - prev;
      i += 16;
      continue;
    }
#endif
    for (; i < end; ++i) {
      // One table word per byte, stored whole and advanced by its count.
      const uint32_t e = kEnc.e[in[i]];
#if defined(__BYTE_ORDER__) && __BYTE_ORDER__ == __ORDER_BIG_ENDIAN__
      const unsigned char bytes[4] = {static_cast<unsigned char>(e),
                                      static_cast<unsigned char>(e >> 8),
                                      static_cast<unsigned char>(e >> 16), 0};
      std::memcpy(out, bytes, 4);
#else
      // The count in the top byte lands past the bytes that count and is overwritten later.
      std::memcpy(out, &e, 4);
#endif
      if ((e >> 24) == 0) {
        out += 2;
        *out = '\0';
        m_nLength = static_cast<size_t>(out - m_pBuffer);
        return m_pBuffer;
      }
      out += e >> 24;
    }
  }
  *out = '\0';
  m_nLength = static_cast<size_t>(out - m_pBuffer);
  return m_pBuffer;
}
