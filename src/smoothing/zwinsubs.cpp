// Kernels of the Winters method, additive and multiplicative. See zwin.hpp.
#include <cmath>
#include <new>
#include <vector>

#include "run/missing.hpp"
#include "smoothing/esmdivide.hpp"
#include "smoothing/esmtypes.hpp"
#include "smoothing/zespass.hpp"
#include "smoothing/zwin.hpp"
#include "stats/startreg.hpp"

namespace qvt {

namespace {

bool stateBad(double v) noexcept { return wzmis(v) || std::fabs(v) > kEsmStateLimit; }

void killState(double* level, double* trend, double* sf) noexcept {
  *level = kMissing;
  *trend = kMissing;
  *sf = kMissing;
}

// Winters psi weight at j: Holt's plus the seasonal term once a cycle.
double psiAt(double w, double g, double d, int ns, long j) noexcept {
  double p = w + static_cast<double>(j) * w * g;
  if (ns > 0 && j % ns == 0) p += (1.0 - w) * d;
  return p;
}

struct Winters {
  static constexpr int p = 3;
  static constexpr int rowlen = kZwinRowLen;
  static constexpr int trendCol = 7;
  static constexpr int seasonCol = 8;
  double w[3] = {0, 0, 0};
  int additive = 1;

  int pnt(double x, double xscale, EsState& s, int sc, double* xhat, double* e) const noexcept {
    return zwinpnt(x, xscale, additive, w[0], w[1], w[2], &s.L, &s.T, s.S, sc, xhat, e);
  }
  double shown(const EsState& s, int sc) const noexcept {
    return additive ? s.L + s.T + s.S[sc] : (s.L + s.T) * s.S[sc];
  }
  void skip(EsState& s, int) const noexcept { s.L += s.T; }
  void turn(EsState& s) const noexcept {
    s.L += s.T;
    s.T = -s.T;
  }
  double lead(const EsState& s, long k, int sc, double* level, double* trend) const noexcept {
    *level = s.L + static_cast<double>(k) * s.T;
    *trend = s.T;
    return additive ? *level + s.S[sc] : *level * s.S[sc];
  }
  double leadvar(const EsState& s, long k, int sc, double v) const noexcept {
    if (additive) return zwincla(w[0], w[1], w[2], s.ns, v, k, kMissing, nullptr);
    // Multiplicative: each earlier shock enters scaled by the ratio of the
    // lead's factor to the factor of the season it hit.
    double sum = 1.0;
    for (long j = 1; j < k; ++j) {
      const long back = ((sc - j) % s.ns + s.ns) % s.ns;
      double ratio = 0.0;
      if (divide(s.S[sc], s.S[back], &ratio) != 0) return ratio;
      const double psi = psiAt(w[0], w[1], w[2], s.ns, j);
      sum += psi * psi * ratio * ratio;
    }
    return v * sum;
  }
};

}  // namespace

int zwinsvi(const double* x, const char* misflg, long n, int nseasons, int nstart, int additive,
            int stflg, double* level, double* trend, double* sfactor) noexcept {
  long last = -1;
  for (long t = n - 1; t >= 1; --t) {
    if (!misflg[t]) {
      last = t;
      break;
    }
  }
  if (last < 0) return kEsmTooFew;
  const double neutral = additive ? 0.0 : 1.0;
  *level = x[last];
  if (trend != nullptr) *trend = 0.0;
  for (int s = 0; s < nseasons; ++s) sfactor[s] = neutral;
  if (!stflg || nseasons < 1) return kEsmOk;

  std::vector<double> csfact;
  try {
    csfact.assign(static_cast<std::size_t>(nseasons), kMissing);
  } catch (const std::bad_alloc&) {
    return kEsmNoMem;
  }
  double ccoef = kMissing;
  double tcoef = 0.0;
  double* tp = trend != nullptr ? &tcoef : nullptr;
  const int rc = additive
                     ? ztsrdmy(x, misflg, n, nseasons, &ccoef, tp, nullptr, csfact.data(), nullptr)
                     : ztsrsdm(x, misflg, n, nseasons, &ccoef, tp, csfact.data(), nullptr);
  *level = x[last];
  if (rc < 0) return rc;
  // The first pass runs backward in time, so the trend is reversed.
  if (trend != nullptr && !wzmis(tcoef)) *trend = -tcoef;
  // The regression numbers seasons from x[0]; the factors are kept by
  // season code.
  auto code = [&](int i) { return ((nstart + i) % nseasons + nseasons) % nseasons; };
  if (rc == 0) {
    for (int i = 0; i < nseasons; ++i)
      sfactor[code(i)] = wzmis(csfact[static_cast<std::size_t>(i)]) ? neutral : csfact[static_cast<std::size_t>(i)];
  } else if (rc == 1 && !wzmis(ccoef)) {
    // Too little data for a full regression: the season means, around the
    // overall one.
    if (additive) {
      *level = ccoef;
      for (int i = 0; i < nseasons; ++i) {
        const double f = csfact[static_cast<std::size_t>(i)];
        sfactor[code(i)] = wzmis(f) ? 0.0 : f;
      }
    } else {
      double c = 0.0;
      if (divide(ccoef, *level, &c) == 0) {
        for (int i = 0; i < nseasons; ++i) {
          const double f = csfact[static_cast<std::size_t>(i)];
          sfactor[code(i)] = wzmis(f) ? c : f * c;
        }
      }
    }
  }
  return kEsmOk;
}

int zwinpnt(double x, double xscale, int additive, double wlevel, double wtrend, double wseason,
            double* level, double* trend, double* sfactor, int scode, double* xhat,
            double* e) noexcept {
  double* sf = &sfactor[scode];
  if (stateBad(*level) || stateBad(*trend) || stateBad(*sf)) {
    killState(level, trend, sf);
    return kEsmDiverged;
  }
  const double L = *level;
  const double T = *trend;
  const double s = *sf;
  const double floor = xscale * 1e-12;
  *xhat = additive ? L + T + s : (L + T) * s;
  if (!additive && *xhat < floor) {
    killState(level, trend, sf);
    return kEsmNonPositive;
  }
  if (*xhat > xscale * kEsmScaleFactor) {
    killState(level, trend, sf);
    return kEsmDiverged;
  }
  *e = *xhat - x;
  if (additive) {
    const double L1 = wlevel * (x - s) + (1.0 - wlevel) * (L + T);
    *level = L1;
    *trend = wtrend * (L1 - L) + (1.0 - wtrend) * T;
    *sf = wseason * (x - L1) + (1.0 - wseason) * s;
    return kEsmOk;
  }
  double r = 0.0;
  if (divide(x, s, &r) != 0) {
    killState(level, trend, sf);
    return kEsmDiverged;
  }
  const double L1 = wlevel * r + (1.0 - wlevel) * (L + T);
  double r2 = 0.0;
  if (divide(x, L1, &r2) != 0) {
    *sf = kMissing;
    return kEsmDiverged;
  }
  *level = L1;
  *trend = wtrend * (L1 - L) + (1.0 - wtrend) * T;
  *sf = wseason * r2 + (1.0 - wseason) * s;
  if (*level < floor || *sf < floor) return kEsmNonPositive;
  return kEsmOk;
}

int zwindpd(double x, double wlevel, double wtrend, double wseason, double llevel, double clevel,
            double ltrend, double /*ctrend*/, double lseason, double /*cseason*/, int additive,
            double* derlev, double* dertre, double* dersea, double* dervec) noexcept {
  for (int i = 0; i < 3; ++i) {
    for (const double v : {derlev[i], dertre[i], dersea[i]}) {
      if (wzmis(v) || std::fabs(v) > kEsmOverflow) {
        for (int j = 0; j < 3; ++j) derlev[j] = dertre[j] = dersea[j] = kMissing;
        return kEsmDiverged;
      }
    }
  }
  const double w = wlevel, g = wtrend, d = wseason, s = lseason;
  const double u = llevel + ltrend;
  double a[3], dl[3], nl[3];
  for (int i = 0; i < 3; ++i) {
    dl[i] = derlev[i];
    a[i] = derlev[i] + dertre[i];
  }
  if (additive) {
    for (int i = 0; i < 3; ++i) dervec[i] = a[i] + dersea[i];
    nl[0] = (1.0 - w) * a[0] - w * dersea[0] + (x - s) - u;
    nl[1] = (1.0 - w) * a[1] - w * dersea[1];
    nl[2] = (1.0 - w) * a[2] - w * dersea[2];
    dersea[0] = (1.0 - d) * dersea[0] - d * nl[0];
    dersea[1] = (1.0 - d) * dersea[1] - d * nl[1];
    dersea[2] = (1.0 - d) * dersea[2] + (x - clevel) - (s + d * nl[2]);
  } else {
    double r = 0.0, q = 0.0, r2 = 0.0, q2 = 0.0;
    if (divide(x, s, &r) != 0 || divide(w * r, s, &q) != 0) {
      for (int j = 0; j < 3; ++j) derlev[j] = dersea[j] = kMissing;
      return kEsmDiverged;
    }
    if (divide(x, clevel, &r2) != 0 || divide(d * r2, clevel, &q2) != 0) {
      for (int j = 0; j < 3; ++j) dersea[j] = kMissing;
      return kEsmDiverged;
    }
    for (int i = 0; i < 3; ++i) dervec[i] = a[i] * s + dersea[i] * u;
    nl[0] = (1.0 - w) * a[0] + r - (u + q * dersea[0]);
    nl[1] = (1.0 - w) * a[1] - q * dersea[1];
    nl[2] = (1.0 - w) * a[2] - q * dersea[2];
    dersea[0] = (1.0 - d) * dersea[0] - q2 * nl[0];
    dersea[1] = (1.0 - d) * dersea[1] - q2 * nl[1];
    dersea[2] = (1.0 - d) * dersea[2] + (r2 - s) - q2 * nl[2];
  }
  const double dt0 = dertre[0], dt1 = dertre[1], dt2 = dertre[2];
  dertre[0] = (1.0 - g) * dt0 + g * (nl[0] - dl[0]);
  dertre[1] = g * (nl[1] - dl[1]) + ((clevel - llevel) - ltrend) + (1.0 - g) * dt1;
  dertre[2] = (1.0 - g) * dt2 + g * (nl[2] - dl[2]);
  for (int i = 0; i < 3; ++i) derlev[i] = nl[i];
  return kEsmOk;
}

namespace {
// Every observation needs the season code its caller gave: on a cycle of
// two or more seasons there is no position to fall back on, since only the
// calendar knows where in the cycle a series starts.
bool noCodes(int ns, const int* scodes) noexcept { return ns >= 2 && scodes == nullptr; }
}  // namespace

int zwinsmo(const double* x, const char* misflg, double xscale, long n, int nseasons,
            int additive, double wlevel, double wtrend, double wseason, double* level,
            double* trend, double* sfactor, const int* scodes, double* mse) noexcept {
  if (noCodes(nseasons, scodes)) return kEsmBadArg;
  const Winters m{{wlevel, wtrend, wseason}, additive};
  EsState s{*level, *trend, sfactor, nseasons};
  const int rc = zespass::smo(m, x, misflg, scodes, xscale, n, s, mse);
  *level = s.L;
  *trend = s.T;
  return rc;
}

int zwinnpd(const double* x, const char* misflg, double xscale, long n, int nseasons,
            int additive, double wlevel, double wtrend, double wseason, double level,
            double trend, const double* sfactor, const int* scodes, const double* deltas,
            int wkflag, double* pder) noexcept {
  if (noCodes(nseasons, scodes)) {
    for (int i = 0; i < 3; ++i) pder[i] = kMissing;
    return kEsmBadArg;
  }
  std::vector<double> work;
  try {
    work.assign(static_cast<std::size_t>(nseasons), 0.0);
  } catch (const std::bad_alloc&) {
    for (int i = 0; i < 3; ++i) pder[i] = kMissing;
    return kEsmNoMem;
  }
  const Winters m{{wlevel, wtrend, wseason}, additive};
  const EsState s{level, trend, const_cast<double*>(sfactor), nseasons};
  return zespass::npd(m, 3, x, misflg, scodes, xscale, n, s, work.data(), deltas, wkflag, pder);
}

int zwinprd(const double* x, const char* misflg, double xscale, long n, int nseasons,
            int additive, double wlevel, double wtrend, double wseason, double* level,
            double* trend, double* sfactor, const int* scodes, long start, long end, long lead,
            double se2, double siglev, int startflg, double* mse, double* strptr) noexcept {
  if (noCodes(nseasons, scodes)) return kEsmBadArg;
  const Winters m{{wlevel, wtrend, wseason}, additive};
  EsState s{*level, *trend, sfactor, nseasons};
  const int rc = zespass::prd(m, x, misflg, scodes, xscale, n, s, start, end, lead, se2, siglev,
                              startflg, mse, strptr);
  *level = s.L;
  *trend = s.T;
  return rc;
}

void zwinnmd(int nseasons, int additive, double* level, double* trend, double* sfactor,
             double* derlev, double* dertre, double* dersealev, double* derseatre,
             double* derseasea) noexcept {
  double* const ds[3] = {dersealev, derseatre, derseasea};
  zespass::recentre(nseasons, additive, 3, level, trend, sfactor, derlev, dertre, ds);
}

int zwinstb(int nseasons, int /*additive*/, double wlevel, double wtrend,
            double wseason) noexcept {
  constexpr double eps = 1.110223024625157e-16;
  const double v = (1.0 - wlevel) * wseason;
  const double b = 2.0 - wlevel - v;
  const double wg = wlevel * wtrend;
  return (v > eps && static_cast<double>(nseasons) * wlevel + v > eps && b > eps && wg > eps &&
          wg < b)
             ? 1
             : 0;
}

int zwinpsi(double wlevel, double wtrend, double wseason, int nseasons, long npsi,
            double* psi) noexcept {
  if (npsi < 1) return kEsmOk;
  psi[0] = 1.0;
  for (long j = 1; j < npsi; ++j) psi[j] = psiAt(wlevel, wtrend, wseason, nseasons, j);
  return kEsmOk;
}

double zwincla(double wlevel, double wtrend, double wseason, int nseasons, double se2, long lead,
               double siglev, double* limit) noexcept {
  if (wzmis(se2) || wzmis(wlevel) || wzmis(wtrend) || wzmis(wseason)) {
    if (limit != nullptr) *limit = kMissing;
    return kMissing;
  }
  double sum = 1.0;
  for (long j = 1; j < lead; ++j) {
    const double p = psiAt(wlevel, wtrend, wseason, nseasons, j);
    sum += p * p;
  }
  const double var = se2 * sum;
  if (limit != nullptr) *limit = zespass::halfWidth(zespass::limitZ(siglev), var);
  return var;
}

void zwinstd(const double* xpxdiag, double mse, long nobs, const double* parms, double* stderr_,
             double* tvals) noexcept {
  zespass::stdk(3, 4, xpxdiag, mse, nobs, parms, stderr_, tvals);
}

}  // namespace qvt
