// Kernel set of simple exponential smoothing (Brown 1959): the level L is
// updated as L' = w x + (1 - w) L and predicts every future value.
//
// Conventions shared by every kernel set of the family:
// - x has n observations, index 0 the earliest; misflg[t] 1 marks one that is
//   treated as missing (missing or extreme). Flagged observations leave the
//   state alone and carry no error.
// - The error e is prediction minus actual.
// - Every pass runs backward first, from start values taken at the end of the
//   series, turns, and then runs forward; the backward half supplies the
//   state at the beginning of the series (backcasting).
// - A failing guard sets the state it guards to the missing value and
//   returns -9; kernels never allocate and never print.
#pragma once

namespace qvt {

// Start level: the last usable observation at index 1 or later. 0, or -2
// when there is none (also when only x[0] is usable, or n < 2). stflg has no
// effect in this model.
int zes1svi(const double* x, const char* misflg, long n, int stflg, double* level) noexcept;

// One step of the recursion: *xhat = L, *e = L - x, L' = w x + (1 - w) L.
// -9 (level missing) when |L| exceeds the state limit or the prediction
// exceeds xscale times 10000.
int zes1pnt(double x, double xscale, double wlevel, double* level, double* xhat,
            double* e) noexcept;

// One step of the derivative recursion. *derlev is D = dL/dw before the
// step; dervec[0] receives the derivative of the prediction (D), and
// D' = (x - llevel) + (1 - w) D. -9 (D missing) when |D| exceeds the
// overflow limit. clevel is not used by this model.
int zes1dpd(double x, double wlevel, double llevel, double clevel, double* derlev,
            double* dervec) noexcept;

// Full backward and forward pass from *level (the start value at the end of
// the series); *level leaves as the level after the last observation and
// *mse is the mean squared one-step error of the forward half.
int zes1smo(const double* x, const char* misflg, double xscale, long n, double wlevel,
            double* level, double* mse) noexcept;

// Central difference of the mean squared error of zes1smo with respect to
// the weight, with perturbation deltas (relative to w when wkflag is 1 and
// |w| is above tiny). -92 with *pder missing when a pass failed or deltas is
// below tiny; -92 with *pder .I or .M when the quotient would overflow.
int zes1npd(const double* x, const char* misflg, double xscale, long n, double wlevel,
            double level, double deltas, int wkflag, double* pder) noexcept;

// Predictions, limits and forecasts. Writes rows of 7 doubles to strptr
// (may be null) for t from start to end and for lead forecasts beyond end:
// actual, predicted, upper, lower, error, standard error, level. se2 is the
// one-step error variance of the limits (missing: in-sample limits missing
// and the lead rows fall back on *mse); siglev the significance level.
// startflg nonzero: *level already is the level at the beginning of the
// series and no backcast runs. *mse receives sum of squares / (nobs - 1).
int zes1prd(const double* x, const char* misflg, double xscale, long n, double wlevel,
            double* level, long start, long end, long lead, double se2, double siglev,
            int startflg, double* mse, double* strptr) noexcept;

// Forecast error variance at lead: se2 ((lead - 1) w^2 + 1); when limit is
// not null the half-width of the limits at siglev goes there.
double zes1cla(double wlevel, double se2, long lead, double siglev, double* limit) noexcept;

// Weights of the moving-average form: psi[0] = 1, psi[j] = w. Returns 0.
int zes1psi(double wlevel, long npsi, double* psi) noexcept;

// Standard error sqrt(|xpxdiag[0]| mse) and t value of the weight; both
// missing when nobs < 2. xpxdiag holds half the inverse cross-product entry.
void zes1std(const double* xpxdiag, double mse, long nobs, const double* parms,
             double* stderr_, double* tvals) noexcept;

// Row length of the forecast rows of this model.
inline constexpr int kZes1RowLen = 7;

}  // namespace qvt
