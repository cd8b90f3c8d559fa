// Kernels of double exponential smoothing (Brown 1963). See zesd.hpp.
#include <cmath>

#include "run/missing.hpp"
#include "smoothing/esmtypes.hpp"
#include "smoothing/zes2.hpp"
#include "smoothing/zesd.hpp"
#include "smoothing/zespass.hpp"

namespace qvt {

namespace {

bool stateBad(double v) noexcept { return wzmis(v) || std::fabs(v) > kEsmStateLimit; }

// The passes divide by the weight.
bool weightBad(double w) noexcept { return zespass::badWeight(w) || std::fabs(w) < kEsmTiny; }

struct Brown {
  static constexpr int p = 1;
  static constexpr int rowlen = kZesdRowLen;
  static constexpr int trendCol = 7;
  static constexpr int seasonCol = -1;
  double w[1] = {0};

  int pnt(double x, double xscale, EsState& s, int, double* xhat, double* e) const noexcept {
    return zesdpnt(x, xscale, w[0], &s.L, &s.T, xhat, e);
  }
  double shown(const EsState& s, int) const noexcept { return s.L + s.T / w[0]; }
  void skip(EsState& s, int) const noexcept { s.L += s.T; }
  void turn(EsState& s) const noexcept {
    s.L += s.T;
    s.T = -s.T;
  }
  double lead(const EsState& s, long k, int, double* level, double* trend) const noexcept {
    *level = s.L + static_cast<double>(k) * s.T;
    *trend = s.T;
    return s.L + s.T / w[0] + static_cast<double>(k - 1) * s.T;
  }
  double leadvar(const EsState&, long k, int, double v) const noexcept {
    return zesdcla(w[0], v, k, kMissing, nullptr);
  }
};

}  // namespace

int zesdsvi(const double* x, const char* misflg, long n, int stflg, double* level,
            double* trend) noexcept {
  return zes2svi(x, misflg, n, stflg, level, trend);
}

int zesdpnt(double x, double xscale, double wlevel, double* level, double* trend, double* xhat,
            double* e) noexcept {
  if (stateBad(*level) || stateBad(*trend)) {
    *level = kMissing;
    return kEsmDiverged;
  }
  const double L = *level;
  const double T = *trend;
  *xhat = L + T / wlevel;
  if (*xhat > xscale * kEsmScaleFactor) {
    *level = kMissing;
    return kEsmDiverged;
  }
  *e = *xhat - x;
  const double L1 = wlevel * x + (1.0 - wlevel) * L;
  *level = L1;
  *trend = (1.0 - wlevel) * T + wlevel * (L1 - L);
  return kEsmOk;
}

int zesddpd(double x, double wlevel, double llevel, double clevel, double ltrend,
            double /*ctrend*/, double* derlev, double* dertre, double* dervec) noexcept {
  if (wzmis(*derlev) || wzmis(*dertre) || std::fabs(*derlev) > kEsmOverflow ||
      std::fabs(*dertre) > kEsmOverflow) {
    *derlev = kMissing;
    *dertre = kMissing;
    return kEsmDiverged;
  }
  const double w = wlevel;
  const double dl = *derlev;
  const double dt = *dertre;
  dervec[0] = dl + (dt - ltrend / w) / w;
  const double nl = (x - llevel) + (1.0 - w) * dl;
  *derlev = nl;
  *dertre = (clevel - llevel) + (1.0 - w) * dt + (w * (nl - dl) - ltrend);
  return kEsmOk;
}

int zesdsmo(const double* x, const char* misflg, double xscale, long n, double wlevel,
            double* level, double* trend, double* mse) noexcept {
  if (n < 1) return kEsmTooFew;
  if (weightBad(wlevel)) return kEsmDiverged;
  const Brown m{{wlevel}};
  EsState s{*level, *trend, nullptr, 0};
  const int rc = zespass::smo(m, x, misflg, nullptr, xscale, n, s, mse);
  *level = s.L;
  *trend = s.T;
  return rc;
}

int zesdnpd(const double* x, const char* misflg, double xscale, long n, double wlevel,
            double level, double trend, double deltas, int wkflag, double* pder) noexcept {
  *pder = kMissing;
  // Both perturbed weights must stay clear of 0, which the passes divide by.
  const bool absolute = std::fabs(wlevel) <= kEsmTiny || wkflag != 1;
  const double lo = absolute ? wlevel - deltas : wlevel * (1.0 - deltas);
  if (weightBad(lo) || weightBad(wlevel)) return kEsmDivide;
  const Brown m{{wlevel}};
  const EsState s{level, trend, nullptr, 0};
  return zespass::npd(m, 1, x, misflg, nullptr, xscale, n, s, nullptr, &deltas, wkflag, pder);
}

int zesdprd(const double* x, const char* misflg, double xscale, long n, double wlevel,
            double* level, double* trend, long start, long end, long lead, double se2,
            double siglev, int startflg, double* mse, double* strptr) noexcept {
  if (n < 1) return kEsmTooFew;
  if (weightBad(wlevel)) return kEsmDiverged;
  const Brown m{{wlevel}};
  EsState s{*level, *trend, nullptr, 0};
  const int rc = zespass::prd(m, x, misflg, nullptr, xscale, n, s, start, end, lead, se2, siglev,
                              startflg, mse, strptr);
  *level = s.L;
  *trend = s.T;
  return rc;
}

double zesdcla(double wlevel, double se2, long lead, double siglev, double* limit) noexcept {
  if (wzmis(se2) || wzmis(wlevel)) {
    if (limit != nullptr) *limit = kMissing;
    return kMissing;
  }
  double sum = 1.0;
  for (long j = 1; j < lead; ++j) {
    const double psi = 2.0 * wlevel + static_cast<double>(j - 1) * wlevel * wlevel;
    sum += psi * psi;
  }
  const double var = se2 * sum;
  if (limit != nullptr) *limit = zespass::halfWidth(zespass::limitZ(siglev), var);
  return var;
}

int zesdpsi(double wlevel, long npsi, double* psi) noexcept {
  if (npsi < 1) return kEsmOk;
  psi[0] = 1.0;
  for (long j = 1; j < npsi; ++j)
    psi[j] = 2.0 * wlevel + static_cast<double>(j - 1) * wlevel * wlevel;
  return kEsmOk;
}

void zesdstd(const double* xpxdiag, double mse, long nobs, const double* parms, double* stderr_,
             double* tvals) noexcept {
  zespass::stdk(1, 3, xpxdiag, mse, nobs, parms, stderr_, tvals);
}

}  // namespace qvt
