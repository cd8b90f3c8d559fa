// From raw records to one value per period: accumulation, ZEROMISS= and the
// trend and season statistics of the raw records.
#include <cmath>

#include "calendar/zintti.hpp"
#include "output/qvtds.hpp"
#include "report/qvto.hpp"
#include "run/qvtin.hpp"

namespace qvt {
namespace {

// A value at most this large in magnitude counts as a zero for ZEROMISS=.
constexpr double kZeroTolerance = 1.491668147e-154;

bool isZero(double x) { return std::fabs(x) <= kZeroTolerance; }

}  // namespace

int accumulate(QVTCOM* com, int code) {
  const auto& in = com->in;
  auto& out = com->out;
  vzfdl(kMissing, out.y, static_cast<std::size_t>(out.tobs));

  // Records out of order, two in one period or a period without a record:
  // every record has to be placed by its position.
  if (com->notsorted || com->ngaps > 0 || com->ndups > 0)
    return zinttim(in.pos, in.nobs, in.y, 1, 0, out.nobs, 1, code, out.y);

  // Fast path: record i is period soffset + i, one record a period, so a
  // statistic of the period is a statistic of one value. The cells that
  // START= and END= add stay missing (filled above).
  const long T = out.nobs;
  const long off = out.soffset > 0 ? out.soffset : 0;
  for (long i = 0; i < in.nobs && off + i < T; ++i) {
    const double c = in.y[i];
    const bool miss = wzmis(c) != 0;
    double v = c;
    switch (code) {
      case kAccStd: v = kMissing; break;                 // needs two values
      case kAccUss: v = miss ? kMissing : c * c; break;
      case kAccCss: v = 0; break;                        // a value less its own mean
      case kAccNobs: v = 1; break;
      case kAccN: v = miss ? 0 : 1; break;
      case kAccNmiss: v = miss ? 1 : 0; break;
      default: break;  // NONE to MEDIAN, and unknown codes: the value itself
    }
    out.y[off + i] = v;
  }
  return 0;
}

void zeromiss(QVTCOM* com) {
  const VAR* var = com->current.varptr;
  if (!var || !var->fstmt) return;
  const int code = var->fstmt->zeromiss.code;
  if (code == kZeroNone) return;
  double* y = com->out.y;
  const long T = com->out.nobs;

  long f = 0;
  while (f < T && (wzmis(y[f]) || isZero(y[f]))) ++f;
  if (f == T) return;  // a series of zeros stays one
  long l = T - 1;
  while (l > f && (wzmis(y[l]) || isZero(y[l]))) --l;
  if (l == 0) return;

  if (code == kZeroLeft || code == kZeroBoth)
    for (long t = 0; t < f; ++t) y[t] = kMissing;
  if (code == kZeroRight || code == kZeroBoth)
    for (long t = l + 1; t < T; ++t) y[t] = kMissing;
}

void analysis(QVTCOM* com) {
  auto& tr = com->trend;
  const auto& in = com->in;
  const long T = com->out.nobs;
  if (tr.request == 2 || tr.request == 3) {
    tr.nt = T;
    zinttts(in.y, in.pos, in.nobs, 0, T, com->notsorted, tr.work, tr.stats);
    if (com->ds.outtrend.fileid) qvtdtre(com);
    if (com->print.trends) qvtotre(com);
  }
  if (tr.ns > 1 && (tr.request == 1 || tr.request == 3)) {
    zinttss(in.y, in.pos, in.nobs, 0, T, tr.ns, tr.scodes, tr.work, tr.stats);
    if (com->ds.outseason.fileid) qvtdsea(com);
    if (com->print.seasons) qvtosea(com);
  }
}

int seasonColumnWidth(long ns) noexcept {
  int w = 4;
  long limit = 9999;
  while (w < 10) {
    if (ns <= limit) return w;
    ++w;
    limit = limit * 10 + 9;
  }
  return ns <= limit ? 10 : 20;
}

}  // namespace qvt
