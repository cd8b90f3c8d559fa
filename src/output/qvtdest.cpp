// OUTEST= rows: the estimated smoothing weights of one series with their
// standard errors, t values and p values. An intermittent series gives the
// rows of its component models instead: intervals then sizes for Croston's
// method, the average demand for the other form.
#include "intermittent/idmodel.hpp"
#include "output/modelnames.hpp"
#include "output/outcols.hpp"
#include "output/qvtds.hpp"
#include "statements/qvtpcodes.hpp"

namespace qvt {
namespace {

// The rows of one component model, by the smoothing form it uses; false when
// a row could not be written.
bool componentRows(QVTCOM* com, DsHandle ds, const ESMODEL& c) {
  auto& r = com->outest;
  u_slabel label;
  qvtptrn(com, c.trnsused < 0 ? 0 : c.trnsused, &r.transform, &label);
  const ESMPEST* rows[3] = {&c.pest.level, &c.pest.trend, &c.pest.damp};
  const auto names = modelParms(c.modused);
  // DOUBLE has one weight, reported as WEIGHT from the level entry.
  const std::size_t k = c.modused >= 1 && c.modused <= 4 ? names.size() : 0;
  for (std::size_t i = 0; i < k; ++i) {
    r.parm.set(names[i]);
    r.pest = rows[i]->estimate;
    r.stderr_ = rows[i]->stderr_;
    r.tvalue = rows[i]->tvalue;
    r.pvalue = rows[i]->pvalue;
    if (!putRow(*com->host, ds)) return false;
  }
  return true;
}

}  // namespace

void qvtdest(QVTCOM* com, const WINMODEL* esm, const IDMODEL* idm) {
  Host& h = *com->host;
  const DsHandle ds = com->ds.outest.fileid;
  if (!ds) return;
  auto& r = com->outest;
  if (esm == nullptr) {
    if (idm == nullptr) return;
    if (idm->modused == kIdmUsedCroston) {
      r.model.set("CROSTON");
      if (componentRows(com, ds, idm->intv)) componentRows(com, ds, idm->size);
    } else {
      r.model.set("AVERAGE");
      componentRows(com, ds, idm->adem);
    }
    return;
  }
  if (esm->spec.code == kModelCroston) return;
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
