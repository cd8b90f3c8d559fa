// Kernel set of damped-trend exponential smoothing (Gardner and McKenzie
// 1985): level L, trend T damped by phi, xhat = L + phi T,
//   L' = (1 - w) xhat + w x,   T' = g (L' - L) + (1 - g) phi T.
// Arguments and conventions as zes2.hpp, with the damping weight after the
// trend weight.
#pragma once

namespace qvt {

// As zes2svi.
int zes3svi(const double* x, const char* misflg, long n, int stflg, double* level,
            double* trend) noexcept;
// -9 with the state missing when |L| or |phi T| passes the state limit or
// xhat passes xscale times 10000.
int zes3pnt(double x, double xscale, double wlevel, double wtrend, double wdamp, double* level,
            double* trend, double* xhat, double* e) noexcept;
// derlev, dertre, dervec: three entries (level, trend, damping weight).
int zes3dpd(double x, double wlevel, double wtrend, double wdamp, double llevel, double clevel,
            double ltrend, double ctrend, double* derlev, double* dertre, double* dervec) noexcept;
int zes3smo(const double* x, const char* misflg, double xscale, long n, double wlevel,
            double wtrend, double wdamp, double* level, double* trend, double* mse) noexcept;
int zes3npd(const double* x, const char* misflg, double xscale, long n, double wlevel,
            double wtrend, double wdamp, double level, double trend, const double* deltas,
            int wkflag, double* pder) noexcept;
// Rows of 8 doubles; the lead rows add the damped trend phi^k T step by
// step, so the forecasts level off at L + T phi/(1 - phi).
int zes3prd(const double* x, const char* misflg, double xscale, long n, double wlevel,
            double wtrend, double wdamp, double* level, double* trend, long start, long end,
            long lead, double se2, double siglev, int startflg, double* mse,
            double* strptr) noexcept;
double zes3cla(double wlevel, double wtrend, double wdamp, double se2, long lead, double siglev,
               double* limit) noexcept;
// psi_j = w + (phi/(phi - 1)) g w (phi^j - 1), or Holt's w + j w g when
// phi is 1 to within tiny.
int zes3psi(double wlevel, double wtrend, double wdamp, long npsi, double* psi) noexcept;
// 1 when both roots of z^2 + b z + c lie inside the unit circle, with
// b = (w - phi) + g phi w - 1 and c = phi - phi w.
int zes3stb(double wlevel, double wtrend, double wdamp) noexcept;
// Missing when nobs < 4.
void zes3std(const double* xpxdiag, double mse, long nobs, const double* parms, double* stderr_,
             double* tvals) noexcept;

inline constexpr int kZes3RowLen = 8;

}  // namespace qvt
