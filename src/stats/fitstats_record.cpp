// Statistics of fit, the upper layer: the whole record of a fit (ztssfme),
// the one statistic that a selection criterion names (ztssfm), and the
// comparison of two values of a criterion (ztssfmc).
#include "stats/fitstats.hpp"

#include "run/missing.hpp"

#include <cmath>
#include <new>
#include <stdexcept>
#include <vector>

namespace qvt {
namespace {

// Every statistic of the record, in field order; the limit percentages are
// apart because the normal path leaves them to the caller.
constexpr double SF_STATS::*kStatFields[] = {
    &SF_STATS::mean,    &SF_STATS::tss,     &SF_STATS::sst,       &SF_STATS::sse,     &SF_STATS::mse,
    &SF_STATS::rmse,    &SF_STATS::umse,    &SF_STATS::urmse,     &SF_STATS::rsquare, &SF_STATS::adj_Rsq,
    &SF_STATS::a_adj_Rsq, &SF_STATS::rw_Rsq, &SF_STATS::aic,      &SF_STATS::aicc,    &SF_STATS::sbc,
    &SF_STATS::apc,     &SF_STATS::mae,     &SF_STATS::me,        &SF_STATS::maxerr,  &SF_STATS::minerr,
    &SF_STATS::mase,    &SF_STATS::gmape,   &SF_STATS::mdape,     &SF_STATS::mape,    &SF_STATS::mpe,
    &SF_STATS::maxpe,   &SF_STATS::minpe,   &SF_STATS::gmapes,    &SF_STATS::mdapes,  &SF_STATS::mapes,
    &SF_STATS::maxapes, &SF_STATS::minapes, &SF_STATS::gmaspe,    &SF_STATS::mdaspe,  &SF_STATS::smape,
    &SF_STATS::mspe,    &SF_STATS::maxspe,  &SF_STATS::minspe,    &SF_STATS::gmrae,   &SF_STATS::mdrae,
    &SF_STATS::mrae,    &SF_STATS::mre,     &SF_STATS::maxre,     &SF_STATS::minre,   &SF_STATS::gmappe,
    &SF_STATS::mdappe,  &SF_STATS::mappe,   &SF_STATS::mppe,      &SF_STATS::maxppe,  &SF_STATS::minppe,
};

// The aggregates of one error kind and the fields they fill, in the order
// they are computed (which decides the code that ztssfme returns last).
struct FieldAgg {
  int type;
  double SF_STATS::*field;
};
struct KindFields {
  int kind;
  bool whole;  // on the untrimmed vectors: the random walk and the scale need every actual
  bool x100;
  FieldAgg aggs[5];
};

constexpr KindFields kErrorFields[] = {
    {kSfErr, false, false,
     {{kSfMean, &SF_STATS::me}, {kSfMin, &SF_STATS::minerr}, {kSfMax, &SF_STATS::maxerr}}},
    {kSfAbsErr, false, false, {{kSfMean, &SF_STATS::mae}}},
};

constexpr KindFields kRatioFields[] = {
    {kSfPe, false, true,
     {{kSfMean, &SF_STATS::mpe}, {kSfMin, &SF_STATS::minpe}, {kSfMax, &SF_STATS::maxpe}}},
    {kSfApe, false, true,
     {{kSfMean, &SF_STATS::mape}, {kSfGeoMean, &SF_STATS::gmape}, {kSfMedian, &SF_STATS::mdape}}},
    {kSfApes, false, true,
     {{kSfMean, &SF_STATS::mapes}, {kSfGeoMean, &SF_STATS::gmapes}, {kSfMedian, &SF_STATS::mdapes},
      {kSfMin, &SF_STATS::minapes}, {kSfMax, &SF_STATS::maxapes}}},
    {kSfPpe, false, true,
     {{kSfMean, &SF_STATS::mppe}, {kSfMin, &SF_STATS::minppe}, {kSfMax, &SF_STATS::maxppe}}},
    {kSfAppe, false, true,
     {{kSfMean, &SF_STATS::mappe}, {kSfGeoMean, &SF_STATS::gmappe}, {kSfMedian, &SF_STATS::mdappe}}},
    {kSfSpe, false, true,
     {{kSfMean, &SF_STATS::mspe}, {kSfMin, &SF_STATS::minspe}, {kSfMax, &SF_STATS::maxspe}}},
    {kSfAspe, false, true,
     {{kSfMean, &SF_STATS::smape}, {kSfGeoMean, &SF_STATS::gmaspe}, {kSfMedian, &SF_STATS::mdaspe}}},
    {kSfRe, true, false, {{kSfMean, &SF_STATS::mre}, {kSfMin, &SF_STATS::minre}, {kSfMax, &SF_STATS::maxre}}},
    {kSfRae, true, false,
     {{kSfMean, &SF_STATS::mrae}, {kSfGeoMean, &SF_STATS::gmrae}, {kSfMedian, &SF_STATS::mdrae}}},
    {kSfAse, true, false, {{kSfMean, &SF_STATS::mase}}},
};

// ----------------------------------------- criteria from the sum of squares
// sse is the sum of m squared errors, k the number of parameters; each gives
// the missing value where it is undefined.

double root(double v) { return wzmis(v) || v < 0.0 ? kMissing : std::sqrt(v); }

// Unbiased mean square sse / (m - k).
double umse(double sse, long m, long k) {
  return k < m && !wzmis(sse) ? sse / static_cast<double>(m - k) : kMissing;
}

// Akaike's m ln(sse/m) + 2k and Schwarz's m ln(sse/m) + k ln m. A mean
// square below kSfLogMin (a perfect fit) has no usable logarithm.
double infoCrit(double sse, long m, long k, bool schwarz) {
  if (m < 1 || wzmis(sse)) return kMissing;
  const double dm = static_cast<double>(m), dk = static_cast<double>(k);
  if (!(sse / dm >= kSfLogMin)) return kMissing;
  return dm * std::log(sse / dm) + (schwarz ? dk * std::log(dm) : 2.0 * dk);
}

// Hurvich and Tsai's small-sample correction of Akaike's criterion,
// aic + 2k(k + 1)/(m - k - 1), where the sum stays finite.
double aicc(double aic, long m, long k) {
  const long q = m - k;
  if (wzmis(aic) || q <= 1) return kMissing;
  const double dk = static_cast<double>(k);
  const double c = 2.0 * dk * ((dk + 1.0) / static_cast<double>(q - 1));
  if (kSfHuge - c < aic) return kMissing;
  return aic + c;
}

// Amemiya's prediction criterion sse (m + k) / ((m - k) m).
double apc(double sse, long m, long k) {
  if (k >= m || wzmis(sse)) return kMissing;
  const double dm = static_cast<double>(m), dk = static_cast<double>(k);
  if (!(sse < kSfHuge / (dm + dk))) return kMissing;
  return ((sse * (dm + dk)) / (dm - dk)) / dm;
}

// ------------------------------------------------------------ the record

void clearStats(SF_STATS& s, bool limits) {
  for (double SF_STATS::*f : kStatFields) s.*f = kMissing;
  if (!limits) return;
  s.lower = s.upper = s.total = 0;
  s.pctlower = s.pctupper = s.pcttotal = kMissing;
}

// The vectors of one call: trimmed (a, p over TT) and whole (over T), and
// the two work vectors, error and median.
struct Frame {
  double holdout;
  const double *actual, *predict, *a, *p;
  long T, TT;
  double *err, *work;
};

// Fills the fields of one error kind; a failure of ztssfe leaves them missing.
void fillKind(const Frame& f, const KindFields& kf, SF_STATS& s, int& last) {
  const long len = kf.whole ? f.T : f.TT;
  const double* a = kf.whole ? f.actual : f.a;
  const double* p = kf.whole ? f.predict : f.p;
  int rc = ztssfe(f.holdout, a, p, len, kf.kind, f.err, nullptr);
  if (rc < 0) {
    last = rc;
    return;
  }
  for (const FieldAgg& fa : kf.aggs) {
    if (fa.field == nullptr) break;
    double v = kMissing;
    long m = 0;
    rc = ztssfa(f.err, len, fa.type, f.work, &v, &m);
    if (rc < 0) last = rc;
    s.*fa.field = rc == 0 && kf.x100 ? v * 100.0 : v;
  }
}

int wholeRecord(double holdout, const double* actual, const double* predict, long T, long nparms,
                SF_STATS& s) {
  s.nobs = T;
  s.nmissa = s.nmissp = 0;
  if (T == 0) {
    s.dfe = s.n = 0;
    s.nparms = 0;
    clearStats(s, true);
    return -3;
  }
  // Trim the positions without a prediction off both ends; the actuals
  // there count as missing only when they are.
  long b = 0, e = T;
  for (; b < e && wzmis(predict[b]); ++b) {
    ++s.nmissp;
    if (wzmis(actual[b])) ++s.nmissa;
  }
  for (; e > b && wzmis(predict[e - 1]); --e) {
    ++s.nmissp;
    if (wzmis(actual[e - 1])) ++s.nmissa;
  }
  const long TT = e - b;
  s.n = TT;
  s.dfe = TT;
  s.nparms = static_cast<int>(nparms);
  long nsum = 0;
  double sum = 0.0, sum2 = 0.0;
  for (long t = b; t < e; ++t) {
    const bool ma = wzmis(actual[t]) != 0, mp = wzmis(predict[t]) != 0;
    if (ma) {
      ++s.nmissa;
    } else {
      ++nsum;
      sum += actual[t];
      sum2 += actual[t] * actual[t];
    }
    if (mp) ++s.nmissp;
    if (ma || mp) --s.dfe;
  }
  s.dfe -= nparms;
  clearStats(s, TT == 0 || nsum < 1);
  if (TT == 0 || nsum < 1) return -3;

  s.tss = sum2;
  s.mean = sum / static_cast<double>(nsum);
  double css = 0.0;
  for (long t = b; t < e; ++t)
    if (!wzmis(actual[t])) css += (actual[t] - s.mean) * (actual[t] - s.mean);
  s.sst = css;

  std::vector<double> err(static_cast<std::size_t>(T)), work(static_cast<std::size_t>(T));
  const Frame f{holdout, actual, predict, actual + b, predict + b, T, TT, err.data(), work.data()};
  int last = 0;
  for (const KindFields& kf : kErrorFields) fillKind(f, kf, s, last);

  int rc = ztssfe(holdout, f.a, f.p, TT, kSfSqErr, f.err, nullptr);
  if (rc < 0) last = rc;
  long m = 0;
  double sse = kMissing;
  if (rc >= 0 && (rc = ztssfa(f.err, TT, kSfSum, f.work, &sse, &m)) < 0) last = rc;
  const long k = nparms;
  s.sse = sse;
  s.mse = m >= 1 && !wzmis(sse) ? sse / static_cast<double>(m) : kMissing;
  s.rmse = root(s.mse);
  s.umse = umse(sse, m, k);
  s.urmse = root(s.umse);
  s.aic = infoCrit(sse, m, k, false);
  s.aicc = aicc(s.aic, m, k);
  s.sbc = infoCrit(sse, m, k, true);
  s.apc = apc(sse, m, k);

  const int rsqSelect[] = {10, 11, 12};
  double SF_STATS::*const rsqField[] = {&SF_STATS::rsquare, &SF_STATS::adj_Rsq, &SF_STATS::a_adj_Rsq};
  for (int i = 0; i < 3; ++i)
    if ((rc = ztssfrs(holdout, f.a, f.p, TT, k, rsqSelect[i], &(s.*rsqField[i]))) < 0) last = rc;
  if ((rc = ztssfrs(holdout, actual, predict, T, k, 13, &s.rw_Rsq)) < 0) last = rc;

  for (const KindFields& kf : kRatioFields) fillKind(f, kf, s, last);
  return last;
}

}  // namespace

int ztssfme(double holdout, const double* actual, const double* predict, long T, long nparms,
            SF_STATS* stats) noexcept {
  if (actual == nullptr || predict == nullptr || stats == nullptr || T < 0) return -99;
  try {
    return wholeRecord(holdout, actual, predict, T, nparms, *stats);
  } catch (const std::bad_alloc&) {
    return -1;  // the statistics past mean, tss and sst were cleared before the allocation
  } catch (const std::length_error&) {
    return -1;  // T beyond what a vector can hold: no memory either
  }
}

int ztssfm(double holdout, const double* actual, const double* predict, long T, long nparms, int select,
           double* work, double* stat) noexcept {
  if (actual == nullptr || predict == nullptr || work == nullptr || stat == nullptr || T < 1) return -99;
  *stat = kMissing;
  const SfCriterion* c = sfCriterion(select);
  if (c == nullptr) return -99;
  if (c->kind == 0) return ztssfrs(holdout, actual, predict, T, nparms, select, stat);

  int rc = ztssfe(holdout, actual, predict, T, c->kind, work, nullptr);
  if (rc < 0) return rc;
  double v = kMissing;
  long m = 0;
  // work is both the error vector and the median's work space: the
  // aggregate reads every element before it gathers the present ones.
  rc = ztssfa(work, T, c->aggregate, work, &v, &m);
  if (rc < 0) return rc;  // a failed aggregate left v missing: no criterion either
  switch (select) {
    case 3:
      v = std::sqrt(v);
      break;
    case 4:
    case 5:
      v = umse(v, m, nparms);
      if (wzmis(v)) return -2;
      if (select == 5) v = root(v);
      break;
    case 20:
    case 21:
    case 23:
      v = infoCrit(v, m, nparms, select == 21);
      if (select == 23) v = aicc(v, m, nparms);
      *stat = v;
      return wzmis(v) ? 4 : 0;
    case 22:
      v = apc(v, m, nparms);  // an undefined APC is a missing value, not a failure
      break;
    default:
      if (c->x100) v *= 100.0;
  }
  *stat = v;
  return 0;
}

int ztssfmc(double stat1, double stat2, int select) noexcept {
  const bool miss1 = wzmis(stat1) != 0, miss2 = wzmis(stat2) != 0;
  // The information criteria take a missing first value as beaten even by
  // a missing second one, so that a candidate is always taken over a start
  // that has no value.
  const bool info = select == 20 || select == 21 || select == 23;
  if (!info && miss1 && miss2) return -1;
  if (miss1) return 1;
  if (miss2) return 0;
  // The code is looked up only for the direction: a missing value settles
  // the comparison whatever the criterion.
  const SfCriterion* c = sfCriterion(select);
  if (c == nullptr) return -99;
  if (c->better == kSfLarger) return stat1 < stat2 ? 1 : 0;
  if (c->better == kSfSmallerAbs) return std::fabs(stat2) < std::fabs(stat1) ? 1 : 0;
  return stat2 < stat1 ? 1 : 0;
}

}  // namespace qvt
