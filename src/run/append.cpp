#include "run/append.hpp"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <span>

#include "output/qvtds.hpp"
#include "run/dovqvt.hpp"
#include "report/qvto.hpp"
#include "smoothing/esmbest.hpp"
#include "smoothing/esmfor.hpp"
#include "statements/qvtpcodes.hpp"
#include "stats/fitstats.hpp"
#include "stats/seastest.hpp"
#include "stats/ztscp.hpp"

namespace qvt {
namespace {

bool isSelection(int code) noexcept {
  return code == kModelBest || code == kModelBestN || code == kModelBestS;
}

// The candidates of each class, in the order that breaks ties.
constexpr int kBestModels[] = {kModelSimple, kModelLinear, kModelDampTrend,
                               kModelSeasonal, kModelAddWinters, kModelWinters};
constexpr std::span<const int> kAll{kBestModels};

std::span<const int> candidates(int cls, const int& single) {
  switch (cls) {
    case kModelBest: return kAll;
    case kModelBestN: return kAll.first(3);
    case kModelBestS: return kAll.last(3);
    default: return {&single, 1};
  }
}

// SIGLEVEL= at these bounds decides without a test; the lower one is also
// the test's smallest variance.
constexpr double kAlwaysSeasonal = 0.9999999999999999;
constexpr double kNeverSeasonal = 1.110223024625157e-16;

// The seasonality test of a series of m cells: on the levels first, then on
// first differences. A test that can't be made keeps `held`.
int seasonClass(const double* v, long m, int nseasons, double siglevel, int held) {
  double aic[3];
  int r = zssntst(v, m, nullptr, 0, 1, nseasons, kNeverSeasonal, siglevel, aic);
  if (r == 1) return kModelBestS;
  if (r != 0) return held;
  const int lag = 1;
  r = zssntst(v, m, &lag, 1, 1, nseasons, kNeverSeasonal, siglevel, aic);
  return r == 0 ? kModelBestN : r == 1 ? kModelBestS : held;
}


// Steps 5 to 8 of performance: the series' errors of the BACK= range, from
// index k of the forecast vectors, into the cross-series collector. Only the
// periods that have forecast cells are read (BACK= above LEAD leaves fewer).
void crossSeries(QVTCOM* com, IDMODEL* idm, const FOR_OUT* fore, long k, double last) {
  ZTS_CP* cp = com->outcps.cp;
  const auto& pr = com->print;
  const long back = std::min(static_cast<long>(com->istmt.back), fore->n - k);
  if (cp == nullptr || k < 0 || back < 1) return;
  if (pr.performance) ztscpr(cp, 1, 0, 0);
  if (!pr.performance && !pr.performancesummary && !pr.performanceoverall) return;
  const double* a = fore->actual + k;
  const double* p = fore->predicted + k;
  const double* l = fore->lower != nullptr ? fore->lower + k : nullptr;
  const double* u = fore->upper != nullptr ? fore->upper + k : nullptr;
  if (idm == nullptr) {
    ztscpa(cp, last, a, p, l, u, back, -1);
  } else if (idm->ids != nullptr && com->out.trend != nullptr) {
    // The demands on the scale of a rate per period, in out.trend as
    // scratch: each demand is spread over the periods since the last one,
    // periods behind the last demand get 0.
    const IDSERIES& ids = *idm->ids;
    const long s = idm->nsample + idm->nholdout;
    double* w = com->out.trend;
    const auto& intv = ids.intv.data;
    const auto& size = ids.size.data;
    const double nx = s >= 0 && s < static_cast<long>(intv.size()) && !wzmis(intv[s]) ? intv[s] : 0;
    long q = std::max(0L, static_cast<long>(nx) - 1);
    for (long i = 0; i < back; ++i) {
      ++q;
      if (wzmis(a[i]) || std::fabs(a[i]) <= ids.zero) {
        w[i] = 0;
      } else {
        w[i] = static_cast<double>(q);
        q = 0;
      }
    }
    double v = 0;
    for (long i = back - 1; i >= 0; --i) {
      if (w[i] != 0) v = a[i] / w[i];
      w[i] = v;
    }
    // The relative errors' base: the last demand of the fit, as a rate when
    // an interval precedes it.
    double hold = s >= 1 && s - 1 < static_cast<long>(size.size()) ? size[s - 1] : kMissing;
    if (!wzmis(hold) && s >= 2 && nx > 0) hold /= nx;
    ztscpa(cp, hold, w, p, l, u, back, -1);
  }
  if (pr.performance) {
    ztscpci(cp);
    qvtocpo(com);
  }
}

}  // namespace

int best(QVTCOM* com, int nseasons) {
  auto& cur = com->current;
  const int method = cur.modelcode;
  const bool autoTrns = cur.trnscode == kTrnsAuto;
  // A fixed model with a fixed transformation needs no choice.
  if (!isSelection(method) && !autoTrns) return 0;
  const FORSTMT& f = *cur.varptr->fstmt;
  const auto fail = [&](int number) {
    if (com->counts.failures < com->maxerror) hostMsgLog(*com->host, kMsgProc, number, {cur.var.str()});
    return -1;
  };
  if (cur.nobs < 1) return fail(kMsgChoiceNoData);

  // The untransformed series; the logistic scale is fitted without the
  // holdout, so that the held-back values don't shape the candidates.
  const double* y = com->out.y + cur.start;
  const long m = cur.nobs;
  const long h = cur.holdout;
  double c = cur.trnsparm;
  if (isSelection(method) && cur.trnscode == kTrnsLogistic && h > 0 && h < m) ztstgp(y, m - h, &c);

  // The class of the first list (plain) and of the log list (logc). With
  // AUTO each is tested on its own scale: cur.x is the log series then.
  int plain = method, logc = method;
  if (method == kModelBest) {
    const double s = f.seasontest.siglevel;
    if (nseasons < 2) {
      plain = logc = kModelBestN;
    } else if (f.seasontest.none) {
      plain = logc = kModelBest;
    } else if (s >= kAlwaysSeasonal) {
      plain = logc = kModelBestS;
    } else if (s <= kNeverSeasonal || m < 2L * nseasons) {
      plain = logc = kModelBestN;
    } else {
      logc = plain = seasonClass(cur.x, m, nseasons, s, kModelBest);
      if (autoTrns) plain = seasonClass(y, m, nseasons, s, logc);
    }
  }

  int models[2 * std::size(kBestModels)];
  double criteria[2 * std::size(kBestModels)];
  const auto first = candidates(plain, method);
  const auto second = autoTrns ? candidates(logc, method) : std::span<const int>{};
  std::copy(first.begin(), first.end(), models);
  std::copy(second.begin(), second.end(), models + first.size());
  const int n1 = static_cast<int>(first.size());
  const int n2 = static_cast<int>(second.size());
  const int trnsopt = f.transform.median ? 3 : 2;
  const auto choose = [&](int offset, int count, int trns) {
    return esmbest(y, m, cur.lead, &com->istmt.intv, cur.first, nseasons, com->istmt.scode53, f.select.code, h,
                   f.nbackcast, models + offset, count, trns, c, trnsopt, criteria + offset, nullptr);
  };
  const int r1 = choose(0, n1, autoTrns ? kTrnsNone : cur.trnscode);
  const int r2 = autoTrns ? choose(n1, n2, kTrnsLog) : -1;

  if (r1 < 0 && (!autoTrns || r2 < 0)) {
    const int number = kMsgChoiceFailed - r1;
    return fail(number > kMsgChoiceFailed && number <= kMsgChoiceLast ? number : kMsgChoiceFailed);
  }
  // The transformation of each candidate, for the selection table.
  int trns[2 * std::size(kBestModels)];
  std::fill(trns, trns + n1, autoTrns ? kTrnsNone : cur.trnscode);
  std::fill(trns + n1, trns + n1 + n2, kTrnsLog);
  if (!autoTrns) {
    cur.modelcode = models[r1];
  } else {
    // With AUTO the better of the two winners by the criterion; a tie keeps
    // the data as they are.
    const bool logWins = r1 < 0 || (r2 >= 0 && ztssfmc(criteria[r1], criteria[n1 + r2], f.select.code) > 0);
    cur.modelcode = logWins ? models[n1 + r2] : models[r1];
    cur.trnscode = logWins ? kTrnsLog : kTrnsNone;
    qvtptrn(com, cur.trnscode, &cur.trnsname, &cur.trns);
  }
  if (com->print.estimates) qvtosel(com, models, trns, criteria, n1 + n2);
  return 0;
}

int evaluation(QVTCOM* com, IDMODEL* idm, const WINMODEL* esm, const FOR_OUT* fore) {
  // OUTSTAT= and the statistics table read these.
  if (!com->ds.outstat.fileid && !com->print.statistics) return 0;
  SF_STATS& st = com->outstat.stats;
  st = SF_STATS{};
  if (com->current.modelcode == kModelCroston) {
    // The demand sizes of the fit and hold-out range against what the
    // forecast rate accumulates over each interval.
    if (idm == nullptr) return 0;
    idmeval(idm, 1, 1, &st);
  } else {
    if (esm == nullptr) return 0;
    ztssfme(kMissing, fore->actual, fore->predicted, com->current.nobs, esm->pest.nparms, &st);
  }
  qvtdsof(com, 0);
  qvtosof(com, 0);
  return 0;
}

int performance(QVTCOM* com, IDMODEL* idm, const WINMODEL* esm, const FOR_OUT* fore) {
  // The BACK= range for OUTSTAT=, the performance statistics table and the
  // cross-series collector.
  const long back = com->istmt.back;
  const auto& pr = com->print;
  const bool cross = pr.performance || pr.performancesummary || pr.performanceoverall;
  if ((!com->ds.outstat.fileid && !pr.statistics && !cross) || back < 1) return 0;
  SF_STATS& st = com->outstat.stats;
  st = SF_STATS{};
  const bool stat = com->ds.outstat.fileid || pr.statistics;
  if (com->current.modelcode == kModelCroston) {
    if (idm == nullptr) return 0;
    if (stat) {
      idmeval(idm, 1, 2, &st);
      qvtdsof(com, 1);
      qvtosof(com, 1);
    }
    crossSeries(com, idm, fore, com->out.nobs - back, kMissing);
    return 0;
  }
  if (esm == nullptr) return 0;
  // With BACK= above LEAD the forecasts stop short of the input's end; the
  // statistics then cover the BACK= periods that have forecast cells.
  const long k = com->out.nobs - back - com->current.start;
  const long m = std::min(back, fore->n - k);
  if (k < 0 || m < 1) return 0;
  // The random walk of the relative errors starts from the last actual of
  // the fit range.
  double last = kMissing;
  for (long i = k - 1; i >= 0; --i) {
    if (!wzmis(fore->actual[i])) {
      last = fore->actual[i];
      break;
    }
  }
  if (stat) {
    ztssfme(last, fore->actual + k, fore->predicted + k, m, 0, &st);
    qvtdsof(com, 1);
    qvtosof(com, 1);
  }
  crossSeries(com, nullptr, fore, k, last);
  return 0;
}

int summation(QVTCOM* com, WINMODEL* esm, const FOR_OUT* fore) {
  auto& s = com->outsum;
  const int L = com->istmt.lead;
  const int S = com->istmt.startsum;
  const long n = fore->n;
  s.pred = s.std = s.lower = s.upper = kMissing;
  if (L < 1 || n < L) return 0;
  const double alpha = com->current.varptr->fstmt->alpha;
  if (L == S) {
    // The summary is the last forecast itself.
    s.pred = fore->predicted[n - 1];
    if (com->current.trnscode == kTrnsNone) {
      s.std = fore->std[n - 1];
      s.lower = fore->lower[n - 1];
      s.upper = fore->upper[n - 1];
    }
  } else if (com->current.modelcode == kModelCroston) {
    // The demand-rate forecast is flat, so the sum over the leads is a
    // product; no limits of a sum exist for it.
    const double p = fore->predicted[n - L];
    s.pred = wzmis(p) ? kMissing : (L - S + 1) * p;
  } else if (com->current.trnscode == kTrnsNone && esm != nullptr) {
    // The sum of the leads STARTSUM .. LEAD of the forecast range, with
    // the limits of a sum from the model's moving-average weights.
    const int lead = static_cast<int>(com->current.lead);
    esmsum(esm, fore->predicted + com->current.nobs, lead, lead + S - L, alpha, &s.pred, &s.std,
           &s.lower, &s.upper);
  } else {
    double sum = 0;
    bool any = false;
    for (long i = n - L + S - 1 > 0 ? n - L + S - 1 : 0; i < n; ++i) {
      if (wzmis(fore->predicted[i])) continue;
      sum += fore->predicted[i];
      any = true;
    }
    s.pred = any ? sum : kMissing;
  }
  if (s.forlead != nullptr) {
    const double* src = nullptr;
    switch (com->current.varptr->fstmt->use.code) {
      case kUsePredict: src = fore->predicted; break;
      case kUseLower: src = fore->lower; break;
      case kUseUpper: src = fore->upper; break;
      default: break;
    }
    for (int i = 0; i < L; ++i) s.forlead[i] = src != nullptr ? src[n - L + i] : kMissing;
  }
  return 0;
}

void append(QVTCOM* com, const FOR_OUT* fore, double* out) {
  const FORSTMT& f = *com->current.varptr->fstmt;
  const double* src = nullptr;
  switch (f.use.code) {
    case kUsePredict: src = fore->predicted; break;
    case kUseLower: src = fore->lower; break;
    case kUseUpper: src = fore->upper; break;
    default: return;  // USE=NONE: out stays the accumulated series
  }
  const long s = com->current.start;
  const long n = com->current.nobs;
  const long back = com->istmt.back;
  const long nobs = com->out.nobs;
  const long lead = com->istmt.lead;
  if (f.replacemissing) {
    for (long i = 0; i < n; ++i)
      if (wzmis(out[s + i]) && !wzmis(src[i])) out[s + i] = src[i];
  }
  if (f.replaceback && back > 0) {
    // Also covers missing cells at the end of the fit range: everything from
    // the last used period on is the model's.
    for (long t = s + n, i = n; t < nobs; ++t, ++i) out[t] = src[i];
  }
  if (back < 1) {
    for (long i = 0; i < com->current.lead; ++i) out[s + n + i] = src[n + i];
  } else {
    // Only the forecasts behind the input's end: the BACK= periods keep their
    // actual values unless REPLACEBACK said otherwise.
    for (long i = 0; i < lead - back; ++i) out[nobs + i] = src[nobs - s + i];
  }
}

}  // namespace qvt
