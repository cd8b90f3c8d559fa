// The model driver: set-up and its failures, forecasts unpacked into the
// caller's vectors, p values, and sums of forecasts, on simple smoothing
// against the direct recursion.

#include <numbers>

#include "model_oracle.hpp"

namespace qvt {
namespace {

using oracle::simple;

TEST(Esmint, Failures) {
  const std::vector<double> ok = {1, 2, 3, 4};
  const INTERVAL none{};
  struct Case {
    const double* y;
    long n, nbackcast;
    int method, rc;
  } cases[] = {
      {nullptr, 4, 0, kEsmSimple, -999},  {ok.data(), 0, 0, kEsmSimple, -999},
      {ok.data(), 4, 0, 8, -999},         // the selection keyword BEST
      {ok.data(), 1, 0, kEsmSimple, -2},
      {ok.data(), 4, 1, kEsmSimple, -2},  // a tail of 1 leaves nothing before its last value
  };
  for (const auto& c : cases) {
    WINMODEL stale, *m = &stale;  // must come back null
    EXPECT_EQ(esmint(c.y, c.n, &none, 0, 0, 0, c.method, c.nbackcast, &m), c.rc) << c.method;
    EXPECT_EQ(m, nullptr);
  }
  EXPECT_EQ(esmint(ok.data(), 4, &none, 0, 0, 0, kEsmSimple, 0, nullptr), -999);
  EXPECT_EQ(esmsvi(nullptr), -999);
  EXPECT_EQ(esmfit(nullptr), -999);
}

TEST(Esmint, ScanAndStartValue) {
  // Index 2 missing, index 4 extreme (beyond 1.34e154): both flagged, the
  // extreme one counted as such. Usable: 5, -7, 3, 2.
  const std::vector<double> y = {5, -7, kMissing, 3, 2e154, 2, kMissing};
  Model o(y.data(), 7, kEsmSimple, 0, 0, nullptr, 10.0);
  ASSERT_EQ(o.rc, 0);
  const WINMODEL& m = *o.m;
  // Flagged, extreme, usable; smallest, largest, largest in magnitude.
  EXPECT_THAT((std::vector<double>{double(m.ts.nmiss), double(m.ts.nextr), double(m.ts.nnmss),
                                   m.ts.descstats.min, m.ts.descstats.max, m.ts.descstats.norm}),
              ElementsAre(3, 1, 4, -7, 5, 7));
  EXPECT_DOUBLE_EQ(m.ts.descstats.mean, 3.0 / 4);
  EXPECT_EQ(m.ts.misflg, (std::vector<char>{0, 0, 1, 0, 1, 0, 1}));
  EXPECT_EQ(m.svi.level, 2) << "the last usable value";
}

TEST(Esmprd, CallerWeightsAndFailures) {
  const auto y = simple(0.5, 20, 8, 20);
  Model o(y);
  std::vector<double> predicted(22), upper(22), sd(22);
  FOR_OUT out{.predicted = predicted.data(), .upper = upper.data(), .std = sd.data()};
  EXPECT_EQ(esmprd(o.m, y.data(), 20, 0.0, 0, 0.05, 2, &out), -999) << "not estimated";
  o.m->parms.parms[0] = 0.25;  // a weight of the caller's stands
  ASSERT_EQ(esmprd(o.m, y.data(), 20, 0.0, 0, 0.05, 2, &out), 0);
  const double w = 0.25;
  const auto ref = oracle::pass(kEsmSimple, &w, y, std::vector<char>(20, 0), {}, {o.m->svi.level, 0, {}});
  EXPECT_NEAR(predicted[7], ref.pred[7], 1e-12 * std::fabs(ref.pred[7]));
  EXPECT_TRUE(wzmis(upper[7])) << "no error variance before a fit";
  EXPECT_EQ(sd[7], 0.0);
  // Lead rows fall back on the pass's own mse, the sum of squares over
  // nobs - 1; var_2 = mse (1 + w^2).
  const double passMse = ref.ss / 19;
  EXPECT_NEAR(sd[21], std::sqrt(passMse * (1 + w * w)), 1e-12 * std::sqrt(passMse));
  EXPECT_EQ(esmprd(o.m, y.data(), 20, 0.0, 0, 0.05, 2, nullptr), 0) << "out may be null";
  const std::vector<double> one = {kMissing, 3, kMissing};
  EXPECT_EQ(esmprd(o.m, one.data(), 3, 0.0, 0, 0.05, 2, &out), -2);
  EXPECT_EQ(esmprd(nullptr, y.data(), 20, 0.0, 0, 0.05, 2, &out), -999);
  EXPECT_EQ(esmprd(o.m, nullptr, 20, 0.0, 0, 0.05, 2, &out), -999);
  EXPECT_EQ(esmprd(o.m, y.data(), 20, 0.0, 0, 0.05, -1, &out), -999);
  o.m->parms.parms[0] = 1e153;
  EXPECT_EQ(esmprd(o.m, y.data(), 20, 0.0, 0, 0.05, 2, &out), -999) << "weight too large";
}

TEST(Esmfit, PValues) {
  const auto y = simple(0.5, 30, 12, 20);
  Model o(y);
  ASSERT_EQ(esmfit(o.m), 0);
  const double t = std::fabs(o.m->pest.tvals[0]);
  ASSERT_LT(t, 1000);
  // p = P(|T| > |t|), 29 df, by a slow midpoint integration of the t density.
  const double df = 29;
  const double c = std::exp(std::lgamma((df + 1) / 2) - std::lgamma(df / 2)) /
                   std::sqrt(df * std::numbers::pi);
  double tail = 0;
  const double step = 1e-4;
  for (double u = t + step / 2; u < t + 60; u += step)
    tail += c * std::pow(1 + u * u / df, -(df + 1) / 2) * step;
  EXPECT_NEAR(o.m->pest.pvalue[0], 2 * tail, 1e-6);
  o.m->spec.code = 12;
  EXPECT_EQ(esmfit(o.m), -999) << "unknown method";
}

TEST(Esmsum, Failures) {
  const auto y = simple(0.4, 20, 22, 20);
  Model o(y);
  const double f[3] = {1, 2, 3};
  double s = 0, sd = 0;
  struct Case {
    WINMODEL* m;
    const double* pred;
    int lead, start;
    double alpha;
    int rc;
  } cases[] = {
      {nullptr, f, 3, 1, 0.05, -999}, {o.m, nullptr, 3, 1, 0.05, -999},
      {o.m, f, 3, 0, 0.05, -999},     {o.m, f, 2, 3, 0.05, -999},  // lead below start
      {o.m, f, 3, 1, 1.5, -999},      {o.m, f, 3, 1, kMissing, -999},
      {o.m, f, 3, 1, 0.05, -2},       // not fitted yet
  };
  for (const auto& c : cases) {
    s = sd = 0;
    EXPECT_EQ(esmsum(c.m, c.pred, c.lead, c.start, c.alpha, &s, &sd, nullptr, nullptr), c.rc)
        << c.lead << " " << c.start << " " << c.alpha;
    EXPECT_TRUE(wzmis(sd));
  }
  // Only the sum asked for: no variance needed.
  EXPECT_EQ(esmsum(o.m, f, 3, 2, 0.05, &s, nullptr, nullptr, nullptr), 0);
  EXPECT_EQ(s, 5);
}

}  // namespace
}  // namespace qvt
