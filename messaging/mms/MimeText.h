#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

// Character-set conversions to UTF-8 for message texts, and MIME encoded-words (RFC 2047).
namespace hs {
namespace mms {

/// True when `text` is well-formed UTF-8 (no overlong forms, no surrogates).
bool IsUtf8(const char* text, size_t size);
/// True when every byte is below 0x80.
bool IsAscii(const char* text, size_t size);
/// `text` with every ill-formed UTF-8 sequence replaced by U+FFFD.
std::string SanitizeUtf8(const std::string& text);
/// UTF-16 to UTF-8; unpaired surrogates become U+FFFD, an odd last byte is dropped.
std::string Utf16ToUtf8(const uint8_t* data, size_t size, bool bigEndian);
/// ISO-8859-1 to UTF-8.
std::string Latin1ToUtf8(const uint8_t* data, size_t size);

/// Text in charset `mib` (IANA MIBenum; 0 when not given) as UTF-8. UCS-2 and UTF-16 honour a
/// byte-order mark and otherwise read big-endian. A charset without a converter here is taken as
/// UTF-8 when it is well-formed and as ISO-8859-1 otherwise, so the result is always UTF-8.
std::string DecodeCharset(const uint8_t* data, size_t size, int mib);

/// Text of unknown encoding as UTF-8: a UTF-8 or UTF-16 byte-order mark is honoured (and
/// removed), UTF-16 without a mark is recognised by its zero bytes, anything else is UTF-8 when
/// well-formed and ISO-8859-1 otherwise.
std::string SniffTextToUtf8(const uint8_t* data, size_t size);

/// Decodes MIME encoded-words ("=?utf-8?B?...?=", "=?iso-8859-1?Q?...?=") in `text` to UTF-8;
/// blanks between two adjacent encoded-words are dropped, malformed words are left as written.
std::string DecodeMimeWords(const std::string& text);

}  // namespace mms
}  // namespace hs
