// The output set-up and the writers of OUT=, OUTEST=, OUTFOR= and
// OUTCOMPONENT=, written through a process host into a folder and read back
// cell by cell against what was put in.
#include "output/qvtds.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "output_rig.hpp"
#include "smoothing/esmfor.hpp"

namespace qvt {
namespace {

using testing::day;
using testing::monthEnd;
using testing::readBack;
using testing::Rig;
using testing::sameCell;

const std::vector<double> kUnits = {12, 15, 14, 18, 17, 21, 20, 24, 23, 27, 26, 30};

// Twelve months of east, two of west.
std::string salesCsv() {
  std::string s = "region,date,units,price\n";
  for (int m = 1; m <= 12; ++m)
    s += "east,2020-" + std::string(m < 10 ? "0" : "") + std::to_string(m) + "-01," +
         std::to_string(static_cast<int>(kUnits[static_cast<std::size_t>(m - 1)])) + ",1.5\n";
  s += "west,2020-01-01,3,2\nwest,2020-02-01,4,2\n";
  return s;
}

// Month starts from January 2020 on.
std::vector<double> months(int n) {
  std::vector<double> v;
  for (int k = 0; k < n; ++k) v.push_back(day(2020 + k / 12, static_cast<unsigned>(k % 12 + 1), 1));
  return v;
}
double monthEndOf(int k) { return monthEnd(2020 + k / 12, static_cast<unsigned>(k % 12 + 1)); }

// A fitted model and its forecasts of kUnits, `lead` periods on.
struct Fit {
  WINMODEL* esm = nullptr;
  std::vector<double> date, actual, predicted, residual, upper, lower, std, level, trend, season;
  FOR_OUT fore;
  Fit(int method, int lead) {
    const long n = static_cast<long>(kUnits.size());
    INTERVAL intv;
    EXPECT_EQ(zintic(45, &intv), 0);
    EXPECT_EQ(esmint(kUnits.data(), n, &intv, day(2020, 1, 1), 0, 0, method, 0, &esm), 0);
    EXPECT_GE(esmfit(esm), 0);
    for (auto* v : {&date, &actual, &predicted, &residual, &upper, &lower, &std, &level, &trend, &season})
      v->assign(static_cast<std::size_t>(n + lead), kMissing);
    fore = FOR_OUT{0.05,          n + lead,        date.data(),  actual.data(), predicted.data(),
                   residual.data(), upper.data(), lower.data(), std.data(),    level.data(),
                   trend.data(),  season.data()};
    EXPECT_EQ(esmprd(esm, kUnits.data(), n, day(2020, 1, 1), 0, 0.05, lead, &fore), 0);
    date = months(static_cast<int>(n + lead));
    fore.date = date.data();
  }
  ~Fit() { esmtrm(esm); }
};

std::vector<std::string> names(const testing::Table& t) {
  std::vector<std::string> r;
  for (const auto& v : t.vars) r.push_back(v.name);
  return r;
}

TEST(OutputWriters, RoundTripThroughFiles) {
  Rig rig(salesCsv());
  const int lead = 3;
  Fit linear(kEsmLinear, lead), dbl(kEsmDouble, lead);
  std::vector<double> outId = months(12 + lead), outY = kUnits;
  outY.insert(outY.end(), {31, 32.5, 34.25});
  std::string display;
  rig.step([&] {
    rig.open({"out", "outest", "outfor", "outcomp", "outsum"}, {"units"}, true, lead);
    QVTCOM& com = rig.com;
    qvtds(&com);
    ASSERT_EQ(com.error, 0);
    EXPECT_EQ(com.rc, 0);
    EXPECT_EQ(com.in.enobs, 14);          // grouped: min(records, 16384)
    EXPECT_FALSE(com.infile);              // one series: no spool
    EXPECT_FALSE(com.ds.outsum.fileid);    // left out, with a note
    display = com.ds.data.display.str();
    EXPECT_FALSE(display.empty());

    // The input bindings: series into data.buf, the ID into id.val.
    ASSERT_EQ(hostByNext(*com.host, com.ds.data.fileid), 1);
    for (int k = 0; k < 12; ++k) {
      ASSERT_EQ(hostByGet(*com.host, com.ds.data.fileid), 1);
      ASSERT_EQ(hostRowGet(*com.host, com.ds.data.fileid), 0);
      EXPECT_EQ(com.ds.data.buf[0], kUnits[static_cast<std::size_t>(k)]);
      EXPECT_EQ(com.id.val, day(2020, static_cast<unsigned>(k + 1), 1));
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

  // OUT=: BY variable, the ID at the end of its month, the series.
  const auto out = readBack(rig.dir.path(), "out");
  EXPECT_EQ(names(out), (std::vector<std::string>{"region", "date", "units"}));
  EXPECT_EQ(out.vars[1].format, "MONYY7.");
  ASSERT_EQ(out.num.size(), 15u);
  for (std::size_t t = 0; t < 15; ++t) {
    EXPECT_EQ(out.str(t, "region"), "east");
    EXPECT_EQ(out.at(t, "date"), monthEndOf(static_cast<int>(t))) << t;
    EXPECT_EQ(out.at(t, "units"), outY[t]);
  }

  // OUTFOR=: one row per period of the used range and the forecasts.
  const auto of = readBack(rig.dir.path(), "outfor");
  EXPECT_EQ(names(of), (std::vector<std::string>{"region", "_NAME_", "date", "ACTUAL", "PREDICT",
                                                 "LOWER", "UPPER", "ERROR", "STD"}));
  EXPECT_EQ(of.label, h.msgText(kMsgProc, kLblOutfor, std::vector<MsgArg>{display}));
  EXPECT_EQ(of.vars[2].label, "Month of sale");
  EXPECT_EQ(of.vars[2].format, "MONYY7.");
  const char* forCols[] = {"_NAME_", "ACTUAL", "PREDICT", "LOWER", "UPPER", "ERROR", "STD"};
  const int forLabels[] = {4101, 4103, 4104, 4105, 4106, 4107, 4108};
  for (int i = 0; i < 7; ++i) {
    EXPECT_FALSE(lbl(forLabels[i]).empty());
    EXPECT_EQ(of.vars[static_cast<std::size_t>(of.col(forCols[i]))].label, lbl(forLabels[i])) << forCols[i];
  }
  EXPECT_EQ(of.vars[1].type, VarType::Character);
  ASSERT_EQ(of.num.size(), 15u);
  const FOR_OUT& f = linear.fore;
  for (std::size_t t = 0; t < 15; ++t) {
    SCOPED_TRACE(t);
    EXPECT_EQ(of.str(t, "region"), "east");
    EXPECT_EQ(of.str(t, "_NAME_"), "units");
    EXPECT_EQ(of.at(t, "date"), f.date[t]);
    EXPECT_TRUE(sameCell(of.at(t, "ACTUAL"), f.actual[t]));
    EXPECT_TRUE(sameCell(of.at(t, "PREDICT"), f.predicted[t]));
    EXPECT_TRUE(sameCell(of.at(t, "LOWER"), f.lower[t]));
    EXPECT_TRUE(sameCell(of.at(t, "UPPER"), f.upper[t]));
    EXPECT_TRUE(sameCell(of.at(t, "ERROR"), f.residual[t]));
    EXPECT_TRUE(sameCell(of.at(t, "STD"), f.std[t]));
  }
  EXPECT_FALSE(wzmis(of.at(14, "PREDICT")));  // the forecasts are there
  EXPECT_TRUE(wzmis(of.at(14, "ACTUAL")));

  // OUTEST=: LEVEL and TREND of the linear model, then WEIGHT of double smoothing.
  const auto oe = readBack(rig.dir.path(), "outest");
  EXPECT_EQ(names(oe), (std::vector<std::string>{"region", "_NAME_", "_TRANSFORM_", "_MODEL_", "_PARM_",
                                                 "_EST_", "_STDERR_", "_TVALUE_", "_PVALUE_"}));
  EXPECT_EQ(oe.label, h.msgText(kMsgProc, kLblOutest, std::vector<MsgArg>{display}));
  for (int n = 4001; n <= 4008; ++n)
    EXPECT_EQ(oe.vars[static_cast<std::size_t>(n - 4000)].label, lbl(n));
  ASSERT_EQ(oe.num.size(), 3u);
  const struct {
    const char* model;
    const char* parm;
    const WINMODEL* esm;
    std::size_t i;
  } est[] = {{"LINEAR", "LEVEL", linear.esm, 0}, {"LINEAR", "TREND", linear.esm, 1}, {"DOUBLE", "WEIGHT", dbl.esm, 0}};
  for (std::size_t r = 0; r < 3; ++r) {
    SCOPED_TRACE(r);
    EXPECT_EQ(oe.str(r, "_NAME_"), "units");
    EXPECT_EQ(oe.str(r, "_TRANSFORM_"), "NONE");
    EXPECT_EQ(oe.str(r, "_MODEL_"), est[r].model);
    EXPECT_EQ(oe.str(r, "_PARM_"), est[r].parm);
    const MODELPEST& p = est[r].esm->pest;
    EXPECT_TRUE(sameCell(oe.at(r, "_EST_"), p.parms[est[r].i]));
    EXPECT_TRUE(sameCell(oe.at(r, "_STDERR_"), p.stderr_[est[r].i]));
    EXPECT_TRUE(sameCell(oe.at(r, "_TVALUE_"), p.tvals[est[r].i]));
    EXPECT_TRUE(sameCell(oe.at(r, "_PVALUE_"), p.pvalue[est[r].i]));
    EXPECT_GT(oe.at(r, "_EST_"), 0.0);
    EXPECT_LT(oe.at(r, "_EST_"), 1.0);
  }

  // OUTCOMPONENT=: the components beside actuals and predictions.
  const auto oc = readBack(rig.dir.path(), "outcomp");
  EXPECT_EQ(names(oc), (std::vector<std::string>{"region", "_NAME_", "_TRANSFORM_", "_MODEL_", "date", "ACTUAL",
                                                 "PREDICT", "LEVEL", "TREND", "SEASON", "ERROR"}));
  EXPECT_EQ(oc.label, h.msgText(kMsgProc, kLblOutcomp, std::vector<MsgArg>{display}));
  EXPECT_EQ(oc.vars[static_cast<std::size_t>(oc.col("LEVEL"))].label, lbl(4605));
  EXPECT_EQ(oc.vars[static_cast<std::size_t>(oc.col("_MODEL_"))].label, lbl(4611));
  ASSERT_EQ(oc.num.size(), 15u);
  for (std::size_t t = 0; t < 15; ++t) {
    SCOPED_TRACE(t);
    EXPECT_EQ(oc.str(t, "_MODEL_"), "LINEAR");
    EXPECT_EQ(oc.at(t, "date"), f.date[t]);
    EXPECT_TRUE(sameCell(oc.at(t, "ACTUAL"), f.actual[t]));
    EXPECT_TRUE(sameCell(oc.at(t, "PREDICT"), f.predicted[t]));
    EXPECT_TRUE(sameCell(oc.at(t, "LEVEL"), f.level[t]));
    EXPECT_TRUE(sameCell(oc.at(t, "TREND"), f.trend[t]));
    EXPECT_TRUE(sameCell(oc.at(t, "SEASON"), f.season[t]));
    EXPECT_TRUE(sameCell(oc.at(t, "ERROR"), f.residual[t]));
  }
  EXPECT_FALSE(wzmis(oc.at(3, "LEVEL")));

  // Data sets not asked for cost nothing: no file of theirs.
  for (const char* m : {"outstat.csv", "outtrend.csv", "outseason.csv"}) EXPECT_FALSE(rig.dir.exists(m)) << m;
}

TEST(OutputWriters, NoOutAllKeepsTheForecastRowsAndNoIdVariableNamesTheTime) {
  Rig rig(salesCsv());
  const int lead = 3;
  Fit simple(kEsmSimple, lead);
  std::vector<double> outId = months(12 + lead), outY = kUnits;
  outY.insert(outY.end(), {7, 8, 9});
  rig.step([&] {
    rig.open({"out", "outfor", "outcomp"}, {"units"}, false, lead);
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
  EXPECT_EQ(names(out), (std::vector<std::string>{"TIME", "units"}));
  ASSERT_EQ(out.num.size(), 3u);
  for (std::size_t r = 0; r < 3; ++r) {
    EXPECT_EQ(out.at(r, "TIME"), monthEndOf(static_cast<int>(12 + r)));
    EXPECT_EQ(out.at(r, "units"), outY[12 + r]);
  }
  const auto of = readBack(rig.dir.path(), "outfor");
  EXPECT_EQ(of.vars[1].name, "_TIMEID_");
  EXPECT_EQ(of.vars[1].label, rig.host->msgText(kMsgProc, kLblTimeId));
  ASSERT_EQ(of.num.size(), 3u);
  for (std::size_t r = 0; r < 3; ++r) {
    EXPECT_EQ(of.at(r, "_TIMEID_"), simple.date[12 + r]);
    EXPECT_TRUE(sameCell(of.at(r, "PREDICT"), simple.predicted[12 + r]));
  }
  EXPECT_EQ(readBack(rig.dir.path(), "outcomp").num.size(), 3u);
  EXPECT_FALSE(rig.dir.exists("outest.csv"));
}

TEST(OutputSetup, ExpectedRecords) {
  std::string big = "region,date,units,price\n";
  for (int i = 0; i < 20000; ++i) big += "a,2020-01-01," + std::to_string(i) + ",1\n";
  const std::string one = "region,date,units,price\na,2020-01-01,1,1\n";
  struct Case {
    std::string csv;
    bool by;
    std::size_t memsize;
    long enobs;
  } const cases[] = {
      {one, false, 0, 4096},          // one record, no BY: at least 2, so 4096
      {salesCsv(), false, 0, 14},     // no BY: the records
      {salesCsv(), true, 0, 14},      // BY: min(records, 16384)
      {big, true, 0, 16384},          // BY: at most 16384
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
      EXPECT_EQ(rig.com.in.enobs, c.enobs);
      EXPECT_TRUE(rig.com.tpool);
      EXPECT_EQ(rig.com.rid2n, 0);
    });
  }
}

TEST(OutputSetup, InputThatCantBeReadIsRefused) {
  Rig rig(salesCsv());
  rig.step([&] {
    rig.open({"out"}, {"units"}, false, 0);
    rig.com.ds.data.fileid = rig.com.ds.out.fileid;  // an output where the input should be
    nobs(&rig.com);
    EXPECT_EQ(rig.com.rc, kRcInputUnusable);
    EXPECT_EQ(rig.com.error, 1);
  });
}

TEST(OutputSetup, SeveralSeriesOpenTheSpoolAndBindEachSeries) {
  Rig rig(salesCsv());
  rig.step([&] {
    rig.open({"out"}, {"units", "price"}, true, 2);
    QVTCOM& com = rig.com;
    qvtds(&com);
    ASSERT_EQ(com.error, 0);
    EXPECT_TRUE(com.infile);
    EXPECT_TRUE(com.outfile);
    EXPECT_NE(com.outsum.forlead, nullptr);
    ASSERT_EQ(hostByNext(*com.host, com.ds.data.fileid), 1);
    ASSERT_EQ(hostByGet(*com.host, com.ds.data.fileid), 1);
    ASSERT_EQ(hostRowGet(*com.host, com.ds.data.fileid), 0);
    EXPECT_EQ(com.ds.data.buf[0], 12.0);
    EXPECT_EQ(com.ds.data.buf[1], 1.5);
    const auto v = com.host->dsVars(com.ds.out.fileid);
    ASSERT_EQ(v.size(), 4u);
    EXPECT_EQ(v[0].name, "region");
    EXPECT_EQ(v[1].name, "date");
    EXPECT_EQ(v[1].label, "");  // the input's description, its format replaced
    EXPECT_EQ(v[1].format, "MONYY7.");
    EXPECT_EQ(v[2].name, "units");
    EXPECT_EQ(v[3].name, "price");
  });
  EXPECT_EQ(rig.rc, 0) << rig.log.str();
}

TEST(OutputSetup, SpoolThatCantBeMadeEndsTheStep) {
  testing::Rig rig(salesCsv(), 0, "/nonexistent/qvt/spool/folder");
  rig.step([&] {
    rig.open({"out"}, {"units", "price"}, false, 0);
    qvtds(&rig.com);
    ADD_FAILURE() << "qvtds returned";
  });
  EXPECT_EQ(rig.rc, kRcSpool);
}

TEST(OutputSetup, OutOfMemoryEndsTheStepBeforeAnyData) {
  Rig rig(salesCsv(), 8);  // not even the row buffers
  rig.step([&] {
    rig.open({"outfor"}, {"units"}, false, 0);
    qvtds(&rig.com);
    ADD_FAILURE() << "qvtds returned with rc " << rig.com.rc;
  });
  EXPECT_EQ(rig.rc, kRcMemory);
  const auto msgs = rig.procMessages();
  ASSERT_FALSE(msgs.empty());
  EXPECT_EQ(msgs[0].first, kMsgSetupMemory);
}

}  // namespace
}  // namespace qvt
