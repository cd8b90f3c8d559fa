// Kernels of simple exponential smoothing against hand-worked values and a
// direct re-statement of the recursion written here from the textbook form.

#include "smoothing/esmdivide.hpp"
#include "smoothing/esmtypes.hpp"
#include "model_oracle.hpp"

namespace qvt {
namespace {

constexpr double kZ975 = 1.959963984540054;  // standard normal 0.975 quantile (published tables)

// Slow oracle: backcast from `level` over the unflagged values from the end,
// then one-step errors forward. Returns the sum of squares and the count.
struct Pass {
  double ss = 0;
  long nobs = 0;
  double start = 0;  // level at the beginning of the series
  double final = 0;  // level after the last observation
  std::vector<double> pred;
};

Pass directPass(const std::vector<double>& x, const std::vector<char>& flag, double w,
                double level) {
  Pass p;
  double L = level;
  for (long t = static_cast<long>(x.size()) - 1; t >= 0; --t)
    if (!flag[t]) L = L + w * (x[t] - L);  // error-correction form of the same update
  p.start = L;
  for (std::size_t t = 0; t < x.size(); ++t) {
    p.pred.push_back(L);
    if (flag[t]) continue;
    const double err = x[t] - L;
    p.ss += err * err;
    ++p.nobs;
    L = L + w * err;
  }
  p.final = L;
  return p;
}

// ---------------------------------------------------------------- zes1svi

struct SviCase {
  const char* name;
  std::vector<double> x;
  std::vector<char> flag;
  int rc;
  double level;
};

TEST(Zes1Svi, Table) {
  const std::vector<SviCase> cases = {
      {"last value", {1, 2, 3}, {0, 0, 0}, 0, 3},
      {"flagged end moves back", {1, 2, 3}, {0, 0, 1}, 0, 2},
      {"one observation", {5}, {0}, -2, -1},
      {"only index 0 usable", {5, 6, 7}, {0, 1, 1}, -2, -1},
      {"all flagged", {5, 6}, {1, 1}, -2, -1},
      {"index 1 is enough", {5, 6, 7}, {1, 0, 1}, 0, 6},
  };
  for (const auto& c : cases) {
    double level = -1;
    EXPECT_EQ(zes1svi(c.x.data(), c.flag.data(), static_cast<long>(c.x.size()), 1, &level), c.rc)
        << c.name;
    EXPECT_EQ(level, c.level) << c.name;  // untouched (-1) on failure
  }
}

// ---------------------------------------------------------------- zes1pnt / dpd

TEST(Zes1Pnt, HandWorkedStep) {
  // L = 10, w = 0.3, x = 13: xhat = 10, e = 10 - 13 = -3,
  // L' = 0.3 * 13 + 0.7 * 10 = 3.9 + 7 = 10.9.
  double L = 10, xhat = 0, e = 0;
  ASSERT_EQ(zes1pnt(13, 100, 0.3, &L, &xhat, &e), 0);
  EXPECT_DOUBLE_EQ(xhat, 10);
  EXPECT_DOUBLE_EQ(e, -3);
  EXPECT_DOUBLE_EQ(L, 10.9);
}

TEST(Zes1Pnt, Guards) {
  struct Case {
    const char* name;
    double level, xscale;
    int rc;
  } cases[] = {
      {"state limit", 2e152, 1e300, -9},
      {"negative state limit", -2e152, 1e300, -9},
      {"scale: 10 > 0.0009 * 10000", 10, 0.0009, -9},
      {"scale boundary passes", 9, 0.0009, 0},
      {"no test on the negative side", -1e6, 1, 0},
      {"missing level", kMissing, 1e6, -9},
  };
  for (const auto& c : cases) {
    double L = c.level, xhat = 0, e = 0;
    EXPECT_EQ(zes1pnt(1.0, c.xscale, 0.5, &L, &xhat, &e), c.rc) << c.name;
    if (c.rc < 0) {
      EXPECT_TRUE(wzmis(L)) << c.name;
    }
  }
}

TEST(Zes1Dpd, HandWorkedAndGuard) {
  // D = 2, x = 13, L before = 10, w = 0.3: dervec = 2, D' = (13 - 10) + 0.7 * 2 = 4.4.
  double D = 2, dv = 0;
  ASSERT_EQ(zes1dpd(13, 0.3, 10, 10.9, &D, &dv), 0);
  EXPECT_DOUBLE_EQ(dv, 2);
  EXPECT_DOUBLE_EQ(D, 4.4);
  D = 2e154;
  EXPECT_EQ(zes1dpd(13, 0.3, 10, 10.9, &D, &dv), -9);
  EXPECT_TRUE(wzmis(D));
}

// ---------------------------------------------------------------- zes1smo

TEST(Zes1Smo, HandWorkedThreePoints) {
  // x = 1, 2, 4, w = 0.5, start level 4 (the last value).
  // Backward: t=2: 0.5*4 + 0.5*4 = 4; t=1: 0.5*2 + 0.5*4 = 3; t=0: 0.5*1 + 0.5*3 = 2.
  // Forward:  t=0: e = 2 - 1 = 1,       L = 0.5*1 + 0.5*2 = 1.5
  //           t=1: e = 1.5 - 2 = -0.5,  L = 0.5*2 + 0.5*1.5 = 1.75
  //           t=2: e = 1.75 - 4 = -2.25, L = 0.5*4 + 0.5*1.75 = 2.875
  // SS = 1 + 0.25 + 5.0625 = 6.3125, mse = 6.3125 / 3.
  const double x[] = {1, 2, 4};
  const char f[] = {0, 0, 0};
  double L = 4, mse = 0;
  ASSERT_EQ(zes1smo(x, f, 4, 3, 0.5, &L, &mse), 0);
  EXPECT_DOUBLE_EQ(mse, 6.3125 / 3);
  EXPECT_DOUBLE_EQ(L, 2.875);
}

TEST(Zes1Smo, MatchesDirectRecursionWithFlags) {
  std::mt19937_64 gen(11);
  std::normal_distribution<double> nd(0.0, 1.0);
  for (int rep = 0; rep < 6; ++rep) {
    const std::size_t n = 5 + 7 * rep;
    std::vector<double> x(n);
    std::vector<char> flag(n, 0);
    for (std::size_t t = 0; t < n; ++t) {
      x[t] = 20 + 3 * nd(gen);
      if (t % 4 == 2) flag[t] = 1;
    }
    for (double w : {0.001, 0.2, 0.5, 0.999}) {
      double start = 0;
      ASSERT_EQ(zes1svi(x.data(), flag.data(), static_cast<long>(n), 1, &start), 0);
      const Pass p = directPass(x, flag, w, start);
      double L = start, mse = 0;
      ASSERT_EQ(zes1smo(x.data(), flag.data(), 40, static_cast<long>(n), w, &L, &mse), 0);
      EXPECT_NEAR(mse, p.ss / static_cast<double>(p.nobs), 1e-10 * (1 + mse)) << n << " " << w;
      EXPECT_NEAR(L, p.final, 1e-10 * std::fabs(p.final));
    }
  }
}

TEST(Zes1Smo, DegenerateInputs) {
  const char f0[] = {0, 0, 0, 0};
  const char f1[] = {1, 1, 1, 1};
  {
    const double c[] = {7, 7, 7, 7};  // constant series: mse 0 at every weight
    for (double w : {0.0, 0.3, 1.0}) {
      double L = 7, mse = -1;
      ASSERT_EQ(zes1smo(c, f0, 7, 4, w, &L, &mse), 0);
      EXPECT_EQ(mse, 0.0);
    }
  }
  {
    const double z[] = {0, 0, 0, 0};  // xscale 0 passes while the level stays 0
    double L = 0, mse = -1;
    EXPECT_EQ(zes1smo(z, f0, 0, 4, 0.4, &L, &mse), 0);
    EXPECT_EQ(mse, 0.0);
  }
  const double x[] = {1, 2, 3, 4};
  double L = 4, mse = 0;
  EXPECT_EQ(zes1smo(x, f0, 4, 0, 0.5, &L, &mse), -2) << "empty";
  L = 4;
  EXPECT_EQ(zes1smo(x, f1, 4, 4, 0.5, &L, &mse), -2) << "all flagged";
  L = 4;
  EXPECT_EQ(zes1smo(x, f0, 4, 4, 1e153, &L, &mse), -9) << "weight beyond the state limit";
  L = 4;
  EXPECT_EQ(zes1smo(x, f0, 0.0001, 4, 0.5, &L, &mse), -9) << "prediction beyond the scale";
  EXPECT_TRUE(wzmis(L));
}

TEST(Zes1Smo, ErrorAndSumGuards) {
  {
    // w = 1e-60 carries 1e140 into the level; the first error is about
    // -1e200, beyond the overflow limit 1.34e154.
    const double x[] = {1e200, 0, 0};
    const char f[] = {0, 0, 0};
    double L = 0, mse = 0;
    EXPECT_EQ(zes1smo(x, f, 1e201, 3, 1e-60, &L, &mse), -9);
  }
  {
    // With w = 1 the errors alternate +-1.3e152 (squares 1.69e304); after
    // about 5300 of them the sum passes 8.99e307 before the next is added.
    const std::size_t n = 6000;
    std::vector<double> x(n);
    for (std::size_t t = 0; t < n; ++t) x[t] = (t % 2) ? 1.3e152 : 0.0;
    std::vector<char> f(n, 0);
    double L = x[n - 1], mse = 0;
    EXPECT_EQ(zes1smo(x.data(), f.data(), 1.3e152, static_cast<long>(n), 1.0, &L, &mse), -9);
    // Half as many terms stay below the limit.
    L = x[2999];
    EXPECT_EQ(zes1smo(x.data(), f.data(), 1.3e152, 3000, 1.0, &L, &mse), 0);
  }
}

// ---------------------------------------------------------------- zes1npd

TEST(Zes1Npd, CentralDifferenceByHand) {
  std::vector<double> x = {3, 5, 4, 6, 8, 7, 9, 8};
  std::vector<char> f(x.size(), 0);
  const long n = static_cast<long>(x.size());
  const double start = 8;
  auto msef = [&](double w) {
    const Pass p = directPass(x, f, w, start);
    return p.ss / static_cast<double>(p.nobs);
  };
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
    ASSERT_EQ(zes1npd(x.data(), f.data(), 9, n, c.w, start, c.delta, c.rel, &d), 0);
    const double expect = (msef(c.hi) - msef(c.lo)) / (c.hi - c.lo);
    EXPECT_NEAR(d, expect, 1e-7 * (1 + std::fabs(expect))) << c.w << " " << c.rel;
  }
  double d = 0;
  EXPECT_EQ(zes1npd(x.data(), f.data(), 9, n, 0.4, start, 1e-160, 0, &d), -92);
  EXPECT_TRUE(wzmis(d));
  EXPECT_EQ(zes1npd(x.data(), f.data(), 9, 0, 0.4, start, 1e-4, 0, &d), -92) << "failing passes";
  EXPECT_TRUE(wzmis(d));
}

// ---------------------------------------------------------------- zes1prd

TEST(Zes1Prd, HandWorkedRows) {
  // The three-point series of HandWorkedThreePoints: start level 2 after the
  // backcast, predictions 2, 1.5, 1.75; final level 2.875.
  const double x[] = {1, 2, 4};
  const char f[] = {0, 0, 0};
  const double se2 = 0.25;  // one-step variance: sd 0.5
  double L = 4, mse = 0;
  std::vector<double> rows(7 * 6, -7);
  ASSERT_EQ(zes1prd(x, f, 4, 3, 0.5, &L, 0, 2, 3, se2, 0.05, 0, &mse, rows.data()), 0);
  const double hw = kZ975 * 0.5;
  const double expect[3][7] = {
      {1, 2, 2 + hw, 2 - hw, 1, 0.5, 1.5},
      {2, 1.5, 1.5 + hw, 1.5 - hw, -0.5, 0.5, 1.75},
      {4, 1.75, 1.75 + hw, 1.75 - hw, -2.25, 0.5, 2.875},
  };
  for (int t = 0; t < 3; ++t)
    for (int c = 0; c < 7; ++c) EXPECT_NEAR(rows[t * 7 + c], expect[t][c], 1e-12) << t << "," << c;
  // Lead rows: flat at 2.875, var_k = 0.25 (1 + (k - 1) 0.25): 0.25, 0.3125, 0.375.
  const double var[3] = {0.25, 0.3125, 0.375};
  for (int k = 0; k < 3; ++k) {
    const double* r = &rows[(3 + k) * 7];
    EXPECT_TRUE(wzmis(r[0]));
    EXPECT_DOUBLE_EQ(r[1], 2.875);
    EXPECT_NEAR(r[2], 2.875 + kZ975 * std::sqrt(var[k]), 1e-12);
    EXPECT_NEAR(r[3], 2.875 - kZ975 * std::sqrt(var[k]), 1e-12);
    EXPECT_TRUE(wzmis(r[4]));
    EXPECT_NEAR(r[5], std::sqrt(var[k]), 1e-15);
    EXPECT_DOUBLE_EQ(r[6], 2.875);
  }
  EXPECT_DOUBLE_EQ(mse, 6.3125 / 2);  // divided by nobs - 1
}

TEST(Zes1Prd, FlaggedRowAndMissingVariance) {
  // x = 1, (missing), 4, w = 0.5, start level 4.
  // Backward: t=2: 4; t=1 skipped; t=0: 0.5*1 + 0.5*4 = 2.5.
  // Forward: t=0: p = 2.5, e = 1.5, L = 1.75; t=1: p = 1.75, e missing, L stays;
  //          t=2: p = 1.75, e = -2.25, L = 2.875. SS = 2.25 + 5.0625 = 7.3125, nobs 2.
  const double x[] = {1, kMissing, 4};
  const char f[] = {0, 1, 0};
  double L = 4, mse = 0;
  std::vector<double> rows(7 * 5, -7);
  ASSERT_EQ(zes1prd(x, f, 4, 3, 0.5, &L, 0, 2, 2, kMissing, 0.05, 0, &mse, rows.data()), 0);
  EXPECT_DOUBLE_EQ(rows[1], 2.5);
  EXPECT_DOUBLE_EQ(rows[4], 1.5);
  EXPECT_TRUE(wzmis(rows[2]) && wzmis(rows[3])) << "no limits without se2";
  EXPECT_EQ(rows[5], 0.0) << "std 0 without se2";
  const double* r1 = &rows[7];
  EXPECT_TRUE(wzmis(r1[0]));
  EXPECT_DOUBLE_EQ(r1[1], 1.75);
  EXPECT_TRUE(wzmis(r1[4]));
  EXPECT_DOUBLE_EQ(r1[6], 1.75);
  EXPECT_DOUBLE_EQ(mse, 7.3125 / 1);
  // Lead rows fall back on mse: var_1 = 7.3125, var_2 = 7.3125 * 1.25.
  EXPECT_NEAR(rows[3 * 7 + 5], std::sqrt(7.3125), 1e-12);
  EXPECT_NEAR(rows[4 * 7 + 5], std::sqrt(7.3125 * 1.25), 1e-12);
  EXPECT_NEAR(rows[4 * 7 + 2] - rows[4 * 7 + 1], kZ975 * std::sqrt(7.3125 * 1.25), 1e-12);
}

TEST(Zes1Prd, StartFlagSkipsTheBackcastAndLeadZero) {
  const double x[] = {1, 2, 4};
  const char f[] = {0, 0, 0};
  double L = 2, mse = 0;  // the level at the beginning, as the backcast leaves it
  std::vector<double> rows(7 * 3, -7);
  ASSERT_EQ(zes1prd(x, f, 4, 3, 0.5, &L, 1, 2, 0, 0.25, 0.05, 1, &mse, rows.data()), 0);
  // start 1: only rows of t = 1 and 2 are written, then no lead rows.
  EXPECT_DOUBLE_EQ(rows[1], 1.5);
  EXPECT_DOUBLE_EQ(rows[7 + 1], 1.75);
  EXPECT_EQ(rows[14], -7) << "nothing written beyond the rows asked for";
  EXPECT_DOUBLE_EQ(L, 2.875);
}

TEST(Zes1Prd, Failures) {
  const double x[] = {1, 2, 4};
  const char f[] = {0, 0, 0};
  const char fall[] = {1, 1, 1};
  double L = 4, mse = 0;
  EXPECT_EQ(zes1prd(x, f, 4, 0, 0.5, &L, 0, 0, 1, 1, 0.05, 0, &mse, nullptr), -2);
  EXPECT_EQ(zes1prd(x, fall, 4, 3, 0.5, &L, 0, 2, 1, 1, 0.05, 0, &mse, nullptr), -2);
  EXPECT_EQ(zes1prd(x, f, 4, 3, 2e152, &L, 0, 2, 1, 1, 0.05, 0, &mse, nullptr), -9);
  L = 4;
  EXPECT_EQ(zes1prd(x, f, 1e-4, 3, 0.5, &L, 0, 2, 1, 1, 0.05, 0, &mse, nullptr), -9);
}

// ---------------------------------------------------------------- cla, psi, std

TEST(Zes1Cla, EqualsVarianceOfPsiWeights) {
  for (double w : {0.0, 0.2, 0.9}) {
    std::vector<double> psi(8);
    ASSERT_EQ(zes1psi(w, 8, psi.data()), 0);
    EXPECT_EQ(psi[0], 1.0);
    double s = 0;
    for (long lead = 1; lead <= 8; ++lead) {
      s += psi[lead - 1] * psi[lead - 1];
      double hw = 0;
      const double var = zes1cla(w, 2.0, lead, 0.05, &hw);
      EXPECT_NEAR(var, 2.0 * s, 1e-14) << w << " " << lead;
      EXPECT_NEAR(hw, kZ975 * std::sqrt(2.0 * s), 1e-12);
    }
  }
  double hw = 0;
  EXPECT_TRUE(wzmis(zes1cla(0.3, kMissing, 2, 0.05, &hw)));
  EXPECT_TRUE(wzmis(hw));
}

TEST(Zes1Std, Table) {
  struct Case {
    const char* name;
    double xpx, mse, w;
    long nobs;
    double se, t;  // expected; -1 marks the missing value
    char tcode;    // expected missing kind of t, or 0
  } cases[] = {
      // sqrt(|-0.02| * 2) = 0.2; t = 0.3 / 0.2 = 1.5
      {"ordinary", -0.02, 2.0, 0.3, 10, 0.2, 1.5, 0},
      {"too few", 0.02, 2.0, 0.3, 1, -1, -1, '.'},
      {"perfect fit gives .I", 0.02, 0.0, 0.3, 10, 0.0, -1, 'I'},
      {"negative weight over zero gives .M", 0.02, 0.0, -0.3, 10, 0.0, -1, 'M'},
  };
  for (const auto& c : cases) {
    double se = 0, t = 0;
    zes1std(&c.xpx, c.mse, c.nobs, &c.w, &se, &t);
    if (c.se < 0) {
      EXPECT_TRUE(wzmis(se)) << c.name;
    } else {
      EXPECT_NEAR(se, c.se, 1e-15) << c.name;
    }
    if (c.tcode) {
      EXPECT_EQ(missCode(t), c.tcode) << c.name;
    } else {
      EXPECT_NEAR(t, c.t, 1e-14) << c.name;
    }
  }
}

TEST(Divide, Table) {
  struct Case {
    double num, den;
    int rc;
    double q;    // when code is 0
    char code;   // missing kind expected, or 0
  } cases[] = {
      {6, 3, 0, 2, 0},
      {1e-300, 1e-300, 0, 1, 0},
      {0, 1e-300, 0, 0, 0},
      {1, 0, -92, 0, 'I'},
      {-1, 0, -92, 0, 'M'},
      {0, 0, -92, 0, '.'},
      {1e300, 1e-300, -92, 0, 'I'},
      {-1e300, 1e-300, -92, 0, 'M'},
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
