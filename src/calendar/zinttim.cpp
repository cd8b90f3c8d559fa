// Accumulation: several observations of one grid cell reduced to one value
// by an ACCUMULATE= rule (zinttim, zinttia, getvec), and the median of a
// set of values (zinttms).
#include <algorithm>
#include <cmath>
#include <memory>
#include <new>

#include "calendar/zintti.hpp"
#include "run/missing.hpp"

namespace qvt {
namespace {

// ACCUMULATE= codes.
enum Acc : int {
  kAccNone = 0,
  kAccTotal = 1,
  kAccAverage = 2,
  kAccFirst = 3,
  kAccLast = 4,
  kAccMinimum = 5,
  kAccMaximum = 6,
  kAccMedian = 7,
  kAccStd = 8,
  kAccUss = 9,
  kAccCss = 10,
  kAccNobs = 11,
  kAccN = 12,
  kAccNmiss = 13,
};

// Overflow limits: half the largest double for anything added to, so that a
// sum of two admitted terms is still finite; its square root for anything
// squared.
constexpr double kAddLimit = 8.988465674311578e+307;
constexpr double kSquareLimit = 1.3407807929943e+154;

// Index of variable j of observation obs in data: variable after variable
// with colorder set, observation after observation without. norm follows
// the same layout with T cells in place of the observations.
inline long dataAt(long obs, long nobs, int nvars, int colorder, int j) noexcept {
  return colorder ? j * nobs + obs : obs * nvars + j;
}

// cell += v, refused when the value or the cell already lies beyond the
// limit; two operands within it always give a finite sum.
inline bool addTo(double& cell, double v) noexcept {
  if (std::fabs(v) > kAddLimit || std::fabs(cell) > kAddLimit) return false;
  cell += v;
  return true;
}

// v * v within the limit.
inline bool squareOf(double v, double* out) noexcept {
  if (std::fabs(v) > kSquareLimit) return false;
  *out = v * v;
  return true;
}

template <class T>
std::unique_ptr<T[]> tryArray(long n) noexcept {
  return std::unique_ptr<T[]>(new (std::nothrow) T[static_cast<std::size_t>(n)]());
}

}  // namespace

long getvec(const long* pos, long ntid, const double* data, int nvars, int colorder, int j, long t,
            double* vec) {
  if (pos == nullptr || data == nullptr || vec == nullptr || ntid < 0 || nvars < 1 || j < 0 ||
      j >= nvars)
    return -99;
  long k = 0;
  for (long i = 0; i < ntid; ++i)
    if (pos[i] == t) vec[k++] = data[dataAt(i, ntid, nvars, colorder, j)];
  return k;
}

int zinttms(long n, double* y, double* work, double* m) {
  if (m) *m = kMissing;
  if (n < 1 || y == nullptr || m == nullptr) return -99;
  double* v = y;
  if (work != nullptr) {
    long k = 0;
    for (long i = 0; i < n; ++i)
      if (!wzmis(y[i])) work[k++] = y[i];
    if (k == 0) return -1;
    n = k;
    v = work;
  }
  // Order statistics by selection (std::nth_element), never a full sort:
  // rank n/2 counted from 0, and for an even n also rank n/2 - 1, which is
  // the largest of the part that selection leaves below rank n/2.
  const long h = n / 2;
  std::nth_element(v, v + h, v + n);
  const double upper = v[h];
  if (n % 2 == 1) {
    *m = upper;
  } else {
    const double lower = *std::max_element(v, v + h);
    *m = lower * 0.5 + upper * 0.5;  // halves first: no overflow near the largest double
  }
  return 0;
}

int zinttia(long pos, long obs, const double* data, int nvars, long start, long T, int colorder,
            int dup, double* norm, double* sqr, long* npos) {
  if (pos < start || pos > start + T - 1) return 0;
  const long c0 = pos - start;
  int rc = 0;
  // The variables of one observation side by side (row layout); zinttim
  // hands the column layout over one variable at a time, as nvars 1.
  (void)colorder;
  for (int j = 0; j < nvars; ++j) {
    const double v = data[obs * nvars + j];
    const long c = c0 * nvars + j;
    const bool miss = wzmis(v) != 0;
    if (miss && dup != kAccNobs && dup != kAccNmiss) {
      rc = 1;
      continue;
    }
    double& cell = norm[c];
    if (wzmis(cell)) {
      // The cell's first value.
      if (dup == kAccNone) {
        if (missCode(cell) != 'D') cell = v;
      } else if (dup == kAccUss) {
        double q;
        if (!squareOf(v, &q)) return -1;
        cell = q;
      } else {
        cell = v;
      }
      if (npos) npos[c] = 1;
      if (sqr) {
        double q;
        if (!squareOf(v, &q)) return -1;
        sqr[c] = q;
      }
      continue;
    }
    if (npos) ++npos[c];
    switch (dup) {
      case kAccNone: cell = skMissVal('D'); break;
      case kAccTotal:
      case kAccAverage:
        if (!addTo(cell, v)) return -1;
        break;
      case kAccFirst: break;
      case kAccLast: cell = v; break;
      case kAccMinimum: cell = std::min(cell, v); break;
      case kAccMaximum: cell = std::max(cell, v); break;
      case kAccStd:
      case kAccCss: {
        double q;
        if (!squareOf(v, &q)) return -1;
        double s = cell, s2 = sqr ? sqr[c] : 0.0;
        if (!addTo(s, v) || !addTo(s2, q)) return -1;
        cell = s;
        if (sqr) sqr[c] = s2;
        break;
      }
      case kAccUss: {
        double q;
        if (!squareOf(v, &q) || !addTo(cell, q)) return -1;
        break;
      }
      case kAccNobs:
      case kAccN: cell += 1; break;
      case kAccNmiss:
        if (miss) cell += 1;
        break;
      default: break;
    }
  }
  return rc;
}

int zinttim(const long* pos, long ntid, const double* data, int nvars, long start, long T,
            int colorder, int dup, double* norm) {
  if (pos == nullptr || data == nullptr || norm == nullptr || ntid < 1 || nvars < 1 || T < 1 ||
      start < 0)
    return -99;
  const long cells = T * nvars;

  if (dup == kAccMedian) {
    // By cells: the values of each position gathered, then their median.
    auto vec = tryArray<double>(ntid);
    auto work = tryArray<double>(ntid);
    if (!vec || !work) return -1;
    for (int j = 0; j < nvars; ++j) {
      for (long t = 0; t < T; ++t) {
        const long k = getvec(pos, ntid, data, nvars, colorder, j, start + t, vec.get());
        double m = kMissing;
        if (k > 0) zinttms(k, vec.get(), work.get(), &m);
        norm[colorder ? j * T + t : t * nvars + j] = m;
      }
    }
    return 0;
  }

  const bool counted = dup == kAccAverage || dup == kAccStd || dup == kAccCss;
  const bool squared = dup == kAccStd || dup == kAccCss;
  std::unique_ptr<long[]> npos;
  std::unique_ptr<double[]> sqr;
  if (counted && !(npos = tryArray<long>(cells))) return -1;
  if (squared && !(sqr = tryArray<double>(cells))) return -1;

  const bool counts = dup == kAccNobs || dup == kAccN || dup == kAccNmiss;
  std::fill(norm, norm + cells, counts ? 0.0 : kMissing);

  if (colorder && nvars > 1) {
    // Column layout: each variable's column and cells on their own.
    for (int j = 0; j < nvars; ++j) {
      const long off = static_cast<long>(j) * T;
      for (long i = 0; i < ntid; ++i) {
        const int r = zinttia(pos[i], i, data + static_cast<long>(j) * ntid, 1, start, T, 1, dup,
                              norm + off, sqr ? sqr.get() + off : nullptr,
                              npos ? npos.get() + off : nullptr);
        if (r < 0) return -2;
      }
    }
  } else {
    for (long i = 0; i < ntid; ++i) {
      const int r = zinttia(pos[i], i, data, nvars, start, T, colorder, dup, norm, sqr.get(),
                            npos.get());
      if (r < 0) return -2;
    }
  }

  if (counted) {
    for (long c = 0; c < cells; ++c) {
      const double s = norm[c];
      if (wzmis(s)) continue;
      const auto n = static_cast<double>(npos[c]);
      if (dup == kAccAverage) {
        if (npos[c] > 1) norm[c] = s / n;
        continue;
      }
      const double css = sqr[c] - s * (s / n);  // Q - S * S / n
      if (dup == kAccCss) {
        norm[c] = npos[c] < 1 ? kMissing : css;
      } else if (npos[c] < 2) {
        norm[c] = kMissing;
      } else {
        const double var = css / (n - 1);
        norm[c] = var > 0 ? std::sqrt(var) : 0.0;
      }
    }
  }
  return 0;
}

}  // namespace qvt
