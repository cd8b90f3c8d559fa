// Kernels of seasonal exponential smoothing without trend, additive (zess)
// and multiplicative (zesi). See zess.hpp. The point and derivative steps
// are those of the Winters method with the trend held at 0 and its weight
// at 0, which leaves exactly these recursions.
#include <cmath>
#include <new>
#include <vector>

#include "run/missing.hpp"
#include "smoothing/esmdivide.hpp"
#include "smoothing/esmtypes.hpp"
#include "smoothing/zespass.hpp"
#include "smoothing/zess.hpp"
#include "smoothing/zwin.hpp"

namespace qvt {

namespace {

template <int A>
struct Seasonal {
  static constexpr int p = 2;
  static constexpr int rowlen = kZessRowLen;
  static constexpr int trendCol = -1;
  static constexpr int seasonCol = 7;
  double w[2] = {0, 0};

  int pnt(double x, double xscale, EsState& s, int sc, double* xhat, double* e) const noexcept {
    double T = 0.0;
    return zwinpnt(x, xscale, A, w[0], 0.0, w[1], &s.L, &T, s.S, sc, xhat, e);
  }
  double shown(const EsState& s, int sc) const noexcept {
    return A ? s.L + s.S[sc] : s.L * s.S[sc];
  }
  void skip(EsState&, int) const noexcept {}
  void turn(EsState&) const noexcept {}
  double lead(const EsState& s, long, int sc, double* level, double* trend) const noexcept {
    *level = s.L;
    *trend = 0.0;
    return A ? s.L + s.S[sc] : s.L * s.S[sc];
  }
  double leadvar(const EsState& s, long k, int sc, double v) const noexcept {
    if (A) return zesscla(w[0], w[1], s.ns, v, k, kMissing, nullptr);
    // Multiplicative: earlier shocks scaled by the ratio of the lead's
    // factor to the factor of the season they hit.
    double sum = 1.0;
    const double c = (1.0 - w[0]) * w[1];
    for (long j = 1; j < k; ++j) {
      const long back = ((sc - j) % s.ns + s.ns) % s.ns;
      double ratio = 0.0;
      if (divide(s.S[sc], s.S[back], &ratio) != 0) return ratio;
      const double psi = w[0] + (j % s.ns == 0 ? c : 0.0);
      sum += psi * psi * ratio * ratio;
    }
    return v * sum;
  }
};

int svi(const double* x, const char* misflg, long n, int ns, int nstart, int additive, int stflg,
        double* level, double* sfactor) noexcept {
  return zwinsvi(x, misflg, n, ns, nstart, additive, stflg, level, nullptr, sfactor);
}

int pntA(double x, double xscale, int additive, double wlevel, double wseason, double* level,
         double* sfactor, int scode, double* xhat, double* e) noexcept {
  double T = 0.0;
  return zwinpnt(x, xscale, additive, wlevel, 0.0, wseason, level, &T, sfactor, scode, xhat, e);
}

// The Winters derivative step with no trend: coordinates 0 (level) and 2
// (season) of the three, the trend's derivatives staying 0.
int dpdA(double x, double wlevel, double wseason, double llevel, double clevel, double lseason,
         double cseason, int additive, double* derlev, double* dersea, double* dervec) noexcept {
  double dl[3] = {derlev[0], 0.0, derlev[1]};
  double dt[3] = {0.0, 0.0, 0.0};
  double ds[3] = {dersea[0], 0.0, dersea[1]};
  double dv[3] = {0.0, 0.0, 0.0};
  const int rc = zwindpd(x, wlevel, 0.0, wseason, llevel, clevel, 0.0, 0.0, lseason, cseason,
                         additive, dl, dt, ds, dv);
  derlev[0] = dl[0];
  derlev[1] = dl[2];
  dersea[0] = ds[0];
  dersea[1] = ds[2];
  dervec[0] = dv[0];
  dervec[1] = dv[2];
  return rc;
}

// Every observation needs the season code its caller gave: on a cycle of
// two or more seasons there is no position to fall back on, since only the
// calendar knows where in the cycle a series starts.
bool noCodes(int ns, const int* scodes) noexcept { return ns >= 2 && scodes == nullptr; }

template <int A>
int smoA(const double* x, const char* misflg, double xscale, long n, int ns, double wlevel,
         double wseason, double* level, double* sfactor, const int* scodes, double* mse) noexcept {
  if (noCodes(ns, scodes)) return kEsmBadArg;
  const Seasonal<A> m{{wlevel, wseason}};
  EsState s{*level, 0.0, sfactor, ns};
  const int rc = zespass::smo(m, x, misflg, scodes, xscale, n, s, mse);
  *level = s.L;
  return rc;
}

template <int A>
int npdA(const double* x, const char* misflg, double xscale, long n, int ns, double wlevel,
         double wseason, double level, const double* sfactor, const int* scodes,
         const double* deltas, int wkflag, double* pder) noexcept {
  if (noCodes(ns, scodes)) {
    pder[0] = pder[1] = kMissing;
    return kEsmBadArg;
  }
  std::vector<double> work;
  try {
    work.assign(static_cast<std::size_t>(ns), 0.0);
  } catch (const std::bad_alloc&) {
    pder[0] = pder[1] = kMissing;
    return kEsmNoMem;
  }
  const Seasonal<A> m{{wlevel, wseason}};
  const EsState s{level, 0.0, const_cast<double*>(sfactor), ns};
  return zespass::npd(m, 2, x, misflg, scodes, xscale, n, s, work.data(), deltas, wkflag, pder);
}

template <int A>
int prdA(const double* x, const char* misflg, double xscale, long n, int ns, double wlevel,
         double wseason, double* level, double* sfactor, const int* scodes, long start, long end,
         long lead, double se2, double siglev, int startflg, double* mse,
         double* strptr) noexcept {
  if (noCodes(ns, scodes)) return kEsmBadArg;
  const Seasonal<A> m{{wlevel, wseason}};
  EsState s{*level, 0.0, sfactor, ns};
  const int rc = zespass::prd(m, x, misflg, scodes, xscale, n, s, start, end, lead, se2, siglev,
                              startflg, mse, strptr);
  *level = s.L;
  return rc;
}

int stbA(int ns, double wlevel, double wseason) noexcept {
  constexpr double eps = 1.110223024625157e-16;
  const double v = (1.0 - wlevel) * wseason;
  return (v > eps && static_cast<double>(ns) * wlevel + v > eps && 2.0 - wlevel - v > eps) ? 1
                                                                                           : 0;
}

int psiA(double wlevel, double wseason, int ns, long npsi, double* psi) noexcept {
  if (npsi < 1) return kEsmOk;
  psi[0] = 1.0;
  const double c = (1.0 - wlevel) * wseason;
  for (long j = 1; j < npsi; ++j) psi[j] = wlevel + (ns > 0 && j % ns == 0 ? c : 0.0);
  return kEsmOk;
}

double claA(double wlevel, double wseason, int ns, double se2, long lead, double siglev,
            double* limit) noexcept {
  if (wzmis(se2) || wzmis(wlevel) || wzmis(wseason) || ns < 1) {
    if (limit != nullptr) *limit = kMissing;
    return kMissing;
  }
  const double km1 = static_cast<double>(lead - 1);
  double var = se2 * (1.0 + km1 * wlevel * wlevel);
  if (lead > ns) {
    // (lead - 1)/ns as a real quotient: the seasonal shocks are spread
    // evenly over the leads rather than counted per completed cycle.
    const double c = (1.0 - wlevel) * wseason;
    var += se2 * (km1 / static_cast<double>(ns)) * c * (2.0 * wlevel + c);
  }
  if (limit != nullptr) *limit = zespass::halfWidth(zespass::limitZ(siglev), var);
  return var;
}

}  // namespace

int zesssvi(const double* x, const char* misflg, long n, int nseasons, int nstart, int stflg,
            double* level, double* sfactor) noexcept {
  return svi(x, misflg, n, nseasons, nstart, 1, stflg, level, sfactor);
}
int zesisvi(const double* x, const char* misflg, long n, int nseasons, int nstart, int additive,
            int stflg, double* level, double* sfactor) noexcept {
  return svi(x, misflg, n, nseasons, nstart, additive, stflg, level, sfactor);
}
int zesspnt(double x, double xscale, double wlevel, double wseason, double* level,
            double* sfactor, int scode, double* xhat, double* e) noexcept {
  return pntA(x, xscale, 1, wlevel, wseason, level, sfactor, scode, xhat, e);
}
int zesipnt(double x, double xscale, int additive, double wlevel, double wseason, double* level,
            double* sfactor, int scode, double* xhat, double* e) noexcept {
  return pntA(x, xscale, additive, wlevel, wseason, level, sfactor, scode, xhat, e);
}
int zessdpd(double x, double wlevel, double wseason, double llevel, double clevel,
            double lseason, double cseason, double* derlev, double* dersea,
            double* dervec) noexcept {
  return dpdA(x, wlevel, wseason, llevel, clevel, lseason, cseason, 1, derlev, dersea, dervec);
}
int zesidpd(double x, double wlevel, double wseason, double llevel, double clevel,
            double lseason, double cseason, int additive, double* derlev, double* dersea,
            double* dervec) noexcept {
  return dpdA(x, wlevel, wseason, llevel, clevel, lseason, cseason, additive, derlev, dersea,
              dervec);
}
int zesssmo(const double* x, const char* misflg, double xscale, long n, int nseasons,
            double wlevel, double wseason, double* level, double* sfactor, const int* scodes,
            double* mse) noexcept {
  return smoA<1>(x, misflg, xscale, n, nseasons, wlevel, wseason, level, sfactor, scodes, mse);
}
int zesismo(const double* x, const char* misflg, double xscale, long n, int nseasons,
            int additive, double wlevel, double wseason, double* level, double* sfactor,
            const int* scodes, double* mse) noexcept {
  return additive
             ? smoA<1>(x, misflg, xscale, n, nseasons, wlevel, wseason, level, sfactor, scodes, mse)
             : smoA<0>(x, misflg, xscale, n, nseasons, wlevel, wseason, level, sfactor, scodes, mse);
}
int zessnpd(const double* x, const char* misflg, double xscale, long n, int nseasons,
            double wlevel, double wseason, double level, const double* sfactor,
            const int* scodes, const double* deltas, int wkflag, double* pder) noexcept {
  return npdA<1>(x, misflg, xscale, n, nseasons, wlevel, wseason, level, sfactor, scodes, deltas,
                 wkflag, pder);
}
int zesinpd(const double* x, const char* misflg, double xscale, long n, int nseasons,
            int additive, double wlevel, double wseason, double level, const double* sfactor,
            const int* scodes, const double* deltas, int wkflag, double* pder) noexcept {
  return additive ? npdA<1>(x, misflg, xscale, n, nseasons, wlevel, wseason, level, sfactor,
                            scodes, deltas, wkflag, pder)
                  : npdA<0>(x, misflg, xscale, n, nseasons, wlevel, wseason, level, sfactor,
                            scodes, deltas, wkflag, pder);
}
int zessprd(const double* x, const char* misflg, double xscale, long n, int nseasons,
            double wlevel, double wseason, double* level, double* sfactor, const int* scodes,
            long start, long end, long lead, double se2, double siglev, int startflg,
            double* mse, double* strptr) noexcept {
  return prdA<1>(x, misflg, xscale, n, nseasons, wlevel, wseason, level, sfactor, scodes, start,
                 end, lead, se2, siglev, startflg, mse, strptr);
}
int zesiprd(const double* x, const char* misflg, double xscale, long n, int nseasons,
            int additive, double wlevel, double wseason, double* level, double* sfactor,
            const int* scodes, long start, long end, long lead, double se2, double siglev,
            int startflg, double* mse, double* strptr) noexcept {
  return additive ? prdA<1>(x, misflg, xscale, n, nseasons, wlevel, wseason, level, sfactor,
                            scodes, start, end, lead, se2, siglev, startflg, mse, strptr)
                  : prdA<0>(x, misflg, xscale, n, nseasons, wlevel, wseason, level, sfactor,
                            scodes, start, end, lead, se2, siglev, startflg, mse, strptr);
}
void zessnmd(int nseasons, double* level, double* sfactor, double* derlev, double* dersealev,
             double* derseasea) noexcept {
  double* const ds[2] = {dersealev, derseasea};
  zespass::recentre(nseasons, 1, 2, level, nullptr, sfactor, derlev, nullptr, ds);
}
void zesinmd(int nseasons, int additive, double* level, double* sfactor, double* derlev,
             double* dersealev, double* derseasea) noexcept {
  double* const ds[2] = {dersealev, derseasea};
  zespass::recentre(nseasons, additive, 2, level, nullptr, sfactor, derlev, nullptr, ds);
}
int zessstb(int nseasons, double wlevel, double wseason) noexcept {
  return stbA(nseasons, wlevel, wseason);
}
int zesistb(int nseasons, double wlevel, double wseason) noexcept {
  return stbA(nseasons, wlevel, wseason);
}
int zesspsi(double wlevel, double wseason, int nseasons, long npsi, double* psi) noexcept {
  return psiA(wlevel, wseason, nseasons, npsi, psi);
}
int zesipsi(double wlevel, double wseason, int nseasons, long npsi, double* psi) noexcept {
  return psiA(wlevel, wseason, nseasons, npsi, psi);
}
double zesscla(double wlevel, double wseason, int nseasons, double se2, long lead, double siglev,
               double* limit) noexcept {
  return claA(wlevel, wseason, nseasons, se2, lead, siglev, limit);
}
double zesicla(double wlevel, double wseason, int nseasons, double se2, long lead, double siglev,
               double* limit) noexcept {
  return claA(wlevel, wseason, nseasons, se2, lead, siglev, limit);
}
void zessstd(const double* xpxdiag, double mse, long nobs, const double* parms, double* stderr_,
             double* tvals) noexcept {
  zespass::stdk(2, 3, xpxdiag, mse, nobs, parms, stderr_, tvals);
}
void zesistd(const double* xpxdiag, double mse, long nobs, const double* parms, double* stderr_,
             double* tvals) noexcept {
  zespass::stdk(2, 3, xpxdiag, mse, nobs, parms, stderr_, tvals);
}

}  // namespace qvt
