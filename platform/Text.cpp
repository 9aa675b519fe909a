#include "platform/Text.h"

#include <algorithm>
#include <cstdint>
#include <cstring>

#if defined(_WIN32)
#include <windows.h>
#endif

namespace hs {
namespace os {

namespace {

int LowerAscii(unsigned char c) {
  return (c >= 'A' && c <= 'Z') ? c + ('a' - 'A') : c;
}

#if !defined(_WIN32)

// Simple lower-case mappings of Unicode 14 (one code point to one code point) as runs: every code
// point from `lo` to `hi`, in steps of `step`, maps to itself plus `delta`. U+0130 (dotted capital
// I) is left out: its lower-case form is two code points.
struct FoldRun {
  uint32_t lo, hi;
  int32_t delta;
  uint32_t step;
};
const FoldRun kRuns[] = {
    {0x0041, 0x005A, 32, 1},     {0x00C0, 0x00D6, 32, 1},     {0x00D8, 0x00DE, 32, 1},
    {0x0100, 0x012E, 1, 2},      {0x0132, 0x0136, 1, 2},      {0x0139, 0x0147, 1, 2},
    {0x014A, 0x0176, 1, 2},      {0x0178, 0x0178, -121, 1},   {0x0179, 0x017D, 1, 2},
    {0x0181, 0x0181, 210, 1},    {0x0182, 0x0184, 1, 2},      {0x0186, 0x0186, 206, 1},
    {0x0187, 0x0187, 1, 1},      {0x0189, 0x018A, 205, 1},    {0x018B, 0x018B, 1, 1},
    {0x018E, 0x018E, 79, 1},     {0x018F, 0x018F, 202, 1},    {0x0190, 0x0190, 203, 1},
    {0x0191, 0x0191, 1, 1},      {0x0193, 0x0193, 205, 1},    {0x0194, 0x0194, 207, 1},
    {0x0196, 0x0196, 211, 1},    {0x0197, 0x0197, 209, 1},    {0x0198, 0x0198, 1, 1},
    {0x019C, 0x019C, 211, 1},    {0x019D, 0x019D, 213, 1},    {0x019F, 0x019F, 214, 1},
    {0x01A0, 0x01A4, 1, 2},      {0x01A6, 0x01A6, 218, 1},    {0x01A7, 0x01A7, 1, 1},
    {0x01A9, 0x01A9, 218, 1},    {0x01AC, 0x01AC, 1, 1},      {0x01AE, 0x01AE, 218, 1},
    {0x01AF, 0x01AF, 1, 1},      {0x01B1, 0x01B2, 217, 1},    {0x01B3, 0x01B5, 1, 2},
    {0x01B7, 0x01B7, 219, 1},    {0x01B8, 0x01B8, 1, 1},      {0x01BC, 0x01BC, 1, 1},
    {0x01C4, 0x01C4, 2, 1},      {0x01C5, 0x01C5, 1, 1},      {0x01C7, 0x01C7, 2, 1},
    {0x01C8, 0x01C8, 1, 1},      {0x01CA, 0x01CA, 2, 1},      {0x01CB, 0x01DB, 1, 2},
    {0x01DE, 0x01EE, 1, 2},      {0x01F1, 0x01F1, 2, 1},      {0x01F2, 0x01F4, 1, 2},
    {0x01F6, 0x01F6, -97, 1},    {0x01F7, 0x01F7, -56, 1},    {0x01F8, 0x021E, 1, 2},
    {0x0220, 0x0220, -130, 1},   {0x0222, 0x0232, 1, 2},      {0x023A, 0x023A, 10795, 1},
    {0x023B, 0x023B, 1, 1},      {0x023D, 0x023D, -163, 1},   {0x023E, 0x023E, 10792, 1},
    {0x0241, 0x0241, 1, 1},      {0x0243, 0x0243, -195, 1},   {0x0244, 0x0244, 69, 1},
    {0x0245, 0x0245, 71, 1},     {0x0246, 0x024E, 1, 2},      {0x0370, 0x0372, 1, 2},
    {0x0376, 0x0376, 1, 1},      {0x037F, 0x037F, 116, 1},    {0x0386, 0x0386, 38, 1},
    {0x0388, 0x038A, 37, 1},     {0x038C, 0x038C, 64, 1},     {0x038E, 0x038F, 63, 1},
    {0x0391, 0x03A1, 32, 1},     {0x03A3, 0x03AB, 32, 1},     {0x03CF, 0x03CF, 8, 1},
    {0x03D8, 0x03EE, 1, 2},      {0x03F4, 0x03F4, -60, 1},    {0x03F7, 0x03F7, 1, 1},
    {0x03F9, 0x03F9, -7, 1},     {0x03FA, 0x03FA, 1, 1},      {0x03FD, 0x03FF, -130, 1},
    {0x0400, 0x040F, 80, 1},     {0x0410, 0x042F, 32, 1},     {0x0460, 0x0480, 1, 2},
    {0x048A, 0x04BE, 1, 2},      {0x04C0, 0x04C0, 15, 1},     {0x04C1, 0x04CD, 1, 2},
    {0x04D0, 0x052E, 1, 2},      {0x0531, 0x0556, 48, 1},     {0x10A0, 0x10C5, 7264, 1},
    {0x10C7, 0x10C7, 7264, 1},   {0x10CD, 0x10CD, 7264, 1},   {0x13A0, 0x13EF, 38864, 1},
    {0x13F0, 0x13F5, 8, 1},      {0x1C90, 0x1CBA, -3008, 1},  {0x1CBD, 0x1CBF, -3008, 1},
    {0x1E00, 0x1E94, 1, 2},      {0x1E9E, 0x1E9E, -7615, 1},  {0x1EA0, 0x1EFE, 1, 2},
    {0x1F08, 0x1F0F, -8, 1},     {0x1F18, 0x1F1D, -8, 1},     {0x1F28, 0x1F2F, -8, 1},
    {0x1F38, 0x1F3F, -8, 1},     {0x1F48, 0x1F4D, -8, 1},     {0x1F59, 0x1F5F, -8, 2},
    {0x1F68, 0x1F6F, -8, 1},     {0x1F88, 0x1F8F, -8, 1},     {0x1F98, 0x1F9F, -8, 1},
    {0x1FA8, 0x1FAF, -8, 1},     {0x1FB8, 0x1FB9, -8, 1},     {0x1FBA, 0x1FBB, -74, 1},
    {0x1FBC, 0x1FBC, -9, 1},     {0x1FC8, 0x1FCB, -86, 1},    {0x1FCC, 0x1FCC, -9, 1},
    {0x1FD8, 0x1FD9, -8, 1},     {0x1FDA, 0x1FDB, -100, 1},   {0x1FE8, 0x1FE9, -8, 1},
    {0x1FEA, 0x1FEB, -112, 1},   {0x1FEC, 0x1FEC, -7, 1},     {0x1FF8, 0x1FF9, -128, 1},
    {0x1FFA, 0x1FFB, -126, 1},   {0x1FFC, 0x1FFC, -9, 1},     {0x2126, 0x2126, -7517, 1},
    {0x212A, 0x212A, -8383, 1},  {0x212B, 0x212B, -8262, 1},  {0x2132, 0x2132, 28, 1},
    {0x2160, 0x216F, 16, 1},     {0x2183, 0x2183, 1, 1},      {0x24B6, 0x24CF, 26, 1},
    {0x2C00, 0x2C2F, 48, 1},     {0x2C60, 0x2C60, 1, 1},      {0x2C62, 0x2C62, -10743, 1},
    {0x2C63, 0x2C63, -3814, 1},  {0x2C64, 0x2C64, -10727, 1}, {0x2C67, 0x2C6B, 1, 2},
    {0x2C6D, 0x2C6D, -10780, 1}, {0x2C6E, 0x2C6E, -10749, 1}, {0x2C6F, 0x2C6F, -10783, 1},
    {0x2C70, 0x2C70, -10782, 1}, {0x2C72, 0x2C72, 1, 1},      {0x2C75, 0x2C75, 1, 1},
    {0x2C7E, 0x2C7F, -10815, 1}, {0x2C80, 0x2CE2, 1, 2},      {0x2CEB, 0x2CED, 1, 2},
    {0x2CF2, 0x2CF2, 1, 1},      {0xA640, 0xA66C, 1, 2},      {0xA680, 0xA69A, 1, 2},
    {0xA722, 0xA72E, 1, 2},      {0xA732, 0xA76E, 1, 2},      {0xA779, 0xA77B, 1, 2},
    {0xA77D, 0xA77D, -35332, 1}, {0xA77E, 0xA786, 1, 2},      {0xA78B, 0xA78B, 1, 1},
    {0xA78D, 0xA78D, -42280, 1}, {0xA790, 0xA792, 1, 2},      {0xA796, 0xA7A8, 1, 2},
    {0xA7AA, 0xA7AA, -42308, 1}, {0xA7AB, 0xA7AB, -42319, 1}, {0xA7AC, 0xA7AC, -42315, 1},
    {0xA7AD, 0xA7AD, -42305, 1}, {0xA7AE, 0xA7AE, -42308, 1}, {0xA7B0, 0xA7B0, -42258, 1},
    {0xA7B1, 0xA7B1, -42282, 1}, {0xA7B2, 0xA7B2, -42261, 1}, {0xA7B3, 0xA7B3, 928, 1},
    {0xA7B4, 0xA7C2, 1, 2},      {0xA7C4, 0xA7C4, -48, 1},    {0xA7C5, 0xA7C5, -42307, 1},
    {0xA7C6, 0xA7C6, -35384, 1}, {0xA7C7, 0xA7C9, 1, 2},      {0xA7D0, 0xA7D0, 1, 1},
    {0xA7D6, 0xA7D8, 1, 2},      {0xA7F5, 0xA7F5, 1, 1},      {0xFF21, 0xFF3A, 32, 1},
    {0x10400, 0x10427, 40, 1},   {0x104B0, 0x104D3, 40, 1},   {0x10570, 0x1057A, 39, 1},
    {0x1057C, 0x1058A, 39, 1},   {0x1058C, 0x10592, 39, 1},   {0x10594, 0x10595, 39, 1},
    {0x10C80, 0x10CB2, 64, 1},   {0x118A0, 0x118BF, 32, 1},   {0x16E40, 0x16E5F, 32, 1},
    {0x1E900, 0x1E921, 34, 1},
};

uint32_t FoldCodePoint(uint32_t cp) {
  if (cp < 0x80) return static_cast<uint32_t>(LowerAscii(static_cast<unsigned char>(cp)));
  // The last run starting at or before `cp`; runs do not overlap.
  const FoldRun* end = kRuns + sizeof(kRuns) / sizeof(kRuns[0]);
  const FoldRun* r =
      std::upper_bound(kRuns, end, cp, [](uint32_t v, const FoldRun& run) { return v < run.lo; });
  if (r == kRuns) return cp;
  --r;
  if (cp > r->hi || (cp - r->lo) % r->step != 0) return cp;
  return static_cast<uint32_t>(static_cast<int32_t>(cp) + r->delta);
}

// Decodes one well-formed UTF-8 character at `s` (at most `n` bytes); 0 when the bytes there do
// not form one (overlong forms, surrogates and values above U+10FFFF included).
size_t DecodeUtf8(const unsigned char* s, size_t n, uint32_t* cp) {
  unsigned c = s[0];
  size_t len = c < 0x80 ? 1 : (c >> 5) == 6 ? 2 : (c >> 4) == 14 ? 3 : (c >> 3) == 30 ? 4 : 0;
  if (len == 0 || len > n) return 0;
  uint32_t v = len == 1 ? c : len == 2 ? (c & 0x1F) : len == 3 ? (c & 0x0F) : (c & 0x07);
  for (size_t k = 1; k < len; ++k) {
    if ((s[k] & 0xC0) != 0x80) return 0;
    v = (v << 6) | (s[k] & 0x3F);
  }
  static const uint32_t kMin[] = {0, 0, 0x80, 0x800, 0x10000};
  if (v < kMin[len] || v > 0x10FFFF || (v >= 0xD800 && v <= 0xDFFF)) return 0;
  *cp = v;
  return len;
}

void AppendUtf8(uint32_t cp, std::string* out) {
  if (cp < 0x80) {
    out->push_back(static_cast<char>(cp));
  } else if (cp < 0x800) {
    out->push_back(static_cast<char>(0xC0 | (cp >> 6)));
    out->push_back(static_cast<char>(0x80 | (cp & 0x3F)));
  } else if (cp < 0x10000) {
    out->push_back(static_cast<char>(0xE0 | (cp >> 12)));
    out->push_back(static_cast<char>(0x80 | ((cp >> 6) & 0x3F)));
    out->push_back(static_cast<char>(0x80 | (cp & 0x3F)));
  } else {
    out->push_back(static_cast<char>(0xF0 | (cp >> 18)));
    out->push_back(static_cast<char>(0x80 | ((cp >> 12) & 0x3F)));
    out->push_back(static_cast<char>(0x80 | ((cp >> 6) & 0x3F)));
    out->push_back(static_cast<char>(0x80 | (cp & 0x3F)));
  }
}

#endif  // !_WIN32

}  // namespace

std::string FoldCase(const char* text, size_t length) {
  std::string out;
  if (!text || length == 0) return out;
#if defined(_WIN32)
  // The system code page is what the file system and the user see; its letters are folded by the
  // system's invariant lower-case table.
  int n = MultiByteToWideChar(CP_ACP, 0, text, static_cast<int>(length), nullptr, 0);
  if (n <= 0) return std::string(text, length);
  std::wstring w(static_cast<size_t>(n), L'\0');
  MultiByteToWideChar(CP_ACP, 0, text, static_cast<int>(length), &w[0], n);
  CharLowerBuffW(&w[0], static_cast<DWORD>(w.size()));
  int m = WideCharToMultiByte(CP_UTF8, 0, w.data(), n, nullptr, 0, nullptr, nullptr);
  if (m <= 0) return std::string(text, length);
  out.resize(static_cast<size_t>(m));
  WideCharToMultiByte(CP_UTF8, 0, w.data(), n, &out[0], m, nullptr, nullptr);
#else
  const unsigned char* s = reinterpret_cast<const unsigned char*>(text);
  out.reserve(length);
  size_t i = 0;
  while (i < length) {
    uint32_t cp = 0;
    size_t len = DecodeUtf8(s + i, length - i, &cp);
    if (len == 0) {
      out.push_back(static_cast<char>(s[i++]));
      continue;
    }
    AppendUtf8(FoldCodePoint(cp), &out);
    i += len;
  }
#endif
  return out;
}

size_t CharBoundary(const char* text, size_t length, size_t pos) {
  if (!text || pos >= length) return pos > length ? length : pos;
#if defined(_WIN32)
  // Double-byte code pages: walk from the start, as only a forward walk knows lead from trail.
  const char* p = text;
  const char* end = text + pos;
  for (;;) {
    const char* next = CharNextExA(CP_ACP, p, 0);
    if (next == p || next > end) break;
    p = next;
  }
  return static_cast<size_t>(p - text);
#else
  // Back over continuation bytes to the start of the character that `pos` would split.
  const unsigned char* s = reinterpret_cast<const unsigned char*>(text);
  size_t start = pos;
  while (start > 0 && pos - start < 3 && (s[start] & 0xC0) == 0x80) --start;
  uint32_t cp = 0;
  size_t len = (s[start] & 0xC0) == 0x80 ? 0 : DecodeUtf8(s + start, length - start, &cp);
  return len > 0 && start + len > pos ? start : pos;
#endif
}

size_t Utf16Length(const char* text, size_t length) {
  if (!text || length == 0) return 0;
#if defined(_WIN32)
  int n = MultiByteToWideChar(CP_ACP, 0, text, static_cast<int>(length), nullptr, 0);
  return n > 0 ? static_cast<size_t>(n) : length;
#else
  const unsigned char* s = reinterpret_cast<const unsigned char*>(text);
  size_t units = 0;
  for (size_t i = 0; i < length;) {
    uint32_t cp = 0;
    size_t len = DecodeUtf8(s + i, length - i, &cp);
    units += len == 4 ? 2 : 1;
    i += len ? len : 1;
  }
  return units;
#endif
}

int CompareNoCase(const char* a, const char* b) {
  const unsigned char* x = reinterpret_cast<const unsigned char*>(a ? a : "");
  const unsigned char* y = reinterpret_cast<const unsigned char*>(b ? b : "");
  // ASCII prefixes compare byte by byte; the rest, from the first other byte on, is folded whole.
  for (;; ++x, ++y) {
    if (*x >= 0x80 || *y >= 0x80) break;
    int d = LowerAscii(*x) - LowerAscii(*y);
    if (d != 0 || *x == 0) return d;
  }
  const char* xs = reinterpret_cast<const char*>(x);
  const char* ys = reinterpret_cast<const char*>(y);
  std::string fx = FoldCase(xs, std::strlen(xs));
  std::string fy = FoldCase(ys, std::strlen(ys));
  int d = std::memcmp(fx.data(), fy.data(), std::min(fx.size(), fy.size()));
  if (d != 0) return d;
  return fx.size() < fy.size() ? -1 : fx.size() > fy.size() ? 1 : 0;
}

}  // namespace os
}  // namespace hs
