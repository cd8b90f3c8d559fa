// Seasonality test by an information criterion and a GLS F test of equal
// seasonal means under AR(1) errors.
//
// The GLS normal equations X'TX B = X'Tz (X the season indicators, T the
// inverse AR(1) correlation matrix up to a factor, tridiagonal) are built in
// closed form from the number of complete cycles, the seasonal means and the
// first and last value of the series: no matrix of series length is formed,
// and the work after the seasonal means depends on the number of seasons
// alone.
//
// Decisions of this build where the method leaves a choice:
//  - p > 1. The non-seasonal model is the Yule-Walker AR(p) (getphi). For the
//    seasonal model the GLS step keeps the AR(1) error with coefficient rho[1]
//    of the seasonal residuals, as with p = 1; the residual variance of the
//    seasonal model uses the AR(p) fitted to those same residual
//    autocorrelations, so that its p coefficients belong to the series they
//    are applied to and the p degrees of freedom charged in df are earned.
//    With p = 1 both are the one coefficient rho[1] and a zero constant.
//  - An unusable F statistic: a negative one (|phi[1]| above 1, which the
//    missing-value scaling of getrho can produce, makes the error model
//    non-stationary), one beyond the overflow guard, or a tail probability
//    that the F distribution could not give, all yield the p-value 0.9999999
//    that the test gives wherever the statistic can't be used: seasonality is
//    then not shown, rather than shown by an error value.
//  - A negative p is rejected (-13) even when nseas >= 52 drops the
//    autoregressive term; p = 0 is allowed. rho and phi are sized by the
//    order actually fitted (a p dropped at 52 seasons allocates nothing),
//    and for at least one lag, since the GLS step reads rho[1].
//  - nseas 0 or 1 leaves nothing to compare: the answer is 0 once the
//    non-seasonal criterion is known.
#include "stats/seastest.hpp"

#include "run/missing.hpp"
#include "stats/numeric.hpp"

#include <algorithm>
#include <cfloat>
#include <cmath>
#include <new>
#include <vector>

namespace qvt {
namespace {

constexpr double kTiny = 1.491668147e-154;
constexpr double kUnusableP = 0.9999999;  // p-value of a statistic that can't be used
constexpr int kMaxRepairs = 64;           // passes of the positive definiteness repair

// Saturating quotient: never overflows, and a zero denominator gives the
// guard with the sign of the numerator.
double divide(double num, double den) {
  if (std::fabs(den) >= 1.0 || std::fabs(num) < std::fabs(den) * kNumBig) return num / den;
  if (num == 0.0) return 0.0;
  if (den == 0.0) return num > 0.0 ? kNumBig : -kNumBig;
  return (num > 0.0) == (den > 0.0) ? kNumBig : -kNumBig;
}

// The right-hand side X'Tz' of season i. Each season's sum of z' is
// cnt_i S_i; T adds c times both neighbours and b times the element itself,
// less what falls outside the series at its two ends (the first element has
// no left neighbour and weight 1 = b - c^2, likewise the last).
struct Rhs {
  long m, last, e;
  double nb, b, c, zf, zl;
  const double* S;
  double cnt(long i) const { return i < last ? nb + 1.0 : nb; }
  double operator()(long i) const {
    const long lo = (i + m - 1) % m, hi = (i + 1) % m;
    double r = b * cnt(i) * S[i] + c * (cnt(lo) * S[lo] + cnt(hi) * S[hi]);
    if (i == 0) r -= c * c * zf;
    if (i == e) r -= c * c * zl;
    if (lo == e) r -= c * zl;
    if (hi == 0) r -= c * zf;
    return r;
  }
};

// A = X'TX for m > 2, lower triangle packed. A season's diagonal is b times
// its count, less c^2 for each end of the series that it holds; the entry
// (i, i-1) is c times the adjacent pairs (season i-1, season i), one fewer
// when season i-1 holds the last element; (m-1, 0) counts the pairs that
// wrap from one cycle to the next.
void buildA(double* a, long m, long last, double nb, double b, double c) {
  std::fill(a, a + packedSize(m), 0.0);
  const double b0 = b * nb, b1 = b * (nb + 1.0), c0 = c * nb, c1 = c * (nb + 1.0);
  if (last >= 2) {
    a[zisub(0, 0)] = 1.0 + b0;
    for (long i = 1; i <= last - 2; ++i) {
      a[zisub(i, i - 1)] = c1;
      a[zisub(i, i)] = b1;
    }
    a[zisub(last - 1, last - 2)] = c1;
    a[zisub(last - 1, last - 1)] = 1.0 + b0;
    for (long i = last; i < m; ++i) {
      a[zisub(i, i - 1)] = c0;
      a[zisub(i, i)] = b0;
    }
    a[zisub(m - 1, 0)] = c0;
  } else if (last == 1) {
    a[zisub(0, 0)] = 2.0 + b * (nb - 1.0);
    for (long i = 1; i < m; ++i) {
      a[zisub(i, i - 1)] = c0;
      a[zisub(i, i)] = b0;
    }
    a[zisub(m - 1, 0)] = c0;
  } else {
    a[zisub(0, 0)] = 1.0 + b * (nb - 1.0);
    for (long i = 1; i <= m - 2; ++i) {
      a[zisub(i, i - 1)] = c0;
      a[zisub(i, i)] = b0;
    }
    a[zisub(m - 1, m - 2)] = c0;
    a[zisub(m - 1, m - 1)] = 1.0 + b * (nb - 1.0);
    a[zisub(m - 1, 0)] = c0 - c;  // the last element has no successor
  }
}

// ln(mse) n + 2 k, or the most negative double when the fit is exact.
double criterion(double mse, long n, long k) {
  return mse > 0.0 ? std::log(mse) * static_cast<double>(n) + 2.0 * static_cast<double>(k) : -DBL_MAX;
}

int zssntstImpl(const double* x, long n, const int* dif, int ndif, int p, int nseas, double epsilon,
                double alpha, double* aic) {
  // From 52 seasons on no autoregressive term enters (51 is the last cycle
  // length with one); a negative p stays to be rejected.
  const int pp = nseas >= 52 && p > 0 ? 0 : p;
  const long rc = improper(n, dif, ndif, pp, nseas);
  if (rc < 0) return static_cast<int>(rc);
  if (x == nullptr || aic == nullptr) return -99;

  const int q = std::max(pp, 1);
  const auto ns = static_cast<std::size_t>(nseas);
  std::vector<double> y(x, x + n), ypd(static_cast<std::size_t>(n), 0.0);
  std::vector<double> rho(static_cast<std::size_t>(q) + 1, 0.0), phi(static_cast<std::size_t>(q) + 1, 0.0);
  std::vector<double> S(ns, 0.0), b(ns, 0.0), work(ns * (3 * ns + 1) / 2, 0.0);

  long nmiss = 0;
  long nz = gettsd(y.data(), n, dif, ndif, &nmiss);
  long nfirst = 0;
  nz = gettrim(y.data(), nz, &nfirst);
  const double* z = y.data() + nfirst;
  if (nz < nmiss + 6) return -11;

  // The non-seasonal model: an AR(pp) about the mean. A series without
  // variance is not seasonal.
  const double ybar = getmu(z, nz);
  if (pp > 0 && getrho(z, nz, ybar, rho.data(), pp, epsilon) != 0) return 0;
  getphi(ybar, pp, rho.data(), phi.data(), epsilon);
  double mse = getmse(z, nz, phi.data(), pp);
  if (wzmis(mse)) return -11;
  aic[0] = criterion(mse, nz, pp + 1);

  // Seasonal means; a season without data takes the overall mean and gives
  // up its degree of freedom.
  if (getsmu(z, nz, nseas, S.data()) < 0) return 0;
  long nmssn = 0;
  for (double& s : S) {
    if (!wzmis(s)) continue;
    s = ybar;
    ++nmssn;
  }
  if (nmssn == nseas - 1) return 0;  // a single season has data

  // Autocorrelations of the seasonally adjusted series. None left: the
  // seasonal means explain the series fully.
  std::copy(z, z + nz, ypd.begin());
  getsres(ypd.data(), nz, nseas, S.data());
  long nf = 0;
  long nr = gettrim(ypd.data(), nz, &nf);
  if (pp > 0 && getrho(ypd.data() + nf, nr, 0.0, rho.data(), pp, epsilon) != 0) return 1;

  // From here the GLS error model is an AR(1) with the lag-one
  // autocorrelation of the residuals (0 without an autoregressive term).
  const double ar1[2] = {0.0, rho[1]};
  if (pp > 1) {
    getphi(0.0, pp, rho.data(), phi.data(), epsilon);
  } else {
    phi[0] = ar1[0];
    phi[1] = ar1[1];
  }
  double fstat = kMissing;
  getsgls(z, nz, nseas, ar1, S.data(), epsilon, b.data(), work.data(), &fstat);

  std::copy(z, z + nz, ypd.begin());
  const long nnmssg = getsres(ypd.data(), nz, nseas, b.data());
  nr = gettrim(ypd.data(), nz, &nf);
  mse = getmse(ypd.data() + nf, nr, phi.data(), pp);
  if (wzmis(mse)) return 0;
  const long df = nnmssg - pp - nseas + nmssn;
  if (df < 1) return 0;
  aic[1] = criterion(mse, nz, nseas + pp - nmssn);
  mse = mse * static_cast<double>(nnmssg - pp - 1) / static_cast<double>(df);

  double pvalue = kUnusableP;
  if (!wzmis(fstat) && mse > kTiny && fstat >= 0.0 && fstat <= kNumBig) {
    const double ndf = static_cast<double>(nseas - 1 - nmssn);
    const double pr = zprbf(fstat / (ndf * mse), ndf, static_cast<double>(df));
    if (pr >= 0.0) pvalue = pr;
  }
  aic[2] = pvalue;
  // Seasonal only with both a better criterion and a significant test.
  if (aic[0] <= aic[1]) return 0;
  return aic[2] <= alpha ? 1 : 0;
}

}  // namespace

int zssntst(const double* x, long n, const int* dif, int ndif, int p, int nseas, double epsilon,
            double alpha, double* aic) noexcept {
  try {
    return zssntstImpl(x, n, dif, ndif, p, nseas, epsilon, alpha, aic);
  } catch (const std::bad_alloc&) {
    return -1;  // the work arrays are vectors: whatever was obtained is freed
  }
}

long improper(long n, const int* dif, int ndif, int p, int nseas) noexcept {
  if (n < 6) return -11;
  if (ndif < 0 || (ndif > 0 && dif == nullptr)) return -12;  // the lags can't be read
  long sum = 0;
  for (int k = 0; k < ndif; ++k) {
    if (dif[k] < 1) return -12;
    sum += dif[k];  // at most 2^31 lags below 2^31: no overflow in a long
  }
  if (sum > n - 6) return -12;
  if (nseas < 0 || nseas + sum > n - 6) return -14;
  if (p < 0 || nseas + sum + p > n - 7) return -13;
  return nseas + sum + p;
}

long gettsd(double* z, long nz, const int* d, int nd, long* nmiss) noexcept {
  *nmiss = 0;
  for (int k = 0; k < nd; ++k)
    if (d[k] < 1) return -12;  // checked before anything is changed
  for (int k = 0; k < nd; ++k) {
    nz -= d[k];
    for (long t = 0; t < nz; ++t) {
      if (wzmis(z[t]) || wzmis(z[t + d[k]])) {
        z[t] = kMissing;
        ++*nmiss;
      } else {
        z[t] = z[t + d[k]] - z[t];
      }
    }
  }
  return std::max(nz, 0L);
}

long gettrim(const double* z, long n, long* nfirst) noexcept {
  long first = 0;
  while (first < n && wzmis(z[first])) ++first;
  long end = n;
  while (end > first && wzmis(z[end - 1])) --end;
  *nfirst = first;
  return end - first;
}

double getmu(const double* z, long nz) noexcept {
  double sum = 0.0;
  long cnt = 0;
  for (long t = 0; t < nz; ++t) {
    if (wzmis(z[t])) continue;
    sum += z[t];
    ++cnt;
  }
  return cnt > 0 ? sum / static_cast<double>(cnt) : kMissing;
}

int getrho(const double* z, long nz, double zbar, double* rho, int p, double epsilon) noexcept {
  long m = 0;
  double ss = 0.0;
  for (long t = 0; t < nz; ++t) {
    if (wzmis(z[t])) {
      ++m;
      continue;
    }
    ss += (z[t] - zbar) * (z[t] - zbar);
  }
  const double used = static_cast<double>(nz - m);
  if (!(used > 0.0) || ss / used < epsilon) return std::fabs(zbar) < epsilon ? -10 : -15;
  rho[0] = 1.0;
  for (int h = 1; h <= p; ++h) {
    double r = 0.0;
    long mh = 0;
    for (long t = 0; t + h < nz; ++t) {
      if (wzmis(z[t]) || wzmis(z[t + h])) {
        ++mh;
        continue;
      }
      r += (z[t] - zbar) * (z[t + h] - zbar);
    }
    // The variance is rescaled by the share of pairs present against the
    // share of values present; without missing values rho[h] = r / ss.
    rho[h] = r / (ss / (static_cast<double>(nz - mh) / used));
  }
  return 0;
}

int getphi(double zbar, int p, double* rho, double* wkphi, double epsilon) noexcept {
  if (p <= 0) {
    wkphi[0] = zbar;
    return 0;
  }
  if (p == 1) {
    wkphi[0] = (1.0 - rho[1]) * zbar;
    wkphi[1] = rho[1];
    return 0;
  }
  // Shrink rho[h] by lambda^h until the sequence is positive definite. Once
  // scaled it passes at lambda = 1; the cap only guards against rounding
  // turning that into an endless loop, and the coefficients zposdef left
  // belong to the last scaled sequence either way.
  for (int pass = 0; pass < kMaxRepairs; ++pass) {
    const double lambda = zposdef(rho, p, wkphi);
    if (lambda >= 1.0) break;
    for (int h = 1; h <= p; ++h) rho[h] *= std::pow(lambda, h);
  }
  // zposdef gives the polynomial 1 + a_1 B + ...: phi_j = -a_j, one place up.
  for (int i = p; i >= 1; --i) wkphi[i] = -wkphi[i - 1];
  double s = 1.0;
  for (int i = 1; i <= p; ++i) s -= wkphi[i];
  wkphi[0] = s < epsilon ? 0.0 : s * zbar;  // no finite mean without 1 - sum phi > 0
  return 0;
}

double getmse(const double* z, long nz, const double* phi, int p) noexcept {
  if (p < 0) return kMissing;
  long c = p;  // elements without a residual: the first p have no full past
  double sum = 0.0;
  for (long t = p; t < nz; ++t) {
    if (wzmis(z[t])) {
      ++c;
      continue;
    }
    double e = z[t] - phi[0];
    bool whole = true;
    for (int j = 1; j <= p; ++j) {
      if (wzmis(z[t - j])) {
        whole = false;
        break;
      }
      e -= phi[j] * z[t - j];
    }
    if (!whole) {
      ++c;
      continue;
    }
    sum += e * e;
  }
  if (c >= nz) return kMissing;
  const long k = nz - c - 1;
  return k > 0 ? sum / static_cast<double>(k) : sum;
}

long getsmu(const double* z, long nobs, long nseas, double* b) noexcept {
  if (nobs < 0) return -11;
  if (nseas < 1) return -14;
  for (long s = 0; s < nseas; ++s) {
    double sum = 0.0;
    long cnt = 0;
    for (long t = s; t < nobs; t += nseas) {
      if (wzmis(z[t])) continue;
      sum += z[t];
      ++cnt;
    }
    b[s] = cnt > 0 ? sum / static_cast<double>(cnt) : kMissing;
  }
  return nobs / nseas;
}

long getsres(double* z, long nobs, int nseas, const double* b) noexcept {
  if (nobs < 0) return -11;
  if (nseas < 1) return -14;
  long cnt = 0;
  for (long t = 0; t < nobs; ++t) {
    if (wzmis(z[t])) continue;
    const double s = b[t % nseas];
    if (wzmis(s)) {
      z[t] = kMissing;
      continue;
    }
    z[t] -= s;
    ++cnt;
  }
  return cnt;
}

int getsgls(const double* z, long nobs, long nseas, const double* phi, const double* S, double epsilon,
            double* B, double* work, double* fstat) noexcept {
  if (nobs < 0) return -11;
  if (nseas < 2 || nobs <= nseas) return -14;
  const long n = nobs, m = nseas;
  const long nblock = n / m, last = n - nblock * m;
  const double c = -phi[1];
  const double b = 1.0 + c * c;
  const double nb = static_cast<double>(nblock);
  const double ar = 1.0 - phi[1] * phi[1];  // AR(1) variance over innovation variance
  const long e = (n - 1) % m;                // season of the last element
  const Rhs rhs{m, last, e, nb, b, c, wzmis(z[0]) ? S[0] : z[0], wzmis(z[n - 1]) ? S[e] : z[n - 1], S};

  if (m == 2) {
    // A = X'TX for two seasons, inverted by its determinant; the pivots are
    // held to the same scale test as zrchol's.
    const double dn = static_cast<double>(n);
    const double a10 = (dn - 1.0) * c;
    const double a00 = last == 1 ? (dn - 3.0) * b / 2.0 + 2.0 : (dn / 2.0 - 1.0) * b + 1.0;
    const double a11 = last == 1 ? (dn - 1.0) * b / 2.0 : a00;
    const double det = a00 * a11 - a10 * a10;
    const double limit = std::max({std::fabs(a00), std::fabs(a11), std::fabs(a10)}) * epsilon;
    if (!(limit > 0.0) || !(std::fabs(a00) >= limit) || !(std::fabs(det / a00) >= limit)) return -99;
    const double i00 = a11 / det, i11 = a00 / det, i10 = -a10 / det;
    const double r0 = rhs(0), r1 = rhs(1);
    const double g0 = i00 * r0 + i10 * r1, g1 = i10 * r0 + i11 * r1;
    *fstat = divide((g0 - g1) * (g0 - g1), ar * (i00 + i11 - 2.0 * i10));
    B[0] = g0;
    B[1] = g1;
    return 0;
  }

  // work: A and then its inverse (packed, order m); R and the means before
  // they are known to be usable (2 m <= m (m + 1) / 2 for m > 2); V and then
  // its inverse (packed, order m - 1).
  double* a = work;
  double* r = work + packedSize(m);
  double* g = r + m;
  double* v = work + 2 * packedSize(m);
  buildA(a, m, last, nb, b, c);
  if (zrchol(a, static_cast<int>(m), epsilon) != 0) return -99;
  zrchinv(a, a, static_cast<int>(m));
  for (long i = 0; i < m; ++i) r[i] = rhs(i);
  for (long i = 0; i < m; ++i) {
    double s = 0.0;
    for (long j = 0; j < m; ++j) s += a[zisub(i, j)] * r[j];
    g[i] = s;
  }
  // V = D iA D' with (D w)[i] = w[i] - w[i+1]: the covariance of the
  // adjacent differences of the means, up to the error variance.
  for (long i = 0; i < m - 1; ++i)
    for (long j = 0; j <= i; ++j)
      v[zisub(i, j)] = a[zisub(i, j)] - a[zisub(i, j + 1)] - a[zisub(i + 1, j)] + a[zisub(i + 1, j + 1)];
  if (zrchol(v, static_cast<int>(m - 1), epsilon) != 0) return -99;
  zrchinv(v, v, static_cast<int>(m - 1));
  // Q = d' V^-1 d, d = D B.
  double q = 0.0;
  for (long i = 0; i < m - 1; ++i)
    for (long j = 0; j < m - 1; ++j) q += (g[i] - g[i + 1]) * v[zisub(i, j)] * (g[j] - g[j + 1]);
  *fstat = divide(q, ar);
  std::copy(g, g + m, B);
  return 0;
}

}  // namespace qvt
