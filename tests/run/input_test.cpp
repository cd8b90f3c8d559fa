// The input stage: the hand-worked cases of input_cases.txt, accumulation
// checked against a direct computation on random records, the fast path
// against the slow one, ZEROMISS=, arrays that grow, several series through
// the spool and the trend statistics of the raw records.
#include <algorithm>
#include <random>

#include "output/ztspool.hpp"
#include "test_host.hpp"

namespace qvt {
namespace {

using testing::day;
using testing::InputRun;

TEST(Input, CasesOfTheTable) {
  std::ifstream f(QVT_SOURCE_DIR "/tests/run/input_cases.txt");
  std::string all;
  for (std::string l; std::getline(f, l);)
    if (!l.empty() && l[0] != '#') all += (l[0] == ' ' ? "" : "\n") + l;
  std::istringstream cases(all);
  int rows = 0;
  for (std::string c; std::getline(cases, c);) {
    if (c.empty()) continue;
    SCOPED_TRACE(c);
    ++rows;
    const auto arrow = c.find("=>");
    InputRun r(c.substr(0, arrow));
    ASSERT_EQ(r.read(), -1);
    if (r.kv.count("accumulate")) accumulate(&r.com, int(r.num("accumulate")));
    r.expect(c.substr(arrow + 2));
  }
  EXPECT_EQ(rows, 16);
}

TEST(Input, GapsWarnTenTimesInAStepThenOnce11) {
  // Two BY groups of six gaps each: the count runs over the step.
  std::string csv = "g,date,y";
  for (int g = 1; g <= 2; ++g)
    for (int k = 0; k < 7; ++k) csv += "/" + std::to_string(g) + "," + std::to_string(2000 + k) + "-01-01,1";
  InputRun r("by=g csv=" + csv);
  r.read();
  // A year between two firsts of January: 11 missing months.
  r.expect("msgs=10,10,10,10,10,10 gaps=6 rc=4 10=11|2|WORK.input|MONTH|date|01JAN2000|date|01JAN2001");
  r.read();
  r.expect("msgs=10,10,10,10,10,10,10,10,10,10,11 gaps=6 maxgap=11 out=73");
}

// Period index of a time value and the start of a period, by the test's own
// arithmetic. Months count from January of year 0; weeks begin on Sunday
// (day -5, 1959-12-27, is one); a Saturday or Sunday belongs to the Friday
// before it on the working-day grid.
struct Grid {
  const char* interval;
  long (*index)(long t);
  long (*start)(long k);
  int maxStep;  // largest step between consecutive records, in time units
};
const Grid kGrids[] = {
    {"MONTH",
     [](long d) {
       const std::chrono::year_month_day c{testing::sysDay(d)};
       return long(int(c.year())) * 12 + long(unsigned(c.month())) - 1;
     },
     [](long k) { return day(int(k / 12), int(k % 12 + 1), 1); }, 45},
    {"WEEKDAY",
     [](long d) {
       const long w = (d + 5) / 7, dow = d + 5 - w * 7;  // 0 Sunday .. 6 Saturday
       return dow == 0 ? (w - 1) * 5 + 4 : dow == 6 ? w * 5 + 4 : w * 5 + dow - 1;
     },
     [](long k) { return k / 5 * 7 - 4 + k % 5; }, 4},
    {"DTHOUR", [](long s) { return s / 3600; }, [](long k) { return k * 3600; }, 6000},
};

// The value of one period by ACCUMULATE= code, straight from the definitions.
double direct(int code, const std::vector<double>& all) {
  std::vector<double> v;
  std::copy_if(all.begin(), all.end(), std::back_inserter(v), [](double x) { return !wzmis(x); });
  const double n = double(v.size()), sum = std::accumulate(v.begin(), v.end(), 0.0);
  double css = 0;
  for (double x : v) css += (x - sum / n) * (x - sum / n);
  std::sort(v.begin(), v.end());
  const std::size_t k = v.size();
  if (code == kAccNobs || code == kAccN || code == kAccNmiss)
    return code == kAccN ? n : code == kAccNobs ? double(all.size()) : double(all.size()) - n;
  if (v.empty() || (code == kAccStd && k < 2)) return kMissing;
  if (code == kAccTotal) return sum;
  if (code == kAccAverage) return sum / n;
  if (code == kAccMedian) return k % 2 ? v[k / 2] : (v[k / 2 - 1] + v[k / 2]) / 2;
  if (code == kAccStd) return std::sqrt(css / (n - 1));
  if (code == kAccMaximum) return v.back();
  return *std::find_if(all.begin(), all.end(), [](double x) { return !wzmis(x); });  // kAccFirst
}

TEST(Input, AccumulationOfRandomRecordsAgainstADirectComputation) {
  for (const Grid& g : kGrids) {
    for (unsigned seed = 1; seed <= 3; ++seed) {
      SCOPED_TRACE(std::string(g.interval) + " seed " + std::to_string(seed));
      // Ascending records: repeated times, steps that skip periods, blanks.
      std::mt19937 rng(seed);
      const bool dt = g.interval[0] == 'D';
      long t = dt ? 1900000000L : day(2019, 12, 28);
      std::map<long, std::vector<double>> byPeriod;
      std::string csv = "when,y";
      for (int i = 0; i < 120; ++i) {
        if (i > 0) t += (rng() % 4 == 0) ? 0 : std::uniform_int_distribution<int>(0, g.maxStep)(rng);
        const double y = rng() % 6 == 0 ? kMissing : double(rng() % 20000) / 100 - 50;
        byPeriod[g.index(t)].push_back(y);
        csv += "/" + testing::isoDate(dt ? t / 86400 : t);
        csv += (dt ? fmt::format("T{:02}:{:02}:{:02}", t % 86400 / 3600, t % 3600 / 60, t % 60) : "") + ",";
        csv += wzmis(y) ? "" : fmt::format("{}", y);
      }
      const long k0 = byPeriod.begin()->first, k1 = byPeriod.rbegin()->first;
      long dups = 0;
      for (const auto& [k, v] : byPeriod) dups += long(v.size()) - 1;
      InputRun r("id=when acc=1 interval=" + std::string(g.interval) + " csv=" + csv);
      ASSERT_EQ(r.read(), -1);
      r.expect("msgs= err=0 in=120 out=" + std::to_string(k1 - k0 + 1) + " dups=" + std::to_string(dups));
      ASSERT_EQ(r.com.out.nobs, k1 - k0 + 1);
      EXPECT_EQ(r.com.ngaps > 0, k1 - k0 + 1 > long(byPeriod.size()));
      for (long p = 0; p < r.com.out.nobs; ++p) ASSERT_EQ(r.com.out.id[p], g.start(k0 + p)) << "period " << p;
      for (int code : {kAccTotal, kAccAverage, kAccMedian, kAccStd, kAccNobs, kAccN, kAccNmiss, kAccFirst,
                       kAccMaximum}) {
        accumulate(&r.com, code);
        for (long p = 0; p < r.com.out.nobs; ++p) {
          const auto it = byPeriod.find(k0 + p);
          const double want = it != byPeriod.end() ? direct(code, it->second) : code >= kAccNobs ? 0 : kMissing;
          const double got = r.com.out.y[p];
          SCOPED_TRACE("code " + std::to_string(code) + " period " + std::to_string(p));
          ASSERT_EQ(wzmis(got), wzmis(want)) << got;
          if (!wzmis(want)) {
            EXPECT_NEAR(got, want, 1e-9 * std::max(1.0, std::fabs(want)));
          }
        }
      }
    }
  }
}

// One record per month, no gaps: the fast path. The same records under
// NOTSORTED take the slow path; the series must agree.
TEST(Input, FastAndSlowAccumulationAgree) {
  const std::string setup = "start=2020-11-01 lead=2 csv=date,y/2021-01-01,4/2021-02-01,/2021-03-01,-2.5/"
                            "2021-04-01,0/2021-05-01,7/2021-06-01,/2021-07-01,3";
  InputRun fast(setup);
  InputRun slow(setup + " notsorted=1");
  ASSERT_EQ(fast.read(), -1);
  ASSERT_EQ(slow.read(), -1);
  ASSERT_EQ(fast.com.notsorted, 0);
  ASSERT_EQ(slow.com.notsorted, 1);
  fast.expect("err=0 out=9 tobs=11 soff=2");  // two leading periods of START=
  slow.expect("err=0 out=9");
  for (int code = 0; code <= 13; ++code) {
    accumulate(&fast.com, code);
    accumulate(&slow.com, code);
    std::vector<double> want(slow.com.out.y, slow.com.out.y + 11);
    for (long t = 0; t < 9; ++t) {
      // Periods of START= ahead of the data: counts are 0 where the slow
      // path places records, missing on the fast path, which never visits
      // them. A lone missing value: its corrected sum of squares is 0 on the
      // fast path, while the slow path has no value to centre. 99 marks a
      // slow path that breaks these rules.
      if (t < 2 && code >= kAccNobs) want[t] = want[t] == 0 ? kMissing : 99;
      if (t >= 2 && code == kAccCss && wzmis(fast.com.in.y[t - 2])) want[t] = wzmis(want[t]) ? 0 : 99;
    }
    EXPECT_EQ(testing::cells(fast.com.out.y, 11), testing::cells(want.data(), 11)) << "code " << code;
  }
}

TEST(Input, ZeroMiss) {
  const double m = kMissing;
  const struct {
    int code;
    std::vector<double> in, want;
  } cases[] = {
      {kZeroLeft, {0, 0, 3, 0, 0, 5, 0}, {m, m, 3, 0, 0, 5, 0}},
      {kZeroRight, {0, 0, 3, 0, 0, 5, 0}, {0, 0, 3, 0, 0, 5, m}},
      {kZeroBoth, {0, 0, 3, 0, 0, 5, 0}, {m, m, 3, 0, 0, 5, m}},
      {kZeroBoth, {3, 0, 0}, {3, 0, 0}},             // the last non-zero cell is the first
      {kZeroBoth, {0, 0, 0}, {0, 0, 0}},             // a series of zeros stays one
      {kZeroLeft, {m, 1e-160, 2, m}, {m, m, 2, m}},  // tiny values count as zeros
      {kZeroNone, {0, 1, 0}, {0, 1, 0}},
      {kZeroRight, {}, {}},
  };
  for (const auto& c : cases) {
    InputRun r("zeromiss=" + std::to_string(c.code));
    std::vector<double> y = c.in;
    y.push_back(42);  // a forecast cell behind out.nobs stays as it is
    r.com.out.y = y.data();
    r.com.out.nobs = long(c.in.size());
    zeromiss(&r.com);
    r.expect("outy=" + testing::cells(c.want.data(), r.com.out.nobs));
    EXPECT_EQ(y.back(), 42.0);
  }
}

TEST(Input, ArraysGrowByDoublingAndAreReusedByLaterGroups) {
  std::string csv = "g,y";
  for (int i = 0; i < 105; ++i) csv += i < 100 ? "/1," + std::to_string(i) : "/2," + std::to_string(900 + i);
  InputRun r("interval= id= by=g enobs=3 csv=" + csv);
  ASSERT_EQ(r.read(), -1);
  r.expect("err=0 out=100");
  EXPECT_EQ(r.com.in.obsa, 192);  // 3, 6, ..., 192
  for (int i = 0; i < 100; ++i) ASSERT_EQ(r.com.in.y[i], i);
  EXPECT_EQ(r.com.in.id[99], 100.0);  // no ID: the observation number
  const double* id = r.com.in.id;
  const double* outy = r.com.out.y;
  ASSERT_EQ(r.read(), -1);
  accumulate(&r.com, kAccNone);
  r.expect("err=0 in=5 rows=101-105 outy=1000,1001,1002,1003,1004");
  EXPECT_EQ(r.com.in.id, id);
  EXPECT_EQ(r.com.out.y, outy);
  EXPECT_EQ(r.com.in.oldnobs, 100);
  EXPECT_EQ(r.com.out.id[4], 5.0);
  EXPECT_FALSE(r.nextGroup());
}

TEST(Input, OutOfMemoryWhileGrowingEndsTheGroup) {
  std::string csv = "y";
  for (int i = 0; i < 4000; ++i) csv += "/1";
  // Room for the first arrays, not for 4000 records.
  InputRun r("interval= id= enobs=16 memsize=40000 csv=" + csv);
  ASSERT_EQ(r.read(), -1);
  r.expect("err=1 rc=1016");
  EXPECT_EQ(r.com.in.id, nullptr);
  EXPECT_EQ(r.com.in.y, nullptr);
  EXPECT_EQ(r.com.memdef, 0);
}

TEST(Input, SeasonColumnWidth) {
  const std::pair<long, int> cases[] = {{12, 4}, {9999, 4}, {10000, 5}, {9999999999L, 10}, {10000000000L, 20}};
  for (const auto& [ns, width] : cases) EXPECT_EQ(seasonColumnWidth(ns), width) << ns;
}

TEST(Input, SeveralSeriesGoRecordMajorToTheSpool) {
  const std::string two =
      "series=a,b csv=date,a,b/2020-01-01,1,10/2020-02-01,,1e200/2020-03-01,3,30/2020-04-01,.A,40";
  InputRun r(two);
  ASSERT_EQ(ztinit(r.host, &r.com.infile, &r.com.outfile), 0);
  ASSERT_EQ(r.read(), -1);
  // The second record is missing in a and too large in b.
  r.expect("msgs=14 err=0 in=4 n=3 big=1 v=2,3,1,0,2");
  const VAR& b = r.com.vars[1];
  EXPECT_EQ(testing::cells(std::vector<long>{b.n, b.start, b.stop, b.nmiss}.data(), 4), "3,0,3,1");
  std::vector<double> cells(8);
  ASSERT_EQ(ztget(r.host, r.com.outfile, 0, 8, cells.data()), 0);
  // Every missing value of the input leaves as the ordinary one.
  EXPECT_EQ(testing::cells(cells.data(), 8), "1,10,.,.,3,30,.,40");
  for (double c : cells) EXPECT_TRUE(!wzmis(c) || missCode(c) == '.');
  EXPECT_FALSE(r.nextGroup());
  EXPECT_NE(r.com.in.y, nullptr);  // made by allocate for the series read back
  // A failed spool write ends the step.
  InputRun f(two);
  ASSERT_EQ(ztinit(f.host, &f.com.infile, &f.com.outfile), 0);
  f.host.setSpoolWriteFailure(2);
  EXPECT_EQ(f.read(), kRcSpool);
  f.expect("msgs=40 rc=1020");
}

TEST(Input, TrendStatisticsOfTheRawRecords) {
  InputRun r("acc=1 trend=2 csv=date,y/2020-01-03,1/2020-01-20,3/2020-03-02,/2020-03-05,4/2020-03-09,8");
  ASSERT_EQ(r.read(), -1);
  r.expect("err=0 out=3");
  ASSERT_GE(r.com.trend.nsa, 3);
  analysis(&r.com);
  EXPECT_EQ(r.com.trend.nt, 3);
  // Per month: records, values, missing ones, sum, mean, median, standard deviation.
  for (const auto& [t, want] : {std::pair{0, "2,2,0,4,2,2,1.4142135623730951"}, {1, "0,0,0,.,.,.,."},
                                {2, "3,2,1,12,6,6,2.8284271247461903"}}) {
    const ZINT_STATS& s = r.com.trend.stats[t];
    const double v[] = {double(s.nobs), double(s.n), double(s.nmiss), s.sum, s.mean, s.median, s.std};
    EXPECT_EQ(testing::cells(v, 7), want) << t;
  }
  // On the fast path the positions count from START=.
  InputRun f("trend=2 start=2019-11-01 csv=date,y/2020-01-01,1/2020-02-01,2/2020-03-01,3");
  ASSERT_EQ(f.read(), -1);
  f.expect("err=0 pos=2,3,4");
  analysis(&f.com);
  EXPECT_EQ(f.com.trend.stats[0].nobs, 0);
  EXPECT_EQ(f.com.trend.stats[4].sum, 3.0);
}

TEST(Input, FrameLongerThanTheLargestCount) {
  InputRun r("csv=y/1 interval= id= nby=1");
  r.com.out.nobs = 5;
  r.com.out.tobs = kLargestCount + 1;
  allocate(&r.com);
  r.expect("msgs=31 err=1 rc=108");
  EXPECT_EQ(r.com.out.y, nullptr);
}

}  // namespace
}  // namespace qvt
