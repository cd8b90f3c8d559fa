// The run-wide common record QVTCOM and the records it is made of.
//
// One QVTCOM exists per procedure step. The entry routine value-initialises
// it (every number 0, every pointer null, every name empty) and hands its
// address to every procedure-level routine; nothing below the statement
// readers looks at a statement record again. Arrays hang off it from the
// three pools: `cpool` for what lives the whole run, `tpool` for the input
// vectors of a BY group, `dpool` for output vectors. Arrays of tpool and
// dpool grow between BY groups and are never shrunk.
//
// Widths follow the values: char an 8-bit flag or code, int 32 bits, long
// 64 bits.
#pragma once

#include <cstdint>

#include "calendar/interval.hpp"
#include "calendar/zintti.hpp"
#include "host/host.hpp"
#include "intermittent/idmspec.hpp"
#include "run/missing.hpp"
#include "run/strings.hpp"
#include "stats/sfstats.hpp"
#include "stats/transform.hpp"

namespace qvt {

// ---------------------------------------------------------------------------
// Codes of the run.

// Run return codes; QVTCOM.rc only grows (raiseRc).
enum RunRc : int {
  kRcOk = 0,
  kRcWarning = 4,
  kRcDataBy = 108,      // data error ending one BY group (step with BY)
  kRcMemoryBy = 116,    // out of memory in one BY group (step with BY)
  kRcData = 1008,       // data error, step without BY
  kRcInputUnusable = 1012,
  kRcMemory = 1016,     // out of memory, step without BY
  kRcSpool = 1020,
  kRcStatements = 2000,
  kRcStartEnd = 3000,   // START= and END= contradict each other
};

// Status of a series, in the summary output.
enum SeriesStatus : int {
  kStatusOk = 0,
  kStatusNoData = 3000,     // no usable observations, or the selection failed
  kStatusTransform = 4000,
  kStatusEstimation = 5000,
  kStatusForecast = 6000,
  kStatusBackTransform = 7000,
};

// Model codes.
enum ModelCode : int {
  kModelNone = 0,
  kModelSimple = 1,
  kModelLinear = 2,
  kModelDampTrend = 3,
  kModelDouble = 4,
  kModelSeasonal = 5,
  kModelAddWinters = 6,
  kModelWinters = 7,
  kModelBest = 8,
  kModelBestN = 9,
  kModelBestS = 10,
  kModelMultSeasonal = 11,
  kModelCroston = 20,
  kModelBestAll = 50,
};

// USE= codes.
enum UseCode : int { kUseNone = 0, kUsePredict = 1, kUseLower = 2, kUseUpper = 3 };

// ACCUMULATE= codes.
enum AccCode : int {
  kAccNone = 0, kAccTotal = 1, kAccAverage = 2, kAccFirst = 3, kAccLast = 4, kAccMinimum = 5,
  kAccMaximum = 6, kAccMedian = 7, kAccStd = 8, kAccUss = 9, kAccCss = 10, kAccNobs = 11,
  kAccN = 12, kAccNmiss = 13,
};

// SETMISSING= codes.
enum SetMissCode : int {
  kSetMissMissing = 0, kSetMissAverage = 2, kSetMissFirst = 3, kSetMissLast = 4,
  kSetMissMinimum = 5, kSetMissMaximum = 6, kSetMissMedian = 7, kSetMissPrevious = 9,
  kSetMissNext = 10, kSetMissValue = 100,
};

// ZEROMISS= codes.
enum ZeroMissCode : int { kZeroNone = 0, kZeroLeft = 1, kZeroRight = 2, kZeroBoth = 3 };

// Message groups.
inline constexpr int kMsgProc = 743;     // the procedure's own messages and labels
inline constexpr int kMsgRunInfo = 881;  // run information, intermittent models
inline constexpr int kMsgTimeId = 882;   // time ID positioning
inline constexpr int kMsgLeadLimit = 773;

// Limits of the input.
inline constexpr double kLargestValue = 1.3407807929942597e+152;  // larger |x| becomes missing
inline constexpr long kLargestCount = 1125899906842624L;          // 2^50
inline constexpr double kLargestDistance = 9007199254740992.0;    // 2^53

// ---------------------------------------------------------------------------
// Records.

// A coded option: its short name, its label, its code, and whether it was written.
struct CodedOpt {
  u_sname name;
  u_slabel label;
  int code = 0;
  char specified = 0;
};

// A coded option that carries a value too (SETMISSING=, ZEROMISS=).
struct CodedValueOpt {
  u_sname name;
  u_slabel label;
  int code = 0;
  double value = 0;
  char specified = 0;
};

// The ID statement and the time frame.
struct IDSTMT {
  char specified = 0;
  u_sname var;        // stays empty: the ID variable stands in QVTCOM.id
  u_sname interval;   // the interval's text
  tchar align = 'B';  // 'B', 'M' or 'E'
  char notsorted = 0;
  int seasonality = 0;  // cycle length; 0 when it depends on the date
  int scode53 = 0;      // -1 when weeks of 52 seasons are requested
  int lead = 0;
  int startsum = 0;
  int back = 0;
  char nocheck = 0;
  double start = 0, end = 0;            // START=, END=, or missing
  char startunits = 0, endunits = 0;    // 'd' date, 's' time or datetime, 0 absent
  char time = 0;                        // 1 when intv.units is 's'
  CodedOpt acc;                         // ACCUMULATE=
  CodedValueOpt setmiss;                // SETMISSING=
  CodedValueOpt zeromiss;               // ZEROMISS=
  INTERVAL intv;
  INTINFO info;                         // not filled by the statements
  int nseasons = 0;                     // cycle length for sizing arrays and tests
  u_sname format;
  std::int16_t fmtw1 = 0, fmtw2 = 0;
  long fcode = 0;
  char userfmt = 0;                     // FORMAT= gave it
  u_text<40> fmtstr;                    // the format as text
};

// One FORECAST statement.
struct FORSTMT {
  CodedOpt model;      // MODEL=, default BEST
  CodedOpt select;     // CRITERION=, default RMSE
  CodedOpt use;        // USE=, default PREDICT
  struct {
    u_sname name;
    u_slabel label;
    int code = 0;
    double parm = 0;
    char median = 0;
    char specified = 0;
  } transform;         // TRANSFORM= and MEDIAN
  double alpha = 0.05;
  long holdout = 0;
  double holdoutpct = 0;  // HOLDOUTPCT= / 100
  struct {
    double siglevel = 0.01;
    char none = 0;
  } seasontest;
  CodedOpt acc;
  CodedValueOpt setmiss;
  CodedValueOpt zeromiss;
  char replacemissing = 0, replaceback = 0;
  double intermittent = 2.0;
  long nbackcast = -1;
};

// One series to forecast.
struct VAR {
  int dsvarno = 0;  // 1-based variable number in the input
  u_sname name;
  u_slabel label;
  long start = 0, stop = 0;  // indices of the first and last non-missing record
  double first = 0, last = 0;  // their time IDs; missing when there is none
  long nin = 0;   // records between them, both included
  long n = 0;     // non-missing records
  long nmiss = 0; // nin - n
  FORSTMT* fstmt = nullptr;
};

// One data set of the run. A null fileid means it wasn't asked for.
struct DATASETS {
  DsHandle fileid;
  u_text<8> lib;
  u_sname mem;
  u_slabel label, display;
  double* buf = nullptr;  // row buffer of `data` and `out`, nvars cells
};

struct ZTS_CP;  // the cross-series performance collector

// The run-wide record.
struct QVTCOM {
  Host* host = nullptr;  // the host of this step; every host operation goes through it
  char procesm = 0;
  int qvtmsg = kMsgProc;
  IDSTMT istmt;
  FORSTMT* fstmt = nullptr;  // nfor statements, in cpool
  int nfor = 0;
  double base = 0;           // IDM BASE=; missing for AUTO
  IDMSPEC idmspec;           // the IDM statement, or the defaults
  // The handles of the printing layer join this record with the printed
  // tables.

  struct {
    char nooutall = 0, sortnames = 0, debug = 0, debugd = 0, debugx = 0;
  } op;
  struct {
    char all = 0, descstats = 0, summary = 0, estimates = 0, states = 0, forecasts = 0,
         statistics = 0, trends = 0, seasons = 0, performance = 0, performancesummary = 0,
         performanceoverall = 0, summaryonly = 0, overallonly = 0, details = 0, internal = 0,
         none = 0;
  } print;
  struct {
    char all = 0, basic = 0, errors = 0, acf = 0, pacf = 0, iacf = 0, wn = 0, corr = 0,
         periodogram = 0, spectrum = 0, models = 0, levels = 0, trends = 0, seasons = 0,
         modelforecasts = 0, forecasts = 0, forecastsonly = 0, none = 0, graphics_on = 0;
  } plot;

  long memdef = 0;
  PoolHandle cpool, tpool, dpool;

  struct {
    DATASETS data, out, outest, outfor, outcomp, outsum, outstat, outtrend, outseason, outprocinfo;
  } ds;
  SpoolHandle infile, outfile;  // used only when nvars is at least 2

  struct {
    long start = 0;  // records with a missing ID before the first usable one
    u_sname name;
    u_slabel label;
    int dsvarno = 0;  // 0 without ID statement
    long fcode = 99;
    std::string format;  // the format of the variable as the host names it
    double val = 0;
    double prev = 0;
  } id;

  struct {
    double* id = nullptr;
    long* pos = nullptr;
    char* flags = nullptr;
    double* y = nullptr;
    long nobs = 0, tobs = 0, oldnobs = 0, n = 0;
    double first = 0, last = 0;
    long enobs = 0, obsa = 0;
  } in;

  int rid2n = 0;
  long obsno = 0, obsfirst = 0, obslast = 0;
  long nbigval = 0, ndups = 0, ngaps = 0;
  char notsorted = 0;
  long maxgap = 0, nwarn = 0;

  struct {
    double* id = nullptr;
    double* y = nullptr;
    long nobs = 0, tobs = 0;
    double first = 0, last = 0, forlast = 0;
    long obsa = 0;
    long soffset = 0, eoffset = 0;
    double *actual = nullptr, *predict = nullptr, *lower = nullptr, *upper = nullptr,
           *error = nullptr, *std = nullptr, *level = nullptr, *trend = nullptr,
           *season = nullptr;
    double* intwgts = nullptr;
  } out;

  struct {
    char request = 0;  // 0 none, 1 seasons, 2 trend, 3 both
    int* scodes = nullptr;
    long nia = 0, noa = 0, nsa = 0, nt = 0;
    int ns = 0;
    double* work = nullptr;
    ZINT_STATS* stats = nullptr;
  } trend;

  struct {
    VAR* varptr = nullptr;
    u_sname var;
    u_slabel varlabel;
    double status = 0;
    double* y = nullptr;
    double* x = nullptr;
    int modelcode = 0, trnscode = 0;
    double trnsparm = 0;
    u_sname trnsname;
    u_slabel trns;
    long holdout = 0;
    double first = 0, last = 0;
    long start = 0, nobs = 0, lead = 0;
  } current;

  struct {
    u_sname transform, model, parm;
    double pest = 0, stderr_ = 0, tvalue = 0, pvalue = 0;  // stderr is a macro name in C
  } outest;
  struct {
    double level = 0, trend = 0;
    double* seasons = nullptr;
    double intvlevel = 0, intvtrend = 0, sizelevel = 0, sizetrend = 0, ademlevel = 0,
           ademtrend = 0;
  } outstates;
  struct {
    double timeid = 0, actual = 0, pred = 0, lower = 0, upper = 0, error = 0, std = 0;
  } outfor;
  struct {
    u_sname transform, model;
    double timeid = 0, actual = 0, pred = 0, level = 0, trend = 0, season = 0, error = 0;
  } outcomp;
  struct {
    int maxlen = 0;
    double* forlead = nullptr;
    SUMMSTATS stats;
    double nobs = 0, n = 0, nmiss = 0, pred = 0, lower = 0, upper = 0, std = 0;
  } outsum;
  struct {
    u_sname region, stat;
    u_slabel label;
    double value = 0;
    SF_STATS stats;
    double dfe = 0, n = 0, nobs = 0, nmissa = 0, nmissp = 0, nparms = 0;
  } outstat;
  struct {
    double timeid = 0, season = 0, nobs = 0, n = 0, nmiss = 0;
    ZINT_STATS stats;
  } outtrend;
  struct {
    double scode = 0, nobs = 0, n = 0, nmiss = 0;
    ZINT_STATS stats;
  } outseason;
  struct {
    double* forback = nullptr;
    double minimum = 0, maximum = 0, mean = 0, amean = 0, median = 0, gm = 0, cumulative = 0;
    ZTS_CP* cp = nullptr;
  } outcps;

  int nvars = 0;
  VAR* vars = nullptr;
  int nby = 0;
  int* bylist = nullptr;  // BY variables' numbers in the input, nby of them
  char* bydesc = nullptr; // 1 for a DESCENDING BY variable
  char bynotsorted = 0;   // NOTSORTED in the BY statement

  u_slabel templateprefix;
  // Output groups open on the host: a series' ("Variable") and, inside it
  // while its error plots are drawn, that of its prediction errors.
  bool grp = false, grpe = false;
  struct {
    double alpha = 0.5;
    int meanAdj = 0;
  } spectrum;
  long maxerror = 25;
  struct {
    long series = 0, requested = 0, failures = 0;
  } counts;
  int error = 0;
  int rc = 0;
};

// rc only grows.
inline void raiseRc(QVTCOM& com, int code) noexcept {
  if (code > com.rc) com.rc = code;
}
// The data error code: the smaller with a BY statement, the larger without.
inline int dataErrorRc(const QVTCOM& com) noexcept { return com.nby != 0 ? kRcDataBy : kRcData; }
inline int memoryRc(const QVTCOM& com) noexcept { return com.nby != 0 ? kRcMemoryBy : kRcMemory; }

// A zero-filled array of n elements from a pool; null when the pool can't
// give it (the shortfall is then in the host's deficit).
template <class T>
T* poolArray(QVTCOM& com, PoolHandle pool, long n) {
  if (n <= 0) return nullptr;
  return static_cast<T*>(hostPoolAlloc(*com.host, pool, static_cast<std::size_t>(n) * sizeof(T)));
}

}  // namespace qvt
