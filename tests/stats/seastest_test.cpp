// Seasonality test: the closed-form GLS against dense matrices solved in long
// double, the helpers on hand-worked series, the argument checks at each
// boundary, and the verdict on series whose answer is known.
#include "stats/seastest.hpp"

#include "dense_oracle.hpp"

#include <gmock/gmock.h>

namespace qvt {
namespace {

using namespace testing_dense;

double unif(std::uint64_t& s) {  // Knuth's MMIX LCG, top 53 bits: the same series everywhere
  s = s * 6364136223846793005ULL + 1442695040888963407ULL;
  return static_cast<double>(s >> 11) * 0x1p-53;
}

TEST(SeasonalGls, MatchesDenseGls) {
  // Every pair (t, u) of T (b on the diagonal but 1 at both ends, c = -phi
  // beside it) adds to A = X'TX and R = X'Tz', a missing z[u] taking its
  // season's mean; [A | I | R] is solved for iA and B. The statistic comes
  // another way: a Wald test of a linear restriction in GLS is the rise of
  // the weighted residual sum of squares, here from one mean to m:
  // Q = R'B - (1'R)^2 / 1'A1; fstat = Q / (1 - phi^2). Cases: last 0, 1, >= 2,
  // a missing first (n 14, 21) and last (n 13, 20) element.
  struct Case { long n, m; double phi; };
  const Case cases[] = {{12, 2, 0.55}, {13, 2, -0.4}, {12, 3, 0.55}, {13, 3, 0.0}, {14, 3, -0.4},
                        {20, 5, 0.55}, {21, 5, 0.3},  {23, 5, -0.7}, {9, 4, 0.9}};
  for (const Case& k : cases) {
    SCOPED_TRACE(::testing::Message() << "n " << k.n << " m " << k.m << " phi " << k.phi);
    std::uint64_t seed = static_cast<std::uint64_t>(k.n * 31 + k.m);
    const long m = k.m;
    std::vector<double> z(k.n), S(m, 0.0), cnt(m, 0.0);
    for (long t = 0; t < k.n; ++t) {
      z[t] = (3 * t + k.n) % 7 == 0 ? kM : 1.5 * static_cast<double>(t % m) + unif(seed);
      if (!wzmis(z[t])) S[t % m] += z[t], cnt[t % m] += 1.0;
    }
    for (long i = 0; i < m; ++i) S[i] /= cnt[i];
    const long double c = -k.phi, b = 1.0L + c * c;
    long double q = 0.0L, sumA = 0.0L, sumR = 0.0L;
    std::vector<LRow> a(m, LRow(2 * m + 1, 0.0L));
    for (long i = 0; i < m; ++i) a[i][m + i] = 1.0L;
    for (long t = 0; t < k.n; ++t) {
      for (long u = std::max(t - 1, 0L); u <= std::min(t + 1, k.n - 1); ++u) {
        const long double w = t != u ? c : t == 0 || t == k.n - 1 ? 1.0L : b;
        a[t % m][u % m] += w;
        a[t % m][2 * m] += w * (wzmis(z[u]) ? S[u % m] : z[u]);
        sumA += w;
      }
    }
    const auto s = gaussJordan(a);  // s[i][0..m-1] = iA, s[i][m] = B
    for (long i = 0; i < m; ++i) q += a[i][2 * m] * s[i][m], sumR += a[i][2 * m];
    q -= sumR * sumR / sumA;
    std::vector<double> B(m), work(m * (3 * m + 1) / 2);
    double fstat = kM, phi[2] = {0.0, k.phi};
    ASSERT_EQ(getsgls(z.data(), k.n, m, phi, S.data(), 1e-10, B.data(), work.data(), &fstat), 0);
    for (long i = 0; i < m; ++i) expectRel(B[i], s[i][m], 1e-11, "B", static_cast<double>(i));
    expectRel(fstat, q / (1.0L - k.phi * k.phi), 1e-9, "fstat", 0);
  }
}

TEST(SeasonalGls, RejectedArgumentsLeaveOutputs) {
  // {n, m, code}; phi = 1 with -99: T 1 = 0 makes T, and so A = X'TX, singular.
  const long cases[][3] = {{-1, 3, -11}, {5, 1, -14}, {4, 4, -14}, {9, 2, -99}, {10, 4, -99}};
  const std::vector<double> z(10, 1.0), S(4, 1.0);
  for (const auto& k : cases) {
    std::vector<double> B(4, 7.0), work(26);
    double fstat = 7.0, phi[2] = {0.0, k[2] == -99 ? 1.0 : 0.0};
    EXPECT_EQ(getsgls(z.data(), k[0], k[1], phi, S.data(), 1e-8, B.data(), work.data(), &fstat), k[2]);
    EXPECT_EQ(B, std::vector<double>(4, fstat));  // and fstat still 7
  }
}

TEST(SeasonalityHelpers, HandWorkedSeries) {
  // By hand (checked in Python): zbar = 27/6 = 4.5, SS = 17.5; lag 1 skips 4
  // pairs, r = -6.25; lag 2 skips 3, r = -1.75; rho[h] = r / (SS / ((8 - mh) / 6)).
  // AR(1) 1.5 + 0.5 z: residuals 2.5, 3.5, -2 at t = 1, 4, 5, five elements
  // without one: 22.5 / (8 - 5 - 1). AR(2) 1 + 0.5 z1 - 0.25 z2: only t = 5
  // (-0.5) is left, k = 0: the plain sum. Yule-Walker AR(2) of rho 0.5, 0.1:
  // phi1 = rho1 (1 - rho2) / (1 - rho1^2) = 0.6, phi2 = (rho2 - rho1^2) / (1 - rho1^2)
  // = -0.2, constant (1 - 0.6 + 0.2) 10.
  // Powers of 2 are their own differences: three passes at lag 1 leave
  // {1, 2, kM, kM, kM, kM, 64}, the gap growing by one a pass: 2 + 3 + 4 missing.
  const double z[] = {2, 5, kM, 4, 7, 3, kM, 6}, flat[] = {3, 3, kM, 3, 3}, zero[] = {0, 0, 0, 0};
  const double ar1[] = {1.5, 0.5}, ar2[] = {1.0, 0.5, -0.25};
  double rho[3], b[3], r2[] = {1, 0.5, 0.1}, phi[3], d[] = {1, 2, 4, 8, 16, kM, 64, 128, 256, 512};
  const int lags[] = {1, 1, 1};
  long nmiss = 0;
  ASSERT_EQ(getrho(z, 8, getmu(z, 8), rho, 2, 1e-8), 0);
  EXPECT_DOUBLE_EQ(rho[1], -0.23809523809523808);
  EXPECT_DOUBLE_EQ(rho[2], -0.08333333333333333);
  EXPECT_DOUBLE_EQ(getmse(z, 8, ar1, 1), 11.25);
  EXPECT_DOUBLE_EQ(getmse(z, 8, ar2, 2), 0.25);
  EXPECT_EQ(getrho(flat, 5, 3.0, rho, 1, 1e-8), -15);
  EXPECT_EQ(getrho(zero, 4, 0.0, rho, 1, 1e-8), -10);
  ASSERT_EQ(getphi(10.0, 2, r2, phi, 1e-8), 0);
  EXPECT_THAT(phi, ::testing::Pointwise(::testing::DoubleNear(1e-12), std::vector<double>{6, 0.6, -0.2}));
  EXPECT_EQ(gettsd(d, 10, lags, 3, &nmiss), 7);
  EXPECT_EQ(std::vector<double>({static_cast<double>(nmiss), d[1], d[6]}), (std::vector<double>{9, 2, 64}));
  EXPECT_EQ(getsmu(z, -1, 3, b), -11);
  EXPECT_EQ(getsres(rho, 3, 0, b), -14);
}

TEST(SeasonalityTest, Verdicts) {
  // aic: the criteria and p-value that the answer is reached with, from
  // oracle/seastest_aic.py (standard library only), which generates the
  // same series, writes out every step's definition with the GLS by dense
  // matrices and Gauss-Jordan, and takes the F tail by Simpson's rule with
  // 800000 panels; missing entries are not written.
  struct Case { std::string name; long n; std::vector<int> lags; int p, m, want; std::vector<double> aic; };
  const Case cases[] = {
      {"constant", 24, {}, 1, 4, 0, {}},
      {"repeats each cycle", 25, {}, 1, 5, 1, {35.80632859953009}},
      {"one season only", 25, {}, 1, 4, -11, {}},  // no two neighbours: no AR residual
      {"one season of one", 24, {}, 1, 1, 0, {-56.848689474721354}},
      {"seasonal", 48, {}, 1, 12, 1, {42.43857533521755, -99.76307618695701, 5.199524775570641e-33}},
      {"white noise", 60, {}, 1, 12, 0, {-141.84447807856932, -131.33510125816088, 0.5153197695748896}},
      {"52 seasons, no AR", 120, {}, 5, 52, 0, {-291.91014267458667, -245.0304958025194, 0.825849876711935}},
      {"gaps", 20, {}, 1, 5, 1, {34.530436495062176, -51.71491410364186, 2.027971982413313e-08}},
      {"gaps", 20, {1}, 1, 5, -11, {}},  // 13 missing differences, 17 left
      {"empty season", 40, {}, 1, 5, 1, {23.833659825847686, -107.19183773978271, 3.653715146669899e-26}},
      {"trend", 40, {1}, 1, 5, 1, {87.2608229647769, -72.4599597467536, 1.0219935821382437e-33}},
  };
  for (const Case& k : cases) {
    SCOPED_TRACE(k.name);
    std::uint64_t seed = 99;
    std::vector<double> x(k.n);
    for (long t = 0; t < k.n; ++t) {
      const double pattern[] = {3, -1, 4, 1.5, -2}, noise = unif(seed) - 0.5;
      x[t] = k.name == "constant" ? 5.0 : k.name == "repeats each cycle" ? pattern[t % 5] : noise;
      if (k.name == "one season only" && t % 4 != 0) x[t] = kM;
      if (k.name == "seasonal") x[t] += 4 * std::sin(0.5236 * static_cast<double>(t));
      if (k.name == "gaps") x[t] = t % 3 == 1 ? kM : x[t] + pattern[t % 5];
      if (k.name == "empty season") x[t] = t % 5 == 2 ? kM : x[t] + pattern[t % 5];
      if (k.name == "trend") x[t] += pattern[t % 5] + 0.5 * static_cast<double>(t);
    }
    double aic[3] = {kM, kM, kM};
    const int nd = static_cast<int>(k.lags.size());
    EXPECT_EQ(zssntst(x.data(), k.n, k.lags.data(), nd, k.p, k.m, 1e-8, 0.05, aic), k.want);
    for (std::size_t i = 0; i < 3; ++i)  // -1 stands for "not written"
      expectRel(wzmis(aic[i]) ? -1.0 : aic[i], i < k.aic.size() ? k.aic[i] : -1.0, 1e-9, "aic", 0);
  }
}

TEST(SeasonalityTest, ArgumentChecksInOrder) {
  // n - 6 bounds the lags and lags + nseas, n - 7 adds p.
  struct Case { long n; std::vector<int> lags; int p, nseas; long want; };
  const Case cases[] = {{5, {}, 0, 0, -11}, {6, {}, 0, 1, -14}, {7, {}, 1, 1, -13}, {20, {0}, 1, 4, -12},
                        {20, {1, 14}, 0, 0, -12}, {20, {1, 13}, 0, 0, -13}, {20, {2}, 0, 12, -13},
                        {20, {2}, 0, 13, -14}, {20, {2}, 0, -1, -14}, {20, {2}, -1, 4, -13},
                        {60, {}, -1, 52, -13}, {20, {1, 1}, 2, 9, 13}};
  for (const Case& k : cases)
    EXPECT_EQ(improper(k.n, k.lags.data(), static_cast<int>(k.lags.size()), k.p, k.nseas), k.want) << k.n;
}

}  // namespace
}  // namespace qvt
