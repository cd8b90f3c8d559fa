// Packed symmetric matrices: root-free Cholesky, its inverse, the largest
// element, a strided copy, and the positive-definiteness repair of a
// sequence of autocorrelations.
#include "stats/numeric.hpp"

#include <cmath>

namespace qvt {

double zvamx(const double* a, long n) noexcept {
  double m = 0.0;
  for (long i = 0; i < n; ++i) m = std::fmax(m, std::fabs(a[i]));
  return m;
}

void zvmovj1(double* c, long jc, const double* a, long n) noexcept {
  for (long i = 0; i < n; ++i) c[i * jc] = a[i];
}

int zrchol(double* a, int n, double tol) noexcept {
  if (n < 1 || a == nullptr) return -99;
  const double limit = zvamx(a, static_cast<long>(packedSize(n))) * tol;
  if (limit == 0.0) return 1;
  // Row by row (the packed order): for j < i
  //   L(i,j) = (a(i,j) - sum_{k<j} L(i,k) D_k L(j,k)) / D_j,
  //   D_i    =  a(i,i) - sum_{k<i} L(i,k)^2 D_k.
  for (long i = 0; i < n; ++i) {
    double* row = a + zisub(i, 0);
    for (long j = 0; j < i; ++j) {
      const double* rowj = a + zisub(j, 0);
      double s = row[j];
      for (long k = 0; k < j; ++k) s -= row[k] * a[zisub(k, k)] * rowj[k];
      row[j] = s / a[zisub(j, j)];
    }
    double d = row[i];
    for (long k = 0; k < i; ++k) d -= row[k] * row[k] * a[zisub(k, k)];
    row[i] = d;
    if (!(std::fabs(d) >= limit)) return static_cast<int>(i) + 1;
  }
  return 0;
}

void zrchinv(const double* a, double* ainv, int n) noexcept {
  const long m = n;
  if (ainv != a)
    for (long i = 0; i < static_cast<long>(packedSize(m)); ++i) ainv[i] = a[i];
  // 1. M = L^-1 in place of L (unit lower triangular, diagonal implied):
  //    M(i,j) = -L(i,j) - sum_{k=j+1}^{i-1} L(i,k) M(k,j). Going up in j
  //    reads L(i,k) for k > j before it is overwritten.
  for (long i = 1; i < m; ++i) {
    for (long j = 0; j < i; ++j) {
      double s = -ainv[zisub(i, j)];
      for (long k = j + 1; k < i; ++k) s -= ainv[zisub(i, k)] * ainv[zisub(k, j)];
      ainv[zisub(i, j)] = s;
    }
  }
  // 2. A^-1 = M' D^-1 M: (i,j) = sum_{k >= i} M(k,i) M(k,j) / D_k for j <= i.
  //    Row i reads only rows k >= i of M and the diagonal D_k, k >= i; it
  //    overwrites M(i,j) after its last use and D_i last of all.
  for (long i = 0; i < m; ++i) {
    for (long j = 0; j <= i; ++j) {
      const double mij = (i == j) ? 1.0 : ainv[zisub(i, j)];
      double s = mij / ainv[zisub(i, i)];
      for (long k = i + 1; k < m; ++k) s += ainv[zisub(k, i)] * ainv[zisub(k, j)] / ainv[zisub(k, k)];
      if (j < i) ainv[zisub(i, j)] = s;
      else ainv[zisub(i, i)] = s;
    }
  }
}

namespace {

// Durbin-Levinson recursion on r_h = rho[h] lambda^h, h = 1..p. On success
// work[0..p-1] holds phi_{p,1..p}; false when a partial autocorrelation
// reaches 1 in size (or is not a number).
bool levinson(const double* rho, int p, double lambda, double* work) {
  // work holds phi_{k-1, .}; the update of phi_{k, j} and phi_{k, k-j}
  // is done in pairs so no second array is needed.
  double v = 1.0;
  for (int k = 1; k <= p; ++k) {
    double num = rho[k] * std::pow(lambda, k);
    for (int j = 1; j < k; ++j) num -= work[j - 1] * rho[k - j] * std::pow(lambda, k - j);
    const double pk = num / v;
    if (!(std::fabs(pk) < 1.0)) return false;
    for (int j = 1; j <= (k - 1) / 2; ++j) {
      const double lo = work[j - 1];
      const double hi = work[k - j - 1];
      work[j - 1] = lo - pk * hi;
      work[k - j - 1] = hi - pk * lo;
    }
    if ((k - 1) % 2 == 1) {
      const int mid = (k - 1) / 2 + 1;
      work[mid - 1] -= pk * work[mid - 1];
    }
    work[k - 1] = pk;
    v *= 1.0 - pk * pk;
  }
  return true;
}

}  // namespace

double zposdef(const double* inrho, int p, double* work) noexcept {
  if (p < 1) return 1.0;
  double lambda = 1.0;
  double lo = 0.0;
  double hi = 1.0;
  bool passed = false;
  // Bisection for the largest lambda that passes, to within 0.05: a failure
  // lowers the upper bound, a success raises the lower bound until the gap
  // to the upper bound is small. 60 halvings exhaust a double.
  for (int it = 0; it < 200; ++it) {
    if (levinson(inrho, p, lambda, work)) {
      passed = true;
      if (hi - lambda <= 0.05) break;
      lo = lambda;
    } else {
      passed = false;
      hi = lambda;
    }
    lambda = 0.5 * (lo + hi);
  }
  if (!passed) {
    for (int j = 0; j < p; ++j) work[j] = 0.0;
    return 0.0;
  }
  for (int j = 0; j < p; ++j) work[j] = -work[j];  // polynomial 1 - sum phi_j B^j
  return lambda;
}

}  // namespace qvt
