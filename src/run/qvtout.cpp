// OUT= of a step with several series: the transposed spool holds one row of
// all series per period; the filter keeps the rows that belong in OUT= and
// sets the time ID of each.
#include "run/qvtout.hpp"

#include "output/ztspool.hpp"

namespace qvt {
namespace {

int filter(void* user, long obs, int di, double* dd) {
  return qvtoutx(static_cast<QVTCOM*>(user), obs, di, dd);
}

}  // namespace

int qvtoutx(QVTCOM* com, long obs, int /*di*/, double* /*dd*/) {
  const auto& out = com->out;
  if (obs < 0 || obs >= out.tobs) return 2;  // no period of the grid: nothing more to write
  const double v = out.id[obs];
  com->id.val = v;
  if (com->op.nooutall && v <= out.last) return 1;  // history is left out
  if (v < out.first) return 1;
  if (v > out.forlast) return 2;  // every later row is beyond the forecasts too
  const INTERVAL& intv = com->istmt.intv;
  if (intv.intcode != 0) com->id.val = zintnx3(intv, v, 0, &com->istmt.align, nullptr);
  return 0;
}

void qvtout(QVTCOM* com) {
  Host& h = *com->host;
  if (!com->ds.out.fileid) return;
  if (ztoutp(h, com->ds.out.fileid, com->infile, com, com->nvars, com->ds.out.buf, filter) != 0) {
    raiseRc(*com, kRcSpool);
    hostExit(h, com->rc, 0);
  }
}

int qvtend(QVTCOM* com) { return ztterm(*com->host, com->infile, com->outfile); }

}  // namespace qvt
