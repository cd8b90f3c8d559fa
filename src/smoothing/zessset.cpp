// Seasonal smoothing without trend, additive (SEASONAL) and multiplicative
// (MULTSEASONAL), as members of the family: adapters for the estimator and
// the driver, the estimators nessfit and nesifit and their method-table
// rows.
#include "run/missing.hpp"
#include "smoothing/esmest.hpp"
#include "smoothing/esmgrid.hpp"
#include "smoothing/esmkset.hpp"
#include "smoothing/zespass.hpp"
#include "smoothing/zess.hpp"

namespace qvt {

namespace {

constexpr auto kGrid = esmGridRows(kGridLevel, &kGridSeason);

template <int A>
int smo(const FITCON& fc, const double* w, int ns, SMOOTHVALS& s, double* mse) {
  return zesismo(fc.x, fc.misflg, fc.kscale, fc.n, ns, A, w[0], w[1], &s.level, s.sfactor.data(),
                 fc.scodes, mse);
}

template <int A>
double predict(const double*, const SMOOTHVALS& s, int sc) {
  const double f = s.sfactor[static_cast<std::size_t>(sc)];
  return A ? s.level + f : s.level * f;
}

template <int A>
int step(double x, double xscale, const double* w, int sc, SMOOTHVALS& s, WINT_DER& d,
         double* dervec, double* e) {
  const auto i = static_cast<std::size_t>(sc);
  const double l0 = s.level;
  const double s0 = s.sfactor[i];
  if (const int rc =
          zesipnt(x, xscale, A, w[0], w[1], &s.level, s.sfactor.data(), sc, &s.xhat, e);
      rc < 0)
    return rc;
  double ds[2] = {d.season.wlevel[i], d.season.wseason[i]};
  const int rc =
      zesidpd(x, w[0], w[1], l0, s.level, s0, s.sfactor[i], A, d.level, ds, dervec);
  d.season.wlevel[i] = ds[0];
  d.season.wseason[i] = ds[1];
  return rc;
}

// No trend to reverse: the turn only re-centres the factors.
template <int A>
void turn(const double*, int ns, SMOOTHVALS& s, WINT_DER& d) {
  zesinmd(ns, A, &s.level, s.sfactor.data(), d.level, d.season.wlevel.data(),
          d.season.wseason.data());
}

// ns only enters through ns w + v > 0, which the other conditions imply
// for any cycle once w >= 0.
int stb(const double* w) { return zessstb(1, w[0], w[1]); }

template <int A>
int npd(const FITCON& fc, const double* w, int ns, const SMOOTHVALS& start, double delta,
        int relative, double* pder) {
  const double deltas[2] = {delta, delta};
  return zesinpd(fc.x, fc.misflg, fc.kscale, fc.n, ns, A, w[0], w[1], start.level,
                 start.sfactor.data(), fc.scodes, deltas, relative, pder);
}

void stdk(const double* xpxdiag, double mse, long nobs, int ns, const double* parms,
          double* stderr_, double* tvals) {
  zessstd(xpxdiag, mse, nobs, parms, stderr_, tvals);
  if (nobs <= ns + 1) stderr_[0] = stderr_[1] = tvals[0] = tvals[1] = kMissing;
}

int svi(const double* x, const char* misflg, const int* scodes, long n, int ns, int stflg,
        int additive, SMOOTHVALS& out) {
  // The first code of the stretch places the regression's seasons in the
  // cycle; without it the factors would be filed under the wrong seasons.
  if (ns >= 2 && scodes == nullptr) return kEsmBadArg;
  const int nstart = scodes != nullptr ? scodes[0] : 0;
  return zesisvi(x, misflg, n, ns, nstart, additive, stflg, &out.level, out.sfactor.data());
}

int prd(const double* x, const char* misflg, const int* scodes, double xscale, long n,
        const double* w, int additive, SMOOTHVALS& state, long start, long end, long lead,
        double se2, double siglev, int startflg, double* mse, double* strptr) {
  return zesiprd(x, misflg, xscale, n, static_cast<int>(state.sfactor.size()), additive, w[0],
                 w[1], &state.level, state.sfactor.data(), scodes, start, end, lead, se2, siglev,
                 startflg, mse, strptr);
}

// psi weights of both forms, with the seasonal term at each multiple of
// the cycle.
int psi(const double* w, int nseasons, long npsi, double* out) {
  return zesspsi(w[0], w[1], nseasons, npsi, out);
}

template <int A>
constexpr ESMKSET makeKernels() {
  ESMKSET k;
  k.method = A ? kEsmSeasonal : kEsmMultSeasonal;
  k.k = 2;
  k.coord = {EsmWeight::Level, EsmWeight::Season, EsmWeight::Season};
  k.grid = kGrid.data();
  k.smo = smo<A>;
  k.predict = predict<A>;
  k.step = step<A>;
  k.turn = turn<A>;
  k.stb = stb;
  k.npd = npd<A>;
  k.std = stdk;
  k.dfparms = 2;
  k.gradByNobs = 0;
  k.weightGuard = 0;
  return k;
}

template <int A>
constexpr ESMMODELSET makeSet(const ESMKSET* est, int (*fit)(WINMODEL*) noexcept) {
  ESMMODELSET m;
  m.method = A ? kEsmSeasonal : kEsmMultSeasonal;
  m.k = 2;
  m.tailMult = 1;
  m.seasonal = 1;
  m.additive = A;
  m.rowlen = kZessRowLen;
  m.trendCol = -1;
  m.seasonCol = 7;
  m.est = est;
  m.fit = fit;
  m.svi = svi;
  m.prd = prd;
  m.psi = psi;
  return m;
}

}  // namespace

const ESMKSET kEssKernels = makeKernels<1>();
const ESMKSET kEsiKernels = makeKernels<0>();
const ESMMODELSET kEsmSeasonalSet = makeSet<1>(&kEssKernels, nessfit);
const ESMMODELSET kEsmMultSeasonalSet = makeSet<0>(&kEsiKernels, nesifit);

int nessfit(WINMODEL* model) noexcept {
  if (model == nullptr) return kEsmBadArg;
  return esmestimate(model, kEssKernels);
}

int nesifit(WINMODEL* model) noexcept {
  if (model == nullptr) return kEsmBadArg;
  return esmestimate(model, kEsiKernels);
}

}  // namespace qvt
