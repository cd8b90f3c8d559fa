// OUTSTAT= row: the statistics of fit of one series over one region, the
// fit range or the BACK= range.
#include "output/outcols.hpp"
#include "output/qvtds.hpp"

namespace qvt {

void qvtdsof(QVTCOM* com, int region) {
  const DsHandle ds = com->ds.outstat.fileid;
  if (!ds) return;
  auto& o = com->outstat;
  o.region.set(region == 0 ? "FIT" : "FORECAST");  // blank-padded by set
  const SF_STATS& st = o.stats;
  o.dfe = static_cast<double>(st.dfe);
  o.n = static_cast<double>(st.n);
  o.nobs = static_cast<double>(st.nobs);
  o.nmissa = static_cast<double>(st.nmissa);
  o.nmissp = static_cast<double>(st.nmissp);
  o.nparms = static_cast<double>(st.nparms);
  putRow(*com->host, ds);
}

}  // namespace qvt
