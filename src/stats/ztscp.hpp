// Cross-series performance: the percent, symmetric percent and relative
// errors of the forecasts of the BACK= range, gathered series by series.
//
// The collector keeps running sums only: a series' errors enter once into
// `indiv` (all its horizons together) and into record t of the BY group's
// `global` level (horizon t + 1); closing the group merges `global` into the
// run's `univ`. Memory thus depends on the number of horizons and series
// variables, never on the number of series.
//
// In `local`, `global` and `univ`, record t (0 .. lead - 1) belongs to
// horizon t + 1 and record `lead` to all horizons together.
//
// Results: 0 done; 1 (ztscpea) a missing error, not counted; 2 (ztscpes) an
// empty record, its results missing; 3 (ztscpes) the geometric mean would
// overflow, (ztscpa) some ratio could not be formed and is left out, as
// ztssfe reports it; -1 no memory; -2 nvars < 1; -3 lead < 1; -99 bad arguments.
// A negative result of the fit-statistics layer (ztssfe, ztssfcl, ztssfa)
// is passed on.
#pragma once

#include <vector>

namespace qvt {

// Error kinds of the collector: the codes of the same kinds in ztssfe, and
// the limit coverage.
inline constexpr int kCpPct = 5;
inline constexpr int kCpSym = 9;
inline constexpr int kCpRel = 11;
inline constexpr int kCpCl = 13;

// Statistics that ztscpv reads (acc).
inline constexpr int kCpMin = 1;
inline constexpr int kCpMax = 2;
inline constexpr int kCpSum = 3;
inline constexpr int kCpMean = 4;
inline constexpr int kCpAMean = 5;
inline constexpr int kCpMedian = 6;
inline constexpr int kCpGm = 7;
inline constexpr int kCpLower = 8;   // lower / n
inline constexpr int kCpUpper = 9;   // upper / n
inline constexpr int kCpTotal = 10;  // total / n

// What is collected; non-zero is on. `leads`, `min`, `max`, `mean` and
// `median` are carried but read by no routine.
struct CPSPEC {
  char specified = 0, leads = 0, indiv = 0, local = 0, global = 0, univ = 0, pct = 0, sym = 0,
       rel = 0, cl = 0, min = 0, max = 0, mean = 0, amean = 0, median = 0;
};

// The running record of one error type.
struct ZTS_CP_STATS {
  long n = 0;
  double min = 0, max = 0, sum = 0, asum = 0, alsum = 0;
  double mean = 0, amean = 0, median = 0, gm = 0;
};

// Limit coverage: actuals tested, below the lower limit, above the upper,
// and the two together.
struct ZTS_CP_CL {
  long n = 0, lower = 0, upper = 0, total = 0;
};

struct ZTS_CP_JSTATS {
  ZTS_CP_STATS pct, sym, rel;
  ZTS_CP_CL cl;
};

// The collector. The levels are empty vectors when not collected.
struct ZTS_CP {
  long memdef = 0;
  long lead = 0;
  long nvars = 0;
  CPSPEC spec;
  ZTS_CP_JSTATS indiv;
  std::vector<std::vector<ZTS_CP_JSTATS>> local;  // nvars x (lead + 1)
  std::vector<ZTS_CP_JSTATS> global, univ;        // lead + 1 each
  // Error and absolute error vectors, lead cells each, of the last series;
  // an absolute vector exists only with the amean flag, each only when its type
  // is on.
  std::vector<double> pe, ape, se, ase, re, are;
  std::vector<double> work;  // lead cells, work of the median
};

// Creates the collector for nvars series variables and lead horizons. A
// null CPSPEC, or one with `specified` 0, collects everything but the unused
// `median` flag. *cp is null on any failure.
int ztscpi(long nvars, long lead, const CPSPEC* spec, ZTS_CP** cp) noexcept;
// Frees the collector; *cp becomes null. Null is allowed.
void ztscpt(ZTS_CP** cp) noexcept;
// Clears `indiv` always and each level whose flag is non-zero.
int ztscpr(ZTS_CP* cp, int local, int global, int univ) noexcept;
// Adds the errors of one series: the last min(T, lead) elements of actual,
// predict, lower and upper. holdout is the base of the relative errors'
// random walk (see ztssfe). index is the series variable of the `local`
// level, -1 for none. lower and upper may be null: no coverage is counted.
int ztscpa(ZTS_CP* cp, double holdout, const double* actual, const double* predict,
           const double* lower, const double* upper, long T, long index) noexcept;
// Closes `indiv`: its results, and the median absolute error of the series.
int ztscpci(ZTS_CP* cp) noexcept;
// Closes the BY group's `global` level and merges it into `univ`.
int ztscpcg(ZTS_CP* cp) noexcept;
// Closes the run's `univ` level.
int ztscpcu(ZTS_CP* cp) noexcept;
// Reads statistic acc of error type `type` from nstats consecutive records
// into v[0 .. nstats - 1]. The coverage ratios are missing where n < 1.
int ztscpv(const ZTS_CP_JSTATS* jstats, long nstats, int type, int acc, double* v) noexcept;

// One running record: add an error (rc 1 when it is missing), compute the
// results, set the initial state, and add a record into another.
int ztscpea(double error, double aerror, ZTS_CP_STATS* stats) noexcept;
int ztscpes(ZTS_CP_STATS* stats) noexcept;
int ztscpei(ZTS_CP_STATS* stats) noexcept;
int ztscpem(const ZTS_CP_STATS* stats, ZTS_CP_STATS* global) noexcept;

}  // namespace qvt
