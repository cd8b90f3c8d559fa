// Automatic choice among smoothing methods. See esmbest.hpp.
//
// A candidate goes from set up (esmint) to fitted (esmfit) to evaluated
// (esmprd, back-transform, ztssfm) and can fall out at any stage, with its
// reason in rcodes. A candidate's failure is never the call's: the call
// fails only when a stage leaves nobody in, and its code names that stage.
// Running out of memory is the exception; it ends the call at the end of the
// stage in which it happened.
#include "smoothing/esmbest.hpp"

#include <bit>
#include <climits>
#include <cstdint>
#include <memory>
#include <new>
#include <vector>

#include "run/missing.hpp"
#include "smoothing/esmfor.hpp"
#include "stats/fitstats.hpp"
#include "stats/transform.hpp"

namespace qvt {

namespace {

// Confidence level of the candidates' forecasts; only the predictions and
// their standard errors are used, so it never changes the choice.
constexpr double kBestAlpha = 0.05;
static_assert(std::bit_cast<std::uint64_t>(kBestAlpha) == 0x3fa999999999999aULL);

// Result codes of the stages.
constexpr int kBestNoMem = -1;
constexpr int kBestTransform = -4;
constexpr int kBestNoSetUp = -5;
constexpr int kBestNoFit = -6;
constexpr int kBestNoEval = -7;

// A record that frees itself: every way out of esmbest releases every
// candidate but the winner handed to the caller.
struct EsmFree {
  void operator()(WINMODEL* m) const noexcept { esmtrm(m); }
};
using EsmPtr = std::unique_ptr<WINMODEL, EsmFree>;

// The end of a stage: memory trouble first, then a stage that left nobody.
int stageEnd(const std::vector<int>& rcodes, bool nomem, int none) noexcept {
  if (nomem) return kBestNoMem;
  for (const int rc : rcodes)
    if (rc >= 0) return 0;
  return none;
}

// Predictions (and, for the mean and median, their standard errors) from
// the transformed scale back to the scale of the data, in place.
int backTransform(double* predict, double* sd, long n, int trnstype, double trnsparm, int trnsopt,
                  double* w) noexcept {
  switch (trnsopt) {
    case kBackInverse:
      return ztstiv(predict, n, trnstype, trnsparm, predict);
    case kBackMean:
      return ztstev(predict, sd, n, trnstype, trnsparm, kTrnsGridK, kTrnsGridB, w, predict, sd);
    case kBackMedian:
      return ztstmv(predict, sd, n, trnstype, trnsparm, kTrnsGridK, kTrnsGridB, w, predict, sd);
    default:
      return 0;
  }
}

// Whether method still sets up and fits on the whole series x[0..nobs-1]
// and, for WINTERS, forecasts lead periods: a multiplicative model can fail
// there on values the fit range did not hold. 0, or the failing code.
int fitsWhole(const double* x, long nobs, long lead, const INTERVAL* intv, double stdate,
              int nseason, int scode53, int method, long nbackcast) noexcept {
  WINMODEL* raw = nullptr;
  int rc = esmint(x, nobs, intv, stdate, nseason, scode53, method, nbackcast, &raw);
  const EsmPtr check(raw);
  if (rc < 0) return rc;
  rc = esmfit(check.get());
  if (rc < 0) return rc;
  if (method == kEsmWinters && lead > 0)
    rc = esmprd(check.get(), x, nobs, stdate, scode53, kBestAlpha, static_cast<int>(lead), nullptr);
  return rc < 0 ? rc : 0;
}

// The best candidate still in by criterion select, or -1. ztssfmc never
// prefers a missing value to a present one and keeps the first of a tie.
// Candidates that are out are skipped even though their criterion is
// missing: an information criterion takes a missing value over a missing
// start, and would otherwise crown a candidate that has no record.
int choose(const std::vector<int>& rcodes, const double* crit, int select) noexcept {
  int best = -1;
  double value = kMissing;
  for (std::size_t m = 0; m < rcodes.size(); ++m) {
    if (rcodes[m] >= 0 && ztssfmc(value, crit[m], select) > 0) {
      best = static_cast<int>(m);
      value = crit[m];
    }
  }
  return best;
}

// The last non-missing actual before index nfit, the random-walk base of
// the holdout's relative errors; 0 when there is none.
double lastActual(const double* y, long nfit) noexcept {
  for (long t = nfit - 1; t >= 0; --t)
    if (!wzmis(y[t])) return y[t];
  return 0.0;
}

}  // namespace

int esmbest(const double* y, long nobs, long lead, const INTERVAL* intv, double stdate, int nseason,
            int scode53, int select, long holdout, long nbackcast, const int* methods, int nmethods,
            int trnstype, double trnsparm, int trnsopt, double* criteria, WINMODEL** esm) noexcept {
  // *esm is cleared before anything is checked, so that no way out leaves
  // the caller a stale pointer.
  if (esm != nullptr) *esm = nullptr;
  if (y == nullptr || nobs < 1 || methods == nullptr || nmethods < 1) return kEsmBadArg;
  if (holdout < 0) holdout = 0;
  // An unknown criterion would only fail every candidate at the last stage;
  // it is the caller's mistake, so it is refused up front. esmprd counts its
  // leads in an int.
  if (holdout > nobs - 2 || sfCriterion(select) == nullptr) return kEsmBadArg;
  if (holdout > INT_MAX || lead > INT_MAX) return kEsmBadArg;
  // AUTO (10) is the caller's to settle between none and log before it
  // calls; a code the transformations don't know is refused rather than
  // quietly fitted untransformed.
  if (trnstype < kTrnsNone || trnstype > kTrnsBoxCoxX12) return kEsmBadArg;

  const auto nm = static_cast<std::size_t>(nmethods);
  const auto n = static_cast<std::size_t>(nobs);
  // Every criterion is missing from here on, also when memory runs out.
  for (std::size_t m = 0; criteria != nullptr && m < nm; ++m) criteria[m] = kMissing;
  std::vector<EsmPtr> models;
  std::vector<int> rcodes;
  std::vector<double> own, predict, works, x, sd, intwgts;
  try {
    models.resize(nm);
    rcodes.assign(nm, 0);
    if (criteria == nullptr) own.assign(nm, kMissing);
    predict.assign(n, 0.0);  // the rows run to nobs; no lead beyond is predicted
    works.assign(n, 0.0);
    if (trnstype != kTrnsNone) {
      x.assign(n, 0.0);
      sd.assign(n, 0.0);
      if (trnsopt == kBackMean || trnsopt == kBackMedian) intwgts.assign(kTrnsGridK + 1, 0.0);
    }
  } catch (const std::bad_alloc&) {
    return kBestNoMem;
  }
  double* crit = criteria != nullptr ? criteria : own.data();
  if (!intwgts.empty()) ztstniw(kTrnsGridK, kTrnsGridB, intwgts.data());

  // Every candidate sees the same transformed series.
  const double* xs = y;
  if (trnstype != kTrnsNone) {
    if (ztstfv(y, nobs, trnstype, trnsparm, x.data()) != 0) return kBestTransform;
    xs = x.data();
  }

  const long nfit = nobs - holdout;
  bool nomem = false;
  auto note = [&](std::size_t m, int rc) {
    rcodes[m] = rc;
    if (rc == kEsmNoMem) nomem = true;
  };

  // Set up. A trend with no more usable values than weights can't be
  // estimated; its record stays until the end like any other.
  for (std::size_t m = 0; m < nm; ++m) {
    WINMODEL* raw = nullptr;
    note(m, esmint(xs, nfit, intv, stdate, nseason, scode53, methods[m], nbackcast, &raw));
    models[m].reset(raw);
    const bool trend = methods[m] == kEsmLinear || methods[m] == kEsmDampTrend;
    if (raw != nullptr && trend && raw->ts.nobs - raw->ts.nmiss <= raw->pest.nparms)
      rcodes[m] = kEsmTooFew;
  }
  if (const int rc = stageEnd(rcodes, nomem, kBestNoSetUp); rc != 0) return rc;

  // Fit. 90 (stopped early, weights usable) stays in.
  for (std::size_t m = 0; m < nm; ++m)
    if (rcodes[m] >= 0) note(m, esmfit(models[m].get()));
  if (const int rc = stageEnd(rcodes, nomem, kBestNoFit); rc != 0) return rc;

  // Evaluate: predictions of the fit range and forecasts of the held-back
  // range, in the scale of the data, against y.
  FOR_OUT out;
  out.predicted = predict.data();
  out.std = sd.empty() ? nullptr : sd.data();
  for (std::size_t m = 0; m < nm; ++m) {
    if (rcodes[m] < 0) continue;
    WINMODEL* model = models[m].get();
    int rc = esmprd(model, xs, nfit, stdate, scode53, kBestAlpha, static_cast<int>(holdout), &out);
    if (rc < 0) {
      note(m, rc);
      continue;
    }
    if (trnstype != kTrnsNone) {
      rc = backTransform(predict.data(), out.std, nobs, trnstype, trnsparm, trnsopt, intwgts.data());
      if (rc < 0) {
        rcodes[m] = rc;
        continue;
      }
    }
    double stat = kMissing;
    if (holdout == 0) {
      rc = ztssfm(0.0, y, predict.data(), nobs, model->pest.nparms, select, works.data(), &stat);
    } else {
      // Only the held-back values count, and no weight was fitted on them.
      rc = ztssfm(lastActual(y, nfit), y + nfit, predict.data() + nfit, holdout, 0, select,
                  works.data(), &stat);
    }
    if (rc < 0) {
      rcodes[m] = kEsmTooFew;
      continue;
    }
    crit[m] = stat;
  }
  if (const int rc = stageEnd(rcodes, nomem, kBestNoEval); rc != 0) return rc;

  int best = choose(rcodes, crit, select);
  // With a holdout the winner was fitted without the last values; it must
  // also work on the whole series, or it gives way to the next best. Each
  // failing pass takes one candidate out, so there are at most nmethods.
  while (holdout > 0 && best >= 0) {
    const int rc = fitsWhole(xs, nobs, lead, intv, stdate, nseason, scode53, methods[best],
                             nbackcast);
    if (rc == kEsmNoMem) return kBestNoMem;
    if (rc >= 0) break;
    crit[best] = kMissing;
    rcodes[static_cast<std::size_t>(best)] = -1;  // out: it fails on the whole series
    best = choose(rcodes, crit, select);
  }
  if (best < 0) return kBestNoEval;

  // The winner's record is the one fitted on nfit values; the others go
  // with models.
  if (esm != nullptr) *esm = models[static_cast<std::size_t>(best)].release();
  return best;
}

}  // namespace qvt
