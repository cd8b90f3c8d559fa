// Time ID checks of BY-group input, each with its message numbers, arguments,
// rc and the state it leaves, from the hand-worked table input_cases.txt; the
// spool of several series, the trend statistics and the limits of counts.
#include <gtest/gtest.h>

#include "output/ztspool.hpp"
#include "test_host.hpp"

namespace qvt {
namespace {

using testing::InputRun;

TEST(InputChecks, CasesOfTheTable) {
  std::ifstream f(QVT_SOURCE_DIR "/tests/run/input_cases.txt");
  int rows = 0;
  for (std::string line; std::getline(f, line);) {
    if (line.empty() || line[0] == '#') continue;
    std::vector<std::string> c;
    std::istringstream in(line);
    for (std::string field; std::getline(in, field, ';');) c.push_back(field);
    c.resize(5);
    SCOPED_TRACE(c[0]);
    ++rows;
    InputRun r(c[1]);
    ASSERT_EQ(r.read(), -1);
    std::vector<int> msgs;
    std::istringstream m(c[2]), a(c[3]);
    for (int n; m >> n;) msgs.push_back(n);
    EXPECT_EQ(r.host.numbers(kMsgProc), msgs);
    std::map<int, int> nth;
    for (std::string w; a >> w;) {
      const int n = std::stoi(w);
      r.expectArgs(n, nth[n]++, w.substr(w.find(':') + 1));
    }
    if (r.kv.count("accumulate")) accumulate(&r.com, int(r.num("accumulate")));
    r.expect(c[4]);
  }
  EXPECT_EQ(rows, 19);
}

TEST(InputChecks, GapsWarnTenTimesInAStepThenOnce11) {
  // Two BY groups of six gaps each: the count runs over the step.
  std::string csv = "g,date,y";
  for (int g = 1; g <= 2; ++g)
    for (int k = 0; k < 7; ++k) csv += "/" + std::to_string(g) + "," + std::to_string(2000 + k) + "-01-01,1";
  InputRun r("by=g csv=" + csv);
  r.read();
  EXPECT_EQ(r.host.numbers(kMsgProc), std::vector<int>(6, 10));
  // A year between two firsts of January: 11 missing months.
  r.expectArgs(10, 0, "11|2|*|MONTH|*|*|*|*|2000-01-01|2001-01-01");
  r.expect("gaps=6 rc=4");
  r.read();
  std::vector<int> want(10, 10);
  want.push_back(11);  // 11 right after the tenth, then silence
  EXPECT_EQ(r.host.numbers(kMsgProc), want);
  r.expect("gaps=6 maxgap=11 out=73");
  EXPECT_EQ(r.com.nwarn, 10);
}

TEST(InputChecks, HandleError) {
  InputRun r("");
  EXPECT_EQ(handleError(&r.com, 0), 0);
  EXPECT_EQ(handleError(&r.com, 3), 0);
  EXPECT_EQ(handleError(&r.com, -3), kRcSpool);
  EXPECT_TRUE(r.host.msgs.empty());
  EXPECT_EQ(handleError(&r.com, -1), kRcSpool);
  EXPECT_EQ(r.host.args(882, 1018), "date|" + r.com.ds.data.lib.str() + "|input|MONTH");
}

TEST(InputSpool, SeveralSeriesGoRecordMajorToTheSpool) {
  const std::string two = "series=a,b csv=date,a,b/2020-01-01,1,10/2020-02-01,,1e200/2020-03-01,3,30/2020-04-01,.A,40";
  InputRun r(two);
  ASSERT_EQ(ztinit(r.host, &r.com.infile, &r.com.outfile), 0);
  ASSERT_EQ(r.read(), -1);
  // The second record is missing in a and too large in b.
  r.expect("err=0 in=4 n=3 big=1 vn=2 vnin=3");
  EXPECT_EQ(r.host.numbers(kMsgProc), std::vector<int>({14}));
  const VAR& b = r.com.vars[1];
  EXPECT_EQ(testing::cells(std::vector<long>{b.n, b.start, b.stop, b.nmiss}.data(), 4), "3,0,3,1");
  std::vector<double> cells(8);
  ASSERT_EQ(ztget(r.host, r.com.outfile, 0, 8, cells.data()), 0);
  // Every missing value of the input leaves as the ordinary one.
  EXPECT_EQ(testing::cells(cells.data(), 8), "1,10,.,.,3,30,.,40");
  for (double c : cells) EXPECT_TRUE(!wzmis(c) || missCode(c) == '.');
  EXPECT_FALSE(r.nextGroup());
  EXPECT_NE(r.com.in.y, nullptr);  // made by allocate for the series read back
  // A failed spool write ends the step.
  InputRun f(two);
  ASSERT_EQ(ztinit(f.host, &f.com.infile, &f.com.outfile), 0);
  f.host.setSpoolWriteFailure(2);
  EXPECT_EQ(f.read(), kRcSpool);
  EXPECT_EQ(std::ranges::count(f.host.numbers(kMsgProc), 40), 1);
  EXPECT_EQ(f.com.rc, kRcSpool);
}

TEST(InputSpool, TrendStatisticsOfTheRawRecords) {
  InputRun r("acc=1 trend=2 csv=date,y/2020-01-03,1/2020-01-20,3/2020-03-02,/2020-03-05,4/2020-03-09,8");
  ASSERT_EQ(r.read(), -1);
  r.expect("err=0 out=3");
  ASSERT_GE(r.com.trend.nsa, 3);
  analysis(&r.com);
  EXPECT_EQ(r.com.trend.nt, 3);
  // Per month: records, values, missing ones, sum, mean, median, standard deviation.
  for (const auto& [t, want] : {std::pair{0, "2,2,0,4,2,2"}, {1, "0,0,0,.,.,."}, {2, "3,2,1,12,6,6"}}) {
    const ZINT_STATS& s = r.com.trend.stats[t];
    const double v[] = {double(s.nobs), double(s.n), double(s.nmiss), s.sum, s.mean, s.median};
    EXPECT_EQ(testing::cells(v, 6), want) << t;
  }
  EXPECT_DOUBLE_EQ(r.com.trend.stats[2].std, std::sqrt(8.0));
  // On the fast path the positions count from START=.
  InputRun f("trend=2 start=2019-11-01 csv=date,y/2020-01-01,1/2020-02-01,2/2020-03-01,3");
  ASSERT_EQ(f.read(), -1);
  f.expect("err=0 pos=2,3,4");
  analysis(&f.com);
  EXPECT_EQ(f.com.trend.stats[0].nobs, 0);
  EXPECT_EQ(f.com.trend.stats[4].sum, 3.0);
}

TEST(InputSpool, FrameLongerThanTheLargestCount) {
  InputRun r("csv=y/1 interval= id= nby=1");
  r.com.out.nobs = 5;
  r.com.out.tobs = kLargestCount + 1;
  allocate(&r.com);
  EXPECT_EQ(r.host.numbers(kMsgProc), std::vector<int>({31}));
  r.expect("err=1 rc=108");
  EXPECT_EQ(r.com.out.y, nullptr);
}

}  // namespace
}  // namespace qvt
