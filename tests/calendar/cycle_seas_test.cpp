// Steps and counts in phase with a cycle, and the start of Sunday-based week
// years. The week years are found independently from the weekday of
// January 4; single dates are worked by hand from a calendar (noted beside
// each case).

#include "calendar_fixture.hpp"

namespace qvt {
namespace {

using testing::iv;
using testing::ymd;

INTERVALX parsex(const char* text) {
  INTERVAL i;
  EXPECT_EQ(zintstr(text, -1, &i), 0) << text;
  return zintwiden(i);
}

int weekday0(double d) { return static_cast<int>(hostWeekday(d)) - 1; }
int yearOf(double d) { return static_cast<int>(hostYear(d)); }

// The Sunday on or before January 4 of year y.
double firstSunday(int y) {
  const double jan4 = ymd(y, 1, 4);
  return jan4 - weekday0(jan4);
}
bool longYear(int y) { return firstSunday(y + 1) - firstSunday(y) == 371; }

// The Sunday-based week year of a date.
int sundayYear(double d) {
  const int y = yearOf(d);
  if (d < firstSunday(y)) return y - 1;
  if (d >= firstSunday(y + 1)) return y + 1;
  return y;
}

TEST(CycleYrse, SweepAgainstJanuary4) {
  for (double d = ymd(1995, 1, 1); d < ymd(2013, 1, 1); d += 3) {
    int year = 0;
    double ds1 = 0;
    const double ds0 = zintyrse(d, &year, &ds1);
    const int y = sundayYear(d);
    ASSERT_EQ(year, y) << d;
    EXPECT_EQ(ds0, firstSunday(y)) << d;
    EXPECT_EQ(ds1, firstSunday(y + 1)) << d;
    EXPECT_LE(ds0, d);
    EXPECT_LT(d, ds1);
  }
  // 2003 holds 53 Sunday-based weeks: 2002-12-29 up to 2004-01-04.
  int year = 0;
  double ds1 = 0;
  EXPECT_EQ(zintyrse(ymd(2004, 1, 3), &year, &ds1), ymd(2002, 12, 29));
  EXPECT_EQ(year, 2003);
  EXPECT_EQ(ds1, ymd(2004, 1, 4));
  EXPECT_EQ(zintyrse(ymd(2002, 12, 29), &year, nullptr), ymd(2002, 12, 29));
  EXPECT_EQ(year, 2003);
  EXPECT_TRUE(wzmis(zintyrse(kMissing, &year, &ds1)));
}

TEST(CycleNxSeas, WeeksInFoldedSundayYears) {
  INTERVALX w = parsex("WEEK");  // its cycle is derived: YEAR of 52
  // Inside a year a step is a plain week step.
  for (double d = firstSunday(2005) + 7; d < firstSunday(2005) + 45 * 7; d += 7) {
    for (int n : {0, 1, 5}) {
      EXPECT_EQ(zintnx_seas(&w, d, n, nullptr), d + 7 * n) << d << " " << n;
      EXPECT_EQ(zintck_seas(&w, d, d + 7 * n, nullptr), n) << d << " " << n;
    }
  }
  // 2003-06-01 is week 23 of 2003 (from 2002-12-29). 30 weeks on is
  // position 52: the next cycle year, which after the long year 2003 starts
  // a week early, on 2003-12-28 (its 53rd week).
  EXPECT_EQ(zintnx_seas(&w, ymd(2003, 6, 1), 30, nullptr), ymd(2003, 12, 28));
  // 2004 has 52 weeks (2004-01-04 to 2005-01-02): no early start.
  EXPECT_EQ(zintnx_seas(&w, ymd(2004, 6, 6), 30, nullptr), ymd(2005, 1, 2));
  // From week 23 of 2003 to week 23 of 2004 is one cycle of 52.
  EXPECT_EQ(zintck_seas(&w, ymd(2003, 6, 1), ymd(2004, 6, 6), nullptr), 52);

  // With 53 seasons the weeks are plain.
  INTERVALX w53 = parsex("WEEK");
  w53.nseasons = 53;
  EXPECT_EQ(zintnx_seas(&w53, ymd(2003, 6, 1), 31, nullptr), ymd(2004, 1, 4));
  EXPECT_EQ(zintck_seas(&w53, ymd(2003, 6, 1), ymd(2004, 6, 6), nullptr), 53);
}

TEST(CycleNxSeas, IsoWeeksInIsoYears) {
  INTERVALX v = parsex("WEEKV");  // derived cycle: YEARV of 53
  // 2009-06-01 is ISO 2009 week 23; 2009 has 53 weeks, from 2008-12-29.
  EXPECT_EQ(zintnx_seas(&v, ymd(2009, 6, 1), 3, nullptr), ymd(2009, 6, 22));
  EXPECT_EQ(zintnx_seas(&v, ymd(2009, 6, 1), 30, nullptr), ymd(2009, 12, 28));  // week 53
  EXPECT_EQ(zintnx_seas(&v, ymd(2009, 6, 1), 31, nullptr), ymd(2010, 1, 4));    // next year
  EXPECT_EQ(zintck_seas(&v, ymd(2009, 6, 1), ymd(2010, 6, 7), nullptr), 53);

  // With 52 seasons week 53 is placed with week 52 (2009-12-21), and a
  // count across the year is 52 for the same week number.
  INTERVALX v52 = parsex("WEEKV");
  v52.nseasons = 52;
  EXPECT_EQ(zintnx_seas(&v52, ymd(2009, 12, 28), 0, nullptr), ymd(2009, 12, 21));
  EXPECT_EQ(zintck_seas(&v52, ymd(2009, 6, 1), ymd(2010, 6, 7), nullptr), 52);
}

TEST(CycleNxSeas, WeekGridOnTheFirstWorkingDay) {
  struct Case {
    const char* weekdays;
    double date;
    double n;
    double expected;
  };
  // 2005-07-14 is a Thursday.
  const Case cases[] = {
      {"WEEKDAY", ymd(2005, 7, 14), 0, ymd(2005, 7, 11)},     // Monday weeks
      {"WEEKDAY", ymd(2005, 7, 14), 1, ymd(2005, 7, 18)},
      {"WEEKDAY", ymd(2005, 7, 10), 0, ymd(2005, 7, 4)},      // a Sunday is in the week before
      {"WEEKDAY12W", ymd(2005, 7, 14), 0, ymd(2005, 7, 12)},  // Tuesday weeks
      {"WEEKDAY67W", ymd(2005, 7, 14), -1, ymd(2005, 7, 3)},  // Sunday weeks
  };
  for (const Case& c : cases) {
    const INTERVALX wd = parsex(c.weekdays);
    const INTERVALX w = parsex("WEEK");
    EXPECT_EQ(zintnx_seas(&w, c.date, c.n, &wd), c.expected) << c.weekdays << " " << c.n;
  }
  const INTERVALX wd = parsex("WEEKDAY");
  const INTERVALX dtw = parsex("DTWEEK");
  EXPECT_EQ(zintnx_seas(&dtw, ymd(2005, 7, 14) * 86400 + 5000, 0, &wd), ymd(2005, 7, 11) * 86400);
}

TEST(CycleNxSeas, SundayYearsAlignedToWeeks) {
  const INTERVALX year = parsex("YEAR");
  const INTERVALX week = parsex("WEEK");  // no count: a folding cycle of 52
  INTERVALX week53 = parsex("WEEK");
  week53.nseasons = 53;

  // Sweep: the Sunday year of the date, moved to the next one from its
  // 52nd week on; it starts a week early after a long year.
  for (double d = ymd(1996, 1, 1); d < ymd(2011, 1, 1); d += 5) {
    int y = sundayYear(d);
    if (d >= firstSunday(y) + 51 * 7) ++y;
    const double expected = firstSunday(y) - (longYear(y - 1) ? 7 : 0);
    ASSERT_EQ(zintnx_seas(&year, d, 0, &week), expected) << d;
    EXPECT_EQ(zintnx_seas(&year, d, 0, &week53), firstSunday(sundayYear(d))) << d;
    for (int k : {-2, 1, 3}) {
      const double moved = zintnx_seas(&year, d, k, &week);
      EXPECT_EQ(zintck_seas(&year, d, moved, &week), k) << d << " " << k;
    }
  }
  // By hand: 2004 follows the long 2003, so it starts on 2003-12-28; 2005
  // starts on 2005-01-02; 2005-12-25 lies in week 52 of 2005 and counts to
  // 2006, which starts on 2006-01-01.
  EXPECT_EQ(zintnx_seas(&year, ymd(2004, 7, 14), 0, &week), ymd(2003, 12, 28));
  EXPECT_EQ(zintnx_seas(&year, ymd(2005, 7, 14), 0, &week), ymd(2005, 1, 2));
  EXPECT_EQ(zintnx_seas(&year, ymd(2005, 7, 14), -1, &week), ymd(2003, 12, 28));
  EXPECT_EQ(zintnx_seas(&year, ymd(2005, 12, 25), 0, &week), ymd(2006, 1, 1));
  EXPECT_EQ(zintnx_seas(&year, ymd(2004, 7, 14), 0, &week53), ymd(2004, 1, 4));
  EXPECT_EQ(zintck_seas(&year, ymd(2005, 7, 14), ymd(2005, 12, 25), &week), 1);
  EXPECT_EQ(zintck_seas(&year, ymd(2005, 7, 14), ymd(2005, 12, 25), &week53), 0);

  const INTERVALX year2 = parsex("YEAR2");
  EXPECT_EQ(zintnx_seas(&year2, ymd(2005, 7, 14), 1, &week), ymd(2006, 12, 31));  // 2007 starts 2006-12-31
  EXPECT_EQ(zintck_seas(&year2, ymd(2005, 7, 14), ymd(2009, 7, 14), &week), 2);
}

TEST(CycleNxSeas, YearsAndSemimonthsOnWorkingDays) {
  const INTERVALX wd = parsex("WEEKDAY");
  const INTERVALX wd6 = parsex("WEEKDAY1W");  // Saturday works
  const INTERVALX year = parsex("YEAR");
  const INTERVALX semi = parsex("SEMIMONTH");
  // 2006-01-01 is a Sunday, 2005-07-16 a Saturday.
  EXPECT_EQ(zintnx_seas(&year, ymd(2005, 7, 14), 1, &wd), ymd(2006, 1, 2));
  EXPECT_EQ(zintnx_seas(&semi, ymd(2005, 7, 14), 1, &wd), ymd(2005, 7, 18));
  EXPECT_EQ(zintnx_seas(&semi, ymd(2005, 7, 14), 1, &wd6), ymd(2005, 7, 16));
  EXPECT_EQ(zintnx_seas(&semi, ymd(2005, 7, 14), 0, &wd), ymd(2005, 7, 1));  // a Friday
}

TEST(CycleNxSeas, PlainAndBadArguments) {
  const INTERVALX m = parsex("MONTH");
  EXPECT_EQ(zintnx_seas(&m, ymd(2005, 7, 14), 2, nullptr), ymd(2005, 9, 1));
  EXPECT_EQ(zintck_seas(&m, ymd(2005, 7, 14), ymd(2005, 9, 1), nullptr), 2);
  EXPECT_TRUE(wzmis(zintnx_seas(nullptr, 0, 1, nullptr)));
  EXPECT_TRUE(wzmis(zintnx_seas(&m, kMissing, 1, nullptr)));
  EXPECT_TRUE(wzmis(zintnx_seas(&m, 0, kMissing, nullptr)));
  EXPECT_TRUE(wzmis(zintck_seas(&m, 0, kMissing, nullptr)));
  EXPECT_TRUE(wzmis(zintck_seas(nullptr, 0, 1, nullptr)));
  const INTERVALX w = parsex("WEEK");
  EXPECT_TRUE(wzmis(zintnx_seas(&w, 6589330, 3, nullptr)));  // past the calendar's end
  const INTERVALX year = parsex("YEAR");
  EXPECT_TRUE(wzmis(zintnx_seas(&year, ymd(2005, 7, 14), 1e9, &w)));
}

}  // namespace
}  // namespace qvt
