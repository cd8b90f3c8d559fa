// Guarded division of the smoothing family.
//
// A quotient that would overflow is never formed: the result code says so
// and the quotient is a value that downstream code can read. The special
// missing values .I and .M stand for a quotient of +infinity and -infinity;
// the driver reads them in a t value as "infinitely significant".
#pragma once

#include <cmath>

#include "run/missing.hpp"
#include "smoothing/esmtypes.hpp"

namespace qvt {

// num/den into *quo: 0, or -92 when |num/den| would exceed the overflow limit
// (den 0 included). Then *quo is .I for a positive quotient, .M for a negative
// one, the ordinary missing value for 0/0, and 0 when num is 0.
inline int divide(double num, double den, double* quo) noexcept {
  if (std::fabs(den) >= 1.0 || std::fabs(num) < std::fabs(den) * kEsmOverflow) {
    *quo = num / den;
    return 0;
  }
  if (den == 0.0) {
    if (num > 0) *quo = skMissVal('I');
    else if (num < 0) *quo = skMissVal('M');
    else *quo = kMissing;
  } else if (num == 0.0) {
    *quo = 0.0;
  } else {
    // Signs only: the product itself could overflow or underflow.
    *quo = ((num > 0) == (den > 0)) ? skMissVal('I') : skMissVal('M');
  }
  return kEsmDivide;
}

}  // namespace qvt
