// Automatic selection against a slow direct loop: each candidate fitted alone
// through the driver, its predictions brought back from the log scale by the
// closed-form lognormal, and scored from the definitions of MSE, SSE/(n - k)
// and the mean relative absolute error; then each failure at its cause.

#include "model_oracle.hpp"
#include "smoothing/esmbest.hpp"

namespace qvt {
namespace {

constexpr int kN = 36;

// kind: 0 noisy level, 1 trend, 2 period-4 season, 3 the season ending in a zero.
// select: 2 MSE, 4 SSE/(n - k), 63 MRAE. back: -1 no transformation, else a
// log fit brought back by this trnsopt. rc: 0 for the index of the direct loop.
struct Case {
  int kind, hold, select, back, rc;
  std::vector<int> methods;
};

// The criterion of one candidate fitted on the first kN - hold values;
// trnsopt 1 and 3 bring a log fit back by exp(p), 2 by the lognormal mean
// exp(p + s^2/2), 0 not at all. The relative errors divide by the change
// from the last value fitted, or by the actual without a holdout.
double direct(const std::vector<double>& y, int method, const Case& c) {
  std::vector<double> x = y, p(kN), s(kN);
  for (double& v : x) v = c.back >= 0 ? std::log(v) : v;
  Model o(x.data(), kN - c.hold, method, c.kind >= 2 ? 4 : 0);
  FOR_OUT out{.predicted = p.data(), .std = s.data()};
  // Out before the fit: a trend (2 LINEAR, 3 DAMPTREND) with no more values
  // than weights. Out after it: WINTERS (7) on kind 3, where it wins the
  // holdout and then meets the zero when the winner is fitted again on all.
  if (o.rc < 0 || ((method == 2 || method == 3) && kN - c.hold <= o.m->pest.nparms) || esmfit(o.m) < 0 ||
      (method == 7 && c.kind == 3) || esmprd(o.m, x.data(), kN - c.hold, 0, 0, 0.05, c.hold, &out))
    return kMissing;
  long double sum = 0;
  for (int t = c.hold > 0 ? kN - c.hold : 0; t < kN; ++t) {
    const double e = y[t] - (c.back > 0 ? std::exp(p[t] + (c.back == 2) * s[t] * s[t] / 2) : p[t]);
    sum += c.select == 63 ? std::fabs(e / (y[t] - (c.hold > 0 ? y[kN - c.hold - 1] : 0))) : e * e;
  }
  // SSE/(n - k) counts the weights only where they were fitted on the values judged.
  return static_cast<double>(sum / (c.hold > 0 ? c.hold : kN - (c.select == 4) * o.m->pest.nparms));
}

TEST(Esmbest, AgainstTheDirectLoop) {
  const Case cases[] = {
      {1, 0, 4, 3, 0, {1, 3, 3, 2, 4}},  // a tie: the first in the list wins
      {2, 8, 4, 2, 0, {1, 2, 5, 6, 7, 11}},
      {3, 4, 63, -1, 0, {7, 1}},  // WINTERS wins the holdout, fails on all: the next one wins
      {0, kN - 2, 63, 1, 0, {1, 2, 3, 4}},  // LINEAR, DAMPTREND: as many weights as values
      {0, kN - 1, 2, -1, -999, {1}},
      {3, 0, 2, 1, -4, {1}},
      {3, 0, 2, -1, -5, {7}},
      {3, 1, 43, -1, -7, {1}},  // the held-back actual is 0: no percentage error
  };
  for (const Case& c : cases) {
    std::vector<double> y;
    for (double d = 0; d < kN; ++d)  // sin(d^2): a deterministic, irregular noise
      y.push_back(50 + (c.kind == 1) * 3 * d + (c.kind >= 2) * std::fmod(d, 4) * 6 + 2 * std::sin(d * d));
    if (c.kind == 3) y[kN - 1] = 0;
    const int nm = static_cast<int>(c.methods.size());
    std::vector<double> want(c.methods.size(), kMissing), got(want);
    WINMODEL stale, *w = &stale;
    const int index = esmbest(y.data(), kN, 3, nullptr, 0, c.kind >= 2 ? 4 : 0, 0, c.select, c.hold, 0,
                              c.methods.data(), nm, c.back >= 0, 0, c.back, got.data(), &w);
    int best = c.rc != 0 ? c.rc : -1;
    for (int m = 0; m < nm && c.rc == 0; ++m) {
      want[m] = direct(y, c.methods[m], c);
      EXPECT_TRUE(wzmis(want[m]) ? wzmis(got[m]) != 0 : std::fabs(got[m] - want[m]) <= 1e-9 * want[m]) << m;
      if (!wzmis(want[m]) && (best < 0 || want[m] < want[best])) best = m;
    }
    ASSERT_EQ(index, best) << c.kind << " " << c.select;
    // The winner's record as fitted on the fit range; null on failure.
    EXPECT_TRUE(c.rc != 0 ? w == nullptr : w && w->ts.nobs == kN - c.hold && w->pest.method == c.methods[best]);
    if (w != &stale) esmtrm(w);
    EXPECT_EQ(esmbest(y.data(), kN, 3, nullptr, 0, c.kind >= 2 ? 4 : 0, 0, c.select, c.hold, 0,
                      c.methods.data(), nm, c.back >= 0, 0, c.back, nullptr, nullptr), best);
  }
}

}  // namespace
}  // namespace qvt
