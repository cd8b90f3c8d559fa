#include "statements/keywords.hpp"

#include <algorithm>
#include <array>

namespace qvt {
namespace {

constexpr std::string_view kMain[] = {
  "AADJRSQ", "ACCUMULATE", "ACF", "ADDSEASONAL", "ADDWINTERS", "ADJRSQ", "AIC", "AICC", "ALIGN",
  "ALL", "ALPHA", "APC", "AUTO", "AVERAGE", "BACK", "BASE", "BASIC", "BEGIN", "BEST", "BESTALL",
  "BESTN", "BESTS", "BOTH", "BOUNDS", "BOXCOX", "BY", "CENTER", "CHAR", "CHARACTER", "CORR",
  "CRITERION", "CROSTON", "CSS", "DAMPPARM", "DAMPREST", "DAMPTREND", "DATA", "DEBUG", "DEBUGD",
  "DEBUGX", "DESCENDING", "DESCSTATS", "DOUBLE", "END", "ERRORS", "ESTIMATES", "FIRST", "FORECAST",
  "FORECASTS", "FORECASTSONLY", "FORMAT", "GMAPE", "GMAPES", "GMAPPE", "GMASPE", "GMRAE",
  "HOLDOUT", "HOLDOUTPCT", "IACF", "ID", "IDM", "INTERMITTENT", "INTERNAL", "INTERVAL", "LAST",
  "LEAD", "LEFT", "LEVELPARM", "LEVELREST", "LEVELS", "LINEAR", "LOG", "LOGISTIC", "LOWER", "MAE",
  "MAPE", "MAPES", "MAPPE", "MASE", "MAXAPES", "MAXERR", "MAXERROR", "MAXIMUM", "MAXPE", "MAXPPE",
  "MAXRE", "MAXSPE", "MDAPE", "MDAPES", "MDAPPE", "MDASPE", "MDRAE", "ME", "MEDIAN", "METHOD",
  "MIDDLE", "MINAPES", "MINERR", "MINIMUM", "MINPE", "MINPPE", "MINRE", "MINSPE", "MISSING",
  "MODEL", "MODELFORECASTS", "MODELS", "MPE", "MPPE", "MRAE", "MRE", "MSE", "MSPE", "MULTSEASONAL",
  "MULTWINTERS", "N", "NBACKCAST", "NEXT", "NMISS", "NO", "NOBS", "NOEST", "NONE", "NOOUTALL",
  "NOSTABLE", "NOTSORTED", "NUMERIC", "OUT", "OUTCOMPONENT", "OUTEST", "OUTFOR", "OUTPROCINFO",
  "OUTSEASON", "OUTSTAT", "OUTSUM", "OUTTREND", "PACF", "PERFORMANCE", "PERFORMANCEOVERALL",
  "PERFORMANCESUMMARY", "PERIODOGRAM", "PLOT", "PREDICT", "PREVIOUS", "PRINT", "PRINTDETAILS",
  "QVT", "REPLACEBACK", "REPLACEMISSING", "RIGHT", "RMSE", "RSQUARE", "RWRSQ", "SBC", "SEASONAL",
  "SEASONALITY", "SEASONS", "SEASONTEST", "SETMISSING", "SIGLEVEL", "SIMPLE", "SIZE", "SMAPE",
  "SORTNAMES", "SPECTRUM", "SQRT", "SSE", "START", "STARTSUM", "STATES", "STATISTICS", "STDDEV",
  "SUMMARY", "TOTAL", "TRANSFORM", "TRENDPARM", "TRENDREST", "TRENDS", "UMSE", "UPPER", "URMSE",
  "USE", "USS", "WINTERS", "WN", "YES", "ZEROMISS", "_ALL_", "_CHARACTER_", "_CHAR_", "_NUMERIC_",
};

constexpr KeywordSpelling kAlt[] = {
    {"ACC", "ACCUMULATE"},
    {"ACCUM", "ACCUMULATE"},
    {"ADJMEAN", "CENTER"},
    {"AVG", "AVERAGE"},
    {"B", "BEGIN"},
    {"BEG", "BEGIN"},
    {"BEGINNING", "BEGIN"},
    {"E", "END"},
    {"ENDING", "END"},
    {"F", "FIRST"},
    {"INTV", "INTERVAL"},
    {"L", "LAST"},
    {"M", "MIDDLE"},
    {"MAX", "MAXIMUM"},
    {"MEAN", "AVERAGE"},
    {"MED", "MEDIAN"},
    {"MID", "MIDDLE"},
    {"MIN", "MINIMUM"},
    {"OUTCOMP", "OUTCOMPONENT"},
    {"PREV", "PREVIOUS"},
    {"SELECT", "CRITERION"},
    {"SETMISS", "SETMISSING"},
    {"STD", "STDDEV"},
    {"T", "TOTAL"},
};

constexpr bool sortedTables() {
  for (std::size_t i = 1; i < std::size(kMain); ++i)
    if (!(kMain[i - 1] < kMain[i])) return false;
  for (std::size_t i = 1; i < std::size(kAlt); ++i)
    if (!(kAlt[i - 1].spelling < kAlt[i].spelling)) return false;
  return true;
}
static_assert(sortedTables(), "keyword tables must be sorted for the binary search");

int findMain(std::string_view w) noexcept {
  const auto* it = std::lower_bound(std::begin(kMain), std::end(kMain), w);
  if (it == std::end(kMain) || *it != w) return -1;
  return static_cast<int>(it - std::begin(kMain));
}

}  // namespace

std::span<const std::string_view> keywordNames() noexcept { return kMain; }
std::span<const KeywordSpelling> keywordSpellings() noexcept { return kAlt; }

int keywordFind(std::string_view upper) noexcept {
  if (int k = findMain(upper); k >= 0) return k;
  const auto* it = std::lower_bound(std::begin(kAlt), std::end(kAlt), upper,
                                    [](const KeywordSpelling& s, std::string_view w) { return s.spelling < w; });
  if (it == std::end(kAlt) || it->spelling != upper) return -1;
  return findMain(it->main);
}

std::string_view keywordName(int kw) noexcept {
  if (kw < 0 || kw >= static_cast<int>(std::size(kMain))) return {};
  return kMain[kw];
}

}  // namespace qvt
