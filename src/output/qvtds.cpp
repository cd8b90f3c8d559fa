// Set-up of the output data sets, the input bindings, the expected size of a
// BY group and the spool: everything that is done once before the first
// group is read.
#include "output/qvtds.hpp"

#include <algorithm>
#include <array>

#include "output/outcols.hpp"
#include "output/ztspool.hpp"

namespace qvt {
namespace {

// Fills the names of an open data set that the statements left empty, from
// the host's facts: library, member, label, display name.
void describe(Host& h, DATASETS& ds) {
  if (!ds.fileid) return;
  DsFacts f;
  if (hostDsInfo(h, ds.fileid, &f) != 0) return;
  if (ds.lib.empty()) ds.lib.set(f.lib);
  if (ds.mem.empty()) ds.mem.set(f.member);
  if (ds.label.empty()) ds.label.set(f.label);
  if (ds.display.empty()) ds.display.set(f.display);
}

// Data sets whose definitions and rows come with the summary, statistics,
// trend and season outputs. Until then an asked-for one is closed unused,
// with a note, rather than filled half.
void notYet(QVTCOM* com, DATASETS& ds, const char* option) {
  if (!ds.fileid) return;
  Host& h = *com->host;
  hostMsgLog(h, kMsgProc, kMsgNotWrittenYet, {ds.display.str(), std::string(option)});
  hostDsClose(h, ds.fileid);
  ds.fileid = DsHandle{};
}

}  // namespace

void outest(QVTCOM* com) {
  auto& e = com->outest;
  const std::array cols = {
      textColumn("_NAME_", 4001, &com->current.var),
      textColumn("_TRANSFORM_", 4002, &e.transform),
      textColumn("_MODEL_", 4003, &e.model),
      textColumn("_PARM_", 4004, &e.parm),
      numColumn("_EST_", 4005, &e.pest),
      numColumn("_STDERR_", 4006, &e.stderr_),
      numColumn("_TVALUE_", 4007, &e.tvalue),
      numColumn("_PVALUE_", 4008, &e.pvalue),
  };
  defineDs(com, com->ds.outest, kLblOutest, cols);
}

void outfor(QVTCOM* com) {
  auto& f = com->outfor;
  const std::array cols = {
      textColumn("_NAME_", 4101, &com->current.var),
      timeIdColumn(*com, &f.timeid),
      numColumn("ACTUAL", 4103, &f.actual),
      numColumn("PREDICT", 4104, &f.pred),
      numColumn("LOWER", 4105, &f.lower),
      numColumn("UPPER", 4106, &f.upper),
      numColumn("ERROR", 4107, &f.error),
      numColumn("STD", 4108, &f.std),
  };
  defineDs(com, com->ds.outfor, kLblOutfor, cols);
}

void outcomp(QVTCOM* com) {
  auto& c = com->outcomp;
  const std::array cols = {
      textColumn("_NAME_", 4601, &com->current.var),
      textColumn("_TRANSFORM_", 4610, &c.transform),
      textColumn("_MODEL_", 4611, &c.model),
      timeIdColumn(*com, &c.timeid),
      numColumn("ACTUAL", 4603, &c.actual),
      numColumn("PREDICT", 4604, &c.pred),
      numColumn("LEVEL", 4605, &c.level),
      numColumn("TREND", 4606, &c.trend),
      numColumn("SEASON", 4607, &c.season),
      numColumn("ERROR", 4608, &c.error),
  };
  defineDs(com, com->ds.outcomp, kLblOutcomp, cols);
}

void inout(QVTCOM* com) {
  Host& h = *com->host;
  auto& data = com->ds.data;
  auto& out = com->ds.out;
  data.buf = poolArray<double>(*com, com->cpool, com->nvars);
  out.buf = poolArray<double>(*com, com->cpool, com->nvars);
  com->memdef += hostMemDefault(h);
  if (com->memdef != 0 || !data.buf || !out.buf) {
    raiseRc(*com, kRcMemory);
    com->error = 1;
    return;
  }

  // The input: series i into data.buf[i], the time ID into id.val. A
  // variable that can't be bound has been reported by the host, and the
  // input can't be read as the run needs.
  int bad = 0;
  for (int i = 0; i < com->nvars; ++i)
    bad |= hostVarGetD(h, data.fileid, com->vars[i].dsvarno, &data.buf[i]);
  if (com->id.dsvarno != 0) bad |= hostVarGetD(h, data.fileid, com->id.dsvarno, &com->id.val);
  if (bad != 0) {
    raiseRc(*com, kRcInputUnusable);
    com->error = 1;
    return;
  }

  // OUT=: the BY variables, the time ID, one column per series.
  if (!out.fileid) return;
  if (com->nby > 0 && com->bylist)
    hostVarPutCv(h, out.fileid, data.fileid,
                 std::span<const int>(com->bylist, static_cast<std::size_t>(com->nby)));
  VarInfo time;
  if (com->id.dsvarno != 0) {
    hostVarName(h, data.fileid, com->id.dsvarno, &time);
    if (const std::string f = timeFormat(*com); !f.empty()) time.format = f;
  } else {
    time.name = "TIME";
  }
  hostVarPutD(h, out.fileid, time, &com->id.val);
  for (int i = 0; i < com->nvars; ++i) {
    VarInfo v;
    hostVarName(h, data.fileid, com->vars[i].dsvarno, &v);
    hostVarPutD(h, out.fileid, v, &out.buf[i]);
  }
  hostVarPutE(h, out.fileid);
}

void nobs(QVTCOM* com) {
  Host& h = *com->host;
  DsFacts f;
  if (hostDsInfo(h, com->ds.data.fileid, &f) != 0 || !f.readable) {
    raiseRc(*com, kRcInputUnusable);
    com->error = 1;
    return;
  }
  com->rid2n = f.rid2n ? 1 : 0;
  // The host knows the records of a data set as one count, -1 when it can't
  // tell in advance, and has no separate grouping flag: a step is grouped
  // exactly when it has a BY statement.
  const long n = f.nobs > kLargestCount ? kLargestCount + 1 : static_cast<long>(f.nobs);
  const bool grouped = com->nby > 0;
  long e = 0;
  if (n > kLargestCount) {
    e = 4096;
  } else {
    e = grouped ? (n < 0 ? 16384 : std::min(n, 16384L)) : n;
    if (e < 2) e = 4096;
  }
  long m = static_cast<long>(std::min<std::size_t>(hostPoolSize(h) / 8, static_cast<std::size_t>(kLargestCount)));
  if (e >= m) e = m = 4096;
  com->in.enobs = e;
  const long b = com->trend.request != 0 ? 40 : 24;
  const long block = std::max(1024L, std::min({e, 32767L, m}));
  com->tpool = hostPoolCreate(h, static_cast<std::size_t>(std::max(0L, b * e)),
                              static_cast<std::size_t>(block), 6);
  com->memdef += hostMemDefault(h);
  if (!com->tpool || com->memdef != 0) {
    raiseRc(*com, kRcMemory);
    com->error = 1;
  }
}

void qvtds(QVTCOM* com) {
  Host& h = *com->host;
  const IDSTMT& s = com->istmt;
  if (s.lead > 0) com->outsum.forlead = poolArray<double>(*com, com->cpool, s.lead);
  if (s.back > 0) com->outcps.forback = poolArray<double>(*com, com->cpool, s.back + 1L);
  com->memdef += hostMemDefault(h);
  if (com->memdef != 0) {
    raiseRc(*com, kRcMemory);
    com->error = 1;
    return;
  }

  auto& ds = com->ds;
  for (DATASETS* d : {&ds.data, &ds.out, &ds.outest, &ds.outfor, &ds.outcomp, &ds.outsum,
                      &ds.outstat, &ds.outtrend, &ds.outseason, &ds.outprocinfo})
    describe(h, *d);
  if (ds.outest.fileid) outest(com);
  if (ds.outfor.fileid) outfor(com);
  if (ds.outcomp.fileid) outcomp(com);
  notYet(com, ds.outsum, "OUTSUM=");
  notYet(com, ds.outstat, "OUTSTAT=");
  notYet(com, ds.outtrend, "OUTTREND=");
  notYet(com, ds.outseason, "OUTSEASON=");

  inout(com);
  if (com->error == 0) nobs(com);

  if (com->nvars >= 2 && com->error == 0) {
    if (ztinit(h, &com->infile, &com->outfile) != 0) {
      raiseRc(*com, kRcSpool);
      hostExit(h, com->rc, 0);
    }
  }
  if (com->memdef != 0) {
    hostMsgLog(h, kMsgProc, kMsgSetupMemory);
    hostMemMessage(h, com->memdef);
    raiseRc(*com, kRcMemory);
    com->error = 1;
  }
  if (com->rc > kRcWarning) hostExit(h, com->rc, 0);
}

}  // namespace qvt
