#pragma once

#include <cstdio>

#include "handset/export.h"

/// True when `stream` is attached to a terminal (the CLI shows progress only then).
HANDSET_API bool HsStreamIsTerminal(std::FILE* stream);
