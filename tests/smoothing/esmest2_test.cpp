// The estimator with two weights. A test-only kernel set of Holt's linear
// method (Holt 1957), written here from the textbook equations with their
// derivatives, drives the parts of the estimator that one weight never
// reaches: the 3 by 3 cross-product sweep, the ridge, the scalar step that
// stops at the first bound, and the one-coordinate direction on a bound.
#include "model_oracle.hpp"

namespace qvt {
namespace {

// One Holt step with a = level weight, b = trend weight:
//   p = L + T, e = p - x, L' = p + a (x - p), T' = T + b (L' - L - T).
int holtStep(double x, double xscale, const double* w, int, SMOOTHVALS& s, WINT_DER& d,
             double* dervec, double* e) {
  const double a = w[0], b = w[1];
  const double L = s.level, T = s.trend;
  if (std::fabs(L) > kEsmStateLimit || std::fabs(T) > kEsmStateLimit) return -9;
  const double p = L + T;
  if (p > xscale * kEsmScaleFactor) return -9;
  *e = p - x;
  const double L1 = p + a * (x - p);
  const double T1 = T + b * (L1 - L - T);
  // Derivatives: dp = dL + dT; dL' = (1 - a) dp + [x - p] for a;
  // dT' = (1 - b) dT + b (dL' - dL) + [L' - L - T] for b.
  for (int i = 0; i < 2; ++i) {
    const double dp = d.level[i] + d.trend[i];
    dervec[i] = dp;
    const double dL1 = (1 - a) * dp + (i == 0 ? x - p : 0.0);
    const double dT1 = (1 - b) * d.trend[i] + b * (dL1 - d.level[i]) + (i == 1 ? L1 - L - T : 0.0);
    d.level[i] = dL1;
    d.trend[i] = dT1;
  }
  s.level = L1;
  s.trend = T1;
  s.xhat = p;
  return 0;
}

double holtPredict(const double*, const SMOOTHVALS& s, int) { return s.level + s.trend; }

// The turn: one more step to the period before the first value, then the
// trend points forward.
void holtTurn(const double*, int, SMOOTHVALS& s, WINT_DER& d) {
  s.level += s.trend;
  s.trend = -s.trend;
  for (int i = 0; i < 2; ++i) {
    d.level[i] += d.trend[i];
    d.trend[i] = -d.trend[i];
  }
}

// Direct criterion: backcast from (last value, trend 0), turn, forward.
double holtMse(const FITCON& fc, const double* w, SMOOTHVALS s) {
  WINT_DER d;
  double dv[2], e = 0;
  for (long t = fc.n - 1; t >= 0; --t)
    if (holtStep(fc.x[t], fc.kscale, w, 0, s, d, dv, &e) < 0) return kMissing;
  holtTurn(w, 0, s, d);
  double ss = 0;
  for (long t = 0; t < fc.n; ++t) {
    if (holtStep(fc.x[t], fc.kscale, w, 0, s, d, dv, &e) < 0) return kMissing;
    ss += e * e;
  }
  return ss / static_cast<double>(fc.n);
}

int holtSmo(const FITCON& fc, const double* w, int, SMOOTHVALS& s, double* mse) {
  *mse = holtMse(fc, w, s);
  return wzmis(*mse) ? -9 : 0;
}

void holtStd(const double* xpx, double mse, long nobs, int, const double* parms, double* se,
             double* t) {
  for (int i = 0; i < 2; ++i) {
    se[i] = nobs >= 3 ? std::sqrt(std::fabs(xpx[i]) * mse) : kMissing;
    t[i] = nobs >= 3 && se[i] > 0 ? parms[i] / se[i] : kMissing;
  }
}

const std::array<std::array<double, 3>, 20> kHoltGrid = [] {
  const double lv[20] = {0.1, 0.1, 0.2, 0.1, 0.2, 0.3, 0.1, 0.2, 0.3, 0.4,
                         0.1, 0.2, 0.3, 0.4, 0.5, 0.1, 0.4, 0.6, 0.9, 0.9};
  const double tr[20] = {0.01, 0.05, 0.01, 0.1, 0.05, 0.01, 0.15, 0.1, 0.05, 0.01,
                         0.25, 0.15, 0.1, 0.05, 0.01, 0.9, 0.6, 0.4, 0.1, 0.9};
  std::array<std::array<double, 3>, 20> g{};
  for (int i = 0; i < 20; ++i) g[i] = {lv[i], tr[i], 0.0};
  return g;
}();

ESMKSET holtKernels() {
  ESMKSET k;
  k.method = 2;
  k.k = 2;
  k.coord = {EsmWeight::Level, EsmWeight::Trend, EsmWeight::Level};
  k.grid = kHoltGrid.data();
  k.smo = holtSmo;
  k.predict = holtPredict;
  k.step = holtStep;
  k.turn = holtTurn;
  k.std = holtStd;
  k.dfparms = 2;
  return k;
}

// A model record set up by the driver for SIMPLE, then given a trend start.
struct Model {
  WINMODEL* m = nullptr;
  explicit Model(const std::vector<double>& y) {
    const INTERVAL none{};
    rc = esmint(y.data(), static_cast<long>(y.size()), &none, 0.0, 0, 0, kEsmSimple, 0, &m);
    if (m) {
      m->svi.trend = 0.0;
      for (auto* v : {&m->pest.parms, &m->pest.stderr_, &m->pest.tvals, &m->pest.pvalue})
        v->assign(2, kMissing);
    }
  }
  ~Model() { esmtrm(m); }
  int rc = 0;
};

std::vector<double> simulateHolt(double a, double b, std::size_t n, unsigned seed) {
  std::mt19937_64 gen(seed);
  std::normal_distribution<double> nd;
  std::vector<double> x(n);
  double L = 50, T = 0.5;
  for (auto& v : x) {
    const double e = nd(gen);
    v = L + T + e;
    const double L1 = L + T + a * e;
    T += a * b * e;  // error-correction form of Holt's trend update
    L = L1;
  }
  return x;
}

// Brute force over a 0.01 grid of both weights, then a 0.0005 grid around
// the best point.
double bruteMin2(const FITCON& fc, const SMOOTHVALS& start, double lo0, double hi0, double lo1,
                 double hi1, double* w0, double* w1) {
  double best = 1e300;
  auto scan = [&](double a0, double a1, double b0, double b1, double h) {
    for (double a = a0; a <= a1 + 1e-12; a += h)
      for (double b = b0; b <= b1 + 1e-12; b += h) {
        const double w[2] = {a, b};
        const double m = holtMse(fc, w, start);
        if (!wzmis(m) && m < best) {
          best = m;
          *w0 = a;
          *w1 = b;
        }
      }
  };
  scan(lo0, hi0, lo1, hi1, 0.01);
  scan(std::max(lo0, *w0 - 0.01), std::min(hi0, *w0 + 0.01), std::max(lo1, *w1 - 0.01),
       std::min(hi1, *w1 + 0.01), 0.0005);
  return best;
}

TEST(EsmTwoWeights, GradientMatchesCentralDifferences) {
  const auto y = simulateHolt(0.5, 0.2, 80, 3);
  Model mod(y);
  ASSERT_EQ(mod.rc, 0);
  const ESMKSET ks = holtKernels();
  for (const auto& wp : {std::array<double, 2>{0.3, 0.1}, std::array<double, 2>{0.7, 0.4}}) {
    FITCON fc;
    esmfitcon(mod.m, fc);
    fc.lambda = 0;
    POINT p;
    p.wlevel = wp[0];
    p.wtrend = wp[1];
    p.wbnds.dim = p.wbnds.nextdim = 2;
    ASSERT_EQ(esmnextstep(mod.m, ks, fc, p), 0);
    const double h = 1e-6;
    for (int i = 0; i < 2; ++i) {
      double wa[2] = {wp[0], wp[1]}, wb[2] = {wp[0], wp[1]};
      wa[i] += h;
      wb[i] -= h;
      const double fd = (holtMse(fc, wa, mod.m->svi) - holtMse(fc, wb, mod.m->svi)) / (2 * h);
      EXPECT_NEAR(p.grad[i], fd, 1e-5 * (std::fabs(fd) + 1e-3 * p.mse)) << i;
    }
    EXPECT_EQ(p.rankxpx, 2);
  }
}

TEST(EsmTwoWeights, ReachesTheBruteForceMinimum) {
  struct Case {
    double a, b;
    std::size_t n;
    unsigned seed;
  } cases[] = {{0.5, 0.2, 200, 5}, {0.3, 0.1, 300, 6}, {0.8, 0.05, 200, 7}};
  const ESMKSET ks = holtKernels();
  for (const auto& c : cases) {
    const auto y = simulateHolt(c.a, c.b, c.n, c.seed);
    Model mod(y);
    ASSERT_EQ(mod.rc, 0);
    const int rc = esmestimate(mod.m, ks);
    ASSERT_TRUE(rc == 0 || rc == 90) << rc;
    FITCON fc;
    esmfitcon(mod.m, fc);
    double b0 = 0, b1 = 0;
    const double best = bruteMin2(fc, mod.m->svi, 0.001, 0.999, 0.001, 0.999, &b0, &b1);
    const double w[2] = {mod.m->pest.parms[0], mod.m->pest.parms[1]};
    const double got = holtMse(fc, w, mod.m->svi);
    EXPECT_LE(got, best * (1 + 1e-4)) << c.a << "," << c.b;
    EXPECT_NEAR(w[0], b0, 0.02) << c.a << "," << c.b;
    EXPECT_NEAR(w[1], b1, 0.02) << c.a << "," << c.b;
    EXPECT_FALSE(wzmis(mod.m->pest.stderr_[0]));
  }
}

TEST(EsmTwoWeights, OneWeightOnItsBound) {
  // A trend weight bounded to [0.001, 0.02] while the data want more: the
  // estimate sits on 0.02 and the level weight is the best one given that.
  const auto y = simulateHolt(0.4, 0.5, 200, 9);
  Model mod(y);
  ASSERT_EQ(mod.rc, 0);
  mod.m->wbnds.wtrend[1] = 0.02;
  mod.m->wbnds.wtrend[2] = 0.019 * kEsmTolFactor;
  const ESMKSET ks = holtKernels();
  const int rc = esmestimate(mod.m, ks);
  ASSERT_TRUE(rc == 0 || rc == 90) << rc;
  FITCON fc;
  esmfitcon(mod.m, fc);
  double b0 = 0, b1 = 0;
  const double best = bruteMin2(fc, mod.m->svi, 0.001, 0.999, 0.001, 0.02, &b0, &b1);
  ASSERT_GT(b1, 0.0195) << "the oracle must put the trend weight on its bound";
  EXPECT_EQ(mod.m->pest.parms[1], 0.02);
  EXPECT_NEAR(mod.m->pest.parms[0], b0, 0.02);
  const double w[2] = {mod.m->pest.parms[0], mod.m->pest.parms[1]};
  EXPECT_LE(holtMse(fc, w, mod.m->svi), best * (1 + 1e-4));
}

TEST(EsmTwoWeights, HeldTrendWeight) {
  const auto y = simulateHolt(0.4, 0.3, 150, 10);
  Model mod(y);
  ASSERT_EQ(mod.rc, 0);
  mod.m->wbnds.wtreflg = 1;
  const ESMKSET ks = holtKernels();
  const int rc = esmestimate(mod.m, ks);
  ASSERT_TRUE(rc == 0 || rc == 90) << rc;
  EXPECT_EQ(mod.m->pest.parms[1], 0.001);
  FITCON fc;
  esmfitcon(mod.m, fc);
  double b0 = 0, b1 = 0;
  bruteMin2(fc, mod.m->svi, 0.001, 0.999, 0.001, 0.001, &b0, &b1);
  EXPECT_NEAR(mod.m->pest.parms[0], b0, 0.02);
}

}  // namespace
}  // namespace qvt
