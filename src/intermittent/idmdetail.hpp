// What the sources of the intermittent model share and nobody else needs:
// its constants, the checks every model routine makes first, and the fit
// and lead ranges that eflag selects.
#pragma once

#include <bit>
#include <cmath>
#include <cstdint>

#include "intermittent/idmodel.hpp"
#include "run/missing.hpp"

namespace qvt::idm {

inline constexpr double kAlphaDefault = 0.05;   // significance level when alpha is missing
inline constexpr double kWeightOne = 0.15;      // weight of a one-demand fit
inline constexpr double kWeightTwoFlat = 0.1;   // two demands without variation
inline constexpr double kWeightTwo = 0.2;       // two demands with variation
inline constexpr double kFlatTol = 1e-12;       // relative tolerance of "no variation"
inline constexpr double kTiny = 1.491668147e-154;   // smallest divisor
inline constexpr double kBig = 1.3407807929943e+154;  // largest value whose square is finite

// The thresholds are compared by bit pattern: a neighbouring double would
// move a boundary of the rules.
static_assert(std::bit_cast<std::uint64_t>(kAlphaDefault) == 0x3FA999999999999AULL);
static_assert(std::bit_cast<std::uint64_t>(kWeightOne) == 0x3FC3333333333333ULL);
static_assert(std::bit_cast<std::uint64_t>(kWeightTwoFlat) == 0x3FB999999999999AULL);
static_assert(std::bit_cast<std::uint64_t>(kWeightTwo) == 0x3FC999999999999AULL);
static_assert(std::bit_cast<std::uint64_t>(kFlatTol) == 0x3D719799812DEA11ULL);
static_assert(std::bit_cast<std::uint64_t>(kTiny) == 0x20000000002302ACULL);
static_assert(std::bit_cast<std::uint64_t>(kBig) == 0x5FF0000000000087ULL);

// Demands that are fitted and demands forecast beyond them.
struct Range {
  long nfit = 0, nlead = 0;
};

// eflag 2: the fit sample, the hold-out and back demands ahead; 1: fit
// sample and hold-out, the back demands ahead; otherwise all demands.
inline Range range(const IDMODEL& m, int eflag) noexcept {
  if (eflag == 2) return {m.nsample, m.nholdout + m.nback};
  if (eflag == 1) return {m.nsample + m.nholdout, m.nback};
  return {m.n, 0};
}

// The checks of every routine that works on a set series: -10 no series,
// -11 no demand, -12 no demand in the fit sample, -20 no settings taken yet.
inline int ready(const IDMODEL& m) noexcept {
  if (m.ids == nullptr) return kIdmNoSeries;
  if (m.n < 1) return kIdmNoDemand;
  if (m.nsample < 1) return kIdmNoFitDemand;
  if (m.spec.specified == 0) return kIdmNoSpec;
  return kIdmOk;
}

// A vector varies when its range exceeds its standard deviation by more
// than the relative tolerance; a missing statistic means no variation.
inline bool varies(const IDSSTATS& s) noexcept {
  return !wzmis(s.std) && !wzmis(s.range) && s.std * kFlatTol < s.range;
}

// A weight raised to a present lower bound and lowered to a present upper.
inline double bounded(double w, const ESMPARM& p) noexcept {
  if (!wzmis(p.lower) && w < p.lower) w = p.lower;
  if (!wzmis(p.upper) && w > p.upper) w = p.upper;
  return w;
}

// a + b, a - b and a * b, missing when either is missing.
inline double add(double a, double b) noexcept { return wzmis(a) || wzmis(b) ? kMissing : a + b; }
inline double sub(double a, double b) noexcept { return wzmis(a) || wzmis(b) ? kMissing : a - b; }
inline double mul(double a, double b) noexcept { return wzmis(a) || wzmis(b) ? kMissing : a * b; }

// Shared steps of the two forecasting routines (idmdem.cpp).
// The first prediction of an interval or average-demand component: entry 0
// lies before the smoothing starts and is predicted from the start values.
int firstPrediction(ESMODEL& c, double* p) noexcept;
// First prediction, esm_pred, entry 0, esm_trns and esm_bnds of a component
// indexed from 1 (intervals, average demand); without the first prediction
// for sizes. empty: the component has no smoothed value (one demand), and
// its forecasts are made here. Negative codes of the steps pass through.
int predictComponent(IDMODEL& m, ESMODEL& c, bool first, bool empty, double alpha, long lead) noexcept;

}  // namespace qvt::idm
