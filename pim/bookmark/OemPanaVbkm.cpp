#include "handset/pim/OemPanaVbkm.h"

#include "pim/bookmark/VbkmSample.h"
#include "pim/vobject/ValueCodec.h"

COemPanaVbkm::COemPanaVbkm(const _FormalDef* formal) : CVbkm(formal ? formal : g_oemVbkmFormalDef) {
  AddPropValDef("<browser-type>", "FULL");
}

bool COemPanaVbkm::_ComposeProperty(CProperty* prop, CStringList& lines) {
  if (!prop || prop->m_bNested || prop->m_strName != "TITLE")
    return CVbkm::_ComposeProperty(prop, lines);
  const char* held = _ResolveValue(*prop);
  if (!held) return false;
  // The title line always says QUOTED-PRINTABLE; a title held in another form (as set by the
  // host, or read from a plain line) is encoded for it. The property itself keeps what it holds.
  CProperty title(*prop);
  title.RemoveAllParams();
  title.AddParam(VOBJ_PARAM_ENCODING, CProperty::EncodingName(VOBJ_ENC_QP));
  title.AddParam(VOBJ_PARAM_CHARSET, CProperty::CharsetName(VOBJ_CHARSET_SHIFT_JIS));
  CString value(held);
  if (prop->m_nEncoding != VOBJ_ENC_QP) {
    CString plain;
    if (!hs::vobj::DecodeValue(held, prop->m_nEncoding, &plain)) plain = held;
    value = hs::vobj::EncodeQpValue(plain);
  }
  lines.AddTail(_ComposeLine(title, value.c_str()));
  return true;
}

void COemPanaVbkm::_CreateEmptySample(CStringList& lines) {
  hs::vbkm::OemSample(lines);
}
