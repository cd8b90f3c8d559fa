// Component models of an intermittent series. See esmodel.hpp.
//
// The kernels are reached through the family table (esmmodelset), so the
// method switch of this file is only the choice of the form.
#include "intermittent/esmodel.hpp"

#include <algorithm>
#include <cmath>
#include <new>

#include "run/missing.hpp"
#include "smoothing/esmkset.hpp"
#include "stats/fitstats.hpp"
#include "stats/numeric.hpp"
#include "stats/transform.hpp"

namespace qvt {
namespace {

constexpr int kWeights = 4;      // entries of the WINMODEL's weight vectors
constexpr int kRowMax = 8;       // doubles in the widest prediction row
constexpr double kWeightRange = 100.0;

// Grows v to at least n entries; the vectors never shrink between series.
void grow(std::vector<double>& v, std::size_t n) {
  if (v.size() < n) v.resize(n, kMissing);
}

// The estimator's bounds of one weight: its own when it is estimated, else
// held at its value with no tolerance.
void weightBounds(const ESMPARM& p, bool estimate, double* b) noexcept {
  if (estimate || wzmis(p.parm)) {
    b[0] = wzmis(p.lower) ? -kWeightRange : p.lower;
    b[1] = wzmis(p.upper) ? kWeightRange : p.upper;
  } else {
    b[0] = b[1] = p.parm;
  }
  b[2] = (b[1] - b[0]) * kEsmTolFactor;
}

// The forms of the methods this model knows; DOUBLE (4) is among them but
// BESTN never proposes it.
const ESMMODELSET* methodSet(int m) noexcept {
  return m >= kIdmSimple && m <= kIdmDouble ? esmmodelset(m) : nullptr;
}

// Index of the component's entry that the first smoothed value belongs to:
// intervals and average demands start at 1, sizes at 0.
long offset(const IDSCOMP& c) noexcept { return c.type != kIdsSize ? 1 : 0; }

// The forecast entry beyond the data, or missing without one.
void refreshForecast(ESMFOR& f) noexcept {
  f.forecast = f.n >= 1 && static_cast<std::size_t>(f.n) <= f.predict.size()
                   ? f.predict[static_cast<std::size_t>(f.n - 1)]
                   : kMissing;
}

// Raises v to a present lower bound or lowers it to a present upper one.
bool clamp(double* v, const ESMFBNDS& b) noexcept {
  if (wzmis(*v)) return false;
  if (!wzmis(b.lower) && *v < b.lower) {
    *v = b.lower;
    return true;
  }
  if (!wzmis(b.upper) && *v > b.upper) {
    *v = b.upper;
    return true;
  }
  return false;
}

}  // namespace

int esm_init(long n, ESMODEL* esm) noexcept {
  if (esm == nullptr || n < 0) return kEsmcBadArg;
  esm_term(esm);
  try {
    esm->model = std::make_unique<WINMODEL>();
    WINMODEL& m = *esm->model;
    for (std::vector<double>* v : {&m.parms.parms, &m.pest.parms, &m.pest.stderr_, &m.pest.tvals,
                                   &m.pest.pvalue})
      v->assign(kWeights, kMissing);
    m.pest.df.assign(kWeights, 0);
  } catch (const std::bad_alloc&) {
    esm->model.reset();
    return kEsmcNoMem;
  }
  // The components are counted in demands, not dated: a plain step.
  zintstr("1", 1, &esm->model->ts.interval);
  esm->model->pest.mse = kMissing;
  return esm_allocate(esm, n);
}

void esm_term(ESMODEL* esm) noexcept {
  if (esm == nullptr) return;
  esm->model.reset();
  esm->rows = std::vector<double>();
  esm->forecast = ESMFOR{};
  esm->spec = nullptr;
  esm->orig = esm->trns = esm->comp = nullptr;
  esm->modused = esm->trnsused = -1;
}

int esm_allocate(ESMODEL* esm, long n) noexcept {
  if (esm == nullptr || esm->model == nullptr || n < 0) return kEsmcBadArg;
  const auto un = static_cast<std::size_t>(n);
  try {
    std::vector<char>& flags = esm->model->ts.misflg;
    if (flags.size() < un) flags.resize(un, 0);
    grow(esm->rows, (un + 1) * kRowMax);
    ESMFOR& f = esm->forecast;
    for (std::vector<double>* v : {&f.predict, &f.lower, &f.upper, &f.error, &f.std,
                                   &f.level.states, &f.trend.states})
      grow(*v, un + 1);
  } catch (const std::bad_alloc&) {
    return kEsmcNoMem;
  }
  return kEsmcOk;
}

void esm_deallocate(ESMODEL* esm) noexcept {
  if (esm == nullptr) return;
  if (esm->model) esm->model->ts.misflg = std::vector<char>();
  esm->rows = std::vector<double>();
}

int esm_reset(ESMODEL* esm) noexcept {
  if (esm == nullptr || esm->model == nullptr) return kEsmcBadArg;
  WINMODEL& m = *esm->model;
  for (std::vector<double>* v : {&m.parms.parms, &m.pest.parms, &m.pest.stderr_, &m.pest.tvals,
                                 &m.pest.pvalue})
    std::fill(v->begin(), v->end(), kMissing);
  std::fill(m.pest.df.begin(), m.pest.df.end(), 0L);
  m.pest.nparms = 0;
  m.pest.mse = kMissing;
  return kEsmcOk;
}

int esm_spec(ESMODEL* esm, int noest, const ESMSPEC* spec) noexcept {
  if (esm == nullptr || spec == nullptr || esm->model == nullptr) return kEsmcBadArg;
  const int mc = spec->modcode;
  if (!(mc >= kIdmSimple && mc <= kIdmDouble) && mc != kIdmBestN) return kEsmcBadArg;

  for (auto& row : esm->modellist) std::fill(std::begin(row), std::end(row), 0);
  esm->modused = mc;
  const int trn = spec->trnscode;
  const bool plain = trn == kTrnsNone || trn == kTrnsAuto;
  const bool transformed = trn != kTrnsNone;
  if (mc == kIdmBestN) {
    // Columns 0, 2, 3 in increasing complexity, so that a tie in the
    // selection keeps the simpler form.
    const int cols[3] = {0, 2, 3};
    for (int k = 0; k < 3; ++k) {
      if (plain) esm->modellist[0][cols[k]] = k + 1;
      if (transformed) esm->modellist[1][cols[k]] = k + 1;
    }
    esm->modused = -1;
  } else {
    if (plain) esm->modellist[0][mc - 1] = mc;
    if (transformed) esm->modellist[1][mc - 1] = mc;
  }
  esm->trnsused = trn;

  WGTBNDS& b = esm->model->wbnds;
  b.bounds = 1;
  b.stability = spec->stability != 0 ? 1 : 0;
  b.wlevflg = b.wtreflg = b.wseaflg = b.wdamflg = 0;
  auto estimated = [&](const ESMPARM& p) { return noest == 0 && spec->noest == 0 && p.noest == 0; };
  weightBounds(spec->level, estimated(spec->level), b.wlevel);
  weightBounds(spec->trend, estimated(spec->trend), b.wtrend);
  weightBounds(spec->damp, estimated(spec->damp), b.wdamp);
  esm->spec = spec;
  return kEsmcOk;
}

int esm_set(ESMODEL* esm, const IDSCOMP* comp, long nholdout) noexcept {
  if (esm == nullptr || esm->model == nullptr || comp == nullptr || nholdout < 0) return kEsmcBadArg;
  const long off = offset(*comp);
  const long n = comp->stats.n - nholdout;
  // A component with nothing left to smooth, or shorter than its count,
  // can't be set: the kernels would read past it.
  if (n < 1 || static_cast<long>(comp->data.size()) < off + n) return kEsmcBadArg;
  WINMODEL& m = *esm->model;
  try {
    if (m.ts.misflg.size() < static_cast<std::size_t>(n)) m.ts.misflg.resize(static_cast<std::size_t>(n));
  } catch (const std::bad_alloc&) {
    return kEsmcNoMem;
  }
  // Demand components hold no missing values: every entry is usable.
  std::fill(m.ts.misflg.begin(), m.ts.misflg.begin() + n, 0);
  m.ts.x = comp->data.data() + off;
  m.ts.nobs = m.ts.nnmss = n;
  m.ts.nmiss = m.ts.nextr = 0;
  m.ts.nseasons = 0;
  m.ts.xextr = kEsmOverflow;
  for (TIMERANGE* r : {&m.datarange, &m.evalrange, &m.fitrange}) {
    r->nobs = n;
    r->start = 0;
    r->end = n - 1;
    r->stdate = r->enddate = 0;
  }
  m.ts.descstats.min = comp->stats.min;
  m.ts.descstats.max = comp->stats.max;
  m.ts.descstats.mean = comp->stats.avg;
  m.ts.descstats.norm = comp->stats.norm;
  esm->comp = comp;
  return kEsmcOk;
}

int esm_fit(ESMODEL* esm) noexcept {
  if (esm == nullptr || esm->model == nullptr) return kEsmcBadArg;
  if (esm->spec == nullptr) return kEsmcNoSpec;
  WINMODEL& m = *esm->model;
  const ESMSPEC& s = *esm->spec;
  const int method = esm->modused;
  const ESMMODELSET* set = methodSet(method);
  if (set == nullptr || m.ts.x == nullptr || m.ts.nobs < 1) return kEsmcBadArg;

  esm->parm.level = s.level.parm;
  esm->parm.trend = s.trend.parm;
  esm->parm.damp = s.damp.parm;
  m.parms.parms[0] = s.level.parm;
  m.parms.parms[1] = s.trend.parm;
  m.parms.parms[2] = s.damp.parm;

  // Start values at the end of the series. A single value is its own
  // level; the simple kernel needs two.
  m.svi.trend = kMissing;
  if (method == kIdmSimple && m.ts.nobs == 1) {
    m.svi.level = m.ts.x[0];
  } else if (set->svi(m.ts.x, m.ts.misflg.data(), nullptr, m.ts.nobs, 0, 1, m.additive, m.svi) < 0) {
    return kEsmcStart;
  }
  if (method == kIdmSimple) m.svi.trend = kMissing;

  m.spec.code = method;
  m.parms.method = m.pest.method = method;
  m.parms.nparms = m.pest.nparms = set->k;
  const long usable = m.ts.nobs - m.ts.nmiss;
  if ((method == kIdmLinear && usable < 3) || (method == kIdmDampTrend && usable < 4)) return kEsmcFit;
  if (set->fit(&m) < 0) return kEsmcFit;

  const long df = m.ts.nobs - set->k - m.ts.nmiss;
  for (int i = 0; i < set->k; ++i) {
    const double t = m.pest.tvals[i];
    double p = kMissing;
    if (df >= 1 && !wzmis(t) && std::fabs(t) <= 1000.0) {
      p = zpgt2(t * t, df);
      if (p < 0.0) p = kMissing;  // the tail function failed
    }
    m.pest.pvalue[i] = p;
    m.pest.df[i] = df;
  }

  esm->pest.sigma2 = m.pest.mse;
  esm->pest.nparms = set->k;
  esm->pest.n = m.ts.nmiss;
  ESMPEST* out[3] = {&esm->pest.level, &esm->pest.trend, &esm->pest.damp};
  for (int i = 0; i < 3; ++i) {
    m.parms.parms[i] = m.pest.parms[i];
    *out[i] = ESMPEST{m.pest.parms[i], m.pest.stderr_[i], m.pest.tvals[i], m.pest.pvalue[i]};
  }
  ESMFOR& f = esm->forecast;
  f.level.backcast = m.svi.level;
  f.level.start = m.startvals.level;
  f.level.final = m.smooth.level;
  f.trend.backcast = m.svi.trend;
  f.trend.start = m.startvals.trend;
  f.trend.final = m.smooth.trend;
  return kEsmcOk;
}

int esm_pred(ESMODEL* esm, double alpha, long lead, ESMFOR* forecast) noexcept {
  if (esm == nullptr || forecast == nullptr || lead < 0 || esm->model == nullptr || esm->comp == nullptr)
    return kEsmcBadArg;
  WINMODEL& m = *esm->model;
  const ESMMODELSET* set = methodSet(esm->modused);
  if (set == nullptr || m.ts.x == nullptr) return kEsmcBadArg;
  const long n = m.ts.nobs;
  const long off = offset(*esm->comp);
  const auto len = static_cast<std::size_t>(lead + off + n);
  const auto nrows = static_cast<std::size_t>(n + lead);
  try {
    grow(esm->rows, nrows * static_cast<std::size_t>(set->rowlen));
    for (std::vector<double>* v : {&forecast->predict, &forecast->lower, &forecast->upper,
                                   &forecast->error, &forecast->std, &forecast->level.states,
                                   &forecast->trend.states})
      grow(*v, len);
  } catch (const std::bad_alloc&) {
    return kEsmcNoMem;
  }

  double w[3] = {0, 0, 0};
  for (int i = 0; i < set->k; ++i) {
    if (wzmis(m.parms.parms[i])) m.parms.parms[i] = m.pest.parms[i];
    w[i] = m.parms.parms[i];
  }
  // The backward pass of the estimator left the state at the beginning.
  SMOOTHVALS state;
  state.level = m.startvals.level;
  state.trend = m.startvals.trend;
  state.xhat = m.startvals.xhat;
  double mse = kMissing;
  if (set->prd(m.ts.x, m.ts.misflg.data(), nullptr, m.ts.descstats.norm, n, w, m.additive, state, 0,
               n - 1, lead, m.pest.mse, alpha, 1, &mse, esm->rows.data()) < 0)
    return kEsmcPredict;

  ESMFOR& f = *forecast;
  f.n = static_cast<long>(len);
  f.alpha = alpha;
  f.actual = (esm->orig != nullptr ? esm->orig : esm->comp)->data.data();
  f.bounded = 0;
  if (off == 1)  // entry 0 lies before the first smoothed value
    for (std::vector<double>* v : {&f.predict, &f.lower, &f.upper, &f.error, &f.std, &f.level.states,
                                   &f.trend.states})
      (*v)[0] = kMissing;
  const bool trended = set->trendCol >= 0;
  for (std::size_t r = 0; r < nrows; ++r) {
    const double* row = esm->rows.data() + r * static_cast<std::size_t>(set->rowlen);
    const std::size_t i = r + static_cast<std::size_t>(off);
    f.predict[i] = row[kRowPredicted];
    f.upper[i] = row[kRowUpper];
    f.lower[i] = row[kRowLower];
    // The kernels carry prediction minus actual.
    f.error[i] = wzmis(row[kRowError]) ? kMissing : -row[kRowError];
    f.std[i] = row[kRowStd];
    f.level.states[i] = row[kRowLevel];
    f.trend.states[i] = trended ? row[set->trendCol] : kMissing;
  }
  refreshForecast(f);
  return kEsmcOk;
}

int esm_trns(ESMODEL* esm, double* w) noexcept {
  if (esm == nullptr || w == nullptr) return kEsmcBadArg;
  if (esm->spec == nullptr) return kEsmcNoSpec;
  if (esm->trnsused <= 0) return kEsmcOk;
  if (esm->comp == nullptr) return kEsmcBadArg;
  const IDSCOMP& c = *esm->comp;
  ESMFOR& f = esm->forecast;
  const long n = std::min<long>(f.n, static_cast<long>(f.predict.size()));
  if (n < 1) return kEsmcOk;
  double* pred = f.predict.data();
  double* sd = f.std.data();
  const int rc = esm->spec->trnsopt == kBackMedian
                     ? ztstmv(pred, sd, n, c.trnscode, c.trnsparm, kTrnsGridK, kTrnsGridB, w, pred, sd)
                     : ztstev(pred, sd, n, c.trnscode, c.trnsparm, kTrnsGridK, kTrnsGridB, w, pred, sd);
  if (rc < 0) return kEsmcBackTrans;
  if (ztstiv(f.lower.data(), n, c.trnscode, c.trnsparm, f.lower.data()) < 0 ||
      ztstiv(f.upper.data(), n, c.trnscode, c.trnsparm, f.upper.data()) < 0)
    return kEsmcBackTrans;
  // actual is the plain component: the errors are on the scale of the data.
  const IDSCOMP* plain = esm->orig != nullptr ? esm->orig : esm->comp;
  const long nact = std::min<long>(n, static_cast<long>(plain->data.size()));
  for (long i = 0; i < n; ++i) {
    const double a = i < nact && f.actual != nullptr ? f.actual[i] : kMissing;
    f.error[i] = wzmis(a) || wzmis(pred[i]) ? kMissing : a - pred[i];
  }
  refreshForecast(f);
  return kEsmcOk;
}

int esm_bnds(ESMODEL* esm) noexcept {
  if (esm == nullptr || esm->spec == nullptr) return kEsmcBadArg;
  const ESMFBNDS& b = esm->spec->fbnds;
  if (b.code == kIdmNoBounds || (wzmis(b.lower) && wzmis(b.upper))) return kEsmcOk;
  if (b.code != kIdmBoundPredict && b.code != kIdmBoundAll) return kEsmcBadArg;
  ESMFOR& f = esm->forecast;
  if (f.n < 1 || static_cast<std::size_t>(f.n) > f.predict.size()) return kEsmcOk;
  const auto i = static_cast<std::size_t>(f.n - 1);
  bool changed = false;
  if (b.code == kIdmBoundAll) {
    changed = clamp(&f.lower[i], b) || changed;
    changed = clamp(&f.upper[i], b) || changed;
  }
  changed = clamp(&f.predict[i], b) || changed;
  if (!changed) return kEsmcOk;
  f.bounded = 1;
  refreshForecast(f);
  return kEsmcBounded;
}

}  // namespace qvt
