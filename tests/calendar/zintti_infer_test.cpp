// Interval inference: zintget on triples, zinttig and zinttiu on vectors.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "calendar/interval.hpp"
#include "calendar/zintti.hpp"
#include "host/hostdate.hpp"
#include "run/missing.hpp"

namespace qvt {
namespace {

constexpr double kDay = 86400.0;
double date(int y, int m, int d) { return hostMdyToDate(m, d, y); }
double at(int y, int m, int d, int hh, int mm, int ss) {
  return date(y, m, d) * kDay + hh * 3600.0 + mm * 60.0 + ss;
}
std::string token(const INTERVAL& i) { return std::string(i.token, static_cast<std::size_t>(i.tokenlen)); }

TEST(Zintget, HandWorkedTriples) {
  struct Case {
    const char* what;
    double d1, d2, d3;
    const char* token;
    int code, mult, shift;
    char units;
  };
  const Case cases[] = {
      {"observation numbers", 1, 2, 3, "OBS", kIntObs, 1, 0, 'o'},
      {"every other observation", 1, 3, 5, "OBS2", kIntObs, 2, 0, 'o'},
      {"observations with a gap", 1, 2, 4, "OBS", kIntObs, 1, 0, 'o'},
      {"every third observation", 3, 6, 12, "OBS3", kIntObs, 3, 0, 'o'},
      {"days", 14000, 14001, 14002, "DAY", kIntDay, 1, 0, 'd'},
      {"days with a gap", 14000, 14001, 14003, "DAY", kIntDay, 1, 0, 'd'},
      {"first of three months", date(2000, 1, 1), date(2000, 2, 1), date(2000, 3, 1), "MONTH", kIntMonth, 1, 0, 'd'},
      {"mid-month", date(2000, 1, 15), date(2000, 2, 15), date(2000, 3, 15), "MONTH", kIntMonth, 1, 0, 'd'},
      {"month ends", date(2000, 1, 31), date(2000, 2, 29), date(2000, 3, 31), "MONTH", kIntMonth, 1, 0, 'd'},
      {"every other month", date(2000, 1, 1), date(2000, 3, 1), date(2000, 5, 1), "MONTH2", kIntMonth, 2, 0, 'd'},
      {"quarters", date(2000, 1, 1), date(2000, 4, 1), date(2000, 7, 1), "QTR", kIntQtr, 1, 0, 'd'},
      {"quarters from February", date(2000, 2, 1), date(2000, 5, 1), date(2000, 8, 1), "QTR.2", kIntQtr, 1, 1, 'd'},
      {"half years", date(2000, 1, 1), date(2000, 7, 1), date(2001, 1, 1), "SEMIYEAR", kIntSemiyear, 1, 0, 'd'},
      {"three Januaries", date(2000, 1, 1), date(2001, 1, 1), date(2002, 1, 1), "YEAR", kIntYear, 1, 0, 'd'},
      {"years from July", date(2000, 7, 1), date(2001, 7, 1), date(2002, 7, 1), "YEAR.7", kIntYear, 1, 6, 'd'},
      {"half months", date(2000, 1, 1), date(2000, 1, 16), date(2000, 2, 1), "SEMIMONTH", kIntSemimonth, 1, 0, 'd'},
      {"ten days", date(2000, 1, 1), date(2000, 1, 11), date(2000, 1, 21), "TENDAY", kIntTenday, 1, 0, 'd'},
      {"Sundays", date(2000, 1, 2), date(2000, 1, 9), date(2000, 1, 16), "WEEK", kIntWeek, 1, 0, 'd'},
      {"Wednesdays", date(2000, 1, 5), date(2000, 1, 12), date(2000, 1, 19), "WEEK.4", kIntWeek, 1, 3, 'd'},
      {"DTDAY on 86400 steps", at(2000, 3, 1, 0, 0, 0), at(2000, 3, 2, 0, 0, 0), at(2000, 3, 3, 0, 0, 0), "DTDAY",
       kIntDay, 1, 0, 's'},
      {"DTMONTH", at(2000, 1, 1, 0, 0, 0), at(2000, 2, 1, 0, 0, 0), at(2000, 3, 1, 0, 0, 0), "DTMONTH", kIntMonth, 1,
       0, 's'},
      {"hours", at(2000, 3, 1, 10, 0, 0), at(2000, 3, 1, 11, 0, 0), at(2000, 3, 1, 12, 0, 0), "HOUR", kIntHour, 1, 0,
       's'},
      {"hours at half past", at(2000, 3, 1, 10, 30, 0), at(2000, 3, 1, 11, 30, 0), at(2000, 3, 1, 12, 30, 0), "HOUR",
       kIntHour, 1, 0, 's'},
      {"hours from 0", 0, 3600, 7200, "HOUR", kIntHour, 1, 0, 's'},
      {"minutes", at(2000, 3, 1, 10, 0, 0), at(2000, 3, 1, 10, 1, 0), at(2000, 3, 1, 10, 2, 0), "MINUTE", kIntMinute,
       1, 0, 's'},
      {"seconds", at(2000, 3, 1, 10, 0, 7), at(2000, 3, 1, 10, 0, 8), at(2000, 3, 1, 10, 0, 9), "SECOND", kIntSecond,
       1, 0, 's'},
  };
  for (const auto& c : cases) {
    INTERVAL iv;
    INTINFO info;
    ASSERT_EQ(zintget(c.d1, c.d2, c.d3, &iv, &info), 0) << c.what;
    EXPECT_EQ(token(iv), c.token) << c.what;
    EXPECT_EQ(iv.intcode, c.code) << c.what;
    EXPECT_EQ(std::max(iv.intper, 1), c.mult) << c.what;
    EXPECT_EQ(iv.shiftper, c.shift) << c.what;
    EXPECT_EQ(iv.units, c.units) << c.what;
    // The inferred grid really spaces the triple one multiplier apart.
    if (iv.intcode != kIntObs) {
      EXPECT_EQ(zintck2(iv, zintnx2(iv, c.d1, 0), zintnx2(iv, c.d2, 0)), 1) << c.what;
      EXPECT_EQ(zintnx2(iv, c.d2, 0), zintnx2(iv, c.d1, 1)) << c.what;
    }
  }
}

TEST(Zintget, InfoAndFailures) {
  INTERVAL iv;
  INTINFO info;
  ASSERT_EQ(zintget(date(2000, 1, 1), date(2000, 2, 1), date(2000, 3, 1), &iv, &info), 0);
  EXPECT_EQ(info.nseasons, 12);
  EXPECT_EQ(info.sinterval.intcode, kIntYear);
  EXPECT_GT(info.formatl, 0);
  EXPECT_GT(info.formatw, 0);
  ASSERT_EQ(zintget(14000, 14001, 14002, &iv, nullptr), 0) << "info may be null";

  struct Case {
    const char* what;
    double d1, d2, d3;
    int rc;
  };
  const Case cases[] = {
      {"missing", 1, kMissing, 3, 2},
      {"special missing", skMissVal('A'), 2, 3, 2},
      {"equal values", 5, 5, 6, 3},
      {"falling", 5, 4, 6, 3},
      {"steps below 1 after floors", 1.2, 1.9, 3.5, 3},
      {"before the calendar", -1.3e10, -1.2e10, -1.1e10, 3},
      {"past the calendar", 5.8e11, 5.9e11, 6.0e11, 3},
      {"fractional days", 1.5, 2.7, 3.9, 1},
      {"steps 2 and 3 share no grid", 1, 3, 6, 1},
      {"uneven seconds", 100000.5, 100001.75, 100003.0, 1},
  };
  for (const auto& c : cases) {
    iv.intcode = kIntMonth;
    EXPECT_EQ(zintget(c.d1, c.d2, c.d3, &iv, &info), c.rc) << c.what;
    EXPECT_EQ(iv.units, 'u') << c.what;
    EXPECT_EQ(iv.intcode, kIntNone) << c.what;
    EXPECT_EQ(iv.intper, 1) << c.what;
  }
}

TEST(Zinttig, RanksByErrors) {
  // Six months, then four quarters.
  const std::vector<double> tid = {date(2000, 1, 1), date(2000, 2, 1), date(2000, 3, 1), date(2000, 4, 1),
                                   date(2000, 5, 1), date(2000, 6, 1), date(2000, 7, 1), date(2000, 10, 1),
                                   date(2001, 1, 1), date(2001, 4, 1)};
  const long n = static_cast<long>(tid.size());
  INTERVAL out[3];
  // Triples at 0, 3 and 7: MONTH, MONTH again, QTR.
  ASSERT_EQ(zinttig(tid.data(), n, 0, 3, out), 2);
  // Without duplicates MONTH misses 3 pairs (quarter steps), QTR 4 (same quarter).
  EXPECT_EQ(out[0].intcode, kIntMonth);
  EXPECT_EQ(out[1].intcode, kIntQtr);
  // With duplicates allowed pairs in one quarter are fine: QTR has no error.
  ASSERT_EQ(zinttig(tid.data(), n, 1, 3, out), 2);
  EXPECT_EQ(out[0].intcode, kIntQtr);
  EXPECT_EQ(out[1].intcode, kIntMonth);

  // One triple: the first one only.
  ASSERT_EQ(zinttig(tid.data(), n, 0, 1, out), 1);
  EXPECT_EQ(out[0].intcode, kIntMonth);
  EXPECT_EQ(zinttig(tid.data(), n, 0, 0, out), 0);
  EXPECT_EQ(zinttig(tid.data(), 2, 0, 3, out), -1);
}

TEST(Zinttiu, SortsAndChecks) {
  const std::vector<double> sorted = {date(2000, 1, 1), date(2000, 2, 1), date(2000, 3, 1), date(2000, 4, 1)};
  std::vector<double> shuffled = {sorted[2], sorted[0], sorted[3], sorted[1]};
  const std::vector<double> before = shuffled;
  INTERVAL out[2];
  ASSERT_EQ(zinttiu(shuffled.data(), 4, 0, 2, out), 1);
  EXPECT_EQ(out[0].intcode, kIntMonth);
  EXPECT_EQ(shuffled, before) << "the caller's vector is left as it was";

  std::vector<double> withMissing = sorted;
  withMissing[2] = kMissing;
  EXPECT_EQ(zinttiu(withMissing.data(), 4, 0, 2, out), -2);

  // A date hint in the first record turns on the calendar's limits.
  std::vector<double> far = {1, 2, 3, 7000000};
  out[0] = INTERVAL{};
  out[0].intcode = kIntMonth;
  EXPECT_EQ(zinttiu(far.data(), 4, 0, 2, out), -3);
  out[0] = INTERVAL{};
  EXPECT_NE(zinttiu(far.data(), 4, 0, 2, out), -3) << "without the hint no limit applies";
  EXPECT_EQ(zinttiu(sorted.data(), 2, 0, 2, out), -1);
}

}  // namespace
}  // namespace qvt
