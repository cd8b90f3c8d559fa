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
  static const char* const kTag[] = {"?", ";", "N", "Q", "I", "R", "C", "F",
                                     "D", "T", "DT", "M", "V", "?", "?", "O"};
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

// A row of tokens.txt gives the tokens, or !N@L:C for an input whose first
// message is lexical error N at line L, column C.
TEST(Scanner, TokenClassesValuesAndLexicalErrors) {
  for (const auto& r : testing::dataRows("tokens.txt", '|')) {
    std::string input = r.at(0);
    for (const std::string_view from : {"\\n", "\\x01"})
      for (std::size_t at; (at = input.find(from)) != std::string::npos;)
        input.replace(at, from.size(), from[1] == 'n' ? "\n" : "\x01");
    SCOPED_TRACE(input);
    RecordingHost h;
    Program p;
    const int errors = scanProgram(input, SourcePos{"f.qvt", 1, 1}, h, p);
    if (r.at(1)[0] != '!') {
      EXPECT_EQ(errors, 0);
      EXPECT_TRUE(h.msgs.empty());
      EXPECT_EQ(render(p), r[1]);
      continue;
    }
    EXPECT_GE(errors, 1);
    ASSERT_FALSE(h.msgs.empty());
    ASSERT_TRUE(h.msgs[0].hasPos);
    const SourcePos& at = h.msgs[0].pos;
    const std::string line = std::to_string(at.line), col = std::to_string(at.col);
    EXPECT_EQ(r[1], "!" + std::to_string(h.msgs[0].number) + "@" + line + ":" + col);
    EXPECT_EQ(h.msgs[0].group, 129);
    EXPECT_EQ(at.file, "f.qvt");
    // The text names the place and shows the line with a caret.
    EXPECT_NE(h.text(0).find("f.qvt, line " + line + ", column " + col), std::string::npos) << h.text(0);
    EXPECT_NE(h.text(0).find('^'), std::string::npos) << h.text(0);
  }
}

TEST(Scanner, PlacesCountLinesAndColumnsFromTheOrigin) {
  RecordingHost h;
  Program p;
  scanProgram("qvt\n  lead=5;\n\tx", SourcePos{"prog.qvt", 10, 7}, h, p);
  std::string places;
  for (const Token& t : p.tokens)
    places += t.pos.file + ":" + std::to_string(t.pos.line) + ":" + std::to_string(t.pos.col) + " ";
  EXPECT_EQ(places, "prog.qvt:10:7 prog.qvt:11:3 prog.qvt:11:7 prog.qvt:11:8 prog.qvt:11:9 prog.qvt:12:2 ");
  EXPECT_EQ(p.src->lineText(11), "  lead=5;");
  EXPECT_EQ(p.src->lineText(13), "");
  scanProgram("a\n  bad b", SourcePos{"", 1, 1}, h, p);
  EXPECT_EQ(excerpt(*p.src, p.tokens[1].pos), "  bad b\n  ^");
  // The first line of a text that starts in column 5 of its file.
  scanProgram("bad", SourcePos{"", 3, 5}, h, p);
  EXPECT_EQ(excerpt(*p.src, p.tokens[0].pos), "bad\n^");
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
  for (std::string_view w : {"RUN", "MONTH", "SELECTS", "BB", "LEADS", "", "_ALL", "QV"})
    EXPECT_EQ(keywordFind(w), -1) << w;
  EXPECT_EQ(keywordName(-1), "");
  EXPECT_EQ(keywordName(100000), "");
}

}  // namespace
}  // namespace qvt
