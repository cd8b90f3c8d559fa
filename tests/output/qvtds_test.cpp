// The output set-up and the writers of OUT=, OUTEST=, OUTFOR= and
// OUTCOMPONENT=, written through a process host into a folder and read back
// cell by cell against what was put in.
#include "output/qvtds.hpp"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "output_rig.hpp"
#include "smoothing/esmfor.hpp"

namespace qvt {
namespace {

using testing::day;
using testing::readBack;
using testing::Rig;
using Names = std::vector<std::string>;

const std::vector<double> kUnits = {12, 15, 14, 18, 17, 21, 20, 24, 23, 27, 26, 30};

// Twelve months of east, two of west.
std::string salesCsv() {
  std::string s = "region,date,units,price\n";
  for (int m = 1; m <= 12; ++m) {
    s += "east,2020-" + std::string(m < 10 ? "0" : "") + std::to_string(m) + "-01," +
         std::to_string(static_cast<int>(kUnits[m - 1])) + ",1.5\n";
  }
  return s + "west,2020-01-01,3,2\nwest,2020-02-01,4,2\n";
}

// Month starts from January 2020 on.
std::vector<double> months(int n) {
  std::vector<double> v;
  for (int k = 0; k < n; ++k) v.push_back(day(k, 1));
  return v;
}

// A fitted model and its forecasts of kUnits, `lead` periods on.
struct Fit {
  WINMODEL* esm = nullptr;
  std::vector<double> date, actual, predicted, residual, upper, lower, std, level, trend, season;
  FOR_OUT fore;
  Fit(int method, int lead) {
    const long n = static_cast<long>(kUnits.size());
    INTERVAL intv;
    EXPECT_EQ(zintic(45, &intv), 0);
    EXPECT_EQ(esmint(kUnits.data(), n, &intv, day(0, 1), 0, 0, method, 0, &esm), 0);
    EXPECT_GE(esmfit(esm), 0);
    for (auto* v : {&actual, &predicted, &residual, &upper, &lower, &std, &level, &trend, &season})
      v->assign(static_cast<std::size_t>(n + lead), kMissing);
    date = months(static_cast<int>(n + lead));
    fore = FOR_OUT{0.05,         n + lead,     date.data(), actual.data(), predicted.data(), residual.data(),
                   upper.data(), lower.data(), std.data(),  level.data(),  trend.data(),     season.data()};
    EXPECT_EQ(esmprd(esm, kUnits.data(), n, day(0, 1), 0, 0.05, lead, &fore), 0);
    fore.date = date.data();
  }
  ~Fit() { esmtrm(esm); }
};

TEST(OutputWriters, RoundTripThroughFiles) {
  Rig rig(salesCsv());
  Fit linear(kEsmLinear, 3), dbl(kEsmDouble, 3);
  std::vector<double> outId = months(15), outY = kUnits;
  outY.insert(outY.end(), {31, 32.5, 34.25});
  std::string display;
  rig.step([&] {
    rig.open({"out", "outest", "outfor", "outcomp", "outsum"}, {"units"}, true, 3);
    QVTCOM& com = rig.com;
    qvtds(&com);
    ASSERT_EQ(com.error, 0);
    EXPECT_EQ(com.rc, 0);
    EXPECT_EQ(com.in.enobs, 14);        // grouped: min(records, 16384)
    EXPECT_FALSE(com.infile);            // one series: no spool
    EXPECT_FALSE(com.ds.outsum.fileid);  // left out, with a note
    display = com.ds.data.display.str();
    EXPECT_FALSE(display.empty());
    // The input bindings: series into data.buf, the ID into id.val.
    ASSERT_EQ(hostByNext(*com.host, com.ds.data.fileid), 1);
    for (int k = 0; k < 12; ++k) {
      ASSERT_EQ(hostByGet(*com.host, com.ds.data.fileid), 1);
      ASSERT_EQ(hostRowGet(*com.host, com.ds.data.fileid), 0);
      EXPECT_EQ(com.ds.data.buf[0], kUnits[k]);
      EXPECT_EQ(com.id.val, day(k, 1));
    }
    com.out.id = outId.data();
    com.out.y = outY.data();
    com.out.tobs = static_cast<long>(outId.size());
    com.current.var.set("units");
    com.current.trnsname.set("NONE");
    com.current.modelcode = kModelLinear;
    qvtdout(&com);
    qvtdest(&com, linear.esm);
    qvtdest(&com, dbl.esm);
    qvtdest(&com, nullptr);  // no model: no row
    qvtdfor(&com, &linear.fore);
    qvtdcmp(&com, &linear.fore);
  });
  ASSERT_EQ(rig.rc, 0) << rig.log.str();
  const auto msgs = rig.procMessages();
  ASSERT_EQ(msgs.size(), 1u);
  EXPECT_EQ(msgs[0].first, kMsgNotWrittenYet);
  EXPECT_EQ(msgs[0].second, (nlohmann::json{"WORK.outsum", "OUTSUM="}));
  const Host& h = *rig.host;
  const auto lbl = [&](int n) { return h.msgText(kMsgProc, n); };
  const auto dsLabel = [&](int n) { return h.msgText(kMsgProc, n, std::vector<MsgArg>{display}); };
  const FOR_OUT& f = linear.fore;

  // OUT=: BY variable, the ID at the end of its month, the series.
  const auto out = readBack(rig.dir.path(), "out");
  EXPECT_EQ(out.names(), (Names{"region", "date", "units"}));
  EXPECT_EQ(out.vars[1].format, "MONYY7.");
  EXPECT_EQ(out.text.at("region"), Names(15, "east"));
  for (int t = 0; t < 15; ++t) EXPECT_EQ(out.num.at("date").at(t), day(t + 1, 0)) << t;
  EXPECT_EQ(out.num.at("units"), outY);

  // OUTFOR= and OUTCOMPONENT=: one row per period of the used range, the
  // forecasts beside the components, each column with its label.
  const auto of = readBack(rig.dir.path(), "outfor");
  const auto oc = readBack(rig.dir.path(), "outcomp");
  EXPECT_EQ(of.names(),
            (Names{"region", "_NAME_", "date", "ACTUAL", "PREDICT", "LOWER", "UPPER", "ERROR", "STD"}));
  EXPECT_EQ(oc.names(), (Names{"region", "_NAME_", "_TRANSFORM_", "_MODEL_", "date", "ACTUAL", "PREDICT",
                               "LEVEL", "TREND", "SEASON", "ERROR"}));
  EXPECT_EQ(of.label, dsLabel(kLblOutfor));
  EXPECT_EQ(oc.label, dsLabel(kLblOutcomp));
  EXPECT_EQ(of.vars[2].label, "Month of sale");
  EXPECT_EQ(of.vars[2].format, "MONYY7.");
  EXPECT_EQ(of.vars[1].type, VarType::Character);
  const int forLabels[] = {4101, 4103, 4104, 4105, 4106, 4107, 4108};  // _NAME_, then ACTUAL to STD
  for (int i = 0; i < 7; ++i) {
    EXPECT_FALSE(lbl(forLabels[i]).empty()) << forLabels[i];
    EXPECT_EQ(of.vars[i + (i > 0) + 1].label, lbl(forLabels[i])) << forLabels[i];
  }
  EXPECT_EQ(oc.vars[7].label, lbl(4605));
  EXPECT_EQ(oc.vars[3].label, lbl(4611));
  const std::map<std::string, const double*> cols = {
      {"date", f.date},       {"ACTUAL", f.actual}, {"PREDICT", f.predicted}, {"LOWER", f.lower},
      {"UPPER", f.upper},     {"ERROR", f.residual}, {"STD", f.std},         {"LEVEL", f.level},
      {"TREND", f.trend},     {"SEASON", f.season}};
  for (const auto* ds : {&of, &oc}) {
    EXPECT_EQ(ds->text.at("region"), Names(15, "east"));
    EXPECT_EQ(ds->text.at("_NAME_"), Names(15, "units"));
    for (const auto& [name, column] : ds->num) testing::expectCells(column, cols.at(name), name);
  }
  EXPECT_EQ(oc.text.at("_MODEL_"), Names(15, "LINEAR"));
  EXPECT_FALSE(wzmis(of.num.at("PREDICT")[14]));  // the forecasts are there
  EXPECT_TRUE(wzmis(of.num.at("ACTUAL")[14]));
  EXPECT_FALSE(wzmis(oc.num.at("LEVEL")[3]));

  // OUTEST=: LEVEL and TREND of the linear model, then WEIGHT of double smoothing.
  const auto oe = readBack(rig.dir.path(), "outest");
  EXPECT_EQ(oe.names(), (Names{"region", "_NAME_", "_TRANSFORM_", "_MODEL_", "_PARM_", "_EST_", "_STDERR_",
                               "_TVALUE_", "_PVALUE_"}));
  EXPECT_EQ(oe.label, dsLabel(kLblOutest));
  for (int n = 4001; n <= 4008; ++n) EXPECT_EQ(oe.vars[n - 4000].label, lbl(n));
  EXPECT_EQ(oe.text.at("_NAME_"), Names(3, "units"));
  EXPECT_EQ(oe.text.at("_TRANSFORM_"), Names(3, "NONE"));
  EXPECT_EQ(oe.text.at("_MODEL_"), (Names{"LINEAR", "LINEAR", "DOUBLE"}));
  EXPECT_EQ(oe.text.at("_PARM_"), (Names{"LEVEL", "TREND", "WEIGHT"}));
  const MODELPEST& p = linear.esm->pest;
  const MODELPEST& q = dbl.esm->pest;
  const double est[] = {p.parms[0], p.parms[1], q.parms[0]}, se[] = {p.stderr_[0], p.stderr_[1], q.stderr_[0]};
  const double tv[] = {p.tvals[0], p.tvals[1], q.tvals[0]}, pv[] = {p.pvalue[0], p.pvalue[1], q.pvalue[0]};
  testing::expectCells(oe.num.at("_EST_"), est, "_EST_");
  testing::expectCells(oe.num.at("_STDERR_"), se, "_STDERR_");
  testing::expectCells(oe.num.at("_TVALUE_"), tv, "_TVALUE_");
  testing::expectCells(oe.num.at("_PVALUE_"), pv, "_PVALUE_");
  for (double e : oe.num.at("_EST_")) EXPECT_TRUE(e > 0.0 && e < 1.0) << e;
  // Data sets not asked for cost nothing: no file of theirs.
  for (const char* m : {"outstat.csv", "outtrend.csv", "outseason.csv"}) EXPECT_FALSE(rig.dir.exists(m)) << m;
}

TEST(OutputWriters, NoOutAllKeepsTheForecastRowsAndNoIdVariableNamesTheTime) {
  Rig rig(salesCsv());
  Fit simple(kEsmSimple, 3);
  std::vector<double> outId = months(15), outY = kUnits;
  outY.insert(outY.end(), {7, 8, 9});
  rig.step([&] {
    rig.open({"out", "outfor", "outcomp"}, {"units"}, false, 3);
    QVTCOM& com = rig.com;
    com.id.dsvarno = 0;  // no ID statement
    com.op.nooutall = 1;
    qvtds(&com);
    ASSERT_EQ(com.error, 0);
    EXPECT_EQ(com.in.enobs, 14);
    com.out.id = outId.data();
    com.out.y = outY.data();
    com.out.tobs = 15;
    com.current.var.set("units");
    com.current.modelcode = kModelSimple;
    qvtdout(&com);
    qvtdfor(&com, &simple.fore);
    qvtdcmp(&com, &simple.fore);
    qvtdest(&com, simple.esm);  // OUTEST= wasn't asked for: nothing
  });
  ASSERT_EQ(rig.rc, 0) << rig.log.str();
  EXPECT_TRUE(rig.procMessages().empty());
  const auto out = readBack(rig.dir.path(), "out");
  EXPECT_EQ(out.names(), (Names{"TIME", "units"}));
  EXPECT_EQ(out.num.at("TIME"), (std::vector<double>{day(13, 0), day(14, 0), day(15, 0)}));
  EXPECT_EQ(out.num.at("units"), (std::vector<double>{7, 8, 9}));
  const auto of = readBack(rig.dir.path(), "outfor");
  EXPECT_EQ(of.vars[1].name, "_TIMEID_");
  EXPECT_EQ(of.vars[1].label, rig.host->msgText(kMsgProc, kLblTimeId));
  EXPECT_EQ(of.num.at("_TIMEID_"), (std::vector<double>{day(12, 1), day(13, 1), day(14, 1)}));
  testing::expectCells(of.num.at("PREDICT"), simple.predicted.data() + 12, "PREDICT");
  EXPECT_EQ(readBack(rig.dir.path(), "outcomp").num.at("PREDICT").size(), 3u);
  EXPECT_FALSE(rig.dir.exists("outest.csv"));
}

TEST(OutputSetup, ExpectedRecords) {
  std::string big = "region,date,units,price\n";
  for (int i = 0; i < 20000; ++i) big += "a,2020-01-01," + std::to_string(i) + ",1\n";
  const std::string one = "region,date,units,price\na,2020-01-01,1,1\n";
  struct Case { std::string csv; bool by; std::size_t memsize; long enobs; };
  const Case cases[] = {
      {one, false, 0, 4096},          // one record, no BY: at least 2, so 4096
      {salesCsv(), false, 0, 14},     // no BY: the records
      {big, true, 0, 16384},          // BY: min(records, 16384)
      {big, false, 0, 20000},
      {big, false, 100000, 4096},     // not room for 20000 cells: 4096
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(::testing::Message() << c.csv.size() << " bytes, by " << c.by << ", memsize " << c.memsize);
    Rig rig(c.csv, c.memsize);
    rig.step([&] {
      rig.open({}, {"units"}, c.by, 0);
      nobs(&rig.com);
      EXPECT_EQ(rig.com.error, 0);
      EXPECT_EQ(rig.com.rc, 0);
      EXPECT_EQ(rig.com.rid2n, 0);
      EXPECT_EQ(rig.com.in.enobs, c.enobs);
      EXPECT_TRUE(rig.com.tpool);
    });
  }
}

TEST(OutputSetup, SeveralSeriesOpenTheSpoolAndBindEachSeries) {
  Rig rig(salesCsv());
  rig.step([&] {
    rig.open({"out"}, {"units", "price"}, true, 2);
    QVTCOM& com = rig.com;
    qvtds(&com);
    ASSERT_EQ(com.error, 0);
    EXPECT_TRUE(com.infile && com.outfile);
    EXPECT_NE(com.outsum.forlead, nullptr);
    ASSERT_EQ(hostByNext(*com.host, com.ds.data.fileid), 1);
    ASSERT_EQ(hostByGet(*com.host, com.ds.data.fileid), 1);
    ASSERT_EQ(hostRowGet(*com.host, com.ds.data.fileid), 0);
    EXPECT_EQ(com.ds.data.buf[0], 12.0);
    EXPECT_EQ(com.ds.data.buf[1], 1.5);
    const auto v = com.host->dsVars(com.ds.out.fileid);
    ASSERT_EQ(v.size(), 4u);
    EXPECT_EQ(v[0].name + v[1].name + v[2].name + v[3].name, "regiondateunitsprice");
    EXPECT_EQ(v[1].label, "");  // the input's description, its format replaced
    EXPECT_EQ(v[1].format, "MONYY7.");
  });
  EXPECT_EQ(rig.rc, 0) << rig.log.str();
}

TEST(OutputSetup, FailuresEndTheStepOrRefuseTheInput) {
  Rig unusable(salesCsv());  // an output where the input should be
  unusable.step([&] {
    unusable.open({"out"}, {"units"}, false, 0);
    unusable.com.ds.data.fileid = unusable.com.ds.out.fileid;
    nobs(&unusable.com);
    EXPECT_EQ(unusable.com.rc, kRcInputUnusable);
    EXPECT_EQ(unusable.com.error, 1);
  });
  // A spool that can't be made, and memory not even for the row buffers.
  Rig noSpool(salesCsv(), 0, "/nonexistent/qvt/spool/folder"), noMemory(salesCsv(), 8);
  for (Rig* rig : {&noSpool, &noMemory}) {
    rig->step([&] {
      rig->open({"outfor"}, {"units", "price"}, false, 0);
      qvtds(&rig->com);
      ADD_FAILURE() << "qvtds returned with rc " << rig->com.rc;
    });
  }
  EXPECT_EQ(noSpool.rc, kRcSpool);
  EXPECT_EQ(noMemory.rc, kRcMemory);
  const auto msgs = noMemory.procMessages();
  ASSERT_FALSE(msgs.empty());
  EXPECT_EQ(msgs[0].first, kMsgSetupMemory);
}

}  // namespace
}  // namespace qvt
