// Time ID checks of BY-group input: each refusal or warning with its
// message numbers, arguments, rc and the state it leaves.
#include <gtest/gtest.h>

#include "run/qvtin.hpp"
#include "test_host.hpp"

namespace qvt {
namespace {

using testing::argInt;
using testing::argReal;
using testing::argText;
using testing::daysFromCivil;
using testing::InputRun;
using testing::InputSetup;

// A CSV of a date ID and one series from (iso date, value) rows.
std::string csv(std::initializer_list<std::pair<const char*, const char*>> rows) {
  std::string s = "date,y\n";
  for (const auto& [d, v] : rows) s += std::string(d) + "," + v + "\n";
  return s;
}

InputSetup monthly(std::string text, int acc = 0) {
  InputSetup s;
  s.csv = std::move(text);
  s.series = {"y"};
  s.id = "date";
  s.interval = "MONTH";
  s.acc = acc;
  return s;
}

void readGroup(InputRun& r) {
  ASSERT_TRUE(r.nextGroup());
  ASSERT_EQ(r.orExit([&] { qvtin(&r.com); }), -1);
}

TEST(InputChecks, DescendingIdsEndTheGroup) {
  InputRun r(monthly(csv({{"2020-01-01", "1"}, {"2020-03-01", "2"}, {"2020-02-01", "3"}})));
  readGroup(r);
  EXPECT_EQ(r.host.numbers(743), std::vector<int>({10, 7}));
  const auto* m = r.host.find(743, 7);
  ASSERT_NE(m, nullptr);
  ASSERT_EQ(m->args.size(), 6u);
  EXPECT_EQ(argText(*m, 0), r.com.ds.data.display.str());
  EXPECT_EQ(argInt(*m, 1), 3);
  EXPECT_EQ(argText(*m, 2), "date");
  EXPECT_EQ(argText(*m, 4), "date");
  EXPECT_NE(argText(*m, 3), argText(*m, 5));  // the two values, shown by the ID's format
  EXPECT_EQ(r.com.error, 1);
  EXPECT_EQ(r.com.rc, kRcData);
}

TEST(InputChecks, RepeatedIdWithoutAccumulateEndsTheGroup) {
  InputRun r(monthly(csv({{"2020-01-01", "1"}, {"2020-02-01", "2"}, {"2020-02-01", "3"}})));
  readGroup(r);
  EXPECT_EQ(r.host.numbers(743), std::vector<int>({6}));
  const auto* m = r.host.find(743, 6);
  ASSERT_EQ(m->args.size(), 4u);
  EXPECT_EQ(argText(*m, 0), "date");
  EXPECT_EQ(argInt(*m, 2), 3);
  EXPECT_EQ(argText(*m, 3), r.com.ds.data.display.str());
  EXPECT_EQ(r.com.error, 1);
  EXPECT_EQ(r.com.rc, kRcData);
}

TEST(InputChecks, RepeatedIdWithAccumulateIsCountedSilently) {
  InputRun r(monthly(csv({{"2020-01-01", "1"}, {"2020-02-01", "2"}, {"2020-02-01", "3"}}), kAccTotal));
  readGroup(r);
  EXPECT_TRUE(r.host.numbers(743).empty());
  EXPECT_EQ(r.com.error, 0);
  EXPECT_EQ(r.com.rc, 0);
  EXPECT_EQ(r.com.ndups, 1);
  EXPECT_EQ(r.com.in.nobs, 3);
  EXPECT_EQ(r.com.out.nobs, 2);
  accumulate(&r.com, kAccTotal);  // slow path: the two February values add
  EXPECT_EQ(r.com.out.y[0], 1.0);
  EXPECT_EQ(r.com.out.y[1], 5.0);
  EXPECT_EQ(r.com.in.pos[2], 1);
}

TEST(InputChecks, TwoIdsInOnePeriodWithoutAccumulate) {
  InputRun r(monthly(csv({{"2020-01-05", "1"}, {"2020-01-20", "2"}})));
  readGroup(r);
  EXPECT_EQ(r.host.numbers(743), std::vector<int>({30, 33, 36}));
  const auto* m = r.host.find(743, 30);
  ASSERT_EQ(m->args.size(), 10u);
  EXPECT_EQ(argInt(*m, 0), 2);
  EXPECT_EQ(argText(*m, 2), "MONTH");
  EXPECT_EQ(argText(*m, 3), "date");
  EXPECT_EQ(argText(*m, 7), "MONTH");
  EXPECT_EQ(argReal(*m, 8), static_cast<double>(daysFromCivil(2020, 1, 5)));
  EXPECT_EQ(argReal(*m, 9), static_cast<double>(daysFromCivil(2020, 1, 20)));
  const auto* h = r.host.find(743, 33);
  EXPECT_EQ(argText(*h, 0), "MONTH");
  EXPECT_EQ(argText(*h, 1), "date");
  EXPECT_EQ(r.com.ndups, 1);
  EXPECT_EQ(r.com.error, 1);
  EXPECT_EQ(r.com.rc, kRcData);
}

TEST(InputChecks, MissingIdsAreSkippedAlsoOnTheFirstRecord) {
  InputRun r(monthly(csv({{"", "9"}, {"", "8"}, {"2020-01-01", "1"}, {"", "7"}, {"2020-02-01", "2"}})));
  readGroup(r);
  EXPECT_EQ(r.host.count(743, 5), 3);
  const auto* m = r.host.find(743, 5);
  ASSERT_EQ(m->args.size(), 3u);
  EXPECT_EQ(argText(*m, 0), "date");
  EXPECT_EQ(argInt(*m, 1), 1);
  EXPECT_EQ(argInt(*r.host.find(743, 5, 2), 1), 4);
  EXPECT_EQ(r.com.id.start, 2);    // only those ahead of the first usable record
  EXPECT_EQ(r.com.obsfirst, 3);    // the third record became the first
  EXPECT_EQ(r.com.obslast, 5);
  EXPECT_EQ(r.com.in.nobs, 2);
  EXPECT_EQ(r.com.in.y[0], 1.0);
  EXPECT_EQ(r.com.in.y[1], 2.0);
  EXPECT_EQ(r.com.vars[0].n, 2);
  EXPECT_EQ(r.com.rc, kRcWarning);
  EXPECT_EQ(r.com.error, 0);
}

TEST(InputChecks, SecondsUnderADateIntervalWarnOnlyOnTheSecondRecord) {
  InputSetup s;
  s.csv = "t,y\n0,1\n86400,2\n172800,3\n259200,4\n";
  s.series = {"y"};
  s.id = "t";
  s.interval = "DAY";
  s.acc = kAccTotal;  // the day counts leave gaps; with ACCUMULATE= they are silent
  InputRun r(s);
  readGroup(r);
  EXPECT_EQ(r.host.numbers(743), std::vector<int>({34}));
  const auto* m = r.host.find(743, 34);
  EXPECT_EQ(argText(*m, 0), "DAY");
  EXPECT_EQ(argText(*m, 1), "t");
  EXPECT_EQ(r.com.error, 0);
  EXPECT_EQ(r.com.rc, kRcWarning);
  EXPECT_EQ(r.com.in.nobs, 4);
  EXPECT_EQ(r.com.ngaps, 3);
  EXPECT_EQ(r.com.out.nobs, 259201);
}

TEST(InputChecks, ValuesAboveTheLargestUsableOneBecomeMissing) {
  InputRun r(monthly(csv({{"2020-01-01", "1e160"}, {"2020-02-01", "2"}, {"2020-03-01", "-1e153"},
                          {"2020-04-01", "1.3407807929942597e+152"}})));
  readGroup(r);
  EXPECT_EQ(r.host.numbers(743), std::vector<int>({14}));
  EXPECT_EQ(argReal(*r.host.find(743, 14), 0), kLargestValue);
  EXPECT_EQ(r.com.nbigval, 2);
  EXPECT_TRUE(wzmis(r.com.in.y[0]));
  EXPECT_TRUE(wzmis(r.com.in.y[2]));
  EXPECT_EQ(r.com.in.y[3], kLargestValue);  // the limit itself is usable
  EXPECT_EQ(r.com.vars[0].n, 2);
  EXPECT_EQ(r.com.vars[0].start, 1);
  EXPECT_EQ(r.com.vars[0].stop, 3);
  EXPECT_EQ(r.com.vars[0].nin, 3);
  EXPECT_EQ(r.com.vars[0].nmiss, 1);
  EXPECT_EQ(r.com.in.n, 2);
}

TEST(InputChecks, GapsWarnTenTimesInAStepThenOnce11) {
  // Two BY groups of six gaps each: the count runs over the step.
  std::string text = "g,date,y\n";
  for (int g = 1; g <= 2; ++g)
    for (int k = 0; k < 7; ++k) text += std::to_string(g) + "," + testing::isoDate(daysFromCivil(2000 + k, 1, 1)) + ",1\n";
  InputSetup s = monthly(text);
  s.by = {"g"};
  InputRun r(s);
  readGroup(r);
  EXPECT_EQ(r.host.count(743, 10), 6);
  EXPECT_EQ(r.com.ngaps, 6);
  const auto* m = r.host.find(743, 10);
  ASSERT_EQ(m->args.size(), 10u);
  EXPECT_EQ(argInt(*m, 0), 11);  // a year between two firsts of January: 11 missing months
  EXPECT_EQ(argInt(*m, 1), 2);
  EXPECT_EQ(argText(*m, 3), "MONTH");
  EXPECT_EQ(argReal(*m, 8), static_cast<double>(daysFromCivil(2000, 1, 1)));
  EXPECT_EQ(argReal(*m, 9), static_cast<double>(daysFromCivil(2001, 1, 1)));
  EXPECT_EQ(r.com.rc, kRcWarning);
  readGroup(r);
  EXPECT_EQ(r.host.count(743, 10), 10);
  EXPECT_EQ(r.host.count(743, 11), 1);
  EXPECT_EQ(r.host.numbers(743).back(), 11);  // 11 right after the tenth, then silence
  EXPECT_EQ(r.com.ngaps, 6);                  // still counted
  EXPECT_EQ(r.com.nwarn, 10);
  EXPECT_EQ(r.com.maxgap, 11);
  EXPECT_EQ(r.com.out.nobs, 73);
}

TEST(InputChecks, GapsWithAccumulateAreSilent) {
  InputRun r(monthly(csv({{"2020-01-01", "1"}, {"2020-04-01", "2"}}), kAccAverage));
  readGroup(r);
  EXPECT_TRUE(r.host.numbers(743).empty());
  EXPECT_EQ(r.com.ngaps, 1);
  EXPECT_EQ(r.com.maxgap, 2);
  EXPECT_EQ(r.com.rc, 0);
}

TEST(InputChecks, EmptyGroupAndOneRecord) {
  struct Case {
    const char* name;
    std::string text;
    int nby;
    long maxerror;
    std::vector<int> msgs;
    int rc;
    int error;
  };
  const Case cases[] = {
      {"all IDs missing", csv({{"", "1"}, {"", "2"}}), 0, 25, {5, 5, 45}, kRcData, 1},
      {"all IDs missing, BY", csv({{"", "1"}}), 1, 25, {5, 45}, kRcDataBy, 1},
      {"one record", csv({{"2020-01-01", "1"}}), 0, 25, {44}, kRcWarning, 0},
      {"one record, MAXERROR=0", csv({{"2020-01-01", "1"}}), 0, 0, {}, kRcWarning, 0},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    InputSetup s = monthly(c.text);
    s.maxerror = c.maxerror;
    InputRun r(s);
    r.com.nby = c.nby;
    readGroup(r);
    EXPECT_EQ(r.host.numbers(743), c.msgs);
    EXPECT_EQ(r.com.rc, c.rc);
    EXPECT_EQ(r.com.error, c.error);
  }
}

TEST(InputChecks, NotsortedGapsWarnAndDuplicatesEndTheGroup) {
  {
    InputSetup s = monthly(csv({{"2020-03-01", "3"}, {"2020-01-01", "1"}, {"2020-05-01", "5"}, {"2020-06-01", "6"}}));
    s.notsorted = true;
    InputRun r(s);
    readGroup(r);
    // Gaps in February and April.
    EXPECT_EQ(r.host.numbers(743), std::vector<int>({50, 51, 51, 52}));
    EXPECT_EQ(argText(*r.host.find(743, 50), 0), "date");
    EXPECT_EQ(argReal(*r.host.find(743, 51, 0), 0), static_cast<double>(daysFromCivil(2020, 2, 1)));
    EXPECT_EQ(argReal(*r.host.find(743, 51, 1), 0), static_cast<double>(daysFromCivil(2020, 4, 1)));
    EXPECT_EQ(argText(*r.host.find(743, 52), 0), "MONTH");
    EXPECT_EQ(r.com.rc, kRcWarning);
    EXPECT_EQ(r.com.error, 0);
    EXPECT_EQ(r.com.out.nobs, 6);
    EXPECT_EQ(r.com.in.pos[0], 2);
    accumulate(&r.com, kAccNone);
    EXPECT_EQ(r.com.out.y[0], 1.0);
    EXPECT_TRUE(wzmis(r.com.out.y[1]));
    EXPECT_EQ(r.com.out.y[2], 3.0);
  }
  {
    InputSetup s = monthly(csv({{"2020-03-01", "3"}, {"2020-01-01", "1"}, {"2020-02-01", "2"}, {"2020-03-15", "4"}}));
    s.notsorted = true;
    InputRun r(s);
    readGroup(r);
    EXPECT_EQ(r.host.numbers(743), std::vector<int>({55, 56, 56, 57}));
    const auto* m = r.host.find(743, 55);
    EXPECT_EQ(argText(*m, 0), "date");
    EXPECT_EQ(argInt(*m, 1), 1);
    EXPECT_EQ(argText(*m, 2), "MONTH");
    EXPECT_EQ(argReal(*r.host.find(743, 56, 0), 0), static_cast<double>(daysFromCivil(2020, 3, 1)));
    EXPECT_EQ(argReal(*r.host.find(743, 56, 1), 0), static_cast<double>(daysFromCivil(2020, 3, 15)));
    EXPECT_EQ(r.com.error, 1);
    EXPECT_EQ(r.com.rc, kRcData);
  }
}

TEST(InputChecks, HandleError) {
  InputRun r(monthly(csv({{"2020-01-01", "1"}})));
  EXPECT_EQ(handleError(&r.com, 0), 0);
  EXPECT_EQ(handleError(&r.com, 3), 0);
  EXPECT_TRUE(r.host.msgs.empty());
  EXPECT_EQ(handleError(&r.com, -3), kRcSpool);
  EXPECT_TRUE(r.host.msgs.empty());
  EXPECT_EQ(handleError(&r.com, -1), kRcSpool);
  const auto* m = r.host.find(882, 1018);
  ASSERT_NE(m, nullptr);
  EXPECT_EQ(argText(*m, 0), "date");
  EXPECT_EQ(argText(*m, 1), r.com.ds.data.lib.str());
  EXPECT_EQ(argText(*m, 2), "input");
  EXPECT_EQ(argText(*m, 3), "MONTH");
}

TEST(InputChecks, FrameBeyondTheCalendarSkipsTheGroup) {
  // LEAD= steps the frame past the calendar's last day (6589335).
  InputSetup s = monthly("date,y\n6589000,1\n6589030,2\n", kAccTotal);
  s.interval = "YEAR";
  s.lead = 3;
  InputRun r(s);
  readGroup(r);
  EXPECT_EQ(r.host.count(882, 1018), 1);
  EXPECT_EQ(r.com.error, kRcSpool);
  EXPECT_GE(r.com.rc, kRcData);
}

}  // namespace
}  // namespace qvt
