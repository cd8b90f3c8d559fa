// One smoothing model of one demand component (intervals, sizes or average
// demand): a WINMODEL of the smoothing family wrapped around a short
// component vector of an IDSERIES. All smoothing happens in the family's
// kernels; what is particular here is how a form is chosen for a component
// and how its rows are carried into the component's index scheme (entry 0
// of intervals and average demands lies before the first smoothed value).
// The routines are private to the intermittent model.
#pragma once

#include <memory>
#include <vector>

#include "intermittent/idmspec.hpp"
#include "intermittent/idseries.hpp"
#include "smoothing/esmtypes.hpp"

namespace qvt {

// Return codes of the component routines.
enum EsmCompRc : int {
  kEsmcOk = 0,
  kEsmcBounded = 1,       // esm_bnds changed a value
  kEsmcNoMem = -1,
  kEsmcNoSpec = -20,
  kEsmcNoCandidate = -35,
  kEsmcStart = -40,       // a start-value kernel failed
  kEsmcFit = -45,         // an estimator failed, or too few values for the form
  kEsmcPredict = -50,
  kEsmcBackTrans = -55,
  kEsmcBadArg = -99,
};

// One state vector of a fit.
struct ESMSTATES {
  std::vector<double> states;        // the state at each index
  double backcast = 0, start = 0, final = 0;
};

// One estimated weight.
struct ESMPEST {
  double estimate = 0, stderr_ = 0, tvalue = 0, pvalue = 0;  // stderr is a macro of <cstdio>
};

// The forecast of one component, indexed like the component: index i
// belongs to demand i. actual points at the plain component's data.
struct ESMFOR {
  long n = 0;
  double alpha = 0;
  const double* actual = nullptr;
  std::vector<double> predict, lower, upper, error, std;
  ESMSTATES level, trend;
  double forecast = 0;   // the forecast beyond the fit range
  char bounded = 0;      // non-zero: a bound was applied
};

struct ESMODEL {
  const ESMSPEC* spec = nullptr;
  int modellist[2][4] = {};     // row 0 plain component, row 1 transformed; method codes
  double criterion[2][4] = {};
  int modused = -1;             // method in use, -1 none
  int trnsused = -1;            // transformation in use, -1 none
  const IDSCOMP* orig = nullptr;
  const IDSCOMP* trns = nullptr;
  const IDSCOMP* comp = nullptr;  // the one in use
  std::unique_ptr<WINMODEL> model;
  std::vector<double> rows;     // prediction rows of 8 doubles
  struct {
    double level = 0, trend = 0, damp = 0;
  } parm;
  struct {
    ESMPEST level, trend, damp;
    double sigma2 = 0;
    long n = 0;
    int nparms = 0;
  } pest;
  ESMFOR forecast;
};

// Creates the WINMODEL with four-entry weight vectors, on the plain step
// "1", and sizes the vectors for n values. 0, -1, -99.
int esm_init(long n, ESMODEL* esm) noexcept;
// Frees all of it.
void esm_term(ESMODEL* esm) noexcept;
// The flag vector of n chars and the row buffer of n + 1 rows; grow only.
int esm_allocate(ESMODEL* esm, long n) noexcept;
void esm_deallocate(ESMODEL* esm) noexcept;
// Weights, estimates and their statistics back to missing.
int esm_reset(ESMODEL* esm) noexcept;
// Takes the settings of a component: the candidate list, the weight bounds.
int esm_spec(ESMODEL* esm, int noest, const ESMSPEC* spec) noexcept;
// Chooses form and transformation by the settings' criterion,
// on the last nholdout values when nholdout >= 1.
int esm_select(ESMODEL* esm, double* work, double* intwgts, double alpha, long nholdout,
               long minobstrend) noexcept;
// Points the model at a component, leaving out the last nholdout values.
int esm_set(ESMODEL* esm, const IDSCOMP* comp, long nholdout) noexcept;
// Start values and estimation of the form in modused.
int esm_fit(ESMODEL* esm) noexcept;
// Predictions over the component and lead forecasts into forecast.
int esm_pred(ESMODEL* esm, double alpha, long lead, ESMFOR* forecast) noexcept;
// Back-transforms the forecast in place; w are the integration weights.
int esm_trns(ESMODEL* esm, double* w) noexcept;
// Bounds the last forecast entry. 1 when a value changed.
int esm_bnds(ESMODEL* esm) noexcept;

}  // namespace qvt
