#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "handset/platform/Archive.h"
#include "handset/platform/PackageBlk.h"

// Helpers shared by the message items and the message context for keyed blocks and archives.
namespace hs {
namespace sms {

inline std::string Key(const char* prefix, const char* name) {
  return std::string(prefix ? prefix : "") + name;
}

/// Writes a 4-byte little-endian integer under prefix + name.
void PutInt(CPackageBlk& blk, const char* prefix, const char* name, int32_t v);
/// Writes a text with its NUL (null is one NUL byte).
void PutText(CPackageBlk& blk, const char* prefix, const char* name, const char* text);
/// Reads an integer when the key is present: four bytes little-endian, a shorter value zero
/// extended. False (and `*v` untouched) when the key is absent.
bool GetInt(const CUnpackageBlk& blk, const char* prefix, const char* name, int32_t* v);
/// Borrows the bytes of a key; false when absent.
bool GetBytes(const CUnpackageBlk& blk, const char* prefix, const char* name, const uint8_t** data,
              uint32_t* size);
/// Copies a stored text into a field of `capacity` bytes: cut at its NUL, at the end of the
/// stored bytes or at capacity - 1, always terminated. False (field untouched) when absent.
bool GetText(const CUnpackageBlk& blk, const char* prefix, const char* name, char* field,
             size_t capacity);

/// Reads `n` bytes from an archive into `out`, growing the buffer only as bytes actually arrive,
/// so a count that a damaged archive claims never allocates more than the archive holds.
bool ReadBlock(CArchive& ar, int32_t n, std::vector<uint8_t>* out);

/// Copies at most `limit` characters of `src` (null is "") into `dest` and terminates it.
void CopyCut(char* dest, const char* src, size_t limit);

}  // namespace sms
}  // namespace hs
