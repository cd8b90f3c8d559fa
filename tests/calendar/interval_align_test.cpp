
#include "calendar_fixture.hpp"

namespace qvt {
namespace {

using testing::iv;
using testing::ymd;

constexpr double kDay = 86400.0;

double at(int y, int m, int d, int hh, int mm, int ss) {
  return ymd(y, m, d) * kDay + hh * 3600.0 + mm * 60.0 + ss;
}

struct AlignCase {
  const char* what;
  const char* interval;
  double x, n;
  const char* align;
  double expect;
};

TEST(IntervalAlign, HandWorked) {
  const AlignCase cases[] = {
      {"begin", "MONTH", ymd(2000, 1, 31), 1, "B", ymd(2000, 2, 1)},
      {"unknown letter acts as begin", "MONTH", ymd(2000, 1, 31), 1, "X", ymd(2000, 2, 1)},
      {"end", "MONTH", ymd(2000, 1, 31), 1, "E", ymd(2000, 2, 29)},
      {"lower case is no alignment letter", "MONTH", ymd(2000, 1, 31), 1, "e", ymd(2000, 2, 1)},
      {"middle: Feb 1 + (29 - 1) / 2", "MONTH", ymd(2000, 1, 31), 1, "M", ymd(2000, 2, 15)},
      {"same day, clipped to February's end", "MONTH", ymd(2000, 1, 31), 1, "S", ymd(2000, 2, 29)},
      {"same day, common year", "MONTH", ymd(2001, 1, 31), 1, "S", ymd(2001, 2, 28)},
      {"same day, fits", "MONTH", ymd(2001, 1, 28), 1, "S", ymd(2001, 2, 28)},
      {"same day backwards", "MONTH", ymd(2001, 3, 31), -1, "S", ymd(2001, 2, 28)},
      {"year: same month and day", "YEAR", ymd(2000, 3, 15), 1, "S", ymd(2001, 3, 15)},
      {"year: leap day to a common year", "YEAR", ymd(2000, 2, 29), 1, "S", ymd(2001, 2, 28)},
      {"year end", "YEAR", ymd(2000, 3, 15), 0, "E", ymd(2000, 12, 31)},
      {"quarter: Mar 31 to Jun 30", "QTR", ymd(2000, 3, 31), 1, "S", ymd(2000, 6, 30)},
      {"quarter middle", "QTR", ymd(2000, 3, 31), 0, "M", ymd(2000, 2, 15)},
      {"week: same weekday", "WEEK", ymd(2000, 1, 5), 1, "S", ymd(2000, 1, 12)},
      {"week middle is Wednesday", "WEEK", ymd(2000, 1, 8), 0, "M", ymd(2000, 1, 5)},
      {"week end is Saturday", "WEEK", ymd(2000, 1, 3), 0, "E", ymd(2000, 1, 8)},
      {"semimonth: 16th half-month of January to February's", "SEMIMONTH", ymd(2000, 1, 31), 2, "S",
       ymd(2000, 2, 29)},
      {"tenday end", "TENDAY", ymd(2000, 2, 25), 0, "E", ymd(2000, 2, 29)},
      // ISO 2009 has 53 weeks, 2010 has 52: Thursday of week 53 has no
      // counterpart, so the last day of ISO 2010 (Sunday 2011-01-02) is taken.
      {"ISO year, week 53 to a 52-week year", "YEARV", ymd(2009, 12, 31), 1, "S", ymd(2011, 1, 2)},
      // 2009-03-04 is ISO 2009 week 10 day 3; week 10 of 2010 starts on
      // 2010-01-04 + 63 days = March 8.
      {"ISO year, same week and day", "YEARV", ymd(2009, 3, 4), 1, "S", ymd(2010, 3, 10)},
      {"ISO year end", "YEARV", ymd(2009, 3, 4), 0, "E", ymd(2010, 1, 3)},
      // 4-4-5 of 2009: month 2 starts Jan 26, month 3 Feb 23 (5 weeks), month
      // 4 Mar 30 (4 weeks), month 5 Apr 27.
      {"retail month, same day", "R445MON", ymd(2009, 1, 30), 1, "S", ymd(2009, 2, 27)},
      {"retail month, 5th week into a 4-week month", "R445MON", ymd(2009, 3, 29), 1, "S",
       ymd(2009, 4, 26)},
      {"retail month end", "R445MON", ymd(2009, 2, 23), 0, "E", ymd(2009, 3, 29)},
      {"retail year end is the ISO year end", "R445YR", ymd(2009, 6, 1), 0, "E", ymd(2010, 1, 3)},
      // Working days: WEEKDAY2 pairs {Tue 5, Wed 6}, {Thu 7, Fri 8}, {Mon 11, Tue 12} of 1960.
      {"working-day pairs, second of a pair", "WEEKDAY2", 5, 1, "S", 7},
      // The end is the day before the next start (Monday 11): a Sunday.
      {"working-day pairs, end", "WEEKDAY2", 5, 1, "E", 9},
      // A Saturday lies one day after the start of its interval (Friday),
      // and keeps that place.
      {"working days, Saturday keeps its place", "WEEKDAY", ymd(2000, 1, 8), 0, "S",
       ymd(2000, 1, 8)},
      {"working days, Saturday a week on", "WEEKDAY", ymd(2000, 1, 8), 5, "S", ymd(2000, 1, 15)},
      {"observations: end is the last number", "OBS3", 7, 0, "E", 8},
      {"observations: same place", "OBS3", 7, 1, "S", 10},
      {"observations: middle", "OBS4", 9, 0, "M", 9},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(zintnx3(iv(c.interval), c.x, c.n, c.align, nullptr), c.expect)
        << c.what << " (" << c.interval << ", " << c.align << ")";
  }
}

TEST(IntervalAlign, DatetimeGrids) {
  // The time of day survives "S" only.
  EXPECT_EQ(zintnx3(iv("DTDAY"), at(2000, 1, 5, 5, 0, 0), 2, "S", nullptr), at(2000, 1, 7, 5, 0, 0));
  EXPECT_EQ(zintnx3(iv("DTDAY"), at(2000, 1, 5, 5, 0, 0), 2, "B", nullptr), at(2000, 1, 7, 0, 0, 0));
  EXPECT_EQ(zintnx3(iv("DTDAY"), at(2000, 1, 5, 5, 0, 0), 0, "E", nullptr), at(2000, 1, 5, 23, 59, 59));
  EXPECT_EQ(zintnx3(iv("DTMONTH"), at(2000, 1, 31, 13, 0, 0), 1, "S", nullptr), at(2000, 2, 29, 13, 0, 0));
  EXPECT_EQ(zintnx3(iv("DTMONTH"), at(2000, 1, 20, 13, 0, 0), 1, "S", nullptr), at(2000, 2, 20, 13, 0, 0));
  EXPECT_EQ(zintnx3(iv("DTMONTH"), at(2000, 1, 20, 13, 0, 0), 0, "E", nullptr), at(2000, 1, 31, 23, 59, 59));
  // Middle of a 29-day month in seconds: (29 * 86400 - 1) / 2 on from its start.
  EXPECT_EQ(zintnx3(iv("DTMONTH"), at(2000, 2, 3, 0, 0, 0), 0, "M", nullptr),
            ymd(2000, 2, 1) * kDay + std::floor((29 * kDay - 1) / 2));
  EXPECT_EQ(zintnx3(iv("HOUR"), at(2000, 1, 5, 13, 25, 10), 1, "S", nullptr), at(2000, 1, 5, 14, 25, 10));
  EXPECT_EQ(zintnx3(iv("HOUR"), at(2000, 1, 5, 13, 25, 10), 1, "E", nullptr), at(2000, 1, 5, 14, 59, 59));
  EXPECT_EQ(zintnx3(iv("DTWEEKDAY"), at(2000, 1, 8, 9, 30, 0), 0, "S", nullptr), at(2000, 1, 8, 9, 30, 0));
  EXPECT_EQ(zintnx3(iv("DTWEEKDAY"), at(2000, 1, 8, 9, 30, 0), 0, "B", nullptr), at(2000, 1, 7, 0, 0, 0));
}

TEST(IntervalAlign, SubIntervalCache) {
  const INTERVAL year = iv("YEAR");
  // A cleared record is filled with the shift interval and kept.
  INTERVAL sub;
  EXPECT_EQ(zintnx3(year, ymd(2000, 3, 1), 1, "S", &sub), ymd(2001, 3, 1));
  EXPECT_EQ(sub.intcode, kIntMonth);
  EXPECT_EQ(sub.intper, 1);
  // A filled record is used as it stands: by days, March 1 of a leap year
  // is day 61 of the year, and day 61 of 2001 is March 2.
  INTERVAL days = iv("DAY");
  EXPECT_EQ(zintnx3(year, ymd(2000, 3, 1), 1, "S", &days), ymd(2001, 3, 2));
  EXPECT_EQ(days.intcode, kIntDay);
}

TEST(IntervalAlign, MissingAndRangeEnds) {
  const INTERVAL month = iv("MONTH"), day = iv("DAY");
  for (const char* a : {"B", "E", "M", "S"}) {
    EXPECT_TRUE(wzmis(zintnx3(month, ymd(2000, 1, 1), kMissing, a, nullptr))) << a;
    EXPECT_TRUE(wzmis(zintnx3(month, kMissing, 1, a, nullptr))) << a;
    EXPECT_TRUE(wzmis(zintnx3(month, skMissVal('M'), 1, a, nullptr))) << a;
    EXPECT_TRUE(wzmis(zintnx3(day, 6589335, 1, a, nullptr))) << a;
  }
  // The last day has no end: the next interval can't be formed.
  EXPECT_TRUE(wzmis(zintnx3(day, 6589335, 0, "E", nullptr)));
  EXPECT_EQ(zintnx3(day, 6589335, 0, "B", nullptr), 6589335.0);
  // Only "E" goes on when the target's start lies before the calendar: the
  // end of December 1581 is the day before 1582-01-01.
  EXPECT_TRUE(wzmis(zintnx3(month, ymd(1582, 1, 15), -1, "B", nullptr)));
  EXPECT_EQ(zintnx3(month, ymd(1582, 1, 15), -1, "E", nullptr), -138062.0);
  // A null alignment is "B".
  EXPECT_EQ(zintnx3(month, ymd(2000, 1, 31), 1, nullptr, nullptr), ymd(2000, 2, 1));
  // Reserved codes and custom intervals return the plain step under "S".
  INTERVAL reserved;
  reserved.intcode = 28;
  reserved.units = 'd';
  reserved.intper = 1;
  EXPECT_TRUE(wzmis(zintnx3(reserved, 100, 1, "S", nullptr)));
}

TEST(IntervalShift, UnitsOfTheShift) {
  struct Case {
    const char* interval;
    const char* shift;  // canonical text of the shift interval
    char units;
  };
  const Case cases[] = {
      {"NONE", "NONE", 'u'},          {"OBS3.2", "OBS", 'o'},
      {"SECOND5", "SECOND", 's'},     {"DTHOUR", "HOUR", 's'},
      {"MINUTE", "MINUTE", 's'},      {"DAY3", "DAY", 'd'},
      {"WEEK2.3", "DAY", 'd'},        {"DTWEEKV", "DTDAY", 's'},
      {"WEEKDAY", "WEEKDAY", 'd'},    {"WEEKDAY67W2", "WEEKDAY67W", 'd'},
      {"DTWEEKDAY1W", "DTWEEKDAY1W", 's'},
      {"TENDAY2", "TENDAY", 'd'},     {"DTSEMIMONTH", "DTSEMIMONTH", 's'},
      {"QTR", "MONTH", 'd'},          {"YEAR.4", "MONTH", 'd'},
      {"DTSEMIYEAR", "DTMONTH", 's'}, {"MONTH4", "MONTH", 'd'},
      {"R445QTR", "R445MON", 'd'},    {"R454YR", "R454MON", 'd'},
      {"DTR544YR", "DTR544MON", 's'}, {"R544MON2", "R544MON", 'd'},
      {"YEARV", "WEEKV", 'd'},        {"DTYEARV", "DTWEEKV", 's'},
  };
  for (const auto& c : cases) {
    INTERVAL s;
    ASSERT_EQ(zintshft(iv(c.interval), &s), 0) << c.interval;
    char buf[32];
    int len = sizeof buf;
    ASSERT_EQ(zinti2s(buf, &len, &s), 0);
    EXPECT_EQ(std::string(buf, static_cast<std::size_t>(len)), c.shift) << c.interval;
    EXPECT_EQ(s.units, c.units) << c.interval;
    EXPECT_EQ(s.intper, 1) << c.interval;
    EXPECT_EQ(s.shiftper, 0) << c.interval;
  }
  INTERVAL reserved;
  reserved.intcode = 38;
  INTERVAL s = iv("MONTH");
  EXPECT_EQ(zintshft(reserved, &s), 2);
  EXPECT_EQ(s.intcode, 0);
  EXPECT_EQ(s.tokenlen, 0);
}

TEST(IntervalWholeCount, CountByTheSameDay) {
  struct Case {
    const char* what;
    const char* interval;
    double d0, d1, expect;
  };
  const Case cases[] = {
      {"a day short of a year", "YEAR", ymd(2000, 3, 15), ymd(2001, 3, 14), 0},
      {"a whole year", "YEAR", ymd(2000, 3, 15), ymd(2001, 3, 15), 1},
      {"Jan 31 to Feb 28: February's end counts", "MONTH", ymd(2001, 1, 31), ymd(2001, 2, 28), 1},
      {"Jan 31 to Feb 27", "MONTH", ymd(2001, 1, 31), ymd(2001, 2, 27), 0},
      {"same day", "MONTH", ymd(2001, 1, 31), ymd(2001, 1, 31), 0},
      {"backwards, past the same day", "MONTH", ymd(2001, 3, 15), ymd(2001, 2, 10), -2},
      {"backwards, short of it", "MONTH", ymd(2001, 3, 15), ymd(2001, 2, 20), -1},
      {"weeks", "WEEK", ymd(2000, 1, 5), ymd(2000, 1, 18), 1},
      {"days", "DAY", 10, 20, 10},
  };
  for (const auto& c : cases) {
    const INTERVALX x = zintwiden(iv(c.interval));
    EXPECT_EQ(zintck3(x, c.d0, c.d1), c.expect) << c.what;
  }
  const INTERVALX m = zintwiden(iv("MONTH"));
  EXPECT_TRUE(wzmis(zintck3(m, kMissing, 100)));
  EXPECT_TRUE(wzmis(zintck3(m, 100, skMissVal('Z'))));
  EXPECT_TRUE(wzmis(zintck3(m, 100, 6589336)));
}

}  // namespace
}  // namespace qvt
