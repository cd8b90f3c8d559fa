// Double exponential smoothing as a member of the family: adapters for the
// estimator and the driver, its estimator nesdfit and its row of the
// method table.
#include "run/missing.hpp"
#include "smoothing/esmest.hpp"
#include "smoothing/esmgrid.hpp"
#include "smoothing/esmkset.hpp"
#include "smoothing/zesd.hpp"

namespace qvt {

namespace {

constexpr auto kGrid = esmGridRows(kGridLevel1);

int smo(const FITCON& fc, const double* w, int, SMOOTHVALS& s, double* mse) {
  return zesdsmo(fc.x, fc.misflg, fc.kscale, fc.n, w[0], &s.level, &s.trend, mse);
}

double predict(const double* w, const SMOOTHVALS& s, int) { return s.level + s.trend / w[0]; }

int step(double x, double xscale, const double* w, int, SMOOTHVALS& s, WINT_DER& d,
         double* dervec, double* e) {
  const double l0 = s.level;
  const double t0 = s.trend;
  if (const int rc = zesdpnt(x, xscale, w[0], &s.level, &s.trend, &s.xhat, e); rc < 0) return rc;
  return zesddpd(x, w[0], l0, s.level, t0, s.trend, &d.level[0], &d.trend[0], dervec);
}

void turn(const double*, int, SMOOTHVALS& s, WINT_DER& d) {
  s.level += s.trend;
  s.trend = -s.trend;
  d.level[0] += d.trend[0];
  d.trend[0] = -d.trend[0];
}

int npd(const FITCON& fc, const double* w, int, const SMOOTHVALS& start, double delta,
        int relative, double* pder) {
  return zesdnpd(fc.x, fc.misflg, fc.kscale, fc.n, w[0], start.level, start.trend, delta,
                 relative, pder);
}

void stdk(const double* xpxdiag, double mse, long nobs, int, const double* parms,
          double* stderr_, double* tvals) {
  zesdstd(xpxdiag, mse, nobs, parms, stderr_, tvals);
}

int svi(const double* x, const char* misflg, const int*, long n, int, int stflg, int,
        SMOOTHVALS& out) {
  return zesdsvi(x, misflg, n, stflg, &out.level, &out.trend);
}

int prd(const double* x, const char* misflg, const int*, double xscale, long n, const double* w,
        int, SMOOTHVALS& state, long start, long end, long lead, double se2, double siglev,
        int startflg, double* mse, double* strptr) {
  return zesdprd(x, misflg, xscale, n, w[0], &state.level, &state.trend, start, end, lead, se2,
                 siglev, startflg, mse, strptr);
}

int psi(const double* w, int /*nseasons*/, long npsi, double* out) {
  return zesdpsi(w[0], npsi, out);
}

constexpr ESMKSET makeKernels() {
  ESMKSET k;
  k.method = kEsmDouble;
  k.k = 1;
  k.coord = {EsmWeight::Level, EsmWeight::Level, EsmWeight::Level};
  k.grid = kGrid.data();
  k.smo = smo;
  k.predict = predict;
  k.step = step;
  k.turn = turn;
  k.stb = nullptr;  // no stability test beyond the bounds
  k.npd = npd;
  k.std = stdk;
  k.dfparms = 1;
  k.gradByNobs = 0;
  k.weightGuard = 1;  // the prediction divides by the weight
  return k;
}

}  // namespace

const ESMKSET kEsdKernels = makeKernels();

namespace {

constexpr ESMMODELSET makeSet() {
  ESMMODELSET m;
  m.method = kEsmDouble;
  m.k = 1;
  m.tailMult = 2;
  m.seasonal = 0;
  m.additive = -1;
  m.rowlen = kZesdRowLen;
  m.trendCol = 7;
  m.seasonCol = -1;
  m.est = &kEsdKernels;
  m.fit = nesdfit;
  m.svi = svi;
  m.prd = prd;
  m.psi = psi;
  return m;
}

}  // namespace

const ESMMODELSET kEsmDoubleSet = makeSet();

int nesdfit(WINMODEL* model) noexcept {
  if (model == nullptr) return kEsmBadArg;
  return esmestimate(model, kEsdKernels);
}

}  // namespace qvt
