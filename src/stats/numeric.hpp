// Numerical kernel of the statistics: the normal distribution, F and t tail
// probabilities, the incomplete beta function, a guarded power, packed
// symmetric matrices (index, root-free Cholesky, inverse), a positive
// definiteness repair for autocorrelations, and order statistics by
// selection.
//
// Every routine is pure: scalars and arrays in, a value or a code out, no
// state, no I/O, no allocation that outlives the call. What callers rely on
// are the conventions at the edges, stated at each declaration: which tail is
// returned, and what a failure returns (negative probabilities, -99.0 / 99.0
// from the log-gamma / log-beta, the missing value with a code from zpower).
// Callers test those before use.
#pragma once

#include <cstddef>

namespace qvt {

// Overflow guard shared by the numeric code, about sqrt of the largest
// double. It lies just above 2^512, whose square already overflows, so a
// guard of |x| < kNumBig alone does not make x*x finite: code that squares
// must also test the square (as the statistics of fit do).
inline constexpr double kNumBig = 1.3407807929943e+154;
// exp() of anything at or below this is taken as 0.
inline constexpr double kExpLow = -708.3964185;
// exp() of anything at or above this overflows.
inline constexpr double kExpHigh = 709.782712893384;
// 2^53: the first double above which not every integer is representable.
inline constexpr double kTwo53 = 9007199254740992.0;

// ---------------------------------------------------------------- normal

// W. J. Cody's rational Chebyshev approximation of the error function
// (Math. Comp. 23, 1969; the CALERF routine of SPECFUN). jint 0 gives erf(x),
// 1 gives erfc(x). Any other jint gives exp(x^2) erfc(x), the scaled form.
// A missing (or NaN) x gives the missing value.
void calerf(double x, double* result, int jint) noexcept;

// erf(x) and erfc(x) through calerf.
double zferf(double x) noexcept;
double zferfc(double x) noexcept;

// Standard normal distribution function P(Z <= x); the lower tail keeps full
// relative accuracy for negative x. Missing for a missing x.
double zprbnrm(double x) noexcept;

// Standard normal quantile for 0 <= p <= 1. p = 0 gives -37.64030867301702,
// p = 1 gives 7.941345326170997; p below 1e-16 is solved by Newton's method
// on the log of the lower tail. Negative for p <= 1/2.
double zprobit(double p) noexcept;

// Mills' ratio: the upper tail beyond x divided by the density at x.
// Result 0, or 1 when the continued fraction for x >= 5 did not settle in 99
// terms (ratio then holds the last convergent).
int zmillsr(double x, double* ratio) noexcept;

// Logs of the lower tail P(Z <= x), of the upper tail P(Z > x), and of the
// density at x, each accurate also where the probability underflows.
// Result 0, or 1 when zmillsr failed.
int zlognrm(double x, double* lpl, double* lpr, double* ldens) noexcept;

// ------------------------------------------------------- gamma and beta

// ln(1 + z), accurate for small z.
double zln1px(double z) noexcept;

// ln Gamma(x) for x > 0; -99.0 for x <= the smallest normal double.
double zlgamma(double x) noexcept;

// Stirling's correction series ln Gamma(x) - ((x - 1/2) ln x - x + ln sqrt(2 pi)),
// six terms; meant for x >= 15.
double zlgbern(double x) noexcept;

// ln Beta(a, b); 99.0 when a <= 0 or b <= 0.
double zlbeta(double a, double b) noexcept;

// Regularized incomplete beta function I_x(a, b) into *p and the beta
// density at x into *d. Results: 0 success; 1 when a or b exceeds 2^53
// (p, d untouched); -1 for x outside [0, 1], a <= 0, b <= 0, or a continued
// fraction that did not converge (p = -1, d = 0).
int zibeta(double x, double a, double b, double* p, double* d) noexcept;

// Upper tail P(F > f) of the F distribution with ndf and ddf degrees of
// freedom. -4.0 for f < 0 or a degree of freedom <= 0; -2.0 when the
// incomplete beta failed. f = 0 gives 1.
double zprbf(double f, double ndf, double ddf) noexcept;

// Two-sided tail of Student's t: P(t^2 > t2) with df degrees of freedom;
// -2.0 when the incomplete beta failed (which includes df <= 0).
double zpgt2(double t2, long df) noexcept;

// ------------------------------------------------------------------ power

// x to the power y with guards. *rc: 0 success; 1 overflow (result missing);
// 2 negative x with a non-integral (or too large) y (missing); 3 zero x with
// y <= 0 (missing). Underflow gives 0 with rc 0.
double zpower(double x, double y, int* rc) noexcept;

// ------------------------------------------------------ packed matrices

// Place of element (i, j) of a symmetric matrix packed by rows of its lower
// triangle, counted from 0, for either order of i and j.
constexpr long zisub(long i, long j) noexcept {
  return i >= j ? i * (i + 1) / 2 + j : j * (j + 1) / 2 + i;
}

// Number of doubles of a packed symmetric matrix of order n.
constexpr std::size_t packedSize(long n) noexcept {
  return n > 0 ? static_cast<std::size_t>(n) * static_cast<std::size_t>(n + 1) / 2 : 0;
}

// Largest absolute element of n doubles (0 for n <= 0).
double zvamx(const double* a, long n) noexcept;

// Root-free Cholesky A = L D L' in place on a packed matrix of order n:
// below the diagonal L (unit diagonal implied), on the diagonal D.
// Result 0; 1 when norm * tol is 0 (norm = largest absolute element);
// i + 1 when pivot i (from 0) has |d_i| < norm * tol, which ends the
// factorisation; -99 for n < 1.
int zrchol(double* a, int n, double tol) noexcept;

// Packed inverse of the matrix whose zrchol factor a holds. Every d_i must be
// nonzero (zrchol returned 0).
void zrchinv(const double* a, double* ainv, int n) noexcept;

// Repairs autocorrelations inrho[1..p] (inrho[0] is not read) that are not
// positive definite: the largest lambda in (0, 1] found by bisection, up to
// 0.05, for which inrho[h] lambda^h passes the Durbin-Levinson recursion with
// every partial autocorrelation below 1 in size. Returns lambda (1 when the
// sequence passes as it stands); work[0..p-1] receives the coefficients
// a_1..a_p of the AR polynomial 1 + a_1 B + ... + a_p B^p at that lambda,
// that is a_j = -phi_j for the model x_t = sum phi_j x_{t-j} + e_t.
double zposdef(const double* inrho, int p, double* work) noexcept;

// ------------------------------------------------------------ selection

// Order statistics by partitioning (Hoare's FIND), without a full sort; x is
// rearranged in place. j_d[0..nq-1]: wanted 0-based positions, ascending
// (a fraction is dropped); xj receives the values, xj1 (if not null) the next
// order statistics. Position -1 is allowed: its xj is missing and its xj1 the
// smallest value. At the last position xj1 repeats xj.
// freq (if not null) weights each element and is rearranged along with x;
// positions then count weight: the element that fills the weight interval
// [W, W + w) of the sorted order stands at every position in it. Positions at
// or beyond the total weight give the largest element of positive weight.
// Weights that are missing, negative or NaN count 0.
// p (if not null) is a parallel payload of plength bytes per element moved
// along with x; pwork is plength bytes of scratch for the swaps.
// Results: 0; -1 for n < 1, nq < 1, j_d[0] < -1, descending positions, a
// payload without pwork or plength, or (without freq) a position above
// n - 1; -2 for a freq total at or below 1e-12.
int zqpsort(long n, double* x, double* freq, int nq, const double* j_d, double* xj, double* xj1,
            void* p, int plength, void* pwork) noexcept;

// ------------------------------------------------------------ small ones

// Greatest common divisor by Euclid's algorithm; 0 unless both are positive.
constexpr long zgcd(long a, long b) noexcept {
  if (a <= 0 || b <= 0) return 0;
  while (b != 0) {
    const long r = a % b;
    a = b;
    b = r;
  }
  return a;
}

// Strided copy: c[i * jc] = a[i], i = 0 .. n - 1.
void zvmovj1(double* c, long jc, const double* a, long n) noexcept;

}  // namespace qvt
