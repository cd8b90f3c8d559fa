// Statistics of raw values: of one set (getstats), by time period
// (zinttts), by season (zinttss), and joined over records (zinttgs).
#include <cfloat>
#include <cmath>

#include "calendar/zintti.hpp"
#include "run/missing.hpp"

namespace qvt {
namespace {

// Half the largest double: a sum of two terms within it stays finite.
constexpr double kAddLimit = 8.988465674311578e+307;
// The square root of the largest double: a value within it can be squared.
constexpr double kSquareLimit = 1.3407807929943e+154;
// A corrected sum of squares below this share of the uncorrected one is
// rounding noise of equal values (2^-53, half a unit in the last place).
constexpr double kCssNoise = 1.110223024625157e-16;

}  // namespace

int getstats(double* x, long nobs, double* work, ZINT_STATS* stats) {
  if (stats == nullptr) return -99;
  *stats = ZINT_STATS{};
  if (nobs < 1 || x == nullptr) return 1;

  // First pass: count, extremes, sum.
  const double extreme = kSquareLimit / static_cast<double>(nobs);
  long n = 0, nextr = 0;
  double lo = 0, hi = 0, sum = 0;
  bool sumfail = false;
  for (long i = 0; i < nobs; ++i) {
    const double v = x[i];
    if (wzmis(v)) continue;
    if (n == 0 || v < lo) lo = v;
    if (n == 0 || v > hi) hi = v;
    ++n;
    if (std::fabs(v) > extreme) ++nextr;
    if (sumfail) continue;
    // The running sum and the term are tested before the addition: both
    // within half the largest double, their sum is still finite.
    if (std::fabs(v) > kAddLimit || std::fabs(sum) > kAddLimit) sumfail = true;
    else sum += v;
  }
  const double mean = (sumfail || n == 0) ? 0.0 : sum / static_cast<double>(n);

  // Second pass: uncorrected and corrected sums of squares.
  double sum2 = 0, csum2 = 0;
  bool sum2fail = false;
  for (long i = 0; i < nobs && !sum2fail; ++i) {
    const double v = x[i];
    if (wzmis(v)) continue;
    if (std::fabs(v) > kSquareLimit) {
      sum2fail = true;
      continue;
    }
    const double q = v * v;
    if (q > kAddLimit || sum2 > kAddLimit) {
      sum2fail = true;
      continue;
    }
    sum2 += q;
    csum2 += (v - mean) * (v - mean);
  }

  stats->nobs = nobs;
  stats->n = n;
  stats->nmiss = nobs - n;
  stats->nextr = nextr;
  stats->sumfail = static_cast<char>(sumfail);
  stats->sum2fail = static_cast<char>(sum2fail);
  if (n < 1) return 1;

  stats->min = lo;
  stats->max = hi;
  stats->range = hi - lo;

  if (sumfail) {
    if (!sum2fail) stats->uss = sum2 < 0 ? 0.0 : sum2;
  } else {
    stats->sum = sum;
    stats->mean = mean;
    if (!sum2fail) {
      if (!(sum2 > 0)) {
        stats->uss = 0;
        stats->css = 0;
        if (n >= 2) stats->var = stats->std = 0;
      } else {
        stats->uss = sum2;
        if (n < 2) {
          stats->css = 0;
        } else if (csum2 < sum2 * kCssNoise) {
          stats->css = stats->var = stats->std = 0;
        } else {
          stats->css = csum2;
          const double var = csum2 / static_cast<double>(n - 1);
          if (var > 0 && csum2 > 0) {
            stats->var = var;
            stats->std = std::sqrt(var);
          } else {
            stats->var = stats->std = 0;
          }
        }
      }
    }
  }

  // Median: in place when every value is there, else over a copy.
  double m = kMissing;
  const int q = n == nobs ? zinttms(nobs, x, nullptr, &m) : zinttms(nobs, x, work, &m);
  stats->quantfail = static_cast<char>(q != 0);
  stats->median = m;

  if (sumfail) return 1;
  return (sum2fail || q != 0) ? 1 : 0;
}

long zinttts(const double* x, const long* pos, long nobs, long start, long T, int notsorted,
             double* work, ZINT_STATS* stats) {
  if (x == nullptr || pos == nullptr || nobs < 1 || start < 0 || T < 1 || work == nullptr ||
      stats == nullptr)
    return -99;
  // work: the values of one period, then getstats' own copy.
  double* area = work + nobs;
  long total = 0;
  long i = 0;  // where the last run ended (sorted positions)
  for (long t = start; t < start + T; ++t) {
    long k = 0;
    if (notsorted == 0) {
      while (i < nobs && pos[i] < t) ++i;  // positions before the frame
      while (i < nobs && pos[i] == t) work[k++] = x[i++];
    } else {
      for (long j = 0; j < nobs; ++j)
        if (pos[j] == t) work[k++] = x[j];
    }
    total += getstats(work, k, area, &stats[t]);
  }
  return total;
}

int zinttss(const double* x, const long* pos, long nobs, long start, long T, int nseasons,
            const int* scodes, double* work, ZINT_STATS* stats) {
  if (x == nullptr || pos == nullptr || nobs < 1 || start < 0 || T < 1 || work == nullptr ||
      stats == nullptr || scodes == nullptr || nseasons < 1)
    return -99;
  double* area = work + nobs;
  int total = 0;
  for (int s = 0; s < nseasons; ++s) {
    long k = 0;
    for (long j = 0; j < nobs; ++j) {
      const long p = pos[j];
      if (p >= start && p < start + T && scodes[p] == s) work[k++] = x[j];
    }
    total += getstats(work, k, area, &stats[s]);
  }
  return total;
}

int zinttgs(const ZINT_STATS* local, long n, double median, ZINT_STATS* global) {
  if (local == nullptr || global == nullptr || n < 0) return -99;
  ZINT_STATS& g = *global;
  g = ZINT_STATS{};
  g.min = DBL_MAX;
  g.max = -DBL_MAX;
  g.sum = 0;
  g.uss = 0;
  int rc = 0;

  // A running total that leaves the safe range turns missing for good; so
  // does one that meets a record without that total.
  auto add = [&rc](double& run, double v) {
    if (wzmis(run)) return;
    if (wzmis(v)) {
      run = kMissing;
      return;
    }
    run += v;
    if (std::fabs(run) > kAddLimit) {
      run = kMissing;
      rc = -1;
    }
  };

  for (long i = 0; i < n; ++i) {
    const ZINT_STATS& r = local[i];
    if (r.nobs <= 0) continue;
    g.nobs += r.nobs;
    g.n += r.n;
    g.nmiss += r.nmiss;
    if (r.n <= 0) continue;
    if (!wzmis(r.min) && r.min < g.min) g.min = r.min;
    if (!wzmis(r.max) && r.max > g.max) g.max = r.max;
    add(g.sum, r.sum);
    add(g.uss, r.uss);
  }

  if (g.n < 1) {
    g.min = g.max = g.range = g.mean = g.uss = g.css = g.var = g.std = g.median = kMissing;
    return -1;
  }
  g.range = g.max - g.min;
  const auto cnt = static_cast<double>(g.n);
  g.mean = wzmis(g.sum) ? kMissing : g.sum / cnt;
  if (wzmis(g.sum) || wzmis(g.uss)) {
    g.css = kMissing;
  } else if (std::fabs(g.sum) > kSquareLimit) {
    g.css = kMissing;
    rc = -2;
  } else {
    g.css = g.uss - g.sum * g.mean;
  }
  if (g.n < 2 || wzmis(g.css)) {
    g.var = g.std = kMissing;
  } else {
    g.var = g.css / (cnt - 1);
    g.std = g.var > 0 ? std::sqrt(g.var) : 0.0;
  }
  g.median = median;
  return rc;
}

}  // namespace qvt
