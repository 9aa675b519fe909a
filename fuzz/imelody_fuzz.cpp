#include <cstddef>
#include <cstdint>
#include <memory>

#include "handset/melody.h"

// Any bytes as iMelody text; whatever converts is written as MIDI, read back and converted to
// iMelody again, so both converters and the writer see fuzzed content.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  CiMelody2Mid toMid;
  int err = 0;
  std::unique_ptr<CMidFileElement> mid(
      toMid.DoConvert(CString(reinterpret_cast<const char*>(data), size), err));
  if (!mid) return 0;
  CMid2iMelody toImy;
  toImy.SetLimit(static_cast<int>(size % 97), -1);
  CString text;
  toImy.DoConvertMidElelemt2Str(mid.get(), text);
  unsigned long bytes = 0;
  const unsigned char* buf = mid->GetMidiFileBuf(0, &bytes);
  if (!buf) return 0;
  CMidFileElement back;
  if (back.LoadFromMemory(buf, bytes) == 0) {
    CMid2iMelody again;
    again.DoConvertMidElelemt2Str(&back, text);
  }
  return 0;
}
