// Kernels of simple exponential smoothing: the guards (with those of Holt's
// step), the start values, the numeric derivative and the closed-form
// variance, by hand and against the direct recursion of model_oracle.hpp;
// the guarded division. The one-step predictions and rows are checked for
// every model in model_family_test.cpp.

#include "model_oracle.hpp"

namespace qvt {
namespace {

TEST(Zes1Svi, LastUsableValueAfterTheFirst) {
  const double x[] = {5, 6, 7};
  const char onlyFirst[] = {0, 1, 1}, middle[] = {1, 0, 1};
  double level = -1;
  // Only the first value: nothing left to backcast over, the level untouched.
  EXPECT_EQ(zes1svi(x, onlyFirst, 3, 1, &level), -2);
  EXPECT_EQ(level, -1);
  EXPECT_EQ(zes1svi(x, middle, 3, 1, &level), 0);
  EXPECT_EQ(level, 6);
}

TEST(StepGuards, SimpleHoltAndDamped) {
  // The steps themselves are checked against the published recursions in
  // model_family_test.cpp; here the divergence guards of simple smoothing
  // (the trend column unused), Holt's and the damped trend's.
  enum { kSimple, kHolt, kDamped };
  struct Case {
    int model;
    double L, T, xscale;
    int rc;
  } cases[] = {
      {kSimple, 2e152, 0, 1e300, -9}, {kSimple, -2e152, 0, 1e300, -9},
      {kSimple, 10, 0, 0.0009, -9},  // 10 > 0.0009 * 10000
      {kSimple, 9, 0, 0.0009, 0},     {kSimple, -1e6, 0, 1, 0},  {kSimple, kMissing, 0, 1e6, -9},
      {kHolt, -5e4, 0, 1, 0},  // the scale test is one-sided
      {kHolt, 2e152, 0, 1e300, -9},  {kHolt, 0, -2e152, 1e300, -9},
      {kHolt, 5, 6, 1e-3, -9},  // a prediction of 11 beyond 1e-3 * 10000
      {kHolt, kMissing, 0, 1, -9},
      // The damped trend guards phi T, not T: 0.9 * 1.4e152 is inside the limit.
      {kDamped, 0, 1.4e152, 1e300, 0}, {kDamped, 0, -1.6e152, 1e300, -9},
  };
  for (const auto& c : cases) {
    double L = c.L, T = c.T, xhat = 0, e = 0;
    const int rc = c.model == kSimple ? zes1pnt(1.0, c.xscale, 0.5, &L, &xhat, &e)
                   : c.model == kHolt ? zes2pnt(1.0, c.xscale, 0.3, 0.1, &L, &T, &xhat, &e)
                                      : zes3pnt(1.0, c.xscale, 0.3, 0.1, 0.9, &L, &T, &xhat, &e);
    EXPECT_EQ(rc, c.rc) << c.model << " " << c.L << " " << c.T;
    EXPECT_EQ(wzmis(L) && (c.model == kSimple || wzmis(T)), c.rc < 0) << c.model << " " << c.L;
  }
  double D = 2e154, dv = 0;
  EXPECT_EQ(zes1dpd(13, 0.3, 10, 10.9, &D, &dv), -9);
  EXPECT_TRUE(wzmis(D));
}

TEST(Zes1Smo, DegenerateInputsAndGuards) {
  const char f0[] = {0, 0, 0, 0}, f1[] = {1, 1, 1, 1};
  const double z[] = {0, 0, 0, 0}, x[] = {1, 2, 3, 4};
  struct Case {
    const char* name;
    const double* x;
    const char* f;
    double xscale, w;
    long n;
    int rc;
  } cases[] = {
      {"zeros with xscale 0", z, f0, 0, 0.4, 4, 0},
      {"empty", x, f0, 4, 0.5, 0, -2},
      {"all flagged", x, f1, 4, 0.5, 4, -2},
      {"weight beyond the state limit", x, f0, 4, 1e153, 4, -9},
      {"prediction beyond the scale", x, f0, 0.0001, 0.5, 4, -9},
  };
  for (const auto& c : cases) {
    double L = c.x[3], mse = -1;
    EXPECT_EQ(zes1smo(c.x, c.f, c.xscale, c.n, c.w, &L, &mse), c.rc) << c.name;
    if (c.rc == 0) {
      EXPECT_EQ(mse, 0.0) << c.name;
    }
  }
  // w = 1e-60 carries 1e140 into the level; the first error is about
  // -1e200, beyond the overflow limit 1.34e154.
  const double big[] = {1e200, 0, 0};
  double L = 0, mse = 0;
  EXPECT_EQ(zes1smo(big, f0, 1e201, 3, 1e-60, &L, &mse), -9);
  // With w = 1 the errors alternate +-1.3e152 (squares 1.69e304); after
  // about 5300 of them the sum passes 8.99e307 before the next is added.
  const std::size_t n = 6000;
  std::vector<double> alt(n);
  for (std::size_t t = 0; t < n; ++t) alt[t] = (t % 2) ? 1.3e152 : 0.0;
  const std::vector<char> f(n, 0);
  L = alt[n - 1];
  EXPECT_EQ(zes1smo(alt.data(), f.data(), 1.3e152, static_cast<long>(n), 1.0, &L, &mse), -9);
  L = alt[2999];  // half as many terms stay below the limit
  EXPECT_EQ(zes1smo(alt.data(), f.data(), 1.3e152, 3000, 1.0, &L, &mse), 0);
}

TEST(Zes1Npd, CentralDifferenceByHand) {
  const std::vector<double> x = {3, 5, 4, 6, 8, 7, 9, 8};
  const std::vector<char> f(x.size(), 0);
  const long n = static_cast<long>(x.size());
  struct Case {
    double w, delta;
    int rel;
    double lo, hi;  // the perturbed weights
  } cases[] = {
      {0.4, 1e-4, 0, 0.4 - 1e-4, 0.4 + 1e-4},
      {0.4, 1e-3, 1, 0.4 * (1 - 1e-3), 0.4 * (1 + 1e-3)},
      {0.0, 1e-4, 1, -1e-4, 1e-4},  // w = 0 falls back on the absolute form
  };
  for (const auto& c : cases) {
    double d = 0;
    ASSERT_EQ(zes1npd(x.data(), f.data(), 9, n, c.w, 8, c.delta, c.rel, &d), 0);
    const double expect = (oracle::simpleMse(x, c.hi) - oracle::simpleMse(x, c.lo)) / (c.hi - c.lo);
    EXPECT_NEAR(d, expect, 1e-7 * (1 + std::fabs(expect))) << c.w << " " << c.rel;
  }
  double d = 0;
  EXPECT_EQ(zes1npd(x.data(), f.data(), 9, n, 0.4, 8, 1e-160, 0, &d), -92);
  EXPECT_TRUE(wzmis(d));
  // Values near 1e150 make the difference of the two mean squared errors
  // about 1e299, and its quotient by 0.2 passes the overflow limit: the
  // derivative is the guarded division's signed infinity, .I or .M.
  const std::vector<double> big = {0, 1e150, 0, 1e150, 0, 1e150};
  const std::vector<char> fb(big.size(), 0);
  EXPECT_EQ(zes1npd(big.data(), fb.data(), 1e150, 6, 0.5, 1e150, 0.1, 0, &d), -92);
  EXPECT_EQ(missCode(d), oracle::simpleMse(big, 0.6) > oracle::simpleMse(big, 0.4) ? 'I' : 'M');
}

TEST(Zes1Prd, RowRangeFromTheStartStateAndFailures) {
  // x = 1, 2, 4, w = 0.5, start flag set: L = 2 is already the level at the
  // beginning, no backcast. p = 2, L = 1.5; p = 1.5, L = 1.75; p = 1.75,
  // L = 2.875. Only rows 1 and 2 are written and no lead rows.
  const double x[] = {1, 2, 4};
  const char f[] = {0, 0, 0};
  double L = 2, mse = 0;
  std::vector<double> r(3 * 7, -7);
  ASSERT_EQ(zes1prd(x, f, 4, 3, 0.5, &L, 1, 2, 0, 0.25, 0.05, 1, &mse, r.data()), 0);
  const std::vector<double> got = {r[kRowPredicted], r[7 + kRowPredicted], r[7 + kRowLevel], r[14], L};
  EXPECT_THAT(got, Pointwise(DoubleEq(), {1.5, 1.75, 2.875, -7.0, 2.875}));
  const char all[] = {1, 1, 1};
  L = 4;
  EXPECT_EQ(zes1prd(x, f, 4, 0, 0.5, &L, 0, 0, 1, 1, 0.05, 0, &mse, nullptr), -2);
  EXPECT_EQ(zes1prd(x, all, 4, 3, 0.5, &L, 0, 2, 1, 1, 0.05, 0, &mse, nullptr), -2);
  EXPECT_EQ(zes1prd(x, f, 4, 3, 2e152, &L, 0, 2, 1, 1, 0.05, 0, &mse, nullptr), -9);
  L = 4;
  EXPECT_EQ(zes1prd(x, f, 1e-4, 3, 0.5, &L, 0, 2, 1, 1, 0.05, 0, &mse, nullptr), -9);
}

TEST(Zes1Cla, EqualsVarianceOfPsiWeights) {
  for (double w : {0.0, 0.2, 0.9}) {
    std::vector<double> psi(8);
    ASSERT_EQ(zes1psi(w, 8, psi.data()), 0);
    double s = 0;
    for (long lead = 1; lead <= 8; ++lead) {
      s += psi[lead - 1] * psi[lead - 1];
      double hw = 0;
      EXPECT_NEAR(zes1cla(w, 2.0, lead, 0.05, &hw), 2.0 * s, 1e-14) << w << " " << lead;
      EXPECT_NEAR(hw, kZ975 * std::sqrt(2.0 * s), 1e-12);
    }
  }
  double hw = 0;
  EXPECT_TRUE(wzmis(zes1cla(0.3, kMissing, 2, 0.05, &hw)) && wzmis(hw));
}

TEST(Zes1Std, Table) {
  struct Case {
    double xpx, mse;
    long nobs;
    double se, t;  // se -1: missing; t when tcode is 0
    char tcode;
  } cases[] = {
      {-0.02, 2.0, 10, 0.2, 1.5, 0},  // sqrt(|-0.02| * 2) = 0.2; t = 0.3 / 0.2
      {0.02, 2.0, 1, -1, 0, '.'},     // too few
      {0.02, 0.0, 10, 0.0, 0, 'I'},   // perfect fit
  };
  const double w = 0.3;
  for (const auto& c : cases) {
    double se = 0, t = 0;
    zes1std(&c.xpx, c.mse, c.nobs, &w, &se, &t);
    EXPECT_TRUE(c.se < 0 ? wzmis(se) : std::fabs(se - c.se) < 1e-15) << c.nobs << " " << se;
    EXPECT_TRUE(c.tcode ? missCode(t) == c.tcode : std::fabs(t - c.t) < 1e-14) << c.nobs << " " << t;
  }
}

TEST(Divide, Table) {
  struct Case {
    double num, den;
    int rc;
    double q;   // when code is 0
    char code;  // missing kind expected, or 0
  } cases[] = {
      {6, 3, 0, 2, 0},     {1e-300, 1e-300, 0, 1, 0},     {1, 0, -92, 0, 'I'},
      {-1, 0, -92, 0, 'M'}, {0, 0, -92, 0, '.'},           {1e300, 1e-300, -92, 0, 'I'},
      {1e300, -1e-300, -92, 0, 'M'},
  };
  for (const auto& c : cases) {
    double q = -5;
    EXPECT_EQ(divide(c.num, c.den, &q), c.rc) << c.num << "/" << c.den;
    if (c.code) EXPECT_EQ(missCode(q), c.code) << c.num << "/" << c.den;
    else EXPECT_EQ(q, c.q) << c.num << "/" << c.den;
  }
}

}  // namespace
}  // namespace qvt
