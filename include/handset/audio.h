#pragma once

// Audio family: AMR and AAC storage files and codecs.
#include "handset/audio/Aac.h"
#include "handset/audio/Amr.h"
#include "handset/audio/ByteBlock.h"
