#include <cstddef>
#include <cstdint>

#include "handset/melody/MidFileElement.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  CMidFileElement f;
  if (f.LoadFromMemory(data, static_cast<unsigned long>(size)) != 0) return 0;
  unsigned long out = 0;
  for (int format : {0, 1}) f.GetMidiFileBuf(format, &out);
  f.GetMidiFileBuf(1, &out, 10, 500, 1);
  f.SetGetMidEventMode(2);
  for (uint32_t i = 0; i < f.GetTrackNum(); ++i) {
    CMidTrackElement* t = f.GetTrackByIndex(static_cast<int>(i));
    NoteIDInfo id;
    for (int rc = t->GetFirstIDs(&id); rc == 0; rc = t->GetNextIDs(&id)) {
    }
    t->CaculateReservedValue();
  }
  return 0;
}
