#include <cstddef>
#include <cstdint>

#include "handset/pim.h"

// The first two bytes are taken as the version word, the rest as the image, so both the
// version check and the image reader see arbitrary input; the input is also tried as a whole
// serialised block.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  size_t head = size < 2 ? size : 2;
  CPackageBlk blk;
  blk.Add(".CALINFO_VERSION", data, static_cast<uint32_t>(head));
  blk.Add(".this", data + head, static_cast<uint32_t>(size - head));
  CCalendarInfo cal;
  if (cal.UnpackData("", CUnpackageBlk(blk))) {
    uint8_t image[CALINFO_IMAGE_SIZE];
    cal._PackImage(image);
  }
  CUnpackageBlk whole;
  if (whole.Unpack(data, size)) {
    cal.UnpackData("", whole);
    CPersonalInfo person;
    person.UnpackData("", whole);
  }
  return 0;
}
