// The weight estimator. On simple exponential smoothing: analytic
// derivatives against central differences, weights recovered from simulated
// series, active bounds, held and fixed weights, the failure codes. On
// Holt's linear method: the brute-force minimum with and without a weight
// on its bound. On a test-only model linear in three weights: bounded least
// squares, which the Gauss-Newton iteration must reach exactly.
#include <array>
#include <memory>

#include "model_oracle.hpp"

namespace qvt {
namespace {

using oracle::simple;
using oracle::simpleMse;

// Brute-force minimiser of simpleMse: a scan of [0.001, 0.999] at step 0.001.
double bruteMin(const std::vector<double>& x, double* msemin) {
  double best = 0.001;
  *msemin = simpleMse(x, 0.001);
  for (int i = 2; i <= 999; ++i) {
    const double m = simpleMse(x, i * 0.001);
    if (m < *msemin) {
      *msemin = m;
      best = i * 0.001;
    }
  }
  return best;
}

TEST(EsmNextstep, NumericCheckRecordsBothDerivatives) {
  // The analytic gradient of every model is checked against central
  // differences in the model-family tests; here the check of a fit.
  Model mod(simple(0.4, 60, 3));
  mod.m->opt.numeric = 1;
  mod.m->opt.relative = 1;
  ASSERT_GE(esmfit(mod.m), 0);
  const ESMDERCHECK& c = mod.m->dercheck;
  ASSERT_EQ(c.done, 1);
  EXPECT_EQ(c.weights[0], mod.m->pest.parms[0]);
  EXPECT_NEAR(c.derived[0], c.numerical[0], 1e-4 * (std::fabs(c.numerical[0]) + c.mse));
}

TEST(EsmGrid, PicksTheBestOfTheTwentyPointsAndStopsOnAConstant) {
  // The best of the method's own grid by the direct recursion.
  const auto* grid = esmmodelset(kEsmSimple)->est->grid;
  for (double alpha : {0.05, 0.33, 0.9}) {
    const auto y = simple(alpha, 80, 7);
    double best = 0, bm = 1e300;
    for (int g = 0; g < kEsmGridPoints; ++g)
      if (simpleMse(y, grid[g][0]) < bm) {
        bm = simpleMse(y, grid[g][0]);
        best = grid[g][0];
      }
    Model mod(y);
    std::vector<double> row;
    int handle = 0;
    mod.m->outest.xoparm.fileid = &handle;
    mod.m->outest.strptr = &row;
    esmfit(mod.m);
    ASSERT_EQ(row.size(), 2u);
    EXPECT_EQ(row[0], best) << alpha;
    EXPECT_NEAR(row[1], bm, 1e-12 * bm);
  }
  // mse is 0 at every grid point: the earliest stays, nothing iterates; a
  // perfect fit has standard error 0 and an infinite t value.
  for (std::size_t n : {2u, 30u}) {
    const std::vector<double> y(n, 4.5);
    Model mod(y);
    EXPECT_EQ(esmfit(mod.m), 0);
    const MODELPEST& e = mod.m->pest;
    EXPECT_THAT((std::vector<double>{e.parms[0], e.mse, e.stderr_[0], e.pvalue[0]}),
                ElementsAre(grid[0][0], 0, 0, 0));
    EXPECT_EQ(missCode(e.tvals[0]), 'I');
  }
}

TEST(EsmEstimate, MinimiserAndStandardErrorFromPredictionDerivatives) {
  const auto y = simple(0.4, 200, 17);
  Model mod(y);
  EXPECT_EQ(esmfit(mod.m), 0) << "a clean series converges";
  const double w = mod.m->pest.parms[0];
  const double n = static_cast<double>(y.size());
  // The weight is 1 - theta of the equivalent MA(1) model, whose estimate
  // has standard deviation sqrt((1 - theta^2) / n): allow four of them.
  EXPECT_NEAR(w, 0.4, 4 * std::sqrt((1 - 0.36) / n));
  // It is the minimiser of the criterion that it was given: no point of
  // the scan does better.
  double msemin = 0;
  EXPECT_NEAR(w, bruteMin(y, &msemin), 2e-3);
  EXPECT_LE(simpleMse(y, w), msemin * (1 + 1e-9));
  // Error variance: the mean square at the estimate, on n - 1 degrees of freedom.
  const double mse = simpleMse(y, w);
  EXPECT_NEAR(mod.m->pest.mse, mse * n / (n - 1), 1e-10 * mse);
  // Sum of squared derivatives of the one-step predictions, by central
  // differences of the predictions themselves.
  std::vector<double> p1, p2;
  const double h = 1e-6;
  simpleMse(y, w + h, &p1);
  simpleMse(y, w - h, &p2);
  double sdd = 0;
  for (std::size_t t = 0; t < y.size(); ++t) sdd += std::pow((p1[t] - p2[t]) / (2 * h), 2);
  // The stored diagonal carries half the inverse of the cross-products.
  const double se = std::sqrt(0.5 / sdd * mod.m->pest.mse);
  EXPECT_NEAR(mod.m->pest.stderr_[0], se, 1e-4 * se);
  EXPECT_NEAR(mod.m->pest.tvals[0], w / se, 1e-4 * w / se);
  EXPECT_EQ(mod.m->pest.df[0], static_cast<long>(y.size()) - 1);
}

TEST(EsmEstimate, BoundsHeldAndFixedWeights) {
  // A random walk observed without noise: the best weight is 1, beyond the
  // upper bound. Values alternating around 10, ending on 10 so that the
  // start level is the mean: the optimum lies below the lower bound.
  std::mt19937_64 gen(5);
  std::normal_distribution<double> nd;
  std::vector<double> walk(150), alt(101);
  double v = 50;
  for (auto& e : walk) e = (v += nd(gen));
  for (std::size_t t = 0; t < alt.size(); ++t) alt[t] = (t % 2) ? 12.0 : 8.0;
  alt.back() = 10.0;
  const auto y = simple(0.5, 100, 23);  // optimum about 0.5
  struct Case {
    const std::vector<double>* y;
    double lo, hi;
    char held;
    double expect;
  } cases[] = {
      {&walk, 0.001, 0.999, 0, 0.999}, {&alt, 0.001, 0.999, 0, 0.001},
      {&y, 0.001, 0.999, 1, 0.001},    // held at its lower bound
      {&y, 0.95, 0.95, 0, 0.95},       // lower = upper: fixed
      {&y, 0.1, 0.2, 0, 0.2},          // narrow bounds cut off the optimum: the nearer wins
  };
  for (const auto& c : cases) {
    if (c.y != &y) {
      double msemin = 0;
      ASSERT_NEAR(bruteMin(*c.y, &msemin), c.expect, 0.0015) << "the oracle's optimum on the bound";
    }
    Model mod(*c.y);
    mod.m->wbnds.wlevflg = c.held;
    mod.m->wbnds.wlevel[0] = c.lo;
    mod.m->wbnds.wlevel[1] = c.hi;
    mod.m->wbnds.wlevel[2] = (c.hi - c.lo) * kEsmTolFactor;
    EXPECT_EQ(esmfit(mod.m), 0) << c.expect;
    EXPECT_EQ(mod.m->pest.parms[0], c.expect);
    const double n = static_cast<double>(c.y->size());
    EXPECT_NEAR(mod.m->pest.mse, simpleMse(*c.y, c.expect) * n / (n - 1), 1e-10 * mod.m->pest.mse);
  }
}

TEST(EsmEstimate, NoUsableGridPointGivesMinus8) {
  Model mod(simple(0.5, 30, 41));
  mod.m->svi.level = 1e200;  // every pass diverges
  EXPECT_EQ(esmfit(mod.m), -8);
  EXPECT_TRUE(wzmis(mod.m->pest.parms[0]) && wzmis(mod.m->pest.stderr_[0]) && wzmis(mod.m->pest.mse));
}

TEST(EsmEstimate, EveryFourthValueFlaggedStopsWith90) {
  // Across a flagged value the carried derivative is that of the prediction
  // fed in, not of the criterion: the offset stays above 0.0001 and the step
  // size runs out. 90 with the weights of the last accepted point, never
  // worse than where the grid started.
  auto x = simple(0.4, 60, 1);
  for (std::size_t t = 3; t < x.size(); t += 4) x[t] = kMissing;
  Model mod(x);
  EXPECT_EQ(mod.m->ts.nmiss, 15);
  std::vector<double> gridrow;
  int handle = 0;
  mod.m->outest.xoparm.fileid = &handle;
  mod.m->outest.strptr = &gridrow;
  EXPECT_EQ(esmfit(mod.m), 90);
  ASSERT_EQ(gridrow.size(), 2u);
  EXPECT_LE(mod.m->pest.mse * 44 / 45, gridrow[1] * (1 + 1e-12));  // 45 usable
  EXPECT_FALSE(wzmis(mod.m->pest.stderr_[0]));
}

TEST(EsmOffset, TableAndCrossProducts) {
  struct Case {
    double sse, res, xscale, r;
  } cases[] = {
      {4, 1, 0, std::sqrt(0.75)},  // a quarter of the errors unexplained
      {4, 4, 0, 0},                // orthogonal: a minimum
      {4, -4, 0, 1},               // v = 2 is limited to 1
      {1e-13, 0, 1, 0},            // below xscale * 1e-12
  };
  for (const auto& c : cases) EXPECT_NEAR(esmoffset(c.sse, c.res, c.xscale), c.r, 1e-15);
  double a[6] = {};
  const double r1[3] = {1, 2, 3}, r2[3] = {0, -1, 4}, r3[3] = {1, kMissing, 1};
  zscp(r1, 3, 1.0, a);
  zscp(r2, 3, 2.0, a);
  zscp(r3, 3, 1.0, a);  // a missing entry: nothing added
  zscp(r1, 3, 0.0, a);  // weight 0: nothing added
  // Packed lower triangle: (0,0) (1,0) (1,1) (2,0) (2,1) (2,2).
  EXPECT_THAT(a, ElementsAre(1, 2, 4 + 2, 3, 6 - 8, 9 + 32));
}

// ---------------------------------------------------------------- two and three weights

// A test-only "model" whose one-step prediction is linear in its k weights:
// p_t = w0 u_t + w1 v_t (+ w2 z_t), t the season code. Gauss-Newton is then
// exact and the answer is ordinary least squares with the weights pushed
// out of their bounds fixed on them.
constexpr int kN = 120;

double reg(int j, int t) {
  const double x = static_cast<double>(t);
  return j == 0 ? std::sin(0.3 * x) : (j == 1 ? std::cos(0.11 * x) + 0.5 : 1.0 + 0.02 * x);
}

double linPredict(const double* w, const SMOOTHVALS& s, int t) {
  return w[0] * reg(0, t) + w[1] * reg(1, t) + (s.trend == 3 ? w[2] * reg(2, t) : 0.0);
}

int linStep(double x, double, const double* w, int t, SMOOTHVALS& s, WINT_DER&, double* dervec, double* e) {
  for (int j = 0; j < 3; ++j) dervec[j] = reg(j, t);
  s.xhat = linPredict(w, s, t);
  *e = s.xhat - x;
  return 0;
}

// Mean squared error of weights w over y; s.trend carries k.
double mseAt(const double* y, const double* w, const SMOOTHVALS& s) {
  double ss = 0;
  for (int t = 0; t < kN; ++t) ss += std::pow(linPredict(w, s, t) - y[t], 2);
  return ss / kN;
}

int linSmo(const FITCON& fc, const double* w, int, SMOOTHVALS& s, double* mse) {
  *mse = mseAt(fc.x, w, s);
  return 0;
}

void linStd(const double* xpx, double mse, long, int, const double* parms, double* se, double* t) {
  for (int i = 0; i < 3; ++i) {
    se[i] = std::sqrt(std::fabs(xpx[i]) * mse);
    t[i] = parms[i] / se[i];
  }
}

const std::array<std::array<double, 3>, 20> kGrid3 = [] {
  std::array<std::array<double, 3>, 20> g{};
  for (int i = 0; i < 20; ++i) g[i] = {0.05 * (i + 1) - 0.04, 0.5, 0.9 - 0.04 * i};
  return g;
}();

struct LinModel {
  ESMKSET ks;
  std::vector<double> y;
  std::unique_ptr<Model> mod;
  LinModel(int k, const std::array<double, 3>& beta, unsigned seed)
      : ks{.method = 3, .k = k, .coord = {EsmWeight::Level, EsmWeight::Trend, EsmWeight::Damp},
           .grid = kGrid3.data(), .smo = linSmo, .predict = linPredict, .step = linStep, .std = linStd,
           .dfparms = k} {
    const SMOOTHVALS s{.trend = static_cast<double>(k), .sfactor = {}};
    std::mt19937_64 gen(seed);
    std::normal_distribution<double> nd(0, 0.05);
    for (int t = 0; t < kN; ++t) y.push_back(linPredict(beta.data(), s, t) + nd(gen));
    mod = std::make_unique<Model>(y);
    WINMODEL* m = mod->m;
    for (auto* v : {&m->pest.parms, &m->pest.stderr_, &m->pest.tvals, &m->pest.pvalue})
      v->assign(3, kMissing);
    m->ts.scodes.resize(kN);
    std::iota(m->ts.scodes.begin(), m->ts.scodes.end(), 0);
    m->svi.trend = k;
    m->wbnds.wdamp[0] = 0.001;  // every coordinate on [0.001, 0.999]
  }
  double mse(const std::array<double, 3>& w) const { return mseAt(y.data(), w.data(), mod->m->svi); }
  // Least squares over the free weights, the others fixed on their bounds.
  std::array<double, 3> ols(const std::array<int, 3>& bound) const {
    std::array<double, 3> out{};
    std::vector<std::vector<double>> X(kN);
    std::vector<double> r(y);
    for (int j = 0; j < ks.k; ++j) out[j] = bound[j] < 0 ? 0.001 : 0.999;
    for (int t = 0; t < kN; ++t)
      for (int j = 0; j < ks.k; ++j) {
        if (bound[j] == 0) X[t].push_back(reg(j, t));
        else r[t] -= out[j] * reg(j, t);
      }
    const auto b = oracle::ols(X, r);
    for (int j = 0, i = 0; j < ks.k; ++j)
      if (bound[j] == 0) out[j] = b[i++];
    return out;
  }
};

TEST(EsmManyWeights, LeastSquaresWithActiveBounds) {
  struct Case {
    int k;
    std::array<double, 3> beta;
    std::array<int, 3> bound;  // -1 on the lower bound, +1 on the upper, 0 free
    char held;                 // the second weight held on its lower bound
    char bounds = 1;           // 0: no bounds, the ridge the only brake
  } cases[] = {
      {3, {0.3, 0.6, 0.45}, {0, 0, 0}, 0},  {3, {0.3, 0.3, 1.1}, {0, 0, 1}, 0},
      {3, {0.3, 1.3, 0.4}, {0, 1, 0}, 0},   {3, {0.3, -0.4, 0.5}, {0, -1, 0}, 0},
      {3, {1.6, -0.4, 0.5}, {1, -1, 0}, 0}, {2, {0.3, 0.6, 0}, {0, 0, 0}, 0},
      {2, {0.4, 1.2, 0}, {0, 1, 0}, 0},     {2, {0.4, 0.5, 0}, {0, -1, 0}, 1},
      {2, {1.6, -0.4, 0}, {1, -1, 0}, 0},   {3, {0.8, -2.0, 3.0}, {0, 0, 0}, 0, 0},
  };
  unsigned seed = 0;
  for (const auto& c : cases) {
    LinModel lm(c.k, c.beta, ++seed);
    lm.mod->m->wbnds.wtreflg = c.held;
    lm.mod->m->wbnds.bounds = c.bounds;
    const auto expect = lm.ols(c.bound);
    const int rc = esmestimate(lm.mod->m, lm.ks);
    EXPECT_TRUE(rc == 0 || rc == 90) << seed << " " << rc;
    for (int j = 0; j < c.k; ++j) EXPECT_NEAR(lm.mod->m->pest.parms[j], expect[j], 1e-5) << seed << " " << j;
    if (c.bounds && c.bound == std::array<int, 3>{0, 0, 0}) {
      EXPECT_EQ(rc, 0) << "a linear model converges at once";
      EXPECT_NEAR(lm.mod->m->pest.mse, lm.mse(expect) * kN / (kN - c.k), 1e-12);
    }
  }
}

}  // namespace
}  // namespace qvt
