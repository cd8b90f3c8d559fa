// The grammar, steps of a program, syntax errors and their repair by the
// cheapest deletions and insertions, the JSON rendering of the records; the
// corpus of bad programs; and random token soups, truncated programs and
// random bytes, which never crash the scanner and parser (the sanitizers
// watch), give messages with a catalogue row each, and make a step unusable
// exactly when an error was reported in it.

#include <iterator>
#include <random>

#include "statements/grammar.hpp"
#include "support.hpp"

namespace qvt {
namespace {

using testing::Parsed;
using testing::RecordingHost;

TEST(Grammar, BuildsWithoutConflicts) {
  for (const auto& c : stmtGrammar().conflicts) ADD_FAILURE() << c;
}

TEST(Steps, Split) {
  // steps: the records of each step's PROCSTR, r when RUN; ended it, ! when unusable.
  const struct { const char *text, *steps; std::vector<int> messages; } cases[] = {
      // A lexical error counts in its own step only.
      {"qvt lead=1; run;\nqvt data='x lead=2;", "1r 1!", {kMsgUnterminatedString}},
      {"qvt; forecast a; qvt; forecast b; forecast c; run;", "2 3r", {}},
      {"QVT; forecast a; Run ; qvt;", "2r 1", {}},
      {"qvt; run; run; qvt; run;", "1r 1r", {}},
      {"forecast a; qvt;", "1", {kMsgOutsideStep}},
      {"qvt; run; forecast a; qvt;", "1r 1", {kMsgOutsideStep}},
      {"/* a */ * b;", "", {kMsgEmptyProgram}},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.text);
    RecordingHost h;
    Program prog;
    const int lexical = scanProgram(c.text, SourcePos{}, h, prog);
    int errors = 0;
    std::string got;
    for (const auto& st : splitSteps(prog, h, &errors)) {
      RecordingHost hs;
      PROCSTR p;
      const int rc = xsparse(prog, st, hs, p);
      EXPECT_EQ(p.head.at(0).name, "QVT");
      got += (got.empty() ? "" : " ") + std::to_string(p.head.size()) + (st.endedByRun ? "r" : "");
      got += rc == kStatementsUnusable ? "!" : rc == 0 ? "" : "?";
    }
    EXPECT_EQ(got, c.steps);
    EXPECT_EQ(h.numbers(), c.messages);
    EXPECT_EQ(lexical + errors, static_cast<int>(c.messages.size()));
  }
}

// The messages in the order logged; clean: a program that leaves the same records, or null.
struct RepairCase { const char* text; std::vector<int> messages; int repaired, skipped; const char* clean; };

const RepairCase kRepairs[] = {
    // One transposition from LEAD: read as LEAD (cost 50 + 10) and the value kept.
    {"qvt laed=6; forecast x / model=simpl;", {kMsgMisspelled, kMsgMisspelled}, 2, 0,
     "qvt lead=6; forecast x / model=simple;"},
    // One extra letter: the keyword one edit away, not an earlier one two
    // edits away at the same cost (RMSEE is RMSE, not MSE; BESTAL is BESTALL).
    {"qvt; forecast x / criterion=rmsee model=bestal;", {kMsgMisspelled, kMsgMisspelled}, 1, 0,
     "qvt; forecast x / criterion=rmse model=bestall;"},
    {"qvt; forecast x / criterion=aicc2;", {kMsgMisspelled}, 1, 0, "qvt; forecast x / criterion=aicc;"},
    // The end of the text in place of ';': insert ';' (cost 10).
    {"qvt lead=5", {kMsgSyntax, kMsgRepaired}, 1, 0, "qvt lead=5;"},
    // A value is missing: insert an INT (cost 2); no value is stored, the option behind it is read.
    {"qvt lead= back=2;", {kMsgSyntax, kMsgRepaired}, 1, 0, "qvt back=2;"},
    // A stray mark: delete it (cost 10).
    {"qvt lead=5 > back=2;", {kMsgSyntax, kMsgRepaired}, 1, 0, "qvt lead=5 back=2;"},
    // Three strings where names are wanted: each deletion costs 50 and no
    // insertion can take a string, so 150 > 127 gives the statement up. It
    // leaves no record, and the statements around it are read.
    {"qvt lead=4; forecast a; forecast 'x' 'y' 'z'; forecast b;", {kMsgSyntax, kMsgUnrepairable}, 0, 1,
     "qvt lead=4; forecast a; forecast b;"},
    {"qvt; forcast x;", {kMsgUnknownStatement}, 0, 1, "qvt;"},
    {"qvt; forecast x / alpha=; forecast y / holdout=-1;", {kMsgSyntax, kMsgRepaired, kMsgOutOfRange}, 1, 0,
     nullptr},
    // A repeated option warns, and the last one stands.
    {"qvt lead=3 lead=4;", {kMsgRepeated}, 0, 0, "qvt lead=4;"},
    // Options held in two or three fields: writing one clears the others.
    {"qvt; id t interval=month setmissing=avg setmissing=7;", {kMsgRepeated}, 0, 0,
     "qvt; id t interval=month setmissing=7;"},
    {"qvt; id t interval=month start='01JAN2020'd start='13:30't;", {kMsgRepeated}, 0, 0,
     "qvt; id t interval=month start='13:30't;"},
    {"qvt; forecast x / setmissing=7 setmissing=prev;", {kMsgRepeated}, 0, 0,
     "qvt; forecast x / setmissing=prev;"},
    // The second ID statement writes the interval again: two warnings, no error.
    {"qvt; id t interval=month; id u interval=qtr;", {kMsgSecondStatement, kMsgRepeated}, 0, 0, nullptr},
    {"qvt; id t interval=fortnight;", {kMsgBadInterval}, 0, 0, nullptr},
    // Empty programs and statements outside a step.
    {"", {kMsgEmptyProgram}, 0, 0, nullptr},
    {"forecast x;", {kMsgOutsideStep}, 0, 0, nullptr},
};

TEST(Repair, MessagesCountsAndRecords) {
  for (const auto& c : kRepairs) {
    SCOPED_TRACE(c.text);
    Parsed r(c.text, SourcePos{"r.qvt", 1, 1});
    EXPECT_EQ(r.h.numbers(), c.messages);
    for (std::size_t k = 0; k < r.h.msgs.size(); ++k) EXPECT_FALSE(r.h.text(k).empty()) << "no catalogue row";
    EXPECT_EQ(r.p.nrepaired, c.repaired);
    EXPECT_EQ(r.p.nskipped, c.skipped);
    EXPECT_EQ(r.rc, c.messages.back() == kMsgRepeated ? 0 : kStatementsUnusable);
    EXPECT_EQ(r.p.error, r.rc);
    if (c.clean) {
      EXPECT_EQ(stmtJson(r.p)["records"], stmtJson(Parsed(c.clean).p)["records"]);
    }
  }
  // Many errors in one statement give it up too.
  Parsed m("qvt; forecast x / = = = = = = = = = = = = = = = = = = = = = = = = = = = =; forecast y;");
  EXPECT_EQ(m.p.error, kStatementsUnusable);
  EXPECT_EQ(m.h.numbers().back(), kMsgUnrepairable);
  EXPECT_EQ(stmtJson(m.p)["records"], stmtJson(Parsed("qvt; forecast y;").p)["records"]);
}

TEST(Repair, ErrorNamesFileLineColumnAndShowsTheLine) {
  Parsed r("qvt lead=5;\n  forecast x / alpha=;\n", SourcePos{"prog.qvt", 1, 1});
  ASSERT_EQ(r.h.numbers().at(0), kMsgSyntax);
  EXPECT_NE(r.h.text(0).find("prog.qvt, line 2, column 22"), std::string::npos) << r.h.text(0);
  const std::string shown = "  forecast x / alpha=;\n                     ^";
  EXPECT_NE(r.h.text(0).find(shown), std::string::npos) << r.h.text(0);
  // What was expected reads as a list: "A or B", and past twelve "A, ... L or N more".
  for (const auto& [text, expected] : {std::pair{"qvt; id t interval=3;", "expected a name or a format."},
                                       std::pair{"qvt; forecast x / model=7;", "MULTSEASONAL or 5 more."}}) {
    Parsed e(text);
    ASSERT_FALSE(e.h.msgs.empty()) << text;
    const std::string t = e.h.text(0);
    EXPECT_NE(t.find(expected), std::string::npos) << t;
  }
}

nlohmann::json render(const std::string& text) {
  Parsed r(text);
  EXPECT_EQ(r.p.error, 0) << text;
  return stmtJson(r.p);
}

TEST(StmtJson, SameMeaningSameJsonAndOnlyThen) {
  const struct { const char *a, *b; bool same; } pairs[] = {
      {"qvt; idm size=(levelrest=(0.1 0.9));", "qvt; idm size=(levelrest=(0.1, 0.9));", true},
      {"qvt lead=5; /* a comment */", "QVT\n  LEAD = 5 ;", true},
      {"qvt; forecast x / criterion=mape;", "qvt; forecast x / criterion=mae;", false},
      {"qvt; id t interval=month align=b;", "qvt; id t interval=month align=e;", false},
      {"qvt; idm size=(levelrest=(0.1 0.9));", "qvt; idm interval=(levelrest=(0.1 0.9));", false},
      {"qvt print=all;", "qvt;", false},
      {"qvt; forecast x;", "qvt; forecast y;", false},
      {"qvt; by a;", "qvt; by descending a;", false},
  };
  for (const auto& c : pairs) EXPECT_EQ(render(c.a) == render(c.b), c.same) << c.a << "\n" << c.b;
}

// The rendering of field n of a record, or null.
nlohmann::json field(const nlohmann::json& record, int n) {
  for (const auto& f : record["fields"])
    if (f["field"] == n) return f;
  return nullptr;
}

TEST(StmtJson, NamesBitsAndFields) {
  const auto j = render("qvt lead=5 print=all; idm size=(levelparm=.A); forecast x / model=bestall;");
  ASSERT_EQ(j["records"].size(), 2u);
  const auto& proc = j["records"][0];
  EXPECT_EQ(proc["statement"], "QVT");
  // The SIZE= component is present: bit 113.
  EXPECT_EQ(proc["bits"], R"j([{"bit":10,"option":"PRINT=ALL"},{"bit":113,"option":"SIZE=(...)"}])j"_json);
  EXPECT_EQ(field(proc, 7), R"j({"field":7,"option":"LEAD","kind":"number","value":5.0})j"_json);
  EXPECT_EQ(field(proc, 75)["value"], ".A") << "a missing value renders as its literal";
  EXPECT_EQ(j["records"][1]["statement"], "FORECAST");
  EXPECT_EQ(field(j["records"][1], 2),
            R"j({"field":2,"option":"MODEL","kind":"number","value":50.0,"name":"BESTALL"})j"_json);
  EXPECT_TRUE(render("qvt print=none;")["records"][0]["bits"].empty());
}

// Runs a whole program and checks the invariants: every message has a
// catalogue row and names its place, and a step is unusable exactly when an
// error was reported in it. The numbers of the messages go to seen.
void checkProgram(const std::string& text, std::set<int>* seen = nullptr) {
  testing::RecordingHost lex;
  Program prog;
  scanProgram(text, SourcePos{"fuzz", 1, 1}, lex, prog);
  const auto steps = splitSteps(prog, lex);
  for (const auto& m : lex.msgs) {
    ASSERT_NE(catalogFind(129, m.number), nullptr);
    EXPECT_TRUE(m.hasPos);
    if (seen) seen->insert(m.number);
  }
  for (const auto& st : steps) {
    testing::RecordingHost h;
    PROCSTR p;
    const int rc = xsparse(prog, st, h, p);
    bool parseError = false;
    for (const auto& m : h.msgs) {
      const auto* row = catalogFind(m.group, m.number);
      ASSERT_NE(row, nullptr) << m.number << " in: " << text;
      EXPECT_TRUE(m.hasPos);
      if (seen) seen->insert(m.number);
      parseError |= row->severity == Severity::Error;
    }
    bool lexicalError = false;
    for (auto at : prog.errorAt)
      lexicalError |= at >= st.beginOffset && at < std::max(st.endOffset, st.beginOffset + 1);
    ASSERT_EQ(rc != 0, parseError || lexicalError) << text;
    ASSERT_EQ(rc, p.error);
    ASSERT_FALSE(p.head.empty()) << "a step always has its procedure record";
    ASSERT_EQ(p.head[0].name, "QVT");
    for (std::size_t r = 1; r < p.head.size(); ++r) ASSERT_EQ(p.head[r].name, "FORECAST");
    ASSERT_FALSE(stmtJsonText(p, -1).empty());
  }
}

const char* const kVocabulary =
    "qvt forecast id idm by run ; ; = ( ) , - -- / : x y1-y3 data out lead back print plot all none spectrum "
    "alpha center yes model simple winters criterion select mape interval month week.2 align b end start "
    "'01jan2020'd '13:30't '01JAN2020:13:30:00'dt 12 0.5 -3 1e-3 . .A 'a' \"b\" 'vw'n lib.mem DATE9. $CHAR8. "
    "levelrest size average method bounds base auto transform boxcox descending notsorted _all_ _numeric_ "
    "setmissing accumulate zeromiss both seasontest siglevel /* */ * > '";

// Token soups first, then random bytes.
TEST(Fuzz, TokenSoupsAndRandomBytes) {
  std::istringstream in(kVocabulary);
  const std::vector<std::string> words{std::istream_iterator<std::string>(in), {}};
  std::mt19937 rng(20261122);
  std::uniform_int_distribution<std::size_t> pick(0, words.size() - 1);
  for (int n = 0; n < 700; ++n) {
    const bool soup = n < 400;
    std::string text = n % (soup ? 2 : 3) ? "qvt " : "";
    const auto m = rng() % (soup ? 41 : 201);
    for (std::size_t k = 0; k < m; ++k) {
      const std::string w = soup ? words[pick(rng)] : std::string(1, static_cast<char>(rng() % 256));
      text += soup && rng() % 4 ? w + " " : w;
    }
    checkProgram(text);
    if (HasFatalFailure()) return;
  }
}

// The corpus of bad programs: each file's first line names the message
// numbers (group 129) that the program must give, no more and no fewer.
TEST(Corpus, EveryProgramGivesItsMessages) {
  const std::filesystem::path dir = std::filesystem::path(QVT_SOURCE_DIR) / "tests" / "statements" / "corpus";
  int files = 0;
  for (const auto& entry : std::filesystem::directory_iterator(dir)) {
    if (entry.path().extension() != ".qvt") continue;
    ++files;
    SCOPED_TRACE(entry.path().filename().string());
    std::stringstream buf;
    buf << std::ifstream(entry.path(), std::ios::binary).rdbuf();
    const std::string text = buf.str();
    const auto at = text.substr(0, text.find('\n')).find("expect:");
    ASSERT_NE(at, std::string::npos) << "the first line must name the expected messages";
    const std::vector<int> listed = testing::ints(text.substr(at + 7));
    std::set<int> got;
    checkProgram(text, &got);
    EXPECT_EQ(got, std::set<int>(listed.begin(), listed.end()));
  }
  EXPECT_GE(files, 15);
}

TEST(Fuzz, TruncatedPrograms) {
  const std::string programs[] = {
      "qvt data=sales out=work.o lead=6 print=(estimates forecasts) plot=spectrum(alpha=0.1 center=yes);\n"
      "  id date interval=month accumulate=total setmissing=0 zeromiss=both start='01jan2020'd\n"
      "  format=monyy7.;\n"
      "  forecast a b1-b3 c--d 'e f'n / model=bestall criterion=mape transform=boxcox(0.5) alpha=0.05;\n"
      "  idm interval=(method=simple levelrest=(0.1, 0.9)) size=(bounds=(1 . )) base=auto;\n"
      "  by region descending city notsorted; /* done */ run;",
      "qvt; * comment; forecast \"x\"n / seasontest=(siglevel=0.01) setmissing=-1.5; run; qvt; forecast y;",
  };
  for (const auto& full : programs) {
    for (std::size_t cut = 0; cut <= full.size(); ++cut) {
      checkProgram(full.substr(0, cut));
      if (HasFatalFailure()) return;
    }
  }
}

}  // namespace
}  // namespace qvt
