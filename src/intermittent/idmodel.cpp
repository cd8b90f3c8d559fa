// The life of an intermittent model: creation with its integration weights
// and three component models, the settings in force, and the series
// it works on. One record serves a BY group; its vectors only grow.
#include "intermittent/idmodel.hpp"

#include <new>

#include "intermittent/idmdetail.hpp"
#include "stats/transform.hpp"

namespace qvt {
namespace {

ESMODEL* components(IDMODEL& m, int k) noexcept {
  ESMODEL* c[] = {&m.intv, &m.size, &m.adem};
  return c[k];
}

// Vectors for an + 1 demands: the results, the scratch, and the row and
// flag buffers of the components. The forecast vectors of a component are
// sized here as well, so that an entry written by index is always there.
// Grows only; throws std::bad_alloc.
void grow(IDMODEL& m, long an) {
  const auto len = static_cast<std::size_t>(an + 1);
  for (std::vector<double>* v : {&m.results.predict, &m.results.std, &m.results.lower,
                                 &m.results.upper, &m.results.error, &m.results.stock, &m.work})
    if (v->size() < len) v->resize(len, kMissing);
  for (int k = 0; k < 3; ++k) {
    ESMODEL& c = *components(m, k);
    if (esm_allocate(&c, an + 1) < 0) throw std::bad_alloc();
    ESMFOR& f = c.forecast;
    for (std::vector<double>* v : {&f.predict, &f.lower, &f.upper, &f.error, &f.std,
                                   &f.level.states, &f.trend.states})
      if (v->size() < len) v->resize(len, kMissing);
  }
  if (an > m.an) m.an = an;
}

void clearResults(IDMODEL& m) noexcept {
  for (std::vector<double>* v : {&m.results.predict, &m.results.std, &m.results.lower,
                                 &m.results.upper, &m.results.error, &m.results.stock})
    vzfdl(kMissing, v->data(), v->size());
  m.results.alpha = kMissing;
}

}  // namespace

int idmint(long anobs, long an, IDMODEL** idm) noexcept {
  if (idm == nullptr) return kIdmBadArg;
  *idm = nullptr;
  if (anobs < 0 || an < 0) return kIdmBadArg;
  IDMODEL* m = new (std::nothrow) IDMODEL;
  if (m == nullptr) return kIdmNoMem;
  try {
    m->intwgts.assign(kTrnsGridK + 1, kMissing);
    if (ztstniw(kTrnsGridK, kTrnsGridB, m->intwgts.data()) != 0) throw std::bad_alloc();
    for (int k = 0; k < 3; ++k)
      if (esm_init(an > 0 ? an + 1 : 0, components(*m, k)) < 0) throw std::bad_alloc();
    m->anobs = anobs;
    if (an > 0) grow(*m, an);
  } catch (const std::bad_alloc&) {
    idmtrm(&m);
    return kIdmNoMem;
  }
  m->spec.specified = 0;
  m->criterion[0] = m->criterion[1] = kMissing;
  clearResults(*m);
  *idm = m;
  return kIdmOk;
}

void idmtrm(IDMODEL** idm) noexcept {
  if (idm == nullptr || *idm == nullptr) return;
  for (int k = 0; k < 3; ++k) esm_term(components(**idm, k));
  delete *idm;
  *idm = nullptr;
}

int idmspc(IDMODEL* idm, const IDMSPEC* spec, int validate) noexcept {
  if (idm == nullptr) return kIdmBadArg;
  if (spec == nullptr || spec->specified == 0) {
    idmsdft(&idm->spec);
  } else {
    if (validate != 0) {
      const int rc = idmsval(spec);
      if (rc < 0) return idm->error = rc;  // the earlier settings stay in force
    }
    idm->spec = *spec;
  }
  // Each component reads its own part of the record's copy, which lives as
  // long as the model.
  const ESMSPEC* parts[] = {&idm->spec.intv, &idm->spec.size, &idm->spec.adem};
  for (int k = 0; k < 3; ++k) {
    ESMODEL& c = *components(*idm, k);
    esm_reset(&c);
    const int rc = esm_spec(&c, idm->spec.noest, parts[k]);
    if (rc < 0) return idm->error = rc;
    c.parm.level = parts[k]->level.parm;
    c.parm.trend = parts[k]->trend.parm;
    c.parm.damp = parts[k]->damp.parm;
  }
  idm->spec.specified = 1;
  return kIdmOk;
}

int idmset(IDMODEL* idm, IDSERIES* ids) noexcept {
  if (idm == nullptr || ids == nullptr) return kIdmBadArg;
  if (ids->n < 1) return kIdmNoDemand;
  long nsample = ids->nsample, nholdout = ids->nholdout;
  if (nsample < 1) {  // the hold-out demands become the fit sample
    nsample = nholdout;
    nholdout = 0;
  }
  if (nsample + nholdout < 1) return kIdmNoFitDemand;
  try {
    if (ids->n > idm->an || idm->results.predict.empty()) grow(*idm, ids->n);
  } catch (const std::bad_alloc&) {
    return kIdmNoMem;
  }
  if (ids->nobs > idm->anobs) idm->anobs = ids->nobs;
  idm->ids = ids;
  idm->nobs = ids->nobs;
  idm->n = ids->n;
  idm->nsample = nsample;
  idm->nholdout = nholdout;
  idm->nback = ids->nback;
  idm->results.actual = ids->adem.data.data();
  const IDSCOMP* orig[] = {&ids->intv, &ids->size, &ids->adem};
  const IDSCOMP* trns[] = {&ids->itrns, &ids->strns, &ids->atrns};
  for (int k = 0; k < 3; ++k) {
    ESMODEL& c = *components(*idm, k);
    esm_reset(&c);
    c.orig = orig[k];
    c.trns = trns[k];
    c.comp = orig[k];
    c.forecast.actual = orig[k]->data.data();
    c.forecast.bounded = 0;
    c.forecast.forecast = kMissing;
    ESMFOR& f = c.forecast;
    for (std::vector<double>* v : {&f.predict, &f.lower, &f.upper, &f.error, &f.std})
      vzfdl(kMissing, v->data(), v->size());
  }
  clearResults(*idm);
  idm->criterion[0] = idm->criterion[1] = kMissing;
  idm->modused = kIdmUsedNone;
  idm->totparms = 0;
  idm->error = idm->warning = idm->note = 0;
  idm->rcmsg = u_text<1000>();
  return kIdmOk;
}

}  // namespace qvt
