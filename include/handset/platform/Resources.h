#pragma once

#include "handset/export.h"
#include "handset/platform/Strings.h"

/// String resources of the suite, keyed by number. The texts are English.
enum : unsigned {
  IDS_FMT_MIDI_RINGTONE = 3041,
  IDS_FMT_SMAF = 3042,
  IDS_FMT_ALL_MELODY = 3043,
  IDS_FMT_WAVE = 3044,
  IDS_FMT_XMI = 3046,
  IDS_FMT_MMS_AUDIO_ALL = 3053,
  IDS_FMT_AUX_WAVE = 3069,
  IDS_FMT_AUX_AMR = 3070,
  IDS_FMT_AUX_ALL = 3071,
  IDS_FMT_AUF = 3073,
  IDS_FMT_MP3 = 3080,
  IDS_FMT_XAU = 3096,
  IDS_FMT_3GP = 3114,
  IDS_AAC_DECODE_ERROR = 3200,
};

/// The text of resource `id`, or null when there is none. Static, owned by the library.
HANDSET_API const char* HsLoadString(unsigned id);
/// The text of resource `id` as a string; empty when there is none.
HANDSET_API CString HsLoadCString(unsigned id);
