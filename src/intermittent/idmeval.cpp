// Statistics of fit of an intermittent model, by demand: either the average
// demand per period against its forecast, or the demand sizes against what
// the forecast rate accumulates over each interval (size plus stock).
#include "intermittent/idmodel.hpp"

#include "intermittent/idmdetail.hpp"
#include "stats/fitstats.hpp"

namespace qvt {

int idmeval(IDMODEL* idm, int sflag, int vflag, SF_STATS* stats) noexcept {
  if (idm == nullptr || stats == nullptr) return kIdmBadArg;
  IDMODEL& m = *idm;
  if (m.ids == nullptr || m.results.actual == nullptr) return m.error = kIdmNoSeries;
  // Demand 0 has no complete interval, so a fit range starts at demand 1
  // and compares with no random walk base; a later range compares with the
  // demand just before it.
  long start = 1, len = m.nsample - 1, k = m.totparms;
  bool base = false;
  if (vflag == 1) {
    len = m.nsample - 1 + m.nholdout;
  } else if (vflag == 2) {
    start = m.nsample + m.nholdout;
    len = m.nback;
    k = 0;
    base = true;
  } else if (vflag == 3) {
    start = m.nsample;
    len = m.nholdout;
    k = 0;
    base = true;
  }
  const double* actual = m.results.actual;
  const double* predict = m.results.predict.data();
  if (sflag != 0) {
    // The accumulated forecast over each interval: size + stock.
    actual = m.ids->size.data.data();
    for (long i = 0; i <= m.n; ++i) m.work[i] = idm::add(actual[i], m.results.stock[i]);
    predict = m.work.data();
  }
  double b = kMissing;
  if (base && start >= 1) b = (vflag == 3 ? m.results.actual : actual)[start - 1];
  const int rc = ztssfme(b, actual + start, predict + start, len < 0 ? 0 : len, k, stats);
  if (stats->dfe < 0) stats->dfe = 0;
  if (rc < 0) return m.error = vflag == 2 ? kIdmEvalBack : kIdmEvalFit;
  return kIdmOk;
}

}  // namespace qvt
