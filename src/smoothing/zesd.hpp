// Kernel set of double exponential smoothing (Brown 1963) in level and
// trend form: xhat = L + T/w,
//   L' = w x + (1 - w) L,   T' = (1 - w) T + w (L' - L),
// which is Brown's pair of smoothed series S1 = L, S2 = L - T (1 - w)/w.
// Arguments and conventions as zes2.hpp with the one weight w.
#pragma once

namespace qvt {

// As zes2svi.
int zesdsvi(const double* x, const char* misflg, long n, int stflg, double* level,
            double* trend) noexcept;
// -9 with the level missing when |L| or |T| passes the state limit or
// xhat passes xscale times 10000.
int zesdpnt(double x, double xscale, double wlevel, double* level, double* trend, double* xhat,
            double* e) noexcept;
// derlev, dertre, dervec: one entry each.
int zesddpd(double x, double wlevel, double llevel, double clevel, double ltrend, double ctrend,
            double* derlev, double* dertre, double* dervec) noexcept;
// -9 also when |w| is below tiny: the prediction divides by it.
int zesdsmo(const double* x, const char* misflg, double xscale, long n, double wlevel,
            double* level, double* trend, double* mse) noexcept;
int zesdnpd(const double* x, const char* misflg, double xscale, long n, double wlevel,
            double level, double trend, double deltas, int wkflag, double* pder) noexcept;
int zesdprd(const double* x, const char* misflg, double xscale, long n, double wlevel,
            double* level, double* trend, long start, long end, long lead, double se2,
            double siglev, int startflg, double* mse, double* strptr) noexcept;
double zesdcla(double wlevel, double se2, long lead, double siglev, double* limit) noexcept;
// psi_j = 2 w + (j - 1) w^2.
int zesdpsi(double wlevel, long npsi, double* psi) noexcept;
// Missing when nobs <= 2.
void zesdstd(const double* xpxdiag, double mse, long nobs, const double* parms, double* stderr_,
             double* tvals) noexcept;

inline constexpr int kZesdRowLen = 8;

}  // namespace qvt
