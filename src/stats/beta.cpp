// Log-gamma, log-beta, the regularized incomplete beta function, and the F
// and t tail probabilities built on it.
#include "stats/numeric.hpp"

#include <array>
#include <cmath>
#include <cstdint>
#include <limits>

namespace qvt {
namespace {

constexpr double kLnSqrt2Pi = 0.9189385332046728;
constexpr double kEulerGamma = 0.57721566490153286061;
constexpr double kSmallestNormal = 2.225073858507202e-308;

// zeta(k) - 1 = sum over n >= 2 of n^-k, for k = 2..kZetaTerms+1, summed
// directly up to n = 100 (smallest terms first) with the Euler-Maclaurin tail
// beyond: int_N^inf x^-k dx - N^-k/2 + B2/2! k N^(-k-1) - B4/4! ... .
constexpr int kZetaTerms = 44;

constexpr double ipow(double x, int k) {
  double r = 1.0;
  for (int i = 0; i < k; ++i) r *= x;
  return r;
}

constexpr std::array<double, kZetaTerms> makeZetaMinusOne() {
  std::array<double, kZetaTerms> z{};
  constexpr int kN = 100;
  for (int idx = 0; idx < kZetaTerms; ++idx) {
    const int k = idx + 2;
    const double dk = k;
    const double nk = ipow(kN, k);  // N^k
    // Tail sum_{n > N} n^-k.
    double tail = kN / ((dk - 1.0) * nk) - 0.5 / nk + dk / (12.0 * nk * kN) -
                  dk * (dk + 1.0) * (dk + 2.0) / (720.0 * nk * ipow(kN, 3)) +
                  dk * (dk + 1.0) * (dk + 2.0) * (dk + 3.0) * (dk + 4.0) /
                      (30240.0 * nk * ipow(kN, 5));
    double s = tail;
    for (int n = kN; n >= 2; --n) s += 1.0 / ipow(n, k);
    z[idx] = s;
  }
  return z;
}

constexpr std::array<double, kZetaTerms> kZetaMinusOne = makeZetaMinusOne();

// ln Gamma(2 + z) for |z| <= 1/2 by its Taylor series about 2:
// (1 - gamma) z + sum_{k>=2} (-1)^k (zeta(k) - 1) z^k / k.
// The terms fall at least as fast as 4^-k, so 44 of them reach double
// precision at |z| = 1/2.
double lgammaNear2(double z) {
  double sum = 0.0;
  double zk = z * z;
  for (int idx = 0; idx < kZetaTerms; ++idx) {
    const int k = idx + 2;
    const double term = kZetaMinusOne[idx] * zk / k;
    sum += (k % 2 == 0) ? term : -term;
    zk *= z;
    if (std::fabs(zk) < 1e-300) break;
  }
  return (1.0 - kEulerGamma) * z + sum;
}

}  // namespace

double zln1px(double z) noexcept {
  if (std::fabs(z) <= 0.03125) {
    // ln(1 + z) = 2 atanh(d/2) with d = z / (1 + z/2) = d + d^3/12 + d^5/80 + ...,
    // summed as d plus a rational correction in e = d^2; no cancellation.
    const double d = z / (1.0 + 0.5 * z);
    const double e = d * d;
    return d + d * e * (0.08333333333333427 - 0.0023812878804825234 * e) /
                   (1.0 - 0.178575454351365 * e);
  }
  return std::log(1.0 + z);
}

double zlgbern(double x) noexcept {
  const double u = 1.0 / x;
  const double v = u * u;
  return u * (1.0 / 12.0 +
              v * (-1.0 / 360.0 +
                   v * (1.0 / 1260.0 + v * (-1.0 / 1680.0 + v * (1.0 / 1188.0 - 691.0 * v / 360360.0)))));
}

double zlgamma(double x) noexcept {
  if (!(x > kSmallestNormal)) return -99.0;  // also a NaN or missing argument
  if (std::fabs(x - 1.0) < 1.110223024625157e-16 || std::fabs(x - 2.0) < 1.110223024625157e-16)
    return 0.0;
  if (x >= 15.0) {
    // Stirling's series.
    return (x - 0.5) * std::log(x) - x + kLnSqrt2Pi + zlgbern(x);
  }
  if (x - 0.5 == std::floor(x - 0.5) && x < 2.0) {
    // 0.5 and 1.5: ln Gamma(1.5) = ln(sqrt(pi)/2) directly.
    return x == 1.5 ? -0.12078223763524522 : -0.12078223763524522 - std::log(0.5);
  }
  // Bring x into [1.5, 2.5] by Gamma(x + 1) = x Gamma(x), keeping the
  // product of the factors, then the series about 2.
  if (x < 1.5) {
    if (x >= 0.5) {
      // ln Gamma(x) = ln Gamma(x + 1) - ln x; log1p keeps the accuracy near 1.
      return lgammaNear2(x - 1.0) - std::log1p(x - 1.0);
    }
    // x < 1/2: two steps up.
    return lgammaNear2(x) - std::log(x) - std::log1p(x);
  }
  double prod = 1.0;
  double y = x;
  while (y > 2.5) {
    y -= 1.0;
    prod *= y;
  }
  return lgammaNear2(y - 2.0) + std::log(prod);
}

double zlbeta(double a, double b) noexcept {
  if (!(a > 0.0) || !(b > 0.0)) return 99.0;
  const double p = std::fmin(a, b);
  const double q = std::fmax(a, b);
  if (q < 15.0) return zlgamma(p) + zlgamma(q) - zlgamma(p + q);
  // ln Gamma(q) - ln Gamma(p + q) by Stirling's series in a form without the
  // cancellation of two large logarithms.
  const double s = p + q;
  return (s - 0.5) * zln1px(-p / s) - zlgbern(s) + zlgamma(p) + zlgbern(q) + p - p * std::log(q);
}

namespace {

// Continued fraction of the incomplete beta function (Abramowitz & Stegun
// 26.5.8): I_x(a, b) = x^a (1-x)^b / (a B(a, b)) * 1/(1 + d1/(1 + d2/(1 + ...)))
// with d_{2m+1} = -(a+m)(a+b+m) x / ((a+2m)(a+2m+1)),
//      d_{2m}   =  m (b-m) x / ((a+2m-1)(a+2m)).
//
// For large a and x near 1 the odd terms are close to -1, and the value
// hinges on 1 + d_n, which then cancels: evaluated plainly the fraction loses
// digits in proportion to 1 / (1 - x) (1e-8 relative for a t tail with 1e9
// degrees of freedom). So the fraction is evaluated backward, from a depth N
// down to the first term, which is stable (W. B. Jones and W. J. Thron,
// Continued Fractions, 1980), with 1 + d_n at the odd terms formed from the
// complement y = 1 - x; N is doubled until two depths agree to 4 ulp. The
// depth needed grows like sqrt(max(a, b)) (Press et al., Numerical Recipes,
// 6.4); it is capped at 2^23 terms, beyond which the fraction is taken as
// not converging.
double fractionTerm(int n, double x, double a, double b) {
  // d_n for n >= 1.
  const int m = n / 2;
  if (n % 2 == 1) return -(a + m) * (a + b + m) * x / ((a + 2.0 * m) * (a + 2.0 * m + 1.0));
  return m * (b - m) * x / ((a + 2.0 * m - 1.0) * (a + 2.0 * m));
}

// 1 + d_n for odd n = 2m + 1 without cancellation when x is near 1:
// 1 + d_n = 1 - r x = (1 - r) + r y with r = (a+m)(a+b+m) / ((a+2m)(a+2m+1)) and
// (a+2m)(a+2m+1) - (a+m)(a+b+m) = a (2m + 1 - b) + m (3m + 2 - b).
double oddTermPlusOne(int n, double y, double a, double b) {
  const double m = n / 2;
  const double den = (a + 2.0 * m) * (a + 2.0 * m + 1.0);
  const double r = (a + m) * (a + b + m) / den;
  return (a * (2.0 * m + 1.0 - b) + m * (3.0 * m + 2.0 - b)) / den + r * y;
}

// The fraction evaluated backward from depth N. Each tail value t_n =
// 1 + d_n / t_{n+1} is carried together with u_n = t_n - 1; at the odd terms,
// where d_n is near -1 for large a and t_n is a small difference, t_n is
// formed as (u_{n+1} + (1 + d_n)) / t_{n+1} from the exact pieces.
double fractionAtDepth(int depth, double x, double y, double a, double b) {
  double t = 1.0, u = 0.0;
  const bool nearOne = x > 0.5;  // else 1 + d_n has no cancellation to avoid
  for (int n = depth; n >= 1; --n) {
    if (n % 2 == 1) {
      t = (u + (nearOne ? oddTermPlusOne(n, y, a, b) : 1.0 + fractionTerm(n, x, a, b))) / t;
      u = t - 1.0;
    } else {
      u = fractionTerm(n, x, a, b) / t;
      t = 1.0 + u;
    }
    if (t == 0.0) {
      t = 1e-300;  // a zero denominator passes as a huge value (Lentz's device)
      u = t - 1.0;
    }
  }
  return 1.0 / t;
}

bool betaFraction(double x, double y, double a, double b, double* cf) {
  int depth = 8;
  double prev = fractionAtDepth(depth, x, y, a, b);
  while (depth < (1 << 23)) {
    depth *= 2;
    const double cur = fractionAtDepth(depth, x, y, a, b);
    if (std::fabs(cur - prev) <= 8.881784197001256e-16 * std::fabs(cur)) {
      *cf = cur;
      return true;
    }
    prev = cur;
  }
  return false;
}

}  // namespace

namespace {

// ln(1 + u) - u without cancellation: with t = u / (2 + u),
// ln(1 + u) = 2 atanh t and u - 2t = u^2 / (2 + u), so
// ln(1 + u) - u = -u^2 / (2 + u) + 2 (t^3/3 + t^5/5 + ...).
double log1pmx(double u) {
  if (std::fabs(u) >= 0.5) return std::log1p(u) - u;
  const double t = u / (2.0 + u);
  const double t2 = t * t;
  double tk = t * t2;
  double sum = 0.0;
  for (int k = 3; k < 60; k += 2) {
    const double term = tk / k;
    sum += term;
    if (std::fabs(term) <= 1e-17 * std::fabs(sum)) break;
    tk *= t2;
  }
  return -u * u / (2.0 + u) + 2.0 * sum;
}

// ln(x^a y^b / B(a, b)) with y = 1 - x, both given to full accuracy.
// For large a and b the direct sum of a ln x, b ln y and ln B(a, b) cancels
// thousands-fold; there the form of DiDonato and Morris (ACM TOMS 18, 1992,
// Algorithm 708) is used instead: with x0 = a/(a+b), y0 = b/(a+b),
//   a ln(x/x0) + b ln(y/y0) = a log1pmx((x-x0)/x0) + b log1pmx((y-y0)/y0)
// (the first-order terms cancel exactly), and by Stirling's series
//   a ln x0 + b ln y0 - ln B(a, b) = ln sqrt(a b / (2 pi (a+b))) - Delta
// with Delta the Stirling corrections of a and b less that of a + b.
double logBetaKernel(double x, double y, double lnx, double lny, double a, double b) {
  if (std::fmin(a, b) < 15.0) return a * lnx + b * lny - zlbeta(a, b);
  const double s = a + b;
  const double x0 = a / s;
  const double y0 = b / s;
  const double dx = x < 0.5 ? x - x0 : y0 - y;  // x - x0 from the more accurate side
  const double e = a * log1pmx(dx / x0) + b * log1pmx(-dx / y0);
  const double delta = zlgbern(a) + zlgbern(b) - zlgbern(s);
  return e + 0.5 * std::log(a / s * b / (2.0 * 3.14159265358979323846)) - delta;
}

// The regularized incomplete beta function with x and its complement y both
// supplied, so that callers holding y = t^2 / (t^2 + df) or the like to full
// relative accuracy do not lose it to the rounding of 1 - x.
int ibetaXY(double x, double y, double a, double b, double* p, double* d) {
  if (a > kTwo53 || b > kTwo53) return 1;
  if (!(x >= 0.0 && x <= 1.0) || !(y >= 0.0 && y <= 1.0) || !(a > 0.0) || !(b > 0.0)) {
    *p = -1.0;
    *d = 0.0;
    return -1;
  }
  if (x == 0.0) {
    *p = 0.0;
    *d = 0.0;
    return 0;
  }
  if (y == 0.0) {
    *p = 1.0;
    *d = 0.0;
    return 0;
  }
  const double lnx = x < 0.5 ? std::log(x) : std::log1p(-y);
  const double lny = y < 0.5 ? std::log(y) : std::log1p(-x);
  const double lkern = logBetaKernel(x, y, lnx, lny, a, b);  // ln x^a y^b / B(a, b)
  const double ldens = lkern - lnx - lny;
  if (ldens < kExpLow) {
    // The density underflows: all the mass lies on one side of x.
    *d = 0.0;
    *p = x <= a / (a + b) ? 0.0 : 1.0;
    return 0;
  }
  *d = ldens < kExpHigh ? std::exp(ldens) : std::numeric_limits<double>::max();

  // The fraction converges fast left of the mean; right of it, evaluate the
  // other tail, I_x(a, b) = 1 - I_y(b, a).
  const double s = a + b;
  const bool swap = x * s > a + 2.0 * std::sqrt(a * b / (s + 1.0)) || x * s + 6.0 * x > a + 3.0;
  double cf = 0.0;
  if (betaFraction(swap ? y : x, swap ? x : y, swap ? b : a, swap ? a : b, &cf)) {
    // Prefactor x^a y^b / (a B(a, b)), or with b in place of a when swapped.
    const double tail = std::exp(lkern - std::log(swap ? b : a)) * cf;
    const double r = swap ? 1.0 - tail : tail;
    *p = std::fmin(1.0, std::fmax(0.0, r));
    return 0;
  }
  if ((a > 5000.0 && b > 100.0) || (b > 5000.0 && a > 100.0)) {
    // Normal approximation of the cube root of the beta-F ratio (Paulson's
    // form of the Wilson-Hilferty transform).
    const double w = std::cbrt(b * x / (a * y));
    const double z = ((1.0 - 1.0 / (9.0 * b)) * w + 1.0 / (9.0 * a) - 1.0) /
                     std::sqrt(w * w / (9.0 * b) + 1.0 / (9.0 * a));
    *p = std::fmin(1.0, std::fmax(0.0, zprbnrm(z)));
    return 0;
  }
  *p = -1.0;
  *d = 0.0;
  return -1;
}

}  // namespace

int zibeta(double x, double a, double b, double* p, double* d) noexcept {
  return ibetaXY(x, 1.0 - x, a, b, p, d);
}

double zprbf(double f, double ndf, double ddf) noexcept {
  if (!(f >= 0.0) || !(ndf > 0.0) || !(ddf > 0.0)) return -4.0;
  if (f == 0.0) return 1.0;
  // P(F > f) = I_v(ddf/2, ndf/2) with v = ddf / (ddf + ndf f).
  const double v = ddf / (f * ndf + ddf);
  if (v == 0.0) return 0.0;
  const double w = std::isinf(f) ? 1.0 : f * ndf / (f * ndf + ddf);  // 1 - v, without its rounding
  double p = 0.0, d = 0.0;
  if (ibetaXY(v, w, 0.5 * ddf, 0.5 * ndf, &p, &d) != 0) return -2.0;
  return p;
}

double zpgt2(double t2, long df) noexcept {
  // P(t^2 > t2) = I_v(df/2, 1/2) with v = df / (df + t2).
  const double n = static_cast<double>(df);
  const double x = n / (t2 + n);
  const double y = std::isinf(t2) ? 1.0 : t2 / (t2 + n);  // 1 - x, without its rounding
  double p = 0.0, d = 0.0;
  if (ibetaXY(x, y, 0.5 * n, 0.5, &p, &d) != 0) return -2.0;
  return p;
}

}  // namespace qvt
