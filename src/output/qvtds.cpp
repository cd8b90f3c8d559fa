// Set-up of the output data sets, the input bindings, the expected size of a
// BY group and the spool: everything that is done once before the first
// group is read.
#include "output/qvtds.hpp"

#include <algorithm>
#include <array>
#include <string>
#include <vector>

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

void outsum(QVTCOM* com) {
  auto& s = com->outsum;
  std::vector<OutColumn> cols = {
      textColumn("_NAME_", 4201, &com->current.var),
      numColumn("_STATUS_", 4202, &com->current.status),
      numColumn("NOBS", 4210, &s.nobs),
      numColumn("N", 4211, &s.n),
      numColumn("NMISS", 4212, &s.nmiss),
      numColumn("MIN", 4213, &s.stats.min),
      numColumn("MAX", 4214, &s.stats.max),
      numColumn("MEAN", 4215, &s.stats.mean),
      numColumn("STDDEV", 4216, &s.stats.std),
  };
  // Without a horizon there is no forecast to summarise: the forecast
  // columns are left out, not kept as missing.
  const int lead = com->istmt.lead;
  if (lead > 0 && s.forlead != nullptr) {
    cols.push_back(numColumn("PREDICT", 4220, &s.pred));
    cols.push_back(numColumn("LOWER", 4221, &s.lower));
    cols.push_back(numColumn("UPPER", 4222, &s.upper));
    cols.push_back(numColumn("STD", 4223, &s.std));
    for (int i = 1; i <= lead; ++i) {
      OutColumn c = numColumn("_LEAD" + std::to_string(i) + "_", 0, &s.forlead[i - 1]);
      c.info.label = catLabel(*com->host, kLblLead, {static_cast<long long>(i)});
      cols.push_back(std::move(c));
    }
  }
  defineDs(com, com->ds.outsum, kLblOutsum, cols);
}

void outstat(QVTCOM* com) {
  auto& o = com->outstat;
  std::vector<OutColumn> cols = {
      textColumn("_NAME_", 4301, &com->current.var),
      textColumn("_REGION_", 4350, &o.region),
      numColumn("DFE", 1200, &o.dfe),
      numColumn("N", 1202, &o.n),
      numColumn("NOBS", 1201, &o.nobs),
      numColumn("NMISSA", 1203, &o.nmissa),
      numColumn("NMISSP", 1204, &o.nmissp),
      numColumn("NPARMS", 1205, &o.nparms),
  };
  // The statistics of fit, in the order of the data set: name, label, field.
  struct Stat {
    const char* name;
    int label;
    double SF_STATS::*field;
  };
  using S = SF_STATS;
  static constexpr Stat kStats[] = {
      {"TSS", 1206, &S::tss},         {"SST", 1207, &S::sst},         {"SSE", 1231, &S::sse},
      {"MSE", 1232, &S::mse},         {"RMSE", 1233, &S::rmse},       {"UMSE", 1234, &S::umse},
      {"URMSE", 1235, &S::urmse},     {"MAPE", 1273, &S::mape},       {"MAE", 1263, &S::mae},
      {"RSQUARE", 1240, &S::rsquare}, {"ADJRSQ", 1241, &S::adj_Rsq},  {"AADJRSQ", 1242, &S::a_adj_Rsq},
      {"RWRSQ", 1243, &S::rw_Rsq},    {"AIC", 1250, &S::aic},         {"AICC", 1253, &S::aicc},
      {"SBC", 1251, &S::sbc},         {"APC", 1252, &S::apc},         {"MAXERR", 1261, &S::maxerr},
      {"MINERR", 1260, &S::minerr},   {"MAXPE", 1271, &S::maxpe},     {"MINPE", 1270, &S::minpe},
      {"ME", 1262, &S::me},           {"MPE", 1272, &S::mpe},         {"MDAPE", 1274, &S::mdape},
      {"GMAPE", 1275, &S::gmape},     {"MINPPE", 1264, &S::minppe},   {"MAXPPE", 1265, &S::maxppe},
      {"MPPE", 1266, &S::mppe},       {"MAPPE", 1267, &S::mappe},     {"MDAPPE", 1268, &S::mdappe},
      {"GMAPPE", 1269, &S::gmappe},   {"MINSPE", 1280, &S::minspe},   {"MAXSPE", 1281, &S::maxspe},
      {"MSPE", 1282, &S::mspe},       {"SMAPE", 1283, &S::smape},     {"MDASPE", 1284, &S::mdaspe},
      {"GMASPE", 1285, &S::gmaspe},   {"MINRE", 1290, &S::minre},     {"MAXRE", 1291, &S::maxre},
      {"MRE", 1292, &S::mre},         {"MRAE", 1293, &S::mrae},       {"MDRAE", 1294, &S::mdrae},
      {"GMRAE", 1295, &S::gmrae},     {"MASE", 1254, &S::mase},       {"MINAPES", 1255, &S::minapes},
      {"MAXAPES", 1256, &S::maxapes}, {"MAPES", 1257, &S::mapes},     {"MDAPES", 1258, &S::mdapes},
      {"GMAPES", 1259, &S::gmapes},
  };
  for (const Stat& st : kStats) cols.push_back(numColumn(st.name, st.label, &(o.stats.*st.field)));
  defineDs(com, com->ds.outstat, kLblOutstat, cols);
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
  if (ds.outsum.fileid) outsum(com);
  if (ds.outstat.fileid) outstat(com);
  if (ds.outtrend.fileid) outtrend(com);
  if (ds.outseason.fileid) outseason(com);

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
