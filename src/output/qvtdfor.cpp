// OUTFOR= rows: actuals, predictions, limits, errors and standard errors of
// the used range of one series and its forecasts.
#include <algorithm>

#include "output/outcols.hpp"
#include "output/qvtds.hpp"

namespace qvt {

void qvtdfor(QVTCOM* com, const FOR_OUT* fore) {
  Host& h = *com->host;
  const DsHandle ds = com->ds.outfor.fileid;
  if (!ds || !fore) return;
  auto& r = com->outfor;
  const long first = com->op.nooutall ? std::max(0L, fore->n - com->istmt.lead) : 0;
  for (long t = first; t < fore->n; ++t) {
    r.timeid = cellAt(fore->date, t);
    r.actual = cellAt(fore->actual, t);
    r.pred = cellAt(fore->predicted, t);
    r.lower = cellAt(fore->lower, t);
    r.upper = cellAt(fore->upper, t);
    r.error = cellAt(fore->residual, t);
    r.std = cellAt(fore->std, t);
    if (!putRow(h, ds)) return;
  }
}

}  // namespace qvt
