#pragma once

#include "handset/export.h"
#include "handset/pim/Vbkm.h"

/// The vBookmark dialect of one handset maker: adds "X-S-BROWSERTYPE" (bound to "FULL" from the
/// start) and writes the title as TITLE;ENCODING=QUOTED-PRINTABLE;CHARSET=SHIFT_JIS: a title held
/// in another form (set by the host, or read from a plain line) is encoded for that line when
/// composed, and the property keeps what it holds. The character set is a label only: the host
/// hands in text the phone can show.
class HANDSET_API COemPanaVbkm : public CVbkm {
 public:
  explicit COemPanaVbkm(const _FormalDef* formal = nullptr);

 protected:
  bool _ComposeProperty(CProperty* prop, CStringList& lines) override;
  void _CreateEmptySample(CStringList& lines) override;
};
