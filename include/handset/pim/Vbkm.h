#pragma once

#include "handset/export.h"
#include "handset/pim/VObjLite.h"

/// The vBookmark templates; exported so that callers can build objects of another dialect.
HANDSET_API extern const _FormalDef g_vbkmFormalDef[];        ///< generic vBookmark
HANDSET_API extern const _FormalDef g_vbkmEnvFormalDef[];     ///< its BEGIN:ENV block
HANDSET_API extern const _FormalDef g_oemVbkmFormalDef[];     ///< with X-S-BROWSERTYPE
HANDSET_API extern const _FormalDef g_oemVbkmEnvFormalDef[];  ///< its BEGIN:ENV block

/// A vBookmark (BEGIN:VBKM ... END:VBKM): title, URL and an embedded internet shortcut. Read and
/// change it through GetPropTableValue / SetPropTableValue with "VERSION", "URL", "TITLE" and
/// "X-IRMC-URL"; in this dialect URL and X-IRMC-URL share one value.
///
/// Values are held as they stand in the text (a quoted-printable TITLE stays encoded; decode it
/// with GetPropDecodedValue), with one exception that makes the shared value work: X-IRMC-URL is
/// held as the bare URL of its shortcut block, decoded, and is wrapped and encoded again when
/// composed.
class HANDSET_API CVbkm : public CVObjLite {
 public:
  /// `formal` null selects the generic template. The object starts with the empty sample's
  /// properties (TITLE and URL empty, VERSION "1.0"); they are built on first use, so objects
  /// that are parsed at once never build them.
  explicit CVbkm(const _FormalDef* formal = nullptr);
  /// Discards the properties and builds them from the sample; returns the parse result.
  bool CreateEmptyProperties() override;
  bool Parsing(char* text, CString* error) override;
  bool Composing(char*& buffer, int& size) override;
  const char* GetPropTableValue(const char* name) override;
  const char* SetPropTableValue(const char* name, const char* value) override;

  /// Sets the bookmark: TITLE to `title` (encoded as the TITLE line is labelled), URL and
  /// X-IRMC-URL to `url` (null texts are ""). True when TITLE and URL were set; X-IRMC-URL is
  /// set when the object has one.
  bool SetTitleAndUrl(const char* title, const char* url);

 protected:
  void _CreateEmptySample(CStringList& lines) override;
  /// X-IRMC-URL: the URL inside the shortcut block, decoded when the line is quoted-printable.
  bool _ParseProperty(CProperty* prop, const char* line, const _FormalDef* row) override;
  /// X-IRMC-URL: written as a shortcut block ("[InternetShortcut]" "URL=" and the URL), the URL
  /// quoted-printable encoded when the line is labelled so.
  bool _ComposeProperty(CProperty* prop, CStringList& lines) override;
  /// Builds the sample properties when they are still due.
  void _EnsureSample();

  bool m_bSampleDue = true;
};
