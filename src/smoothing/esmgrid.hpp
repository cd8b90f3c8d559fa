// The 20 fixed start points of the weight estimator, one column per kind of
// weight. A model reads across a row: point i takes the i-th value of each
// of its columns.
#pragma once

#include <array>

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

// Lays columns side by side into the rows the estimator reads.
constexpr std::array<std::array<double, 3>, 20> esmGridRows(const EsmGridColumn& c0,
                                                            const EsmGridColumn* c1 = nullptr,
                                                            const EsmGridColumn* c2 = nullptr) {
  std::array<std::array<double, 3>, 20> rows{};
  for (std::size_t i = 0; i < 20; ++i) {
    rows[i][0] = c0[i];
    rows[i][1] = c1 != nullptr ? (*c1)[i] : 0.0;
    rows[i][2] = c2 != nullptr ? (*c2)[i] : 0.0;
  }
  return rows;
}

}  // namespace qvt
