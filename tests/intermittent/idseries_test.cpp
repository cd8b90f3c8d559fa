// Loading a demand series, checked against a direct re-derivation: the
// calendar of std::chrono gives the month of each time ID, the components
// follow from their definitions by plain loops, the statistics by long double.
#include <gtest/gtest.h>

#include <chrono>
#include <algorithm>
#include <cmath>
#include <map>
#include <vector>

#include "intermittent/idseries.hpp"
#include "run/missing.hpp"

namespace qvt {
namespace {

using std::chrono::days;
using std::chrono::sys_days;
using std::chrono::year_month_day;

INTERVAL intervalOf(const char* name) {
  INTERVAL i;
  EXPECT_EQ(zintstr(name, -1, &i), 0);
  return i;
}
// Day 0 is 1960-01-01, 3653 days before the Unix epoch.
long monthIndex(long d) {
  const year_month_day c{sys_days{days{d - 3653}}};
  return int(c.year()) * 12 + long(unsigned(c.month())) - 1;
}
long firstDayOfMonth(long idx) {
  using namespace std::chrono;
  return (sys_days{year{int(idx / 12)} / month{unsigned(idx % 12 + 1)} / 1}.time_since_epoch()).count() + 3653;
}

struct Loaded {
  IDSERIES* ids = nullptr;
  explicit Loaded(const char* interval, int ns = 0) {
    const INTERVAL i = intervalOf(interval);
    EXPECT_EQ(idsint(2, 1, &i, "B", ns, &ids), 0);
  }
  ~Loaded() { idstrm(&ids); }
};

// Month series with monthly time IDs from 2020-01, one per observation.
int loadMonthly(Loaded& l, const std::vector<double>& y, double base, long holdout = 0, long back = 0) {
  std::vector<double> tid;
  for (long t = 0; t < long(y.size()); ++t) tid.push_back(double(firstDayOfMonth(2020 * 12 + t)));
  return idsset(l.ids, long(y.size()), y.data(), tid.data(), nullptr, base, holdout, back);
}

// Random MONTH and DAY series (records may share a month, or a day) against
// the definitions of the components, the ranges and the statistics.
TEST(Idsset, ComponentsMatchDirectDerivation) {
  unsigned seed = 12345;
  auto rnd = [&](unsigned m) { return (seed = seed * 1103515245u + 12345u) / 65536u % m; };
  for (int rep = 0; rep < 60; ++rep) {
    const bool month = rep % 2 == 0;
    Loaded l(month ? "MONTH" : "DAY", month ? 12 : 7);
    const long nobs = 5 + long(rnd(40)), holdout = long(rnd(6)), back = long(rnd(4));
    std::vector<double> y, tid;
    long idx = month ? 2019 * 12 : 21000;
    for (long t = 0; t < nobs; ++t) {
      idx += t == 0 ? 0 : long(rnd(3));
      const double d = double(month ? firstDayOfMonth(idx) + long(rnd(28)) : idx);
      tid.push_back(t > 0 ? std::max(tid.back(), d) : d);  // time IDs never go back
      const unsigned k = rnd(10);
      y.push_back(k < 5 ? 0.0 : k == 5 ? kMissing : double(k) - 7.5);
    }
    std::vector<long> di, dobs;  // oracle: interval index and observation of each demand
    std::vector<double> dsize;
    auto at = [&](long t) { return month ? monthIndex(long(tid[t])) : long(tid[t]); };
    for (long t = 0; t < nobs; ++t) {
      if (wzmis(y[t]) || y[t] == 0) continue;
      if (!di.empty() && di.back() == at(t)) {
        dsize.back() += y[t];
      } else {
        di.push_back(at(t)), dobs.push_back(t), dsize.push_back(y[t]);
      }
    }
    const int rc = idsset(l.ids, nobs, y.data(), tid.data(), nullptr, 0.0, holdout, back);
    const long n = long(di.size());
    if (n == 0) {
      EXPECT_EQ(rc, kIdsNoDemand);
      continue;
    }
    IDSERIES& s = *l.ids;
    ASSERT_EQ(s.n, n);
    long nback = 0, nhold = 0;
    for (long i = 0; i < n; ++i) {
      const double intv = i == 0 ? double(di[0] - at(0) + 1) : double(di[i] - di[i - 1]);
      EXPECT_EQ(s.intv.data[i], intv) << rep << " " << i;
      EXPECT_DOUBLE_EQ(s.size.data[i], dsize[i]);
      EXPECT_DOUBLE_EQ(s.adem.data[i], dsize[i] / intv);
      EXPECT_EQ(s.obs[i], dobs[i]);
      const long first = month ? firstDayOfMonth(di[i]) : di[i];
      EXPECT_EQ(s.time[i], double(first));
      EXPECT_EQ(s.scodes[i], month ? int(di[i] % 12) : int(((first + 5) % 7 + 7) % 7));
      nback += back > 0 && dobs[i] >= nobs - back;
      nhold += holdout > 0 && dobs[i] < nobs - back && dobs[i] >= nobs - back - holdout;
    }
    EXPECT_EQ(s.intv.data[n], double(at(nobs - 1) - di[n - 1] + 1));
    EXPECT_EQ(s.time[n], double(month ? firstDayOfMonth(at(nobs - 1) + 1) : at(nobs - 1) + 1));
    EXPECT_EQ(s.nback, nback);
    EXPECT_EQ(s.nholdout, nhold);
    const long m = n - nback;
    EXPECT_EQ(rc, m < 1 ? kIdsNoFitDemand : holdout > 0 && nhold == 0 ? 2 : back > 0 && nback == 0 ? 3 : 0);
    if (m < 1) continue;
    // Sizes over the m fit and hold-out demands: mean over m, sample std.
    long double sum = 0, ss = 0;
    for (long i = 0; i < m; ++i) sum += dsize[i];
    for (long i = 0; i < m; ++i) ss += (dsize[i] - sum / m) * (dsize[i] - sum / m);
    EXPECT_EQ(s.size.stats.n, m);
    EXPECT_NEAR(s.size.stats.avg, double(sum / m), 1e-12);
    if (m > 1) {
      EXPECT_NEAR(s.size.stats.std, double(std::sqrt(ss / (m - 1))), 1e-12);
    }
    EXPECT_EQ(s.intv.stats.n, m - 1);
    // Seasonal statistics of sizes: counts and means per season by grouping.
    ASSERT_EQ(idsss(l.ids, 1, 1), 0);
    std::map<int, std::pair<long, long double>> bySeason;
    for (long i = 0; i < m; ++i) bySeason[s.scodes[i]].first++, bySeason[s.scodes[i]].second += dsize[i];
    for (int k = 0; k < (month ? 12 : 7); ++k) {
      const auto& e = bySeason[k];
      EXPECT_EQ(s.size.seasons[k].n, e.first);
      EXPECT_DOUBLE_EQ(s.size.seasons[k].prob, double(e.first) / double(m));
      if (e.first > 0) {
        EXPECT_NEAR(s.size.seasons[k].avg, double(e.second / e.first), 1e-12);
      }
    }
  }
}

TEST(Idsset, EdgeCases) {
  const double M = kMissing;
  Loaded l("MONTH");
  // A constant non-zero series: the base search ties, base 0, every month a demand.
  EXPECT_EQ(loadMonthly(l, {3, 3, 3, 3, 3, 3, 3}, M), 0);
  EXPECT_EQ(l.ids->base, 0.0);
  EXPECT_EQ(l.ids->n, 7);
  EXPECT_EQ(l.ids->intv.stats.min, 1.0);
  EXPECT_EQ(l.ids->intv.stats.max, 1.0);
  EXPECT_EQ(l.ids->intv.data[7], 1.0);  // demand at the last observation
  EXPECT_EQ(loadMonthly(l, {0, 0, 0, 0, 0, 0}, M), kIdsNoDemand);
  // Fewer than 6 observations: the base search gives 5, the load goes on with base 0.
  EXPECT_EQ(loadMonthly(l, {4, 4, 4, 0, 4}, M), 0);
  EXPECT_EQ(l.ids->n, 4);
  // zero = 1e-12 times the largest departure: at it a demand, below it none.
  EXPECT_EQ(loadMonthly(l, {0, 1, 0, 1e-12, 0.99e-12, 0}, 0.0), 0);
  EXPECT_EQ(l.ids->n, 2);
  EXPECT_EQ(l.ids->intv.data[1], 2.0);
  EXPECT_EQ(l.ids->intv.data[2], 3.0);
  // One demand: intv[0] stands, interval and average statistics are empty.
  EXPECT_EQ(loadMonthly(l, {0, 0, 5, 0}, 0.0), 0);
  EXPECT_EQ(l.ids->intv.data[0], 3.0);
  EXPECT_EQ(l.ids->intv.stats.n, 0);
  EXPECT_EQ(l.ids->adem.stats.n, 0);
  // Hold-out of 2 months without demand: 2, statistics already there.
  EXPECT_EQ(loadMonthly(l, {0, 2, 0, 4, 0, 0}, 0.0, 2), kIdsNoHoldoutDemand);
  EXPECT_EQ(l.ids->size.stats.avg, 3.0);
  EXPECT_EQ(l.ids->warning, kIdsNoHoldoutDemand);
  EXPECT_EQ(loadMonthly(l, {0, 2, 0, 4, 0, 0}, 0.0, 0, 1), kIdsNoBackDemand);
  EXPECT_EQ(loadMonthly(l, {0, 0, 0, 0, 0, 6}, 0.0, 0, 1), kIdsNoFitDemand);
  EXPECT_EQ(l.ids->error, 0);
  EXPECT_EQ(loadMonthly(l, {0, 1e103, 0}, 0.0), kIdsExtreme);
  const double y[] = {1, 2, 3}, back[] = {100, 50, 200}, hole[] = {100, M, 200};
  EXPECT_EQ(idsset(l.ids, 3, y, back, nullptr, 0.0, 0, 0), kIdsBadTime);
  EXPECT_EQ(idsset(l.ids, 3, y, hole, nullptr, 0.0, 0, 0), kIdsBadTime);
  EXPECT_EQ(l.ids->error, kIdsBadTime);
  EXPECT_EQ(idsset(l.ids, 0, y, back, nullptr, 0.0, 0, 0), kIdsBadArg);
  EXPECT_EQ(idsset(l.ids, 3, y, back, nullptr, 0.0, -1, 0), kIdsBadArg);
  const INTERVAL obs = intervalOf("OBS");
  IDSERIES* none = nullptr;
  EXPECT_EQ(idsint(0, 0, &obs, "B", -1, &none), kIdsNoSeasons);
  EXPECT_EQ(none, nullptr);
}

// Two records of one month are one demand with the sum of both, and the
// average-demand series spreads each size over the interval it closes.
TEST(Idsset, SharedMonthAndAverageDemandSeries) {
  Loaded l("MONTH");
  const double base = 1;
  const double y[] = {1, 4, 6, 1, 1, 9, 1};
  const double tid[] = {0, 31, 40, 60, 91, 121, 152};  // Jan, Feb, Feb, Mar, Apr, May, Jun 1960
  ASSERT_EQ(idsset(l.ids, 7, y, tid, nullptr, base, 0, 0), 0);
  ASSERT_EQ(l.ids->n, 2);
  EXPECT_EQ(l.ids->size.data[0], 8.0);  // (4 - 1) + (6 - 1)
  EXPECT_EQ(l.ids->intv.data[1], 3.0);  // February to May
  double s[7];
  ASSERT_EQ(idsats(l.ids, 0, 1, s), 0);
  // adem[0] = 8/2 on obs 0..1, adem[1] = 8/3 on obs 2..4; from obs 5 on no closed interval.
  const double want[] = {5, 5, 1 + 8.0 / 3, 1 + 8.0 / 3, 1 + 8.0 / 3};
  for (int t = 0; t < 5; ++t) EXPECT_DOUBLE_EQ(s[t], want[t]) << t;
  EXPECT_TRUE(wzmis(s[5]) && wzmis(s[6]));
}

TEST(Idstrn, LogAndAuto) {
  Loaded l("MONTH");
  IDSERIES* empty = nullptr;
  const INTERVAL i = intervalOf("MONTH");
  ASSERT_EQ(idsint(0, 0, &i, "B", 0, &empty), 0);
  EXPECT_EQ(idstrn(empty, 1, kMissing, 1, kMissing, 1, kMissing), kIdsNoDemand);
  idstrm(&empty);
  ASSERT_EQ(loadMonthly(l, {0, 2, 0, 0, 8, -1, 0}, 0.0), 0);
  // Sizes 2, 8, -1: a fixed LOG fails the call, the plain sizes stay valid.
  EXPECT_EQ(idstrn(l.ids, 1, kMissing, 1, kMissing, 0, kMissing), kIdsTransform);
  EXPECT_EQ(l.ids->strns.trnscode, 0);
  EXPECT_EQ(l.ids->itrns.trnscode, 1);
  // Intervals 3 and 1 from demand 1 on: mean of logs ln(3)/2.
  EXPECT_NEAR(l.ids->itrns.stats.avg, std::log(3.0) / 2, 1e-15);
  // AUTO: sizes stay plain without failing; positive intervals take the log.
  EXPECT_EQ(idstrn(l.ids, 10, kMissing, 10, kMissing, 0, kMissing), 0);
  EXPECT_EQ(l.ids->strns.trnscode, 0);
  EXPECT_EQ(l.ids->error, kIdsTransform);
  EXPECT_NEAR(l.ids->itrns.data[0], std::log(2.0), 1e-15);
  // One demand: the interval's smallest value is data[0] = 2.
  ASSERT_EQ(loadMonthly(l, {0, 5, 0}, 0.0), 0);
  EXPECT_EQ(idstrn(l.ids, 1, kMissing, 1, kMissing, 1, kMissing), 0);
  EXPECT_NEAR(l.ids->atrns.data[0], std::log(2.5), 1e-15);
}

}  // namespace
}  // namespace qvt
