// Packed symmetric matrices (index, root-free Cholesky and its inverse, the
// positive-definiteness repair), the sweep operator and the selection of
// order statistics, against a dense Gauss-Jordan solve in long double,
// sorting, and hand-worked matrices.
#include "stats/sweep.hpp"

#include "dense_oracle.hpp"

namespace qvt {
namespace {

using namespace testing_dense;

TEST(PackedIndex, BothOrdersAndTheSize) {
  EXPECT_EQ(zisub(1000, 999), 501499);
  EXPECT_EQ(zisub(999, 1000), 501499);
  EXPECT_EQ(packedSize(6), 21u);
  EXPECT_EQ(packedSize(0), 0u);
}

TEST(PackedInverse, CholeskyAndSweepingEveryPivotMatchGaussJordan) {
  for (const Dense* m : {&kSpd3, &kSpd4}) {
    const int n = static_cast<int>(m->size());
    const Dense want = inverse(*m);
    auto a = pack(*m);
    ASSERT_EQ(zrchol(a.data(), n, 1e-14), 0);
    std::vector<double> inv(a.size());
    zrchinv(a.data(), inv.data(), n);
    auto sw = pack(*m);  // sweeping every pivot leaves minus the inverse
    std::vector<char> cc(n, '0');
    std::vector<double> wrk(n);
    for (int k = 0; k < n; ++k) ASSERT_EQ(hostSweep(1e-14, sw.data(), k, n, cc.data(), wrk.data()), 0);
    for (int i = 0; i < n; ++i) {
      EXPECT_EQ(cc[i], '1');
      for (int j = 0; j <= i; ++j) {
        EXPECT_NEAR(inv[zisub(i, j)], want[i][j], 1e-14) << i << "," << j;
        EXPECT_NEAR(sw[zisub(i, j)], -want[i][j], 1e-14) << i << "," << j;
      }
    }
    zrchinv(a.data(), a.data(), n);  // in place gives the same
    EXPECT_EQ(a, inv);
  }
}

TEST(Cholesky, IndefiniteAndSingularInputs) {
  double ind[] = {1, 2, 1};  // [[1, 2], [2, 1]]: LDL' without pivoting gives D = (1, -3)
  ASSERT_EQ(zrchol(ind, 2, 1e-12), 0);
  EXPECT_EQ(ind[2], -3.0);
  // norm * tol is 0 (twice); rank 2: the third pivot vanishes; the first
  // pivot tiny against the norm; no order.
  struct Case { std::vector<double> a; int n; double tol; int rc; };
  const Case cases[] = {{std::vector<double>(6, 0.0), 3, 1e-8, 1}, {pack(kSpd3), 3, 0.0, 1},
                        {pack({{1, 2, 3}, {2, 5, 7}, {3, 7, 10}}), 3, 1e-10, 3}, {{1e-20, 0, 1}, 2, 1e-12, 1},
                        {{1e-20, 0, 1}, 0, 1e-12, -99}};
  for (Case c : cases) EXPECT_EQ(zrchol(c.a.data(), c.n, c.tol), c.rc) << c.n << " " << c.tol;
}

TEST(PositiveDefinite, PassingSequencesGiveYuleWalkerAndFailingOnesAreShrunk) {
  // A passing sequence: the coefficients solve the Yule-Walker equations
  // (solved here by Gauss-Jordan), every step of the recursion with a
  // nonzero partial autocorrelation.
  const double yw[] = {1.0, 0.6, 0.2, -0.1, 0.05};
  std::vector<LRow> eq(4, LRow(5));
  for (int i = 0; i < 4; ++i) {
    for (int j = 0; j < 4; ++j) eq[i][j] = yw[std::abs(i - j)];
    eq[i][4] = yw[i + 1];
  }
  const auto phi = gaussJordan(eq);
  double w4[4];
  EXPECT_EQ(zposdef(yw, 4, w4), 1.0);
  for (int j = 0; j < 4; ++j) EXPECT_NEAR(w4[j], -static_cast<double>(phi[j][0]), 1e-14) << j;
  // rho1 = 0.9, rho2 = -0.9 has partial autocorrelation -9 at lag 2: the
  // shrunk sequence passes, 0.1 more does not, and the coefficients are
  // Yule-Walker's at the shrunk sequence.
  const double rho[] = {1.0, 0.9, -0.9};
  double work[2];
  const double lambda = zposdef(rho, 2, work);
  ASSERT_GT(lambda, 0.0);
  ASSERT_LT(lambda, 1.0);
  auto pacf2 = [](double l) { return (-0.9 * l * l - 0.81 * l * l) / (1 - 0.81 * l * l); };
  EXPECT_LT(std::fabs(pacf2(lambda)), 1.0);
  EXPECT_GE(std::fabs(pacf2(std::fmin(1.0, lambda + 0.1))), 1.0);
  EXPECT_NEAR(work[0], -0.9 * lambda * (1 - pacf2(lambda)), 1e-14);
  EXPECT_NEAR(work[1], -pacf2(lambda), 1e-14);
}

TEST(SmallHelpers, GcdStridedCopyAndAbsoluteMaximum) {
  struct Case { long a, b, want; };
  for (const Case& c : {Case{18, 12, 6}, Case{7, 13, 1}, Case{5, 0, 0}, Case{4, -6, 0}}) {
    EXPECT_EQ(zgcd(c.a, c.b), c.want) << c.a << "," << c.b;
  }
  const double a[] = {1, 2, 3};
  std::vector<double> c(7, 0.0);
  zvmovj1(c.data(), 3, a, 3);
  EXPECT_EQ(c, (std::vector<double>{1, 0, 0, 2, 0, 0, 3}));
  const double neg[] = {-5, 2};
  EXPECT_EQ(zvamx(c.data(), 7), 3.0);
  EXPECT_EQ(zvamx(neg, 2), 5.0);
  EXPECT_EQ(zvamx(neg, 0), 0.0);
}

TEST(Sweep, SweepingTwiceRestoresInAnyOrder) {
  // Undone in another order; the marks say which way each sweep goes.
  auto a = pack(kSpd4);
  const auto orig = a;
  char cc[4] = {'0', '0', '0', '0'};
  for (int k : {2, 0, 3, 0, 3, 2}) ASSERT_EQ(hostSweep(1e-12, a.data(), k, 4, cc, nullptr), 0);
  EXPECT_EQ(std::string(cc, 4), "0000");
  for (std::size_t i = 0; i < a.size(); ++i) EXPECT_NEAR(a[i], orig[i], 1e-13 * 8) << i;
}

TEST(Sweep, PivotAtOrBelowToleranceAndImpossibleArguments) {
  struct Case { double pivot, tol; };
  for (const Case& c : {Case{0.0, 0.0}, Case{1e-3, 1e-3}, Case{-2.0, 1e-12}}) {
    double a[] = {c.pivot, 0.5, 3.0};
    char cc[2] = {'0', '0'};
    EXPECT_EQ(hostSweep(c.tol, a, 0, 2, cc, nullptr), 1) << c.pivot;
    EXPECT_EQ(std::vector<double>(a, a + 3), (std::vector<double>{c.pivot, 0.5, 3.0}));
    EXPECT_EQ(cc[0], '0');
  }
  // A zero derivative column: its pivot is not swept, the other is.
  double b[] = {0, 0, 2, 0, 4, 9};  // order 3: (1,1) = 2, (2,1) = 4, (2,2) = 9
  char cc[3] = {'0', '0', '0'};
  EXPECT_EQ(hostSweep(1e-12, b, 0, 3, cc, nullptr), 1);
  EXPECT_EQ(hostSweep(1e-12, b, 1, 3, cc, nullptr), 0);
  EXPECT_EQ(b[zisub(1, 2)], 2.0);  // 4 / 2
  EXPECT_EQ(b[zisub(2, 2)], 1.0);  // 9 - 16 / 2
  EXPECT_EQ(hostSweep(0, b, 2, 2, cc, nullptr), -99);
  EXPECT_EQ(hostSweep(0, b, -1, 2, cc, nullptr), -99);
  EXPECT_EQ(hostSweep(0, b, 0, 2, nullptr, nullptr), -99);
}

int qselect(std::vector<double>& x, double* w, std::vector<double> pos, double* xj, double* xj1) {
  return zqpsort(static_cast<long>(x.size()), x.data(), w, static_cast<int>(pos.size()), pos.data(), xj, xj1,
                 nullptr, 0, nullptr);
}

TEST(Select, AgreesWithSortingOnRandomAndTiedDataCarryingAPayload) {
  std::mt19937 gen(12345);
  std::uniform_int_distribution<int> small(0, 4);  // many ties
  std::normal_distribution<double> normal(0.0, 1.0);
  for (int trial = 0; trial < 60; ++trial) {
    const long n = 1 + trial * 7 % 53;
    std::vector<double> x(n);
    for (auto& v : x) v = trial % 2 ? small(gen) : normal(gen);
    auto s = x;
    std::sort(s.begin(), s.end());
    const std::vector<double> pos = {0.0, static_cast<double>(n / 3), static_cast<double>(n / 2),
                                     static_cast<double>(n - 1)};
    // A payload of original indices travels with the values.
    std::vector<std::int32_t> tag(n);
    for (long i = 0; i < n; ++i) tag[i] = static_cast<std::int32_t>(i);
    const auto orig = x;
    std::int32_t scratch = 0;
    double xj[4], xj1[4];
    ASSERT_EQ(zqpsort(n, x.data(), nullptr, 4, pos.data(), xj, xj1, tag.data(), sizeof scratch, &scratch), 0);
    for (long i = 0; i < n; ++i) EXPECT_EQ(x[i], orig[tag[i]]) << "trial " << trial << " at " << i;
    for (int q = 0; q < 4; ++q) {
      const auto k = static_cast<std::size_t>(pos[q]);
      EXPECT_EQ(xj[q], s[k]) << "trial " << trial << " pos " << k;
      EXPECT_EQ(xj1[q], s[std::min<std::size_t>(k + 1, n - 1)]) << "trial " << trial << " pos " << k;
    }
    std::sort(x.begin(), x.end());  // rearranged, not changed
    EXPECT_EQ(x, s);
  }
}

TEST(Select, WeightedPositionsAndFailures) {
  // Sorted: 1 (w 2), 2 (w 0), 3 (w 1.5), 4 (w 0.5): weight intervals
  // [0,2) -> 1, [2,3.5) -> 3, [3.5,4) -> 4. The zero-weight 2 never stands
  // anywhere, and below 0 there is no value but the next is the minimum.
  std::vector<double> x = {4, 2, 3, 1};
  std::vector<double> w = {0.5, 0.0, 1.5, 2.0};
  double xj[9], xj1[9];
  ASSERT_EQ(qselect(x, w.data(), {-1.0, 0.0, 1.0, 1.99, 2.0, 3.49, 3.5, 3.9, 10.0}, xj, xj1), 0);
  EXPECT_EQ(wzmis(xj[0]), 1);
  EXPECT_EQ(std::vector<double>(xj + 1, xj + 9), (std::vector<double>{1, 1, 1, 3, 3, 4, 4, 4}));
  EXPECT_EQ(std::vector<double>(xj1, xj1 + 9), (std::vector<double>{1, 1, 3, 3, 3, 4, 4, 4, 4}));
  const double weightOf[] = {2.0, 0.0, 1.5, 0.5};  // the weights moved with their values
  for (int i = 0; i < 4; ++i) EXPECT_EQ(w[i], weightOf[static_cast<int>(x[i]) - 1]) << x[i];
  std::vector<double> u = {4, 2, 6};
  ASSERT_EQ(qselect(u, nullptr, {-1}, xj, xj1), 0);
  EXPECT_EQ(wzmis(xj[0]) + (xj1[0] == 2.0), 2);
  // Failures: no values, positions out of range or descending, a payload
  // without a width, weights that sum to nothing.
  std::vector<double> v = {1, 2, 3};
  const double one = 1;
  EXPECT_EQ(zqpsort(0, v.data(), nullptr, 1, &one, xj, nullptr, nullptr, 0, nullptr), -1);
  for (const std::vector<double>& pos : {std::vector<double>{3}, {-2}, {2, 1}}) {
    EXPECT_EQ(qselect(v, nullptr, pos, xj, nullptr), -1);
  }
  EXPECT_EQ(zqpsort(3, v.data(), nullptr, 1, &one, xj, nullptr, v.data(), 0, xj), -1);
  std::vector<double> bad = {0, 1e-13, kMissing};
  EXPECT_EQ(qselect(v, bad.data(), {1}, xj, nullptr), -2);
}

}  // namespace
}  // namespace qvt
