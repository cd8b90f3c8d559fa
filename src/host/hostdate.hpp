// Gregorian date primitives of the host. Date values count days from
// 1960-01-01 (day 0); datetime values count seconds from 1960-01-01 00:00:00.
// Pure functions: no state, no I/O.
#pragma once

namespace qvt {

// Date value of a Gregorian day; the missing value when the month or day is
// out of range or the result lies outside the calendar's range (1582-01-01
// to the day 6589335).
double hostMdyToDate(int month, int day, int year) noexcept;

// Gregorian day of a date value; 0 on success, nonzero (and the outputs left
// alone) for a missing, non-finite or out-of-range date. A fraction of a day
// is dropped toward minus infinity.
int hostDateToMdy(double date, int* month, int* day, int* year) noexcept;

// hostMdyToDate with double arguments; missing when any is missing or not whole.
double hostMdy(double month, double day, double year) noexcept;

// Gregorian year of a date value; missing when it can't be converted.
double hostYear(double date) noexcept;

// Day of the week, 1 for Sunday up to 7 for Saturday; missing when it can't be converted.
double hostWeekday(double date) noexcept;

// Seconds since the last midnight of a datetime value; missing for a missing value.
double hostTimePart(double datetime) noexcept;

// Range of date values the calendar works on: 1582-01-01 (day -138061) to
// day 6589335 (20000-12-26 under the proleptic Gregorian rule).
inline constexpr double kFirstDate = -138061.0;
inline constexpr double kLastDate = 6589335.0;

}  // namespace qvt
