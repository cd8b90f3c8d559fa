// The sweep operator against a dense Gauss-Jordan inverse and a least-squares
// fit solved directly, and on hand-worked matrices.
#include "stats/sweep.hpp"

#include "dense_oracle.hpp"

namespace qvt {
namespace {

using namespace testing_dense;

TEST(Sweep, SweepingAllPivotsGivesMinusTheInverse) {
  for (const Dense* m : {&kSpd3, &kSpd4, &kHilbert5}) {
    const int n = static_cast<int>(m->size());
    auto a = pack(*m);
    std::vector<char> cc(n, '0');
    std::vector<double> wrk(n);
    for (int k = 0; k < n; ++k) ASSERT_EQ(hostSweep(1e-14, a.data(), k, n, cc.data(), wrk.data()), 0);
    const Dense want = inverse(*m);
    const double tol = m == &kHilbert5 ? 1e-6 : 1e-14;
    for (int i = 0; i < n; ++i) {
      EXPECT_EQ(cc[i], '1');
      for (int j = 0; j <= i; ++j)
        EXPECT_NEAR(a[zisub(i, j)], -want[i][j], tol * std::fmax(1.0, std::fabs(want[i][j]))) << i << "," << j;
    }
  }
}

TEST(Sweep, SweepingTwiceRestoresTheMatrixInAnyOrder) {
  auto a = pack(kSpd4);
  const auto orig = a;
  char cc[4] = {'0', '0', '0', '0'};
  for (int k : {2, 0, 3}) ASSERT_EQ(hostSweep(1e-12, a.data(), k, 4, cc, nullptr), 0);
  // Undo in a different order; the marks say which way each sweep goes.
  for (int k : {0, 3, 2}) ASSERT_EQ(hostSweep(1e-12, a.data(), k, 4, cc, nullptr), 0);
  for (char c : cc) EXPECT_EQ(c, '0');
  for (std::size_t i = 0; i < a.size(); ++i) EXPECT_NEAR(a[i], orig[i], 1e-13 * 8) << i;
}

TEST(Sweep, RegressionThroughTheCrossProductMatrix) {
  // y = 1 + 2 x1 - 3 x2 + e on 6 points, hand-chosen e; the cross products
  // of (1, x1, x2, y). Sweeping the three regressors must give the least
  // squares coefficients (solved here by Gauss-Jordan on X'X) in the last
  // row with their plain sign, and the residual sum of squares in the corner.
  const double x1[] = {0, 1, 2, 3, 4, 5};
  const double x2[] = {1, 0, 2, 1, 3, 2};
  const double e[] = {0.1, -0.2, 0.05, 0.15, -0.1, 0.0};
  Dense xpx(4, std::vector<double>(4, 0.0));
  for (int t = 0; t < 6; ++t) {
    const double row[] = {1.0, x1[t], x2[t], 1 + 2 * x1[t] - 3 * x2[t] + e[t]};
    for (int i = 0; i < 4; ++i)
      for (int j = 0; j < 4; ++j) xpx[i][j] += row[i] * row[j];
  }
  Dense xx(3, std::vector<double>(3));
  for (int i = 0; i < 3; ++i)
    for (int j = 0; j < 3; ++j) xx[i][j] = xpx[i][j];
  const Dense xxi = inverse(xx);
  double beta[3];
  for (int i = 0; i < 3; ++i) beta[i] = xxi[i][0] * xpx[0][3] + xxi[i][1] * xpx[1][3] + xxi[i][2] * xpx[2][3];
  double rss = 0.0;
  for (int t = 0; t < 6; ++t) {
    const double r = 1 + 2 * x1[t] - 3 * x2[t] + e[t] - beta[0] - beta[1] * x1[t] - beta[2] * x2[t];
    rss += r * r;
  }
  auto a = pack(xpx);
  char cc[4] = {'0', '0', '0', '0'};
  double wrk[4];
  for (int k = 0; k < 3; ++k) ASSERT_EQ(hostSweep(1e-12, a.data(), k, 4, cc, wrk), 0);
  for (int i = 0; i < 3; ++i) {
    EXPECT_NEAR(a[zisub(i, 3)], beta[i], 1e-12) << i;
    EXPECT_NEAR(std::fabs(a[zisub(i, i)]), xxi[i][i], 1e-12) << i;
  }
  EXPECT_NEAR(a[zisub(3, 3)], rss, 1e-12);
  EXPECT_EQ(cc[3], '0');
}

TEST(Sweep, PivotAtOrBelowToleranceLeavesEverything) {
  struct Case { double pivot, tol; };
  for (const Case& c : {Case{0.0, 0.0}, Case{1e-3, 1e-3}, Case{-2.0, 1e-12}, Case{1e-20, 1e-18}}) {
    double a[] = {c.pivot, 0.5, 3.0};
    char cc[2] = {'0', '0'};
    EXPECT_EQ(hostSweep(c.tol, a, 0, 2, cc, nullptr), 1) << c.pivot;
    EXPECT_EQ(a[0], c.pivot);
    EXPECT_EQ(a[1], 0.5);
    EXPECT_EQ(a[2], 3.0);
    EXPECT_EQ(cc[0], '0');
  }
  // A zero derivative column: its pivot is not swept, the other is.
  double b[] = {0, 0, 2, 0, 4, 9};  // order 3: (0,0)=0, (1,1)=2, (2,1)=4, (2,2)=9
  char cc[3] = {'0', '0', '0'};
  EXPECT_EQ(hostSweep(1e-12, b, 0, 3, cc, nullptr), 1);
  EXPECT_EQ(hostSweep(1e-12, b, 1, 3, cc, nullptr), 0);
  EXPECT_EQ(b[zisub(1, 2)], 2.0);  // 4 / 2
  EXPECT_EQ(b[zisub(2, 2)], 1.0);  // 9 - 16 / 2
}

TEST(Sweep, ImpossibleArguments) {
  double a[] = {1, 0, 1};
  char cc[2] = {'0', '0'};
  EXPECT_EQ(hostSweep(0, a, 2, 2, cc, nullptr), -99);
  EXPECT_EQ(hostSweep(0, a, -1, 2, cc, nullptr), -99);
  EXPECT_EQ(hostSweep(0, a, 0, 0, cc, nullptr), -99);
  EXPECT_EQ(hostSweep(0, nullptr, 0, 2, cc, nullptr), -99);
  EXPECT_EQ(hostSweep(0, a, 0, 2, nullptr, nullptr), -99);
}

}  // namespace
}  // namespace qvt
