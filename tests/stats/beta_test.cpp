// Log-gamma, log-beta, the incomplete beta function and the F and t tails,
// against closed forms (factorials, a = 1 or b = 1, the arcsine law, the
// binomial sum for whole parameters, the t laws with 1 to 4 degrees of
// freedom) and against an independent power series evaluated in long double.

#include "dense_oracle.hpp"

#include <numbers>

namespace qvt {
namespace {

using namespace testing_dense;

TEST(LogGamma, AgreesWithLongDoubleLibrary) {
  // Whole and half arguments (factorials, Gamma(n + 1/2)) on both sides of
  // the switch at 15, and the zeros at 1 and 2.
  const double xs[] = {1e-300, 1e-20, 1e-5, 0.1, 0.3, 0.49, 0.5,  0.51, 0.9,  0.999999, 1.000001, 1.2,
                       1.49,   1.5,   1.51, 1.9,  1.9999999, 2.0000001, 2.3, 2.5, 2.7, 3.0, 3.3, 4.0, 5.5, 7.0,
                       7.77,   13.5,  14.0, 14.5, 14.99, 15.0, 15.01, 16.0, 20.5, 30.0, 33.3, 171.0,
                       1e3,    1e6,   1e15, 1e300};
  for (double x : xs) {
    const long double want = std::lgamma(static_cast<long double>(x));
    // Absolute accuracy near the zeros at 1 and 2, relative elsewhere.
    EXPECT_NEAR(zlgamma(x), static_cast<double>(want), static_cast<double>(2e-15L * std::fmax(1.0L, std::fabs(want)))) << x;
  }
}

TEST(LogGamma, Edges) {
  EXPECT_EQ(zlgamma(0.0), -99.0);
  EXPECT_EQ(zlgamma(-2.5), -99.0);
  EXPECT_EQ(zlgamma(2.225073858507202e-308), -99.0);
  EXPECT_EQ(zlgamma(1.0), 0.0);
  EXPECT_EQ(zlgamma(2.0), 0.0);
  EXPECT_EQ(zlgamma(std::nan("")), -99.0);
}

TEST(StirlingCorrection, MatchesLogGammaDifference) {
  // zlgbern(x) = ln Gamma(x) - (x - 1/2) ln x + x - ln sqrt(2 pi).
  // The long double difference cancels, so only moderate x are compared.
  for (double x : {15.0, 20.0, 60.0}) {
    const long double lx = x;
    const long double want = std::lgamma(lx) - (lx - 0.5L) * std::log(lx) + lx - 0.5L * std::log(2 * kPiL);
    expectRel(zlgbern(x), want, 1e-12, "Stirling correction", x);
  }
}

TEST(LogBeta, ClosedForms) {
  struct Case { double a, b; long double want; };
  const Case cases[] = {
      {1.0, 1.0, 0.0L},
      {0.5, 0.5, std::log(kPiL)},
      {3.0, 1.0, -std::log(3.0L)},
      {1.0, 1e-3, -std::log(1e-3L)},
      // B(2, q) = 1 / (q (q + 1)): both sides of the switch at 15.
      {2.0, 14.9, -std::log(14.9L) - std::log(15.9L)},
      {2.0, 15.0, -std::log(15.0L) - std::log(16.0L)},
      {2.0, 1e3, -std::log(1e3L) - std::log(1001.0L)},
      {1e8, 2.0, -std::log(1e8L) - std::log(1e8L + 1)},
      // B(3, q) = 2 / (q (q + 1) (q + 2)).
      {3.0, 40.0, std::log(2.0L) - std::log(40.0L * 41.0L * 42.0L)},
  };
  for (const auto& c : cases) {
    const double got = zlbeta(c.a, c.b);
    EXPECT_NEAR(got, static_cast<double>(c.want), static_cast<double>(1e-14L * std::fmax(1.0L, std::fabs(c.want))))
        << c.a << "," << c.b;
  }
  // Large equal arguments against the long double library.
  for (double q : {20.0, 200.0, 5000.0}) {
    const long double want = std::lgamma(0.5L) + std::lgamma(static_cast<long double>(q)) - std::lgamma(q + 0.5L);
    EXPECT_NEAR(zlbeta(0.5, q), static_cast<double>(want), 1e-13) << q;
    const long double w2 = 2 * std::lgamma(static_cast<long double>(q)) - std::lgamma(2.0L * q);
    expectRel(zlbeta(q, q), w2, 1e-13, "ln B(q, q)", q);
  }
}

TEST(LogBeta, ImpossibleArgumentsGive99) {
  EXPECT_EQ(zlbeta(0.0, 1.0), 99.0);
  EXPECT_EQ(zlbeta(1.0, -2.0), 99.0);
  EXPECT_EQ(zlbeta(std::nan(""), 1.0), 99.0);
}

// I_x(a, b) by the hypergeometric series (Abramowitz & Stegun 26.5.23 with
// 15.1.1): I_x(a, b) = x^a (1-x)^b / (a B(a, b)) sum_n (a+b)_n / (a+1)_n x^n,
// all terms positive, evaluated in long double for x <= 1/2 (the other half
// by symmetry); independent of the continued fraction under test.
long double ibetaSeries(long double x, long double a, long double b) {
  if (x > 0.5L) return 1.0L - ibetaSeries(1.0L - x, b, a);
  long double sum = 0.0L;
  long double c = 1.0L;
  for (int n = 0; n < 200000; ++n) {
    sum += c;
    if (c < 1e-22L * sum && n > 10) break;
    c *= (a + b + n) / (a + 1 + n) * x;
  }
  const long double lb = std::lgamma(a) + std::lgamma(b) - std::lgamma(a + b);
  return std::exp(a * std::log(x) + b * std::log1p(-x) - lb - std::log(a)) * sum;
}

// I_x(a, b) for whole a, b: the binomial tail P(Bin(a + b - 1, x) >= a).
long double ibetaBinomial(long double x, int a, int b) {
  const int n = a + b - 1;
  long double s = 0.0L;
  long double lc = 0.0L;  // ln C(n, j)
  for (int j = 0; j <= n; ++j) {
    if (j > 0) lc += std::log(static_cast<long double>(n - j + 1)) - std::log(static_cast<long double>(j));
    if (j >= a) s += std::exp(lc + j * std::log(x) + (n - j) * std::log1p(-x));
  }
  return s;
}

TEST(IncompleteBeta, ClosedForms) {
  const double xs[] = {1e-6, 0.01, 0.2, 0.5, 0.77, 0.99, 1 - 1e-9};
  for (double x : xs) {
    double p = 0, d = 0;
    const long double lx = x;
    // a = 1: 1 - (1 - x)^b, density b (1 - x)^(b - 1).
    for (double b : {0.3, 1.0, 2.5, 40.0}) {
      ASSERT_EQ(zibeta(x, 1.0, b, &p, &d), 0);
      expectRel(p, -std::expm1(b * std::log1p(-lx)), 1e-13, "I(1,b)", x);
      expectRel(d, b * std::pow(1 - lx, b - 1), 1e-13, "density(1,b)", x);
    }
    // b = 1: x^a.
    for (double a : {0.3, 2.5, 40.0}) {
      ASSERT_EQ(zibeta(x, a, 1.0, &p, &d), 0);
      const long double want = std::pow(lx, a);
      if (want > 1e-290L) expectRel(p, want, 1e-13, "I(a,1)", x);
    }
    // a = b = 1/2: the arcsine law (2/pi) asin(sqrt x).
    ASSERT_EQ(zibeta(x, 0.5, 0.5, &p, &d), 0);
    expectRel(p, 2.0L / kPiL * std::asin(std::sqrt(lx)), 1e-13, "arcsine", x);
    expectRel(d, 1.0L / (kPiL * std::sqrt(lx * (1 - lx))), 1e-13, "arcsine density", x);
  }
}

TEST(IncompleteBeta, WholeParametersAgainstBinomialSums) {
  struct Case { double x; int a, b; };
  const Case cases[] = {
      {0.1, 2, 3}, {0.5, 2, 3}, {0.9, 2, 3}, {0.3, 10, 10}, {0.5, 10, 10}, {0.7, 10, 10},
      {0.05, 5, 60}, {0.2, 5, 60}, {0.95, 60, 5}, {0.5, 30, 31}, {0.02, 3, 100},
      // Large parameters: the density comes from the cancellation-free form.
      {0.33, 200, 300}, {0.4, 200, 300}, {0.45, 200, 300}, {0.52, 250, 250}, {0.2, 15, 40},
  };
  for (const auto& c : cases) {
    double p = 0, d = 0;
    ASSERT_EQ(zibeta(c.x, c.a, c.b, &p, &d), 0);
    expectRel(p, ibetaBinomial(c.x, c.a, c.b), 1e-13, "I(whole)", c.x);
  }
}

TEST(IncompleteBeta, GeneralParametersAgainstPowerSeries) {
  const double as[] = {0.05, 0.7, 2.3, 11.5};
  const double bs[] = {0.1, 0.6, 3.7, 25.25};
  const double xs[] = {0.001, 0.15, 0.45, 0.55, 0.85, 0.999};
  for (double a : as)
    for (double b : bs)
      for (double x : xs) {
        double p = 0, d = 0;
        ASSERT_EQ(zibeta(x, a, b, &p, &d), 0) << a << "," << b << "," << x;
        const long double want = ibetaSeries(x, a, b);
        // Tiny tails are compared relatively, values near 1 by their complement.
        if (want > 1e-280L) expectRel(p, want, 5e-13, "I general", x);
        if (want > 0.5L) {
          EXPECT_NEAR(1.0 - p, static_cast<double>(1.0L - want), 2e-15) << a << "," << b << "," << x;
        }
      }
}

TEST(IncompleteBeta, Edges) {
  double p = 7, d = 7;
  // A parameter past 2^53: result 1, outputs untouched.
  EXPECT_EQ(zibeta(0.5, 1e16, 2.0, &p, &d), 1);
  EXPECT_EQ(p, 7.0);
  EXPECT_EQ(d, 7.0);
  // Outside the domain: -1 with p = -1, d = 0.
  struct Bad { double x, a, b; };
  for (const Bad& c : {Bad{-0.1, 1, 1}, Bad{1.1, 1, 1}, Bad{0.5, 0, 1}, Bad{0.5, 1, -1}, Bad{std::nan(""), 1, 1}}) {
    p = 7;
    d = 7;
    EXPECT_EQ(zibeta(c.x, c.a, c.b, &p, &d), -1);
    EXPECT_EQ(p, -1.0);
    EXPECT_EQ(d, 0.0);
  }
  ASSERT_EQ(zibeta(0.0, 2, 3, &p, &d), 0);
  EXPECT_EQ(p, 0.0);
  EXPECT_EQ(d, 0.0);
  ASSERT_EQ(zibeta(1.0, 2, 3, &p, &d), 0);
  EXPECT_EQ(p, 1.0);
  EXPECT_EQ(d, 0.0);
  // The density underflows: all mass on one side.
  ASSERT_EQ(zibeta(0.01, 400, 400, &p, &d), 0);
  EXPECT_EQ(p, 0.0);
  EXPECT_EQ(d, 0.0);
  ASSERT_EQ(zibeta(0.99, 400, 400, &p, &d), 0);
  EXPECT_EQ(p, 1.0);
  EXPECT_EQ(d, 0.0);
  // Large parameters still converge, near the mean and in the tail.
  ASSERT_EQ(zibeta(0.5, 6000, 6000, &p, &d), 0);
  EXPECT_NEAR(p, 0.5, 1e-13);
}

TEST(FTail, ClosedFormsWithTwoDegreesOfFreedom) {
  // ndf = 2: P(F > f) = (1 + 2 f / m)^(-m/2). ddf = 2: 1 - (n f / (n f + 2))^(n/2).
  const double fs[] = {1e-8, 0.01, 0.5, 1.0, 3.0, 20.0, 1e3, 1e8};
  for (double f : fs) {
    const long double lf = f;
    for (double m : {1.0, 2.0, 7.0, 30.5, 1e4}) {
      expectRel(zprbf(f, 2.0, m), std::exp(-0.5L * m * std::log1p(2.0L * lf / m)), 1e-12, "F(2,m)", f);
    }
    for (double n : {1.0, 3.0, 12.0}) {
      // 1 - x^(n/2), x = n f / (n f + 2), without cancellation: -expm1(n/2 ln x)
      // with ln x = log1p(-2 / (n f + 2)).
      const long double lnx = std::log1p(-2.0L / (n * lf + 2.0L));
      expectRel(zprbf(f, n, 2.0), -std::expm1(0.5L * n * lnx), 1e-12, "F(n,2)", f);
    }
  }
}

TEST(FTail, EvenDegreesOfFreedomAgainstBinomialSums) {
  // P(F > f) = I_v(m/2, n/2), v = m / (m + n f).
  struct Case { double f; int n, m; };
  const Case cases[] = {{0.3, 4, 10}, {1.0, 4, 10}, {2.5, 4, 10}, {8.0, 6, 20}, {1.2, 20, 40}, {0.01, 10, 8}};
  for (const auto& c : cases) {
    const long double v = static_cast<long double>(c.m) / (c.m + c.n * static_cast<long double>(c.f));
    expectRel(zprbf(c.f, c.n, c.m), ibetaBinomial(v, c.m / 2, c.n / 2), 1e-12, "F even", c.f);
  }
}

TEST(FTail, HugeDenominatorDegreesApproachChiSquare) {
  // As ddf grows, ndf F tends to chi-square with ndf degrees of freedom;
  // at ddf = 1e14 the difference is of the order of x^2 / ddf, 6e-12 at f = 6. Chi-square tails
  // with 4 and 6 degrees of freedom: exp(-x/2) (1 + x/2) and
  // exp(-x/2) (1 + x/2 + x^2/8).
  for (double f : {0.05, 0.5, 1.0, 2.5, 6.0}) {
    const long double x4 = 4.0L * f, x6 = 6.0L * f;
    expectRel(zprbf(f, 4.0, 1e14), std::exp(-x4 / 2) * (1 + x4 / 2), 1e-11, "F(4, 1e14)", f);
    expectRel(zprbf(f, 6.0, 1e14), std::exp(-x6 / 2) * (1 + x6 / 2 + x6 * x6 / 8), 1e-11, "F(6, 1e14)", f);
  }
}

TEST(FTail, Edges) {
  EXPECT_EQ(zprbf(0.0, 3.0, 10.0), 1.0);
  EXPECT_EQ(zprbf(-1.0, 3.0, 10.0), -4.0);
  EXPECT_EQ(zprbf(1.0, 0.0, 10.0), -4.0);
  EXPECT_EQ(zprbf(1.0, 3.0, -1.0), -4.0);
  EXPECT_EQ(zprbf(HUGE_VAL, 3.0, 10.0), 0.0);
  // A degree of freedom past 2^54 makes the incomplete beta refuse: -2.
  EXPECT_EQ(zprbf(1.0, 3.0, 4e16), -2.0);
}

// Two-sided t tails with few degrees of freedom (Abramowitz & Stegun 26.7.3,
// 26.7.4), in forms that keep the far tail's relative accuracy.
long double tTwoSided(long double t, int df) {
  const long double th = std::atan(t / std::sqrt(static_cast<long double>(df)));
  const long double s = std::sin(th), c = std::cos(th);
  switch (df) {
    case 1: return 2.0L / kPiL * std::atan(1.0L / t);
    case 2: return 2.0L / (std::sqrt(2.0L + t * t) * (std::sqrt(2.0L + t * t) + t));
    case 3: return 1.0L - 2.0L / kPiL * (th + s * c);
    case 4: return 1.0L - s * (1.0L + 0.5L * c * c);
    default: return -1.0L;
  }
}

TEST(TTail, FewDegreesOfFreedomInClosedForm) {
  const double ts[] = {1e-6, 0.1, 0.7, 1.0, 2.0, 4.303, 12.7, 100.0};
  for (int df : {1, 2, 3, 4}) {
    for (double t : ts) expectRel(zpgt2(t * t, df), tTwoSided(t, df), 1e-12, "t tail", t);
  }
  // The far tails of 1 and 2 degrees of freedom.
  for (double t : {1e3, 1e6, 1e100}) {
    expectRel(zpgt2(t * t, 1), tTwoSided(t, 1), 1e-12, "Cauchy tail", t);
    expectRel(zpgt2(t * t, 2), tTwoSided(t, 2), 1e-12, "t2 tail", t);
  }
}

TEST(TTail, HugeDegreesOfFreedomFollowTheNormalExpansion) {
  // P(|T| > t) = 2 Q(t) + phi(t) (t^3 + t) / (2 nu) + O(nu^-2) (the first
  // term of the expansion of Student's t about the normal, Abramowitz &
  // Stegun 26.7.5); at nu = 1e9 the neglected terms are below 1e-14
  // relative for t up to 8. Both tails of the incomplete beta are used here:
  // t below about 2 takes the complement, beyond it the direct fraction with
  // a near 5e8, where 1 - x is 1e-8.
  for (long df : {1000000000L, 4000000000L}) {
    for (double t : {0.25, 1.0, 2.0, 3.0, 5.0, 8.0}) {
      const long double lt = t;
      const long double phi = std::exp(-lt * lt / 2) / std::sqrt(2 * kPiL);
      const long double want = std::erfc(lt / std::sqrt(2.0L)) + phi * (lt * lt * lt + lt) / (2.0L * df);
      expectRel(zpgt2(t * t, df), want, 1e-12, "t tail, huge df", t);
    }
  }
}

TEST(TTail, PublishedCriticalValues) {
  // Two-sided 5% points of Student's t.
  struct Case { long df; double t; };
  for (const Case& c : {Case{1, 12.706204736174707}, Case{5, 2.570581835636314}, Case{30, 2.042272456301238},
                        Case{120, 1.979930405082423}}) {
    EXPECT_NEAR(zpgt2(c.t * c.t, c.df), 0.05, 1e-12) << c.df;
  }
}

TEST(TTail, Edges) {
  EXPECT_EQ(zpgt2(0.0, 5), 1.0);
  EXPECT_EQ(zpgt2(1.0, 0), -2.0);
  EXPECT_EQ(zpgt2(1.0, -3), -2.0);
  EXPECT_EQ(zpgt2(-1.0, 5), -2.0);
  EXPECT_EQ(zpgt2(HUGE_VAL, 5), 0.0);
}

TEST(Log1p, SmallAndLarge) {
  for (double z : {-0.5, -0.03125, -1e-3, -1e-12, 0.0, 1e-17, 1e-8, 0.03, 0.03125, 0.04, 3.0, 1e10}) {
    expectRel(zln1px(z), std::log1p(static_cast<long double>(z)), 1e-15, "ln(1+z)", z);
  }
}

}  // namespace
}  // namespace qvt
