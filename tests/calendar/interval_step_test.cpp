
#include "calendar_fixture.hpp"

namespace qvt {
namespace {

using testing::iv;
using testing::ymd;

using testing::loadDateOracle;

constexpr double kDay = 86400.0;

bool isMissing(double x) { return wzmis(x) != 0; }

// ---------------------------------------------------------------------------
// Boundaries of each grid, worked from the calendar: day 0 is Friday
// 1960-01-01, day 2 the first Sunday, day 3 the first Monday.

// Starts, month steps and counts of the plain families are checked on every
// row of the datetime oracle below; the rows here are shifts, multiples,
// working-day patterns, retail and ISO grids, and the floors.
struct StepCase {
  const char* what;
  const char* interval;
  double x, n, expect;
};

TEST(IntervalStep, HandWorkedSteps) {
  const StepCase cases[] = {
      {"WEEK starts on Sunday", "WEEK", 1, 0, -5},
      {"first WEEK boundary", "WEEK", 2, 0, 2},
      {"WEEK2 boundary before day 0", "WEEK2", 8, 0, -5},
      {"WEEK2 boundary after day 0", "WEEK2", 9, 0, 9},
      {"WEEK.2 starts on Monday", "WEEK.2", 2, 0, -4},
      {"WEEKV starts on Monday", "WEEKV", 3, 0, 3},
      {"WEEKV.2 starts on Tuesday", "WEEKV.2", 3, 0, -3},
      {"DAY3.2 starts on day 1", "DAY3.2", 0, 0, -2},
      {"DAY3.2 holds 1..3", "DAY3.2", 3, 0, 1},
      {"DAY3.2 next", "DAY3.2", 3, 1, 4},
      {"MONTH2.2 starts in an even month (December)", "MONTH2.2", ymd(2000, 1, 15), 0, ymd(1999, 12, 1)},
      {"MONTH2.2 in February", "MONTH2.2", ymd(2000, 2, 15), 0, ymd(2000, 2, 1)},
      {"MONTH2 in January", "MONTH2", ymd(2000, 2, 15), 0, ymd(2000, 1, 1)},
      {"YEAR.4 starts April 1", "YEAR.4", ymd(2000, 3, 31), 0, ymd(1999, 4, 1)},
      {"YEAR.4 on April 1", "YEAR.4", ymd(2000, 4, 1), 0, ymd(2000, 4, 1)},
      {"QTR.2 starts Feb, May, Aug, Nov", "QTR.2", ymd(2000, 8, 19), 0, ymd(2000, 8, 1)},
      {"YEAR anchored at 1960 with multiplier", "YEAR5", ymd(2003, 8, 19), 0, ymd(2000, 1, 1)},
      {"TENDAY two on", "TENDAY", ymd(2000, 2, 5), 2, ymd(2000, 2, 21)},
      {"SEMIMONTH first half", "SEMIMONTH", ymd(2000, 2, 10), 1, ymd(2000, 2, 16)},
      {"Friday to Monday", "WEEKDAY", ymd(2000, 1, 7), 1, ymd(2000, 1, 10)},
      {"ten working days are two weeks", "WEEKDAY", ymd(2000, 1, 5), 10, ymd(2000, 1, 19)},
      {"Friday-Saturday weekend: Friday to Thursday", "WEEKDAY67W", ymd(2000, 1, 7), 0, ymd(2000, 1, 6)},
      {"Friday-Saturday weekend: Thursday to Sunday", "WEEKDAY67W", ymd(2000, 1, 6), 1, ymd(2000, 1, 9)},
      // Working-day index: day 0 (Fri) is 0, day 3 (Mon) 1, day 4 (Tue) 2,
      // so WEEKDAY2 pairs {Fri 1, Mon 4}, {Tue 5, Wed 6}, {Thu 7, Fri 8}.
      {"WEEKDAY2 pairs", "WEEKDAY2", 5, 0, 4},
      {"WEEKDAY2 from the weekend", "WEEKDAY2", 2, 0, 0},
      {"WEEKDAY2 on", "WEEKDAY2", 3, 1, 4},
      {"WEEKDAY2 two on", "WEEKDAY2", 3, 2, 6},
      {"WEEKDAY2.2 shifted pairs", "WEEKDAY2.2", 4, 0, 3},
      {"YEARV.2 starts in week 2", "YEARV.2", ymd(2010, 1, 5), 0, ymd(2009, 1, 5)},
      {"YEARV2 anchored at 1960", "YEARV2", ymd(2009, 6, 1), 0, ymd(2007, 12, 31)},
      {"YEARV2 on", "YEARV2", ymd(2009, 12, 28), 1, ymd(2010, 1, 4)},
      {"R445YR in week 53", "R445YR", ymd(2009, 12, 31), 0, ymd(2008, 12, 29)},
      {"R445YR on", "R445YR", ymd(2009, 6, 15), 1, ymd(2010, 1, 4)},
      {"R445QTR second quarter", "R445QTR", ymd(2009, 5, 1), 0, ymd(2009, 3, 30)},
      {"R544QTR has the same quarters", "R544QTR", ymd(2009, 5, 1), 1, ymd(2009, 6, 29)},
      {"R454MON month 3", "R454MON", ymd(2009, 3, 1), 1, ymd(2009, 3, 2)},
      {"R544MON month 2", "R544MON", ymd(2009, 2, 1), 0, ymd(2008, 12, 29)},
      {"R445MON 12 of a 53-week year", "R445MON", ymd(2010, 1, 3), 0, ymd(2009, 11, 23)},
      {"R445MON 12 of a 52-week year", "R445MON", ymd(2011, 1, 2), 0, ymd(2010, 11, 29)},
      {"OBS2.2 adds the shift", "OBS2.2", 4, 0, 5},
      {"OBS2.2 from 5", "OBS2.2", 5, 0, 5},
      {"OBS3", "OBS3", 7, 2, 12},
      {"OBS", "OBS", 7, -2, 5},
      {"NONE", "NONE", 7.9, 2, 9},
      {"fraction is floored", "DAY", 10.999, 1, 11},
      {"a hair below a whole day counts as it", "DAY", 11 - 1e-13, 0, 11},
      {"n is floored", "DAY", 10, 1.5, 11},
      {"negative n is floored", "DAY", 10, -1.5, 8},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(zintnx2(iv(c.interval), c.x, c.n), c.expect) << c.what << " (" << c.interval << ")";
  }
}

struct CountCase {
  const char* what;
  const char* interval;
  double x1, x2, expect;
};

TEST(IntervalCount, HandWorkedCounts) {
  const CountCase cases[] = {
      {"backwards", "MONTH", ymd(2000, 2, 1), ymd(1999, 12, 31), -2},
      {"the week of day 0", "WEEK", ymd(1959, 12, 27), ymd(1960, 1, 2), 0},
      {"YEARV2", "YEARV2", ymd(2007, 12, 31), ymd(2010, 1, 4), 1},
      {"YEAR.4", "YEAR.4", ymd(2000, 1, 1), ymd(2000, 12, 31), 1},
      {"SEMIMONTH 15 to 16", "SEMIMONTH", ymd(2000, 2, 15), ymd(2000, 2, 16), 1},
      {"SEMIMONTH over a year", "SEMIMONTH", ymd(2000, 1, 1), ymd(2001, 1, 1), 24},
      {"TENDAY 10 to 11", "TENDAY", ymd(2000, 2, 10), ymd(2000, 2, 11), 1},
      {"TENDAY 20 to 21", "TENDAY", ymd(2000, 2, 20), ymd(2000, 2, 21), 1},
      {"TENDAY 21 to 29", "TENDAY", ymd(2000, 2, 21), ymd(2000, 2, 29), 0},
      {"WEEKDAY2 pair", "WEEKDAY2", 3, 4, 1},
      {"WEEKDAY2 inside a pair", "WEEKDAY2", 0, 3, 0},
      {"R445MON over week 53", "R445MON", ymd(2009, 12, 28), ymd(2010, 1, 4), 1},
      {"R445MON month 11 to 12", "R445MON", ymd(2009, 11, 22), ymd(2009, 11, 23), 1},
      {"R445YR", "R445YR", ymd(2009, 1, 1), ymd(2010, 1, 3), 0},
      {"R445YR at the ISO new year", "R445YR", ymd(2010, 1, 3), ymd(2010, 1, 4), 1},
      {"DAY", "DAY", 10.9, 12.1, 2},
      {"DAY3.2", "DAY3.2", 3, 4, 1},
      {"OBS ignores the shift", "OBS2.2", 4, 5, 0},
      {"OBS2", "OBS2", 3, 4, 1},
      {"NONE", "NONE", 3.7, 10.2, 7},
      {"DTDAY loses the time", "DTDAY", 5 * kDay + 3600, 6 * kDay - 1, 0},
      {"DTDAY next day", "DTDAY", 5 * kDay + 3600, 6 * kDay, 1},
      {"DTMONTH", "DTMONTH", ymd(2000, 1, 31) * kDay + 86399, ymd(2000, 2, 1) * kDay, 1},
      {"HOUR", "HOUR", 3599, 3600, 1},
      {"HOUR2.2 boundaries on odd hours", "HOUR2.2", 3599, 3600, 1},
      {"HOUR2.2 inside", "HOUR2.2", 3600, 10799, 0},
      {"HOUR2.2 next", "HOUR2.2", 3600, 10800, 1},
      {"HOUR2", "HOUR2", 3600, 7199, 0},
      {"MINUTE", "MINUTE", 59.9, 60, 1},
      {"SECOND floors", "SECOND", 0.5, 10.7, 10},
      {"negative seconds", "MINUTE15", -1, 0, 1},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(zintck2(iv(c.interval), c.x1, c.x2), c.expect) << c.what << " (" << c.interval << ")";
  }
}

TEST(IntervalStep, DatetimeStepsGiveSeconds) {
  const double x = ymd(2000, 1, 31) * kDay + 13 * 3600 + 5;
  EXPECT_EQ(zintnx2(iv("DTDAY"), x, 1), ymd(2000, 2, 1) * kDay);
  EXPECT_EQ(zintnx2(iv("DTMONTH"), x, 1), ymd(2000, 2, 1) * kDay);
  EXPECT_EQ(zintnx2(iv("DTWEEKDAY"), x, 1), ymd(2000, 2, 1) * kDay);
  EXPECT_EQ(zintnx2(iv("DTHOUR"), x, 1), ymd(2000, 1, 31) * kDay + 14 * 3600);
  EXPECT_EQ(zintnx2(iv("HOUR2.2"), 0, 0), -3600.0);
  EXPECT_EQ(zintnx2(iv("MINUTE15"), 1000, 2), 2700.0);
  EXPECT_EQ(zintnx2(iv("SECOND"), 10.5, 3), 13.0);
  // Counting a time grid on date values: days become seconds.
  INTERVAL minuteOnDays = iv("MINUTE");
  minuteOnDays.units = 'd';
  EXPECT_EQ(zintck2(minuteOnDays, 0, 1), 1440.0);
  EXPECT_TRUE(isMissing(zintnx2(minuteOnDays, 0, 1)));  // stepping needs seconds
}

// ---------------------------------------------------------------------------
// Against Python's datetime (date_oracle.csv).

TEST(IntervalOracle, StartsOfTheIntervalThatHoldsADate) {
  const INTERVAL day = iv("DAY"), week = iv("WEEK"), weekv = iv("WEEKV"), tenday = iv("TENDAY"),
                 semi = iv("SEMIMONTH"), month = iv("MONTH"), qtr = iv("QTR"), half = iv("SEMIYEAR"),
                 year = iv("YEAR"), yearv = iv("YEARV"), dtmonth = iv("DTMONTH"), wd = iv("WEEKDAY");
  for (const auto& r : loadDateOracle()) {
    // The first week of 1582 starts before the calendar does.
    if (r.day < -138050) continue;
    SCOPED_TRACE(::testing::Message() << r.y << '-' << r.m << '-' << r.d);
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
    if (r.isoy >= 1582) {
      EXPECT_EQ(zintnx2(yearv, x, 0), x - (r.isod - 1) - 7 * (r.isow - 1));
    }
  }
}

TEST(IntervalOracle, MonthArithmetic) {
  const INTERVAL month = iv("MONTH");
  const char same = 'S';
  for (const auto& r : loadDateOracle()) {
    SCOPED_TRACE(::testing::Message() << r.y << '-' << r.m << '-' << r.d << " k " << r.k);
    EXPECT_EQ(zintnx2(month, r.day, r.k), r.mstart);
    EXPECT_EQ(zintck2(month, r.day, r.mstart), r.k);
    EXPECT_EQ(zintck2(month, r.mstart, r.day), -r.k);
    EXPECT_EQ(zintnx3(month, r.day, r.k, &same, nullptr), r.msame);
  }
}

TEST(IntervalOracle, CountsBetweenNeighbouringRows) {
  const auto rows = loadDateOracle();
  const INTERVAL day = iv("DAY"), week = iv("WEEK"), weekv = iv("WEEKV"), wd = iv("WEEKDAY"), month = iv("MONTH"),
                 year = iv("YEAR"), yearv = iv("YEARV"), qtr = iv("QTR");
  for (std::size_t i = 1; i < rows.size(); ++i) {
    const auto& a = rows[i - 1];
    const auto& b = rows[i];
    SCOPED_TRACE(::testing::Message() << a.y << '-' << a.m << '-' << a.d << " .. " << b.y << '-' << b.m << '-' << b.d);
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

// ---------------------------------------------------------------------------
// Round trip: for every family, stepping k intervals and counting back
// gives k; a step lands on a boundary; stepping back returns to the start.

struct Family {
  const char* text;
  char kind;  // 'd' dates, 's' seconds on a date grid, 't' time grid, 'o' numbers
  bool starts = true;  // nx2(x, 0) is the start of the interval holding x
};

const Family kFamilies[] = {
    {"DAY", 'd'},         {"DAY3.2", 'd'},         {"WEEKDAY", 'd'},        {"WEEKDAY2.2", 'd'},
    {"WEEKDAY67W", 'd'},  {"WEEKDAY1W3", 'd'},     {"WEEKDAY123456W", 'd'}, {"WEEKDAY17W5.4", 'd'},
    {"WEEK", 'd'},        {"WEEK2.9", 'd'},        {"WEEKV", 'd'},          {"WEEKV3.5", 'd'},
    {"TENDAY", 'd'},      {"TENDAY4.3", 'd'},      {"SEMIMONTH", 'd'},      {"SEMIMONTH5.2", 'd'},
    {"MONTH", 'd'},       {"MONTH2.2", 'd'},       {"MONTH7.5", 'd'},       {"QTR", 'd'},
    {"QTR2.5", 'd'},      {"SEMIYEAR", 'd'},       {"SEMIYEAR.3", 'd'},     {"YEAR", 'd'},
    {"YEAR.4", 'd'},      {"YEAR3.20", 'd'},       {"R445MON", 'd'},        {"R454MON3.2", 'd'},
    {"R544MON", 'd'},     {"R445QTR", 'd'},        {"R454QTR.2", 'd'},      {"R544QTR2.4", 'd'},
    {"R445YR", 'd'},      {"R454YR.5", 'd'},       {"R544YR2.13", 'd'},     {"YEARV", 'd'},
    {"YEARV.20", 'd'},    {"YEARV.52", 'd'},       {"YEARV3.60", 'd'},      {"DTDAY", 's'},
    {"DTWEEK", 's'},      {"DTWEEKDAY", 's'},      {"DTMONTH", 's'},        {"DTQTR.2", 's'},
    {"DTR445YR", 's'},    {"DTYEARV", 's'},        {"DTTENDAY", 's'},       {"DTSEMIMONTH3", 's'},
    {"HOUR", 't'},        {"DTHOUR", 't'},         {"HOUR5.3", 't'},        {"MINUTE", 't'},
    {"MINUTE15.7", 't'},  {"SECOND", 't'},         {"SECOND10.4", 't'},     {"OBS", 'o'},
    {"OBS3", 'o'},        {"OBS3.2", 'o', false},  {"NONE", 'o'},
};

TEST(IntervalRoundTrip, StepThenCountGivesTheSteps) {
  const auto rows = loadDateOracle();
  const double steps[] = {-25, -7, -1, 0, 1, 2, 13, 25};
  for (const Family& fam : kFamilies) {
    const INTERVAL I = iv(fam.text);
    // The unit below the grid, for "the moment before a boundary".
    const double tick = fam.kind == 's' ? kDay : 1;
    for (std::size_t ri = 0; ri < rows.size(); ri += 7) {
      const auto& r = rows[ri];
      if (r.y < 1700 || r.y > 9000) continue;
      double x = r.day;
      if (fam.kind == 's') x = r.day * kDay + 3723.5;
      if (fam.kind == 't') x = r.day * kDay + 3723.5 + r.d * 61.0;
      if (fam.kind == 'o') x = r.day;
      const double b = zintnx2(I, x, 0);
      ASSERT_FALSE(isMissing(b)) << fam.text << " at " << x;
      if (fam.starts) {
        ASSERT_LE(b, x) << fam.text;
        ASSERT_GT(zintnx2(I, x, 1), x) << fam.text;
        ASSERT_EQ(zintck2(I, b, x), 0) << fam.text << " at " << x;
        ASSERT_EQ(zintck2(I, b - tick, b), 1) << fam.text << " at " << x;
      }
      for (double k : steps) {
        const double y = zintnx2(I, x, k);
        ASSERT_FALSE(isMissing(y)) << fam.text << " " << x << " by " << k;
        ASSERT_EQ(zintck2(I, x, y), k) << fam.text << " " << x << " by " << k;
        ASSERT_EQ(zintck2(I, y, x), -k) << fam.text << " " << x << " by " << k;
        if (fam.starts) {
          ASSERT_EQ(zintnx2(I, y, 0), y) << fam.text << " " << x << " by " << k;
          ASSERT_EQ(zintnx2(I, y, -k), b) << fam.text << " " << x << " by " << k;
        }
      }
    }
  }
}

// ---------------------------------------------------------------------------
// What can't be counted or stepped gives the missing value.

std::vector<double> allMissingValues() {
  std::vector<double> v{kMissing, skMissVal('_')};
  for (char c = 'A'; c <= 'Z'; ++c) v.push_back(skMissVal(c));
  return v;
}

TEST(IntervalBadInput, MissingNanAndInfinity) {
  const double nan = std::numeric_limits<double>::quiet_NaN();
  const double inf = std::numeric_limits<double>::infinity();
  std::vector<double> bad = allMissingValues();
  ASSERT_EQ(bad.size(), 28u);
  bad.insert(bad.end(), {nan, -nan, inf, -inf});
  for (const char* text : {"NONE", "OBS", "OBS2.2", "DAY", "WEEKDAY", "WEEK", "MONTH", "R445YR",
                           "YEARV", "DTDAY", "HOUR", "SECOND"}) {
    const INTERVAL I = iv(text);
    const double good = I.units == 's' ? 1000.0 * kDay : 1000.0;
    for (double b : bad) {
      EXPECT_TRUE(isMissing(zintck2(I, b, good))) << text;
      EXPECT_TRUE(isMissing(zintck2(I, good, b))) << text;
      EXPECT_TRUE(isMissing(zintnx2(I, b, 1))) << text;
      EXPECT_TRUE(isMissing(zintnx2(I, good, b))) << text;
      EXPECT_TRUE(isMissing(zintnx3(I, good, b, "E", nullptr))) << text;
    }
  }
}

TEST(IntervalBadInput, RangeOfTheCalendar) {
  const INTERVAL day = iv("DAY"), month = iv("MONTH"), year = iv("YEAR"), dtday = iv("DTDAY"),
                 yearv = iv("YEARV"), r445 = iv("R445YR"), wd = iv("WEEKDAY");
  EXPECT_EQ(zintnx2(day, 6589335, 0), 6589335.0);
  EXPECT_TRUE(isMissing(zintnx2(day, 6589335, 1)));
  EXPECT_TRUE(isMissing(zintnx2(day, 6589336, -1)));  // a first value outside the range
  EXPECT_EQ(zintnx2(day, -138061, 0), -138061.0);
  EXPECT_TRUE(isMissing(zintnx2(day, -138061, -1)));
  EXPECT_TRUE(isMissing(zintnx2(day, -138062, 1)));
  EXPECT_EQ(zintnx2(month, 6589335, 0), ymd(20000, 12, 1));
  EXPECT_TRUE(isMissing(zintnx2(month, 6589335, 1)));
  EXPECT_TRUE(isMissing(zintnx2(year, -138061, -1)));
  EXPECT_EQ(zintnx2(year, -138061, 0), -138061.0);
  // 1582-01-01 lies in ISO year 1581, whose start precedes the calendar.
  EXPECT_TRUE(isMissing(zintnx2(yearv, -138061, 0)));
  EXPECT_EQ(zintnx2(yearv, -138061, 1), ymd(1582, 1, 4));  // a Monday: ISO 1582 week 1
  EXPECT_TRUE(isMissing(zintnx2(r445, -138061, 0)));
  // 1582-01-01 is a Friday: a working day; the one before it is outside.
  EXPECT_EQ(zintnx2(wd, -138061, 0), -138061.0);
  EXPECT_EQ(zintnx2(wd, -138060, 0), -138061.0);
  EXPECT_TRUE(isMissing(zintnx2(wd, -138061, -1)));
  EXPECT_TRUE(isMissing(zintck2(day, -138062, 0)));
  EXPECT_TRUE(isMissing(zintck2(day, 0, 6589336)));
  EXPECT_EQ(zintck2(day, -138061, 6589335), 6589335.0 + 138061.0);
  EXPECT_TRUE(isMissing(zintnx2(dtday, 6589336 * kDay, -1)));
  EXPECT_EQ(zintnx2(dtday, 6589336 * kDay - 1, 0), 6589335 * kDay);
  EXPECT_TRUE(isMissing(zintck2(month, 1e153, 0)));
  EXPECT_TRUE(isMissing(zintck2(iv("NONE"), -1e153, 0)));
  EXPECT_EQ(zintck2(iv("NONE"), 0, 1e152), 1e152);
}

TEST(IntervalBadInput, StepsTooLargeAreMissingWithoutArithmetic) {
  const double two53 = 9007199254740992.0;
  EXPECT_TRUE(isMissing(zintnx2(iv("DAY"), 0, two53)));
  EXPECT_TRUE(isMissing(zintnx2(iv("DAY"), 0, -two53)));
  EXPECT_TRUE(isMissing(zintnx2(iv("NONE"), 0, 2 * two53)));
  EXPECT_EQ(zintnx2(iv("NONE"), 0, two53), two53);
  // 2^53 less the last day, over 3e14, is 30: below 31 days times one month.
  EXPECT_TRUE(isMissing(zintnx2(iv("MONTH"), 0, 3e14)));
  EXPECT_TRUE(isMissing(zintnx2(iv("MONTH"), 0, 2.9e14)));  // passes the guard, lands far outside
  EXPECT_TRUE(isMissing(zintnx2(iv("WEEKDAY"), 0, 1e15)));
  EXPECT_TRUE(isMissing(zintnx2(iv("WEEKDAY3"), 0, -3e15)));
  EXPECT_TRUE(isMissing(zintnx2(iv("YEARV3"), 0, two53)));
  EXPECT_TRUE(isMissing(zintnx2(iv("WEEK2147483647"), 0, 1e6)));
  EXPECT_TRUE(isMissing(zintnx2(iv("YEAR2147483647"), 0, 1)));
  EXPECT_EQ(zintnx2(iv("YEAR2147483647"), 0, 0), 0.0);
  EXPECT_EQ(zintnx2(iv("WEEKDAY2147483647"), 10, 0), ymd(1960, 1, 1));  // the interval from day 0 on
  EXPECT_TRUE(isMissing(zintnx2(iv("HOUR"), 0, two53 * 2)));
}

TEST(IntervalBadInput, UnitsAndCodesThatDontFit) {
  INTERVAL m = iv("MONTH");
  m.units = 'o';
  EXPECT_TRUE(isMissing(zintck2(m, 0, 100)));
  EXPECT_TRUE(isMissing(zintnx2(m, 0, 1)));
  INTERVAL o = iv("OBS");
  o.units = 'd';
  EXPECT_TRUE(isMissing(zintck2(o, 0, 100)));
  EXPECT_TRUE(isMissing(zintnx2(o, 0, 1)));
  EXPECT_TRUE(isMissing(zintck2(iv("DTOBS"), 0, 100)));
  INTERVAL h = iv("HOUR");
  h.units = 'u';
  EXPECT_TRUE(isMissing(zintck2(h, 0, 100)));
  for (int code : {2, 26, 28, 29, 38, 43, 49, 54, 58, 66, 100, -5}) {
    INTERVAL r;
    r.intcode = static_cast<char>(code);
    r.units = 'd';
    r.intper = 1;
    EXPECT_TRUE(isMissing(zintck2(r, 0, 100))) << code;
    EXPECT_TRUE(isMissing(zintnx2(r, 0, 1))) << code;
    r.units = 's';
    EXPECT_TRUE(isMissing(zintck2(r, 0, 100))) << code;
    EXPECT_TRUE(isMissing(zintnx2(r, 0, 1))) << code;
  }
  // A multiplier below 1 counts as 1.
  INTERVAL z = iv("MONTH");
  z.intper = 0;
  EXPECT_EQ(zintnx2(z, ymd(2000, 5, 5), 1), ymd(2000, 6, 1));
  EXPECT_EQ(zintck2(z, ymd(2000, 5, 5), ymd(2000, 7, 1)), 2.0);
  // A working week without working days can't be stepped.
  INTERVAL w = iv("WEEKDAY");
  for (char& d : w.weekend) d = 1;
  EXPECT_TRUE(isMissing(zintnx2(w, 100, 1)));
  EXPECT_TRUE(isMissing(zintck2(w, 100, 200)));
  // A custom interval has no calendar loaded: missing, also for .M and .I.
  INTERVAL c;
  c.intcode = static_cast<char>(kIntCustom);
  c.units = 'd';
  c.intper = 1;
  EXPECT_TRUE(isMissing(zintnx2(c, 100, 1)));
  EXPECT_TRUE(isMissing(zintnx2(c, skMissVal('M'), 1)));
  EXPECT_TRUE(isMissing(zintck2(c, skMissVal('I'), 100)));
  EXPECT_TRUE(isMissing(zintck2(c, 1, 100)));
}

}  // namespace
}  // namespace qvt
