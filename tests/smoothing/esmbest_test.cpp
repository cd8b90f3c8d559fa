// Automatic selection against a slow direct loop: each candidate fitted alone
// through the driver, its predictions brought back from the log scale by the
// closed-form lognormal, and scored from the definitions of RMSE, SSE/(n - k)
// and MAPE; then each failure at its cause.

#include "model_oracle.hpp"
#include "smoothing/esmbest.hpp"

namespace qvt {
namespace {

constexpr long kN = 36;

struct Case {
  int kind;  // 0 noisy level, 1 trend, 2 period-4 season, 3 a zero at 5, 4 last 6 missing
  long hold;
  int select;  // 3 RMSE, 4 SSE/(n - k), 43 MAPE
  int back;    // -1 no transformation, else a log fit with this trnsopt
  std::vector<int> methods;
  int rc;  // 0: the index of the direct loop
};

std::vector<double> series(int kind) {
  std::mt19937 g(7u + static_cast<unsigned>(kind));
  std::normal_distribution<double> e(0.0, 2.0);
  std::vector<double> y(kN);
  for (std::size_t t = 0; t < y.size(); ++t) {
    const double d = static_cast<double>(t);
    y[t] = 50 + (kind == 1) * 3 * d + (kind == 2) * (std::fmod(d, 4) * 6 - 9) + e(g);
  }
  if (kind == 3) y[5] = 0;
  if (kind == 4) std::fill(y.end() - 6, y.end(), kMissing);
  return y;
}

// The criterion of one candidate fitted on the first kN - hold values;
// trnsopt 1 and 3 bring a log fit back by exp(p), 2 by the lognormal mean
// exp(p + s^2/2), any other not at all.
double direct(const std::vector<double>& y, int method, const Case& c) {
  std::vector<double> x = y, p(kN), s(kN);
  for (double& v : x) v = c.back >= 0 ? std::log(v) : v;
  Model o(x.data(), kN - c.hold, method, c.kind == 2 ? 4 : 0);
  if (o.rc < 0 || esmfit(o.m) < 0) return kMissing;
  FOR_OUT out{.predicted = p.data(), .std = s.data()};
  EXPECT_EQ(esmprd(o.m, x.data(), kN - c.hold, 0, 0, 0.05, static_cast<int>(c.hold), &out), 0);
  const long from = c.hold > 0 ? kN - c.hold : 0;
  long double sum = 0;
  for (long t = from; t < kN; ++t) {
    const double f = c.back >= 1 && c.back <= 3 ? std::exp(p[t] + (c.back == 2) * s[t] * s[t] / 2) : p[t];
    sum += c.select == 43 ? 100 * std::fabs((y[t] - f) / y[t]) : (y[t] - f) * (y[t] - f);
  }
  const long k = c.select == 4 && c.hold == 0 ? o.m->pest.nparms : 0;  // held back: no weights count
  return static_cast<double>(c.select == 3 ? std::sqrt(sum / (kN - from)) : sum / (kN - from - k));
}

TEST(Esmbest, AgainstTheDirectLoop) {
  const Case cases[] = {
      {0, 0, 3, -1, {1, 1}, 0},  // a tie: the first in the list wins
      {1, 0, 4, -1, {1, 2, 3, 4}, 0},
      {2, 8, 43, -1, {1, 2, 5, 6, 7, 11}, 0},
      {2, 0, 43, 2, {1, 5, 7}, 0},
      {0, 6, 4, 1, {1, 2, 4}, 0},
      {1, 6, 3, 3, {2, 1, 4}, 0},
      {1, 0, 3, 0, {1, 2}, 0},  // log-scale predictions against the data
      {3, 0, 3, -1, {7, 1}, 0},  // WINTERS on a zero falls out, the rest go on
      {0, kN - 2, 3, -1, {1}, 0},
      {0, kN - 1, 3, -1, {1}, -999},
      {0, 0, 99, -1, {1}, -999},  // no such criterion
      {3, 0, 3, 1, {1}, -4},
      {3, 0, 3, -1, {7}, -5},
      {4, 6, 3, -1, {1}, -7},  // nothing held back to judge
  };
  for (const Case& c : cases) {
    const auto y = series(c.kind);
    const int nm = static_cast<int>(c.methods.size());
    std::vector<double> want(c.methods.size(), kMissing), got(want);
    int best = c.rc != 0 ? c.rc : -1;
    for (int m = 0; m < nm && c.rc == 0; ++m) {
      want[m] = direct(y, c.methods[m], c);
      if (!wzmis(want[m]) && (best < 0 || want[m] < want[best])) best = m;
    }
    WINMODEL stale, *w = &stale;
    const INTERVAL none{};
    ASSERT_EQ(esmbest(y.data(), kN, 3, &none, 0, c.kind == 2 ? 4 : 0, 0, c.select, c.hold, 0,
                      c.methods.data(), nm, c.back >= 0, 0, c.back, got.data(), &w), best) << c.kind;
    for (int m = 0; m < nm && c.rc == 0; ++m)
      EXPECT_TRUE(wzmis(want[m]) ? wzmis(got[m]) != 0 : std::fabs(got[m] - want[m]) <= 1e-9 * want[m]) << m;
    if (c.rc != 0) {
      EXPECT_EQ(w, nullptr);
      continue;
    }
    ASSERT_NE(w, nullptr);
    EXPECT_EQ(w->ts.nobs, kN - c.hold) << "the record fitted on the fit range";
    EXPECT_EQ(w->spec.code, c.methods[best]);
    esmtrm(w);
    EXPECT_EQ(esmbest(y.data(), kN, 3, &none, 0, c.kind == 2 ? 4 : 0, 0, c.select, c.hold, 0,
                      c.methods.data(), nm, c.back >= 0, 0, c.back, nullptr, nullptr), best);
  }
}

}  // namespace
}  // namespace qvt
