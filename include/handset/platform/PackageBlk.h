#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "handset/export.h"
#include "handset/platform/Strings.h"

/// A block of keyed byte blobs that records pack themselves into. Keys are the caller's prefix
/// plus a field name (".m_nBeginPos"); integers are 4 bytes little-endian; a text is stored with
/// its NUL (a null or empty text is one NUL byte).
///
/// `Serialize` gives the block as bytes, little-endian:
///   "HSPK", u16 version (1), u16 reserved (0), u32 entry count, u32 payload length,
///   then per entry: u32 key length, key bytes (no NUL), u32 data length, data bytes,
///   then u32 CRC-32 (IEEE 802.3) of everything before it.
/// Entries are written in key order, so equal blocks serialise to equal bytes.
class HANDSET_API CPackageBlk {
 public:
  /// Adds or replaces `key`. `data` may be null only when `size` is 0. False for a null key.
  bool Add(const char* key, const void* data, uint32_t size);
  bool AddInt(const char* key, int32_t value);
  bool AddString(const char* key, const char* text);
  int GetCount() const { return static_cast<int>(entries_.size()); }
  void RemoveAll() { entries_.clear(); }
  const std::map<std::string, std::vector<uint8_t>>& Entries() const { return entries_; }
  std::vector<uint8_t> Serialize() const;
  /// Replaces the content with a serialised block; false (and empty) when it is truncated,
  /// corrupt or of an unknown version.
  bool Deserialize(const void* data, size_t size);

 private:
  std::map<std::string, std::vector<uint8_t>> entries_;
};

/// Read side of a package block: built from a `CPackageBlk` or from its serialised bytes.
class HANDSET_API CUnpackageBlk {
 public:
  CUnpackageBlk() = default;
  explicit CUnpackageBlk(const CPackageBlk& blk) : entries_(blk.Entries()) {}
  /// Replaces the content with a serialised block. A truncated, corrupt or unknown-version block
  /// is rejected whole: false, and the block is left empty.
  bool Unpack(const void* data, size_t size);
  /// True when `key` is present; `*data` then points into this object (valid while it lives and
  /// is not unpacked again) and `*size` is the blob size. Either output may be null.
  bool GetData(const char* key, const void** data, uint32_t* size) const;
  /// True when `key` holds exactly four bytes.
  bool GetInt(const char* key, int32_t* value) const;
  /// The text up to the first NUL (or the whole blob without one); false when absent.
  bool GetString(const char* key, CString* text) const;
  /// Copies the text into `dest` of `capacity` bytes, cut to fit and always terminated. Returns
  /// false (and leaves `dest` untouched) when the key is absent.
  bool CopyString(const char* key, char* dest, size_t capacity) const;
  int GetCount() const { return static_cast<int>(entries_.size()); }

 private:
  std::map<std::string, std::vector<uint8_t>> entries_;
};

/// CRC-32 (IEEE 802.3, reflected 0xEDB88320, init and final XOR 0xFFFFFFFF).
HANDSET_API uint32_t HsCrc32(const void* data, size_t size, uint32_t crc = 0);
