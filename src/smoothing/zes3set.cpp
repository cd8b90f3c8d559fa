// Damped-trend exponential smoothing as a member of the family: adapters
// for the estimator and the driver, its estimator nes3fit and its row of
// the method table.
#include "run/missing.hpp"
#include "smoothing/esmest.hpp"
#include "smoothing/esmgrid.hpp"
#include "smoothing/esmkset.hpp"
#include "smoothing/zes3.hpp"

namespace qvt {

namespace {

constexpr auto kGrid = esmGridRows(kGridLevel, &kGridTrend, &kGridDamp);

int smo(const FITCON& fc, const double* w, int, SMOOTHVALS& s, double* mse) {
  return zes3smo(fc.x, fc.misflg, fc.kscale, fc.n, w[0], w[1], w[2], &s.level, &s.trend, mse);
}

double predict(const double* w, const SMOOTHVALS& s, int) { return s.level + w[2] * s.trend; }

int step(double x, double xscale, const double* w, int, SMOOTHVALS& s, WINT_DER& d,
         double* dervec, double* e) {
  const double l0 = s.level;
  const double t0 = s.trend;
  if (const int rc = zes3pnt(x, xscale, w[0], w[1], w[2], &s.level, &s.trend, &s.xhat, e); rc < 0)
    return rc;
  return zes3dpd(x, w[0], w[1], w[2], l0, s.level, t0, s.trend, d.level, d.trend, dervec);
}

// L + phi T and -phi T; the damping weight's derivatives also carry the
// trend itself, since d(phi T)/d phi = T + phi dT/d phi.
void turn(const double* w, int, SMOOTHVALS& s, WINT_DER& d) {
  const double phi = w[2];
  const double T = s.trend;
  for (int i = 0; i < 3; ++i) {
    const double extra = i == 2 ? T : 0.0;
    d.level[i] += phi * d.trend[i] + extra;
    d.trend[i] = -(phi * d.trend[i] + extra);
  }
  s.level += phi * T;
  s.trend = -phi * T;
}

int stb(const double* w) { return zes3stb(w[0], w[1], w[2]); }

int npd(const FITCON& fc, const double* w, int, const SMOOTHVALS& start, double delta,
        int relative, double* pder) {
  const double deltas[3] = {delta, delta, delta};
  return zes3npd(fc.x, fc.misflg, fc.kscale, fc.n, w[0], w[1], w[2], start.level, start.trend,
                 deltas, relative, pder);
}

void stdk(const double* xpxdiag, double mse, long nobs, int, const double* parms,
          double* stderr_, double* tvals) {
  zes3std(xpxdiag, mse, nobs, parms, stderr_, tvals);
}

int svi(const double* x, const char* misflg, const int*, long n, int, int stflg, int,
        SMOOTHVALS& out) {
  return zes3svi(x, misflg, n, stflg, &out.level, &out.trend);
}

int prd(const double* x, const char* misflg, const int*, double xscale, long n, const double* w,
        int, SMOOTHVALS& state, long start, long end, long lead, double se2, double siglev,
        int startflg, double* mse, double* strptr) {
  return zes3prd(x, misflg, xscale, n, w[0], w[1], w[2], &state.level, &state.trend, start, end,
                 lead, se2, siglev, startflg, mse, strptr);
}

int psi(const double* w, int /*nseasons*/, long npsi, double* out) {
  return zes3psi(w[0], w[1], w[2], npsi, out);
}

constexpr ESMKSET makeKernels() {
  ESMKSET k;
  k.method = kEsmDampTrend;
  k.k = 3;
  k.coord = {EsmWeight::Level, EsmWeight::Trend, EsmWeight::Damp};
  k.grid = kGrid.data();
  k.smo = smo;
  k.predict = predict;
  k.step = step;
  k.turn = turn;
  k.stb = stb;
  k.npd = npd;
  k.std = stdk;
  k.dfparms = 3;
  k.gradByNobs = 0;
  k.weightGuard = 0;
  return k;
}

}  // namespace

const ESMKSET kEs3Kernels = makeKernels();

namespace {

constexpr ESMMODELSET makeSet() {
  ESMMODELSET m;
  m.method = kEsmDampTrend;
  m.k = 3;
  m.tailMult = 2;
  m.seasonal = 0;
  m.additive = -1;
  m.rowlen = kZes3RowLen;
  m.trendCol = 7;
  m.seasonCol = -1;
  m.est = &kEs3Kernels;
  m.fit = nes3fit;
  m.svi = svi;
  m.prd = prd;
  m.psi = psi;
  return m;
}

}  // namespace

const ESMMODELSET kEsmDampTrendSet = makeSet();

int nes3fit(WINMODEL* model) noexcept {
  if (model == nullptr) return kEsmBadArg;
  return esmestimate(model, kEs3Kernels);
}

}  // namespace qvt
