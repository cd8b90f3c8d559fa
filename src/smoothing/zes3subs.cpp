// Kernels of damped-trend exponential smoothing (Gardner and McKenzie
// 1985). See zes3.hpp.
#include <cmath>

#include "run/missing.hpp"
#include "smoothing/esmtypes.hpp"
#include "smoothing/zes2.hpp"
#include "smoothing/zes3.hpp"
#include "smoothing/zespass.hpp"

namespace qvt {

namespace {

bool stateBad(double v) noexcept { return wzmis(v) || std::fabs(v) > kEsmStateLimit; }

struct Damped {
  static constexpr int p = 3;
  static constexpr int rowlen = kZes3RowLen;
  static constexpr int trendCol = 7;
  static constexpr int seasonCol = -1;
  double w[3] = {0, 0, 0};

  int pnt(double x, double xscale, EsState& s, int, double* xhat, double* e) const noexcept {
    return zes3pnt(x, xscale, w[0], w[1], w[2], &s.L, &s.T, xhat, e);
  }
  double shown(const EsState& s, int) const noexcept { return s.L + w[2] * s.T; }
  void skip(EsState& s, int) const noexcept {
    s.T = w[2] * s.T;
    s.L += s.T;
  }
  void turn(EsState& s) const noexcept {
    s.L += w[2] * s.T;
    s.T = -w[2] * s.T;
  }
  // p_k = p_(k-1) + T_k with T_k = phi T_(k-1): each lead adds a trend
  // damped once more.
  double lead(const EsState& s, long k, int, double* level, double* trend) const noexcept {
    double pk = s.L;
    double tk = s.T;
    for (long i = 1; i <= k; ++i) {
      tk *= w[2];
      pk += tk;
    }
    *level = pk;
    *trend = tk;
    return pk;
  }
  double leadvar(const EsState&, long k, int, double v) const noexcept {
    return zes3cla(w[0], w[1], w[2], v, k, kMissing, nullptr);
  }
};

double psiAt(double w, double g, double phi, long j) noexcept {
  if (std::fabs(phi - 1.0) < kEsmTiny) return w + static_cast<double>(j) * w * g;
  return w + (phi / (phi - 1.0)) * g * w * (std::pow(phi, static_cast<double>(j)) - 1.0);
}

}  // namespace

int zes3svi(const double* x, const char* misflg, long n, int stflg, double* level,
            double* trend) noexcept {
  return zes2svi(x, misflg, n, stflg, level, trend);
}

int zes3pnt(double x, double xscale, double wlevel, double wtrend, double wdamp, double* level,
            double* trend, double* xhat, double* e) noexcept {
  const double L = *level;
  // The guard is on the damped trend that enters the prediction, not on T:
  // a trend just past the limit that damping brings back inside still steps.
  const double dt = wzmis(*trend) ? kMissing : wdamp * *trend;
  if (stateBad(L) || stateBad(dt)) {
    *level = kMissing;
    *trend = kMissing;
    return kEsmDiverged;
  }
  *xhat = L + dt;
  if (*xhat > xscale * kEsmScaleFactor) {
    *level = kMissing;
    *trend = kMissing;
    return kEsmDiverged;
  }
  *e = *xhat - x;
  const double L1 = (1.0 - wlevel) * *xhat + wlevel * x;
  *level = L1;
  *trend = wtrend * (L1 - L) + (1.0 - wtrend) * dt;
  return kEsmOk;
}

int zes3dpd(double x, double wlevel, double wtrend, double wdamp, double llevel, double clevel,
            double ltrend, double /*ctrend*/, double* derlev, double* dertre,
            double* dervec) noexcept {
  const double w = wlevel;
  const double g = wtrend;
  const double phi = wdamp;
  double dt[3];
  for (int i = 0; i < 3; ++i) {
    dt[i] = wzmis(dertre[i]) ? kMissing : phi * dertre[i];
    if (wzmis(derlev[i]) || wzmis(dt[i]) || std::fabs(derlev[i]) > kEsmOverflow ||
        std::fabs(dt[i]) > kEsmOverflow) {
      for (int j = 0; j < 3; ++j) derlev[j] = dertre[j] = kMissing;
      return kEsmDiverged;
    }
  }
  const double dl0 = derlev[0], dl1 = derlev[1], dl2 = derlev[2];
  dervec[0] = dl0 + dt[0];
  dervec[1] = dl1 + dt[1];
  dervec[2] = dl2 + dt[2] + ltrend;
  const double nl0 = (x - phi * ltrend) + ((1.0 - w) * (dl0 + dt[0]) - llevel);
  const double nl1 = (1.0 - w) * (dl1 + dt[1]);
  const double nl2 = (1.0 - w) * (dl2 + dt[2] + ltrend);
  derlev[0] = nl0;
  derlev[1] = nl1;
  derlev[2] = nl2;
  dertre[0] = (1.0 - g) * dt[0] + g * (nl0 - dl0);
  dertre[1] = g * (nl1 - dl1) + ((clevel - llevel) - phi * ltrend) + (1.0 - g) * dt[1];
  dertre[2] = (1.0 - g) * (ltrend + dt[2]) + g * (nl2 - dl2);
  return kEsmOk;
}

int zes3smo(const double* x, const char* misflg, double xscale, long n, double wlevel,
            double wtrend, double wdamp, double* level, double* trend, double* mse) noexcept {
  const Damped m{{wlevel, wtrend, wdamp}};
  EsState s{*level, *trend, nullptr, 0};
  const int rc = zespass::smo(m, x, misflg, nullptr, xscale, n, s, mse);
  *level = s.L;
  *trend = s.T;
  return rc;
}

int zes3npd(const double* x, const char* misflg, double xscale, long n, double wlevel,
            double wtrend, double wdamp, double level, double trend, const double* deltas,
            int wkflag, double* pder) noexcept {
  const Damped m{{wlevel, wtrend, wdamp}};
  const EsState s{level, trend, nullptr, 0};
  return zespass::npd(m, 3, x, misflg, nullptr, xscale, n, s, nullptr, deltas, wkflag, pder);
}

int zes3prd(const double* x, const char* misflg, double xscale, long n, double wlevel,
            double wtrend, double wdamp, double* level, double* trend, long start, long end,
            long lead, double se2, double siglev, int startflg, double* mse,
            double* strptr) noexcept {
  const Damped m{{wlevel, wtrend, wdamp}};
  EsState s{*level, *trend, nullptr, 0};
  const int rc = zespass::prd(m, x, misflg, nullptr, xscale, n, s, start, end, lead, se2, siglev,
                              startflg, mse, strptr);
  *level = s.L;
  *trend = s.T;
  return rc;
}

double zes3cla(double wlevel, double wtrend, double wdamp, double se2, long lead, double siglev,
               double* limit) noexcept {
  if (wzmis(se2) || wzmis(wlevel) || wzmis(wtrend) || wzmis(wdamp)) {
    if (limit != nullptr) *limit = kMissing;
    return kMissing;
  }
  double sum = 1.0;
  for (long j = 1; j < lead; ++j) {
    const double psi = psiAt(wlevel, wtrend, wdamp, j);
    sum += psi * psi;
  }
  const double var = se2 * sum;
  if (limit != nullptr) *limit = zespass::halfWidth(zespass::limitZ(siglev), var);
  return var;
}

int zes3psi(double wlevel, double wtrend, double wdamp, long npsi, double* psi) noexcept {
  if (npsi < 1) return kEsmOk;
  psi[0] = 1.0;
  for (long j = 1; j < npsi; ++j) psi[j] = psiAt(wlevel, wtrend, wdamp, j);
  return kEsmOk;
}

int zes3stb(double wlevel, double wtrend, double wdamp) noexcept {
  const double b = (wlevel - wdamp) + wtrend * wdamp * wlevel - 1.0;
  const double c = wdamp - wdamp * wlevel;
  const double d = b * b - 4.0 * c;
  if (d < 0.0) return (b * b - d) * 0.25 < 1.0 ? 1 : 0;  // |root|^2 = c
  const double sd = std::sqrt(d);
  return (std::fabs((-b + sd) * 0.5) < 1.0 && std::fabs((-b - sd) * 0.5) < 1.0) ? 1 : 0;
}

void zes3std(const double* xpxdiag, double mse, long nobs, const double* parms, double* stderr_,
             double* tvals) noexcept {
  zespass::stdk(3, 4, xpxdiag, mse, nobs, parms, stderr_, tvals);
}

}  // namespace qvt
