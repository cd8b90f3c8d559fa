// Component smoothing models. Oracles: the smoothing driver (esmint, esmfit,
// esmprd), an independent path through the same kernels; the closed-form
// lognormal moments; the candidate rules and the bounds written out by hand.
#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "intermittent/esmodel.hpp"
#include "run/missing.hpp"
#include "smoothing/esmfor.hpp"

namespace qvt {
namespace {

const std::vector<double> kX = {2, 4, 3, 5, 4, 6, 5, 7, 6, 8, 9, 10, 11};  // on the hold-out LINEAR wins
std::vector<double> gWork(20), gW(101, kMissing);

long off(char type) { return type == kIdsSize ? 0 : 1; }

// A component by hand: its values from the type's first index on count.
IDSCOMP component(const std::vector<double>& d, char type, int trnscode = 0) {
  const auto [lo, hi] = std::minmax_element(d.begin() + off(type), d.end());
  const IDSSTATS st{.n = static_cast<long>(d.size()) - off(type), .min = *lo, .max = *hi,
                    .norm = std::max(std::fabs(*lo), std::fabs(*hi))};
  return {.data = d, .type = type, .stats = st, .seasons = {}, .trnscode = trnscode};
}

// The driver's predictions, limits and errors of method m on x[0 .. n-1].
struct Driver {
  Driver(const double* x, long n, int m, int lead) : p(n + lead), lo(p), res(p) {
    EXPECT_EQ(esmint(x, n, nullptr, 0, 0, 0, m, 0, &w), 0);
    EXPECT_GE(esmfit(w), 0);
    FOR_OUT o{.predicted = p.data(), .residual = res.data(), .lower = lo.data()};
    EXPECT_EQ(esmprd(w, x, n, 0, 0, 0.05, lead, &o), 0);
  }
  ~Driver() { esmtrm(w); }
  WINMODEL* w = nullptr;
  std::vector<double> p, lo, res;
};

// A model of the size component with the given method and transformation,
// fitted to comp when one is given, with the actuals of orig (or comp).
struct Model {
  explicit Model(int modcode, int trn = 0, const IDSCOMP* comp = nullptr, const IDSCOMP* orig = nullptr) {
    idmsdft(&s);
    s.size.modcode = modcode;
    s.size.trnscode = trn;
    EXPECT_EQ(esm_init(4, &e), 0);
    EXPECT_EQ(esm_spec(&e, 0, &s.size), 0);
    if (comp == nullptr) return;
    e.orig = orig != nullptr ? orig : comp;  // the actuals
    EXPECT_EQ(esm_set(&e, comp, 0), 0);
    e.modused = modcode;
    EXPECT_EQ(esm_fit(&e), 0);
    EXPECT_EQ(esm_pred(&e, 0.05, 2, &e.forecast), 0);
  }
  IDMSPEC s;
  ESMODEL e;
};

// Equal to 12 digits, or both missing.
void expectSame(double a, double b) {
  if (wzmis(a) || wzmis(b)) EXPECT_EQ(wzmis(a), wzmis(b));
  else EXPECT_NEAR(a, b, 1e-12 * std::fabs(b));
}

TEST(EsmComponent, FitAndPredictFollowTheDriverInTheComponentsIndex) {
  for (int m = 1; m <= 4; ++m)
    for (char type : {kIdsSize, kIdsInterval, kIdsAverage}) {
      const IDSCOMP c = component(kX, type);
      const long n = c.stats.n, k = off(type);
      Model md(m, 0, &c);
      const Driver d(kX.data() + k, n, m, 2);
      EXPECT_DOUBLE_EQ(md.e.pest.level.estimate, d.w->pest.parms[0]);
      const ESMFOR& f = md.e.forecast;
      ASSERT_EQ(f.n, n + 2 + k) << "method " << m << " type " << int(type);
      EXPECT_EQ(wzmis(f.predict[0]), k);
      for (long i = 0; i < n + 2; ++i) {
        expectSame(f.predict[i + k], d.p[i]);
        expectSame(f.lower[i + k], d.lo[i]);
        expectSame(f.error[i + k], d.res[i]);
      }
    }
}

TEST(EsmComponent, CandidatesAndWeightBounds) {
  // One method under AUTO: column 1 in both rows (BESTN is in the selection test).
  Model both(2, 10);
  const int* list = &both.e.modellist[0][0];
  EXPECT_EQ(std::vector<int>(list, list + 8), (std::vector<int>{0, 2, 0, 0, 0, 2, 0, 0}));
  Model md(1);
  md.s.size.level = {{}, {}, 0.3, 0.2, 0.5, 1};  // fixed at its value: no tolerance
  ASSERT_EQ(esm_spec(&md.e, 0, &md.s.size), 0);
  EXPECT_EQ(std::vector<double>(md.e.model->wbnds.wlevel, md.e.model->wbnds.wlevel + 3),
            (std::vector<double>{0.3, 0.3, 0}));
}

TEST(EsmComponent, SelectionByTheCriterionOnTheHoldout) {
  // Intervals, the last 3 held out: the driver fits x[1 .. 9] and its
  // predictions at leads 1 to 3 meet x[10 .. 12]; the criterion is RMSE.
  const IDSCOMP c = component(kX, kIdsInterval), none = component(kX, kIdsInterval);
  Model md(9, 10);  // AUTO fell back to no transformation: row 1 unused
  md.e.orig = &c;
  md.e.trns = &none;
  ASSERT_EQ(esm_select(&md.e, gWork.data(), gW.data(), 0.05, 3, 6), 0);
  double want[4] = {kMissing, kMissing, kMissing, kMissing};
  int best = 0;
  for (int col : {0, 2, 3}) {
    const Driver d(kX.data() + 1, 9, col == 0 ? 1 : col, 3);
    long double s = 0;
    for (int i = 0; i < 3; ++i) s += (kX[10 + i] - d.p[9 + i]) * (kX[10 + i] - d.p[9 + i]);
    want[col] = static_cast<double>(std::sqrt(s / 3));
    if (want[col] < want[best]) best = col;
  }
  for (int col = 0; col < 4; ++col) {
    expectSame(md.e.criterion[0][col], want[col]);
    EXPECT_TRUE(wzmis(md.e.criterion[1][col]));
  }
  EXPECT_EQ(md.e.modused, md.e.modellist[0][best]);

  // Three sizes, minobstrend 2: SIMPLE and LINEAR are tried, DAMPTREND isn't.
  const IDSCOMP three = component({4, 6, 5}, kIdsSize);
  md.e.orig = &three;
  ASSERT_EQ(esm_select(&md.e, gWork.data(), gW.data(), 0.05, 0, 2), 0);
  EXPECT_FALSE(wzmis(md.e.criterion[0][2]));
  EXPECT_TRUE(wzmis(md.e.criterion[0][3]));
  md.e.modused = 3;
  EXPECT_EQ(esm_fit(&md.e), -45);  // a damped trend needs 4 values
  md.e.orig = nullptr;  // nothing usable
  EXPECT_EQ(esm_select(&md.e, gWork.data(), gW.data(), 0.05, 0, 2), -35);
}

TEST(EsmComponent, BackTransformIsTheLognormalMean) {
  std::vector<double> logx;
  for (double v : kX) logx.push_back(std::log(v));
  const IDSCOMP plain = component(kX, kIdsSize), t = component(logx, kIdsSize, 1);
  Model md(1, 1, &t, &plain);
  const ESMFOR before = md.e.forecast;
  ASSERT_EQ(esm_trns(&md.e, gW.data()), 0);
  const ESMFOR& f = md.e.forecast;
  for (std::size_t i = 0; i < kX.size() + 2; ++i) {
    const double mu = before.predict[i], s2 = before.std[i] * before.std[i];
    EXPECT_NEAR(f.predict[i], std::exp(mu + s2 / 2), 1e-9 * f.predict[i]) << i;
    // sd of a lognormal: sqrt(exp(s^2) - 1) times its mean
    EXPECT_NEAR(f.std[i], std::sqrt(std::expm1(s2)) * f.predict[i], 1e-9 * f.std[i]);
    EXPECT_NEAR(f.lower[i], std::exp(before.lower[i]), 1e-9 * f.lower[i]);
    expectSame(f.error[i], i < kX.size() ? kX[i] - f.predict[i] : kMissing);
  }
}

TEST(EsmComponent, BoundsOnlyTheLastEntry) {
  Model md(1);
  ESMFOR& f = md.e.forecast;
  f.n = 2;
  f.predict = f.lower = f.upper = {0.5, 0.5};  // entry 0, a fit value, is never bounded
  md.s.size.fbnds = {1.0, kMissing, 2};
  EXPECT_EQ(esm_bnds(&md.e), 1);
  EXPECT_EQ((std::vector<double>{f.predict[0], f.predict[1], f.lower[1], f.upper[1]}),
            (std::vector<double>{0.5, 1.0, 1.0, 1.0}));
  md.s.size.fbnds = {kMissing, 2.0, 7};
  EXPECT_EQ(esm_bnds(&md.e), -99);
}

}  // namespace
}  // namespace qvt
