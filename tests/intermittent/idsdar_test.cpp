// The base search and the test number, against values worked by hand.
#include <gtest/gtest.h>

#include <vector>

#include "intermittent/idseries.hpp"
#include "run/missing.hpp"

namespace qvt {
namespace {

constexpr double M = kMissing;

struct BaseCase {
  const char* name;
  std::vector<double> y;
  int rc;
  double base;
  long ndistinct;
};

// By hand: min, median (mean of the two middle values for even counts) and
// max, each counted; the median only when it stands apart from both ends.
TEST(Idsdar, BaseByHand) {
  const BaseCase cases[] = {
      {"zeros with demands: min holds 6 of 8", {0, 0, 5, 0, 0, 3, 0, 0}, 0, 0, 0},
      {"rests at 10, median holds 6", {10, 10, 10, 12, 10, 7, 10, 10}, 0, 10, 3},
      {"rests at the max", {0, 9, 9, 9, 9, 9, 9}, 0, 9, 2},
      {"value 2 uncovered, a missing: -1", {M, 1, 2, 9, 9, 9, 9, 9}, 0, 9, -1},
      {"missing the most frequent state", {M, M, M, M, 1, 2, 3}, 0, 0, 4},
      {"min and max tie", {0, 0, 0, 5, 5, 5}, 0, 0, 2},
      {"constant: every count 0, a tie", {7, 7, 7, 7, 7, 7}, 0, 0, 0},
      {"all zeros", {0, 0, 0, 0, 0, 0}, 0, 0, 1},
      {"all zeros with a missing", {0, M, 0, 0, 0, 0}, 0, 0, 2},
      {"a single value", {M, M, M, M, M, 4}, 0, 0, 2},
      {"fewer than 6", {0, 0, 0, 5, 0}, kIdsShortBase, 0, 0},
      {"all missing", {M, M, M}, kIdsAllMissing, 0, -1},
  };
  for (const BaseCase& c : cases) {
    std::vector<double> work(c.y.size());
    double base = -1;
    long nd = -9;
    EXPECT_EQ(idsdar(c.y.data(), work.data(), long(c.y.size()), 1.0, &base, &nd), c.rc) << c.name;
    EXPECT_EQ(base, c.base) << c.name;
    EXPECT_EQ(nd, c.ndistinct) << c.name;
  }
  double y[] = {1e154, 0}, w[2], base = 0;
  long nd = 0;
  EXPECT_EQ(idsdar(y, w, 2, 1.0, &base, &nd), kIdsExtreme);
  EXPECT_EQ(idsdar(y, w, 2, 0.5, &base, &nd), kIdsBadArg);
  EXPECT_EQ(idsdar(y, w, 0, 1.0, &base, &nd), kIdsBadArg);
}

// Observation numbers as times (no time IDs): the intervals are differences.
struct Dti : ::testing::Test {
  IDSERIES* ids = nullptr;
  void SetUp() override {
    INTERVAL none;
    ASSERT_EQ(idsint(0, 0, &none, nullptr, 0, &ids), 0);
  }
  void TearDown() override { idstrm(&ids); }
  double p(const std::vector<long>& at, long nobs, long holdout, int eflag) {
    std::vector<double> y(nobs, 0.0);
    for (long t : at) y[t] = 1;
    EXPECT_GE(idsset(ids, nobs, y.data(), nullptr, nullptr, 0.0, holdout, 0), 0);
    double r = -1;
    EXPECT_EQ(idsdti(ids, eflag, &r), 0);
    return r;
  }
};

TEST_F(Dti, MedianOfRecentIntervals) {
  // Demands at 0,1,2 then every 5th: the first intervals of 1 fall before
  // the last 100 observations, so only the 5s count.
  std::vector<long> at = {0, 1, 2};
  for (long t = 7; t < 150; t += 5) at.push_back(t);
  EXPECT_EQ(p(at, 150, 0, 0), 5.0);
  // Intervals 2, 4, 1 (the first demand's is dropped): median 2.
  EXPECT_EQ(p({3, 5, 9, 10}, 12, 0, 0), 2.0);
  // Even count: intervals 2, 4, 1, 7 give (2 + 4)/2.
  EXPECT_EQ(p({3, 5, 9, 10, 17}, 20, 0, 0), 3.0);
  // A hold-out of 11 leaves the fit sample 3, 5 under eflag 2: interval 2
  // only; eflag 1 takes the hold-out back.
  EXPECT_EQ(p({3, 5, 9, 10, 17}, 20, 11, 2), 2.0);
  EXPECT_EQ(p({3, 5, 9, 10, 17}, 20, 11, 1), 3.0);
  EXPECT_TRUE(wzmis(p({3}, 5, 0, 0)));
  double r = 0;
  EXPECT_EQ(idsdti(nullptr, 0, &r), kIdsBadArg);
}

}  // namespace
}  // namespace qvt
