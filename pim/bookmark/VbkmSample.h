#pragma once

#include "handset/platform/Strings.h"

namespace hs {
namespace vbkm {

/// The nine sample lines of an empty vBookmark with a browser type.
inline void OemSample(CStringList& lines) {
  for (const char* l :
       {"BEGIN:VBKM", "VERSION:1.0", "URL:", "TITLE:", "X-S-BROWSERTYPE:", "BEGIN:ENV",
        "X-IRMC-URL;ENCODING=QUOTED-PRINTABLE:[InternetShortcut]URL=", "END:ENV", "END:VBKM"})
    lines.AddTail(l);
}

}  // namespace vbkm
}  // namespace hs
