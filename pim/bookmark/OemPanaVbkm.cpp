#include "handset/pim/OemPanaVbkm.h"

#include "pim/bookmark/VbkmSample.h"

COemPanaVbkm::COemPanaVbkm(const _FormalDef* formal) : CVbkm(formal ? formal : g_oemVbkmFormalDef) {
  AddPropValDef("<browser-type>", "FULL");
}

bool COemPanaVbkm::_ComposeProperty(CProperty* prop, CStringList& lines) {
  if (prop && !prop->m_bNested && prop->m_strName == "TITLE") {
    prop->RemoveAllParams();
    prop->AddParam(VOBJ_PARAM_ENCODING, CProperty::EncodingName(VOBJ_ENC_QP));
    prop->AddParam(VOBJ_PARAM_CHARSET, CProperty::CharsetName(VOBJ_CHARSET_SHIFT_JIS));
  }
  return CVbkm::_ComposeProperty(prop, lines);
}

void COemPanaVbkm::_CreateEmptySample(CStringList& lines) {
  hs::vbkm::OemSample(lines);
}
