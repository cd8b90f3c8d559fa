// Life of a demand series: creating the record, loading a series (base,
// demands, intervals, sizes, average demands, the sample ranges), and the
// statistics of one component vector.
//
// Times. Each observation's time ID is aligned to its interval with
// zintnx3, so that two records inside one interval share a time, and the
// number of intervals between two demands is zintck2 of their aligned
// times. Without time IDs, or with an interval that has no code, there is no
// calendar to count with: the time of an observation is then its time ID as
// given (or its index when none is given) and a count is the plain
// difference. On an equally spaced grid that is the same count the calendar
// would give.
#include "intermittent/idseries.hpp"
#include "intermittent/idsstats.hpp"

#include "calendar/zintcycle.hpp"
#include "run/missing.hpp"

#include <algorithm>
#include <cmath>
#include <memory>
#include <new>

namespace qvt {
namespace {

using idsimpl::getstats;
using idsimpl::resetstats;

// The cube root of the largest double (bits 0x554428A2F98D7240): the sum of
// nobs departures below extreme/nobs, and products of three of them, stay
// finite.
constexpr double kCubeRootMax = 5.643803094122288e+102;
// Departures below this are zero at any scale (bits 0x20000000002302AC).
constexpr double kTiny = 1.491668147e-154;
// A departure below this fraction of the largest one is no demand.
constexpr double kZeroFactor = 1e-12;

// size / interval; missing when either is missing or the interval is 0
// (aligned demands are at least one interval apart, so 0 means a failed
// count).
double divide(double size, double intv) {
  if (wzmis(size) || wzmis(intv) || intv == 0.0) return kMissing;
  return size / intv;
}

bool hasCalendar(const IDSERIES& ids, const double* tid) {
  return tid != nullptr && ids.interval.intcode != 0;
}

// Number of intervals from time a to time b.
double count(const IDSERIES& ids, bool calendar, double a, double b) {
  if (wzmis(a) || wzmis(b)) return kMissing;
  return calendar ? zintck2(ids.interval, a, b) : b - a;
}

void resetcomp(IDSCOMP& c, std::size_t len) {
  c.data.assign(len, kMissing);
  resetstats(&c.stats);
  for (IDSSTATS& s : c.seasons) resetstats(&s);
  c.trnscode = 0;
  c.trnsparm = kMissing;
  c.trndcode = 0;
  c.trndparm = kMissing;
}

IDSCOMP* comps(IDSERIES& ids, int k) {
  IDSCOMP* all[] = {&ids.intv, &ids.itrns, &ids.size, &ids.strns, &ids.adem, &ids.atrns};
  return all[k];
}

// Observation vectors for anobs values, demand vectors for an demands; each
// one entry longer. A length of 0 allocates nothing. Throws std::bad_alloc.
void growobs(IDSERIES& ids, long anobs) {
  if (anobs <= 0) return;
  const auto len = static_cast<std::size_t>(anobs) + 1;
  ids.timeid.resize(len, kMissing);
  ids.series.resize(len, kMissing);
  ids.work.resize(len, kMissing);
  ids.anobs = anobs;
}

void growdem(IDSERIES& ids, long an) {
  if (an <= 0) return;
  const auto len = static_cast<std::size_t>(an) + 1;
  ids.time.resize(len, kMissing);
  ids.obs.resize(len, 0);
  ids.scodes.resize(len, 0);
  for (int k = 0; k < 6; ++k) comps(ids, k)->data.resize(len, kMissing);
  ids.an = an;
}

// Counters, times and statistics back to "nothing loaded".
void clearresults(IDSERIES& ids) {
  ids.n = ids.nsample = ids.nholdout = ids.nback = 0;
  ids.startobs = ids.endobs = ids.firstobs = ids.lastobs = 0;
  ids.starttime = ids.endtime = ids.firsttime = ids.lasttime = kMissing;
  ids.zero = ids.extreme = kMissing;
  const auto len = static_cast<std::size_t>(ids.an) + (ids.an > 0 ? 1 : 0);
  for (int k = 0; k < 6; ++k) resetcomp(*comps(ids, k), len);
  std::fill(ids.time.begin(), ids.time.end(), kMissing);
  std::fill(ids.obs.begin(), ids.obs.end(), 0L);
  std::fill(ids.scodes.begin(), ids.scodes.end(), 0);
  std::fill(ids.timeid.begin(), ids.timeid.end(), kMissing);
  std::fill(ids.series.begin(), ids.series.end(), kMissing);
}

int fail(IDSERIES* ids, int rc) {
  ids->error = rc;
  return rc;
}

}  // namespace

namespace idsimpl {

void resetstats(IDSSTATS* s) noexcept {
  *s = IDSSTATS{};
  s->min = s->max = s->sum = s->avg = s->range = s->norm = s->std = s->prob = s->adj = kMissing;
  s->normstat = s->normprob = s->trndstat = s->trndprob = kMissing;
}

// Statistics of the non-missing elements of v[0..n-1]. The mean divides by
// the length given, not by the count, as the component statistics are taken
// per demand slot; the standard deviation is the sample one around that mean.
int getstats(const double* v, long n, IDSSTATS* s) noexcept {
  if (v == nullptr || s == nullptr) return kIdsBadArg;
  resetstats(s);
  long c = 0;
  double min = 0, max = 0, sum = 0;
  for (long i = 0; i < n; ++i) {
    if (wzmis(v[i])) continue;
    if (c == 0 || v[i] < min) min = v[i];
    if (c == 0 || v[i] > max) max = v[i];
    sum += v[i];
    ++c;
  }
  if (n <= 0 || c == 0) return kIdsNoDemand;
  s->n = c;
  s->min = min;
  s->max = max;
  s->range = max - min;
  s->norm = std::fmax(std::fabs(max), std::fabs(min));
  s->sum = sum;
  s->avg = sum / static_cast<double>(n);
  if (c >= 2) {
    double ss = 0;
    for (long i = 0; i < n; ++i) {
      if (!wzmis(v[i])) ss += (v[i] - s->avg) * (v[i] - s->avg);
    }
    const double var = ss / static_cast<double>(c - 1);
    s->std = var > 0 ? std::sqrt(var) : 0.0;
  }
  return kIdsOk;
}

}  // namespace idsimpl

int idsint(long anobs, long an, const INTERVAL* interval, const tchar* align, int seasonality,
           IDSERIES** ids) noexcept {
  if (ids == nullptr) return kIdsBadArg;
  *ids = nullptr;
  // Negative lengths are refused rather than read as 0: they can only come
  // from a caller's arithmetic gone wrong.
  if (interval == nullptr || anobs < 0 || an < 0) return kIdsBadArg;
  if (seasonality < 0) {
    // The cycle of the interval as the statements derive it, at date 0.
    INTERVAL sint{};
    int ns = 0;
    if (zintsea(interval, 0.0, &sint, &ns) != 0 || ns < 2) return kIdsNoSeasons;
    seasonality = ns;
  }
  try {
    auto r = std::make_unique<IDSERIES>();
    r->interval = *interval;
    // A null align means the beginning, as zintnx3 reads it.
    r->align = align != nullptr ? align[0] : 'B';
    r->seasonality = seasonality;
    r->intv.type = r->itrns.type = kIdsInterval;
    r->size.type = r->strns.type = kIdsSize;
    r->adem.type = r->atrns.type = kIdsAverage;
    for (int k = 0; k < 6; ++k) {
      if (seasonality > 1) comps(*r, k)->seasons.resize(static_cast<std::size_t>(seasonality));
    }
    growobs(*r, anobs);
    growdem(*r, an);
    clearresults(*r);
    r->base = kMissing;
    *ids = r.release();
  } catch (const std::bad_alloc&) {
    return kIdsNoMem;
  }
  return kIdsOk;
}

void idstrm(IDSERIES** ids) noexcept {
  if (ids == nullptr) return;
  delete *ids;
  *ids = nullptr;
}

int idsset(IDSERIES* ids, long nobs, const double* y, const double* tid, const int* scodes,
           double base, long holdout, long back) noexcept {
  if (ids == nullptr) return kIdsBadArg;
  ids->error = ids->warning = 0;
  if (y == nullptr || nobs < 1 || holdout < 0 || back < 0) return fail(ids, kIdsBadArg);
  try {
    if (nobs > ids->anobs) growobs(*ids, nobs);
  } catch (const std::bad_alloc&) {
    return fail(ids, kIdsNoMem);
  }
  ids->nobs = nobs;
  ids->holdout = holdout;
  ids->back = back;
  clearresults(*ids);

  // The base: given, or the state that holds the series (back range left out).
  ids->ndistinct = 0;
  if (wzmis(base)) {
    long nd = 0;
    const int rc = idsdar(y, ids->work.data(), nobs - back, 1.0, &base, &nd);
    if (rc < 0) return fail(ids, rc);
    ids->ndistinct = nd;
  }
  ids->base = base;

  // Scan: time order, extremes, and the largest departure.
  const double extreme = kCubeRootMax / static_cast<double>(nobs);
  long ncand = 0;
  double dmax = 0;
  for (long t = 0; t < nobs; ++t) {
    if (tid != nullptr && (wzmis(tid[t]) || (t > 0 && tid[t] < tid[t - 1]))) return fail(ids, kIdsBadTime);
    if (wzmis(y[t])) continue;
    const double d = std::fabs(y[t] - base);
    // Written so that a NaN that is not a missing value counts as extreme.
    if (!(d <= extreme)) return fail(ids, kIdsExtreme);
    if (d >= kTiny) {
      ++ncand;
      dmax = std::fmax(dmax, d);
    }
  }
  if (ncand == 0) return fail(ids, kIdsNoDemand);
  // The walk takes every departure of at least zero = 1e-12 * dmax as a
  // demand. Below a largest departure of about 1.5e-142 that threshold lies
  // under kTiny, so there can be more demands than candidates: the demand
  // vectors are sized for the larger count.
  const double zero = kZeroFactor * dmax;
  long ndem = 0;
  for (long t = 0; t < nobs; ++t) {
    if (!wzmis(y[t]) && std::fabs(y[t] - base) >= zero) ++ndem;
  }
  try {
    if (std::max(ncand, ndem) > ids->an) growdem(*ids, std::max(ncand, ndem));
  } catch (const std::bad_alloc&) {
    return fail(ids, kIdsNoMem);
  }
  clearresults(*ids);
  ids->zero = zero;
  ids->extreme = extreme;

  // Walk: one demand per aligned time; intv[i] holds the time for now.
  const bool calendar = hasCalendar(*ids, tid);
  const tchar align[1] = {ids->align};
  bool badtime = false;
  long n = 0;
  double* intv = ids->intv.data.data();
  double* size = ids->size.data.data();
  double* adem = ids->adem.data.data();
  for (long t = 0; t < nobs; ++t) {
    double time = tid == nullptr ? static_cast<double>(t) : tid[t];
    if (calendar) time = zintnx3(ids->interval, tid[t], 0.0, align, nullptr);
    if (wzmis(time)) badtime = true;
    if (t == 0) {
      ids->startobs = t;
      ids->starttime = time;
    }
    ids->endobs = t;
    ids->endtime = time;
    const double d = wzmis(y[t]) ? 0.0 : y[t] - base;
    if (wzmis(y[t]) || std::fabs(d) < ids->zero || wzmis(time)) {
      ids->series[t] = base;
      continue;
    }
    ids->timeid[t] = time;
    ids->series[t] = d;
    if (n > 0 && ids->time[n - 1] == time) {
      size[n - 1] += d;
      continue;
    }
    if (n == 0) {
      ids->firstobs = t;
      ids->firsttime = time;
    }
    ids->lastobs = t;
    ids->lasttime = time;
    intv[n] = time;
    ids->obs[n] = t;
    ids->time[n] = time;
    size[n] = d;
    if (ids->seasonality > 1) {
      if (scodes != nullptr) {
        ids->scodes[n] = scodes[t];
      } else {
        int ns = ids->seasonality;
        zintscd(ids->interval, time, 0, 1, &ids->scodes[n], &ns);
      }
    }
    ++n;
  }
  if (badtime) return fail(ids, kIdsBadTime);
  if (n == 0) return fail(ids, kIdsNoDemand);
  ids->n = n;

  // Times become interval counts, from the end so that each count still
  // sees the time of the demand before it.
  ids->time[n] = calendar ? zintnx3(ids->interval, ids->endtime, 1.0, align, nullptr) : ids->endtime + 1.0;
  const double tail = count(*ids, calendar, intv[n - 1], ids->endtime);
  intv[n] = wzmis(tail) ? kMissing : tail + 1.0;
  adem[n] = kMissing;
  for (long i = n - 1; i >= 1; --i) {
    intv[i] = count(*ids, calendar, intv[i - 1], intv[i]);
    adem[i] = divide(size[i], intv[i]);
  }
  const double head = count(*ids, calendar, ids->starttime, intv[0]);
  intv[0] = wzmis(head) ? kMissing : head + 1.0;
  adem[0] = divide(size[0], intv[0]);

  // The ranges at the end, counted from the last demand backwards.
  long i = n - 1;
  if (back > 0) {
    for (; i >= 0 && ids->obs[i] >= nobs - back; --i) ++ids->nback;
  }
  if (holdout >= 1) {
    for (; i >= 0 && ids->obs[i] >= nobs - back - holdout; --i) ++ids->nholdout;
  }
  ids->nsample = n - ids->nholdout - ids->nback;

  const long m = ids->nsample + ids->nholdout;
  if (m < 1) {
    ids->warning = kIdsNoFitDemand;
    for (IDSCOMP* c : {&ids->intv, &ids->size, &ids->adem}) resetstats(&c->stats);
    return kIdsNoFitDemand;
  }
  // Demand 0's interval starts at the series start, not at a demand: it is
  // incomplete and stays out of the interval and average-demand statistics.
  getstats(intv + 1, m - 1, &ids->intv.stats);
  getstats(size, m, &ids->size.stats);
  getstats(adem + 1, m - 1, &ids->adem.stats);

  if (holdout >= 1 && ids->nholdout == 0) {
    ids->warning = kIdsNoHoldoutDemand;
    return kIdsNoHoldoutDemand;
  }
  if (back > 0 && ids->nback == 0) {
    ids->warning = kIdsNoBackDemand;
    return kIdsNoBackDemand;
  }
  return kIdsOk;
}

}  // namespace qvt
