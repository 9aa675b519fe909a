#include "messaging/mms/WspWriter.h"

#include "messaging/mms/MimeText.h"
#include "messaging/mms/WspTables.h"

namespace hs {
namespace mms {

void PutUintvar(Bytes* b, uint32_t value) {
  uint8_t tmp[5];
  int n = 0;
  tmp[4] = static_cast<uint8_t>(value & 0x7F);
  n = 1;
  while ((value >>= 7) != 0) {
    tmp[4 - n] = static_cast<uint8_t>(0x80 | (value & 0x7F));
    ++n;
  }
  b->insert(b->end(), tmp + 5 - n, tmp + 5);
}

void PutValueLength(Bytes* b, size_t length) {
  if (length <= 30) {
    b->push_back(static_cast<uint8_t>(length));
  } else {
    b->push_back(31);
    PutUintvar(b, static_cast<uint32_t>(length));
  }
}

void PutShortInteger(Bytes* b, uint32_t value) {
  b->push_back(static_cast<uint8_t>(0x80 | (value & 0x7F)));
}

void PutLongInteger(Bytes* b, uint64_t value) {
  uint8_t tmp[8];
  int n = 0;
  do {
    tmp[7 - n] = static_cast<uint8_t>(value & 0xFF);
    ++n;
    value >>= 8;
  } while (value != 0);
  b->push_back(static_cast<uint8_t>(n));
  b->insert(b->end(), tmp + 8 - n, tmp + 8);
}

void PutIntegerValue(Bytes* b, uint64_t value) {
  if (value < 0x80)
    PutShortInteger(b, static_cast<uint32_t>(value));
  else
    PutLongInteger(b, value);
}

void PutTextString(Bytes* b, const std::string& text) {
  size_t len = 0;
  while (len < text.size() && text[len] != 0) ++len;
  unsigned char first = len ? static_cast<unsigned char>(text[0]) : 0;
  if (first >= 0x7F) b->push_back(127);  // a quote, so the text is not read as a number
  for (size_t i = 0; i < len; ++i) {
    unsigned char c = static_cast<unsigned char>(text[i]);
    // Control characters have no place in a text (one first would be read as a length).
    bool blank = c == '\t' || c == '\r' || c == '\n';
    b->push_back(c < 0x20 && (i == 0 || !blank) ? ' ' : c);
  }
  b->push_back(0);
}

void PutQuotedString(Bytes* b, const std::string& text) {
  b->push_back('"');
  PutTextString(b, text);
}

void PutEncodedString(Bytes* b, const std::string& utf8) {
  if (IsAscii(utf8.data(), utf8.size())) {
    PutTextString(b, utf8);
    return;
  }
  Bytes inner;
  PutIntegerValue(&inner, kCharsetUtf8);
  PutTextString(&inner, utf8);
  PutWithLength(b, inner);
}

void PutWithLength(Bytes* b, const Bytes& inner) {
  PutValueLength(b, inner.size());
  b->insert(b->end(), inner.begin(), inner.end());
}

}  // namespace mms
}  // namespace hs
