// Token classes, values and places of the scanner, and its lexical errors.

#include "recording_host.hpp"
#include "run/missing.hpp"

namespace qvt {
namespace {

struct Tok {
  int cls;
  const char* text;
  double value = 0;
};

struct Case {
  const char* name;
  const char* input;
  std::vector<Tok> tokens;
};

using namespace term;

const std::vector<Case> kCases = {
    {"integer", "12", {{INT, "12", 12}}},
    {"decimal", "0.05", {{NBR, "0.05", 0.05}}},
    {"exponent", "1e-3", {{NBR, "1e-3", 0.001}}},
    {"exponent upper case", "1E3", {{NBR, "1E3", 1000}}},
    {"leading dot", ".5", {{NBR, ".5", 0.5}}},
    {"trailing dot", "12.", {{NBR, "12.", 12}}},
    {"single quotes", "'a'", {{QS, "a"}}},
    {"double quotes", "\"a\"", {{QS, "a"}}},
    {"doubled quote", "'it''s'", {{QS, "it's"}}},
    {"doubled double quote", "\"say \"\"hi\"\"\"", {{QS, "say \"hi\""}}},
    {"other quote inside", "\"it's\"", {{QS, "it's"}}},
    {"name literal", "'my var'n", {{VLITERAL, "my var"}}},
    {"name literal upper N", "'my var'N", {{VLITERAL, "my var"}}},
    {"date", "'01JAN2020'd", {{DATE, "01JAN2020", 21915}}},
    {"time", "'13:30't", {{TIME, "13:30", 48600}}},
    {"time with seconds", "'13:30:00'T", {{TIME, "13:30:00", 48600}}},
    {"datetime", "'01JAN2020:13:30:00'dt", {{DATETIME, "01JAN2020:13:30:00", 21915.0 * 86400 + 48600}}},
    {"quoted then word", "'a' x", {{QS, "a"}, {NAMEX, "x"}}},
    {"format", "MONYY7.", {{FMT, "MONYY7."}}},
    {"format date", "DATE9.", {{FMT, "DATE9."}}},
    {"format decimals", "BEST12.2", {{FMT, "BEST12.2"}}},
    {"character format", "$CHAR10.", {{FMT, "$CHAR10."}}},
    {"character width only", "$10.", {{FMT, "$10."}}},
    {"interval with shift", "MONTH2.3", {{FMT, "MONTH2.3"}}},
    {"two-level name", "lib.member", {{COMPOUND, "lib.member"}}},
    {"punctuation", "( ) , - / : = ;",
     {{LPAREN, "("}, {RPAREN, ")"}, {COMMA, ","}, {MINUS, "-"}, {SLASH, "/"}, {COLON, ":"}, {EQUALS, "="}, {ENDJB, ";"}}},
    {"block comment", "/* x ; y */ a", {{NAMEX, "a"}}},
    {"statement comment", "* a comment; b", {{NAMEX, "b"}}},
    {"statement comment after a statement", "a; * c d; b", {{NAMEX, "a"}, {ENDJB, ";"}, {NAMEX, "b"}}},
    {"star inside a statement is a mark", "a * b", {{NAMEX, "a"}, {OTHER, "*"}, {NAMEX, "b"}}},
    {"signed after equals", "x=-3", {{NAMEX, "x"}, {EQUALS, "="}, {INT, "-3", -3}}},
    {"minus after a name", "a-3", {{NAMEX, "a"}, {MINUS, "-"}, {INT, "3", 3}}},
    {"signed after a number", "(0.1 -0.5)", {{LPAREN, "("}, {NBR, "0.1", 0.1}, {NBR, "-0.5", -0.5}, {RPAREN, ")"}}},
    {"numbered range", "a1-a5", {{NAMEX, "a1"}, {MINUS, "-"}, {NAMEX, "a5"}}},
    {"positional range", "a--b", {{NAMEX, "a"}, {MINUS, "-"}, {MINUS, "-"}, {NAMEX, "b"}}},
    {"prefix", "ab:", {{NAMEX, "ab"}, {COLON, ":"}}},
    {"marks of no rule", "x>1", {{NAMEX, "x"}, {OTHER, ">"}, {INT, "1", 1}}},
    {"lone dollar", "$ x", {{OTHER, "$"}, {NAMEX, "x"}}},
    {"underscore names", "_all_ _x1", {{NAMEX, "_all_"}, {NAMEX, "_x1"}}},
};

TEST(Scanner, TokenClassesAndValues) {
  for (const auto& c : kCases) {
    SCOPED_TRACE(c.name);
    testing::RecordingHost h;
    Program p;
    EXPECT_EQ(scanProgram(c.input, SourcePos{"", 1, 1}, h, p), 0);
    EXPECT_TRUE(h.msgs.empty());
    ASSERT_EQ(p.tokens.size(), c.tokens.size());
    for (std::size_t k = 0; k < c.tokens.size(); ++k) {
      EXPECT_EQ(p.tokens[k].cls, c.tokens[k].cls) << k;
      EXPECT_EQ(p.tokens[k].text, c.tokens[k].text) << k;
      const int cls = c.tokens[k].cls;
      if (cls == INT || cls == NBR || cls == DATE || cls == TIME || cls == DATETIME) {
        EXPECT_DOUBLE_EQ(p.tokens[k].value, c.tokens[k].value) << k;
      }
    }
  }
}

TEST(Scanner, MissingValueLiterals) {
  const struct {
    const char* text;
    char code;
  } cases[] = {{".", '.'}, {".A", 'A'}, {".z", 'Z'}, {"._", '_'}, {".M", 'M'}};
  for (const auto& c : cases) {
    testing::RecordingHost h;
    Program p;
    scanProgram(c.text, SourcePos{}, h, p);
    ASSERT_EQ(p.tokens.size(), 1u) << c.text;
    EXPECT_EQ(p.tokens[0].cls, MISSING) << c.text;
    EXPECT_TRUE(wzmis(p.tokens[0].value)) << c.text;
    EXPECT_EQ(missCode(p.tokens[0].value), c.code) << c.text;
  }
}

TEST(Scanner, PlacesCountLinesAndColumnsFromTheOrigin) {
  testing::RecordingHost h;
  Program p;
  scanProgram("qvt\n  lead=5;\n\tx", SourcePos{"prog.qvt", 10, 7}, h, p);
  ASSERT_EQ(p.tokens.size(), 6u);
  const struct {
    int line, col;
  } want[] = {{10, 7}, {11, 3}, {11, 7}, {11, 8}, {11, 9}, {12, 2}};
  for (std::size_t k = 0; k < 6; ++k) {
    EXPECT_EQ(p.tokens[k].pos.file, "prog.qvt");
    EXPECT_EQ(p.tokens[k].pos.line, want[k].line) << k;
    EXPECT_EQ(p.tokens[k].pos.col, want[k].col) << k;
  }
  EXPECT_EQ(p.src->lineText(11), "  lead=5;");
  EXPECT_EQ(p.src->lineText(13), "");
}

TEST(Scanner, CaretPointsAtTheColumn) {
  testing::RecordingHost h;
  Program p;
  scanProgram("a\n  bad b", SourcePos{"", 1, 1}, h, p);
  EXPECT_EQ(excerpt(*p.src, p.tokens[1].pos), "  bad b\n  ^");
  // The first line of a text that starts in column 5 of its file.
  scanProgram("bad", SourcePos{"", 3, 5}, h, p);
  EXPECT_EQ(excerpt(*p.src, p.tokens[0].pos), "bad\n^");
}

struct ErrorCase {
  const char* name;
  const char* input;
  int message;
  int line, col;
};

const ErrorCase kErrors[] = {
    {"unterminated string", "qvt data='abc;\nrun;", kMsgUnterminatedString, 1, 10},
    {"unterminated comment", "qvt;\n /* no end", kMsgUnterminatedComment, 2, 2},
    {"unterminated statement comment", "qvt; * no end", kMsgUnterminatedComment, 1, 6},
    {"control byte", "qvt \x01;", kMsgBadCharacter, 1, 5},
    {"byte above ASCII", "qvt \xC3\xA9;", kMsgBadCharacter, 1, 5},
    {"bad date", "x='32JAN2020'd", kMsgBadLiteral, 1, 3},
    {"bad time", "x='25:00't", kMsgBadLiteral, 1, 3},
    {"number glued to letters", "lead=12abc", kMsgBadNumber, 1, 6},
    {"name longer than 32", "abcdefghijabcdefghijabcdefghijabc", kMsgBadName, 1, 1},
    {"empty name literal", "''n", kMsgBadName, 1, 1},
    {"number too large", "1e999", kMsgBadNumber, 1, 1},
};

TEST(Scanner, LexicalErrorsCarryTheirPlace) {
  for (const auto& c : kErrors) {
    SCOPED_TRACE(c.name);
    testing::RecordingHost h;
    Program p;
    EXPECT_GE(scanProgram(c.input, SourcePos{"f.qvt", 1, 1}, h, p), 1);
    ASSERT_FALSE(h.msgs.empty());
    EXPECT_EQ(h.msgs[0].group, 129);
    EXPECT_EQ(h.msgs[0].number, c.message);
    ASSERT_TRUE(h.msgs[0].hasPos);
    EXPECT_EQ(h.msgs[0].pos.line, c.line);
    EXPECT_EQ(h.msgs[0].pos.col, c.col);
    EXPECT_EQ(h.msgs[0].pos.file, "f.qvt");
    // The text names the place and shows the line with a caret.
    const std::string text = h.text(0);
    EXPECT_NE(text.find("f.qvt, line " + std::to_string(c.line) + ", column " + std::to_string(c.col)), std::string::npos)
        << text;
    EXPECT_NE(text.find('^'), std::string::npos) << text;
  }
}

TEST(Scanner, NameOfExactly32CharactersIsAccepted) {
  testing::RecordingHost h;
  Program p;
  EXPECT_EQ(scanProgram("abcdefghijabcdefghijabcdefghijab", SourcePos{}, h, p), 0);
  EXPECT_TRUE(h.msgs.empty());
}

}  // namespace
}  // namespace qvt
