#pragma once

// Messaging family: stored messages and MMS records.
#include "handset/messaging/SmContent.h"
