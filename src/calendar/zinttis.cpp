// Replacement of missing cells by a SETMISSING= rule (zinttis).
#include <algorithm>
#include <cmath>
#include <memory>
#include <new>

#include "calendar/zintti.hpp"
#include "run/missing.hpp"

namespace qvt {
namespace {

enum SetMiss : int {
  kSetMean = 2,
  kSetFirst = 3,
  kSetLast = 4,
  kSetMin = 5,
  kSetMax = 6,
  kSetMedian = 7,
  kSetPrevious = 9,
  kSetNext = 10,
};

// Puts value into each missing cell of y (out may be y); the count of
// missing cells met.
long fill(const double* y, long T, double value, double* out) noexcept {
  long met = 0;
  for (long t = 0; t < T; ++t) {
    if (wzmis(y[t])) {
      ++met;
      out[t] = value;
    } else {
      out[t] = y[t];
    }
  }
  return met;
}

}  // namespace

int zinttis(const double* y, long T, int setmiss, double setvalue, double* out, double* valueset,
            long* numset) {
  if (valueset) *valueset = kMissing;
  if (numset) *numset = -1;
  if (y == nullptr || out == nullptr || T < 1) return -1;

  long seen = 0;  // non-missing cells
  double value = kMissing;

  if (setmiss == kSetPrevious || setmiss == kSetNext) {
    // Walk towards the gap, carrying the last value seen.
    long met = 0;
    const bool fwd = setmiss == kSetPrevious;
    for (long k = 0; k < T; ++k) {
      const long t = fwd ? k : T - 1 - k;
      if (wzmis(y[t])) {
        ++met;
        out[t] = value;
      } else {
        ++seen;
        value = y[t];
        out[t] = y[t];
      }
    }
    if (valueset) *valueset = value;
    if (numset) *numset = met;
    return seen == 0 ? 1 : 0;
  }

  if (setmiss >= kSetMean && setmiss <= kSetMedian) {
    if (setmiss == kSetMedian) {
      std::unique_ptr<double[]> work(new (std::nothrow) double[static_cast<std::size_t>(T)]);
      if (!work) return -2;
      zinttms(T, const_cast<double*>(y), work.get(), &value);  // y is only read: work is given
      const long met = fill(y, T, value, out);
      if (valueset) *valueset = value;
      if (numset) *numset = met;
      return 1;
    }
    double sum = 0;
    for (long t = 0; t < T; ++t) {
      const double v = y[t];
      if (wzmis(v)) continue;
      ++seen;
      switch (setmiss) {
        case kSetMean: sum += v; break;
        case kSetFirst:
          if (seen == 1) value = v;
          break;
        case kSetLast: value = v; break;
        case kSetMin: value = seen == 1 ? v : std::min(value, v); break;
        case kSetMax: value = seen == 1 ? v : std::max(value, v); break;
        default: break;
      }
    }
    if (setmiss == kSetMean && seen > 0) {
      const double m = sum / static_cast<double>(seen);
      value = std::isfinite(m) ? m : kMissing;  // an overflowed sum has no mean
    }
  } else {
    // MISSING, a given number, and the codes without a rule of their own.
    value = setvalue;
    for (long t = 0; t < T; ++t)
      if (!wzmis(y[t])) ++seen;
  }
  const long met = fill(y, T, value, out);
  if (valueset) *valueset = value;
  if (numset) *numset = met;
  return seen == 0 ? 1 : 0;
}

}  // namespace qvt
