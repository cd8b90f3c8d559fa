// Kernels of linear exponential smoothing (Holt 1957). See zes2.hpp.
#include <cmath>

#include "run/missing.hpp"
#include "smoothing/esmdivide.hpp"
#include "smoothing/esmtypes.hpp"
#include "smoothing/zes2.hpp"
#include "smoothing/zespass.hpp"
#include "stats/numeric.hpp"
#include "stats/startreg.hpp"

namespace qvt {

namespace {

bool stateBad(double v) noexcept { return wzmis(v) || std::fabs(v) > kEsmStateLimit; }

struct Linear {
  static constexpr int p = 2;
  static constexpr int rowlen = kZes2RowLen;
  static constexpr int trendCol = 7;
  static constexpr int seasonCol = -1;
  double w[2] = {0, 0};

  int pnt(double x, double xscale, EsState& s, int, double* xhat, double* e) const noexcept {
    return zes2pnt(x, xscale, w[0], w[1], &s.L, &s.T, xhat, e);
  }
  double shown(const EsState& s, int) const noexcept { return s.L + s.T; }
  // A flagged observation extends the line.
  void skip(EsState& s, int) const noexcept { s.L += s.T; }
  // One last step to the period before the first observation, then the
  // trend points forward in time.
  void turn(EsState& s) const noexcept {
    s.L += s.T;
    s.T = -s.T;
  }
  double lead(const EsState& s, long k, int, double* level, double* trend) const noexcept {
    const double pk = s.L + static_cast<double>(k) * s.T;
    *level = pk;
    *trend = s.T;
    return pk;
  }
  double leadvar(const EsState&, long k, int, double v) const noexcept {
    return zes2cla(w[0], w[1], v, k, kMissing, nullptr);
  }
};

}  // namespace

int zes2svi(const double* x, const char* misflg, long n, int stflg, double* level,
            double* trend) noexcept {
  long last = -1;
  for (long t = n - 1; t >= 1; --t) {
    if (!misflg[t]) {
      last = t;
      break;
    }
  }
  if (last < 0) return kEsmTooFew;
  *level = x[last];
  *trend = 0.0;
  if (!stflg) return kEsmOk;
  double c = kMissing;
  double slope = kMissing;
  const int rc = ztsrdmy(x, misflg, n, 0, &c, &slope, nullptr, nullptr, nullptr);
  // The level stays the last observation whatever the regression gave; the
  // slope is reversed because the first pass runs backward in time.
  *level = x[last];
  if (rc >= 0 && !wzmis(slope)) *trend = -slope;
  return rc;
}

int zes2pnt(double x, double xscale, double wlevel, double wtrend, double* level, double* trend,
            double* xhat, double* e) noexcept {
  if (stateBad(*level) || stateBad(*trend)) {
    *level = kMissing;
    *trend = kMissing;
    return kEsmDiverged;
  }
  const double L = *level;
  const double T = *trend;
  *xhat = L + T;
  if (*xhat > xscale * kEsmScaleFactor) {
    *level = kMissing;
    *trend = kMissing;
    return kEsmDiverged;
  }
  *e = *xhat - x;
  const double L1 = (1.0 - wlevel) * *xhat + wlevel * x;
  *level = L1;
  *trend = (1.0 - wtrend) * T + wtrend * (L1 - L);
  return kEsmOk;
}

int zes2dpd(double x, double wlevel, double wtrend, double llevel, double clevel, double ltrend,
            double /*ctrend*/, double* derlev, double* dertre, double* dervec) noexcept {
  for (int i = 0; i < 2; ++i) {
    if (wzmis(derlev[i]) || wzmis(dertre[i]) || std::fabs(derlev[i]) > kEsmOverflow ||
        std::fabs(dertre[i]) > kEsmOverflow) {
      derlev[0] = derlev[1] = dertre[0] = dertre[1] = kMissing;
      return kEsmDiverged;
    }
  }
  const double w = wlevel;
  const double g = wtrend;
  const double dl0 = derlev[0], dl1 = derlev[1], dt0 = dertre[0], dt1 = dertre[1];
  dervec[0] = dl0 + dt0;
  dervec[1] = dl1 + dt1;
  const double nl0 = (x - ltrend) + ((1.0 - w) * (dl0 + dt0) - llevel);
  const double nl1 = (1.0 - w) * (dl1 + dt1);
  derlev[0] = nl0;
  derlev[1] = nl1;
  dertre[0] = (1.0 - g) * dt0 + g * (nl0 - dl0);
  dertre[1] = g * (nl1 - dl1) + ((clevel - llevel) - ltrend) + (1.0 - g) * dt1;
  return kEsmOk;
}

int zes2smo(const double* x, const char* misflg, double xscale, long n, double wlevel,
            double wtrend, double* level, double* trend, double* mse) noexcept {
  const Linear m{{wlevel, wtrend}};
  EsState s{*level, *trend, nullptr, 0};
  const int rc = zespass::smo(m, x, misflg, nullptr, xscale, n, s, mse);
  *level = s.L;
  *trend = s.T;
  return rc;
}

int zes2npd(const double* x, const char* misflg, double xscale, long n, double wlevel,
            double wtrend, double level, double trend, const double* deltas, int wkflag,
            double* pder) noexcept {
  const Linear m{{wlevel, wtrend}};
  const EsState s{level, trend, nullptr, 0};
  return zespass::npd(m, 2, x, misflg, nullptr, xscale, n, s, nullptr, deltas, wkflag, pder);
}

int zes2prd(const double* x, const char* misflg, double xscale, long n, double wlevel,
            double wtrend, double* level, double* trend, long start, long end, long lead,
            double se2, double siglev, int startflg, double* mse, double* strptr) noexcept {
  const Linear m{{wlevel, wtrend}};
  EsState s{*level, *trend, nullptr, 0};
  const int rc = zespass::prd(m, x, misflg, nullptr, xscale, n, s, start, end, lead, se2, siglev,
                              startflg, mse, strptr);
  *level = s.L;
  *trend = s.T;
  return rc;
}

double zes2cla(double wlevel, double wtrend, double se2, long lead, double siglev,
               double* limit) noexcept {
  if (wzmis(se2) || wzmis(wlevel) || wzmis(wtrend)) {
    if (limit != nullptr) *limit = kMissing;
    return kMissing;
  }
  double sum = 1.0;
  for (long j = 1; j < lead; ++j) {
    const double psi = wlevel + static_cast<double>(j) * wlevel * wtrend;
    sum += psi * psi;
  }
  const double var = se2 * sum;
  if (limit != nullptr) *limit = zespass::halfWidth(zespass::limitZ(siglev), var);
  return var;
}

int zes2psi(double wlevel, double wtrend, long npsi, double* psi) noexcept {
  if (npsi < 1) return kEsmOk;
  psi[0] = 1.0;
  for (long j = 1; j < npsi; ++j) psi[j] = wlevel + static_cast<double>(j) * wlevel * wtrend;
  return kEsmOk;
}

int zes2stb(double wlevel, double wtrend) noexcept {
  if (!(wlevel > 0.0 && wlevel < 2.0)) return 0;
  return (wtrend >= 0.0 && wtrend < 4.0 / wlevel - 2.0) ? 1 : 0;
}

void zes2std(const double* xpxdiag, double mse, long nobs, const double* parms, double* stderr_,
             double* tvals) noexcept {
  zespass::stdk(2, 3, xpxdiag, mse, nobs, parms, stderr_, tvals);
}

}  // namespace qvt
