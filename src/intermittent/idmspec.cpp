// Defaults and validity of how an intermittent series is modelled. The IDM
// statement and the intermittent model both come here, so the rules live in
// one place.
#include "intermittent/idmspec.hpp"

#include "run/missing.hpp"

namespace qvt {
namespace {

// Default bounds of every weight; the literals are the exact doubles the
// estimator uses as its own defaults (0x3F50624DD2F1A9FC, 0x3FEFF7CED916872B).
constexpr double kWeightLower = 0.001;
constexpr double kWeightUpper = 0.999;
// A weight and its bounds must lie in this range.
constexpr double kWeightLimit = 100.0;
// Smallest rounding increment (0x20000000002302AC): below it a rounded
// forecast would underflow.
constexpr double kMinIncrement = 1.491668147e-154;

void weightDefault(ESMPARM& p) noexcept {
  p.parm = kMissing;
  p.lower = kWeightLower;
  p.upper = kWeightUpper;
  p.noest = 0;
}

void componentDefault(ESMSPEC& c) noexcept {
  c.modcode = kIdmBestN;
  c.trnscode = 10;  // AUTO
  c.trnsparm = 0;
  c.trnsopt = 2;    // mean
  c.stability = 1;
  c.noest = 0;
  c.select = 3;     // RMSE
  c.sigma2 = kMissing;
  weightDefault(c.level);
  weightDefault(c.trend);
  weightDefault(c.damp);
  c.fbnds.lower = kMissing;
  c.fbnds.upper = kMissing;
  c.fbnds.code = kIdmNoBounds;
}

bool methodOk(int m) noexcept { return (m >= kIdmSimple && m <= kIdmDouble) || m == kIdmBestN; }

bool trnsOk(int t) noexcept { return (t >= 0 && t <= 4) || t == 10; }

bool weightsOk(const ESMSPEC& c) noexcept {
  return idmsvps(&c.level) >= 0 && idmsvps(&c.trend) >= 0 && idmsvps(&c.damp) >= 0;
}

// comp 0 intervals, 1 sizes, 2 average demands. An interval forecast is
// always bounded below by one time interval.
bool validate_fbnds(const ESMFBNDS& b, int comp) noexcept {
  if (b.code < kIdmNoBounds || b.code > kIdmBoundAll) return false;
  if (comp == 0 && (b.code == kIdmNoBounds || wzmis(b.lower) || b.lower < 1.0)) return false;
  if (b.code != kIdmNoBounds && !wzmis(b.lower) && !wzmis(b.upper) && b.upper < b.lower)
    return false;
  return true;
}

bool validate_fdisc(const ESMFDISC& d) noexcept {
  if (d.code < 0 || d.code > 5) return false;
  if (d.code >= 1 && (wzmis(d.increment) || d.increment < kMinIncrement)) return false;
  return true;
}

bool outside(double v) noexcept { return v < -kWeightLimit || v > kWeightLimit; }

}  // namespace

int idmsdft(IDMSPEC* spec) noexcept {
  if (spec == nullptr) return kIdmsBadArg;
  *spec = IDMSPEC{};
  spec->modcode = kIdmBoth;
  spec->select = 3;
  spec->minobstrend = 6;
  spec->fdisc.increment = kMissing;
  spec->fdisc.code = 0;
  for (ESMSPEC* c : {&spec->intv, &spec->size, &spec->adem}) componentDefault(*c);
  spec->intv.fbnds.lower = 1.0;
  spec->intv.fbnds.code = kIdmBoundPredict;
  return kIdmsOk;
}

int idmsval(const IDMSPEC* spec) noexcept {
  if (spec == nullptr) return kIdmsBadArg;
  const IDMSPEC& s = *spec;
  if (s.modcode != kIdmCroston && s.modcode != kIdmAverage && s.modcode != kIdmBoth)
    return kIdmsBadModel;
  if (!methodOk(s.intv.modcode)) return kIdmsBadIntvMethod;
  if (!methodOk(s.size.modcode)) return kIdmsBadSizeMethod;
  if (!methodOk(s.adem.modcode)) return kIdmsBadAdemMethod;
  if (!trnsOk(s.intv.trnscode)) return kIdmsBadIntvTrns;
  if (!trnsOk(s.size.trnscode)) return kIdmsBadSizeTrns;
  if (!trnsOk(s.adem.trnscode)) return kIdmsBadAdemTrns;
  if (wzmis(s.intv.trnsparm)) return kIdmsIntvParm;
  if (wzmis(s.size.trnsparm)) return kIdmsSizeParm;
  if (wzmis(s.adem.trnsparm)) return kIdmsSizeParm;  // the average demand shares the size code
  if (!weightsOk(s.intv)) return kIdmsIntvWeights;
  if (!weightsOk(s.size)) return kIdmsSizeWeights;
  if (!weightsOk(s.adem)) return kIdmsAdemWeights;
  if (!validate_fbnds(s.intv.fbnds, 0)) return kIdmsIntvBounds;
  if (!validate_fbnds(s.size.fbnds, 1)) return kIdmsSizeBounds;
  if (!validate_fbnds(s.adem.fbnds, 2)) return kIdmsAdemBounds;
  if (!validate_fdisc(s.fdisc)) return kIdmsDiscrete;
  return kIdmsOk;
}

int idmsvps(const ESMPARM* parm) noexcept {
  if (parm == nullptr) return kIdmsBadArg;
  const ESMPARM& p = *parm;
  const bool hasLower = !wzmis(p.lower), hasUpper = !wzmis(p.upper), hasParm = !wzmis(p.parm);
  if (hasLower) {
    if (outside(p.lower) || (hasUpper && p.upper < p.lower)) return kIdmsBadLower;
    if (hasParm && p.parm < p.lower) return kIdmsParmOutside;
  }
  if (hasUpper) {
    if (outside(p.upper) || (hasLower && p.lower > p.upper)) return kIdmsBadUpper;
    if (hasParm && p.parm > p.upper) return kIdmsParmOutside;
  }
  if (hasParm && (outside(p.parm) || (hasLower && p.parm < p.lower) || (hasUpper && p.parm > p.upper)))
    return kIdmsParmOutside;
  return kIdmsOk;
}

}  // namespace qvt
