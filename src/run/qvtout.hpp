// The OUT= data set of a step with several series: read back from the
// transposed spool, one row per period.
#pragma once

#include "run/qvtcom.hpp"

namespace qvt {

// Writes the OUT= rows of the BY group from com->infile.
void qvtout(QVTCOM* com);
// The row filter of qvtout: 0 write, 1 skip, 2 stop.
int qvtoutx(QVTCOM* com, long obs, int di, double* dd);
// Closes both spools.
int qvtend(QVTCOM* com);

}  // namespace qvt
