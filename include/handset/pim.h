#pragma once

// Personal-data family: vObject text, bookmarks, contacts and calendar entries.
