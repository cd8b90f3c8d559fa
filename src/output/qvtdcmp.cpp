// OUTCOMPONENT= rows: the smoothed level, trend and season of a smoothing
// model beside the actuals and predictions of the used range.
#include <algorithm>

#include "output/outcols.hpp"
#include "output/qvtds.hpp"
#include "output/modelnames.hpp"

namespace qvt {

void qvtdcmp(QVTCOM* com, const FOR_OUT* fore) {
  Host& h = *com->host;
  const DsHandle ds = com->ds.outcomp.fileid;
  if (!ds || !fore) return;
  auto& r = com->outcomp;
  r.transform = com->current.trnsname;
  r.model.set(modelName(com->current.modelcode));
  const long first = com->op.nooutall ? std::max(0L, fore->n - com->istmt.lead) : 0;
  for (long t = first; t < fore->n; ++t) {
    r.timeid = cellAt(fore->date, t);
    r.actual = cellAt(fore->actual, t);
    r.pred = cellAt(fore->predicted, t);
    r.level = cellAt(fore->level, t);
    r.trend = cellAt(fore->trend, t);
    r.season = cellAt(fore->season, t);
    r.error = cellAt(fore->residual, t);
    if (!putRow(h, ds)) return;
  }
}

}  // namespace qvt
