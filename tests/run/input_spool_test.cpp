// BY-group input of several series through the spool, its failure, the
// trend statistics of the raw records, and the limits of counts.
#include <gtest/gtest.h>

#include "output/ztspool.hpp"
#include "run/qvtin.hpp"
#include "test_host.hpp"

namespace qvt {
namespace {

using testing::argInt;
using testing::argReal;
using testing::argText;
using testing::InputRun;
using testing::InputSetup;

InputSetup twoSeries() {
  InputSetup s;
  s.csv = "date,a,b\n2020-01-01,1,10\n2020-02-01,,1e200\n2020-03-01,3,30\n2020-04-01,.A,40\n";
  s.series = {"a", "b"};
  s.id = "date";
  s.interval = "MONTH";
  return s;
}

TEST(InputSpool, SeveralSeriesGoRecordMajorToTheSpool) {
  InputRun r(twoSeries());
  ASSERT_EQ(ztinit(r.host, &r.com.infile, &r.com.outfile), 0);
  ASSERT_TRUE(r.nextGroup());
  qvtin(&r.com);
  ASSERT_EQ(r.com.error, 0);
  EXPECT_EQ(r.com.in.nobs, 4);
  EXPECT_EQ(r.com.in.n, 3);  // the second record is missing in a and too large in b
  EXPECT_EQ(r.com.nbigval, 1);
  EXPECT_EQ(r.host.numbers(743), std::vector<int>({14}));
  EXPECT_EQ(r.com.vars[0].n, 2);
  EXPECT_EQ(r.com.vars[0].nin, 3);
  EXPECT_EQ(r.com.vars[1].n, 3);
  EXPECT_EQ(r.com.vars[1].start, 0);
  EXPECT_EQ(r.com.vars[1].stop, 3);
  EXPECT_EQ(r.com.vars[1].nmiss, 1);
  std::vector<double> cells(8);
  ASSERT_EQ(ztget(r.host, r.com.outfile, 0, 8, cells.data()), 0);
  const double m = kMissing;
  const double want[] = {1, 10, m, m, 3, 30, m, 40};
  for (int k = 0; k < 8; ++k) {
    if (wzmis(want[k])) {
      // Every missing value of the input leaves as the ordinary one.
      EXPECT_EQ(missCode(cells[k]), '.') << k;
    } else {
      EXPECT_EQ(cells[k], want[k]) << k;
    }
  }
  // The next group starts from an empty spool.
  EXPECT_FALSE(r.nextGroup());
  EXPECT_NE(r.com.in.y, nullptr);  // made by allocate for the series read back
}

TEST(InputSpool, AFailedSpoolWriteEndsTheStep) {
  InputRun r(twoSeries());
  ASSERT_EQ(ztinit(r.host, &r.com.infile, &r.com.outfile), 0);
  r.host.setSpoolWriteFailure(2);
  ASSERT_TRUE(r.nextGroup());
  EXPECT_EQ(r.orExit([&] { qvtin(&r.com); }), kRcSpool);
  EXPECT_EQ(r.host.count(743, 40), 1);
  EXPECT_EQ(r.com.rc, kRcSpool);
}

TEST(InputSpool, TrendStatisticsOfTheRawRecords) {
  InputSetup s;
  s.csv = "date,y\n2020-01-03,1\n2020-01-20,3\n2020-03-02,\n2020-03-05,4\n2020-03-09,8\n";
  s.series = {"y"};
  s.id = "date";
  s.interval = "MONTH";
  s.acc = kAccTotal;
  s.trendRequest = 2;
  InputRun r(s);
  ASSERT_TRUE(r.nextGroup());
  qvtin(&r.com);
  ASSERT_EQ(r.com.error, 0);
  ASSERT_EQ(r.com.out.nobs, 3);
  ASSERT_GE(r.com.trend.nsa, 3);
  analysis(&r.com);
  const ZINT_STATS* st = r.com.trend.stats;
  EXPECT_EQ(r.com.trend.nt, 3);
  EXPECT_EQ(st[0].nobs, 2);
  EXPECT_EQ(st[0].sum, 4.0);
  EXPECT_EQ(st[0].median, 2.0);
  EXPECT_EQ(st[1].nobs, 0);
  EXPECT_TRUE(wzmis(st[1].mean));
  EXPECT_EQ(st[2].nobs, 3);
  EXPECT_EQ(st[2].n, 2);
  EXPECT_EQ(st[2].nmiss, 1);
  EXPECT_EQ(st[2].mean, 6.0);
  EXPECT_DOUBLE_EQ(st[2].std, std::sqrt(8.0));
}

TEST(InputSpool, TrendPositionsOnTheFastPath) {
  InputSetup s;
  s.csv = "date,y\n2020-01-01,1\n2020-02-01,2\n2020-03-01,3\n";
  s.series = {"y"};
  s.id = "date";
  s.interval = "MONTH";
  s.start = static_cast<double>(testing::daysFromCivil(2019, 11, 1));
  s.trendRequest = 2;
  InputRun r(s);
  ASSERT_TRUE(r.nextGroup());
  qvtin(&r.com);
  ASSERT_EQ(r.com.error, 0);
  for (long i = 0; i < 3; ++i) EXPECT_EQ(r.com.in.pos[i], i + 2);
  analysis(&r.com);
  EXPECT_EQ(r.com.trend.stats[0].nobs, 0);
  EXPECT_EQ(r.com.trend.stats[4].sum, 3.0);
}

TEST(InputSpool, UncountableDistanceEndsTheGroup) {
  InputSetup s;
  s.csv = "t,y\n0,1\n1e16,2\n";
  s.series = {"y"};
  s.id = "t";
  InputRun r(s);
  ASSERT_TRUE(r.nextGroup());
  qvtin(&r.com);
  EXPECT_EQ(r.host.numbers(743), std::vector<int>({8}));
  const auto* m = r.host.find(743, 8);
  ASSERT_EQ(m->args.size(), 5u);
  EXPECT_EQ(argText(*m, 0), "t");
  EXPECT_EQ(argInt(*m, 2), 2);
  EXPECT_EQ(argReal(*m, 4), 1e16);
  EXPECT_EQ(r.com.error, 1);
  EXPECT_EQ(r.com.rc, kRcData);
}

TEST(InputSpool, FrameLongerThanTheLargestCount) {
  InputSetup s;
  s.csv = "y\n1\n";
  s.series = {"y"};
  InputRun r(s);
  r.com.nby = 1;
  r.com.out.nobs = 5;
  r.com.out.tobs = kLargestCount + 1;
  allocate(&r.com);
  EXPECT_EQ(r.host.numbers(743), std::vector<int>({31}));
  EXPECT_EQ(r.com.error, 1);
  EXPECT_EQ(r.com.rc, kRcDataBy);
  EXPECT_EQ(r.com.out.y, nullptr);
}

}  // namespace
}  // namespace qvt
