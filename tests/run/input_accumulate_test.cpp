// Accumulation of raw records into periods, checked against a direct
// computation on random records with duplicates, gaps and missing values;
// the fast and the slow path against each other; the frame of START= and
// END=; ZEROMISS=; arrays that grow and are reused.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <map>
#include <random>

#include "run/qvtin.hpp"
#include "test_host.hpp"

namespace qvt {
namespace {

using testing::daysFromCivil;
using testing::InputRun;
using testing::InputSetup;

// A grid known to the test by its own arithmetic: period index of a time
// value and the start of a period.
struct Grid {
  const char* interval;
  bool datetime;
  long (*index)(long t);
  long (*start)(long k);
  int maxStep;  // largest step between consecutive records, in time units
};

long floorDiv(long a, long b) { return a / b - ((a % b != 0) && ((a < 0) != (b < 0))); }

// Months counted from January of year 0.
long monthIndex(long d) {
  const auto c = testing::civilFromDays(d);
  return c.y * 12 + (c.m - 1);
}
long monthStart(long k) { return daysFromCivil(floorDiv(k, 12), k - floorDiv(k, 12) * 12 + 1, 1); }
// Weeks begin on Sunday; day -5 (1959-12-27) is a Sunday.
long weekIndex(long d) { return floorDiv(d + 5, 7); }
long weekStart(long k) { return k * 7 - 5; }
// Working days Monday to Friday; a Saturday or Sunday belongs to the Friday before.
long weekdayIndex(long d) {
  const long w = floorDiv(d + 5, 7);
  const long dow = d + 5 - w * 7;  // 0 Sunday .. 6 Saturday
  if (dow == 0) return (w - 1) * 5 + 4;
  if (dow == 6) return w * 5 + 4;
  return w * 5 + dow - 1;
}
long weekdayStart(long k) {
  const long w = floorDiv(k, 5);
  return w * 7 - 5 + 1 + (k - w * 5);
}
long hourIndex(long s) { return floorDiv(s, 3600); }
long hourStart(long k) { return k * 3600; }

const Grid kGrids[] = {
    {"MONTH", false, monthIndex, monthStart, 45},
    {"WEEK", false, weekIndex, weekStart, 12},
    {"WEEKDAY", false, weekdayIndex, weekdayStart, 4},
    {"DTHOUR", true, hourIndex, hourStart, 6000},
};

struct Record {
  long t;
  double y;  // kMissing for a blank cell
};

// Random ascending records: repeated times, steps that skip periods, blanks.
std::vector<Record> randomRecords(const Grid& g, unsigned seed, int n) {
  std::mt19937 rng(seed);
  std::uniform_int_distribution<int> step(0, g.maxStep);
  std::uniform_real_distribution<double> val(-50, 150);
  long t = g.datetime ? 1900000000L : daysFromCivil(2019, 12, 28);
  std::vector<Record> r;
  for (int i = 0; i < n; ++i) {
    if (i > 0) t += (rng() % 4 == 0) ? 0 : step(rng);
    const double y = rng() % 6 == 0 ? kMissing : std::round(val(rng) * 100) / 100;
    r.push_back({t, y});
  }
  return r;
}

std::string toCsv(const Grid& g, const std::vector<Record>& recs) {
  std::string s = "when,y\n";
  char b[32];
  for (const Record& r : recs) {
    s += g.datetime ? testing::isoDatetime(r.t) : testing::isoDate(r.t);
    s += ",";
    if (!wzmis(r.y)) {
      std::snprintf(b, sizeof b, "%.17g", r.y);
      s += b;
    }
    s += "\n";
  }
  return s;
}

// The value of one period by ACCUMULATE= code, straight from the definitions.
double direct(int code, const std::vector<double>& all) {
  std::vector<double> v;
  for (double x : all)
    if (!wzmis(x)) v.push_back(x);
  const double n = static_cast<double>(v.size());
  double sum = 0, ss = 0;
  for (double x : v) sum += x, ss += x * x;
  switch (code) {
    case kAccTotal: return v.empty() ? kMissing : sum;
    case kAccAverage: return v.empty() ? kMissing : sum / n;
    case kAccMedian: {
      if (v.empty()) return kMissing;
      std::sort(v.begin(), v.end());
      const std::size_t k = v.size();
      return k % 2 ? v[k / 2] : (v[k / 2 - 1] + v[k / 2]) / 2;
    }
    case kAccStd: {
      if (v.size() < 2) return kMissing;
      const double mean = sum / n;
      double c = 0;
      for (double x : v) c += (x - mean) * (x - mean);
      return std::sqrt(c / (n - 1));
    }
    case kAccNobs: return static_cast<double>(all.size());
    case kAccN: return n;
    case kAccNmiss: return static_cast<double>(all.size()) - n;
    case kAccFirst: return v.empty() ? kMissing : v.front();
    case kAccMaximum: return v.empty() ? kMissing : *std::max_element(v.begin(), v.end());
    default: return kMissing;
  }
}

void expectNear(double want, double got, const std::string& where) {
  if (wzmis(want)) {
    EXPECT_TRUE(wzmis(got)) << where << ": want missing, got " << got;
  } else {
    ASSERT_FALSE(wzmis(got)) << where << ": got missing, want " << want;
    EXPECT_NEAR(got, want, 1e-9 * std::max(1.0, std::fabs(want))) << where;
  }
}

TEST(InputAccumulate, RandomRecordsAgainstADirectComputation) {
  const int codes[] = {kAccTotal, kAccAverage, kAccMedian, kAccStd, kAccNobs, kAccN, kAccNmiss, kAccFirst,
                       kAccMaximum};
  for (const Grid& g : kGrids) {
    for (unsigned seed = 1; seed <= 3; ++seed) {
      SCOPED_TRACE(std::string(g.interval) + " seed " + std::to_string(seed));
      const auto recs = randomRecords(g, seed, 120);
      std::map<long, std::vector<double>> byPeriod;
      for (const Record& r : recs) byPeriod[g.index(r.t)].push_back(r.y);
      const long k0 = byPeriod.begin()->first, k1 = byPeriod.rbegin()->first;

      InputSetup s;
      s.csv = toCsv(g, recs);
      s.series = {"y"};
      s.id = "when";
      s.interval = g.interval;
      s.acc = kAccTotal;
      InputRun r(s);
      ASSERT_TRUE(r.nextGroup());
      qvtin(&r.com);
      ASSERT_EQ(r.com.error, 0);
      EXPECT_TRUE(r.host.numbers(743).empty());
      EXPECT_EQ(r.com.in.nobs, static_cast<long>(recs.size()));
      ASSERT_EQ(r.com.out.nobs, k1 - k0 + 1);
      long dups = 0;
      for (const auto& [k, v] : byPeriod) dups += static_cast<long>(v.size()) - 1;
      EXPECT_EQ(r.com.ndups, dups);
      EXPECT_EQ(r.com.ngaps > 0, k1 - k0 + 1 > static_cast<long>(byPeriod.size()));
      for (long t = 0; t < r.com.out.nobs; ++t)
        ASSERT_EQ(r.com.out.id[t], static_cast<double>(g.start(k0 + t))) << "period " << t;

      for (int code : codes) {
        accumulate(&r.com, code);
        for (long t = 0; t < r.com.out.nobs; ++t) {
          const auto it = byPeriod.find(k0 + t);
          const std::vector<double> none;
          double want = direct(code, it == byPeriod.end() ? none : it->second);
          if (it == byPeriod.end() && code >= kAccNobs) want = 0;
          expectNear(want, r.com.out.y[t], "code " + std::to_string(code) + " period " + std::to_string(t));
        }
      }
    }
  }
}

// One record per month, no gaps: the fast path. The same records under
// NOTSORTED take the slow path; the series must agree.
TEST(InputAccumulate, FastAndSlowPathAgree) {
  std::string text = "date,y\n";
  const char* vals[] = {"4", "", "-2.5", "0", "7", "", "3"};
  for (int m = 0; m < 7; ++m) text += testing::isoDate(daysFromCivil(2021, m + 1, 1)) + "," + vals[m] + "\n";
  auto run = [&](bool notsorted) {
    InputSetup s;
    s.csv = text;
    s.series = {"y"};
    s.id = "date";
    s.interval = "MONTH";
    s.notsorted = notsorted;
    s.start = static_cast<double>(daysFromCivil(2020, 11, 1));
    s.lead = 2;
    auto r = std::make_unique<InputRun>(s);
    EXPECT_TRUE(r->nextGroup());
    qvtin(&r->com);
    EXPECT_EQ(r->com.error, 0);
    return r;
  };
  auto fast = run(false);
  auto slow = run(true);
  ASSERT_EQ(fast->com.notsorted, 0);
  ASSERT_EQ(slow->com.notsorted, 1);
  ASSERT_EQ(fast->com.out.nobs, 9);  // two leading periods of START=
  ASSERT_EQ(slow->com.out.nobs, 9);
  EXPECT_EQ(fast->com.out.soffset, 2);
  for (int code = 0; code <= 13; ++code) {
    SCOPED_TRACE("code " + std::to_string(code));
    accumulate(&fast->com, code);
    accumulate(&slow->com, code);
    for (long t = 0; t < fast->com.out.tobs; ++t) {
      const double a = fast->com.out.y[t], b = slow->com.out.y[t];
      const bool raw = t >= 2 && t - 2 < 7 && wzmis(fast->com.in.y[t - 2]);
      if (code == kAccCss && raw) {
        // A lone missing value: its corrected sum of squares is taken as 0
        // on the fast path, while the slow path has no value to centre.
        EXPECT_EQ(a, 0.0);
        EXPECT_TRUE(wzmis(b));
        continue;
      }
      if (t < 2 && code >= kAccNobs) {
        // Periods of START= ahead of the data: counts are 0 where the slow
        // path places records, missing on the fast path, which never
        // visits them.
        EXPECT_TRUE(wzmis(a));
        EXPECT_EQ(b, 0.0);
        continue;
      }
      if (wzmis(a) || wzmis(b)) {
        EXPECT_TRUE(wzmis(a) && wzmis(b)) << "period " << t << ": " << a << " vs " << b;
      } else {
        EXPECT_EQ(a, b) << "period " << t;
      }
    }
    for (long t = fast->com.out.nobs; t < fast->com.out.tobs; ++t) EXPECT_TRUE(wzmis(fast->com.out.y[t]));
  }
}

TEST(InputAccumulate, StartAndEndFrame) {
  std::string text = "date,y\n";
  for (int m = 3; m <= 8; ++m) text += testing::isoDate(daysFromCivil(2020, m, 1)) + "," + std::to_string(m) + "\n";
  struct Case {
    const char* name;
    double start, end;
    long nobs, soffset, eoffset, keptRecords;
    long firstMonth;            // month of out.id[0] in 2020
    long keptFrom, keptTo;      // months of the records kept
  };
  const double janMid = static_cast<double>(daysFromCivil(2020, 1, 15));
  const double mayMid = static_cast<double>(daysFromCivil(2020, 5, 15));
  const double junEnd = static_cast<double>(daysFromCivil(2020, 6, 30));
  const double octMid = static_cast<double>(daysFromCivil(2020, 10, 10));
  const Case cases[] = {
      {"START= and END= around the data", janMid, octMid, 10, 2, 2, 6, 1, 3, 8},
      // The first kept record is June; START= adds May ahead of it.
      {"START= after the first records", mayMid, kMissing, 4, 1, 0, 3, 5, 6, 8},
      {"END= before the last records", kMissing, junEnd, 4, 0, -2, 4, 3, 3, 6},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    InputSetup s;
    s.csv = text;
    s.series = {"y"};
    s.id = "date";
    s.interval = "MONTH";
    s.start = c.start;
    s.end = c.end;
    s.lead = 3;
    InputRun r(s);
    ASSERT_TRUE(r.nextGroup());
    qvtin(&r.com);
    ASSERT_EQ(r.com.error, 0);
    EXPECT_EQ(r.com.in.nobs, c.keptRecords);
    EXPECT_EQ(r.com.vars[0].n, 6);  // rejected records still count their values
    EXPECT_EQ(r.com.out.nobs, c.nobs);
    EXPECT_EQ(r.com.out.tobs, c.nobs + 3);
    EXPECT_EQ(r.com.out.soffset, c.soffset);
    EXPECT_EQ(r.com.out.eoffset, c.eoffset);
    for (long t = 0; t < r.com.out.tobs; ++t)
      EXPECT_EQ(r.com.out.id[t], static_cast<double>(daysFromCivil(2020, c.firstMonth + t, 1))) << t;
    EXPECT_EQ(r.com.out.forlast, r.com.out.id[c.nobs + 2]);
    accumulate(&r.com, kAccNone);
    // The kept months hold their number; the rest of the frame is missing.
    for (long t = 0; t < r.com.out.tobs; ++t) {
      const long month = c.firstMonth + t;
      if (month >= c.keptFrom && month <= c.keptTo) EXPECT_EQ(r.com.out.y[t], static_cast<double>(month)) << t;
      else EXPECT_TRUE(wzmis(r.com.out.y[t])) << t;
    }
  }
}

TEST(InputAccumulate, ZeroMissExamples) {
  const double m = kMissing;
  struct Case {
    int code;
    std::vector<double> in, want;
  };
  const Case cases[] = {
      {kZeroLeft, {0, 0, 3, 0, 0, 5, 0}, {m, m, 3, 0, 0, 5, 0}},
      {kZeroRight, {0, 0, 3, 0, 0, 5, 0}, {0, 0, 3, 0, 0, 5, m}},
      {kZeroBoth, {0, 0, 3, 0, 0, 5, 0}, {m, m, 3, 0, 0, 5, m}},
      {kZeroBoth, {3, 0, 0}, {3, 0, 0}},          // the last non-zero cell is the first
      {kZeroBoth, {0, 0, 0}, {0, 0, 0}},          // a series of zeros stays one
      {kZeroLeft, {m, 1e-160, 2, m}, {m, m, 2, m}},  // tiny values count as zeros
      {kZeroNone, {0, 1, 0}, {0, 1, 0}},
      {kZeroRight, {}, {}},
  };
  for (const Case& c : cases) {
    InputSetup s;
    s.csv = "y\n1\n";
    s.series = {"y"};
    s.zeromiss = c.code;
    InputRun r(s);
    std::vector<double> y = c.in;
    y.push_back(42);  // a forecast cell behind out.nobs stays as it is
    r.com.out.y = y.data();
    r.com.out.nobs = static_cast<long>(c.in.size());
    zeromiss(&r.com);
    for (std::size_t t = 0; t < c.in.size(); ++t) {
      if (wzmis(c.want[t])) EXPECT_TRUE(wzmis(y[t])) << "code " << c.code << " cell " << t;
      else EXPECT_EQ(y[t], c.want[t]) << "code " << c.code << " cell " << t;
    }
    EXPECT_EQ(y.back(), 42.0);
  }
}

TEST(InputAccumulate, ArraysGrowByDoublingAndAreReusedByLaterGroups) {
  std::string text = "g,y\n";
  for (int i = 0; i < 100; ++i) text += "1," + std::to_string(i) + "\n";
  for (int i = 0; i < 5; ++i) text += "2," + std::to_string(1000 + i) + "\n";
  InputSetup s;
  s.csv = text;
  s.series = {"y"};
  s.by = {"g"};
  s.enobs = 3;
  InputRun r(s);
  ASSERT_TRUE(r.nextGroup());
  qvtin(&r.com);
  ASSERT_EQ(r.com.error, 0);
  EXPECT_EQ(r.com.in.obsa, 192);  // 3, 6, ..., 192
  EXPECT_EQ(r.com.out.nobs, 100);
  for (int i = 0; i < 100; ++i) ASSERT_EQ(r.com.in.y[i], i);
  EXPECT_EQ(r.com.in.id[99], 100.0);  // no ID: the observation number
  const double* id = r.com.in.id;
  const double* outy = r.com.out.y;
  const long obsa = r.com.out.obsa;
  ASSERT_TRUE(r.nextGroup());
  qvtin(&r.com);
  ASSERT_EQ(r.com.error, 0);
  EXPECT_EQ(r.com.in.nobs, 5);
  EXPECT_EQ(r.com.in.id, id);
  EXPECT_EQ(r.com.out.y, outy);
  EXPECT_EQ(r.com.out.obsa, obsa);
  EXPECT_EQ(r.com.in.oldnobs, 100);
  EXPECT_EQ(r.com.obsfirst, 101);
  EXPECT_EQ(r.com.obslast, 105);
  accumulate(&r.com, kAccNone);
  for (int i = 0; i < 5; ++i) EXPECT_EQ(r.com.out.y[i], 1000 + i);
  EXPECT_EQ(r.com.out.id[4], 5.0);
  EXPECT_FALSE(r.nextGroup());
}

TEST(InputAccumulate, OutOfMemoryWhileGrowingEndsTheGroup) {
  std::string text = "y\n";
  for (int i = 0; i < 4000; ++i) text += "1\n";
  InputSetup s;
  s.csv = text;
  s.series = {"y"};
  s.enobs = 16;
  s.memsize = 40000;  // room for the first arrays, not for 4000 records
  InputRun r(s);
  ASSERT_TRUE(r.nextGroup());
  qvtin(&r.com);
  EXPECT_EQ(r.com.error, 1);
  EXPECT_EQ(r.com.rc, kRcMemory);
  EXPECT_EQ(r.com.in.id, nullptr);
  EXPECT_EQ(r.com.in.y, nullptr);
  EXPECT_EQ(r.com.memdef, 0);
}

TEST(InputAccumulate, SeasonColumnWidth) {
  EXPECT_EQ(seasonColumnWidth(12), 4);
  EXPECT_EQ(seasonColumnWidth(9999), 4);
  EXPECT_EQ(seasonColumnWidth(10000), 5);
  EXPECT_EQ(seasonColumnWidth(9999999999L), 10);
  EXPECT_EQ(seasonColumnWidth(10000000000L), 20);
}

}  // namespace
}  // namespace qvt
