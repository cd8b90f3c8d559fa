#include "host_test_util.hpp"

namespace qvt {
namespace {

TEST(HostDateOracle, AgreesWithPythonDatetime) {
  const auto& rows = testing::dateOracle();
  ASSERT_GT(rows.size(), 3000u);
  for (const auto& r : rows) {
    SCOPED_TRACE(::testing::Message() << r.y << '-' << r.m << '-' << r.d);
    EXPECT_EQ(hostMdyToDate(r.m, r.d, r.y), static_cast<double>(r.day));
    EXPECT_EQ(hostMdy(r.m, r.d, r.y), static_cast<double>(r.day));
    for (const double frac : {0.0, 0.5, 0.999}) {  // a fraction of a day belongs to the same day
      int m = 0, d = 0, y = 0;
      ASSERT_EQ(hostDateToMdy(r.day + frac, &m, &d, &y), 0);
      EXPECT_EQ(y * 10000 + m * 100 + d, r.y * 10000 + r.m * 100 + r.d) << frac;
      EXPECT_EQ(hostWeekday(r.day + frac), r.wday) << frac;
      EXPECT_EQ(hostYear(r.day + frac), r.y) << frac;
    }
  }
}

// Every day of the calendar: the conversion is a bijection of consecutive
// days onto consecutive civil dates. The successor of a civil date is worked
// out by the month lengths, independently of the day arithmetic.
TEST(HostDateRoundTrip, EveryDayFollowsTheDayBefore) {
  int pm = 12, pd = 31, py = 1581;
  for (long x = -138061; x <= 6589335; ++x) {
    int m = 0, d = 0, y = 0;
    ASSERT_EQ(hostDateToMdy(static_cast<double>(x), &m, &d, &y), 0) << x;
    const bool leap = (py % 4 == 0 && py % 100 != 0) || py % 400 == 0;
    const int len[] = {31, leap ? 29 : 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    int em = pm, ed = pd + 1, ey = py;
    if (ed > len[pm - 1]) {
      ed = 1;
      if (++em > 12) {
        em = 1;
        ++ey;
      }
    }
    ASSERT_TRUE(m == em && d == ed && y == ey) << x;
    if (d == 1 || d == 28 || x % 97 == 0) {
      ASSERT_EQ(hostMdyToDate(m, d, y), static_cast<double>(x));
    }
    pm = m;
    pd = d;
    py = y;
  }
  EXPECT_EQ(py * 10000 + pm * 100 + pd, 200001226);  // day 6589335
}

TEST(HostDateRange, InvalidDaysAreMissing) {
  // month 0 and 13, day 0, April 31, Feb 29 of 1900, Feb 30, before 1582,
  // after the last day, year 20001, a negative year.
  const int cases[][3] = {{0, 1, 2000},  {13, 1, 2000},   {1, 0, 2000},    {4, 31, 2000}, {2, 29, 1900},
                          {2, 30, 2000}, {12, 31, 1581}, {12, 27, 20000}, {1, 1, 20001}, {1, 1, -5}};
  for (const auto& c : cases) {
    EXPECT_EQ(wzmis(hostMdyToDate(c[0], c[1], c[2])), 1) << c[0] << "/" << c[1] << "/" << c[2];
    EXPECT_EQ(wzmis(hostMdy(c[0], c[1], c[2])), 1) << c[0] << "/" << c[1] << "/" << c[2];
  }
  EXPECT_EQ(hostMdyToDate(12, 26, 20000), 6589335.0);
  EXPECT_EQ(hostMdyToDate(2, 29, 2400), hostMdyToDate(3, 1, 2400) - 1);
  // Double arguments must be whole and finite.
  EXPECT_EQ(hostMdy(3.0, 1.0, 2000.0), 14670.0);  // 40 * 365 + 10 leap days + 31 + 29
  for (const double bad : {3.5, 1.25, kMissing, skMissVal('B'), std::nan(""), 1e12}) {
    EXPECT_EQ(wzmis(hostMdy(bad, 1, 2000)), 1) << bad;
    EXPECT_EQ(wzmis(hostMdy(3, bad, 2000)), 1) << bad;
    EXPECT_EQ(wzmis(hostMdy(3, 1, bad)), 1) << bad;
  }
}

TEST(HostDateRange, UnconvertibleValues) {
  const double bad[] = {kMissing, skMissVal('Z'), std::nan(""), -std::numeric_limits<double>::infinity(),
                        -138061.5, 6589336.0, 1e300};
  for (double v : bad) {
    int m = -7, d = -7, y = -7;
    EXPECT_NE(hostDateToMdy(v, &m, &d, &y), 0) << v;
    EXPECT_EQ(m * 100 + d * 10 + y, -777) << "outputs left alone for " << v;
    EXPECT_EQ(wzmis(hostYear(v)), 1) << v;
    EXPECT_EQ(wzmis(hostWeekday(v)), 1) << v;
  }
  int y = 0;
  EXPECT_EQ(hostDateToMdy(6589335.9, nullptr, nullptr, &y), 0);
  EXPECT_EQ(y, 20000);
}

TEST(HostDateTimePart, SecondsSinceMidnight) {
  const std::pair<double, double> cases[] = {{86399.0, 86399.0}, {86400.0 * 3 + 45.5, 45.5}, {-86400.0, 0.0},
                                             {-0.25, 86399.75},  {-11928470400.0, 0.0}};  // 1582-01-01
  for (const auto& [dt, tod] : cases) EXPECT_EQ(hostTimePart(dt), tod) << dt;
  EXPECT_EQ(wzmis(hostTimePart(kMissing)), 1);
  EXPECT_EQ(wzmis(hostTimePart(std::numeric_limits<double>::infinity())), 1);
  // A tiny negative time lies just before midnight; the result must stay
  // inside [0, 86400) even where the sum rounds up.
  const double t = hostTimePart(-1e-20);
  EXPECT_GE(t, 0.0);
  EXPECT_LT(t, 86400.0);
}

}  // namespace
}  // namespace qvt
