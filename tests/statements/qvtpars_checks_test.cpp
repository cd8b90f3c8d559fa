// The checks that span statements: each case names every message of one
// group it must give, the first argument of each, the return code, and
// whether the step ends.
#include "support.hpp"

namespace qvt {
namespace {

using testing::argText;
using testing::Step;

struct CheckCase {
  const char* program;  // behind "qvt data=sales" unless it starts with "qvt"
  int group;
  std::vector<int> numbers;
  const char* args;  // first argument of each message, joined by '|'; null when not checked
  int rc;
  bool exits;
};

const CheckCase kChecks[] = {
    {"; forecast;", 743, {3005}, nullptr, 2000, true},
    {"; id date interval=month start='01JAN2021'd end='01JAN2020'd; forecast sales;", 743, {3024}, "MONYY7.", 3000, true},
    {"; id date interval=month start='01JAN2020:00:00:00'dt; forecast sales;", 743, {3020}, nullptr, 3000, true},
    {"; id date interval=month start='10:00't; forecast sales;", 743, {3020}, nullptr, 3000, true},
    {"; id date interval=dtmonth start='01JAN2020'd; forecast sales;", 743, {3021}, nullptr, 3000, true},
    {"; id date interval=month end='01JAN2020:00:00:00'dt; forecast sales;", 743, {3022}, nullptr, 3000, true},
    {"; id date interval=dthour end='01JAN2020'd; forecast sales;", 743, {3023}, nullptr, 3000, true},
    {"; id date interval=obs start='01JAN2020'd; forecast sales;", 743, {3026}, nullptr, 3000, true},
    {" lead=12 startsum=20; forecast sales;", 743, {3017}, "20", 4, false},
    {" lead=0 startsum=1; forecast sales;", 743, {3017}, "1", 4, false},
    {" outseason=os; forecast sales;", 743, {3014, 3015}, nullptr, 4, false},
    {" print=seasons; forecast sales;", 743, {3014, 3016}, nullptr, 4, false},
    {" plot=seasons; forecast sales;", 743, {3029, 3028}, nullptr, 4, false},
    // Under PLOT=ALL the season plots are left out without a word.
    {" plot=all; forecast sales;", 743, {}, nullptr, 4, false},
    {" outtrend=ot; id date interval=month; forecast sales;", 743, {3011, 3012}, nullptr, 4, false},
    {" print=trends; id date interval=month; forecast sales;", 743, {3011, 3013}, nullptr, 4, false},
    {" print=performance; forecast sales;", 743, {3030}, nullptr, 0, false},
    {"; forecast sales / model=addseasonal; forecast units;", 743, {3006, 3007}, "SEASONAL|SEASONAL", 4, false},
    {"; id date interval=obs; forecast sales / model=bests; forecast units;", 743, {3006, 3007}, "BESTS|BESTS", 4,
     false},
    {"; id date interval=month format=$char10.; forecast sales;", 743, {3091}, nullptr, 0, false},
    {"; forecast sales units; forecast sales;", 743, {3002, 3003}, "sales|2", 4, false},
    {"; forecast units sales units;", 743, {3002, 3003}, "units|2", 4, false},
    {"; id date interval=month; forecast date sales;", 743, {3001, 3003}, "date|1", 4, false},
    {"; id date interval=month; by store; forecast date store;", 743, {3001, 3003, 3008}, "date|0|", 1008, true},
    {"; forecast sales / accumulate=total;", 743, {3009}, nullptr, 4, false},
    {"; id date interval=month; forecast sales / accumulate=total; forecast units;", 743, {3010}, nullptr, 4, false},
    {"; forecast sales / model=croston transform=log;", 743, {3004}, nullptr, 0, false},
    {"; forecast sales / model=simple intermittent=3;", 743, {3027}, "SIMPLE", 0, false},
    {"; forecast sales / alpha=0;", 743, {3018}, nullptr, 0, false},
    {"; forecast sales / alpha=1;", 743, {3019}, nullptr, 0, false},
    {"qvt; forecast sales;", 743, {2}, nullptr, 2000, true},
    {" lead=100000000; forecast sales;", 773, {}, nullptr, 0, false},
    {" lead=100000001; forecast sales;", 773, {102}, "100000001", 2000, true},
    {"; forecast sales region;", 129, {43}, nullptr, 2000, true},
    {"; id region interval=month; forecast sales;", 129, {43}, nullptr, 2000, true},
    // Every list error is reported before the step ends.
    {"; by nosuch1; forecast sales nosuch2; forecast nosuch3;", 129, {40, 40, 40}, nullptr, 2000, true},
    {"qvt data=nosuch; forecast sales;", 900, {12}, nullptr, 1012, true},
    {" lead=-1; forecast sales;", 129, {31}, nullptr, 2000, true},
};

TEST(QvtparsChecks, MessagesAndRc) {
  for (const auto& c : kChecks) {
    const std::string text = std::string(c.program).starts_with("qvt") ? c.program : "qvt data=sales" + std::string(c.program);
    SCOPED_TRACE(text);
    Step s(text);
    EXPECT_EQ(s.host->numbers(c.group), c.numbers);
    if (c.args) {
      std::string args;
      for (const auto& m : s.host->msgs)
        if (m.group == c.group) args += (args.empty() ? "" : "|") + (m.args.empty() ? "" : argText(m.args[0]));
      EXPECT_EQ(args, c.args);
    }
    EXPECT_EQ(s.rc, c.rc);
    EXPECT_EQ(s.exited, c.exits);
    if (!c.exits) {
      EXPECT_EQ(s.com->error, 0);
    }
  }
}

// What the checks leave behind when the run goes on.
TEST(QvtparsChecks, SwitchedOffOutputsAreNotOpened) {
  Step s("qvt data=sales print=(seasons trends) outseason=os outtrend=ot; forecast sales;");
  ASSERT_FALSE(s.exited);
  EXPECT_FALSE(s.com->ds.outseason.fileid);
  EXPECT_FALSE(s.com->ds.outtrend.fileid);
  EXPECT_EQ(s.com->print.seasons + s.com->print.trends + s.com->trend.request, 0);
  // One 3011 and one 3014, each followed by both of its consequences.
  EXPECT_EQ(s.host->numbers(743), (std::vector<int>{3011, 3012, 3013, 3014, 3015, 3016}));
  // With accumulation and a cycle both are opened; every statement accumulating accumulates the run.
  Step both("qvt data=sales outtrend=ot outseason=os; id date interval=month; forecast sales / accumulate=total; "
            "forecast units / accumulate=average;");
  EXPECT_TRUE(both.host->numbers(743).empty());
  EXPECT_EQ(both.com->istmt.acc.code, 100);
  EXPECT_EQ(both.com->trend.request, 3);
  EXPECT_TRUE(both.com->ds.outtrend.fileid);
  EXPECT_TRUE(both.com->ds.outseason.fileid);
  for (auto [opts, request] : {std::pair{"print=seasons", 1}, std::pair{"print=trends", 2}}) {
    Step one(std::string("qvt data=sales ") + opts + "; id date interval=month accumulate=total; forecast sales;");
    EXPECT_EQ(one.com->trend.request, request) << opts;
    EXPECT_EQ(one.rc, 0) << opts;
  }
}

TEST(QvtparsChecks, SeasonalModelStatementKeepsNoVariables) {
  Step s("qvt data=sales; forecast sales price / model=winters; forecast units;");
  ASSERT_EQ(s.com->nvars, 1);
  EXPECT_EQ(s.com->vars[0].name.str(), "units");
  EXPECT_EQ(s.com->vars[0].fstmt, &s.com->fstmt[1]);
  // Left out by the model, not by a repeat: no count at the end.
  EXPECT_EQ(s.host->numbers(743), (std::vector<int>{3006, 3007}));
}

TEST(QvtparsChecks, FrameNoteCountsPeriods) {
  Step s("qvt data=sales; id date interval=month start='01JAN2020'd end='15DEC2020'd; forecast sales;");
  ASSERT_FALSE(s.exited);
  const testing::Logged* m = s.host->find(743, 3025);
  ASSERT_NE(m, nullptr);
  ASSERT_EQ(m->args.size(), 4u);
  // January to December, both counted.
  EXPECT_EQ(argText(m->args[0]) + " " + argText(m->args[1]) + " " + argText(m->args[3]), "JAN2020 DEC2020 MONYY7.");
  EXPECT_EQ(std::get<long long>(m->args[2]), 12);
  EXPECT_EQ(s.com->istmt.start, 21915.0);  // 2020-01-01 in days from 1960-01-01
  EXPECT_EQ(s.com->istmt.startunits, 'd');
  EXPECT_EQ(s.rc, 0);
}

TEST(QvtparsChecks, OutputOrMemoryThatCantBeHadEndsTheStep) {
  Step s("qvt data=sales outfor='/nonexistent-qvt-folder/f.csv' outest=e; forecast sales;");
  EXPECT_FALSE(s.host->numbers(900).empty());
  EXPECT_EQ(s.rc, 2000);
  EXPECT_TRUE(s.exited);
  // Room for the pools but not for a statement record of a few kilobytes.
  Step m("qvt data=sales; forecast sales;", {}, true, 1024);
  EXPECT_NE(m.host->find(900, 70), nullptr);  // the host's out-of-memory note
  EXPECT_EQ(m.rc, 1016);
  EXPECT_TRUE(m.exited);
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
  const testing::Logged* m = s.host->find(773, 101);
  ASSERT_NE(m, nullptr);
  EXPECT_EQ(std::get<long long>(m->args[0]), 3000000000LL);
  EXPECT_EQ(std::get<long long>(m->args[1]), 100000000);
  EXPECT_EQ(qvtGetLEAD(s.com.get(), nullptr, 7, 1, &lead), 0);
  EXPECT_EQ(lead, 7);
}

}  // namespace
}  // namespace qvt
