// The series spool and its transposition.
//
// The transposition never holds the whole matrix: a pass reads every input
// row once, keeps only the columns that become its block of output rows,
// and appends that block. Memory is one input row plus about kZtPassBytes,
// paid for by reading the input once per pass.
#include "output/ztspool.hpp"

#include <algorithm>
#include <climits>
#include <cstddef>
#include <memory>
#include <new>

namespace qvt {
namespace {

constexpr long kCell = static_cast<long>(sizeof(double));

// a x b, or LONG_MAX when that overflows.
long satMul(long a, long b) noexcept {
  long r = 0;
  return __builtin_mul_overflow(a, b, &r) ? LONG_MAX : r;
}

bool isEof(int r) noexcept { return (static_cast<unsigned>(r) & 0x803FFFFFu) == static_cast<unsigned>(kHostEof); }

std::unique_ptr<double[]> cells(long n) {
  return std::unique_ptr<double[]>(new (std::nothrow) double[static_cast<std::size_t>(n)]);
}

// Position 0, then -2: the contents end at the start.
int empty(Host& host, SpoolHandle sp) {
  int r = hostSpoolPoint(host, sp, 0);
  if (r >= 0) r = hostSpoolPoint(host, sp, -2);
  return r;
}

}  // namespace

int ztinit(Host& host, SpoolHandle* one, SpoolHandle* two) {
  if (!one || !two) return 1;
  if (hostSpoolOpen(host, one) < 0) return 2;
  if (hostSpoolOpen(host, two) < 0) return 2;
  return 0;
}

int ztterm(Host& host, SpoolHandle one, SpoolHandle two) {
  if (!one || !two) return 1;
  for (const SpoolHandle sp : {one, two}) {
    if (const int r = hostSpoolClose(host, sp, 1); r < 0) {
      hostMsgRaw(host, 0, r);
      return 2;
    }
  }
  return 0;
}

int ztrset(Host& host, SpoolHandle sp) {
  if (!sp) return 1;
  return empty(host, sp) < 0 ? 2 : 0;
}

int ztput(Host& host, SpoolHandle sp, long n, const double* vec) {
  if (!sp || n < 0 || (n > 0 && !vec)) return 1;
  if (n == 0) return 0;
  const long bytes = satMul(n, kCell);
  if (bytes == LONG_MAX) return 1;
  return hostSpoolWrite(host, sp, vec, static_cast<std::size_t>(bytes)) != 0 ? 2 : 0;
}

int ztget(Host& host, SpoolHandle sp, int varno, long nobs, double* vec) {
  if (!sp || varno < -1 || nobs < 0 || (nobs > 0 && !vec)) return 2;
  const long bytes = satMul(nobs, kCell);
  if (bytes == LONG_MAX) return 2;
  if (varno >= 0) {
    const long pos = satMul(varno, bytes);
    if (pos == LONG_MAX || hostSpoolPoint(host, sp, pos) < 0) return 1;
  }
  if (nobs == 0) return 0;
  return hostSpoolRead(host, sp, vec, static_cast<std::size_t>(bytes)) != 0 ? 2 : 0;
}

ZtPlan zttplan(long nrow, long ncol, long limit) noexcept {
  ZtPlan p;
  if (nrow < 1 || ncol < 1) return p;
  const long col = satMul(nrow, kCell);  // one output row
  const long mem = std::min(satMul(col, ncol), std::max(limit, col));
  p.per = std::min(mem / col, ncol);
  if (p.per < 1) return p;
  p.passes = (ncol + p.per - 1) / p.per;
  return p;
}

int zttrans(Host& host, SpoolHandle xcin, SpoolHandle xcout, long nrow, long ncol) {
  return zttransm(host, xcin, xcout, nrow, ncol, kZtPassBytes);
}

int zttransm(Host& host, SpoolHandle xcin, SpoolHandle xcout, long nrow, long ncol, long limit) {
  if (nrow < 1 || ncol < 1 || !xcin || !xcout) return 5;
  if (const int r = empty(host, xcout); r < 0) {
    hostMsgRaw(host, 0, r);
    return 4;
  }
  const auto row = cells(ncol);
  if (!row) {
    hostMemMessage(host, satMul(2 * kCell, ncol));
    return 3;
  }
  const ZtPlan plan = zttplan(nrow, ncol, limit);
  const long col = satMul(nrow, kCell);
  if (plan.passes < 1 || col == LONG_MAX) {
    hostMemMessage(host, col);
    return 3;
  }
  // Output row c - c0 of the pass is column c of the input: block[(c - c0) * nrow + i].
  const auto block = cells(satMul(plan.per, nrow));
  if (!block) {
    hostMemMessage(host, satMul(plan.per, col));
    return 3;
  }
  const auto rowBytes = static_cast<std::size_t>(ncol) * sizeof(double);
  for (long c0 = 0; c0 < ncol; c0 += plan.per) {
    const long c1 = std::min(c0 + plan.per, ncol);
    if (const int r = hostSpoolPoint(host, xcin, 0); r < 0) {
      hostMsgRaw(host, 0, r);
      return 4;
    }
    for (long i = 0; i < nrow; ++i) {
      if (const int r = hostSpoolRead(host, xcin, row.get(), rowBytes); r != 0) {
        hostMsgRaw(host, 0, r);
        return isEof(r) ? 2 : 4;
      }
      double* to = block.get() + i;
      for (long c = c0; c < c1; ++c, to += nrow) *to = row[static_cast<std::size_t>(c)];
    }
    const auto bytes = static_cast<std::size_t>(c1 - c0) * static_cast<std::size_t>(col);
    if (const int r = hostSpoolWrite(host, xcout, block.get(), bytes); r != 0) {
      hostMsgRaw(host, 0, r);
      return 4;
    }
  }
  int r = hostSpoolPoint(host, xcout, 0);
  if (r >= 0) r = empty(host, xcin);
  if (r < 0) {
    hostMsgRaw(host, 0, r);
    return 4;
  }
  return 0;
}

int ztoutp(Host& host, DsHandle ds, SpoolHandle sp, void* user, int nvar, double* vec,
           ZtFilter filter) {
  if (!sp || nvar < 1 || !vec || !filter) return 1;
  if (const int r = hostSpoolPoint(host, sp, 0); r < 0) {
    hostMsgRaw(host, 0, r);
    return 1;
  }
  const auto rowBytes = static_cast<std::size_t>(nvar) * sizeof(double);
  for (long obs = 0;; ++obs) {
    if (const int r = hostSpoolRead(host, sp, vec, rowBytes); r != 0) {
      if (isEof(r)) return 0;
      hostMsgRaw(host, 0, r);
      return 1;
    }
    const int f = filter(user, obs, nvar, vec);
    if (f > 1) return 0;
    if (f == 1) continue;
    // A record the host can't take has been reported by the host, and the
    // data set is then discarded at the step's end: writing on is useless,
    // but the spool is sound, so this isn't a spool failure.
    if (hostRowPut(host, ds) != 0 || hostDsAdd(host, ds) != 0) return 0;
  }
}

}  // namespace qvt
