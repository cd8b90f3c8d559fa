// The per-series run of one BY group: from the raw records of each series to
// its rows in every output that was asked for. A series that fails gets its
// status, its rows with missing forecasts and, within MAXERROR=, a message;
// the loop always goes on with the next one.
#include <algorithm>
#include <cmath>
#include <string>

#include "calendar/zintcycle.hpp"
#include "calendar/zintti.hpp"
#include "intermittent/idmodel.hpp"
#include "intermittent/idseries.hpp"
#include "output/qvtds.hpp"
#include "output/ztspool.hpp"
#include "report/qvtg.hpp"
#include "report/qvto.hpp"
#include "stats/ztscp.hpp"
#include "run/append.hpp"
#include "run/dovqvt.hpp"
#include "run/qvtin.hpp"
#include "smoothing/esmfor.hpp"
#include "statements/qvtpcodes.hpp"
#include "stats/fitstats.hpp"
#include "stats/transform.hpp"

namespace qvt {
namespace {

// Owns the smoothing model of the series in hand: every way out of the
// series frees it (esmtrm takes null).
struct ModelGuard {
  WINMODEL* esm = nullptr;
  ModelGuard() = default;
  ModelGuard(const ModelGuard&) = delete;
  ModelGuard& operator=(const ModelGuard&) = delete;
  ~ModelGuard() { esmtrm(esm); }
};

// The demand series and the intermittent model of a BY group: made once for
// the group and reloaded for each series; every way out of the group frees
// them.
struct DemandGuard {
  IDSERIES* ids = nullptr;
  IDMODEL* idm = nullptr;
  DemandGuard() = default;
  DemandGuard(const DemandGuard&) = delete;
  DemandGuard& operator=(const DemandGuard&) = delete;
  ~DemandGuard() {
    idstrm(&ids);
    idmtrm(&idm);
  }
};

// The message of a failed esmint, esmfit or esmprd; none for memory (-100),
// which has been reported by the driver already.
void modelMessage(QVTCOM* com, int r) {
  if (r == -100) return;
  const int number = r == -2 ? kMsgTooFewValues : r == -7 ? kMsgNonPositive : kMsgEstimation;
  hostMsgLog(*com->host, kMsgProc, number, {com->current.var.str()});
}

// The holdout of the smoothing path and that of the demand series, from
// HOLDOUT= and HOLDOUTPCT= (already a fraction).
void holdouts(QVTCOM* com, const FORSTMT& f, long n, long* hd) {
  const double hp = f.holdoutpct;
  const long h = f.holdout;
  if (!(hp > 0)) {
    com->current.holdout = h;
    *hd = h;
    return;
  }
  const auto part = [hp](long m) { return static_cast<long>(std::floor(hp * static_cast<double>(m))); };
  if (h < 1) {
    com->current.holdout = part(n);
    *hd = part(com->out.nobs);
  } else {
    com->current.holdout = std::min(h, part(n));
    *hd = std::min(h, part(com->out.nobs));
  }
}

// Puts the used range on the scale the model is fitted on: out.actual holds
// the transformed values and cur.x points at what the model sees. AUTO is
// tried as the log; where the log can't be taken the series goes on
// untransformed, while a transformation asked for by name ends the series.
bool transformSeries(QVTCOM* com, long n) {
  auto& cur = com->current;
  if (cur.trnscode == kTrnsNone) {
    cur.x = cur.y;
    return true;
  }
  const int code = cur.trnscode == kTrnsAuto ? kTrnsLog : cur.trnscode;
  if (code == kTrnsLogistic) ztstgp(cur.y, n, &cur.trnsparm);
  if (ztstfv(cur.y, n, code, cur.trnsparm, com->out.actual) == 0) {
    cur.x = com->out.actual;
    return true;
  }
  if (cur.trnscode == kTrnsAuto) {
    cur.trnscode = kTrnsNone;
    qvtptrn(com, kTrnsNone, &cur.trnsname, &cur.trns);
    cur.x = cur.y;
    return true;
  }
  if (failure(com, kStatusTransform)) hostMsgLog(*com->host, kMsgProc, kMsgTransformFailed, {cur.var.str()});
  return false;
}

// Clears the result vectors of out and points a forecast at them.
FOR_OUT resultVectors(QVTCOM* com, double alpha) {
  const long tobs = com->out.tobs;
  for (double* vec : {com->out.predict, com->out.upper, com->out.lower, com->out.error, com->out.std,
                      com->out.level, com->out.trend, com->out.season})
    vzfdl(kMissing, vec, static_cast<std::size_t>(tobs));
  FOR_OUT fore;
  fore.alpha = alpha;
  fore.predicted = com->out.predict;
  fore.residual = com->out.error;
  fore.upper = com->out.upper;
  fore.lower = com->out.lower;
  fore.std = com->out.std;
  fore.level = com->out.level;
  fore.trend = com->out.trend;
  fore.season = com->out.season;
  return fore;
}

// The intermittent path of a series whose demand series is loaded and
// transformed: the model is chosen and fitted on the demands, its demand
// rate spread over the whole frame. The used range is the whole frame
// whatever its missing ends, since a missing or zero period is no demand.
void runDemands(QVTCOM* com, const FORSTMT& f, IDSERIES* ids, IDMODEL* idm) {
  Host& host = *com->host;
  auto& cur = com->current;
  const long back = com->istmt.back;
  const int lead = com->istmt.lead;
  cur.modelcode = kModelCroston;
  cur.nobs = com->out.nobs - back;
  cur.lead = lead;
  cur.start = 0;
  cur.y = com->out.y;
  cur.first = com->out.id[0];
  cur.last = cur.nobs > 0 ? com->out.id[cur.nobs - 1] : cur.first;
  const auto fail = [&](int status, int r) {
    if (failure(com, status)) idmmsg(host, idm, r, &cur.var);
  };
  int r = idmset(idm, ids);
  if (r < 0) return fail(kStatusForecast, r);
  if (com->print.summary) {
    qvtoids(com, ids);
    for (int c : {kIdsInterval, kIdsSize, kIdsAverage}) qvtoiss(com, ids, c);
  }
  if (memory(com) < 0) return;
  r = idmsel(idm, f.alpha);
  if (r < 0) return fail(kStatusNoData, r);
  if (com->print.estimates) {
    // The choices made within each form that was a candidate, then between the forms.
    const int forms = idm->spec.modcode;
    if (forms != kIdmAverage) {
      qvtosec(com, &idm->intv);
      qvtosec(com, &idm->size);
    }
    if (forms != kIdmCroston) qvtosec(com, &idm->adem);
    if (forms == kIdmBoth) qvtosei(com, idm);
  }
  if (memory(com) < 0) return;
  r = idmfit(idm, 1);
  if (r < 0) return fail(kStatusEstimation, r);

  if (com->ds.outest.fileid) qvtdest(com, nullptr, idm);
  if (com->print.estimates) qvtoest(com, nullptr, idm);
  if (com->print.states) qvtosta(com, nullptr, idm);
  if (memory(com) < 0) return;

  FOR_OUT fore = resultVectors(com, f.alpha);
  r = idmdem(idm, 1, f.alpha);
  if (r >= 0)
    r = idmprd(idm, com->out.y, com->out.nobs, back, kMissing, com->out.id[0], lead, f.alpha, &fore);
  if (r < 0) return fail(kStatusForecast, r);
  fore.date = com->out.id;
  fore.actual = com->out.y;
  if (com->ds.outfor.fileid) qvtdfor(com, &fore);
  if (com->print.forecasts) qvtodem(com, idm);
  if (!com->plot.none) qvtgdem(com, idm);
  if (com->print.forecasts) qvtofor(com, &fore, kModelCroston);
  if (memory(com) < 0) return;

  evaluation(com, idm, nullptr, &fore);
  performance(com, idm, nullptr, &fore);
  append(com, &fore, com->out.y);
  putresult(com);
  summation(com, nullptr, &fore);
  qvtdsum(com);
  qvtosum(com, 1);
}

// One series, from its raw records to its rows. Every return is the end of
// the series; the caller goes on with the next one.
void runSeries(QVTCOM* com, int k, int nseasons, const DemandGuard& dm) {
  Host& host = *com->host;
  VAR& v = com->vars[k];
  const FORSTMT& f = *v.fstmt;
  auto& cur = com->current;
  const long back = com->istmt.back;
  const int lead = com->istmt.lead;

  com->counts.series += 1;
  int method = f.model.code;
  int trnscode = f.transform.code;
  cur.varptr = &v;
  cur.var = v.name;
  cur.varlabel = v.label.len >= 1 ? v.label : u_slabel(v.name.view());
  cur.modelcode = method;
  cur.trnscode = trnscode;
  cur.trnsparm = f.transform.parm;
  cur.trnsname = f.transform.name;
  cur.trns = f.transform.label;

  cur.status = kStatusOk;
  com->outsum.nobs = com->outsum.n = com->outsum.nmiss = 0;
  com->outsum.pred = com->outsum.std = com->outsum.upper = com->outsum.lower = kMissing;
  com->outsum.stats.min = com->outsum.stats.max = com->outsum.stats.mean = com->outsum.stats.std =
      kMissing;
  if (lead > 0 && com->outsum.forlead != nullptr) vzfdl(kMissing, com->outsum.forlead, lead);

  if (!com->print.none || !com->plot.none) qvtogrp(com, &v);
  getseries(com, k);
  if (com->trend.request != 0) analysis(com);
  accumulate(com, f.acc.code);
  if (f.setmiss.specified && f.setmiss.code != 0)
    zinttis(com->out.y, com->out.nobs, f.setmiss.code, f.setmiss.value, com->out.y, nullptr, nullptr);
  zeromiss(com);

  // The used range: from the first to the last value of the fit range. The
  // horizon grows by the missing tail, so that the forecast starts right
  // behind the last value and all series end at the same period.
  const double* y = com->out.y;
  const long N = com->out.nobs - back;
  long s = 0;
  while (s < N && wzmis(y[s])) ++s;
  long e = N;
  while (e > s && wzmis(y[e - 1])) --e;
  const long n = std::max(e - s, 0L);
  cur.y = com->out.y + s;
  cur.start = s;
  cur.nobs = n;
  com->outsum.nobs = static_cast<double>(n);
  cur.lead = N - e + lead;
  const double first = n > 0 ? com->out.id[s] : (N > 0 ? com->out.id[0] : 0.0);
  cur.first = first;
  cur.last = n > 0 ? com->out.id[s + n - 1] : first;
  // The description of the used range.
  if (com->ds.outsum.fileid || com->print.descstats || com->print.summary)
    ztssumm(cur.y, n, &com->outsum.stats);
  if (com->print.descstats) qvtovar(com);

  if (method == kModelNone) {
    putresult(com);
    qvtdsum(com);
    qvtosum(com, 1);
    return;
  }
  com->counts.requested += 1;
  if (n < 1) {
    if (failure(com, kStatusNoData)) hostMsgLog(host, kMsgProc, kMsgTooFewValues, {cur.var.str()});
    return;
  }
  long hd = 0;
  holdouts(com, f, n, &hd);

  // Intermittent or smoothing. BESTALL asks the demand series first: a
  // series goes the intermittent way only when its demands are far enough
  // apart (the median interval at least INTERMITTENT=) and it has more than
  // one demand and more than one value.
  IDSERIES* ids = dm.ids;
  IDMODEL* idm = dm.idm;
  IDMSPEC spec = com->idmspec;
  spec.select = f.select.code;
  spec.specified = 1;
  const auto loadDemands = [&]() {
    return idsset(ids, com->out.nobs, com->out.y, com->out.id, nullptr, com->base, hd, back);
  };
  const auto transformDemands = [&]() {
    return idstrn(ids, spec.intv.trnscode, spec.intv.trnsparm, spec.size.trnscode, spec.size.trnsparm,
                  spec.adem.trnscode, spec.adem.trnsparm);
  };
  if (method == kModelBestAll) {
    if (ids == nullptr || idm == nullptr) {
      method = kModelBest;
    } else {
      loadDemands();  // what it found decides below; a failure shows in idstrn
      idmspc(idm, &spec, 1);
      const int r = transformDemands();
      idsss(ids, 1, 2);
      double p = kMissing;
      if (r < 0 || idsdti(ids, 1, &p) < 0 || ids->nsample + ids->nholdout < 2 || ids->ndistinct == 1 ||
          wzmis(p) || p < f.intermittent)
        method = kModelBest;
      else
        method = kModelCroston;
    }
  } else if (method == kModelCroston) {
    if (ids == nullptr || idm == nullptr) {
      if (failure(com, kStatusForecast)) hostMsgLog(host, kMsgProc, kMsgSeriesMemory, {cur.var.str()});
      return;
    }
    int r = loadDemands();
    if (r < 0) {
      if (failure(com, kStatusForecast)) idsmsg(host, ids, r, &com->id.name, &cur.var);
      return;
    }
    idmspc(idm, &spec, 1);
    r = transformDemands();
    if (r < 0) {
      if (failure(com, kStatusTransform)) idsmsg(host, ids, r, &com->id.name, &cur.var);
      return;
    }
    idsss(ids, 1, 2);
  }
  if (method == kModelCroston) {
    runDemands(com, f, ids, idm);
    return;
  }

  // Smoothing path.
  cur.modelcode = method;
  if (!transformSeries(com, n)) return;
  if (best(com, nseasons) < 0) {
    failure(com, kStatusNoData);  // best has issued its message
    return;
  }
  method = cur.modelcode;
  trnscode = cur.trnscode;
  cur.x = trnscode != kTrnsNone ? com->out.actual : cur.y;

  ModelGuard model;
  int r = esmint(cur.x, n, &com->istmt.intv, first, nseasons, com->istmt.scode53, method, f.nbackcast,
                 &model.esm);
  if (r >= 0) r = esmfit(model.esm);
  if (r < 0) {
    if (failure(com, kStatusEstimation)) modelMessage(com, r);
    return;
  }

  if (com->ds.outest.fileid) qvtdest(com, model.esm, nullptr);
  if (com->print.estimates) qvtoest(com, model.esm, nullptr);
  if (com->print.states) qvtosta(com, model.esm, nullptr);
  if (memory(com) < 0) return;

  FOR_OUT fore = resultVectors(com, f.alpha);
  r = esmprd(model.esm, cur.x, n, first, com->istmt.scode53, f.alpha, static_cast<int>(cur.lead), &fore);
  if (r < 0) {
    if (failure(com, kStatusForecast)) modelMessage(com, r);
    return;
  }
  if (trnscode != kTrnsNone) {
    // Back to the scale of the data: the forecast and its standard error by
    // the mean (or, asked for, the median) of the back-transformed normal,
    // the limits by the plain inverse, which keeps their coverage. AUTO
    // has been settled by best by now, to the log or to none.
    const double c = cur.trnsparm;
    auto* toData = f.transform.median ? ztstmv : ztstev;
    if (toData(fore.predicted, fore.std, fore.n, trnscode, c, kTrnsGridK, kTrnsGridB, com->out.intwgts,
               fore.predicted, fore.std) < 0) {
      failure(com, kStatusBackTransform);  // counted, without a message
      return;
    }
    ztstiv(fore.lower, fore.n, trnscode, c, fore.lower);
    ztstiv(fore.upper, fore.n, trnscode, c, fore.upper);
  }
  // With BACK= the forecast rows of the BACK= periods have actual values;
  // their residuals are those of the data.
  if (trnscode != kTrnsNone || back > 0) {
    for (long i = 0; i < fore.n; ++i) {
      const double a = com->out.y[s + i];
      const double p = fore.predicted[i];
      fore.residual[i] = wzmis(a) || wzmis(p) ? kMissing : a - p;
    }
  }
  fore.date = com->out.id + s;
  fore.actual = com->out.y + s;
  if (com->ds.outfor.fileid) qvtdfor(com, &fore);
  if (com->ds.outcomp.fileid) qvtdcmp(com, &fore);
  if (!com->plot.none) qvtgmod(com, &fore, method, model.esm->pest.nparms);
  if (!com->plot.none) for (int type : {2, 1, 0}) qvtgfor(com, &fore, method, type);
  if (com->print.forecasts) qvtofor(com, &fore, method);
  if (memory(com) < 0) return;

  evaluation(com, nullptr, model.esm, &fore);
  performance(com, nullptr, model.esm, &fore);
  append(com, &fore, com->out.y);
  putresult(com);
  summation(com, model.esm, &fore);
  qvtdsum(com);
  qvtosum(com, 1);
}

}  // namespace

void putresult(QVTCOM* com) {
  if (com->nvars >= 2) {
    if (ztput(*com->host, com->outfile, com->out.tobs - com->istmt.back, com->out.y) != 0) {
      hostMsgLog(*com->host, kMsgProc, kMsgSpoolFailed);
      raiseRc(*com, kRcSpool);
      hostExit(*com->host, com->rc, 0);
    }
  } else {
    qvtdout(com);
  }
}

bool failure(QVTCOM* com, int status) {
  com->current.status = status;
  putresult(com);
  qvtdsum(com);
  qvtosum(com, 1);
  com->counts.failures += 1;
  return com->counts.failures <= com->maxerror;
}

int memory(QVTCOM* com) {
  com->memdef += hostMemDefault(*com->host);
  if (com->memdef == 0) return 0;
  hostMemMessage(*com->host, com->memdef);
  com->memdef = 0;
  hostMsgLog(*com->host, kMsgProc, kMsgSeriesMemory, {com->current.var.str()});
  com->error = 1;
  raiseRc(*com, memoryRc(*com));
  return -1;
}

void getseries(QVTCOM* com, int varno) {
  // With one series in.y holds it already; the result of the read isn't
  // examined, as a short read leaves missing cells that fail the series.
  if (com->nvars >= 2) ztget(*com->host, com->infile, varno, com->in.nobs, com->in.y);
}

void qvtrun(QVTCOM* com) {
  if (com->error != 0) return;
  // The seasonal cycle of the group: the ID statement's SEASONALITY=, else
  // that of the interval at the first period.
  int nseasons = com->istmt.seasonality;
  if (nseasons < 1) {
    INTERVAL sintv;
    int ns = 0;
    nseasons = zintsea(&com->istmt.intv, com->out.id[0], &sintv, &ns) != 0 ? 0 : ns;
  }
  if (nseasons > 1 && com->trend.request != 0) {
    com->trend.ns = nseasons;
    zintscd(com->istmt.intv, com->out.id[0], com->istmt.scode53, com->out.nobs, com->trend.scodes,
            &com->trend.ns);
  }
  // One demand series and one intermittent model serve the whole group;
  // without them (memory) the intermittent series fail one by one.
  DemandGuard dm;
  const INTERVAL& intv = com->istmt.intv;
  if (idsint(0, 0, &intv, &com->istmt.align, nseasons, &dm.ids) < 0 || idmint(0, 0, &dm.idm) < 0) {
    idstrm(&dm.ids);
    idmtrm(&dm.idm);
  }
  const bool cross = com->print.performancesummary || com->print.performanceoverall;
  if (cross) ztscpr(com->outcps.cp, 0, 1, 0);
  if (com->print.summary) qvtosum(com, 0);
  for (int k = 0; k < com->nvars; ++k) {
    runSeries(com, k, nseasons, dm);
    hostProgress(*com->host, com->counts.series);
  }
  if (!com->print.none || !com->plot.none) qvtogrp(com, nullptr);
  if (com->print.summary) qvtosum(com, 2);
  if (cross) {
    ztscpcg(com->outcps.cp);
    if (com->print.performancesummary) qvtocps(com, 0);
  }
  com->error = 0;
}

}  // namespace qvt
