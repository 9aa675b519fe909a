#include "handset/platform/PackageBlk.h"

#include <cstring>

#include "platform/ByteReader.h"
#include "platform/ByteWriter.h"

namespace {

constexpr char kMagic[4] = {'H', 'S', 'P', 'K'};
constexpr uint16_t kVersion = 1;
constexpr size_t kHeaderSize = 16;

struct Crc32Table {
  uint32_t t[256];
  Crc32Table() {
    for (uint32_t i = 0; i < 256; ++i) {
      uint32_t c = i;
      for (int k = 0; k < 8; ++k) c = (c & 1) ? (c >> 1) ^ 0xEDB88320u : c >> 1;
      t[i] = c;
    }
  }
};

}  // namespace

uint32_t HsCrc32(const void* data, size_t size, uint32_t crc) {
  static const Crc32Table table;
  const uint8_t* p = static_cast<const uint8_t*>(data);
  crc = ~crc;
  for (size_t i = 0; i < size; ++i) crc = (crc >> 8) ^ table.t[(crc ^ p[i]) & 0xFF];
  return ~crc;
}

bool CPackageBlk::Add(const char* key, const void* data, uint32_t size) {
  if (!key || (!data && size != 0)) return false;
  const uint8_t* b = static_cast<const uint8_t*>(data);
  entries_[key] = std::vector<uint8_t>(b, b + size);
  return true;
}

bool CPackageBlk::AddInt(const char* key, int32_t value) {
  uint32_t u = static_cast<uint32_t>(value);
  uint8_t b[4] = {uint8_t(u), uint8_t(u >> 8), uint8_t(u >> 16), uint8_t(u >> 24)};
  return Add(key, b, 4);
}

bool CPackageBlk::AddString(const char* key, const char* text) {
  if (!text) text = "";
  return Add(key, text, static_cast<uint32_t>(std::strlen(text) + 1));
}

std::vector<uint8_t> CPackageBlk::Serialize() const {
  hs::ByteWriter w;
  w.bytes(kMagic, 4);
  w.u16le(kVersion);
  w.u16le(0);
  w.u32le(static_cast<uint32_t>(entries_.size()));
  size_t payloadAt = w.size();
  w.u32le(0);
  for (const auto& e : entries_) {
    w.u32le(static_cast<uint32_t>(e.first.size()));
    w.bytes(e.first.data(), e.first.size());
    w.u32le(static_cast<uint32_t>(e.second.size()));
    w.bytes(e.second.data(), e.second.size());
  }
  w.patch32le(payloadAt, static_cast<uint32_t>(w.size() - kHeaderSize));
  w.u32le(HsCrc32(w.data(), w.size()));
  return w.take();
}

namespace {

bool ParseBlock(const void* data, size_t size, std::map<std::string, std::vector<uint8_t>>* out) {
  out->clear();
  hs::ByteReader r(data, size);
  if (size < kHeaderSize + 4 || !r.expect(kMagic, 4)) return false;
  if (r.u16le() != kVersion) return false;
  r.u16le();
  uint32_t count = r.u32le();
  uint32_t payload = r.u32le();
  if (payload != size - kHeaderSize - 4) return false;
  hs::ByteReader crcAt(static_cast<const uint8_t*>(data) + size - 4, 4);
  if (crcAt.u32le() != HsCrc32(data, size - 4)) return false;

  hs::ByteReader body = r.sub(payload);
  std::map<std::string, std::vector<uint8_t>> parsed;
  for (uint32_t i = 0; i < count; ++i) {
    uint32_t keyLen = body.u32le();
    const uint8_t* key = body.bytes(keyLen);
    uint32_t dataLen = body.u32le();
    const uint8_t* blob = body.bytes(dataLen);
    if (!body.ok()) return false;
    parsed[std::string(reinterpret_cast<const char*>(key), keyLen)] =
        std::vector<uint8_t>(blob, blob + dataLen);
  }
  if (!body.atEnd()) return false;
  out->swap(parsed);
  return true;
}

}  // namespace

bool CPackageBlk::Deserialize(const void* data, size_t size) {
  return ParseBlock(data, size, &entries_);
}

bool CUnpackageBlk::Unpack(const void* data, size_t size) {
  return ParseBlock(data, size, &entries_);
}

bool CUnpackageBlk::GetData(const char* key, const void** data, uint32_t* size) const {
  if (!key) return false;
  auto it = entries_.find(key);
  if (it == entries_.end()) return false;
  if (data) *data = it->second.data();
  if (size) *size = static_cast<uint32_t>(it->second.size());
  return true;
}

bool CUnpackageBlk::GetInt(const char* key, int32_t* value) const {
  const void* p = nullptr;
  uint32_t n = 0;
  if (!GetData(key, &p, &n) || n != 4) return false;
  hs::ByteReader r(p, n);
  if (value) *value = r.i32le();
  return true;
}

bool CUnpackageBlk::GetString(const char* key, CString* text) const {
  const void* p = nullptr;
  uint32_t n = 0;
  if (!GetData(key, &p, &n)) return false;
  const char* s = static_cast<const char*>(p);
  const void* nul = n ? std::memchr(s, 0, n) : nullptr;
  size_t len = nul ? static_cast<size_t>(static_cast<const char*>(nul) - s) : n;
  if (text) text->assign(s, len);
  return true;
}

bool CUnpackageBlk::CopyString(const char* key, char* dest, size_t capacity) const {
  CString s;
  if (!GetString(key, &s)) return false;
  if (!dest || capacity == 0) return true;
  size_t n = s.size() < capacity - 1 ? s.size() : capacity - 1;
  std::memcpy(dest, s.data(), n);
  dest[n] = '\0';
  return true;
}
