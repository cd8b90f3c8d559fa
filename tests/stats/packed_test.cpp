// Packed symmetric matrices: the index, root-free Cholesky and its inverse,
// the positive-definiteness repair, against a dense Gauss-Jordan solve
// written here and against hand-worked matrices.

#include "dense_oracle.hpp"

namespace qvt {
namespace {

using namespace testing_dense;

TEST(PackedIndex, BothOrdersAndLayout) {
  struct Case { long i, j, want; };
  for (const Case& c : {Case{0, 0, 0}, Case{1, 0, 1}, Case{1, 1, 2}, Case{2, 0, 3}, Case{2, 2, 5},
                        Case{3, 1, 7}, Case{9, 4, 49}, Case{1000, 999, 501499}}) {
    EXPECT_EQ(zisub(c.i, c.j), c.want) << c.i << "," << c.j;
    EXPECT_EQ(zisub(c.j, c.i), c.want) << c.j << "," << c.i;
  }
  // Every element of an order-6 matrix has its own place, and they fill
  // 0..20 without a gap.
  std::vector<int> hits(21, 0);
  for (long i = 0; i < 6; ++i)
    for (long j = 0; j <= i; ++j) ++hits[zisub(i, j)];
  for (int h : hits) EXPECT_EQ(h, 1);
  EXPECT_EQ(packedSize(6), 21u);
  EXPECT_EQ(packedSize(0), 0u);
}

TEST(Cholesky, FactorRebuildsTheMatrix) {
  for (const Dense* m : {&kSpd3, &kSpd4, &kHilbert5}) {
    const long n = static_cast<long>(m->size());
    auto a = pack(*m);
    ASSERT_EQ(zrchol(a.data(), static_cast<int>(n), 1e-14), 0);
    // L D L' from the packed factor.
    for (long i = 0; i < n; ++i)
      for (long j = 0; j <= i; ++j) {
        long double s = 0.0L;
        for (long k = 0; k <= j; ++k) {
          const long double lik = k == i ? 1.0L : a[zisub(i, k)];
          const long double ljk = k == j ? 1.0L : a[zisub(j, k)];
          s += lik * a[zisub(k, k)] * ljk;
        }
        EXPECT_NEAR(static_cast<double>(s), (*m)[i][j], 1e-13 * std::fabs((*m)[0][0])) << i << "," << j;
      }
  }
}

TEST(Cholesky, InverseMatchesGaussJordan) {
  for (const Dense* m : {&kSpd3, &kSpd4, &kHilbert5}) {
    const int n = static_cast<int>(m->size());
    auto a = pack(*m);
    ASSERT_EQ(zrchol(a.data(), n, 1e-14), 0);
    std::vector<double> inv(a.size());
    zrchinv(a.data(), inv.data(), n);
    const Dense want = inverse(*m);
    double scale = 0.0;
    for (const auto& row : want)
      for (double v : row) scale = std::fmax(scale, std::fabs(v));
    // The Hilbert matrix of order 5 has condition 4.8e5: allow for it.
    const double tol = (m == &kHilbert5 ? 1e-10 : 1e-14) * scale;
    for (int i = 0; i < n; ++i)
      for (int j = 0; j <= i; ++j) EXPECT_NEAR(inv[zisub(i, j)], want[i][j], tol) << i << "," << j;
    // In place gives the same.
    zrchinv(a.data(), a.data(), n);
    for (std::size_t k = 0; k < a.size(); ++k) EXPECT_EQ(a[k], inv[k]);
  }
}

TEST(Cholesky, IndefiniteAndSingularInputs) {
  // Symmetric but indefinite: LDL' without pivoting still factors it, with
  // a negative pivot.
  double ind[] = {1, 2, 1};  // [[1, 2], [2, 1]]: D = (1, -3)
  ASSERT_EQ(zrchol(ind, 2, 1e-12), 0);
  EXPECT_EQ(ind[2], -3.0);
  // A zero matrix: norm * tol is 0.
  double zero[6] = {0, 0, 0, 0, 0, 0};
  EXPECT_EQ(zrchol(zero, 3, 1e-8), 1);
  // tol 0 gives the same answer for any matrix.
  auto a = pack(kSpd3);
  EXPECT_EQ(zrchol(a.data(), 3, 0.0), 1);
  // Rank 2 of order 3: the third pivot vanishes, result 3 (from 1).
  const Dense r2 = {{1, 2, 3}, {2, 5, 7}, {3, 7, 10}};  // row 3 = row 1 + row 2
  auto b = pack(r2);
  EXPECT_EQ(zrchol(b.data(), 3, 1e-10), 3);
  // First pivot tiny against the norm: result 1.
  double c[] = {1e-20, 0, 1};
  EXPECT_EQ(zrchol(c, 2, 1e-12), 1);
  EXPECT_EQ(zrchol(c, 0, 1e-12), -99);
}

// ------------------------------------------------------ positive definite

TEST(PositiveDefinite, PassingSequenceKeepsLambdaOneAndGivesYuleWalker) {
  // AR(1) autocorrelations 0.5^h: phi = (0.5, 0, 0), polynomial 1 - 0.5 B.
  const double rho[] = {1.0, 0.5, 0.25, 0.125};
  double work[3] = {9, 9, 9};
  EXPECT_EQ(zposdef(rho, 3, work), 1.0);
  EXPECT_NEAR(work[0], -0.5, 1e-15);
  EXPECT_NEAR(work[1], 0.0, 1e-15);
  EXPECT_NEAR(work[2], 0.0, 1e-15);
  // AR(2) with phi = (0.5, 0.3): rho1 = phi1 / (1 - phi2), rho2 = phi1 rho1 + phi2.
  const double r1 = 0.5 / 0.7;
  const double r2 = 0.5 * r1 + 0.3;
  const double rho2[] = {1.0, r1, r2};
  double w2[2];
  EXPECT_EQ(zposdef(rho2, 2, w2), 1.0);
  EXPECT_NEAR(w2[0], -0.5, 1e-14);
  EXPECT_NEAR(w2[1], -0.3, 1e-14);
}

TEST(PositiveDefinite, FailingSequenceIsShrunkUntilItPasses) {
  // rho1 = 0.9, rho2 = -0.9 is not a correlation sequence: the partial
  // autocorrelation at lag 2 is (rho2 - rho1^2) / (1 - rho1^2) = -9.
  const double rho[] = {1.0, 0.9, -0.9};
  double work[2];
  const double lambda = zposdef(rho, 2, work);
  ASSERT_GT(lambda, 0.0);
  ASSERT_LT(lambda, 1.0);
  // The shrunk sequence passes, and shrinking by 0.05 more than the
  // bisection's last gap does not find a passing point above it: check the
  // partial autocorrelation directly.
  auto pacf2 = [](double l) {
    const double a = 0.9 * l, b = -0.9 * l * l;
    return (b - a * a) / (1 - a * a);
  };
  EXPECT_LT(std::fabs(pacf2(lambda)), 1.0);
  EXPECT_GE(std::fabs(pacf2(std::fmin(1.0, lambda + 0.1))), 1.0);
  // The coefficients are those of Yule-Walker at the shrunk sequence.
  const double a = 0.9 * lambda, b = -0.9 * lambda * lambda;
  const double phi2 = (b - a * a) / (1 - a * a);
  const double phi1 = a * (1 - phi2);
  EXPECT_NEAR(work[0], -phi1, 1e-14);
  EXPECT_NEAR(work[1], -phi2, 1e-14);
}

// ---------------------------------------------------------- small ones

TEST(Gcd, Table) {
  struct Case { long a, b, want; };
  for (const Case& c : {Case{12, 18, 6}, Case{18, 12, 6}, Case{7, 13, 1}, Case{52, 52, 52}, Case{1, 9, 1},
                        Case{0, 5, 0}, Case{5, 0, 0}, Case{-4, 6, 0}, Case{4, -6, 0}, Case{1L << 40, 3L << 20, 1L << 20}}) {
    EXPECT_EQ(zgcd(c.a, c.b), c.want) << c.a << "," << c.b;
  }
  static_assert(zgcd(12, 8) == 4);
}

TEST(StridedCopy, PlacesEveryJcth) {
  const double a[] = {1, 2, 3};
  double c[7] = {0, 0, 0, 0, 0, 0, 0};
  zvmovj1(c, 3, a, 3);
  const double want[] = {1, 0, 0, 2, 0, 0, 3};
  for (int i = 0; i < 7; ++i) EXPECT_EQ(c[i], want[i]) << i;
  EXPECT_EQ(zvamx(want, 7), 3.0);
  const double neg[] = {-5, 2};
  EXPECT_EQ(zvamx(neg, 2), 5.0);
  EXPECT_EQ(zvamx(neg, 0), 0.0);
}

}  // namespace
}  // namespace qvt
