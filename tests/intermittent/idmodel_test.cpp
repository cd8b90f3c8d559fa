// The intermittent model on daily demand series. With the weights fixed
// (no estimation), Croston's method and the average demand are recomputed
// here in long double: simple exponential smoothing of each component by
// hand from the component model's start level, the rate as size over
// interval, the variance of a ratio by the delta method.
#include "intermittent/idmodel.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "calendar/interval.hpp"
#include "run/missing.hpp"

namespace qvt {
namespace {

using LD = long double;
const double M = kMissing;

// A series of days 0..T-1 split by the demand series, and a model on it:
// every component SIMPLE without transformation, weights fixed when given.
struct Model {
  IDSERIES* ids = nullptr;
  IDMODEL* m = nullptr;
  Model(const std::vector<double>& y, int modcode, double w = M) {
    INTERVAL day;
    zintic(kIntDay, &day);
    std::vector<double> tid(y.size());
    for (std::size_t t = 0; t < y.size(); ++t) tid[t] = double(t);
    EXPECT_EQ(idsint(0, 0, &day, "B", 0, &ids), 0);
    EXPECT_GE(idsset(ids, long(y.size()), y.data(), tid.data(), nullptr, 0.0, 0, 0), 0);
    IDMSPEC s;
    idmsdft(&s);
    s.specified = 1;
    s.modcode = modcode;
    for (ESMSPEC* c : {&s.intv, &s.size, &s.adem}) {
      c->modcode = kIdmSimple;
      c->trnscode = 0;
      if (!wzmis(w)) c->level.parm = c->level.lower = c->level.upper = w, c->level.noest = c->noest = 1;
    }
    EXPECT_EQ(idmint(0, 0, &m), 0);
    EXPECT_EQ(idmspc(m, &s, 1), 0);
    EXPECT_EQ(idmset(m, ids), 0);
  }
  ~Model() { idmtrm(&m), idstrm(&ids); }
};

// One-step predictions of x[from..n-1] by SES with weight w from level l,
// indexed like x, the last one the forecast. An entry 0 before the first
// smoothed value (from = 1) is predicted by the start level.
std::vector<LD> ses(const std::vector<double>& x, long from, long n, LD l, LD w) {
  std::vector<LD> p(std::size_t(from), l);
  for (long i = from; i < n; ++i) p.push_back(l), l += w * (x[i] - l);
  p.push_back(l);
  return p;
}

// 10 demands of varying size and interval, the last long ago.
const std::vector<double> kY = {0, 0, 0, 0, 3, 0, 5, 0, 0, 2, 7, 0, 0, 0, 4, 0, 6, 0, 0,
                                1, 0, 8, 0, 0, 3, 0, 0, 2, 0, 0, 0, 0, 0, 0};

TEST(Idmodel, CrostonAndAverageDemandAgainstSmoothingByHand) {
  const LD w = 0.3;
  Model r(kY, kIdmBoth, double(w));
  IDMODEL& m = *r.m;
  const IDSERIES& s = *r.ids;
  ASSERT_EQ(idmsel(&m, 0.05), 0);
  const long n = s.n;
  const std::vector<double>&a = s.intv.data, &z = s.size.data, &ad = s.adem.data;
  // Entry 0 of intervals and average demand predicts from the start level,
  // raised to the first value when below it.
  const LD li = std::max<LD>(m.intv.model->startvals.level, a[0]);
  std::vector<LD> I = ses(a, 1, n, li, w), S = ses(z, 0, n, m.size.model->startvals.level, w);
  ASSERT_GT(a[n], I[n]);  // the elapsed time exceeds the forecast interval
  I[n] = a[n];
  std::vector<LD> A = ses(ad, 1, n, std::max<LD>(m.adem.model->startvals.level, ad[0]), w);
  // RMSE of each form on demands 1..n-1 picks the form.
  LD c[2] = {0, 0};
  for (long t = 1; t < n; ++t) {
    c[0] += std::pow(ad[t] - S[t] / I[t], 2) / LD(n - 1);
    c[1] += std::pow(ad[t] - A[t], 2) / LD(n - 1);
  }
  EXPECT_NEAR(m.criterion[0], double(std::sqrt(c[0])), 1e-12);
  EXPECT_NEAR(m.criterion[1], double(std::sqrt(c[1])), 1e-12);
  EXPECT_EQ(m.modused, c[1] < c[0] ? kIdmUsedAverage : kIdmUsedCroston);

  for (int form : {kIdmUsedCroston, kIdmUsedAverage}) {
    m.modused = form;
    ASSERT_EQ(idmfit(&m, 1), 0);
    ASSERT_EQ(idmdem(&m, 1, M), 0);  // missing alpha: 95 percent limits
    EXPECT_EQ(m.results.alpha, 0.05);
    for (long t = 0; t <= n; ++t) {
      SCOPED_TRACE(::testing::Message() << "form " << form << " t " << t);
      const LD p = form == kIdmUsedCroston ? S[t] / I[t] : A[t];
      const LD si = m.intv.forecast.std[t], ss = m.size.forecast.std[t];
      const LD sd = form == kIdmUsedCroston
                        ? std::sqrt(std::pow(ss / I[t], 2) + std::pow(S[t] * si / (I[t] * I[t]), 2))
                        : LD(m.adem.forecast.std[t]);
      EXPECT_NEAR(m.results.predict[t], double(p), 1e-12);
      EXPECT_NEAR(m.results.std[t], double(sd), 1e-12);
      EXPECT_NEAR(m.results.upper[t] - m.results.predict[t], double(1.959963984540054 * sd), 1e-9);
      if (t == n) continue;  // no size, no actual: stock and error missing
      EXPECT_NEAR(m.results.stock[t], double(p * a[t] - z[t]), 1e-12);
      EXPECT_NEAR(m.results.error[t], double(ad[t] - p), 1e-12);
    }
  }
}

TEST(Idmodel, ShortSeriesTakeTheirWeightsByRule) {
  // Intervals start at 1 + the first demand's day; the interval model has
  // at most one value, so every forecast is worked out on paper.
  const struct {
    std::vector<double> y;
    double wi, ws, rate, sd;
  } rows[] = {
      {{0, 0, 5, 0, 0}, 0.15, 0.15, 5.0 / 3, 0},       // I = start 3, elapsed 3
      {{0, 4, 0, 0, 4, 0}, 0.1, 0.1, 4.0 / 2.1, 0},    // I = 2 + 0.1 (3 - 2), S = 4
      // S = 4 + 0.2 (6 - 4); only the sizes vary, their error variance is
      // (4 - 5)^2 + (6 - 5)^2 = 2, so the rate's error is sqrt(2) over the
      // last interval, 2.
      {{0, 4, 0, 0, 6, 0}, 0.1, 0.2, 4.4 / 2.1, std::sqrt(2.0) / 2},
  };
  for (const auto& c : rows) {
    Model r(c.y, kIdmCroston);
    ASSERT_EQ(idmsel(r.m, 0.05), 0);
    ASSERT_EQ(idmfit(r.m, 1), kIdmShort);
    EXPECT_EQ(r.m->intv.parm.level, c.wi);
    EXPECT_EQ(r.m->size.parm.level, c.ws);
    ASSERT_EQ(idmdem(r.m, 1, 0.05), 0);
    EXPECT_NEAR(r.m->results.predict[r.m->n], c.rate, 1e-14);
    EXPECT_NEAR(r.m->results.std[r.m->n], c.sd, 1e-14);
  }
  // A trend needs three demands.
  Model r({0, 4, 0, 0, 6, 0}, kIdmCroston);
  r.m->spec.intv.modcode = kIdmLinear;
  ASSERT_EQ(idmspc(r.m, &r.m->spec, 1), 0);
  EXPECT_EQ(idmsel(r.m, 0.05), kIdmSelect);
  EXPECT_EQ(idmcfit(r.m, 1), kIdmFit);
}

TEST(Idmodel, FlatDemandTiesAndKeepsCroston) {
  Model r({3, 3, 3, 3, 3, 3}, kIdmBoth);
  IDMODEL& m = *r.m;  // six demands of 3, one a period
  ASSERT_EQ(idmsel(&m, 0.05), 0);
  EXPECT_TRUE(m.criterion[0] == 0.0 && m.criterion[1] == 0.0 && m.modused == kIdmUsedCroston);
  EXPECT_EQ(idmfit(&m, 1), kIdmFlatBoth);
  EXPECT_DOUBLE_EQ(m.size.parm.level, 1.0 / 7);
  EXPECT_EQ(m.totparms, 1);  // the flat interval counts its rule weight, the flat size doesn't
  ASSERT_EQ(idmdem(&m, 1, 0.1), 0);
  for (long t = 0; t <= m.n; ++t) EXPECT_TRUE(m.results.lower[t] == 3.0 && m.results.upper[t] == 3.0) << t;
}

TEST(Idmodel, ReturnCodes) {
  IDMODEL* m = nullptr;
  ASSERT_EQ(idmint(0, 0, &m), 0);
  EXPECT_EQ(idmsel(m, 0.05), kIdmNoSeries);
  IDSERIES ids;
  EXPECT_EQ(idmset(m, &ids), kIdmNoDemand);
  ids.n = 1;
  EXPECT_EQ(idmset(m, &ids), kIdmNoFitDemand);
  ids.nholdout = 1;  // the hold-out demand becomes the fit sample
  EXPECT_EQ(idmset(m, &ids), 0);
  EXPECT_EQ(idmsel(m, 0.05), kIdmNoSpec);
  IDMSPEC bad;  // modcode 0
  bad.specified = 1;
  EXPECT_EQ(idmspc(m, &bad, 1), kIdmsBadModel);
  EXPECT_EQ(m->spec.specified, 0);  // the refused one isn't taken
  EXPECT_EQ(idmcdem(m, 1, 1.5), kIdmBadArg);
  idmtrm(&m);
}

}  // namespace
}  // namespace qvt
