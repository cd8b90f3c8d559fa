// What a minimal step leaves in QVTCOM, what the options set, the flags
// derived from PRINT= and PLOT=, BY variables, SORTNAMES, DEBUG, and the
// code tables of names and labels.
#include <gtest/gtest.h>

#include <string>

#include "host/catalog.hpp"
#include "qvtpars_fixture.hpp"
#include "run/missing.hpp"
#include "statements/codes.hpp"
#include "statements/qvtpcodes.hpp"

namespace qvt {
namespace {

using testing::Step;

// The catalogue's label of a number, as qvtpars must have copied it.
std::string label(int number) {
  const CatalogEntry* e = catalogFind(kMsgProc, number);
  return e ? std::string(e->text) : std::string();
}

TEST(QvtparsDefaults, MinimalStep) {
  Step s("qvt data=sales; forecast sales;");
  ASSERT_FALSE(s.exited);
  const QVTCOM& c = *s.com;
  EXPECT_EQ(s.rc, 0);
  EXPECT_EQ(c.error, 0);
  EXPECT_EQ(s.msgs().size(), 0u);
  EXPECT_TRUE(c.cpool);
  EXPECT_TRUE(c.dpool);
  EXPECT_EQ(c.nfor, 1);
  ASSERT_EQ(c.nvars, 1);

  // Procedure statement.
  EXPECT_EQ(c.istmt.lead, 12);
  EXPECT_EQ(c.istmt.back, 0);
  EXPECT_EQ(c.istmt.startsum, 1);
  EXPECT_EQ(c.maxerror, 25);
  EXPECT_EQ(c.op.nooutall + c.op.sortnames + c.op.debug + c.op.debugd + c.op.debugx, 0);
  EXPECT_EQ(c.spectrum.alpha, 0.5);
  EXPECT_EQ(c.spectrum.meanAdj, 0);
  EXPECT_EQ(c.print.none, 1);
  EXPECT_EQ(c.print.summaryonly + c.print.overallonly, 0);
  EXPECT_EQ(c.plot.none, 1);
  EXPECT_EQ(c.trend.request, 0);
  EXPECT_EQ(c.nby, 0);

  // Data sets: the input with its facts; no output that wasn't written.
  EXPECT_TRUE(c.ds.data.fileid);
  EXPECT_EQ(c.ds.data.lib.str(), "WORK");
  EXPECT_EQ(c.ds.data.mem.str(), "sales");
  EXPECT_FALSE(c.ds.data.display.empty());
  for (const DATASETS* d : {&c.ds.out, &c.ds.outest, &c.ds.outfor, &c.ds.outcomp, &c.ds.outsum, &c.ds.outstat,
                            &c.ds.outtrend, &c.ds.outseason, &c.ds.outprocinfo})
    EXPECT_FALSE(d->fileid);

  // No ID statement: observation numbers, no cycle, no frame.
  EXPECT_EQ(c.istmt.specified, 0);
  EXPECT_EQ(c.id.dsvarno, 0);
  EXPECT_EQ(c.istmt.intv.units, 'o');
  EXPECT_EQ(c.istmt.align, 'B');
  EXPECT_LT(c.istmt.nseasons, 2);
  EXPECT_TRUE(wzmis(c.istmt.start));
  EXPECT_TRUE(wzmis(c.istmt.end));
  EXPECT_EQ(c.istmt.startunits, 0);
  EXPECT_EQ(c.istmt.acc.code, 0);
  EXPECT_EQ(c.istmt.acc.name.str(), "NONE");
  EXPECT_EQ(c.istmt.setmiss.code, 0);
  EXPECT_TRUE(wzmis(c.istmt.setmiss.value));
  EXPECT_EQ(c.istmt.zeromiss.code, 0);
  EXPECT_EQ(c.istmt.userfmt, 0);

  // The series.
  const VAR& v = c.vars[0];
  EXPECT_EQ(v.dsvarno, 2);
  EXPECT_EQ(v.name.str(), "sales");
  EXPECT_EQ(v.fstmt, &c.fstmt[0]);
  EXPECT_EQ(c.outsum.maxlen, 5);

  // The FORECAST statement. Without a cycle BEST is BESTN.
  const FORSTMT& f = c.fstmt[0];
  EXPECT_EQ(f.model.code, kModelBestN);
  EXPECT_EQ(f.model.specified, 0);
  EXPECT_EQ(f.model.name.str(), "BESTN");
  EXPECT_EQ(f.model.label.str(), label(1021));
  EXPECT_EQ(f.select.code, 3);
  EXPECT_EQ(f.select.name.str(), "RMSE");
  EXPECT_EQ(f.use.code, kUsePredict);
  EXPECT_EQ(f.use.name.str(), "PREDICT");
  EXPECT_EQ(f.use.label.str(), label(1401));
  EXPECT_EQ(f.transform.code, kTrnsNone);
  EXPECT_EQ(f.transform.name.str(), "NONE    ");
  EXPECT_EQ(f.transform.label.str(), label(1500));
  EXPECT_EQ(f.transform.parm, 0);
  EXPECT_EQ(f.transform.median, 0);
  EXPECT_EQ(f.alpha, 0.05);
  EXPECT_EQ(f.holdout, 0);
  EXPECT_EQ(f.holdoutpct, 0);
  EXPECT_EQ(f.seasontest.siglevel, 0.01);
  EXPECT_EQ(f.seasontest.none, 0);
  EXPECT_EQ(f.acc.code, 0);
  EXPECT_EQ(f.setmiss.code, 0);
  EXPECT_TRUE(wzmis(f.setmiss.value));
  EXPECT_EQ(f.setmiss.specified, 0);
  EXPECT_EQ(f.zeromiss.code, 0);
  EXPECT_EQ(f.replacemissing + f.replaceback, 0);
  EXPECT_EQ(f.intermittent, 2.0);
  EXPECT_EQ(f.nbackcast, -1);
}

TEST(QvtparsDefaults, IdStatementAndItsFrame) {
  Step s("qvt data=sales lead=0; id date interval=month; forecast sales;");
  ASSERT_FALSE(s.exited);
  const QVTCOM& c = *s.com;
  EXPECT_EQ(c.istmt.specified, 1);
  EXPECT_EQ(c.id.dsvarno, 1);
  EXPECT_EQ(c.id.name.str(), "date");
  EXPECT_NE(c.id.fcode, 99);  // the CSV's date column carries a date format
  EXPECT_EQ(c.istmt.interval.str(), "month");
  EXPECT_EQ(c.istmt.intv.intcode, kIntMonth);
  EXPECT_EQ(c.istmt.seasonality, 12);
  EXPECT_EQ(c.istmt.nseasons, 12);
  EXPECT_NE(c.outstates.seasons, nullptr);
  EXPECT_EQ(c.istmt.format.str(), "MONYY");
  EXPECT_EQ(c.istmt.fmtw1, 7);
  EXPECT_EQ(c.istmt.fmtstr.str(), "MONYY7.");
  EXPECT_EQ(c.istmt.time, 0);
  EXPECT_EQ(c.istmt.lead, 0);
  EXPECT_EQ(c.istmt.startsum, 0);      // LEAD=0: nothing to sum
  EXPECT_EQ(c.fstmt[0].model.code, kModelBest);  // a cycle: BEST stays
  EXPECT_EQ(c.fstmt[0].model.label.str(), label(1020));
}

TEST(QvtparsDefaults, OptionsReachTheirFields) {
  Step s("qvt data=sales lead=6 back=2 maxerror=3 startsum=4 seasonality=4 nooutall sortnames printdetails debugd "
         "plot=spectrum(alpha=0.2 center=yes);"
         "id date interval=week align=end accumulate=total setmissing=7.5 zeromiss=both notsorted format=date9.;"
         "forecast sales / model=linear criterion=mape use=upper transform=boxcox(0.5) alpha=0.1 holdout=3 "
         "holdoutpct=25 seasontest=(siglevel=0.05) median replacemissing replaceback setmissing=previous "
         "zeromiss=left nbackcast=4;");
  ASSERT_EQ(s.stmts.error, 0) << "the program must parse";
  ASSERT_FALSE(s.exited);
  const QVTCOM& c = *s.com;
  EXPECT_EQ(c.istmt.lead, 6);
  EXPECT_EQ(c.istmt.back, 2);
  EXPECT_EQ(c.maxerror, 3);
  EXPECT_EQ(c.istmt.startsum, 4);
  EXPECT_EQ(c.istmt.seasonality, 4);
  EXPECT_EQ(c.istmt.nseasons, 4);
  EXPECT_EQ(c.istmt.scode53, 0);
  EXPECT_EQ(c.op.nooutall, 1);
  EXPECT_EQ(c.op.sortnames, 1);
  EXPECT_EQ(c.print.details, 1);
  EXPECT_EQ(c.op.debug, 1);
  EXPECT_EQ(c.op.debugd, 1);
  EXPECT_EQ(c.op.debugx, 0);
  EXPECT_EQ(c.spectrum.alpha, 0.2);
  EXPECT_EQ(c.spectrum.meanAdj, 1);
  EXPECT_EQ(c.plot.spectrum, 1);
  EXPECT_EQ(c.istmt.align, 'E');
  EXPECT_EQ(c.istmt.acc.code, kAccTotal);
  EXPECT_EQ(c.istmt.acc.name.str(), "TOTAL");
  EXPECT_EQ(c.istmt.setmiss.code, 100);
  EXPECT_EQ(c.istmt.setmiss.value, 7.5);
  EXPECT_EQ(c.istmt.zeromiss.code, kZeroBoth);
  EXPECT_EQ(c.istmt.notsorted, 1);
  EXPECT_EQ(c.istmt.userfmt, 1);
  EXPECT_EQ(c.istmt.format.str(), "DATE");
  EXPECT_EQ(c.istmt.fmtw1, 9);
  EXPECT_EQ(c.istmt.fmtstr.str(), "DATE9.");

  const FORSTMT& f = c.fstmt[0];
  EXPECT_EQ(f.model.code, kModelLinear);
  EXPECT_EQ(f.model.specified, 1);
  EXPECT_EQ(f.select.code, 43);
  EXPECT_EQ(f.select.name.str(), "MAPE");
  EXPECT_EQ(f.use.code, kUseUpper);
  EXPECT_EQ(f.transform.code, kTrnsBoxCox);
  EXPECT_EQ(f.transform.name.str(), "BOXCOX  ");
  EXPECT_EQ(f.transform.parm, 0.5);
  EXPECT_EQ(f.transform.median, 1);
  EXPECT_EQ(f.alpha, 0.1);
  EXPECT_EQ(f.holdout, 3);
  EXPECT_DOUBLE_EQ(f.holdoutpct, 0.25);
  EXPECT_EQ(f.seasontest.siglevel, 0.05);
  EXPECT_EQ(f.replacemissing, 1);
  EXPECT_EQ(f.replaceback, 1);
  EXPECT_EQ(f.acc.code, kAccTotal);  // from the ID statement
  EXPECT_EQ(f.setmiss.code, kSetMissPrevious);
  EXPECT_TRUE(wzmis(f.setmiss.value));
  EXPECT_EQ(f.setmiss.specified, 1);
  EXPECT_EQ(f.zeromiss.code, kZeroLeft);
  EXPECT_EQ(f.nbackcast, 4);
}

TEST(QvtparsDefaults, ForecastTakesTheIdStatementsFrameOptions) {
  Step s("qvt data=sales; id date interval=month accumulate=average setmissing=5 zeromiss=right; forecast sales;");
  const FORSTMT& f = s.com->fstmt[0];
  EXPECT_EQ(f.acc.code, kAccAverage);
  EXPECT_EQ(f.acc.specified, 1);
  EXPECT_EQ(f.setmiss.code, 100);
  EXPECT_EQ(f.setmiss.value, 5.0);
  EXPECT_EQ(f.setmiss.specified, 1);
  EXPECT_EQ(f.zeromiss.code, kZeroRight);
}

TEST(QvtparsDefaults, WeekWith52SeasonsMarksTheLongYear) {
  Step a("qvt data=sales seasonality=52; id date interval=week; forecast sales;");
  EXPECT_EQ(a.com->istmt.scode53, -1);
  Step b("qvt data=sales seasonality=52; id date interval=day; forecast sales;");
  EXPECT_EQ(b.com->istmt.scode53, 0);
  Step d("qvt data=sales; id date interval=dtmonth; forecast sales;");
  EXPECT_EQ(d.com->istmt.time, 1);
}

TEST(QvtparsDefaults, FormatWithoutWidthTakesItsDefaultWidth) {
  Step s("qvt data=sales; id date interval=month format=date.; forecast sales;");
  ASSERT_FALSE(s.exited);
  EXPECT_EQ(s.com->istmt.userfmt, 1);
  EXPECT_EQ(s.com->istmt.fmtw1, 7);  // DATE7.: ddMONyy
  EXPECT_EQ(s.com->istmt.format.str(), "DATE");
}

struct FlagCase {
  const char* opts;
  // Expected print flags: all descstats summary estimates forecasts statistics none summaryonly overallonly
  // performancesummary performanceoverall
  const char* print;
  // Expected plot flags: all basic errors acf pacf iacf wn corr periodogram spectrum models levels trends
  // modelforecasts forecasts forecastsonly none
  const char* plot;
};

std::string printFlags(const QVTCOM& c) {
  const auto& p = c.print;
  std::string s;
  for (char f : {p.all, p.descstats, p.summary, p.estimates, p.forecasts, p.statistics, p.none, p.summaryonly,
                 p.overallonly, p.performancesummary, p.performanceoverall})
    s += f ? '1' : '0';
  return s;
}

std::string plotFlags(const QVTCOM& c) {
  const auto& g = c.plot;
  std::string s;
  for (char f : {g.all, g.basic, g.errors, g.acf, g.pacf, g.iacf, g.wn, g.corr, g.periodogram, g.spectrum, g.models,
                 g.levels, g.trends, g.modelforecasts, g.forecasts, g.forecastsonly, g.none})
    s += f ? '1' : '0';
  return s;
}

const FlagCase kFlags[] = {
    {"", "00000010000", "00000000000000001"},
    {"print=all", "11111100000", "00000000000000001"},
    {"print=none plot=none", "00000010000", "00000000000000001"},
    {"print=summary", "00100001000", "00000000000000001"},
    {"print=(summary forecasts)", "00101000000", "00000000000000001"},
    {"print=performancesummary back=1", "00000001010", "00000000000000001"},
    // Without BY the overall table is the summary table.
    {"print=performanceoverall back=1", "00000001010", "00000000000000001"},
    {"print=internal", "00000000000", "00000000000000001"},
    {"plot=all", "00000010000", "10111110111111110"},  // seasons left out: no cycle here
    {"plot=basic", "00000010000", "01100001000001000"},
    {"plot=(acf wn)", "00000010000", "00010010000000000"},
};

void PrintTo(const FlagCase& c, std::ostream* os) { *os << '"' << c.opts << '"'; }

class Flags : public ::testing::TestWithParam<FlagCase> {};

TEST_P(Flags, Derived) {
  const FlagCase& c = GetParam();
  Step s(std::string("qvt data=sales ") + c.opts + "; forecast sales;");
  ASSERT_FALSE(s.exited);
  EXPECT_EQ(printFlags(*s.com), c.print);
  EXPECT_EQ(plotFlags(*s.com), c.plot);
}

INSTANTIATE_TEST_SUITE_P(Qvtpars, Flags, ::testing::ValuesIn(kFlags));

TEST(QvtparsDefaults, PerformanceOverallStaysWithBy) {
  Step s("qvt data=sales print=performanceoverall back=1; by store; forecast sales;");
  EXPECT_EQ(s.com->print.performanceoverall, 1);
  EXPECT_EQ(s.com->print.performancesummary, 0);
  EXPECT_EQ(s.com->print.overallonly, 1);
  EXPECT_EQ(s.com->print.none, 0);
}

TEST(QvtparsDefaults, PlotAllWithACycleKeepsSeasonPlots) {
  Step s("qvt data=sales plot=all; id date interval=month; forecast sales;");
  EXPECT_EQ(s.com->plot.seasons, 1);
  EXPECT_EQ(s.rc, 0);
}

TEST(QvtparsDefaults, ByVariablesInOrderWithDescending) {
  Step s("qvt data=sales; by descending store region notsorted; forecast sales;");
  ASSERT_FALSE(s.exited);
  ASSERT_EQ(s.com->nby, 2);
  EXPECT_EQ(s.com->bylist[0], 6);
  EXPECT_EQ(s.com->bylist[1], 5);
  EXPECT_EQ(s.com->bydesc[0], 1);
  EXPECT_EQ(s.com->bydesc[1], 0);
  EXPECT_EQ(s.com->bynotsorted, 1);
  // The host groups the input by them: two runs of equal store and region.
  EXPECT_EQ(hostByNext(s.host(), s.com->ds.data.fileid), 1);
  EXPECT_EQ(hostByNext(s.host(), s.com->ds.data.fileid), 1);
  EXPECT_EQ(hostByNext(s.host(), s.com->ds.data.fileid), 0);
}

TEST(QvtparsDefaults, SortNames) {
  Step plain("qvt data=sales; forecast units sales price;");
  ASSERT_EQ(plain.com->nvars, 3);
  EXPECT_EQ(plain.com->vars[0].name.str(), "units");
  EXPECT_EQ(plain.com->vars[2].name.str(), "price");

  Step sorted("qvt data=sales sortnames; forecast units / model=simple; forecast sales price / model=linear;");
  ASSERT_EQ(sorted.com->nvars, 3);
  EXPECT_EQ(sorted.com->vars[0].name.str(), "price");
  EXPECT_EQ(sorted.com->vars[1].name.str(), "sales");
  EXPECT_EQ(sorted.com->vars[2].name.str(), "units");
  // Each series keeps its statement.
  EXPECT_EQ(sorted.com->vars[2].fstmt->model.code, kModelSimple);
  EXPECT_EQ(sorted.com->vars[0].fstmt->model.code, kModelLinear);
}

TEST(QvtparsDefaults, SortNamesIgnoresCase) {
  QVTCOM com;
  VAR v[4];
  const char* names[] = {"b", "A", "c", "B2"};
  for (int k = 0; k < 4; ++k) v[k].name.set(names[k]);
  com.vars = v;
  com.nvars = 4;
  sortnames(&com);
  EXPECT_EQ(v[0].name.str(), "A");
  EXPECT_EQ(v[1].name.str(), "b");
  EXPECT_EQ(v[2].name.str(), "B2");
  EXPECT_EQ(v[3].name.str(), "c");
}

TEST(QvtparsDefaults, OutputsOpenedWhenWritten) {
  Step s("qvt data=sales out=o outfor=f outest=e outsum=su outstat=st outcomponent=oc outprocinfo=pi; "
         "forecast sales;");
  ASSERT_FALSE(s.exited);
  const auto& d = s.com->ds;
  for (const DATASETS* x : {&d.out, &d.outfor, &d.outest, &d.outsum, &d.outstat, &d.outcomp, &d.outprocinfo})
    EXPECT_TRUE(x->fileid);
  EXPECT_EQ(d.outfor.mem.str(), "f");
  EXPECT_EQ(d.outfor.lib.str(), "WORK");
  EXPECT_FALSE(d.outtrend.fileid);
}

TEST(QvtparsDefaults, DebugOptionSetsTheTraceFlags) {
  struct {
    std::vector<std::string> opts;
    int syn, sem;
  } cases[] = {
      {{}, 0, 0},
      {{"DEBUG=syn"}, 1, 0},
      {{"debug=xSEMx"}, 0, 1},
      {{"DEBUG=sem,Syn"}, 1, 1},
      {{"DEBUG=other"}, 0, 0},
  };
  for (const auto& c : cases) {
    Step s("qvt data=sales; forecast sales;", c.opts);
    EXPECT_EQ(s.stmts.syndebug, c.syn) << ::testing::PrintToString(c.opts);
    EXPECT_EQ(s.stmts.semdebug, c.sem) << ::testing::PrintToString(c.opts);
  }
}

// The name tables agree with the tables the grammar is made from, and every
// label the statements hand out has a catalogue row.
TEST(QvtparsCodes, NamesAgreeWithTheGrammarsTables) {
  auto trimmed = [](std::string_view s) {
    while (!s.empty() && s.back() == ' ') s.remove_suffix(1);
    return s;
  };
  for (const CodeName& c : kModelCodes) EXPECT_EQ(codeLabel(kModelLabels, kModelUnknown, c.code).name, c.name);
  for (const CodeName& c : kCriterionCodes)
    EXPECT_EQ(codeLabel(kCriterionLabels, kCriterionUnknown, c.code).name, c.name);
  for (const CodeName& c : kUseCodes) EXPECT_EQ(codeLabel(kUseLabels, kUseUnknown, c.code).name, c.name);
  for (const CodeName& c : kTransformCodes)
    EXPECT_EQ(trimmed(codeLabel(kTransformLabels, kTransformUnknown, c.code).name), c.name);
  for (const CodeName& c : kAccumulateCodes)
    EXPECT_EQ(codeLabel(kAccumulateLabels, kAccumulateUnknown, c.code).name, c.name);
  EXPECT_EQ(std::size(kCriterionLabels), std::size(kCriterionCodes));
}

TEST(QvtparsCodes, LabelsAndUnknownCodes) {
  Step s("qvt data=sales; forecast sales;");
  QVTCOM* com = s.com.get();
  for (const CodeLabel& r : kModelLabels) EXPECT_FALSE(label(r.label).empty()) << r.label;
  for (const CodeLabel& r : kUseLabels) EXPECT_FALSE(label(r.label).empty()) << r.label;
  for (const CodeLabel& r : kTransformLabels) EXPECT_FALSE(label(r.label).empty()) << r.label;
  for (int n : {1099, 1499, 1599}) EXPECT_FALSE(label(n).empty()) << n;

  u_sname name;
  u_slabel lab;
  EXPECT_EQ(qvtpmdl(com, 12, &name, &lab), -1);
  EXPECT_EQ(name.str(), "UNKNOWN");
  EXPECT_EQ(lab.str(), label(1099));
  EXPECT_EQ(qvtptrn(com, 10, &name, nullptr), 0);
  EXPECT_EQ(name.str(), "AUTO");
  EXPECT_EQ(qvtptrn(com, 5, &name, &lab), -1);
  EXPECT_EQ(lab.str(), label(1599));
  EXPECT_EQ(qvtpuse(com, 0, &name, &lab), 0);
  EXPECT_EQ(name.str(), "NONE");
  EXPECT_EQ(qvtpsel(com, 11, &name, nullptr), 0);
  EXPECT_EQ(name.str(), "ADJ_RSQ");
  EXPECT_EQ(qvtpsel(com, 6, &name, nullptr), -1);
  EXPECT_EQ(qvtpacc(com, 8, &name, nullptr), 0);
  EXPECT_EQ(name.str(), "STD");
  EXPECT_EQ(qvtpacc(com, 14, &name, nullptr), -1);
  EXPECT_EQ(name.str(), "UNKNOWN");
}

}  // namespace
}  // namespace qvt
