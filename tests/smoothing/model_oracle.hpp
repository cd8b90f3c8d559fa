// Independent oracles for the smoothing models: the recursions written here
// from their published forms (Brown 1959 simple smoothing, error-correction
// form of Holt 1957 and Gardner 1985, Brown's 1963 two smoothed series,
// Winters 1960), not by calling the kernels; simulators of each model;
// ordinary least squares solved by Gaussian elimination; and a small owner
// of a driver record.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <numeric>
#include <random>
#include <vector>

#include "../common/shared.hpp"
#include "calendar/interval.hpp"
#include "run/missing.hpp"
#include "smoothing/esmdivide.hpp"
#include "smoothing/esmest.hpp"
#include "smoothing/esmfor.hpp"
#include "smoothing/esmkset.hpp"
#include "smoothing/esmtypes.hpp"
#include "smoothing/zes1.hpp"
#include "smoothing/zes2.hpp"
#include "smoothing/zes3.hpp"
#include "smoothing/zesd.hpp"
#include "smoothing/zess.hpp"
#include "smoothing/zwin.hpp"
#include "stats/numeric.hpp"

namespace qvt {

using ::testing::DoubleEq;
using ::testing::ElementsAre;
using ::testing::Pointwise;

constexpr double kZ975 = 1.959963984540054;  // standard normal 0.975 quantile (published tables)

// Owns a record made by esmint and a copy of its series, which the record
// points to.
struct Model {
  std::vector<double> y;
  WINMODEL* m = nullptr;
  int rc = 0;
  Model(const double* x, long n, int method, int ns = 0, long nbackcast = 0,
        const INTERVAL* intv = nullptr, double stdate = 0.0)
      : y(x, x + n) {
    const INTERVAL none{};
    rc = esmint(y.data(), n, intv ? intv : &none, stdate, ns, 0, method, nbackcast, &m);
  }
  explicit Model(const std::vector<double>& v, int method = kEsmSimple, int ns = 0)
      : Model(v.data(), static_cast<long>(v.size()), method, ns) {}
  ~Model() { esmtrm(m); }
  Model(const Model&) = delete;
  Model& operator=(const Model&) = delete;
};

namespace oracle {

struct State {
  double L = 0;
  double T = 0;
  std::vector<double> S;
};

// One step of the model on x (season sc); returns the one-step prediction.
// A flagged observation advances the state with no new information.
inline double step(int method, const double* w, State& s, double x, int sc, bool flagged) {
  const double om = w[0];
  switch (method) {
    case kEsmSimple: {
      const double pred = s.L;
      if (!flagged) s.L += om * (x - pred);
      return pred;
    }
    case kEsmLinear:
    case kEsmDampTrend: {
      const double g = w[1];
      const double phi = method == kEsmLinear ? 1.0 : w[2];
      const double pred = s.L + phi * s.T;
      const double a = flagged ? 0.0 : x - pred;
      s.L = s.L + phi * s.T + om * a;
      s.T = phi * s.T + om * g * a;
      return pred;
    }
    case kEsmDouble: {
      // Brown: S1 = a x + (1-a) S1, S2 = a S1 + (1-a) S2; forecast
      // 2 S1 - S2 + a/(1-a) (S1 - S2) one step ahead. The pair (L, T) is
      // (S1, a/(1-a) (S1 - S2)).
      const double s1 = s.L;
      const double s2 = s.L - s.T * (1 - om) / om;
      const double pred = 2 * s1 - s2 + om / (1 - om) * (s1 - s2);
      const double xx = flagged ? pred : x;
      const double n1 = om * xx + (1 - om) * s1;
      const double n2 = om * n1 + (1 - om) * s2;
      s.L = n1;
      s.T = om / (1 - om) * (n1 - n2);
      return pred;
    }
    case kEsmSeasonal:
    case kEsmAddWinters: {
      const bool trend = method == kEsmAddWinters;
      const double dl = trend ? w[2] : w[1];
      const double T = trend ? s.T : 0.0;
      double& f = s.S[static_cast<std::size_t>(sc)];
      const double pred = s.L + T + f;
      const double a = flagged ? 0.0 : x - pred;
      s.L = s.L + T + om * a;
      if (trend) s.T += om * w[1] * a;
      f += dl * (1 - om) * a;
      return pred;
    }
    case kEsmMultSeasonal:
    case kEsmWinters: {
      const bool trend = method == kEsmWinters;
      const double dl = trend ? w[2] : w[1];
      const double T = trend ? s.T : 0.0;
      double& f = s.S[static_cast<std::size_t>(sc)];
      const double pred = (s.L + T) * f;
      if (flagged) {
        s.L += T;
        return pred;
      }
      const double L1 = om * x / f + (1 - om) * (s.L + T);
      if (trend) s.T = w[1] * (L1 - s.L) + (1 - w[1]) * s.T;
      f = dl * x / L1 + (1 - dl) * f;
      s.L = L1;
      return pred;
    }
    default: return 0;
  }
}

// The turn at the end of the backward half: one more step with no data
// (to the period before the first observation), and the trend reversed.
inline void turn(int method, const double* w, State& s) {
  const double phi = method == kEsmDampTrend ? w[2] : 1.0;
  s.L += phi * s.T;
  s.T = -phi * s.T;
}

struct Pass {
  std::vector<double> pred;  // forward one-step predictions
  double ss = 0;
  long nobs = 0;
  State final;
};

// Backward over the series from the start values, the turn, then forward.
inline Pass pass(int method, const double* w, const std::vector<double>& x,
                 const std::vector<char>& flag, const std::vector<int>& sc, State s) {
  Pass p;
  const long n = static_cast<long>(x.size());
  auto code = [&](long t) { return sc.empty() ? 0 : sc[static_cast<std::size_t>(t)]; };
  for (long t = n - 1; t >= 0; --t) step(method, w, s, x[t], code(t), flag[t] != 0);
  turn(method, w, s);
  for (long t = 0; t < n; ++t) {
    const bool f = flag[t] != 0;
    const double pr = step(method, w, s, x[t], code(t), f);
    p.pred.push_back(pr);
    if (!f) {
      p.ss += (x[t] - pr) * (x[t] - pr);
      ++p.nobs;
    }
  }
  p.final = s;
  return p;
}

// Mean squared one-step error of simple smoothing, backcast from the last
// value (no flagged values); the predictions go to pred when asked.
inline double simpleMse(const std::vector<double>& x, double w, std::vector<double>* pred = nullptr) {
  const Pass p = pass(kEsmSimple, &w, x, std::vector<char>(x.size(), 0), {}, State{x.back(), 0, {}});
  if (pred) *pred = p.pred;
  return p.ss / static_cast<double>(p.nobs);
}

// Season codes 1..s repeating, as codes 0..s-1 starting at first.
inline std::vector<int> codes(std::size_t n, int ns, int first = 0) {
  std::vector<int> c(n);
  for (std::size_t t = 0; t < n; ++t) c[t] = static_cast<int>((static_cast<int>(t) + first) % ns);
  return c;
}

// Simulates the innovations form of a model: each observation is the
// one-step prediction plus noise, and the state takes the recursion.
inline std::vector<double> simulate(int method, const double* w, std::size_t n, unsigned seed,
                                    State s, int ns, double sigma) {
  std::mt19937_64 gen(seed);
  std::normal_distribution<double> nd(0.0, sigma);
  std::vector<double> y;
  for (std::size_t t = 0; t < n; ++t) {
    const int sc = ns > 0 ? static_cast<int>(t % static_cast<std::size_t>(ns)) : 0;
    State probe = s;
    const double pred = step(method, w, probe, 0.0, sc, true);
    const double e = nd(gen);
    // Multiplicative forms take relative noise so that values stay positive.
    const double v = (method == kEsmWinters || method == kEsmMultSeasonal) ? pred * (1 + e) : pred + e;
    step(method, w, s, v, sc, false);
    y.push_back(v);
  }
  return y;
}

// Simple smoothing is optimal for x_t = l_(t-1) + e_t, l_t = l_(t-1) + alpha e_t.
inline std::vector<double> simple(double alpha, std::size_t n, unsigned seed, double level = 100) {
  return simulate(kEsmSimple, &alpha, n, seed, State{level, 0, {}}, 0, 1.0);
}

// Least squares by the normal equations, solved by Gauss-Jordan elimination.
// X is row-major with p columns.
inline std::vector<double> ols(const std::vector<std::vector<double>>& X, const std::vector<double>& y) {
  const std::size_t p = X.front().size();
  std::vector<testing::LRow> a(p, testing::LRow(p + 1, 0.0L));
  for (std::size_t r = 0; r < X.size(); ++r)
    for (std::size_t i = 0; i < p; ++i) {
      for (std::size_t j = 0; j < p; ++j) a[i][j] += X[r][i] * X[r][j];
      a[i][p] += X[r][i] * y[r];
    }
  std::vector<double> b;
  for (const auto& row : testing::gaussJordan(a)) b.push_back(static_cast<double>(row[0]));
  return b;
}

}  // namespace oracle
}  // namespace qvt
