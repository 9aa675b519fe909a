#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <utility>
#include <vector>

// A tolerant reader of the start tags of SMIL markup. Phones send presentations that strict XML
// parsers refuse (a declaration ending "?/>", elements never closed, UTF-16 with or without a
// byte-order mark), so this reads tags and attributes only and never fails: comments, CDATA,
// declarations and processing instructions are skipped, a tag cut short ends where the next one
// begins, and an attribute without quotes runs to the next blank.
namespace hs {
namespace mms {

struct MarkupTag {
  std::string name;  ///< local name (any "prefix:" removed), as written
  std::vector<std::pair<std::string, std::string>> attributes;  ///< values with entities decoded
  /// The value of attribute `name` (compared without regard to ASCII case), or null.
  const std::string* Find(const char* name) const;
};

/// Calls `onTag` for every start tag (and empty-element tag) of `text` (UTF-8) in document
/// order; stops early when `onTag` returns false.
void ScanStartTags(const std::string& text, const std::function<bool(const MarkupTag&)>& onTag);

/// True when the first element of the file's text is <smil> (any case, any prefix).
bool IsSmilText(const uint8_t* data, size_t size);

/// The src attributes of the media elements (img, text, audio, video, ref, animation,
/// textstream) of a presentation, in document order, as written (duplicates kept).
std::vector<std::string> SmilMediaReferences(const uint8_t* data, size_t size);

}  // namespace mms
}  // namespace hs
