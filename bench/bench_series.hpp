// The input of the model benchmarks: a positive monthly series with a trend,
// a seasonal pattern and noise, the same for a given seed.
#pragma once

#include <cmath>
#include <numbers>
#include <random>
#include <vector>

inline std::vector<double> benchSeries(long n, unsigned seed) {
  std::mt19937_64 gen(seed);
  std::normal_distribution<double> nd;
  std::vector<double> x(static_cast<std::size_t>(n));
  for (long t = 0; t < n; ++t) {
    const double season = 1.0 + 0.2 * std::sin(2.0 * std::numbers::pi * static_cast<double>(t % 12) / 12.0);
    x[static_cast<std::size_t>(t)] = (200.0 + 0.5 * static_cast<double>(t)) * season + 3.0 * nd(gen);
  }
  return x;
}
