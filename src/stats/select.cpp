// Order statistics by selection: C. A. R. Hoare's FIND (Comm. ACM 4, 1961,
// Algorithm 65) with a three-way partition (Dijkstra's Dutch national flag),
// so that runs of ties cost one pass and never degrade the selection.
#include "stats/numeric.hpp"

#include "run/missing.hpp"

#include <cmath>
#include <cstring>
#include <utility>

namespace qvt {
namespace {

// The arrays moved together by a partition.
struct Lanes {
  double* x;
  double* w;              // weights, or null
  unsigned char* pay;     // payload, or null
  std::size_t plen;       // bytes per payload element
  unsigned char* scratch; // plen bytes

  void swap(long i, long j) const {
    if (i == j) return;
    std::swap(x[i], x[j]);
    if (w != nullptr) std::swap(w[i], w[j]);
    if (pay != nullptr) {
      std::memcpy(scratch, pay + i * plen, plen);
      std::memcpy(pay + i * plen, pay + j * plen, plen);
      std::memcpy(pay + j * plen, scratch, plen);
    }
  }
};

double weightOf(double w) { return (std::isnan(w) || w < 0.0) ? 0.0 : w; }

// Median of three as the pivot value of [lo, hi).
double pivotValue(const double* x, long lo, long hi) {
  const double a = x[lo], b = x[lo + (hi - lo) / 2], c = x[hi - 1];
  if (a < b) return b < c ? b : (a < c ? c : a);
  return a < c ? a : (b < c ? c : b);
}

// Three-way partition of [lo, hi) about v: on return [lo, lt) < v,
// [lt, gt) == v, [gt, hi) > v.
void partition3(const Lanes& ln, long lo, long hi, double v, long* lt, long* gt) {
  long l = lo, i = lo, g = hi;
  while (i < g) {
    if (ln.x[i] < v) {
      ln.swap(l++, i++);
    } else if (ln.x[i] > v) {
      ln.swap(i, --g);
    } else {
      ++i;
    }
  }
  *lt = l;
  *gt = g;
}

// Places the k-th smallest element (0-based) of x at index k, everything
// before it no larger and everything after it no smaller.
void selectIndex(const Lanes& ln, long n, long k) {
  long lo = 0, hi = n;
  while (hi - lo > 1) {
    long lt = 0, gt = 0;
    partition3(ln, lo, hi, pivotValue(ln.x, lo, hi), &lt, &gt);
    if (k < lt) hi = lt;
    else if (k >= gt) lo = gt;
    else return;
  }
}

// The value at weighted position j: the element whose weight interval
// [W, W + w) of the sorted order holds j. j must lie below the total weight.
double selectWeighted(const Lanes& ln, long n, double j) {
  long lo = 0, hi = n;
  double base = 0.0;  // weight of everything sorted before lo
  double last = ln.x[0];
  while (hi > lo) {
    long lt = 0, gt = 0;
    const double v = pivotValue(ln.x, lo, hi);
    partition3(ln, lo, hi, v, &lt, &gt);
    double wl = 0.0, we = 0.0;
    for (long i = lo; i < lt; ++i) wl += weightOf(ln.w[i]);
    for (long i = lt; i < gt; ++i) we += weightOf(ln.w[i]);
    if (j < base + wl) {
      hi = lt;
    } else if (j < base + wl + we) {
      return v;
    } else {
      if (we > 0.0) last = v;
      base += wl + we;
      lo = gt;
    }
  }
  return last;  // rounding left j past the last interval: the largest weighted value
}

}  // namespace

int zqpsort(long n, double* x, double* freq, int nq, const double* j_d, double* xj, double* xj1,
            void* p, int plength, void* pwork) noexcept {
  if (n < 1 || nq < 1 || x == nullptr || j_d == nullptr || xj == nullptr) return -1;
  if (!(j_d[0] >= -1.0)) return -1;
  for (int q = 1; q < nq; ++q)
    if (!(j_d[q] >= j_d[q - 1])) return -1;
  if (p != nullptr && (plength < 1 || pwork == nullptr)) return -1;
  const Lanes ln{x, freq, static_cast<unsigned char*>(p), p != nullptr ? static_cast<std::size_t>(plength) : 0,
                 static_cast<unsigned char*>(pwork)};

  if (freq == nullptr) {
    if (std::floor(j_d[nq - 1]) > static_cast<double>(n - 1)) return -1;
    for (int q = 0; q < nq; ++q) {
      const long k = static_cast<long>(std::floor(j_d[q]));
      if (k < 0) {
        // Position -1: nothing stands there; the next one is the minimum.
        xj[q] = kMissing;
        if (xj1 != nullptr) {
          selectIndex(ln, n, 0);
          xj1[q] = x[0];
        }
        continue;
      }
      selectIndex(ln, n, k);
      xj[q] = x[k];
      if (xj1 != nullptr) {
        // Everything after k is no smaller: the next order statistic is
        // their minimum.
        double next = x[k];
        if (k + 1 < n) {
          next = x[k + 1];
          for (long i = k + 2; i < n; ++i)
            if (x[i] < next) next = x[i];
        }
        xj1[q] = next;
      }
    }
    return 0;
  }

  double total = 0.0;
  double largest = 0.0;
  bool any = false;
  for (long i = 0; i < n; ++i) {
    const double w = weightOf(freq[i]);
    total += w;
    if (w > 0.0 && (!any || x[i] > largest)) {
      largest = x[i];
      any = true;
    }
  }
  if (!(total > 1e-12)) return -2;
  auto at = [&](double j) { return j >= total ? largest : selectWeighted(ln, n, j); };
  for (int q = 0; q < nq; ++q) {
    const double j = j_d[q];
    if (j < 0.0) {
      xj[q] = kMissing;
      if (xj1 != nullptr) xj1[q] = at(0.0);
      continue;
    }
    xj[q] = at(j);
    if (xj1 != nullptr) xj1[q] = at(j + 1.0);
  }
  return 0;
}

}  // namespace qvt
