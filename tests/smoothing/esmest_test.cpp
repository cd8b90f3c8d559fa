// The weight estimator. On simple exponential smoothing: analytic
// derivatives against central differences, weights recovered from simulated
// series, active bounds, held and fixed weights, the failure codes. On
// Holt's linear method: the brute-force minimum with and without a weight
// on its bound. On a test-only model linear in three weights: bounded least
// squares, which the Gauss-Newton iteration must reach exactly.
#include <array>
#include <memory>
#include <numeric>

#include "model_oracle.hpp"

namespace qvt {
namespace {

using oracle::simple;
using oracle::simpleMse;

// Brute-force minimiser of simpleMse over [0.001, 0.999]: a scan at step
// 0.001, then golden-section refinement around the best scan point.
double bruteMin(const std::vector<double>& x, double* msemin) {
  double best = 0.001, bm = simpleMse(x, 0.001);
  for (int i = 2; i <= 999; ++i) {
    const double m = simpleMse(x, i * 0.001);
    if (m < bm) {
      bm = m;
      best = i * 0.001;
    }
  }
  double a = std::max(0.001, best - 0.001), b = std::min(0.999, best + 0.001);
  const double g = (std::sqrt(5.0) - 1) / 2;
  for (int it = 0; it < 60; ++it) {
    const double c = b - g * (b - a), d = a + g * (b - a);
    if (simpleMse(x, c) < simpleMse(x, d)) {
      b = d;
    } else {
      a = c;
    }
  }
  const double w = 0.5 * (a + b);
  if (simpleMse(x, w) < bm) {
    bm = simpleMse(x, w);
    best = w;
  }
  *msemin = bm;
  return best;
}

TEST(EsmNextstep, AnalyticGradientMatchesCentralDifferences) {
  const std::vector<std::vector<double>> series = {simple(0.3, 40, 1),
                                                   {3, 1, 4, 1, 5, 9, 2, 6, 5, 3, 5}};
  for (const auto& y : series) {
    Model mod(y);
    ASSERT_EQ(mod.rc, 0);
    for (double w : {0.05, 0.6, 0.95}) {
      FITCON fc;
      esmfitcon(mod.m, fc);
      POINT p;
      p.wlevel = w;
      p.wbnds.dim = p.wbnds.nextdim = 1;
      ASSERT_EQ(esmnextstep(mod.m, kEs1Kernels, fc, p), 0);
      // The derivative runs through the backcast too, so it is that of the
      // whole criterion.
      const double h = 1e-6, m = simpleMse(y, w);
      const double fd = (simpleMse(y, w + h) - simpleMse(y, w - h)) / (2 * h);
      EXPECT_NEAR(p.grad[0], fd, 1e-5 * (std::fabs(fd) + 1e-3 * m)) << y.size() << " " << w;
      double npd = 0;
      ASSERT_EQ(zes1npd(y.data(), mod.m->ts.misflg.data(), mod.m->ts.descstats.norm,
                        static_cast<long>(y.size()), w, mod.m->svi.level, 1e-6, 0, &npd),
                0);
      EXPECT_NEAR(p.grad[0], npd, 1e-5 * (std::fabs(npd) + 1e-3 * m));
      EXPECT_NEAR(p.mse, m, 1e-12 * m);
    }
  }
  // The derivative check of a fit records both derivatives.
  Model mod(simple(0.4, 60, 3));
  mod.m->opt.numeric = 1;
  mod.m->opt.relative = 1;
  ASSERT_GE(esmfit(mod.m), 0);
  const ESMDERCHECK& c = mod.m->dercheck;
  ASSERT_EQ(c.done, 1);
  EXPECT_NEAR(c.derived[0], c.numerical[0], 1e-4 * (std::fabs(c.numerical[0]) + c.mse));
}

TEST(EsmGrid, PicksTheBestOfTheTwentyPointsAndStopsOnAConstant) {
  const double grid[20] = {0.01, 0.1,  0.15, 0.175, 0.2, 0.225, 0.25, 0.275, 0.3, 0.325,
                           0.35, 0.375, 0.4, 0.45, 0.5, 0.6,  0.7,  0.8,  0.9, 0.99};
  for (double alpha : {0.05, 0.33, 0.9}) {
    const auto y = simple(alpha, 80, 7);
    double best = 0, bm = 1e300;
    for (double w : grid)
      if (simpleMse(y, w) < bm) {
        bm = simpleMse(y, w);
        best = w;
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
    EXPECT_EQ(mod.m->pest.parms[0], 0.01);
    EXPECT_EQ(mod.m->pest.mse, 0.0);
    EXPECT_EQ(mod.m->pest.stderr_[0], 0.0);
    EXPECT_EQ(missCode(mod.m->pest.tvals[0]), 'I');
    EXPECT_EQ(mod.m->pest.pvalue[0], 0.0);
  }
}

TEST(EsmEstimate, RecoversSimulatedWeights) {
  struct Case {
    double alpha;
    std::size_t n;
  } cases[] = {{0.2, 300}, {0.5, 300}, {0.8, 300}, {0.3, 1500}, {0.7, 1500}};
  unsigned seed = 100;
  for (const auto& c : cases) {
    const auto y = simple(c.alpha, c.n, ++seed);
    Model mod(y);
    EXPECT_EQ(esmfit(mod.m), 0) << "a clean series converges";
    const double w = mod.m->pest.parms[0];
    // The weight is 1 - theta of the equivalent MA(1) model, whose estimate
    // has standard deviation sqrt((1 - theta^2) / n): allow four of them.
    const double theta = 1 - c.alpha;
    EXPECT_NEAR(w, c.alpha, 4 * std::sqrt((1 - theta * theta) / static_cast<double>(c.n)));
    // It is the minimiser of the criterion that it was given.
    double msemin = 0;
    EXPECT_NEAR(w, bruteMin(y, &msemin), 2e-3) << "alpha " << c.alpha << " n " << c.n;
    EXPECT_LE(simpleMse(y, w), msemin * (1 + 1e-6));
  }
}

TEST(EsmEstimate, StandardErrorFromPredictionDerivatives) {
  const auto y = simple(0.4, 200, 17);
  Model mod(y);
  ASSERT_EQ(esmfit(mod.m), 0);
  const double w = mod.m->pest.parms[0];
  const double n = static_cast<double>(y.size());
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
  // For this many df the t tail is close to the normal 2 (1 - Phi(|t|)).
  EXPECT_NEAR(mod.m->pest.pvalue[0], std::erfc(w / se / std::sqrt(2.0)), 5e-3);
  EXPECT_EQ(mod.m->pest.df[0], static_cast<long>(y.size()) - 1);
}

TEST(EsmEstimate, ActiveBounds) {
  // A random walk observed without noise: the best weight is 1, beyond the
  // upper bound; the estimation ends on 0.999 with code 0.
  std::mt19937_64 gen(5);
  std::normal_distribution<double> nd;
  std::vector<double> walk(150);
  double v = 50;
  for (auto& e : walk) e = (v += nd(gen));
  // Values alternating around 10, ending on 10 so that the start level is
  // the mean: the optimum lies below the lower bound 0.001.
  std::vector<double> alt(101);
  for (std::size_t t = 0; t < alt.size(); ++t) alt[t] = (t % 2) ? 12.0 : 8.0;
  alt.back() = 10.0;
  double msemin = 0;
  ASSERT_GT(bruteMin(walk, &msemin), 0.998) << "the oracle must put the optimum on the bound";
  ASSERT_LT(bruteMin(alt, &msemin), 0.0015);
  Model up(walk), lo(alt);
  EXPECT_EQ(esmfit(up.m), 0);
  EXPECT_EQ(up.m->pest.parms[0], 0.999);
  EXPECT_EQ(esmfit(lo.m), 0);
  EXPECT_EQ(lo.m->pest.parms[0], 0.001);
}

TEST(EsmEstimate, HeldFixedNarrowAndUnboundedWeights) {
  const auto y = simple(0.5, 100, 23);
  Model held(y);
  held.m->wbnds.wlevflg = 1;  // held at its lower bound
  EXPECT_EQ(esmfit(held.m), 0);
  EXPECT_EQ(held.m->pest.parms[0], 0.001);
  for (double fixed : {0.05, 0.95}) {
    Model mod(y);
    mod.m->wbnds.wlevel[0] = mod.m->wbnds.wlevel[1] = fixed;  // lower = upper
    EXPECT_EQ(esmfit(mod.m), 0) << fixed;
    EXPECT_EQ(mod.m->pest.parms[0], fixed);
    EXPECT_NEAR(mod.m->pest.mse, simpleMse(y, fixed) * 100.0 / 99.0, 1e-10 * simpleMse(y, fixed));
  }
  // Narrow bounds that cut off the optimum (about 0.5): the nearer bound wins.
  Model narrow(y);
  narrow.m->wbnds.wlevel[0] = 0.1;
  narrow.m->wbnds.wlevel[1] = 0.2;
  narrow.m->wbnds.wlevel[2] = 0.1 * kEsmTolFactor;
  EXPECT_EQ(esmfit(narrow.m), 0);
  EXPECT_EQ(narrow.m->pest.parms[0], 0.2);
  // Without bounds the iteration ends where the bounded one does.
  const auto z = simple(0.35, 250, 31);
  Model a(z), b(z);
  b.m->wbnds.bounds = 0;
  EXPECT_EQ(esmfit(a.m), 0);
  EXPECT_EQ(esmfit(b.m), 0);
  EXPECT_NEAR(a.m->pest.parms[0], b.m->pest.parms[0], 1e-3);
}

TEST(EsmEstimate, NoUsableGridPointGivesMinus8) {
  Model mod(simple(0.5, 30, 41));
  mod.m->svi.level = 1e200;  // every pass diverges
  EXPECT_EQ(esmfit(mod.m), -8);
  EXPECT_TRUE(wzmis(mod.m->pest.parms[0]));
  EXPECT_TRUE(wzmis(mod.m->pest.stderr_[0]));
  EXPECT_TRUE(wzmis(mod.m->pest.mse));
}

TEST(EsmEstimate, FlaggedObservationsStillGiveUsableWeights) {
  // Across a flagged value the carried derivative is that of the prediction
  // fed in, not of the criterion, so the offset need not fall: 90 is
  // allowed, but the weights must be near the optimum of the flagged
  // criterion.
  auto y = simple(0.4, 200, 53);
  for (std::size_t t = 5; t < y.size(); t += 9) y[t] = kMissing;
  Model mod(y);
  EXPECT_EQ(mod.m->ts.nmiss, 22);
  const int rc = esmfit(mod.m);
  ASSERT_TRUE(rc == 0 || rc == 90) << rc;
  const double w = mod.m->pest.parms[0];
  auto crit = [&](double v) {
    double L = mod.m->svi.level, mse = 0;
    zes1smo(y.data(), mod.m->ts.misflg.data(), mod.m->ts.descstats.norm,
            static_cast<long>(y.size()), v, &L, &mse);
    return mse;
  };
  EXPECT_LE(crit(w), crit(std::min(w + 0.05, 0.999)) * (1 + 1e-9));
  EXPECT_LE(crit(w), crit(std::max(w - 0.05, 0.001)) * (1 + 1e-9));
  // Every fourth value flagged: the offset stays above 0.0001 and the step
  // size runs out. 90 with the weights of the last accepted point, never
  // worse than where the grid started.
  for (unsigned seed : {1u, 4u}) {
    auto x = simple(0.4, 60, seed);
    for (std::size_t t = 3; t < x.size(); t += 4) x[t] = kMissing;
    Model m4(x);
    std::vector<double> gridrow;
    int handle = 0;
    m4.m->outest.xoparm.fileid = &handle;
    m4.m->outest.strptr = &gridrow;
    const int rc4 = esmfit(m4.m);
    EXPECT_TRUE(seed == 4 ? rc4 == 0 || rc4 == 90 : rc4 == 90) << rc4;
    ASSERT_EQ(gridrow.size(), 2u);
    EXPECT_LE(m4.m->pest.mse * 44 / 45, gridrow[1] * (1 + 1e-12)) << seed;  // 45 usable
    EXPECT_FALSE(wzmis(m4.m->pest.stderr_[0]));
  }
}

TEST(EsmOffset, TableAndCrossProducts) {
  struct Case {
    double sse, res, xscale, r;
  } cases[] = {
      {4, 1, 0, std::sqrt(0.75)},  // a quarter of the errors unexplained
      {4, 4, 0, 0},                // orthogonal: a minimum
      {4, 0, 0, 1},     {4, -4, 0, 1},  // v = 2 is limited to 1
      {0, 1, 0, 0},     {1e-13, 0, 1, 0},  // below xscale * 1e-12
  };
  for (const auto& c : cases) EXPECT_NEAR(esmoffset(c.sse, c.res, c.xscale), c.r, 1e-15);
  double a[6] = {};
  const double r1[3] = {1, 2, 3}, r2[3] = {0, -1, 4}, r3[3] = {1, kMissing, 1};
  zscp(r1, 3, 1.0, a);
  zscp(r2, 3, 2.0, a);
  zscp(r3, 3, 1.0, a);  // a missing entry: nothing added
  zscp(r1, 3, 0.0, a);  // weight 0: nothing added
  // Packed lower triangle: (0,0) (1,0) (1,1) (2,0) (2,1) (2,2).
  const double expect[6] = {1, 2, 4 + 2, 3, 6 - 8, 9 + 32};
  for (int i = 0; i < 6; ++i) EXPECT_EQ(a[i], expect[i]) << i;
}

// ---------------------------------------------------------------- two weights

// Holt's criterion by the oracle from the record's start values.
double holtMse(const WINMODEL& m, double a, double b) {
  const double w[2] = {a, b};
  const std::vector<double> x(m.ts.x, m.ts.x + m.ts.nobs);
  oracle::State s;
  s.L = m.svi.level;
  s.T = m.svi.trend;
  const auto p = oracle::pass(kEsmLinear, w, x, m.ts.misflg, {}, s);
  return p.ss / static_cast<double>(p.nobs);
}

// Brute force over a 0.01 grid of both weights, then 0.0005 around the best.
double bruteMin2(const WINMODEL& m, double hi1, double* w0, double* w1) {
  double best = 1e300;
  auto scan = [&](double a0, double a1, double b0, double b1, double h) {
    for (double a = a0; a <= a1 + 1e-12; a += h)
      for (double b = b0; b <= b1 + 1e-12; b += h)
        if (const double v = holtMse(m, a, b); v < best) {
          best = v;
          *w0 = a;
          *w1 = b;
        }
  };
  scan(0.001, 0.999, 0.001, hi1, 0.01);
  scan(std::max(0.001, *w0 - 0.01), std::min(0.999, *w0 + 0.01), std::max(0.001, *w1 - 0.01),
       std::min(hi1, *w1 + 0.01), 0.0005);
  return best;
}

TEST(EsmTwoWeights, ReachesTheBruteForceMinimumFreeBoundOrHeld) {
  struct Case {
    double a, b, hi1;  // simulated weights; upper bound of the trend weight
    char held;
    unsigned seed;
  } cases[] = {{0.5, 0.2, 0.999, 0, 5}, {0.8, 0.05, 0.999, 0, 7},
               {0.4, 0.5, 0.02, 0, 9},  {0.4, 0.3, 0.001, 1, 10}};
  for (const auto& c : cases) {
    oracle::State s0;
    s0.L = 50;
    s0.T = 0.5;
    const double w[2] = {c.a, c.b};
    const auto y = oracle::simulate(kEsmLinear, w, 200, c.seed, s0, 0, 1.0);
    Model mod(y, kEsmLinear);
    mod.m->wbnds.wtreflg = c.held;
    if (!c.held && c.hi1 < 0.5) {
      mod.m->wbnds.wtrend[1] = c.hi1;
      mod.m->wbnds.wtrend[2] = (c.hi1 - 0.001) * kEsmTolFactor;
    }
    const int rc = esmfit(mod.m);
    ASSERT_TRUE(rc == 0 || rc == 90) << rc;
    double b0 = 0, b1 = 0;
    const double best = bruteMin2(*mod.m, c.hi1, &b0, &b1);
    const auto& p = mod.m->pest.parms;
    if (c.hi1 < 0.5) {
      ASSERT_GT(b1, c.hi1 - 0.0005) << "the oracle must put the trend weight on its bound";
      EXPECT_EQ(p[1], c.hi1);
    } else {
      EXPECT_NEAR(p[1], b1, 0.02) << c.a << "," << c.b;
    }
    EXPECT_NEAR(p[0], b0, 0.02) << c.a << "," << c.b;
    EXPECT_LE(holtMse(*mod.m, p[0], p[1]), best * (1 + 1e-4)) << c.a << "," << c.b;
    EXPECT_FALSE(wzmis(mod.m->pest.stderr_[0]));
  }
}

// ---------------------------------------------------------------- three weights

// A test-only "model" whose one-step prediction is linear in its weights:
// p_t = w0 u_t + w1 v_t + w2 z_t, t the season code. Gauss-Newton is then
// exact and the answer is (bounded) ordinary least squares.
constexpr int kN = 120;

double reg(int j, int t) {
  const double x = static_cast<double>(t);
  return j == 0 ? std::sin(0.3 * x) : (j == 1 ? std::cos(0.11 * x) + 0.5 : 1.0 + 0.02 * x);
}

double linPredict(const double* w, const SMOOTHVALS&, int t) {
  return w[0] * reg(0, t) + w[1] * reg(1, t) + w[2] * reg(2, t);
}

int linStep(double x, double, const double* w, int t, SMOOTHVALS& s, WINT_DER&, double* dervec,
            double* e) {
  for (int j = 0; j < 3; ++j) dervec[j] = reg(j, t);
  s.xhat = linPredict(w, s, t);
  *e = s.xhat - x;
  return 0;
}

double mseAt(const std::vector<double>& y, const double* w) {
  double ss = 0;
  for (int t = 0; t < kN; ++t) ss += std::pow(linPredict(w, SMOOTHVALS{}, t) - y[t], 2);
  return ss / kN;
}

int linSmo(const FITCON& fc, const double* w, int, SMOOTHVALS&, double* mse) {
  *mse = mseAt(std::vector<double>(fc.x, fc.x + fc.n), w);
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
  LinModel(const std::array<double, 3>& beta, unsigned seed) {
    ks.method = 3;
    ks.k = 3;
    ks.coord = {EsmWeight::Level, EsmWeight::Trend, EsmWeight::Damp};
    ks.grid = kGrid3.data();
    ks.smo = linSmo;
    ks.predict = linPredict;
    ks.step = linStep;
    ks.std = linStd;
    ks.dfparms = 3;
    std::mt19937_64 gen(seed);
    std::normal_distribution<double> nd(0, 0.05);
    for (int t = 0; t < kN; ++t) y.push_back(linPredict(beta.data(), SMOOTHVALS{}, t) + nd(gen));
    mod = std::make_unique<Model>(y);
    WINMODEL* m = mod->m;
    for (auto* v : {&m->pest.parms, &m->pest.stderr_, &m->pest.tvals, &m->pest.pvalue})
      v->assign(3, kMissing);
    m->ts.scodes.resize(kN);
    std::iota(m->ts.scodes.begin(), m->ts.scodes.end(), 0);
    m->wbnds.wdamp[0] = 0.001;  // every coordinate on [0.001, 0.999]
  }
  // Least squares over the free weights, the others fixed at their values.
  std::array<double, 3> ols(const std::array<int, 3>& bound) const {
    std::array<double, 3> out{};
    std::vector<std::vector<double>> X(kN);
    std::vector<double> r(y);
    for (int t = 0; t < kN; ++t)
      for (int j = 0; j < 3; ++j) {
        out[j] = bound[j] < 0 ? 0.001 : 0.999;
        if (bound[j] == 0) X[t].push_back(reg(j, t));
        else r[t] -= out[j] * reg(j, t);
      }
    const auto b = oracle::ols(X, r);
    for (int j = 0, i = 0; j < 3; ++j)
      if (bound[j] == 0) out[j] = b[i++];
    return out;
  }
};

TEST(EsmThreeWeights, LeastSquaresWithActiveBounds) {
  struct Case {
    std::array<double, 3> beta;
    std::array<int, 3> bound;  // -1 on the lower bound, +1 on the upper, 0 free
  } cases[] = {
      {{0.3, 0.6, 0.45}, {0, 0, 0}},  {{0.3, 0.3, 1.1}, {0, 0, 1}}, {{0.3, 1.3, 0.4}, {0, 1, 0}},
      {{0.3, -0.4, 0.5}, {0, -1, 0}}, {{1.6, -0.4, 0.5}, {1, -1, 0}},
  };
  unsigned seed = 0;
  for (const auto& c : cases) {
    LinModel lm(c.beta, ++seed);
    auto expect = lm.ols(c.bound);
    // The oracle's own optimality (Karush-Kuhn-Tucker): free weights inside
    // their bounds, bound weights pushed outwards by the slope.
    for (int j = 0; j < 3; ++j) {
      if (c.bound[j] == 0) {
        ASSERT_TRUE(expect[j] > 0.001 && expect[j] < 0.999) << seed << " " << j;
      } else {
        auto up = expect, dn = expect;
        up[j] += 1e-6;
        dn[j] -= 1e-6;
        ASSERT_LT(c.bound[j] * (mseAt(lm.y, up.data()) - mseAt(lm.y, dn.data())), 0) << seed;
      }
    }
    const int rc = esmestimate(lm.mod->m, lm.ks);
    EXPECT_TRUE(rc == 0 || rc == 90) << seed << " " << rc;
    const auto& got = lm.mod->m->pest.parms;
    for (int j = 0; j < 3; ++j) EXPECT_NEAR(got[j], expect[j], 1e-5) << seed << " " << j;
    EXPECT_LE(mseAt(lm.y, got.data()), mseAt(lm.y, expect.data()) * (1 + 1e-9)) << seed;
    if (seed == 1) {
      EXPECT_EQ(rc, 0) << "a linear model converges at once";
      EXPECT_NEAR(lm.mod->m->pest.mse, mseAt(lm.y, expect.data()) * kN / (kN - 3), 1e-12);
    }
  }
  // Without bounds the ridge is the only brake; the iteration must still
  // end at the least-squares point.
  LinModel lm({0.8, -2.0, 3.0}, 9);
  lm.mod->m->wbnds.bounds = 0;
  const int rc = esmestimate(lm.mod->m, lm.ks);
  EXPECT_TRUE(rc == 0 || rc == 90) << rc;
  const auto expect = lm.ols({0, 0, 0});
  for (int j = 0; j < 3; ++j) EXPECT_NEAR(lm.mod->m->pest.parms[j], expect[j], 1e-5) << j;
}

}  // namespace
}  // namespace qvt
