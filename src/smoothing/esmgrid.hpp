// The 20 fixed start points of the weight estimator, one column per kind of
// weight. A model reads across a row: point i takes the i-th value of each
// of its columns.
#pragma once

#include <array>
#include <cstddef>

namespace qvt {

using EsmGridColumn = std::array<double, 20>;

// Level weight of the one-weight models (SIMPLE, DOUBLE).
inline constexpr EsmGridColumn kGridLevel1 = {0.01, 0.1, 0.15, 0.175, 0.2,  0.225, 0.25,
                                              0.275, 0.3, 0.325, 0.35, 0.375, 0.4, 0.45,
                                              0.5,  0.6, 0.7,  0.8,  0.9,   0.99};
// Level weight of every other model.
inline constexpr EsmGridColumn kGridLevel = {0.1, 0.1, 0.2, 0.1, 0.2, 0.3, 0.1, 0.2, 0.3, 0.4,
                                             0.1, 0.2, 0.3, 0.4, 0.5, 0.1, 0.4, 0.6, 0.9, 0.9};
inline constexpr EsmGridColumn kGridTrend = {0.01, 0.05, 0.01, 0.1,  0.05, 0.01, 0.15,
                                             0.1,  0.05, 0.01, 0.25, 0.15, 0.1,  0.05,
                                             0.01, 0.9,  0.6,  0.4,  0.1,  0.9};
inline constexpr EsmGridColumn kGridDamp = {0.99, 0.99, 0.99, 0.98, 0.98, 0.98, 0.98,
                                            0.98, 0.98, 0.98, 0.97, 0.97, 0.97, 0.97,
                                            0.97, 0.9,  0.9,  0.9,  0.9,  0.8};
// Season weight of SEASONAL and MULTSEASONAL.
inline constexpr EsmGridColumn kGridSeason = {0.5, 0.4, 0.5, 0.3, 0.4, 0.5, 0.2, 0.3, 0.4, 0.5,
                                              0.1, 0.2, 0.3, 0.4, 0.5, 0.9, 0.9, 0.9, 0.9, 0.1};
// Season weight of the Winters forms.
inline constexpr EsmGridColumn kGridSeasonWinters = {0.2, 0.4, 0.4, 0.2, 0.2, 0.2, 0.4,
                                                     0.4, 0.4, 0.4, 0.6, 0.2, 0.2, 0.2,
                                                     0.2, 0.8, 0.6, 0.4, 0.4, 0.6};

// Lays columns side by side into the rows the estimator reads; a model
// with fewer than three weights leaves the other entries 0. (Overloads, not
// null defaults: comparing the address of a constant with null is not a
// constant expression for every compiler.)
using EsmGridRows = std::array<std::array<double, 3>, 20>;

constexpr EsmGridRows esmGridRows(const EsmGridColumn& c0) {
  EsmGridRows rows{};
  for (std::size_t i = 0; i < 20; ++i) rows[i] = {c0[i], 0.0, 0.0};
  return rows;
}

constexpr EsmGridRows esmGridRows(const EsmGridColumn& c0, const EsmGridColumn* c1) {
  EsmGridRows rows{};
  for (std::size_t i = 0; i < 20; ++i) rows[i] = {c0[i], (*c1)[i], 0.0};
  return rows;
}

constexpr EsmGridRows esmGridRows(const EsmGridColumn& c0, const EsmGridColumn* c1,
                                  const EsmGridColumn* c2) {
  EsmGridRows rows{};
  for (std::size_t i = 0; i < 20; ++i) rows[i] = {c0[i], (*c1)[i], (*c2)[i]};
  return rows;
}

}  // namespace qvt
