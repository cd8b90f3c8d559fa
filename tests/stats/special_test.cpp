// The normal distribution, log-gamma, log-beta, the incomplete beta function,
// the F and t tails and the guarded power, against 80-bit long double
// references of the C library (erfl, erfcl, lgammal, powl; the normal
// quantile solved from them by Newton's method), against the chi-square and
// normal limits, an independent power series in long double, and values of
// Abramowitz & Stegun, Tables 7.1 and 26.1.
#include "dense_oracle.hpp"

namespace qvt {
namespace {

using namespace testing_dense;

constexpr long double kSqrt2L = 1.414213562373095048801688724209698L;

long double upperTailL(long double x) { return 0.5L * std::erfc(x / kSqrt2L); }
long double densityL(long double x) { return std::exp(-0.5L * x * x) / std::sqrt(2.0L * kPiL); }

TEST(Calerf, AgreesWithPublishedValuesAndLongDouble) {
  // A&S Table 7.1, one point on each side of the break at 0.46875.
  expectRel(zferf(0.1), 0.1124629160182849L, 1e-14, "erf", 0.1);
  expectRel(zferf(-2.0), -0.9953222650189527L, 1e-14, "erf", -2.0);
  // Both sides of the breaks at 0.46875 and 4, and the far tail.
  std::vector<double> at = {0.0, 0.46875, 0.46876, 3.99999, 4.0, 4.00001, 1e-300};
  for (double x = -6.0; x <= 26.5; x += 0.10625) at.push_back(x);
  for (double x : at) {
    expectRel(zferfc(x), std::erfc(static_cast<long double>(x)), 1e-13, "erfc", x);
    expectRel(zferf(x), std::erf(static_cast<long double>(x)), 1e-14, "erf", x);
  }
  // erfc underflows from -x^2 < -708.3964185 on, and beyond 1003.78 both
  // functions are at their limits; just inside the underflow the tail is there.
  for (double x : {27.0, 1e4, HUGE_VAL}) {
    EXPECT_EQ(zferf(-x), -1.0) << x;
    EXPECT_EQ(zferfc(x), 0.0) << x;
    EXPECT_EQ(zferfc(-x), 2.0) << x;
  }
  EXPECT_GT(zferfc(26.6), 0.0);
  for (double m : {kMissing, skMissVal('A')}) {
    EXPECT_EQ(wzmis(zferf(m)) + wzmis(zferfc(m)) + wzmis(zprbnrm(m)) + wzmis(zprobit(m)), 4);
  }
}

// The quantile by Newton's method in long double. Each side solves for the
// smaller tail, and the centre for erf, so that the residual never cancels.
long double quantileL(long double p) {
  const long double q = p < 0.5L ? p : 1.0L - p;  // exact for a double p
  long double x = std::sqrt(-2.0L * std::log(q));  // upper quantile of q
  for (int i = 0; i < 100; ++i) {
    const long double f = x < 1.0L ? 0.5L * std::erf(x / kSqrt2L) - (0.5L - q) : q - upperTailL(x);
    x -= f / densityL(x);
  }
  return p < 0.5L ? -x : x;
}

TEST(Normal, DistributionAndQuantileAgainstTablesAndLongDouble) {
  // A&S Table 26.1, read both ways.
  expectRel(zprbnrm(-3.0), 0.0013498980316300946L, 1e-14, "Phi", -3.0);
  expectRel(zprobit(0.975), 1.959963984540054L, 1e-14, "probit", 0.975);
  for (double x = -37.5; x <= 8.5; x += 0.37) {
    expectRel(zprbnrm(x), x <= 0 ? upperTailL(-x) : 1.0L - upperTailL(x), 1e-13, "Phi", x);
  }
  EXPECT_EQ(zprbnrm(-40.0), 0.0);
  EXPECT_EQ(zprbnrm(40.0), 1.0);
  for (double p : {1e-15, 9.9e-17, 0.01, 0.0101, 0.3, 0.45, 0.5000001, 0.999999, 1 - 1e-12}) {
    expectRel(zprobit(p), quantileL(p), 1e-13, "probit", p);
  }
  // Below 1e-16 by Newton: checked through the log of the tail as well,
  // which long double holds down to 1e-4900.
  for (double p : {1e-17, 1e-307}) {
    const double x = zprobit(p);
    const long double lt = std::log(upperTailL(-static_cast<long double>(x)));
    EXPECT_NEAR(static_cast<double>(lt), std::log(p), 1e-11 * std::fabs(std::log(p))) << p;
    expectRel(x, quantileL(p), 1e-12, "probit", p);
  }
  EXPECT_EQ(zprobit(0.0), -37.64030867301702);
  EXPECT_EQ(zprobit(1.0), 7.941345326170997);
  EXPECT_EQ(wzmis(zprobit(-0.1)) + wzmis(zprobit(1.5)), 2);
}

TEST(Normal, MillsRatioAndLogTails) {
  // Direct below 5, continued fraction from 5 on, and below -10 the tail
  // counts as one.
  for (double x : {-20.0, -9.9, 0.0, 4.999, 5.0, 20.0, 100.0}) {
    double r = 0.0;
    ASSERT_EQ(zmillsr(x, &r), 0) << x;
    const long double want = x < -10 ? std::exp(0.5L * x * x) * std::sqrt(2.0L * kPiL)
                                     : upperTailL(x) / densityL(x);
    expectRel(r, want, 1e-13, "Mills", x);
  }
  for (double x : {-1e3, -40.0, -5.0, -4.9, 0.5, 5.0, 38.0, 1e3}) {
    double lpl = 0.0, lpr = 0.0, ld = 0.0;
    ASSERT_EQ(zlognrm(x, &lpl, &lpr, &ld), 0) << x;
    const long double lx = x;
    expectRel(ld, -0.5L * lx * lx - 0.5L * std::log(2.0L * kPiL), 1e-15, "ln density", x);
    // The log of the small tail from erfcl, the other as log1p of minus it;
    // beyond erfcl's range ln Q(1e3) = -5e5 - ln(1e3) - ln sqrt(2 pi) - 1e-6 + ...
    const long double small = std::fabs(x) < 150
                                  ? std::log(upperTailL(std::fabs(lx)))
                                  : -5e5L - std::log(1e3L) - 0.5L * std::log(2.0L * kPiL) - 1e-6L;
    const long double other = std::log1p(-std::exp(small));
    expectRel(x <= 0 ? lpl : lpr, small, 1e-13, "ln small tail", x);
    expectRel(x <= 0 ? lpr : lpl, other, 1e-13, "ln large tail", x);
  }
}

TEST(LogGamma, AgreesWithLongDoubleLibrary) {
  // Each branch: below 0.5, [0.5, 1.5), the half arguments, up to the switch
  // at 15 and beyond, the zeros at 1 and 2 (absolute accuracy there).
  for (double x : {1e-300, 0.3, 0.5, 0.999999, 1.000001, 1.5, 1.9999999, 2.5, 3.3, 14.99, 15.0, 1e300}) {
    const long double want = std::lgamma(static_cast<long double>(x));
    const double tol = static_cast<double>(2e-15L * std::fmax(1.0L, std::fabs(want)));
    EXPECT_NEAR(zlgamma(x), static_cast<double>(want), tol) << x;
  }
  for (double x : {0.0, 2.225073858507202e-308, std::nan("")}) EXPECT_EQ(zlgamma(x), -99.0) << x;
  EXPECT_EQ(zlgamma(2.0), 0.0);
  for (double z : {-0.5, -0.03125, 0.0, 0.03125, 0.04, 1e10}) {
    expectRel(zln1px(z), std::log1p(static_cast<long double>(z)), 1e-15, "ln(1+z)", z);
  }
}

TEST(LogBeta, ClosedFormsAndLongDouble) {
  // B(2, q) = 1 / (q (q + 1)) on both sides of the switch at 15.
  for (double q : {14.9, 15.0, 1e8})
    expectRel(zlbeta(2.0, q), -std::log(q * (q + 1.0L)), 1e-14, "ln B(2, q)", q);
  for (double q : {20.0, 5000.0})
    expectRel(zlbeta(q, q), 2 * std::lgamma(q + 0.0L) - std::lgamma(2.0L * q), 1e-13, "ln B(q, q)", q);
  EXPECT_EQ(zlbeta(0.0, 1.0), 99.0);
  EXPECT_EQ(zlbeta(1.0, std::nan("")), 99.0);
}

// I_x(a, b) by the hypergeometric series (Abramowitz & Stegun 26.5.23 with
// 15.1.1): I_x(a, b) = x^a (1-x)^b / (a B(a, b)) sum_n (a+b)_n / (a+1)_n x^n,
// all terms positive, evaluated in long double for x <= 1/2 (the other half
// by symmetry); independent of the continued fraction under test.
long double ibetaSeries(long double x, long double a, long double b) {
  if (x > 0.5L) return 1.0L - ibetaSeries(1.0L - x, b, a);
  long double sum = 0.0L;
  long double c = 1.0L;
  for (int n = 0; n < 200000 && !(c < 1e-22L * sum && n > 10); ++n) {
    sum += c;
    c *= (a + b + n) / (a + 1 + n) * x;
  }
  const long double lb = std::lgamma(a) + std::lgamma(b) - std::lgamma(a + b);
  return std::exp(a * std::log(x) + b * std::log1p(-x) - lb - std::log(a)) * sum;
}

// The density x^(a-1) (1-x)^(b-1) / B(a, b) in long double.
long double densityBeta(long double x, long double a, long double b) {
  const long double lb = std::lgamma(a) + std::lgamma(b) - std::lgamma(a + b);
  return std::exp((a - 1) * std::log(x) + (b - 1) * std::log1p(-x) - lb);
}

TEST(IncompleteBeta, AgreesWithThePowerSeries) {
  // From 15 on both sides the density takes its cancellation-free form.
  for (double x : {0.33, 0.45, 0.52}) {
    double p = 0, d = 0;
    ASSERT_EQ(zibeta(x, 250.0, 300.0, &p, &d), 0);
    expectRel(p, ibetaSeries(x, 250.0L, 300.0L), 1e-13, "I(250, 300)", x);
    expectRel(d, densityBeta(x, 250.0L, 300.0L), 1e-12, "density(250, 300)", x);
  }
  // Tiny tails are compared relatively, values near 1 by their complement.
  for (double a : {0.05, 0.7, 1.0, 2.3, 11.5})
    for (double b : {0.1, 0.6, 3.7, 25.25})
      for (double x : {1e-6, 0.001, 0.15, 0.45, 0.55, 0.85, 0.999, 1 - 1e-9}) {
        double p = 0, d = 0;
        ASSERT_EQ(zibeta(x, a, b, &p, &d), 0) << a << "," << b << "," << x;
        const long double want = ibetaSeries(x, a, b);
        if (want > 1e-280L) expectRel(p, want, 5e-13, "I general", x);
        if (want > 1e-280L) expectRel(d, densityBeta(x, a, b), 5e-13, "density", x);
        if (want > 0.5L) {
          EXPECT_NEAR(1.0 - p, static_cast<double>(1.0L - want), 2e-15) << a << "," << b << "," << x;
        }
      }
}

TEST(IncompleteBeta, Edges) {
  // A parameter past 2^53: result 1, outputs untouched (7). Outside the
  // domain: -1 with p = -1, d = 0. At the ends, and where the density
  // underflows, all mass is on one side.
  struct Case { double x, a, b; int rc; double p, d; };
  const Case cases[] = {{0.5, 1e16, 2, 1, 7, 7},     {1.1, 1, 1, -1, -1, 0},      {0.5, 0, 1, -1, -1, 0},
                        {0.5, 1, -1, -1, -1, 0},     {std::nan(""), 1, 1, -1, -1, 0}, {0.0, 2, 3, 0, 0, 0},
                        {1.0, 2, 3, 0, 1, 0},        {0.01, 400, 400, 0, 0, 0},   {0.99, 400, 400, 0, 1, 0}};
  double p = 7, d = 7;
  for (const Case& c : cases) {
    p = d = 7;
    EXPECT_EQ(zibeta(c.x, c.a, c.b, &p, &d), c.rc) << c.x << "," << c.a << "," << c.b;
    EXPECT_EQ(std::vector<double>({p, d}), std::vector<double>({c.p, c.d})) << c.x << "," << c.a << "," << c.b;
  }
  ASSERT_EQ(zibeta(0.5, 6000, 6000, &p, &d), 0);  // large parameters converge
  EXPECT_NEAR(p, 0.5, 1e-13);
}

TEST(FTail, SeriesChiSquareLimitAndEdges) {
  // P(F > f) = I_v(m/2, n/2), v = m / (m + n f).
  for (double n : {2.0, 6.0, 15.5})
    for (double m : {1.0, 30.5, 300.0})
      for (double f : {1e-8, 0.3, 3.0, 1e8}) {
        const long double v = m / (m + n * static_cast<long double>(f));
        expectRel(zprbf(f, n, m), ibetaSeries(v, m / 2, n / 2), 1e-12, "F", f);
      }
  // As ddf grows 4 F tends to chi-square with 4 degrees, tail
  // exp(-x/2) (1 + x/2); at ddf = 1e14 the difference is of order x^2 / ddf.
  for (double f : {0.05, 1.0, 6.0}) {
    const long double x4 = 4.0L * f;
    expectRel(zprbf(f, 4.0, 1e14), std::exp(-x4 / 2) * (1 + x4 / 2), 1e-11, "F(4, 1e14)", f);
  }
  // Edges; a degree of freedom past 2^54 makes the incomplete beta refuse.
  struct Edge { double f, n, m, want; };
  for (const Edge& e : {Edge{0, 3, 10, 1}, Edge{-1, 3, 10, -4}, Edge{1, 0, 10, -4}, Edge{1, 3, -1, -4},
                        Edge{HUGE_VAL, 3, 10, 0}, Edge{1, 3, 4e16, -2}}) {
    EXPECT_EQ(zprbf(e.f, e.n, e.m), e.want) << e.f << "," << e.n << "," << e.m;
  }
}

TEST(TTail, SeriesNormalExpansionAndCriticalValue) {
  // P(|T| > t) = I_x(df/2, 1/2), x = df / (df + t^2), into the far tails.
  for (long df : {1L, 2L, 3L, 40L})
    for (double t : {0.7, 2.0, 12.7, 1e3, 1e100}) {
      const long double x = df / (df + static_cast<long double>(t) * t);
      expectRel(zpgt2(t * t, df), ibetaSeries(x, df / 2.0L, 0.5L), 1e-12, "t", t);
    }
  // P(|T| > t) = 2 Q(t) + phi(t) (t^3 + t) / (2 nu) + O(nu^-2) (A&S 26.7.5);
  // at nu = 1e9 the neglected terms are below 1e-14 relative for t up to 8.
  // t below about 2 takes the complement of the incomplete beta, beyond it
  // the direct fraction with a near 5e8, where 1 - x is 1e-8.
  for (double t : {0.25, 1.0, 2.0, 3.0, 8.0}) {
    const long double lt = t;
    const long double phi = std::exp(-lt * lt / 2) / std::sqrt(2 * kPiL);
    const long double want = std::erfc(lt / std::sqrt(2.0L)) + phi * (lt * lt * lt + lt) / 2e9L;
    expectRel(zpgt2(t * t, 1000000000L), want, 1e-12, "t tail, huge df", t);
  }
  // Two-sided 5% point of Student's t with 5 degrees of freedom.
  EXPECT_NEAR(zpgt2(2.570581835636314 * 2.570581835636314, 5), 0.05, 1e-12);
  EXPECT_EQ(zpgt2(0.0, 5), 1.0);
  EXPECT_EQ(zpgt2(HUGE_VAL, 5), 0.0);
  EXPECT_EQ(zpgt2(1.0, 0), -2.0);
  EXPECT_EQ(zpgt2(-1.0, 5), -2.0);
}

TEST(Power, EdgeConventionsAndLongDoublePow) {
  // want NaN: compared with powl (an odd whole power of a negative keeps the sign).
  const double kPow = std::nan("");
  struct Case { double x, y, want; int rc; };
  const Case cases[] = {
      {0, 0, kM, 3}, {0, 2.5, 0, 0}, {-8, 1.0 / 3, kM, 2}, {-1, 3, -1, 0}, {-1, 4, 1, 0},
      {-1, 1e17, kM, 2}, {1, -7.5, 1, 0}, {-5, 0, 1, 0}, {-3.7, 1, -3.7, 0}, {2, 1e155, kM, 1},
      {0.5, 1e155, 0, 0}, {2, -1e155, 0, 0}, {10, -400, 0, 0}, {kM, 2, kM, 2}, {2, kM, kM, 2},
      {-2, 3, -8, 0}, {2, -10, 1.0 / 1024, 0}, {9, 0.5, 3, 0},
      {2, 1023, std::ldexp(1.0, 1023), 0}, {2, 1024, kM, 1},  // the overflow boundary
      {0.9, -250, kPow, 0}, {-1.1, 101, kPow, 0}, {3.3, 2.7, kPow, 0}, {1.0000001, 1e8, kPow, 0},
  };
  for (const Case& c : cases) {
    int rc = -7;
    const double got = zpower(c.x, c.y, &rc);
    EXPECT_EQ(rc, c.rc) << c.x << "^" << c.y;
    if (std::isnan(c.want) && !wzmis(c.want)) {
      long double want = std::pow(std::fabs(static_cast<long double>(c.x)), static_cast<long double>(c.y));
      if (c.x < 0 && std::fmod(std::fabs(c.y), 2.0) == 1.0) want = -want;
      expectRel(got, want, 1e-13, "pow", c.y);
    } else if (wzmis(c.want)) {
      EXPECT_EQ(wzmis(got), 1) << c.x << "^" << c.y;
    } else {
      EXPECT_EQ(got, c.want) << c.x << "^" << c.y;
    }
  }
}

}  // namespace
}  // namespace qvt
