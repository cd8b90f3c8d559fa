// Kernel set of linear exponential smoothing (Holt 1957): a level L and a
// trend T, with xhat = L + T,
//   L' = (1 - w) xhat + w x,   T' = (1 - g) T + g (L' - L).
// Conventions as zes1.hpp: misflg marks flagged observations, e is the
// prediction minus the actual, every pass runs backward from start values
// at the end of the series, turns, and runs forward.
#pragma once

namespace qvt {

// Start values: level the last usable observation at index 1 or later,
// trend 0; with stflg the trend is the negated slope of a regression on
// time (the first pass runs backward). -2 without such an observation,
// otherwise the regression's code.
int zes2svi(const double* x, const char* misflg, long n, int stflg, double* level,
            double* trend) noexcept;

// One step; -9 with the state missing when |L| or |T| passes the state
// limit or xhat passes xscale times 10000.
int zes2pnt(double x, double xscale, double wlevel, double wtrend, double* level, double* trend,
            double* xhat, double* e) noexcept;

// Derivative step: derlev, dertre hold d L/d w_i and d T/d w_i (i = level,
// trend weight) and are advanced; dervec receives d xhat/d w_i.
int zes2dpd(double x, double wlevel, double wtrend, double llevel, double clevel, double ltrend,
            double ctrend, double* derlev, double* dertre, double* dervec) noexcept;

int zes2smo(const double* x, const char* misflg, double xscale, long n, double wlevel,
            double wtrend, double* level, double* trend, double* mse) noexcept;

int zes2npd(const double* x, const char* misflg, double xscale, long n, double wlevel,
            double wtrend, double level, double trend, const double* deltas, int wkflag,
            double* pder) noexcept;

// Rows of 8 doubles: those of zes1prd plus the trend.
int zes2prd(const double* x, const char* misflg, double xscale, long n, double wlevel,
            double wtrend, double* level, double* trend, long start, long end, long lead,
            double se2, double siglev, int startflg, double* mse, double* strptr) noexcept;

// Forecast variance at lead: se2 (1 + sum_{j<lead} psi_j^2).
double zes2cla(double wlevel, double wtrend, double se2, long lead, double siglev,
               double* limit) noexcept;

// psi_0 = 1, psi_j = w + j w g.
int zes2psi(double wlevel, double wtrend, long npsi, double* psi) noexcept;

// 1 when 0 < w < 2 and 0 <= g < 4/w - 2.
int zes2stb(double wlevel, double wtrend) noexcept;

// Standard errors and t values; missing when nobs < 3.
void zes2std(const double* xpxdiag, double mse, long nobs, const double* parms, double* stderr_,
             double* tvals) noexcept;

inline constexpr int kZes2RowLen = 8;

}  // namespace qvt
