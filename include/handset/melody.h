#pragma once

// Melody family: format registry, MIDI model, iMelody converters, SMAF information.
#include "handset/melody/FormatRegistry.h"
#include "handset/melody/MMFInfo.h"
#include "handset/melody/Mid2iMelody.h"
#include "handset/melody/MidFileElement.h"
#include "handset/melody/MidNoteElement.h"
#include "handset/melody/MidTrackElement.h"
#include "handset/melody/iMelody2Mid.h"
