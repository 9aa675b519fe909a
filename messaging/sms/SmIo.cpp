#include "messaging/sms/SmIo.h"

#include <cstring>

namespace hs {
namespace sms {

void PutInt(CPackageBlk& blk, const char* prefix, const char* name, int32_t v) {
  blk.AddInt(Key(prefix, name).c_str(), v);
}

void PutText(CPackageBlk& blk, const char* prefix, const char* name, const char* text) {
  blk.AddString(Key(prefix, name).c_str(), text);
}

bool GetInt(const CUnpackageBlk& blk, const char* prefix, const char* name, int32_t* v) {
  const void* data = nullptr;
  uint32_t size = 0;
  if (!blk.GetData(Key(prefix, name).c_str(), &data, &size)) return false;
  const uint8_t* b = static_cast<const uint8_t*>(data);
  uint32_t u = 0;
  for (uint32_t i = 0; i < size && i < 4; ++i) u |= uint32_t{b[i]} << (8 * i);
  *v = static_cast<int32_t>(u);
  return true;
}

bool GetBytes(const CUnpackageBlk& blk, const char* prefix, const char* name, const uint8_t** data,
              uint32_t* size) {
  const void* p = nullptr;
  if (!blk.GetData(Key(prefix, name).c_str(), &p, size)) return false;
  *data = static_cast<const uint8_t*>(p);
  return true;
}

bool GetText(const CUnpackageBlk& blk, const char* prefix, const char* name, char* field,
             size_t capacity) {
  const uint8_t* data = nullptr;
  uint32_t size = 0;
  if (capacity == 0 || !GetBytes(blk, prefix, name, &data, &size)) return false;
  size_t n = 0;
  while (n < size && n + 1 < capacity && data[n]) ++n;
  if (n) std::memcpy(field, data, n);
  field[n] = '\0';
  return true;
}

bool ReadBlock(CArchive& ar, int32_t n, std::vector<uint8_t>* out) {
  out->clear();
  if (n < 0) return false;
  constexpr size_t kChunk = 64 * 1024;
  size_t left = static_cast<size_t>(n);
  while (left > 0) {
    size_t step = left < kChunk ? left : kChunk;
    size_t at = out->size();
    out->resize(at + step);
    size_t got = ar.Read(out->data() + at, step);
    if (got != step) {
      out->resize(at + got);
      return false;
    }
    left -= step;
  }
  return ar.IsGood();
}

void CopyCut(char* dest, const char* src, size_t limit) {
  size_t n = 0;
  if (src)
    while (n < limit && src[n]) ++n;
  if (n) std::memcpy(dest, src, n);
  dest[n] = '\0';
}

}  // namespace sms
}  // namespace hs
