#include "pim/vobject/ValueCodec.h"

#include "handset/pim/QP.h"
#include "handset/pim/VObjLite.h"

namespace hs {
namespace vobj {

namespace {

bool CopiedAsIs(unsigned char c) {
  return c == ' ' || (c >= 0x25 && c <= 0x3C) || c == 0x3E || c == 0x3F || (c >= 'A' && c <= 'Z') ||
         c == '_' || (c >= 'a' && c <= 'z');
}

int8_t B64Value(unsigned char c) {
  if (c >= 'A' && c <= 'Z') return static_cast<int8_t>(c - 'A');
  if (c >= 'a' && c <= 'z') return static_cast<int8_t>(c - 'a' + 26);
  if (c >= '0' && c <= '9') return static_cast<int8_t>(c - '0' + 52);
  if (c == '+') return 62;
  if (c == '/') return 63;
  return -1;
}

}  // namespace

CString EncodeQpValue(const CString& value) {
  static const char kDigits[] = "0123456789ABCDEF";
  CString out;
  out.reserve(value.size() + value.size() / 4);
  for (unsigned char c : value) {
    if (CopiedAsIs(c)) {
      out.push_back(static_cast<char>(c));
    } else {
      out.push_back('=');
      out.push_back(kDigits[c >> 4]);
      out.push_back(kDigits[c & 15]);
    }
  }
  return out;
}

bool DecodeValue(const char* text, int32_t encoding, CString* out) {
  if (!text || !out) return false;
  if (encoding == VOBJ_ENC_QP) {
    CQP qp;
    const char* d = qp.Decode(text);
    if (!d) return false;
    out->assign(d, qp.GetLength());
    return true;
  }
  if (encoding == VOBJ_ENC_BASE64) return _VObjBase64Decode(text, out);
  *out = text;
  return true;
}

CString EncodeValue(const CString& value, int32_t encoding) {
  if (encoding == VOBJ_ENC_QP) return EncodeQpValue(value);
  if (encoding == VOBJ_ENC_BASE64) return _VObjBase64Encode(value.data(), value.size());
  return value;
}

}  // namespace vobj
}  // namespace hs

CString _VObjBase64Encode(const void* data, size_t size) {
  static const char kAlpha[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  const unsigned char* p = static_cast<const unsigned char*>(data);
  CString out;
  if (!p) return out;
  out.reserve((size + 2) / 3 * 4);
  size_t i = 0;
  for (; i + 3 <= size; i += 3) {
    uint32_t v = (uint32_t(p[i]) << 16) | (uint32_t(p[i + 1]) << 8) | p[i + 2];
    out += kAlpha[v >> 18];
    out += kAlpha[(v >> 12) & 63];
    out += kAlpha[(v >> 6) & 63];
    out += kAlpha[v & 63];
  }
  if (size - i == 1) {
    uint32_t v = uint32_t(p[i]) << 16;
    out += kAlpha[v >> 18];
    out += kAlpha[(v >> 12) & 63];
    out += "==";
  } else if (size - i == 2) {
    uint32_t v = (uint32_t(p[i]) << 16) | (uint32_t(p[i + 1]) << 8);
    out += kAlpha[v >> 18];
    out += kAlpha[(v >> 12) & 63];
    out += kAlpha[(v >> 6) & 63];
    out += '=';
  }
  return out;
}

bool _VObjBase64Decode(const char* text, CString* out) {
  if (!text || !out) return false;
  CString result;
  uint32_t acc = 0;
  int bits = 0, pad = 0;
  for (const unsigned char* p = reinterpret_cast<const unsigned char*>(text); *p; ++p) {
    unsigned char c = *p;
    if (c == ' ' || c == '\t' || c == '\r' || c == '\n') continue;
    if (c == '=') {
      ++pad;
      continue;
    }
    int8_t v = hs::vobj::B64Value(c);
    if (v < 0 || pad) return false;
    acc = (acc << 6) | static_cast<uint32_t>(v);
    bits += 6;
    if (bits >= 8) {
      bits -= 8;
      result += static_cast<char>((acc >> bits) & 0xFF);
    }
  }
  // Leftover bits must be padding zeros of a 2- or 3-character final group.
  if (bits >= 6 || pad > 2 || (acc & ((1u << bits) - 1)) != 0) return false;
  *out = std::move(result);
  return true;
}
