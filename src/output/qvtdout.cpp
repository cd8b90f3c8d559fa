// OUT= rows of a step with one series: the series as completed by the run,
// with its forecasts, one row per period of the frame.
#include <algorithm>

#include "output/outcols.hpp"
#include "output/qvtds.hpp"

namespace qvt {

void qvtdout(QVTCOM* com) {
  Host& h = *com->host;
  const DsHandle ds = com->ds.out.fileid;
  if (!ds || !com->ds.out.buf || !com->out.id || !com->out.y) return;
  const long last = com->out.tobs - com->istmt.back;  // rows: periods before BACK=
  // NOOUTALL keeps the LEAD forecast rows only.
  const long first = com->op.nooutall ? std::max(0L, last - com->istmt.lead) : 0;
  const INTERVAL& intv = com->istmt.intv;
  for (long t = first; t < last; ++t) {
    double v = com->out.id[t];
    // The grid holds beginnings of intervals; ALIGN= says where in its
    // interval the written ID stands.
    if (intv.intcode != 0) v = zintnx3(intv, v, 0, &com->istmt.align, nullptr);
    com->id.val = v;
    com->ds.out.buf[0] = com->out.y[t];
    if (!putRow(h, ds)) return;
  }
}

}  // namespace qvt
