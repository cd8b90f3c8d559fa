// The intermittent-demand model of one demand series, in two forms:
// Croston's method (Croston 1972) smooths the demand intervals and the
// demand sizes apart and forecasts the demand per period as size over
// interval; the average-demand form smooths size/interval directly. Results
// are indexed by demand; idmprd spreads them over the time grid of the
// series, together with the stock: the running difference between the
// demand the forecast rate accumulates and the demand that came.
//
// Per series: idmspc, idmset, idmsel, idmfit, idmdem, idmprd; idmeval for
// statistics of fit. One IDMODEL serves a BY group; its vectors only grow.
#pragma once

#include <vector>

#include "host/host.hpp"
#include "intermittent/esmodel.hpp"
#include "intermittent/idmspec.hpp"
#include "intermittent/idseries.hpp"
#include "run/strings.hpp"
#include "smoothing/esmtypes.hpp"
#include "stats/sfstats.hpp"

namespace qvt {

// Return codes of the model routines; those of the components pass through.
enum IdmRc : int {
  kIdmOk = 0,
  kIdmShort = 1,          // one or two demands, no estimation
  kIdmFlatIntv = 2,       // intervals (or the average demand) without variation
  kIdmFlatSize = 3,       // sizes without variation
  kIdmFlatBoth = 4,
  kIdmNoMem = -1,         // also DOUBLE with a zero weight in a first prediction
  kIdmNoSeries = -10,
  kIdmNoDemand = -11,
  kIdmNoFitDemand = -12,
  kIdmNothingToFit = -13,
  kIdmNoSpec = -20,
  kIdmSelect = -35,
  kIdmFit = -45,
  kIdmEvalFit = -60,
  kIdmEvalBack = -61,
  kIdmBadArg = -99,
};

// Model in use (IDMODEL.modused).
enum IdmUsed : int { kIdmUsedNone = -1, kIdmUsedCroston = 1, kIdmUsedAverage = 2 };

struct IDMODEL {
  long memdef = 0;
  long anobs = 0, an = 0;
  std::vector<double> intwgts;   // 101 integration weights of the back-transforms
  IDMSPEC spec;
  double criterion[2] = {};      // Croston's method, average demand
  IDSERIES* ids = nullptr;       // the caller's, not owned
  long nobs = 0, n = 0, nsample = 0, nholdout = 0, nback = 0;
  ESMODEL intv, size, adem;
  std::vector<double> work;      // an + 1
  int modused = kIdmUsedNone;
  int totparms = 0;
  struct {
    double alpha = 0;
    const double* actual = nullptr;  // ids->adem.data
    std::vector<double> predict, std, lower, upper, error, stock;  // an + 1, by demand
  } results;
  int error = 0, warning = 0, note = 0;
  u_text<1000> rcmsg;
};

// Creates the model with its weights and three component models; vectors
// for an + 1 demands when an > 0. 0, -1; on failure *idm is null.
int idmint(long anobs, long an, IDMODEL** idm) noexcept;
// Frees everything; *idm becomes null. Null is allowed.
void idmtrm(IDMODEL** idm) noexcept;

// Takes the model settings (null or not filled: the defaults), validated
// when validate is non-zero; a refused one leaves the earlier in force.
int idmspc(IDMODEL* idm, const IDMSPEC* spec, int validate) noexcept;
// Takes a loaded demand series; the caller keeps it alive.
int idmset(IDMODEL* idm, IDSERIES* ids) noexcept;

// Chooses between the forms (and within each) on the fit sample.
int idmsel(IDMODEL* idm, double alpha) noexcept;
int idmcsel(IDMODEL* idm, double alpha) noexcept;
int idmasel(IDMODEL* idm, double alpha) noexcept;

// Fits the form in use. eflag: 2 fit sample, 1 fit sample and hold-out,
// other all demands.
int idmfit(IDMODEL* idm, int eflag) noexcept;
int idmcfit(IDMODEL* idm, int eflag) noexcept;
int idmafit(IDMODEL* idm, int eflag) noexcept;

// Demand-rate predictions, limits, errors and stock by demand.
int idmdem(IDMODEL* idm, int eflag, double alpha) noexcept;
int idmcdem(IDMODEL* idm, int eflag, double alpha) noexcept;
int idmadem(IDMODEL* idm, int eflag, double alpha) noexcept;

// Statistics of fit. sflag 0 compares average demands, otherwise demand
// sizes; vflag 1 fit and hold-out, 2 back range, 3 hold-out, other fit.
int idmeval(IDMODEL* idm, int sflag, int vflag, SF_STATS* stats) noexcept;

// Spreads the results over the time grid: T observations, back of them
// held back, lead periods beyond; dates from stdate on the series' interval.
int idmprd(IDMODEL* idm, const double* y, long T, long back, double level, double stdate,
           long lead, double alpha, FOR_OUT* out) noexcept;

// Messages of a code of the model routines (group 881): 0 none, 1 after a
// message, 90 unknown code, -99 null idm.
int idmmsg(Host& host, const IDMODEL* idm, int rc, const u_sname* variable) noexcept;

// Labels of a fitted model, a component, or a model code, from catalogue
// texts of group 881. compact has no effect on the text.
int idmlab(const Host& host, const IDMODEL* idm, int compact, u_slabel* label) noexcept;
int idmlabs(const Host& host, int trnscode, int smdlcode, int compact, u_slabel* label) noexcept;
int idmlabd(const Host& host, int mdlcode, int compact, u_slabel* label) noexcept;

}  // namespace qvt
