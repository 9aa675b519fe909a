#pragma once

#include "handset/export.h"

// The GSM 7-bit default alphabet and its extension table (3GPP TS 23.038), and the two user-data
// codings built on it: septets packed into octets, and UCS-2 big-endian. Texts given as `const
// char*` are ANSI (UTF-8 on POSIX) and go through UTF-16 first.
//
// A septet buffer holds one code (0-127) per byte. A character of the extension table (form feed,
// ^ { } \ [ ~ ] | and the euro sign) is the escape code 0x1B followed by its code, so it takes two
// septets; the two are never separated.

/// Non-zero when every character of the NUL-terminated ANSI text is in the default alphabet or the
/// extension table. A null or empty text is GSM text.
HANDSET_API int IsGsm7BitAlphabet(const char* text);

/// Septets the NUL-terminated ANSI text takes: 2 for an extension-table character, 1 for any other
/// (a character outside the alphabet is sent as '?'). 0 for null.
HANDSET_API int Gsm7BitAlphabetLength(const char* text);

/// Converts the NUL-terminated ANSI text into septet codes in `out` (room for `room` bytes).
/// Characters outside the alphabet become '?'. Stops before a character that does not fit whole.
/// Returns the septets written; 0 for a null text or buffer.
HANDSET_API int EncodeGsm7BitChars(const char* text, unsigned char* out, int room);

/// The same over `count` UTF-16 units. A surrogate pair (never GSM) becomes one '?'.
HANDSET_API int UCS2ToGsm7Bit(const unsigned short* ucs2, int count, unsigned char* out, int room);

/// Converts `count` septet codes into UTF-16 units in `out` (room for `room`). An escape followed
/// by a code the extension table does not define reads as the default-alphabet character of that
/// code; an escape at the very end reads as a space. Returns the units written.
HANDSET_API int Gsm7BitToUCS2(const unsigned char* septets, int count, unsigned short* out,
                              int room);

/// Septets of one UTF-16 unit: 1 or 2, or 0 when it is not in the alphabet.
HANDSET_API int Gsm7BitCharSeptets(unsigned short unit);

/// Packs `count` septets into octets, least significant bit first, after `fillBits` (0-6) zero
/// bits that align the text to a septet boundary after a user data header. Returns the octets
/// written, or 0 (nothing written) when `room` is too small.
HANDSET_API int PackGsm7Bit(const unsigned char* septets, int count, int fillBits,
                            unsigned char* out, int room);

/// Unpacks `septets` septets from `octets` bytes of packed data, skipping `fillBits` leading bits.
/// Reads only septets wholly inside the data. Returns the septets written to `out` (which must
/// hold `septets` bytes).
HANDSET_API int UnpackGsm7Bit(const unsigned char* packed, int octets, int fillBits, int septets,
                              unsigned char* out);
