// OUTSUM= row: the descriptive statistics of the used range of one series,
// its status and the summary of its forecasts.
#include "output/outcols.hpp"
#include "output/qvtds.hpp"

namespace qvt {

void qvtdsum(QVTCOM* com) {
  const DsHandle ds = com->ds.outsum.fileid;
  if (!ds) return;
  // The counts come from the description of the used range; the forecast
  // cells are what summation left, or the missing values the series started
  // with when it failed before it.
  auto& s = com->outsum;
  s.nobs = static_cast<double>(s.stats.nobs);
  s.n = static_cast<double>(s.stats.n);
  s.nmiss = static_cast<double>(s.stats.nmiss);
  putRow(*com->host, ds);
}

}  // namespace qvt
