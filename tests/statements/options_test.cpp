// Every option of the QVT, ID, FORECAST and IDM statements to its flag bit
// or field, with the numbers and codes of the option tables of the
// language (typed here from those tables, not read from the parser), and
// the value limits.

#include "recording_host.hpp"

namespace qvt {
namespace {

enum class Ctx { Proc, Id, Forecast, Idm };

std::string program(Ctx c, const std::string& opt) {
  switch (c) {
    case Ctx::Proc: return "qvt " + opt + ";";
    case Ctx::Id: return "qvt; id t interval=month " + opt + ";";
    case Ctx::Forecast: return "qvt; forecast x / " + opt + ";";
    case Ctx::Idm: return "qvt; idm " + opt + ";";
  }
  return {};
}

// Fields that a context gives by itself: the default data sets of the
// procedure record, the ID variable and interval, the FORECAST list.
std::set<int> inherent(Ctx c) {
  switch (c) {
    case Ctx::Proc: case Ctx::Idm: return {1, 2};
    case Ctx::Id: return {1, 2, 3, 4};
    case Ctx::Forecast: return {1, 17};
  }
  return {};
}

struct Field {
  int number;
  std::optional<double> value;  // nullopt: given, any value
};

struct OptCase {
  Ctx ctx;
  std::string opt;
  std::set<int> bits;
  std::vector<Field> fields;
};

std::vector<OptCase> cases() {
  std::vector<OptCase> v = {
      // Procedure statement: flags.
      {Ctx::Proc, "NOOUTALL", {1}, {}},
      {Ctx::Proc, "SORTNAMES", {2}, {}},
      {Ctx::Proc, "PRINTDETAILS", {18}, {}},
      {Ctx::Proc, "DEBUG", {19}, {}},
      {Ctx::Proc, "DEBUGD", {19, 20}, {}},
      {Ctx::Proc, "DEBUGX", {19, 20, 21}, {}},
      {Ctx::Proc, "PRINT=(ALL ESTIMATES)", {10, 11}, {}},
      {Ctx::Proc, "PLOT=(ACF PACF)", {32, 33}, {}},
      {Ctx::Proc, "PRINT=NONE PLOT=NONE", {}, {}},
      // Procedure statement: numbers.
      {Ctx::Proc, "LEAD=5", {}, {{7, 5}}},
      {Ctx::Proc, "BACK=3", {}, {{24, 3}}},
      {Ctx::Proc, "MAXERROR=10", {}, {{25, 10}}},
      {Ctx::Proc, "STARTSUM=2", {}, {{8, 2}}},
      {Ctx::Proc, "SEASONALITY=12", {}, {{6, 12}}},
      {Ctx::Proc, "PLOT=SPECTRUM(ALPHA=0.1 CENTER=YES)", {54}, {{29, 0.1}, {30, 1}}},
      {Ctx::Proc, "PLOT=SPECTRUM(CENTER=NO)", {54}, {{30, 0}}},
      {Ctx::Proc, "PLOT=SPECTRUM(ADJMEAN=YES)", {54}, {{30, 1}}},
      {Ctx::Proc, "PLOT=(SPECTRUM(ALPHA=0.2) ACF)", {54, 32}, {{29, 0.2}}},
      // ID statement.
      {Ctx::Id, "NOTSORTED", {3}, {}},
      {Ctx::Id, "START='01JAN2020'd", {}, {{18, 21915}}},
      {Ctx::Id, "START='13:30't", {}, {{19, 48600}}},
      {Ctx::Id, "START='02JAN1960:00:00:01'dt", {}, {{20, 86401}}},
      {Ctx::Id, "END='02JAN1960'd", {}, {{21, 1}}},
      {Ctx::Id, "END='00:01't", {}, {{22, 60}}},
      {Ctx::Id, "END='01JAN1960:00:01:00'dt", {}, {{23, 60}}},
      {Ctx::Id, "SETMISSING=0", {}, {{15, 0}}},
      {Ctx::Id, "SETMISS=2.5", {}, {{15, 2.5}}},
      {Ctx::Id, "SETMISSING='01JAN1960'd", {}, {{15, 0}}},
      {Ctx::Id, "FORMAT=DATE9.", {}, {{46, std::nullopt}}},
      // FORECAST statement.
      {Ctx::Forecast, "MEDIAN", {1}, {}},
      {Ctx::Forecast, "REPLACEMISSING", {2}, {}},
      {Ctx::Forecast, "REPLACEBACK", {3}, {}},
      {Ctx::Forecast, "SEASONTEST=NONE", {4}, {}},
      {Ctx::Forecast, "SEASONTEST=(SIGLEVEL=0.01)", {}, {{20, 0.01}}},
      {Ctx::Forecast, "ALPHA=0.05", {}, {{4, 0.05}}},
      {Ctx::Forecast, "HOLDOUT=5", {}, {{8, 5}}},
      {Ctx::Forecast, "HOLDOUTPCT=25", {}, {{19, 25}}},
      {Ctx::Forecast, "INTERMITTENT=2.5", {}, {{16, 2.5}}},
      {Ctx::Forecast, "NBACKCAST=3", {}, {{18, 3}}},
      {Ctx::Forecast, "USE=PREDICT", {}, {{5, 1}}},
      {Ctx::Forecast, "USE=LOWER", {}, {{5, 2}}},
      {Ctx::Forecast, "USE=UPPER", {}, {{5, 3}}},
      {Ctx::Forecast, "TRANSFORM=NONE", {}, {{6, 0}}},
      {Ctx::Forecast, "TRANSFORM=LOG", {}, {{6, 1}}},
      {Ctx::Forecast, "TRANSFORM=SQRT", {}, {{6, 2}}},
      {Ctx::Forecast, "TRANSFORM=LOGISTIC", {}, {{6, 3}}},
      {Ctx::Forecast, "TRANSFORM=BOXCOX(0.5)", {}, {{6, 4}, {7, 0.5}}},
      {Ctx::Forecast, "TRANSFORM=BOXCOX(-2)", {}, {{6, 4}, {7, -2}}},
      {Ctx::Forecast, "TRANSFORM=AUTO", {}, {{6, 10}}},
      {Ctx::Forecast, "SETMISSING=4", {}, {{15, 4}}},
      {Ctx::Forecast, "MODEL=SIMPLE CRITERION=MAPE ALPHA=0.1", {}, {{2, 1}, {3, 43}, {4, 0.1}}},
      // IDM statement.
      {Ctx::Idm, "BASE=AUTO", {}, {{40, std::nullopt}}},
      {Ctx::Idm, "BASE=0.5", {}, {{41, 0.5}}},
  };
  // PRINT= and PLOT= items, one bit each; NONE none.
  const std::pair<const char*, int> print[] = {
      {"ALL", 10},         {"ESTIMATES", 11},           {"FORECASTS", 12},          {"STATISTICS", 13},
      {"SUMMARY", 14},     {"TRENDS", 15},              {"SEASONS", 16},            {"PERFORMANCE", 17},
      {"STATES", 22},      {"PERFORMANCESUMMARY", 23},  {"PERFORMANCEOVERALL", 24}, {"DESCSTATS", 25},
      {"INTERNAL", 29}};
  for (auto [w, b] : print) v.push_back({Ctx::Proc, std::string("PRINT=") + w, {b}, {}});
  const std::pair<const char*, int> plot[] = {
      {"ALL", 30},       {"ERRORS", 31},         {"ACF", 32},           {"PACF", 33},        {"IACF", 34},
      {"WN", 35},        {"MODELS", 40},         {"LEVELS", 41},        {"TRENDS", 42},      {"SEASONS", 43},
      {"FORECASTS", 50}, {"MODELFORECASTS", 51}, {"FORECASTSONLY", 52}, {"PERIODOGRAM", 53}, {"SPECTRUM", 54},
      {"CORR", 55},      {"BASIC", 56}};
  for (auto [w, b] : plot) v.push_back({Ctx::Proc, std::string("PLOT=") + w, {b}, {}});
  // ALIGN= is a character; every spelling.
  const std::pair<const char*, char> align[] = {{"B", 'B'},   {"BEG", 'B'},    {"BEGIN", 'B'}, {"BEGINNING", 'B'},
                                                {"M", 'M'},   {"MID", 'M'},    {"MIDDLE", 'M'}, {"E", 'E'},
                                                {"END", 'E'}, {"ENDING", 'E'}};
  for (auto [w, c] : align) v.push_back({Ctx::Id, std::string("ALIGN=") + w, {}, {{5, static_cast<double>(c)}}});
  // ACCUMULATE= codes, also in the FORECAST statement.
  const std::pair<const char*, int> acc[] = {
      {"NONE", 0}, {"TOTAL", 1},  {"T", 1},    {"AVERAGE", 2}, {"AVG", 2},   {"MEAN", 2},    {"FIRST", 3},
      {"F", 3},    {"LAST", 4},   {"L", 4},    {"MINIMUM", 5}, {"MIN", 5},   {"MAXIMUM", 6}, {"MAX", 6},
      {"MEDIAN", 7}, {"MED", 7},  {"STDDEV", 8}, {"STD", 8},   {"USS", 9},   {"CSS", 10},    {"NOBS", 11},
      {"N", 12},   {"NMISS", 13}};
  for (auto [w, c] : acc) {
    v.push_back({Ctx::Id, std::string("ACCUMULATE=") + w, {}, {{9, c}}});
    v.push_back({Ctx::Forecast, std::string("ACC=") + w, {}, {{9, c}}});
  }
  const std::pair<const char*, int> miss[] = {{"MISSING", 0}, {"AVERAGE", 2}, {"FIRST", 3},   {"LAST", 4},
                                              {"MINIMUM", 5}, {"MAXIMUM", 6}, {"MEDIAN", 7},  {"PREVIOUS", 9},
                                              {"PREV", 9},    {"NEXT", 10}};
  for (auto [w, c] : miss) {
    v.push_back({Ctx::Id, std::string("SETMISSING=") + w, {}, {{10, c}}});
    v.push_back({Ctx::Forecast, std::string("SETMISSING=") + w, {}, {{10, c}}});
  }
  const std::pair<const char*, int> zero[] = {{"NONE", 0}, {"LEFT", 1}, {"RIGHT", 2}, {"BOTH", 3}};
  for (auto [w, c] : zero) {
    v.push_back({Ctx::Id, std::string("ZEROMISS=") + w, {}, {{26, c}}});
    v.push_back({Ctx::Forecast, std::string("ZEROMISS=") + w, {}, {{26, c}}});
  }
  const std::pair<const char*, int> models[] = {
      {"NONE", 0},        {"SIMPLE", 1},       {"LINEAR", 2},     {"DAMPTREND", 3}, {"DOUBLE", 4},
      {"SEASONAL", 5},    {"ADDSEASONAL", 5},  {"ADDWINTERS", 6}, {"WINTERS", 7},   {"MULTWINTERS", 7},
      {"BEST", 8},        {"BESTN", 9},        {"BESTS", 10},     {"MULTSEASONAL", 11}, {"CROSTON", 20},
      {"IDM", 20},        {"BESTALL", 50}};
  for (auto [w, c] : models) v.push_back({Ctx::Forecast, std::string("MODEL=") + w, {}, {{2, c}}});
  // The 47 statistics of fit, as written in the statement.
  const std::pair<const char*, int> crit[] = {
      {"SSE", 1},      {"MSE", 2},      {"RMSE", 3},     {"UMSE", 4},     {"URMSE", 5},    {"RSQUARE", 10},
      {"ADJRSQ", 11},  {"AADJRSQ", 12}, {"RWRSQ", 13},   {"AIC", 20},     {"SBC", 21},     {"APC", 22},
      {"AICC", 23},    {"MINERR", 30},  {"MAXERR", 31},  {"ME", 32},      {"MAE", 33},     {"MINPE", 40},
      {"MAXPE", 41},   {"MPE", 42},     {"MAPE", 43},    {"MDAPE", 44},   {"GMAPE", 45},   {"MINSPE", 50},
      {"MAXSPE", 51},  {"MSPE", 52},    {"SMAPE", 53},   {"MDASPE", 54},  {"GMASPE", 55},  {"MINRE", 60},
      {"MAXRE", 61},   {"MRE", 62},     {"MRAE", 63},    {"MDRAE", 64},   {"GMRAE", 65},   {"MINPPE", 70},
      {"MAXPPE", 71},  {"MPPE", 72},    {"MAPPE", 73},   {"MDAPPE", 74},  {"GMAPPE", 75},  {"MINAPES", 80},
      {"MAXAPES", 81}, {"MAPES", 82},   {"MDAPES", 83},  {"GMAPES", 84},  {"MASE", 85}};
  static_assert(std::size(crit) == 47);
  for (auto [w, c] : crit) {
    v.push_back({Ctx::Forecast, std::string("CRITERION=") + w, {}, {{3, c}}});
    v.push_back({Ctx::Forecast, std::string("SELECT=") + w, {}, {{3, c}}});
  }
  // IDM components: fields from base B, bits from base F; the component
  // itself sets bit F + 3.
  const struct {
    const char* name;
    int b, f;
  } comps[] = {{"INTERVAL", 50, 100}, {"SIZE", 70, 110}, {"AVERAGE", 90, 120}};
  for (const auto& c : comps) {
    auto idm = [&](const std::string& inner, std::set<int> bits, std::vector<Field> fields) {
      bits.insert(c.f + 3);
      v.push_back({Ctx::Idm, std::string(c.name) + "=(" + inner + ")", bits, fields});
    };
    const std::pair<const char*, int> methods[] = {
        {"BESTN", 9}, {"SIMPLE", 1}, {"DOUBLE", 4}, {"LINEAR", 2}, {"DAMPTREND", 3}};
    for (auto [w, m] : methods) idm(std::string("METHOD=") + w, {}, {{c.b, m}});
    idm("TRANSFORM=SQRT", {}, {{c.b + 1, 2}});
    idm("TRANSFORM=BOXCOX(0.25)", {}, {{c.b + 1, 4}, {c.b + 2, 0.25}});
    idm("CRITERION=MAE", {}, {{c.b + 3, 33}});
    idm("SELECT=GMRAE", {}, {{c.b + 3, 65}});
    idm("LEVELPARM=0.3", {}, {{c.b + 5, 0.3}});
    idm("LEVELREST=(0.1 0.9)", {}, {{c.b + 6, 0.1}, {c.b + 7, 0.9}});
    idm("TRENDPARM=0.2", {}, {{c.b + 8, 0.2}});
    idm("TRENDREST=(0.05, 0.5)", {}, {{c.b + 9, 0.05}, {c.b + 10, 0.5}});
    idm("DAMPPARM=0.9", {}, {{c.b + 11, 0.9}});
    idm("DAMPREST=(-1 2)", {}, {{c.b + 12, -1}, {c.b + 13, 2}});
    idm("BOUNDS=(1 5)", {}, {{c.b + 15, 1}, {c.b + 16, 5}});
    idm("MEDIAN", {c.f}, {});
    idm("NOSTABLE", {c.f + 1}, {});
    idm("NOEST", {c.f + 2}, {});
    idm("METHOD=LINEAR NOEST LEVELPARM=0.5", {c.f + 2}, {{c.b, 2}, {c.b + 5, 0.5}});
  }
  return v;
}

TEST(Options, EachOptionToItsBitOrField) {
  for (const auto& c : cases()) {
    const std::string text = program(c.ctx, c.opt);
    SCOPED_TRACE(text);
    testing::RecordingHost h;
    PROCSTR p;
    EXPECT_EQ(xsparseText(text, SourcePos{}, h, p), 0);
    for (std::size_t k = 0; k < h.msgs.size(); ++k) ADD_FAILURE() << h.text(k);
    const std::size_t r = c.ctx == Ctx::Forecast ? 1 : 0;
    ASSERT_EQ(p.head.size(), c.ctx == Ctx::Forecast ? 2u : 1u);
    const STMT& s = p.head[r];
    EXPECT_EQ(s.nfld, r == 0 ? 107 : 27);
    for (int b = 0; b < kOptBits; ++b) EXPECT_EQ(s.bit(b), c.bits.count(b) == 1) << "bit " << b;
    std::set<int> want = inherent(c.ctx);
    for (const auto& f : c.fields) {
      want.insert(f.number);
      ASSERT_TRUE(s.given(f.number)) << "field " << f.number;
      const STLIST& x = s.fld[static_cast<std::size_t>(f.number)];
      if (!f.value) continue;
      if (x.mode == StMode::Character) {
        EXPECT_EQ(static_cast<double>(x.character()), *f.value) << "field " << f.number;
      } else {
        ASSERT_EQ(x.mode, StMode::Number) << "field " << f.number;
        EXPECT_DOUBLE_EQ(x.number(), *f.value) << "field " << f.number;
      }
    }
    for (int n = 0; n < s.nfld; ++n) EXPECT_EQ(s.given(n), want.count(n) == 1) << "field " << n;
  }
}

TEST(Options, DataSetsToTheirFields) {
  const std::pair<const char*, int> ds[] = {{"DATA", 1},      {"OUT", 2},          {"OUTEST", 11},
                                            {"OUTFOR", 12},   {"OUTSUM", 13},      {"OUTSTAT", 14},
                                            {"OUTTREND", 16}, {"OUTSEASON", 17},   {"OUTCOMPONENT", 27},
                                            {"OUTCOMP", 27},  {"OUTPROCINFO", 28}};
  for (auto [w, f] : ds) {
    const std::string text = std::string("qvt ") + w + "=mylib.sales;";
    SCOPED_TRACE(text);
    testing::RecordingHost h;
    PROCSTR p;
    EXPECT_EQ(xsparseText(text, SourcePos{}, h, p), 0);
    const STLIST* x = p.head.at(0).field(f);
    ASSERT_TRUE(x && x->given());
    EXPECT_EQ(x->type, 1);
    ASSERT_EQ(x->mode, StMode::DataSet);
    EXPECT_EQ(x->dataset().lib, "mylib");
    EXPECT_EQ(x->dataset().member, "sales");
    EXPECT_FALSE(x->dataset().byDefault);
    // Input and output that weren't given are marked as set by default; the others not at all.
    for (int other : {1, 2}) {
      if (other == f) continue;
      ASSERT_TRUE(p.head[0].given(other));
      EXPECT_EQ(p.head[0].fld[static_cast<std::size_t>(other)].type, 2);
      EXPECT_TRUE(p.head[0].fld[static_cast<std::size_t>(other)].dataset().byDefault);
    }
  }
}

TEST(Options, DataSetNameForms) {
  const struct {
    const char* written;
    const char* lib;
    const char* member;
    bool quoted;
    const char* options;
  } cases[] = {
      {"sales", "", "sales", false, ""},
      {"work.sales", "work", "sales", false, ""},
      {"'data/co2.csv'", "", "data/co2.csv", true, ""},
      {"'my data'n", "", "my data", false, ""},
      {"sales(where=(x>1) keep=a b)", "", "sales", false, "where=(x>1) keep=a b"},
      {"sales()", "", "sales", false, ""},
  };
  for (const auto& c : cases) {
    const std::string text = std::string("qvt data=") + c.written + " lead=3;";
    SCOPED_TRACE(text);
    testing::RecordingHost h;
    PROCSTR p;
    EXPECT_EQ(xsparseText(text, SourcePos{}, h, p), 0);
    for (std::size_t k = 0; k < h.msgs.size(); ++k) ADD_FAILURE() << h.text(k);
    const DataSetName& d = p.head.at(0).fld[1].dataset();
    EXPECT_EQ(d.lib, c.lib);
    EXPECT_EQ(d.member, c.member);
    EXPECT_EQ(d.quoted, c.quoted);
    EXPECT_EQ(d.options, c.options);
    EXPECT_DOUBLE_EQ(p.head[0].fld[7].number(), 3) << "the option behind the data set is still read";
  }
}

TEST(Options, IdVariableAndInterval) {
  testing::RecordingHost h;
  PROCSTR p;
  EXPECT_EQ(xsparseText("qvt; id Date interval=month2.2 align=end;", SourcePos{}, h, p), 0);
  const STMT& s = p.head.at(0);
  const VarList& id = s.fld[3].vars();
  ASSERT_EQ(id.items.size(), 1u);
  EXPECT_EQ(id.items[0].first, "Date");
  EXPECT_EQ(s.fld[4].text(), "month2.2");
  ASSERT_TRUE(s.fld[4].interval != nullptr);
  EXPECT_EQ(s.fld[4].interval->intcode, 45);  // MONTH
  EXPECT_EQ(s.fld[4].interval->intper, 2);
  EXPECT_EQ(s.fld[4].interval->shiftper, 1);  // the text .2 is stored counted from 0
}

TEST(Options, ForecastVariablesAndTheirFirstItem) {
  testing::RecordingHost h;
  PROCSTR p;
  EXPECT_EQ(xsparseText("qvt; forecast _ALL_; forecast a b1-b3 / model=simple; forecast;", SourcePos{}, h, p), 0);
  ASSERT_EQ(p.head.size(), 4u);
  EXPECT_EQ(p.head[1].name, "FORECAST");
  EXPECT_EQ(p.head[1].fld[17].text(), "_ALL_");
  EXPECT_EQ(p.head[1].fld[1].vars().items.at(0).code, VarItemCode::All);
  EXPECT_EQ(p.head[2].fld[17].text(), "a");
  ASSERT_EQ(p.head[2].fld[1].vars().items.size(), 2u);
  EXPECT_EQ(p.head[2].fld[1].vars().items[1].text, "b1-b3");
  EXPECT_TRUE(p.head[3].given(1));
  EXPECT_TRUE(p.head[3].fld[1].vars().items.empty());
  EXPECT_FALSE(p.head[3].given(17));
}

TEST(Options, RepeatedOptionWarnsAndTheLastOneStands) {
  const struct {
    const char* text;
    int field;
    double value;
    std::vector<int> cleared;
  } cases[] = {
      {"qvt lead=3 lead=4;", 7, 4, {}},
      {"qvt; id t interval=month setmissing=avg setmissing=7;", 15, 7, {10}},
      {"qvt; id t interval=month setmissing=7 setmissing=prev;", 10, 9, {15}},
      {"qvt; id t interval=month start='01JAN2020'd start='13:30't;", 19, 48600, {18, 20}},
      {"qvt; forecast x / model=simple model=linear;", 2, 2, {}},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.text);
    testing::RecordingHost h;
    PROCSTR p;
    EXPECT_EQ(xsparseText(c.text, SourcePos{}, h, p), 0) << "a warning leaves the step usable";
    ASSERT_EQ(h.msgs.size(), 1u);
    EXPECT_EQ(h.msgs[0].number, kMsgRepeated);
    const STMT& s = p.head.back();
    EXPECT_DOUBLE_EQ(s.fld[static_cast<std::size_t>(c.field)].number(), c.value);
    for (int f : c.cleared) EXPECT_FALSE(s.given(f)) << f;
  }
}

struct RangeCase {
  Ctx ctx;
  std::string opt;
  int message;  // 0: accepted
};

const RangeCase kRanges[] = {
    {Ctx::Proc, "LEAD=-1", kMsgTooSmall},
    {Ctx::Proc, "LEAD=0", 0},
    {Ctx::Proc, "LEAD=100000001", 0},  // the upper limit is the run's, not the parser's
    {Ctx::Proc, "BACK=-1", kMsgOutOfRange},
    {Ctx::Proc, "BACK=10000", 0},
    {Ctx::Proc, "BACK=10001", kMsgOutOfRange},
    {Ctx::Proc, "MAXERROR=-1", kMsgTooSmall},
    {Ctx::Proc, "MAXERROR=0", 0},
    {Ctx::Proc, "STARTSUM=0", kMsgOutOfRange},
    {Ctx::Proc, "STARTSUM=1", 0},
    {Ctx::Proc, "STARTSUM=10001", kMsgOutOfRange},
    {Ctx::Proc, "SEASONALITY=0", kMsgOutOfRange},
    {Ctx::Proc, "SEASONALITY=10000", 0},
    {Ctx::Proc, "PLOT=SPECTRUM(ALPHA=1.5)", kMsgOutOfRange},
    {Ctx::Proc, "PLOT=SPECTRUM(ALPHA=1)", 0},
    {Ctx::Forecast, "ALPHA=0", 0},
    {Ctx::Forecast, "ALPHA=1", 0},
    {Ctx::Forecast, "ALPHA=1.01", kMsgOutOfRange},
    {Ctx::Forecast, "ALPHA=-0.1", kMsgOutOfRange},
    {Ctx::Forecast, "TRANSFORM=BOXCOX(-5)", 0},
    {Ctx::Forecast, "TRANSFORM=BOXCOX(5.5)", kMsgOutOfRange},
    {Ctx::Forecast, "TRANSFORM=BOXCOX(-5.01)", kMsgOutOfRange},
    {Ctx::Forecast, "HOLDOUT=0", 0},
    {Ctx::Forecast, "HOLDOUT=10001", kMsgOutOfRange},
    {Ctx::Forecast, "INTERMITTENT=0.5", kMsgTooSmall},
    {Ctx::Forecast, "INTERMITTENT=1", 0},
    {Ctx::Forecast, "NBACKCAST=0", kMsgTooSmall},
    {Ctx::Forecast, "HOLDOUTPCT=100", 0},
    {Ctx::Forecast, "HOLDOUTPCT=101", kMsgOutOfRange},
    {Ctx::Forecast, "SEASONTEST=(SIGLEVEL=1.5)", kMsgOutOfRange},
    {Ctx::Idm, "INTERVAL=(LEVELPARM=-1)", 0},
    {Ctx::Idm, "INTERVAL=(LEVELPARM=2)", 0},
    {Ctx::Idm, "SIZE=(LEVELPARM=2.1)", kMsgOutOfRange},
    {Ctx::Idm, "AVERAGE=(TRENDPARM=-1.1)", kMsgOutOfRange},
    {Ctx::Idm, "SIZE=(DAMPREST=(-2 1))", kMsgOutOfRange},
    {Ctx::Idm, "SIZE=(LEVELPARM=.)", 0},  // a missing value is no number to check
    {Ctx::Idm, "INTERVAL=(BOUNDS=(0 5))", kMsgTooSmall},
    {Ctx::Idm, "SIZE=(BOUNDS=(0 5))", 0},
    {Ctx::Idm, "AVERAGE=(TRANSFORM=BOXCOX(6))", kMsgOutOfRange},
};

TEST(Options, ValueLimits) {
  for (const auto& c : kRanges) {
    const std::string text = program(c.ctx, c.opt);
    SCOPED_TRACE(text);
    testing::RecordingHost h;
    PROCSTR p;
    xsparseText(text, SourcePos{"r.qvt", 1, 1}, h, p);
    if (c.message == 0) {
      EXPECT_EQ(p.error, 0);
      for (std::size_t k = 0; k < h.msgs.size(); ++k) ADD_FAILURE() << h.text(k);
    } else {
      EXPECT_EQ(p.error, kStatementsUnusable);
      ASSERT_EQ(h.msgs.size(), 1u);
      EXPECT_EQ(h.msgs[0].number, c.message);
      EXPECT_EQ(h.msgs[0].pos.line, 1);
    }
  }
}

}  // namespace
}  // namespace qvt
