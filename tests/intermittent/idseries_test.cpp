// Loading a demand series, checked against a direct re-derivation: the
// calendar of std::chrono gives the month of each time ID, the components
// follow from their definitions by plain loops, the statistics by long double.
// The base search and the test number against values worked by hand.
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <vector>

#include "intermittent/idseries.hpp"
#include "run/missing.hpp"

namespace qvt {
namespace {

using namespace std::chrono;

constexpr double M = kMissing;

// Day 0 is 1960-01-01, 3653 days before the Unix epoch; months count from year 0.
long firstDayOfMonth(long m) {
  return (sys_days{year{int(m / 12)} / month{unsigned(m % 12 + 1)} / 1}.time_since_epoch()).count() + 3653;
}

// Equal within 1e-12, or both missing.
bool same(double a, double b) { return wzmis(a) ? wzmis(b) != 0 : std::fabs(a - b) < 1e-12; }

struct Loaded {
  IDSERIES* ids = nullptr;
  explicit Loaded(const char* name, int ns = 0) {
    INTERVAL i;
    EXPECT_EQ(zintstr(name, -1, &i), 0);
    EXPECT_EQ(idsint(2, 1, &i, "B", ns, &ids), 0);
  }
  ~Loaded() { idstrm(&ids); }
  // Monthly time IDs from 2020-01, one per observation.
  int load(const std::vector<double>& y, double base, long holdout = 0, long back = 0) {
    std::vector<double> tid;
    for (long t = 0; t < long(y.size()); ++t) tid.push_back(double(firstDayOfMonth(2020 * 12 + t)));
    return idsset(ids, long(y.size()), y.data(), tid.data(), nullptr, base, holdout, back);
  }
};

// Random MONTH and DAY series (records may share a month, or a day) against
// the definitions of the components, the ranges and the statistics.
TEST(Idsset, ComponentsMatchDirectDerivation) {
  unsigned seed = 12345;
  auto rnd = [&](unsigned m) { return (seed = seed * 1103515245u + 12345u) / 65536u % m; };
  for (int rep = 0; rep < 60; ++rep) {
    const bool mon = rep % 2 == 0;
    Loaded l(mon ? "MONTH" : "DAY", mon ? 12 : 7);
    const long nobs = 5 + long(rnd(40)), holdout = long(rnd(6)), back = long(rnd(4));
    // Each record lies in interval number `at` (months from year 0, or days)
    // at a random day of it; the demands follow from their definition.
    std::vector<double> y, tid, dsize;
    std::vector<long> di, dobs;  // interval number and observation of each demand
    long at = mon ? 2019 * 12 : 21000, at0 = at, last = at;
    for (long t = 0; t < nobs; ++t, at += long(rnd(3))) {
      const double d = double(mon ? firstDayOfMonth(at) + long(rnd(28)) : at);
      tid.push_back(t > 0 ? std::max(tid.back(), d) : d);  // time IDs never go back
      const unsigned k = rnd(10);
      y.push_back(k < 5 ? 0.0 : k == 5 ? kMissing : double(k) - 7.5);
      last = at;
      if (y[t] == 0 || wzmis(y[t])) continue;
      if (!di.empty() && di.back() == at) dsize.back() += y[t];
      else di.push_back(at), dobs.push_back(t), dsize.push_back(y[t]);
    }
    const int rc = idsset(l.ids, nobs, y.data(), tid.data(), nullptr, 0.0, holdout, back);
    const long n = long(di.size());
    IDSERIES& s = *l.ids;
    ASSERT_EQ(s.n, n);
    long nback = 0, nhold = 0;
    for (long i = 0; i < n; ++i) {
      const double intv = double(i == 0 ? di[0] - at0 + 1 : di[i] - di[i - 1]);
      const long first = mon ? firstDayOfMonth(di[i]) : di[i];
      EXPECT_EQ(s.intv.data[i], intv) << rep << " " << i;
      EXPECT_DOUBLE_EQ(s.size.data[i], dsize[i]);
      EXPECT_DOUBLE_EQ(s.adem.data[i], dsize[i] / intv);
      EXPECT_EQ(s.obs[i], dobs[i]);
      EXPECT_EQ(s.time[i], double(first));
      EXPECT_EQ(s.scodes[i], mon ? int(di[i] % 12) : int((first + 5) % 7));  // day 0 is a Friday
      nback += back > 0 && dobs[i] >= nobs - back;
      nhold += holdout > 0 && dobs[i] < nobs - back && dobs[i] >= nobs - back - holdout;
    }
    const long m = n - nback;
    const int want = holdout > 0 && nhold == 0 ? 2 : back > 0 && nback == 0 ? 3 : 0;
    EXPECT_EQ(rc, n == 0 ? kIdsNoDemand : m < 1 ? kIdsNoFitDemand : want);
    if (m < 1) continue;
    EXPECT_EQ(s.intv.data[n], double(last - di[n - 1] + 1));
    EXPECT_EQ(s.time[n], double(mon ? firstDayOfMonth(last + 1) : last + 1));
    EXPECT_EQ(s.intv.stats.n, m - 1);
    // Sizes over the m fit and hold-out demands, overall and by season.
    ASSERT_EQ(idsss(l.ids, 1, 1), 0);
    long double sum = 0, ss = 0;
    std::vector<long double> scnt(12);
    for (long i = 0; i < m; ++i) sum += dsize[i], scnt[s.scodes[i]]++;
    for (long i = 0; i < m; ++i) ss += (dsize[i] - sum / m) * (dsize[i] - sum / m);
    EXPECT_TRUE(same(s.size.stats.avg, double(sum / m)));
    EXPECT_TRUE(same(s.size.stats.std, m > 1 ? double(std::sqrt(ss / (m - 1))) : M));
    for (int k = 0; k < (mon ? 12 : 7); ++k) EXPECT_DOUBLE_EQ(s.size.seasons[k].prob, double(scnt[k] / m));
  }
}

TEST(Idsset, EdgeCases) {
  Loaded l("MONTH");
  // Departures under 1.5e-154 but above 1e-12 of the largest are demands
  // too, and the demand vectors hold them all.
  EXPECT_EQ(l.load({1e-150, 1e-160, 1e-160, 1e-160}, 0.0), 0);
  EXPECT_EQ(l.ids->n, 4);
  // A constant non-zero series: the base search ties, base 0, every month a
  // demand, intervals of 1 up to the last observation.
  EXPECT_EQ(l.load({3, 3, 3, 3, 3, 3, 3}, M), 0);
  EXPECT_EQ(l.load({0, 0, 0, 0, 0, 0}, M), kIdsNoDemand);
  // Fewer than 6 observations: the base search gives 5, the load goes on with base 0.
  EXPECT_EQ(l.load({4, 4, 4, 0, 4}, M), 0);
  // zero = 1e-12 times the largest departure: at it a demand, below it none.
  EXPECT_EQ(l.load({0, 1, 0, 1e-12, 0.99e-12, 0}, 0.0), 0);
  EXPECT_EQ(l.ids->intv.data[2], 3.0);
  // One demand: interval and average statistics are empty.
  EXPECT_EQ(l.load({0, 0, 5, 0}, 0.0), 0);
  EXPECT_EQ(l.ids->adem.stats.n, 0);
  EXPECT_EQ(l.load({0, 1e103, 0}, 0.0), kIdsExtreme);
  const double y[] = {1, 2, 3}, back[] = {100, 50, 200}, hole[] = {100, M, 200};
  EXPECT_EQ(idsset(l.ids, 3, y, back, nullptr, 0.0, 0, 0), kIdsBadTime);
  EXPECT_EQ(idsset(l.ids, 3, y, hole, nullptr, 0.0, 0, 0), kIdsBadTime);
  EXPECT_EQ(idsset(l.ids, 3, y, back, nullptr, 0.0, -1, 0), kIdsBadArg);
  IDSERIES* none = nullptr;
  l.ids->interval.intcode = kIntObs;  // no seasonal cycle
  EXPECT_EQ(idsint(0, 0, &l.ids->interval, "B", -1, &none), kIdsNoSeasons);
}

TEST(Idstrn, AverageSeriesAndTransforms) {
  Loaded l("MONTH");
  const double y[] = {1, 4, 6, 1, 1, 9, 1};
  const double tid[] = {0, 31, 40, 60, 91, 121, 152};  // Jan, Feb, Feb, Mar, Apr, May, Jun 1960
  ASSERT_EQ(idsset(l.ids, 7, y, tid, nullptr, 1.0, 0, 0), 0);
  double s[7];
  ASSERT_EQ(idsats(l.ids, 0, 1, s), 0);
  // The average-demand series spreads each size over the interval it
  // closes. Base 1; sizes 3 + 5 in February over 2 months, 8 in May over 3;
  // none past May.
  const double want[] = {5, 5, 1 + 8.0 / 3, 1 + 8.0 / 3, 1 + 8.0 / 3, M, M};
  for (int t = 0; t < 7; ++t) EXPECT_TRUE(same(s[t], want[t])) << t;
  ASSERT_EQ(l.load({0, 2, 0, 0, 8, -1, 0}, 0.0), 0);
  // Sizes 2, 8, -1: a fixed LOG fails the call, the plain sizes stay valid.
  EXPECT_EQ(idstrn(l.ids, 1, M, 1, M, 0, M), kIdsTransform);
  // Intervals 3 and 1 from demand 1 on: mean of logs ln(3)/2.
  EXPECT_NEAR(l.ids->itrns.stats.avg, std::log(3.0) / 2, 1e-15);
  // AUTO: sizes stay plain without failing; positive intervals take the log.
  EXPECT_EQ(idstrn(l.ids, 10, M, 10, M, 0, M), 0);
  EXPECT_EQ(l.ids->strns.trnscode, 0);
  EXPECT_EQ(l.ids->itrns.trnscode, 1);
  EXPECT_NEAR(l.ids->itrns.data[0], std::log(2.0), 1e-15);
  // One demand: the smallest average demand is data[0] = 5/2.
  ASSERT_EQ(l.load({0, 5, 0}, 0.0), 0);
  EXPECT_EQ(idstrn(l.ids, 1, M, 1, M, 1, M), 0);
  EXPECT_NEAR(l.ids->atrns.data[0], std::log(2.5), 1e-15);
}

// Observation numbers as times (no time IDs): the intervals are differences.
double testNumber(const std::vector<long>& at, long nobs, long holdout, int eflag) {
  Loaded l("NONE");
  std::vector<double> y(nobs, 0.0);
  for (long t : at) y[t] = 1;
  EXPECT_GE(idsset(l.ids, nobs, y.data(), nullptr, nullptr, 0.0, holdout, 0), 0);
  double p = -1;
  EXPECT_EQ(idsdti(l.ids, eflag, &p), 0);
  return p;
}

struct BaseCase {
  std::vector<double> y;
  int rc;
  double base;
  long ndistinct;
};

// By hand: min, median (mean of the two middle values for even counts) and
// max, each counted; the median only when it stands apart from both ends.
TEST(Idsdar, BaseAndTestNumber) {
  const BaseCase cases[] = {
      {{1e154, 0}, kIdsExtreme, 0, 0},  // too extreme for the squares: nothing set
      {{2, 2, 5, 2, 2, 3, 2, 2}, 0, 2, 0},  // rests at the min, which holds 6 of 8
      {{10, 10, 10, 12, 10, 7, 10, 10}, 0, 10, 3},  // rests at 10, median holds 6
      {{0, 9, 9, 9, 9, 9, 9}, 0, 9, 2},  // rests at the max
      {{M, 1, 2, 9, 9, 9, 9, 9}, 0, 9, -1},  // value 2 uncovered, a missing: -1
      {{M, M, M, M, 1, 1, 3}, 0, 0, 3},  // missing the most frequent state
      {{0, 0, 0, 5, 5, 5}, 0, 0, 2},  // min and max tie
      {{0, 0, 0, 0, 0, 0}, 0, 0, 1},  // all zeros
      {{0, 0, 0, 5, 0}, kIdsShortBase, 0, 0},  // fewer than 6
      {{M, M, M}, kIdsAllMissing, 0, -1},  // all missing
  };
  double w[8], base = 0;
  long nd = 0;
  for (const BaseCase& c : cases) {
    EXPECT_EQ(idsdar(c.y.data(), w, long(c.y.size()), 1.0, &base, &nd), c.rc) << c.y[0];
    EXPECT_EQ(base, c.base) << c.y[0];
    EXPECT_EQ(nd, c.ndistinct) << c.y[0];
  }
  EXPECT_EQ(idsdar(w, w, 2, 0.5, &base, &nd), kIdsBadArg);
  // The test number: the median interval of the demands in the last 100
  // observations of the range.
  // Intervals of 1 up to observation 49, then of 5: only the 5s lie in the
  // last 100 observations. At the edge, position 4 of 104 counts: 2, 2, 3.
  std::vector<long> at;
  for (long t = 0; t < 150; t += t < 49 ? 1 : 5) at.push_back(t);
  EXPECT_EQ(testNumber(at, 150, 0, 0), 5.0);
  EXPECT_EQ(testNumber({0, 2, 4, 6, 9}, 104, 0, 0), 2.0);
  // Intervals 2, 4, 1, 7 (the first demand's is dropped): an even count
  // gives (2 + 4)/2.
  EXPECT_EQ(testNumber({3, 5, 9, 10, 17}, 20, 0, 0), 3.0);
  // A hold-out of 11 leaves the fit sample 3, 5 under eflag 2: interval 2
  // only.
  EXPECT_EQ(testNumber({3, 5, 9, 10, 17}, 20, 11, 2), 2.0);
  EXPECT_TRUE(wzmis(testNumber({3}, 5, 0, 0)));
  EXPECT_EQ(idsdti(nullptr, 0, nullptr), kIdsBadArg);
}

}  // namespace
}  // namespace qvt
