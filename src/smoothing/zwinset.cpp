// The Winters forms as members of the family: adapters for the estimator
// and the driver, the estimator nwinfit (one for both forms, chosen by the
// record's additive flag) and the method-table rows of ADDWINTERS and
// WINTERS.
#include "run/missing.hpp"
#include "smoothing/esmest.hpp"
#include "smoothing/esmgrid.hpp"
#include "smoothing/esmkset.hpp"
#include "smoothing/zespass.hpp"
#include "smoothing/zwin.hpp"

namespace qvt {

namespace {

constexpr auto kGrid = esmGridRows(kGridLevel, &kGridTrend, &kGridSeasonWinters);

template <int A>
int smo(const FITCON& fc, const double* w, int ns, SMOOTHVALS& s, double* mse) {
  return zwinsmo(fc.x, fc.misflg, fc.kscale, fc.n, ns, A, w[0], w[1], w[2], &s.level, &s.trend,
                 s.sfactor.data(), fc.scodes, mse);
}

template <int A>
double predict(const double*, const SMOOTHVALS& s, int sc) {
  const double f = s.sfactor[static_cast<std::size_t>(sc)];
  return A ? s.level + s.trend + f : (s.level + s.trend) * f;
}

template <int A>
int step(double x, double xscale, const double* w, int sc, SMOOTHVALS& s, WINT_DER& d,
         double* dervec, double* e) {
  const auto i = static_cast<std::size_t>(sc);
  const double l0 = s.level;
  const double t0 = s.trend;
  const double s0 = s.sfactor[i];
  if (const int rc = zwinpnt(x, xscale, A, w[0], w[1], w[2], &s.level, &s.trend,
                             s.sfactor.data(), sc, &s.xhat, e);
      rc < 0)
    return rc;
  double ds[3] = {d.season.wlevel[i], d.season.wtrend[i], d.season.wseason[i]};
  const int rc = zwindpd(x, w[0], w[1], w[2], l0, s.level, t0, s.trend, s0, s.sfactor[i], A,
                         d.level, d.trend, ds, dervec);
  d.season.wlevel[i] = ds[0];
  d.season.wtrend[i] = ds[1];
  d.season.wseason[i] = ds[2];
  return rc;
}

// Re-centre the factors, then reverse the trend as in Holt's method.
template <int A>
void turn(const double*, int ns, SMOOTHVALS& s, WINT_DER& d) {
  zwinnmd(ns, A, &s.level, &s.trend, s.sfactor.data(), d.level, d.trend, d.season.wlevel.data(),
          d.season.wtrend.data(), d.season.wseason.data());
  s.level += s.trend;
  s.trend = -s.trend;
  for (int i = 0; i < 3; ++i) {
    d.level[i] += d.trend[i];
    d.trend[i] = -d.trend[i];
  }
}

// The stability region does not depend on the form; the season count is
// not known to this adapter, and it only matters through ns w + v > 0,
// which holds for any ns >= 1 inside the other conditions.
int stb(const double* w) { return zwinstb(1, 1, w[0], w[1], w[2]); }

template <int A>
int npd(const FITCON& fc, const double* w, int ns, const SMOOTHVALS& start, double delta,
        int relative, double* pder) {
  const double deltas[3] = {delta, delta, delta};
  return zwinnpd(fc.x, fc.misflg, fc.kscale, fc.n, ns, A, w[0], w[1], w[2], start.level,
                 start.trend, start.sfactor.data(), fc.scodes, deltas, relative, pder);
}

void stdk(const double* xpxdiag, double mse, long nobs, int ns, const double* parms,
          double* stderr_, double* tvals) {
  zwinstd(xpxdiag, mse, nobs, parms, stderr_, tvals);
  if (nobs <= ns + 1) {
    for (int i = 0; i < 3; ++i) stderr_[i] = tvals[i] = kMissing;
  }
}

int svi(const double* x, const char* misflg, const int* scodes, long n, int ns, int stflg,
        int additive, SMOOTHVALS& out) {
  // The first code of the stretch places the regression's seasons in the
  // cycle; without it the factors would be filed under the wrong seasons.
  if (ns >= 2 && scodes == nullptr) return kEsmBadArg;
  const int nstart = scodes != nullptr ? scodes[0] : 0;
  return zwinsvi(x, misflg, n, ns, nstart, additive, stflg, &out.level, &out.trend,
                 out.sfactor.data());
}

int prd(const double* x, const char* misflg, const int* scodes, double xscale, long n,
        const double* w, int additive, SMOOTHVALS& state, long start, long end, long lead,
        double se2, double siglev, int startflg, double* mse, double* strptr) {
  return zwinprd(x, misflg, xscale, n, static_cast<int>(state.sfactor.size()), additive, w[0],
                 w[1], w[2], &state.level, &state.trend, state.sfactor.data(), scodes, start, end,
                 lead, se2, siglev, startflg, mse, strptr);
}

// Winters psi weights, with the seasonal term at each multiple of the cycle.
int psi(const double* w, int nseasons, long npsi, double* out) {
  return zwinpsi(w[0], w[1], w[2], nseasons, npsi, out);
}

template <int A>
constexpr ESMKSET makeKernels() {
  ESMKSET k;
  k.method = A ? kEsmAddWinters : kEsmWinters;
  k.k = 3;
  k.coord = {EsmWeight::Level, EsmWeight::Trend, EsmWeight::Season};
  k.grid = kGrid.data();
  k.smo = smo<A>;
  k.predict = predict<A>;
  k.step = step<A>;
  k.turn = turn<A>;
  k.stb = stb;
  k.npd = npd<A>;
  k.std = stdk;
  k.dfparms = 3;
  k.gradByNobs = 0;
  k.weightGuard = 0;
  return k;
}

}  // namespace

const ESMKSET kWinAddKernels = makeKernels<1>();
const ESMKSET kWinMultKernels = makeKernels<0>();

namespace {

template <int A>
constexpr ESMMODELSET makeSet() {
  ESMMODELSET m;
  m.method = A ? kEsmAddWinters : kEsmWinters;
  m.k = 3;
  m.tailMult = 2;
  m.seasonal = 1;
  m.additive = A;
  m.rowlen = kZwinRowLen;
  m.trendCol = 7;
  m.seasonCol = 8;
  m.est = A ? &kWinAddKernels : &kWinMultKernels;
  m.fit = nwinfit;
  m.svi = svi;
  m.prd = prd;
  m.psi = psi;
  return m;
}

}  // namespace

const ESMMODELSET kEsmAddWintersSet = makeSet<1>();
const ESMMODELSET kEsmWintersSet = makeSet<0>();

int nwinfit(WINMODEL* model) noexcept {
  if (model == nullptr) return kEsmBadArg;
  return esmestimate(model, model->additive ? kWinAddKernels : kWinMultKernels);
}

}  // namespace qvt
