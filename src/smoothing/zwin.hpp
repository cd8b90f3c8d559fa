// Kernel set of the Winters method (Winters 1960; additive form as in
// Gardner 1985): level L, trend T and one factor per season code,
//   additive:       xhat = L + T + s,   L' = w (x - s) + (1 - w)(L + T),
//                   s' = d (x - L') + (1 - d) s
//   multiplicative: xhat = (L + T) s,   L' = w x/s + (1 - w)(L + T),
//                   s' = d x/L' + (1 - d) s
// and T' = g (L' - L) + (1 - g) T in both. additive selects the form.
// scodes[t] is the season code (0 to ns - 1) of observation t; only the
// factor of the current season moves at a step. Conventions otherwise as
// zes2.hpp. The multiplicative form returns -7 when a prediction, level or
// factor falls below xscale times 1e-12.
#pragma once

namespace qvt {

// Start values: level the last usable observation at index 1 or later,
// trend 0 and neutral factors; with stflg a regression on time with
// seasonal terms (dummies, or multiplicative factors) gives the negated
// trend and the factors, mapped to season codes from nstart, the code of
// x[0]. trend may be null: then no trend is fitted (the seasonal models
// without trend). -2, -100, or a negative code of the regression.
int zwinsvi(const double* x, const char* misflg, long n, int nseasons, int nstart, int additive,
            int stflg, double* level, double* trend, double* sfactor) noexcept;
int zwinpnt(double x, double xscale, int additive, double wlevel, double wtrend, double wseason,
            double* level, double* trend, double* sfactor, int scode, double* xhat,
            double* e) noexcept;
// derlev, dertre, dersea: three entries each (level, trend, season weight),
// dersea those of the current season's factor.
int zwindpd(double x, double wlevel, double wtrend, double wseason, double llevel, double clevel,
            double ltrend, double ctrend, double lseason, double cseason, int additive,
            double* derlev, double* dertre, double* dersea, double* dervec) noexcept;
int zwinsmo(const double* x, const char* misflg, double xscale, long n, int nseasons,
            int additive, double wlevel, double wtrend, double wseason, double* level,
            double* trend, double* sfactor, const int* scodes, double* mse) noexcept;
int zwinnpd(const double* x, const char* misflg, double xscale, long n, int nseasons,
            int additive, double wlevel, double wtrend, double wseason, double level,
            double trend, const double* sfactor, const int* scodes, const double* deltas,
            int wkflag, double* pder) noexcept;
// Rows of 9 doubles: trend in column 7, the factor of the row's season in 8.
int zwinprd(const double* x, const char* misflg, double xscale, long n, int nseasons,
            int additive, double wlevel, double wtrend, double wseason, double* level,
            double* trend, double* sfactor, const int* scodes, long start, long end, long lead,
            double se2, double siglev, int startflg, double* mse, double* strptr) noexcept;
// Re-centring with derivatives (see zespass::recentre).
void zwinnmd(int nseasons, int additive, double* level, double* trend, double* sfactor,
             double* derlev, double* dertre, double* dersealev, double* derseatre,
             double* derseasea) noexcept;
int zwinstb(int nseasons, int additive, double wlevel, double wtrend, double wseason) noexcept;
// psi_j = w + j w g, plus (1 - w) d when j is a multiple of nseasons.
int zwinpsi(double wlevel, double wtrend, double wseason, int nseasons, long npsi,
            double* psi) noexcept;
double zwincla(double wlevel, double wtrend, double wseason, int nseasons, double se2, long lead,
               double siglev, double* limit) noexcept;
void zwinstd(const double* xpxdiag, double mse, long nobs, const double* parms, double* stderr_,
             double* tvals) noexcept;

inline constexpr int kZwinRowLen = 9;

}  // namespace qvt
