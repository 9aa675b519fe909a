#pragma once

// Platform family: owned strings and lists, archives, package blocks, the profile store,
// configuration globals, string resources, message boxes, result texts, byte streams and the
// AMR codec.
#include "handset/platform/AmrNBCodec.h"
#include "handset/platform/Archive.h"
#include "handset/platform/BmpWrp.h"
#include "handset/platform/Config.h"
#include "handset/platform/GsmCodec.h"
#include "handset/platform/Console.h"
#include "handset/platform/MessageBox.h"
#include "handset/platform/PackageBlk.h"
#include "handset/platform/RegSDK.h"
#include "handset/platform/Resources.h"
#include "handset/platform/Results.h"
#include "handset/platform/Streams.h"
#include "handset/platform/Strings.h"
#include "handset/platform/WaveFormat.h"
