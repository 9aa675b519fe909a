#pragma once

// Messaging family: stored messages and MMS records.
#include "handset/messaging/CvMmsMessage.h"
#include "handset/messaging/MmFile.h"
#include "handset/messaging/MmsBody.h"
#include "handset/messaging/MmsHeaderField.h"
#include "handset/messaging/MmsMediaObj.h"
#include "handset/messaging/MmsMessage.h"
#include "handset/messaging/MmsMimeType.h"
#include "handset/messaging/MmsProject.h"
#include "handset/messaging/SmAssemble.h"
#include "handset/messaging/SmContent.h"
#include "handset/messaging/SmContext.h"
#include "handset/messaging/SmPdu.h"
#include "handset/messaging/SmUserData.h"
