// Date operations of the calendar: week dates (ISO 8601 and a Sunday-based
// variant), the retail 4-4-5 / 4-5-4 / 5-4-4 calendars, and day-count
// conventions. Date values count days from 1960-01-01. Pure functions.
#pragma once

#include <span>

#include "run/strings.hpp"

namespace qvt {

// Retail month tables: for month m (index m - 1) the number of ISO weeks of
// the retail year that lie before it. A week 53 belongs to month 12.
inline constexpr int r445mon_index[12] = {0, 4, 8, 13, 17, 21, 26, 30, 34, 39, 43, 47};
inline constexpr int r454mon_index[12] = {0, 4, 9, 13, 17, 22, 26, 30, 35, 39, 43, 48};
inline constexpr int r544mon_index[12] = {0, 5, 9, 13, 18, 22, 26, 31, 35, 39, 44, 48};

// The table of a retail pattern (445, 454 or 544); empty for anything else.
constexpr std::span<const int> retailTable(int format) noexcept {
  switch (format) {
    case 445: return r445mon_index;
    case 454: return r454mon_index;
    case 544: return r544mon_index;
    default: return {};
  }
}

// Week-numbering year, week and day of a date by the convention in fmt[0]:
// 'U' (Sunday-first, week and day as doubles with the fraction kept), 'W'
// (Monday-first), 'V' (ISO 8601). All three results start at -1 and stay so
// for a date that can't be converted or an unknown convention. Always 0.
int zidywdd(double date, const tchar* fmt, int fmtl, double* year, double* week,
            double* day) noexcept;

// ISO week date (year, week, day 1 = Monday .. 7 = Sunday) to a date value.
// Week and day are not checked: a week beyond the year's last runs on.
// Missing for a year the calendar can't hold.
double ziddywd(int year, int week, int day) noexcept;

// Sunday-based week date (day 1 = Sunday) to a date value; the year starts
// on the Sunday on or before January 4. Missing for a day outside 1..7, a
// week outside 1..53, or a week 53 that the year doesn't have.
double ziddywds(int year, int week, int day) noexcept;

// Date to Sunday-based week date. leap_index 1 folds weeks 52 and 53 into
// week 1 of the next year, 52 folds week 53 into 52, anything else leaves
// them. Results stay -1 for a date that can't be converted. Always 0.
int zidywdds(double date, int leap_index, double* year, double* week, double* day) noexcept;

// Month, day and year of a date in the calendar `format`: 0 Gregorian, or
// the retail patterns 445, 454, 544 (year = ISO year, day counted from the
// retail month's first Monday). 0 on success, nonzero when the date can't be
// converted, -2 for an unknown format.
int zidmdydf(int* m, int* d, int* y, double date, int format) noexcept;

// Distance of two dates by a day-count convention: 1 30/360, 2 actual/actual,
// 3 actual/360, 4 actual/365. 0 with the results written where the pointers
// aren't null; 1 for an unknown convention or a date that can't be converted
// (nothing written).
int zdatdif(double sdate, double edate, int convent, long* days, double* years) noexcept;

// Days between two dates by the 30/360 rule.
long diff_30_360(int m1, int d1, int y1, int m2, int d2, int y2) noexcept;

// Actual days between two dates.
long diff_actual(int m1, int d1, int y1, int m2, int d2, int y2) noexcept;

// Actual/actual: days, and years with leap-year days counted in 366ths and
// the others in 365ths. The first date must not be later than the second.
void diff_actact(int m1, int d1, int y1, int m2, int d2, int y2, long* days,
                 double* years) noexcept;

// 1 for a Gregorian leap year, else 0.
int isLeapYear(int year) noexcept;

// Last day of a month (month 1..12).
int lastDay(int year, int month) noexcept;

// A day serial whose differences are day counts (not anchored to day 0).
long dateOffset(int mm, int dd, int yy) noexcept;

// Days from the Monday of ISO week 1 to a day, from its day of the year
// (from 0) and its day of the week (0 = Sunday); negative before that Monday.
int iso_week_days(int yday, int wday) noexcept;

}  // namespace qvt
