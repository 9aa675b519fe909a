#pragma once

#include <cstddef>
#include <string>

// Text operations that depend on the character encoding: UTF-8 on POSIX, the system code page on
// Windows. Only this layer knows which.
namespace hs {
namespace os {

/// `text` (`length` bytes) with every letter mapped to its lower-case form, for use as a key:
/// two texts are equal ignoring case exactly when their folded forms are equal. Bytes that do not
/// form a character stay as they are. On POSIX the result is UTF-8; on Windows it is UTF-8 too,
/// converted from the code page, so it is a key and not a text to show.
std::string FoldCase(const char* text, size_t length);
/// Compares two NUL-terminated texts ignoring case: <0, 0 or >0 in the byte order of their folded
/// forms (ASCII texts order as with strcasecmp). Null is taken as "".
int CompareNoCase(const char* a, const char* b);

/// The largest character boundary at or before `pos` in `text` (`length` bytes), so that cutting
/// there never splits a character. `pos` beyond `length` gives `length`.
size_t CharBoundary(const char* text, size_t length, size_t pos);
/// Length of `text` in UTF-16 units, as a file system that counts them sees it (bytes that form
/// no character count one unit each).
size_t Utf16Length(const char* text, size_t length);

}  // namespace os
}  // namespace hs
