#include <ctime>

#include "handset/pim/CalendarInfo.h"
#include "platform/LocalTime.h"

namespace {

// February always has 29 days here: the phone stores 29 February in any year.
constexpr int kMonthDays[12] = {31, 29, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};

int Order(int32_t a, int32_t b) {
  return a < b ? -1 : a > b ? 1 : 0;
}

}  // namespace

ME_CAL_DATE::ME_CAL_DATE(time_t t) {
  Reset();
  FromTimeT(t);
}

time_t ME_CAL_DATE::ToTimeT() const {
  std::tm tm{};
  tm.tm_year = nYear - 1900;
  tm.tm_mon = nMonth - 1;
  tm.tm_mday = nDay;
  tm.tm_hour = nHour;
  tm.tm_min = nMinute;
  tm.tm_sec = nSecond;
  tm.tm_isdst = 0;  // standard time, matching FromTimeT
  return std::mktime(&tm);
}

int ME_CAL_DATE::FromTimeT(time_t t) {
  std::tm tm{};
  if (!hs::os::LocalStandardTime(t, &tm)) return 0;
  if (tm.tm_year > INT32_MAX - 1900) return 0;
  nYear = tm.tm_year + 1900;
  nMonth = tm.tm_mon + 1;
  nDay = tm.tm_mday;
  nHour = tm.tm_hour;
  nMinute = tm.tm_min;
  nSecond = tm.tm_sec;
  return 1;
}

int ME_CAL_DATE::IsValid() const {
  if (nYear <= 0 || nYear >= 3000) return 0;
  if (nMonth < 1 || nMonth > 12) return 0;
  if (nDay < 1 || nDay > kMonthDays[nMonth - 1]) return 0;
  if (nHour < 0 || nHour > 23 || nMinute < 0 || nMinute > 59 || nSecond < 0 || nSecond > 59)
    return 0;
  return 1;
}

int ME_CAL_DATE::Compare(const ME_CAL_DATE& o) const {
  if (int c = Order(nYear, o.nYear)) return c;
  if (int c = Order(nMonth, o.nMonth)) return c;
  if (int c = Order(nDay, o.nDay)) return c;
  if (int c = Order(nHour, o.nHour)) return c;
  if (int c = Order(nMinute, o.nMinute)) return c;
  return Order(nSecond, o.nSecond);
}
