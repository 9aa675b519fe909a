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
