// OUTEST= rows: the estimated smoothing weights of one series with their
// standard errors, t values and p values.
#include "output/modelnames.hpp"
#include "output/outcols.hpp"
#include "output/qvtds.hpp"

namespace qvt {

void qvtdest(QVTCOM* com, const WINMODEL* esm) {
  Host& h = *com->host;
  const DsHandle ds = com->ds.outest.fileid;
  if (!ds || !esm || esm->spec.code == kModelCroston) return;
  auto& r = com->outest;
  r.transform = com->current.trnsname;
  r.model.set(modelName(esm->spec.code));
  const MODELPEST& p = esm->pest;
  const auto names = modelParms(esm->spec.code);
  const auto at = [](const std::vector<double>& v, std::size_t i) { return i < v.size() ? v[i] : kMissing; };
  for (std::size_t i = 0; i < names.size(); ++i) {
    r.parm.set(names[i]);
    r.pest = at(p.parms, i);
    r.stderr_ = at(p.stderr_, i);
    r.tvalue = at(p.tvals, i);
    r.pvalue = at(p.pvalue, i);
    if (!putRow(h, ds)) return;
  }
}

}  // namespace qvt
