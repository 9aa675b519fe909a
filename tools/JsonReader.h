#pragma once

#include <string>
#include <utility>
#include <vector>

namespace hs {
namespace cli {

/// A parsed JSON value: just enough for the CLI's input files.
struct JsonValue {
  enum Type { Null, Bool, Number, String, Array, Object } type = Null;
  bool boolean = false;
  double number = 0;
  std::string str;
  std::vector<JsonValue> items;                            ///< Array
  std::vector<std::pair<std::string, JsonValue>> members;  ///< Object, in input order

  /// The member `key` of an object, or null.
  const JsonValue* Find(const std::string& key) const;
};

/// Parses `text` as one JSON value (RFC 8259; nesting limited to 64 levels). False with a message
/// naming the byte offset on error.
bool ParseJson(const std::string& text, JsonValue* out, std::string* error);

}  // namespace cli
}  // namespace hs
