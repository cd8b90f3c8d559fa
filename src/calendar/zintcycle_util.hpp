// Small helpers shared by the seasonal-cycle sources: parsing a name into a
// record with given units, days and datetimes, and Sunday-based week years.
// Internal to src/calendar.
#pragma once

#include <cmath>
#include <cstdint>
#include <string_view>

#include "calendar/interval.hpp"
#include "calendar/zidate.hpp"
#include "host/hostdate.hpp"
#include "run/missing.hpp"

namespace qvt::cycle {

inline constexpr double kSecondsPerDay = 86400.0;

constexpr long long floorMod(long long v, long long m) noexcept {
  const long long r = v % m;
  return r < 0 ? r + m : r;
}

// Parses a name into *out. With units 's' and a date-based code the "DT"
// form is parsed, so that the record is a datetime grid like its source.
// 0, or the parser's result.
inline int parseWithUnits(std::string_view name, char units, INTERVAL* out) noexcept {
  char buf[kIntTokenSize + 2];
  std::size_t n = 0;
  INTERVAL probe;
  if (name.size() > static_cast<std::size_t>(kIntTokenMax)) return 101;
  const int rc = zintstr(name.data(), static_cast<int>(name.size()), &probe);
  if (rc != 0) return rc;
  if (units == 's' && probe.units != 's' && probe.intcode > kIntHour) {
    buf[n++] = 'D';
    buf[n++] = 'T';
  }
  if (n + name.size() > static_cast<std::size_t>(kIntTokenMax)) return 101;
  for (char c : name) buf[n++] = c;
  return zintstr(buf, static_cast<int>(n), out);
}

// The record of a code with multiplier 1 and no shift, on the grid units of
// `like` (a datetime grid gets the "DT" form).
inline int plainOf(int code, char units, INTERVAL* out) noexcept {
  std::string_view name;
  switch (code) {
    case kIntWeek: name = "WEEK"; break;
    case kIntWeekV: name = "WEEKV"; break;
    case kIntYear: name = "YEAR"; break;
    case kIntYearV: name = "YEARV"; break;
    case kIntDay: name = "DAY"; break;
    default: return 1;
  }
  return parseWithUnits(name, units, out);
}

// A grid value as a day, and back: datetime grids count seconds.
inline double toDay(char units, double x) noexcept {
  if (wzmis(x)) return x;
  return units == 's' ? std::floor(x / kSecondsPerDay) : x;
}
inline double fromDay(char units, double d) noexcept {
  if (wzmis(d)) return d;
  return units == 's' ? d * kSecondsPerDay : d;
}

// A day computed here from week dates stays inside the calendar's range, as
// the results of counting and stepping do; anything beyond it is missing.
inline double inCalendar(double day) noexcept {
  if (wzmis(day) || !(day >= kFirstDate && day <= kLastDate)) return kMissing;
  return day;
}

// Weeks of a Sunday-based week year (52 or 53), or 0 where it can't be said.
inline int weeksInSundayYear(int year) noexcept {
  const double a = ziddywds(year, 1, 1);
  const double b = ziddywds(year + 1, 1, 1);
  if (wzmis(a) || wzmis(b)) return 0;
  return static_cast<int>((b - a) / 7.0);
}

// Writes the canonical text of a record into its own token. 0, or nonzero
// when the text doesn't fit a token.
inline int retoken(INTERVAL* x) noexcept {
  char buf[64];
  int len = static_cast<int>(sizeof buf);
  if (zinti2s(buf, &len, x) != 0 || len > kIntTokenMax) return 1;
  for (int i = 0; i < len; ++i) x->token[i] = buf[i];
  for (int i = len; i < kIntTokenSize; ++i) x->token[i] = 0;
  x->tokenlen = static_cast<short>(len);
  return 0;
}

inline bool isWeekly(int code) noexcept { return code == kIntWeek || code == kIntWeekV; }

// A whole count held by a double, as an int; false when missing or too large.
inline bool asInt(double v, int* out) noexcept {
  if (wzmis(v) || !(std::fabs(v) < 2147483647.0)) return false;
  *out = static_cast<int>(v);
  return true;
}

}  // namespace qvt::cycle
