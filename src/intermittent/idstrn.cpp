// Transformed components, seasonal statistics, and the average-demand series
// laid back on the time grid of the series.
#include "intermittent/idseries.hpp"
#include "intermittent/idsstats.hpp"

#include "run/missing.hpp"
#include "stats/transform.hpp"

#include <algorithm>

namespace qvt {
namespace {

using idsimpl::getstats;
using idsimpl::resetstats;

// Demands that count for eflag: 2 the fit sample, 1 with the hold-out, else all.
long counted(const IDSERIES& ids, int eflag) {
  if (eflag == 2) return ids.nsample;
  if (eflag == 1) return ids.nsample + ids.nholdout;
  return ids.n;
}

// Intervals and average demands start their statistics at demand 1: demand
// 0's interval runs from the series start, not from a demand.
long first(const IDSCOMP& c) { return c.type == kIdsSize ? 0 : 1; }

// Transforms plain into trns. Returns 0, or the code of the failure:
// kIdsNonPositive or kIdsTransform. *skipped is set when AUTO found the
// component unfit for the log, which is no failure of the call.
int transform(const IDSERIES& ids, const IDSCOMP& plain, IDSCOMP& trns, int code, double parm,
              bool* skipped) {
  *skipped = false;
  std::fill(trns.data.begin(), trns.data.end(), kMissing);
  resetstats(&trns.stats);
  for (IDSSTATS& s : trns.seasons) resetstats(&s);
  trns.trnscode = 0;
  trns.trnsparm = kMissing;
  trns.trndcode = 0;
  trns.trndparm = kMissing;
  if (code == kTrnsNone) return kIdsOk;
  // Sizes with no demand in the sample have nothing to judge the domain by.
  if (plain.type == kIdsSize && plain.stats.n < 1) return kIdsOk;
  const double smallest = plain.stats.n < 1 ? plain.data[0] : plain.stats.min;
  if (code == kTrnsAuto) {
    if (wzmis(smallest) || !(smallest > 0)) {
      *skipped = true;
      return kIdsTransform;
    }
    code = kTrnsLog;
  } else if (code < kTrnsLog || code > kTrnsBoxCoxX12) {
    // A code this system has no transformation for can't be applied, and
    // storing it would mislead whatever back-transforms the forecasts.
    return kIdsTransform;
  } else if (wzmis(smallest) || !(smallest > 0)) {
    return kIdsNonPositive;
  }
  // The logistic scale comes from the data; it fails only when no value is
  // positive, which the test above has already refused.
  if (code == kTrnsLogistic && ztstgp(plain.data.data(), ids.n, &parm) < 0) return kIdsTransform;
  if (ztstfv(plain.data.data(), ids.n, code, parm, trns.data.data()) < 0) return kIdsTransform;
  trns.trnscode = code;
  trns.trnsparm = parm;
  const long m = ids.nsample + ids.nholdout;
  const long f = first(plain);
  getstats(trns.data.data() + f, m - f, &trns.stats);
  return kIdsOk;
}

// Seasonal statistics of comp over its elements below c.
void seasonstats(const IDSERIES& ids, IDSCOMP& comp, long c, double* work) {
  const long f = first(comp);
  for (int s = 0; s < static_cast<int>(comp.seasons.size()); ++s) {
    IDSSTATS& st = comp.seasons[s];
    long k = 0;
    for (long i = f; i < c; ++i) {
      if (ids.scodes[i] == s) work[k++] = comp.data[i];
    }
    getstats(work, k, &st);
    st.prob = static_cast<double>(st.n) / static_cast<double>(c);
    if (!wzmis(st.avg)) st.adj = comp.type == kIdsSize ? st.avg - st.min : st.prob * st.avg;
  }
}

}  // namespace

int idstrn(IDSERIES* ids, int itrnscode, double itrnsparm, int strnscode, double strnsparm, int atrnscode,
           double atrnsparm) noexcept {
  if (ids == nullptr) return kIdsBadArg;
  if (ids->n < 1) {
    ids->error = kIdsNoDemand;
    return kIdsNoDemand;
  }
  struct Job {
    IDSCOMP* plain;
    IDSCOMP* trns;
    int code;
    double parm;
  };
  const Job jobs[] = {{&ids->intv, &ids->itrns, itrnscode, itrnsparm},
                      {&ids->size, &ids->strns, strnscode, strnsparm},
                      {&ids->adem, &ids->atrns, atrnscode, atrnsparm}};
  bool failed = false;
  for (const Job& j : jobs) {
    bool skipped = false;
    const int rc = transform(*ids, *j.plain, *j.trns, j.code, j.parm, &skipped);
    if (rc == kIdsOk) continue;
    // The plain component stays valid; only a fixed code fails the call.
    ids->error = kIdsTransform;
    if (!skipped) failed = true;
  }
  return failed ? kIdsTransform : kIdsOk;
}

int idsss(IDSERIES* ids, int eflag, int sflag) noexcept {
  if (ids == nullptr) return kIdsBadArg;
  if (ids->n < 1) return kIdsNoDemand;
  IDSCOMP* all[] = {&ids->intv, &ids->itrns, &ids->size, &ids->strns, &ids->adem, &ids->atrns};
  const long c = counted(*ids, eflag);
  if (c < 1) {
    for (IDSCOMP* comp : all) {
      for (IDSSTATS& s : comp->seasons) resetstats(&s);
    }
    return kIdsNoDemand;
  }
  if (ids->seasonality <= 1 || sflag == 0) return kIdsOk;
  for (IDSCOMP* comp : all) {
    const bool used = comp == &ids->intv || comp == &ids->size || comp == &ids->adem || comp->trnscode != 0;
    if (used) {
      seasonstats(*ids, *comp, c, ids->work.data());
    } else {
      for (IDSSTATS& s : comp->seasons) resetstats(&s);
    }
  }
  return kIdsOk;
}

int idsats(IDSERIES* ids, int eflag, int bflag, double* series) noexcept {
  if (ids == nullptr || series == nullptr) return kIdsBadArg;
  const long nobs = ids->nobs;
  if (ids->n < 1) {
    std::fill(series, series + nobs, kMissing);
    return kIdsNoDemand;
  }
  const long c = counted(*ids, eflag);
  if (c < 1) {
    std::fill(series, series + nobs, kMissing);
    return kIdsNoFitDemand;
  }
  const double b = bflag != 0 ? ids->base : 0.0;
  const double* adem = ids->adem.data.data();
  // Each stretch of the grid shows the average demand of the interval that
  // the demand at its end closes; past the last counted demand there is no
  // closed interval to show.
  long t = nobs - 1;
  for (; t >= ids->obs[c - 1]; --t) series[t] = kMissing;
  long i = c - 1;
  for (; t >= 0; --t) {
    while (i > 0 && t <= ids->obs[i - 1]) --i;
    series[t] = wzmis(adem[i]) || wzmis(b) ? kMissing : b + adem[i];
  }
  return kIdsOk;
}

}  // namespace qvt
