// Selection of order statistics against sorting, with ties, weights and a payload.
#include "dense_oracle.hpp"

namespace qvt {
namespace {
std::vector<double> sorted(std::vector<double> v) {
  std::sort(v.begin(), v.end());
  return v;
}

TEST(Select, AgreesWithSortingOnRandomAndTiedData) {
  std::mt19937 gen(12345);
  std::uniform_int_distribution<int> small(0, 4);  // many ties
  std::normal_distribution<double> normal(0.0, 1.0);
  for (int trial = 0; trial < 60; ++trial) {
    const long n = 1 + trial * 7 % 53;
    std::vector<double> x(n);
    for (auto& v : x) v = trial % 2 ? small(gen) : normal(gen);
    const auto s = sorted(x);
    // Several ascending positions at once.
    std::vector<double> pos = {0.0, static_cast<double>(n / 3), static_cast<double>(n / 2), static_cast<double>(n - 1)};
    std::vector<double> xj(4), xj1(4);
    auto work = x;
    ASSERT_EQ(zqpsort(n, work.data(), nullptr, 4, pos.data(), xj.data(), xj1.data(), nullptr, 0, nullptr), 0);
    for (int q = 0; q < 4; ++q) {
      const auto k = static_cast<std::size_t>(pos[q]);
      EXPECT_EQ(xj[q], s[k]) << "trial " << trial << " pos " << k;
      EXPECT_EQ(xj1[q], s[std::min<std::size_t>(k + 1, n - 1)]) << "trial " << trial << " pos " << k;
    }
    // The array was rearranged, not changed.
    EXPECT_EQ(sorted(work), s);
  }
}

TEST(Select, PayloadTravelsWithItsValue) {
  std::vector<double> x = {3.5, -1.0, 8.25, 0.5, 2.0, 7.0};
  std::vector<std::int32_t> tag = {0, 1, 2, 3, 4, 5};
  const auto orig = x;
  std::int32_t scratch = 0;
  const double pos = 2;
  double xj = 0;
  ASSERT_EQ(zqpsort(6, x.data(), nullptr, 1, &pos, &xj, nullptr, tag.data(), sizeof(std::int32_t), &scratch), 0);
  EXPECT_EQ(xj, 2.0);
  for (int i = 0; i < 6; ++i) EXPECT_EQ(x[i], orig[tag[i]]) << i;
}

TEST(Select, WeightedPositionsCountWeight) {
  // Sorted: 1 (w 2), 2 (w 0), 3 (w 1.5), 4 (w 0.5): weight intervals
  // [0,2) -> 1, [2,3.5) -> 3, [3.5,4) -> 4. The zero-weight 2 never stands anywhere.
  std::vector<double> x = {4, 2, 3, 1};
  std::vector<double> w = {0.5, 0.0, 1.5, 2.0};
  const double pos[] = {-1.0, 0.0, 1.99, 2.0, 3.49, 3.5, 3.9, 10.0};
  const double want[] = {0, 1, 1, 3, 3, 4, 4, 4};
  const double want1[] = {1, 1, 3, 3, 4, 4, 4, 4};
  double xj[8], xj1[8];
  ASSERT_EQ(zqpsort(4, x.data(), w.data(), 8, pos, xj, xj1, nullptr, 0, nullptr), 0);
  for (int q = 0; q < 8; ++q) {
    if (q == 0) {
      EXPECT_EQ(wzmis(xj[q]), 1);
    } else {
      EXPECT_EQ(xj[q], want[q]) << pos[q];
    }
    EXPECT_EQ(xj1[q], want1[q]) << pos[q];
  }
  // The weights moved with their values.
  for (int i = 0; i < 4; ++i) {
    const double wanted = x[i] == 1 ? 2.0 : x[i] == 2 ? 0.0 : x[i] == 3 ? 1.5 : 0.5;
    EXPECT_EQ(w[i], wanted) << x[i];
  }
}

TEST(Select, PositionMinusOneGivesTheMinimumNext) {
  std::vector<double> x = {4, 2, 6};
  const double pos = -1;
  double xj = 0, xj1 = 0;
  ASSERT_EQ(zqpsort(3, x.data(), nullptr, 1, &pos, &xj, &xj1, nullptr, 0, nullptr), 0);
  EXPECT_EQ(wzmis(xj), 1);
  EXPECT_EQ(xj1, 2.0);
}

TEST(Select, Failures) {
  std::vector<double> x = {1, 2, 3};
  double xj = 0;
  const double ok = 1, tooBig = 3, tooSmall = -2;
  const double desc[] = {2, 1};
  double xj2[2];
  EXPECT_EQ(zqpsort(0, x.data(), nullptr, 1, &ok, &xj, nullptr, nullptr, 0, nullptr), -1);
  EXPECT_EQ(zqpsort(3, x.data(), nullptr, 0, &ok, &xj, nullptr, nullptr, 0, nullptr), -1);
  EXPECT_EQ(zqpsort(3, x.data(), nullptr, 1, &tooBig, &xj, nullptr, nullptr, 0, nullptr), -1);
  EXPECT_EQ(zqpsort(3, x.data(), nullptr, 1, &tooSmall, &xj, nullptr, nullptr, 0, nullptr), -1);
  EXPECT_EQ(zqpsort(3, x.data(), nullptr, 2, desc, xj2, nullptr, nullptr, 0, nullptr), -1);
  // A payload needs its scratch and its width.
  std::vector<int> tag = {0, 1, 2};
  EXPECT_EQ(zqpsort(3, x.data(), nullptr, 1, &ok, &xj, nullptr, tag.data(), 4, nullptr), -1);
  EXPECT_EQ(zqpsort(3, x.data(), nullptr, 1, &ok, &xj, nullptr, tag.data(), 0, &xj), -1);
  std::vector<double> w = {0, 1e-13, 0};
  EXPECT_EQ(zqpsort(3, x.data(), w.data(), 1, &ok, &xj, nullptr, nullptr, 0, nullptr), -2);
  std::vector<double> neg = {-1, -2, kMissing};
  EXPECT_EQ(zqpsort(3, x.data(), neg.data(), 1, &ok, &xj, nullptr, nullptr, 0, nullptr), -2);
}

}  // namespace
}  // namespace qvt
