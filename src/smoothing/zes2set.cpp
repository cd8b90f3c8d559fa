// Linear exponential smoothing as a member of the family: the adapters that
// let the estimator and the driver call the zes2 kernels, its estimator
// nes2fit and its row of the method table.
#include "run/missing.hpp"
#include "smoothing/esmest.hpp"
#include "smoothing/esmgrid.hpp"
#include "smoothing/esmkset.hpp"
#include "smoothing/zes2.hpp"

namespace qvt {

namespace {

constexpr auto kGrid = esmGridRows(kGridLevel, &kGridTrend);

int smo(const FITCON& fc, const double* w, int, SMOOTHVALS& s, double* mse) {
  return zes2smo(fc.x, fc.misflg, fc.kscale, fc.n, w[0], w[1], &s.level, &s.trend, mse);
}

double predict(const double*, const SMOOTHVALS& s, int) { return s.level + s.trend; }

int step(double x, double xscale, const double* w, int, SMOOTHVALS& s, WINT_DER& d,
         double* dervec, double* e) {
  const double l0 = s.level;
  const double t0 = s.trend;
  if (const int rc = zes2pnt(x, xscale, w[0], w[1], &s.level, &s.trend, &s.xhat, e); rc < 0)
    return rc;
  return zes2dpd(x, w[0], w[1], l0, s.level, t0, s.trend, d.level, d.trend, dervec);
}

void turn(const double*, int, SMOOTHVALS& s, WINT_DER& d) {
  s.level += s.trend;
  s.trend = -s.trend;
  for (int i = 0; i < 2; ++i) {
    d.level[i] += d.trend[i];
    d.trend[i] = -d.trend[i];
  }
}

int stb(const double* w) { return zes2stb(w[0], w[1]); }

int npd(const FITCON& fc, const double* w, int, const SMOOTHVALS& start, double delta,
        int relative, double* pder) {
  const double deltas[2] = {delta, delta};
  return zes2npd(fc.x, fc.misflg, fc.kscale, fc.n, w[0], w[1], start.level, start.trend, deltas,
                 relative, pder);
}

void stdk(const double* xpxdiag, double mse, long nobs, int, const double* parms,
          double* stderr_, double* tvals) {
  zes2std(xpxdiag, mse, nobs, parms, stderr_, tvals);
}

int svi(const double* x, const char* misflg, const int*, long n, int, int stflg, int,
        SMOOTHVALS& out) {
  return zes2svi(x, misflg, n, stflg, &out.level, &out.trend);
}

int prd(const double* x, const char* misflg, const int*, double xscale, long n, const double* w,
        int, SMOOTHVALS& state, long start, long end, long lead, double se2, double siglev,
        int startflg, double* mse, double* strptr) {
  return zes2prd(x, misflg, xscale, n, w[0], w[1], &state.level, &state.trend, start, end, lead,
                 se2, siglev, startflg, mse, strptr);
}

int psi(const double* w, int /*nseasons*/, long npsi, double* out) {
  return zes2psi(w[0], w[1], npsi, out);
}

constexpr ESMKSET makeKernels() {
  ESMKSET k;
  k.method = kEsmLinear;
  k.k = 2;
  k.coord = {EsmWeight::Level, EsmWeight::Trend, EsmWeight::Trend};
  k.grid = kGrid.data();
  k.smo = smo;
  k.predict = predict;
  k.step = step;
  k.turn = turn;
  k.stb = stb;
  k.npd = npd;
  k.std = stdk;
  k.dfparms = 2;
  k.gradByNobs = 1;  // this member's gradient averages over the usable observations
  k.weightGuard = 0;
  return k;
}

}  // namespace

const ESMKSET kEs2Kernels = makeKernels();

namespace {

constexpr ESMMODELSET makeSet() {
  ESMMODELSET m;
  m.method = kEsmLinear;
  m.k = 2;
  m.tailMult = 2;
  m.seasonal = 0;
  m.additive = -1;
  m.rowlen = kZes2RowLen;
  m.trendCol = 7;
  m.seasonCol = -1;
  m.est = &kEs2Kernels;
  m.fit = nes2fit;
  m.svi = svi;
  m.prd = prd;
  m.psi = psi;
  return m;
}

}  // namespace

const ESMMODELSET kEsmLinearSet = makeSet();

int nes2fit(WINMODEL* model) noexcept {
  if (model == nullptr) return kEsmBadArg;
  return esmestimate(model, kEs2Kernels);
}

}  // namespace qvt
