#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

#include "handset/pim/BkmkObj.h"
#include "handset/pim/IEVbkm.h"
#include "handset/pim/OemPanaVbkm.h"
#include "handset/pim/QP.h"
#include "handset/pim/Vbkm.h"
#include "handset/pim/VbkmDialect.h"

// vObject text in both vBookmark dialects, the dialect detection that bookmark import uses, the
// quoted-printable coder, values decoded on request, and composing whatever was read back.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  std::string text(reinterpret_cast<const char*>(data), size);
  CQP qp;
  qp.Decode(text.c_str());
  qp.Encode(text.c_str());
  CVbkm generic;
  COemPanaVbkm oem;
  for (CVbkm* v : {static_cast<CVbkm*>(&generic), static_cast<CVbkm*>(&oem)}) {
    std::string copy = text;
    CString error, decoded;
    v->Parsing(&copy[0], &error);
    v->GetPropTableValue("TITLE");
    v->GetPropDecodedValue("TITLE", &decoded);
    v->SetPropTableValue("URL", copy.c_str());
    v->SetPropDecodedValue("TITLE", copy.c_str());
    char* buf = nullptr;
    int n = 0;
    v->Composing(buf, n);
    delete[] buf;
  }
  VBKM_PARSE_RESULT result;
  std::unique_ptr<CVbkm> any(_VBKM_Parse(text.c_str(), true, &result));
  if (any) {
    CBkmkObj node;
    node.FromVBKM(any.get());
    CVbkm* back = nullptr;
    node.CreateVBKM(back);
    delete back;
  }
  return 0;
}
