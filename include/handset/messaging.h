#pragma once

// Messaging family: stored messages and MMS records.
#include "handset/messaging/SmAssemble.h"
#include "handset/messaging/SmContent.h"
#include "handset/messaging/SmContext.h"
#include "handset/messaging/SmPdu.h"
#include "handset/messaging/SmUserData.h"
