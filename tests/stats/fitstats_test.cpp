// Statistics of fit against a slow direct computation: every statistic of
// every criterion code is formed here in long double from its textbook
// definition (full sort for medians, two-pass variances), over random
// vectors with missing values, and compared with the record of ztssfme and
// with ztssfm. Guards, return codes and the random-walk base by hand.
#include "stats/fitstats.hpp"

#include "dense_oracle.hpp"

namespace qvt {
namespace {

using namespace testing_dense;
using S = SF_STATS;
const LD kNone = std::numeric_limits<LD>::quiet_NaN();  // an undefined statistic

// The record's field of each criterion, in the order of kSfCriteria.
constexpr double S::*kField[] = {
    &S::sse,    &S::mse,    &S::rmse,    &S::umse,    &S::urmse,   &S::rsquare, &S::adj_Rsq, &S::a_adj_Rsq,
    &S::rw_Rsq, &S::aic,    &S::sbc,     &S::apc,     &S::aicc,    &S::minerr,  &S::maxerr,  &S::me,
    &S::mae,    &S::minpe,  &S::maxpe,   &S::mpe,     &S::mape,    &S::mdape,   &S::gmape,   &S::minspe,
    &S::maxspe, &S::mspe,   &S::smape,   &S::mdaspe,  &S::gmaspe,  &S::minre,   &S::maxre,   &S::mre,
    &S::mrae,   &S::mdrae,  &S::gmrae,   &S::minppe,  &S::maxppe,  &S::mppe,    &S::mappe,   &S::mdappe,
    &S::gmappe, &S::minapes, &S::maxapes, &S::mapes,  &S::mdapes,  &S::gmapes,  &S::mase,
};
static_assert(std::size(kField) == std::size(kSfCriteria));

bool has(double x) { return !wzmis(x); }

// Variance about the mean (divisor n), two passes.
LD popVar(const std::vector<LD>& v) {
  LD m = 0, s = 0;
  for (LD x : v) m += x;
  for (LD x : v) s += (x - m / v.size()) * (x - m / v.size());
  return s / v.size();
}

struct Oracle {
  std::vector<double> a, p;
  double holdout;
  long k, b, e;  // [b, e): the range without the missing predictions at the ends
  std::vector<LD> act;  // the actuals present in [b, e)

  // The defined errors of a decade of codes: e (30), e/a (40), e/mid (50),
  // e/(a - random walk) (60), e/p (70), |e|/sd (80), |e|/mean |diff| (85).
  std::vector<LD> errs(int family, bool absolute) const {
    const bool whole = family == 60 || family == 85;
    const LD n = act.size(), sd = n >= 2 ? std::sqrt(popVar(act) * n / (n - 1)) : kNone;
    LD scale = 0, pairs = 0;
    for (std::size_t t = 1; t < a.size(); ++t)
      if (has(a[t]) && has(a[t - 1])) ++pairs, scale += std::max<LD>(std::fabs(a[t] - a[t - 1]), kSfScaleMin);
    std::vector<LD> out;
    double rw = holdout;
    // The walk moves on after each element (in the increment, so also past a `continue`).
    const long lo = whole ? 0 : b, hi = whole ? long(a.size()) : e;
    for (long t = lo; t < hi; rw = wzmis(holdout) && has(a[t]) ? a[t] : rw, ++t) {
      if (!has(a[t]) || !has(p[t])) continue;
      const LD err = LD(a[t]) - p[t];
      const LD d = family == 40 ? a[t] : family == 70 ? p[t] : family == 50 ? (LD(a[t]) + p[t]) / 2
                 : family == 60 ? (has(rw) ? LD(a[t]) - rw : kNone) : sd;
      if (family == 30 || family == 85) {
        if (family == 30 || pairs > 0) out.push_back(family == 30 ? err : std::fabs(err) / (scale / pairs));
      } else if (std::fabs(err) < kSfZero || (family == 80 && d == 0)) {
        out.push_back(0);  // below E, or constant actuals for the scaled error
      } else if (!std::isnan(d) && d != 0) {
        out.push_back(err / d);
      }
      if (absolute && !out.empty()) out.back() = std::fabs(out.back());
    }
    return out;
  }

  LD expect(int code) const {
    const int dec = code / 10 * 10, u = code % 10;
    LD m = 0, sse = 0;
    for (LD x : errs(30, false)) sse += x * x, ++m;
    const LD ic = m >= 1 && sse / m >= kSfLogMin ? m * std::log(sse / m) : kNone;
    const LD um = k < m ? sse / (m - k) : kNone;
    if (m < 1 && code < 30) return kNone;
    if (code <= 5) return std::vector<LD>{0, sse, sse / m, std::sqrt(sse / m), um, std::sqrt(um)}[code];
    if (code == 20 || code == 21) return ic + (code == 20 ? 2 * k : k * std::log(m));
    if (code == 22) return k < m ? sse * (m + k) / (m * (m - k)) : kNone;
    if (code == 23) return m - k > 1 ? ic + 2 * k + 2.0L * k * (k + 1) / (m - k - 1) : kNone;
    if (dec == 10) {
      std::vector<LD> dif;  // the random walk's errors from the first prediction on
      const long first = std::find_if(p.begin(), p.end(), has) - p.begin();
      double rw = holdout;
      for (long t = 0; t < long(a.size()); rw = wzmis(holdout) && has(a[t]) ? a[t] : rw, ++t)
        if (has(a[t]) && has(rw) && t >= first) dif.push_back(LD(a[t]) - rw);
      const LD n = act.size(), var = code == 13 ? (dif.size() > 1 ? popVar(dif) : 0) : popVar(act);
      if (var == 0 || ((code == 11 || code == 12) && n <= k)) return kNone;
      return 1 - sse / m / var * (code == 11 ? (m - 1) / (n - k) : code == 12 ? (m + k) / (n - k) : 1);
    }
    // Each decade: minimum, maximum, mean of the signed errors; then mean,
    // median, geometric mean of their absolute values (the scaled errors
    // of 80 to 84 are absolute throughout).
    const bool scaled = dec == 80 && code != 85;
    std::vector<LD> v = errs(code == 85 ? 85 : dec, scaled || u >= 3);
    if (v.empty()) return kNone;
    std::sort(v.begin(), v.end());
    const int op = code == 85 ? 2 : scaled && u >= 2 ? u + 1 : u;  // min max mean mean median gmean
    const LD n = v.size(), mid = (v[(v.size() - 1) / 2] + v[v.size() / 2]) / 2;
    LD r = op == 0 ? v.front() : op == 1 ? v.back() : op == 4 ? mid : 0;
    for (LD x : v) r += (op == 5 ? (x == 0 ? -kExpHigh : std::log(x)) : op == 2 || op == 3 ? x : 0) / n;
    if (op == 5) r = std::exp(r);
    return dec == 40 || dec == 50 || dec == 70 || scaled ? 100 * r : r;
  }
};

// Missing where the definition has no value, else within 1e-9 relative (absolute below 1).
// Geometric means go by their logarithm: with an exact zero among the errors
// they are tiny, and only the log shows how the zero was counted.
void expectStat(double got, LD want, int code) {
  const bool gm = want > 0 && ((code % 10 == 5 && code % 1000 > 40) || code % 1000 == 84);
  const LD diff = gm ? std::log(got / want) : got - want;
  const bool near = !wzmis(got) && std::fabs(diff) <= 1e-9L * std::max<LD>(1, gm ? 0 : std::fabs(want));
  EXPECT_TRUE(std::isnan(want) ? wzmis(got) != 0 : near) << code << ": " << got << " want " << double(want);
}

TEST(FitStats, EveryStatisticMatchesItsDefinition) {
  std::mt19937 gen(20261123);
  std::uniform_int_distribution<int> len(1, 25), quarter(-12, 36), pct(0, 99);
  for (int rep = 0; rep < 400; ++rep) {
    const long T = len(gen);
    Oracle o{{}, {}, pct(gen) < 50 ? kM : quarter(gen) / 4.0, pct(gen) % 4, 0, T, {}};
    const bool flat = pct(gen) < 8;  // a constant series: the scale of MASE is S, the deviation 0
    for (long t = 0; t < T; ++t) {
      o.a.push_back(pct(gen) < 15 ? kM : flat ? 2.5 : quarter(gen) / 4.0);
      o.p.push_back(pct(gen) < 20 ? kM : pct(gen) < 12 && has(o.a[t]) ? o.a[t] : quarter(gen) / 4.0);
    }
    while (o.b < T && !has(o.p[o.b])) ++o.b;
    while (o.e > o.b && !has(o.p[o.e - 1])) --o.e;
    long both = 0, mp = 0, ma = 0;
    for (long t = 0; t < T; ++t) both += has(o.a[t]) && has(o.p[t]), ma += !has(o.a[t]), mp += !has(o.p[t]);
    S s;
    const int rc = ztssfme(o.holdout, o.a.data(), o.p.data(), T, o.k, &s);
    EXPECT_EQ(std::vector<long>({s.n, s.nobs, s.nmissa, s.nmissp, s.dfe, s.nparms}),
              std::vector<long>({o.e - o.b, T, ma, mp, both - o.k, o.k}));
    for (long t = o.b; t < o.e; ++t)
      if (has(o.a[t])) o.act.push_back(o.a[t]);
    if (o.act.empty()) {
      EXPECT_TRUE(rc == -3 && wzmis(s.mean) && wzmis(s.sse) && wzmis(s.mase) && s.total == 0) << rc;
      continue;
    }
    LD sum = 0, sum2 = 0;
    for (LD x : o.act) sum += x, sum2 += x * x;
    expectStat(s.mean, sum / o.act.size(), 0);
    expectStat(s.tss, sum2, 0);
    expectStat(s.sst, popVar(o.act) * o.act.size(), 0);
    bool aggMissing = false;
    std::vector<double> work(T);
    for (std::size_t i = 0; i < std::size(kField); ++i) {
      const int code = kSfCriteria[i].code;
      const LD want = o.expect(code);
      expectStat(s.*kField[i], want, code);
      if (std::isnan(want) && (code == 1 || code >= 10) && (code < 20 || code > 23)) aggMissing = true;
      // Without trimming ztssfm sees the same vectors; with it, the
      // statistics of the actuals alone (R-square, their deviation) differ.
      if ((o.b > 0 || o.e < T) && ((code >= 10 && code <= 12) || (code >= 80 && code <= 84))) continue;
      double st = 0;
      const int mrc = ztssfm(o.holdout, o.a.data(), o.p.data(), T, o.k, code, work.data(), &st);
      expectStat(st, want, 1000 + code);
      EXPECT_TRUE(code == 22 || (mrc == 0) == !std::isnan(want)) << code << " rc " << mrc;
    }
    EXPECT_EQ(rc < 0, aggMissing) << rc;  // a missing aggregate or R-square, and only that, is a failure
  }
}

TEST(FitStats, GuardedRatioAndSquare) {
  // Values by hand; a char names the missing value expected ('.', 'I', 'M').
  // An error below E (1e-17 against 1e-17) counts as 0, not as the ratio 1.
  struct Case { double a, p; int kind; double want; char miss; int rc; };
  // The square of 1.2e154 is Python's float product; 2^512 is below B, but its square overflows.
  const Case cases[] = {
      {1.2e154, 0, kSfSqErr, 1.4400000000000002e+308, 0, 0}, {0, 1, kSfPe, 0, '.', 3}, {1e-17, 0, kSfPe, 0, 0, 0},
      {1e-200, -1, kSfPe, 0, 'I', 3},  {1e-200, 1, kSfApe, 0, 'M', 3},   {1, 1e-200, kSfPpe, 0, 'I', 3},
      {2e154, 0, kSfSqErr, kSfHuge, 0, 0}, {0x1p512, 0, kSfSqErr, kSfHuge, 0, 0}, {kM, 1, kSfErr, 0, '.', 0},
  };
  for (const Case& c : cases) {
    double err = 0, aerr = 0;
    EXPECT_EQ(ztssfe(kM, &c.a, &c.p, 1, c.kind, &err, &aerr), c.rc) << c.a << " " << c.kind;
    EXPECT_EQ(std::vector<int>({missCode(err), missCode(aerr)}), std::vector<int>(2, c.miss)) << c.a;
    EXPECT_EQ(std::vector<double>({c.miss ? 0 : err, c.miss ? 0 : aerr}),
              std::vector<double>({c.want, std::fabs(c.want)})) << c.a << " " << c.kind;
  }
}

TEST(FitStats, ReturnCodes) {
  const double a[] = {1, 2, 4}, none[] = {kM, kM, kM}, one[] = {3, kM, kM}, huge[] = {-1, 1e305, 1e305};
  double st = 0, w[3];
  long n = 0;
  EXPECT_EQ(ztssfa(huge, 3, kSfGeoMean, w, &st, &n), -5);
  EXPECT_EQ(ztssfa(huge, 2, kSfSum, w, &st, &n), 0);  // a value against the sign of the sum may be large
  EXPECT_EQ(ztssfa(huge, 3, kSfSum, w, &st, &n), -4);
  EXPECT_EQ(ztssfa(none, 3, kSfMean, w, &st, &n), -3);
  EXPECT_EQ(ztssfa(a, 3, 7, w, &st, &n), -99);
  EXPECT_EQ(ztssfe(kM, a, a, 3, 4, w, nullptr), -99);
  EXPECT_EQ(ztssfrs(kM, one, a, 3, 0, 10, &st), -2);  // one actual: sst = 0
  EXPECT_EQ(ztssfrs(kM, none, a, 3, 0, 10, &st), -3);
  EXPECT_EQ(ztssfrs(kM, huge, a, 3, 0, 10, &st), -4);
  EXPECT_EQ(ztssfrs(kM, a, a, 3, 0, 14, &st), -99);
  EXPECT_EQ(ztssfm(kM, a, a, 3, 0, 20, w, &st), 4);  // a perfect fit has no AIC
  EXPECT_EQ(ztssfm(kM, a, a, 3, 3, 4, w, &st), -2);
  EXPECT_EQ(ztssfm(kM, a, a, 3, 0, 6, w, &st), -99);
  SF_STATS s;
  EXPECT_TRUE(ztssfme(kM, a, a, 0, 2, &s) == -3 && s.nparms == 0 && s.n == 0 && wzmis(s.pcttotal));
  EXPECT_EQ(ztssfme(kM, a, a, -1, 2, &s), -99);
}

TEST(FitStats, WhichValueIsBetter) {
  // Signature of (-3 vs 2, 3 vs -2): smaller (0, 1), larger (1, 0), smaller |x| (1, 1).
  for (const SfCriterion& c : kSfCriteria) {
    const bool larger = c.code >= 10 && c.code <= 13, info = c.code == 20 || c.code == 21 || c.code == 23;
    const int want[] = {larger || c.code == 32, !larger, 0, info ? 1 : -1, 1, 0};
    const int got[] = {ztssfmc(-3, 2, c.code), ztssfmc(3, -2, c.code), ztssfmc(2, 2, c.code),
                       ztssfmc(kM, kM, c.code), ztssfmc(kM, 1, c.code), ztssfmc(1, kM, c.code)};
    EXPECT_EQ(std::vector<int>(got, got + 6), std::vector<int>(want, want + 6)) << c.name;
  }
  // An unknown code: a missing value settles the comparison before the
  // code is needed for a direction.
  EXPECT_EQ(std::vector<int>({ztssfmc(1, 2, 6), ztssfmc(kM, kM, 6), ztssfmc(kM, 1, 6), ztssfmc(1, kM, 6)}),
            std::vector<int>({-99, -1, 1, 0}));
}

TEST(FitStats, LimitsAndSeriesDescription) {
  // Below, above, at either limit (not outside), an actual missing, a limit missing.
  const double a[] = {1, 5, 4, 2, kM, 3}, lo[] = {2, 2, 2, 2, 0, kM}, up[] = {4, 4, 4, 4, 1, 4};
  long l = 9, u = 9, n = 9;
  EXPECT_EQ(ztssfcl(a, lo, up, 6, &l, &u, &n), 0);
  EXPECT_EQ(std::vector<long>({l, u, n}), std::vector<long>({1, 1, 4}));
  EXPECT_EQ(ztssfcl(a, lo, nullptr, 6, &l, &u, &n), -99);
  // Gaps of 1, 2 and 1 (leading and trailing ones count); std = sqrt((4 + 0 + 4) / 2).
  const double y[] = {kM, 1, kM, kM, 3, 5, kM};
  SUMMSTATS s;
  EXPECT_EQ(ztssumm(y, 7, &s), 3);
  const std::vector<long> counts = {s.nobs, s.n, s.nmiss, s.mingap, s.maxgap};
  EXPECT_EQ(counts, std::vector<long>({7, 3, 4, 1, 2}));
  EXPECT_EQ(std::vector<double>({s.min, s.max, s.mean, s.std, s.sum}), std::vector<double>({1, 5, 3, 2, 9}));
  EXPECT_EQ(ztssumm(y + 2, 2, &s), 0);
  EXPECT_TRUE(s.mingap == 2 && s.maxgap == 2 && wzmis(s.mean));
}

}  // namespace
}  // namespace qvt
