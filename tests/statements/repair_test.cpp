// Syntax errors: their place, their repair by the cheapest deletions and
// insertions, and the statements behind them still being read.

#include "recording_host.hpp"

namespace qvt {
namespace {

struct RepairCase {
  const char* name;
  const char* text;
  std::vector<int> messages;  // in the order logged
  int repaired;
  int skipped;
};

const RepairCase kCases[] = {
    // One transposition from LEAD: read as LEAD (cost 50 + 10) and the value kept.
    {"misspelled option", "qvt laed=6;", {kMsgMisspelled}, 1, 0},
    {"misspelled value", "qvt; forecast x / model=simpl;", {kMsgMisspelled}, 1, 0},
    // The end of the text in place of ';': insert ';' (cost 10).
    {"missing semicolon at the end", "qvt lead=5", {kMsgSyntax, kMsgRepaired}, 1, 0},
    // A value is missing: insert an INT (cost 2); no value is stored.
    {"missing value", "qvt lead=;", {kMsgSyntax, kMsgRepaired}, 1, 0},
    // A stray mark: delete it (cost 10).
    {"stray mark", "qvt lead=5 > back=2;", {kMsgSyntax, kMsgRepaired}, 1, 0},
    // Three strings where BY wants names: each deletion costs 50 and no
    // insertion can take a string, so 150 > 127 gives the statement up.
    {"unrepairable", "qvt; by 'a' 'b' 'c';", {kMsgSyntax, kMsgUnrepairable}, 0, 1},
    {"unknown statement", "qvt; forcast x;", {kMsgUnknownStatement}, 0, 1},
    {"unrepairable then still checked", "qvt; by 'a' 'b' 'c'; forecast x / alpha=7;",
     {kMsgSyntax, kMsgUnrepairable, kMsgOutOfRange}, 0, 1},
    {"repaired then still checked", "qvt; forecast x / alpha=; forecast y / holdout=-1;",
     {kMsgSyntax, kMsgRepaired, kMsgOutOfRange}, 1, 0},
    // The second ID statement writes the interval again: both warnings.
    {"second ID statement", "qvt; id t interval=month; id u interval=qtr;", {kMsgSecondStatement, kMsgRepeated}, 0, 0},
    {"bad interval", "qvt; id t interval=fortnight;", {kMsgBadInterval}, 0, 0},
};

TEST(Repair, MessagesAndCounts) {
  for (const auto& c : kCases) {
    SCOPED_TRACE(c.name);
    testing::RecordingHost h;
    PROCSTR p;
    xsparseText(c.text, SourcePos{"r.qvt", 1, 1}, h, p);
    EXPECT_EQ(h.numbers(), c.messages);
    for (std::size_t k = 0; k < h.msgs.size(); ++k) EXPECT_FALSE(h.text(k).empty()) << "no catalogue row";
    EXPECT_EQ(p.nrepaired, c.repaired);
    EXPECT_EQ(p.nskipped, c.skipped);
    const bool anyError = c.messages != std::vector<int>{kMsgSecondStatement, kMsgRepeated};
    EXPECT_EQ(p.error, anyError ? kStatementsUnusable : 0);
  }
}

TEST(Repair, MisspelledOptionKeepsItsValue) {
  testing::RecordingHost h;
  PROCSTR p;
  xsparseText("qvt laed=6; forecast x / model=simpl;", SourcePos{}, h, p);
  ASSERT_EQ(p.head.size(), 2u);
  EXPECT_DOUBLE_EQ(p.head[0].fld[7].number(), 6);
  EXPECT_DOUBLE_EQ(p.head[1].fld[2].number(), 1);
}

TEST(Repair, InsertedValueStoresNothing) {
  testing::RecordingHost h;
  PROCSTR p;
  xsparseText("qvt lead= back=2;", SourcePos{}, h, p);
  EXPECT_FALSE(p.head.at(0).given(7));
  EXPECT_DOUBLE_EQ(p.head[0].fld[24].number(), 2) << "the option behind the repair is read";
}

TEST(Repair, GivenUpStatementLeavesNoRecord) {
  testing::RecordingHost h;
  PROCSTR p;
  xsparseText("qvt; forecast a; forecast 'x' 'y' 'z'; forecast b;", SourcePos{}, h, p);
  ASSERT_EQ(p.head.size(), 3u);
  EXPECT_EQ(p.head[1].fld[17].text(), "a");
  EXPECT_EQ(p.head[2].fld[17].text(), "b");
  // A given-up BY statement leaves the procedure record as it was.
  xsparseText("qvt lead=4; by a 'x' 'y' 'z';", SourcePos{}, h, p);
  EXPECT_FALSE(p.head.at(0).given(0));
  EXPECT_DOUBLE_EQ(p.head[0].fld[7].number(), 4);
}

TEST(Repair, ErrorNamesFileLineColumnAndShowsTheLine) {
  testing::RecordingHost h;
  PROCSTR p;
  xsparseText("qvt lead=5;\n  forecast x / alpha=;\n", SourcePos{"prog.qvt", 1, 1}, h, p);
  ASSERT_FALSE(h.msgs.empty());
  EXPECT_EQ(h.msgs[0].number, kMsgSyntax);
  EXPECT_EQ(h.msgs[0].pos.line, 2);
  EXPECT_EQ(h.msgs[0].pos.col, 22);
  const std::string text = h.text(0);
  EXPECT_NE(text.find("prog.qvt, line 2, column 22"), std::string::npos) << text;
  EXPECT_NE(text.find("  forecast x / alpha=;\n                     ^"), std::string::npos) << text;
}

TEST(Repair, ManyErrorsInOneStatementGiveItUp) {
  testing::RecordingHost h;
  PROCSTR p;
  xsparseText("qvt; forecast x / = = = = = = = = = = = = = = = = = = = = = = = = = = = =; forecast y;", SourcePos{}, h, p);
  EXPECT_EQ(p.error, kStatementsUnusable);
  ASSERT_EQ(p.head.size(), 2u) << "the FORECAST y behind it is read";
  EXPECT_EQ(p.head[1].fld[17].text(), "y");
}

TEST(Repair, EmptyProgramsAndStepsWithoutQvt) {
  for (const char* text : {"", "   \n\t", "/* only a comment */", "* a statement comment;"}) {
    testing::RecordingHost h;
    PROCSTR p;
    EXPECT_EQ(xsparseText(text, SourcePos{}, h, p), kStatementsUnusable) << text;
    EXPECT_EQ(h.numbers(), std::vector<int>{kMsgEmptyProgram}) << text;
  }
  testing::RecordingHost h;
  PROCSTR p;
  EXPECT_EQ(xsparseText("forecast x;", SourcePos{}, h, p), kStatementsUnusable);
  EXPECT_EQ(h.numbers(), std::vector<int>{kMsgOutsideStep});
}

}  // namespace
}  // namespace qvt
