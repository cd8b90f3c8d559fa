// x to the power y, with the edge cases settled before any arithmetic:
// missing for what has no real value or overflows, 0 for what underflows.
#include "stats/numeric.hpp"

#include "run/missing.hpp"

#include <cmath>

namespace qvt {

double zpower(double x, double y, int* rc) noexcept {
  *rc = 0;
  if (std::isnan(x) || std::isnan(y)) {  // a missing value is a NaN pattern
    *rc = 2;
    return kMissing;
  }
  if (y > 0.0) {
    if (x == 0.0) return 0.0;
    if (y == 1.0) return x;
  } else {
    if (x == 0.0) {
      *rc = 3;
      return kMissing;
    }
    if (y == 0.0) return 1.0;
  }
  const double ay = std::fabs(y);
  const bool integral = ay < kTwo53 && ay == std::floor(ay);
  bool odd = false;
  if (x < 0.0) {
    // A negative base has a real power only for an integral exponent; past
    // 2^53 the parity of y can't be told.
    if (!integral) {
      *rc = 2;
      return kMissing;
    }
    odd = std::fmod(ay, 2.0) == 1.0;
    if (x == -1.0) return odd ? -1.0 : 1.0;
  }
  if (x == 1.0) return 1.0;
  const double ax = std::fabs(x);
  if (ay >= kNumBig) {
    // |x|^y with a huge exponent: overflow when it grows, 0 when it falls.
    if ((ax > 1.0) == (y > 0.0)) {
      *rc = 1;
      return kMissing;
    }
    return 0.0;
  }
  // ln of the result, inflated by 3 ulp so that a value just below the
  // overflow threshold is not let through by rounding.
  const double l = std::log(ax) * y * 1.0000000000000007;
  if (l >= kExpHigh) {
    *rc = 1;
    return kMissing;
  }
  if (l <= kExpLow) return 0.0;
  double r = 0.0;
  if (integral && ay <= 64.0 && std::fabs(l) < 72.0873067782343) {
    // Binary powering for small integral exponents, where it takes a handful
    // of exact-or-nearly products. Its relative error grows like y ulp
    // (every squaring doubles the error of its base), so past 2^6 the
    // correctly rounded pow() is the more accurate.
    auto k = static_cast<unsigned long long>(ay);
    double base = ax;
    r = 1.0;
    while (k != 0) {
      if (k & 1ULL) r *= base;
      k >>= 1;
      if (k != 0) base *= base;
    }
    if (y < 0.0) r = 1.0 / r;
  } else {
    r = std::pow(ax, y);
  }
  return odd ? -r : r;
}

}  // namespace qvt
