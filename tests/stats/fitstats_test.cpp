// Statistics of fit against a slow direct computation: every statistic of
// every criterion code is formed here in long double from its textbook
// definition (full sort for medians, two-pass variances), over random
// vectors with missing values, and compared with the record of ztssfme and
// with ztssfm. Guards, return codes and the random-walk base by hand.
#include "stats/fitstats.hpp"

#include "run/missing.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>
#include <vector>

namespace qvt {
namespace {

using LD = long double;
const double kM = kMissing;
const LD kNone = std::numeric_limits<LD>::quiet_NaN();  // an undefined statistic

constexpr std::pair<int, double SF_STATS::*> kField[] = {
    {1, &SF_STATS::sse},      {2, &SF_STATS::mse},       {3, &SF_STATS::rmse},    {4, &SF_STATS::umse},
    {5, &SF_STATS::urmse},    {10, &SF_STATS::rsquare},  {11, &SF_STATS::adj_Rsq}, {12, &SF_STATS::a_adj_Rsq},
    {13, &SF_STATS::rw_Rsq},  {20, &SF_STATS::aic},      {21, &SF_STATS::sbc},    {22, &SF_STATS::apc},
    {23, &SF_STATS::aicc},    {30, &SF_STATS::minerr},   {31, &SF_STATS::maxerr}, {32, &SF_STATS::me},
    {33, &SF_STATS::mae},     {40, &SF_STATS::minpe},    {41, &SF_STATS::maxpe},  {42, &SF_STATS::mpe},
    {43, &SF_STATS::mape},    {44, &SF_STATS::mdape},    {45, &SF_STATS::gmape},  {50, &SF_STATS::minspe},
    {51, &SF_STATS::maxspe},  {52, &SF_STATS::mspe},     {53, &SF_STATS::smape},  {54, &SF_STATS::mdaspe},
    {55, &SF_STATS::gmaspe},  {60, &SF_STATS::minre},    {61, &SF_STATS::maxre},  {62, &SF_STATS::mre},
    {63, &SF_STATS::mrae},    {64, &SF_STATS::mdrae},    {65, &SF_STATS::gmrae},  {70, &SF_STATS::minppe},
    {71, &SF_STATS::maxppe},  {72, &SF_STATS::mppe},     {73, &SF_STATS::mappe},  {74, &SF_STATS::mdappe},
    {75, &SF_STATS::gmappe},  {80, &SF_STATS::minapes},  {81, &SF_STATS::maxapes}, {82, &SF_STATS::mapes},
    {83, &SF_STATS::mdapes},  {84, &SF_STATS::gmapes},   {85, &SF_STATS::mase},
};

bool has(double x) { return !wzmis(x); }

// Variance about the mean (divisor n), two passes.
LD popVar(const std::vector<LD>& v) {
  LD m = 0, s = 0;
  for (LD x : v) m += x / v.size();
  for (LD x : v) s += (x - m) * (x - m);
  return s / v.size();
}

struct Oracle {
  std::vector<double> a, p;
  double holdout;
  long k, b, e;  // [b, e): the range without the missing predictions at the ends

  // The defined errors of one criterion family, straight from the definitions.
  // sign: e, e/a, e/p, e/mid, e/(a - rw); abs: the same in absolute value.
  std::vector<LD> errs(int family, bool absolute) const {
    const bool whole = family == 60 || family == 85;
    const long lo = whole ? 0 : b, hi = whole ? long(a.size()) : e;
    std::vector<LD> act, out;
    for (long t = b; t < e; ++t)
      if (has(a[t])) act.push_back(a[t]);
    const LD sd = act.size() >= 2 ? std::sqrt(popVar(act) * act.size() / (act.size() - 1)) : kNone;
    LD scale = 0, pairs = 0;
    for (std::size_t t = 1; t < a.size(); ++t)
      if (has(a[t]) && has(a[t - 1])) scale += std::max<LD>(std::fabs(LD(a[t]) - a[t - 1]), kSfScaleMin), ++pairs;
    if (family == 85 && pairs == 0) return out;
    double rw = holdout;
    // The walk moves on after each element (in the increment, so also past a `continue`).
    for (long t = lo; t < hi; rw = wzmis(holdout) && has(a[t]) ? a[t] : rw, ++t) {
      if (!has(a[t]) || !has(p[t])) continue;
      const LD err = LD(a[t]) - p[t];
      LD d = sd, v;
      if (family == 30 || family == 85) {
        v = family == 30 ? err : std::fabs(err) / (scale / pairs);
      } else if (std::fabs(err) < kSfZero) {
        v = 0;
      } else {
        if (family == 40) d = a[t];
        if (family == 70) d = p[t];
        if (family == 50) d = (LD(a[t]) + p[t]) / 2;
        if (family == 60) d = has(rw) ? LD(a[t]) - rw : kNone;
        if (std::isnan(d) || (d == 0 && family != 80)) continue;
        v = d == 0 ? 0 : err / d;  // a zero deviation (constant actuals) makes the scaled error 0
      }
      out.push_back(absolute ? std::fabs(v) : v);
    }
    return out;
  }

  LD expect(int code) const {
    const int dec = code / 10 * 10, u = code % 10;
    std::vector<LD> sq = errs(30, false);
    for (LD& x : sq) x *= x;
    const LD m = sq.size();
    LD sse = 0;
    for (LD x : sq) sse += x;
    if (code <= 5 || dec == 20) {
      const LD um = k < m ? sse / (m - k) : kNone;
      const LD ic = m >= 1 && sse / m >= kSfLogMin ? m * std::log(sse / m) : kNone;
      const LD out[] = {kNone, sse, sse / m, std::sqrt(sse / m), um, std::sqrt(um)};
      if (code <= 5) return m >= 1 ? out[code] : kNone;
      if (code == 20) return ic + 2 * k;
      if (code == 21) return ic + k * std::log(m);
      if (code == 22) return k < m ? sse * (m + k) / (m * (m - k)) : kNone;
      return m - k > 1 ? ic + 2 * k + 2.0L * k * (k + 1) / (m - k - 1) : kNone;
    }
    if (dec == 10) {
      std::vector<LD> act, dif;
      for (long t = b; t < e; ++t)
        if (has(a[t])) act.push_back(a[t]);
      long first = 0;
      while (first < long(p.size()) && !has(p[first])) ++first;
      double rw = holdout;
      for (std::size_t t = 0; t < a.size(); ++t) {
        if (!has(a[t])) continue;
        if (has(rw) && long(t) >= first) dif.push_back(LD(a[t]) - rw);
        if (wzmis(holdout)) rw = a[t];
      }
      const LD n = act.size();
      const LD var = code == 13 ? (dif.size() > 1 ? popVar(dif) : 0) : (n > 0 ? popVar(act) : 0);
      const LD f[] = {1, (m - 1) / (n - k), (m + k) / (n - k), 1};
      if (var == 0 || m < 1 || ((code == 11 || code == 12) && n <= k)) return kNone;
      return 1 - sse / m / var * f[code - 10];
    }
    // Each decade: minimum, maximum, mean of the signed errors; then mean,
    // median, geometric mean of their absolute values (the scaled errors
    // of 80 to 84 are absolute throughout).
    const bool scaled = dec == 80 && code != 85;
    std::vector<LD> v = errs(code == 85 ? 85 : dec, scaled || u >= 3);
    if (v.empty()) return kNone;
    std::sort(v.begin(), v.end());
    // 0 min, 1 max, 2 and 3 mean, 4 median, 5 geometric mean
    const int op = code == 85 ? 2 : scaled && u >= 2 ? u + 1 : u;
    LD r = 0;
    if (op == 0) r = v.front();
    if (op == 1) r = v.back();
    if (op == 2 || op == 3) {
      for (LD x : v) r += x / v.size();
    }
    if (op == 4) r = (v[(v.size() - 1) / 2] + v[v.size() / 2]) / 2;
    if (op == 5) {
      for (LD x : v) r += (x == 0 ? -kExpHigh : std::log(x)) / v.size();
      r = std::exp(r);
    }
    return dec == 40 || dec == 50 || dec == 70 || scaled ? 100 * r : r;
  }
};

void expectStat(double got, LD want, const char* what, int code) {
  if (std::isnan(want)) {
    EXPECT_TRUE(wzmis(got)) << what << " " << code << " = " << got;
  } else {
    EXPECT_NEAR(got, double(want), 1e-9 * std::max<double>(1, std::fabs(double(want)))) << what << " " << code;
  }
}

TEST(FitStats, EveryStatisticMatchesItsDefinition) {
  std::mt19937 gen(20261123);
  std::uniform_int_distribution<int> len(1, 25), quarter(-12, 36), pct(0, 99);
  for (int rep = 0; rep < 400; ++rep) {
    const long T = len(gen);
    Oracle o{{}, {}, pct(gen) < 50 ? kM : quarter(gen) / 4.0, pct(gen) % 4, 0, T};
    for (long t = 0; t < T; ++t) {
      o.a.push_back(pct(gen) < 15 ? kM : quarter(gen) / 4.0);
      o.p.push_back(pct(gen) < 20 ? kM : pct(gen) < 12 && has(o.a[t]) ? o.a[t] : quarter(gen) / 4.0);
    }
    while (o.b < T && !has(o.p[o.b])) ++o.b;
    while (o.e > o.b && !has(o.p[o.e - 1])) --o.e;
    long both = 0, na = 0, mp = 0, ma = 0;
    for (long t = 0; t < T; ++t) {
      both += has(o.a[t]) && has(o.p[t]), ma += !has(o.a[t]), mp += !has(o.p[t]);
      na += t >= o.b && t < o.e && has(o.a[t]);
    }
    SF_STATS s;
    const int rc = ztssfme(o.holdout, o.a.data(), o.p.data(), T, o.k, &s);
    EXPECT_EQ(std::vector<long>({s.n, s.nobs, s.nmissa, s.nmissp, s.dfe, s.nparms}),
              std::vector<long>({o.e - o.b, T, ma, mp, both - o.k, o.k}));
    if (na == 0) {
      EXPECT_EQ(rc, -3);
      EXPECT_TRUE(wzmis(s.mean) && wzmis(s.sse) && wzmis(s.mase) && s.total == 0);
      continue;
    }
    std::vector<LD> act;
    for (long t = o.b; t < o.e; ++t)
      if (has(o.a[t])) act.push_back(o.a[t]);
    LD sum = 0, sum2 = 0;
    for (LD x : act) sum += x, sum2 += x * x;
    expectStat(s.mean, sum / na, "mean", 0);
    expectStat(s.tss, sum2, "tss", 0);
    expectStat(s.sst, popVar(act) * na, "sst", 0);
    bool aggMissing = false;
    std::vector<double> work(T);
    for (const auto& [code, field] : kField) {
      const LD want = o.expect(code);
      expectStat(s.*field, want, "ztssfme", code);
      if (std::isnan(want) && (code == 1 || code >= 10) && (code < 20 || code > 23)) aggMissing = true;
      // Without trimming ztssfm sees the same vectors; with it, the
      // statistics of the actuals alone (R-square, their deviation) differ.
      if (o.b > 0 || o.e < T) {
        if ((code >= 10 && code <= 12) || (code >= 80 && code <= 84)) continue;
      }
      double st = 0;
      const int mrc = ztssfm(o.holdout, o.a.data(), o.p.data(), T, o.k, code, work.data(), &st);
      expectStat(st, want, "ztssfm", code);
      EXPECT_TRUE(code == 22 || (mrc == 0) == !std::isnan(want)) << code << " rc " << mrc;
    }
    EXPECT_EQ(rc < 0, aggMissing) << rc;
  }
}

TEST(FitStats, GuardedRatioAndSquare) {
  // Values by hand; a char names the missing value expected ('.', 'I', 'M').
  struct Case { double a, p; int kind; double want; char miss; int rc; };
  const Case cases[] = {
      {2, 1, kSfPe, 0.5, 0, 0},        {1, 3, kSfApe, 2, 0, 0},      {0, 1, kSfPe, 0, '.', 3},
      {0, 0, kSfPe, 0, 0, 0},          {1e-200, -1, kSfPe, 0, 'I', 3}, {1e-200, 1, kSfApe, 0, 'M', 3},
      {1, 1e-200, kSfPpe, 0, 'I', 3}, {3, 1, kSfAspe, 1, 0, 0},     {2e154, 0, kSfSqErr, kSfHuge, 0, 0},
      {kM, 1, kSfErr, 0, '.', 0},
  };
  for (const Case& c : cases) {
    double err = 0, aerr = 0;
    EXPECT_EQ(ztssfe(kM, &c.a, &c.p, 1, c.kind, &err, &aerr), c.rc) << c.a << " " << c.kind;
    EXPECT_EQ(missCode(err), c.miss) << c.a << " " << c.kind;
    EXPECT_EQ(missCode(aerr), c.miss);
    EXPECT_EQ(c.miss ? 0 : err, c.want) << c.a << " " << c.kind;
    EXPECT_EQ(c.miss ? 0 : aerr, std::fabs(c.want));
  }
}

TEST(FitStats, RandomWalkBaseAndScale) {
  const double a[] = {2, kM, 4, 7}, p[] = {1, 3, 3, 5};
  double e[4];
  // Along the series: no base for the first, then 1/(4-2) and 2/(7-4).
  EXPECT_EQ(ztssfe(kM, a, p, 4, kSfRe, e, nullptr), 3);
  EXPECT_TRUE(wzmis(e[0]) && wzmis(e[1]));
  EXPECT_DOUBLE_EQ(e[2], 0.5);
  EXPECT_DOUBLE_EQ(e[3], 2.0 / 3);
  // A hold-out base of 1 predicts every actual: 1/1, 1/3, 2/6.
  EXPECT_EQ(ztssfe(1, a, p, 4, kSfRe, e, nullptr), 0);
  EXPECT_EQ(std::vector<double>(e + 2, e + 4), std::vector<double>({1.0 / 3, 2.0 / 6}));
  EXPECT_EQ(e[0], 1);
  // A constant series: each difference is raised to the floor S.
  const double c[] = {5, 5, 5}, q[] = {4, 5, 7};
  EXPECT_EQ(ztssfe(kM, c, q, 3, kSfAse, e, nullptr), 0);
  EXPECT_EQ(std::vector<double>(e, e + 3), std::vector<double>({1 / kSfScaleMin, 0, 2 / kSfScaleMin}));
  // No consecutive pair: -2, and the errors stay |e|.
  const double g[] = {5, kM, 6};
  EXPECT_EQ(ztssfe(kM, g, q, 3, kSfAse, e, nullptr), -2);
  EXPECT_EQ(e[0], 1);
  EXPECT_EQ(e[2], 1);
}

TEST(FitStats, AggregatesAndTheirCodes) {
  double st = 0, w[4];
  long n = 0;
  const double odd[] = {3, kM, 1, 2}, even[] = {4, 1, 3, 2}, neg[] = {1, -1}, big[] = {1e305, 1e305};
  const double zero[] = {0, std::exp(2.0)};
  EXPECT_EQ(ztssfa(odd, 4, kSfMedian, w, &st, &n), 0);
  EXPECT_EQ(st, 2);
  EXPECT_EQ(n, 3);
  EXPECT_EQ(ztssfa(even, 4, kSfMedian, w, &st, &n), 0);
  EXPECT_EQ(st, 2.5);
  EXPECT_EQ(ztssfa(zero, 2, kSfGeoMean, w, &st, &n), 0);
  EXPECT_DOUBLE_EQ(st, std::exp((2.0 - kExpHigh) / 2));  // an exact 0 counts as exp(-L)
  EXPECT_EQ(ztssfa(neg, 2, kSfGeoMean, w, &st, &n), -5);
  EXPECT_EQ(ztssfa(big, 2, kSfSum, w, &st, &n), -4);
  EXPECT_TRUE(wzmis(st));
  EXPECT_EQ(ztssfa(odd + 1, 1, kSfMean, w, &st, &n), -3);
  for (int type : {0, 7}) EXPECT_EQ(ztssfa(odd, 4, type, w, &st, &n), -99);
  EXPECT_EQ(ztssfa(odd, 4, kSfMedian, nullptr, &st, &n), -99);
  EXPECT_EQ(ztssfa(odd, 0, kSfMean, w, &st, &n), -99);
  EXPECT_EQ(ztssfe(kM, odd, odd, 4, 4, w, nullptr), -99);
  EXPECT_EQ(ztssfe(kM, odd, nullptr, 4, 1, w, nullptr), -99);
}

TEST(FitStats, RsquareAndCriterionCodes) {
  const double a[] = {1, 2, 4}, p[] = {1, 2, 4}, one[] = {3, kM, kM}, none[] = {kM, kM, kM}, huge[] = {2e154, 0, 0};
  double st = 0, w[3];
  EXPECT_EQ(ztssfrs(kM, one, p, 3, 0, 10, &st), -2);  // one actual: sst = 0
  EXPECT_EQ(ztssfrs(kM, none, p, 3, 0, 10, &st), -3);
  EXPECT_EQ(ztssfrs(kM, a, none, 3, 0, 10, &st), -2);  // no prediction
  EXPECT_EQ(ztssfrs(kM, huge, p, 3, 0, 10, &st), -4);
  EXPECT_EQ(ztssfrs(kM, a, p, 3, 0, 14, &st), -99);
  EXPECT_EQ(ztssfm(kM, a, p, 3, 0, 20, w, &st), 4);  // a perfect fit has no AIC
  EXPECT_EQ(ztssfm(kM, a, p, 3, 0, 3, w, &st), 0);
  EXPECT_EQ(st, 0);
  EXPECT_EQ(ztssfm(kM, a, p, 3, 3, 4, w, &st), -2);
  EXPECT_EQ(ztssfm(kM, a, p, 3, 0, 6, w, &st), -99);
  EXPECT_EQ(ztssfm(kM, a, p, 3, 0, 1, nullptr, &st), -99);
  SF_STATS s;
  EXPECT_EQ(ztssfme(kM, a, p, 0, 2, &s), -3);
  EXPECT_EQ(s.nparms, 0);
  EXPECT_TRUE(wzmis(s.pcttotal));
  EXPECT_EQ(ztssfme(kM, a, p, -1, 2, &s), -99);
}

TEST(FitStats, WhichValueIsBetter) {
  // Signature of (-3 vs 2, 3 vs -2): smaller (0, 1), larger (1, 0), smaller |x| (1, 1).
  for (const SfCriterion& c : kSfCriteria) {
    const bool larger = c.code >= 10 && c.code <= 13, absolute = c.code == 32;
    const bool info = c.code == 20 || c.code == 21 || c.code == 23;
    EXPECT_EQ(ztssfmc(-3, 2, c.code), larger || absolute ? 1 : 0) << c.name;
    EXPECT_EQ(ztssfmc(3, -2, c.code), larger ? 0 : 1) << c.name;
    EXPECT_EQ(ztssfmc(2, 2, c.code), 0) << c.name;
    EXPECT_EQ(ztssfmc(kM, kM, c.code), info ? 1 : -1) << c.name;
    EXPECT_EQ(ztssfmc(kM, 1, c.code), 1) << c.name;
    EXPECT_EQ(ztssfmc(1, kM, c.code), 0) << c.name;
  }
  EXPECT_EQ(ztssfmc(1, 2, 6), -99);
}

TEST(FitStats, LimitsAndSeriesDescription) {
  const double a[] = {1, 5, 3, kM}, lo[] = {2, 2, kM, 0}, up[] = {4, 4, 4, 1};
  long l = 9, u = 9, n = 9;
  EXPECT_EQ(ztssfcl(a, lo, up, 4, &l, &u, &n), 0);
  EXPECT_EQ(std::vector<long>({l, u, n}), std::vector<long>({1, 1, 2}));
  EXPECT_EQ(ztssfcl(a, lo, nullptr, 4, &l, &u, &n), -99);
  // Gaps of 1 and 2 (the trailing one counts); std = sqrt((4 + 0 + 4) / 2).
  const double y[] = {kM, 1, kM, kM, 3, 5, kM};
  SUMMSTATS s;
  EXPECT_EQ(ztssumm(y, 7, &s), 3);
  EXPECT_EQ(std::vector<long>({s.nobs, s.n, s.nmiss, s.mingap, s.maxgap}), std::vector<long>({7, 3, 4, 1, 2}));
  EXPECT_EQ(std::vector<double>({s.min, s.max, s.mean, s.std, s.sum}), std::vector<double>({1, 5, 3, 2, 9}));
  EXPECT_EQ(ztssumm(y + 1, 1, &s), 1);
  EXPECT_TRUE(wzmis(s.std) && s.mingap == 0 && s.maxgap == 0);
  EXPECT_EQ(ztssumm(y + 2, 2, &s), 0);
  EXPECT_TRUE(s.mingap == 2 && s.maxgap == 2 && wzmis(s.mean));
}

}  // namespace
}  // namespace qvt
