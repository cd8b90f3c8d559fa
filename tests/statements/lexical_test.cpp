// The scanner: token classes, values and places, its lexical errors; date,
// time and datetime constants; and every spelling of every keyword.

#include <iomanip>

#include "run/missing.hpp"
#include "statements/keywords.hpp"
#include "statements/literal.hpp"
#include "support.hpp"

namespace qvt {
namespace {

using testing::RecordingHost;

// The tokens as "class:text=value" (punctuation as itself); a missing value
// shows its code letter as value.
std::string render(const Program& p) {
  static const char* const kTag[] = {"?", ";", "N", "Q", "I", "R", "C", "F", "D", "T", "DT", "M", "V", "?", "?", "O"};
  std::ostringstream o;
  o << std::setprecision(15);
  for (const Token& t : p.tokens) {
    if (!o.str().empty()) o << ' ';
    if (t.cls == term::ENDJB || t.cls >= term::LPAREN) {
      o << t.text;
      continue;
    }
    o << kTag[t.cls] << ':' << t.text;
    if (t.cls == term::MISSING) o << '=' << (wzmis(t.value) ? missCode(t.value) : '?');
    if ((t.cls >= term::INT && t.cls <= term::NBR) || (t.cls >= term::DATE && t.cls <= term::DATETIME))
      o << '=' << t.value;
  }
  return o.str();
}

TEST(Scanner, TokenClassesAndValues) {
  for (const auto& r : testing::dataRows("tokens.txt", '|')) {
    RecordingHost h;
    Program p;
    EXPECT_EQ(scanProgram(r.at(0), SourcePos{"", 1, 1}, h, p), 0) << r[0];
    EXPECT_TRUE(h.msgs.empty()) << r[0];
    EXPECT_EQ(render(p), r.at(1)) << r[0];
  }
}

TEST(Scanner, PlacesCountLinesAndColumnsFromTheOrigin) {
  RecordingHost h;
  Program p;
  scanProgram("qvt\n  lead=5;\n\tx", SourcePos{"prog.qvt", 10, 7}, h, p);
  std::string places;
  for (const Token& t : p.tokens) places += t.pos.file + ":" + std::to_string(t.pos.line) + ":" + std::to_string(t.pos.col) + " ";
  EXPECT_EQ(places, "prog.qvt:10:7 prog.qvt:11:3 prog.qvt:11:7 prog.qvt:11:8 prog.qvt:11:9 prog.qvt:12:2 ");
  EXPECT_EQ(p.src->lineText(11), "  lead=5;");
  EXPECT_EQ(p.src->lineText(13), "");
  scanProgram("a\n  bad b", SourcePos{"", 1, 1}, h, p);
  EXPECT_EQ(excerpt(*p.src, p.tokens[1].pos), "  bad b\n  ^");
  // The first line of a text that starts in column 5 of its file.
  scanProgram("bad", SourcePos{"", 3, 5}, h, p);
  EXPECT_EQ(excerpt(*p.src, p.tokens[0].pos), "bad\n^");
}

struct ErrorCase {
  const char* input;
  int message;
  int line, col;
};

const ErrorCase kErrors[] = {
    {"qvt data='abc;\nrun;", kMsgUnterminatedString, 1, 10},
    {"qvt;\n /* no end", kMsgUnterminatedComment, 2, 2},
    {"qvt; * no end", kMsgUnterminatedComment, 1, 6},
    {"qvt \x01;", kMsgBadCharacter, 1, 5},
    {"qvt \xC3\xA9;", kMsgBadCharacter, 1, 5},
    {"x='32JAN2020'd", kMsgBadLiteral, 1, 3},
    {"x='25:00't", kMsgBadLiteral, 1, 3},
    {"lead=12abc", kMsgBadNumber, 1, 6},
    {"abcdefghijabcdefghijabcdefghijabc", kMsgBadName, 1, 1},  // 33 characters
    {"''n", kMsgBadName, 1, 1},
    {"1e999", kMsgBadNumber, 1, 1},
};

TEST(Scanner, LexicalErrorsCarryTheirPlace) {
  for (const auto& c : kErrors) {
    SCOPED_TRACE(c.input);
    RecordingHost h;
    Program p;
    EXPECT_GE(scanProgram(c.input, SourcePos{"f.qvt", 1, 1}, h, p), 1);
    ASSERT_FALSE(h.msgs.empty());
    EXPECT_EQ(h.msgs[0].group, 129);
    EXPECT_EQ(h.msgs[0].number, c.message);
    ASSERT_TRUE(h.msgs[0].hasPos);
    EXPECT_EQ(h.msgs[0].pos.file, "f.qvt");
    // The text names the place and shows the line with a caret.
    const std::string place = "f.qvt, line " + std::to_string(c.line) + ", column " + std::to_string(c.col);
    EXPECT_NE(h.text(0).find(place), std::string::npos) << h.text(0);
    EXPECT_NE(h.text(0).find('^'), std::string::npos) << h.text(0);
  }
}

TEST(Literals, HandWorkedValues) {
  const auto rows = testing::dataRows("literals.csv", ',');
  ASSERT_EQ(rows.size(), 36u);
  for (const auto& r : rows) {
    ASSERT_EQ(r.size(), 3u);
    const std::optional<double> got = r[0] == "Date"   ? literalDate(r[1])
                                      : r[0] == "Time" ? literalTime(r[1])
                                                       : literalDateTime(r[1]);
    ASSERT_EQ(got.has_value(), !r[2].empty()) << r[0] << " " << r[1];
    if (got) {
      EXPECT_DOUBLE_EQ(*got, std::stod(r[2])) << r[1];
    }
  }
}

// Every spelling, written with every second letter in lower case, is read
// as a word that keeps its case and names its main keyword.
TEST(Keywords, EverySpellingIsItsMainKeywordInAnyCase) {
  int spellings = 0;
  for (const auto& group : testing::dataRows("keywords.txt", '/')) {
    const std::string main = group[0].substr(0, group[0].find(' '));
    for (std::string w : group) {
      w.erase(std::remove(w.begin(), w.end(), ' '), w.end());
      ++spellings;
      ASSERT_GE(keywordFind(w), 0) << w;
      EXPECT_EQ(keywordName(keywordFind(w)), main) << w;
      for (std::size_t k = 0; k < w.size(); k += 2) w[k] = static_cast<char>(std::tolower(w[k]));
      RecordingHost h;
      Program p;
      scanProgram(w, SourcePos{"", 1, 1}, h, p);
      ASSERT_EQ(p.tokens.size(), 1u) << w;
      EXPECT_EQ(p.tokens[0].cls, term::NAMEX);
      EXPECT_EQ(keywordName(p.tokens[0].kw), main) << w;
      EXPECT_EQ(p.tokens[0].text, w);
    }
  }
  EXPECT_EQ(spellings, 215);  // 191 keywords and 24 other spellings
  for (std::string_view w : {"RUN", "MONTH", "SELECTS", "BB", "LEADS", "", "_ALL", "QV"}) EXPECT_EQ(keywordFind(w), -1) << w;
  EXPECT_EQ(keywordName(-1), "");
  EXPECT_EQ(keywordName(100000), "");
}

}  // namespace
}  // namespace qvt
