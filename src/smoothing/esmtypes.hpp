// Records of the exponential smoothing family: one fitted model of one
// series (WINMODEL) and its parts, the smoothing state, the weight bounds,
// the caller's forecast vectors, the method codes, the return codes and the
// numeric guards that every kernel set shares.
//
// A WINMODEL owns every array it holds except the series itself (ts.x),
// which its caller keeps alive. Owned arrays are std::vector, so they are
// released on every way out without a separate free routine.
#pragma once

#include <cstdint>
#include <vector>

#include "calendar/interval.hpp"
#include "run/strings.hpp"

namespace qvt {

// ---------------------------------------------------------------- codes

// Model method codes (spec.code, parms.method). 8, 9, 10 are selection
// keywords and never reach a model record.
enum EsmMethod : int {
  kEsmNone = 0,
  kEsmSimple = 1,
  kEsmLinear = 2,
  kEsmDampTrend = 3,
  kEsmDouble = 4,
  kEsmSeasonal = 5,
  kEsmAddWinters = 6,
  kEsmWinters = 7,
  kEsmMultSeasonal = 11,
};

// Return codes of the family. Positive codes leave results usable.
enum EsmRc : int {
  kEsmOk = 0,
  kEsmNotConverged = 90,    // estimator stopped early; weights usable
  kEsmNoMemSelect = -1,     // out of memory inside automatic selection / esmsum
  kEsmTooFew = -2,          // too few usable observations, or no error variance
  kEsmNonPositive = -7,     // multiplicative model on a non-positive value
  kEsmNoStart = -8,         // the grid search found no usable start
  kEsmDiverged = -9,        // a numeric guard fired
  kEsmDivide = -92,         // a guarded division failed
  kEsmNoMem = -100,         // out of memory
  kEsmBadArg = -999,        // invalid argument, unknown method, bad weight
};

// ---------------------------------------------------------------- guards

// A weight, level or trend of larger magnitude is divergence.
inline constexpr double kEsmStateLimit = 1.3407807929942597e+152;
// A one-step prediction above xscale times this is divergence (one-sided).
inline constexpr double kEsmScaleFactor = 10000.0;
// An error, a derivative or a cross-product of larger magnitude is divergence;
// also the limit above which an observation counts as extreme.
inline constexpr double kEsmOverflow = 1.3407807929943e+154;
// A sum of squares that has passed this before the next term is divergence.
inline constexpr double kEsmSumLimit = 8.988465674311578e+307;
// Below this a variance, a weight or a perturbation counts as zero.
inline constexpr double kEsmTiny = 1.491668147e-154;

// Default weight bounds and the relative tolerance of a bound.
inline constexpr double kEsmLowerDefault = 0.001;
inline constexpr double kEsmUpperDefault = 0.999;
inline constexpr double kEsmTolFactor = 1.110223024625157e-13;

// ---------------------------------------------------------------- records

struct DESCSTATS {
  double min = 0;
  double max = 0;
  double mean = 0;
  double norm = 0;  // max(|min|, |max|) over the usable observations
};

// The series and what is known of it.
struct TSERIES {
  const double* x = nullptr;  // the caller's series, not owned
  long nobs = 0;
  long nnmss = 0;             // usable observations
  long nmiss = 0;             // flagged: missing and extreme together
  long nextr = 0;             // extreme values among the flagged
  int nseasons = 0;           // 0 when the model has no seasonal factors
  double xextr = 0;           // the extreme limit
  std::vector<int> scodes;    // season code of each observation (seasonal models)
  int nstart = 0;             // season code of the first observation
  std::vector<char> misflg;   // 1: treated as missing
  u_sname name;
  u_slabel label;
  u_sname timeid;
  DESCSTATS descstats;
  INTERVAL interval;
};

struct MODELSPEC {
  u_slabel label;
  int type = 0;
  int code = 0;        // the method code
  int transform = 0;
  char trended = 0;
  char seasonal = 0;
  long nbackcast = 0;  // 0: start values from the whole series, else from a tail
};

// Statistics-of-fit slot; the driver leaves it alone.
struct MODELSTATS {
  std::vector<double> res;
  long nobs = 0, nnmss = 0, nmiss = 0, npmss = 0;
  int nparms = 0;
  double mse = 0, rmse = 0, mape = 0, mae = 0, Rsq = 0, adj_Rsq = 0, a_adj_Rsq = 0, rw_Rsq = 0,
         aic = 0, sbic = 0, apc = 0, maxerr = 0, minerr = 0, maxprct = 0, minprct = 0,
         meanerr = 0, mpe = 0;
};

// Weights to use: a missing entry means the estimate in pest.
struct MODELPARMS {
  int method = 0;
  int nparms = 0;
  std::vector<double> parms;
};

// Weights as estimated, with their statistics; missing until estimated.
struct MODELPEST {
  int method = 0;
  int nparms = 0;
  // stderr_ carries a trailing underscore because stderr is a macro of <cstdio>.
  std::vector<double> parms, stderr_, tvals, pvalue;
  std::vector<long> df;
  double mse = 0;  // the estimator's error variance
};

struct TIMERANGE {
  double stdate = 0, enddate = 0;
  long nobs = 0, start = 0, end = 0;  // a count and two inclusive indices
};

// Host data set handle of a stand-alone forecast; nothing in the engine
// opens one. When fileid is set the estimator appends the grid result to
// strptr.
struct DATASET {
  struct {
    void* fileid = nullptr;
  } xoparm;
  void* xvp = nullptr;
  std::vector<double>* strptr = nullptr;
  u_sname dsname;
  u_sname fname;
  u_slabel label;
};

// Running state of a recursion.
struct SMOOTHVALS {
  double level = 0;
  double trend = 0;
  std::vector<double> sfactor;  // nseasons seasonal factors
  double xhat = 0;              // last one-step prediction
};

// Bounds of the weights: {lower, upper, tolerance} each, a held flag each
// (nonzero: held at its lower bound), and whether bounds and the model's
// stability test apply.
struct WGTBNDS {
  double wlevel[3] = {}, wtrend[3] = {}, wseason[3] = {}, wdamp[3] = {};
  char wlevflg = 0, wtreflg = 0, wseaflg = 0, wdamflg = 0;
  char bounds = 0;
  char stability = 0;
};

struct ESMOPT {
  char numeric = 0;   // nonzero: also form the numeric derivative at each pass
  char relative = 0;  // 1: that derivative perturbs relative to the weight
};

// What the numeric derivative check found at the last derivative pass:
// the analytic gradient of the mean squared error and the numeric one.
struct ESMDERCHECK {
  int done = 0;
  double mse = 0;
  double weights[3] = {};
  double derived[3] = {};
  double numerical[3] = {};
};

// One smoothing model of one series.
struct WINMODEL {
  TSERIES ts;
  MODELSPEC spec;
  MODELSTATS stats;
  MODELPARMS parms;
  MODELPEST pest;
  TIMERANGE datarange;
  TIMERANGE evalrange;
  TIMERANGE fitrange;
  DATASET out;
  DATASET outest;
  SMOOTHVALS smooth;     // scratch of the estimator
  SMOOTHVALS svi;        // start values at the end of the series
  SMOOTHVALS startvals;  // state at the beginning, as the last backward pass left it
  WGTBNDS wbnds;
  int additive = 0;
  double cl = 0;
  int lead = 0;
  char align = 'B';
  double* strptr = nullptr;
  void* pool = nullptr;
  ESMOPT opt;
  ESMDERCHECK dercheck;  // filled only when opt.numeric is set
};

// The caller's view of a forecast: the caller allocates the vectors it wants
// (n rows each: series length plus lead) and leaves the others null.
struct FOR_OUT {
  double alpha = 0;
  long n = 0;
  double* date = nullptr;
  double* actual = nullptr;
  double* predicted = nullptr;
  double* residual = nullptr;  // actual minus predicted
  double* upper = nullptr;
  double* lower = nullptr;
  double* std = nullptr;
  double* level = nullptr;
  double* trend = nullptr;
  double* season = nullptr;
};

// Columns of a forecast row written by the prediction kernels.
enum EsmRowCol : int {
  kRowActual = 0,
  kRowPredicted = 1,
  kRowUpper = 2,
  kRowLower = 3,
  kRowError = 4,  // predicted minus actual: the opposite of FOR_OUT.residual
  kRowStd = 5,
  kRowLevel = 6,
};

}  // namespace qvt
