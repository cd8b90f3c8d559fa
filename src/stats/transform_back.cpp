// Back-transforms: mean and median of g(X) for X ~ N(x, stdx^2), where g is
// the inverse of a transformation.
//
// Log and square root have closed forms: the lognormal moments
// E = e^(x + s^2/2), sd = E sqrt(e^(s^2) - 1), and for X^2 the moments
// x^2 + s^2 and sqrt(2 s^4 + 4 x^2 s^2). The logistic and both Box-Cox forms
// are integrated on a grid of spacing stdx/b with the normal ordinates folded
// into precomputed weights (ztstniw): the trapezoidal rule, which for a
// smooth integrand times a Gaussian converges faster than any power of the
// step, so ten points per standard deviation reach double precision. The
// sums stop as soon as both tail terms fall below S/k of the running mean.
#include "stats/transform.hpp"

#include "run/missing.hpp"

#include <cmath>

namespace qvt {
namespace {

constexpr double kInvSqrt2Pi = 0.3989422804014327;

// Sets each output to the missing value; gives rc back.
template <class... P>
int setMissing(int rc, P*... out) {
  ((*out = kMissing), ...);
  return rc;
}

// The weight table is usable as it stands, or has just been filled.
bool tableReady(int k, int b, double* w) {
  if (w == nullptr || k < 1 || b < 1) return false;
  return !wzmis(w[0]) || ztstniw(k, b, w) == 0;
}

// u*v when the exponents of the two factors show it can't overflow and it
// stays within H: the stricter guard of the second Box-Cox form.
bool boundedProduct(double u, double v, double* p) {
  int e1 = 0;
  int e2 = 0;
  std::frexp(u, &e1);
  std::frexp(v, &e2);
  if (e1 + 1 + e2 > 1024) return false;
  *p = u * v;
  return *p <= kTrnsHuge;
}

using Inverse = int (*)(double, double, double*) noexcept;

enum class Kind { kLogistic, kBoxCox, kBoxCoxX12 };

// sum1 = sum w_i g(x + d_i), sum2 = sum w_i g(x + d_i)^2 over d_i = 0,
// +-h, +-2h, ... With the Box-Cox forms the lower points at or below 0 are
// left out, which makes the sum one-sided near 0.
template <Inverse G, Kind K>
int integrate(double x, double stdx, double c, int k, int b, const double* w, double* m, double* y,
              double* stdy) {
  constexpr bool x12 = K == Kind::kBoxCoxX12;
  double z0 = 0.0;
  if (G(x, c, &z0) != 0) {
    *m = z0;
    *y = z0;
    *stdy = kMissing;
    return K == Kind::kLogistic ? 1 : -1;
  }
  *m = z0;
  if (wzmis(stdx)) {
    *y = kMissing;
    *stdy = kMissing;
    return -1;
  }
  if (std::fabs(x) * kTrnsSmall >= stdx) {  // no spread beyond rounding: a point
    *y = z0;
    *stdy = stdx;
    return -1;
  }
  // On failure from here the mean stays the median and stdy is not written;
  // the second Box-Cox form sets both missing instead.
  *y = z0;
  const auto failed = [&]() {
    if (x12) {
      *y = kMissing;
      *stdy = kMissing;
    }
    return 1;
  };
  double sum1 = w[0] * z0;
  double sum2 = 0.0;
  if (!x12) {
    sum2 = z0 * sum1;
  } else if (!boundedProduct(z0, sum1, &sum2)) {
    return failed();
  }
  const double h = stdx / b;
  const double small = kTrnsSmall / k;
  double d = h;  // by repeated addition, as the weights were made
  for (int i = 1; i <= k; ++i, d += h) {
    double u = 0.0;
    if (G(x + d, c, &u) != 0) return failed();
    const double a = w[i] * u;
    double pu = u * a;
    if (x12 && !boundedProduct(u, a, &pu)) return failed();
    sum2 += pu;
    double l = 0.0;
    if ((K == Kind::kLogistic || x - d > 0.0) && G(x - d, c, &l) != 0) return failed();
    if (sum2 > kTrnsHuge || w[i] * l > kTrnsHuge) return failed();
    const double bb = w[i] * l;
    double pl = l * bb;
    if (x12 && !boundedProduct(l, bb, &pl)) return failed();
    sum2 += pl;
    sum1 += a + bb;
    if (std::fabs(a) < small * sum1 && std::fabs(bb) < small * sum1) break;
  }
  // The loop checks sum2 before its last lower term; an overflow there would
  // leave an infinite variance.
  if (!(sum2 <= kTrnsHuge)) return failed();
  *y = sum1;
  const double v = sum2 - sum1 * sum1;
  *stdy = v > 0.0 ? std::sqrt(v) : 0.0;
  return 0;
}

// Spread around the median m from the mean ymean and its deviation smean:
// the root mean square distance of g(X) from m.
int aroundMedian(double m, double ymean, double smean, bool capped, double* stdy) {
  const double dev = ymean - m;
  if (capped && (smean > kTrnsBig || std::fabs(dev) > kTrnsBig)) return setMissing(1, stdy);
  const double v = smean * smean + dev * dev;
  if (std::isinf(v)) return setMissing(1, stdy);
  *stdy = v > 0.0 ? std::sqrt(v) : 0.0;
  return 0;
}

// Uniform signatures so that one loop serves every kind.
using MeanFn = int (*)(double, double, double, int, int, double*, double*, double*, double*) noexcept;
using MedianFn = int (*)(double, double, double, int, int, double*, double*, double*) noexcept;

int leAll(double x, double s, double c, int, int, double*, double* m, double* y, double* sy) noexcept {
  return ztstle(x, s, c, m, y, sy);
}
int seAll(double x, double s, double c, int, int, double*, double* m, double* y, double* sy) noexcept {
  return ztstse(x, s, c, m, y, sy);
}
int lmAll(double x, double s, double c, int, int, double*, double* y, double* sy) noexcept {
  return ztstlm(x, s, c, y, sy);
}
int smAll(double x, double s, double c, int, int, double*, double* y, double* sy) noexcept {
  return ztstsm(x, s, c, y, sy);
}

// The median through the mean routine: the median goes straight to y, the
// mean and its deviation only serve the spread. On failure stdy keeps what
// it held, except under the second Box-Cox form, which sets both missing.
template <MeanFn F, bool capped, bool x12>
int median(double x, double stdx, double c, int k, int b, double* w, double* y, double* stdy) {
  double ymean = 0.0;
  double smean = 0.0;
  const int rc = F(x, stdx, c, k, b, w, y, &ymean, &smean);
  if (rc != 0) {
    if (x12) setMissing(rc, y, stdy);
    return rc;
  }
  return aroundMedian(*y, ymean, smean, capped, stdy);
}

// The vector routines' common prologue: -1 for no elements, a missing array,
// or (integrated kinds) a weight table that isn't there; 0 to go on.
int vectorReady(const double* x, const double* stdx, long n, int type, int k, int b, double* w,
                const double* y, const double* stdy) {
  if (n < 1 || x == nullptr || stdx == nullptr || y == nullptr || stdy == nullptr) return -1;
  const bool integrated = type == kTrnsLogistic || type == kTrnsBoxCox || type == kTrnsBoxCoxX12;
  return integrated && !tableReady(k, b, w) ? -1 : 0;
}

int copyBoth(const double* x, const double* stdx, long n, double* y, double* stdy) {
  for (long i = 0; i < n; ++i) {
    y[i] = x[i];
    stdy[i] = stdx[i];
  }
  return 0;
}

// A missing x doesn't count even where its kind reports it as a failure
// (the logistic, whose inverse fails for nothing else).
template <MeanFn F>
int meanVector(const double* x, const double* stdx, long n, double c, int k, int b, double* w, double* y,
               double* stdy) {
  int rc = 0;
  for (long i = 0; i < n; ++i) {
    const bool missing = wzmis(x[i]) != 0;
    double m = 0.0;
    if (F(x[i], stdx[i], c, k, b, w, &m, &y[i], &stdy[i]) > 0 && !missing) rc = 1;
  }
  return rc;
}

template <MedianFn F>
int medianVector(const double* x, const double* stdx, long n, double c, int k, int b, double* w,
                 double* y, double* stdy) {
  int rc = 0;
  for (long i = 0; i < n; ++i) {
    if (F(x[i], stdx[i], c, k, b, w, &y[i], &stdy[i]) != 0) rc = 1;
  }
  return rc;
}

}  // namespace

// ----------------------------------------------------------- closed forms

int ztstle(double x, double stdx, double c, double* m, double* y, double* stdy) noexcept {
  if (wzmis(x)) return setMissing(-1, m, y, stdy);
  if (wzmis(c)) c = 0.0;
  if (x > kTrnsExpMax) return setMissing(1, m, y, stdy);
  const double e = std::exp(x);
  *m = e - c;
  if (wzmis(stdx)) return setMissing(-1, y, stdy);
  const double half = stdx * stdx * 0.5;
  if (half > kTrnsExpMax) return setMissing(1, y, stdy);
  const double v = std::exp(half);
  if (e > kTrnsBig || v > kTrnsBig) return setMissing(1, y, stdy);
  const double t = e * v;  // e^(x + s^2/2)
  *y = t - c;
  if (t > kTrnsBig) return setMissing(1, stdy);
  const double r = v * v - 1.0;  // e^(s^2) - 1
  *stdy = r > 0.0 ? t * std::sqrt(r) : 0.0;
  return 0;
}

int ztstse(double x, double stdx, double c, double* m, double* y, double* stdy) noexcept {
  if (wzmis(x)) return setMissing(-1, m, y, stdy);
  if (wzmis(c)) c = 0.0;
  if (std::fabs(x) > kTrnsBig) return setMissing(1, m, y, stdy);
  const double q = x * x;
  *m = q - c;
  if (wzmis(stdx)) return setMissing(-1, y, stdy);
  if (stdx > kTrnsBig) return setMissing(1, y, stdy);
  const double s = stdx * stdx;
  if (q > kTrnsHuge || s > kTrnsHuge) return setMissing(1, y, stdy);
  *y = q + s - c;
  if (s > kTrnsBigSq || q > kTrnsBigSq) return setMissing(1, stdy);
  const double v = s * (2.0 * s + 4.0 * q);  // Var X^2 = 2 s^4 + 4 x^2 s^2
  *stdy = v > 0.0 ? std::sqrt(v) : 0.0;
  return 0;
}

// ------------------------------------------------------------ integrated

int ztstge(double x, double stdx, double c, int k, int b, double* w, double* m, double* y,
           double* stdy) noexcept {
  if (!tableReady(k, b, w)) return setMissing(-1, m, y, stdy);
  return integrate<ztstgi, Kind::kLogistic>(x, stdx, c, k, b, w, m, y, stdy);
}

int ztstbe(double x, double stdx, double c, int k, int b, double* w, double* m, double* y,
           double* stdy) noexcept {
  if (!tableReady(k, b, w)) return setMissing(-1, m, y, stdy);
  return integrate<ztstbi, Kind::kBoxCox>(x, stdx, c, k, b, w, m, y, stdy);
}

int ztstbex12(double x, double stdx, double c, int k, int b, double* w, double* m, double* y,
              double* stdy) noexcept {
  if (!tableReady(k, b, w)) return setMissing(-1, m, y, stdy);
  return integrate<ztstbix12, Kind::kBoxCoxX12>(x, stdx, c, k, b, w, m, y, stdy);
}

// --------------------------------------------------------------- medians

int ztstlm(double x, double stdx, double c, double* y, double* stdy) noexcept {
  return median<leAll, true, false>(x, stdx, c, 0, 0, nullptr, y, stdy);
}

int ztstsm(double x, double stdx, double c, double* y, double* stdy) noexcept {
  return median<seAll, false, false>(x, stdx, c, 0, 0, nullptr, y, stdy);
}

int ztstgm(double x, double stdx, double c, int k, int b, double* w, double* y, double* stdy) noexcept {
  return median<ztstge, false, false>(x, stdx, c, k, b, w, y, stdy);
}

int ztstbm(double x, double stdx, double c, int k, int b, double* w, double* y, double* stdy) noexcept {
  return median<ztstbe, false, false>(x, stdx, c, k, b, w, y, stdy);
}

int ztstbmx12(double x, double stdx, double c, int k, int b, double* w, double* y,
              double* stdy) noexcept {
  return median<ztstbex12, false, true>(x, stdx, c, k, b, w, y, stdy);
}

// -------------------------------------------------------------- dispatch

int ztste(double x, double stdx, int type, double c, int k, int b, double* w, double* y,
          double* stdy) noexcept {
  double m = 0.0;
  switch (type) {
    case kTrnsLog: return ztstle(x, stdx, c, &m, y, stdy);
    case kTrnsSqrt: return ztstse(x, stdx, c, &m, y, stdy);
    case kTrnsLogistic: return ztstge(x, stdx, c, k, b, w, &m, y, stdy);
    case kTrnsBoxCox: return ztstbe(x, stdx, c, k, b, w, &m, y, stdy);
    case kTrnsBoxCoxX12: return ztstbex12(x, stdx, c, k, b, w, &m, y, stdy);
    default: *y = x; *stdy = stdx; return 0;
  }
}

int ztstm(double x, double stdx, int type, double c, int k, int b, double* w, double* y,
          double* stdy) noexcept {
  switch (type) {
    case kTrnsLog: return ztstlm(x, stdx, c, y, stdy);
    case kTrnsSqrt: return ztstsm(x, stdx, c, y, stdy);
    case kTrnsLogistic: return ztstgm(x, stdx, c, k, b, w, y, stdy);
    case kTrnsBoxCox: return ztstbm(x, stdx, c, k, b, w, y, stdy);
    case kTrnsBoxCoxX12: return ztstbmx12(x, stdx, c, k, b, w, y, stdy);
    default: *y = x; *stdy = stdx; return 0;
  }
}

int ztstev(const double* x, const double* stdx, long n, int type, double c, int k, int b, double* w,
           double* y, double* stdy) noexcept {
  if (vectorReady(x, stdx, n, type, k, b, w, y, stdy) != 0) return -1;
  switch (type) {
    case kTrnsLog: return meanVector<leAll>(x, stdx, n, c, k, b, w, y, stdy);
    case kTrnsSqrt: return meanVector<seAll>(x, stdx, n, c, k, b, w, y, stdy);
    case kTrnsLogistic: return meanVector<ztstge>(x, stdx, n, c, k, b, w, y, stdy);
    case kTrnsBoxCox: return meanVector<ztstbe>(x, stdx, n, c, k, b, w, y, stdy);
    case kTrnsBoxCoxX12: return meanVector<ztstbex12>(x, stdx, n, c, k, b, w, y, stdy);
    default: return copyBoth(x, stdx, n, y, stdy);
  }
}

int ztstmv(const double* x, const double* stdx, long n, int type, double c, int k, int b, double* w,
           double* y, double* stdy) noexcept {
  if (vectorReady(x, stdx, n, type, k, b, w, y, stdy) != 0) return -1;
  switch (type) {
    case kTrnsLog: return medianVector<lmAll>(x, stdx, n, c, k, b, w, y, stdy);
    case kTrnsSqrt: return medianVector<smAll>(x, stdx, n, c, k, b, w, y, stdy);
    case kTrnsLogistic: return medianVector<ztstgm>(x, stdx, n, c, k, b, w, y, stdy);
    case kTrnsBoxCox: return medianVector<ztstbm>(x, stdx, n, c, k, b, w, y, stdy);
    case kTrnsBoxCoxX12: return medianVector<ztstbmx12>(x, stdx, n, c, k, b, w, y, stdy);
    default: return copyBoth(x, stdx, n, y, stdy);
  }
}

// ---------------------------------------------------------------- weights

int ztstniw(int k, int b, double* w) noexcept {
  if (k < 1 || b < 1 || w == nullptr) return -1;
  const double ib = 1.0 / b;
  w[0] = ib * kInvSqrt2Pi;  // phi(0) times the step
  double bb = ib;
  for (int i = 1; i <= k; ++i, bb += ib) w[i] = std::exp(-0.5 * bb * bb) * w[0];
  return 0;
}

}  // namespace qvt
