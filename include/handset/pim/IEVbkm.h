#pragma once

#include "handset/export.h"
#include "handset/pim/Vbkm.h"

/// A desktop browser favourite (an INI-style internet-shortcut file) presented as a vBookmark of
/// the OEM dialect.
class HANDSET_API CIEVbkm : public CVbkm {
 public:
  explicit CIEVbkm(const _FormalDef* formal = nullptr);

  /// Reads the shortcut text `text` (the file's bytes, NUL-terminated): the "URL" key of its
  /// "InternetShortcut" section becomes URL and X-IRMC-URL, `_ExtractFilename(*name)` the TITLE,
  /// and X-S-BROWSERTYPE is "FULL". A shortcut without a URL gives an empty URL. False when the
  /// temporary file cannot be created or written, or `text` is null.
  bool Parsing(char* text, CString* name) override;
  /// The base parse, unchanged.
  bool ParseString(CStringList& lines, CPropertyList& props, const _FormalDef* formal) override;
  /// `name` without its extension when the text after the last '.' has at most 4 characters;
  /// otherwise the whole name. Null or empty gives "".
  CString _ExtractFilename(const char* name);

 protected:
  void _CreateEmptySample(CStringList& lines) override;
};
