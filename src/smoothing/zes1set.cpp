// Simple exponential smoothing as a member of the family: the adapters that
// let the estimator and the driver call the zes1 kernels, and its rows of
// the method table.
#include <cmath>

#include "run/missing.hpp"
#include "smoothing/esmest.hpp"
#include "smoothing/esmgrid.hpp"
#include "smoothing/esmkset.hpp"
#include "smoothing/zes1.hpp"

namespace qvt {

namespace {

constexpr auto kGrid = esmGridRows(kGridLevel1);

int smo(const FITCON& fc, const double* w, int /*nseasons*/, SMOOTHVALS& s, double* mse) {
  return zes1smo(fc.x, fc.misflg, fc.kscale, fc.n, w[0], &s.level, mse);
}

double predict(const double* /*w*/, const SMOOTHVALS& s, int /*season*/) { return s.level; }

int step(double x, double xscale, const double* w, int /*season*/, SMOOTHVALS& s, WINT_DER& d,
         double* dervec, double* e) {
  const double before = s.level;
  if (const int rc = zes1pnt(x, xscale, w[0], &s.level, &s.xhat, e); rc < 0) return rc;
  return zes1dpd(x, w[0], before, s.level, &d.level[0], dervec);
}

int npd(const FITCON& fc, const double* w, int /*nseasons*/, const SMOOTHVALS& start, double delta,
        int relative, double* pder) {
  return zes1npd(fc.x, fc.misflg, fc.kscale, fc.n, w[0], start.level, delta, relative, pder);
}

void stdk(const double* xpxdiag, double mse, long nobs, int /*nseasons*/, const double* parms,
          double* stderr_, double* tvals) {
  zes1std(xpxdiag, mse, nobs, parms, stderr_, tvals);
}

int svi(const double* x, const char* misflg, const int* /*scodes*/, long n, int /*nseasons*/,
        int stflg, int /*additive*/, SMOOTHVALS& out) {
  return zes1svi(x, misflg, n, stflg, &out.level);
}

int prd(const double* x, const char* misflg, const int* /*scodes*/, double xscale, long n,
        const double* w, int /*additive*/, SMOOTHVALS& state, long start, long end, long lead,
        double se2, double siglev, int startflg, double* mse, double* strptr) {
  return zes1prd(x, misflg, xscale, n, w[0], &state.level, start, end, lead, se2, siglev,
                 startflg, mse, strptr);
}

int psi(const double* w, int /*nseasons*/, long npsi, double* out) {
  return zes1psi(w[0], npsi, out);
}

constexpr ESMKSET makeKernels() {
  ESMKSET k;
  k.method = kEsmSimple;
  k.k = 1;
  k.coord = {EsmWeight::Level, EsmWeight::Level, EsmWeight::Level};
  k.grid = kGrid.data();
  k.smo = smo;
  k.predict = predict;
  k.step = step;
  k.turn = nullptr;  // a level has nothing to reverse
  k.stb = nullptr;   // no stability test beyond the bounds
  k.npd = npd;
  k.std = stdk;
  k.dfparms = 1;
  k.gradByNobs = 0;
  k.weightGuard = 0;
  return k;
}

}  // namespace

const ESMKSET kEs1Kernels = makeKernels();

namespace {

constexpr ESMMODELSET makeSet() {
  ESMMODELSET m;
  m.method = kEsmSimple;
  m.k = 1;
  m.tailMult = 1;
  m.seasonal = 0;
  m.additive = -1;
  m.rowlen = kZes1RowLen;
  m.trendCol = -1;
  m.seasonCol = -1;
  m.est = &kEs1Kernels;
  m.fit = nes1fit;
  m.svi = svi;
  m.prd = prd;
  m.psi = psi;
  return m;
}

}  // namespace

const ESMMODELSET kEsmSimpleSet = makeSet();

int nes1fit(WINMODEL* model) noexcept {
  if (model == nullptr) return kEsmBadArg;
  return esmestimate(model, kEs1Kernels);
}

}  // namespace qvt
