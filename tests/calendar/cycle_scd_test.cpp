// Season codes. Every expected code comes from an independent reading of the
// calendar: month of year and weekday from the Gregorian primitives, week of
// the year from the Sunday (or Monday) on or before January 4 found by
// weekday arithmetic, ISO weeks by a direct slow formula, retail months
// worked by hand.

#include "calendar_fixture.hpp"

namespace qvt {
namespace {

using testing::iv;
using testing::ymd;

int monthOf(double d) {
  int m = 0, dd = 0, y = 0;
  hostDateToMdy(d, &m, &dd, &y);
  return m;
}
int dayOf(double d) {
  int m = 0, dd = 0, y = 0;
  hostDateToMdy(d, &m, &dd, &y);
  return dd;
}
int yearOf(double d) {
  int m = 0, dd = 0, y = 0;
  hostDateToMdy(d, &m, &dd, &y);
  return y;
}
int weekday0(double d) { return static_cast<int>(hostWeekday(d)) - 1; }  // 0 Sunday

// Start of the first week of year y: the weekday `first` (0 Sunday, 1
// Monday) on or before January 4.
double firstWeek(int y, int first) {
  const double jan4 = ymd(y, 1, 4);
  return jan4 - ((weekday0(jan4) - first + 7) % 7);
}

// Position of the week that starts on d within its year (0-based), where
// the year of a week is the one whose first week it follows.
int weekPos(double d, int first) {
  const int y = yearOf(d);
  if (d >= firstWeek(y + 1, first)) return 0;
  if (d < firstWeek(y, first)) return static_cast<int>((d - firstWeek(y - 1, first)) / 7);
  return static_cast<int>((d - firstWeek(y, first)) / 7);
}

std::vector<int> codes(const INTERVAL& i, double stdate, int scode, long n, int* ns, int* rc) {
  std::vector<int> v(static_cast<std::size_t>(n) + 1, -99);  // one guard cell past the end
  *rc = zintscd(i, stdate, scode, n, v.data(), ns);
  EXPECT_EQ(v.back(), -99) << "wrote past n";
  v.pop_back();
  return v;
}

TEST(CycleScd, NegativeCountTakesTheIntervalsOwn) {
  int rc = 0;
  int ns = -1;
  const auto v = codes(iv("MONTH"), ymd(2001, 11, 1), 0, 4, &ns, &rc);
  EXPECT_EQ(rc, 0);
  EXPECT_EQ(ns, 12);
  EXPECT_EQ(v, (std::vector<int>{10, 11, 0, 1}));
  ns = -1;
  const auto q = codes(iv("QTR"), ymd(2001, 8, 1), 0, 5, &ns, &rc);
  EXPECT_EQ(ns, 4);
  EXPECT_EQ(q, (std::vector<int>{2, 3, 0, 1, 2}));
}

TEST(CycleScd, DaysFromTheWeekday) {
  struct Case {
    const char* interval;
    double start;  // a date
    int first;     // expected first code
  };
  const Case cases[] = {
      {"DAY", ymd(2005, 7, 10), 0},  // a Sunday
      {"DAY", ymd(2005, 7, 15), 5},  // a Friday
      {"DTDAY", ymd(2005, 7, 15), 5},
  };
  for (const Case& c : cases) {
    const INTERVAL i = iv(c.interval);
    const double scale = i.units == 's' ? 86400.0 : 1.0;
    int ns = 7, rc = 0;
    const auto v = codes(i, c.start * scale + (i.units == 's' ? 3600.0 : 0.0), 0, 20, &ns, &rc);
    ASSERT_EQ(rc, 0) << c.interval;
    EXPECT_EQ(v[0], c.first) << c.interval;
    for (int t = 0; t < 20; ++t) EXPECT_EQ(v[static_cast<std::size_t>(t)], weekday0(c.start + t)) << c.interval << t;
  }
}

TEST(CycleScd, WorkingDaysFromTheFirstWorkingDayOfTheWeek) {
  struct Case {
    const char* interval;
    double start;
    int ns;
  };
  const Case cases[] = {
      {"WEEKDAY", ymd(2001, 1, 1), 5},    // Monday
      {"WEEKDAY", ymd(2001, 1, 4), 5},    // Thursday
      {"WEEKDAY1W", ymd(2001, 1, 6), 6},  // Saturday works, Sunday is off
      {"WEEKDAY67W", ymd(2001, 1, 7), 5}, // Sunday to Thursday
  };
  for (const Case& c : cases) {
    const INTERVAL i = iv(c.interval);
    int ns = c.ns, rc = 0;
    const auto v = codes(i, c.start, 0, 15, &ns, &rc);
    ASSERT_EQ(rc, 0) << c.interval;
    // The working days of the week in Sunday-first order are codes 0, 1, ...
    double d = c.start;
    for (int t = 0; t < 15; ++t) {
      while (i.weekend[weekday0(d)]) d += 1;
      int expected = 0;
      for (int k = 0; k < weekday0(d); ++k) expected += i.weekend[k] ? 0 : 1;
      EXPECT_EQ(v[static_cast<std::size_t>(t)], expected) << c.interval << " t=" << t;
      d += 1;
    }
  }
}

TEST(CycleScd, TimeOfDayAndParts) {
  const double day = ymd(2005, 7, 14) * 86400.0;
  struct Case {
    const char* interval;
    double start;
    int ns;
    double step;    // seconds per interval
    double unit;    // seconds per code
    double period;  // seconds of the cycle
  };
  const Case cases[] = {
      {"HOUR", day + 5 * 3600.0, 24, 3600, 3600, 86400},
      {"HOUR2", day + 5 * 3600.0, 12, 7200, 7200, 86400},
      {"DTHOUR", day + 23 * 3600.0, 24, 3600, 3600, 86400},
      {"MINUTE", day + 10 * 3600.0 + 37 * 60, 60, 60, 60, 3600},
      {"SECOND15", day + 50, 4, 15, 15, 60},
  };
  for (const Case& c : cases) {
    int ns = c.ns, rc = 0;
    const auto v = codes(iv(c.interval), c.start, 0, 30, &ns, &rc);
    ASSERT_EQ(rc, 0) << c.interval;
    for (int t = 0; t < 30; ++t) {
      // Position within the cycle of the interval that holds the t-th step.
      const double x = std::floor(c.start / c.step) * c.step + t * c.step;
      const double within = x - std::floor(x / c.period) * c.period;
      EXPECT_EQ(v[static_cast<std::size_t>(t)], static_cast<int>(within / c.unit)) << c.interval << " t=" << t;
    }
  }
}

TEST(CycleScd, TendaysSemimonthsAndRetailMonths) {
  {
    int ns = 36, rc = 0;
    const auto v = codes(iv("TENDAY"), ymd(2005, 2, 21), 0, 40, &ns, &rc);
    ASSERT_EQ(rc, 0);
    double d = ymd(2005, 2, 21);
    for (int t = 0; t < 40; ++t) {
      const int m = monthOf(d), dd = dayOf(d);
      EXPECT_EQ(v[static_cast<std::size_t>(t)], 3 * (m - 1) + (dd > 10) + (dd > 20)) << t;
      // next tenday start: 1, 11, 21
      if (dd < 11) d = ymd(yearOf(d), m, 11);
      else if (dd < 21) d = ymd(yearOf(d), m, 21);
      else d = ymd(yearOf(d) + (m == 12), m % 12 + 1, 1);
    }
  }
  {
    int ns = 24, rc = 0;
    const auto v = codes(iv("SEMIMONTH"), ymd(2005, 12, 16), 0, 3, &ns, &rc);
    EXPECT_EQ(v, (std::vector<int>{23, 0, 1}));
  }
  {
    // ISO year 2009 starts on Monday 2008-12-29; the 4-4-5 pattern starts
    // month 2 after 4 weeks (2009-01-26), month 3 after 8 (2009-02-23).
    int ns = 12, rc = 0;
    const auto v = codes(iv("R445MON"), ymd(2009, 1, 26), 0, 3, &ns, &rc);
    EXPECT_EQ(rc, 0);
    EXPECT_EQ(v, (std::vector<int>{1, 2, 3}));
    // Month 12 of 2009 (a 53-week ISO year) starts after 47 weeks: 2009-11-23.
    const auto w = codes(iv("R445MON"), ymd(2009, 11, 23), 0, 2, &ns, &rc);
    EXPECT_EQ(w, (std::vector<int>{11, 0}));
  }
}

TEST(CycleScd, ObservationGridCountsFromTheFirst) {
  int ns = 12, rc = 0;
  const auto v = codes(iv("OBS"), 5, 0, 14, &ns, &rc);
  EXPECT_EQ(rc, 0);
  EXPECT_EQ(v, (std::vector<int>{0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 0, 1}));
  ns = -1;
  const auto z = codes(iv("OBS"), 1, 0, 3, &ns, &rc);
  EXPECT_EQ(rc, 1);
  EXPECT_EQ(z, (std::vector<int>{0, 0, 0}));
}

TEST(CycleScd, WeeksInTheYearOfJanuary4) {
  // 2003 is a Sunday-based year of 53 weeks (2002-12-29 to 2004-01-03):
  // its last week starts on 2003-12-28. 2009 (Monday weeks) has ISO week 53
  // from 2009-12-28.
  struct Case {
    const char* interval;
    double start;
    int ns;
    int scode;
    int first;  // 0 Sunday weeks, 1 Monday weeks
  };
  const Case cases[] = {
      {"WEEK", ymd(2003, 10, 5), 52, 0, 0},    {"WEEK", ymd(2003, 10, 5), 52, 52, 0},
      {"WEEK", ymd(2003, 10, 5), 52, 60, 0},   {"WEEK", ymd(2003, 12, 28), 52, 0, 0},
      {"WEEK", ymd(2003, 12, 28), 52, 7, 0},   {"WEEK", ymd(1997, 6, 1), 52, 0, 0},
      {"WEEK", ymd(2003, 10, 5), 53, 0, 0},    {"WEEKV", ymd(2009, 10, 5), 52, 0, 1},
      {"WEEKV", ymd(2009, 12, 28), 52, 5, 1},  {"WEEKV", ymd(2015, 11, 2), 52, 0, 1},
      {"DTWEEK", ymd(2003, 10, 5), 52, 0, 0},
  };
  for (const Case& c : cases) {
    const INTERVAL i = iv(c.interval);
    const double scale = i.units == 's' ? 86400.0 : 1.0;
    int ns = c.ns, rc = 0;
    const auto v = codes(i, c.start * scale, c.scode, 110, &ns, &rc);
    ASSERT_EQ(rc, 0) << c.interval;
    const int extra = c.scode > c.ns ? 0 : c.scode;
    bool sawLong = false;
    for (int t = 0; t < 110; ++t) {
      const double d = c.start + 7 * t;
      const int pos = weekPos(d, c.first);
      int expected = pos % c.ns;
      if (pos == 52 && c.ns == 52) {
        expected = extra;
        sawLong = true;
      }
      EXPECT_EQ(v[static_cast<std::size_t>(t)], expected) << c.interval << " scode " << c.scode << " t=" << t;
    }
    EXPECT_TRUE(sawLong || c.ns != 52) << "the case must cross a long year: " << c.interval;
  }
}

TEST(CycleScd, TwoWeekGrid) {
  // WEEK2 boundaries fall on the Sundays 1959-12-27, 1960-01-10, ...: every
  // 14 days from day -5. The year's first interval holds January 4.
  const INTERVAL i = iv("WEEK2");
  int ns = 26, rc = 0;
  const double start = ymd(2003, 10, 5);  // a WEEK2 boundary: (day + 5) % 14 == 0
  ASSERT_EQ(std::fmod(start + 5, 14.0), 0.0);
  const auto v = codes(i, start, 0, 40, &ns, &rc);
  ASSERT_EQ(rc, 0);
  auto start2 = [](double x) { return x - std::fmod(std::fmod(x + 5, 14.0) + 14.0, 14.0); };
  for (int t = 0; t < 40; ++t) {
    const double d = start + 14 * t;
    const int y = yearOf(d);
    double y0 = start2(ymd(y, 1, 4));
    const double y1 = start2(ymd(y + 1, 1, 4));
    if (d >= y1) y0 = y1;
    const int pos = static_cast<int>((d - y0) / 14);
    EXPECT_EQ(v[static_cast<std::size_t>(t)], pos == 26 ? 0 : pos % 26) << t;
  }
}

TEST(CycleScd, WeekByWeekVariant) {
  // A shift of 83 on a 13-week grid: positions counted in plain weeks from
  // the week of January 4, then divided by 13; the long year's 53rd week
  // (position 52, quotient 4) takes scode.
  const INTERVAL i = iv("WEEK13.84");
  ASSERT_EQ(i.shiftper, 83);
  int ns = 4, rc = 0;
  const double start = ymd(2003, 6, 1);
  const auto v = codes(i, start, 3, 12, &ns, &rc);
  ASSERT_EQ(rc, 0);
  for (int t = 0; t < 12; ++t) {
    const double d = zintnx2(i, start, t);
    const double sunday = d - weekday0(d);
    const int q = weekPos(sunday, 0) / 13;
    EXPECT_EQ(v[static_cast<std::size_t>(t)], q >= 4 ? 3 : q) << t;
  }
}

TEST(CycleScd, StrictCyclesWithNegativeScode) {
  {
    // From the first Sunday on or after January 1, running on by one.
    const double start = ymd(2003, 10, 5);
    const double jan1 = ymd(2003, 1, 1);
    const double f = jan1 + (7 - weekday0(jan1)) % 7;
    int ns = 52, rc = 0;
    const auto v = codes(iv("WEEK"), start, -1, 70, &ns, &rc);
    ASSERT_EQ(rc, 0);
    const int s0 = static_cast<int>((start - f) / 7);
    for (int t = 0; t < 70; ++t) EXPECT_EQ(v[static_cast<std::size_t>(t)], (s0 + t) % 52) << t;
  }
  {
    // ISO weeks: week 53 folds to 51 through scode -1.
    int ns = 52, rc = 0;
    const auto v = codes(iv("WEEKV"), ymd(2009, 12, 28), -1, 3, &ns, &rc);
    EXPECT_EQ(v, (std::vector<int>{51, 0, 1}));
    const auto w = codes(iv("WEEKV"), ymd(2009, 12, 21), -1, 3, &ns, &rc);
    EXPECT_EQ(w, (std::vector<int>{51, 0, 1}));  // week 52, then strictly on
  }
  {
    // scode -2: 52 weeks make the cycle. Multiples of weeks are anchored on
    // Sunday 1959-12-27 (day -5), as WEEK2 is, so the cycle drifts against
    // the calendar.
    int ns = 52, rc = 0;
    const double start = ymd(2003, 10, 5);
    const auto v = codes(iv("WEEK"), start, -2, 60, &ns, &rc);
    ASSERT_EQ(rc, 0);
    const long long w0 = static_cast<long long>((start + 5) / 7);
    for (int t = 0; t < 60; ++t) EXPECT_EQ(v[static_cast<std::size_t>(t)], static_cast<int>((w0 + t) % 52)) << t;
  }
  {
    // scode -2 on months: twelve months from January 1960 are the year.
    int ns = 12, rc = 0;
    const auto v = codes(iv("MONTH"), ymd(2001, 3, 1), -2, 12, &ns, &rc);
    EXPECT_EQ(v, (std::vector<int>{2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 0, 1}));
  }
}

TEST(CycleScd, CountDifferentFromTheCycle) {
  int ns = 4, rc = 0;
  const auto v = codes(iv("MONTH"), ymd(2001, 1, 1), 0, 6, &ns, &rc);
  EXPECT_EQ(rc, 0);
  EXPECT_EQ(v, (std::vector<int>{0, 1, 2, 3, 0, 1}));
  // No cycle, but a count: codes run from the first interval.
  ns = 3;
  const auto w = codes(iv("MONTH5"), ymd(2001, 4, 1), 0, 5, &ns, &rc);
  EXPECT_EQ(rc, 0);
  EXPECT_EQ(w, (std::vector<int>{0, 1, 2, 0, 1}));
  // A one-interval cycle and a given count: the same.
  ns = 2;
  const auto y = codes(iv("YEARV"), ymd(2001, 4, 1), 0, 3, &ns, &rc);
  EXPECT_EQ(y, (std::vector<int>{0, 1, 0}));
}

TEST(CycleScd, NoSeasonsAndFailures) {
  int rc = 0;
  int ns = 0;
  auto v = codes(iv("MONTH5"), ymd(2001, 4, 1), 0, 4, &ns, &rc);
  EXPECT_EQ(rc, 1);
  EXPECT_EQ(v, (std::vector<int>{0, 0, 0, 0}));
  ns = 1;
  v = codes(iv("MONTH"), ymd(2001, 4, 1), 0, 2, &ns, &rc);
  EXPECT_EQ(rc, 1);
  EXPECT_EQ(v, (std::vector<int>{0, 0}));

  ns = 12;
  v = codes(iv("NONE"), 0, 0, 3, &ns, &rc);
  EXPECT_EQ(rc, -1);
  EXPECT_EQ(v, (std::vector<int>{0, 0, 0}));
  v = codes(iv("MONTH"), kMissing, 0, 3, &ns, &rc);
  EXPECT_EQ(rc, -1);
  EXPECT_EQ(v, (std::vector<int>{0, 0, 0}));
  v = codes(iv("MONTH"), 7e6, 0, 3, &ns, &rc);  // beyond the calendar
  EXPECT_EQ(rc, -1);
  // Stepping off the end of the calendar fails the weekly path too.
  v = codes(iv("WEEK"), 6589300, 0, 10, &ns, &rc);
  EXPECT_EQ(rc, -1);

  // Nothing to fill, and bad pointers.
  v = codes(iv("MONTH"), 0, 0, 0, &ns, &rc);
  EXPECT_EQ(rc, 0);
  EXPECT_EQ(zintscd(iv("MONTH"), 0, 0, 3, nullptr, &ns), -1);
  int out[3];
  EXPECT_EQ(zintscd(iv("MONTH"), 0, 0, 3, out, nullptr), -1);
  EXPECT_EQ(zintscd(iv("MONTH"), 0, 0, -1, out, &ns), -1);
}

TEST(CycleScd, CustomWithoutCalendar) {
  INTERVAL c{};
  c.units = 'd';
  c.intcode = static_cast<char>(kIntCustom);
  c.intper = 1;
  c.token[0] = 'F';
  c.token[1] = 'Y';
  c.tokenlen = 2;
  int rc = 0;
  int ns = -1;
  auto v = codes(c, 0, 0, 3, &ns, &rc);
  EXPECT_EQ(rc, 1);
  EXPECT_EQ(v, (std::vector<int>{0, 0, 0}));
  // With a count, a season index that can't be read counts as the first.
  ns = 3;
  v = codes(c, 0, 0, 4, &ns, &rc);
  EXPECT_EQ(rc, 0);
  EXPECT_EQ(v, (std::vector<int>{0, 1, 2, 0}));
}

TEST(CycleScd2, RecordWithOrWithoutItsCycle) {
  const double start = ymd(2001, 3, 1);
  int ref[8];
  int ns = 12;
  ASSERT_EQ(zintscd(iv("MONTH"), start, 0, 8, ref, &ns), 0);

  INTERVALX year = zintwiden(iv("YEAR"));
  INTERVALX m = zintwiden(iv("MONTH"));
  m.sinterval = &year;
  m.nseasons = 12;
  int got[8];
  ns = 12;
  ASSERT_EQ(zintscd2(&m, start, 0, 8, got, &ns), 0);
  EXPECT_EQ(std::vector<int>(got, got + 8), std::vector<int>(ref, ref + 8));

  INTERVALX bare = zintwiden(iv("MONTH"));
  ns = 12;
  ASSERT_EQ(zintscd2(&bare, start, 0, 8, got, &ns), 0);
  EXPECT_EQ(std::vector<int>(got, got + 8), std::vector<int>(ref, ref + 8));

  // scode -2 keeps the count in the record; four months from January 1960
  // make the cycle, so the codes are the month of the year modulo 4.
  INTERVALX m4 = zintwiden(iv("MONTH"));
  ns = 4;
  ASSERT_EQ(zintscd2(&m4, start, -2, 8, got, &ns), 0);
  EXPECT_EQ(m4.nseasons, 4);
  for (int t = 0; t < 8; ++t) EXPECT_EQ(got[t], (2 + t) % 4) << t;

  EXPECT_EQ(zintscd2(nullptr, start, 0, 8, got, &ns), -1);
}

// ---------------------------------------------------------------------------

TEST(CycleScy, DummyRows) {
  std::vector<double> row(53, -1.0);
  // A week inside the year, no extra column: one element set.
  zintscy(iv("WEEK"), 5, ymd(2003, 2, 2), 52, 0, row.data(), nullptr);
  for (int k = 0; k < 51; ++k) EXPECT_EQ(row[static_cast<std::size_t>(k)], k == 5 ? 1.0 : 0.0) << k;
  EXPECT_EQ(row[51], -1.0) << "wrote past nseasons - 1";
  // The last season is the reference: nothing set.
  std::fill(row.begin(), row.end(), -1.0);
  zintscy(iv("WEEK"), 51, ymd(2003, 2, 2), 52, 0, row.data(), nullptr);
  for (int k = 0; k < 51; ++k) EXPECT_EQ(row[static_cast<std::size_t>(k)], 0.0) << k;
  // Without intercept the last season has its own column.
  std::fill(row.begin(), row.end(), -1.0);
  zintscy(iv("MONTH"), 11, ymd(2003, 12, 1), 12, 1, row.data(), nullptr);
  for (int k = 0; k < 12; ++k) EXPECT_EQ(row[static_cast<std::size_t>(k)], k == 11 ? 1.0 : 0.0) << k;
  EXPECT_EQ(row[12], -1.0);
}

TEST(CycleScy, ExtraWeekSplitAcrossTheNewYear) {
  // The long week of 2003 runs from Sunday 2003-12-28 to 2004-01-03; the
  // next Sunday is 2004-01-04, so 3 of its 7 days lie in 2004.
  std::vector<double> row(52, -1.0);
  double partial = kMissing;
  zintscy(iv("WEEK"), 52, ymd(2003, 12, 28), 52, 1, row.data(), &partial);
  EXPECT_DOUBLE_EQ(partial, 3.0 / 7.0);
  EXPECT_DOUBLE_EQ(row[0], 3.0 / 7.0);
  EXPECT_DOUBLE_EQ(row[51], 4.0 / 7.0);
  for (int k = 1; k < 51; ++k) EXPECT_EQ(row[static_cast<std::size_t>(k)], 0.0) << k;
  // A given part is used as it is.
  double given = 0.25;
  zintscy(iv("WEEK"), 52, ymd(2003, 12, 28), 52, 0, row.data(), &given);
  EXPECT_DOUBLE_EQ(row[0], 0.25);
  EXPECT_DOUBLE_EQ(given, 0.25);
  // Degenerate sizes write nothing.
  zintscy(iv("WEEK"), 0, 0, 1, 0, row.data(), nullptr);
  zintscy(iv("WEEK"), 0, 0, 0, 0, nullptr, nullptr);
}

// Every family at the calendar's edges and at values that aren't dates:
// codes stay in 0 .. ns - 1 (or are scode), steps are missing or inside the
// calendar, and nothing reads or writes out of bounds.
TEST(CycleRobust, EdgesAndNonDates) {
  const char* intervals[] = {"SECOND", "MINUTE5", "HOUR", "DTHOUR3", "DAY", "DTDAY", "WEEKDAY",
                             "WEEKDAY1W3", "WEEK", "WEEK2", "DTWEEK", "WEEKV", "WEEK13.84",
                             "TENDAY", "SEMIMONTH", "MONTH", "MONTH5", "DTMONTH", "R445MON",
                             "R454QTR", "R544YR", "QTR", "SEMIYEAR", "YEAR", "YEAR3.4", "YEARV",
                             "OBS", "OBS3"};
  const double inf = std::numeric_limits<double>::infinity();
  const double values[] = {kFirstDate, kLastDate, kLastDate - 3, 0, -1, kFirstDate * 86400.0,
                           kLastDate * 86400.0, 1e300, -1e300, inf, -inf,
                           std::numeric_limits<double>::quiet_NaN(), kMissing, skMissVal('M')};
  for (const char* text : intervals) {
    INTERVAL i;
    ASSERT_EQ(zintstr(text, -1, &i), 0) << text;
    const INTERVALX x = zintwiden(i);
    for (double v : values) {
      INTERVAL s;
      int ns = 0;
      const int rc = zintsea(&i, v, &s, &ns);
      EXPECT_TRUE(rc == 0 || rc == 1) << text << " " << v;
      for (int scode : {0, -1, 5}) {
        int codes[6] = {-7, -7, -7, -7, -7, -7};
        int want = 4;
        const int r = zintscd(i, v, scode, 5, codes, &want);
        EXPECT_TRUE(r == 0 || r == 1 || r == -1) << text << " " << v;
        for (int t = 0; t < 5; ++t) {
          const int c = codes[t];
          EXPECT_TRUE((c >= 0 && c < want) || c == scode) << text << " " << v << " code " << c;
        }
        EXPECT_EQ(codes[5], -7) << text;
      }
      for (double n : {0.0, 1.0, -1.0, 1e12}) {
        const double r = zintnx_seas(&x, v, n, nullptr);
        if (!wzmis(r)) {
          const double day = i.units == 's' ? std::floor(r / 86400) : r;
          // Day-based grids keep to the calendar; time grids step freely.
          if (i.units != 'o' && i.intcode > kIntHour) {
            EXPECT_GE(day, kFirstDate) << text << " " << v << " " << n;
            EXPECT_LE(day, kLastDate) << text << " " << v << " " << n;
          }
        }
        (void)zintck_seas(&x, v, r, nullptr);
      }
      char name[16];
      short nl = 0, w1 = 0, w2 = 0;
      zintfmp(&i, v, v + 3600, name, &nl, &w1, &w2);
      EXPECT_GT(nl, 0);
      EXPECT_LE(w1, 20);
      zintfmm(&i, v, name, &nl, &w1, &w2);
      EXPECT_GT(nl, 0);
    }
  }
}

// Season codes of single dates against the table that Python's datetime
// computes (tests/calendar/gen_date_oracle.py): month and day of the month,
// weekday, and the ISO 8601 week (a week 53 takes scode, here 52).
TEST(CycleScdOracle, SingleDatesAgainstPythonDatetime) {
  const auto rows = testing::loadDateOracle();
  ASSERT_GT(rows.size(), 1000u);
  struct Grid {
    const char* text;
    int ns;
  };
  const Grid grids[] = {{"MONTH", 12}, {"QTR", 4},    {"TENDAY", 36}, {"SEMIMONTH", 24},
                        {"DAY", 7},    {"WEEKDAY", 5}, {"WEEKV", 52}};
  for (const Grid& g : grids) {
    INTERVAL i;
    ASSERT_EQ(zintstr(g.text, -1, &i), 0);
    int checked = 0;
    for (const auto& r : rows) {
      // The cycle of the first days starts before the calendar (checked
      // below); the weekly look-ahead needs the next week.
      if (r.day < kFirstDate + 14 || r.day > kLastDate - 14) continue;
      int ns = g.ns;
      int code = -1;
      ASSERT_EQ(zintscd(i, r.day, 52, 1, &code, &ns), 0) << g.text << " day " << r.day;
      int expected = 0;
      const std::string name = g.text;
      if (name == "MONTH") expected = r.m - 1;
      else if (name == "QTR") expected = (r.m - 1) / 3;
      else if (name == "TENDAY") expected = 3 * (r.m - 1) + (r.d > 10) + (r.d > 20);
      else if (name == "SEMIMONTH") expected = 2 * (r.m - 1) + (r.d > 15);
      else if (name == "DAY") expected = r.wday - 1;
      else if (name == "WEEKDAY") expected = (r.wday >= 2 && r.wday <= 6) ? r.wday - 2 : 4;  // a day off goes with Friday
      else expected = r.isow == 53 ? 52 : r.isow - 1;
      EXPECT_EQ(code, expected) << g.text << " " << r.y << "-" << r.m << "-" << r.d;
      ++checked;
    }
    EXPECT_GT(checked, 1000) << g.text;
  }
  // 1582-01-01 is a Friday; its week began on 1581-12-27, before the
  // calendar, so its day-of-week code can't be placed.
  INTERVAL day;
  ASSERT_EQ(zintstr("DAY", -1, &day), 0);
  int ns = 7, code = 9;
  EXPECT_EQ(zintscd(day, kFirstDate, 0, 1, &code, &ns), -1);
  EXPECT_EQ(code, 0);
  EXPECT_EQ(zintscd(day, kFirstDate + 2, 0, 1, &code, &ns), 0);  // the first Sunday
  EXPECT_EQ(code, 0);
}

}  // namespace
}  // namespace qvt
