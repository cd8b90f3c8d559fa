// Cross-series performance collector against a slow direct computation: the
// test keeps every error in plain vectors (by series, by BY group and
// horizon, by run and horizon), forms min, max, mean, mean absolute, median
// absolute and geometric mean absolute by their textbook definitions in long
// double, and compares with what the running sums give after the closes.
#include "stats/ztscp.hpp"

#include "dense_oracle.hpp"

namespace qvt {
namespace {

using namespace testing_dense;
constexpr long kLead = 4;

struct Errs {
  std::vector<LD> e[3];  // pct, sym, rel
  double n = 0, lower = 0, upper = 0;  // actuals with both limits, below, above
};

// A statistic by its textbook definition over the kept errors e, against
// the collector's value (missing for an empty record).
void expectStat(double got, const std::vector<LD>& e, int acc, const char* where) {
  EXPECT_EQ(wzmis(got) != 0, e.empty()) << where << " acc " << acc;
  if (e.empty()) return;
  std::vector<LD> a;
  for (LD v : e) a.push_back(std::fabs(v));
  std::sort(a.begin(), a.end());
  const std::size_t n = a.size();
  LD want = acc == kCpMin ? *std::min_element(e.begin(), e.end()) : *std::max_element(e.begin(), e.end());
  if (acc == kCpMean || acc == kCpAMean || acc == kCpGm) want = 0;
  for (std::size_t i = 0; i < n; ++i) {
    if (acc == kCpMean) want += e[i] / n;
    if (acc == kCpAMean) want += a[i] / n;
    // An absolute error of 0 enters the log at the floor 1.491668147e-154.
    if (acc == kCpGm) want += std::log(a[i] == 0 ? 1.491668147e-154L : a[i]) / n;
  }
  if (acc == kCpGm) want = std::exp(want);
  if (acc == kCpMedian) want = n % 2 ? a[n / 2] : (a[n / 2 - 1] + a[n / 2]) / 2;
  const auto tol = static_cast<double>(1e-11L * std::max<LD>(1, std::fabs(want)));
  EXPECT_NEAR(got, static_cast<double>(want), tol) << where << " acc " << acc << " n " << n;
}

// count consecutive records against the errors kept for each; the median
// is formed for a series only.
void expectLevel(const ZTS_CP_JSTATS* level, long count, const Errs* want, bool median, const char* where) {
  double v[kLead + 1];
  for (int type : {kCpPct, kCpSym, kCpRel})
    for (int acc : {kCpMin, kCpMax, kCpMean, kCpAMean, kCpMedian, kCpGm}) {
      ASSERT_EQ(ztscpv(level, count, type, acc, v), 0);
      for (long t = 0; t < count && (median || acc != kCpMedian); ++t)
        expectStat(v[t], want[t].e[type == kCpPct ? 0 : type == kCpSym ? 1 : 2], acc, where);
    }
  for (int acc : {kCpLower, kCpUpper, kCpTotal}) {
    ASSERT_EQ(ztscpv(level, count, kCpCl, acc, v), 0);
    for (long t = 0; t < count; ++t) {
      const Errs& w = want[t];
      const double k[] = {w.lower, w.upper, w.lower + w.upper};
      EXPECT_TRUE(w.n < 1 ? wzmis(v[t]) != 0 : v[t] == k[acc - kCpLower] / w.n) << where << t;
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
      // Group 2 is short: one series reaches its horizon 3, none horizon 4.
      const long T = group == 2 ? 1 + series % 3 : 1 + pick(rng) % (kLead + 2);
      std::vector<double> a(T), p(T), lo(T), up(T);
      for (long i = 0; i < T; ++i) {
        a[i] = pick(rng) == 0 ? 0.0 : pick(rng) == 1 ? kMissing : u(rng);
        p[i] = pick(rng) == 2 ? a[i] : pick(rng) == 3 ? kMissing : u(rng);
        lo[i] = pick(rng) == 4 ? kMissing : u(rng) - 30;
        up[i] = pick(rng) == 5 ? kMissing : u(rng) + 30;
      }
      const double hold = u(rng);
      ASSERT_GE(ztscpa(cp, hold, a.data(), p.data(), lo.data(), up.data(), T, -1), 0);
      ASSERT_EQ(ztscpci(cp), 0);
      Errs indiv;
      const long skip = std::max(0L, T - kLead);  // only the last kLead elements count
      const double *A = a.data() + skip, *P = p.data() + skip, *L = lo.data() + skip, *U = up.data() + skip;
      for (long t = 0; t + skip < T; ++t) {
        std::vector<Errs*> into{&indiv, &grp[t], &grp[kLead], &run[t], &run[kLead]};
        const bool limits = !wzmis(A[t]) && !wzmis(L[t]) && !wzmis(U[t]);
        for (Errs* x : into) {
          x->n += limits;
          x->lower += limits && A[t] < L[t];
          x->upper += limits && A[t] > U[t];
        }
        if (wzmis(A[t]) || wzmis(P[t])) continue;
        const LD ai = A[t], pi = P[t], e = ai - pi;
        for (Errs* x : into) {
          if (ai != 0 || e == 0) x->e[0].push_back(e == 0 ? 0 : e / ai);  // not for a zero actual
          x->e[1].push_back(e == 0 ? 0 : e / ((ai + pi) / 2));
          x->e[2].push_back(e == 0 ? 0 : e / (ai - hold));
        }
      }
      expectLevel(&cp->indiv, 1, &indiv, true, "indiv");
    }
    ASSERT_EQ(ztscpcg(cp), 0);
    expectLevel(cp->global.data(), kLead + 1, grp.data(), false, "global");
    // The median is only formed per series; merged records keep 0.
    EXPECT_EQ(cp->global[0].pct.median, 0.0);
  }
  ASSERT_EQ(ztscpcu(cp), 0);
  expectLevel(cp->univ.data(), kLead + 1, run.data(), false, "univ");
  ztscpt(&cp);
}

TEST(Ztscp, ReturnCodesAndRecordGuards) {
  ZTS_CP* cp = reinterpret_cast<ZTS_CP*>(&cp);
  EXPECT_EQ(ztscpi(2, 3, nullptr, nullptr), -99);
  EXPECT_EQ(ztscpi(0, 3, nullptr, &cp), -2);
  EXPECT_EQ(cp, nullptr);
  EXPECT_EQ(ztscpi(2, 0, nullptr, &cp), -3);
  ASSERT_EQ(ztscpi(2, 3, nullptr, &cp), 0);
  const double a[] = {1, 2, 3}, p[] = {1, 2, 4}, *n = nullptr;
  EXPECT_EQ(ztscpa(nullptr, 0.5, a, p, n, n, 3, -1) + ztscpa(cp, 0.5, n, p, n, n, 3, -1), -198);
  EXPECT_EQ(ztscpa(cp, 0.5, a, n, n, n, 3, -1) + ztscpa(cp, 0.5, a, p, n, n, 3, -2), -198);
  EXPECT_EQ(ztscpa(cp, 0.5, a, p, n, n, 3, 2) + ztscpa(cp, 0.5, a, p, n, n, 0, -1), -198);
  // index 1 reaches the variable level; without limits nothing is covered.
  EXPECT_EQ(ztscpa(cp, 0.5, a, p, n, n, 3, 1), 0);
  EXPECT_EQ(cp->local[1][2].pct.n, 1);
  EXPECT_EQ(cp->indiv.cl.n, 0);
  EXPECT_EQ(ztscpr(nullptr, 1, 1, 1) + ztscpci(nullptr) + ztscpcg(nullptr) + ztscpcu(nullptr), -396);
  double v[4];
  const int reads[][4] = {{4, 7, 1, -99}, {4, kCpPct, 0, -99}, {4, kCpPct, 8, -99}, {4, kCpCl, 7, -99},
                          {0, kCpSym, 1, -99}, {4, kCpRel, kCpSum, 0}, {4, kCpCl, kCpTotal, 0}};
  for (const auto& r : reads) EXPECT_EQ(ztscpv(cp->univ.data(), r[0], r[1], r[2], v), r[3]);
  EXPECT_EQ(ztscpv(cp->univ.data(), 4, kCpPct, 1, nullptr), -99);
  ztscpt(&cp);

  ZTS_CP_STATS s;
  ztscpei(&s);
  EXPECT_EQ(ztscpea(kMissing, 1.0, &s), 1);
  EXPECT_EQ(ztscpes(&s), 2);
  EXPECT_TRUE(wzmis(s.min) && wzmis(s.sum) && wzmis(s.mean) && wzmis(s.median) && wzmis(s.gm));
  ztscpei(&s);
  // A mean log beyond the exp bound 709.78...: no geometric mean, rc 3.
  EXPECT_EQ(ztscpea(1e300, 1e300, &s) + ztscpea(1e300, 1e300, &s), 0);
  s.alsum = 2 * 709.8;
  EXPECT_EQ(ztscpes(&s), 3);
  EXPECT_TRUE(wzmis(s.gm));
}

}  // namespace
}  // namespace qvt
