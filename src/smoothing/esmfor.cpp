// The smoothing model driver. See esmfor.hpp.
#include "smoothing/esmfor.hpp"

#include <algorithm>
#include <cmath>
#include <memory>
#include <new>
#include <vector>

#include "calendar/zintcycle.hpp"
#include "run/missing.hpp"
#include "smoothing/esmkset.hpp"
#include "stats/numeric.hpp"

namespace qvt {

namespace {

// What a scan of a series finds.
struct SeriesScan {
  long nflag = 0;
  long nextr = 0;
  double min = 0, max = 0, sum = 0;
};

// Marks missing and extreme values in misflg and collects the extremes of
// the usable ones.
SeriesScan get_stats(const double* y, long n, char* misflg) noexcept {
  SeriesScan s;
  bool first = true;
  for (long t = 0; t < n; ++t) {
    if (zmissr(y[t], kEsmOverflow, &s.nextr) != 0) {
      ++s.nflag;
      misflg[t] = 1;
      continue;
    }
    misflg[t] = 0;
    if (first) {
      s.min = s.max = y[t];
      first = false;
    } else {
      s.min = std::min(s.min, y[t]);
      s.max = std::max(s.max, y[t]);
    }
    s.sum += y[t];
  }
  return s;
}

// The time ID of row t. A cleared interval (no time ID) counts observations.
double rowDate(const INTERVAL& intv, double stdate, long t) noexcept {
  if (wzmis(stdate)) return kMissing;
  if (intv.intcode == kIntNone) return stdate + static_cast<double>(t);
  return zintnx2(intv, stdate, static_cast<double>(t));
}

// Unpacks the rows of the prediction kernel into the caller's vectors.
void get_out(const WINMODEL& m, const ESMMODELSET& set, const double* rows, long nrows,
             double stdate, FOR_OUT& out) noexcept {
  const int len = set.rowlen;
  for (long t = 0; t < nrows; ++t) {
    const double* r = rows + t * len;
    if (out.date) out.date[t] = rowDate(m.ts.interval, stdate, t);
    if (out.actual) out.actual[t] = r[kRowActual];
    if (out.predicted) out.predicted[t] = r[kRowPredicted];
    if (out.upper) out.upper[t] = r[kRowUpper];
    if (out.lower) out.lower[t] = r[kRowLower];
    if (out.std) out.std[t] = r[kRowStd];
    if (out.level) out.level[t] = r[kRowLevel];
    // The kernels carry prediction minus actual; the caller sees actual
    // minus prediction.
    if (out.residual) out.residual[t] = wzmis(r[kRowError]) ? kMissing : -r[kRowError];
    if (out.trend && set.trendCol >= 0) out.trend[t] = r[set.trendCol];
    if (out.season && set.seasonCol >= 0) out.season[t] = r[set.seasonCol];
  }
}

// Start values (steps shared by esmint and esmsvi): from the whole series,
// or from its tail of nbackcast times the method's multiple.
int startValues(WINMODEL& m, const ESMMODELSET& set) noexcept {
  long start = 0;
  long len = m.ts.nobs;
  if (m.spec.nbackcast >= 1) {
    const long mult = set.seasonal ? m.ts.nseasons + set.tailMult : set.tailMult;
    const long tail = m.spec.nbackcast * mult;
    if (tail < m.ts.nobs) {
      start = m.ts.nobs - tail;
      len = tail;
    }
  }
  if (set.additive >= 0) m.additive = set.additive;
  const int* scodes = m.ts.scodes.empty() ? nullptr : m.ts.scodes.data() + start;
  return set.svi(m.ts.x + start, m.ts.misflg.data() + start, scodes, len, m.ts.nseasons, 1,
                 m.additive, m.svi);
}

// Season codes of n periods from stdate. Without a time ID (a cleared
// interval) the grid counts observations and the cycle runs strictly from
// the first one. 0, or -999 when the calendar can't code the grid.
int seasonCodes(const INTERVAL& intv, double stdate, int scode53, long n, int ns,
                int* scodes) noexcept {
  if (intv.intcode == kIntNone) {
    for (long t = 0; t < n; ++t) scodes[t] = static_cast<int>(t % ns);
    return kEsmOk;
  }
  int count = ns;
  const int rc = zintscd(intv, stdate, scode53, n, scodes, &count);
  return rc < 0 ? kEsmBadArg : kEsmOk;
}

void copyState(const SMOOTHVALS& from, SMOOTHVALS& to) {
  to.level = from.level;
  to.trend = from.trend;
  to.xhat = from.xhat;
  to.sfactor = from.sfactor;
}

}  // namespace

int esmint(const double* y, long nobs, const INTERVAL* intv, double stdate, int nseason,
           int scode53, int method, long nbackcast, WINMODEL** esm) noexcept {
  if (esm == nullptr) return kEsmBadArg;
  *esm = nullptr;
  const ESMMODELSET* set = esmmodelset(method);
  if (y == nullptr || nobs < 1 || set == nullptr) return kEsmBadArg;

  // Seasonal members need a cycle of at least 2 seasons: given, or the
  // interval's own when nseason is negative. The non-seasonal ones keep no
  // factors.
  int ns = 0;
  if (set->seasonal) {
    ns = nseason;
    if (ns < 0) {
      INTERVAL sintv{};
      if (intv == nullptr || zintsea(intv, stdate, &sintv, &ns) != 0) return kEsmBadArg;
    }
    if (ns < 2) return kEsmBadArg;
  }

  std::unique_ptr<WINMODEL> m;
  try {
    m = std::make_unique<WINMODEL>();
    m->ts.misflg.assign(static_cast<std::size_t>(nobs), 0);
    if (ns > 1) {
      m->ts.scodes.assign(static_cast<std::size_t>(nobs), 0);
      for (SMOOTHVALS* s : {&m->startvals, &m->svi, &m->smooth})
        s->sfactor.assign(static_cast<std::size_t>(ns), 0.0);
    }
    const auto k = static_cast<std::size_t>(set->k);
    m->parms.parms.assign(k, kMissing);
    m->pest.parms.assign(k, kMissing);
    m->pest.stderr_.assign(k, kMissing);
    m->pest.tvals.assign(k, kMissing);
    m->pest.pvalue.assign(k, kMissing);
    m->pest.df.assign(k, 0);
  } catch (const std::bad_alloc&) {
    return kEsmNoMem;
  }

  m->spec.code = method;
  m->parms.method = method;
  m->parms.nparms = set->k;
  m->pest.method = method;
  m->pest.nparms = set->k;
  m->pest.mse = kMissing;
  m->startvals.level = kMissing;  // no estimator pass has left a state yet
  m->startvals.trend = kMissing;
  m->ts.x = y;
  m->ts.nobs = nobs;
  m->ts.nseasons = ns;
  for (TIMERANGE* r : {&m->datarange, &m->evalrange, &m->fitrange}) {
    r->nobs = nobs;
    r->start = 0;
    r->end = nobs - 1;
    r->stdate = stdate;
    r->enddate = rowDate(intv != nullptr ? *intv : INTERVAL{}, stdate, nobs - 1);
  }

  // Default bounds: every weight in [0.001, 0.999], none held.
  WGTBNDS& b = m->wbnds;
  for (double* w : {b.wlevel, b.wtrend, b.wseason, b.wdamp}) {
    w[0] = kEsmLowerDefault;
    w[1] = kEsmUpperDefault;
    w[2] = (kEsmUpperDefault - kEsmLowerDefault) * kEsmTolFactor;
  }
  b.bounds = 1;
  b.stability = 1;

  const SeriesScan s = get_stats(y, nobs, m->ts.misflg.data());
  m->ts.nmiss = s.nflag;
  m->ts.nextr = s.nextr;
  m->ts.nnmss = nobs - s.nflag;
  m->ts.xextr = kEsmOverflow;
  if (m->ts.nnmss >= 1) m->ts.descstats.mean = s.sum / static_cast<double>(m->ts.nnmss);
  m->ts.descstats.min = s.min;
  m->ts.descstats.max = s.max;
  m->ts.descstats.norm = std::max(std::fabs(s.min), std::fabs(s.max));
  if (m->ts.nnmss < 2) return kEsmTooFew;
  if (method == kEsmWinters && s.min < kEsmTiny) return kEsmNonPositive;

  if (intv != nullptr) m->ts.interval = *intv;
  if (ns > 1) {
    if (const int rc = seasonCodes(m->ts.interval, stdate, scode53, nobs, ns, m->ts.scodes.data());
        rc < 0)
      return rc;
  }
  m->ts.nstart = m->ts.scodes.empty() ? 0 : m->ts.scodes[0];
  m->spec.nbackcast = nbackcast;

  const int rc = startValues(*m, *set);
  if (rc < 0) return rc;
  *esm = m.release();
  return kEsmOk;
}

void esmtrm(WINMODEL* esm) noexcept { delete esm; }

int esmfit(WINMODEL* esm) noexcept {
  if (esm == nullptr) return kEsmBadArg;
  const ESMMODELSET* set = esmmodelset(esm->spec.code);
  if (set == nullptr || set->fit == nullptr) return kEsmBadArg;
  const int rc = set->fit(esm);
  if (rc < 0) return rc;

  MODELPEST& pe = esm->pest;
  const long df = esm->ts.nobs - pe.nparms - esm->ts.nmiss;
  for (int i = 0; i < pe.nparms; ++i) {
    const double t = pe.tvals[i];
    double p = kMissing;
    if (wzmis(t)) {
      // .I and .M stand for an infinite t: infinitely significant.
      const char c = missCode(t);
      p = (c == 'I' || c == 'M') ? 0.0 : kMissing;
    } else if (std::fabs(t) <= 1000.0) {
      p = zpgt2(t * t, df);
      if (p < 0.0) p = kMissing;  // the tail function failed (df < 1)
    } else {
      p = 0.0;
    }
    pe.pvalue[i] = p;
    pe.df[i] = df;
  }
  return rc;
}

int esmprd(WINMODEL* esm, const double* x, long n, double stdate, int scode53, double alpha,
           int lead, FOR_OUT* out) noexcept {
  if (esm == nullptr || x == nullptr || n < 1 || lead < 0) return kEsmBadArg;
  const ESMMODELSET* set = esmmodelset(esm->spec.code);
  if (set == nullptr) return kEsmBadArg;

  const int ns = esm->ts.nseasons;
  std::vector<double> rows;
  std::vector<char> misflg;
  std::vector<int> scodes;
  SMOOTHVALS state;
  try {
    rows.assign(static_cast<std::size_t>(n + lead) * static_cast<std::size_t>(set->rowlen), 0.0);
    misflg.assign(static_cast<std::size_t>(n), 0);
    if (ns >= 2) scodes.assign(static_cast<std::size_t>(n), 0);
    state.sfactor.reserve(esm->svi.sfactor.size());
  } catch (const std::bad_alloc&) {
    return kEsmNoMem;
  }

  const SeriesScan s = get_stats(x, n, misflg.data());
  if (esm->spec.code == kEsmWinters && s.min < kEsmTiny) return kEsmNonPositive;
  if (n - s.nflag < 2) return kEsmTooFew;
  if (ns > 1) {
    if (const int rc = seasonCodes(esm->ts.interval, stdate, scode53, n, ns, scodes.data()); rc < 0)
      return rc;
  }

  // A series that starts where the fit started goes on from the state that
  // the last backward pass of the estimator left; any other backcasts anew.
  int startflg = 0;
  const double fitstart = esm->fitrange.stdate;
  // Before any estimation startvals holds no state (its level is missing),
  // and the series backcasts from svi like any other.
  if (!wzmis(stdate) && !wzmis(fitstart) && stdate == fitstart && !wzmis(esm->startvals.level)) {
    startflg = 1;
    copyState(esm->startvals, state);
  } else {
    copyState(esm->svi, state);
  }

  double w[3] = {0, 0, 0};
  for (int i = 0; i < set->k; ++i) {
    if (wzmis(esm->parms.parms[i])) esm->parms.parms[i] = esm->pest.parms[i];
    w[i] = esm->parms.parms[i];
    if (wzmis(w[i]) || std::fabs(w[i]) > kEsmStateLimit) return kEsmBadArg;
  }

  const double xscale = std::max(std::fabs(s.min), std::fabs(s.max));
  double mse = kMissing;
  const int rc = set->prd(x, misflg.data(), scodes.empty() ? nullptr : scodes.data(), xscale, n, w,
                          esm->additive, state, 0, n - 1,
                          lead, esm->pest.mse, alpha, startflg, &mse, rows.data());
  if (rc == 0 && out != nullptr) {
    out->n = n + lead;
    get_out(*esm, *set, rows.data(), n + lead, stdate, *out);
  }
  return rc;
}

int esmsum(WINMODEL* esm, const double* pred, int lead, int start, double alpha, double* spred,
           double* sstd, double* slower, double* supper) noexcept {
  for (double* r : {spred, sstd, slower, supper})
    if (r != nullptr) *r = kMissing;
  if (esm == nullptr || pred == nullptr || start < 1 || lead < 1 || lead < start) return kEsmBadArg;
  if (wzmis(alpha) || alpha < 0.0 || alpha > 1.0) return kEsmBadArg;

  double sum = 0.0;
  for (int h = start - 1; h <= lead - 1; ++h)
    if (!wzmis(pred[h])) sum += pred[h];
  if (spred != nullptr) *spred = sum;
  if (sstd == nullptr && slower == nullptr && supper == nullptr) return kEsmOk;

  std::vector<double> psi;
  try {
    psi.assign(static_cast<std::size_t>(lead), 0.0);
  } catch (const std::bad_alloc&) {
    return kEsmNoMemSelect;
  }
  const ESMMODELSET* set = esmmodelset(esm->spec.code);
  if (set == nullptr) return -99;
  set->psi(esm->parms.parms.data(), esm->ts.nseasons, lead, psi.data());

  const double mse = esm->pest.mse;
  if (wzmis(mse)) return kEsmTooFew;
  const double lim = kEsmOverflow / (static_cast<double>(lead) * static_cast<double>(lead));
  for (const double v : psi)
    if (wzmis(v) || std::fabs(v) > lim) return kEsmTooFew;

  // With the forecast error at lead i written as sum_m psi_m a_(i - m), the
  // covariance of leads i >= j is sigma^2 P_d(j), d = i - j, with the prefix
  // P_d(j) = sum_{m < j} psi_m psi_(m + d). V sums it over start..lead,
  // counting i > j twice.
  double var = 0.0;
  for (int d = 0; d <= lead - start; ++d) {
    double prefix = 0.0;
    double acc = 0.0;
    for (int j = 1; j <= lead - d; ++j) {
      prefix += psi[j - 1] * psi[j - 1 + d];
      if (j >= start) acc += prefix;
    }
    var += (d == 0 ? 1.0 : 2.0) * acc;
  }
  const double vm = var * mse;
  const double sd = vm > 0.0 ? std::sqrt(vm) : 0.0;
  if (sstd != nullptr) *sstd = sd;
  const double z = zprobit(1.0 - alpha * 0.5);
  if (slower != nullptr) *slower = sum - z * sd;
  if (supper != nullptr) *supper = sum + z * sd;
  return kEsmOk;
}

int esmsvi(WINMODEL* esm) noexcept {
  if (esm == nullptr) return kEsmBadArg;
  const ESMMODELSET* set = esmmodelset(esm->spec.code);
  if (set == nullptr) return kEsmBadArg;
  return startValues(*esm, *set);
}

}  // namespace qvt
