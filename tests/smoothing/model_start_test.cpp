// Start values of the trend and seasonal members against least squares
// solved here by Gaussian elimination, on small series with flagged
// observations; damped-trend, double-smoothing and multiplicative edge cases.

#include "model_oracle.hpp"

namespace qvt {
namespace {

// y on time t = 1..n and one dummy per season of ns (no constant): returns
// the slope and the season intercepts, seasons counted from x[0]. With one
// season the intercept is the constant of a straight line.
std::vector<double> dummyFit(const std::vector<double>& x, const std::vector<char>& flag,
                             bool withTrend, std::size_t ns) {
  std::vector<std::vector<double>> X;
  std::vector<double> y;
  for (std::size_t t = 0; t < x.size(); ++t) {
    if (flag[t]) continue;
    std::vector<double> row;
    if (withTrend) row.push_back(static_cast<double>(t + 1));
    for (std::size_t s = 0; s < ns; ++s) row.push_back(t % ns == s ? 1.0 : 0.0);
    X.push_back(row);
    y.push_back(x[t]);
  }
  return oracle::ols(X, y);
}

TEST(Zes2Svi, AgainstLeastSquaresWithFlags) {
  struct Case {
    std::vector<double> x;
    std::vector<char> flag;
    int stflg, rc;
  } cases[] = {
      {{1, 3, 2, 6, 5, 9, 4}, {0, 1, 0, 0, 1, 0, 1}, 1, 0},
      {{4, 7, 1, 8}, {0, 0, 0, 0}, 0, 0},  // stflg 0: trend 0
      {{5, 6, 7}, {0, 1, 1}, 1, -2},
  };
  for (const auto& c : cases) {
    double L = 0, T = 0;
    ASSERT_EQ(zes2svi(c.x.data(), c.flag.data(), static_cast<long>(c.x.size()), c.stflg, &L, &T), c.rc);
    if (c.rc < 0) continue;
    EXPECT_EQ(L, c.flag.back() ? c.x[c.x.size() - 2] : c.x.back()) << "the last usable value";
    // Backward in time: minus the slope.
    EXPECT_NEAR(T, c.stflg ? -dummyFit(c.x, c.flag, true, 1)[0] : 0.0, 1e-12);
  }
}

TEST(StartValues, SeasonalFormsAgainstDummyRegression) {
  const std::vector<double> x = {12, 7, 15, 3, 14, 9, 18, 4, 16, 10, 19, 7, 18, 12};
  std::vector<char> some(x.size(), 0);
  some[2] = some[9] = some[13] = 1;  // the last value flagged: the level comes from the one before
  for (const int nstart : {0, 2}) {
    const long n = static_cast<long>(x.size());
    double L = 0, T = 0, S[4] = {};
    ASSERT_EQ(zwinsvi(x.data(), some.data(), n, 4, nstart, 1, 1, &L, &T, S), 0);
    auto b = dummyFit(x, some, true, 4);
    const double mean = (b[1] + b[2] + b[3] + b[4]) / 4;
    EXPECT_NEAR(T, -b[0], 1e-10) << nstart;
    for (int i = 0; i < 4; ++i) EXPECT_NEAR(S[(nstart + i) % 4], b[i + 1] - mean, 1e-10) << i;
    EXPECT_EQ(L, some.back() ? x[x.size() - 2] : x.back());

    // SEASONAL: the season means around the overall mean.
    ASSERT_EQ(zesssvi(x.data(), some.data(), n, 4, nstart, 1, &L, S), 0);
    b = dummyFit(x, some, false, 4);
    const double all = dummyFit(x, some, false, 1)[0];
    for (int i = 0; i < 4; ++i) EXPECT_NEAR(S[(nstart + i) % 4], b[i] - all, 1e-10) << i;

    // Multiplicative Winters: positive factors averaging 1, larger in the
    // high seasons (1 and 3 from x[0]); a rising series has a negative
    // backward trend.
    ASSERT_EQ(zwinsvi(x.data(), some.data(), n, 4, nstart, 0, 1, &L, &T, S), 0);
    for (double f : S) EXPECT_GT(f, 0.0);
    EXPECT_NEAR(std::accumulate(S, S + 4, 0.0) / 4, 1.0, 1e-12);
    EXPECT_GT(S[(nstart + 2) % 4], S[(nstart + 3) % 4]);
    EXPECT_GT(S[(nstart + 0) % 4], S[(nstart + 1) % 4]);
    EXPECT_LT(T, 0.0);
  }
}

TEST(StartValues, NeutralWithoutRegressionAndTooFewValues) {
  const std::vector<double> x = {3, 4, 5, 6, 7};
  const std::vector<char> f(5, 0);
  double L = 0, T = 9, S[2] = {7, 7};
  ASSERT_EQ(zwinsvi(x.data(), f.data(), 5, 2, 0, 0, 0, &L, &T, S), 0);
  EXPECT_TRUE(L == 7 && T == 0) << L << " " << T;
  EXPECT_THAT(S, ElementsAre(1, 1));
  ASSERT_EQ(zwinsvi(x.data(), f.data(), 5, 2, 0, 1, 0, &L, &T, S), 0);
  EXPECT_THAT(S, ElementsAre(0, 0));
  const std::vector<char> onlyFirst = {0, 1, 1, 1, 1};
  EXPECT_EQ(zwinsvi(x.data(), onlyFirst.data(), 5, 2, 0, 1, 1, &L, &T, S), -2);
  EXPECT_EQ(zes3svi(x.data(), onlyFirst.data(), 5, 1, &L, &T), -2);
  EXPECT_EQ(zesdsvi(x.data(), f.data(), 1, 1, &L, &T), -2);
}

TEST(EdgeCases, DoubleWeightNearZeroAndMultiplicativeFloor) {
  const std::vector<double> x = {1, 2, 3, 4};
  const std::vector<char> f(4, 0);
  double L = 4, T = 0, mse = 0;
  EXPECT_EQ(zesdsmo(x.data(), f.data(), 4, 4, 1e-160, &L, &T, &mse), -9);
  // At the lower bound T/w can push the prediction past the scale guard.
  double L1 = 4, T1 = 1;
  EXPECT_EQ(zesdsmo(x.data(), f.data(), 4, 4, 0.00001, &L1, &T1, &mse), -9);
  EXPECT_TRUE(wzmis(L1));
  // A factor driven to zero makes the prediction fall below the floor.
  double xhat = 0, e = 0, Lw = 10, Tw = 0, S[2] = {1e-20, 1};
  EXPECT_EQ(zwinpnt(5, 10, 0, 0.3, 0.1, 0.2, &Lw, &Tw, S, 0, &xhat, &e), -7);
  EXPECT_TRUE(wzmis(Lw) && wzmis(S[0]));
  double L2 = 10, S2[2] = {1e-20, 1};
  EXPECT_EQ(zesipnt(5, 10, 0, 0.3, 0.2, &L2, S2, 0, &xhat, &e), -7);
  // The additive form has no floor.
  double L3 = -10, S3[2] = {-5, 1};
  EXPECT_EQ(zesspnt(5, 10, 0.3, 0.2, &L3, S3, 0, &xhat, &e), 0);
  EXPECT_DOUBLE_EQ(xhat, -15);
}

}  // namespace
}  // namespace qvt
