// Variance-stabilising transformations of a series, their inverses, and the
// back-transforms that carry a forecast and its standard error from the
// transformed scale back to the scale of the data.
//
// Three results exist on the way back:
//  - the inverse: the plain inverse function (limits, values without error);
//  - the mean: E[g(X)] and sd[g(X)] for X ~ N(x, stdx^2), g the inverse, in
//    closed form for log and square root, by a weighted sum on a grid of
//    normal ordinates for the logistic and both Box-Cox forms;
//  - the median: g(x) as the point value, with the spread taken around it,
//    sqrt(sd^2 + (mean - median)^2).
//
// Common conventions:
//  - Results: 0 computed; 1 outside the domain or a result would overflow;
//    -1 missing input or an unusable argument (n < 1, a null array, no
//    weight table, k < 1 or b < 1 for the integrated kinds even when the
//    table is filled, since the grid step is stdx/b and the sums run to k).
//    A result that can't be computed is the missing value.
//  - A type other than 1..5 means no transformation: the result is the
//    argument with result 0.
//  - Vector routines read each element before writing it, so the outputs may
//    be the inputs. A negative result means nothing was written.
//  - The integration weights w hold k + 1 doubles; w[0] missing means "not
//    filled yet", and the routine that needs them fills them (ztstniw). A
//    table already filled is used as it stands.
#pragma once

namespace qvt {

// Transformation codes (trnscode). AUTO never reaches the routines here: the
// callers decide between log and none first.
enum TransformCode : int {
  kTrnsNone = 0,
  kTrnsLog = 1,
  kTrnsSqrt = 2,
  kTrnsLogistic = 3,
  kTrnsBoxCox = 4,
  kTrnsBoxCoxX12 = 5,  // (y^c - 1)/c + c^2; no statement keyword of its own
  kTrnsAuto = 10,
};

// Back-transform kinds (trnsopt), as ztstopt reads them.
enum BackTransformKind : int {
  kBackNotSet = 0,
  kBackInverse = 1,
  kBackMean = 2,
  kBackMedian = 3,
};

// Size of the weight table everywhere in the system: k = 100 grid points on
// each side, b = 10 points per standard deviation, so k + 1 doubles.
inline constexpr int kTrnsGridK = 100;
inline constexpr int kTrnsGridB = 10;

// Numerical limits of this family; each literal is the exact double the
// bit pattern beside it names.
inline constexpr double kTrnsBig = 1.3407807929943e+154;        // 0x5FF0000000000087: x*x finite
inline constexpr double kTrnsBigSq = 1.3407807929942597e+152;   // 0x5F847AE147AE147B: SQRT variance
inline constexpr double kTrnsHuge = 8.988465674311578e+307;     // 0x7FDFFFFFFFFFFFFE: integration sums
inline constexpr double kTrnsExpMax = 709.782712893384;         // 0x40862E42FEFA39EF: ln(DBL_MAX)
inline constexpr double kTrnsExpMin = -708.3964185;             // 0xC086232BDD76683C: ln(DBL_MIN)
inline constexpr double kTrnsSmall = 1.053671212772351e-08;     // 0x3E46A09E667F3BCE: sqrt(2^-53)
inline constexpr double kTrnsBoxCoxLog = 1e-08;                 // 0x3E45798EE2308C3A: |c| below is log
inline constexpr double kTrnsTiny = 1.491668147e-154;           // 0x20000000002302AC: ztstgp floor

// ------------------------------------------------------------ dispatch

int ztstf(double y, int type, double c, double* x) noexcept;
int ztsti(double x, int type, double c, double* y) noexcept;
int ztstfv(const double* y, long n, int type, double c, double* x) noexcept;
int ztstiv(const double* x, long n, int type, double c, double* y) noexcept;

// Mean back-transform. Codes 3..5 need w (result -1 when it is null or can't
// be filled). The vector form returns 1 when an element with a non-missing x
// gave a positive result, else 0.
int ztste(double x, double stdx, int type, double c, int k, int b, double* w, double* y,
          double* stdy) noexcept;
int ztstev(const double* x, const double* stdx, long n, int type, double c, int k, int b, double* w,
           double* y, double* stdy) noexcept;

// Median back-transform. Where the mean routine fails, y holds what it gave
// as median and stdy is left as it was (code 5: both missing). The vector
// form returns 1 when any element gave a non-zero result, else 0.
int ztstm(double x, double stdx, int type, double c, int k, int b, double* w, double* y,
          double* stdy) noexcept;
int ztstmv(const double* x, const double* stdx, long n, int type, double c, int k, int b, double* w,
           double* y, double* stdy) noexcept;

// ------------------------------------------------------- forward, by kind
// y data value, x result. A missing y gives -1.

int ztstlf(double y, double c, double* x) noexcept;     // ln(y + c); c missing counts 0
int ztstsf(double y, double c, double* x) noexcept;     // sqrt(y + c); c missing counts 0
int ztstgf(double y, double c, double* x) noexcept;     // ln(yc / (1 - yc)); c missing counts 1
int ztstbf(double y, double c, double* x) noexcept;     // (y^c - 1)/c, ln y for |c| < 1e-8
int ztstbfx12(double y, double c, double* x) noexcept;  // (y^c - 1)/c + c^2, ln y for |c| < 1e-8

// ------------------------------------------------------- inverse, by kind

int ztstli(double x, double c, double* y) noexcept;     // exp(x) - c
int ztstsi(double x, double c, double* y) noexcept;     // x^2 - c
int ztstgi(double x, double c, double* y) noexcept;     // 1/(1 + exp(-x)) / c; never overflows
int ztstbi(double x, double c, double* y) noexcept;     // (xc + 1)^(1/c)
int ztstbix12(double x, double c, double* y) noexcept;  // (xc + 1 - c^3)^(1/c)

// ---------------------------------------------- mean and median, by kind
// m median g(x), y mean, stdy standard deviation of g(X), X ~ N(x, stdx^2).
// The integrated three give -1 with y = m and stdy = stdx where stdx is no
// spread at all (|x| * S >= stdx). Where the inverse fails at x itself they
// give m = y = what it gave and stdy missing, with result -1 for the Box-Cox
// forms and 1 for the logistic, whose inverse fails only for a missing x.

int ztstle(double x, double stdx, double c, double* m, double* y, double* stdy) noexcept;
int ztstse(double x, double stdx, double c, double* m, double* y, double* stdy) noexcept;
int ztstge(double x, double stdx, double c, int k, int b, double* w, double* m, double* y,
           double* stdy) noexcept;
int ztstbe(double x, double stdx, double c, int k, int b, double* w, double* m, double* y,
           double* stdy) noexcept;
int ztstbex12(double x, double stdx, double c, int k, int b, double* w, double* m, double* y,
              double* stdy) noexcept;

int ztstlm(double x, double stdx, double c, double* y, double* stdy) noexcept;
int ztstsm(double x, double stdx, double c, double* y, double* stdy) noexcept;
int ztstgm(double x, double stdx, double c, int k, int b, double* w, double* y, double* stdy) noexcept;
int ztstbm(double x, double stdx, double c, int k, int b, double* w, double* y, double* stdy) noexcept;
int ztstbmx12(double x, double stdx, double c, int k, int b, double* w, double* y,
              double* stdy) noexcept;

// ------------------------------------------------------------ the rest

// Integration weights: w[i] = phi(i/b)/b, i = 0..k, phi the standard normal
// density. -1 for k < 1, b < 1 or a null w (nothing written).
int ztstniw(int k, int b, double* w) noexcept;

// Logistic scale of a series: 0.999999 / 10^e with 10^e the smallest power
// of ten at or above the largest non-missing value. -1 (c missing) when that
// value is at or below 1.491668147e-154, or there is none.
int ztstgp(const double* y, long n, double* c) noexcept;

// Code of a transformation name ("LOG", "SQRT", "LOGIT", "BOXCOX") or of a
// back-transform kind ("INVERSE", "MEAN", "MEDIAN"): the first 8 characters,
// blank-padded, compared exactly; 0 for anything else.
int ztstnm(const char* str, int strLen) noexcept;
int ztstopt(const char* str, int strLen) noexcept;

}  // namespace qvt
