#pragma once

#include <ctime>

// Local-time conversions of the run-time library, without daylight saving.
namespace hs {
namespace os {

/// Converts `t` to local standard time: the date as the run-time library gives it with its
/// daylight flag switched off, so no daylight-saving hour is ever added. False when the
/// conversion fails (`out` is then unspecified).
bool LocalStandardTime(time_t t, std::tm* out);

/// Sets the process time zone (the TZ variable) and makes the run-time library re-read it;
/// null restores the system zone.
void SetTimeZone(const char* tz);

}  // namespace os
}  // namespace hs
