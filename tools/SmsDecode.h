#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "handset/messaging.h"
#include "tools/Cli.h"

// Shared by the parts of "handset sms": hex text, JSON-safe text and the description of a
// message's items.
namespace hs {
namespace cli {
namespace sms {

std::string Hex(const uint8_t* p, size_t n, bool upper = false);
/// The text with every byte sequence that is not UTF-8 replaced by U+FFFD, so JSON stays valid.
std::string CleanUtf8(const std::string& s);
/// The information elements of a header (its length octet first) as JSON objects.
void IesJson(const std::vector<uint8_t>& header, Json& j);
/// "handset sms decode": returns the exit status.
int Decode(const Args& a);

}  // namespace sms
}  // namespace cli
}  // namespace hs
