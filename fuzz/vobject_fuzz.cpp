#include <cstddef>
#include <cstdint>
#include <string>

#include "handset/pim/IEVbkm.h"
#include "handset/pim/OemPanaVbkm.h"
#include "handset/pim/QP.h"
#include "handset/pim/Vbkm.h"

// vObject text in both vBookmark dialects, the quoted-printable coder, and composing whatever
// was read back into text.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  std::string text(reinterpret_cast<const char*>(data), size);
  CQP qp;
  qp.Decode(text.c_str());
  qp.Encode(text.c_str());
  CVbkm generic;
  COemPanaVbkm oem;
  for (CVbkm* v : {static_cast<CVbkm*>(&generic), static_cast<CVbkm*>(&oem)}) {
    std::string copy = text;
    CString error;
    v->Parsing(&copy[0], &error);
    v->GetPropTableValue("TITLE");
    v->SetPropTableValue("URL", copy.c_str());
    char* buf = nullptr;
    int n = 0;
    v->Composing(buf, n);
    delete[] buf;
  }
  return 0;
}
