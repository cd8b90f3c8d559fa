// Start-value regressions: level, trend and seasonal terms by least squares
// on the time index t = 1..n, in closed form.
//
// The sums that involve t alone follow from the layout: season s (0-based,
// u = s + 1) holds the times u, u + ns, u + 2 ns, ..., so its count, sum of t
// and sum of t^2 are known from n and ns. One pass over the observations
// then subtracts what the flagged ones would have contributed and gathers
// the sums that involve y.
#include "stats/startreg.hpp"

#include "run/missing.hpp"
#include "stats/numeric.hpp"
#include "stats/sweep.hpp"

#include <cmath>
#include <new>
#include <vector>

namespace qvt {
namespace {

constexpr double kTiny = 1.491668147e-154;
constexpr double kEps = 1.110223024625157e-16;
constexpr double kSmallestNormal = 2.225073858507202e-308;

bool usable(const char* misflg, long i) { return misflg == nullptr || misflg[i] == 0; }

// Count, sum of t and sum of t^2 of a season whose first time is u and
// which holds cnt elements spaced ns apart:
//   sum t   = cnt u + ns cnt (cnt - 1) / 2,
//   sum t^2 = cnt u^2 + 2 u ns cnt (cnt - 1) / 2 + ns^2 (cnt - 1) cnt (2 cnt - 1) / 6.
struct SeasonSums {
  double cnt, st, sst;
};

SeasonSums layoutSums(double u, double cnt, double ns) {
  const double pairs = cnt * (cnt - 1.0) / 2.0;
  return {cnt, cnt * u + ns * pairs,
          cnt * u * u + 2.0 * u * ns * pairs + ns * ns * (cnt - 1.0) * cnt * (2.0 * cnt - 1.0) / 6.0};
}

// The sums of every season from the layout, corrected for flagged elements.
// yst and ysum (if not null) receive the per-season sums of y t and y.
void seasonSums(const double* y, const char* misflg, long n, int ns, std::vector<SeasonSums>& s,
                double* ysum, double* yst) {
  const long nb = n / ns;
  const long last = n % ns;
  for (int k = 0; k < ns; ++k) {
    const double cnt = static_cast<double>(k < last ? nb + 1 : nb);
    s[k] = layoutSums(k + 1.0, cnt, ns);
    if (ysum != nullptr) ysum[k] = 0.0;
    if (yst != nullptr) yst[k] = 0.0;
  }
  for (long i = 0; i < n; ++i) {
    const int k = static_cast<int>(i % ns);
    const double t = static_cast<double>(i + 1);
    if (!usable(misflg, i)) {
      s[k].cnt -= 1.0;
      s[k].st -= t;
      s[k].sst -= t * t;
      continue;
    }
    if (ysum != nullptr) ysum[k] += y[i];
    if (yst != nullptr) yst[k] += y[i] * t;
  }
}

// The coefficients of one fit, held whether or not the caller wants them,
// so that residuals can be formed from them.
struct Fit {
  bool wantC = false, wantT = false, wantQ = false, wantS = false;
  double c = 0.0, t = 0.0, q = 0.0;
  std::vector<double> sd;  // ns entries when seasonal terms are fitted
};

// Constant only: the mean of the usable values.
int getmu(const double* y, const char* misflg, long n, Fit& f) {
  double sum = 0.0;
  long cnt = 0;
  for (long i = 0; i < n; ++i) {
    if (!usable(misflg, i)) continue;
    sum += y[i];
    ++cnt;
  }
  if (cnt == 0) return -2;
  f.c = sum / static_cast<double>(cnt);
  return 0;
}

// Least squares on t; a line through the origin when the constant is not
// wanted.
int getrend(const double* y, const char* misflg, long n, Fit& f) {
  double cnt = 0.0, st = 0.0, sst = 0.0, sy = 0.0, syt = 0.0;
  for (long i = 0; i < n; ++i) {
    if (!usable(misflg, i)) continue;
    const double t = static_cast<double>(i + 1);
    cnt += 1.0;
    st += t;
    sst += t * t;
    sy += y[i];
    syt += y[i] * t;
  }
  if (!f.wantC) {
    if (sst < kTiny) return -2;
    f.t = syt / sst;
    return 0;
  }
  if (cnt < 1.0) return -2;
  if (cnt == 1.0) {
    f.t = 0.0;
    f.c = sy;
    return 0;
  }
  const double w = 1.0 / cnt;
  const double tbar = w * st;
  const double ybar = w * sy;
  const double d = w * sst - tbar * tbar;
  if (std::fabs(d) >= kTiny) {
    f.t = (w * syt - tbar * ybar) / d;
    f.c = (w * sst * ybar - w * syt * tbar) / d;
  } else {
    f.t = 0.0;
    f.c = ybar;
  }
  return 0;
}

// Seasonal means, centred on the overall mean when the constant is wanted.
int getsmu(const double* y, const char* misflg, long n, int ns, Fit& f) {
  std::vector<double> cnt(ns, 0.0), sum(ns, 0.0);
  double total = 0.0, all = 0.0;
  for (long i = 0; i < n; ++i) {
    if (!usable(misflg, i)) continue;
    const int k = static_cast<int>(i % ns);
    cnt[k] += 1.0;
    sum[k] += y[i];
    total += y[i];
    all += 1.0;
  }
  if (all == 0.0) return -2;
  const double mu = total / all;
  if (f.wantC) f.c = mu;
  bool several = false;
  for (int k = 0; k < ns; ++k) {
    if (cnt[k] > 1.0) several = true;
    if (cnt[k] == 0.0) {
      f.sd[k] = kMissing;
      continue;
    }
    const double m = sum[k] / cnt[k];
    f.sd[k] = f.wantC ? m - mu : m;
  }
  return several ? 0 : 1;
}

// Constant, trend and seasonal dummies by partialling out the seasons:
// the slope comes from the variation of t and y within the seasons,
//   W = sum t^2 - sum_s (sum_s t)^2 / n_s,  Y = sum y t - sum_s ybar_s sum_s t,
// and each season's term is its mean less the slope times its mean time.
int getrdmy(const double* y, const char* misflg, long n, int ns, Fit& f) {
  std::vector<SeasonSums> s(ns);
  std::vector<double> ysum(ns), yst(ns);
  seasonSums(y, misflg, n, ns, s, ysum.data(), yst.data());
  // The total of t^2 over the usable elements: n(n+1)(2n+1)/6 less the
  // flagged ones, which is what the corrected season totals add up to.
  double sst = 0.0;
  double ytt = 0.0;
  double all = 0.0;
  int rc = 0;
  bool several = false;
  std::vector<double> smu(ns, 0.0);
  for (int k = 0; k < ns; ++k) {
    ytt += yst[k];
    sst += s[k].sst;
    all += s[k].cnt;
    if (s[k].cnt > 1.0) several = true;
    if (s[k].cnt > 0.0) smu[k] = ysum[k] / s[k].cnt;
    else rc = 1;
  }
  if (all == 0.0) return -2;
  if (!several) {
    // One value a season at most: the values are the seasonal terms.
    f.t = 0.0;
    double sum = 0.0, m = 0.0;
    for (int k = 0; k < ns; ++k) {
      if (s[k].cnt == 0.0) {
        f.sd[k] = kMissing;
        continue;
      }
      f.sd[k] = smu[k];
      sum += smu[k];
      m += 1.0;
    }
    if (f.wantC) {
      f.c = sum / m;
      for (int k = 0; k < ns; ++k)
        if (s[k].cnt > 0.0) f.sd[k] -= f.c;
    }
    return 1;
  }
  double w = sst;
  double yy = ytt;
  for (int k = 0; k < ns; ++k) {
    if (s[k].cnt == 0.0) continue;
    w -= s[k].st * s[k].st / s[k].cnt;
    yy -= smu[k] * s[k].st;
  }
  if (std::fabs(w) < kTiny) {
    // Time can't be told apart from the seasons.
    for (int k = 0; k < ns; ++k) f.sd[k] = s[k].cnt > 0.0 ? 0.0 : kMissing;
    return getrend(y, misflg, n, f);
  }
  f.t = yy / w;
  for (int k = 0; k < ns; ++k)
    f.sd[k] = s[k].cnt > 0.0 ? smu[k] - (s[k].st / s[k].cnt) * f.t : kMissing;
  if (f.wantC) {
    // Centre over all ns seasons (an empty one counts with 0).
    double sum = 0.0;
    for (int k = 0; k < ns; ++k)
      if (s[k].cnt > 0.0) sum += f.sd[k];
    f.c = sum / ns;
    for (int k = 0; k < ns; ++k)
      if (s[k].cnt > 0.0) f.sd[k] -= f.c;
  }
  return rc;
}

// Quadratic forms: t and t^2 (and the constant, or the seasonal terms
// partialled out as in getrdmy) by the normal equations, solved with the
// sweep operator. The time is scaled to u = t / n, which keeps the
// cross-product matrix of 1, u, u^2 well conditioned; the coefficients are
// scaled back afterwards.
int getquad(const double* y, const char* misflg, long n, int ns, Fit& f) {
  const bool seasonal = f.wantS;
  const int nseas = seasonal ? ns : 1;
  const double dn = static_cast<double>(n);
  // Per season (one season when not seasonal): count, sums of u, u^2, y and
  // cross products.
  struct Acc {
    double cnt = 0, u = 0, u2 = 0, y = 0;
  };
  std::vector<Acc> acc(nseas);
  double suu = 0, suu2 = 0, su2u2 = 0, suy = 0, su2y = 0, syy = 0;
  double all = 0;
  for (long i = 0; i < n; ++i) {
    if (!usable(misflg, i)) continue;
    const double u = static_cast<double>(i + 1) / dn;
    const double u2 = u * u;
    Acc& a = acc[seasonal ? i % ns : 0];
    a.cnt += 1;
    a.u += u;
    a.u2 += u2;
    a.y += y[i];
    suu += u * u;
    suu2 += u * u2;
    su2u2 += u2 * u2;
    suy += u * y[i];
    su2y += u2 * y[i];
    syy += y[i] * y[i];
    all += 1;
  }
  if (all == 0) return -2;
  int rc = 0;
  // Cross-product matrix of (u, u^2, y), either about the origin (model 6),
  // about the overall means (model 7), or about the seasonal means (14, 15).
  const bool centre = seasonal || f.wantC;
  double a[6] = {suu, suu2, su2u2, suy, su2y, syy};
  if (centre) {
    for (const Acc& s : acc) {
      if (s.cnt == 0) {
        rc = 1;
        continue;
      }
      a[0] -= s.u * s.u / s.cnt;
      a[1] -= s.u * s.u2 / s.cnt;
      a[2] -= s.u2 * s.u2 / s.cnt;
      a[3] -= s.u * s.y / s.cnt;
      a[4] -= s.u2 * s.y / s.cnt;
      a[5] -= s.y * s.y / s.cnt;
    }
  }
  char cc[3] = {'0', '0', '0'};
  double wrk[3];
  const double d0 = a[0], d1 = a[2];
  hostSweep(1e-10 * d0, a, 0, 3, cc, wrk);
  hostSweep(1e-10 * d1, a, 1, 3, cc, wrk);
  const double bu = cc[0] == '1' ? a[zisub(0, 2)] : 0.0;
  const double bu2 = cc[1] == '1' ? a[zisub(1, 2)] : 0.0;
  f.t = bu / dn;
  f.q = bu2 / (dn * dn);
  if (!seasonal) {
    if (f.wantC) {
      const Acc& s = acc[0];
      f.c = (s.y - bu * s.u - bu2 * s.u2) / s.cnt;
    }
    return rc;
  }
  double sum = 0.0;
  for (int k = 0; k < ns; ++k) {
    const Acc& s = acc[k];
    f.sd[k] = s.cnt > 0 ? (s.y - bu * s.u - bu2 * s.u2) / s.cnt : kMissing;
    if (s.cnt > 0) sum += f.sd[k];
  }
  if (f.wantC) {
    f.c = sum / ns;
    for (int k = 0; k < ns; ++k)
      if (acc[k].cnt > 0) f.sd[k] -= f.c;
  }
  return rc;
}

int ztsrdmyImpl(const double* y, const char* misflg, long n, int ns, double* ccoef, double* tcoef,
                double* qcoef, double* sdcoef, double* res) {
  if (ccoef != nullptr) *ccoef = kMissing;
  if (tcoef != nullptr) *tcoef = kMissing;
  if (qcoef != nullptr) *qcoef = kMissing;
  if (sdcoef != nullptr)
    for (int k = 0; k < ns; ++k) sdcoef[k] = kMissing;
  if (res != nullptr)
    for (long i = 0; i < n; ++i) res[i] = kMissing;
  Fit f;
  f.wantC = ccoef != nullptr;
  f.wantT = tcoef != nullptr;
  f.wantQ = qcoef != nullptr;
  f.wantS = sdcoef != nullptr && ns > 2;
  const int model = (f.wantC ? 1 : 0) + (f.wantT ? 2 : 0) + (f.wantQ ? 4 : 0) + (f.wantS ? 8 : 0);
  if (model == 0) return -3;
  if (n < 2 || y == nullptr) return -2;
  if (f.wantS) f.sd.assign(ns, kMissing);

  int rc = 0;
  if (sdcoef != nullptr && ns > 1 && n <= ns) {
    // Less than a cycle of data: each value is its own seasonal term.
    f.sd.assign(ns, kMissing);
    double sum = 0.0, cnt = 0.0;
    for (long i = 0; i < n; ++i) {
      if (!usable(misflg, i)) continue;
      f.sd[i] = y[i];
      sum += y[i];
      cnt += 1.0;
    }
    if (cnt == 0.0) return -2;
    f.wantS = true;
    f.t = 0.0;
    f.q = 0.0;
    if (f.wantC) {
      f.c = sum / cnt;
      for (long i = 0; i < n; ++i)
        if (usable(misflg, i)) f.sd[i] -= f.c;
    }
    rc = 1;
  } else {
    switch (model) {
      case 1: rc = getmu(y, misflg, n, f); break;
      case 2:
      case 3: rc = getrend(y, misflg, n, f); break;
      case 8:
      case 9: rc = getsmu(y, misflg, n, ns, f); break;
      case 10:
      case 11: rc = getrdmy(y, misflg, n, ns, f); break;
      case 6:
      case 7:
      case 14:
      case 15: rc = getquad(y, misflg, n, ns, f); break;
      default: return -3;  // a quadratic term without the linear one: no regression
    }
    if (rc < 0) return rc;
  }

  if (ccoef != nullptr) *ccoef = f.c;
  if (tcoef != nullptr) *tcoef = f.t;
  if (qcoef != nullptr) *qcoef = f.q;
  if (sdcoef != nullptr && f.wantS)
    for (int k = 0; k < ns; ++k) sdcoef[k] = f.sd[k];
  if (res != nullptr) {
    for (long i = 0; i < n; ++i) {
      if (!usable(misflg, i)) continue;
      const double t = static_cast<double>(i + 1);
      double fit = f.c + f.t * t + f.q * t * t;
      if (f.wantS) {
        const double sd = f.sd[ns > 0 ? i % ns : 0];
        if (wzmis(sd)) continue;
        fit += sd;
      }
      res[i] = y[i] - fit;
    }
  }
  return rc;
}

// What getrsdm finds: the factors, the overall line, and whether the fit
// fell back to one value a season.
struct MultFit {
  std::vector<double> sd;  // ns factors
  double c = 0.0;          // constant reported to the caller
  double t = 0.0;          // trend reported to the caller
  double lineC = 0.0;      // overall line at t = 0, for residuals
  double lineT = 0.0;
  bool perSeason = false;  // one value a season at most: the fit is the values
};

// A line for each season and an overall line; the factors are each season's
// line at t = 1 over the overall line there, brought to average 1.
int getrsdm(const double* y, const char* misflg, long n, int ns, bool wantC, bool wantT, MultFit& r) {
  std::vector<SeasonSums> s(ns);
  std::vector<double> ysum(ns), yst(ns), smu(ns, 0.0), slope(ns, 0.0), icpt(ns, 0.0);
  std::vector<double>& sd = r.sd;
  sd.assign(ns, kMissing);
  seasonSums(y, misflg, n, ns, s, ysum.data(), yst.data());
  int rc = 0;
  double all = 0.0;
  bool several = false;
  for (int k = 0; k < ns; ++k) {
    all += s[k].cnt;
    if (s[k].cnt > 1.0) several = true;
    if (s[k].cnt > 0.0) smu[k] = ysum[k] / s[k].cnt;
    else rc = 1;
  }
  if (all == 0.0) return -2;
  if (!several) {
    r.perSeason = true;
    double sum = 0.0, m = 0.0;
    for (int k = 0; k < ns; ++k) {
      if (s[k].cnt == 0.0) continue;
      sd[k] = smu[k];
      sum += smu[k];
      m += 1.0;
    }
    r.t = 0.0;
    if (wantC) {
      const double mean = sum / m;
      r.c = mean;
      for (int k = 0; k < ns; ++k) {
        if (s[k].cnt == 0.0) continue;
        // A mean of 0 can't scale the factors: they stay neutral.
        sd[k] = std::fabs(mean) > kSmallestNormal ? sd[k] / mean : 1.0;
      }
    }
    return 1;
  }
  // Least-squares line of each season.
  double m = 0.0, ntmp = 0.0, sumSlope = 0.0, sumIcpt = 0.0, sumMu = 0.0;
  for (int k = 0; k < ns; ++k) {
    const double cnt = s[k].cnt;
    sumMu += smu[k];
    if (cnt == 0.0) continue;
    m += 1.0;
    if (cnt >= 2.0) {
      const double d = cnt * s[k].sst - s[k].st * s[k].st;
      slope[k] = cnt * (yst[k] - s[k].st * smu[k]) / d;
      icpt[k] = (cnt * s[k].sst * smu[k] - s[k].st * yst[k]) / d;
    } else {
      slope[k] = 0.0;
      icpt[k] = smu[k];
      ntmp += 1.0;
    }
    sumSlope += slope[k];
    sumIcpt += icpt[k];
    sd[k] = slope[k] + icpt[k];  // the season's line at t = 1
  }
  double tt = 0.0, cc = 0.0;
  if (wantT) {
    // The trend averages the seasons with a line; the constant all seasons.
    tt = sumSlope / (m - ntmp);
    cc = wantC ? sumIcpt / m : 0.0;
  } else {
    // Without a trend the overall level at t = 1 is taken from the
    // intercepts and the seasonal means together; it only scales the
    // factors (undone by the normalisation below) and decides which repair
    // of a non-positive factor lies nearer to 1.
    cc = (sumIcpt + sumMu) / m;
  }
  r.t = tt;
  r.c = wantT ? cc : sumIcpt / m;
  r.lineT = tt;
  r.lineC = sumIcpt / m;
  const double dd = tt + cc;
  if (std::fabs(dd) <= kTiny) {
    for (int k = 0; k < ns; ++k) sd[k] = 1.0;
    return rc;
  }
  for (int k = 0; k < ns; ++k)
    if (s[k].cnt > 0.0) sd[k] /= dd;

  // A multiplicative factor must be positive. Try, in turn, the season's
  // intercept (or mean) over the overall one, its slope over the overall
  // slope, and its mean over the overall line's mean over the season's
  // times; each is taken only when it lies nearer to 1.
  for (int k = 0; k < ns; ++k) {
    if (s[k].cnt == 0.0 || sd[k] >= kEps) continue;
    double& f = sd[k];
    auto offer = [&f](double v) {
      if (f < kEps && std::fabs(1.0 - v) < std::fabs(1.0 - f)) f = v;
    };
    if (std::fabs(cc) > kTiny) offer(wantT ? icpt[k] / cc : smu[k] / cc);
    if (std::fabs(tt) > kTiny) offer(slope[k] / tt);
    if (std::fabs(tt) > kTiny && std::fabs(cc) > kTiny) {
      const double e = s[k].st * tt + s[k].cnt * cc;
      offer(std::fabs(e) > kTiny ? smu[k] * s[k].cnt / e : kNumBig);
    }
  }
  // What is still not positive takes the smallest positive factor of the
  // other seasons, at most 1: a season without a usable level gets the
  // weakest pattern seen, never a negative or zero divisor.
  double smallest = 1.0;
  for (int k = 0; k < ns; ++k)
    if (s[k].cnt > 0.0 && sd[k] >= kEps && sd[k] < smallest) smallest = sd[k];
  for (int k = 0; k < ns; ++k)
    if (s[k].cnt > 0.0 && sd[k] < kEps) sd[k] = smallest;

  double g = 0.0;
  for (int k = 0; k < ns; ++k)
    if (s[k].cnt > 0.0) g += sd[k];
  g /= m;
  if (std::fabs(g) > 1.1368683772161608e-13)
    for (int k = 0; k < ns; ++k)
      if (s[k].cnt > 0.0) sd[k] /= g;
  return rc;
}

int ztsrsdmImpl(const double* y, const char* misflg, long n, int ns, double* ccoef, double* tcoef,
                double* sdcoef, double* res) {
  if (y == nullptr || n < 1) return -2;
  const int nsd = sdcoef != nullptr ? ns : 0;
  if (n < 2) {
    if (!usable(misflg, 0)) return -2;
    if (ccoef == nullptr) {
      if (tcoef != nullptr) *tcoef = y[0];
      return 0;
    }
    *ccoef = y[0];
    if (tcoef != nullptr) *tcoef = 0.0;
    for (int k = 0; k < nsd; ++k) sdcoef[k] = 1.0;
    if (res != nullptr) res[0] = 0.0;
    return 0;
  }
  if (sdcoef != nullptr && n <= ns && ccoef != nullptr) {
    // Less than a cycle of data: each value over the mean.
    double sum = 0.0, cnt = 0.0;
    for (long i = 0; i < n; ++i) {
      if (!usable(misflg, i)) continue;
      sum += y[i];
      cnt += 1.0;
    }
    if (cnt == 0.0) return -2;
    const double mean = sum / cnt;
    *ccoef = mean;
    const bool scale = std::fabs(mean) > kSmallestNormal;
    for (int k = 0; k < ns; ++k)
      sdcoef[k] = (scale && k < n && usable(misflg, k)) ? y[k] / mean : kMissing;
    if (tcoef != nullptr) *tcoef = 0.0;
    if (res != nullptr) {
      for (long i = 0; i < n; ++i)
        res[i] = usable(misflg, i) && !wzmis(sdcoef[i]) ? y[i] - mean * sdcoef[i] : kMissing;
    }
    return 0;
  }
  if (ns < 1) return -2;
  MultFit r;
  const int rc = getrsdm(y, misflg, n, ns, ccoef != nullptr, tcoef != nullptr, r);
  if (rc < 0) return rc;
  if (ccoef != nullptr) *ccoef = r.c;
  if (tcoef != nullptr) *tcoef = r.t;
  if (sdcoef != nullptr)
    for (int k = 0; k < ns; ++k) sdcoef[k] = r.sd[k];
  if (res != nullptr) {
    // The fit is the overall line times the season's factor; with one value
    // a season at most it is the value itself.
    for (long i = 0; i < n; ++i) {
      const double f = r.sd[i % ns];
      if (!usable(misflg, i) || wzmis(f)) {
        res[i] = kMissing;
        continue;
      }
      res[i] = r.perSeason ? 0.0 : y[i] - (r.lineC + r.lineT * static_cast<double>(i + 1)) * f;
    }
  }
  return rc;
}

}  // namespace

int ztsrdmy(const double* y, const char* misflg, long n, int ns, double* ccoef, double* tcoef,
            double* qcoef, double* sdcoef, double* res) noexcept {
  try {
    return ztsrdmyImpl(y, misflg, n, ns, ccoef, tcoef, qcoef, sdcoef, res);
  } catch (const std::bad_alloc&) {
    return -1;  // the work arrays are vectors: whatever was obtained is freed
  }
}

int ztsrsdm(const double* y, const char* misflg, long n, int ns, double* ccoef, double* tcoef,
            double* sdcoef, double* res) noexcept {
  try {
    return ztsrsdmImpl(y, misflg, n, ns, ccoef, tcoef, sdcoef, res);
  } catch (const std::bad_alloc&) {
    return -1;
  }
}

}  // namespace qvt
