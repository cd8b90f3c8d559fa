#include "host/hostdate.hpp"

#include <gtest/gtest.h>

#include "run/missing.hpp"

namespace qvt {
namespace {

// Anchors worked by hand: day 0 is Friday 1960-01-01; 2000-03-01 is 14670 days on.
TEST(HostDate, Anchors) {
  EXPECT_EQ(hostMdyToDate(1, 1, 1960), 0.0);
  EXPECT_EQ(hostMdyToDate(12, 31, 1959), -1.0);
  EXPECT_EQ(hostMdyToDate(3, 1, 2000), 14670.0);
  EXPECT_EQ(hostMdyToDate(1, 1, 1582), -138061.0);
  EXPECT_EQ(hostWeekday(0.0), 6.0);
  EXPECT_EQ(hostWeekday(-1.0), 5.0);
  EXPECT_EQ(wzmis(hostMdyToDate(2, 29, 1900)), 1);
  EXPECT_EQ(hostMdyToDate(2, 29, 2000), hostMdyToDate(3, 1, 2000) - 1);
  int m = 0, d = 0, y = 0;
  ASSERT_EQ(hostDateToMdy(14670.5, &m, &d, &y), 0);
  EXPECT_EQ(m * 10000 + d * 100 + y % 100, 30100);
  EXPECT_NE(hostDateToMdy(kMissing, &m, &d, &y), 0);
  EXPECT_EQ(hostTimePart(86400.0 * 3 + 45.0), 45.0);
  EXPECT_EQ(hostTimePart(-1.0), 86399.0);
}

}  // namespace
}  // namespace qvt
