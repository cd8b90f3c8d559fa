// The guarded power against its edge conventions and long double pow.
#include "dense_oracle.hpp"

namespace qvt {
namespace {

TEST(Power, EdgeConventions) {
  const double miss = kMissing;
  struct Case { double x, y, want; int rc; };
  const Case cases[] = {
      {0.0, 0.0, miss, 3},     {0.0, -1.0, miss, 3},  {0.0, 2.5, 0.0, 0},     {-8.0, 1.0 / 3.0, miss, 2},
      {-1.0, 3.0, -1.0, 0},    {-1.0, 4.0, 1.0, 0},   {-1.0, 1e17, miss, 2},  {-2.0, 0.5, miss, 2},
      {1.0, 1e300, 1.0, 0},    {1.0, -7.5, 1.0, 0},   {5.0, 0.0, 1.0, 0},     {-5.0, 0.0, 1.0, 0},
      {3.7, 1.0, 3.7, 0},      {-3.7, 1.0, -3.7, 0},  {2.0, 1e155, miss, 1},  {0.5, 1e155, 0.0, 0},
      {2.0, -1e155, 0.0, 0},   {0.5, -1e155, miss, 1}, {10.0, 400.0, miss, 1}, {10.0, -400.0, 0.0, 0},
      {1e300, 2.0, miss, 1},   {1e-300, 3.0, 0.0, 0}, {-2.0, 3.0, -8.0, 0},   {-2.0, -2.0, 0.25, 0},
      {2.0, 10.0, 1024.0, 0},  {2.0, -10.0, 1.0 / 1024.0, 0}, {9.0, 0.5, 3.0, 0}, {HUGE_VAL, 2.0, miss, 1},
      {miss, 2.0, miss, 2},    {2.0, miss, miss, 2},
  };
  for (const Case& c : cases) {
    int rc = -7;
    const double got = zpower(c.x, c.y, &rc);
    EXPECT_EQ(rc, c.rc) << c.x << "^" << c.y;
    if (wzmis(c.want)) {
      EXPECT_EQ(wzmis(got), 1) << c.x << "^" << c.y;
    } else {
      EXPECT_EQ(got, c.want) << c.x << "^" << c.y;
    }
  }
}

TEST(Power, AgreesWithLongDoublePow) {
  struct Case { double x, y; };
  const Case cases[] = {{1.5, 37.0}, {0.9, -250.0}, {-1.1, 101.0}, {3.3, 2.7}, {1e-5, 0.3}, {7.0, -13.0},
                        {1.0000001, 1e8}, {2.0, 1023.0}, {0.7, 1000.5}};
  for (const Case& c : cases) {
    int rc = -7;
    const double got = zpower(c.x, c.y, &rc);
    ASSERT_EQ(rc, 0) << c.x << "^" << c.y;
    long double want = std::pow(std::fabs(static_cast<long double>(c.x)), static_cast<long double>(c.y));
    if (c.x < 0 && std::fmod(std::fabs(c.y), 2.0) == 1.0) want = -want;
    EXPECT_LE(std::fabs(got - want), 1e-13L * std::fabs(want)) << c.x << "^" << c.y;
  }
}

TEST(Power, OverflowBoundary) {
  // 2^1023 is the largest power of two; 2^1024 overflows.
  int rc = -7;
  EXPECT_EQ(zpower(2.0, 1023.0, &rc), std::ldexp(1.0, 1023));
  EXPECT_EQ(rc, 0);
  EXPECT_EQ(wzmis(zpower(2.0, 1024.0, &rc)), 1);
  EXPECT_EQ(rc, 1);
  // Underflow goes quietly to 0.
  EXPECT_EQ(zpower(2.0, -1100.0, &rc), 0.0);
  EXPECT_EQ(rc, 0);
}

}  // namespace
}  // namespace qvt
