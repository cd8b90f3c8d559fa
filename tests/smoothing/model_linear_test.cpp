// Linear exponential smoothing (Holt): kernels against hand-worked steps
// and a direct loop of Holt's equations in error-correction form, start
// values against least squares computed here, forecast variances against
// the psi-weight sum, and the stability region.

#include "model_oracle.hpp"

namespace qvt {
namespace {

constexpr double kZ975 = 1.959963984540054;  // standard normal 0.975 quantile

TEST(Zes2Pnt, HandWorkedSteps) {
  struct Case {
    double L, T, w, g, x;
    double xhat, e, L1, T1;
  } cases[] = {
      // xhat = 12, e = -1, L' = .5*12 + .5*13 = 12.5, T' = .8*2 + .2*(12.5-10) = 2.1
      {10, 2, 0.5, 0.2, 13, 12, -1, 12.5, 2.1},
      // w = 1: the level jumps to x; T' = g (x - L) + (1-g) T
      {0, 1, 1.0, 0.5, 4, 1, -3, 4, 2.5},
      // w = 0: the line goes on untouched
      {5, -1, 0.0, 0.3, 100, 4, -96, 4, -1},
  };
  for (const auto& c : cases) {
    double L = c.L, T = c.T, xhat = 0, e = 0;
    ASSERT_EQ(zes2pnt(c.x, 1e3, c.w, c.g, &L, &T, &xhat, &e), 0);
    EXPECT_DOUBLE_EQ(xhat, c.xhat);
    EXPECT_DOUBLE_EQ(e, c.e);
    EXPECT_DOUBLE_EQ(L, c.L1);
    EXPECT_DOUBLE_EQ(T, c.T1);
  }
}

TEST(Zes2Pnt, GuardsSetTheStateMissing) {
  struct Case {
    double L, T, xscale;
  } cases[] = {{2e152, 0, 1e300}, {0, -2e152, 1e300}, {5, 6, 1e-3}, {kMissing, 0, 1}};
  for (const auto& c : cases) {
    double L = c.L, T = c.T, xhat = 0, e = 0;
    EXPECT_EQ(zes2pnt(1, c.xscale, 0.3, 0.1, &L, &T, &xhat, &e), -9);
    EXPECT_TRUE(wzmis(L) && wzmis(T));
  }
  // The scale test is one-sided: a large negative prediction passes.
  double L = -5e4, T = 0, xhat = 0, e = 0;
  EXPECT_EQ(zes2pnt(1, 1, 0.3, 0.1, &L, &T, &xhat, &e), 0);
}

// Series with flagged observations inside and at the end.
struct Series {
  std::vector<double> x;
  std::vector<char> flag;
};

Series sample() {
  Series s;
  s.x = {3.0, 4.5, 4.1, 6.0, 7.2, 6.9, 8.8, 9.1, 10.4, 10.0, 12.3, 12.9};
  s.flag.assign(s.x.size(), 0);
  s.flag[4] = 1;
  s.flag[5] = 1;  // a run of two: the line extends twice
  s.flag[11] = 1;
  return s;
}

TEST(Zes2Prd, RowsMatchHoltLoopAndLeadsFollowTheLine) {
  const Series s = sample();
  const long n = static_cast<long>(s.x.size());
  const double w[2] = {0.4, 0.2};
  oracle::State st;
  st.L = 12.0;
  st.T = -0.8;
  const auto ref = oracle::pass(kEsmLinear, w, s.x, s.flag, {}, st);
  const long lead = 4;
  const double se2 = 0.25;
  std::vector<double> rows(static_cast<std::size_t>((n + lead) * kZes2RowLen));
  double L = 12.0, T = -0.8, mse = 0;
  ASSERT_EQ(zes2prd(s.x.data(), s.flag.data(), 20.0, n, w[0], w[1], &L, &T, 0, n - 1, lead, se2,
                    0.05, 0, &mse, rows.data()),
            0);
  EXPECT_NEAR(mse, ref.ss / static_cast<double>(ref.nobs - 2), 1e-12) << "divides by nobs - 2";
  for (long t = 0; t < n; ++t) {
    const double* r = &rows[static_cast<std::size_t>(t * kZes2RowLen)];
    EXPECT_NEAR(r[1], ref.pred[static_cast<std::size_t>(t)], 1e-12) << t;
    EXPECT_NEAR(r[2] - r[1], kZ975 * 0.5, 1e-12);
    EXPECT_DOUBLE_EQ(r[5], 0.5);
    if (s.flag[static_cast<std::size_t>(t)]) {
      EXPECT_TRUE(wzmis(r[4])) << t;
    } else {
      EXPECT_NEAR(r[4], r[1] - s.x[static_cast<std::size_t>(t)], 1e-12);
    }
  }
  for (long k = 1; k <= lead; ++k) {
    const double* r = &rows[static_cast<std::size_t>((n - 1 + k) * kZes2RowLen)];
    const double p = ref.final.L + static_cast<double>(k) * ref.final.T;
    double sum = 1;  // Holt's psi weights: w (1 + j g)
    for (long j = 1; j < k; ++j) sum += std::pow(w[0] * (1 + static_cast<double>(j) * w[1]), 2);
    EXPECT_NEAR(r[1], p, 1e-12);
    EXPECT_NEAR(r[6], p, 1e-12);
    EXPECT_NEAR(r[7], ref.final.T, 1e-12);
    EXPECT_NEAR(r[5], std::sqrt(se2 * sum), 1e-12);
    EXPECT_NEAR(r[2] - r[3], 2 * kZ975 * std::sqrt(se2 * sum), 1e-11);
    EXPECT_NEAR(zes2cla(w[0], w[1], se2, k, 0.05, nullptr), se2 * sum, 1e-14);
    EXPECT_TRUE(wzmis(r[0]) && wzmis(r[4]));
  }
}

TEST(Zes2Smo, StraightLineIsFollowedFromRegressionStart) {
  // x_t = 2 + 0.5 t. From the regression start values only the first
  // backward step errs (the start level is the last value itself, predicted
  // as L + T), and that transient dies out; from a zero trend the line is
  // missed by far at small weights.
  std::vector<double> x;
  for (int t = 0; t < 40; ++t) x.push_back(2 + 0.5 * t);
  const std::vector<char> flag(x.size(), 0);
  for (double w : {0.1, 0.5, 0.95}) {
    double L = 0, T = 0, mse = -1, L0 = 0, T0 = 0, mse0 = -1;
    ASSERT_EQ(zes2svi(x.data(), flag.data(), 40, 1, &L, &T), 0);
    EXPECT_NEAR(T, -0.5, 1e-12);
    ASSERT_EQ(zes2svi(x.data(), flag.data(), 40, 0, &L0, &T0), 0);
    ASSERT_EQ(zes2smo(x.data(), flag.data(), 30, 40, w, 0.3, &L, &T, &mse), 0);
    ASSERT_EQ(zes2smo(x.data(), flag.data(), 30, 40, w, 0.3, &L0, &T0, &mse0), 0);
    EXPECT_LT(mse, 0.01) << w;
    if (w < 0.2) {  // larger weights forget the start
      EXPECT_LT(mse * 10, mse0) << w;
    }
  }
}

TEST(Zes2Svi, AgainstLeastSquaresWithFlags) {
  struct Case {
    std::vector<double> x;
    std::vector<char> flag;
    int stflg;
    int rc;
    double level;
    bool ols;  // trend = - OLS slope over the unflagged points
  } cases[] = {
      {{1, 3, 2, 6, 5, 9}, {0, 0, 0, 0, 0, 0}, 1, 0, 9, true},
      {{1, 3, 2, 6, 5, 9, 4}, {0, 1, 0, 0, 1, 0, 1}, 1, 0, 9, true},
      {{4, 7, 1, 8}, {0, 0, 0, 0}, 0, 0, 8, false},  // stflg 0: trend 0
      {{5}, {0}, 1, -2, 0, false},
      {{5, 6, 7}, {0, 1, 1}, 1, -2, 0, false},
  };
  for (const auto& c : cases) {
    double L = 0, T = 0;
    const long n = static_cast<long>(c.x.size());
    ASSERT_EQ(zes2svi(c.x.data(), c.flag.data(), n, c.stflg, &L, &T), c.rc);
    if (c.rc < 0) continue;
    EXPECT_EQ(L, c.level);
    if (!c.ols) {
      EXPECT_EQ(T, 0.0);
      continue;
    }
    std::vector<std::vector<double>> X;
    std::vector<double> y;
    for (long t = 0; t < n; ++t) {
      if (c.flag[static_cast<std::size_t>(t)]) continue;
      X.push_back({1.0, static_cast<double>(t + 1)});
      y.push_back(c.x[static_cast<std::size_t>(t)]);
    }
    const auto b = oracle::ols(X, y);
    EXPECT_NEAR(T, -b[1], 1e-12);
  }
}

TEST(Zes2Stb, Region) {
  struct Case {
    double w, g;
    int stable;
  } cases[] = {{0.5, 0.5, 1},  {0.5, 5.99, 1}, {0.5, 6.0, 0}, {1.9, 0.1, 1},
               {1.9, 0.11, 0}, {2.0, 0.0, 0},  {0.0, 0.1, 0}, {0.3, -0.01, 0},
               {0.3, 0.0, 1}};
  for (const auto& c : cases) EXPECT_EQ(zes2stb(c.w, c.g), c.stable) << c.w << " " << c.g;
}

}  // namespace
}  // namespace qvt
