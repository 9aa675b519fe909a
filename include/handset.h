#pragma once

// The whole exported interface of the handset library.
#include "handset/audio.h"
#include "handset/melody.h"
#include "handset/messaging.h"
#include "handset/pim.h"
#include "handset/platform.h"

/// The library version as "major.minor.patch".
HANDSET_API const char* HsVersion();
