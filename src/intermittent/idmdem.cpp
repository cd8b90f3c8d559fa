// Demand-rate forecasts by demand. Croston's method (Croston 1972) divides
// the size forecast by the interval forecast; its standard error is the
// first-order (delta method) variance of a ratio, chosen by which of the two
// components vary. The average-demand form takes its component's forecast
// as it stands. Both give limits, errors and the stock: the demand the
// forecast rate would have accumulated over each interval less the demand
// that came.
#include "intermittent/idmodel.hpp"

#include <cmath>

#include "intermittent/idmdetail.hpp"
#include "stats/numeric.hpp"

namespace qvt {
namespace idm {

int firstPrediction(ESMODEL& c, double* p) noexcept {
  *p = kMissing;
  if (c.model == nullptr || c.comp == nullptr || c.comp->data.empty()) return kIdmBadArg;
  SMOOTHVALS& sv = c.model->startvals;
  const double l = sv.level, b = sv.trend, w = c.parm.level, f = c.parm.damp;
  const double d0 = c.comp->data[0];
  double shift = 0.0;  // what the trend adds to the start level
  switch (c.modused) {
    case kIdmSimple: break;
    case kIdmLinear: shift = b; break;
    case kIdmDampTrend: shift = mul(f, b); break;
    case kIdmDouble:
      if (wzmis(w) || std::fabs(w) <= kTiny) return kIdmNoMem;  // b/w can't be formed
      shift = wzmis(b) ? kMissing : b / w;
      break;
    default: return kIdmFit;
  }
  if (wzmis(l) || wzmis(shift)) return kIdmOk;  // no start values: entry 0 stays missing
  *p = l + shift;
  // The first forecast is never below the first value: the start level is
  // raised so that the smoothing starts from it.
  if (!wzmis(d0) && *p < d0) {
    sv.level = d0 - shift;
    *p = d0;
  }
  return kIdmOk;
}

namespace {

// A component with no smoothed value: one demand, whose interval (or average
// demand) lies before the smoothing starts. Its rule fit has no error
// variance, so every forecast is the start level without spread, as the
// simple kernel would give with a zero error variance.
void predictEmpty(ESMFOR& f, double p, long lead) noexcept {
  f.n = lead + 1;
  f.bounded = 0;
  for (long i = 0; i <= lead; ++i) {
    f.predict[i] = f.lower[i] = f.upper[i] = f.level.states[i] = p;
    f.std[i] = wzmis(p) ? kMissing : 0.0;
    f.error[i] = f.trend.states[i] = kMissing;
  }
  f.forecast = p;
}

}  // namespace

int predictComponent(IDMODEL& m, ESMODEL& c, bool first, bool empty, double alpha, long lead) noexcept {
  double p = kMissing;
  if (first) {
    const int rc = firstPrediction(c, &p);
    if (rc < 0) return rc;
  }
  ESMFOR& f = c.forecast;
  int rc = 0;
  if (first && empty) {
    if (static_cast<long>(f.predict.size()) <= lead) return kIdmNoMem;  // grow() sized it for an + 1
    predictEmpty(f, p, lead);
  } else {
    rc = esm_pred(&c, alpha, lead, &f);
    if (rc < 0) return rc;
  }
  if (first && !empty && f.predict.size() > 1) {
    // Entry 0 gets the one-step spread of entry 1: both are one step ahead
    // of a known state, and a back-transform needs a spread to give a mean.
    f.predict[0] = p;
    f.std[0] = f.std[1];
    const double hu = sub(f.upper[1], f.predict[1]), hl = sub(f.predict[1], f.lower[1]);
    f.upper[0] = wzmis(p) || wzmis(hu) ? kMissing : p + hu;
    f.lower[0] = wzmis(p) || wzmis(hl) ? kMissing : p - hl;
  }
  rc = esm_trns(&c, m.intwgts.data());
  if (rc < 0) return rc;
  if (first) f.error[0] = kMissing;
  rc = esm_bnds(&c);
  if (rc < 0) return rc;
  if (rc > 0) f.bounded = static_cast<char>(rc);
  return kIdmOk;
}

}  // namespace idm

namespace {

using idm::kTiny;

// Checks, alpha and the range shared by both forms.
int prepare(IDMODEL* m, int eflag, double* alpha, idm::Range* r, long* lead) noexcept {
  if (m == nullptr) return kIdmBadArg;
  if (wzmis(*alpha)) *alpha = idm::kAlphaDefault;
  // A level of 0 or 1 makes limits of no width or of infinite width.
  if (!(*alpha > 0.0 && *alpha < 1.0)) return kIdmBadArg;
  const int rc = idm::ready(*m);
  if (rc < 0) return m->error = rc;
  m->results.alpha = *alpha;
  *r = idm::range(*m, eflag);
  *lead = r->nlead < 1 ? 1 : r->nlead;
  return kIdmOk;
}

// Standard error of the ratio S/I at one demand, by the mode of variation:
// 0 both vary, 1 neither, 2 only the sizes, 3 only the intervals. a and s
// are the plain interval and size, si and ss the components' errors. keep
// is the value that stands when the mode leaves it unchanged.
double ratioStd(int mode, double I, double S, double a, double s, double si, double ss,
                double zero, bool atEnd, double keep) noexcept {
  const bool iok = !wzmis(I) && std::fabs(I) >= kTiny;
  switch (mode) {
    case 1: return 0.0;
    case 2:
      if (wzmis(a) || wzmis(ss)) return kMissing;
      if (a < 1.0) return ss;
      return wzmis(si) ? kMissing : ss / a;
    case 3:
      if (wzmis(s) || std::fabs(s) <= zero) return atEnd ? keep : 0.0;
      if (wzmis(si) || !iok) return kMissing;
      return std::fabs(s) * (1.0 / I) * (1.0 / I) * si;
    default: break;
  }
  if (wzmis(I) || wzmis(S) || wzmis(si) || wzmis(ss)) return kMissing;
  if (I <= std::fabs(si) * idm::kFlatTol) return I >= 1.0 ? ss / I : ss;
  if (!iok) return kMissing;
  const double r = 1.0 / I;
  if (std::fabs(S) < std::fabs(ss) * idm::kFlatTol)
    return std::fabs(S) > zero ? std::fabs(S) * r * r * si : 0.0;
  // Var(S/I) ~ (ss/I)^2 + (S si / I^2)^2
  const double u1 = ss * r, u2 = r * si * std::fabs(S) * r;
  const double v = std::sqrt(u1 * u1 + u2 * u2);
  return v > 0.0 ? v : 0.0;
}

// Limits, error and stock at demand t from the prediction and its error.
void finish(IDMODEL& m, long t, double pred, double sd, double z) noexcept {
  const IDSERIES& ids = *m.ids;
  const bool ok = !wzmis(pred) && !wzmis(sd) && std::isfinite(sd);
  m.results.predict[t] = pred;
  m.results.std[t] = ok ? sd : kMissing;
  m.results.lower[t] = ok ? pred - z * sd : kMissing;
  m.results.upper[t] = ok ? pred + z * sd : kMissing;
  m.results.error[t] = idm::sub(m.results.actual[t], pred);
  m.results.stock[t] = idm::sub(idm::mul(pred, ids.intv.data[t]), ids.size.data[t]);
}

}  // namespace

int idmcdem(IDMODEL* idm, int eflag, double alpha) noexcept {
  idm::Range r;
  long lead = 0;
  int rc = prepare(idm, eflag, &alpha, &r, &lead);
  if (rc != 0) return rc;
  IDMODEL& m = *idm;
  const IDSERIES& ids = *m.ids;
  const long nfit = r.nfit;
  ESMFOR& fi = m.intv.forecast;
  ESMFOR& fs = m.size.forecast;
  rc = idm::predictComponent(m, m.intv, true, nfit < 2, alpha, lead);
  if (rc < 0) return m.error = rc;
  // A demand can't be expected sooner than the time already passed since
  // the last demand of the fit range.
  const double e = m.nback < 1 || nfit < 1 ? ids.intv.data[nfit]
                                           : static_cast<double>(m.nobs - ids.back - ids.obs[nfit - 1] - 1);
  const double pi = fi.predict[nfit];
  fi.forecast = !wzmis(ids.intv.data[nfit]) && !wzmis(pi) && !wzmis(e) && e > pi ? e : pi;
  rc = idm::predictComponent(m, m.size, false, false, alpha, lead);
  if (rc < 0) return m.error = rc;
  fs.forecast = fs.predict[nfit];

  const bool sv = idm::varies(ids.size.stats);
  const bool iv = ids.intv.stats.n >= 2 && idm::varies(ids.intv.stats);
  const int mode = iv ? (sv ? 0 : 3) : (sv ? 2 : 1);
  const double z = zprobit(1.0 - alpha * 0.5);
  double sd = kMissing;
  for (long t = 0; t <= m.n; ++t) {
    const double I = t < nfit ? fi.predict[t] : fi.forecast;
    const double S = t < nfit ? fs.predict[t] : fs.forecast;
    const bool usable = !wzmis(I) && std::fabs(I) >= kTiny && !wzmis(S) && std::fabs(S) <= idm::kBig;
    const double pred = usable ? S / I : kMissing;
    if (t <= nfit)
      sd = ratioStd(mode, I, S, ids.intv.data[t], ids.size.data[t], fi.std[t], fs.std[t], ids.zero,
                    t == nfit, sd);
    finish(m, t, pred, sd, z);
  }
  return kIdmOk;
}

int idmadem(IDMODEL* idm, int eflag, double alpha) noexcept {
  idm::Range r;
  long lead = 0;
  int rc = prepare(idm, eflag, &alpha, &r, &lead);
  if (rc != 0) return rc;
  IDMODEL& m = *idm;
  const long nfit = r.nfit;
  ESMFOR& f = m.adem.forecast;
  rc = idm::predictComponent(m, m.adem, true, nfit < 2, alpha, lead);
  if (rc < 0) return m.error = rc;
  f.forecast = f.predict[nfit];
  const IDSSTATS& st = m.ids->adem.stats;
  const bool flat = st.n < 2 || !idm::varies(st);
  const double z = zprobit(1.0 - alpha * 0.5);
  double sd = kMissing;
  for (long t = 0; t <= m.n; ++t) {
    if (t <= nfit) sd = flat ? 0.0 : f.std[t];
    finish(m, t, t < nfit ? f.predict[t] : f.forecast, sd, z);
  }
  return kIdmOk;
}

int idmdem(IDMODEL* idm, int eflag, double alpha) noexcept {
  if (idm == nullptr) return kIdmBadArg;
  if (idm->modused == kIdmUsedCroston) return idmcdem(idm, eflag, alpha);
  if (idm->modused == kIdmUsedAverage) return idmadem(idm, eflag, alpha);
  return kIdmBadArg;
}

}  // namespace qvt
