#pragma once

// Personal-data family: vObject text, bookmarks, contacts and calendar entries.
#include "handset/pim/BkmkFuncs.h"
#include "handset/pim/BkmkObj.h"
#include "handset/pim/CalendarInfo.h"
#include "handset/pim/ContactInfo.h"
#include "handset/pim/IEVbkm.h"
#include "handset/pim/MediaDir.h"
#include "handset/pim/MediaFile.h"
#include "handset/pim/OemPanaVbkm.h"
#include "handset/pim/PersonalInfo.h"
#include "handset/pim/QP.h"
#include "handset/pim/VObjLite.h"
#include "handset/pim/Vbkm.h"
#include "handset/pim/VbkmDialect.h"
