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

}  // namespace qvt
