#include "run/missing.hpp"

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>

namespace qvt {
namespace {

std::uint64_t bits(double x) { return std::bit_cast<std::uint64_t>(x); }

// Bit patterns of the missing values, written out from the table of codes.
TEST(Missing, PatternsOfTheCodes) {
  struct Case { int code; std::uint64_t pattern; };
  const Case cases[] = {
      {'.', 0xFFFFFE0000000000ULL}, {' ', 0xFFFFFE0000000000ULL}, {'?', 0xFFFFFE0000000000ULL},
      {'_', 0xFFFFFF0000000000ULL}, {'-', 0xFFFFFF0000000000ULL},
      {'A', 0xFFFFFD0000000000ULL}, {'a', 0xFFFFFD0000000000ULL},
      {'I', 0xFFFFF50000000000ULL}, {'M', 0xFFFFF10000000000ULL},
      {'Z', 0xFFFFE40000000000ULL}, {'z', 0xFFFFE40000000000ULL},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(bits(skMissVal(c.code)), c.pattern) << "code " << static_cast<char>(c.code);
  }
}

TEST(Missing, AllTwentyEightAreMissingAndDistinct) {
  std::vector<std::uint64_t> seen;
  for (int c : {'.', '_'}) seen.push_back(bits(skMissVal(c)));
  for (int c = 'A'; c <= 'Z'; ++c) seen.push_back(bits(skMissVal(c)));
  ASSERT_EQ(seen.size(), 28u);
  for (std::size_t i = 0; i < seen.size(); ++i) {
    EXPECT_EQ(wzmis(std::bit_cast<double>(seen[i])), 1);
    for (std::size_t j = i + 1; j < seen.size(); ++j) EXPECT_NE(seen[i], seen[j]);
  }
}

TEST(Missing, CodeRoundTrip) {
  EXPECT_EQ(missCode(skMissVal('.')), '.');
  EXPECT_EQ(missCode(skMissVal('_')), '_');
  for (int c = 'A'; c <= 'Z'; ++c) EXPECT_EQ(missCode(skMissVal(c)), c);
  EXPECT_EQ(missCode(1.5), 0);
  EXPECT_EQ(missCode(std::bit_cast<double>(0xFFFFFE0000000001ULL)), 0);  // missing, but not of the table
}

TEST(Missing, TestLooksAtUpperSixteenBitsOnly) {
  EXPECT_EQ(wzmis(0.0), 0);
  EXPECT_EQ(wzmis(-1e308), 0);
  EXPECT_EQ(wzmis(std::numeric_limits<double>::infinity()), 0);
  EXPECT_EQ(wzmis(-std::numeric_limits<double>::infinity()), 0);  // 0xFFF0...: not all sixteen bits set
  EXPECT_EQ(wzmis(std::bit_cast<double>(0xFFFF000000000000ULL)), 1);
  EXPECT_EQ(wzmis(std::bit_cast<double>(0xFFFE000000000000ULL)), 0);
  EXPECT_EQ(wzmis(std::bit_cast<double>(0x7FFF000000000000ULL)), 0);  // a positive NaN is not missing
}

TEST(Missing, ZmissrClassifiesAndCounts) {
  long count = 0;
  EXPECT_EQ(zmissr(skMissVal('Q'), 10.0, &count), 1);
  EXPECT_EQ(zmissr(10.0, 10.0, &count), 0);
  EXPECT_EQ(zmissr(-10.0, 10.0, &count), 0);
  EXPECT_EQ(zmissr(10.5, 10.0, &count), -1);
  EXPECT_EQ(zmissr(-1e300, 10.0, nullptr), -1);
  EXPECT_EQ(count, 1);
}

TEST(Missing, FillWritesExactlyLen) {
  double v[5] = {1, 2, 3, 4, 5};
  vzfdl(kMissing, v + 1, 3);
  EXPECT_EQ(v[0], 1);
  EXPECT_EQ(wzmis(v[1]) + wzmis(v[2]) + wzmis(v[3]), 3);
  EXPECT_EQ(v[4], 5);
}

}  // namespace
}  // namespace qvt
