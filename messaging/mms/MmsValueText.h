#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "messaging/mms/WspReader.h"

// The values of MMS and part headers read into numbers and display texts.
namespace hs {
namespace mms {

/// A header value read by the layout of its field.
struct ValueText {
  std::string text;            ///< UTF-8 display text
  uint64_t number = 0;         ///< the octet, integer or time of numeric values
  int charset = 0;             ///< charset of an encoded string
  bool isToken = false;        ///< the value was a one-octet token
  bool relative = false;       ///< a time value counted from now
  bool insertAddress = false;  ///< From carried the insert-address token
};

/// Reads the value of MMS field `code` from `v` by the field's layout. False when the value does
/// not have that layout (or the field has none known).
bool ReadMmsValue(int code, WspReader& v, ValueText* out);

/// Display text of a value whose layout is not known: a text as text, one octet as its number,
/// anything longer as hex octets.
std::string GenericValueText(int code, const std::vector<uint8_t>& raw);
/// Display text of the value of WAP part header `code` (-1 for a textual header).
std::string PartValueText(int code, const std::vector<uint8_t>& raw);

/// Seconds since 1970 as "YYYY-MM-DDTHH:MM:SSZ".
std::string FormatUtcTime(int64_t seconds);
/// `text` as well-formed UTF-8 (ill-formed bytes become U+FFFD).
std::string SanitizeText(const std::string& text);
/// Two upper-case hex digits.
std::string Hex(uint8_t value);

}  // namespace mms
}  // namespace hs
