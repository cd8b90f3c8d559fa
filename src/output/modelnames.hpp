// Names of model codes in the outputs and the parameters that each
// smoothing model reports in OUTEST=.
#pragma once

#include <span>
#include <string_view>

#include "statements/codes.hpp"

namespace qvt {

// Short name of a model code ("SIMPLE", "CROSTON"); "UNKNOWN" for a code of
// no model.
constexpr std::string_view modelName(int code) noexcept {
  const std::string_view n = codeName(kModelCodes, code);
  return n.empty() ? std::string_view("UNKNOWN") : n;
}

// The weights of a smoothing model in the order of its estimates; empty for
// a code that is not a smoothing model.
struct ModelParms {
  int code;
  int n;
  std::string_view names[3];
};
inline constexpr ModelParms kModelParms[] = {
    {1, 1, {"LEVEL"}},
    {2, 2, {"LEVEL", "TREND"}},
    {3, 3, {"LEVEL", "TREND", "DAMPING"}},
    {4, 1, {"WEIGHT"}},
    {5, 2, {"LEVEL", "SEASON"}},
    {6, 3, {"LEVEL", "TREND", "SEASON"}},
    {7, 3, {"LEVEL", "TREND", "SEASON"}},
    {11, 2, {"LEVEL", "SEASON"}},
};

constexpr std::span<const std::string_view> modelParms(int code) noexcept {
  for (const auto& m : kModelParms)
    if (m.code == code) return {m.names, static_cast<std::size_t>(m.n)};
  return {};
}

}  // namespace qvt
