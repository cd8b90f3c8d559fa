// Time ID positioning: from time IDs at arbitrary dates to cells of an
// interval grid, and what is done with the cells: classification, reduction
// of several values to one, filling of missing cells, statistics by period
// and by season. Also the inference of an interval from a time ID vector.
//
// Arrays are the caller's; the routines print nothing (zinttipErr excepted,
// whose whole purpose is the message) and keep no state. Results follow the
// house rule: 0 success, positive a usable note, negative a failure, -99 an
// impossible argument.
#pragma once

#include "calendar/interval.hpp"
#include "host/host.hpp"
#include "run/missing.hpp"

namespace qvt {

// Statistics of one set of raw values (a period or a season). Counts are
// whole numbers, statistics are the missing value until set.
struct ZINT_STATS {
  long nobs = 0;   // values offered, missing ones too
  long n = 0;      // non-missing values
  long nmiss = 0;  // missing values
  long nextr = 0;  // values above the extreme limit
  double min = kMissing, max = kMissing, range = kMissing;
  double sum = kMissing, mean = kMissing;
  double uss = kMissing;  // uncorrected sum of squares
  double css = kMissing;  // corrected sum of squares
  double var = kMissing, std = kMissing;  // divisor n - 1
  double median = kMissing;
  char sumfail = 0;   // the sum overflowed
  char sum2fail = 0;  // the sums of squares overflowed
  char quantfail = 0; // the median failed
};

// Cell classes of zinttic.
enum ZintCell : char {
  kCellGap = 0,     // no observation, inside the data's span
  kCellOne = 1,     // one observation
  kCellMany = 2,    // more than one observation
  kCellBefore = 3,  // before the first observation
  kCellAfter = 4,   // after the last observation
};

// Positions: pos[i] is the number of intervals from base's interval to the
// aligned date of tid[i]. Results: 1 ascending, 2 ascending with ties, 3 not
// in order (a nonzero `sort` is returned instead of looking), -1 a missing
// ID, -2 out of range, -3 a position beyond a long, -4 beyond 2^53, -5 a
// custom interval that can't be used, -99 a null tid or pos with time IDs.
int zinttip(const INTERVAL& intv, const tchar* align, const double* tid, long ntid, double base,
            int sort, long* pos, long* maxpos, double* first, double* last);

// Turns a negative zinttip result into its message (group 882); 0 for a
// result not below 0, else 1020. The long form of the message needs all of
// variable, lib and mem; a null one gives the short form.
int zinttipErr(Host& host, const u_sname* variable, const char* lib, const u_sname* mem,
               const INTERVAL& interval, int rc);

// Classifies cells (flags come in zeroed, nobs cells); ndups counts the
// surplus observations. -99 for a position outside 0..nobs-1, -1 with
// duplicates, 1 with gaps, 0 otherwise.
int zinttic(const long* pos, long ntid, long nobs, char* flags, long* ndups, long* ngaps);

// Accumulates observations into T cells from position `start` by ACCUMULATE=
// code `dup` (0 NONE .. 13 NMISS); norm[t] is the cell of position start + t.
// With several variables, colorder set keeps each variable's observations
// (and cells) together: data[j * ntid + i], norm[j * T + t]; without it the
// variables of one observation stand together: data[i * nvars + j],
// norm[t * nvars + j]. 0; -1 out of memory; -2 an overflow (refused, not
// rounded); -99 a bad argument.
int zinttim(const long* pos, long ntid, const double* data, int nvars, long start, long T,
            int colorder, int dup, double* norm);

// Puts observation `obs` (at data[obs * nvars + j], cells norm[c * nvars + j])
// into the cell of position pos: the per-observation step of zinttim. sqr
// and npos may be null when the code needs no sum of squares or count.
// 0; 1 when a missing value was skipped; -1 an overflow.
int zinttia(long pos, long obs, const double* data, int nvars, long start, long T, int colorder,
            int dup, double* norm, double* sqr, long* npos);

// Gathers the values of variable j at position t into vec; their count, or -99.
long getvec(const long* pos, long ntid, const double* data, int nvars, int colorder, int j, long t,
            double* vec);

// Fills missing cells by SETMISSING= code; `out` may be `y`. valueset and
// numset may be null.
int zinttis(const double* y, long T, int setmiss, double setvalue, double* out, double* valueset,
            long* numset);

// Median of the non-missing values of y (copied to work when work is given).
int zinttms(long n, double* y, double* work, double* m);

// Statistics by time period: stats[t] for t in start..start+T-1. work has
// room for 2 * nobs values.
long zinttts(const double* x, const long* pos, long nobs, long start, long T, int notsorted,
             double* work, ZINT_STATS* stats);

// Statistics by season: stats[s] for s in 0..nseasons-1.
int zinttss(const double* x, const long* pos, long nobs, long start, long T, int nseasons,
            const int* scodes, double* work, ZINT_STATS* stats);

// Joins n records into one.
int zinttgs(const ZINT_STATS* local, long n, double median, ZINT_STATS* global);

// Statistics of one set of values.
int getstats(double* x, long nobs, double* work, ZINT_STATS* stats);

// Candidate intervals of a time ID vector, best first, up to nintv.
int zinttiu(const double* tid, long ntid, int dup, int nintv, INTERVAL* intv);
// The same for an ascending vector.
int zinttig(const double* tid, long ntid, int dup, int nintv, INTERVAL* intv);

// The interval of three consecutive time IDs; info may be null.
int zintget(double d1, double d2, double d3, INTERVAL* interval, INTINFO* info);

}  // namespace qvt
