// Week dates, retail calendars and day counts; and every row of the date
// oracle (Python's datetime) against the date operations, the starts of the
// intervals that hold it, month arithmetic and season codes.

#include "calendar_fixture.hpp"

namespace qvt {
namespace {

using testing::iv;
using testing::kDay;
using testing::ymd;

struct Wd {
  double y = -9, w = -9, d = -9;
};

Wd weekDate(double x, char fmt) {
  Wd r;
  EXPECT_EQ(zidywdd(x, &fmt, 1, &r.y, &r.w, &r.d), 0);
  return r;
}

TEST(DateOracle, EveryRow) {
  const auto& rows = testing::dateOracle();
  ASSERT_GT(rows.size(), 3000u);
  const auto& a = rows.front();
  const int quarters[3][3] = {{4, 4, 5}, {4, 5, 4}, {5, 4, 4}};
  const int retail[3] = {445, 454, 544};
  const INTERVAL day = iv("DAY"), week = iv("WEEK"), weekv = iv("WEEKV"), tenday = iv("TENDAY"),
                 semi = iv("SEMIMONTH"), month = iv("MONTH"), qtr = iv("QTR"), half = iv("SEMIYEAR"),
                 year = iv("YEAR"), yearv = iv("YEARV"), dtmonth = iv("DTMONTH"), wd = iv("WEEKDAY");
  for (const auto& r : rows) {
    SCOPED_TRACE(::testing::Message() << r.y << '-' << r.m << '-' << r.d << " k " << r.k);
    const Wd v = weekDate(r.day, 'V'), u = weekDate(r.day, 'U'), w = weekDate(r.day, 'W');
    EXPECT_EQ(v.y * 10000 + v.w * 10 + v.d, r.isoy * 10000 + r.isow * 10 + r.isod);
    EXPECT_EQ(ziddywd(r.isoy, r.isow, r.isod), r.day);
    // The week keeps its fraction; its whole part is strftime's %U / %W.
    EXPECT_EQ(u.y * 10000 + std::floor(u.w) * 10 + u.d, r.y * 10000 + r.wu * 10 + r.wday);
    EXPECT_EQ(w.y * 10000 + std::floor(w.w) * 10 + w.d, r.y * 10000 + r.ww * 10 + r.isod);
    int m = 0, d = 0, y = 0;
    ASSERT_EQ(zidmdydf(&m, &d, &y, r.day, 0), 0);
    EXPECT_EQ(y * 10000 + m * 100 + d, r.y * 10000 + r.m * 100 + r.d);
    EXPECT_EQ(static_cast<double>(diff_actual(a.m, a.d, a.y, r.m, r.d, r.y)), r.day - a.day);
    EXPECT_GE(lastDay(r.y, r.m), r.d);
    long days = 0;
    double years = 0;
    ASSERT_EQ(zdatdif(a.day, r.day, 4, &days, &years), 0);
    EXPECT_EQ(static_cast<double>(days), r.day - a.day);
    EXPECT_DOUBLE_EQ(years, (r.day - a.day) / 365.0);
    // Retail month by the ISO week against the published weeks a quarter,
    // counted here without the tables.
    for (int f = 0; f < 3; ++f) {
      const int* q = quarters[f];
      int mon = 1, before = 0;
      while (mon < 12 && before + q[(mon - 1) % 3] < r.isow) before += q[(mon++ - 1) % 3];
      ASSERT_EQ(zidmdydf(&m, &d, &y, r.day, retail[f]), 0);
      ASSERT_EQ(y * 10000 + m * 100 + d, r.isoy * 10000 + mon * 100 + (r.isow - before - 1) * 7 + r.isod)
          << retail[f];
    }
    // Month steps and counts.
    const char same = 'S';
    EXPECT_EQ(zintnx2(month, r.day, r.k), r.mstart);
    EXPECT_EQ(zintck2(month, r.day, r.mstart), r.k);
    EXPECT_EQ(zintck2(month, r.mstart, r.day), -r.k);
    EXPECT_EQ(zintnx3(month, r.day, r.k, &same, nullptr), r.msame);
    // The start of the interval that holds the date; the first week of 1582
    // starts before the calendar does.
    if (r.day < -138050) continue;
    const double x = r.day;
    EXPECT_EQ(zintnx2(day, x + 0.5, 0), x);
    EXPECT_EQ(zintnx2(week, x, 0), x - (r.wday - 1));
    EXPECT_EQ(zintnx2(weekv, x, 0), x - (r.isod - 1));
    EXPECT_EQ(zintnx2(tenday, x, 0), ymd(r.y, r.m, r.d > 20 ? 21 : r.d > 10 ? 11 : 1));
    EXPECT_EQ(zintnx2(semi, x, 0), ymd(r.y, r.m, r.d > 15 ? 16 : 1));
    EXPECT_EQ(zintnx2(month, x, 0), ymd(r.y, r.m, 1));
    EXPECT_EQ(zintnx2(qtr, x, 0), ymd(r.y, 3 * ((r.m - 1) / 3) + 1, 1));
    EXPECT_EQ(zintnx2(half, x, 0), ymd(r.y, r.m > 6 ? 7 : 1, 1));
    EXPECT_EQ(zintnx2(year, x, 0), ymd(r.y, 1, 1));
    EXPECT_EQ(zintnx2(dtmonth, x * kDay + 4000, 0), ymd(r.y, r.m, 1) * kDay);
    // The Friday or earlier working day: back 1 from Saturday, 2 from Sunday.
    EXPECT_EQ(zintnx2(wd, x, 0), x - (r.wday == 7 ? 1 : r.wday == 1 ? 2 : 0));
    if (r.isoy >= 1582) EXPECT_EQ(zintnx2(yearv, x, 0), x - (r.isod - 1) - 7 * (r.isow - 1));
    // Season codes of single dates; a week 53 takes scode 52, a day off
    // goes with Friday. The weekly look-ahead needs the next week.
    if (r.day < kFirstDate + 14 || r.day > kLastDate - 14) continue;
    const struct {
      const INTERVAL& i;
      int ns, want;
    } grids[] = {{month, 12, r.m - 1},
                 {qtr, 4, (r.m - 1) / 3},
                 {tenday, 36, 3 * (r.m - 1) + (r.d > 10) + (r.d > 20)},
                 {semi, 24, 2 * (r.m - 1) + (r.d > 15)},
                 {day, 7, r.wday - 1},
                 {wd, 5, (r.wday >= 2 && r.wday <= 6) ? r.wday - 2 : 4},
                 {weekv, 52, r.isow == 53 ? 52 : r.isow - 1}};
    for (const auto& g : grids) {
      int ns = g.ns, code = -1;
      ASSERT_EQ(zintscd(g.i, r.day, 52, 1, &code, &ns), 0) << g.ns;
      EXPECT_EQ(code, g.want) << g.ns;
    }
  }
  // 1582-01-01 is a Friday; its week began before the calendar, so its
  // day-of-week code can't be placed; the first Sunday's can.
  int ns = 7, code = 9;
  EXPECT_EQ(zintscd(day, kFirstDate, 0, 1, &code, &ns), -1);
  EXPECT_EQ(code, 0);
  EXPECT_EQ(zintscd(day, kFirstDate + 2, 0, 1, &code, &ns), 0);
}

TEST(DateOracle, CountsBetweenNeighbouringRows) {
  const auto& rows = testing::dateOracle();
  const INTERVAL day = iv("DAY"), week = iv("WEEK"), weekv = iv("WEEKV"), wd = iv("WEEKDAY"),
                 month = iv("MONTH"), year = iv("YEAR"), yearv = iv("YEARV"), qtr = iv("QTR");
  for (std::size_t i = 1; i < rows.size(); ++i) {
    const auto& a = rows[i - 1];
    const auto& b = rows[i];
    SCOPED_TRACE(::testing::Message() << a.y << '-' << a.m << '-' << a.d << " .. " << b.y << '-' << b.m);
    EXPECT_EQ(zintck2(day, a.day, b.day), b.day - a.day);
    EXPECT_EQ(zintck2(month, a.day, b.day), 12 * (b.y - a.y) + b.m - a.m);
    EXPECT_EQ(zintck2(qtr, a.day, b.day), 4 * (b.y - a.y) + (b.m - 1) / 3 - (a.m - 1) / 3);
    EXPECT_EQ(zintck2(year, a.day, b.day), b.y - a.y);
    EXPECT_EQ(zintck2(yearv, a.day, b.day), b.isoy - a.isoy);
    if (b.day - a.day > 400) continue;
    // Sundays, Mondays and working days in (a, b], counted one day at a time.
    int sundays = 0, mondays = 0, working = 0;
    for (double x = a.day + 1; x <= b.day; ++x) {
      const double w = hostWeekday(x);
      sundays += w == 1;
      mondays += w == 2;
      working += w != 1 && w != 7;
    }
    EXPECT_EQ(zintck2(week, a.day, b.day), sundays);
    EXPECT_EQ(zintck2(weekv, a.day, b.day), mondays);
    EXPECT_EQ(zintck2(wd, a.day, b.day), working);
  }
}

TEST(WeekDates, WorkedByHand) {
  // ISO weeks beyond the last run into the next year.
  EXPECT_EQ(ziddywd(2010, 53, 1), ymd(2011, 1, 3));
  EXPECT_EQ(ziddywd(2010, 1, 8), ymd(2010, 1, 11));
  const double bad[] = {kMissing, skMissVal('I'), std::numeric_limits<double>::quiet_NaN(),
                        std::numeric_limits<double>::infinity(), -138062.0, 6589336.0};
  for (double x : bad)
    for (char f : {'V', 'U', 'W'}) EXPECT_EQ(weekDate(x, f).y + weekDate(x, f).w + weekDate(x, f).d, -3.0);
  const Wd q = weekDate(100.0, 'Q');  // unknown convention
  EXPECT_EQ(q.y + q.w + q.d, -3.0);
  double yy = 0;
  EXPECT_EQ(zidywdd(100.0, nullptr, 0, &yy, nullptr, nullptr), 0);
  EXPECT_EQ(yy, -1.0);
  // Sunday-based years: 2004 starts on Sunday 2004-01-04, 2005 on 2005-01-02
  // (the Sunday before Tuesday January 4), 2003 on 2002-12-29 with 53 weeks.
  EXPECT_EQ(ziddywds(2004, 1, 1), ymd(2004, 1, 4));
  EXPECT_EQ(ziddywds(2004, 53, 1), ymd(2005, 1, 2));
  EXPECT_TRUE(wzmis(ziddywds(2004, 53, 2)));
  EXPECT_EQ(ziddywds(2003, 53, 7), ymd(2004, 1, 3));
  const int badWeek[][2] = {{0, 1}, {54, 1}, {1, 0}, {1, 8}, {-1, -1}};
  for (const auto& b : badWeek) EXPECT_TRUE(wzmis(ziddywds(2003, b[0], b[1]))) << b[0] << ' ' << b[1];
  // Date to Sunday-based week date, with the folding of the last weeks:
  // {y, m, d, leap_index, year, week, day}.
  const int fold[][7] = {{2003, 12, 28, 53, 2003, 53, 1}, {2003, 12, 28, 52, 2003, 52, 1},
                         {2003, 12, 28, 1, 2004, 1, 1},   {2003, 12, 21, 1, 2004, 1, 1},
                         {2003, 12, 21, 52, 2003, 52, 1}, {2010, 1, 2, 53, 2009, 52, 7},
                         {2005, 1, 1, 53, 2004, 52, 7}};
  for (const auto& c : fold) {
    double y = 0, w = 0, d = 0;
    EXPECT_EQ(zidywdds(ymd(c[0], c[1], c[2]), c[3], &y, &w, &d), 0);
    EXPECT_EQ(y * 1000 + w * 10 + d, c[4] * 1000 + c[5] * 10 + c[6]) << c[0] << '-' << c[1] << '-' << c[2];
  }
  double y = 0, w = 0, d = 0;
  zidywdds(kMissing, 53, &y, &w, &d);
  EXPECT_EQ(y + w + d, -3.0);
}

TEST(WeekDates, SundayWeekDaysAreConsecutiveAcrossYears) {
  // One day at a time; a new week on each Sunday, a new year on week 1 day 1.
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

TEST(DayCount, WorkedByHand) {
  int m = 0, d = 0, y = 0;
  EXPECT_EQ(zidmdydf(&m, &d, &y, 100.0, 446), -2);
  EXPECT_NE(zidmdydf(&m, &d, &y, kMissing, 445), 0);
  EXPECT_NE(zidmdydf(&m, &d, &y, 6589336.0, 0), 0);
  const int leap[][2] = {{1600, 1}, {1700, 0}, {1900, 0}, {2000, 1}, {2004, 1}, {2023, 0}, {20000, 1}};
  for (const auto& l : leap) EXPECT_EQ(isLeapYear(l[0]), l[1]) << l[0];
  const int len2001[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
  for (int k = 1; k <= 12; ++k) EXPECT_EQ(lastDay(2001, k), len2001[k - 1]);
  EXPECT_EQ(lastDay(2000, 2), 29);
  // 2009-01-01 is a Thursday: ISO week 1 starts three days before; 2010-01-01
  // a Friday: three days after; 2010-01-04 is that Monday.
  EXPECT_EQ(iso_week_days(0, 4), 3);
  EXPECT_EQ(iso_week_days(0, 5), -3);
  EXPECT_EQ(iso_week_days(3, 1), 0);
  EXPECT_EQ(dateOffset(3, 1, 2000) - dateOffset(2, 28, 2000), 2);
  EXPECT_EQ(dateOffset(3, 1, 1900) - dateOffset(2, 28, 1900), 1);
  EXPECT_EQ(dateOffset(1, 1, 1960) - dateOffset(1, 1, 1582), 138061);
  // 30/360: {m1, d1, y1, m2, d2, y2, days}.
  const int d360[][7] = {{2, 28, 2004, 2, 29, 2004, 1},  {2, 28, 2001, 2, 28, 2002, 360},
                         {2, 29, 2004, 2, 28, 2005, 360}, {2, 28, 2001, 3, 31, 2001, 30},
                         {1, 31, 2001, 3, 31, 2001, 60},  {4, 30, 2001, 5, 31, 2001, 30},
                         {4, 29, 2001, 5, 31, 2001, 32},  {1, 15, 2001, 7, 20, 2003, 905},
                         {7, 20, 2003, 1, 15, 2001, -905}};
  for (const auto& c : d360) EXPECT_EQ(diff_30_360(c[0], c[1], c[2], c[3], c[4], c[5]), c[6]) << c[0] << c[1];
  // Actual/actual: leap-year days in 366ths, the others in 365ths.
  const struct {
    int m1, d1, y1, m2, d2, y2;
    long days;
    double years;
  } aa[] = {{1, 1, 2000, 1, 1, 2001, 366, 1.0},
            {7, 1, 1999, 7, 1, 2000, 366, 184.0 / 365 + 182.0 / 366},
            {12, 31, 2000, 1, 1, 2005, 1 + 365 * 3 + 366, 1.0 / 366 + 4.0},
            {3, 1, 2003, 3, 11, 2003, 10, 10.0 / 365}};
  for (const auto& c : aa) {
    long days = 0;
    double years = 0;
    diff_actact(c.m1, c.d1, c.y1, c.m2, c.d2, c.y2, &days, &years);
    EXPECT_EQ(days, c.days);
    EXPECT_DOUBLE_EQ(years, c.years);
  }
}

TEST(DayCount, Conventions) {
  const double a = ymd(2003, 1, 31), b = ymd(2003, 3, 31);
  const struct {
    int convent;
    double from, to;
    long days;
    double years;
  } cases[] = {{1, a, b, 60, 60.0 / 360}, {2, a, b, 59, 59.0 / 365}, {3, a, b, 59, 59.0 / 360},
               {4, a, b, 59, 59.0 / 365}, {2, b, a, -59, -59.0 / 365}, {2, a, a, 0, 0}};
  for (const auto& c : cases) {
    long days = -1;
    double years = -1;
    ASSERT_EQ(zdatdif(c.from, c.to, c.convent, &days, &years), 0) << c.convent;
    EXPECT_EQ(days, c.days) << c.convent;
    EXPECT_DOUBLE_EQ(years, c.years) << c.convent;
  }
  // Unknown conventions and unconvertible dates write nothing.
  long days = 77;
  double years = 77;
  EXPECT_EQ(zdatdif(a, b, 5, &days, &years), 1);
  EXPECT_EQ(zdatdif(a, b, 0, &days, &years), 1);
  EXPECT_EQ(zdatdif(kMissing, b, 1, &days, &years), 1);
  EXPECT_EQ(zdatdif(a, std::numeric_limits<double>::quiet_NaN(), 4, &days, &years), 1);
  EXPECT_EQ(days + years, 154.0);
  EXPECT_EQ(zdatdif(a, b, 1, nullptr, nullptr), 0);
}

}  // namespace
}  // namespace qvt
