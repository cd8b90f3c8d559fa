// Forward transformations and their inverses, on one value and on vectors,
// the logistic scale of a series and the name lookups.
//
// Each rule settles its domain before any arithmetic, so that what has no
// value (a log of a non-positive number, a power of a negative base with a
// fractional exponent) or would overflow leaves as the missing value with
// result 1, and a missing argument as the missing value with result -1.
#include "stats/transform.hpp"

#include "run/missing.hpp"
#include "stats/numeric.hpp"

#include <cmath>
#include <cstring>

namespace qvt {
namespace {

constexpr double kLn10 = 2.302585092994046;

// Guarded division: missing when either side is, the plain quotient when it
// is surely representable, else +-B by the signs (0 for 0/0). The sign rule
// compares signs rather than forming num*den, which could underflow to 0.
double divide(double num, double den) {
  if (wzmis(num) || wzmis(den)) return kMissing;
  const double ad = std::fabs(den);
  if (ad >= 1.0 || std::fabs(num) < ad * kTrnsBig) return num / den;
  if (num == 0.0) return 0.0;
  if (den == 0.0) return num > 0.0 ? kTrnsBig : -kTrnsBig;
  return (num > 0.0) == (den > 0.0) ? kTrnsBig : -kTrnsBig;
}

int fail(double* out, int rc) {
  *out = kMissing;
  return rc;
}

// Offset of LOG and SQRT: a missing c counts as 0.
double offset(double c) { return wzmis(c) ? 0.0 : c; }

// Scale of the logistic: a missing c counts as 1.
double scale(double c) { return wzmis(c) ? 1.0 : c; }

// ln(s) for 0 < s < inf, else result 1. An infinite s arises only from an
// offset that overflowed the sum; it has no finite log to give.
int logOf(double s, double* x) {
  if (!(s > 0.0) || std::isinf(s)) return fail(x, 1);
  *x = std::log(s);
  return 0;
}

// Both Box-Cox forms. The second adds c^2 to the first, which keeps the
// transformed value of y = 1 away from 0 for every power.
int boxcox(double y, double c, bool x12, double* x) {
  if (wzmis(y)) return fail(x, -1);
  if (wzmis(c)) {
    *x = y;
    return 0;
  }
  if (std::fabs(c) < kTrnsBoxCoxLog) return logOf(y, x);  // the limit c -> 0
  int rc = 0;
  const double p = zpower(y, c, &rc);
  if (rc != 0) return fail(x, 1);
  const double q = divide(p - 1.0, c);
  if (!(std::fabs(q) < kTrnsBig)) return fail(x, 1);
  if (!x12) {
    *x = q;
    return 0;
  }
  const double c2 = zpower(c, 2.0, &rc);
  if (rc != 0) return fail(x, 1);
  *x = q + c2;
  return 0;
}

// Inverse of either Box-Cox form: y = (xc + 1 - shift)^(1/c), shift = 0 or c^3.
int boxcoxInverse(double x, double c, bool x12, double* y) {
  if (wzmis(x)) return fail(y, -1);
  if (wzmis(c)) {
    *y = x;
    return 0;
  }
  if (std::fabs(c) < kTrnsBoxCoxLog) return ztstli(x, 0.0, y);
  int rc = 0;
  double shift = 0.0;
  if (x12) {
    shift = zpower(c, 3.0, &rc);
    if (rc != 0) return fail(y, 1);
  }
  const double v = zpower(x * c + 1.0 - shift, 1.0 / c, &rc);
  if (rc != 0) return fail(y, 1);
  *y = v;
  return 0;
}

using Scalar = int (*)(double, double, double*) noexcept;

// One rule over a vector; the rule is chosen once by the caller. Each input
// is passed by value, so out may be in.
template <Scalar F>
int overVector(const double* in, long n, double c, double* out) {
  int rc = 0;
  for (long i = 0; i < n; ++i) {
    if (F(in[i], c, &out[i]) > 0) rc = 1;
  }
  return rc;
}

int copyVector(const double* in, long n, double* out) {
  for (long i = 0; i < n; ++i) out[i] = in[i];
  return 0;
}

// The first 8 characters of str, padded with blanks, against 8-character
// names; the code is the place in the list counted from 1, or 0.
template <int N>
int lookup(const char* str, int strLen, const char* const (&names)[N]) {
  char key[8];
  std::memset(key, ' ', sizeof key);
  if (str != nullptr && strLen > 0) std::memcpy(key, str, static_cast<std::size_t>(strLen < 8 ? strLen : 8));
  for (int i = 0; i < N; ++i) {
    if (std::memcmp(key, names[i], sizeof key) == 0) return i + 1;
  }
  return 0;
}

constexpr const char* kTransformNames[] = {"LOG     ", "SQRT    ", "LOGIT   ", "BOXCOX  "};
constexpr const char* kBackNames[] = {"INVERSE ", "MEAN    ", "MEDIAN  "};

}  // namespace

// ------------------------------------------------------------- forward

int ztstlf(double y, double c, double* x) noexcept {
  if (wzmis(y)) return fail(x, -1);
  return logOf(y + offset(c), x);
}

int ztstsf(double y, double c, double* x) noexcept {
  if (wzmis(y)) return fail(x, -1);
  const double s = y + offset(c);
  if (s < 0.0 || std::isinf(s)) return fail(x, 1);
  *x = std::sqrt(s);
  return 0;
}

int ztstgf(double y, double c, double* x) noexcept {
  if (wzmis(y)) {
    *x = y;  // the kind of missing value passes through
    return -1;
  }
  const double p = y * scale(c);
  // Outside (0, 1) the odds are <= 0 (or NaN from an infinite p), no log.
  return logOf(divide(p, 1.0 - p), x);
}

int ztstbf(double y, double c, double* x) noexcept { return boxcox(y, c, false, x); }

int ztstbfx12(double y, double c, double* x) noexcept { return boxcox(y, c, true, x); }

// ------------------------------------------------------------- inverse

int ztstli(double x, double c, double* y) noexcept {
  if (wzmis(x)) return fail(y, -1);
  if (x > kTrnsExpMax) return fail(y, 1);
  const double v = std::exp(x) - offset(c);
  if (std::isinf(v)) return fail(y, 1);  // only a huge negative offset gets here
  *y = v;
  return 0;
}

int ztstsi(double x, double c, double* y) noexcept {
  if (wzmis(x)) return fail(y, -1);
  if (std::fabs(x) > kTrnsBig) return fail(y, 1);
  const double v = x * x - offset(c);
  if (std::isinf(v)) return fail(y, 1);
  *y = v;
  return 0;
}

int ztstgi(double x, double c, double* y) noexcept {
  if (wzmis(x)) {
    *y = x;
    return -1;
  }
  // 1/(1 + e^z), z = -x, saturated where e^z under- or overflows.
  const double z = -x;
  double p = 0.0;
  if (z < kTrnsExpMin) {
    p = 1.0;
  } else if (z <= kTrnsExpMax) {
    p = 1.0 / (std::exp(z) + 1.0);
  }
  *y = divide(p, scale(c));
  return 0;
}

int ztstbi(double x, double c, double* y) noexcept { return boxcoxInverse(x, c, false, y); }

int ztstbix12(double x, double c, double* y) noexcept { return boxcoxInverse(x, c, true, y); }

// ------------------------------------------------------------ dispatch

int ztstf(double y, int type, double c, double* x) noexcept {
  switch (type) {
    case kTrnsLog: return ztstlf(y, c, x);
    case kTrnsSqrt: return ztstsf(y, c, x);
    case kTrnsLogistic: return ztstgf(y, c, x);
    case kTrnsBoxCox: return ztstbf(y, c, x);
    case kTrnsBoxCoxX12: return ztstbfx12(y, c, x);
    default: *x = y; return 0;
  }
}

int ztsti(double x, int type, double c, double* y) noexcept {
  switch (type) {
    case kTrnsLog: return ztstli(x, c, y);
    case kTrnsSqrt: return ztstsi(x, c, y);
    case kTrnsLogistic: return ztstgi(x, c, y);
    case kTrnsBoxCox: return ztstbi(x, c, y);
    case kTrnsBoxCoxX12: return ztstbix12(x, c, y);
    default: *y = x; return 0;
  }
}

int ztstfv(const double* y, long n, int type, double c, double* x) noexcept {
  if (n < 1 || y == nullptr || x == nullptr) return -1;
  switch (type) {
    case kTrnsLog: return overVector<ztstlf>(y, n, c, x);
    case kTrnsSqrt: return overVector<ztstsf>(y, n, c, x);
    case kTrnsLogistic: return overVector<ztstgf>(y, n, c, x);
    case kTrnsBoxCox: return overVector<ztstbf>(y, n, c, x);
    case kTrnsBoxCoxX12: return overVector<ztstbfx12>(y, n, c, x);
    default: return copyVector(y, n, x);
  }
}

int ztstiv(const double* x, long n, int type, double c, double* y) noexcept {
  if (n < 1 || x == nullptr || y == nullptr) return -1;
  switch (type) {
    case kTrnsLog: return overVector<ztstli>(x, n, c, y);
    case kTrnsSqrt: return overVector<ztstsi>(x, n, c, y);
    case kTrnsLogistic: return overVector<ztstgi>(x, n, c, y);
    case kTrnsBoxCox: return overVector<ztstbi>(x, n, c, y);
    case kTrnsBoxCoxX12: return overVector<ztstbix12>(x, n, c, y);
    default: return copyVector(x, n, y);
  }
}

// ------------------------------------------------------------ the rest

int ztstgp(const double* y, long n, double* c) noexcept {
  if (c == nullptr) return -1;
  double max = 0.0;
  for (long t = 0; y != nullptr && t < n; ++t) {
    if (!wzmis(y[t]) && y[t] >= max) max = y[t];
  }
  if (max <= kTrnsTiny) return fail(c, -1);
  // Base-10 exponent rounded up, through ln(max)/ln(10): its rounding puts
  // some exact powers of ten a decade high (1e-150 gives -149), which only
  // makes c smaller and keeps max*c < 1 all the same.
  const double e = std::ceil(std::log(max) / kLn10);
  int rc = 0;
  const double p = zpower(10.0, e, &rc);
  if (rc != 0) return fail(c, -1);
  *c = 0.999999 / p;
  return 0;
}

int ztstnm(const char* str, int strLen) noexcept { return lookup(str, strLen, kTransformNames); }

int ztstopt(const char* str, int strLen) noexcept { return lookup(str, strLen, kBackNames); }

}  // namespace qvt
