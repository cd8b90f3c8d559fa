// Counting (zintck2) and stepping (zintnx2) on an interval grid.
//
// Every interval turns a value into an integer index along its own unit:
// seconds, days, working days, tendays, semimonths, months (Gregorian or
// retail), or ISO weeks of a 52-week year. With f units to one interval and
// the grid offset by s units, the interval number of index i is
// floordiv(i + off, f), off = f - s (or 0 without a shift), so boundaries
// stand where i = s (mod f). Index 0 is 1960-01-01 or January 1960.
//
// Neither operation allocates, and neither walks further than a week.
#include <algorithm>
#include <cmath>
#include <cstdint>

#include "calendar/interval.hpp"
#include "calendar/zcust.hpp"
#include "calendar/zidate.hpp"
#include "host/hostdate.hpp"
#include "run/missing.hpp"

namespace qvt {
namespace {

using i64 = std::int64_t;

constexpr double kMaxValue = 1.3407807929942597e+152;  // largest |time value| counted
constexpr double kMaxStep = 9007199254740992.0;        // 2^53: largest |n| stepped
constexpr i64 kStepGuard = 9007199248151657;           // 2^53 less the last day
constexpr double kStepFuzz = 1e-12;                    // absorbs x.9999999999 from arithmetic
constexpr double kSecondsPerDay = 86400.0;
constexpr i64 kFirstDay = -138061;
constexpr i64 kLastDay = 6589335;

constexpr i64 floordiv(i64 a, i64 b) noexcept { return a / b - ((a % b != 0) && ((a < 0) != (b < 0))); }
constexpr i64 floormod(i64 a, i64 b) noexcept { return a - b * floordiv(a, b); }

constexpr bool inRange(double day) noexcept { return day >= kFirstDay && day <= kLastDay; }

struct Grid {
  i64 f = 1;    // units in one interval
  i64 s = 0;    // offset of the grid in units
  i64 off = 0;  // f - s when s isn't 0
};

constexpr i64 per(const INTERVAL& i) noexcept { return i.intper < 1 ? 1 : i.intper; }

// Unit count and offset of a code's grid; f = 0 for a code without one.
constexpr Grid gridOf(const INTERVAL& istr) noexcept {
  const i64 m = per(istr);
  const i64 sh = istr.shiftper;
  Grid g;
  switch (istr.intcode) {
    case kIntSecond: g = {m, sh}; break;
    case kIntMinute: g = {60 * m, 60 * sh}; break;
    case kIntHour: g = {3600 * m, 3600 * sh}; break;
    case kIntDay: case kIntWeekday: case kIntTenday: case kIntSemimonth: case kIntMonth:
    case kIntR445Mon: case kIntR454Mon: case kIntR544Mon:
      g = {m, sh};
      break;
    // Day 2 (1960-01-03) is a Sunday and day 3 a Monday: s = -5 and -4 put
    // the unshifted boundaries there.
    case kIntWeek: g = {7 * m, sh - 5}; break;
    case kIntWeekV: g = {7 * m, sh - 4}; break;
    case kIntQtr: case kIntR445Qtr: case kIntR454Qtr: case kIntR544Qtr: g = {3 * m, sh}; break;
    case kIntSemiyear: g = {6 * m, sh}; break;
    case kIntYear: case kIntR445Yr: case kIntR454Yr: case kIntR544Yr: g = {12 * m, sh}; break;
    case kIntYearV: g = {52 * m, sh}; break;
    default: g = {0, 0}; break;
  }
  g.off = g.s != 0 ? g.f - g.s : 0;
  return g;
}

// The retail pattern of a code (445, 454, 544), or 0 for the Gregorian calendar.
constexpr int calendarOf(int code) noexcept {
  switch (code) {
    case kIntR445Mon: case kIntR445Qtr: case kIntR445Yr: return 445;
    case kIntR454Mon: case kIntR454Qtr: case kIntR454Yr: return 454;
    case kIntR544Mon: case kIntR544Qtr: case kIntR544Yr: return 544;
    default: return 0;
  }
}

// The working week of a WEEKDAY interval, with the cumulative count of
// working days over the days that follow a Friday (Saturday first). The
// weekend array decides; nweekday is derived from it, so a record whose two
// fields disagree can't walk off the week.
struct WorkWeek {
  bool work[7] = {};  // by the Sunday-first index
  int nweekday = 0;
  int cum[7] = {};    // cum[r]: working days among the r days after a Friday

  explicit WorkWeek(const INTERVAL& istr) noexcept {
    for (int i = 0; i < 7; ++i) {
      work[i] = istr.weekend[i] == 0;
      nweekday += work[i] ? 1 : 0;
    }
    for (int r = 1; r < 7; ++r) cum[r] = cum[r - 1] + (work[(r + 5) % 7] ? 1 : 0);
  }
  bool isWork(i64 day) const noexcept { return work[floormod(day + 5, 7)]; }
  i64 backToWork(i64 day) const noexcept {
    while (!isWork(day)) --day;
    return day;
  }
  // Working days up to and including day; day 0 is a Friday, so the days
  // of week block q are 7q + 1 (Saturday) to 7q + 7 (Friday).
  i64 index(i64 day) const noexcept {
    day = backToWork(day);
    return nweekday * floordiv(day, 7) + cum[floormod(day, 7)];
  }
  // From a working day, k >= 0 working days on or back.
  i64 forward(i64 day, i64 k) const noexcept {
    day += 7 * (k / nweekday);
    for (k %= nweekday; k > 0; --k)
      do ++day; while (!isWork(day));
    return day;
  }
  i64 back(i64 day, i64 k) const noexcept {
    day -= 7 * (k / nweekday);
    for (k %= nweekday; k > 0; --k)
      do --day; while (!isWork(day));
    return day;
  }
};

// Unit index of a day on a date-based grid; false when the calendar can't
// convert the day or the code has no index.
bool dateIndex(const INTERVAL& istr, i64 day, i64* out) noexcept {
  const int code = istr.intcode;
  switch (code) {
    case kIntDay: case kIntWeek: case kIntWeekV:
      *out = day;
      return true;
    case kIntWeekday: {
      const WorkWeek ww(istr);
      if (ww.nweekday == 0) return false;
      *out = ww.index(day);
      return true;
    }
    case kIntYearV: {
      double y = 0, w = 0, d = 0;
      const tchar v = 'V';
      zidywdd(static_cast<double>(day), &v, 1, &y, &w, &d);
      if (y < 0) return false;
      // ISO week 53 shares the index of week 52.
      *out = (std::min<i64>(static_cast<i64>(w), 52) - 1) + 52 * (static_cast<i64>(y) - 1960);
      return true;
    }
    case kIntTenday: case kIntSemimonth: case kIntMonth: case kIntR445Mon: case kIntR454Mon:
    case kIntR544Mon: case kIntQtr: case kIntR445Qtr: case kIntR454Qtr: case kIntR544Qtr:
    case kIntSemiyear: case kIntYear: case kIntR445Yr: case kIntR454Yr: case kIntR544Yr: {
      int m = 0, d = 0, y = 0;
      if (zidmdydf(&m, &d, &y, static_cast<double>(day), calendarOf(code)) != 0) return false;
      const i64 months = (m - 1) + 12 * (static_cast<i64>(y) - 1960);
      if (code == kIntTenday) *out = 3 * months + (d > 10) + (d > 20);
      else if (code == kIntSemimonth) *out = 2 * months + (d > 15);
      else *out = months;
      return true;
    }
    default:
      return false;
  }
}

// True when a missing value may travel to the custom path: .M and .I.
bool customPassThrough(double x) noexcept {
  const char c = missCode(x);
  return c == 'M' || c == 'I';
}

// ---------------------------------------------------------------------------
// Stepping on day-based grids: DAY, WEEK, WEEKV, WEEKDAY.
double daybase(const INTERVAL& istr, i64 x, i64 n) noexcept {
  const Grid g = gridOf(istr);
  if (istr.intcode == kIntWeekday) {
    const WorkWeek ww(istr);
    if (ww.nweekday == 0) return kMissing;
    const i64 f = g.f;
    if (n != 0 && kStepGuard / (n < 0 ? -n : n) < f) return kMissing;
    x = ww.backToWork(x);
    if (f >= 2) {
      n *= f;
      // Back to the first working day of the interval that holds x.
      x = ww.back(x, floormod(ww.index(x) + g.off, f));
    }
    x += 7 * floordiv(n, ww.nweekday);
    return static_cast<double>(ww.forward(x, floormod(n, ww.nweekday)));
  }
  if (g.f == 0) return kMissing;
  if (n != 0 && kStepGuard / (n < 0 ? -n : n) < g.f) return kMissing;
  if (g.f == 1) return static_cast<double>(x + n);
  return static_cast<double>((floordiv(x + g.off, g.f) + n) * g.f - g.off);
}

// Stepping on month-based grids: TENDAY, SEMIMONTH, MONTH, QTR, SEMIYEAR,
// YEAR and the retail months, quarters and years.
double yearbase(const INTERVAL& istr, i64 x, i64 n) noexcept {
  const int code = istr.intcode;
  const Grid g = gridOf(istr);
  i64 i = 0;
  if (g.f == 0 || !dateIndex(istr, x, &i)) return kMissing;
  const i64 longest = code == kIntTenday ? 11 : code == kIntSemimonth ? 16 : 31;
  if (n != 0 && kStepGuard / (n < 0 ? -n : n) < longest * g.f) return kMissing;
  const i64 r = g.f == 1 ? i + n : g.f * (floordiv(i + g.off, g.f) + n) - g.off;

  const i64 k = code == kIntTenday ? 36 : code == kIntSemimonth ? 24 : 12;
  const i64 y = floordiv(r, k) + 1960;
  // Years beyond these can't hold an in-range date; keep them out of int.
  if (y < 1581 || y > 20001) return kMissing;
  int m = 0, d = 1;
  if (code == kIntTenday) {
    m = static_cast<int>(floormod(r, 36) / 3) + 1;
    d = 1 + 10 * static_cast<int>(floormod(r, 3));
  } else if (code == kIntSemimonth) {
    m = static_cast<int>(floormod(r, 24) / 2) + 1;
    d = 1 + 15 * static_cast<int>(floormod(r, 2));
  } else {
    m = static_cast<int>(floormod(r, 12)) + 1;
  }
  if (const int fmt = calendarOf(code); fmt != 0) {
    // A retail month starts on the Monday of its first ISO week.
    return ziddywd(static_cast<int>(y), retailTable(fmt)[m - 1] + 1, 1);
  }
  return hostMdyToDate(m, d, static_cast<int>(y));
}

// Stepping on ISO years (YEARV): anchored at week 1 of 1960, a shift moves
// the start of the year by weeks.
double isobase(const INTERVAL& istr, i64 x, i64 n) noexcept {
  double year = 0, week = 0, day = 0;
  const tchar v = 'V';
  zidywdd(static_cast<double>(x), &v, 1, &year, &week, &day);
  if (year < 0) return kMissing;
  const i64 w = static_cast<i64>(std::floor(week + kStepFuzz));
  const i64 f = per(istr);
  const i64 sh = istr.shiftper < 0 ? 0 : istr.shiftper;
  const i64 swks = sh % 52 + 1;
  const i64 syrs = sh / 52;
  const i64 yr = static_cast<i64>(year);
  i64 y = yr - floormod(yr - 1960, f) + syrs;
  if (y > yr || (y == yr && w < swks)) y -= f;
  // n * f can exceed 64 bits; as a double it is exact wherever the year
  // could still be in range.
  const double target = static_cast<double>(y) + static_cast<double>(n) * static_cast<double>(f);
  if (std::fabs(target) > 1e6) return kMissing;
  return ziddywd(static_cast<int>(target), static_cast<int>(swks), 1);
}

double datenx(const INTERVAL& istr, double x, i64 n) noexcept {
  const bool datetime = istr.units == 's';
  if (datetime) x = std::floor(x / kSecondsPerDay);
  else if (istr.units != 'd') return kMissing;
  if (!inRange(x)) return kMissing;
  const auto day = static_cast<i64>(x);
  double r = kMissing;
  if (istr.intcode == kIntYearV) r = isobase(istr, day, n);
  else if (istr.intcode <= kIntWeekV) r = daybase(istr, day, n);
  else r = yearbase(istr, day, n);
  if (wzmis(r) || !inRange(r)) return kMissing;
  return datetime ? r * kSecondsPerDay : r;
}

}  // namespace

double zintck2(const INTERVAL& istr, double x1, double x2) noexcept {
  const int code = istr.intcode;
  if (std::isnan(x1) && !wzmis(x1)) return kMissing;
  if (std::isnan(x2) && !wzmis(x2)) return kMissing;
  if (wzmis(x1) || wzmis(x2)) {
    if (code == kIntCustom && (!wzmis(x1) || customPassThrough(x1)) &&
        (!wzmis(x2) || customPassThrough(x2)))
      return customINTCK(zintwiden(istr), wzmis(x1) ? x1 : std::floor(x1),
                         wzmis(x2) ? x2 : std::floor(x2));
    return kMissing;
  }
  if (std::fabs(x1) > kMaxValue || std::fabs(x2) > kMaxValue) return kMissing;
  x1 = std::floor(x1);
  x2 = std::floor(x2);

  if (code == kIntNone) return x2 - x1;
  if (code == kIntObs) {
    if (istr.units != 'o') return kMissing;
    const auto m = static_cast<double>(per(istr));
    return std::floor(x2 / m) - std::floor(x1 / m);
  }
  if (code == kIntCustom) return customINTCK(zintwiden(istr), x1, x2);

  if (code > 24) {
    if (istr.units == 's') {
      x1 = std::floor(x1 / kSecondsPerDay);
      x2 = std::floor(x2 / kSecondsPerDay);
    } else if (istr.units != 'd') {
      return kMissing;
    }
    if (!inRange(x1) || !inRange(x2)) return kMissing;
    const Grid g = gridOf(istr);
    i64 i1 = 0, i2 = 0;
    if (g.f == 0 || !dateIndex(istr, static_cast<i64>(x1), &i1) ||
        !dateIndex(istr, static_cast<i64>(x2), &i2))
      return kMissing;
    return static_cast<double>(floordiv(i2 + g.off, g.f) - floordiv(i1 + g.off, g.f));
  }

  if (code == kIntSecond || code == kIntMinute || code == kIntHour) {
    if (istr.units == 'd') {
      x1 *= kSecondsPerDay;
      x2 *= kSecondsPerDay;
    } else if (istr.units != 's') {
      return kMissing;
    }
    const Grid g = gridOf(istr);
    if (g.f == 1) return x2 - x1;
    const auto f = static_cast<double>(g.f);
    const auto off = static_cast<double>(g.off);
    return std::floor((x2 + off) / f) - std::floor((x1 + off) / f);
  }
  return kMissing;  // a code that parsing never produces
}

double zintnx2(const INTERVAL& istr, double x, double n) noexcept {
  const int code = istr.intcode;
  if (wzmis(n) || std::isnan(n) || std::fabs(n) > kMaxStep) return kMissing;
  if (std::isnan(x) && !wzmis(x)) return kMissing;
  if (wzmis(x)) {
    if (code == kIntCustom && customPassThrough(x))
      return customINTNX(zintwiden(istr), x, std::floor(n + kStepFuzz));
    return kMissing;
  }
  if (std::isinf(x)) return kMissing;
  x = std::floor(x + kStepFuzz);
  n = std::floor(n + kStepFuzz);

  if (code == kIntNone) return x + n;
  if (code == kIntObs) {
    if (istr.units != 'o') return kMissing;
    if (per(istr) == 1) return x + n;
    const auto m = static_cast<double>(per(istr));
    double r = std::floor(x / m) * m + m * n;
    if (istr.shiftper != 0) r += istr.shiftper;
    return r;
  }
  if (code == kIntCustom) return customINTNX(zintwiden(istr), x, n);
  if (code == kIntSecond || code == kIntMinute || code == kIntHour) {
    if (istr.units != 's') return kMissing;
    const Grid g = gridOf(istr);
    const auto f = static_cast<double>(g.f);
    const auto off = static_cast<double>(g.off);
    return f * (n + std::floor((x + off) / f)) - off;
  }
  if (code < 25 || code > 64) return kMissing;  // a code that parsing never produces
  return datenx(istr, x, static_cast<i64>(n));
}

}  // namespace qvt
