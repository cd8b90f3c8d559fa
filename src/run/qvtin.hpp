// Reading a BY group and turning its raw records into one series on the
// interval grid: the time ID checks, the frame with START= and END=, the
// sizing of the arrays, accumulation, ZEROMISS= and the trend and season
// statistics of the raw records.
#pragma once

#include "run/qvtcom.hpp"

namespace qvt {

// Reads one BY group. com->error nonzero afterwards means: skip the group.
void qvtin(QVTCOM* com);

// Fills out.y for the series in in.y by ACCUMULATE= code `code`. The result
// is that of the slow path's accumulation, 0 on the fast path.
int accumulate(QVTCOM* com, int code);

// Leading and trailing zeros become missing by the current series' ZEROMISS=.
void zeromiss(QVTCOM* com);

// Trend and season statistics of the raw records of the current series.
void analysis(QVTCOM* com);

// The steps of qvtin, exposed for the tests of each check.

// Handles the time ID of the record in hand: 0 the record counts, 1 it is
// skipped (com->error then says whether the group ends).
int getid(QVTCOM* com);
// Checks the ID value of the record against its predecessor: 0 good, 1 bad.
int checkid(QVTCOM* com);
// Sizes every array of the group; arrays only grow.
void allocate(QVTCOM* com);
// Works out the frame (out.first, out.last, out.forlast, the START= and END=
// offsets) and returns its number of periods; -1 when a period can't be counted.
long noutobs(QVTCOM* com);
// Records a gap of `gap` periods.
void warn(QVTCOM* com, long gap);
// The gap and duplicate check of IDs that came out of order.
void notsorted(QVTCOM* com);
// 0 for rc not below 0; else 1020, after the time ID message for rc -1.
int handleError(QVTCOM* com, int rc);

// Width of the first column of the season statistics table for ns seasons:
// 4 up to 9999, one more for each further decade up to 10, then 20.
int seasonColumnWidth(long ns) noexcept;

}  // namespace qvt
