// Candidate intervals of a whole time ID vector (zinttiu, zinttig): the
// intervals that triples sampled along the vector suggest, ranked by how
// many neighbouring pairs each one fails to space correctly.
#include <algorithm>
#include <memory>
#include <new>
#include <vector>

#include "calendar/interval.hpp"
#include "calendar/zintti.hpp"
#include "run/missing.hpp"

namespace qvt {
namespace {

constexpr double kFirstDay = -138061.0;
constexpr double kLastDay = 6589335.0;

// Two inferred intervals describe the same grid. The comparison of
// intervals in general (nested grids, ratios, shifts that line up) isn't
// available here; the intervals that zintget produces are in a canonical
// form (one name per grid, the multiplier and shift it found), so the same
// grid comes back with the same fields.
bool sameGrid(const INTERVAL& a, const INTERVAL& b) noexcept {
  return a.units == b.units && a.intcode == b.intcode && std::max(a.intper, 1) == std::max(b.intper, 1) &&
         a.shiftper == b.shiftper && a.nweekday == b.nweekday &&
         std::equal(a.weekend, a.weekend + 7, b.weekend);
}

}  // namespace

int zinttig(const double* tid, long ntid, int dup, int nintv, INTERVAL* intv) {
  if (ntid < 3) return -1;
  if (tid == nullptr || (nintv > 0 && intv == nullptr)) return -99;
  const long k = std::min(ntid - 2, static_cast<long>(std::max(nintv, 0)));
  if (k == 0) return 0;

  // Triples from the start to the end (the last at tid[ntid - 3]), evenly
  // spaced between.
  int count = 0;
  for (long j = 0; j < k; ++j) {
    const long at = k == 1 ? 0 : j * (ntid - 3) / (k - 1);
    INTERVAL found;
    if (zintget(tid[at], tid[at + 1], tid[at + 2], &found, nullptr) != 0) continue;
    if (found.intcode == kIntNone) continue;
    bool known = false;
    for (int i = 0; i < count && !known; ++i) known = sameGrid(intv[i], found);
    if (!known) intv[count++] = found;
  }
  if (count <= 1) return count;

  // Errors: neighbours that aren't one interval apart (with duplicates
  // allowed, neither in one interval nor one apart).
  std::vector<long> errors(static_cast<std::size_t>(count), 0);
  for (int c = 0; c < count; ++c) {
    for (long i = 0; i + 1 < ntid; ++i) {
      const double a = zintnx2(intv[c], tid[i], 0);
      const double b = zintnx2(intv[c], tid[i + 1], 0);
      const double n = (wzmis(a) || wzmis(b)) ? kMissing : zintck2(intv[c], a, b);
      const bool bad = wzmis(n) || (dup == 0 ? n != 1 : (n > 1 || n < 0));
      if (bad) ++errors[static_cast<std::size_t>(c)];
    }
  }
  // Exchange sort: only strictly fewer errors moves an interval up, so
  // intervals with equal errors keep the order they were found in.
  for (int pass = 0; pass < count; ++pass) {
    for (int c = 0; c + 1 < count; ++c) {
      const auto u = static_cast<std::size_t>(c);
      if (errors[u + 1] < errors[u]) {
        std::swap(errors[u], errors[u + 1]);
        std::swap(intv[c], intv[c + 1]);
      }
    }
  }
  return count;
}

int zinttiu(const double* tid, long ntid, int dup, int nintv, INTERVAL* intv) {
  if (ntid > 0 && tid == nullptr) return -99;
  const bool dates = intv != nullptr && nintv > 0 && intv[0].intcode > 24;
  bool ascending = true;
  for (long i = 0; i < ntid; ++i) {
    const double v = tid[i];
    if (wzmis(v)) return -2;
    if (dates && (v < kFirstDay || v > kLastDay)) return -3;
    if (i > 0 && v < tid[i - 1]) ascending = false;
  }
  if (ascending) return zinttig(tid, ntid, dup, nintv, intv);

  std::unique_ptr<double[]> copy(new (std::nothrow) double[static_cast<std::size_t>(ntid)]);
  if (!copy) return -1;
  std::copy(tid, tid + ntid, copy.get());
  std::sort(copy.get(), copy.get() + ntid);
  return zinttig(copy.get(), ntid, dup, nintv, intv);
}

}  // namespace qvt
