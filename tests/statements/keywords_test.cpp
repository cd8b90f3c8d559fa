// Every spelling of every keyword, from the keyword list of the language
// (main spelling first, others behind a stroke), read by the scanner in
// mixed case.

#include "recording_host.hpp"

namespace qvt {
namespace {

constexpr std::string_view kLanguageKeywords =
    "AADJRSQ, ACCUMULATE / ACC / ACCUM, ACF, ADDSEASONAL, ADDWINTERS, ADJRSQ, AIC, AICC, ALIGN, ALL, ALPHA, APC, "
    "AUTO, AVERAGE / AVG / MEAN, BACK, BASE, BASIC, BEGIN / BEGINNING / BEG / B, BEST, BESTALL, BESTN, BESTS, BOTH, "
    "BOUNDS, BOXCOX, BY, CENTER / ADJMEAN, CHAR, CHARACTER, CORR, CRITERION / SELECT, CROSTON, CSS, DAMPPARM, "
    "DAMPREST, DAMPTREND, DATA, DEBUG, DEBUGD, DEBUGX, DESCENDING, DESCSTATS, DOUBLE, END / ENDING / E, ERRORS, "
    "ESTIMATES, FIRST / F, FORECAST, FORECASTS, FORECASTSONLY, FORMAT, GMAPE, GMAPES, GMAPPE, GMASPE, GMRAE, "
    "HOLDOUT, HOLDOUTPCT, IACF, ID, IDM, INTERMITTENT, INTERNAL, INTERVAL / INTV, LAST / L, LEAD, LEFT, LEVELPARM, "
    "LEVELREST, LEVELS, LINEAR, LOG, LOGISTIC, LOWER, MAE, MAPE, MAPES, MAPPE, MASE, MAXAPES, MAXERR, MAXERROR, "
    "MAXIMUM / MAX, MAXPE, MAXPPE, MAXRE, MAXSPE, MDAPE, MDAPES, MDAPPE, MDASPE, MDRAE, ME, MEDIAN / MED, METHOD, "
    "MIDDLE / MID / M, MINAPES, MINERR, MINIMUM / MIN, MINPE, MINPPE, MINRE, MINSPE, MISSING, MODEL, "
    "MODELFORECASTS, MODELS, MPE, MPPE, MRAE, MRE, MSE, MSPE, MULTSEASONAL, MULTWINTERS, N, NBACKCAST, NEXT, NMISS, "
    "NO, NOBS, NOEST, NONE, NOOUTALL, NOSTABLE, NOTSORTED, NUMERIC, OUT, OUTCOMPONENT / OUTCOMP, OUTEST, OUTFOR, "
    "OUTPROCINFO, OUTSEASON, OUTSTAT, OUTSUM, OUTTREND, PACF, PERFORMANCE, PERFORMANCEOVERALL, PERFORMANCESUMMARY, "
    "PERIODOGRAM, PLOT, PREDICT, PREVIOUS / PREV, PRINT, PRINTDETAILS, REPLACEBACK, REPLACEMISSING, RIGHT, RMSE, "
    "RSQUARE, RWRSQ, SBC, SEASONAL, SEASONALITY, SEASONS, SEASONTEST, SETMISSING / SETMISS, SIGLEVEL, SIMPLE, SIZE, "
    "SMAPE, SORTNAMES, SPECTRUM, SQRT, SSE, START, STARTSUM, STATES, STATISTICS, STDDEV / STD, SUMMARY, TOTAL / T, "
    "TRANSFORM, TRENDPARM, TRENDREST, TRENDS, UMSE, UPPER, URMSE, USE, USS, WINTERS, WN, YES, ZEROMISS, _ALL_, "
    "_CHARACTER_, _CHAR_, _NUMERIC_, QVT";

struct Spelling {
  std::string written;
  std::string main;
};

std::vector<Spelling> languageSpellings() {
  std::vector<Spelling> out;
  std::stringstream groups{std::string(kLanguageKeywords)};
  std::string group;
  while (std::getline(groups, group, ',')) {
    std::stringstream words(group);
    std::string w, main;
    while (words >> w) {
      if (w == "/") continue;
      if (main.empty()) main = w;
      out.push_back({w, main});
    }
  }
  return out;
}

// Mixed case: every second letter lower.
std::string mixCase(std::string s) {
  for (std::size_t k = 0; k < s.size(); k += 2) s[k] = static_cast<char>(std::tolower(static_cast<unsigned char>(s[k])));
  return s;
}

TEST(Keywords, EverySpellingIsItsMainKeyword) {
  const auto all = languageSpellings();
  ASSERT_EQ(all.size(), 215u);  // 191 keywords and 24 other spellings
  for (const auto& s : all) {
    const int k = keywordFind(s.written);
    ASSERT_GE(k, 0) << s.written;
    EXPECT_EQ(keywordName(k), s.main) << s.written;
  }
}

TEST(Keywords, ScannerReadsSpellingsWithoutRegardToCase) {
  for (const auto& s : languageSpellings()) {
    testing::RecordingHost h;
    Program p;
    const std::string written = mixCase(s.written);
    scanProgram(written, SourcePos{"", 1, 1}, h, p);
    ASSERT_EQ(p.tokens.size(), 1u) << written;
    EXPECT_EQ(p.tokens[0].cls, term::NAMEX);
    EXPECT_EQ(keywordName(p.tokens[0].kw), s.main) << written;
    EXPECT_EQ(p.tokens[0].text, written) << "a word keeps the case in which it was written";
    EXPECT_TRUE(h.msgs.empty());
  }
}

TEST(Keywords, OtherWordsAreNames) {
  for (std::string_view w : {"RUN", "MONTH", "SALES", "SELECTS", "BB", "LEADS", "", "_ALL", "QV", "DATE"}) {
    EXPECT_EQ(keywordFind(w), -1) << w;
  }
  EXPECT_EQ(keywordName(-1), "");
  EXPECT_EQ(keywordName(100000), "");
}

}  // namespace
}  // namespace qvt
