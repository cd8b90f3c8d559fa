// Robustness: random (inconsistent) interval records, and
// every family at the calendar's edges and at values that aren't dates must
// give result codes and missing values, never undefined behaviour. Run under
// the sanitizers; the assertions check that every answer is one the
// interface allows.

#include <climits>
#include <random>

#include "calendar_fixture.hpp"

namespace qvt {
namespace {

using testing::iv;

TEST(IntervalFuzz, InconsistentRecordsGiveMissingOrNumbers) {
  std::mt19937 rng(7);
  const int codes[] = {0, 1, 10, 15, 20, 25, 27, 28, 30, 31, 35, 40, 45, 46, 47, 48, 50, 51,
                       52, 53, 55, 60, 61, 62, 63, 64, 65, 3, 99, -3};
  const char units[] = {'u', 'o', 'd', 's', 0, 'x'};
  const int pers[] = {INT_MIN, -1, 0, 1, 2, 7, 53, 1000, INT_MAX};
  const double xs[] = {0, -138061, 6589335, 1e9, -1e9, 12345.678, 4e10, -4e10, 1e152, -0.5};
  const double ns[] = {0, 1, -1, 1e6, -1e6, 9e15, -9e15, 0.5};
  std::uniform_int_distribution<int> pick(0, 1 << 20);
  const auto any = [&](const auto& from) { return from[pick(rng) % std::size(from)]; };
  for (int trial = 0; trial < 20000; ++trial) {
    INTERVAL r;
    r.intcode = static_cast<char>(any(codes));
    r.units = any(units);
    r.intper = any(pers);
    r.shiftper = any(pers);
    for (char& w : r.weekend) w = static_cast<char>(pick(rng) % 3 == 0);
    r.nweekday = static_cast<char>(pick(rng) % 9);
    r.tokenlen = static_cast<short>(pick(rng) % 40 - 5);
    std::memset(r.token, '7', sizeof r.token);
    const double x = any(xs), x2 = any(xs), n = any(ns);
    for (const char* a : {"B", "E", "M", "S"})
      for (double v : {zintck2(r, x, x2), zintnx2(r, x, n), zintnx3(r, x, n, a, nullptr)})
        ASSERT_FALSE(std::isnan(v) && !wzmis(v)) << a;
    char buf[64];
    int blen = sizeof buf;
    const int rc = zinti2s(buf, &blen, &r);
    ASSERT_TRUE(rc == 0 || rc == 101);
    INTERVAL s;
    const int rs = zintshft(r, &s);
    ASSERT_TRUE(rs == 0 || rs == 2);
  }
}

// Every family at the calendar's edges and at values that aren't dates:
// codes stay in 0 .. ns - 1 (or are scode), steps are missing or inside the
// calendar, and nothing reads or writes out of bounds.
TEST(CycleRobust, EdgesAndNonDates) {
  const char* intervals[] = {"MINUTE5", "DTHOUR3", "DAY", "WEEKDAY1W3", "WEEK2", "DTWEEK", "WEEKV",
                             "WEEK13.84", "TENDAY", "SEMIMONTH", "MONTH5", "R454QTR", "YEAR3.4", "OBS3"};
  const double inf = std::numeric_limits<double>::infinity();
  const double values[] = {kFirstDate, kLastDate, kLastDate - 3, 0, -1, kFirstDate * 86400.0,
                           kLastDate * 86400.0, 1e300, -1e300, inf, -inf,
                           std::numeric_limits<double>::quiet_NaN(), kMissing, skMissVal('M')};
  for (const char* text : intervals) {
    const INTERVAL i = iv(text);
    const INTERVALX x = zintwiden(i);
    for (double v : values) {
      SCOPED_TRACE(::testing::Message() << text << " at " << v);
      INTERVAL s;
      int ns = 0;
      EXPECT_LE(zintsea(&i, v, &s, &ns), 1);
      for (int scode : {0, -1, 5}) {
        int want = 4, rc = 0;
        const auto cs = testing::codes(i, v, scode, 5, &want, &rc);
        EXPECT_TRUE(rc == 0 || rc == 1 || rc == -1);
        for (int c : cs) EXPECT_TRUE((c >= 0 && c < want) || c == scode) << c;
      }
      for (double n : {0.0, 1.0, -1.0, 1e12}) {
        const double r = zintnx_seas(&x, v, n, nullptr);
        // Day-based grids keep to the calendar; time grids step freely.
        if (!wzmis(r) && i.units != 'o' && i.intcode > kIntHour) {
          const double day = i.units == 's' ? std::floor(r / 86400) : r;
          EXPECT_TRUE(day >= kFirstDate && day <= kLastDate) << n;
        }
        (void)zintck_seas(&x, v, r, nullptr);
      }
      char fmt[16];
      short nl = 0, w1 = 0, w2 = 0;
      zintfmp(&i, v, v + 3600, fmt, &nl, &w1, &w2);
      EXPECT_GT(nl, 0);
      EXPECT_LE(w1, 20);
      zintfmm(&i, v, fmt, &nl, &w1, &w2);
      EXPECT_GT(nl, 0);
    }
  }
}
}  // namespace
}  // namespace qvt
