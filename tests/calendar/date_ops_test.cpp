// Week dates, retail calendars and day counts; and every row of the date
// oracle (Python's datetime) against the date operations, the starts of the
// intervals that hold it, month arithmetic and season codes. Counts on the
// other grids follow from these starts through the step-and-count round trip.

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
    // Sunday-based weeks: the year starts on the Sunday on or before January 4.
    double swy = 0, sww = 0, swd = 0;
    ASSERT_EQ(zidywdds(r.day, 53, &swy, &sww, &swd), 0);
    if (r.y > 1582) {  // the start of 1581's week year precedes the calendar
      const int sy = testing::weekYear(r.day, 0);
      EXPECT_EQ(swy * 1000 + sww * 10 + swd, sy * 1000 + (testing::weekPos(r.day, 0) + 1) * 10 + r.wday);
    }
    int m = 0, d = 0, y = 0;
    ASSERT_EQ(zidmdydf(&m, &d, &y, r.day, 0), 0);
    EXPECT_EQ(y * 10000 + m * 100 + d, r.y * 10000 + r.m * 100 + r.d);
    EXPECT_EQ(static_cast<double>(diff_actual(a.m, a.d, a.y, r.m, r.d, r.y)), r.day - a.day);
    EXPECT_EQ(lastDay(r.y, r.m), ymd(r.y + r.m / 12, r.m % 12 + 1, 1) - ymd(r.y, r.m, 1));
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
    EXPECT_TRUE(r.isoy < 1582 || zintnx2(yearv, x, 0) == x - (r.isod - 1) - 7 * (r.isow - 1));
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

TEST(WeekDates, WorkedByHand) {
  for (const auto& c : testing::handCases("isowd"))
    EXPECT_EQ(ziddywd(c.i(1), c.i(2), c.i(3)), c.x(4)) << c.where();
  for (const auto& c : testing::handCases("sunwd"))
    EXPECT_TRUE(c.same(ziddywds(c.i(1), c.i(2), c.i(3)), 4)) << c.where();
  for (const auto& c : testing::handCases("sunwdd")) {
    double y = 0, w = 0, d = 0;
    EXPECT_EQ(zidywdds(c.x(1), c.i(2), &y, &w, &d), 0);
    EXPECT_EQ(y * 1000 + w * 10 + d, c.i(3) * 1000 + c.i(4) * 10 + c.i(5)) << c.where();
  }
  const double bad[] = {kMissing, skMissVal('I'), std::numeric_limits<double>::quiet_NaN(),
                        std::numeric_limits<double>::infinity(), -138062.0, 6589336.0};
  // Every field -1: for values that aren't dates, and for an unknown convention.
  const auto fields = [](const Wd& r) { return r.y + r.w + r.d; };
  for (double x : bad)
    for (char f : {'V', 'U', 'W'}) EXPECT_EQ(fields(weekDate(x, f)), -3.0) << x << f;
  EXPECT_EQ(fields(weekDate(100.0, 'Q')), -3.0);
  double yy = 0;
  EXPECT_EQ(zidywdd(100.0, nullptr, 0, &yy, nullptr, nullptr), 0);
  EXPECT_EQ(yy, -1.0);
}

TEST(DayCount, WorkedByHand) {
  int m = 0, d = 0, y = 0;
  EXPECT_EQ(zidmdydf(&m, &d, &y, 100.0, 446), -2);
  EXPECT_NE(zidmdydf(&m, &d, &y, kMissing, 445), 0);
  EXPECT_NE(zidmdydf(&m, &d, &y, 6589336.0, 0), 0);
  const auto mdy = [](double x) {
    int mm = 0, dd = 0, yyyy = 0;
    hostDateToMdy(x, &mm, &dd, &yyyy);
    return std::array<int, 3>{mm, dd, yyyy};
  };
  for (const auto& c : testing::handCases("d360")) {
    const auto a = mdy(c.x(1)), b = mdy(c.x(2));
    EXPECT_EQ(diff_30_360(a[0], a[1], a[2], b[0], b[1], b[2]), c.i(3)) << c.where();
  }
  for (const auto& c : testing::handCases("actact")) {
    const auto a = mdy(c.x(1)), b = mdy(c.x(2));
    long days = 0;
    double years = 0;
    diff_actact(a[0], a[1], a[2], b[0], b[1], b[2], &days, &years);
    EXPECT_EQ(days, c.i(3)) << c.where();
    EXPECT_DOUBLE_EQ(years, c.i(4) / 365.0 + c.i(5) / 366.0) << c.where();
  }
  for (const auto& c : testing::handCases("datdif")) {
    long days = 77;
    double years = 77;
    ASSERT_EQ(zdatdif(c.x(2), c.x(3), c.i(1), &days, &years), c.i(4)) << c.where();
    EXPECT_EQ(days, c.i(5)) << c.where();
    EXPECT_DOUBLE_EQ(years, c.x(6) / c.x(7)) << c.where();
  }
  EXPECT_EQ(zdatdif(0, 1, 4, nullptr, nullptr), 0);
}

}  // namespace
}  // namespace qvt
