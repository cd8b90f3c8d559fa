// The weight estimator on simple exponential smoothing: analytic derivatives
// against central differences, weights recovered from simulated series,
// active bounds, held and fixed weights, and the failure codes.
#include "model_oracle.hpp"

namespace qvt {
namespace {

// Owns a model made by esmint.
struct Model {
  WINMODEL* m = nullptr;
  explicit Model(const std::vector<double>& y, long nbackcast = 0) {
    const INTERVAL none{};
    rc = esmint(y.data(), static_cast<long>(y.size()), &none, 0.0, 0, 0, kEsmSimple, nbackcast, &m);
  }
  ~Model() { esmtrm(m); }
  Model(const Model&) = delete;
  Model& operator=(const Model&) = delete;
  int rc = 0;
};

// Direct re-statement of the criterion: backcast from the last value, then
// the mean squared one-step error forward (no flagged values here).
double directMse(const std::vector<double>& x, double w, std::vector<double>* pred = nullptr) {
  double L = x.back();
  for (long t = static_cast<long>(x.size()) - 1; t >= 0; --t) L += w * (x[t] - L);
  double ss = 0;
  if (pred) pred->clear();
  for (double v : x) {
    if (pred) pred->push_back(L);
    ss += (v - L) * (v - L);
    L += w * (v - L);
  }
  return ss / static_cast<double>(x.size());
}

// Brute-force minimiser of directMse over [0.001, 0.999]: a scan at step
// 0.001, then golden-section refinement around the best scan point.
double bruteMin(const std::vector<double>& x, double* msemin) {
  double best = 0.001, bm = directMse(x, 0.001);
  for (int i = 2; i <= 999; ++i) {
    const double w = i * 0.001;
    const double m = directMse(x, w);
    if (m < bm) { bm = m; best = w; }
  }
  double a = std::max(0.001, best - 0.001), b = std::min(0.999, best + 0.001);
  const double g = (std::sqrt(5.0) - 1) / 2;
  for (int it = 0; it < 60; ++it) {
    const double c = b - g * (b - a), d = a + g * (b - a);
    if (directMse(x, c) < directMse(x, d)) b = d; else a = c;
  }
  const double w = 0.5 * (a + b);
  if (directMse(x, w) < bm) { bm = directMse(x, w); best = w; }
  *msemin = bm;
  return best;
}

// Simple smoothing is optimal for x_t = l_(t-1) + e_t, l_t = l_(t-1) + alpha e_t.
std::vector<double> simulate(double alpha, std::size_t n, unsigned seed, double sigma = 1.0) {
  std::mt19937_64 gen(seed);
  std::normal_distribution<double> nd(0.0, sigma);
  std::vector<double> x(n);
  double l = 100;
  for (auto& v : x) {
    const double e = nd(gen);
    v = l + e;
    l += alpha * e;
  }
  return x;
}

// ---------------------------------------------------------------- derivatives

TEST(EsmNextstep, AnalyticGradientMatchesCentralDifferences) {
  const std::vector<std::vector<double>> series = {
      simulate(0.3, 40, 1), simulate(0.7, 120, 2), {3, 1, 4, 1, 5, 9, 2, 6, 5, 3, 5}};
  for (const auto& y : series) {
    Model mod(y);
    ASSERT_EQ(mod.rc, 0);
    for (double w : {0.05, 0.3, 0.6, 0.95}) {
      FITCON fc;
      esmfitcon(mod.m, fc);
      POINT p;
      p.wlevel = w;
      p.wbnds.dim = p.wbnds.nextdim = 1;
      ASSERT_EQ(esmnextstep(mod.m, kEs1Kernels, fc, p), 0);
      // The derivative runs through the backcast too, so it is that of the
      // whole criterion: compare with a central difference of directMse.
      const double h = 1e-6;
      const double fd = (directMse(y, w + h) - directMse(y, w - h)) / (2 * h);
      EXPECT_NEAR(p.grad[0], fd, 1e-5 * (std::fabs(fd) + 1e-3 * directMse(y, w)))
          << "n=" << y.size() << " w=" << w;
      // And against the kernel set's own numeric derivative.
      double npd = 0;
      ASSERT_EQ(zes1npd(y.data(), mod.m->ts.misflg.data(), mod.m->ts.descstats.norm,
                        static_cast<long>(y.size()), w, mod.m->svi.level, 1e-6, 0, &npd), 0);
      EXPECT_NEAR(p.grad[0], npd, 1e-5 * (std::fabs(npd) + 1e-3 * directMse(y, w)));
      EXPECT_NEAR(p.mse, directMse(y, w), 1e-12 * directMse(y, w));
    }
  }
}

TEST(EsmNextstep, NumericCheckRecordsBothDerivatives) {
  const auto y = simulate(0.4, 60, 3);
  Model mod(y);
  ASSERT_EQ(mod.rc, 0);
  mod.m->opt.numeric = 1;
  mod.m->opt.relative = 1;
  ASSERT_GE(esmfit(mod.m), 0);
  const ESMDERCHECK& c = mod.m->dercheck;
  ASSERT_EQ(c.done, 1);
  EXPECT_NEAR(c.derived[0], c.numerical[0], 1e-4 * (std::fabs(c.numerical[0]) + c.mse));
}

// ---------------------------------------------------------------- grid

TEST(EsmGrid, PicksTheBestOfTheTwentyPoints) {
  const double grid[20] = {0.01, 0.1,  0.15, 0.175, 0.2, 0.225, 0.25, 0.275, 0.3, 0.325,
                           0.35, 0.375, 0.4, 0.45, 0.5, 0.6,  0.7,  0.8,  0.9, 0.99};
  for (double alpha : {0.05, 0.33, 0.9}) {
    const auto y = simulate(alpha, 80, 7);
    double best = 0, bm = 1e300;
    for (double w : grid)
      if (directMse(y, w) < bm) { bm = directMse(y, w); best = w; }
    Model mod(y);
    ASSERT_EQ(mod.rc, 0);
    std::vector<double> row;
    int handle = 0;
    mod.m->outest.xoparm.fileid = &handle;
    mod.m->outest.strptr = &row;
    esmfit(mod.m);
    ASSERT_EQ(row.size(), 2u);
    EXPECT_EQ(row[0], best) << alpha;
    EXPECT_NEAR(row[1], bm, 1e-12 * bm);
  }
}

TEST(EsmGrid, ConstantSeriesStopsAtTheFirstPoint) {
  // mse is 0 at every grid point: the earliest stays, nothing iterates.
  for (std::size_t n : {2u, 3u, 30u}) {
    const std::vector<double> y(n, 4.5);  // the model keeps a pointer to it
    Model mod(y);
    ASSERT_EQ(mod.rc, 0);
    EXPECT_EQ(esmfit(mod.m), 0);
    EXPECT_EQ(mod.m->pest.parms[0], 0.01);
    EXPECT_EQ(mod.m->pest.mse, 0.0);
    // A perfect fit has standard error 0 and an infinite t value.
    EXPECT_EQ(mod.m->pest.stderr_[0], 0.0);
    EXPECT_EQ(missCode(mod.m->pest.tvals[0]), 'I');
    EXPECT_EQ(mod.m->pest.pvalue[0], 0.0);
  }
}

// ---------------------------------------------------------------- estimates

TEST(EsmEstimate, RecoversSimulatedWeights) {
  struct Case {
    double alpha;
    std::size_t n;
  } cases[] = {{0.2, 300}, {0.5, 300}, {0.8, 300}, {0.3, 1500}, {0.7, 1500}};
  unsigned seed = 100;
  for (const auto& c : cases) {
    const auto y = simulate(c.alpha, c.n, ++seed);
    Model mod(y);
    ASSERT_EQ(mod.rc, 0);
    const int rc = esmfit(mod.m);
    ASSERT_TRUE(rc == 0 || rc == 90) << rc;
    const double w = mod.m->pest.parms[0];
    // The weight is 1 - theta of the equivalent MA(1) model, whose estimate
    // has standard deviation sqrt((1 - theta^2) / n): allow four of them.
    const double theta = 1 - c.alpha;
    const double tol = 4 * std::sqrt((1 - theta * theta) / static_cast<double>(c.n));
    EXPECT_NEAR(w, c.alpha, tol) << "alpha " << c.alpha << " n " << c.n;
    // It is the minimiser of the criterion that it was given.
    double msemin = 0;
    const double wb = bruteMin(y, &msemin);
    EXPECT_NEAR(w, wb, 2e-3) << "alpha " << c.alpha << " n " << c.n;
    EXPECT_LE(directMse(y, w), msemin * (1 + 1e-6));
    EXPECT_EQ(rc, 0) << "a clean series converges";
  }
}

TEST(EsmEstimate, StandardErrorFromPredictionDerivatives) {
  const auto y = simulate(0.4, 200, 17);
  Model mod(y);
  ASSERT_EQ(mod.rc, 0);
  ASSERT_EQ(esmfit(mod.m), 0);
  const double w = mod.m->pest.parms[0];
  const double n = static_cast<double>(y.size());
  // Error variance: the mean square at the estimate, on n - 1 degrees of freedom.
  const double mse = directMse(y, w);
  EXPECT_NEAR(mod.m->pest.mse, mse * n / (n - 1), 1e-10 * mse);
  // Sum of squared derivatives of the one-step predictions, by central
  // differences of the predictions themselves.
  std::vector<double> p1, p2;
  const double h = 1e-6;
  directMse(y, w + h, &p1);
  directMse(y, w - h, &p2);
  double sdd = 0;
  for (std::size_t t = 0; t < y.size(); ++t) {
    const double d = (p1[t] - p2[t]) / (2 * h);
    sdd += d * d;
  }
  // The stored diagonal carries half the inverse of the cross-products.
  const double se = std::sqrt(0.5 / sdd * mod.m->pest.mse);
  EXPECT_NEAR(mod.m->pest.stderr_[0], se, 1e-4 * se);
  EXPECT_NEAR(mod.m->pest.tvals[0], w / se, 1e-4 * w / se);
  // Two-sided p value of t with n - 1 df; for this many df it is close to
  // the normal tail 2 (1 - Phi(|t|)) = erfc(|t| / sqrt 2).
  const double t = w / se;
  EXPECT_NEAR(mod.m->pest.pvalue[0], std::erfc(std::fabs(t) / std::sqrt(2.0)), 5e-3);
  EXPECT_EQ(mod.m->pest.df[0], static_cast<long>(y.size()) - 1);
}

TEST(EsmEstimate, UpperBoundActive) {
  // A random walk observed without noise: the best weight is 1, beyond the
  // upper bound. The estimate sits on the bound 0.999 and the estimation
  // ends there with code 0 (the second point in a row on the bound).
  std::mt19937_64 gen(5);
  std::normal_distribution<double> nd;
  std::vector<double> y(150);
  double v = 50;
  for (auto& e : y) e = (v += nd(gen));
  double msemin = 0;
  ASSERT_GT(bruteMin(y, &msemin), 0.998) << "the oracle must put the optimum on the bound";
  Model mod(y);
  ASSERT_EQ(mod.rc, 0);
  EXPECT_EQ(esmfit(mod.m), 0);
  EXPECT_EQ(mod.m->pest.parms[0], 0.999);
}

TEST(EsmEstimate, LowerBoundActive) {
  // Values alternating around 10, ending on 10 so that the start level is
  // the mean: every bit of smoothing weight makes the next prediction worse,
  // so the optimum lies below the lower bound 0.001.
  std::vector<double> y(101);
  for (std::size_t t = 0; t < y.size(); ++t) y[t] = (t % 2) ? 12.0 : 8.0;
  y.back() = 10.0;
  double msemin = 0;
  ASSERT_LT(bruteMin(y, &msemin), 0.0015);
  Model mod(y);
  ASSERT_EQ(mod.rc, 0);
  EXPECT_EQ(esmfit(mod.m), 0);
  EXPECT_EQ(mod.m->pest.parms[0], 0.001);
}

TEST(EsmEstimate, HeldAndFixedWeights) {
  const auto y = simulate(0.5, 100, 23);
  {
    Model mod(y);
    ASSERT_EQ(mod.rc, 0);
    mod.m->wbnds.wlevflg = 1;  // held at its lower bound
    EXPECT_EQ(esmfit(mod.m), 0);
    EXPECT_EQ(mod.m->pest.parms[0], 0.001);
  }
  for (double fixed : {0.05, 0.3, 0.95}) {
    Model mod(y);
    ASSERT_EQ(mod.rc, 0);
    mod.m->wbnds.wlevel[0] = mod.m->wbnds.wlevel[1] = fixed;  // lower = upper
    EXPECT_EQ(esmfit(mod.m), 0) << fixed;
    EXPECT_EQ(mod.m->pest.parms[0], fixed);
    EXPECT_NEAR(mod.m->pest.mse, directMse(y, fixed) * 100.0 / 99.0, 1e-10 * directMse(y, fixed));
  }
  {
    // Narrow bounds that cut off the optimum (about 0.5): the nearer bound wins.
    Model mod(y);
    ASSERT_EQ(mod.rc, 0);
    mod.m->wbnds.wlevel[0] = 0.1;
    mod.m->wbnds.wlevel[1] = 0.2;
    mod.m->wbnds.wlevel[2] = 0.1 * kEsmTolFactor;
    EXPECT_EQ(esmfit(mod.m), 0);
    EXPECT_EQ(mod.m->pest.parms[0], 0.2);
  }
}

TEST(EsmEstimate, UnboundedIterationAgreesWithBounded) {
  const auto y = simulate(0.35, 250, 31);
  Model a(y), b(y);
  ASSERT_EQ(a.rc, 0);
  ASSERT_EQ(b.rc, 0);
  b.m->wbnds.bounds = 0;
  EXPECT_EQ(esmfit(a.m), 0);
  EXPECT_EQ(esmfit(b.m), 0);
  EXPECT_NEAR(a.m->pest.parms[0], b.m->pest.parms[0], 1e-3);
}

TEST(EsmEstimate, NoUsableGridPointGivesMinus8) {
  const auto y = simulate(0.5, 30, 41);
  Model mod(y);
  ASSERT_EQ(mod.rc, 0);
  // A start value beyond the state limit makes every pass diverge.
  mod.m->svi.level = 1e200;
  EXPECT_EQ(esmfit(mod.m), -8);
  EXPECT_TRUE(wzmis(mod.m->pest.parms[0]));
  EXPECT_TRUE(wzmis(mod.m->pest.stderr_[0]));
  EXPECT_TRUE(wzmis(mod.m->pest.mse));
}

TEST(EsmEstimate, FlaggedObservationsStillGiveUsableWeights) {
  // Across a flagged value the carried derivative is that of the prediction
  // fed in, not of the criterion, so the offset need not fall: 90 is
  // allowed, but the weights must be inside the bounds and near the optimum
  // of the flagged criterion.
  auto y = simulate(0.4, 200, 53);
  for (std::size_t t = 5; t < y.size(); t += 9) y[t] = kMissing;
  Model mod(y);
  ASSERT_EQ(mod.rc, 0);
  EXPECT_EQ(mod.m->ts.nmiss, 22);
  const int rc = esmfit(mod.m);
  ASSERT_TRUE(rc == 0 || rc == 90) << rc;
  const double w = mod.m->pest.parms[0];
  EXPECT_GE(w, 0.001);
  EXPECT_LE(w, 0.999);
  // Criterion of the flagged series at the estimate and around it.
  auto crit = [&](double v) {
    double L = mod.m->svi.level, mse = 0;
    zes1smo(y.data(), mod.m->ts.misflg.data(), mod.m->ts.descstats.norm,
            static_cast<long>(y.size()), v, &L, &mse);
    return mse;
  };
  EXPECT_LE(crit(w), crit(w + 0.05) * (1 + 1e-9));
  EXPECT_LE(crit(w), crit(w - 0.05) * (1 + 1e-9));
}

TEST(EsmEstimate, EveryFourthValueFlaggedStopsWith90) {
  // Every fourth value flagged: the derivatives carried across them are not
  // those of the criterion, the offset stays above 0.0001 and the step size
  // runs out. The result is 90 with the weights of the last accepted point,
  // which is never worse than where the grid started.
  for (unsigned seed : {1u, 4u}) {
    std::mt19937_64 gen(seed);
    std::normal_distribution<double> nd;
    std::vector<double> y(60);
    double l = 100;
    for (auto& v : y) {
      const double e = nd(gen);
      v = l + e;
      l += 0.4 * e;
    }
    for (std::size_t t = 3; t < y.size(); t += 4) y[t] = kMissing;
    Model mod(y);
    ASSERT_EQ(mod.rc, 0);
    std::vector<double> gridrow;
    int handle = 0;
    mod.m->outest.xoparm.fileid = &handle;
    mod.m->outest.strptr = &gridrow;
    const int rc = esmfit(mod.m);
    if (seed == 1) {
      EXPECT_EQ(rc, 90);
    }
    ASSERT_TRUE(rc == 0 || rc == 90);
    ASSERT_EQ(gridrow.size(), 2u);
    const double n = 45;  // usable values
    EXPECT_LE(mod.m->pest.mse * (n - 1) / n, gridrow[1] * (1 + 1e-12)) << seed;
    EXPECT_FALSE(wzmis(mod.m->pest.stderr_[0]));
  }
}

TEST(EsmOffset, Table) {
  struct Case {
    double sse, res, xscale, r;
  } cases[] = {
      {4, 1, 0, std::sqrt(0.75)},  // a quarter of the errors unexplained
      {4, 4, 0, 0},                // orthogonal: a minimum
      {4, 0, 0, 1},
      {4, -4, 0, 1},               // v = 2 is limited to 1
      {0, 1, 0, 0},                // no squared error at all
      {1e-13, 0, 1, 0},            // below xscale * 1e-12
  };
  for (const auto& c : cases) EXPECT_NEAR(esmoffset(c.sse, c.res, c.xscale), c.r, 1e-15);
}

TEST(Zscp, AddsOuterProductsAndSkipsMissing) {
  double a[6] = {};
  const double r1[3] = {1, 2, 3};
  const double r2[3] = {0, -1, 4};
  const double r3[3] = {1, kMissing, 1};
  zscp(r1, 3, 1.0, a);
  zscp(r2, 3, 2.0, a);
  zscp(r3, 3, 1.0, a);  // a missing entry: nothing added
  zscp(r1, 3, 0.0, a);  // weight 0: nothing added
  // Packed lower triangle: (0,0) (1,0) (1,1) (2,0) (2,1) (2,2).
  const double expect[6] = {1, 2, 4 + 2, 3, 6 - 8, 9 + 32};
  for (int i = 0; i < 6; ++i) EXPECT_EQ(a[i], expect[i]) << i;
}

}  // namespace
}  // namespace qvt
