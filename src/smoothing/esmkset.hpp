// The table that turns a method code into its parts: its estimator kernel
// set and the pieces the driver calls (start values, prediction, psi
// weights), with the shape of its forecast rows. Each model adds one row;
// the driver and the estimator never switch on the method themselves.
#pragma once

#include "smoothing/esmest.hpp"
#include "smoothing/esmtypes.hpp"

namespace qvt {

struct ESMMODELSET {
  int method = 0;
  int k = 0;            // number of weights
  int tailMult = 0;     // start-value tail in multiples of nbackcast (seasonal: plus nseasons)
  char seasonal = 0;    // tailMult counts nseasons on top
  int additive = -1;    // 1 additive, 0 multiplicative, -1 not used
  int rowlen = 0;       // doubles in a forecast row
  int trendCol = -1;    // column of the trend in a row, -1 without
  int seasonCol = -1;   // column of the seasonal factor, -1 without
  const ESMKSET* est = nullptr;
  // The method's estimator: 0, 90, -8 or -100.
  int (*fit)(WINMODEL* model) noexcept = nullptr;
  // Start values of a stretch of the series (stflg 1 asks for the full form).
  int (*svi)(const double* x, const char* misflg, const int* scodes, long n, int nseasons,
             int stflg, int additive, SMOOTHVALS& out) = nullptr;
  // Prediction rows; state enters as start values (or, with startflg, as
  // the state at the beginning of the series).
  int (*prd)(const double* x, const char* misflg, const int* scodes, double xscale, long n,
             const double* w, int additive, SMOOTHVALS& state, long start, long end, long lead,
             double se2, double siglev, int startflg, double* mse, double* strptr) = nullptr;
  // npsi weights of the moving-average form. nseasons is the cycle of the
  // seasonal members, whose weights carry an extra term at each multiple of
  // it; the others ignore it.
  int (*psi)(const double* w, int nseasons, long npsi, double* psi) = nullptr;
};

// The row of a method, or null for a method that is unknown or has no
// kernels in this build.
const ESMMODELSET* esmmodelset(int method) noexcept;

// Estimator of simple exponential smoothing: 0, 90, -8 or -100; -999 for a
// null record.
int nes1fit(WINMODEL* model) noexcept;

// Simple exponential smoothing.
extern const ESMMODELSET kEsmSimpleSet;
extern const ESMKSET kEs1Kernels;

// Estimators of the trend and seasonal members: 0, 90, -8 or -100; -999
// for a null record. nwinfit serves both Winters forms through
// model->additive.
int nes2fit(WINMODEL* model) noexcept;
int nes3fit(WINMODEL* model) noexcept;
int nesdfit(WINMODEL* model) noexcept;
int nessfit(WINMODEL* model) noexcept;
int nesifit(WINMODEL* model) noexcept;
int nwinfit(WINMODEL* model) noexcept;

// Linear (Holt), damped-trend (Gardner), double (Brown) smoothing.
extern const ESMMODELSET kEsmLinearSet;
extern const ESMKSET kEs2Kernels;
extern const ESMMODELSET kEsmDampTrendSet;
extern const ESMKSET kEs3Kernels;
extern const ESMMODELSET kEsmDoubleSet;
extern const ESMKSET kEsdKernels;
// Additive and multiplicative seasonal smoothing, Winters additive and
// multiplicative (one kernel set, the form chosen by the additive flag).
extern const ESMMODELSET kEsmSeasonalSet;
extern const ESMKSET kEssKernels;
extern const ESMMODELSET kEsmMultSeasonalSet;
extern const ESMKSET kEsiKernels;
extern const ESMMODELSET kEsmAddWintersSet;
extern const ESMMODELSET kEsmWintersSet;
extern const ESMKSET kWinAddKernels;
extern const ESMKSET kWinMultKernels;

}  // namespace qvt
