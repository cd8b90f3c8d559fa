// Kernels of simple exponential smoothing: the guards, the start values, the
// numeric derivative and the closed-form variance, by hand and against the
// direct recursion of model_oracle.hpp; the guarded division. The one-step
// predictions and rows are checked for every model in model_family_test.cpp.

#include "model_oracle.hpp"

namespace qvt {
namespace {

TEST(Zes1Svi, Table) {
  struct Case {
    std::vector<double> x;
    std::vector<char> flag;
    int rc;
    double level;  // -1: untouched
  } cases[] = {
      {{5, 6, 7}, {0, 1, 1}, -2, -1},  // only the first value: nothing left to backcast over
      {{5, 6, 7}, {1, 0, 1}, 0, 6},
  };
  for (const auto& c : cases) {
    double level = -1;
    EXPECT_EQ(zes1svi(c.x.data(), c.flag.data(), static_cast<long>(c.x.size()), 1, &level), c.rc);
    EXPECT_EQ(level, c.level) << c.x.size();
  }
}

TEST(Zes1Pnt, Guards) {
  double L = 0, xhat = 0, e = 0;
  struct Case {
    double level, xscale;
    int rc;
  } cases[] = {
      {2e152, 1e300, -9}, {-2e152, 1e300, -9}, {10, 0.0009, -9},  // 10 > 0.0009 * 10000
      {9, 0.0009, 0},     {-1e6, 1, 0},         {kMissing, 1e6, -9},
  };
  for (const auto& c : cases) {
    L = c.level;
    EXPECT_EQ(zes1pnt(1.0, c.xscale, 0.5, &L, &xhat, &e), c.rc) << c.level;
    EXPECT_EQ(wzmis(L), c.rc < 0) << c.level;
  }
  double D = 2e154, dv = 0;
  EXPECT_EQ(zes1dpd(13, 0.3, 10, 10.9, &D, &dv), -9);
  EXPECT_TRUE(wzmis(D));
}

TEST(Zes1Smo, DegenerateInputsAndGuards) {
  const char f0[] = {0, 0, 0, 0};
  const char f1[] = {1, 1, 1, 1};
  const double z[] = {0, 0, 0, 0};
  const double x[] = {1, 2, 3, 4};
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
}

TEST(Zes1Prd, RowRangeFromTheStartStateAndFailures) {
  // x = 1, 2, 4, w = 0.5, start flag set: L = 2 is already the level at the
  // beginning, no backcast. p = 2, L = 1.5; p = 1.5, L = 1.75; p = 1.75,
  // L = 2.875. Only rows 1 and 2 are written and no lead rows.
  const double x[] = {1, 2, 4};
  const char f[] = {0, 0, 0};
  double L = 2, mse = 0;
  std::vector<double> rows(3 * 7, -7);
  ASSERT_EQ(zes1prd(x, f, 4, 3, 0.5, &L, 1, 2, 0, 0.25, 0.05, 1, &mse, rows.data()), 0);
  EXPECT_DOUBLE_EQ(rows[kRowPredicted], 1.5);
  EXPECT_DOUBLE_EQ(rows[7 + kRowPredicted], 1.75);
  EXPECT_DOUBLE_EQ(rows[7 + kRowLevel], 2.875);
  EXPECT_EQ(rows[14], -7);
  EXPECT_DOUBLE_EQ(L, 2.875);
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
  EXPECT_TRUE(wzmis(zes1cla(0.3, kMissing, 2, 0.05, &hw)));
  EXPECT_TRUE(wzmis(hw));
}

TEST(Zes1Std, Table) {
  struct Case {
    double xpx, mse;
    long nobs;
    double se;  // -1: missing
    double t;   // when tcode is 0
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
    if (c.code) {
      EXPECT_EQ(missCode(q), c.code) << c.num << "/" << c.den;
    } else {
      EXPECT_EQ(q, c.q) << c.num << "/" << c.den;
    }
  }
}

}  // namespace
}  // namespace qvt
