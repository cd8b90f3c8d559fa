// The checks that span statements: each case names the message it must
// give, the return code, and whether the step ends.
#include <gtest/gtest.h>

#include <algorithm>

#include "qvtpars_fixture.hpp"
#include "run/missing.hpp"

namespace qvt {
namespace {

using testing::argText;
using testing::Step;

struct CheckCase {
  const char* name;
  const char* program;
  int group;
  int number;
  const char* arg1;  // first argument, or null when it isn't checked
  int rc;
  bool exits;
};

const CheckCase kChecks[] = {
    {"NoForecastVariable", "qvt data=sales;", 743, 3005, nullptr, 2000, true},
    {"NoIdNoVariable", "qvt data=sales; forecast;", 743, 3005, nullptr, 2000, true},
    {"EndBeforeStart",
     "qvt data=sales; id date interval=month start='01JAN2021'd end='01JAN2020'd; forecast sales;", 743, 3024,
     "MONYY7.", 3000, true},
    {"StartDatetimeOnDateInterval", "qvt data=sales; id date interval=month start='01JAN2020:00:00:00'dt; forecast sales;",
     743, 3020, nullptr, 3000, true},
    {"StartTimeOnDateInterval", "qvt data=sales; id date interval=month start='10:00't; forecast sales;", 743, 3020,
     nullptr, 3000, true},
    {"StartDateOnDatetimeInterval", "qvt data=sales; id date interval=dtmonth start='01JAN2020'd; forecast sales;", 743,
     3021, nullptr, 3000, true},
    {"EndDatetimeOnDateInterval", "qvt data=sales; id date interval=month end='01JAN2020:00:00:00'dt; forecast sales;",
     743, 3022, nullptr, 3000, true},
    {"EndDateOnDatetimeInterval", "qvt data=sales; id date interval=dthour end='01JAN2020'd; forecast sales;", 743, 3023,
     nullptr, 3000, true},
    {"ObsIntervalWithStart", "qvt data=sales; id date interval=obs start='01JAN2020'd; forecast sales;", 743, 3026,
     nullptr, 3000, true},
    {"ObsIntervalWithEnd", "qvt data=sales; id date interval=obs end='01JAN2020'd; forecast sales;", 743, 3026, nullptr,
     3000, true},
    {"StartSumAboveLead", "qvt data=sales lead=12 startsum=20; forecast sales;", 743, 3017, "20", 4, false},
    {"StartSumWithLeadZero", "qvt data=sales lead=0 startsum=1; forecast sales;", 743, 3017, "1", 4, false},
    {"SeasonsWithoutCycle", "qvt data=sales print=seasons outseason=os; forecast sales;", 743, 3014, nullptr, 4, false},
    {"OutSeasonWithoutCycle", "qvt data=sales outseason=os; forecast sales;", 743, 3015, nullptr, 4, false},
    {"PrintSeasonsWithoutCycle", "qvt data=sales print=seasons; forecast sales;", 743, 3016, nullptr, 4, false},
    {"PlotSeasonsWithoutCycle", "qvt data=sales plot=seasons; forecast sales;", 743, 3029, nullptr, 4, false},
    {"TrendsWithoutAccumulate", "qvt data=sales print=trends outtrend=ot; id date interval=month; forecast sales;", 743,
     3011, nullptr, 4, false},
    {"OutTrendWithoutAccumulate", "qvt data=sales outtrend=ot; id date interval=month; forecast sales;", 743, 3012,
     nullptr, 4, false},
    {"PrintTrendsWithoutAccumulate", "qvt data=sales print=trends; id date interval=month; forecast sales;", 743, 3013,
     nullptr, 4, false},
    {"PerformanceWithoutBack", "qvt data=sales print=performance; forecast sales;", 743, 3030, nullptr, 0, false},
    {"SeasonalModelWithoutCycle", "qvt data=sales; forecast sales / model=winters; forecast units;", 743, 3006,
     "WINTERS", 4, false},
    {"SeasonalModelDropsVariables", "qvt data=sales; forecast sales / model=addseasonal; forecast units;", 743, 3007,
     "SEASONAL", 4, false},
    {"BestsWithoutCycle", "qvt data=sales; id date interval=obs; forecast sales / model=bests; forecast units;", 743,
     3006, "BESTS", 4, false},
    {"CharacterFormat", "qvt data=sales; id date interval=month format=$char10.; forecast sales;", 743, 3091, nullptr, 0,
     false},
    {"VariableNamedTwice", "qvt data=sales; forecast sales units; forecast sales;", 743, 3002, "sales", 4, false},
    {"VariableNamedTwiceInOneList", "qvt data=sales; forecast units sales units;", 743, 3002, "units", 4, false},
    {"SeriesLeftAfterDrop", "qvt data=sales; forecast sales units; forecast sales;", 743, 3003, "2", 4, false},
    {"IdVariableInList", "qvt data=sales; id date interval=month; forecast date sales;", 743, 3001, "date", 4, false},
    {"OnlyIdAndBy", "qvt data=sales; id date interval=month; by store; forecast date store;", 743, 3008, nullptr, 1008,
     true},
    {"AccumulateWithoutId", "qvt data=sales; forecast sales / accumulate=total;", 743, 3009, nullptr, 4, false},
    {"AccumulateInSomeStatements",
     "qvt data=sales; id date interval=month; forecast sales / accumulate=total; forecast units;", 743, 3010, nullptr, 4,
     false},
    {"TransformWithCroston", "qvt data=sales; forecast sales / model=croston transform=log;", 743, 3004, nullptr, 0,
     false},
    {"IntermittentWithoutBestall", "qvt data=sales; forecast sales / model=simple intermittent=3;", 743, 3027, "SIMPLE",
     0, false},
    {"AlphaZero", "qvt data=sales; forecast sales / alpha=0;", 743, 3018, nullptr, 0, false},
    {"AlphaOne", "qvt data=sales; forecast sales / alpha=1;", 743, 3019, nullptr, 0, false},
    {"LeadAboveLimit", "qvt data=sales lead=100000001; forecast sales;", 773, 102, "100000001", 2000, true},
    {"CharacterVariableInForecast", "qvt data=sales; forecast sales region;", 129, 43, nullptr, 2000, true},
    {"MissingForecastVariable", "qvt data=sales; forecast sales nosuch;", 129, 40, nullptr, 2000, true},
    {"MissingByVariable", "qvt data=sales; by nosuch; forecast sales;", 129, 40, nullptr, 2000, true},
    {"CharacterIdVariable", "qvt data=sales; id region interval=month; forecast sales;", 129, 43, nullptr, 2000, true},
    {"MissingInput", "qvt data=nosuch; forecast sales;", 900, 12, nullptr, 1012, true},
    {"ParseError", "qvt data=sales lead=-1; forecast sales;", 129, 31, nullptr, 2000, true},
};

void PrintTo(const CheckCase& c, std::ostream* os) { *os << c.name; }

class Checks : public ::testing::TestWithParam<CheckCase> {};

TEST_P(Checks, MessageAndRc) {
  const CheckCase& c = GetParam();
  Step s(c.program);
  const testing::Msg* m = s.find(c.group, c.number);
  ASSERT_NE(m, nullptr) << "messages of 743: " << ::testing::PrintToString(s.numbers(743));
  if (c.arg1) {
    ASSERT_FALSE(m->args.empty());
    EXPECT_EQ(argText(m->args[0]), c.arg1);
  }
  EXPECT_EQ(s.rc, c.rc);
  EXPECT_EQ(s.exited, c.exits);
  if (!c.exits) {
    EXPECT_EQ(s.com->error, 0);
  }
}

INSTANTIATE_TEST_SUITE_P(Qvtpars, Checks, ::testing::ValuesIn(kChecks),
                         [](const auto& p) { return std::string(p.param.name); });

// What each check leaves behind when the run goes on.
TEST(QvtparsChecks, SwitchedOffOutputsAreNotOpened) {
  Step s("qvt data=sales print=(seasons trends) outseason=os outtrend=ot; forecast sales;");
  ASSERT_FALSE(s.exited);
  EXPECT_FALSE(s.com->ds.outseason.fileid);
  EXPECT_FALSE(s.com->ds.outtrend.fileid);
  EXPECT_EQ(s.com->print.seasons, 0);
  EXPECT_EQ(s.com->print.trends, 0);
  EXPECT_EQ(s.com->trend.request, 0);
  // One 3011 and one 3014, each followed by both of its consequences.
  EXPECT_EQ(s.numbers(743), (std::vector<int>{3011, 3012, 3013, 3014, 3015, 3016}));
}

TEST(QvtparsChecks, TrendAndSeasonRequests) {
  struct {
    const char* opts;
    int request;
  } cases[] = {
      {"outtrend=ot outseason=os", 3},
      {"print=seasons", 1},
      {"print=trends", 2},
      {"", 0},
  };
  for (const auto& c : cases) {
    Step s(std::string("qvt data=sales ") + c.opts + "; id date interval=month accumulate=total; forecast sales;");
    ASSERT_FALSE(s.exited) << c.opts;
    EXPECT_EQ(s.com->trend.request, c.request) << c.opts;
    EXPECT_EQ(s.rc, 0) << c.opts;
  }
  Step both("qvt data=sales outtrend=ot outseason=os; id date interval=month accumulate=total; forecast sales;");
  EXPECT_TRUE(both.com->ds.outtrend.fileid);
  EXPECT_TRUE(both.com->ds.outseason.fileid);
}

TEST(QvtparsChecks, PlotAllLeavesOutSeasonPlotsSilently) {
  Step s("qvt data=sales plot=all; forecast sales;");
  EXPECT_EQ(s.com->plot.seasons, 0);
  EXPECT_EQ(s.find(743, 3029), nullptr);
  EXPECT_EQ(s.find(743, 3028), nullptr);
  EXPECT_EQ(s.rc, 4);
}

TEST(QvtparsChecks, SeasonalModelStatementKeepsNoVariables) {
  Step s("qvt data=sales; forecast sales price / model=winters; forecast units;");
  ASSERT_EQ(s.com->nvars, 1);
  EXPECT_EQ(s.com->vars[0].name.str(), "units");
  EXPECT_EQ(s.com->vars[0].fstmt, &s.com->fstmt[1]);
  // Left out by the model, not by a repeat: no count at the end.
  EXPECT_EQ(s.find(743, 3003), nullptr);
}

TEST(QvtparsChecks, FirstStatementThatNamesAVariableWins) {
  Step s("qvt data=sales; forecast sales units / model=simple; forecast sales price / model=linear;");
  ASSERT_EQ(s.com->nvars, 3);
  EXPECT_EQ(s.com->vars[0].name.str(), "sales");
  EXPECT_EQ(s.com->vars[0].fstmt->model.code, kModelSimple);
  EXPECT_EQ(s.com->vars[2].name.str(), "price");
  EXPECT_EQ(s.com->vars[2].fstmt->model.code, kModelLinear);
}

TEST(QvtparsChecks, AllLeavesIdAndByOutWithoutAWord) {
  Step s("qvt data=sales; id date interval=month; by store; forecast _all_;");
  ASSERT_FALSE(s.exited);
  EXPECT_EQ(s.numbers(743), std::vector<int>{});
  ASSERT_EQ(s.com->nvars, 3);  // sales, units, price: region is character, date the ID, store BY
  EXPECT_EQ(s.com->vars[0].name.str(), "sales");
  EXPECT_EQ(s.com->vars[2].name.str(), "price");
  EXPECT_EQ(s.rc, 0);
}

TEST(QvtparsChecks, AccumulateInEveryStatementAccumulatesTheRun) {
  Step s("qvt data=sales outtrend=ot; id date interval=month; forecast sales / accumulate=total; "
         "forecast units / accumulate=average;");
  EXPECT_EQ(s.com->istmt.acc.code, 100);
  EXPECT_EQ(s.find(743, 3010), nullptr);
  EXPECT_EQ(s.find(743, 3011), nullptr);  // trends are possible now
  EXPECT_TRUE(s.com->ds.outtrend.fileid);
}

TEST(QvtparsChecks, FrameNoteCountsPeriods) {
  Step s("qvt data=sales; id date interval=month start='01JAN2020'd end='15DEC2020'd; forecast sales;");
  ASSERT_FALSE(s.exited);
  const testing::Msg* m = s.find(743, 3025);
  ASSERT_NE(m, nullptr);
  ASSERT_EQ(m->args.size(), 4u);
  EXPECT_EQ(argText(m->args[0]), "JAN2020");
  EXPECT_EQ(argText(m->args[1]), "DEC2020");
  EXPECT_EQ(std::get<long long>(m->args[2]), 12);  // January to December, both counted
  EXPECT_EQ(argText(m->args[3]), "MONYY7.");
  EXPECT_EQ(s.com->istmt.start, 21915.0);  // 2020-01-01 in days from 1960-01-01
  EXPECT_EQ(s.com->istmt.startunits, 'd');
  EXPECT_EQ(s.rc, 0);
}

TEST(QvtparsChecks, NoInputWithoutDataAndEarlierOutput) {
  Step s("qvt; forecast sales;", {}, false);
  EXPECT_NE(s.find(743, 2), nullptr);
  EXPECT_EQ(s.rc, 2000);
  EXPECT_TRUE(s.exited);
}

TEST(QvtparsChecks, EveryListErrorIsReportedBeforeTheStepEnds) {
  Step s("qvt data=sales; by nosuch1; forecast sales nosuch2; forecast nosuch3;");
  const auto n = s.numbers(129);
  EXPECT_EQ(std::count(n.begin(), n.end(), 40), 3);
  EXPECT_EQ(s.rc, 2000);
}

TEST(QvtparsChecks, OutputThatCantBeCreatedEndsTheStep) {
  Step s("qvt data=sales outfor='/nonexistent-qvt-folder/f.csv' outest=e; forecast sales;");
  EXPECT_FALSE(s.numbers(900).empty());
  EXPECT_EQ(s.rc, 2000);
  EXPECT_TRUE(s.exited);
}

TEST(QvtparsChecks, MemoryBudgetTooSmallForTheStatements) {
  // Room for the pools but not for a statement record of a few kilobytes.
  Step s("qvt data=sales; forecast sales;", {}, true, 1024);
  EXPECT_NE(s.find(900, 70), nullptr);  // the host's out-of-memory note
  EXPECT_EQ(s.rc, 1016);
  EXPECT_TRUE(s.exited);
}

TEST(QvtparsChecks, LeadAtTheLimitIsTaken) {
  Step s("qvt data=sales lead=100000000; forecast sales;");
  EXPECT_EQ(s.com->istmt.lead, 100000000);
  EXPECT_EQ(s.rc, 0);
}

TEST(QvtparsChecks, LeadAboveTheLimitWithoutExitNotesAndClips) {
  Step s("qvt data=sales; forecast sales;");
  STLIST f;
  f.type = 1;
  f.mode = StMode::Number;
  f.v = 3e9;
  int lead = 0;
  EXPECT_EQ(qvtGetLEAD(s.com.get(), &f, 12, 0, &lead), -1);
  EXPECT_EQ(lead, 100000000);
  const testing::Msg* m = s.find(773, 101);
  ASSERT_NE(m, nullptr);
  EXPECT_EQ(std::get<long long>(m->args[0]), 3000000000LL);
  EXPECT_EQ(std::get<long long>(m->args[1]), 100000000);
  EXPECT_EQ(qvtGetLEAD(s.com.get(), nullptr, 7, 1, &lead), 0);
  EXPECT_EQ(lead, 7);
}

}  // namespace
}  // namespace qvt
