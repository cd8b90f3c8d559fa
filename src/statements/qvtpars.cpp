// The statements of a step into QVTCOM, and the checks that span several
// statements: the series, the time frame, and the outputs that depend on
// accumulation, a seasonal cycle or BACK=.
#include <memory>
#include <string>

#include "host/format.hpp"
#include "statements/qvtpars.hpp"
#include "statements/qvtpfields.hpp"
#include "statements/qvtpopen.hpp"

namespace qvt {
namespace {

[[noreturn]] void stop(QVTCOM* com, int rc) {
  raiseRc(*com, rc);
  com->error = 1;
  hostExit(*com->host, com->rc);
}

void memoryCheck(QVTCOM* com) {
  com->memdef += hostMemDefault(*com->host);
  if (com->memdef == 0) return;
  hostMemMessage(*com->host, com->memdef);
  stop(com, kRcMemory);
}

bool given(const STMT& r, int field) { return r.given(field); }

// A time ID as the frame messages show it: through the ID's format.
std::string showTime(const IDSTMT& is, double v) { return renderFormat(v, is.fmtstr.str()); }

// START= and END= against the interval and each other. Each contradiction
// ends the step: no frame can be built from them.
void frame(QVTCOM* com) {
  const IDSTMT& is = com->istmt;
  Host& host = *com->host;
  const bool hasStart = is.startunits != 0, hasEnd = is.endunits != 0;
  if (!hasStart && !hasEnd) return;
  if (is.intv.units == 'o') {
    // Observation numbers have no calendar to place a date on.
    hostMsgLog(host, kMsgProc, pmsg::kObsWithStartEnd);
    stop(com, kRcStartEnd);
  }
  if (hasStart && is.startunits != is.intv.units) {
    hostMsgLog(host, kMsgProc, is.startunits == 's' ? pmsg::kStartTimeUnits : pmsg::kStartDateUnits);
    stop(com, kRcStartEnd);
  }
  if (hasEnd && is.endunits != is.intv.units) {
    hostMsgLog(host, kMsgProc, is.endunits == 's' ? pmsg::kEndTimeUnits : pmsg::kEndDateUnits);
    stop(com, kRcStartEnd);
  }
  if (!hasStart || !hasEnd) return;
  const std::string fmt = is.fmtstr.str();
  if (is.end < is.start) {
    hostMsgLog(host, kMsgProc, pmsg::kEndBeforeStart, {fmt});
    stop(com, kRcStartEnd);
  }
  const double n = zintck2(is.intv, is.start, is.end);
  const MsgArg periods = wzmis(n) ? MsgArg{n} : MsgArg{static_cast<long long>(n) + 1};
  hostMsgLog(host, kMsgProc, pmsg::kFrame, {showTime(is, is.start), showTime(is, is.end), periods, fmt});
}

// Where every series has its own ACCUMULATE=, the run accumulates (code
// 100); where only some have, the others are read as they are.
void accumulation(QVTCOM* com) {
  if (com->istmt.acc.code != kAccNone) return;
  int with = 0;
  for (int k = 0; k < com->nvars; ++k)
    if (com->vars[k].fstmt->acc.code != kAccNone) ++with;
  if (with == 0) return;
  if (with == com->nvars) {
    com->istmt.acc.code = 100;
  } else {
    hostMsgLog(*com->host, kMsgProc, pmsg::kAccSome);
    raiseRc(*com, kRcWarning);
  }
}

// Which outputs stay asked for after the dependent checks.
struct Wanted {
  bool outtrend = false, outseason = false;
};

void dependentOutputs(QVTCOM* com, const STMT& proc, Wanted* w) {
  Host& host = *com->host;
  auto& p = com->print;
  w->outtrend = given(proc, pf::kOutTrend);
  w->outseason = given(proc, pf::kOutSeason);

  // Trend statistics are statistics of accumulated periods.
  if ((p.trends || w->outtrend) && com->istmt.acc.code == kAccNone) {
    hostMsgLog(host, kMsgProc, pmsg::kTrendsNeedAcc);
    if (w->outtrend) hostMsgLog(host, kMsgProc, pmsg::kOutTrendOff);
    if (p.trends) hostMsgLog(host, kMsgProc, pmsg::kPrintTrendsOff);
    w->outtrend = false;
    p.trends = 0;
    raiseRc(*com, kRcWarning);
  }
  // Season statistics need a cycle of at least two seasons.
  if ((p.seasons || w->outseason) && com->istmt.nseasons < 2) {
    hostMsgLog(host, kMsgProc, pmsg::kSeasonsNeedCycle);
    if (w->outseason) hostMsgLog(host, kMsgProc, pmsg::kOutSeasonOff);
    if (p.seasons) hostMsgLog(host, kMsgProc, pmsg::kPrintSeasonsOff);
    w->outseason = false;
    p.seasons = 0;
    raiseRc(*com, kRcWarning);
  }
  if (com->plot.seasons && com->istmt.nseasons < 2) {
    // Under PLOT=ALL the season plots are simply left out.
    if (!com->plot.all) {
      hostMsgLog(host, kMsgProc, pmsg::kPlotSeasonsNeedCycle);
      hostMsgLog(host, kMsgProc, pmsg::kPlotSeasonsOff);
    }
    com->plot.seasons = 0;
    raiseRc(*com, kRcWarning);
  }

  const bool seasons = p.seasons || w->outseason, trends = p.trends || w->outtrend;
  com->trend.request = static_cast<char>(seasons && trends ? 3 : seasons ? 1 : trends ? 2 : 0);
}

// Performance statistics are made on the BACK= periods.
void performance(QVTCOM* com) {
  auto& p = com->print;
  if (com->istmt.back < 1 && (p.performance || p.performancesummary || p.performanceoverall)) {
    p.performance = p.performancesummary = p.performanceoverall = 0;
    hostMsgLog(*com->host, kMsgProc, pmsg::kPerformanceNeedsBack);
  }
  // Without BY groups the overall table is the summary table.
  if (com->istmt.back >= 1 && p.performanceoverall && com->nby == 0) {
    p.performanceoverall = 0;
    p.performancesummary = 1;
  }
}

// The flags that say what is printed at all.
void derivedFlags(QVTCOM* com) {
  auto& p = com->print;
  p.none = !(p.estimates || p.forecasts || p.statistics || p.summary || p.trends || p.seasons || p.states ||
             p.performance || p.performancesummary || p.performanceoverall || p.descstats || p.internal);
  if (p.summary || p.performancesummary)
    p.summaryonly = !(p.estimates || p.forecasts || p.statistics || p.descstats || p.trends || p.seasons ||
                      p.states || p.performance);
  if (p.performanceoverall)
    p.overallonly = !(p.estimates || p.forecasts || p.statistics || p.summary || p.trends || p.seasons ||
                      p.states || p.performance || p.performancesummary || p.descstats);
  const auto& g = com->plot;
  com->plot.none = !(g.errors || g.acf || g.pacf || g.iacf || g.wn || g.corr || g.periodogram || g.spectrum ||
                     g.forecasts || g.modelforecasts || g.forecastsonly || g.models || g.levels || g.trends ||
                     g.seasons);
}

// Opens the outputs that are still asked for. OUT= is opened only when
// written: the host layer has no default output data set yet.
void outputs(QVTCOM* com, const STMT& proc, const Wanted& w) {
  struct Out {
    int field;
    DATASETS* ds;
    bool wanted;
  };
  auto& d = com->ds;
  const Out outs[] = {
      {pf::kOut, &d.out, true},
      {pf::kOutEst, &d.outest, true},
      {pf::kOutFor, &d.outfor, true},
      {pf::kOutComp, &d.outcomp, true},
      {pf::kOutSum, &d.outsum, true},
      {pf::kOutStat, &d.outstat, true},
      {pf::kOutTrend, &d.outtrend, w.outtrend},
      {pf::kOutSeason, &d.outseason, w.outseason},
      {pf::kOutProcInfo, &d.outprocinfo, true},
  };
  bool failed = false;
  for (const Out& o : outs) {
    const STLIST* f = proc.field(o.field);
    if (!o.wanted || !f || f->type != 1 || f->mode != StMode::DataSet) continue;
    // Each failure has been reported by the host; all are tried first.
    if (qvtpDsOpen(com, *f, DsMode::Output, o.ds) != kHostOk) failed = true;
  }
  if (failed) stop(com, kRcStatements);
}

// Written FORECAST variables, before they are resolved against the input.
int writtenVariables(const PROCSTR& stmts) {
  int n = 0;
  for (std::size_t i = 1; i < stmts.head.size(); ++i) {
    const STLIST* f = stmts.head[i].field(pf::kFVars);
    if (f && f->given() && f->mode == StMode::VarList) n += static_cast<int>(f->vars().items.size());
  }
  return n;
}

}  // namespace

void qvtpars(QVTCOM* com, const PROCSTR& stmts) {
  Host& host = *com->host;
  // 1. A step whose statements didn't parse doesn't run.
  if (stmts.error != 0 || stmts.head.empty()) stop(com, stmts.error != 0 ? stmts.error : kRcStatements);
  const STMT& proc = stmts.head.front();

  // 2, 3. Statements and written variables.
  com->nfor = static_cast<int>(stmts.head.size()) - 1;
  if (writtenVariables(stmts) < 1) {
    hostMsgLog(host, kMsgProc, pmsg::kNoVariables);
    stop(com, kRcStatements);
  }

  // 4. Pools, and the statement records.
  com->cpool = hostPoolCreate(host, 0, 1024, 6);
  com->dpool = hostPoolCreate(host, 0, 1024, 6);
  if (!com->cpool || !com->dpool) {
    hostMemMessage(host, com->memdef + hostMemDefault(host));
    stop(com, kRcMemory);
  }
  com->fstmt = poolArray<FORSTMT>(*com, com->cpool, com->nfor);
  memoryCheck(com);
  std::uninitialized_default_construct_n(com->fstmt, com->nfor);

  // 5. The procedure record, the IDM statement, the FORECAST statements.
  getopts(com, proc);
  getidm(com, proc);
  getfors(com, stmts);
  if (com->rc >= kRcStatements) stop(com, com->rc);

  // 6, 8. Series, and the run's accumulation.
  if (com->nvars < 1) {
    hostMsgLog(host, kMsgProc, pmsg::kNoSeries);
    stop(com, kRcData);
  }
  if (com->istmt.specified) accumulation(com);

  // 7. The time frame.
  if (com->istmt.specified) frame(com);

  // 9 to 16. Outputs and tables that depend on other options.
  Wanted w;
  dependentOutputs(com, proc, &w);
  performance(com);
  derivedFlags(com);

  // 17.
  if (com->rc > kRcWarning) stop(com, com->rc);
  outputs(com, proc, w);
  com->error = 0;
}

}  // namespace qvt
