// Cross-series performance collector against a slow direct computation: the
// test keeps every error in plain vectors (by series, by BY group and
// horizon, by run and horizon), forms min, max, mean, mean absolute, median
// absolute and geometric mean absolute by their textbook definitions in long
// double, and compares with what the running sums give after the closes.
#include "stats/ztscp.hpp"

#include "run/missing.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>
#include <vector>

namespace qvt {
namespace {

using LD = long double;
constexpr long kLead = 4;
constexpr LD kTiny = 1.491668147e-154L;  // the log floor of an absolute error of 0

struct Errs {
  std::vector<LD> e[3];  // pct, sym, rel
  long n = 0, lower = 0, upper = 0;
};

void expectStat(double got, const std::vector<LD>& e, int acc, const char* where) {
  SCOPED_TRACE(::testing::Message() << where << " acc " << acc << " n " << e.size());
  if (e.empty()) {
    EXPECT_TRUE(wzmis(got));
    return;
  }
  std::vector<LD> a;
  for (LD v : e) a.push_back(std::fabs(v));
  std::sort(a.begin(), a.end());
  LD want = 0, logs = 0;
  for (LD v : a) logs += std::log(v == 0 ? kTiny : v);
  const std::size_t n = a.size();
  switch (acc) {
    case kCpMin: want = *std::min_element(e.begin(), e.end()); break;
    case kCpMax: want = *std::max_element(e.begin(), e.end()); break;
    case kCpMean: for (LD v : e) want += v / n; break;
    case kCpAMean: for (LD v : a) want += v / n; break;
    case kCpMedian: want = n % 2 ? a[n / 2] : (a[n / 2 - 1] + a[n / 2]) / 2; break;
    case kCpGm: want = std::exp(logs / n); break;
  }
  EXPECT_NEAR(got, static_cast<double>(want), static_cast<double>(1e-11L * std::max<LD>(1, std::fabs(want))));
}

void expectLevel(const std::vector<ZTS_CP_JSTATS>& level, const std::vector<Errs>& want, const char* where) {
  double v[kLead + 1];
  const int types[] = {kCpPct, kCpSym, kCpRel};
  for (int k = 0; k < 3; ++k)
    for (int acc : {kCpMin, kCpMax, kCpMean, kCpAMean, kCpGm}) {
      ASSERT_EQ(ztscpv(level.data(), kLead + 1, types[k], acc, v), 0);
      for (long t = 0; t <= kLead; ++t) expectStat(v[t], want[t].e[k], acc, where);
    }
  for (int acc : {kCpLower, kCpUpper, kCpTotal}) {
    ASSERT_EQ(ztscpv(level.data(), kLead + 1, kCpCl, acc, v), 0);
    for (long t = 0; t <= kLead; ++t) {
      const Errs& w = want[t];
      const long k = acc == kCpLower ? w.lower : acc == kCpUpper ? w.upper : w.lower + w.upper;
      if (w.n < 1) EXPECT_TRUE(wzmis(v[t])) << where << " horizon " << t;
      else EXPECT_DOUBLE_EQ(v[t], static_cast<double>(k) / static_cast<double>(w.n)) << where << " horizon " << t;
    }
  }
}

TEST(Ztscp, RunningSumsMatchDirectStatisticsAtEveryLevel) {
  std::mt19937 rng(20261123);
  std::uniform_real_distribution<double> u(50, 150);
  std::uniform_int_distribution<int> pick(0, 9);
  ZTS_CP* cp = nullptr;
  ASSERT_EQ(ztscpi(3, kLead, nullptr, &cp), 0);
  std::vector<Errs> run(kLead + 1);
  for (int group = 0; group < 3; ++group) {
    ASSERT_EQ(ztscpr(cp, 0, 1, 0), 0);
    std::vector<Errs> grp(kLead + 1);
    for (int series = 0; series < 4; ++series) {
      ASSERT_EQ(ztscpr(cp, 1, 0, 0), 0);
      // Group 2 is short: its last horizon is reached by no series.
      const long T = group == 2 ? kLead - 1 : 1 + pick(rng) % (kLead + 2);
      std::vector<double> a(T), p(T), lo(T), up(T);
      for (long i = 0; i < T; ++i) {
        a[i] = pick(rng) == 0 ? 0.0 : pick(rng) == 1 ? kMissing : u(rng);
        p[i] = pick(rng) == 2 ? a[i] : pick(rng) == 3 ? kMissing : u(rng);
        lo[i] = pick(rng) == 4 ? kMissing : u(rng) - 30;
        up[i] = lo[i] + 60;
      }
      const double hold = u(rng);
      ASSERT_GE(ztscpa(cp, hold, a.data(), p.data(), lo.data(), up.data(), T, -1), 0);
      ASSERT_EQ(ztscpci(cp), 0);
      Errs indiv;
      const long skip = std::max(0L, T - kLead);
      for (long t = 0; t + skip < T; ++t) {
        const LD ai = a[t + skip], pi = p[t + skip], l = lo[t + skip], h = up[t + skip];
        std::vector<Errs*> into{&indiv, &grp[t], &grp[kLead], &run[t], &run[kLead]};
        if (!wzmis(a[t + skip]) && !wzmis(lo[t + skip]) && !wzmis(up[t + skip]))
          for (std::size_t j = 1; j < into.size(); ++j) {
            into[j]->n += 1;
            into[j]->lower += ai < l;
            into[j]->upper += ai > h;
          }
        if (wzmis(a[t + skip]) || wzmis(p[t + skip])) continue;
        const LD e = ai - pi;
        const bool pct = ai != 0 || e == 0;  // a percent error of a zero actual isn't counted
        for (Errs* x : into) {
          if (pct) x->e[0].push_back(e == 0 ? 0 : e / ai);
          x->e[1].push_back(e == 0 ? 0 : e / ((ai + pi) / 2));
          x->e[2].push_back(e == 0 ? 0 : e / (ai - hold));
        }
      }
      const ZTS_CP_STATS* got[] = {&cp->indiv.pct, &cp->indiv.sym, &cp->indiv.rel};
      for (int k = 0; k < 3; ++k) {
        EXPECT_EQ(got[k]->n, static_cast<long>(indiv.e[k].size()));
        expectStat(got[k]->min, indiv.e[k], kCpMin, "indiv");
        expectStat(got[k]->max, indiv.e[k], kCpMax, "indiv");
        expectStat(got[k]->mean, indiv.e[k], kCpMean, "indiv");
        expectStat(got[k]->amean, indiv.e[k], kCpAMean, "indiv");
        expectStat(got[k]->median, indiv.e[k], kCpMedian, "indiv");
        expectStat(got[k]->gm, indiv.e[k], kCpGm, "indiv");
      }
    }
    ASSERT_EQ(ztscpcg(cp), 0);
    expectLevel(cp->global, grp, "global");
    // The median is only formed per series; merged records keep 0.
    EXPECT_EQ(cp->global[0].pct.median, 0.0);
  }
  ASSERT_EQ(ztscpcu(cp), 0);
  expectLevel(cp->univ, run, "univ");
  ztscpt(&cp);
  EXPECT_EQ(cp, nullptr);
}

TEST(Ztscp, ReturnCodesAndRecordGuards) {
  ZTS_CP* cp = reinterpret_cast<ZTS_CP*>(&cp);
  EXPECT_EQ(ztscpi(2, 3, nullptr, nullptr), -99);
  EXPECT_EQ(ztscpi(0, 3, nullptr, &cp), -2);
  EXPECT_EQ(cp, nullptr);
  EXPECT_EQ(ztscpi(2, 0, nullptr, &cp), -3);
  ASSERT_EQ(ztscpi(2, 3, nullptr, &cp), 0);
  const double a[] = {1, 2, 3}, p[] = {1, 2, 4};
  const struct {
    ZTS_CP* cp;
    const double *a, *p;
    long T, index;
    int rc;
  } adds[] = {{nullptr, a, p, 3, -1, -99}, {cp, nullptr, p, 3, -1, -99}, {cp, a, nullptr, 3, -1, -99},
              {cp, a, p, 3, -2, -99},      {cp, a, p, 3, 2, -99},        {cp, a, p, 0, -1, -99},
              {cp, a, p, 3, 1, 0}};
  for (const auto& c : adds) EXPECT_EQ(ztscpa(c.cp, 0.5, c.a, c.p, nullptr, nullptr, c.T, c.index), c.rc);
  // index 1 reaches the variable level; without limits nothing is covered.
  EXPECT_EQ(cp->local[1][2].pct.n, 1);
  EXPECT_EQ(cp->indiv.cl.n, 0);
  EXPECT_EQ(ztscpr(nullptr, 1, 1, 1), -99);
  EXPECT_EQ(ztscpci(nullptr), -99);
  EXPECT_EQ(ztscpcg(nullptr), -99);
  EXPECT_EQ(ztscpcu(nullptr), -99);
  double v[4];
  const struct {
    long n;
    int type, acc;
    int rc;
  } reads[] = {{4, 7, 1, -99}, {4, kCpPct, 0, -99}, {4, kCpPct, 8, -99}, {4, kCpCl, 7, -99},
               {0, kCpSym, 1, -99}, {4, kCpRel, kCpSum, 0}, {4, kCpCl, kCpTotal, 0}};
  for (const auto& r : reads) EXPECT_EQ(ztscpv(cp->univ.data(), r.n, r.type, r.acc, v), r.rc);
  EXPECT_EQ(ztscpv(cp->univ.data(), 4, kCpPct, 1, nullptr), -99);
  ztscpt(&cp);
  ztscpt(nullptr);

  ZTS_CP_STATS s;
  ztscpei(&s);
  EXPECT_EQ(ztscpea(kMissing, 1.0, &s), 1);
  EXPECT_EQ(s.n, 0);
  EXPECT_EQ(ztscpes(&s), 2);
  EXPECT_TRUE(wzmis(s.min) && wzmis(s.sum) && wzmis(s.mean) && wzmis(s.median) && wzmis(s.gm));
  ztscpei(&s);
  // ln of the mean absolute error beyond the exp bound 709.78...: rc 3.
  EXPECT_EQ(ztscpea(1e300, 1e300, &s), 0);
  EXPECT_EQ(ztscpea(1e300, 1e300, &s), 0);
  s.alsum = 2 * 709.8;
  EXPECT_EQ(ztscpes(&s), 3);
  EXPECT_TRUE(wzmis(s.gm));
  EXPECT_DOUBLE_EQ(s.amean, 1e300);
}

}  // namespace
}  // namespace qvt
