#pragma once

#include <cstdint>

#include "handset/platform/Strings.h"

// The value encodings of vObject lines, in one place: quoted-printable (through CQP) and base64.
// The parser and the writer call these; nothing here calls back into them.
namespace hs {
namespace vobj {

/// Quoted-printable for a value inside one vObject line: the byte set `CQP::Encode` copies, minus
/// CR and LF, and always two hex digits, so nothing is lost and the line never breaks.
CString EncodeQpValue(const CString& value);
/// `text` decoded from `encoding` (VOBJ_ENC_*): quoted-printable by `CQP::Decode`, base64 by
/// `_VObjBase64Decode`, anything else copied. False when the text cannot be decoded.
bool DecodeValue(const char* text, int32_t encoding, CString* out);
/// `value` encoded into `encoding` (VOBJ_ENC_*); anything other than QP or BASE64 is copied.
CString EncodeValue(const CString& value, int32_t encoding);

}  // namespace vobj
}  // namespace hs
