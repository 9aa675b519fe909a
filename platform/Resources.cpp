#include "handset/platform/Resources.h"

namespace {
struct Res {
  unsigned id;
  const char* text;
};
const Res kResources[] = {
    {IDS_FMT_MIDI_RINGTONE, "Ringtone files"},
    {IDS_FMT_SMAF, "SMAF files"},
    {IDS_FMT_ALL_MELODY, "All melody files"},
    {IDS_FMT_WAVE, "Wave files"},
    {IDS_FMT_XMI, "XMI melody files"},
    {IDS_FMT_MMS_AUDIO_ALL, "All MMS audio files"},
    {IDS_FMT_AUX_WAVE, "Wave files"},
    {IDS_FMT_AUX_AMR, "AMR files"},
    {IDS_FMT_AUX_ALL, "All audio files"},
    {IDS_FMT_AUF, "AUF project files"},
    {IDS_FMT_MP3, "MP3 files"},
    {IDS_FMT_XAU, "XAU project files"},
    {IDS_FMT_3GP, "3GP files"},
    {IDS_AAC_DECODE_ERROR, "Errors occured during AAC decoding process."},
};
}  // namespace

const char* HsLoadString(unsigned id) {
  for (const Res& r : kResources)
    if (r.id == id) return r.text;
  return nullptr;
}

CString HsLoadCString(unsigned id) {
  return CString(HsLoadString(id));
}
