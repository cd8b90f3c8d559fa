// From the statements of a step to QVTCOM: what a step leaves (the table is
// facts.txt), BY variables, SORTNAMES, the code tables of names and labels,
// and the checks that span statements with their messages, return codes and
// whether the step ends (checks.txt).
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

// A number as the facts show it; a missing value as '.'.
template <class T>
std::string num(T v) {
  if (std::is_floating_point_v<T> && wzmis(static_cast<double>(v))) return ".";
  std::ostringstream o;
  o << std::setprecision(12) << +v;
  return o.str();
}

// Flags as one digit each.
std::string digits(std::initializer_list<char> flags) {
  std::string s;
  for (char f : flags) s += f ? '1' : '0';
  return s;
}

// Checks the facts of the step named in want ("key=value ..."); blanks of a name show as '_'.
void expectFacts(const QVTCOM& c, const std::string& want) {
  const IDSTMT& i = c.istmt;
  const FORSTMT& f = c.fstmt[0];
  const auto& p = c.print;
  const auto& g = c.plot;
  std::string transname = f.transform.name.str();
  std::replace(transname.begin(), transname.end(), ' ', '_');
  std::map<std::string, std::string> facts = {
      {"lead", num(i.lead)}, {"back", num(i.back)}, {"startsum", num(i.startsum)},
      {"maxerror", num(c.maxerror)},
      {"seasonality", num(i.seasonality)}, {"nseasons", num(i.nseasons)}, {"scode53", num(i.scode53)},
      {"nooutall", num(c.op.nooutall)}, {"sortnames", num(c.op.sortnames)}, {"details", num(c.print.details)},
      {"debug", num(c.op.debug)}, {"debugd", num(c.op.debugd)}, {"debugx", num(c.op.debugx)},
      {"spectrumalpha", num(c.spectrum.alpha)}, {"spectrummean", num(c.spectrum.meanAdj)},
      {"request", num(c.trend.request)}, {"specified", num(i.specified)}, {"idvar", num(c.id.dsvarno)},
      {"idname", c.id.name.str()}, {"interval", i.interval.str()}, {"units", std::string(1, i.intv.units)},
      {"time", num(i.time)}, {"align", std::string(1, i.align)}, {"start", num(i.start)}, {"end", num(i.end)},
      {"startunits", num(i.startunits)}, {"acc", num(i.acc.code)}, {"setmiss", num(i.setmiss.code)},
      {"setmissval", num(i.setmiss.value)}, {"zeromiss", num(i.zeromiss.code)},
      {"notsorted", num(i.notsorted)}, {"userfmt", num(i.userfmt)}, {"format", i.format.str()},
      {"fmtw", num(i.fmtw1)}, {"fmtstr", i.fmtstr.str()},
      // The first FORECAST statement.
      {"model", num(f.model.code)}, {"modelgiven", num(f.model.specified)}, {"modelname", f.model.name.str()},
      {"select", num(f.select.code)}, {"use", num(f.use.code)}, {"trans", num(f.transform.code)},
      {"transname", transname}, {"parm", num(f.transform.parm)}, {"median", num(f.transform.median)},
      {"alpha", num(f.alpha)}, {"holdout", num(f.holdout)}, {"holdoutpct", num(f.holdoutpct)},
      {"siglevel", num(f.seasontest.siglevel)}, {"stnone", num(f.seasontest.none)}, {"facc", num(f.acc.code)},
      {"faccgiven", num(f.acc.specified)}, {"fsetmiss", num(f.setmiss.code)},
      {"fsetmissval", num(f.setmiss.value)},
      {"fsetmissgiven", num(f.setmiss.specified)}, {"fzeromiss", num(f.zeromiss.code)},
      {"repmiss", num(f.replacemissing)}, {"repback", num(f.replaceback)},
      {"intermittent", num(f.intermittent)},
      {"nbackcast", num(f.nbackcast)}, {"maxlen", num(c.outsum.maxlen)}, {"bynotsorted", num(c.bynotsorted)},
      {"print", digits({p.all, p.descstats, p.summary, p.estimates, p.forecasts, p.statistics, p.none,
                        p.summaryonly, p.overallonly, p.performancesummary, p.performanceoverall, p.seasons,
                        p.trends})},
      {"plot", digits({g.all, g.basic, g.errors, g.acf, g.pacf, g.iacf, g.wn, g.corr, g.periodogram,
                       g.spectrum, g.models, g.levels, g.trends, g.modelforecasts, g.forecasts, g.forecastsonly,
                       g.none, g.seasons})},
      {"data", c.ds.data.lib.str() + "." + c.ds.data.mem.str()}, {"by", ""},
  };
  // Each series as name:variable number:index of its FORECAST statement; the
  // model of each statement; the BY variables; the outputs opened, one digit each.
  for (int k = 0; k < c.nvars; ++k) {
    const VAR& v = c.vars[k];
    facts["series"] += (k ? "," : "") + v.name.str() + ":" + num(v.dsvarno) + ":" + num(v.fstmt - c.fstmt);
  }
  for (int k = 0; k < c.nfor; ++k) facts["models"] += (k ? "," : "") + num(c.fstmt[k].model.code);
  for (int k = 0; k < c.nby; ++k) facts["by"] += (k ? "," : "") + num(c.bylist[k]) + (c.bydesc[k] ? "d" : "");
  const auto& d = c.ds;
  for (const DATASETS* x : {&d.out, &d.outest, &d.outfor, &d.outcomp, &d.outsum, &d.outstat, &d.outtrend,
                            &d.outseason, &d.outprocinfo})
    facts["opened"] += x->fileid ? '1' : '0';
  std::istringstream in(want);
  for (std::string w; in >> w;) {
    const std::string key = w.substr(0, w.find('='));
    ASSERT_TRUE(facts.count(key)) << key;
    EXPECT_EQ(key + "=" + facts.at(key), w);
  }
}

TEST(QvtparsDefaults, FactsOfTheStep) {
  for (const auto& r : testing::dataRows("facts.txt", '|')) {
    SCOPED_TRACE(r.at(0));
    Step s(r[0]);
    ASSERT_EQ(s.stmts.error, 0) << "the program must parse";
    ASSERT_FALSE(s.exited);
    expectFacts(*s.com, r.at(1));
    if (s.com->istmt.specified) {
      EXPECT_NE(s.com->id.fcode, 99);  // the CSV's date column carries a date format
      EXPECT_NE(s.com->outstates.seasons, nullptr);
    }
  }
  // What the minimal step leaves besides.
  Step s("qvt data=sales; forecast sales;");
  const QVTCOM& c = *s.com;
  EXPECT_TRUE(s.host->msgs.empty());
  EXPECT_EQ(c.fstmt[0].model.label.str(), label(1021));
  EXPECT_EQ(c.fstmt[0].use.label.str(), label(1401));
  EXPECT_EQ(c.fstmt[0].transform.label.str(), label(1500));
  EXPECT_FALSE(c.ds.data.display.empty());
  Step best("qvt data=sales; id date interval=month; forecast sales;");
  EXPECT_EQ(best.com->fstmt[0].model.label.str(), label(1020));
}

TEST(QvtparsDefaults, InputGroupedByTheByVariablesAndNamesSortedWithoutCase) {
  Step s("qvt data=sales; by descending store region notsorted; forecast sales;");
  // Two runs of equal store and region.
  EXPECT_EQ(hostByNext(*s.host, s.com->ds.data.fileid), 1);
  EXPECT_EQ(hostByNext(*s.host, s.com->ds.data.fileid), 1);
  EXPECT_EQ(hostByNext(*s.host, s.com->ds.data.fileid), 0);
  QVTCOM com;
  VAR v[4];
  const char* written[] = {"b", "A", "c", "B2"};
  for (int k = 0; k < 4; ++k) v[k].name.set(written[k]);
  com.vars = v;
  com.nvars = 4;
  sortnames(&com);
  EXPECT_EQ(v[0].name.str() + v[1].name.str() + v[2].name.str() + v[3].name.str(), "AbB2c");
}

TEST(QvtparsDefaults, DebugOptionSetsTheTraceFlags) {
  const std::pair<const char*, const char*> cases[] = {
      {"", "00"}, {"debug=xSEMx", "01"}, {"DEBUG=sem,Syn", "11"}, {"DEBUG=other", "00"}};
  for (auto [opt, want] : cases) {
    std::vector<std::string> options;
    if (*opt) options.push_back(opt);
    Step s("qvt data=sales; forecast sales;", options);
    EXPECT_EQ(std::to_string(s.stmts.syndebug) + std::to_string(s.stmts.semdebug), want) << opt;
  }
}

// The name tables agree with the tables the grammar is made from, and every
// label the statements hand out has a catalogue row.
TEST(QvtparsCodes, NamesLabelsAndUnknownCodes) {
  auto agree = [](const auto& codes, const auto& labels, const CodeLabel& unknown, bool labelled) {
    for (const CodeName& c : codes) {
      const std::string_view name = codeLabel(labels, unknown, c.code).name;
      EXPECT_EQ(name.substr(0, name.find_last_not_of(' ') + 1), c.name);
    }
    for (const CodeLabel& r : labels) EXPECT_TRUE(!labelled || !label(r.label).empty()) << r.label;
  };
  agree(kModelCodes, kModelLabels, kModelUnknown, true);
  agree(kCriterionCodes, kCriterionLabels, kCriterionUnknown, false);
  agree(kUseCodes, kUseLabels, kUseUnknown, true);
  agree(kTransformCodes, kTransformLabels, kTransformUnknown, true);
  agree(kAccumulateCodes, kAccumulateLabels, kAccumulateUnknown, false);
  EXPECT_EQ(std::size(kCriterionLabels), std::size(kCriterionCodes));

  using Lookup = int (*)(QVTCOM*, int, u_sname*, u_slabel*);
  // label: the catalogue number of the label, or 0.
  const struct { Lookup fn; int code, result; const char* name; int label; } lookups[] = {
      {qvtpmdl, 12, -1, "UNKNOWN", 1099}, {qvtptrn, 10, 0, "AUTO", 0},     {qvtptrn, 5, -1, "UNKNOWN", 1599},
      {qvtpuse, 0, 0, "NONE", 0},         {qvtpuse, 7, -1, "UNKNOWN", 1499}, {qvtpsel, 11, 0, "ADJ_RSQ", 0},
      {qvtpsel, 6, -1, "UNKNOWN", 0},       {qvtpacc, 8, 0, "STD", 0},       {qvtpacc, 14, -1, "UNKNOWN", 0},
  };
  Step s("qvt data=sales; forecast sales;");
  for (const auto& c : lookups) {
    u_sname name;
    u_slabel lab;
    EXPECT_EQ(c.fn(s.com.get(), c.code, &name, &lab), c.result) << c.code;
    EXPECT_EQ(name.str(), c.name) << c.code;
    if (c.label) {
      EXPECT_EQ(lab.str(), label(c.label)) << c.code;
    }
  }
}

TEST(QvtparsChecks, MessagesAndRc) {
  for (const auto& r : testing::dataRows("checks.txt", '|')) {
    ASSERT_EQ(r.size(), 6u);
    const std::string text = r[0].starts_with("qvt") ? r[0] : "qvt data=sales" + r[0];
    SCOPED_TRACE(text);
    Step s(text);
    const int group = std::stoi(r[1]);
    EXPECT_EQ(s.host->numbers(group), testing::ints(r[2]));
    std::string args;
    for (const auto& m : s.host->msgs)
      if (m.group == group) {
        args += args.empty() ? "" : ",";
        for (std::size_t k = 0; k < m.args.size(); ++k) args += (k ? ":" : "") + argText(m.args[k]);
      }
    if (r[3] != "-") {
      EXPECT_EQ(args, r[3]);
    }
    EXPECT_EQ(s.rc, std::stoi(r[4]));
    EXPECT_EQ(s.exited, r[5] == "1");
    if (!s.exited) {
      EXPECT_EQ(s.com->error, 0);
    }
  }
}

TEST(QvtparsChecks, OutputOrMemoryThatCantBeHadEndsTheStep) {
  Step s("qvt data=sales outfor='/nonexistent-qvt-folder/f.csv' outest=e; forecast sales;");
  EXPECT_FALSE(s.host->numbers(900).empty());
  EXPECT_EQ(s.rc, 2000);
  EXPECT_TRUE(s.exited);
  // Room for the pools but not for a statement record of a few kilobytes.
  Step m("qvt data=sales; forecast sales;", {}, 1024);
  EXPECT_EQ(std::ranges::count(m.host->numbers(900), 70), 1);  // the host's out-of-memory note
  EXPECT_EQ(m.rc, 1016);
  EXPECT_TRUE(m.exited);
}

TEST(QvtparsChecks, LeadAboveTheLimitWithoutExitNotesAndClips) {
  Step s("qvt data=sales; forecast sales;");
  const STLIST f{.type = 1, .mode = StMode::Number, .v = 3e9, .interval = {}, .pos = {}};
  int lead = 0;
  EXPECT_EQ(qvtGetLEAD(s.com.get(), &f, 12, 0, &lead), -1);
  EXPECT_EQ(lead, 100000000);
  ASSERT_EQ(s.host->numbers(773), std::vector<int>{101});
  const auto& args = s.host->msgs.back().args;
  EXPECT_EQ(argText(args.at(0)) + " " + argText(args.at(1)), "3000000000 100000000");
  EXPECT_EQ(qvtGetLEAD(s.com.get(), nullptr, 7, 1, &lead), 0);
  EXPECT_EQ(lead, 7);
}

}  // namespace
}  // namespace qvt
