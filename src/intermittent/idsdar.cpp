// The base of a demand series and the test number for intermittency.
//
// The base is the state the series rests in. Only three candidates are
// looked at: the smallest value, the median and the largest value. Whichever
// of them is taken by strictly more observations than the other two is the
// base, unless it (with the missing ones) is all there is: a series that
// never departs from its state has no demand, and the base 0 then keeps its
// values as demands. A tie leaves the base at 0, the natural rest state of a
// demand series.
#include "intermittent/idseries.hpp"
#include "intermittent/idsstats.hpp"

#include "run/missing.hpp"
#include "stats/numeric.hpp"

#include <cmath>
#include <cstdlib>

namespace qvt {
namespace {

// Beyond this the squares of the standard deviation would overflow once
// multiplied by the count.
constexpr double kNumGuard = 1.3407807929943e+154;
// Values within this fraction of the standard deviation are one value.
constexpr double kZeroFactor = 1e-12;
// A series of fewer observations shows no state worth calling a base.
constexpr long kMinBaseObs = 6;
// The test number looks at the last this many observations of the range.
constexpr long kTestWindow = 100;

// Median of x[0..n-1] by selection (x is rearranged); left and right are the
// two middle order statistics, equal for odd n. -1 when the selection fails.
int median(double* x, long n, double* med, double* left, double* right) {
  const double pos = static_cast<double>((n - 1) / 2);
  double xj = 0, xj1 = 0;
  if (zqpsort(n, x, nullptr, 1, &pos, &xj, &xj1, nullptr, 0, nullptr) != 0) return -1;
  *left = xj;
  *right = n % 2 == 0 ? xj1 : xj;
  *med = n % 2 == 0 ? (*left + *right) * 0.5 : xj;
  return 0;
}

}  // namespace

int idsdar(const double* y, double* work, long nobs, double p, double* base, long* ndistinct) noexcept {
  if (y == nullptr || work == nullptr || base == nullptr || ndistinct == nullptr || nobs < 1 || wzmis(p) ||
      !(p >= 1.0))
    return kIdsBadArg;
  const double big = kNumGuard / static_cast<double>(nobs);
  long n = 0;
  for (long t = 0; t < nobs; ++t) {
    if (wzmis(y[t])) continue;
    if (!(std::fabs(y[t]) <= big)) return kIdsExtreme;
    work[n++] = y[t];
  }
  const long nmiss = nobs - n;
  if (n == 0) {
    *base = 0;
    *ndistinct = -1;
    return kIdsAllMissing;
  }

  IDSSTATS s;
  idsimpl::getstats(work, n, &s);
  const double zero = wzmis(s.std) ? kMissing : s.std * kZeroFactor;
  if (wzmis(s.norm) || wzmis(s.std) || s.norm <= zero) {
    // A single value, or nothing but zeros.
    *base = 0;
    *ndistinct = nmiss == 0 ? 1 : 2;
    return kIdsOk;
  }

  double med = 0, left = 0, right = 0;
  if (median(work, n, &med, &left, &right) != 0) med = left = right = s.avg;
  const double gapl = left - s.min;
  const double gapr = s.max - right;

  long nmin = 0, nmed = 0, nmax = 0;
  // The median is a state of its own only when it stands apart from both ends.
  const bool medapart = gapl >= zero && gapr >= zero;
  for (long i = 0; i < n; ++i) {
    if (work[i] - s.min < zero) ++nmin;
    if (s.max - work[i] < zero) ++nmax;
    if (medapart && std::fabs(work[i] - med) < zero) ++nmed;
  }
  long nd = 0;
  if (nobs == nmiss + nmin + nmed + nmax) {
    for (long c : {nmiss, nmin, nmed, nmax}) nd += c > 0 ? 1 : 0;
  }
  *ndistinct = nd;
  *base = 0;
  if (nobs < kMinBaseObs) {
    *ndistinct = 0;
    return kIdsShortBase;
  }
  const double dn = static_cast<double>(nobs);
  // Missing is the most frequent state: the base stays 0.
  if (nmin < nmiss && nmed < nmiss && nmax < nmiss && p * static_cast<double>(nmiss) < dn) return kIdsOk;

  long c = 0;
  double v = 0;
  if (nmin > nmed && nmin > nmax) {
    c = nmin;
    v = s.min;
  } else if (nmed > nmin && nmed > nmax) {
    c = nmed;
    v = med;
  } else if (nmax > nmin && nmax > nmed) {
    c = nmax;
    v = s.max;
  } else {
    return kIdsOk;  // a tie: no state holds the series
  }
  if (static_cast<double>(nmiss + c) * p < dn) {
    *base = v;
    if (nd == 0 && nmiss > 0) *ndistinct = -1;
  }
  return kIdsOk;
}

int idsdti(IDSERIES* ids, int eflag, double* p) noexcept {
  if (ids == nullptr || p == nullptr) return kIdsBadArg;
  *p = kMissing;
  if (ids->n < 1) return kIdsNoDemand;
  long c = ids->n;
  long end = ids->nobs;
  if (eflag == 2) {
    c = ids->nsample;
    end = ids->nobs - ids->holdout - ids->back;
  } else if (eflag == 1) {
    c = ids->nsample + ids->nholdout;
    end = ids->nobs - ids->back;
  }
  const long cutoff = end - kTestWindow;
  const double* intv = ids->intv.data.data();

  // The demands whose position lies in the window. Demand 0 may count for
  // its position but its interval starts at the series start, not at a
  // demand, so it never enters the median.
  double* x = ids->work.data();
  long k = 0;
  for (long i = 0; i < c; ++i) {
    if (ids->obs[i] >= end || wzmis(intv[i])) continue;
    const double pos = i == 0 ? intv[0] : static_cast<double>(ids->obs[i - 1]) + intv[i];
    if (std::trunc(pos) < static_cast<double>(cutoff) || i == 0) continue;
    x[k++] = intv[i];
  }
  if (k == 0) return kIdsOk;

  double sum = 0;
  for (long i = 0; i < k; ++i) sum += x[i];
  double med = 0, left = 0, right = 0;
  *p = median(x, k, &med, &left, &right) == 0 ? med : sum / static_cast<double>(k);
  return kIdsOk;
}

}  // namespace qvt
