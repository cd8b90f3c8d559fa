// The printed tables, seen through a host that keeps every closed table as
// data. Expected values follow the rules of each table, worked by hand.
#include <algorithm>
#include <cmath>

#include <gtest/gtest.h>

#include "calendar/interval.hpp"
#include "intermittent/idmodel.hpp"
#include "layer_host.hpp"
#include "report/qvto.hpp"
#include "stats/ztscp.hpp"

namespace qvt {
namespace {

using testing::cols;
using testing::LayerHost;
using testing::num;
using testing::value;

// The cell of column `col` in row r.
double num(const Table& t, std::size_t r, std::string_view col) {
  const auto k = std::find_if(t.cols.begin(), t.cols.end(), [&](const TableColumn& c) { return c.name == col; });
  return num(t.rows.at(r).at(std::size_t(k - t.cols.begin())));
}

// forformat's decimal steps at both sides of each boundary; the expected
// decimals are read off its table of cases (84 stands for free).
TEST(ForFormat, DecimalsAtTheBoundaries) {
  const std::pair<double, int> cases[] = {
      {1e10, 84}, {9999999999.0, 0}, {1e9, 0},   {999999999.0, 1}, {1e8, 1},     {99999999.0, 2}, {1e7, 2},
      {9999999.0, 3}, {1e6, 3},      {999999.0, 4}, {10.0, 4},     {9.99, 5},    {0.1, 5},        {0.0999, 6},
      {0.01, 6},  {0.0099, 7},       {0.0011, 7},  {0.001, 84},    {-2e7, 2},    {0.0, 84}};
  for (const auto& [x, decimals] : cases) {
    const double v[] = {kMissing, x, kMissing};
    const double* vecs[] = {v, nullptr};
    EXPECT_EQ(forformat(vecs, 2, 0, 2), decimals) << x;
  }
  // The smallest value decides "free", and only rows first..last count.
  const double a[] = {0.0005, 500.0, 5.0};
  const double b[] = {1e12, 3.0, 50.0};
  const double* both[] = {a, b};
  EXPECT_EQ(forformat(both, 2, 1, 2), 4);
  EXPECT_EQ(forformat(both, 2, 0, 2), 84);
  EXPECT_EQ(forformat(both, 1, 1, 1), 4);
  const double* none[] = {nullptr};
  EXPECT_EQ(forformat(none, 1, 0, 0), 84);  // nothing to measure: the start values fall through
}

// The confidence text is the one of the plots (PlotTicks.ConfidenceAndLags).
TEST(ForFormat, ObsWidths) {
  const std::pair<double, int> widths[] = {{1, 4},       {9999, 4},       {10000, 5},       {99999, 5},
                                           {100000, 6},  {9999999, 7},    {100000000, 9},   {9999999999.0, 10},
                                           {1e10, 20}};
  for (auto [v, w] : widths) EXPECT_EQ(obsformat(v), w) << v;
}

struct Fixture : ::testing::Test {
  LayerHost h;
  QVTCOM com;
  FORSTMT f;
  VAR v;
  void SetUp() override {
    com.host = &h;
    v.name.set("units");
    v.fstmt = &f;
    com.current.varptr = &v;
    com.current.var = v.name;
  }
};

// Forecasts of a frame of 6 periods with BACK=1 and LEAD=2: tobs = 8, the
// used range is periods 0..4, fore.n = 5 + 2 = 7 rows, and row t is period t.
TEST_F(Fixture, ForecastRowsObsAndColumns) {
  double pred[7] = {100, 101, 102, 103, 104, 105, 106};
  double act[7] = {100.5, 101.5, 102.5, 103.5, 104.5, 105.5, kMissing};
  FOR_OUT fore;
  fore.n = 7;
  fore.predicted = pred;
  fore.actual = act;
  com.istmt.lead = 2;
  com.istmt.back = 1;
  com.out.nobs = 6;
  com.out.tobs = 8;
  f.alpha = 0.001;
  com.print.forecasts = 1;
  qvtofor(&com, &fore, 2);
  com.print.details = 1;
  qvtofor(&com, &fore, 7);
  com.op.nooutall = 1;
  qvtofor(&com, &fore, 5);
  ASSERT_EQ(h.tables.size(), 3u);
  const Table& last2 = h.tables[0];
  EXPECT_EQ(cols(last2), (std::vector<std::string>{"Obs", "Predict", "Std", "Lower", "Upper"}));
  ASSERT_EQ(last2.rows.size(), 2u);
  // Obs = t - n - back + tobs + 1: rows 5 and 6 are observations 6 and 7.
  EXPECT_EQ(num(last2.rows[0][0]), 6);
  EXPECT_EQ(num(last2.rows[1][0]), 7);
  EXPECT_TRUE(wzmis(num(last2.rows[1][2])));  // a null vector shows missing
  EXPECT_EQ(last2.cols[0].width, 4);
  EXPECT_EQ(last2.cols[1].decimals, 4);  // largest shown 106.5: four decimals
  EXPECT_NE(last2.cols[3].label.find("99"), std::string::npos);
  EXPECT_EQ(value(last2, "Lead"), "2");
  const Table& all = h.tables[1];
  EXPECT_EQ(cols(all), (std::vector<std::string>{"Obs", "Predict", "Std", "Lower", "Upper", "Actual",
                                                             "Error", "Level", "Trend", "Season"}));
  ASSERT_EQ(all.rows.size(), 7u);
  EXPECT_EQ(all.cols[6].decimals, kColFree);
  EXPECT_EQ(cols(h.tables[2]),
            (std::vector<std::string>{"Obs", "Predict", "Std", "Lower", "Upper", "Level", "Season"}));
}

// Each table appears exactly under its PRINT= flag.
TEST_F(Fixture, TablesFollowThePrintFlags) {
  WINMODEL esm;
  esm.spec.code = 6;
  esm.ts.nseasons = 4;
  esm.pest.parms = {0.2, 0.1, 0.3};
  esm.svi.trend = 2.5;
  esm.startvals.sfactor = {1, 2, 3, 4};
  FOR_OUT fore;
  const auto run = [&] {
    h.tables.clear();
    qvtovar(&com);
    qvtoest(&com, &esm, nullptr);
    qvtosta(&com, &esm, nullptr);
    qvtosof(&com, 0);
    qvtosof(&com, 1);
    qvtofor(&com, &fore, 6);
    return h.names();
  };
  using N = std::vector<std::string>;
  EXPECT_EQ(run(), N{});
  const std::pair<char*, N> flags[] = {
      {&com.print.descstats, N{"DescStats"}},
      {&com.print.estimates, N{"ParameterEstimates"}},
      {&com.print.states, N{"SmoothedStates"}},
      {&com.print.statistics, N{"FitStatistics", "PerformanceStatistics"}},
      {&com.print.forecasts, N{"Forecasts"}},
  };
  for (const auto& [flag, want] : flags) {
    *flag = 1;
    EXPECT_EQ(run(), want);
    *flag = 0;
  }
  com.print.estimates = com.print.states = 1;
  run();
  ASSERT_EQ(h.tables.size(), 2u);
  EXPECT_EQ(h.tables[0].rows.size(), 3u);  // Winters: level, trend, season weights
  const Table& st = h.tables[1];
  EXPECT_EQ(cols(st),
            (N{"State", "Level", "Trend", "Season1", "Season2", "Season3", "Season4"}));
  EXPECT_EQ(num(st.rows[0][2]), -2.5);  // the backcast's trend turned
  EXPECT_TRUE(wzmis(num(st.rows[0][3])));  // no factors in the backcast state
}

// The summary tables stay open over the group: one row a series.
TEST_F(Fixture, SummaryOverAGroup) {
  double forlead[3] = {1, 2, 3};
  com.outsum.forlead = forlead;
  com.istmt.lead = 3;
  com.print.summary = 1;
  qvtosum(&com, 0);
  qvtosum(&com, 1);
  forlead[2] = 30;
  qvtosum(&com, 1);
  qvtosum(&com, 2);
  ASSERT_EQ(h.names(), (std::vector<std::string>{"ForecastSummary", "ForecastSummation"}));
  const Table& s = h.tables[0];
  ASSERT_EQ(s.rows.size(), 2u);
  EXPECT_EQ(s.cols[3].name, "Horizon3");
  EXPECT_EQ(num(s.rows[1][3]), 30);
  EXPECT_EQ(value(s, "Last"), "Horizon3");
}

// The winner is marked on the one row whose model and transformation both
// match; the same model untransformed or another model is not.
TEST_F(Fixture, SelectionMarksOnlyTheChosenCandidate) {
  com.print.estimates = 1;
  com.current.modelcode = 2;
  com.current.trnscode = kTrnsLog;
  const int models[] = {1, 2, 1, 2};
  const int trns[] = {kTrnsNone, kTrnsNone, kTrnsLog, kTrnsLog};
  const double crit[] = {4.0, 3.0, 2.0, 1.0};
  qvtosel(&com, models, trns, crit, 4);
  const Table& t = h.tables[0];
  ASSERT_EQ(t.rows.size(), 4u);
  for (int i = 0; i < 4; ++i) {
    EXPECT_EQ(std::get<std::string>(t.rows[i][2]).empty(), i != 3) << i;
    EXPECT_EQ(num(t.rows[i][1]), crit[i]);
  }
}

// Groups and the "Variable" table: nothing when neither tables nor plots
// are asked for, a group without its table for PRINT=SUMMARY alone.
TEST_F(Fixture, GroupsAndStepTables) {
  com.print.none = com.plot.none = 1;
  qvtoint(&com);
  qvtogrp(&com, &v);
  EXPECT_TRUE(h.tables.empty());
  com.print.none = 0;
  com.print.summaryonly = 1;
  qvtogrp(&com, &v);
  EXPECT_TRUE(h.tables.empty());
  com.print.summaryonly = 0;
  com.in.nobs = 12;
  com.istmt.lead = 4;
  qvtoint(&com);
  qvtogrp(&com, &v);
  ASSERT_EQ(h.names(), (std::vector<std::string>{"DataSet", "Variable"}));
  // No ID statement: name, label, season length, lead; BACK= 0 adds no line.
  EXPECT_EQ(h.tables[0].lines.size(), 4u);
  EXPECT_EQ(value(h.tables[1], "Nobs"), "12");
  EXPECT_EQ(h.tables[1].head.templ, "QVT.QVT.Variable");
}

// A failed call of the output layer ends the step, except on a host that
// has no output layer at all, where the tables are silently left out.
TEST_F(Fixture, FailedLayerCallEndsTheStep) {
  struct Refusing : LayerHost {
    int code = kHostIoError;
    int tableColumn(TableHandle, const TableColumn&) override { return code; }
  } r;
  com.host = &r;
  com.print.descstats = 1;
  qvtovar(&com);  // a factoid table defines no column
  EXPECT_EQ(r.tables.size(), 1u);
  com.print.statistics = 1;
  EXPECT_THROW(qvtosof(&com, 0), StepExit);
  EXPECT_EQ(com.rc, 2000);
  r.code = kHostUnsupported;
  com.rc = 0;
  EXPECT_NO_THROW(qvtosof(&com, 0));
  EXPECT_EQ(com.rc, 0);
  // A refused open of a performance table ends the step too; the table is
  // not opened a second time under another template.
  struct RefusingOpen : LayerHost {
    int tableOpen(const TableHead& hd, TableHandle* o) override {
      return hd.templ == "QVT.QVT.PerformanceSummary" ? kHostIoError : LayerHost::tableOpen(hd, o);
    }
  } ro;
  com.host = &ro;
  com.istmt.back = 2;
  com.print.performanceoverall = 1;
  double forback[3];
  com.outcps.forback = forback;
  ASSERT_EQ(ztscpi(1, 2, nullptr, &com.outcps.cp), 0);
  EXPECT_THROW(qvtocps(&com, 1), StepExit);
  EXPECT_EQ(com.rc, 2000);
  EXPECT_TRUE(ro.tables.empty());
  ztscpt(&com.outcps.cp);
}

// The listing of a small table, written from the layout rules: a column is
// as wide as its width, label and cells; numbers right, texts left; of the
// named values only those for a reader, under their labels, and the
// footnote below the rows.
TEST(Listing, GoldenText) {
  Table t;
  t.head.title = "T";
  t.values = {{"Variable", "y"}, {"Rows", "2"}, {"FootMessage", "Foot."}, {"Model", "Simple"},
              {"VariableLabel", "Sales of y"}};
  t.cols = {{"P", "Parameter", ColType::Text, 3, kColFree, {}, {}},
            {"E", "Est", ColType::Double, 6, 2, {}, {}},
            {"N", "N", ColType::Long, 2, 0, {}, {}}};
  t.rows = {{std::string("Lv"), 0.126, 7.0}, {std::string("Trend"), kMissing, 12.0}};
  EXPECT_EQ(renderListing(t),
            "T\nLabel: Sales of y\nModel: Simple\n\n"
            "Parameter     Est   N\n"
            "---------  ------  --\n"
            "Lv           0.13   7\n"
            "Trend           .  12\n"
            "Foot.\n\n");
  // A summary that sums from a later horizon says so; from the first, nothing is added.
  t.values = {{"StartSum", "1"}};
  EXPECT_EQ(renderListing(t).rfind("T\n\nParameter", 0), 0u);
  t.values = {{"StartSum", "3"}};
  EXPECT_EQ(renderListing(t).rfind("T\nSum from horizon: 3\n\nParameter", 0), 0u);
}

TEST(OutputLayer, CallOrderCodes) {
  std::vector<Table> got;
  OutputLayer l([&](const Table& t) { got.push_back(t); });
  TableHandle t;
  EXPECT_EQ(l.tableOpen(TableHead{}, &t), kHostBadArgument);
  ASSERT_EQ(l.tableOpen(TableHead{"X", "Q.X", TableKind::Data, "x", ""}, &t), kHostOk);
  const TableCell one[] = {1.0};
  EXPECT_EQ(l.tableRow(t, one), kHostWrongState);
  EXPECT_EQ(l.tableColumn(t, TableColumn{"a", "", ColType::Double, 1, 0, {}, {}}), kHostOk);
  EXPECT_EQ(l.tableColumnsEnd(t), kHostOk);
  EXPECT_EQ(l.tableColumn(t, TableColumn{"b", "", ColType::Double, 1, 0, {}, {}}), kHostWrongState);
  EXPECT_EQ(l.tableRow(t, {}), kHostBadArgument);
  EXPECT_EQ(l.tableRow(t, one), kHostOk);
  EXPECT_EQ(l.tableFind("X"), t);
  EXPECT_EQ(l.tableClose(t), kHostOk);
  EXPECT_EQ(l.tableClose(t), kHostBadHandle);
  ASSERT_EQ(got.size(), 1u);
  EXPECT_EQ(got[0].rows.size(), 1u);
}

// The intermittent tables on a model built by the real routines: demands at
// observations 2, 6, 8, 13, 16, 20 of 24, three seasons coded t % 3, every
// component SIMPLE with the weight 0.3 fixed unless a test changes spec.
const std::vector<double> kDemand = {0, 0, 3, 0, 0, 0, 5, 0, 2, 0, 0, 0, 0, 7, 0, 0, 4, 0, 0, 0, 6, 0, 0, 0};

struct Demand : Fixture {
  IDSERIES* ids = nullptr;
  IDMODEL* idm = nullptr;
  IDMSPEC spec;
  void SetUp() override {
    Fixture::SetUp();
    idmsdft(&spec);
    for (ESMSPEC* c : {&spec.intv, &spec.size, &spec.adem}) {
      c->modcode = kIdmSimple, c->trnscode = 0, c->noest = c->level.noest = 1;
      c->level.parm = c->level.lower = c->level.upper = 0.3;
    }
  }
  void TearDown() override { idmtrm(&idm), idstrm(&ids); }
  // The run's intermittent path, in its order; only the intervals are ever
  // transformed here.
  void build() {
    INTERVAL day;
    zintic(kIntDay, &day);
    std::vector<int> sc;
    for (std::size_t t = 0; t < kDemand.size(); ++t) sc.push_back(int(t % 3));
    spec.specified = 1, spec.modcode = kIdmBoth;
    ASSERT_EQ(idsint(0, 0, &day, "B", 3, &ids) + idmint(0, 0, &idm), 0);
    for (const int rc : {idsset(ids, long(kDemand.size()), kDemand.data(), nullptr, sc.data(), 0.0, 0, 0),
                         idmspc(idm, &spec, 1), idstrn(ids, spec.intv.trnscode, 0, 0, 0, 0, 0), idsss(ids, 1, 2),
                         idmset(idm, ids), idmsel(idm, 0.05), idmfit(idm, 1), idmdem(idm, 1, 0.05)})
      ASSERT_GE(rc, 0);
  }
};

// Each table under its flag (with one form a component, only the choice
// between the forms is shown), the range of the detailed Forecasts, and the
// sizes by season against the series.
TEST_F(Demand, TablesFollowThePrintFlags) {
  build();
  const auto run = [&](char* flag) {
    h.tables.clear();
    *flag = 1;
    qvtoids(&com, ids);
    for (int c = 0; c < 3; ++c) qvtoiss(&com, ids, c);
    for (const ESMODEL* c : {&idm->intv, &idm->size, &idm->adem}) qvtosec(&com, c);
    qvtosei(&com, idm), qvtoest(&com, nullptr, idm), qvtosta(&com, nullptr, idm), qvtodem(&com, idm);
    *flag = 0;
    return h.names();
  };
  using N = std::vector<std::string>;
  EXPECT_EQ(run(&com.print.estimates), (N{"ModelSelection", "ParameterEstimates"}));
  EXPECT_EQ(run(&com.print.states), N{"DemandStates"});
  EXPECT_EQ(run(&com.print.forecasts), N{"Demands"});
  EXPECT_EQ(run(&com.print.summary).size(), 4u);  // the summary, and one seasonal summary a component
  // The detailed Forecasts of the demand model show every period: no range.
  FOR_OUT fore;
  com.print.forecasts = com.print.details = 1;
  qvtofor(&com, &fore, 7), qvtofor(&com, &fore, kModelCroston);
  EXPECT_EQ(value(h.tables[4], "First") + value(h.tables[5], "First"), "0<none>");
  double n[3] = {}, total[3] = {};
  for (std::size_t t = 0; t < kDemand.size(); ++t) n[t % 3] += kDemand[t] != 0, total[t % 3] += kDemand[t];
  const Table& sizes = h.tables[2];
  EXPECT_EQ(value(sizes, "ComponentName"), "Size");
  for (std::size_t r = 0; r < 3; ++r)
    EXPECT_TRUE(num(sizes, r, "Season") == double(r + 1) && num(sizes, r, "N") == n[r] &&
                num(sizes, r, "Total") == total[r]);
}

// Six interval candidates (three forms, plain and in logs) and the two forms:
// "Selected" on the smallest RMSE. Then the last weight and the last backcast
// state of each form: the LINEAR sizes' trend turned, the average's level.
TEST_F(Demand, SelectionEstimatesAndStates) {
  spec.intv.modcode = kIdmBestN, spec.intv.trnscode = kTrnsAuto, spec.intv.noest = spec.intv.level.noest = 0;
  spec.intv.level.parm = spec.intv.level.lower = spec.intv.level.upper = kMissing;
  spec.size.modcode = kIdmLinear, spec.size.trend.noest = 1;
  spec.size.trend.parm = spec.size.trend.lower = spec.size.trend.upper = 0.1;
  build();
  com.print.estimates = com.print.states = 1;
  qvtosec(&com, &idm->intv), qvtosei(&com, idm);
  ASSERT_EQ(h.tables.size(), 2u);
  EXPECT_EQ(h.tables[0].rows.size(), 6u);
  for (const Table& t : h.tables) {
    std::vector<double> stat;
    for (std::size_t r = 0; r < t.rows.size(); ++r)
      stat.push_back(wzmis(num(t, r, "Statistic")) ? 1e300 : num(t, r, "Statistic"));
    const auto k = std::size_t(std::min_element(stat.begin(), stat.end()) - stat.begin());
    const auto yes = [](const std::vector<TableCell>& r) { return std::get<std::string>(r[2]) == "Yes"; };
    EXPECT_TRUE(yes(t.rows[k]) && std::count_if(t.rows.begin(), t.rows.end(), yes) == 1);
  }
  for (const bool avg : {false, true}) {
    h.tables.clear();
    idm->modused = avg ? kIdmUsedAverage : kIdmUsedCroston;
    ASSERT_GE(idmfit(idm, 1), 0);
    qvtoest(&com, nullptr, idm), qvtosta(&com, nullptr, idm);
    const Table &e = h.tables.at(0), &st = h.tables.at(1);
    EXPECT_EQ(num(e, e.rows.size() - 1, "Estimate"), avg ? 0.3 : 0.1);
    EXPECT_EQ(cols(st).back(), avg ? "AverageLevel" : "SizeTrend");
    EXPECT_EQ(num(st, 0, cols(st).back()),
              avg ? idm->adem.forecast.level.backcast : -idm->size.forecast.trend.backcast);
  }
}

}  // namespace
}  // namespace qvt
