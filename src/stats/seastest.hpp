// Seasonality test: does a series have a seasonal pattern of a given cycle
// length? An autoregression without seasonal terms is compared with one that
// has a mean for each season, first by an information criterion, then by an
// F test of equal seasonal means, the means estimated by generalized least
// squares under AR(1) errors.
//
// Common conventions:
//  - Missing values follow run/missing.hpp; no arithmetic is done on them.
//  - Seasons count from the first element handed in: element t belongs to
//    season t mod nseas, whatever the calendar says.
//  - The helpers below are the steps of zssntst, public so that each can be
//    checked on its own; they allocate nothing.
#pragma once

namespace qvt {

// Tests series x (n values, untouched) for seasonality of cycle nseas after
// the differences at the lags dif[0..ndif-1] (dif may be null with ndif 0),
// with an autoregression of order p (called with p = 1; see the .cpp for
// what a larger p does) and the F test at level alpha. epsilon is the
// smallest variance and pivot scale that counts as non-zero.
// aic[0]: criterion of the non-seasonal model; aic[1]: of the seasonal
// model; aic[2]: p-value of the F test. Argument faults write nothing to
// aic; data that stop the test early leave what was reached.
// Result: 1 seasonal; 0 not seasonal, or it can't be shown; -1 no memory;
// -11 n below 6, too few values after trimming, or no residual of the
// non-seasonal model; -12 a lag below 1, or lags summing above n - 6;
// -13 p negative, or nseas + lags + p above n - 7; -14 nseas negative, or
// nseas + lags above n - 6; -99 x or aic null.
int zssntst(const double* x, long n, const int* dif, int ndif, int p, int nseas, double epsilon,
            double alpha, double* aic) noexcept;

// The argument checks of zssntst, in its order (-11, -12, -14, -13). Result:
// the parameter count nseas + lags + p, or the negative code.
long improper(long n, const int* dif, int ndif, int p, int nseas) noexcept;

// Differences z in place at the lags d[0..nd-1], in order: z[t] = z[t+d] -
// z[t]; a missing operand makes a missing result, counted in *nmiss over all
// passes. Result: the length left (0 when the lags use up the series); -12
// for a lag below 1, z then untouched.
long gettsd(double* z, long nz, const int* d, int nd, long* nmiss) noexcept;

// Length of z without its leading and trailing missing values; *nfirst gets
// the count of leading ones (n, and a length of 0, when all are missing).
long gettrim(const double* z, long n, long* nfirst) noexcept;

// Mean of the non-missing values of z; missing when there is none.
double getmu(const double* z, long nz) noexcept;

// Autocorrelations rho[0..p] of z about zbar, skipping pairs with a missing
// value and rescaling for them. z[0] must not be missing. Result 0; -10 when
// the variance is below epsilon and |zbar| too; -15 when only the variance.
int getrho(const double* z, long nz, double zbar, double* rho, int p, double epsilon) noexcept;

// Autoregressive coefficients from the autocorrelations rho[1..p] (Yule-Walker
// through the Durbin-Levinson recursion for p > 1, rho repaired in place when
// it is not positive definite). wkphi[0] is the constant, wkphi[1..p] the
// coefficients of x_t = wkphi[0] + sum wkphi[j] x_{t-j} + e_t. Result 0.
int getphi(double zbar, int p, double* rho, double* wkphi, double epsilon) noexcept;

// Mean squared one-step residual of the autoregression phi[0..p] on z;
// elements whose residual can't be formed are dropped and charged one degree
// of freedom each. Missing when none is left.
double getmse(const double* z, long nz, const double* phi, int p) noexcept;

// b[0..nseas-1]: the mean of each season's non-missing values (missing for a
// season without one). Result: the number of complete cycles; -11 nobs < 0;
// -14 nseas < 1.
long getsmu(const double* z, long nobs, long nseas, double* b) noexcept;

// Removes the seasonal values b from z in place; a missing z[t] or b[s]
// leaves z[t] missing. Result: the count of non-missing results; -11
// nobs < 0; -14 nseas < 1.
long getsres(double* z, long nobs, int nseas, const double* b) noexcept;

// GLS seasonal means of z[t] = B[t mod m] + u[t], u an AR(1) with
// coefficient phi[1], and the statistic of the test of equal means, from the
// seasonal means S (no entry missing) and the first and last value of z
// alone. work holds nseas (3 nseas + 1) / 2 doubles. B and *fstat are
// written only on success. Result 0; -11 nobs < 0; -14 nseas < 2 or
// nobs <= nseas; -99 a matrix that is singular to within epsilon.
int getsgls(const double* z, long nobs, long nseas, const double* phi, const double* S, double epsilon,
            double* B, double* work, double* fstat) noexcept;

}  // namespace qvt
