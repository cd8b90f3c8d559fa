// The estimator with three weights, on a test-only "model" whose one-step
// prediction is linear in its weights: p_t = w0 u_t + w1 v_t + w2 z_t. The
// Gauss-Newton iteration is then exact, and the answer is ordinary least
// squares, solved here from the normal equations by Cramer's rule; with a
// weight pushed outside its bounds, the answer is least squares over the
// other two with that weight on the bound.

#include <array>
#include <numeric>
#include "model_oracle.hpp"

namespace qvt {
namespace {

constexpr int kN = 120;

// The regressors; the season code of a value is its index.
double reg(int j, int t) {
  const double x = static_cast<double>(t);
  switch (j) {
    case 0: return std::sin(0.3 * x);
    case 1: return std::cos(0.11 * x) + 0.5;
    default: return 1.0 + 0.02 * x;
  }
}

int linStep(double x, double, const double* w, int t, SMOOTHVALS& s, WINT_DER&, double* dervec,
            double* e) {
  const double p = w[0] * reg(0, t) + w[1] * reg(1, t) + w[2] * reg(2, t);
  for (int j = 0; j < 3; ++j) dervec[j] = reg(j, t);
  *e = p - x;
  s.xhat = p;
  return 0;
}

double linPredict(const double* w, const SMOOTHVALS&, int t) {
  return w[0] * reg(0, t) + w[1] * reg(1, t) + w[2] * reg(2, t);
}

int linSmo(const FITCON& fc, const double* w, int, SMOOTHVALS&, double* mse) {
  double ss = 0;
  for (long t = 0; t < fc.n; ++t) {
    const double e = linPredict(w, SMOOTHVALS{}, static_cast<int>(t)) - fc.x[t];
    ss += e * e;
  }
  *mse = ss / static_cast<double>(fc.n);
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

ESMKSET linKernels() {
  ESMKSET k;
  k.method = 3;
  k.k = 3;
  k.coord = {EsmWeight::Level, EsmWeight::Trend, EsmWeight::Damp};
  k.grid = kGrid3.data();
  k.smo = linSmo;
  k.predict = linPredict;
  k.step = linStep;
  k.std = linStd;
  k.dfparms = 3;
  return k;
}

struct Model {
  WINMODEL* m = nullptr;
  std::vector<double> y;
  explicit Model(const std::array<double, 3>& beta, unsigned seed) {
    std::mt19937_64 gen(seed);
    std::normal_distribution<double> nd(0, 0.05);
    for (int t = 0; t < kN; ++t)
      y.push_back(beta[0] * reg(0, t) + beta[1] * reg(1, t) + beta[2] * reg(2, t) + nd(gen));
    const INTERVAL none{};
    esmint(y.data(), kN, &none, 0.0, 0, 0, kEsmSimple, 0, &m);
    for (auto* v : {&m->pest.parms, &m->pest.stderr_, &m->pest.tvals, &m->pest.pvalue})
      v->assign(3, kMissing);
    m->ts.scodes.resize(kN);
    std::iota(m->ts.scodes.begin(), m->ts.scodes.end(), 0);
    // The damping coordinate's home range is [0.9, 0.999]; give it the
    // others' range so that every coordinate has bounds [0.001, 0.999].
    m->wbnds.wdamp[0] = 0.001;
  }
  ~Model() { esmtrm(m); }
};

double det3(const double a[3][3]) {
  return a[0][0] * (a[1][1] * a[2][2] - a[1][2] * a[2][1]) -
         a[0][1] * (a[1][0] * a[2][2] - a[1][2] * a[2][0]) +
         a[0][2] * (a[1][0] * a[2][1] - a[1][1] * a[2][0]);
}

// Least squares of y on the regressors in `use` (the others fixed at `fixed`).
std::array<double, 3> ols(const std::vector<double>& y, const std::array<bool, 3>& use,
                          const std::array<double, 3>& fixed) {
  std::vector<int> cols;
  for (int j = 0; j < 3; ++j)
    if (use[j]) cols.push_back(j);
  const int m = static_cast<int>(cols.size());
  double a[3][3] = {}, b[3] = {};
  for (int t = 0; t < kN; ++t) {
    double r = y[t];
    for (int j = 0; j < 3; ++j)
      if (!use[j]) r -= fixed[j] * reg(j, t);
    for (int i = 0; i < m; ++i) {
      b[i] += reg(cols[i], t) * r;
      for (int k = 0; k < m; ++k) a[i][k] += reg(cols[i], t) * reg(cols[k], t);
    }
  }
  for (int i = m; i < 3; ++i) a[i][i] = 1;  // pad to 3 by 3
  const double d = det3(a);
  std::array<double, 3> out = fixed;
  for (int i = 0; i < m; ++i) {
    double c[3][3];
    for (int r = 0; r < 3; ++r)
      for (int k = 0; k < 3; ++k) c[r][k] = (k == i) ? (r < m ? b[r] : 0.0) : a[r][k];
    out[cols[i]] = det3(c) / d;
  }
  return out;
}

// Mean squared error of weights w, and its derivative in coordinate j.
double mseAt(const std::vector<double>& y, const std::array<double, 3>& w) {
  double ss = 0;
  for (int t = 0; t < kN; ++t) {
    const double e = w[0] * reg(0, t) + w[1] * reg(1, t) + w[2] * reg(2, t) - y[t];
    ss += e * e;
  }
  return ss / kN;
}

double slope(const std::vector<double>& y, std::array<double, 3> w, int j) {
  const double h = 1e-6;
  w[j] += h;
  const double up = mseAt(y, w);
  w[j] -= 2 * h;
  return (up - mseAt(y, w)) / (2 * h);
}

TEST(EsmThreeWeights, LeastSquaresWithActiveBounds) {
  constexpr double lo = 0.001, hi = 0.999;
  struct Case {
    const char* name;
    std::array<double, 3> beta;
    std::array<int, 3> bound;  // -1 on the lower bound, +1 on the upper, 0 free
  } cases[] = {
      {"interior", {0.3, 0.6, 0.45}, {0, 0, 0}},
      {"third weight on its upper bound", {0.3, 0.3, 1.1}, {0, 0, 1}},
      {"second weight on its upper bound", {0.3, 1.3, 0.4}, {0, 1, 0}},
      {"second weight on its lower bound", {0.3, -0.4, 0.5}, {0, -1, 0}},
      {"two weights on bounds", {1.6, -0.4, 0.5}, {1, -1, 0}},
  };
  unsigned seed = 0;
  for (const auto& c : cases) {
    Model mod(c.beta, ++seed);
    ASSERT_NE(mod.m, nullptr);
    std::array<bool, 3> use{};
    std::array<double, 3> fixed{};
    for (int j = 0; j < 3; ++j) {
      use[j] = c.bound[j] == 0;
      fixed[j] = c.bound[j] < 0 ? lo : hi;
    }
    const auto expect = ols(mod.y, use, fixed);
    // The oracle's own optimality (Karush-Kuhn-Tucker): free weights inside
    // their bounds, bound weights pushed outwards by the slope.
    for (int j = 0; j < 3; ++j) {
      if (c.bound[j] == 0) {
        ASSERT_GT(expect[j], lo) << c.name;
        ASSERT_LT(expect[j], hi) << c.name;
      } else {
        ASSERT_LT(c.bound[j] * slope(mod.y, expect, j), 0) << c.name << " " << j;
      }
    }
    const int rc = esmestimate(mod.m, linKernels());
    EXPECT_TRUE(rc == 0 || rc == 90) << c.name << " " << rc;
    const std::array<double, 3> got = {mod.m->pest.parms[0], mod.m->pest.parms[1],
                                       mod.m->pest.parms[2]};
    for (int j = 0; j < 3; ++j) EXPECT_NEAR(got[j], expect[j], 1e-5) << c.name << " " << j;
    EXPECT_LE(mseAt(mod.y, got), mseAt(mod.y, expect) * (1 + 1e-9)) << c.name;
    if (c.bound == std::array<int, 3>{0, 0, 0}) {
      EXPECT_EQ(rc, 0) << "a linear model converges at once";
      EXPECT_NEAR(mod.m->pest.mse, mseAt(mod.y, expect) * kN / (kN - 3), 1e-12);
    }
  }
}

TEST(EsmThreeWeights, ExtraRidgeStillReachesLeastSquares) {
  // Without bounds the ridge is the only brake; the iteration must still
  // end at the least-squares point.
  Model mod({0.8, -2.0, 3.0}, 9);
  ASSERT_NE(mod.m, nullptr);
  mod.m->wbnds.bounds = 0;
  const auto expect = ols(mod.y, {true, true, true}, {0, 0, 0});
  const int rc = esmestimate(mod.m, linKernels());
  EXPECT_TRUE(rc == 0 || rc == 90) << rc;
  for (int j = 0; j < 3; ++j) EXPECT_NEAR(mod.m->pest.parms[j], expect[j], 1e-5) << j;
}

}  // namespace
}  // namespace qvt
