// Start-value regressions against ordinary least squares computed directly:
// the design matrix (constant, t, t^2, season dummies) is built here from the
// usable observations and its normal equations solved by Gauss-Jordan in long
// double. Multiplicative factors are checked on series built exactly as
// (a + b t) S_s, where the right answer is known, and on hand-worked repairs.
#include "stats/startreg.hpp"
#include "dense_oracle.hpp"

namespace qvt {
namespace {

using Row = std::vector<long double>;

// The time index of element i.
double tOf(long i) { return static_cast<double>(i + 1); }

// Least squares coefficients of y on the columns given by design(i) over the
// usable i (flag 0).
std::vector<double> ols(const std::vector<double>& y, const std::vector<char>& flag, std::size_t p,
                        Row (*design)(long, int), int ns) {
  std::vector<Row> a(p, Row(p + 1, 0.0L));
  for (long i = 0; i < static_cast<long>(y.size()); ++i) {
    if (flag[i] != 0) continue;
    const Row x = design(i, ns);
    for (std::size_t r = 0; r < p; ++r) {
      for (std::size_t c = 0; c < p; ++c) a[r][c] += x[r] * x[c];
      a[r][p] += x[r] * y[i];
    }
  }
  for (std::size_t c = 0; c < p; ++c) {
    std::size_t piv = c;
    for (std::size_t r = c + 1; r < p; ++r)
      if (std::fabs(a[r][c]) > std::fabs(a[piv][c])) piv = r;
    std::swap(a[c], a[piv]);
    const long double d = a[c][c];
    for (auto& v : a[c]) v /= d;
    for (std::size_t r = 0; r < p; ++r) {
      if (r == c) continue;
      const long double f = a[r][c];
      for (std::size_t k = 0; k <= p; ++k) a[r][k] -= f * a[c][k];
    }
  }
  std::vector<double> b(p);
  for (std::size_t r = 0; r < p; ++r) b[r] = static_cast<double>(a[r][p]);
  return b;
}

Row lineDesign(long i, int) { return {1.0L, static_cast<long double>(i + 1)}; }
Row quadDesign(long i, int) {
  const long double t = i + 1;
  return {1.0L, t, t * t};
}
// t followed by one dummy per season (no constant: the dummies span it).
Row trendDummyDesign(long i, int ns) {
  Row r(1 + ns, 0.0L);
  r[0] = i + 1;
  r[1 + i % ns] = 1.0L;
  return r;
}
Row quadDummyDesign(long i, int ns) {
  Row r(2 + ns, 0.0L);
  r[0] = i + 1;
  r[1] = static_cast<long double>(i + 1) * (i + 1);
  r[2 + i % ns] = 1.0L;
  return r;
}

// A small series with a trend, a seasonal pattern of 4 and irregular noise.
std::vector<double> series(long n, int ns) {
  const double pattern[] = {3.0, -1.0, 0.5, -2.5, 1.25, -0.75, 2.0};
  const double noise[] = {0.31, -0.12, 0.07, -0.44, 0.25, 0.02, -0.3, 0.18, -0.05, 0.4, -0.21};
  std::vector<double> y(n);
  for (long i = 0; i < n; ++i) y[i] = 10.0 + 0.8 * tOf(i) + pattern[i % ns] + noise[i % 11];
  return y;
}

std::vector<char> flags(long n, std::initializer_list<long> at) {
  std::vector<char> f(n, 0);
  for (long i : at) f[i] = 1;
  return f;
}

constexpr double kTol = 1e-10;

TEST(RegressionOnTime, MatchesLeastSquares) {
  struct Case { long n; std::initializer_list<long> flagged; };
  for (const Case& c : {Case{2, {}}, Case{7, {}}, Case{23, {0, 5, 22}}, Case{40, {1, 2, 3, 30}}}) {
    auto y = series(c.n, 4);
    auto f = flags(c.n, c.flagged);
    for (long i : c.flagged) y[i] = 1e300;  // never read
    const auto b = ols(y, f, 2, lineDesign, 0);
    double cc = 0, tc = 0;
    std::vector<double> res(c.n);
    ASSERT_EQ(ztsrdmy(y.data(), f.data(), c.n, 0, &cc, &tc, nullptr, nullptr, res.data()), 0);
    EXPECT_NEAR(cc, b[0], kTol) << c.n;
    EXPECT_NEAR(tc, b[1], kTol) << c.n;
    for (long i = 0; i < c.n; ++i) {
      if (f[i]) {
        EXPECT_EQ(wzmis(res[i]), 1);
      } else {
        EXPECT_NEAR(res[i], y[i] - b[0] - b[1] * tOf(i), kTol);
      }
    }
  }
}

TEST(RegressionOnTime, ThroughTheOriginWithoutConstant) {
  const std::vector<double> y = {2.0, 3.0, 7.0};
  const std::vector<char> f = {0, 0, 0};
  double tc = 0;
  ASSERT_EQ(ztsrdmy(y.data(), f.data(), 3, 0, nullptr, &tc, nullptr, nullptr, nullptr), 0);
  EXPECT_NEAR(tc, (2.0 + 6.0 + 21.0) / 14.0, 1e-15);  // sum y t / sum t^2
}

TEST(RegressionOnTime, SingleUsableValueGivesFlatLine) {
  const std::vector<double> y = {0, 5.5, 0, 0};
  const std::vector<char> f = {1, 0, 1, 1};
  double cc = 0, tc = 0;
  ASSERT_EQ(ztsrdmy(y.data(), f.data(), 4, 0, &cc, &tc, nullptr, nullptr, nullptr), 0);
  EXPECT_EQ(cc, 5.5);
  EXPECT_EQ(tc, 0.0);
}

TEST(RegressionOnTime, ConstantOnly) {
  const std::vector<double> y = {1, 2, 99, 5};
  const std::vector<char> f = {0, 0, 1, 0};
  double cc = 0;
  ASSERT_EQ(ztsrdmy(y.data(), f.data(), 4, 0, &cc, nullptr, nullptr, nullptr, nullptr), 0);
  EXPECT_DOUBLE_EQ(cc, 8.0 / 3.0);
}

TEST(SeasonalDummies, MeansCentredOnTheOverallMean) {
  const long n = 14;
  const int ns = 4;
  auto y = series(n, ns);
  auto f = flags(n, {2, 9});
  double cc = 0, sd[ns];
  ASSERT_EQ(ztsrdmy(y.data(), f.data(), n, ns, &cc, nullptr, nullptr, sd, nullptr), 0);
  double all = 0, cnt = 0;
  double sum[ns] = {}, m[ns] = {};
  for (long i = 0; i < n; ++i) {
    if (f[i]) continue;
    all += y[i];
    cnt += 1;
    sum[i % ns] += y[i];
    m[i % ns] += 1;
  }
  EXPECT_NEAR(cc, all / cnt, kTol);
  for (int s = 0; s < ns; ++s) EXPECT_NEAR(sd[s], sum[s] / m[s] - all / cnt, kTol) << s;
  // Without the constant: the plain means.
  ASSERT_EQ(ztsrdmy(y.data(), f.data(), n, ns, nullptr, nullptr, nullptr, sd, nullptr), 0);
  for (int s = 0; s < ns; ++s) EXPECT_NEAR(sd[s], sum[s] / m[s], kTol) << s;
}

TEST(TrendAndDummies, MatchLeastSquaresWithFlags) {
  struct Case { long n; int ns; std::initializer_list<long> flagged; };
  for (const Case& c : {Case{12, 4, {}}, Case{15, 4, {}}, Case{15, 4, {0, 7, 14}}, Case{29, 7, {3, 4, 5, 20}},
                        Case{9, 3, {8}}}) {
    auto y = series(c.n, c.ns);
    auto f = flags(c.n, c.flagged);
    const auto b = ols(y, f, 1 + c.ns, trendDummyDesign, c.ns);
    double cc = 0, tc = 0;
    std::vector<double> sd(c.ns), res(c.n);
    ASSERT_EQ(ztsrdmy(y.data(), f.data(), c.n, c.ns, &cc, &tc, nullptr, sd.data(), res.data()), 0) << c.n;
    EXPECT_NEAR(tc, b[0], kTol) << c.n;
    double mean = 0;
    for (int s = 0; s < c.ns; ++s) mean += b[1 + s] / c.ns;
    EXPECT_NEAR(cc, mean, kTol) << c.n;
    double total = 0;
    for (int s = 0; s < c.ns; ++s) {
      EXPECT_NEAR(sd[s], b[1 + s] - mean, kTol) << c.n << " season " << s;
      total += sd[s];
    }
    EXPECT_NEAR(total, 0.0, kTol);
    for (long i = 0; i < c.n; ++i)
      if (!f[i]) {
        EXPECT_NEAR(res[i], y[i] - b[0] * tOf(i) - b[1 + i % c.ns], kTol);
      }
    // Without the constant the terms are the dummy coefficients themselves.
    ASSERT_EQ(ztsrdmy(y.data(), f.data(), c.n, c.ns, nullptr, &tc, nullptr, sd.data(), nullptr), 0);
    for (int s = 0; s < c.ns; ++s) EXPECT_NEAR(sd[s], b[1 + s], kTol);
  }
}

TEST(TrendAndDummies, EmptySeasonIsMissingAndCentringDividesByAllSeasons) {
  const long n = 12;
  const int ns = 4;
  auto y = series(n, ns);
  auto f = flags(n, {1, 5, 9});  // season 1 has no usable value
  // Least squares on the three seasons that remain: t, then dummies of
  // seasons 0, 2 and 3 in columns 1, 2, 3.
  const auto b = ols(y, f, 4, [](long i, int k) {
    Row r(4, 0.0L);
    r[0] = i + 1;
    const long s = i % k;
    if (s != 1) r[s == 0 ? 1 : s] = 1.0L;
    return r;
  }, ns);
  double cc = 0, tc = 0, sd[ns];
  ASSERT_EQ(ztsrdmy(y.data(), f.data(), n, ns, &cc, &tc, nullptr, sd, nullptr), 1);
  EXPECT_EQ(wzmis(sd[1]), 1);
  EXPECT_NEAR(tc, b[0], kTol);
  const double sumNonEmpty = b[1] + b[2] + b[3];
  EXPECT_NEAR(cc, sumNonEmpty / 4.0, kTol);  // divided by ns, not by 3
  EXPECT_NEAR(sd[0], b[1] - sumNonEmpty / 4.0, kTol);
  EXPECT_NEAR(sd[2], b[2] - sumNonEmpty / 4.0, kTol);
  EXPECT_NEAR(sd[3], b[3] - sumNonEmpty / 4.0, kTol);
  EXPECT_GT(std::fabs(sd[0] + sd[2] + sd[3]), 1e-3);  // they do not sum to 0
}

TEST(TrendAndDummies, ExactSeriesIsRecovered) {
  // y = 4 + 0.5 t + s_k with s = (2, -1, -1): every coefficient is exact.
  const double s[] = {2, -1, -1};
  std::vector<double> y(10);
  for (long i = 0; i < 10; ++i) y[i] = 4 + 0.5 * tOf(i) + s[i % 3];
  const std::vector<char> f(10, 0);
  double cc = 0, tc = 0, sd[3];
  ASSERT_EQ(ztsrdmy(y.data(), f.data(), 10, 3, &cc, &tc, nullptr, sd, nullptr), 0);
  EXPECT_NEAR(cc, 4.0, 1e-12);
  EXPECT_NEAR(tc, 0.5, 1e-13);
  for (int k = 0; k < 3; ++k) EXPECT_NEAR(sd[k], s[k], 1e-12);
}

TEST(TrendAndDummies, ConstantSeriesHasNoTrendAndZeroTerms) {
  const std::vector<double> y(11, 7.25);
  const std::vector<char> f(11, 0);
  double cc = 0, tc = 0, sd[4];
  ASSERT_EQ(ztsrdmy(y.data(), f.data(), 11, 4, &cc, &tc, nullptr, sd, nullptr), 0);
  EXPECT_NEAR(cc, 7.25, 1e-13);
  EXPECT_NEAR(tc, 0.0, 1e-14);
  for (double v : sd) EXPECT_NEAR(v, 0.0, 1e-13);
}

TEST(LessThanACycle, EachValueIsItsOwnTerm) {
  const std::vector<double> y = {3, 9, 1e300, 6};
  const std::vector<char> f = {0, 0, 1, 0};
  double cc = 0, tc = 9, sd[5];
  ASSERT_EQ(ztsrdmy(y.data(), f.data(), 4, 5, &cc, &tc, nullptr, sd, nullptr), 1);
  EXPECT_EQ(cc, 6.0);
  EXPECT_EQ(tc, 0.0);
  EXPECT_EQ(sd[0], -3.0);
  EXPECT_EQ(sd[1], 3.0);
  EXPECT_EQ(wzmis(sd[2]), 1);
  EXPECT_EQ(sd[3], 0.0);
  EXPECT_EQ(wzmis(sd[4]), 1);
  // n = ns: the same rule.
  double sd4[4];
  ASSERT_EQ(ztsrdmy(y.data(), f.data(), 4, 4, nullptr, nullptr, nullptr, sd4, nullptr), 1);
  EXPECT_EQ(sd4[0], 3.0);
  EXPECT_EQ(sd4[3], 6.0);
}

TEST(OneValueASeason, FlagsLeaveSingletons) {
  // ns 3, n 6, flags leave one value in each season: the values are the terms.
  const std::vector<double> y = {1, 2, 3, 4, 5, 6};
  const std::vector<char> f = {1, 0, 1, 0, 1, 0};  // usable: t = 2 (s1), 4 (s0), 6 (s2)
  double cc = 0, tc = 7, sd[3];
  ASSERT_EQ(ztsrdmy(y.data(), f.data(), 6, 3, &cc, &tc, nullptr, sd, nullptr), 1);
  EXPECT_EQ(tc, 0.0);
  EXPECT_EQ(cc, 4.0);
  EXPECT_EQ(sd[0], 0.0);
  EXPECT_EQ(sd[1], -2.0);
  EXPECT_EQ(sd[2], 2.0);
}

TEST(Dummies, TwoSeasonsLeaveSeasonalTermsOut) {
  auto y = series(10, 2);
  const std::vector<char> f(10, 0);
  const auto b = ols(y, f, 2, lineDesign, 0);
  double cc = 0, tc = 0, sd[2] = {1, 1};
  ASSERT_EQ(ztsrdmy(y.data(), f.data(), 10, 2, &cc, &tc, nullptr, sd, nullptr), 0);
  EXPECT_EQ(wzmis(sd[0]), 1);
  EXPECT_EQ(wzmis(sd[1]), 1);
  EXPECT_NEAR(cc, b[0], kTol);
  EXPECT_NEAR(tc, b[1], kTol);
}

TEST(Dummies, Failures) {
  const std::vector<double> y = {1, 2, 3};
  const std::vector<char> ok = {0, 0, 0};
  const std::vector<char> none = {1, 1, 1};
  double cc = 5, tc = 5, sd[3] = {5, 5, 5};
  EXPECT_EQ(ztsrdmy(y.data(), ok.data(), 3, 3, nullptr, nullptr, nullptr, nullptr, nullptr), -3);
  EXPECT_EQ(ztsrdmy(y.data(), ok.data(), 1, 0, &cc, &tc, nullptr, nullptr, nullptr), -2);
  EXPECT_EQ(wzmis(cc), 1);  // outputs are set to missing first
  EXPECT_EQ(wzmis(tc), 1);
  EXPECT_EQ(ztsrdmy(y.data(), none.data(), 3, 0, &cc, &tc, nullptr, nullptr, nullptr), -2);
  EXPECT_EQ(ztsrdmy(y.data(), none.data(), 3, 3, &cc, nullptr, nullptr, sd, nullptr), -2);
  EXPECT_EQ(wzmis(sd[0]), 1);
  std::vector<double> y8 = series(8, 4);
  std::vector<char> none8(8, 1);
  double sd4[4];
  EXPECT_EQ(ztsrdmy(y8.data(), none8.data(), 8, 4, &cc, &tc, nullptr, sd4, nullptr), -2);
  EXPECT_EQ(ztsrdmy(y8.data(), none8.data(), 8, 4, &cc, nullptr, nullptr, sd4, nullptr), -2);
}

TEST(Quadratic, MatchesLeastSquares) {
  auto y = series(25, 4);
  for (long i = 0; i < 25; ++i) y[i] += 0.03 * tOf(i) * tOf(i);
  auto f = flags(25, {4, 17});
  const auto b = ols(y, f, 3, quadDesign, 0);
  double cc = 0, tc = 0, qc = 0;
  ASSERT_EQ(ztsrdmy(y.data(), f.data(), 25, 0, &cc, &tc, &qc, nullptr, nullptr), 0);
  EXPECT_NEAR(cc, b[0], 1e-8);
  EXPECT_NEAR(tc, b[1], 1e-9);
  EXPECT_NEAR(qc, b[2], 1e-10);
  // With seasons partialled out.
  const auto bs = ols(y, f, 2 + 4, quadDummyDesign, 4);
  double sd[4];
  ASSERT_EQ(ztsrdmy(y.data(), f.data(), 25, 4, nullptr, &tc, &qc, sd, nullptr), 0);
  EXPECT_NEAR(tc, bs[0], 1e-9);
  EXPECT_NEAR(qc, bs[1], 1e-10);
  for (int s = 0; s < 4; ++s) EXPECT_NEAR(sd[s], bs[2 + s], 1e-8);
  // A quadratic term without the linear one has no regression.
  EXPECT_EQ(ztsrdmy(y.data(), f.data(), 25, 0, &cc, nullptr, &qc, nullptr, nullptr), -3);
}

// ------------------------------------------------------ multiplicative

// (a + b t) S_s exactly, with factors S averaging 1.
std::vector<double> multSeries(long n, double a, double b, const std::vector<double>& s) {
  std::vector<double> y(n);
  for (long i = 0; i < n; ++i) y[i] = (a + b * tOf(i)) * s[i % s.size()];
  return y;
}

TEST(MultiplicativeFactors, ExactSeriesIsRecovered) {
  const std::vector<double> s = {1.2, 0.7, 1.3, 0.8};
  struct Case { long n; std::initializer_list<long> flagged; };
  for (const Case& c : {Case{12, {}}, Case{14, {}}, Case{19, {0, 6, 13}}}) {
    auto y = multSeries(c.n, 50.0, 2.0, s);
    auto f = flags(c.n, c.flagged);
    double cc = 0, tc = 0, sd[4];
    std::vector<double> res(c.n);
    ASSERT_EQ(ztsrsdm(y.data(), f.data(), c.n, 4, &cc, &tc, sd, res.data()), 0) << c.n;
    // Each season's line is (a S_s) + (b S_s) t: the trend and constant
    // average to b and a, and the factors come back.
    EXPECT_NEAR(tc, 2.0, 1e-10);
    EXPECT_NEAR(cc, 50.0, 1e-9);
    for (int k = 0; k < 4; ++k) EXPECT_NEAR(sd[k], s[k], 1e-12) << k;
    for (long i = 0; i < c.n; ++i)
      if (!f[i]) {
        EXPECT_NEAR(res[i], 0.0, 1e-9);
      }
    // Without the trend the factors are the same (their scale is normalised away).
    ASSERT_EQ(ztsrsdm(y.data(), f.data(), c.n, 4, &cc, nullptr, sd, nullptr), 0);
    for (int k = 0; k < 4; ++k) EXPECT_NEAR(sd[k], s[k], 1e-12) << k;
  }
}

TEST(MultiplicativeFactors, AgreeWithPerSeasonLeastSquares) {
  const long n = 22;
  const int ns = 3;
  auto y = series(n, ns);
  auto f = flags(n, {2, 10});
  // Per-season lines by least squares on that season's usable points.
  double slope[ns], icpt[ns];
  for (int k = 0; k < ns; ++k) {
    std::vector<double> yk;
    std::vector<char> fk;
    std::vector<long> tk;
    long double st = 0, sy = 0, stt = 0, sty = 0, m = 0;
    for (long i = k; i < n; i += ns) {
      if (f[i]) continue;
      const long double t = i + 1;
      st += t;
      sy += y[i];
      stt += t * t;
      sty += t * y[i];
      m += 1;
    }
    slope[k] = static_cast<double>((m * sty - st * sy) / (m * stt - st * st));
    icpt[k] = static_cast<double>((sy - slope[k] * st) / m);
  }
  const double tt = (slope[0] + slope[1] + slope[2]) / 3;
  const double cc0 = (icpt[0] + icpt[1] + icpt[2]) / 3;
  double raw[ns], g = 0;
  for (int k = 0; k < ns; ++k) {
    raw[k] = (slope[k] + icpt[k]) / (tt + cc0);
    g += raw[k] / ns;
  }
  double cc = 0, tc = 0, sd[ns];
  ASSERT_EQ(ztsrsdm(y.data(), f.data(), n, ns, &cc, &tc, sd, nullptr), 0);
  EXPECT_NEAR(tc, tt, 1e-10);
  EXPECT_NEAR(cc, cc0, 1e-10);
  for (int k = 0; k < ns; ++k) EXPECT_NEAR(sd[k], raw[k] / g, 1e-12) << k;
}

TEST(MultiplicativeFactors, NonPositiveFactorIsRepaired) {
  // Season 0 at t = 1, 3, 5: -10, 0, 10 (slope 5, intercept -15, line at 1: -10).
  // Season 1 at t = 2, 4, 6: 20 each (slope 0, intercept 20).
  // T = 2.5, C = 2.5, D = 5: raw factors -2 and 4. The first repair,
  // intercept / C = -6, is no nearer to 1; the second, slope / T = 2, is.
  // The factors 2 and 4 then average 3: 2/3 and 4/3.
  const std::vector<double> y = {-10, 20, 0, 20, 10, 20};
  const std::vector<char> f(6, 0);
  double cc = 0, tc = 0, sd[2];
  ASSERT_EQ(ztsrsdm(y.data(), f.data(), 6, 2, &cc, &tc, sd, nullptr), 0);
  EXPECT_NEAR(tc, 2.5, 1e-14);
  EXPECT_NEAR(cc, 2.5, 1e-14);
  EXPECT_NEAR(sd[0], 2.0 / 3.0, 1e-14);
  EXPECT_NEAR(sd[1], 4.0 / 3.0, 1e-14);
}

TEST(MultiplicativeFactors, UnrepairableFactorTakesTheSmallestPositiveOneAtMostOne) {
  // Season 0: -10 at t = 1, 4, 7 (slope 0, intercept -10).
  // Season 1: 30, 0, -30 at t = 2, 5, 8 (slope -10, intercept 50, line at 1: 40).
  // Season 2: 60, 30, 0 at t = 3, 6, 9 (slope -10, intercept 90, line at 1: 80).
  // T = -20/3, C = 130/3, D = 110/3: raw factors -30/110, 120/110, 240/110.
  // Repairs of season 0: intercept / C = -30/130 is nearer to 1 and taken;
  // slope / T = 0 is nearer still and taken; mean n / (st T + n C)
  // = -30 / (12 (-20/3) + 130) = -0.6 is not. 0 is still not positive, so the
  // season takes the smallest positive factor capped at 1, that is 1.
  // 1, 120/110, 240/110 average 470/330: the factors are 330/470, 360/470, 720/470.
  const std::vector<double> y = {-10, 30, 60, -10, 0, 30, -10, -30, 0};
  const std::vector<char> f(9, 0);
  double cc = 0, tc = 0, sd[3];
  ASSERT_EQ(ztsrsdm(y.data(), f.data(), 9, 3, &cc, &tc, sd, nullptr), 0);
  EXPECT_NEAR(tc, -20.0 / 3.0, 1e-13);
  EXPECT_NEAR(cc, 130.0 / 3.0, 1e-12);
  EXPECT_NEAR(sd[0], 330.0 / 470.0, 1e-13);
  EXPECT_NEAR(sd[1], 360.0 / 470.0, 1e-13);
  EXPECT_NEAR(sd[2], 720.0 / 470.0, 1e-13);
}

TEST(MultiplicativeFactors, LessThanACycleGivesValuesOverTheMean) {
  const std::vector<double> y = {2, 6, 4};
  const std::vector<char> f = {0, 0, 0};
  double cc = 0, tc = 9, sd[4];
  ASSERT_EQ(ztsrsdm(y.data(), f.data(), 3, 4, &cc, &tc, sd, nullptr), 0);
  EXPECT_EQ(cc, 4.0);
  EXPECT_EQ(tc, 0.0);
  EXPECT_EQ(sd[0], 0.5);
  EXPECT_EQ(sd[1], 1.5);
  EXPECT_EQ(sd[2], 1.0);
  EXPECT_EQ(wzmis(sd[3]), 1);
  // n = ns.
  double sd3[3];
  ASSERT_EQ(ztsrsdm(y.data(), f.data(), 3, 3, &cc, nullptr, sd3, nullptr), 0);
  EXPECT_EQ(sd3[1], 1.5);
}

TEST(MultiplicativeFactors, EdgeCases) {
  const std::vector<double> y = {8, 1, 2};
  const std::vector<char> f = {0, 0, 0};
  double cc = 0, tc = 0, sd[2] = {0, 0};
  // One element.
  ASSERT_EQ(ztsrsdm(y.data(), f.data(), 1, 2, &cc, &tc, sd, nullptr), 0);
  EXPECT_EQ(cc, 8.0);
  EXPECT_EQ(tc, 0.0);
  EXPECT_EQ(sd[0], 1.0);
  EXPECT_EQ(sd[1], 1.0);
  ASSERT_EQ(ztsrsdm(y.data(), f.data(), 1, 2, nullptr, &tc, nullptr, nullptr), 0);
  EXPECT_EQ(tc, 8.0);
  // Nothing usable.
  const std::vector<char> none(6, 1);
  auto y6 = multSeries(6, 1, 1, {1, 1});
  cc = 5;
  EXPECT_EQ(ztsrsdm(y6.data(), none.data(), 6, 2, &cc, &tc, sd, nullptr), -2);
  EXPECT_EQ(cc, 5.0);  // nothing written before a success
  // An empty season: rc 1 and its factor missing.
  auto y8 = multSeries(8, 10, 1, {1.1, 0.9, 1.0, 1.0});
  auto f8 = flags(8, {2, 6});
  double sd4[4];
  ASSERT_EQ(ztsrsdm(y8.data(), f8.data(), 8, 4, &cc, &tc, sd4, nullptr), 1);
  EXPECT_EQ(wzmis(sd4[2]), 1);
  EXPECT_NEAR((sd4[0] + sd4[1] + sd4[3]) / 3, 1.0, 1e-14);
}

}  // namespace
}  // namespace qvt
