// Component smoothing models. Oracles: the smoothing driver (esmint, esmfit,
// esmprd), an independent path through the same kernels; the closed-form
// lognormal moments; the candidate rules written out by hand.
#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "intermittent/esmodel.hpp"
#include "run/missing.hpp"
#include "smoothing/esmfor.hpp"

namespace qvt {
namespace {

const std::vector<double> kX = {3, 5, 2, 6, 4, 7, 5, 8, 6, 9, 7, 10, 8};

long off(char type) { return type == kIdsSize ? 0 : 1; }

// A component by hand: its values from the type's first index on count.
IDSCOMP component(const std::vector<double>& d, char type) {
  IDSCOMP c;
  c.data = d;
  c.type = type;
  c.stats.n = static_cast<long>(d.size()) - off(type);
  c.stats.min = c.stats.max = d[off(type)];
  for (std::size_t i = off(type); i < d.size(); ++i) {
    c.stats.min = std::min(c.stats.min, d[i]);
    c.stats.max = std::max(c.stats.max, d[i]);
  }
  c.stats.norm = std::max(std::fabs(c.stats.min), std::fabs(c.stats.max));
  return c;
}

// The driver's rows of method m on x[from .. from + n - 1] with lead.
struct Driver {
  Driver(const double* x, long n, int m, long lead) : p(n + lead), lo(p), up(p), sd(p), res(p) {
    EXPECT_EQ(esmint(x, n, nullptr, 0, 0, 0, m, 0, &w), 0);
    EXPECT_GE(esmfit(w), 0);
    FOR_OUT o{.predicted = p.data(), .residual = res.data(), .upper = up.data(), .lower = lo.data(),
              .std = sd.data()};
    EXPECT_EQ(esmprd(w, x, n, 0, 0, 0.05, static_cast<int>(lead), &o), 0);
  }
  ~Driver() { esmtrm(w); }
  WINMODEL* w = nullptr;
  std::vector<double> p, lo, up, sd, res;
};

struct Model {
  explicit Model(int modcode, int trn = 0) {
    idmsdft(&s);
    s.size.modcode = modcode;
    s.size.trnscode = trn;
    EXPECT_EQ(esm_init(4, &e), 0);
    EXPECT_EQ(esm_spec(&e, 0, &s.size), 0);
  }
  IDMSPEC s;
  ESMODEL e;
};

void expectSame(double a, double b) {
  if (wzmis(a) || wzmis(b)) EXPECT_EQ(wzmis(a), wzmis(b));
  else EXPECT_DOUBLE_EQ(a, b);
}

TEST(EsmComponent, FitAndPredictFollowTheDriverInTheComponentsIndex) {
  for (int m = 1; m <= 4; ++m)
    for (char type : {kIdsSize, kIdsInterval}) {
      SCOPED_TRACE(testing::Message() << "method " << m << " type " << int(type));
      const IDSCOMP c = component(kX, type);
      const long n = c.stats.n, k = off(type);
      Model md(m);
      md.e.orig = &c;
      ASSERT_EQ(esm_set(&md.e, &c, 0), 0);
      md.e.modused = m;
      ASSERT_EQ(esm_fit(&md.e), 0);
      ASSERT_EQ(esm_pred(&md.e, 0.05, 2, &md.e.forecast), 0);
      const Driver d(kX.data() + k, n, m, 2);
      EXPECT_DOUBLE_EQ(md.e.pest.level.estimate, d.w->pest.parms[0]);
      EXPECT_DOUBLE_EQ(md.e.pest.sigma2, d.w->pest.mse);
      expectSame(md.e.pest.level.pvalue, d.w->pest.pvalue[0]);
      const ESMFOR& f = md.e.forecast;
      ASSERT_EQ(f.n, n + 2 + k);
      EXPECT_EQ(wzmis(f.predict[0]), k);
      for (long i = 0; i < n + 2; ++i) {
        expectSame(f.predict[i + k], d.p[i]);
        expectSame(f.lower[i + k], d.lo[i]);
        expectSame(f.upper[i + k], d.up[i]);
        expectSame(f.error[i + k], d.res[i]);
      }
      EXPECT_DOUBLE_EQ(f.forecast, d.p[n + 1]);
    }
}

TEST(EsmComponent, CandidatesOfEachSpecification) {
  const struct {
    int mod, trn;
    int list[2][4];
    int modused;
  } rows[] = {
      {2, 10, {{0, 2, 0, 0}, {0, 2, 0, 0}}, 2}, {9, 0, {{1, 0, 2, 3}, {}}, -1},
      {9, 10, {{1, 0, 2, 3}, {1, 0, 2, 3}}, -1}, {4, 1, {{}, {0, 0, 0, 4}}, 4},
      {1, 0, {{1, 0, 0, 0}, {}}, 1},            {3, 2, {{}, {0, 0, 3, 0}}, 3},
  };
  for (const auto& r : rows) {
    Model md(r.mod, r.trn);
    for (int f = 0; f < 2; ++f)
      for (int c = 0; c < 4; ++c) EXPECT_EQ(md.e.modellist[f][c], r.list[f][c]) << r.mod << " " << r.trn;
    EXPECT_EQ(md.e.modused, r.modused);
    EXPECT_EQ(md.e.trnsused, r.trn);
  }
  Model md(1);
  md.s.size.level.parm = 0.3;
  md.s.size.level.noest = 1;
  md.s.size.trend.lower = kMissing;
  md.s.size.damp.noest = 1;  // no value: estimated all the same
  ASSERT_EQ(esm_spec(&md.e, 0, &md.s.size), 0);
  const WGTBNDS& b = md.e.model->wbnds;
  EXPECT_EQ(b.wlevel[0], 0.3);
  EXPECT_EQ(b.wlevel[1], 0.3);
  EXPECT_EQ(b.wlevel[2], 0.0);
  EXPECT_EQ(b.wtrend[0], -100.0);
  EXPECT_DOUBLE_EQ(b.wtrend[2], 100.999 * 1.110223024625157e-13);
  EXPECT_EQ(b.wdamp[1], 0.999);
  md.s.size.modcode = 5;
  EXPECT_EQ(esm_spec(&md.e, 0, &md.s.size), -99);
}

// RMSE of the driver's predictions against x over [from, to).
double rmse(const std::vector<double>& p, long pfrom, long from, long to) {
  long double s = 0;
  for (long i = from; i < to; ++i) s += (kX[i] - p[i - from + pfrom]) * (kX[i] - p[i - from + pfrom]);
  return static_cast<double>(std::sqrt(s / (to - from)));
}

TEST(EsmComponent, SelectionByTheCriterionOnTheHoldout) {
  // Intervals, the last 3 held out: the driver fits x[1 .. 9] and its
  // predictions at leads 1 to 3 meet x[10 .. 12].
  const IDSCOMP c = component(kX, kIdsInterval), none = component(kX, kIdsInterval);
  Model md(9, 10);  // AUTO fell back to no transformation: row 1 unused
  md.e.orig = &c;
  md.e.trns = &none;
  std::vector<double> work(20), w(101, kMissing);
  ASSERT_EQ(esm_select(&md.e, work.data(), w.data(), 0.05, 3, 6), 0);
  double want[4] = {kMissing, kMissing, kMissing, kMissing};
  int best = 0;
  for (int m = 1; m <= 3; ++m) {
    const Driver d(kX.data() + 1, 9, m, 3);
    want[m == 1 ? 0 : m] = rmse(d.p, 9, 10, 13);
    if (want[m == 1 ? 0 : m] < want[best]) best = m == 1 ? 0 : m;
  }
  for (int col = 0; col < 4; ++col) {
    expectSame(md.e.criterion[0][col], want[col]);
    EXPECT_TRUE(wzmis(md.e.criterion[1][col]));
  }
  EXPECT_EQ(md.e.modused, md.e.modellist[0][best]);
  EXPECT_EQ(md.e.trnsused, 0);
  EXPECT_EQ(md.e.comp, &c);

  // Three sizes, minobstrend 2: SIMPLE and LINEAR are tried, DAMPTREND isn't.
  const IDSCOMP three = component({4, 6, 5}, kIdsSize);
  md.e.orig = &three;
  ASSERT_EQ(esm_select(&md.e, work.data(), w.data(), 0.05, 0, 2), 0);
  EXPECT_FALSE(wzmis(md.e.criterion[0][0]));
  EXPECT_TRUE(wzmis(md.e.criterion[0][3]));
  md.e.orig = nullptr;
  EXPECT_EQ(esm_select(&md.e, work.data(), w.data(), 0.05, 0, 2), -35);
  EXPECT_EQ(md.e.modused, -1);
  EXPECT_EQ(md.e.trnsused, -1);
}

TEST(EsmComponent, BackTransformIsTheLognormalMeanOrMedian) {
  std::vector<double> logx;
  for (double v : kX) logx.push_back(std::log(v));
  const IDSCOMP plain = component(kX, kIdsSize);
  for (int opt : {2, 3}) {
    IDSCOMP t = component(logx, kIdsSize);
    t.trnscode = 1;
    Model md(1, 1);
    md.s.size.trnsopt = opt;
    md.e.orig = &plain;
    md.e.trns = &t;
    ASSERT_EQ(esm_set(&md.e, &t, 0), 0);
    md.e.modused = 1;
    ASSERT_EQ(esm_fit(&md.e), 0);
    ASSERT_EQ(esm_pred(&md.e, 0.05, 1, &md.e.forecast), 0);
    const ESMFOR before = md.e.forecast;
    std::vector<double> w(101, kMissing);
    ASSERT_EQ(esm_trns(&md.e, w.data()), 0);
    const ESMFOR& f = md.e.forecast;
    for (std::size_t i = 0; i < kX.size() + 1; ++i) {
      const double mu = before.predict[i], s2 = before.std[i] * before.std[i];
      EXPECT_NEAR(f.predict[i], std::exp(opt == 2 ? mu + s2 / 2 : mu), 1e-9 * f.predict[i]) << i;
      EXPECT_NEAR(f.lower[i], std::exp(before.lower[i]), 1e-9 * f.lower[i]);
      if (i < kX.size()) {
        EXPECT_DOUBLE_EQ(f.error[i], kX[i] - f.predict[i]);
      }
    }
    if (opt == 2) {  // sd of a lognormal: sqrt(exp(s^2) - 1) times its mean
      EXPECT_NEAR(f.std[5], std::sqrt(std::expm1(before.std[5] * before.std[5])) * f.predict[5], 1e-9);
    }
    EXPECT_TRUE(wzmis(f.error[kX.size()]));  // no actual beyond the data
  }
}

TEST(EsmComponent, BoundsOnlyTheLastEntry) {
  const struct {
    int code;
    double lower, upper;
    int rc;
    double pred, lo, up;
  } rows[] = {
      {1, 1.0, kMissing, 1, 1.0, 0.2, 0.8},  {2, 1.0, kMissing, 1, 1.0, 1.0, 1.0},
      {2, kMissing, 0.6, 1, 0.5, 0.2, 0.6},  {1, 0.1, 0.9, 0, 0.5, 0.2, 0.8},
      {0, 1.0, 2.0, 0, 0.5, 0.2, 0.8},       {7, kMissing, kMissing, 0, 0.5, 0.2, 0.8},
      {7, 1.0, kMissing, -99, 0.5, 0.2, 0.8},
  };
  for (const auto& r : rows) {
    Model md(1);
    md.s.size.fbnds = {r.lower, r.upper, r.code};
    ESMFOR& f = md.e.forecast;
    f.n = 2;
    f.predict = {0.5, 0.5};
    f.lower = {0.2, 0.2};
    f.upper = {0.8, 0.8};
    EXPECT_EQ(esm_bnds(&md.e), r.rc) << r.code;
    EXPECT_EQ(f.predict[1], r.pred);
    EXPECT_EQ(f.lower[1], r.lo);
    EXPECT_EQ(f.upper[1], r.up);
    EXPECT_EQ(f.predict[0], 0.5);  // the fit values are never bounded
  }
}

TEST(EsmComponent, RefusedArguments) {
  Model md(3);
  const IDSCOMP three = component({4, 6, 5}, kIdsSize);
  EXPECT_EQ(esm_set(&md.e, &three, -1), -99);
  EXPECT_EQ(esm_set(&md.e, nullptr, 0), -99);
  ASSERT_EQ(esm_set(&md.e, &three, 0), 0);
  md.e.modused = 3;
  EXPECT_EQ(esm_fit(&md.e), -45);  // a damped trend needs 4 values
  md.e.modused = 9;
  EXPECT_EQ(esm_fit(&md.e), -99);
  EXPECT_EQ(esm_pred(&md.e, 0.05, -1, &md.e.forecast), -99);
  double w[101];
  md.e.spec = nullptr;
  EXPECT_EQ(esm_trns(&md.e, w), -20);
  EXPECT_EQ(esm_init(-1, &md.e), -99);
  EXPECT_EQ(esm_reset(nullptr), -99);
}

}  // namespace
}  // namespace qvt
