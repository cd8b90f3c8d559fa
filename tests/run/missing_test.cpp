// The missing-value helpers and the padded names of the run.
#include "run/missing.hpp"

#include <gtest/gtest.h>

#include <cmath>

#include "run/strings.hpp"

namespace qvt {
namespace {

std::uint64_t bits(double x) { return std::bit_cast<std::uint64_t>(x); }

// All 28 codes are missing, distinct, and give their code back; lower case
// and '-' name the same values as upper case and '_', anything else the
// ordinary one, whose pattern the spool and the inputs share.
TEST(Missing, CodesRoundTrip) {
  std::vector<std::uint64_t> seen;
  for (int c : {'.', '_'}) seen.push_back(bits(skMissVal(c)));
  for (int c = 'A'; c <= 'Z'; ++c) seen.push_back(bits(skMissVal(c)));
  for (std::size_t i = 0; i < seen.size(); ++i) {
    const double x = std::bit_cast<double>(seen[i]);
    EXPECT_EQ(wzmis(x), 1);
    EXPECT_EQ(missCode(x), i == 0 ? '.' : i == 1 ? '_' : int('A' + i - 2));
    for (std::size_t j = i + 1; j < seen.size(); ++j) EXPECT_NE(seen[i], seen[j]);
  }
  EXPECT_EQ(bits(kMissing), 0xFFFFFE0000000000ULL);
  EXPECT_EQ(bits(skMissVal('?')), bits(kMissing));
  EXPECT_EQ(bits(skMissVal('z')), bits(skMissVal('Z')));
  EXPECT_EQ(bits(skMissVal('-')), bits(skMissVal('_')));
  EXPECT_EQ(missCode(1.5), 0);
  EXPECT_EQ(missCode(std::bit_cast<double>(0xFFFFFE0000000001ULL)), 0);  // missing, but not of the table
}

// The test looks at the upper sixteen bits only: -infinity (0xFFF0...) and
// a positive NaN are not missing.
TEST(Missing, TestLooksAtUpperSixteenBitsOnly) {
  const std::pair<std::uint64_t, int> cases[] = {{bits(-HUGE_VAL), 0}, {0xFFFF000000000000ULL, 1},
                                                 {0xFFFE000000000000ULL, 0}, {0x7FFF000000000000ULL, 0}};
  for (const auto& [b, want] : cases) EXPECT_EQ(wzmis(std::bit_cast<double>(b)), want) << std::hex << b;
}

TEST(Missing, ZmissrClassifiesAndCountsAndFillWritesExactlyLen) {
  long count = 0;
  EXPECT_EQ(zmissr(skMissVal('Q'), 10.0, &count), 1);
  EXPECT_EQ(zmissr(-10.0, 10.0, &count), 0);
  EXPECT_EQ(zmissr(10.5, 10.0, &count), -1);
  EXPECT_EQ(zmissr(-1e300, 10.0, nullptr), -1);
  EXPECT_EQ(count, 1);
  double v[5] = {1, 2, 3, 4, 5};
  vzfdl(kMissing, v + 1, 3);
  EXPECT_EQ(v[0] + v[4], 6);
  EXPECT_EQ(wzmis(v[1]) + wzmis(v[2]) + wzmis(v[3]), 3);
}

TEST(Strings, PadClipAndNames) {
  const std::pair<std::string, std::string> cases[] = {
      {"abc", "abc   "}, {"abcdefgh", "abcdef"}, {"", "      "}};
  for (const auto& [from, want] : cases) {
    char to[6];
    vzmp(from.data(), long(from.size()), to, 6);
    EXPECT_EQ(std::string(to, 6), want);
  }
  u_sname n("sales");
  EXPECT_EQ(n.view(), "sales");
  EXPECT_EQ(n.text[31], ' ');
  EXPECT_EQ(u_sname(std::string(40, 'x')).len, 32);
}

}  // namespace
}  // namespace qvt
