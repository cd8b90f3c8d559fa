// The normal distribution: error function, distribution function, quantile,
// Mills' ratio and the logs of the tails.
#include "stats/numeric.hpp"

#include "run/missing.hpp"

#include <array>
#include <cmath>

namespace qvt {
namespace {

// ln sqrt(2 pi): the log of the normal density's constant.
constexpr double kLnSqrt2Pi = 0.9189385332046728;
constexpr double kSqrt2 = 1.4142135623730951;
constexpr double kInvSqrtPi = 5.6418958354775628695e-1;  // 1 / sqrt(pi)

// Beyond this |x| erf is +-1 and erfc 0 or 2 to every digit.
constexpr double kErfLimit = 1003.7843389117924;

// Coefficients of Cody's approximations (CALERF, SPECFUN).
// |x| <= 0.46875: erf(x) = x A(x^2) / B(x^2).
constexpr std::array<double, 5> kA = {3.16112374387056560e00, 1.13864154151050156e02,
                                      3.77485237685302021e02, 3.20937758913846947e03,
                                      1.85777706184603153e-1};
constexpr std::array<double, 4> kB = {2.36012909523441209e01, 2.44024637934444173e02,
                                      1.28261652607737228e03, 2.84423683343917062e03};
// 0.46875 < |x| <= 4: erfc(x) = exp(-x^2) C(x) / D(x).
constexpr std::array<double, 9> kC = {5.64188496988670089e-1, 8.88314979438837594e00,
                                      6.61191906371416295e01, 2.98635138197400131e02,
                                      8.81952221241769090e02, 1.71204761263407058e03,
                                      2.05107837782607147e03, 1.23033935479799725e03,
                                      2.15311535474403846e-8};
constexpr std::array<double, 8> kD = {1.57449261107098347e01, 1.17693950891312499e02,
                                      5.37181101862009858e02, 1.62138957456669019e03,
                                      3.29079923573345963e03, 4.36261909014324716e03,
                                      3.43936767414372164e03, 1.23033935480374942e03};
// |x| > 4: erfc(x) = exp(-x^2)/x (1/sqrt(pi) + 1/x^2 P(1/x^2) / Q(1/x^2)).
constexpr std::array<double, 6> kP = {3.05326634961232344e-1, 3.60344899949804439e-1,
                                      1.25781726111229246e-1, 1.60837851487422766e-2,
                                      6.58749161529837803e-4, 1.63153871373020978e-2};
constexpr std::array<double, 5> kQ = {2.56852019228982242e00, 1.87295284992346725e00,
                                      5.27905102951428412e-1, 6.05183413124413191e-2,
                                      2.33520497626869185e-3};

// exp(-y^2) without the rounding error of squaring y: y is split into a part
// with 4 fractional bits, whose square is exact, and the rest.
double expMinusSquare(double y) {
  const double ysq = std::trunc(y * 16.0) / 16.0;
  const double del = (y - ysq) * (y + ysq);
  return std::exp(-ysq * ysq) * std::exp(-del);
}

// Rational coefficients of the quantile, highest power first.
constexpr std::array<double, 8> kCentralN = {
    0.00023850990628812184, 0.007748014532123519, 0.09433047102597236, 0.5906175347671243,
    2.0524292014826053,     3.926527220876258,    3.827787912267809,   1.4756646266356057};
constexpr std::array<double, 8> kCentralD = {
    0.00023846672191006805, 0.007472090148248392, 0.08675117268832777, 0.5155497927835685,
    1.6853868285749263,     3.0193046324086072,   2.757985744718407,   1.0};
constexpr std::array<double, 9> kTailN = {
    2.2366406817573622e-07, 1.4756630668977935,   2.9349133839409465,    2.302486886454419,
    0.9208235553699621,     0.1971184884114817,   0.021322238814693088,  0.0009933095513250212,
    1.3896718225467155e-05};
constexpr std::array<double, 8> kTailD = {
    1.0,                  2.152916059924272,    1.8195065884540687, 0.7785719242838022,
    0.1775558927085442,   0.020255719894916695, 0.000977052221781334, 1.389640654034189e-05};

template <std::size_t N>
double horner(const std::array<double, N>& c, double x) {
  double s = 0.0;
  for (double ci : c) s = s * x + ci;
  return s;
}

}  // namespace

void calerf(double x, double* result, int jint) noexcept {
  if (std::isnan(x)) {  // a missing value stays missing
    *result = kMissing;
    return;
  }
  const double y = std::fabs(x);
  double r = 0.0;
  if (y <= 0.46875) {
    const double ysq = y > 1.11e-16 ? y * y : 0.0;
    double xnum = kA[4] * ysq;
    double xden = ysq;
    for (int i = 0; i < 3; ++i) {
      xnum = (xnum + kA[i]) * ysq;
      xden = (xden + kB[i]) * ysq;
    }
    r = x * (xnum + kA[3]) / (xden + kB[3]);
    if (jint != 0) r = 1.0 - r;
    if (jint != 0 && jint != 1) r = std::exp(ysq) * r;
    *result = r;
    return;
  }
  if (y <= 4.0) {
    double xnum = kC[8] * y;
    double xden = y;
    for (int i = 0; i < 7; ++i) {
      xnum = (xnum + kC[i]) * y;
      xden = (xden + kD[i]) * y;
    }
    r = (xnum + kC[7]) / (xden + kD[7]);  // exp(y^2) erfc(y)
    if (jint == 0 || jint == 1) r *= expMinusSquare(y);
  } else if (y > kErfLimit) {
    // The limits: erfc 0 (and the scaled form its asymptote 1/(y sqrt pi)).
    r = (jint == 0 || jint == 1) ? 0.0 : kInvSqrtPi / y;
  } else if ((jint == 0 || jint == 1) && -y * y < kExpLow) {
    r = 0.0;  // exp(-y^2) underflows: the tail term is 0
  } else {
    const double ysq = 1.0 / (y * y);
    double xnum = kP[5] * ysq;
    double xden = ysq;
    for (int i = 0; i < 4; ++i) {
      xnum = (xnum + kP[i]) * ysq;
      xden = (xden + kQ[i]) * ysq;
    }
    r = ysq * (xnum + kP[4]) / (xden + kQ[4]);
    r = (kInvSqrtPi - r) / y;  // exp(y^2) erfc(y)
    if (jint == 0 || jint == 1) r *= expMinusSquare(y);
  }
  // r is erfc(|x|) (or its scaled form); fold in the sign and the function.
  if (jint == 0) {
    r = (0.5 - r) + 0.5;
    if (x < 0.0) r = -r;
  } else if (jint == 1) {
    if (x < 0.0) r = 2.0 - r;
  } else if (x < 0.0) {
    // exp(x^2) erfc(x) = 2 exp(x^2) - exp(x^2) erfc(|x|); overflow to the
    // largest double rather than to infinity.
    if (x < -26.628) {
      r = 1.7976931348623157e+308;
    } else {
      const double ysq = std::trunc(x * 16.0) / 16.0;
      const double del = (x - ysq) * (x + ysq);
      r = (std::exp(ysq * ysq) * std::exp(del)) * 2.0 - r;
    }
  }
  *result = r;
}

double zferf(double x) noexcept {
  double r = 0.0;
  calerf(x, &r, 0);
  return r;
}

double zferfc(double x) noexcept {
  double r = 0.0;
  calerf(x, &r, 1);
  return r;
}

double zprbnrm(double x) noexcept {
  // For x > 0 the upper tail is small and 1 + erf keeps the absolute
  // accuracy that a probability near 1 can show; for x <= 0 erfc keeps the
  // relative accuracy of a small lower tail.
  if (std::isnan(x)) return kMissing;
  if (x > 0.0) return 0.5 * (1.0 + zferf(x / kSqrt2));
  const double y = -x / kSqrt2;
  if (y <= 0.46875) return 0.5 * zferfc(y);
  // Further out, erfc(y) = exp(-y^2) erfcx(y), and exp(-y^2) = exp(-x^2/2) is
  // formed from x itself: the rounding of x / sqrt 2 would otherwise cost
  // 2 y^2 ulp of relative accuracy (1e-13 at x = -36). erfcx is smooth and
  // does not amplify that rounding.
  if (-0.5 * x * x < kExpLow) return 0.0;
  double scaled = 0.0;
  calerf(y, &scaled, 2);
  const double xh = std::trunc(x * 16.0) / 16.0;  // xh^2 / 2 is exact
  const double del = 0.5 * (x - xh) * (x + xh);
  return 0.5 * scaled * (std::exp(-0.5 * xh * xh) * std::exp(-del));
}

int zmillsr(double x, double* ratio) noexcept {
  if (x < 5.0) {
    // Direct: tail / density = P(Z > x) exp(x^2/2) sqrt(2 pi). Below -10 the
    // tail is 1 to double precision.
    double r = std::exp(0.5 * x * x + kLnSqrt2Pi);
    if (x >= -10.0) r *= zprbnrm(-x);
    *ratio = r;
    return 0;
  }
  // Laplace's continued fraction R(x) = 1/(x + 1/(x + 2/(x + 3/(x + ...)))),
  // evaluated by the forward recurrence of its convergents A_k / B_k:
  // A_k = x A_{k-1} + (k-1) A_{k-2}, likewise B_k.
  double a0 = 0.0, b0 = 1.0;  // convergent -1: 0/1
  double a1 = 1.0, b1 = x;    // convergent 0: 1/x
  double prev = a1 / b1;
  for (int k = 1; k <= 99; ++k) {
    const double a2 = x * a1 + k * a0;
    const double b2 = x * b1 + k * b0;
    a0 = a1;
    b0 = b1;
    a1 = a2;
    b1 = b2;
    // Keep the terms in range; the ratio is unaffected by a common scale.
    if (std::fabs(b1) > 1e150) {
      a0 *= 1e-150;
      b0 *= 1e-150;
      a1 *= 1e-150;
      b1 *= 1e-150;
    }
    const double cur = a1 / b1;
    if (std::fabs(cur - prev) <= 5.551115123125785e-16 * std::fabs(cur)) {
      *ratio = cur;
      return 0;
    }
    prev = cur;
  }
  *ratio = prev;
  return 1;
}

int zlognrm(double x, double* lpl, double* lpr, double* ldens) noexcept {
  const double ld = -0.5 * x * x - kLnSqrt2Pi;
  const double ax = std::fabs(x);
  double tail = 0.0;  // log of the tail beyond |x|
  int rc = 0;
  if (ax >= 5.0) {
    double ratio = 0.0;
    if (zmillsr(ax, &ratio) != 0) rc = 1;
    tail = std::log(ratio) + ld;
  } else {
    tail = std::log(0.5 * zferfc(ax / kSqrt2));
  }
  const double other = zln1px(-std::exp(tail));
  if (x <= 0.0) {
    *lpl = tail;
    *lpr = other;
  } else {
    *lpr = tail;
    *lpl = other;
  }
  *ldens = ld;
  return rc;
}

double zprobit(double p) noexcept {
  if (!(p >= 0.0 && p <= 1.0)) return kMissing;  // outside the domain, or missing
  if (p == 0.0) return -37.64030867301702;
  if (p == 1.0) return 7.941345326170997;
  if (p < 1e-16) {
    // Newton on g(x) = ln Phi(x) - ln p: g'(x) = phi(x)/Phi(x), so the step
    // is (ln Phi - ln p) Phi / phi = exp(lpl - ldens) (lpl - l).
    const double l = std::log(p);
    double x = -std::sqrt(-2.0 * l);
    for (int it = 0; it < 30; ++it) {
      double lpl = 0.0, lpr = 0.0, ld = 0.0;
      if (zlognrm(x, &lpl, &lpr, &ld) != 0) break;
      if (std::fabs(lpl - l) < 1e-12 * std::fabs(l)) return x;
      x -= std::exp(lpl - ld) * (lpl - l);
    }
    return -std::sqrt(-2.0 * std::log(2.225073858507202e-306));
  }
  const double q = p < 0.5 ? p : 1.0 - p;
  // r = 0 at q = 1/2: sqrt(-2 ln 1/2) = 1.1774100225154747.
  const double r = std::sqrt(-2.0 * std::log(q)) - 1.1774100225154747;
  double z = 0.0;
  if (q > 0.01) {
    z = r * horner(kCentralN, r) / horner(kCentralD, r);
  } else {
    const double u = 1.0 / r;
    z = r * horner(kTailN, u) / horner(kTailD, u);
  }
  z = p <= 0.5 ? -std::fabs(z) : std::fabs(z);
  if (std::fabs(p - 0.5) < 0.05) {
    // Near the centre r comes from a difference of nearly equal numbers and
    // z keeps only its absolute accuracy. One Newton step on
    // Phi(z) - p = erf(z/sqrt 2)/2 - (p - 1/2), where p - 1/2 is exact,
    // restores the relative accuracy of a small quantile.
    const double dens = std::exp(-0.5 * z * z - kLnSqrt2Pi);
    z -= (0.5 * zferf(z / kSqrt2) - (p - 0.5)) / dens;
  }
  return z;
}

}  // namespace qvt
