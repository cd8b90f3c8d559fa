// Random token soups, truncated programs and random bytes: the scanner and
// parser never crash (the sanitizers watch), every message has a catalogue
// row, and a step is unusable exactly when an error was reported in it.

#include <random>

#include "support.hpp"

namespace qvt {
namespace {

// Runs a whole program and checks the invariants.
void checkProgram(const std::string& text) {
  testing::RecordingHost lex;
  Program prog;
  scanProgram(text, SourcePos{"fuzz", 1, 1}, lex, prog);
  const auto steps = splitSteps(prog, lex);
  for (std::size_t k = 0; k < lex.msgs.size(); ++k) ASSERT_NE(catalogFind(129, lex.msgs[k].number), nullptr);
  for (const auto& st : steps) {
    testing::RecordingHost h;
    PROCSTR p;
    const int rc = xsparse(prog, st, h, p);
    bool parseError = false;
    for (const auto& m : h.msgs) {
      const auto* row = catalogFind(m.group, m.number);
      ASSERT_NE(row, nullptr) << m.number << " in: " << text;
      parseError |= row->severity == Severity::Error;
    }
    bool lexicalError = false;
    for (auto at : prog.errorAt) lexicalError |= at >= st.beginOffset && at < std::max(st.endOffset, st.beginOffset + 1);
    ASSERT_EQ(rc != 0, parseError || lexicalError) << text;
    ASSERT_EQ(rc, p.error);
    ASSERT_FALSE(p.head.empty()) << "a step always has its procedure record";
    ASSERT_EQ(p.head[0].name, "QVT");
    for (std::size_t r = 1; r < p.head.size(); ++r) ASSERT_EQ(p.head[r].name, "FORECAST");
    ASSERT_FALSE(stmtJsonText(p, -1).empty());
  }
}

const char* const kVocabulary[] = {
    "qvt",  "forecast", "id",       "idm",    "by",     "run",       ";",         ";",        "=",
    "(",    ")",        ",",        "-",      "--",     "/",         ":",         "x",        "y1-y3",
    "data", "out",      "lead",     "back",   "print",  "plot",      "all",       "none",     "spectrum",
    "alpha", "center",  "yes",      "model",  "simple", "winters",   "criterion", "select",   "mape",
    "interval", "month", "week.2",  "align",  "b",      "end",       "start",     "'01jan2020'd", "'13:30't",
    "'01JAN2020:13:30:00'dt", "12", "0.5",    "-3",     "1e-3",      ".",         ".A",       "'a'",
    "\"b\"", "'v w'n",  "lib.mem",  "DATE9.", "$CHAR8.", "levelrest", "size",     "average",  "method",
    "bounds", "base",   "auto",     "transform", "boxcox", "descending", "notsorted", "_all_", "_numeric_",
    "setmissing", "accumulate", "zeromiss", "both", "seasontest", "siglevel", "/*", "*/", "*", ">", "'",
};

// Token soups first, then random bytes.
TEST(Fuzz, TokenSoupsAndRandomBytes) {
  std::mt19937 rng(20261122);
  std::uniform_int_distribution<std::size_t> pick(0, std::size(kVocabulary) - 1);
  for (int n = 0; n < 700; ++n) {
    const bool soup = n < 400;
    std::string text = n % (soup ? 2 : 3) ? "qvt " : "";
    const auto m = rng() % (soup ? 41 : 201);
    for (std::size_t k = 0; k < m; ++k) {
      if (!soup) {
        text += static_cast<char>(rng() % 256);
        continue;
      }
      text += kVocabulary[pick(rng)];
      text += rng() % 4 ? " " : "";
    }
    checkProgram(text);
    if (HasFatalFailure()) return;
  }
}

TEST(Fuzz, TruncatedPrograms) {
  const std::string programs[] = {
      "qvt data=sales out=work.o lead=6 print=(estimates forecasts) plot=spectrum(alpha=0.1 center=yes);\n"
      "  id date interval=month accumulate=total setmissing=0 zeromiss=both start='01jan2020'd format=monyy7.;\n"
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

TEST(Fuzz, TruncatedStatementIsUnusable) {
  // Cut inside the quoted data set name, the string is never closed.
  for (const char* text : {"qvt data='dat", "qvt lead=", "qvt; forecast x / model=("})
    EXPECT_NE(testing::Parsed(text).rc, 0) << text;
}

}  // namespace
}  // namespace qvt
