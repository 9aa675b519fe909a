#pragma once

// Personal-data family: vObject text, bookmarks, contacts and calendar entries.
#include "handset/pim/CalendarInfo.h"
#include "handset/pim/ContactInfo.h"
#include "handset/pim/PersonalInfo.h"
