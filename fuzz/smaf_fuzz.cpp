#include <cstddef>
#include <cstdint>
#include <vector>

#include "handset/melody/MMFInfo.h"
#include "tests/melody/smaf/MmfImage.h"

namespace {

// Random bytes almost never carry a matching CRC; resealing half of the inputs lets the label
// scans and patches see them.
void Reseal(std::vector<uint8_t>& v) {
  if (v.size() < 3) return;
  uint16_t crc = hs::test::Genibus(v.data(), v.size() - 2);
  v[v.size() - 2] = static_cast<uint8_t>(crc >> 8);
  v[v.size() - 1] = static_cast<uint8_t>(crc);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size == 0) return 0;
  const uint8_t control = data[0];
  std::vector<uint8_t> image(data + 1, data + size);
  if (control & 1) Reseal(image);
  CMMFInfo info;
  info.OpenMMFBuf(image.empty() ? nullptr : image.data(), static_cast<unsigned long>(image.size()));
  int v = 0;
  info.GetMA2LedStatus(&v);
  info.GetCopyStatus();
  for (int t = -1; t <= 16; ++t) {
    info.GetVibStatus(t, &v);
    info.GetMA3LedStatus(t, &v);
    info.GetTrackLedStatus(t, &v);
    info.IsValidTrack(t);
  }
  const int track = (control >> 1) & 0x0F;
  switch ((control >> 5) & 3) {
    case 0:
      info.SetCopyStatus(control);
      break;
    case 1:
      info.SetMA2LedStatus(track);
      info.SetMA2LedStatus(track);  // the second write lands on the existing item
      break;
    case 2:
      info.SetVibStatus(track, 1);
      break;
    default:
      info.SetMA3LedStatus(track, 1);
      break;
  }
  info.GetMMFBuffer();
  info.CloseMMF(0);
  return 0;
}
