#include "calendar/zidate.hpp"

#include <cmath>
#include <cstdint>

#include "host/hostdate.hpp"
#include "run/missing.hpp"

namespace qvt {
namespace {

using i64 = std::int64_t;

constexpr i64 floordiv(i64 a, i64 b) noexcept { return a / b - ((a % b != 0) && ((a < 0) != (b < 0))); }
constexpr i64 floormod(i64 a, i64 b) noexcept { return a - b * floordiv(a, b); }

// Days from 1960-01-01 to a proleptic Gregorian day, for any year the
// calendar could ask about (H. Hinnant, "chrono-Compatible Low-Level Date
// Algorithms"). The host's conversion stops at 1582-01-01, but ISO week
// dates of early January 1582 need January 4 of 1581.
constexpr i64 civilDays(i64 y, int m, int d) noexcept {
  y -= m <= 2;
  const i64 era = floordiv(y, 400);
  const i64 yoe = y - era * 400;
  const i64 mp = m > 2 ? m - 3 : m + 9;
  const i64 doy = (153 * mp + 2) / 5 + d - 1;
  const i64 doe = yoe * 365 + yoe / 4 - yoe / 100 + doy;
  return era * 146097 + doe - 719468 + 3653;
}
static_assert(civilDays(1960, 1, 1) == 0);
static_assert(civilDays(1582, 1, 1) == -138061);

// Years whose week dates are computed at all; far beyond the calendar's
// range on both sides, near enough that nothing overflows.
constexpr int kYearLimit = 1000000;

// ISO day of the week, 1 Monday .. 7 Sunday; day 0 was a Friday.
constexpr int isoWeekday(i64 day) noexcept {
  const auto w = static_cast<int>(floormod(day + 4, 7));  // 0 Monday
  return w + 1;
}
static_assert(isoWeekday(0) == 5);

// Start of the Sunday-first week that holds a day.
constexpr i64 sundayOnOrBefore(i64 day) noexcept { return day - floormod(day + 5, 7); }

bool isLastOfFebruary(int m, int d, int y) noexcept { return m == 2 && d == lastDay(y, 2); }

}  // namespace

int isLeapYear(int year) noexcept {
  return (year % 4 == 0 && (year % 100 != 0 || year % 400 == 0)) ? 1 : 0;
}

int lastDay(int year, int month) noexcept {
  switch (month) {
    case 4: case 6: case 9: case 11: return 30;
    case 2: return isLeapYear(year) ? 29 : 28;
    default: return 31;
  }
}

int iso_week_days(int yday, int wday) noexcept {
  // The Monday of ISO week 1 is the Monday on or before January 4; 382 keeps
  // the dividend positive for the day-of-year values in use (down to -366).
  return yday - static_cast<int>(floormod(yday - wday + 382, 7)) + 3;
}

long dateOffset(int mm, int dd, int yy) noexcept {
  i64 yp = yy;
  i64 t = 0;
  if (mm < 3) {
    yp = yy - 1;
  } else {
    t = (4 * mm + 23) / 10;  // floor(0.4 * mm + 2.3); 4mm + 23 is odd, so no tie
  }
  return static_cast<long>(365 * static_cast<i64>(yy) + 31 * (mm - 1) + dd + floordiv(yp, 4) -
                           floordiv(yp, 100) + floordiv(yp, 400) - t);
}

long diff_actual(int m1, int d1, int y1, int m2, int d2, int y2) noexcept {
  return dateOffset(m2, d2, y2) - dateOffset(m1, d1, y1);
}

long diff_30_360(int m1, int d1, int y1, int m2, int d2, int y2) noexcept {
  const bool feb1 = isLastOfFebruary(m1, d1, y1);
  const bool feb2 = isLastOfFebruary(m2, d2, y2);
  if (feb1 && feb2) {
    d1 = 30;
    d2 = 30;
  } else {
    if (feb1) d1 = 30;
    if (d2 == 31 && (d1 == 30 || d1 == 31)) d2 = 30;
  }
  if (d1 == 31) d1 = 30;
  return 360L * (y2 - y1) + 30L * (m2 - m1) + (d2 - d1);
}

void diff_actact(int m1, int d1, int y1, int m2, int d2, int y2, long* days,
                 double* years) noexcept {
  long n365 = 0, n366 = 0;
  auto add = [&](int year, long n) { (isLeapYear(year) ? n366 : n365) += n; };
  if (y1 == y2) {
    add(y1, diff_actual(m1, d1, y1, m2, d2, y2));
  } else {
    add(y1, diff_actual(m1, d1, y1, 1, 1, y1 + 1));
    for (int y = y1 + 1; y < y2; ++y) add(y, isLeapYear(y) ? 366 : 365);
    add(y2, diff_actual(1, 1, y2, m2, d2, y2));
  }
  if (days) *days = n365 + n366;
  if (years) *years = static_cast<double>(n365) / 365.0 + static_cast<double>(n366) / 366.0;
}

int zdatdif(double sdate, double edate, int convent, long* days, double* years) noexcept {
  if (convent < 1 || convent > 4) return 1;
  int m1 = 0, d1 = 0, y1 = 0, m2 = 0, d2 = 0, y2 = 0;
  if (hostDateToMdy(sdate, &m1, &d1, &y1) != 0 || hostDateToMdy(edate, &m2, &d2, &y2) != 0) return 1;
  long n = 0;
  double yrs = 0.0;
  switch (convent) {
    case 1:
      n = diff_30_360(m1, d1, y1, m2, d2, y2);
      yrs = static_cast<double>(n) / 360.0;
      break;
    case 2:
      if (std::floor(sdate) > std::floor(edate)) {
        diff_actact(m2, d2, y2, m1, d1, y1, &n, &yrs);
        n = -n;
        yrs = -yrs;
      } else if (std::floor(sdate) < std::floor(edate)) {
        diff_actact(m1, d1, y1, m2, d2, y2, &n, &yrs);
      }
      break;
    case 3:
      n = diff_actual(m1, d1, y1, m2, d2, y2);
      yrs = static_cast<double>(n) / 360.0;
      break;
    default:
      n = diff_actual(m1, d1, y1, m2, d2, y2);
      yrs = static_cast<double>(n) / 365.0;
      break;
  }
  if (days) *days = n;
  if (years) *years = yrs;
  return 0;
}

int zidywdd(double date, const tchar* fmt, int /*fmtl*/, double* year, double* week,
            double* day) noexcept {
  double ry = -1, rw = -1, rd = -1;
  int m = 0, d = 0, y = 0;
  if (fmt && hostDateToMdy(date, &m, &d, &y) == 0) {
    const i64 x = static_cast<i64>(std::floor(date));
    const auto yday = static_cast<int>(x - civilDays(y, 1, 1));
    const int w = static_cast<int>(floormod(x + 5, 7)) + 1;  // hostWeekday: 1 Sunday .. 7 Saturday
    const int isoDay = w == 1 ? 7 : w - 1;
    switch (fmt[0]) {
      case 'U': case 'u':
        ry = y;
        rw = (yday - w + 8) / 7.0;
        rd = w;
        break;
      case 'W': case 'w':
        ry = y;
        rw = (yday - ((w + 5) % 7) + 7) / 7.0;
        rd = isoDay;
        break;
      case 'V': case 'v': {
        int dd = iso_week_days(yday, w - 1);
        int yy = y;
        if (dd < 0) {
          yy = y - 1;
          dd = iso_week_days(yday + 365 + isLeapYear(yy), w - 1);
        } else {
          const int e = iso_week_days(yday - 365 - isLeapYear(y), w - 1);
          if (e >= 0) {
            yy = y + 1;
            dd = e;
          }
        }
        ry = yy;
        rw = dd / 7 + 1;
        rd = isoDay;
        break;
      }
      default:
        break;
    }
  }
  if (year) *year = ry;
  if (week) *week = rw;
  if (day) *day = rd;
  return 0;
}

double ziddywd(int year, int week, int day) noexcept {
  if (year < -kYearLimit || year > kYearLimit) return kMissing;
  const i64 j = civilDays(year, 1, 4);
  // Monday on or before January 4, then whole weeks and days on from it.
  return static_cast<double>(j + 1 - isoWeekday(j) + 7 * (static_cast<i64>(week) - 1) +
                             (static_cast<i64>(day) - 1));
}

double ziddywds(int year, int week, int day) noexcept {
  if (day < 1 || day > 7 || week < 1 || week > 53) return kMissing;
  if (year < -kYearLimit || year >= kYearLimit) return kMissing;
  const i64 w0 = sundayOnOrBefore(civilDays(year, 1, 4));
  const i64 r = w0 + 7 * (week - 1) + (day - 1);
  // Only a year whose next start lies far enough away has a week 53; the
  // next year's first day itself is let through.
  if (week == 53 && r > sundayOnOrBefore(civilDays(static_cast<i64>(year) + 1, 1, 4))) return kMissing;
  return static_cast<double>(r);
}

int zidywdds(double date, int leap_index, double* year, double* week, double* day) noexcept {
  double ry = -1, rw = -1, rd = -1;
  int y = 0;
  if (hostDateToMdy(date, nullptr, nullptr, &y) == 0) {
    const double x = std::floor(date);
    double s = ziddywds(y, 1, 1);
    if (x < s) {
      --y;
      s = ziddywds(y, 1, 1);
    } else if (const double next = ziddywds(y + 1, 1, 1); next <= x) {
      ++y;
      s = next;
    }
    // s is a Sunday, so the WEEK boundaries from s to x are whole weeks.
    const i64 dx = static_cast<i64>(x - s);
    const i64 w = dx / 7 + 1;
    ry = y;
    rw = static_cast<double>(w);
    if (leap_index == 1) {
      if (w >= 52) {
        ry = y + 1;
        rw = 1;
      }
    } else if (leap_index == 52) {
      rw = static_cast<double>(w < 52 ? w : 52);
    }
    rd = static_cast<double>(dx % 7 + 1);
  }
  if (year) *year = ry;
  if (week) *week = rw;
  if (day) *day = rd;
  return 0;
}

int zidmdydf(int* m, int* d, int* y, double date, int format) noexcept {
  if (format == 0) return hostDateToMdy(date, m, d, y);
  const std::span<const int> table = retailTable(format);
  if (table.empty()) return -2;
  double iy = 0, iw = 0, id = 0;
  const tchar v = 'V';
  zidywdd(date, &v, 1, &iy, &iw, &id);
  if (iy < 0) return 1;
  const int week = static_cast<int>(iw);
  int month = 12;
  while (month > 1 && table[month - 1] >= week) --month;
  if (m) *m = month;
  if (d) *d = (week - table[month - 1] - 1) * 7 + static_cast<int>(id);
  if (y) *y = static_cast<int>(iy);
  return 0;
}

}  // namespace qvt
