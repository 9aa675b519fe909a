#include <cstddef>
#include <cstdint>
#include <string>

#include "messaging/mms/MimeText.h"
#include "messaging/mms/SmilScanner.h"

// Any bytes as a SMIL presentation (in any of the encodings phones use): the recognition, the
// media list and the tag scanner over the text. Seeds: fuzz/seeds/mms_smil.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  hs::mms::IsSmilText(data, size);
  size_t refs = hs::mms::SmilMediaReferences(data, size).size();
  size_t tags = 0;
  hs::mms::ScanStartTags(hs::mms::SniffTextToUtf8(data, size), [&](const hs::mms::MarkupTag& t) {
    tags += t.attributes.size() + 1;
    return true;
  });
  if (refs > tags) __builtin_trap();  // every reference comes from an attribute of a tag
  return 0;
}
