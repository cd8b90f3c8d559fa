// Statistics of fit, the lower layers: elementary errors (ztssfe), their
// aggregates (ztssfa), the R-square family (ztssfrs), limit counts (ztssfcl)
// and the description of one series (ztssumm).
#include "stats/fitstats.hpp"

#include "run/missing.hpp"
#include "stats/numeric.hpp"

#include <algorithm>
#include <cmath>

namespace qvt {
namespace {

// Special missing values of a ratio beyond the range of doubles: .I for a
// positive one, .M for a negative one. Both pass wzmis, so that aggregates
// skip them like any missing element.
const double kBeyondPos = skMissVal('I');
const double kBeyondNeg = skMissVal('M');

// The guarded ratio e / d. The quotient is formed only where it can't
// overflow (|d| >= 1, or |e| < |d| B); rc becomes 3 for every element that
// is not a plain quotient.
double divide(double e, double d, int* rc) {
  if (wzmis(e) || wzmis(d)) {
    *rc = 3;
    return kMissing;
  }
  if (std::fabs(d) >= 1.0 || std::fabs(e) < std::fabs(d) * kNumBig) return e / d;
  *rc = 3;
  if (d == 0.0) return kMissing;
  if (e == 0.0) return 0.0;
  return e * d > 0.0 ? kBeyondPos : kBeyondNeg;
}

// The kinds that take the absolute value of the ratio.
bool absoluteKind(int type) {
  return type == kSfApe || type == kSfAppe || type == kSfAspe || type == kSfRae || type == kSfApes;
}

bool knownKind(int type) {
  return (type >= kSfErr && type <= kSfSqErr) || (type >= kSfPe && type <= kSfRae) || type == kSfApes ||
         type == kSfAse;
}

// Scale of the mean absolute scaled error (Hyndman and Koehler, 2006): the
// mean absolute first difference of the actuals over the pairs where both
// are present, each difference raised to kSfScaleMin. Missing without a pair.
double aseScale(const double* a, long T) {
  double sum = 0.0;
  long pairs = 0;
  for (long t = 1; t < T; ++t) {
    if (wzmis(a[t]) || wzmis(a[t - 1])) continue;
    sum += std::fmax(std::fabs(a[t] - a[t - 1]), kSfScaleMin);
    ++pairs;
  }
  if (pairs == 0 || sum == 0.0) return kMissing;
  return sum / static_cast<double>(pairs);
}

// One step of a guarded running sum: false, and the sum unchanged, when a
// value of the sum's sign would be added to a sum or with a value beyond
// kSfSumMax. A sum of 0 counts as positive (decided here: the first value
// has no sign to differ from, and a first value beyond the bound is as much
// an overflow as a later one).
bool addGuarded(double& sum, double v) {
  if (std::signbit(v) == std::signbit(sum) && (std::fabs(sum) > kSfSumMax || std::fabs(v) > kSfSumMax))
    return false;
  sum += v;
  return true;
}

// Median of the c non-missing elements already gathered in work[0..c-1],
// by selection: the middle order statistic, or the mean of the two middle
// ones, which one selection call gives as a value and its successor.
int median(double* work, long c, double* stat) {
  const double pos = static_cast<double>(c % 2 == 1 ? c / 2 : c / 2 - 1);
  double xj = 0.0, xj1 = 0.0;
  if (zqpsort(c, work, nullptr, 1, &pos, &xj, c % 2 == 1 ? nullptr : &xj1, nullptr, 0, nullptr) != 0)
    return -2;
  *stat = c % 2 == 1 ? xj : 0.5 * xj + 0.5 * xj1;
  return 0;
}

// Geometric mean through the mean log; an exact zero counts as the log -L
// of the smallest value exp can give back, so one zero doesn't make the
// result zero.
int geoMean(const double* x, long T, long c, double* stat) {
  double sumlog = 0.0;
  for (long t = 0; t < T; ++t) {
    if (wzmis(x[t])) continue;
    if (x[t] < 0.0) return -5;
    sumlog += x[t] == 0.0 ? -kExpHigh : std::log(x[t]);
  }
  const double meanlog = sumlog / static_cast<double>(c);
  if (meanlog > kExpHigh) return -4;
  *stat = std::exp(meanlog);
  return 0;
}

}  // namespace

int ztssfe(double holdout, const double* actual, const double* predict, long T, int type,
           double* error, double* aerror) noexcept {
  if (actual == nullptr || predict == nullptr || error == nullptr || T < 1 || !knownKind(type)) return -99;
  int rc = 0;
  double scale = 0.0;  // the divisor of kinds 15 and 16, the same for every element
  if (type == kSfApes) {
    SUMMSTATS s;
    ztssumm(actual, T, &s);
    scale = s.std;
  } else if (type == kSfAse) {
    scale = aseScale(actual, T);
    if (wzmis(scale)) rc = -2;
  }
  double rw = holdout;
  const bool walk = wzmis(holdout) != 0;
  for (long t = 0; t < T; ++t) {
    const double a = actual[t], p = predict[t];
    double v = kMissing;
    if (!wzmis(a) && !wzmis(p)) {
      const double e = a - p;
      if (type == kSfErr) {
        v = e;
      } else if (type == kSfAbsErr) {
        v = std::fabs(e);
      } else if (type == kSfSqErr) {
        // The bound B lies a little above sqrt of the largest double (2^512
        // is below it), so a square that still overflows is capped as well.
        v = std::fabs(e) >= kNumBig || std::fabs(e) * std::fabs(e) > kSfHuge ? kSfHuge : e * e;
      } else if (type == kSfAse) {
        v = wzmis(scale) ? std::fabs(e) : std::fabs(e) / scale;
      } else if (std::fabs(e) < kSfZero) {
        // Checked ahead of the divisor: an error this small is a perfect
        // prediction whatever the divisor, also where that is missing.
        v = 0.0;
      } else if (type == kSfApes && !wzmis(scale) && std::fabs(scale) < kSfLogMin) {
        v = 0.0;
      } else {
        // A missing divisor (kind 15 with fewer than two actuals, kinds 11
        // and 12 before the walk has a base) gives a missing ratio and rc 3,
        // as any ratio that can't be formed.
        double d = scale;
        if (type == kSfPe || type == kSfApe) d = a;
        if (type == kSfPpe || type == kSfAppe) d = p;
        if (type == kSfSpe || type == kSfAspe) d = (p + a) * 0.5;
        if (type == kSfRe || type == kSfRae) d = wzmis(rw) ? kMissing : a - rw;
        v = divide(e, d, &rc);
        if (absoluteKind(type) && !wzmis(v)) v = std::fabs(v);
      }
    }
    error[t] = v;
    if (aerror != nullptr) aerror[t] = wzmis(v) ? v : std::fabs(v);
    // The walk moves on after the element: each actual is predicted by the
    // last one before it, whether or not its own prediction is present.
    if (walk && !wzmis(a)) rw = a;
  }
  return rc;
}

int ztssfa(const double* error, long T, int type, double* work, double* stat, long* n) noexcept {
  if (stat == nullptr || n == nullptr) return -99;
  *stat = kMissing;
  *n = 0;
  if (error == nullptr || T < 1 || type < kSfMin || type > kSfGeoMean) return -99;
  if (type == kSfMedian && work == nullptr) return -99;
  long c = 0;
  for (long t = 0; t < T; ++t)
    if (!wzmis(error[t])) ++c;
  *n = c;
  if (c == 0) return -3;

  if (type == kSfMin || type == kSfMax) {
    double m = type == kSfMin ? kSfHuge : -kSfHuge;
    for (long t = 0; t < T; ++t) {
      if (wzmis(error[t])) continue;
      m = type == kSfMin ? std::fmin(m, error[t]) : std::fmax(m, error[t]);
    }
    *stat = m;
    return 0;
  }
  if (type == kSfMedian) {
    // Forward compaction: the write index never passes the read index, so
    // work may be error itself.
    long j = 0;
    for (long t = 0; t < T; ++t)
      if (!wzmis(error[t])) work[j++] = error[t];
    return median(work, c, stat);
  }
  if (type == kSfGeoMean) return geoMean(error, T, c, stat);

  double sum = 0.0;
  for (long t = 0; t < T; ++t)
    if (!wzmis(error[t]) && !addGuarded(sum, error[t])) return -4;
  *stat = type == kSfSum ? sum : sum / static_cast<double>(c);
  return 0;
}

int ztssfrs(double holdout, const double* actual, const double* predict, long T, long nparms,
            int select, double* stat) noexcept {
  if (stat == nullptr) return -99;
  *stat = kMissing;
  if (actual == nullptr || predict == nullptr || T < 1 || select < 10 || select > 13) return -99;
  long firstpred = 0;
  while (firstpred < T && wzmis(predict[firstpred])) ++firstpred;

  const bool walk = wzmis(holdout) != 0;
  double rw = holdout;
  double sse = 0.0, sumdif = 0.0, sumdif2 = 0.0, sumact = 0.0, sumact2 = 0.0;
  long nnmsse = 0, nnmssrw = 0, nnmssa = 0;
  for (long t = 0; t < T; ++t) {
    const double a = actual[t];
    if (wzmis(a)) continue;
    if (!wzmis(predict[t])) {
      const double err = a - predict[t];
      // An error between sqrt of the largest double and B squares to
      // infinity: an overflow like any other.
      if (sse > kSfSumMax || std::fabs(err) > kNumBig || err * err > kSfHuge) return -4;
      sse += err * err;
      ++nnmsse;
    }
    if (!wzmis(rw) && t >= firstpred) {
      const double dif = a - rw;
      if (!addGuarded(sumdif, dif) || sumdif2 > kSfSumMax || std::fabs(dif) > kNumBig) return -4;
      sumdif2 += dif * dif;
      ++nnmssrw;
    }
    ++nnmssa;
    sumact += a;
    sumact2 += a * a;
    if (walk) rw = a;
  }
  if (nnmssa < 1) return -3;
  if (nnmsse < 1) return -2;
  const double na = static_cast<double>(nnmssa), ne = static_cast<double>(nnmsse);
  const double k = static_cast<double>(nparms);
  const double sst = nnmssa == 1 ? 0.0 : sumact2 - sumact * sumact / na;
  const double mse = sse / ne;

  double var = sst / na;
  double factor = 1.0;  // the degrees-of-freedom correction of 11 and 12
  if (select == 11 || select == 12) {
    if (nnmssa <= nparms) return -2;
    factor = select == 11 ? (ne - 1.0) / (na - k) : (ne + k) / (na - k);
  } else if (select == 13) {
    if (nnmssrw <= 1) return -2;
    const double nr = static_cast<double>(nnmssrw);
    var = (sumdif2 - sumdif * sumdif / nr) / nr;
  }
  // The ratio mse / var only where it can't overflow; a zero (or NaN)
  // variance fails both tests.
  if (!(std::fabs(var) >= 1.0 || std::fabs(mse) < std::fabs(var) * kNumBig)) return -2;
  *stat = 1.0 - (mse / var) * factor;
  return 0;
}

int ztssfcl(const double* actual, const double* lower, const double* upper, long T, long* lerror,
            long* uerror, long* n) noexcept {
  if (actual == nullptr || lower == nullptr || upper == nullptr || lerror == nullptr || uerror == nullptr ||
      n == nullptr)
    return -99;
  *lerror = *uerror = *n = 0;
  if (T < 1) return -99;
  for (long t = 0; t < T; ++t) {
    if (wzmis(actual[t]) || wzmis(lower[t]) || wzmis(upper[t])) continue;
    ++*n;
    if (actual[t] < lower[t]) ++*lerror;
    if (actual[t] > upper[t]) ++*uerror;
  }
  return 0;
}

long ztssumm(const double* y, long nobs, SUMMSTATS* stats) noexcept {
  if (stats == nullptr) return 0;
  SUMMSTATS& s = *stats;
  s.nobs = nobs;
  long n = 0;
  if (y != nullptr)
    for (long t = 0; t < nobs; ++t)
      if (!wzmis(y[t])) ++n;
  if (n == 0) {
    // Nothing present: the whole vector is one gap.
    s.n = 0;
    s.nmiss = s.mingap = s.maxgap = nobs;
    s.min = s.max = s.mean = s.std = s.sum = kMissing;
    return 0;
  }
  // Gaps are the maximal runs of missing values, leading and trailing runs
  // included; a run ends at the next value present or at the end.
  long mingap = 0, maxgap = 0, run = 0;
  double lo = kSfHuge, hi = -kSfHuge, sum = 0.0, sum2 = 0.0;
  for (long t = 0; t <= nobs; ++t) {
    if (t < nobs && wzmis(y[t])) {
      ++run;
      continue;
    }
    if (run > 0) {
      mingap = mingap == 0 ? run : std::min(mingap, run);
      maxgap = std::max(maxgap, run);
      run = 0;
    }
    if (t == nobs) break;
    lo = std::fmin(lo, y[t]);
    hi = std::fmax(hi, y[t]);
    sum += y[t];
    sum2 += y[t] * y[t];
  }
  const double dn = static_cast<double>(n);
  s.n = n;
  s.nmiss = nobs - n;
  s.mingap = mingap;
  s.maxgap = maxgap;
  s.min = lo;
  s.max = hi;
  s.sum = sum;
  s.mean = sum / dn;
  s.std = kMissing;
  if (n >= 2) {
    const double var = (sum2 - sum * sum / dn) / (dn - 1.0);
    s.std = var > 0.0 ? std::sqrt(var) : 0.0;
  }
  return n;
}

}  // namespace qvt
