#include "run/append.hpp"

#include "run/dovqvt.hpp"
#include "smoothing/esmfor.hpp"

namespace qvt {
namespace {

bool isSelection(int code) noexcept {
  return code == kModelBest || code == kModelBestN || code == kModelBestS;
}

}  // namespace

int best(QVTCOM* com, int /*nseasons*/) {
  const int method = com->current.modelcode;
  const int tc = com->current.trnscode;
  // A fixed model with a fixed transformation needs no choice.
  if (!isSelection(method) && tc != kTrnsAuto) return 0;
  // The seasonality test and the hold-out comparison of candidates are not
  // in this build: the series ends as a failed selection, with a message
  // that says so rather than a model that was not asked for.
  if (com->counts.failures < com->maxerror)
    hostMsgLog(*com->host, kMsgProc, kMsgSelectionNotBuilt,
               {com->current.var.str(), com->current.varptr->fstmt->model.name.str()});
  return -1;
}

int evaluation(QVTCOM* /*com*/, const WINMODEL* /*esm*/, const FOR_OUT* /*fore*/) {
  // The statistics of fit feed only OUTSTAT= and the statistics table,
  // neither of which this build writes; the step notes that once.
  return 0;
}

int performance(QVTCOM* /*com*/, const WINMODEL* /*esm*/, const FOR_OUT* /*fore*/) {
  // As evaluation: the BACK= statistics have no reader in this build.
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
  } else if (com->current.trnscode == kTrnsNone && esm != nullptr) {
    // The sum of the leads STARTSUM+1 .. LEAD of the forecast range, with
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
