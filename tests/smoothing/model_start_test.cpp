// Start values of the seasonal and trend members against least squares
// solved here by Gaussian elimination, on small series with flagged
// observations; damped-trend and double-smoothing edge cases.

#include "model_oracle.hpp"

namespace qvt {
namespace {

// y on time t = 1..n and one dummy per season (no constant): returns the
// slope and the season intercepts, seasons counted from x[0].
std::vector<double> dummyFit(const std::vector<double>& x, const std::vector<char>& flag, int ns,
                             bool withTrend) {
  std::vector<std::vector<double>> X;
  std::vector<double> y;
  for (std::size_t t = 0; t < x.size(); ++t) {
    if (flag[t]) continue;
    std::vector<double> row;
    if (withTrend) row.push_back(static_cast<double>(t + 1));
    for (int s = 0; s < ns; ++s) row.push_back(static_cast<int>(t) % ns == s ? 1.0 : 0.0);
    X.push_back(row);
    y.push_back(x[t]);
  }
  return oracle::ols(X, y);
}

struct SeasonCase {
  const char* name;
  std::vector<double> x;
  std::vector<char> flag;
  int nstart;
};

std::vector<SeasonCase> seasonCases() {
  const std::vector<double> x = {12, 7, 15, 3, 14, 9, 18, 4, 16, 10, 19, 7, 18, 12};
  std::vector<char> none(x.size(), 0);
  std::vector<char> some = none;
  some[2] = 1;
  some[9] = 1;
  some[13] = 1;  // the last value flagged: the level comes from the one before
  return {{"no flags", x, none, 0}, {"flags", x, some, 0}, {"starts in season 3", x, some, 2}};
}

TEST(StartValues, AdditiveWintersAgainstDummyRegression) {
  for (const auto& c : seasonCases()) {
    const long n = static_cast<long>(c.x.size());
    double L = 0, T = 0, S[4] = {};
    ASSERT_EQ(zwinsvi(c.x.data(), c.flag.data(), n, 4, c.nstart, 1, 1, &L, &T, S), 0) << c.name;
    const auto b = dummyFit(c.x, c.flag, 4, true);
    const double mean = (b[1] + b[2] + b[3] + b[4]) / 4;
    EXPECT_NEAR(T, -b[0], 1e-10) << c.name;
    for (int i = 0; i < 4; ++i)
      EXPECT_NEAR(S[(c.nstart + i) % 4], b[static_cast<std::size_t>(i + 1)] - mean, 1e-10)
          << c.name << " season " << i;
    const double last = c.flag.back() ? c.x[c.x.size() - 2] : c.x.back();
    EXPECT_EQ(L, last) << c.name;
  }
}

TEST(StartValues, AdditiveSeasonalAroundTheOverallMean) {
  for (const auto& c : seasonCases()) {
    const long n = static_cast<long>(c.x.size());
    double L = 0, S[4] = {};
    ASSERT_EQ(zesssvi(c.x.data(), c.flag.data(), n, 4, c.nstart, 1, &L, S), 0) << c.name;
    const auto b = dummyFit(c.x, c.flag, 4, false);  // the season means
    double sum = 0;
    long cnt = 0;
    for (std::size_t t = 0; t < c.x.size(); ++t)
      if (!c.flag[t]) {
        sum += c.x[t];
        ++cnt;
      }
    const double mu = sum / static_cast<double>(cnt);
    for (int i = 0; i < 4; ++i)
      EXPECT_NEAR(S[(c.nstart + i) % 4], b[static_cast<std::size_t>(i)] - mu, 1e-10) << c.name;
  }
}

TEST(StartValues, MultiplicativeFactorsArePositiveAndAverageOne) {
  for (const auto& c : seasonCases()) {
    const long n = static_cast<long>(c.x.size());
    double L = 0, T = 0, S[4] = {};
    ASSERT_EQ(zwinsvi(c.x.data(), c.flag.data(), n, 4, c.nstart, 0, 1, &L, &T, S), 0) << c.name;
    double mean = 0;
    for (double f : S) {
      EXPECT_GT(f, 0.0) << c.name;
      mean += f / 4;
    }
    EXPECT_NEAR(mean, 1.0, 1e-12) << c.name;
    // The high seasons (1 and 3 from x[0]) get the larger factors.
    EXPECT_GT(S[(c.nstart + 2) % 4], S[(c.nstart + 3) % 4]) << c.name;
    EXPECT_GT(S[(c.nstart + 0) % 4], S[(c.nstart + 1) % 4]) << c.name;
    EXPECT_LT(T, 0.0) << c.name << ": a rising series has a negative backward trend";
  }
}

TEST(StartValues, NeutralWithoutRegressionAndTooFewValues) {
  const std::vector<double> x = {3, 4, 5, 6, 7};
  const std::vector<char> f(5, 0);
  double L = 0, T = 9, S[2] = {7, 7};
  ASSERT_EQ(zwinsvi(x.data(), f.data(), 5, 2, 0, 0, 0, &L, &T, S), 0);
  EXPECT_EQ(L, 7);
  EXPECT_EQ(T, 0);
  EXPECT_EQ(S[0], 1);
  EXPECT_EQ(S[1], 1);
  ASSERT_EQ(zwinsvi(x.data(), f.data(), 5, 2, 0, 1, 0, &L, &T, S), 0);
  EXPECT_EQ(S[0], 0);
  const std::vector<char> onlyFirst = {0, 1, 1, 1, 1};
  EXPECT_EQ(zwinsvi(x.data(), onlyFirst.data(), 5, 2, 0, 1, 1, &L, &T, S), -2);
  EXPECT_EQ(zes3svi(x.data(), onlyFirst.data(), 5, 1, &L, &T), -2);
  EXPECT_EQ(zesdsvi(x.data(), f.data(), 1, 1, &L, &T), -2);
}

TEST(DampTrend, ForecastsLevelOffAndPhiOneIsHolt) {
  const std::vector<double> x = {5, 6, 8, 9, 11, 12, 14, 15, 17, 18};
  const std::vector<char> f(x.size(), 0);
  const long n = 10;
  const long lead = 60;
  std::vector<double> rows(static_cast<std::size_t>((n + lead) * kZes3RowLen));
  double L = 18, T = -1.4, mse = 0;
  ASSERT_EQ(zes3prd(x.data(), f.data(), 20, n, 0.5, 0.3, 0.8, &L, &T, 0, n - 1, lead, 1.0, 0.05, 0,
                    &mse, rows.data()),
            0);
  // p_k -> L + T phi/(1 - phi) = L + 4 T.
  const double limit = L + T * 0.8 / 0.2;
  EXPECT_NEAR(rows[static_cast<std::size_t>((n + lead - 1) * kZes3RowLen + 1)], limit, 1e-4);
  EXPECT_NEAR(rows[static_cast<std::size_t>(n * kZes3RowLen + 1)], L + 0.8 * T, 1e-12);

  // phi = 1: the forecasts and variances of Holt's method.
  std::vector<double> r3(static_cast<std::size_t>((n + 5) * kZes3RowLen));
  std::vector<double> r2(static_cast<std::size_t>((n + 5) * kZes2RowLen));
  double L3 = 18, T3 = -1.4, L2 = 18, T2 = -1.4, m3 = 0, m2 = 0;
  ASSERT_EQ(zes3prd(x.data(), f.data(), 20, n, 0.5, 0.3, 1.0, &L3, &T3, 0, n - 1, 5, 1.0, 0.05,
                    0, &m3, r3.data()),
            0);
  ASSERT_EQ(zes2prd(x.data(), f.data(), 20, n, 0.5, 0.3, &L2, &T2, 0, n - 1, 5, 1.0, 0.05, 0,
                    &m2, r2.data()),
            0);
  for (long t = 0; t < n + 5; ++t)
    for (int col : {1, 2, 3, 5})
      EXPECT_NEAR(r3[static_cast<std::size_t>(t * kZes3RowLen + col)],
                  r2[static_cast<std::size_t>(t * kZes2RowLen + col)], 1e-12)
          << t << " " << col;
}

TEST(Double, WeightNearZeroIsDivergence) {
  const std::vector<double> x = {1, 2, 3, 4};
  const std::vector<char> f(4, 0);
  double L = 4, T = 0, mse = 0;
  EXPECT_EQ(zesdsmo(x.data(), f.data(), 4, 4, 0.0, &L, &T, &mse), -9);
  EXPECT_EQ(zesdsmo(x.data(), f.data(), 4, 4, 1e-160, &L, &T, &mse), -9);
  // At the lower bound T/w can push the prediction past the scale guard.
  L = 4;
  T = 1;
  EXPECT_EQ(zesdsmo(x.data(), f.data(), 4, 4, 0.00001, &L, &T, &mse), -9);
  EXPECT_TRUE(wzmis(L));
  // Brown's psi weights: 2w + (j - 1) w^2.
  double psi[4];
  zesdpsi(0.5, 4, psi);
  EXPECT_DOUBLE_EQ(psi[1], 1.0);
  EXPECT_DOUBLE_EQ(psi[2], 1.25);
  EXPECT_DOUBLE_EQ(psi[3], 1.5);
}

TEST(Multiplicative, FloorGuardGivesMinus7) {
  // A factor driven to zero makes the prediction fall below the floor.
  double L = 10, T = 0, S[2] = {1e-20, 1}, xhat = 0, e = 0;
  EXPECT_EQ(zwinpnt(5, 10, 0, 0.3, 0.1, 0.2, &L, &T, S, 0, &xhat, &e), -7);
  EXPECT_TRUE(wzmis(L) && wzmis(S[0]));
  double L2 = 10, S2[2] = {1e-20, 1};
  EXPECT_EQ(zesipnt(5, 10, 0, 0.3, 0.2, &L2, S2, 0, &xhat, &e), -7);
  // The additive form has no floor.
  double L3 = -10, S3[2] = {-5, 1};
  EXPECT_EQ(zesspnt(5, 10, 0.3, 0.2, &L3, S3, 0, &xhat, &e), 0);
  EXPECT_DOUBLE_EQ(xhat, -15);
}

}  // namespace
}  // namespace qvt
