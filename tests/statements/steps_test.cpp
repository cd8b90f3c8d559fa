// Splitting a program into steps.

#include "recording_host.hpp"

namespace qvt {
namespace {

struct Case {
  const char* name;
  const char* text;
  std::vector<std::size_t> statementsPerStep;  // records of each step's PROCSTR
  std::vector<bool> endedByRun;
  std::vector<int> messages;
};

const Case kCases[] = {
    {"one step to the end", "qvt; forecast a;", {2}, {false}, {}},
    {"run ends a step", "qvt; forecast a; run;", {2}, {true}, {}},
    {"next qvt ends a step", "qvt; forecast a; qvt; forecast b; forecast c; run;", {2, 3}, {false, true}, {}},
    {"run in any case", "QVT; forecast a; Run ; qvt;", {2, 1}, {true, false}, {}},
    {"run between steps", "qvt; run; run; qvt; run;", {1, 1}, {true, true}, {}},
    {"statement before the first step", "forecast a; qvt;", {1}, {false}, {kMsgOutsideStep}},
    {"statement after run", "qvt; run; forecast a; qvt;", {1, 1}, {true, false}, {kMsgOutsideStep}},
    {"comments only", "/* a */ * b;", {}, {}, {kMsgEmptyProgram}},
    {"qvt inside a comment", "qvt; /* qvt; */ forecast a;", {2}, {false}, {}},
};

TEST(Steps, Split) {
  for (const auto& c : kCases) {
    SCOPED_TRACE(c.name);
    testing::RecordingHost h;
    Program prog;
    scanProgram(c.text, SourcePos{}, h, prog);
    int errors = 0;
    const auto steps = splitSteps(prog, h, &errors);
    EXPECT_EQ(h.numbers(), c.messages);
    EXPECT_EQ(errors, static_cast<int>(c.messages.size()));
    ASSERT_EQ(steps.size(), c.statementsPerStep.size());
    for (std::size_t k = 0; k < steps.size(); ++k) {
      EXPECT_EQ(steps[k].endedByRun, c.endedByRun[k]) << k;
      testing::RecordingHost hs;
      PROCSTR p;
      EXPECT_EQ(xsparse(prog, steps[k], hs, p), 0) << k;
      EXPECT_EQ(p.head.size(), c.statementsPerStep[k]) << k;
      EXPECT_EQ(p.head.at(0).name, "QVT");
    }
  }
}

TEST(Steps, LexicalErrorsCountInTheirStepOnly) {
  testing::RecordingHost h;
  Program prog;
  scanProgram("qvt lead=1; run;\nqvt data='x lead=2;", SourcePos{}, h, prog);
  const auto steps = splitSteps(prog, h);
  ASSERT_EQ(steps.size(), 2u);
  PROCSTR p;
  EXPECT_EQ(xsparse(prog, steps[0], h, p), 0);
  EXPECT_EQ(xsparse(prog, steps[1], h, p), kStatementsUnusable);
}

}  // namespace
}  // namespace qvt
