// Choosing the form of an intermittent model: within each form the smoothing
// method and transformation of its components, then between Croston's
// method and the average demand by the criterion of the settings, on
// the hold-out demands when there are any, else on the fit sample. A form
// that fails leaves the other; a tie keeps Croston's method.
#include "intermittent/idmodel.hpp"

#include "intermittent/idmdetail.hpp"
#include "stats/fitstats.hpp"
#include "stats/transform.hpp"

namespace qvt {
namespace {

// A component selects its form when its settings leave a choice
// (BESTN, or AUTO transformation); otherwise it takes what was asked for.
int selectComponent(IDMODEL& m, ESMODEL& c, const ESMSPEC& s, double alpha) noexcept {
  if (s.modcode == kIdmBestN || s.trnscode == kTrnsAuto)
    return esm_select(&c, m.work.data(), m.intwgts.data(), alpha, m.nholdout, m.spec.minobstrend);
  c.modused = s.modcode;
  c.trnsused = s.trnscode;
  c.comp = s.trnscode == 0 ? c.orig : c.trns;
  return kIdmOk;
}

int prepare(IDMODEL* m, double* alpha) noexcept {
  if (m == nullptr) return kIdmBadArg;
  if (wzmis(*alpha)) *alpha = idm::kAlphaDefault;
  const int rc = idm::ready(*m);
  return rc < 0 ? (m->error = rc) : kIdmOk;
}

// The criterion of the form whose results were just made: on the hold-out
// demands against the last fit demand as random walk, or on the fit sample
// from demand 1 (demand 0 has no complete interval).
double criterion(IDMODEL& m, long k) noexcept {
  double c = kMissing;
  const double* a = m.results.actual;
  const double* p = m.results.predict.data();
  int rc = 0;
  if (m.nholdout < 1) {
    rc = ztssfm(kMissing, a + 1, p + 1, m.nsample - 1, k, m.spec.select, m.work.data(), &c);
  } else {
    const double b = a[m.nsample - 1];
    rc = ztssfm(b, a + m.nsample, p + m.nsample, m.nholdout, 0, m.spec.select, m.work.data(), &c);
  }
  return rc < 0 ? kMissing : c;
}

}  // namespace

int idmcsel(IDMODEL* idm, double alpha) noexcept {
  int rc = prepare(idm, &alpha);
  if (rc != 0) return rc;
  // Both components are tried even when the first fails.
  const int ri = selectComponent(*idm, idm->intv, idm->spec.intv, alpha);
  const int rs = selectComponent(*idm, idm->size, idm->spec.size, alpha);
  if (ri < 0 || rs < 0) return idm->error = kIdmSelect;
  return kIdmOk;
}

int idmasel(IDMODEL* idm, double alpha) noexcept {
  int rc = prepare(idm, &alpha);
  if (rc != 0) return rc;
  if (selectComponent(*idm, idm->adem, idm->spec.adem, alpha) < 0) return idm->error = kIdmSelect;
  return kIdmOk;
}

int idmsel(IDMODEL* idm, double alpha) noexcept {
  int rc = prepare(idm, &alpha);
  if (rc != 0) return rc;
  IDMODEL& m = *idm;
  m.criterion[0] = m.criterion[1] = kMissing;
  const int mod = m.spec.modcode;
  bool croston = false;
  int k1 = 0, k2 = 0;
  if (mod == kIdmCroston || mod == kIdmBoth) {
    rc = idmcsel(idm, alpha);
    if (rc >= 0) rc = idmcfit(idm, 2);
    croston = rc >= 0;
    if (croston) k1 = m.totparms;
  }
  if (mod == kIdmCroston) {
    if (!croston) return m.error = kIdmSelect;
    m.modused = kIdmUsedCroston;
    return kIdmOk;
  }
  if (mod != kIdmAverage && mod != kIdmBoth) return m.error = kIdmSelect;
  rc = idmasel(idm, alpha);
  if (rc >= 0) rc = idmafit(idm, 2);
  if (rc < 0) {
    if (mod == kIdmBoth && croston) {
      m.modused = kIdmUsedCroston;
      return kIdmOk;
    }
    return m.error = kIdmSelect;
  }
  if (mod == kIdmAverage || !croston) {
    m.modused = kIdmUsedAverage;
    return kIdmOk;
  }
  k2 = m.totparms;
  const double c1 = idmcdem(idm, 2, alpha) < 0 ? kMissing : criterion(m, k1);
  const double c2 = idmadem(idm, 2, alpha) < 0 ? kMissing : criterion(m, k2);
  m.criterion[0] = c1;
  m.criterion[1] = c2;
  if (wzmis(c1) && wzmis(c2)) return m.error = kIdmSelect;
  if (wzmis(c1)) {
    m.modused = kIdmUsedAverage;
  } else if (wzmis(c2)) {
    m.modused = kIdmUsedCroston;
  } else {
    m.modused = ztssfmc(c1, c2, m.spec.select) > 0 ? kIdmUsedAverage : kIdmUsedCroston;
  }
  return kIdmOk;
}

}  // namespace qvt
