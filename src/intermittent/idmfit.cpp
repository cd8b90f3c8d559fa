// Fitting the components of the form in use. A component with enough
// varying values is estimated by its smoothing model; a very short one, or a
// SIMPLE one without variation, gets its weight by rule, since there is no
// error to minimise: one demand 0.15, two demands 0.1 (flat) or 0.2, a flat
// longer component 1/(nfit + 1).
#include "intermittent/idmodel.hpp"

#include "intermittent/idmdetail.hpp"

namespace qvt {
namespace {

using idm::bounded;
using idm::kFlatTol;

// Stores a weight fixed by rule: in the component, in the model's weights
// and estimates (entry 0, the level), and as the level estimate without its
// statistics.
void setRuleWeight(ESMODEL& c, double w) {
  WINMODEL& mdl = *c.model;
  if (mdl.parms.parms.empty()) mdl.parms.parms.resize(4, kMissing);
  if (mdl.pest.parms.empty()) mdl.pest.parms.resize(4, kMissing);
  c.parm.level = w;
  mdl.parms.parms[0] = w;
  mdl.pest.parms[0] = w;
  c.pest.level.estimate = w;
  c.pest.level.stderr_ = c.pest.level.tvalue = c.pest.level.pvalue = kMissing;
}

// The start and final level of a component whose level is not smoothed.
void setStates(ESMODEL& c, double start, double final) {
  c.model->startvals.level = start;
  c.forecast.level.start = start;
  c.forecast.level.final = final;
}

// Sum of squares of two values about their mean; missing when one is.
double ss2(double a, double b) noexcept {
  if (wzmis(a) || wzmis(b)) return kMissing;
  const double d = (a - b) * 0.5;
  return 2.0 * d * d;
}

// One or two demands: no estimation, only SIMPLE. sizes: the component is
// indexed from 0 and its start is always d[0].
int fitShort(ESMODEL& c, long nfit, bool sizes) {
  if (c.modused != kIdmSimple || c.model == nullptr) return kIdmFit;
  const double* d = c.comp->data.data();
  const ESMPARM& lv = c.spec->level;
  WINMODEL& mdl = *c.model;
  if (nfit == 1) {
    setStates(c, d[0], d[0]);
    setRuleWeight(c, bounded(idm::kWeightOne, lv));
    mdl.pest.mse = 0.0;
  } else {
    const double start = !sizes && wzmis(d[0]) ? d[1] : d[0];
    setStates(c, start, d[1]);
    const IDSSTATS& st = c.comp->stats;
    const bool flat = wzmis(st.range) || st.range <= kFlatTol;  // no statistic: nothing varies
    setRuleWeight(c, bounded(flat ? idm::kWeightTwoFlat : idm::kWeightTwo, lv));
    mdl.pest.mse = sizes ? ss2(d[0], d[1]) : 0.0;
  }
  c.pest.sigma2 = 0.0;
  c.pest.nparms = 1;
  mdl.pest.nparms = 1;
  mdl.spec.code = mdl.parms.method = mdl.pest.method = kIdmSimple;
  return 1;
}

// More than two demands. Returns 0 when estimated, 1 when the component is
// a flat SIMPLE one whose weight is set by rule, or a negative code.
int fitLong(ESMODEL& c, long nfit, bool intervals) {
  if (c.modused < kIdmSimple || c.model == nullptr) return kIdmFit;
  const IDSCOMP& comp = *c.comp;
  if (c.modused != kIdmSimple || idm::varies(comp.stats)) {
    const int rc = esm_fit(&c);
    if (rc < 0) return rc;
    c.parm.level = c.pest.level.estimate;
    c.parm.trend = c.pest.trend.estimate;
    c.parm.damp = c.pest.damp.estimate;
    if (intervals) c.pest.sigma2 = c.model->pest.mse;
    return 0;
  }
  const double* d = comp.data.data();
  setStates(c, d[0], d[nfit - 1]);
  setRuleWeight(c, bounded(1.0 / static_cast<double>(nfit + 1), c.spec->level));
  c.model->pest.mse = 0.0;
  c.pest.sigma2 = 0.0;
  c.model->spec.code = c.model->parms.method = c.model->pest.method = kIdmSimple;
  if (intervals) {
    // A constant interval counts its rule weight as a parameter; a constant
    // size does not.
    c.pest.nparms = 1;
    c.model->pest.nparms = 1;
    c.pest.level.stderr_ = 0.0;
  }
  return 1;
}

// Points a component at the vector its selection chose and fits it.
// flat receives whether the rule for a flat component applied.
int fitComponent(ESMODEL& c, long nfit, long nholdout, bool sizes, bool intervals, bool* flat) {
  *flat = false;
  if (c.spec == nullptr || c.modused < kIdmSimple || c.trnsused < 0) return kIdmFit;
  c.comp = c.trnsused == 0 ? c.orig : c.trns;
  // With one demand an interval or average-demand component has no value
  // to smooth (entry 0 lies before the smoothing), so it isn't set on the
  // smoothing model: its forecast is made from the rule fit alone.
  int rc = nfit == 1 && !sizes ? 0 : esm_set(&c, c.comp, nholdout);
  if (rc < 0) return rc;
  esm_reset(&c);
  if (nfit <= 2) return fitShort(c, nfit, sizes);
  rc = fitLong(c, nfit, intervals);
  *flat = rc == 1;
  return rc < 0 ? rc : 0;
}

// Common frame of the two fits: checks, the range, esm_set's hold-out.
int prepare(IDMODEL* m, int eflag, long* nfit, long* nholdout) noexcept {
  if (m == nullptr) return kIdmBadArg;
  int rc = idm::ready(*m);
  if (rc < 0) return m->error = rc;
  *nfit = idm::range(*m, eflag).nfit;
  *nholdout = eflag == 2 ? m->nholdout : 0;
  if (*nfit < 1) return m->error = kIdmNothingToFit;
  return kIdmOk;
}

}  // namespace

int idmcfit(IDMODEL* idm, int eflag) noexcept {
  long nfit = 0, nh = 0;
  int rc = prepare(idm, eflag, &nfit, &nh);
  if (rc != 0) return rc;
  bool flatI = false, flatS = false;
  try {
    rc = fitComponent(idm->intv, nfit, nh, false, true, &flatI);
    if (rc >= 0) {
      const int rs = fitComponent(idm->size, nfit, nh, true, false, &flatS);
      if (rs < 0) rc = rs;
    }
  } catch (const std::bad_alloc&) {
    rc = kIdmNoMem;
  }
  idm->totparms = idm->intv.pest.nparms + idm->size.pest.nparms;
  if (rc < 0) return idm->error = rc;
  if (nfit <= 2) return kIdmShort;
  if (flatI && flatS) return kIdmFlatBoth;
  if (flatI) return kIdmFlatIntv;
  return flatS ? kIdmFlatSize : kIdmOk;
}

int idmafit(IDMODEL* idm, int eflag) noexcept {
  long nfit = 0, nh = 0;
  int rc = prepare(idm, eflag, &nfit, &nh);
  if (rc != 0) return rc;
  bool flat = false;
  try {
    // The average demand is indexed like the intervals, but without a
    // variation it is handled like the sizes: no parameter is counted.
    rc = fitComponent(idm->adem, nfit, nh, false, false, &flat);
  } catch (const std::bad_alloc&) {
    rc = kIdmNoMem;
  }
  idm->totparms = idm->adem.pest.nparms;
  if (rc < 0) return idm->error = rc;
  if (nfit <= 2) return kIdmShort;
  return flat ? kIdmFlatIntv : kIdmOk;
}

int idmfit(IDMODEL* idm, int eflag) noexcept {
  if (idm == nullptr) return kIdmBadArg;
  if (idm->modused == kIdmUsedCroston) return idmcfit(idm, eflag);
  if (idm->modused == kIdmUsedAverage) return idmafit(idm, eflag);
  return kIdmBadArg;
}

}  // namespace qvt
