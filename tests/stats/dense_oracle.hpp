// Reference arithmetic for the stats tests: packing by rows of the lower
// triangle, the inverse by the shared Gauss-Jordan elimination in long double
// (independent of the routines under test), and the comparison in digits of
// agreement against a long double reference.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <random>
#include <utility>
#include <vector>

#include "../common/shared.hpp"
#include "run/missing.hpp"
#include "stats/numeric.hpp"

namespace qvt::testing_dense {

using LD = long double;
inline const double kM = kMissing;
constexpr long double kPiL = 3.141592653589793238462643383279503L;

// |got - want| within rel of |want|, with a floor for values that are 0 to
// within double rounding.
inline void expectRel(double got, long double want, double rel, const char* what, double at) {
  const long double err = std::fabs(static_cast<long double>(got) - want);
  EXPECT_LE(err, rel * std::fabs(want) + 1e-300L)
      << what << " at " << at << ": got " << got << " want " << static_cast<double>(want);
}

using Dense = std::vector<std::vector<double>>;
using testing::LRow;

inline std::vector<double> pack(const Dense& m) {
  std::vector<double> p;
  for (std::size_t i = 0; i < m.size(); ++i)
    for (std::size_t j = 0; j <= i; ++j) p.push_back(m[i][j]);
  return p;
}

using testing::gaussJordan;

inline Dense inverse(const Dense& m) {
  const std::size_t n = m.size();
  std::vector<LRow> a(n, LRow(2 * n, 0.0L));
  for (std::size_t i = 0; i < n; ++i) {
    std::copy(m[i].begin(), m[i].end(), a[i].begin());
    a[i][n + i] = 1.0L;
  }
  Dense inv;
  for (const LRow& r : gaussJordan(a)) inv.emplace_back(r.begin(), r.end());
  return inv;
}

// Small symmetric positive definite matrices.
inline const Dense kSpd3 = {{4, 2, -2}, {2, 10, 4}, {-2, 4, 9}};
inline const Dense kSpd4 = {{6, 1, 0.5, 2}, {1, 5, -1, 0}, {0.5, -1, 7, 1.5}, {2, 0, 1.5, 8}};

}  // namespace qvt::testing_dense
