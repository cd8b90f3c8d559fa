
#include "calendar_fixture.hpp"

namespace qvt {
namespace {

using testing::iv;
using testing::ymd;

using testing::loadDateOracle;

struct Wd {
  double y = -9, w = -9, d = -9;
};

Wd weekDate(double x, char fmt) {
  Wd r;
  EXPECT_EQ(zidywdd(x, &fmt, 1, &r.y, &r.w, &r.d), 0);
  return r;
}

// ---------------------------------------------------------------------------
// Against Python's datetime (date_oracle.csv).

TEST(DateOracle, IsoWeekDateBothWays) {
  const auto rows = loadDateOracle();
  ASSERT_GT(rows.size(), 3000u);
  for (const auto& r : rows) {
    SCOPED_TRACE(::testing::Message() << r.y << '-' << r.m << '-' << r.d);
    const Wd v = weekDate(r.day, 'V');
    EXPECT_EQ(v.y, r.isoy);
    EXPECT_EQ(v.w, r.isow);
    EXPECT_EQ(v.d, r.isod);
    EXPECT_EQ(ziddywd(r.isoy, r.isow, r.isod), r.day);
  }
}

TEST(DateOracle, SundayAndMondayFirstWeekNumbers) {
  for (const auto& r : loadDateOracle()) {
    SCOPED_TRACE(::testing::Message() << r.y << '-' << r.m << '-' << r.d);
    // The week keeps its fraction; its whole part is strftime's %U / %W.
    const Wd u = weekDate(r.day, 'U');
    EXPECT_EQ(u.y, r.y);
    EXPECT_EQ(std::floor(u.w), r.wu);
    EXPECT_EQ(u.d, r.wday);
    const Wd w = weekDate(r.day, 'W');
    EXPECT_EQ(w.y, r.y);
    EXPECT_EQ(std::floor(w.w), r.ww);
    EXPECT_EQ(w.d, r.isod);
  }
}

TEST(DateOracle, GregorianAndActualDayCounts) {
  const auto rows = loadDateOracle();
  const auto& a = rows.front();
  for (const auto& r : rows) {
    int m = 0, d = 0, y = 0;
    ASSERT_EQ(zidmdydf(&m, &d, &y, r.day, 0), 0);
    EXPECT_EQ(y * 10000 + m * 100 + d, r.y * 10000 + r.m * 100 + r.d);
    EXPECT_EQ(static_cast<double>(diff_actual(a.m, a.d, a.y, r.m, r.d, r.y)), r.day - a.day);
    EXPECT_EQ(lastDay(r.y, r.m) >= r.d, true);
    long days = 0;
    double years = 0;
    ASSERT_EQ(zdatdif(a.day, r.day, 4, &days, &years), 0);
    EXPECT_EQ(static_cast<double>(days), r.day - a.day);
    EXPECT_DOUBLE_EQ(years, (r.day - a.day) / 365.0);
  }
}

// ---------------------------------------------------------------------------
// Week dates worked by hand.

TEST(IsoWeek, WeeksBeyondTheLastRunIntoTheNextYear) {
  // Year ends in both directions are rows of the datetime oracle above.
  EXPECT_EQ(ziddywd(2010, 53, 1), ymd(2011, 1, 3));
  EXPECT_EQ(ziddywd(2010, 1, 8), ymd(2010, 1, 11));
}

TEST(IsoWeek, UnconvertibleDatesLeaveMinusOne) {
  const double bad[] = {kMissing, skMissVal('I'), std::numeric_limits<double>::quiet_NaN(),
                        std::numeric_limits<double>::infinity(), -138062.0, 6589336.0};
  for (double x : bad)
    for (char f : {'V', 'U', 'W'}) {
      const Wd r = weekDate(x, f);
      EXPECT_EQ(r.y + r.w + r.d, -3.0) << f;
    }
  const Wd r = weekDate(100.0, 'Q');  // unknown convention
  EXPECT_EQ(r.y + r.w + r.d, -3.0);
  double y = 0;
  EXPECT_EQ(zidywdd(100.0, nullptr, 0, &y, nullptr, nullptr), 0);
  EXPECT_EQ(y, -1.0);
}

TEST(SundayWeek, FromWeekDate) {
  // 2004-01-04 is a Sunday, so 2004 starts on it; 2005 starts on 2005-01-02,
  // the Sunday before Tuesday 2005-01-04. Week 53 day 1 of 2004 is that very
  // day, which passes; its day 2 is 2005's.
  EXPECT_EQ(ziddywds(2004, 1, 1), ymd(2004, 1, 4));
  EXPECT_EQ(ziddywds(2004, 53, 1), ymd(2005, 1, 2));
  EXPECT_EQ(wzmis(ziddywds(2004, 53, 2)), 1);
  // 2003 starts 2002-12-29 and 2004 starts 2004-01-04: 53 weeks.
  EXPECT_EQ(ziddywds(2003, 53, 7), ymd(2004, 1, 3));
  EXPECT_EQ(ziddywds(2003, 1, 1), ymd(2002, 12, 29));
  const int bad[][3] = {{2003, 0, 1}, {2003, 54, 1}, {2003, 1, 0}, {2003, 1, 8}, {2003, -1, -1}};
  for (const auto& b : bad) EXPECT_EQ(wzmis(ziddywds(b[0], b[1], b[2])), 1) << b[1] << ' ' << b[2];
}

struct SundayCase {
  int y, m, d, leap;
  int ey, ew, ed;
};

TEST(SundayWeek, ToWeekDateAndTheFoldingOfLastWeeks) {
  const SundayCase cases[] = {
      // 2003-12-28: the Sunday that starts 2003's week 53.
      {2003, 12, 28, 53, 2003, 53, 1},
      {2003, 12, 28, 52, 2003, 52, 1},
      {2003, 12, 28, 1, 2004, 1, 1},
      // 2003-12-21 is in week 52: folded by 1, kept by 52 and 53.
      {2003, 12, 21, 1, 2004, 1, 1},
      {2003, 12, 21, 52, 2003, 52, 1},
      {2003, 12, 24, 53, 2003, 52, 4},
      // 2010-01-03, a Sunday, starts 2010 (Monday 2010-01-04 is January 4).
      {2010, 1, 3, 53, 2010, 1, 1},
      {2010, 1, 2, 53, 2009, 52, 7},
      // 2009-12-31, a Thursday: 361 days after 2009-01-04.
      {2009, 12, 31, 53, 2009, 52, 5},
      // Early January before the year's first Sunday belongs to the last year.
      {2005, 1, 1, 53, 2004, 52, 7},
  };
  for (const auto& c : cases) {
    double y = 0, w = 0, d = 0;
    EXPECT_EQ(zidywdds(ymd(c.y, c.m, c.d), c.leap, &y, &w, &d), 0);
    EXPECT_EQ(y * 1000 + w * 10 + d, c.ey * 1000 + c.ew * 10 + c.ed)
        << c.y << '-' << c.m << '-' << c.d << " leap " << c.leap;
  }
  double y = 0, w = 0, d = 0;
  zidywdds(kMissing, 53, &y, &w, &d);
  EXPECT_EQ(y + w + d, -3.0);
}

TEST(SundayWeek, DaysAreConsecutiveAcrossYears) {
  // Over a stretch of days, the Sunday-based week date moves one day at a
  // time; a new week starts on each Sunday, and a new year on week 1 day 1.
  double py = 0, pw = 0, pd = 0;
  zidywdds(ymd(1999, 12, 1), 53, &py, &pw, &pd);
  for (double x = ymd(1999, 12, 2); x < ymd(2012, 1, 31); ++x) {
    double y = 0, w = 0, d = 0;
    zidywdds(x, 53, &y, &w, &d);
    EXPECT_EQ(d, hostWeekday(x));
    if (pd < 7) {
      ASSERT_TRUE(y == py && w == pw && d == pd + 1) << x;
    } else if (y == py) {
      ASSERT_TRUE(w == pw + 1 && d == 1) << x;
    } else {
      ASSERT_TRUE(y == py + 1 && w == 1 && d == 1 && (pw == 52 || pw == 53)) << x;
    }
    py = y;
    pw = w;
    pd = d;
  }
}

// ---------------------------------------------------------------------------
// Retail calendars, worked by hand.
//
// A retail year is an ISO year. ISO 2009 week 1 starts on Monday 2008-12-29
// (2009-01-04 is a Sunday) and 2009 has 53 weeks, up to Sunday 2010-01-03.
// Month k starts 7 * (weeks before it) days after 2008-12-29:
//   4-4-5: weeks 4,4,5 per quarter -> month starts after 0,4,8,13,17,21,26,30,34,39,43,47 weeks
//   4-5-4: after 0,4,9,13,17,22,26,30,35,39,43,48 weeks
//   5-4-4: after 0,5,9,13,18,22,26,31,35,39,44,48 weeks
// and the day counts were added to 2008-12-29 on a paper calendar, e.g.
// 13 weeks = 91 days: Dec 29 + 3 = Jan 1, + 88 = Mar 30.

struct RetailStart {
  int format, month;
  int y, m, d;  // Gregorian date of the month's first Monday
};

constexpr RetailStart kRetail2009[] = {
    {445, 1, 2008, 12, 29}, {445, 2, 2009, 1, 26}, {445, 3, 2009, 2, 23}, {445, 4, 2009, 3, 30},
    {445, 5, 2009, 4, 27},  {445, 6, 2009, 5, 25}, {445, 7, 2009, 6, 29}, {445, 8, 2009, 7, 27},
    {445, 9, 2009, 8, 24},  {445, 10, 2009, 9, 28}, {445, 11, 2009, 10, 26}, {445, 12, 2009, 11, 23},
    {454, 3, 2009, 3, 2},   {454, 6, 2009, 6, 1},  {454, 9, 2009, 8, 31},  {454, 12, 2009, 11, 30},
    {544, 2, 2009, 2, 2},   {544, 5, 2009, 5, 4},  {544, 8, 2009, 8, 3},   {544, 11, 2009, 11, 2},
};

TEST(Retail, MonthStartsOf2009) {
  for (const auto& c : kRetail2009) {
    SCOPED_TRACE(::testing::Message() << c.format << " month " << c.month);
    const double start = ymd(c.y, c.m, c.d);
    int m = 0, d = 0, y = 0;
    ASSERT_EQ(zidmdydf(&m, &d, &y, start, c.format), 0);
    EXPECT_EQ(y * 10000 + m * 100 + d, 2009 * 10000 + c.month * 100 + 1);
    // The Sunday before is the last day of the month before.
    ASSERT_EQ(zidmdydf(&m, &d, &y, start - 1, c.format), 0);
    if (c.month > 1) {
      EXPECT_EQ(m, c.month - 1);
      EXPECT_EQ(y, 2009);
      EXPECT_TRUE(d == 28 || d == 35) << d;
    } else {
      EXPECT_EQ(y * 100 + m, 2008 * 100 + 12);
    }
  }
}

TEST(Retail, RefusesUnknownCalendarsAndNonDates) {
  // Days inside retail months are checked on every oracle row below.
  int m = 0, d = 0, y = 0;
  EXPECT_EQ(zidmdydf(&m, &d, &y, 100.0, 446), -2);
  EXPECT_NE(zidmdydf(&m, &d, &y, kMissing, 445), 0);
  EXPECT_NE(zidmdydf(&m, &d, &y, 6589336.0, 0), 0);
}

TEST(Retail, EveryDayOfAFewYearsAgreesWithTheIsoWeek) {
  // Month by the oracle's ISO week against the published week counts
  // (4-4-5: 4+4+5 weeks a quarter), counted here without the tables.
  const int q445[] = {4, 4, 5}, q454[] = {4, 5, 4}, q544[] = {5, 4, 4};
  for (const auto& r : loadDateOracle()) {
    for (int fmt : {445, 454, 544}) {
      const int* q = fmt == 445 ? q445 : fmt == 454 ? q454 : q544;
      int month = 1, before = 0;
      while (month < 12 && before + q[(month - 1) % 3] < r.isow) before += q[(month++ - 1) % 3];
      int m = 0, d = 0, y = 0;
      ASSERT_EQ(zidmdydf(&m, &d, &y, r.day, fmt), 0);
      ASSERT_EQ(y * 10000 + m * 100 + d, r.isoy * 10000 + month * 100 + (r.isow - before - 1) * 7 + r.isod)
          << fmt << ' ' << r.y << '-' << r.m << '-' << r.d;
    }
  }
}

// ---------------------------------------------------------------------------
// Day counts.

TEST(DayCount, LeapYearsAndMonthEnds) {
  const int leap[][2] = {{1600, 1}, {1700, 0}, {1900, 0}, {2000, 1}, {2004, 1}, {2100, 0},
                         {2023, 0}, {2024, 1}, {2400, 1}, {1582, 0}, {20000, 1}};
  for (const auto& l : leap) EXPECT_EQ(isLeapYear(l[0]), l[1]) << l[0];
  const int len2001[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
  for (int m = 1; m <= 12; ++m) EXPECT_EQ(lastDay(2001, m), len2001[m - 1]);
  EXPECT_EQ(lastDay(2000, 2), 29);
  EXPECT_EQ(lastDay(1900, 2), 28);
}

TEST(DayCount, IsoWeekDays) {
  // 2009-01-01 (yday 0) is a Thursday (wday 4); week 1 starts Monday
  // 2008-12-29, three days before.
  EXPECT_EQ(iso_week_days(0, 4), 3);
  // 2010-01-01 is a Friday: week 1 starts 2010-01-04, three days after.
  EXPECT_EQ(iso_week_days(0, 5), -3);
  // 2010-01-04, Monday, yday 3.
  EXPECT_EQ(iso_week_days(3, 1), 0);
}

struct D360 {
  const char* what;
  int m1, d1, y1, m2, d2, y2;
  long expect;
};

TEST(DayCount, ThirtyThreeSixty) {
  const D360 cases[] = {
      {"leap Feb 28 to Feb 29: only the second is February's end", 2, 28, 2004, 2, 29, 2004, 1},
      {"end of Feb to end of Feb, common years", 2, 28, 2001, 2, 28, 2002, 360},
      {"end of Feb to end of Feb, leap to common", 2, 29, 2004, 2, 28, 2005, 360},
      {"end of Feb to the 31st: both become 30", 2, 28, 2001, 3, 31, 2001, 30},
      {"31st to 31st", 1, 31, 2001, 3, 31, 2001, 60},
      {"30th to 31st", 4, 30, 2001, 5, 31, 2001, 30},
      {"29th to 31st keeps 31", 4, 29, 2001, 5, 31, 2001, 32},
      {"plain", 1, 15, 2001, 7, 20, 2003, 720 + 180 + 5},
      {"backwards", 7, 20, 2003, 1, 15, 2001, -905},
  };
  for (const auto& c : cases) EXPECT_EQ(diff_30_360(c.m1, c.d1, c.y1, c.m2, c.d2, c.y2), c.expect) << c.what;
}

TEST(DayCount, ActualActual) {
  long days = 0;
  double years = 0;
  diff_actact(1, 1, 2000, 1, 1, 2001, &days, &years);
  EXPECT_EQ(days, 366);
  EXPECT_DOUBLE_EQ(years, 1.0);
  // 1999-07-01 .. 2000-01-01: 184 common days; 2000-01-01 .. 2000-07-01: 182 leap days.
  diff_actact(7, 1, 1999, 7, 1, 2000, &days, &years);
  EXPECT_EQ(days, 366);
  EXPECT_DOUBLE_EQ(years, 184.0 / 365 + 182.0 / 366);
  // Whole years between: 2001, 2002, 2003 common, 2004 leap.
  diff_actact(12, 31, 2000, 1, 1, 2005, &days, &years);
  EXPECT_EQ(days, 1 + 365 * 3 + 366);
  EXPECT_DOUBLE_EQ(years, 1.0 / 366 + 3.0 + 1.0);
  diff_actact(3, 1, 2003, 3, 11, 2003, &days, &years);
  EXPECT_EQ(days, 10);
  EXPECT_DOUBLE_EQ(years, 10.0 / 365);
}

TEST(DayCount, ConventionsOfZdatdif) {
  const double a = ymd(2003, 1, 31), b = ymd(2003, 3, 31);
  struct Case {
    int convent;
    long days;
    double years;
  };
  const Case cases[] = {
      {1, 60, 60.0 / 360},
      {2, 59, 59.0 / 365},
      {3, 59, 59.0 / 360},
      {4, 59, 59.0 / 365},
  };
  for (const auto& c : cases) {
    long days = -1;
    double years = -1;
    ASSERT_EQ(zdatdif(a, b, c.convent, &days, &years), 0) << c.convent;
    EXPECT_EQ(days, c.days) << c.convent;
    EXPECT_DOUBLE_EQ(years, c.years) << c.convent;
  }
  // Actual/actual with the dates the other way round changes both signs.
  long days = 0;
  double years = 0;
  ASSERT_EQ(zdatdif(b, a, 2, &days, &years), 0);
  EXPECT_EQ(days, -59);
  EXPECT_DOUBLE_EQ(years, -59.0 / 365);
  ASSERT_EQ(zdatdif(a, a, 2, &days, &years), 0);
  EXPECT_EQ(days, 0);
  EXPECT_EQ(years, 0.0);
  // Unknown conventions and unconvertible dates write nothing.
  days = 77;
  years = 77;
  EXPECT_EQ(zdatdif(a, b, 5, &days, &years), 1);
  EXPECT_EQ(zdatdif(a, b, 0, &days, &years), 1);
  EXPECT_EQ(zdatdif(kMissing, b, 1, &days, &years), 1);
  EXPECT_EQ(zdatdif(a, std::numeric_limits<double>::quiet_NaN(), 4, &days, &years), 1);
  EXPECT_EQ(days, 77);
  EXPECT_EQ(years, 77.0);
  // Null result pointers are allowed.
  EXPECT_EQ(zdatdif(a, b, 1, nullptr, nullptr), 0);
}

TEST(DayCount, DateOffsetDifferencesAreDays) {
  EXPECT_EQ(dateOffset(3, 1, 2000) - dateOffset(2, 28, 2000), 2);
  EXPECT_EQ(dateOffset(3, 1, 1900) - dateOffset(2, 28, 1900), 1);
  EXPECT_EQ(dateOffset(1, 1, 2001) - dateOffset(1, 1, 2000), 366);
  EXPECT_EQ(dateOffset(1, 1, 1960) - dateOffset(1, 1, 1582), 138061);
}

}  // namespace
}  // namespace qvt
