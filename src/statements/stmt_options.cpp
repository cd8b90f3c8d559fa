#include "statements/stmt_options.hpp"

#include <string_view>

namespace qvt {
namespace {

struct Named {
  int number;
  std::string_view option;
};

constexpr Named kProcFields[] = {
    {0, "BY"},          {1, "DATA"},          {2, "OUT"},          {3, "ID"},
    {4, "INTERVAL"},    {5, "ALIGN"},         {6, "SEASONALITY"},  {7, "LEAD"},
    {8, "STARTSUM"},    {9, "ACCUMULATE"},    {10, "SETMISSING"},  {11, "OUTEST"},
    {12, "OUTFOR"},     {13, "OUTSUM"},       {14, "OUTSTAT"},     {15, "SETMISSING"},
    {16, "OUTTREND"},   {17, "OUTSEASON"},    {18, "START"},       {19, "START"},
    {20, "START"},      {21, "END"},          {22, "END"},         {23, "END"},
    {24, "BACK"},       {25, "MAXERROR"},     {26, "ZEROMISS"},    {27, "OUTCOMPONENT"},
    {28, "OUTPROCINFO"}, {29, "PLOT=SPECTRUM(ALPHA)"}, {30, "PLOT=SPECTRUM(CENTER)"},
    {40, "BASE=AUTO"},  {41, "BASE"},         {46, "FORMAT"},
};

constexpr Named kForecastFields[] = {
    {1, "variables"},  {2, "MODEL"},       {3, "CRITERION"},     {4, "ALPHA"},
    {5, "USE"},        {6, "TRANSFORM"},   {7, "TRANSFORM=BOXCOX"}, {8, "HOLDOUT"},
    {9, "ACCUMULATE"}, {10, "SETMISSING"}, {15, "SETMISSING"},   {16, "INTERMITTENT"},
    {17, "variables text"}, {18, "NBACKCAST"}, {19, "HOLDOUTPCT"}, {20, "SEASONTEST=(SIGLEVEL)"},
    {26, "ZEROMISS"},
};

constexpr Named kProcBits[] = {
    {1, "NOOUTALL"},          {2, "SORTNAMES"},          {3, "NOTSORTED"},
    {10, "PRINT=ALL"},        {11, "PRINT=ESTIMATES"},   {12, "PRINT=FORECASTS"},
    {13, "PRINT=STATISTICS"}, {14, "PRINT=SUMMARY"},     {15, "PRINT=TRENDS"},
    {16, "PRINT=SEASONS"},    {17, "PRINT=PERFORMANCE"}, {18, "PRINTDETAILS"},
    {19, "DEBUG"},            {20, "DEBUGD"},            {21, "DEBUGX"},
    {22, "PRINT=STATES"},     {23, "PRINT=PERFORMANCESUMMARY"}, {24, "PRINT=PERFORMANCEOVERALL"},
    {25, "PRINT=DESCSTATS"},  {29, "PRINT=INTERNAL"},    {30, "PLOT=ALL"},
    {31, "PLOT=ERRORS"},      {32, "PLOT=ACF"},          {33, "PLOT=PACF"},
    {34, "PLOT=IACF"},        {35, "PLOT=WN"},           {40, "PLOT=MODELS"},
    {41, "PLOT=LEVELS"},      {42, "PLOT=TRENDS"},       {43, "PLOT=SEASONS"},
    {50, "PLOT=FORECASTS"},   {51, "PLOT=MODELFORECASTS"}, {52, "PLOT=FORECASTSONLY"},
    {53, "PLOT=PERIODOGRAM"}, {54, "PLOT=SPECTRUM"},     {55, "PLOT=CORR"},
    {56, "PLOT=BASIC"},
};

constexpr Named kForecastBits[] = {
    {1, "MEDIAN"}, {2, "REPLACEMISSING"}, {3, "REPLACEBACK"}, {4, "SEASONTEST=NONE"},
};

// IDM components: base field and base bit.
struct Component {
  std::string_view name;
  int field;
  int bit;
};
constexpr Component kComponents[] = {{"INTERVAL", 50, 100}, {"SIZE", 70, 110}, {"AVERAGE", 90, 120}};

constexpr Named kComponentFields[] = {
    {0, "METHOD"},     {1, "TRANSFORM"},  {2, "TRANSFORM=BOXCOX"}, {3, "CRITERION"},
    {5, "LEVELPARM"},  {6, "LEVELREST"},  {7, "LEVELREST"},        {8, "TRENDPARM"},
    {9, "TRENDREST"},  {10, "TRENDREST"}, {11, "DAMPPARM"},        {12, "DAMPREST"},
    {13, "DAMPREST"},  {15, "BOUNDS"},    {16, "BOUNDS"},
};
constexpr Named kComponentBits[] = {{0, "MEDIAN"}, {1, "NOSTABLE"}, {2, "NOEST"}, {3, ""}};

std::string_view find(std::span<const Named> t, int n) {
  for (const auto& e : t)
    if (e.number == n) return e.option;
  return {};
}

}  // namespace

std::string fieldOption(RecordKind kind, int field) {
  if (kind == RecordKind::Forecast) return std::string(find(kForecastFields, field));
  for (const auto& c : kComponents) {
    if (field >= c.field && field < c.field + 20) {
      const auto o = find(kComponentFields, field - c.field);
      if (o.empty()) return {};
      return std::string(c.name) + "=(" + std::string(o) + ")";
    }
  }
  return std::string(find(kProcFields, field));
}

std::string bitOption(RecordKind kind, int bit) {
  if (kind == RecordKind::Forecast) return std::string(find(kForecastBits, bit));
  for (const auto& c : kComponents) {
    if (bit >= c.bit && bit < c.bit + 4) {
      const int k = bit - c.bit;
      if (k == 3) return std::string(c.name) + "=(...)";
      return std::string(c.name) + "=(" + std::string(find(kComponentBits, k)) + ")";
    }
  }
  return std::string(find(kProcBits, bit));
}

std::span<const CodeName> fieldCodes(RecordKind kind, int field) {
  if (kind == RecordKind::Forecast) {
    switch (field) {
      case 2: return kModelCodes;
      case 3: return kCriterionCodes;
      case 5: return kUseCodes;
      case 6: return kTransformCodes;
      case 9: return kAccumulateCodes;
      case 10: return kSetMissingCodes;
      case 26: return kZeroMissCodes;
      default: return {};
    }
  }
  switch (field) {
    case 9: return kAccumulateCodes;
    case 10: return kSetMissingCodes;
    case 26: return kZeroMissCodes;
    default: break;
  }
  for (const auto& c : kComponents) {
    if (field == c.field) return kMethodCodes;
    if (field == c.field + 1) return kTransformCodes;
    if (field == c.field + 3) return kCriterionCodes;
  }
  return {};
}

}  // namespace qvt
