// Kernels of simple exponential smoothing. See zes1.hpp for the conventions.
#include <cmath>

#include "run/missing.hpp"
#include "smoothing/esmdivide.hpp"
#include "smoothing/esmtypes.hpp"
#include "smoothing/zes1.hpp"
#include "stats/numeric.hpp"

namespace qvt {

namespace {

// The state guard and the one-sided scale guard of a step; on failure the
// level becomes missing. A missing level is divergence too: it can only have
// been left by an earlier guard, and no arithmetic is done on it.
int guardLevel(double xscale, double* level) noexcept {
  if (wzmis(*level) || std::fabs(*level) > kEsmStateLimit) {
    *level = kMissing;
    return kEsmDiverged;
  }
  if (*level > xscale * kEsmScaleFactor) {
    *level = kMissing;
    return kEsmDiverged;
  }
  return kEsmOk;
}

// Backcast: runs the recursion from t = n-1 down to 0 so that *level leaves
// as the level ahead of the first observation.
int backcast(const double* x, const char* misflg, double xscale, long n, double w,
             double* level) noexcept {
  for (long t = n - 1; t >= 0; --t) {
    if (misflg[t]) continue;
    if (const int rc = guardLevel(xscale, level); rc < 0) return rc;
    *level = w * x[t] + (1.0 - w) * *level;  // L' = w x + (1 - w) L
  }
  return kEsmOk;
}

// The z value of two-sided limits at significance level siglev, or missing
// for a level that names no limits.
double limitZ(double siglev) noexcept {
  if (wzmis(siglev) || !(siglev > 0.0 && siglev < 1.0)) return kMissing;
  return zprobit(1.0 - siglev * 0.5);
}

void writeRow(double* row, double actual, double pred, double hw, double e, double sd,
              double level) noexcept {
  const bool nohw = wzmis(hw) || wzmis(pred);
  row[kRowActual] = actual;
  row[kRowPredicted] = pred;
  row[kRowUpper] = nohw ? kMissing : pred + hw;
  row[kRowLower] = nohw ? kMissing : pred - hw;
  row[kRowError] = e;
  row[kRowStd] = sd;
  row[kRowLevel] = level;
}

}  // namespace

int zes1svi(const double* x, const char* misflg, long n, int /*stflg*/, double* level) noexcept {
  // Stops at t = 1: the start value must leave at least one observation for
  // the backward half to run on.
  for (long t = n - 1; t >= 1; --t) {
    if (!misflg[t]) {
      *level = x[t];
      return kEsmOk;
    }
  }
  return kEsmTooFew;
}

int zes1pnt(double x, double xscale, double wlevel, double* level, double* xhat,
            double* e) noexcept {
  if (wzmis(*level) || std::fabs(*level) > kEsmStateLimit) {
    *level = kMissing;
    return kEsmDiverged;
  }
  *xhat = *level;
  if (*xhat > xscale * kEsmScaleFactor) {
    *level = kMissing;
    return kEsmDiverged;
  }
  *e = *xhat - x;
  *level = wlevel * x + (1.0 - wlevel) * *level;  // L' = w x + (1 - w) L
  return kEsmOk;
}

int zes1dpd(double x, double wlevel, double llevel, double /*clevel*/, double* derlev,
            double* dervec) noexcept {
  if (wzmis(*derlev) || std::fabs(*derlev) > kEsmOverflow) {
    *derlev = kMissing;
    return kEsmDiverged;
  }
  dervec[0] = *derlev;                                    // d(xhat)/dw = D
  *derlev = (x - llevel) + (1.0 - wlevel) * *derlev;     // D' = (x - L) + (1 - w) D
  return kEsmOk;
}

int zes1smo(const double* x, const char* misflg, double xscale, long n, double wlevel,
            double* level, double* mse) noexcept {
  if (n < 1) return kEsmTooFew;
  if (wzmis(wlevel) || std::fabs(wlevel) > kEsmStateLimit) return kEsmDiverged;
  if (const int rc = backcast(x, misflg, xscale, n, wlevel, level); rc < 0) return rc;

  double ss = 0.0;
  long nflag = 0;
  for (long t = 0; t < n; ++t) {
    if (misflg[t]) {
      ++nflag;
      continue;
    }
    double xhat = 0.0;
    double e = 0.0;
    if (const int rc = zes1pnt(x[t], xscale, wlevel, level, &xhat, &e); rc < 0) return rc;
    if (std::fabs(e) > kEsmOverflow || ss > kEsmSumLimit) return kEsmDiverged;
    ss += e * e;
  }
  const long nobs = n - nflag;
  if (nobs < 1) return kEsmTooFew;
  *mse = ss / static_cast<double>(nobs);
  return kEsmOk;
}

int zes1npd(const double* x, const char* misflg, double xscale, long n, double wlevel,
            double level, double deltas, int wkflag, double* pder) noexcept {
  *pder = kMissing;
  const bool absolute = std::fabs(wlevel) <= kEsmTiny || wkflag != 1;
  const double w1 = absolute ? wlevel + deltas : wlevel * (1.0 + deltas);
  const double w2 = absolute ? wlevel - deltas : wlevel * (1.0 - deltas);
  const double den = absolute ? 2.0 * deltas : 2.0 * deltas * wlevel;
  double l1 = level;  // both passes start from the same state
  double l2 = level;
  double mse1 = 0.0;
  double mse2 = 0.0;
  const int rc1 = zes1smo(x, misflg, xscale, n, w1, &l1, &mse1);
  const int rc2 = zes1smo(x, misflg, xscale, n, w2, &l2, &mse2);
  if (rc1 + rc2 < 0 || deltas < kEsmTiny) return kEsmDivide;
  // A quotient that would overflow leaves divide's signed infinity (.I or
  // .M) as the derivative, with -92.
  return divide(mse1 - mse2, den, pder);
}

int zes1prd(const double* x, const char* misflg, double xscale, long n, double wlevel,
            double* level, long start, long end, long lead, double se2, double siglev,
            int startflg, double* mse, double* strptr) noexcept {
  if (n < 1) return kEsmTooFew;
  if (wzmis(wlevel) || std::fabs(wlevel) > kEsmStateLimit) return kEsmDiverged;
  if (end > n - 1) end = n - 1;

  const bool se2missing = wzmis(se2);
  const double std0 = (se2missing || se2 <= kEsmTiny) ? 0.0 : std::sqrt(se2);
  const double z = limitZ(siglev);
  const double hw = (se2missing || wzmis(z)) ? kMissing : z * std::sqrt(std::fmax(se2, 0.0));

  if (!startflg) {
    if (const int rc = backcast(x, misflg, xscale, n, wlevel, level); rc < 0) return rc;
  }

  const double w = wlevel;
  double ss = 0.0;
  long nflag = 0;
  double* row = strptr;
  for (long t = 0; t <= end; ++t) {
    const bool keep = strptr != nullptr && t >= start;
    if (misflg[t]) {
      // The level stays; the row shows the current level as prediction.
      ++nflag;
      if (keep) {
        writeRow(row, x[t], *level, hw, kMissing, std0, *level);
        row += kZes1RowLen;
      }
      continue;
    }
    if (const int rc = guardLevel(xscale, level); rc < 0) return rc;
    const double p = *level;
    const double e = p - x[t];
    *level = w * x[t] + (1.0 - w) * *level;
    ss += e * e;
    if (keep) {
      writeRow(row, x[t], p, hw, e, std0, *level);
      row += kZes1RowLen;
    }
  }

  const long nobs = n - nflag;
  if (nobs < 1) return kEsmTooFew;
  *mse = nobs > 1 ? ss / static_cast<double>(nobs - 1) : ss;

  const double v = (se2missing || !(se2 > 0.0)) ? *mse : se2;
  const double p = *level;  // the forecast is flat
  for (long k = 1; k <= lead; ++k) {
    // var_k = v (1 + (k - 1) w^2): the sum of squared psi weights up to k - 1.
    const double var = (static_cast<double>(k - 1) * w * w + 1.0) * v;
    const double sd = std::sqrt(std::fmax(var, 0.0));
    const double lhw = wzmis(z) ? kMissing : z * sd;
    if (strptr != nullptr) {
      writeRow(row, kMissing, p, lhw, kMissing, sd, p);
      row += kZes1RowLen;
    }
  }
  return kEsmOk;
}

double zes1cla(double wlevel, double se2, long lead, double siglev, double* limit) noexcept {
  if (wzmis(se2) || wzmis(wlevel)) {
    if (limit != nullptr) *limit = kMissing;
    return kMissing;
  }
  const double var = se2 * (static_cast<double>(lead - 1) * wlevel * wlevel + 1.0);
  if (limit != nullptr) {
    const double z = limitZ(siglev);
    *limit = wzmis(z) ? kMissing : z * std::sqrt(std::fmax(var, 0.0));
  }
  return var;
}

int zes1psi(double wlevel, long npsi, double* psi) noexcept {
  if (npsi < 1) return kEsmOk;
  psi[0] = 1.0;
  for (long j = 1; j < npsi; ++j) psi[j] = wlevel;
  return kEsmOk;
}

void zes1std(const double* xpxdiag, double mse, long nobs, const double* parms,
             double* stderr_, double* tvals) noexcept {
  if (nobs < 2 || wzmis(mse) || wzmis(xpxdiag[0]) || wzmis(parms[0])) {
    stderr_[0] = kMissing;
    tvals[0] = kMissing;
    return;
  }
  stderr_[0] = std::sqrt(std::fabs(xpxdiag[0]) * mse);
  double t = 0.0;
  divide(parms[0], stderr_[0], &t);
  tvals[0] = t;
}

}  // namespace qvt
