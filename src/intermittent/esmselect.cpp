// Choice of form and transformation of a component model. See esmodel.hpp.
#include "intermittent/esmodel.hpp"

#include "run/missing.hpp"
#include "stats/fitstats.hpp"
#include "stats/transform.hpp"

namespace qvt {
namespace {

// Under BESTN a form that the component is too short for is not tried: a
// trend needs more than minobstrend values, the damped trend more than 3.
bool tooShort(int m, long n, long minobstrend) noexcept {
  if (n < 3 && m != kIdmSimple) return true;
  if (n == 3 && m == kIdmDampTrend) return true;
  return n <= minobstrend && (m == kIdmLinear || m == kIdmDampTrend || m == kIdmDouble);
}

// The criterion of the form in modused on the component already set, or
// missing when a step fails.
double candidate(ESMODEL* esm, double* work, double* w, double alpha, long nholdout) noexcept {
  double stat = kMissing;
  if (esm_reset(esm) < 0 || esm_fit(esm) < 0) return kMissing;
  ESMFOR& f = esm->forecast;
  const long lead = nholdout < 1 ? 1 : nholdout;
  if (esm_pred(esm, alpha, lead, &f) < 0 || esm_trns(esm, w) < 0 || esm_bnds(esm) < 0) return kMissing;
  const int sel = esm->spec->select;
  const int np = esm->pest.nparms;
  int rc = 0;
  if (nholdout < 1) {
    rc = ztssfm(kMissing, f.actual, f.predict.data(), f.n - 1, np, sel, work, &stat);
  } else {
    const long from = f.n - nholdout;
    rc = ztssfm(kMissing, f.actual + from, f.predict.data() + from, nholdout, np, sel, work, &stat);
    // Leave the fitted state in place.
    if (rc >= 0 && esm_pred(esm, alpha, 1, &f) < 0) return kMissing;
  }
  return rc < 0 ? kMissing : stat;
}

}  // namespace

int esm_select(ESMODEL* esm, double* work, double* intwgts, double alpha, long nholdout,
               long minobstrend) noexcept {
  if (esm == nullptr || esm->model == nullptr) return kEsmcBadArg;
  if (esm->spec == nullptr) return kEsmcNoSpec;
  const ESMSPEC& s = *esm->spec;
  for (auto& row : esm->criterion)
    for (double& c : row) c = kMissing;

  for (int f = 0; f < 2; ++f) {
    const IDSCOMP* comp = nullptr;
    if (f == 0) {
      if (s.trnscode != kTrnsNone && s.trnscode != kTrnsAuto) continue;
      esm->trnsused = 0;
      comp = esm->orig;
    } else {
      if (s.trnscode == kTrnsNone) continue;
      const int code = s.trnscode == kTrnsAuto ? kTrnsLog : s.trnscode;
      esm->trnsused = code;
      // AUTO may have fallen back to no transformation for this component.
      comp = esm->trns != nullptr && esm->trns->trnscode == code ? esm->trns : nullptr;
    }
    if (comp == nullptr || nholdout < 0 || esm_set(esm, comp, nholdout) < 0) continue;
    const long n = esm->model->ts.nobs;
    for (int c = 0; c < 4; ++c) {
      const int m = esm->modellist[f][c];
      if (m == 0) continue;
      esm->modused = m;
      if (s.modcode == kIdmBestN && tooShort(m, n, minobstrend)) continue;
      esm->criterion[f][c] = candidate(esm, work, intwgts, alpha, nholdout);
    }
  }

  // Row by row, column by column: a tie keeps the earlier entry, so the
  // plain component and the simpler form win. A candidate that failed keeps
  // a missing criterion and is never taken, also under the information
  // criteria, for which a missing best compares as worse than a missing
  // entry.
  int bf = -1, bc = -1;
  double best = kMissing;
  for (int f = 0; f < 2; ++f)
    for (int c = 0; c < 4; ++c) {
      const double v = esm->criterion[f][c];
      if (esm->modellist[f][c] == 0 || wzmis(v)) continue;
      if (bf < 0 || ztssfmc(best, v, s.select) > 0) {
        best = v;
        bf = f;
        bc = c;
      }
    }
  if (bf < 0) {
    esm->modused = esm->trnsused = -1;
    return kEsmcNoCandidate;
  }
  if (bf == 0) {
    esm->comp = esm->orig;
    esm->trnsused = 0;
  } else {
    esm->comp = esm->trns;
    esm->trnsused = esm->trns->trnscode;
  }
  esm->modused = esm->modellist[bf][bc];
  return kEsmcOk;
}

}  // namespace qvt
