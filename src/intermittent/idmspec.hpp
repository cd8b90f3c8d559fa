// How an intermittent series is to be modelled: one set of smoothing settings
// for each demand component (intervals, sizes, average demand) and what
// applies to the model as a whole. The IDM statement fills it and the
// intermittent model takes it; idmsdft and idmsval are the one place of its
// defaults and rules, used by both.
#pragma once

#include "run/strings.hpp"

namespace qvt {

// IDMSPEC.modcode.
enum IdmModCode : int { kIdmCroston = 1, kIdmAverage = 2, kIdmBoth = 20 };

// ESMSPEC.modcode: methods of the smoothing family, and 9 to choose among
// SIMPLE, LINEAR and DAMPTREND.
enum IdmEsmCode : int { kIdmSimple = 1, kIdmLinear = 2, kIdmDampTrend = 3, kIdmDouble = 4,
                        kIdmBestN = 9 };

// ESMFBNDS.code.
enum IdmBoundCode : int { kIdmNoBounds = 0, kIdmBoundPredict = 1, kIdmBoundAll = 2 };

// Return codes of idmsval and idmsvps.
enum IdmSpecRc : int {
  kIdmsOk = 0,
  kIdmsBadIntvTrns = -6, kIdmsBadSizeTrns = -7, kIdmsBadAdemTrns = -8,
  kIdmsIntvParm = -11, kIdmsSizeParm = -12,   // -12 also for the average demand
  kIdmsBadModel = -15, kIdmsBadIntvMethod = -16, kIdmsBadSizeMethod = -17,
  kIdmsBadAdemMethod = -18,
  kIdmsParmOutside = -20, kIdmsBadLower = -21, kIdmsBadUpper = -22,
  kIdmsIntvWeights = -23, kIdmsSizeWeights = -24, kIdmsAdemWeights = -25,
  kIdmsIntvBounds = -31, kIdmsSizeBounds = -32, kIdmsAdemBounds = -33,
  kIdmsDiscrete = -40,
  kIdmsBadArg = -99,
};

// One smoothing weight: a fixed or starting value and its bounds, each
// missing when absent; noest non-zero: not estimated.
struct ESMPARM {
  u_sname name;
  u_slabel label;
  double parm = 0, lower = 0, upper = 0;
  int noest = 0;
};

// Bounds of a component's forecast.
struct ESMFBNDS {
  double lower = 0, upper = 0;
  int code = 0;
};

// Rounding of forecasts; code 0 (no rounding) is the only one any statement sets.
struct ESMFDISC {
  double increment = 0;
  int code = 0;
};

// One component.
struct ESMSPEC {
  int modcode = 0;
  u_sname name;
  u_slabel label;
  int trnscode = 0;
  double trnsparm = 0;
  int trnsopt = 0;      // back-transform: 1 inverse, 2 mean, 3 median
  int stability = 0;    // non-zero: the estimator tests stability
  ESMPARM level, trend, season, damp;
  double sigma2 = 0;
  long nbackcast = 0;
  ESMFBNDS fbnds;
  int select = 0;       // criterion code of the statistics of fit
  int noest = 0;        // non-zero: no weight of this component is estimated
};

struct IDMSPEC {
  int specified = 0;
  int modcode = 0;
  u_sname name;
  u_slabel label;
  ESMSPEC intv, size, adem;
  ESMFDISC fdisc;
  int select = 0;
  long minobstrend = 0;
  int noest = 0;
};

// Clears the record and sets the defaults. 0, or -99 for null.
int idmsdft(IDMSPEC* spec) noexcept;

// The first broken rule (codes above), or 0. Only reads.
int idmsval(const IDMSPEC* spec) noexcept;

// A weight and its bounds in order, each within -100 to 100: 0, -20, -21, -22.
int idmsvps(const ESMPARM* parm) noexcept;

}  // namespace qvt
