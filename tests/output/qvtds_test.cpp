// The output set-up and the writers of OUT=, OUTEST=, OUTFOR= and
// OUTCOMPONENT=, run as a step of a process host over a folder and read back
// against what was put in. The end-to-end runs (tests/e2e/run) compare the
// values of OUT=, OUTFOR= and OUTEST= by column name, with BY groups, BACK=
// and NOOUTALL; what they can't see is checked here: the order, labels and
// formats of the columns, OUTCOMPONENT=, a step without an ID, the expected
// records, and the failures of the set-up.
#include "output/qvtds.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <iterator>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include "../run/test_host.hpp"
#include "smoothing/esmtypes.hpp"

namespace qvt {
namespace {

using testing::Table;
using Names = std::vector<std::string>;

// Day number from 1960-01-01 of day d of the month m months after January
// 2020, by the calendar of <chrono>; day 0 is the last day of the month before.
double day(int m, int d) { return double(testing::day(2020 + m / 12, m % 12 + 1, 1) + d - 1); }

// Twelve months of east, two of west.
std::string salesCsv() {
  std::string s = "region,date,units,price\n";
  for (int m = 10; m <= 21; ++m)
    s += "east,2020-" + std::to_string(m + 91).substr(1) + "-01," + std::to_string(m) + ",1.5\n";
  return s + "west,2020-01-01,3,2\nwest,2020-02-01,4,2\n";
}

const testing::Column& col(const Table& t, const std::string& name) {
  for (const auto& c : t)
    if (c.info.name == name) return c;
  throw std::runtime_error("no column " + name);
}

Names names(const Table& t) {
  Names r;
  for (const auto& c : t) r.push_back(c.info.name);
  return r;
}

// The step: input "sales" with the BY variable region, the ID date and the
// series units and price; outputs by option name into members of that name.
struct Rig {
  testing::TempDir dir;
  std::ostringstream log;
  std::unique_ptr<ProcessHost> host;
  QVTCOM com;
  std::vector<VAR> vars;
  int bylist[1] = {0};
  int rc = -1;

  explicit Rig(const std::string& csv, std::size_t memsize = 0, const std::string& tmpDir = "") {
    dir.write("sales.csv", csv);
    HostConfig cfg = testing::jsonlConfig(log, {"work=" + dir.path()});
    cfg.memsize = memsize;
    cfg.tmpDir = tmpDir.empty() ? dir.path() : tmpDir;
    host = std::make_unique<ProcessHost>(cfg);
    EXPECT_EQ(host->init(), 0);
  }

  // Fills com as the statements would: the series by name, ID date with its
  // label, BY region, LEAD=, interval MONTH with ALIGN=END and format MONYY7.
  void open(const Names& outputs, const Names& series, bool byRegion, int lead) {
    Host& h = *host;
    auto& ds = com.ds;
    const std::map<std::string, DATASETS*> slot = {
        {"out", &ds.out}, {"outest", &ds.outest}, {"outfor", &ds.outfor}, {"outcomp", &ds.outcomp},
        {"outsum", &ds.outsum}, {"outstat", &ds.outstat}};
    com.host = &h;
    ASSERT_EQ(hostDsOpen(h, "sales", DsMode::Input, &ds.data.fileid), 0);
    for (const auto& o : outputs) ASSERT_EQ(hostDsOpen(h, o, DsMode::Output, &slot.at(o)->fileid), 0);
    com.cpool = hostPoolCreate(h, 0, 1024, 6);
    vars.resize(series.size());
    for (std::size_t i = 0; i < series.size(); ++i)
      vars[i].dsvarno = hostVarFind(h, ds.data.fileid, series[i]);
    com.nvars = static_cast<int>(series.size());
    com.vars = vars.data();
    com.id.dsvarno = hostVarFind(h, ds.data.fileid, "date");
    com.id.name.set("date");
    com.id.label.set("Month of sale");
    if (byRegion) {
      bylist[0] = hostVarFind(h, ds.data.fileid, "region");
      com.nby = 1;
      com.bylist = bylist;
      const ByVar bv[] = {{bylist[0], false}};
      h.bySet(ds.data.fileid, bv, false);
    }
    com.istmt.lead = lead;
    ASSERT_EQ(zintic(45, &com.istmt.intv), 0);
    com.istmt.align = 'E';
    com.istmt.format.set("MONYY");
    com.istmt.fmtw1 = 7;
  }

  void step(const std::function<void()>& body) { rc = hostRunStep(*host, body); }

  // Message numbers of group 743 in the log.
  std::vector<int> procMessages() const {
    std::vector<int> r;
    for (const auto& j : testing::jsonLines(log.str()))
      if (j.at("group") == 743) r.push_back(j.at("number").get<int>());
    return r;
  }

  // A written data set, through a host of its own, and its label.
  Table read(const std::string& member, std::string* label = nullptr) const {
    std::ostringstream readLog;
    ProcessHost h(testing::jsonlConfig(readLog, {"work=" + dir.path()}));
    EXPECT_EQ(h.init(), 0);
    DsFacts f;
    Table t = testing::readTable(h, member, &f);
    if (label) *label = f.label;
    return t;
  }
};

// A forecast of fifteen months, cell t of column k being 1000 k + t, the
// dates the month starts, in the order of FOR_OUT: date, actual, predicted,
// residual, upper, lower, std, level, trend, season.
struct Forecast {
  std::vector<std::vector<double>> c = std::vector<std::vector<double>>(10, std::vector<double>(15));
  FOR_OUT fore;
  Forecast() {
    for (std::size_t k = 0; k < 150; ++k) c[k / 15][k % 15] = 1000.0 * double(k / 15) + double(k % 15);
    for (int t = 0; t < 15; ++t) c[0][t] = day(t, 1);
    fore = FOR_OUT{0.05,        15,          c[0].data(), c[1].data(), c[2].data(), c[3].data(),
                   c[4].data(), c[5].data(), c[6].data(), c[7].data(), c[8].data(), c[9].data()};
  }
  // The column of an output variable, from row `from` on.
  std::vector<double> of(const std::string& name, int from = 0) const {
    const Names k = {"date", "ACTUAL", "PREDICT", "ERROR", "UPPER",
                     "LOWER", "STD", "LEVEL", "TREND", "SEASON"};
    const auto& v = c.at(static_cast<std::size_t>(std::find(k.begin(), k.end(), name) - k.begin()));
    return std::vector<double>(v.begin() + from, v.end());
  }
};

TEST(OutputWriters, RoundTripThroughFiles) {
  Rig rig(salesCsv());
  Forecast f;
  WINMODEL esm;  // the estimates of LINEAR, the p value of TREND not there
  esm.spec.code = kModelLinear;
  esm.pest.parms = {0.25, 0.125};
  esm.pest.tvals = {3, 4};
  esm.pest.pvalue = {0.5};
  std::string display;
  rig.step([&] {
    rig.open({"out", "outest", "outfor", "outcomp", "outsum"}, {"units"}, true, 3);
    QVTCOM& com = rig.com;
    qvtds(&com);
    ASSERT_EQ(com.error, 0);
    EXPECT_FALSE(com.infile);            // one series: no spool
    display = com.ds.data.display.str();
    // The input bindings: the series into data.buf, the ID into id.val.
    ASSERT_EQ(hostByNext(*com.host, com.ds.data.fileid), 1);
    ASSERT_EQ(hostByGet(*com.host, com.ds.data.fileid), 1);
    ASSERT_EQ(hostRowGet(*com.host, com.ds.data.fileid), 0);
    EXPECT_EQ(com.ds.data.buf[0], 10.0);
    EXPECT_EQ(com.id.val, day(0, 1));
    com.out.id = f.c[0].data();
    com.out.y = f.c[1].data();
    com.out.tobs = 15;
    com.current.var.set("units");
    com.current.trnsname.set("NONE");
    com.current.modelcode = kModelLinear;
    qvtdout(&com);
    qvtdest(&com, &esm, nullptr);
    qvtdest(&com, nullptr, nullptr);  // no model: no row
    qvtdfor(&com, &f.fore);
    qvtdcmp(&com, &f.fore);
  });
  ASSERT_EQ(rig.rc, 0) << rig.log.str();
  const Host& h = *rig.host;
  const auto lbl = [&](int n) { return h.msgText(kMsgProc, n); };
  const auto dsLabel = [&](int n) { return h.msgText(kMsgProc, n, std::vector<MsgArg>{display}); };

  // OUT=: the ID at the end of its month, in the format asked for (the
  // values of the series by name: e2e run/simple_one).
  const auto out = rig.read("out");
  EXPECT_EQ(names(out), (Names{"region", "date", "units"}));
  EXPECT_EQ(out[1].info.format, "MONYY7.");
  for (int t = 0; t < 15; ++t) EXPECT_EQ(out[1].num.at(t), day(t + 1, 0)) << t;

  // OUTFOR= and OUTCOMPONENT=: every period of the range, the forecasts
  // beside the components, in their order and with their labels.
  std::string forLabel, cmpLabel, estLabel;
  const auto of = rig.read("outfor", &forLabel), oc = rig.read("outcomp", &cmpLabel);
  EXPECT_EQ(names(of),
            (Names{"region", "_NAME_", "date", "ACTUAL", "PREDICT", "LOWER", "UPPER", "ERROR", "STD"}));
  EXPECT_EQ(names(oc), (Names{"region", "_NAME_", "_TRANSFORM_", "_MODEL_", "date", "ACTUAL", "PREDICT",
                              "LEVEL", "TREND", "SEASON", "ERROR"}));
  EXPECT_EQ(forLabel, dsLabel(kLblOutfor));
  EXPECT_EQ(cmpLabel, dsLabel(kLblOutcomp));
  EXPECT_EQ(of[2].info.label, "Month of sale");  // the ID keeps its own label
  EXPECT_EQ(of[2].info.format, "MONYY7.");
  for (int i = 3; i < 9; ++i) EXPECT_EQ(of[i].info.label, lbl(4100 + i)) << i;
  EXPECT_FALSE(lbl(4108).empty());
  EXPECT_EQ(oc[7].info.label, lbl(4605));
  for (const auto* t : {&of, &oc}) {
    for (const auto& c : *t) {
      if (c.info.type != VarType::Numeric) continue;
      EXPECT_EQ(c.num, f.of(c.info.name)) << c.info.name;
    }
  }
  EXPECT_EQ(col(oc, "_MODEL_").text, Names(15, "LINEAR"));

  // OUTEST=: a row per weight of the model, with its statistics.
  const auto oe = rig.read("outest", &estLabel);
  EXPECT_EQ(names(oe), (Names{"region", "_NAME_", "_TRANSFORM_", "_MODEL_", "_PARM_", "_EST_", "_STDERR_",
                              "_TVALUE_", "_PVALUE_"}));
  EXPECT_EQ(estLabel, dsLabel(kLblOutest));
  for (int n = 4001; n <= 4008; ++n) EXPECT_EQ(oe[n - 4000].info.label, lbl(n));
  EXPECT_EQ(col(oe, "_TRANSFORM_").text, Names(2, "NONE"));
  EXPECT_EQ(col(oe, "_TVALUE_").num, (std::vector<double>{3, 4}));
  EXPECT_EQ(col(oe, "_PVALUE_").num.at(0), 0.5);
  EXPECT_TRUE(wzmis(col(oe, "_PVALUE_").num.at(1)));
}

// OUTSUM= and OUTSTAT= columns in order (their values: e2e run/summary_stat):
// the forecast columns and one _LEADi_ per lead only with LEAD above 0.
TEST(OutputSetup, SummaryAndStatisticsColumns) {
  const auto words = [](const std::string& s) {
    std::istringstream in(s);
    return Names(std::istream_iterator<std::string>(in), {});
  };
  const Names stat = words("_NAME_ _REGION_ DFE N NOBS NMISSA NMISSP NPARMS TSS SST SSE MSE RMSE UMSE URMSE MAPE "
      "MAE RSQUARE ADJRSQ AADJRSQ RWRSQ AIC AICC SBC APC MAXERR MINERR MAXPE MINPE ME MPE MDAPE GMAPE MINPPE "
      "MAXPPE MPPE MAPPE MDAPPE GMAPPE MINSPE MAXSPE MSPE SMAPE MDASPE GMASPE MINRE MAXRE MRE MRAE MDRAE GMRAE "
      "MASE MINAPES MAXAPES MAPES MDAPES GMAPES");
  for (int lead : {0, 2}) {
    Rig rig(salesCsv());
    rig.step([&] {
      rig.open({"outsum", "outstat"}, {"units"}, false, lead);
      qvtds(&rig.com);
    });
    const auto os = rig.read("outsum"), st = rig.read("outstat");
    EXPECT_EQ(names(os), words("_NAME_ _STATUS_ NOBS N NMISS MIN MAX MEAN STDDEV" +
                               std::string(lead > 0 ? " PREDICT LOWER UPPER STD _LEAD1_ _LEAD2_" : "")));
    EXPECT_EQ(names(st), stat);
    EXPECT_EQ(os.back().info.label, lead > 0 ? rig.host->msgText(kMsgProc, kLblLead, std::vector<MsgArg>{2LL})
                                             : rig.host->msgText(kMsgProc, 4216));
  }
}

TEST(OutputWriters, NoOutAllKeepsTheForecastRowsAndNoIdVariableNamesTheTime) {
  Rig rig(salesCsv());
  Forecast f;
  f.fore.season = nullptr;  // a model without a season: missing
  WINMODEL esm;
  rig.step([&] {
    rig.open({"out", "outfor", "outcomp"}, {"units"}, false, 3);
    QVTCOM& com = rig.com;
    com.id.dsvarno = 0;  // no ID statement
    com.op.nooutall = 1;
    qvtds(&com);
    ASSERT_EQ(com.error, 0);
    com.out.id = f.c[0].data();
    com.out.y = f.c[1].data();
    com.out.tobs = 15;
    qvtdout(&com);
    qvtdfor(&com, &f.fore);
    qvtdcmp(&com, &f.fore);
    qvtdest(&com, &esm, nullptr);  // OUTEST= wasn't asked for: nothing
  });
  ASSERT_EQ(rig.rc, 0) << rig.log.str();
  EXPECT_TRUE(rig.procMessages().empty());
  const auto out = rig.read("out"), of = rig.read("outfor"), oc = rig.read("outcomp");
  EXPECT_EQ(names(out), (Names{"TIME", "units"}));
  EXPECT_EQ(out[0].num, (std::vector<double>{day(13, 0), day(14, 0), day(15, 0)}));
  EXPECT_EQ(of[1].info.name, "_TIMEID_");
  EXPECT_EQ(of[1].info.label, rig.host->msgText(kMsgProc, kLblTimeId));
  EXPECT_EQ(of[1].num, f.of("date", 12));  // the values by name: e2e run/nooutall_lower
  EXPECT_EQ(col(oc, "LEVEL").num, f.of("LEVEL", 12));
  for (double s : col(oc, "SEASON").num) EXPECT_TRUE(wzmis(s));
}

TEST(OutputSetup, ExpectedRecords) {
  std::string big = "region,date,units,price\n";
  for (int i = 0; i < 20000; ++i) big += "a,2020-01-01," + std::to_string(i) + ",1\n";
  const std::string one = "region,date,units,price\na,2020-01-01,1,1\n";
  struct Case { std::string csv; bool by; std::size_t memsize; long enobs; };
  const Case cases[] = {
      {one, false, 0, 4096},       // one record, no BY: at least 2, so 4096
      {salesCsv(), false, 0, 14},  // no BY: the records
      {salesCsv(), true, 0, 14},   // BY: min(records, 16384)
      {big, true, 0, 16384},
      {big, false, 0, 20000},
      {big, false, 100000, 4096},  // not room for 20000 cells: 4096
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(::testing::Message() << c.csv.size() << " bytes, by " << c.by << ", memsize " << c.memsize);
    Rig rig(c.csv, c.memsize);
    rig.step([&] {
      rig.open({}, {"units"}, c.by, 0);
      nobs(&rig.com);
      EXPECT_EQ(rig.com.error, 0);
      EXPECT_EQ(rig.com.in.enobs, c.enobs);
      EXPECT_TRUE(rig.com.tpool);
    });
  }
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
  ASSERT_FALSE(noMemory.procMessages().empty());
  EXPECT_EQ(noMemory.procMessages()[0], kMsgSetupMemory);
}

}  // namespace
}  // namespace qvt
