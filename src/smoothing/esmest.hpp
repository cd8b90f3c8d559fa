// The smoothing weight estimator, shared by every model of the family.
//
// It minimises the mean squared one-step error over the fit range by a
// Gauss-Newton iteration (with step halving and a Levenberg-Marquardt ridge,
// Marquardt 1963), subject to bounds on the weights and to the model's
// stability region. The derivatives of the one-step predictions are carried
// analytically through the same recursion as the state, so one backward and
// forward pass gives the errors, the gradient and the cross-product matrix.
// The iteration starts from the best of 20 fixed grid points; it stops when
// the relative offset (Bates and Watts 1981) is small: how much of the error
// vector lies in the tangent plane of the model.
//
// The estimator is written once for one to three weights. A model joins it
// by supplying an ESMKSET: its weights in order, its grid column, and its
// kernels (point step with derivative step, the prediction fed in for a
// flagged observation, the turn at the end of the backward half, stability,
// standard errors). nes1fit (SIMPLE) is the first member.
#pragma once

#include <array>

#include "smoothing/esmtypes.hpp"

namespace qvt {

// The weights a coordinate of the estimator can stand for.
enum class EsmWeight : int { Level = 0, Trend = 1, Season = 2, Damp = 3 };

// Running derivatives of the state with respect to each coordinate. The
// seasonal arrays hold nseasons entries each (seasonal members only).
struct WINT_DER {
  double level[3] = {};
  double trend[3] = {};
  struct {
    long size = 0;  // bytes of each array
    std::vector<double> wlevel, wtrend, wseason;
  } season;
};

// Positions and marks of a trial point's coordinates.
struct PTBNDS {
  char dim = 0;      // coordinates free in the step that led here
  char nextdim = 0;  // coordinates strictly inside their bounds
  int wlevflg = 0, wtreflg = 0, wseaflg = 0, wdamflg = 0;    // -1 lower, +1 upper, 0 inside
  char wlevchn = 0, wtrechn = 0, wseachn = 0, wdamchn = 0;  // 1: blocked or held
};

// One trial point in weight space.
struct POINT {
  double wlevel = 0, wtrend = 0, wseason = 0, wdamp = 0;
  double change = 0;
  long nobs = 0;
  long nmiss = 0;
  double mse = 0;
  int rankxpx = 0;
  double xpxdiag[4] = {};  // raw diagonal during a pass, half the inverse's after it
  double rr[3] = {};       // relative offset in 1, 2 and 3 free dimensions
  double r = 0;            // convergence criterion of this point
  char rflag = 0;          // every coordinate on a bound, none can move inward
  double delta1[3] = {}, delta2[3] = {}, delta[3] = {};
  double grad[3] = {};
  double grad_norm = 0;
  double delta_norm1 = 0, delta_norm2 = 0, delta_norm = 0;
  double dder0 = 0, dder1 = 0, phi = 0;  // trace columns; stay 0
  PTBNDS wbnds;
};

// Constants and running values of one estimation.
struct FITCON {
  const double* x = nullptr;   // the series from fitrange.start
  const char* misflg = nullptr;
  long n = 0;                  // fitrange.nobs
  const int* scodes = nullptr; // season codes from fitrange.start; null without seasons
  double xscale = 0;           // the offset is formed above xscale * 1e-12 of squared error
  double kscale = 0;           // ts.descstats.norm: the kernels' scale guard
  double xmin = 0, xmax = 0;
  int iter = 0, subiter = 0;
  int prtflag = 0;
  double stepstart = 1.0;
  double lambda = 0.01;
  double min_nmiss = 9007199254740992.0;
  double min_mse = 0;
  WINT_DER derwork;
};

// What a model supplies to the estimator. w[] below holds the weights in the
// order of coord[].
struct ESMKSET {
  int method = 0;
  int k = 0;                                // number of weights, 1 to 3
  std::array<EsmWeight, 3> coord{};         // the weight of each coordinate
  const std::array<double, 3>* grid = nullptr;  // 20 rows: grid value of each coordinate
  // Derivative-free pass for the grid: s enters as the start values at the
  // end of the series and leaves as the final state; *mse as the kernel gives it.
  int (*smo)(const FITCON& fc, const double* w, int nseasons, SMOOTHVALS& s, double* mse) = nullptr;
  // The model's one-step prediction from state s for season code `season`:
  // what the derivative pass feeds in for a flagged observation.
  double (*predict)(const double* w, const SMOOTHVALS& s, int season) = nullptr;
  // Point step then derivative step on x (state s and derivatives d updated):
  // dervec receives the k derivatives of the prediction, *e the error.
  int (*step)(double x, double xscale, const double* w, int season, SMOOTHVALS& s, WINT_DER& d,
              double* dervec, double* e) = nullptr;
  // The turn at the end of the backward half (re-centring, trend reversal);
  // null when the model has none.
  void (*turn)(const double* w, int nseasons, SMOOTHVALS& s, WINT_DER& d) = nullptr;
  // Stability test: 1 stable. Null when the model has none.
  int (*stb)(const double* w) = nullptr;
  // Numeric derivatives of the mean squared error for each weight (the
  // derivative check); null when not offered.
  int (*npd)(const FITCON& fc, const double* w, int nseasons, const SMOOTHVALS& start,
             double delta, int relative, double* pder) = nullptr;
  // Standard errors and t values from half the inverse's diagonal.
  void (*std)(const double* xpxdiag, double mse, long nobs, int nseasons, const double* parms,
              double* stderr_, double* tvals) = nullptr;
  int dfparms = 0;           // pest.mse = mse nobs / (nobs - dfparms) when nobs > dfparms
  char gradByNobs = 0;       // the gradient divides by nobs instead of n
  char weightGuard = 0;      // the pass divides by the first weight: -9 when it is tiny
};

// The estimator's settings that tests and the trace may read back.
inline constexpr int kEsmGridPoints = 20;
inline constexpr int kEsmMaxIter = 99;
inline constexpr double kEsmConvR = 0.0001;
inline constexpr double kEsmLambdaMax = 1000.0;
inline constexpr double kEsmC = 1.232595164407832e-32;
inline constexpr double kEsmEps = 1.110223024625157e-16;

// Runs the whole estimation of a model with kernel set ks: 0, 90 (stopped
// without convergence, weights usable), -8 (no usable start) or -100.
// In: ts, fitrange, svi, wbnds, opt. Out: pest, startvals; smooth is scratch.
int esmestimate(WINMODEL* model, const ESMKSET& ks) noexcept;

// The steps of the estimation, exposed for tests.
int esmgrid(WINMODEL* model, const ESMKSET& ks, FITCON& fc, POINT& point) noexcept;
int esmnextstep(WINMODEL* model, const ESMKSET& ks, FITCON& fc, POINT& point) noexcept;
int esmtrystep(WINMODEL* model, const ESMKSET& ks, FITCON& fc, const POINT& current,
               double stepsize, POINT& next) noexcept;
// Fills FITCON from the model's fit range.
void esmfitcon(const WINMODEL* model, FITCON& fc) noexcept;

// Relative offset from the total sum of squares and the residual one.
double esmoffset(double sse, double res, double xscale) noexcept;

// Adds weight * data data' to a packed symmetric matrix of order nv; does
// nothing when an entry or the weight is missing, or the weight is 0.
int zscp(const double* data, int nv, double weight, double* sscp) noexcept;

// Accessors by weight.
double& esmpw(POINT& p, EsmWeight w) noexcept;
double esmpw(const POINT& p, EsmWeight w) noexcept;
const double* esmbnd(const WGTBNDS& b, EsmWeight w) noexcept;
double* esmbnd(WGTBNDS& b, EsmWeight w) noexcept;
char esmheld(const WGTBNDS& b, EsmWeight w) noexcept;

}  // namespace qvt
