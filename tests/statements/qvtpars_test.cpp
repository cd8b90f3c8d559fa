// From the statements of a step to QVTCOM: what a minimal step leaves, what
// the options set, the flags derived from PRINT= and PLOT=, BY variables,
// SORTNAMES, the code tables of names and labels, and the checks that span
// statements with their messages, return codes and whether the step ends.
#include <algorithm>
#include <iomanip>
#include <map>

#include "run/missing.hpp"
#include "statements/codes.hpp"
#include "statements/qvtpcodes.hpp"
#include "support.hpp"

namespace qvt {
namespace {

using testing::argText;
using testing::Step;

// The catalogue's label of a number, as qvtpars must have copied it.
std::string label(int number) {
  const CatalogEntry* e = catalogFind(kMsgProc, number);
  return e ? std::string(e->text) : std::string();
}

template <class T>
std::string num(T v) {
  if constexpr (!std::is_floating_point_v<T>) {
    return std::to_string(static_cast<long long>(v));
  } else {
    if (wzmis(v)) return ".";
    std::ostringstream o;
    o << std::setprecision(12) << v;
    return o.str();
  }
}

// Blanks shown as '_', so that the padding of a name shows.
std::string str(std::string s) {
  std::replace(s.begin(), s.end(), ' ', '_');
  return s;
}

// Checks the facts of the step named in want ("key=value ...").
void expectFacts(const QVTCOM& c, const std::string& want) {
  const IDSTMT& i = c.istmt;
  const FORSTMT& f = c.fstmt[0];
  const std::map<std::string, std::string> facts = {
      {"lead", num(i.lead)}, {"back", num(i.back)}, {"startsum", num(i.startsum)}, {"maxerror", num(c.maxerror)},
      {"seasonality", num(i.seasonality)}, {"nseasons", num(i.nseasons)}, {"scode53", num(i.scode53)},
      {"nooutall", num(c.op.nooutall)}, {"sortnames", num(c.op.sortnames)}, {"details", num(c.print.details)},
      {"debug", num(c.op.debug)}, {"debugd", num(c.op.debugd)}, {"debugx", num(c.op.debugx)},
      {"specalpha", num(c.spectrum.alpha)}, {"specmean", num(c.spectrum.meanAdj)}, {"plotspec", num(c.plot.spectrum)},
      {"request", num(c.trend.request)}, {"nby", num(c.nby)}, {"specified", num(i.specified)},
      {"idvar", num(c.id.dsvarno)}, {"idname", c.id.name.str()}, {"interval", i.interval.str()},
      {"intcode", num(i.intv.intcode)}, {"units", std::string(1, i.intv.units)}, {"time", num(i.time)},
      {"align", std::string(1, i.align)}, {"start", num(i.start)}, {"end", num(i.end)},
      {"startunits", num(i.startunits)}, {"acc", num(i.acc.code)}, {"accname", i.acc.name.str()},
      {"setmiss", num(i.setmiss.code)}, {"setmissval", num(i.setmiss.value)}, {"zeromiss", num(i.zeromiss.code)},
      {"notsorted", num(i.notsorted)}, {"userfmt", num(i.userfmt)}, {"format", i.format.str()},
      {"fmtw", num(i.fmtw1)}, {"fmtstr", i.fmtstr.str()},
      // The first FORECAST statement.
      {"model", num(f.model.code)}, {"modelspec", num(f.model.specified)}, {"modelname", f.model.name.str()},
      {"select", num(f.select.code)}, {"selname", f.select.name.str()}, {"use", num(f.use.code)},
      {"usename", f.use.name.str()}, {"trans", num(f.transform.code)}, {"transname", str(f.transform.name.str())},
      {"parm", num(f.transform.parm)}, {"median", num(f.transform.median)}, {"alpha", num(f.alpha)},
      {"holdout", num(f.holdout)}, {"holdoutpct", num(f.holdoutpct)}, {"siglevel", num(f.seasontest.siglevel)},
      {"stnone", num(f.seasontest.none)}, {"facc", num(f.acc.code)}, {"faccspec", num(f.acc.specified)},
      {"fsetmiss", num(f.setmiss.code)}, {"fsetmissval", num(f.setmiss.value)},
      {"fsetmissspec", num(f.setmiss.specified)}, {"fzeromiss", num(f.zeromiss.code)},
      {"repmiss", num(f.replacemissing)}, {"repback", num(f.replaceback)}, {"intermittent", num(f.intermittent)},
      {"nbackcast", num(f.nbackcast)},
  };
  std::istringstream in(want);
  for (std::string w; in >> w;) {
    const std::string key = w.substr(0, w.find('='));
    ASSERT_TRUE(facts.count(key)) << key;
    EXPECT_EQ(key + "=" + facts.at(key), w);
  }
}

TEST(QvtparsDefaults, MinimalStep) {
  Step s("qvt data=sales; forecast sales;");
  ASSERT_FALSE(s.exited);
  const QVTCOM& c = *s.com;
  EXPECT_EQ(s.rc, 0);
  EXPECT_EQ(c.error, 0);
  EXPECT_TRUE(s.host->msgs.empty());
  EXPECT_TRUE(c.cpool && c.dpool);
  EXPECT_EQ(c.nfor, 1);
  ASSERT_EQ(c.nvars, 1);
  // No ID statement: observation numbers, no cycle, no frame. Without a cycle BEST is BESTN.
  expectFacts(c,
              "lead=12 back=0 startsum=1 maxerror=25 nooutall=0 sortnames=0 debug=0 debugd=0 debugx=0 "
              "specalpha=0.5 specmean=0 request=0 nby=0 specified=0 idvar=0 units=o align=B start=. end=. "
              "startunits=0 acc=0 accname=NONE setmiss=0 setmissval=. zeromiss=0 userfmt=0 "
              "model=9 modelspec=0 modelname=BESTN select=3 selname=RMSE use=1 usename=PREDICT trans=0 "
              "transname=NONE____ parm=0 median=0 alpha=0.05 holdout=0 holdoutpct=0 siglevel=0.01 stnone=0 "
              "facc=0 fsetmiss=0 fsetmissval=. fsetmissspec=0 fzeromiss=0 repmiss=0 repback=0 intermittent=2 "
              "nbackcast=-1");
  EXPECT_LT(c.istmt.nseasons, 2);
  EXPECT_EQ(c.fstmt[0].model.label.str(), label(1021));
  EXPECT_EQ(c.fstmt[0].use.label.str(), label(1401));
  EXPECT_EQ(c.fstmt[0].transform.label.str(), label(1500));
  // Data sets: the input with its facts; no output that wasn't written.
  EXPECT_TRUE(c.ds.data.fileid);
  EXPECT_EQ(c.ds.data.lib.str() + "." + c.ds.data.mem.str(), "WORK.sales");
  EXPECT_FALSE(c.ds.data.display.empty());
  for (const DATASETS* d : {&c.ds.out, &c.ds.outest, &c.ds.outfor, &c.ds.outcomp, &c.ds.outsum, &c.ds.outstat,
                            &c.ds.outtrend, &c.ds.outseason, &c.ds.outprocinfo})
    EXPECT_FALSE(d->fileid);
  // The series.
  EXPECT_EQ(c.vars[0].dsvarno, 2);
  EXPECT_EQ(c.vars[0].name.str(), "sales");
  EXPECT_EQ(c.vars[0].fstmt, &c.fstmt[0]);
  EXPECT_EQ(c.outsum.maxlen, 5);
}

TEST(QvtparsDefaults, OptionsReachTheirFields) {
  const struct {
    const char* program;
    const char* facts;
  } cases[] = {
      {"qvt data=sales lead=0; id date interval=month; forecast sales;",
       // A cycle: BEST stays. LEAD=0: nothing to sum.
       "specified=1 idvar=1 idname=date interval=month intcode=45 seasonality=12 nseasons=12 format=MONYY fmtw=7 "
       "fmtstr=MONYY7. time=0 lead=0 startsum=0 model=8"},
      {"qvt data=sales lead=6 back=2 maxerror=3 startsum=4 seasonality=4 nooutall sortnames printdetails debugd "
       "plot=spectrum(alpha=0.2 center=yes);"
       "id date interval=week align=end accumulate=total setmissing=7.5 zeromiss=both notsorted format=date9.;"
       "forecast sales / model=linear criterion=mape use=upper transform=boxcox(0.5) alpha=0.1 holdout=3 "
       "holdoutpct=25 seasontest=(siglevel=0.05) median replacemissing replaceback setmissing=previous "
       "zeromiss=left nbackcast=4;",
       "lead=6 back=2 maxerror=3 startsum=4 seasonality=4 nseasons=4 scode53=0 nooutall=1 sortnames=1 details=1 "
       "debug=1 debugd=1 debugx=0 specalpha=0.2 specmean=1 plotspec=1 align=E acc=1 accname=TOTAL setmiss=100 "
       "setmissval=7.5 zeromiss=3 notsorted=1 userfmt=1 format=DATE fmtw=9 fmtstr=DATE9. "
       "model=2 modelspec=1 select=43 selname=MAPE use=3 trans=4 transname=BOXCOX__ parm=0.5 median=1 alpha=0.1 "
       "holdout=3 holdoutpct=0.25 siglevel=0.05 repmiss=1 repback=1 facc=1 fsetmiss=9 fsetmissval=. "
       "fsetmissspec=1 fzeromiss=1 nbackcast=4"},
      // The FORECAST statement takes the ID statement's frame options.
      {"qvt data=sales; id date interval=month accumulate=average setmissing=5 zeromiss=right; forecast sales;",
       "facc=2 faccspec=1 fsetmiss=100 fsetmissval=5 fsetmissspec=1 fzeromiss=2"},
      {"qvt data=sales seasonality=52; id date interval=week; forecast sales;", "scode53=-1"},
      {"qvt data=sales seasonality=52; id date interval=day; forecast sales;", "scode53=0"},
      {"qvt data=sales; id date interval=dtmonth; forecast sales;", "time=1"},
      {"qvt data=sales lead=100000000; forecast sales;", "lead=100000000"},
      // A format without width takes its default width: DATE7. is ddMONyy.
      {"qvt data=sales; id date interval=month format=date.; forecast sales;", "userfmt=1 fmtw=7 format=DATE"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.program);
    Step s(c.program);
    ASSERT_EQ(s.stmts.error, 0) << "the program must parse";
    ASSERT_FALSE(s.exited);
    expectFacts(*s.com, c.facts);
    if (s.com->istmt.specified) {
      EXPECT_NE(s.com->id.fcode, 99);  // the CSV's date column carries a date format
      EXPECT_NE(s.com->outstates.seasons, nullptr);
    }
  }
  Step best("qvt data=sales; id date interval=month; forecast sales;");
  EXPECT_EQ(best.com->fstmt[0].model.label.str(), label(1020));
}

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
                 g.levels, g.trends, g.modelforecasts, g.forecasts, g.forecastsonly, g.none, g.seasons})
    s += f ? '1' : '0';
  return s;
}

TEST(QvtparsDefaults, DerivedPrintAndPlotFlags) {
  const struct {
    const char* opts;
    // all descstats summary estimates forecasts statistics none summaryonly overallonly performancesummary
    // performanceoverall
    const char* print;
    // all basic errors acf pacf iacf wn corr periodogram spectrum models levels trends modelforecasts
    // forecasts forecastsonly none seasons
    const char* plot;
  } cases[] = {
      {"", "00000010000", "000000000000000010"},
      {"print=all", "11111100000", "000000000000000010"},
      {"print=summary", "00100001000", "000000000000000010"},
      {"print=(summary forecasts)", "00101000000", "000000000000000010"},
      {"print=performancesummary back=1", "00000001010", "000000000000000010"},
      // Without BY the overall table is the summary table.
      {"print=performanceoverall back=1", "00000001010", "000000000000000010"},
      {"print=internal", "00000000000", "000000000000000010"},
      {"plot=all", "00000010000", "101111101111111100"},  // seasons left out: no cycle here
      {"plot=basic", "00000010000", "011000010000010000"},
      {"plot=(acf wn)", "00000010000", "000100100000000000"},
      {"print=performanceoverall back=1; by store", "00000000101", "000000000000000010"},
      {"plot=all; id date interval=month", "00000010000", "101111101111111101"},
  };
  for (const auto& c : cases) {
    Step s(std::string("qvt data=sales ") + c.opts + "; forecast sales;");
    ASSERT_FALSE(s.exited) << c.opts;
    EXPECT_EQ(printFlags(*s.com), c.print) << c.opts;
    EXPECT_EQ(plotFlags(*s.com), c.plot) << c.opts;
  }
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
  EXPECT_EQ(hostByNext(*s.host, s.com->ds.data.fileid), 1);
  EXPECT_EQ(hostByNext(*s.host, s.com->ds.data.fileid), 1);
  EXPECT_EQ(hostByNext(*s.host, s.com->ds.data.fileid), 0);
}

std::string names(const QVTCOM& c) {
  std::string s;
  for (int k = 0; k < c.nvars; ++k) s += c.vars[k].name.str() + " ";
  return s;
}

TEST(QvtparsDefaults, SeriesInTheirOrderOrSortedByName) {
  Step plain("qvt data=sales; forecast units sales price;");
  EXPECT_EQ(names(*plain.com), "units sales price ");
  // The first statement that names a variable wins.
  Step first("qvt data=sales; forecast sales units / model=simple; forecast sales price / model=linear;");
  EXPECT_EQ(names(*first.com), "sales units price ");
  EXPECT_EQ(first.com->vars[0].fstmt->model.code, kModelSimple);
  EXPECT_EQ(first.com->vars[2].fstmt->model.code, kModelLinear);
  // Each series keeps its statement.
  Step sorted("qvt data=sales sortnames; forecast units / model=simple; forecast sales price / model=linear;");
  EXPECT_EQ(names(*sorted.com), "price sales units ");
  EXPECT_EQ(sorted.com->vars[2].fstmt->model.code, kModelSimple);
  EXPECT_EQ(sorted.com->vars[0].fstmt->model.code, kModelLinear);
  // _ALL_ leaves the ID and BY variables out without a word; region is character.
  Step all("qvt data=sales; id date interval=month; by store; forecast _all_;");
  EXPECT_TRUE(all.host->msgs.empty());
  EXPECT_EQ(names(*all.com), "sales units price ");
  // Names compare without regard to case.
  QVTCOM com;
  VAR v[4];
  const char* written[] = {"b", "A", "c", "B2"};
  for (int k = 0; k < 4; ++k) v[k].name.set(written[k]);
  com.vars = v;
  com.nvars = 4;
  sortnames(&com);
  EXPECT_EQ(names(com), "A b B2 c ");
}

TEST(QvtparsDefaults, OutputsOpenedWhenWritten) {
  Step s("qvt data=sales out=o outfor=f outest=e outsum=su outstat=st outcomponent=oc outprocinfo=pi; "
         "forecast sales;");
  ASSERT_FALSE(s.exited);
  const auto& d = s.com->ds;
  for (const DATASETS* x : {&d.out, &d.outfor, &d.outest, &d.outsum, &d.outstat, &d.outcomp, &d.outprocinfo})
    EXPECT_TRUE(x->fileid);
  EXPECT_EQ(d.outfor.lib.str() + "." + d.outfor.mem.str(), "WORK.f");
  EXPECT_FALSE(d.outtrend.fileid);
}

TEST(QvtparsDefaults, DebugOptionSetsTheTraceFlags) {
  const std::pair<const char*, const char*> cases[] = {
      {"", "00"}, {"DEBUG=syn", "10"}, {"debug=xSEMx", "01"}, {"DEBUG=sem,Syn", "11"}, {"DEBUG=other", "00"}};
  for (auto [opt, want] : cases) {
    Step s("qvt data=sales; forecast sales;", *opt ? std::vector<std::string>{opt} : std::vector<std::string>{});
    EXPECT_EQ(std::to_string(s.stmts.syndebug) + std::to_string(s.stmts.semdebug), want) << opt;
  }
}

// The name tables agree with the tables the grammar is made from, and every
// label the statements hand out has a catalogue row.
TEST(QvtparsCodes, NamesLabelsAndUnknownCodes) {
  auto trimmed = [](std::string_view s) { return s.substr(0, s.find_last_not_of(' ') + 1); };
  for (const CodeName& c : kModelCodes) EXPECT_EQ(codeLabel(kModelLabels, kModelUnknown, c.code).name, c.name);
  for (const CodeName& c : kCriterionCodes)
    EXPECT_EQ(codeLabel(kCriterionLabels, kCriterionUnknown, c.code).name, c.name);
  for (const CodeName& c : kUseCodes) EXPECT_EQ(codeLabel(kUseLabels, kUseUnknown, c.code).name, c.name);
  for (const CodeName& c : kTransformCodes)
    EXPECT_EQ(trimmed(codeLabel(kTransformLabels, kTransformUnknown, c.code).name), c.name);
  for (const CodeName& c : kAccumulateCodes)
    EXPECT_EQ(codeLabel(kAccumulateLabels, kAccumulateUnknown, c.code).name, c.name);
  EXPECT_EQ(std::size(kCriterionLabels), std::size(kCriterionCodes));
  for (const CodeLabel& r : kModelLabels) EXPECT_FALSE(label(r.label).empty()) << r.label;
  for (const CodeLabel& r : kUseLabels) EXPECT_FALSE(label(r.label).empty()) << r.label;
  for (const CodeLabel& r : kTransformLabels) EXPECT_FALSE(label(r.label).empty()) << r.label;
  for (int n : {1099, 1499, 1599}) EXPECT_FALSE(label(n).empty()) << n;

  Step s("qvt data=sales; forecast sales;");
  QVTCOM* com = s.com.get();
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
