// Cross-series performance: the running record of one error type, and the
// reading of one statistic across consecutive records.
#include "run/missing.hpp"
#include "stats/fitstats.hpp"
#include "stats/ztscp.hpp"

#include <cmath>

namespace qvt {
namespace {

// The log of an absolute error of 0 (a perfect forecast) is taken at this
// value, so that one such error pulls the geometric mean down without making
// it 0 or the sum of logs infinite.
constexpr double kTiny = 1.491668147e-154;

}  // namespace

int ztscpea(double error, double aerror, ZTS_CP_STATS* stats) noexcept {
  if (stats == nullptr) return -99;
  if (wzmis(error)) return 1;
  ZTS_CP_STATS& s = *stats;
  s.n += 1;
  if (error < s.min) s.min = error;
  if (error > s.max) s.max = error;
  s.sum += error;
  if (!wzmis(aerror)) {
    s.asum += aerror;
    s.alsum += std::log(aerror <= 0.0 ? kTiny : aerror);
  }
  return 0;
}

int ztscpes(ZTS_CP_STATS* stats) noexcept {
  if (stats == nullptr) return -99;
  ZTS_CP_STATS& s = *stats;
  if (s.n < 1) {
    s.min = s.max = s.sum = s.asum = s.mean = s.amean = s.median = s.gm = kMissing;
    return 2;
  }
  const double n = static_cast<double>(s.n);
  s.mean = s.sum / n;
  s.amean = s.asum / n;
  const double g = s.alsum / n;
  if (g > kExpHigh) {
    s.gm = kMissing;
    return 3;
  }
  s.gm = std::exp(g);
  return 0;
}

int ztscpei(ZTS_CP_STATS* stats) noexcept {
  if (stats == nullptr) return -99;
  ZTS_CP_STATS& s = *stats;
  s.n = 0;
  s.min = kSfHuge;
  s.max = -kSfHuge;
  s.sum = s.asum = s.alsum = 0.0;
  s.mean = s.amean = s.gm = kMissing;
  return 0;
}

int ztscpem(const ZTS_CP_STATS* stats, ZTS_CP_STATS* global) noexcept {
  if (stats == nullptr || global == nullptr) return -99;
  // An empty record adds nothing; once closed its sums are missing, which
  // must not enter arithmetic.
  if (stats->n < 1) return 0;
  ZTS_CP_STATS& g = *global;
  g.n += stats->n;
  g.sum += stats->sum;
  g.asum += stats->asum;
  g.alsum += stats->alsum;
  if (stats->min < g.min) g.min = stats->min;
  if (stats->max > g.max) g.max = stats->max;
  return 0;
}

int ztscpv(const ZTS_CP_JSTATS* jstats, long nstats, int type, int acc, double* v) noexcept {
  if (jstats == nullptr || v == nullptr || nstats < 1) return -99;
  if (type == kCpCl) {
    if (acc < kCpLower || acc > kCpTotal) return -99;
    for (long i = 0; i < nstats; ++i) {
      const ZTS_CP_CL& c = jstats[i].cl;
      const long k = acc == kCpLower ? c.lower : acc == kCpUpper ? c.upper : c.total;
      v[i] = c.n < 1 ? kMissing : static_cast<double>(k) / static_cast<double>(c.n);
    }
    return 0;
  }
  ZTS_CP_STATS ZTS_CP_JSTATS::*rec = nullptr;
  if (type == kCpPct) rec = &ZTS_CP_JSTATS::pct;
  if (type == kCpSym) rec = &ZTS_CP_JSTATS::sym;
  if (type == kCpRel) rec = &ZTS_CP_JSTATS::rel;
  if (rec == nullptr || acc < kCpMin || acc > kCpGm) return -99;
  double ZTS_CP_STATS::*field[] = {&ZTS_CP_STATS::min,   &ZTS_CP_STATS::max,    &ZTS_CP_STATS::sum,
                                   &ZTS_CP_STATS::mean,  &ZTS_CP_STATS::amean,  &ZTS_CP_STATS::median,
                                   &ZTS_CP_STATS::gm};
  for (long i = 0; i < nstats; ++i) v[i] = jstats[i].*rec.*field[acc - 1];
  return 0;
}

}  // namespace qvt
