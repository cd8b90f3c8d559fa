// The intermittent model's tables, made from a demand series and a model
// built by the real routines. Expected values are recomputed here from the
// series itself, or follow from relations that hold between the columns.
#include <gtest/gtest.h>

#include <cmath>

#include "calendar/interval.hpp"
#include "host/output_layer.hpp"
#include "intermittent/idmodel.hpp"
#include "report/qvto.hpp"

namespace qvt {
namespace {

struct Capture : Host {
  std::vector<Table> tables;
  OutputLayer layer{[this](const Table& t) { tables.push_back(t); }};
  void msgLog(int, int, std::span<const MsgArg>, const SourcePos*) override {}
  int tableOpen(const TableHead& h, TableHandle* o) override { return layer.tableOpen(h, o); }
  int tableColumn(TableHandle t, const TableColumn& c) override { return layer.tableColumn(t, c); }
  int tableColumnsEnd(TableHandle t) override { return layer.tableColumnsEnd(t); }
  int tableValue(TableHandle t, std::string_view n, std::string_view x) override { return layer.tableValue(t, n, x); }
  int tableRow(TableHandle t, std::span<const TableCell> c) override { return layer.tableRow(t, c); }
  int tableClose(TableHandle t) override { return layer.tableClose(t); }
  const Table& find(std::string_view name, std::size_t nth = 0) const {
    for (const Table& t : tables)
      if (t.head.name == name && nth-- == 0) return t;
    throw std::out_of_range(std::string(name));
  }
  static std::size_t col(const Table& t, std::string_view name) {
    for (std::size_t k = 0; k < t.cols.size(); ++k)
      if (t.cols[k].name == name) return k;
    throw std::out_of_range(std::string(name));
  }
  static double num(const Table& t, std::size_t r, std::string_view name) {
    return std::get<double>(t.rows.at(r).at(col(t, name)));
  }
  static std::string value(const Table& t, std::string_view name) {
    for (const TableValue& v : t.values)
      if (v.name == name) return v.text;
    return "<none>";
  }
};

// Six demands on days 0..23 (base 0): at 2, 6, 8, 13, 16, 20.
const std::vector<double> kY = {0, 0, 3, 0, 0, 0, 5, 0, 2, 0, 0, 0, 0, 7, 0, 0, 4, 0, 0, 0, 6, 0, 0, 0};

// The run's intermittent path on kY, three seasons coded day % 3. Every
// component SIMPLE with the weight 0.3 fixed, unless a test changes spec.
struct IdmTables : ::testing::Test {
  Capture h;
  QVTCOM com;
  IDSERIES* ids = nullptr;
  IDMODEL* idm = nullptr;
  IDMSPEC spec;
  void SetUp() override {
    com.host = &h;
    idmsdft(&spec);
    spec.specified = 1;
    for (ESMSPEC* c : {&spec.intv, &spec.size, &spec.adem}) {
      c->modcode = kIdmSimple;
      c->trnscode = 0;
      c->level.parm = c->level.lower = c->level.upper = 0.3;
      c->level.noest = c->noest = 1;
    }
  }
  void TearDown() override { idmtrm(&idm), idstrm(&ids); }
  void build(int modcode) {
    INTERVAL day;
    zintic(kIntDay, &day);
    std::vector<double> tid;
    std::vector<int> sc;
    for (std::size_t t = 0; t < kY.size(); ++t) tid.push_back(double(t)), sc.push_back(int(t % 3));
    ASSERT_EQ(idsint(0, 0, &day, "B", 3, &ids), 0);
    ASSERT_GE(idsset(ids, long(kY.size()), kY.data(), tid.data(), sc.data(), 0.0, 0, 0), 0);
    spec.modcode = modcode;
    ASSERT_EQ(idmint(0, 0, &idm), 0);
    ASSERT_EQ(idmspc(idm, &spec, 1), 0);
    const ESMSPEC &i = spec.intv, &s = spec.size, &a = spec.adem;
    ASSERT_GE(idstrn(ids, i.trnscode, i.trnsparm, s.trnscode, s.trnsparm, a.trnscode, a.trnsparm), 0);
    ASSERT_GE(idsss(ids, 1, 2), 0);
    ASSERT_GE(idmset(idm, ids), 0);
    ASSERT_GE(idmsel(idm, 0.05), 0);
    ASSERT_GE(idmfit(idm, 1), 0);
    ASSERT_GE(idmdem(idm, 1, 0.05), 0);
  }
  std::vector<long> demands() const {
    std::vector<long> p;
    for (std::size_t t = 0; t < kY.size(); ++t)
      if (kY[t] != 0) p.push_back(long(t));
    return p;
  }
};

// Each row of DemandSummary against the definitions: inner intervals,
// sizes, and size over interval from the second demand on.
TEST_F(IdmTables, SummaryAndSeasonsFromTheSeries) {
  build(kIdmCroston);
  com.print.summary = 1;
  qvtoids(&com, ids);
  for (int c = 0; c < 3; ++c) qvtoiss(&com, ids, c);
  const std::vector<long> p = demands();
  std::vector<double> comp[3];
  for (std::size_t k = 0; k < p.size(); ++k) {
    comp[1].push_back(kY[p[k]]);
    if (k > 0) comp[0].push_back(double(p[k] - p[k - 1])), comp[2].push_back(kY[p[k]] / double(p[k] - p[k - 1]));
  }
  const Table& s = h.find("DemandSummary");
  ASSERT_EQ(s.rows.size(), 3u);
  for (std::size_t r = 0; r < 3; ++r) {
    const std::vector<double>& v = comp[r];
    long double sum = 0, ss = 0;
    for (double x : v) sum += x;
    const long double avg = sum / v.size();
    for (double x : v) ss += (x - avg) * (x - avg);
    const auto [lo, hi] = std::minmax_element(v.begin(), v.end());
    const double want[] = {double(sum), *lo, *hi, double(avg), double(std::sqrt(ss / (v.size() - 1))), *hi - *lo};
    const char* cols[] = {"Total", "Minimum", "Maximum", "Average", "StdDev", "Range"};
    for (int k = 0; k < 6; ++k) EXPECT_NEAR(Capture::num(s, r, cols[k]), want[k], 1e-12) << r << cols[k];
  }
  // Sizes by season, the day of each demand modulo 3.
  const Table& z = h.find("DemandSeasonalSummary", 1);
  EXPECT_EQ(Capture::value(z, "ComponentName"), "Size");
  ASSERT_EQ(z.rows.size(), 3u);
  double n[3] = {}, total[3] = {};
  for (long t : p) n[t % 3] += 1, total[t % 3] += kY[std::size_t(t)];
  for (std::size_t r = 0; r < 3; ++r) {
    EXPECT_EQ(Capture::num(z, r, "Season"), double(r + 1));
    EXPECT_EQ(Capture::num(z, r, "N"), n[r]);
    EXPECT_EQ(Capture::num(z, r, "Total"), total[r]);
  }
  EXPECT_EQ(Capture::value(h.find("DemandSeasonalSummary", 2), "ComponentName"), "Average");
}

// Demands: one row a demand and one for the forecast; the columns hold the
// demand times, the intervals and sizes counted from the series, and the
// relations of Croston's method between them.
TEST_F(IdmTables, DemandRowsOfCrostonsMethod) {
  build(kIdmCroston);
  com.print.forecasts = 1;
  qvtodem(&com, idm);
  const Table& d = h.find("Demands");
  const std::vector<long> p = demands();
  const std::size_t n = p.size();
  ASSERT_EQ(d.rows.size(), n + 1);
  EXPECT_EQ(Capture::value(d, "Number"), "6");
  const double z = 1.959963984540054;  // the 97.5% normal quantile (statistics.NormalDist().inv_cdf)
  for (std::size_t i = 0; i <= n; ++i) {
    SCOPED_TRACE(i);
    const auto at = [&](const char* c) { return Capture::num(d, i, c); };
    EXPECT_NEAR(at("Predict"), at("PredictedSize") / at("PredictedInterval"), 1e-12);
    if (i == n) break;
    EXPECT_EQ(at("Index"), double(i + 1));
    EXPECT_EQ(at("DemandTime"), double(p[i]));
    EXPECT_EQ(at("ActualInterval"), i == 0 ? double(p[0] + 1) : double(p[i] - p[i - 1]));
    EXPECT_EQ(at("ActualSize"), kY[p[i]]);
    EXPECT_NEAR(at("Actual"), at("ActualSize") / at("ActualInterval"), 1e-12);
    EXPECT_NEAR(at("Upper") - at("Predict"), z * at("Std"), 1e-9);
    EXPECT_NEAR(at("Predict") - at("Lower"), z * at("Std"), 1e-9);
    EXPECT_NEAR(at("Error"), at("Actual") - at("Predict"), 1e-12);
    EXPECT_NEAR(at("Stock"), at("Predict") * at("ActualInterval") - at("ActualSize"), 1e-12);
    if (i == 0) continue;
    EXPECT_NEAR(at("ErrorSize"), at("ActualSize") - at("PredictedSize"), 1e-12);
    EXPECT_NEAR(at("ErrorInterval"), at("ActualInterval") - at("PredictedInterval"), 1e-12);
  }
  // The forecast row: the elapsed time from the last demand to the end, plus
  // 1: the interval forecast is never shorter.
  EXPECT_EQ(Capture::num(d, n, "ActualInterval"), double(kY.size() - std::size_t(p.back())));
  EXPECT_GE(Capture::num(d, n, "PredictedInterval"), Capture::num(d, n, "ActualInterval"));
  EXPECT_TRUE(wzmis(Capture::num(d, n, "ActualSize")));
}

// Selection, estimates and states of each form: which tables, which rows,
// the weights as fixed, and the trend columns of a LINEAR part only.
TEST_F(IdmTables, SelectionEstimatesAndStatesByForm) {
  spec.size.modcode = kIdmLinear;
  spec.size.trend.parm = spec.size.trend.lower = spec.size.trend.upper = 0.1;
  spec.size.trend.noest = 1;
  spec.intv.modcode = kIdmBestN;
  spec.intv.trnscode = kTrnsAuto;
  spec.intv.noest = spec.intv.level.noest = 0;
  spec.intv.level.parm = spec.intv.level.lower = spec.intv.level.upper = kMissing;
  build(kIdmBoth);
  com.print.estimates = com.print.states = 1;
  qvtosec(&com, &idm->intv);
  qvtosec(&com, &idm->size);  // one candidate: no table
  qvtosei(&com, idm);
  ASSERT_EQ(h.tables.size(), 2u);
  // Both tables mark the row of the smallest RMSE among those computed.
  for (const Table& t : h.tables) {
    double best = 1e300;
    int yes = -1;
    for (std::size_t r = 0; r < t.rows.size(); ++r) {
      const double v = Capture::num(t, r, "Statistic");
      if (!wzmis(v)) best = std::min(best, v);
      if (std::get<std::string>(t.rows[r][2]) == "Yes") yes = int(r);
    }
    ASSERT_GE(yes, 0);
    EXPECT_EQ(Capture::num(t, std::size_t(yes), "Statistic"), best);
  }
  EXPECT_EQ(h.tables[0].rows.size(), 6u);  // three forms, plain and in logs
  EXPECT_EQ(Capture::value(h.tables[0], "ComponentName"), "Interval");
  EXPECT_EQ(h.tables[1].rows.size(), 2u);

  for (int form : {kIdmUsedCroston, kIdmUsedAverage}) {
    h.tables.clear();
    idm->modused = form;
    ASSERT_GE(idmfit(idm, 1), 0);
    qvtoest(&com, nullptr, idm);
    qvtosta(&com, nullptr, idm);
    const Table& e = h.find("ParameterEstimates");
    const Table& s = h.find("DemandStates");
    using N = std::vector<std::string>;
    N cols;
    for (const TableColumn& c : s.cols) cols.push_back(c.name);
    if (form == kIdmUsedAverage) {
      ASSERT_EQ(e.rows.size(), 1u);
      EXPECT_EQ(Capture::num(e, 0, "Estimate"), 0.3);
      EXPECT_EQ(cols, (N{"State", "AverageLevel"}));
      continue;
    }
    const std::size_t ni = e.rows.size() - 2;  // the interval's form was chosen; the size has two weights
    EXPECT_EQ(Capture::num(e, ni, "Estimate"), 0.3);
    EXPECT_EQ(Capture::num(e, ni + 1, "Estimate"), 0.1);
    EXPECT_EQ(cols.back(), "SizeTrend");
    EXPECT_EQ(Capture::num(s, 0, "SizeTrend"), -idm->size.forecast.trend.backcast);
  }
}

// The detailed Forecasts table of the demand model carries no used range.
TEST_F(IdmTables, ForecastsOfTheDemandModelLeaveOutTheRange) {
  com.print.forecasts = 1;
  FOR_OUT fore;
  for (char details : {'\0', '\1'}) {
    com.print.details = details;
    qvtofor(&com, &fore, kModelCroston);
  }
  EXPECT_EQ(Capture::value(h.tables[0], "First"), "0");
  EXPECT_EQ(Capture::value(h.tables[1], "First"), "<none>");
  EXPECT_NE(Capture::value(h.tables[1], "Lead"), "<none>");
}

}  // namespace
}  // namespace qvt
