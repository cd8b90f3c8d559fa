// A demand series split into what can be modelled: the intervals between
// demands, the demand sizes measured from a base, and the average demand per
// interval (size over interval). One IDSERIES serves a whole BY group and is
// reloaded by idsset for each series; its vectors grow and never shrink.
//
// Index scheme of the components (n demands, vectors of an + 1 entries):
//   size[i], i < n: value minus base at demand i (demands at one time added);
//   intv[0]: intervals from the series start to demand 0, plus 1;
//   intv[i], 0 < i < n: intervals from demand i-1 to demand i;
//   intv[n]: intervals from the last demand to the series end, plus 1;
//   adem[i] = size[i] / intv[i] for i < n, adem[n] missing.
//
// Calling order for one series: idsset, idstrn, idsss, then idsdti when the
// run still has to decide whether the series is intermittent at all.
// Nothing here prints; idsmsg turns a code into messages for the run.
#pragma once

#include <vector>

#include "calendar/interval.hpp"
#include "host/host.hpp"
#include "run/strings.hpp"

namespace qvt {

// Return codes of the demand-series routines.
enum IdsRc : int {
  kIdsOk = 0,
  kIdsNoHoldoutDemand = 2,   // warning: a hold-out was asked for, no demand in it
  kIdsNoBackDemand = 3,      // warning: a back range was asked for, no demand in it
  kIdsShortBase = 5,         // base search on fewer than 6 observations; base 0
  kIdsNoMem = -1,
  kIdsNoSeasons = -10,       // no seasonality can be derived from the interval
  kIdsBadTime = -11,         // a time ID missing, out of order, or not alignable
  kIdsAllMissing = -20,      // all values missing in the base search
  kIdsExtreme = -21,         // a value too extreme
  kIdsNoDemand = -22,
  kIdsNoFitDemand = -23,     // no demand in the fit sample (kept as a warning)
  kIdsNonPositive = -24,     // the transformation needs positive values
  kIdsTransform = -30,       // a transformation failed
  kIdsBadArg = -99,
};

// Statistics of one vector. normstat .. trndprob stay missing.
struct IDSSTATS {
  long n = 0;
  double min = 0, max = 0, sum = 0, avg = 0, range = 0, norm = 0, std = 0, prob = 0, adj = 0,
         normstat = 0, normprob = 0, trndstat = 0, trndprob = 0;
};

// Component types.
enum IdsCompType : char { kIdsInterval = 0, kIdsSize = 1, kIdsAverage = 2 };

// One component: a demand-indexed vector, its statistics overall and per
// season, and the transformation applied to it (code 0, parameter missing
// when none).
struct IDSCOMP {
  std::vector<double> data;
  char type = kIdsInterval;
  IDSSTATS stats;
  std::vector<IDSSTATS> seasons;  // one entry per season when seasonality > 1
  int trnscode = 0;
  double trnsparm = 0;
  int trndcode = 0;               // always 0
  double trndparm = 0;            // always missing
};

struct IDSERIES {
  long memdef = 0;
  long anobs = 0, an = 0;        // allocated lengths: observations, demands
  INTERVAL interval;
  char align = 'B';
  int seasonality = 0;           // seasons; the season vectors exist above 1
  long nobs = 0;
  std::vector<double> timeid;    // anobs + 1: aligned time where a demand lies
  std::vector<double> series;    // anobs + 1: the demand, or the base
  long holdout = 0, back = 0;
  double base = 0;
  long ndistinct = 0;            // distinct states the base search saw
  long startobs = 0;
  double starttime = 0;
  long endobs = 0;
  double endtime = 0;
  long firstobs = 0;
  double firsttime = 0;
  long lastobs = 0;
  double lasttime = 0;
  double zero = 0;               // departures below this are no demand
  double extreme = 0;            // largest departure allowed
  long n = 0;                    // demands found
  long nsample = 0, nholdout = 0, nback = 0;  // add up to n
  std::vector<double> time;      // an + 1: time of each demand; time[n] one interval past the end
  std::vector<long> obs;         // an + 1: observation index of each demand
  std::vector<int> scodes;       // an + 1: season code of each demand, from 0
  std::vector<double> work;      // anobs + 1, scratch
  IDSCOMP intv, itrns;           // demand intervals, transformed
  IDSCOMP size, strns;           // demand sizes, transformed
  IDSCOMP adem, atrns;           // average demands, transformed
  int error = 0, warning = 0;
};

// Creates the record with vectors for anobs observations and an demands
// (0 allocates nothing yet). seasonality below 0 asks for the cycle of the
// interval (-10 when it has fewer than 2 seasons). align: its first
// character is kept. 0, -1, -10 or -99; on failure *ids is null.
int idsint(long anobs, long an, const INTERVAL* interval, const tchar* align, int seasonality,
           IDSERIES** ids) noexcept;

// Frees the record; *ids becomes null. Null is allowed.
void idstrm(IDSERIES** ids) noexcept;

// Loads a series: nobs values y with their time IDs tid (aligned here),
// season codes scodes (null: derived from the times), base (missing: found
// by idsdar), and the hold-out and back ranges at the end.
int idsset(IDSERIES* ids, long nobs, const double* y, const double* tid, const int* scodes,
           double base, long holdout, long back) noexcept;

// Transforms the three components (codes of the transformations; 10 AUTO
// takes the log when the component is positive and nothing otherwise).
int idstrn(IDSERIES* ids, int itrnscode, double itrnsparm, int strnscode, double strnsparm,
           int atrnscode, double atrnsparm) noexcept;

// Seasonal statistics of all six components. eflag: 2 fit sample,
// 1 fit sample and hold-out, other all demands; sflag 0 skips the seasons.
int idsss(IDSERIES* ids, int eflag, int sflag) noexcept;

// The average-demand series on the time grid of the series (nobs cells),
// with the base added back when bflag is non-zero.
int idsats(IDSERIES* ids, int eflag, int bflag, double* series) noexcept;

// The test number: the median demand interval over the last 100
// observations of the range chosen by eflag; missing when no demand counts.
int idsdti(IDSERIES* ids, int eflag, double* p) noexcept;

// The search for the base: the value that holds the majority of the series
// by the factor p (>= 1). work holds nobs doubles.
int idsdar(const double* y, double* work, long nobs, double p, double* base,
           long* ndistinct) noexcept;

// Messages of a code of the routines above (group 881): 0; 99 for a
// negative code without its own message; -99 for a null ids. timeid and
// variable may be null or empty, which selects the form without a name.
int idsmsg(Host& host, const IDSERIES* ids, int rc, const u_sname* timeid,
           const u_sname* variable) noexcept;

}  // namespace qvt
