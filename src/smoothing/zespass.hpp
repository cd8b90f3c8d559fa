// The passes shared by the trend and seasonal kernel sets.
//
// Each of those models is a small policy type M that knows its one-step
// recursion; these templates run it over a series the way every member of
// the family does: backward from start values at the end of the series,
// the turn, then forward collecting one-step errors (backcasting). They
// also write the forecast rows and form the numeric derivative of the
// mean squared error.
//
// A policy M supplies:
//   int pnt(double x, double xscale, EsState& s, int sc, double* xhat, double* e) const
//       point step on observation x of season sc; guards as the family's
//   double shown(const EsState& s, int sc) const
//       the prediction shown in the row of a flagged observation
//   void skip(EsState& s, int sc) const      state change across a flagged observation
//   void turn(EsState& s) const              end of the backward half
//   double lead(const EsState& s, long k, int sc, double* level, double* trend) const
//       k-step forecast from the final state with the season code of lead k,
//       with the level and trend its row shows
//   double leadvar(const EsState& s, long k, int sc, double v) const
//       forecast variance at lead k, v the one-step variance
//   static constexpr int p, rowlen, trendCol, seasonCol
//   double w[3]                              the weights (perturbed by npd)
#pragma once

#include <cmath>

#include "run/missing.hpp"
#include "smoothing/esmdivide.hpp"
#include "smoothing/esmtypes.hpp"
#include "stats/numeric.hpp"

namespace qvt {

// State of a trend or seasonal recursion. S points to ns factors, indexed
// by season code, or is null for the models without seasons.
struct EsState {
  double L = 0;
  double T = 0;
  double* S = nullptr;
  int ns = 0;
};

namespace zespass {

// The season code of observation t. Seasonal entry points refuse a cycle
// of two or more seasons without codes, so only a one-season cycle (code 0
// throughout) arrives here without them.
inline int seasonOf(const int* scodes, long t, int ns) noexcept {
  if (ns < 1 || scodes == nullptr) return 0;
  return scodes[t];
}

// The factor of season sc, or 0 for a model without seasons.
inline double factor(const EsState& s, int sc) noexcept { return s.S != nullptr ? s.S[sc] : 0.0; }

// Divergence guard on a weight: missing or beyond the state limit.
inline bool badWeight(double w) noexcept { return wzmis(w) || std::fabs(w) > kEsmStateLimit; }

// The z value of two-sided limits at significance level siglev, or missing
// for a level that names no limits.
inline double limitZ(double siglev) noexcept {
  if (wzmis(siglev) || !(siglev > 0.0 && siglev < 1.0)) return kMissing;
  return zprobit(1.0 - siglev * 0.5);
}

// Half-width z sqrt(var), missing when either is missing.
inline double halfWidth(double z, double var) noexcept {
  if (wzmis(z) || wzmis(var)) return kMissing;
  return z * std::sqrt(std::fmax(var, 0.0));
}

template <class M>
void writeRow(double* row, double actual, double pred, double hw, double e, double sd,
              double level, double trend, double sfac) noexcept {
  const bool nohw = wzmis(hw) || wzmis(pred);
  row[kRowActual] = actual;
  row[kRowPredicted] = pred;
  row[kRowUpper] = nohw ? kMissing : pred + hw;
  row[kRowLower] = nohw ? kMissing : pred - hw;
  row[kRowError] = e;
  row[kRowStd] = sd;
  row[kRowLevel] = level;
  if constexpr (M::trendCol >= 0) row[M::trendCol] = trend;
  if constexpr (M::seasonCol >= 0) row[M::seasonCol] = sfac;
}

// Backward half: from the start values at the end towards the beginning.
// A flagged observation moves the state without an error.
template <class M>
int backward(const M& m, const double* x, const char* misflg, const int* scodes, double xscale,
             long n, EsState& s) noexcept {
  double xhat = 0.0;
  double e = 0.0;
  for (long t = n - 1; t >= 0; --t) {
    const int sc = seasonOf(scodes, t, s.ns);
    if (misflg[t]) {
      m.skip(s, sc);
      continue;
    }
    if (const int rc = m.pnt(x[t], xscale, s, sc, &xhat, &e); rc < 0) return rc;
  }
  m.turn(s);
  return kEsmOk;
}

// Full pass; *mse is the mean squared one-step error of the forward half.
template <class M>
int smo(const M& m, const double* x, const char* misflg, const int* scodes, double xscale, long n,
        EsState& s, double* mse) noexcept {
  if (n < 1) return kEsmTooFew;
  for (double w : m.w)
    if (badWeight(w)) return kEsmDiverged;
  if (const int rc = backward(m, x, misflg, scodes, xscale, n, s); rc < 0) return rc;
  double ss = 0.0;
  long nflag = 0;
  double xhat = 0.0;
  double e = 0.0;
  for (long t = 0; t < n; ++t) {
    const int sc = seasonOf(scodes, t, s.ns);
    if (misflg[t]) {
      ++nflag;
      m.skip(s, sc);
      continue;
    }
    if (const int rc = m.pnt(x[t], xscale, s, sc, &xhat, &e); rc < 0) return rc;
    if (std::fabs(e) > kEsmOverflow || ss > kEsmSumLimit) return kEsmDiverged;
    ss += e * e;
  }
  const long nobs = n - nflag;
  if (nobs < 1) return kEsmTooFew;
  *mse = ss / static_cast<double>(nobs);
  return kEsmOk;
}

// Central difference of the mean squared error of smo with respect to each
// weight in turn, the others unperturbed, every pass from the same start
// state (level, trend and a copy of the factors in work, ns entries).
template <class M>
int npd(const M& m, int k, const double* x, const char* misflg, const int* scodes, double xscale,
        long n, const EsState& start, double* work, const double* deltas, int wkflag,
        double* pder) noexcept {
  int out = kEsmOk;
  for (int i = 0; i < k; ++i) pder[i] = kMissing;
  for (int i = 0; i < k; ++i) {
    const double w = m.w[i];
    const double d = deltas[i];
    const bool absolute = std::fabs(w) <= kEsmTiny || wkflag != 1;
    M m1 = m;
    M m2 = m;
    m1.w[i] = absolute ? w + d : w * (1.0 + d);
    m2.w[i] = absolute ? w - d : w * (1.0 - d);
    const double den = absolute ? 2.0 * d : 2.0 * d * w;
    double mse1 = 0.0;
    double mse2 = 0.0;
    EsState s = start;
    s.S = work;
    for (int j = 0; j < start.ns; ++j) work[j] = start.S[j];
    const int rc1 = smo(m1, x, misflg, scodes, xscale, n, s, &mse1);
    s = start;
    s.S = work;
    for (int j = 0; j < start.ns; ++j) work[j] = start.S[j];
    const int rc2 = smo(m2, x, misflg, scodes, xscale, n, s, &mse2);
    if (rc1 + rc2 < 0 || d < kEsmTiny) {
      out = kEsmDivide;
      continue;
    }
    // On overflow the derivative is divide's signed infinity (.I or .M).
    if (const int rc = divide(mse1 - mse2, den, &pder[i]); rc != 0) out = rc;
  }
  return out;
}

// Predictions, limits and forecasts: rows for t from start to end (end also
// bounds the forward pass) and lead forecasts beyond it. In-sample limits
// use the one-step variance se2 as given; the lead rows fall back on *mse
// when se2 is missing or not positive. *mse = sum of squares / (nobs - p)
// when nobs exceeds p, else the plain sum.
template <class M>
int prd(const M& m, const double* x, const char* misflg, const int* scodes, double xscale, long n,
        EsState& s, long start, long end, long lead, double se2, double siglev, int startflg,
        double* mse, double* strptr) noexcept {
  if (n < 1) return kEsmTooFew;
  for (double w : m.w)
    if (badWeight(w)) return kEsmDiverged;
  if (end > n - 1) end = n - 1;

  const bool se2missing = wzmis(se2);
  const double std0 = (se2missing || se2 <= kEsmTiny) ? 0.0 : std::sqrt(se2);
  const double z = limitZ(siglev);
  const double hw = se2missing ? kMissing : halfWidth(z, se2);

  if (!startflg) {
    if (const int rc = backward(m, x, misflg, scodes, xscale, n, s); rc < 0) return rc;
  }

  double ss = 0.0;
  long nflag = 0;
  double* row = strptr;
  int lastsc = 0;
  for (long t = 0; t <= end; ++t) {
    const bool keep = strptr != nullptr && t >= start;
    const int sc = seasonOf(scodes, t, s.ns);
    lastsc = sc;
    if (misflg[t]) {
      ++nflag;
      const double p = m.shown(s, sc);
      m.skip(s, sc);
      if (keep) {
        writeRow<M>(row, x[t], p, hw, kMissing, std0, s.L, s.T, factor(s, sc));
        row += M::rowlen;
      }
      continue;
    }
    double p = 0.0;
    double e = 0.0;
    if (const int rc = m.pnt(x[t], xscale, s, sc, &p, &e); rc < 0) return rc;
    ss += e * e;
    if (keep) {
      writeRow<M>(row, x[t], p, hw, e, std0, s.L, s.T, factor(s, sc));
      row += M::rowlen;
    }
  }

  const long nobs = n - nflag;
  if (nobs < 1) return kEsmTooFew;
  *mse = nobs > M::p ? ss / static_cast<double>(nobs - M::p) : ss;

  const double v = (se2missing || !(se2 > 0.0)) ? *mse : se2;
  double lasthw = hw;
  for (long k = 1; k <= lead; ++k) {
    const int sc = s.ns > 0 ? static_cast<int>((lastsc + k) % s.ns) : 0;
    double level = 0.0;
    double trend = 0.0;
    const double p = m.lead(s, k, sc, &level, &trend);
    const double var = m.leadvar(s, k, sc, v);
    // A lead whose variance could not be formed keeps the half-width of
    // the lead before.
    const double lhw = wzmis(var) ? lasthw : halfWidth(z, var);
    lasthw = lhw;
    if (strptr != nullptr) {
      const double sd = wzmis(var) ? var : std::sqrt(std::fmax(var, 0.0));
      writeRow<M>(row, kMissing, p, lhw, kMissing, sd, level, trend, factor(s, sc));
      row += M::rowlen;
    }
  }
  return kEsmOk;
}

// Standard errors and t values of k weights from half the inverse's
// diagonal; all missing when nobs is below minobs.
inline void stdk(int k, long minobs, const double* xpxdiag, double mse, long nobs,
                 const double* parms, double* stderr_, double* tvals) noexcept {
  for (int i = 0; i < k; ++i) {
    if (nobs < minobs || wzmis(mse) || wzmis(xpxdiag[i]) || wzmis(parms[i])) {
      stderr_[i] = kMissing;
      tvals[i] = kMissing;
      continue;
    }
    stderr_[i] = std::sqrt(std::fabs(xpxdiag[i]) * mse);
    double t = 0.0;
    divide(parms[i], stderr_[i], &t);
    tvals[i] = t;
  }
}

}  // namespace zespass
}  // namespace qvt

namespace qvt::zespass {

// Re-centring of the seasonal factors at the turn of a derivative pass, so
// that additive factors average 0 and multiplicative ones 1, with the level
// (and in Winters the trend) taking up what the factors give away. The
// derivatives follow: ds[i] is the array of d S[s]/d w_i over the seasons,
// dl[i] (and dt[i]) the derivatives of the level (and trend); dt and T may
// be null. The invariant is the one-step prediction, which the re-centring
// leaves unchanged in the additive form and scales consistently in the
// multiplicative one.
inline void recentre(int ns, int additive, int k, double* L, double* T, double* S, double* dl,
                     double* dt, double* const* ds) noexcept {
  constexpr double kTol = 1.1368683772161608e-13;
  if (ns < 1) return;
  const double dn = static_cast<double>(ns);
  double ibar = 0.0;
  for (int s = 0; s < ns; ++s) ibar += S[s];
  ibar /= dn;
  double ib[3] = {0, 0, 0};
  for (int i = 0; i < k; ++i) {
    for (int s = 0; s < ns; ++s) ib[i] += ds[i][s];
    ib[i] /= dn;
  }
  if (additive) {
    if (std::fabs(ibar) < kTol) return;
    for (int s = 0; s < ns; ++s) S[s] -= ibar;
    for (int i = 0; i < k; ++i) {
      for (int s = 0; s < ns; ++s) ds[i][s] -= ib[i];
      dl[i] += ib[i];
    }
    *L += ibar;
    return;
  }
  if (std::fabs(1.0 - ibar) < kTol) return;
  for (int s = 0; s < ns; ++s) {
    S[s] = S[s] / ibar;
    for (int i = 0; i < k; ++i) {
      double q = 0.0;
      divide(ds[i][s] - S[s] * ib[i], ibar, &q);
      ds[i][s] = q;
    }
  }
  for (int i = 0; i < k; ++i) dl[i] = ib[i] * *L + dl[i] * ibar;
  *L *= ibar;
  if (T != nullptr && dt != nullptr) {
    for (int i = 0; i < k; ++i) dt[i] = ib[i] * *T + dt[i] * ibar;
    *T *= ibar;
  }
}

}  // namespace qvt::zespass
