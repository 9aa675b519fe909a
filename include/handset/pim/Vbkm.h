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
class HANDSET_API CVbkm : public CVObjLite {
 public:
  /// `formal` null selects the generic template.
  explicit CVbkm(const _FormalDef* formal = nullptr);
  /// Discards the properties and builds them from the sample; returns the parse result.
  bool CreateEmptyProperties() override;

 protected:
  void _CreateEmptySample(CStringList& lines) override;
};
