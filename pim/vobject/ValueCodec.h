#pragma once

#include "handset/platform/Strings.h"

namespace hs {
namespace vobj {

/// Quoted-printable for a value inside one vObject line: the byte set `CQP::Encode` copies, minus
/// CR and LF, and always two hex digits, so nothing is lost and the line never breaks.
CString EncodeQpValue(const CString& value);
/// Decodes an X-IRMC-URL value ("[InternetShortcut]" ... "URL=" ...) to the bare URL. Values in
/// other shapes are returned as they are.
CString ExtractShortcutUrl(const CString& raw, bool quotedPrintable);

}  // namespace vobj
}  // namespace hs
