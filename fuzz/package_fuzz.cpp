#include <cstddef>
#include <cstdint>

#include "handset/platform/Archive.h"
#include "handset/platform/PackageBlk.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  CUnpackageBlk blk;
  if (blk.Unpack(data, size)) {
    CString s;
    blk.GetString("a", &s);
  }
  CArchive ar(data, size);
  CString text;
  while (ar.IsGood() && ar.ReadString(text)) {
  }
  return 0;
}
