// Code tables of the options whose values are keywords: one row per code
// with its short name and the keywords that write it. The grammar of the
// statements is generated from these rows, and the JSON rendering names
// codes by them, so a code lives in one place.
#pragma once

#include <array>
#include <span>
#include <string_view>

namespace qvt {

struct CodeName {
  int code;
  std::string_view name;     // short name
  std::string_view keyword;  // main spelling of the keyword that writes it
};

// Statistics of fit that CRITERION= (SELECT=) can name. The written form
// differs from the name for ADJRSQ, AADJRSQ and RWRSQ.
inline constexpr CodeName kCriterionCodes[] = {
    {1, "SSE", "SSE"},         {2, "MSE", "MSE"},           {3, "RMSE", "RMSE"},
    {4, "UMSE", "UMSE"},       {5, "URMSE", "URMSE"},       {10, "RSQUARE", "RSQUARE"},
    {11, "ADJ_RSQ", "ADJRSQ"}, {12, "A_ADJ_RSQ", "AADJRSQ"}, {13, "RW_RSQ", "RWRSQ"},
    {20, "AIC", "AIC"},        {21, "SBC", "SBC"},          {22, "APC", "APC"},
    {23, "AICC", "AICC"},      {30, "MINERR", "MINERR"},    {31, "MAXERR", "MAXERR"},
    {32, "ME", "ME"},          {33, "MAE", "MAE"},          {40, "MINPE", "MINPE"},
    {41, "MAXPE", "MAXPE"},    {42, "MPE", "MPE"},          {43, "MAPE", "MAPE"},
    {44, "MDAPE", "MDAPE"},    {45, "GMAPE", "GMAPE"},      {50, "MINSPE", "MINSPE"},
    {51, "MAXSPE", "MAXSPE"},  {52, "MSPE", "MSPE"},        {53, "SMAPE", "SMAPE"},
    {54, "MDASPE", "MDASPE"},  {55, "GMASPE", "GMASPE"},    {60, "MINRE", "MINRE"},
    {61, "MAXRE", "MAXRE"},    {62, "MRE", "MRE"},          {63, "MRAE", "MRAE"},
    {64, "MDRAE", "MDRAE"},    {65, "GMRAE", "GMRAE"},      {70, "MINPPE", "MINPPE"},
    {71, "MAXPPE", "MAXPPE"},  {72, "MPPE", "MPPE"},        {73, "MAPPE", "MAPPE"},
    {74, "MDAPPE", "MDAPPE"},  {75, "GMAPPE", "GMAPPE"},    {80, "MINAPES", "MINAPES"},
    {81, "MAXAPES", "MAXAPES"}, {82, "MAPES", "MAPES"},     {83, "MDAPES", "MDAPES"},
    {84, "GMAPES", "GMAPES"},  {85, "MASE", "MASE"},
};

// MODEL= of the FORECAST statement; two keywords may write one code.
inline constexpr CodeName kModelCodes[] = {
    {0, "NONE", "NONE"},           {8, "BEST", "BEST"},
    {9, "BESTN", "BESTN"},         {10, "BESTS", "BESTS"},
    {1, "SIMPLE", "SIMPLE"},       {4, "DOUBLE", "DOUBLE"},
    {2, "LINEAR", "LINEAR"},       {3, "DAMPTREND", "DAMPTREND"},
    {5, "SEASONAL", "SEASONAL"},   {5, "SEASONAL", "ADDSEASONAL"},
    {7, "WINTERS", "WINTERS"},     {7, "WINTERS", "MULTWINTERS"},
    {11, "MULTSEASONAL", "MULTSEASONAL"}, {6, "ADDWINTERS", "ADDWINTERS"},
    {20, "CROSTON", "CROSTON"},    {20, "CROSTON", "IDM"},
    {50, "BESTALL", "BESTALL"},
};

// METHOD= of an IDM component.
inline constexpr CodeName kMethodCodes[] = {
    {9, "BESTN", "BESTN"}, {1, "SIMPLE", "SIMPLE"},       {4, "DOUBLE", "DOUBLE"},
    {2, "LINEAR", "LINEAR"}, {3, "DAMPTREND", "DAMPTREND"},
};

// USE=.
inline constexpr CodeName kUseCodes[] = {
    {1, "PREDICT", "PREDICT"}, {2, "LOWER", "LOWER"}, {3, "UPPER", "UPPER"},
};

// TRANSFORM=; BOXCOX takes its parameter in the next field.
inline constexpr CodeName kTransformCodes[] = {
    {0, "NONE", "NONE"}, {1, "LOG", "LOG"},       {2, "SQRT", "SQRT"},
    {3, "LOGIT", "LOGISTIC"}, {4, "BOXCOX", "BOXCOX"}, {10, "AUTO", "AUTO"},
};

// ACCUMULATE=.
inline constexpr CodeName kAccumulateCodes[] = {
    {0, "NONE", "NONE"},       {1, "TOTAL", "TOTAL"},     {2, "AVERAGE", "AVERAGE"},
    {3, "FIRST", "FIRST"},     {4, "LAST", "LAST"},       {5, "MINIMUM", "MINIMUM"},
    {6, "MAXIMUM", "MAXIMUM"}, {7, "MEDIAN", "MEDIAN"},   {8, "STD", "STDDEV"},
    {9, "USS", "USS"},         {10, "CSS", "CSS"},        {11, "NOBS", "NOBS"},
    {12, "N", "N"},            {13, "NMISS", "NMISS"},
};

// SETMISSING= by keyword; a number is code 100 in another field.
inline constexpr CodeName kSetMissingCodes[] = {
    {0, "MISSING", "MISSING"}, {2, "AVERAGE", "AVERAGE"}, {3, "FIRST", "FIRST"},
    {4, "LAST", "LAST"},       {5, "MINIMUM", "MINIMUM"}, {6, "MAXIMUM", "MAXIMUM"},
    {7, "MEDIAN", "MEDIAN"},   {9, "PREVIOUS", "PREVIOUS"}, {10, "NEXT", "NEXT"},
};

// ZEROMISS=.
inline constexpr CodeName kZeroMissCodes[] = {
    {0, "NONE", "NONE"}, {1, "LEFT", "LEFT"}, {2, "RIGHT", "RIGHT"}, {3, "BOTH", "BOTH"},
};

// Short name of a code in a table; empty when the table has no such code.
constexpr std::string_view codeName(std::span<const CodeName> table, int code) noexcept {
  for (const auto& c : table)
    if (c.code == code) return c.name;
  return {};
}

}  // namespace qvt
