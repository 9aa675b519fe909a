#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "platform/ByteReader.h"

// Reading the primitives of the WAP binary header encoding. Every length read is checked against
// the bytes that remain; the first failure is remembered as an hs::mmspdu code.
namespace hs {
namespace mms {

/// A Text-string or Encoded-string-value: the bytes as sent, their charset and the text in UTF-8.
struct EncodedString {
  int charset = 0;   ///< IANA MIBenum; 0 when the value carried none
  std::string raw;   ///< the text bytes without quote and terminator
  std::string text;  ///< UTF-8, MIME encoded-words decoded
};

/// One content-type parameter.
struct ContentParam {
  int code = -1;      ///< well-known parameter code, -1 for a textual one
  std::string name;   ///< "Charset", "Start", or the textual name
  std::string value;  ///< as text ("utf-8", "<0.smil>", "106" for an unknown charset)
  uint64_t number = 0;
  bool isNumber = false;
};

/// A Content-type-value.
struct ContentTypeValue {
  std::string media;  ///< "image/gif", or the extension media text
  int code = -1;      ///< well-known media code, -1 when sent as text
  std::vector<ContentParam> params;
  int charset = 0;        ///< MIBenum of the Charset parameter, 0 when absent
  std::string start;      ///< Start parameter
  std::string startType;  ///< Type parameter of multipart.related
  std::string name;       ///< Name or Filename parameter
  /// "type; param=value; ..." for display.
  std::string ToString() const;
};

class WspReader {
 public:
  WspReader(const uint8_t* data, size_t size) : r_(data, size) {}
  explicit WspReader(const ByteReader& r) : r_(r) {}

  bool ok() const { return error_ == 0; }
  int error() const { return error_; }
  /// Records the first failure (an hs::mmspdu code) and returns false.
  bool Fail(int code);
  size_t remaining() const { return r_.remaining(); }
  size_t tell() const { return r_.tell(); }
  bool atEnd() const { return r_.atEnd(); }
  uint8_t Peek() const { return r_.peek8(); }
  uint8_t Octet();
  const uint8_t* cursor() const { return r_.cursor(); }
  bool Skip(size_t n);
  /// A reader over the next `n` bytes (which must all be there), advancing past them.
  WspReader Sub(size_t n);

  /// Unsigned variable-length integer: at most five octets and 32 bits.
  bool Uintvar(uint32_t* value);
  /// Value-length after its first octet (0..30 direct, 31 then a uintvar); the length must not
  /// pass the end.
  bool ValueLength(uint32_t* length);
  /// Long-integer: Short-length (1..8 here) and that many big-endian octets.
  bool LongInteger(uint64_t* value);
  /// Short-integer or Long-integer.
  bool IntegerValue(uint64_t* value);
  /// Text-string, Token-text or Quoted-string up to its terminating zero; a leading quote octet
  /// (127, or '"' when `dropQuote`) is removed.
  bool TextString(std::string* text, bool dropQuote = false);
  /// Encoded-string-value, decoded to UTF-8.
  bool EncodedStringValue(EncodedString* out);
  /// Content-type-value with its parameters.
  bool ContentType(ContentTypeValue* out);
  /// Any header value by its first octet (length-prefixed, text, or one octet), as raw bytes.
  bool RawValue(std::vector<uint8_t>* raw);
  /// One parameter (typed or textual) appended to `ct->params`; the well-known ones also fill
  /// the matching field of `ct`.
  bool Parameter(ContentTypeValue* ct);

 private:
  bool TypedParameter(int code, ContentParam* p);

  ByteReader r_;
  int error_ = 0;
};

}  // namespace mms
}  // namespace hs
