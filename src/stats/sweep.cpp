// The symmetric sweep operator on a packed matrix.
#include "stats/sweep.hpp"

#include "stats/numeric.hpp"

namespace qvt {

int hostSweep(double tol, double* a, int k, int order, char* cc, double* wrk) noexcept {
  if (a == nullptr || cc == nullptr || order < 1 || k < 0 || k >= order) return -99;
  const long m = order;
  const long kk = k;
  const double h = a[zisub(kk, kk)];
  const bool marked = cc[k] == '1';
  if (marked) {
    if (h == 0.0) return 1;
  } else if (!(h > tol)) {
    return 1;  // pivot too small (or not a number): leave everything
  }
  // Row k before the sweep; the updates below read it while rewriting the
  // other rows, and row k itself is rewritten last, so a copy is only a
  // convenience.
  auto rowk = [&](long j) { return wrk != nullptr ? wrk[j] : a[zisub(kk, j)]; };
  if (wrk != nullptr)
    for (long j = 0; j < m; ++j) wrk[j] = a[zisub(kk, j)];
  // Forward sweep:  a(i,j) -= a(i,k) a(k,j) / h,  a(k,j) = a(k,j) / h,  a(k,k) = -1/h.
  // Reverse sweep (h < 0 after the forward one): the same update of the
  // other entries, a(k,j) = -a(k,j) / h, a(k,k) = -1/h; it undoes the forward
  // sweep exactly in exact arithmetic.
  for (long i = 0; i < m; ++i) {
    if (i == kk) continue;
    const double aik = rowk(i) / h;
    if (aik == 0.0) continue;
    double* row = a + zisub(i, 0);
    for (long j = 0; j <= i; ++j) {
      if (j == kk) continue;
      row[j] -= aik * rowk(j);
    }
  }
  const double sign = marked ? -1.0 : 1.0;
  for (long j = 0; j < m; ++j) {
    if (j == kk) continue;
    a[zisub(kk, j)] = sign * rowk(j) / h;
  }
  a[zisub(kk, kk)] = -1.0 / h;
  cc[k] = marked ? '0' : '1';
  return 0;
}

}  // namespace qvt
