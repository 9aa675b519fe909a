#include "platform/LocalTime.h"

#include <cstdint>
#include <cstdlib>

#include "platform/Env.h"

namespace {

#if !defined(_WIN32)
// Days since 1970-01-01 of a proleptic Gregorian date, and back (exact for any int year).
int64_t DaysFromCivil(int64_t y, int64_t m, int64_t d) {
  y -= m <= 2;
  const int64_t era = (y >= 0 ? y : y - 399) / 400;
  const int64_t yoe = y - era * 400;
  const int64_t doy = (153 * (m + (m > 2 ? -3 : 9)) + 2) / 5 + d - 1;
  const int64_t doe = yoe * 365 + yoe / 4 - yoe / 100 + doy;
  return era * 146097 + doe - 719468;
}

void CivilFromDays(int64_t z, int64_t* y, int* m, int* d) {
  z += 719468;
  const int64_t era = (z >= 0 ? z : z - 146096) / 146097;
  const int64_t doe = z - era * 146097;
  const int64_t yoe = (doe - doe / 1460 + doe / 36524 - doe / 146096) / 365;
  const int64_t doy = doe - (365 * yoe + yoe / 4 - yoe / 100);
  const int64_t mp = (5 * doy + 2) / 153;
  *d = static_cast<int>(doy - (153 * mp + 2) / 5 + 1);
  *m = static_cast<int>(mp < 10 ? mp + 3 : mp - 9);
  *y = yoe + era * 400 + (*m <= 2);
}

// Moves the wall-clock fields of `tm` back by `seconds`, as plain calendar arithmetic.
bool ShiftFields(std::tm* tm, int64_t seconds) {
  int64_t days = DaysFromCivil(int64_t{tm->tm_year} + 1900, tm->tm_mon + 1, tm->tm_mday);
  int64_t secs = days * 86400 + tm->tm_hour * 3600 + tm->tm_min * 60 + tm->tm_sec - seconds;
  int64_t day = secs >= 0 ? secs / 86400 : -((-secs + 86399) / 86400);
  int64_t rest = secs - day * 86400;
  int64_t year = 0;
  int month = 0, mday = 0;
  CivilFromDays(day, &year, &month, &mday);
  if (year - 1900 < INT32_MIN || year - 1900 > INT32_MAX) return false;
  tm->tm_year = static_cast<int>(year - 1900);
  tm->tm_mon = month - 1;
  tm->tm_mday = mday;
  tm->tm_hour = static_cast<int>(rest / 3600);
  tm->tm_min = static_cast<int>(rest / 60 % 60);
  tm->tm_sec = static_cast<int>(rest % 60);
  tm->tm_wday = static_cast<int>(((day % 7) + 11) % 7);  // 1970-01-01 was a Thursday
  tm->tm_isdst = 0;
  return true;
}
#endif

}  // namespace

namespace hs {
namespace os {

#if defined(_WIN32)

bool LocalStandardTime(time_t t, std::tm* out) {
  // The run-time library applies daylight saving only while its global flag is set.
  int saved = 0;
  _get_daylight(&saved);
  _daylight = 0;
  bool ok = localtime_s(out, &t) == 0;
  _daylight = saved;
  return ok;
}

void SetTimeZone(const char* tz) {
  SetEnv("TZ", tz);
  _tzset();
}

#else

bool LocalStandardTime(time_t t, std::tm* out) {
  // The C library here takes daylight saving from the zone data, not from a global flag, so
  // the hour it adds is measured (the same wall clock read as standard time) and taken back.
  if (!localtime_r(&t, out)) return false;
  if (out->tm_isdst <= 0) return true;
  std::tm standard = *out;
  standard.tm_isdst = 0;
  time_t asStandard = std::mktime(&standard);
  if (asStandard == static_cast<time_t>(-1)) return false;
  return ShiftFields(out, static_cast<int64_t>(asStandard) - static_cast<int64_t>(t));
}

void SetTimeZone(const char* tz) {
  SetEnv("TZ", tz);
  tzset();
}

#endif

}  // namespace os
}  // namespace hs
