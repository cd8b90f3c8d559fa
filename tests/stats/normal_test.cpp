// The normal distribution against 80-bit long double references of the C
// library (erfl, erfcl, solved by Newton's method for the quantile) and
// against values of Abramowitz & Stegun, Table 7.1 and 26.1.

#include "dense_oracle.hpp"

namespace qvt {
namespace {

using namespace testing_dense;

constexpr long double kSqrt2L = 1.414213562373095048801688724209698L;

long double upperTailL(long double x) { return 0.5L * std::erfc(x / kSqrt2L); }
long double densityL(long double x) { return std::exp(-0.5L * x * x) / std::sqrt(2.0L * kPiL); }

TEST(Calerf, PublishedValues) {
  // Abramowitz & Stegun Table 7.1 and their complements.
  struct Case { double x; double erf; double erfc; };
  const Case cases[] = {
      {0.0, 0.0, 1.0},
      {0.1, 0.1124629160182849, 0.8875370839817151},
      {0.5, 0.5204998778130465, 0.4795001221869535},
      {1.0, 0.8427007929497149, 0.1572992070502851},
      {2.0, 0.9953222650189527, 0.004677734981047266},
      {3.0, 0.9999779095030014, 2.209049699858544e-05},
  };
  for (const auto& c : cases) {
    expectRel(zferf(c.x), c.erf, 1e-14, "erf", c.x);
    expectRel(zferfc(c.x), c.erfc, 1e-14, "erfc", c.x);
    expectRel(zferf(-c.x), -c.erf, 1e-14, "erf(-x)", c.x);
    expectRel(zferfc(-c.x), 2.0L - c.erfc, 1e-14, "erfc(-x)", c.x);
  }
}

TEST(Calerf, AgreesWithLongDoubleAcrossAllThreeRanges) {
  // Both sides of the breaks at 0.46875 and 4, and the far tail.
  for (double x = -6.0; x <= 26.5; x += 0.0625 * 1.7) {
    expectRel(zferfc(x), std::erfc(static_cast<long double>(x)), 1e-13, "erfc", x);
    expectRel(zferf(x), std::erf(static_cast<long double>(x)), 1e-14, "erf", x);
  }
  for (double x : {0.46875, 0.46876, 3.99999, 4.0, 4.00001, 1e-9, 1e-300}) {
    expectRel(zferfc(x), std::erfc(static_cast<long double>(x)), 1e-14, "erfc at break", x);
    expectRel(zferf(x), std::erf(static_cast<long double>(x)), 1e-14, "erf at break", x);
  }
}

TEST(Calerf, Limits) {
  // erfc underflows from -x^2 < -708.3964185 on, and beyond 1003.78 both
  // functions are at their limits.
  struct Case { double x; double erf; double erfc; };
  const Case cases[] = {
      {27.0, 1.0, 0.0}, {1003.0, 1.0, 0.0}, {1e4, 1.0, 0.0}, {1e300, 1.0, 0.0},
      {-27.0, -1.0, 2.0}, {-1e4, -1.0, 2.0}, {HUGE_VAL, 1.0, 0.0}, {-HUGE_VAL, -1.0, 2.0},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(zferf(c.x), c.erf) << c.x;
    EXPECT_EQ(zferfc(c.x), c.erfc) << c.x;
  }
  // Just inside the underflow bound the tail is still there.
  EXPECT_GT(zferfc(26.6), 0.0);
  // Missing stays missing, whatever the kind.
  for (double m : {kMissing, skMissVal('A'), skMissVal('_')}) {
    EXPECT_EQ(wzmis(zferf(m)), 1);
    EXPECT_EQ(wzmis(zferfc(m)), 1);
    EXPECT_EQ(wzmis(zprbnrm(m)), 1);
  }
}

TEST(Normal, DistributionFunctionPublishedValues) {
  // A&S Table 26.1 and well-known quantile points.
  struct Case { double x; double p; };
  const Case cases[] = {
      {0.0, 0.5},
      {1.0, 0.8413447460685429},
      {-1.0, 0.15865525393145705},
      {1.959963984540054, 0.975},
      {-1.959963984540054, 0.025},
      {-3.0, 0.0013498980316300946},
  };
  for (const auto& c : cases) expectRel(zprbnrm(c.x), c.p, 1e-14, "Phi", c.x);
}

TEST(Normal, DistributionFunctionTailsKeepRelativeAccuracy) {
  for (double x = -37.5; x <= 8.5; x += 0.37) {
    const long double want = x <= 0 ? upperTailL(-x) : 1.0L - upperTailL(x);
    expectRel(zprbnrm(x), want, 1e-13, "Phi", x);
  }
  EXPECT_EQ(zprbnrm(-40.0), 0.0);
  EXPECT_EQ(zprbnrm(40.0), 1.0);
}

// The quantile by Newton's method in long double. Each side solves for the
// smaller tail, and the centre for erf, so that the residual never cancels.
long double quantileL(long double p) {
  const long double q = p < 0.5L ? p : 1.0L - p;  // exact for a double p
  long double x = std::sqrt(-2.0L * std::log(q));  // upper quantile of q
  for (int i = 0; i < 100; ++i) {
    const long double f = x < 1.0L ? 0.5L * std::erf(x / kSqrt2L) - (0.5L - q)  // Phi(x) - (1 - q)
                                   : q - upperTailL(x);
    x -= f / densityL(x);
  }
  return p < 0.5L ? -x : x;
}

TEST(Probit, AgreesWithLongDoubleAcrossTheRange) {
  const double ps[] = {1e-15, 9.9e-17, 1e-14, 1e-10, 1e-6, 0.001, 0.0099, 0.01, 0.0101, 0.025,
                       0.1,   0.3,     0.45,  0.49,  0.4999999, 0.5000001, 0.51, 0.7, 0.9, 0.975,
                       0.99,  0.999,   0.999999, 1 - 1e-12};
  for (double p : ps) expectRel(zprobit(p), quantileL(p), 1e-13, "probit", p);
}

TEST(Probit, PublishedQuantiles) {
  struct Case { double p; double x; };
  const Case cases[] = {
      {0.975, 1.959963984540054}, {0.025, -1.959963984540054}, {0.95, 1.6448536269514722},
      {0.99, 2.3263478740408408}, {0.995, 2.5758293035489004},
  };
  for (const auto& c : cases) expectRel(zprobit(c.p), c.x, 1e-14, "probit", c.p);
}

TEST(Probit, FarLowerTailGoesByNewton) {
  // Below 1e-16: checked through the log of the tail, which long double
  // holds down to 1e-4900.
  for (double p : {1e-17, 1e-30, 1e-100, 1e-200, 1e-300, 1e-307}) {
    const double x = zprobit(p);
    const long double lt = std::log(upperTailL(-static_cast<long double>(x)));
    EXPECT_NEAR(static_cast<double>(lt), std::log(p), 1e-11 * std::fabs(std::log(p))) << p;
    expectRel(x, quantileL(p), 1e-12, "probit", p);
  }
}

TEST(Probit, Edges) {
  EXPECT_EQ(zprobit(0.5), 0.0);
  EXPECT_EQ(zprobit(0.0), -37.64030867301702);
  EXPECT_EQ(zprobit(1.0), 7.941345326170997);
  EXPECT_EQ(wzmis(zprobit(-0.1)), 1);
  EXPECT_EQ(wzmis(zprobit(1.5)), 1);
  EXPECT_EQ(wzmis(zprobit(kMissing)), 1);
  // Symmetry away from the Newton branch.
  for (double p : {0.001, 0.2, 0.4}) EXPECT_NEAR(zprobit(p), -zprobit(1.0 - p), 1e-15 * 4) << p;
}

TEST(MillsRatio, AgreesWithLongDouble) {
  // Direct branch below 5, continued fraction from 5 on.
  const double xs[] = {-9.9, -3.0, -0.5, 0.0, 1.0, 2.5, 4.999, 5.0, 5.5, 8.0, 20.0, 60.0, 100.0};
  for (double x : xs) {
    double r = 0.0;
    ASSERT_EQ(zmillsr(x, &r), 0) << x;
    expectRel(r, upperTailL(x) / densityL(x), 1e-13, "Mills", x);
  }
  double r = 0.0;
  ASSERT_EQ(zmillsr(0.0, &r), 0);
  expectRel(r, std::sqrt(kPiL / 2.0L), 1e-15, "Mills(0) = sqrt(pi/2)", 0.0);
  // Beyond long double's range: the asymptotic series
  // R(x) = 1/x - 1/x^3 + 3/x^5 - 15/x^7 + ..., whose next term is below 1e-22 at 1e3.
  ASSERT_EQ(zmillsr(1e3, &r), 0);
  expectRel(r, 1e-3L - 1e-9L + 3e-15L - 15e-21L, 1e-15, "Mills(1e3)", 1e3);
  ASSERT_EQ(zmillsr(1e10, &r), 0);
  expectRel(r, 1e-10L, 1e-15, "Mills(1e10)", 1e10);
}

TEST(MillsRatio, BelowMinusTenTheTailCountsAsOne) {
  for (double x : {-10.5, -20.0}) {
    double r = 0.0;
    ASSERT_EQ(zmillsr(x, &r), 0);
    expectRel(r, std::exp(0.5L * x * x) * std::sqrt(2.0L * kPiL), 1e-13, "Mills", x);
  }
}

TEST(LogNormalTails, AgreeWithLongDouble) {
  const double xs[] = {-1e3, -40.0, -6.0, -5.0, -4.9, -1.0, 0.0, 0.5, 4.9, 5.0, 9.0, 38.0, 1e3};
  for (double x : xs) {
    double lpl = 0.0, lpr = 0.0, ld = 0.0;
    ASSERT_EQ(zlognrm(x, &lpl, &lpr, &ld), 0) << x;
    const long double lx = x;
    const long double ldens = -0.5L * lx * lx - 0.5L * std::log(2.0L * kPiL);
    // log of the small tail from erfcl (long double reaches 1e-4900), and
    // the other as log1p of minus the small one.
    const long double small = std::log(upperTailL(std::fabs(lx)));
    const long double other = std::log1p(-std::exp(small));
    const long double wantL = x <= 0 ? small : other;
    const long double wantR = x <= 0 ? other : small;
    if (std::fabs(x) < 150) {  // erfcl underflows beyond
      expectRel(lpl, wantL, 1e-13, "ln lower tail", x);
      expectRel(lpr, wantR, 1e-13, "ln upper tail", x);
    }
    expectRel(ld, ldens, 1e-15, "ln density", x);
  }
  // Beyond long double's erfc: ln Q(x) = ln(Mills ratio) + ln density and the
  // ratio is 1/x (1 - 1/x^2 + ...), so ln Q(1e3) = -5e5 - ln(1e3) - ln sqrt(2 pi) - 1e-6 + ...
  double lpl = 0.0, lpr = 0.0, ld = 0.0;
  ASSERT_EQ(zlognrm(1e3, &lpl, &lpr, &ld), 0);
  expectRel(lpr, -5e5L - std::log(1e3L) - 0.5L * std::log(2.0L * kPiL) - 1e-6L, 1e-15, "ln Q(1e3)", 1e3);
  EXPECT_EQ(lpl, 0.0);
}

}  // namespace
}  // namespace qvt
