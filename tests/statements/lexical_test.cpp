// The scanner: token classes, values and places, its lexical errors; date,
// time and datetime constants; and every spelling of every keyword.

#include <chrono>
#include <cstdio>
#include <iomanip>
#include <random>

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
    for (std::size_t at; (at = input.find("\\n")) != std::string::npos;) input.replace(at, 2, "\n");
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
    // The text names the file and the place.
    EXPECT_NE(h.text(0).find("f.qvt, line " + line + ", column " + col), std::string::npos) << h.text(0);
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
  // The first line of a text that starts in column 5 of its file.
  scanProgram("bad", SourcePos{"", 3, 5}, h, p);
  EXPECT_EQ(excerpt(*p.src, p.tokens[0].pos), "bad\n^");
}

// Valid constants against the civil calendar of <chrono> (day 0 is
// 1 January 1960), over some 550 years around it.
TEST(Literals, AgainstTheCivilCalendar) {
  using namespace std::chrono;
  const sys_days epoch{year{1960} / 1 / 1};
  std::mt19937 rng(1960);
  for (int n = 0; n < 3000; ++n) {
    const sys_days day = epoch + days{static_cast<int>(rng() % 200000) - 100000};
    const year_month_day ymd{day};
    auto below = [&](unsigned k) { return static_cast<unsigned>(rng() % k); };
    const unsigned h = below(24), m = below(60), sec = below(60);
    const auto month = static_cast<unsigned>(ymd.month()), dd = static_cast<unsigned>(ymd.day());
    const std::string mon = std::string("JANFEBMARAPRMAYJUNjulaugsepoctnovdec").substr(3 * (month - 1), 3);
    char date[16], time[16];
    const int yyyy = static_cast<int>(ymd.year());
    std::snprintf(date, sizeof date, n % 2 ? "%u%s%d" : "%02u%s%d", dd, mon.c_str(), yyyy);
    std::snprintf(time, sizeof time, "%u:%02u:%02u", h, m, sec);
    const double d = static_cast<double>((day - epoch).count()), t = h * 3600 + m * 60 + sec;
    EXPECT_EQ(literalDate(date), d) << date;
    EXPECT_EQ(literalTime(time), t) << time;
    EXPECT_EQ(literalDateTime(std::string(date) + ":" + time), d * 86400 + t) << date << " " << time;
  }
}

// Rows of literals.csv: the forms the calendar loop doesn't write, and the
// rejected ones (an empty value).
TEST(Literals, HandWorkedValues) {
  for (const auto& r : testing::dataRows("literals.csv", ',')) {
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
  for (std::string_view w : {"MONTH", "LEADS", "", "QV"})
    EXPECT_EQ(keywordFind(w), -1) << w;
  EXPECT_EQ(keywordName(-1), "");
  EXPECT_EQ(keywordName(100000), "");
}

}  // namespace
}  // namespace qvt
