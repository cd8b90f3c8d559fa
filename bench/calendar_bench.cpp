// Calls per second of interval counting (zintck2) and stepping (zintnx2) on
// the grids the run uses most. Each iteration works through a fixed list of
// dates spread over 1900..2100, so no single date's path is measured alone.
#include <benchmark/benchmark.h>

#include <array>
#include <cmath>
#include <vector>

#include "calendar/interval.hpp"

namespace {

constexpr std::array<const char*, 8> kIntervals = {"DAY",   "WEEKDAY", "WEEK",   "MONTH",
                                                    "QTR",   "YEAR",    "R445YR", "DTHOUR"};

qvt::INTERVAL parsed(int which) {
  qvt::INTERVAL i;
  qvt::zintstr(kIntervals[static_cast<std::size_t>(which)], -1, &i);
  return i;
}

// 1024 values on the interval's own units: days from 1900 to 2100, or the
// same days in seconds with a time of day.
std::vector<double> values(const qvt::INTERVAL& i) {
  std::vector<double> v(1024);
  const double first = -21915.0, span = 73049.0;  // 1900-01-01 and 200 years of days
  for (std::size_t k = 0; k < v.size(); ++k) {
    const double day = first + std::floor(span * static_cast<double>((k * 7919) % 1024) / 1024.0);
    v[k] = i.units == 's' ? day * 86400.0 + static_cast<double>((k * 3571) % 86400) : day;
  }
  return v;
}

void BM_zintnx2(benchmark::State& state) {
  const qvt::INTERVAL i = parsed(static_cast<int>(state.range(0)));
  const std::vector<double> xs = values(i);
  state.SetLabel(kIntervals[static_cast<std::size_t>(state.range(0))]);
  std::size_t k = 0;
  for (auto _ : state) {
    const double n = static_cast<double>(static_cast<int>(k % 25) - 12);
    benchmark::DoNotOptimize(qvt::zintnx2(i, xs[k & 1023], n));
    ++k;
  }
  state.SetItemsProcessed(state.iterations());
}

void BM_zintck2(benchmark::State& state) {
  const qvt::INTERVAL i = parsed(static_cast<int>(state.range(0)));
  const std::vector<double> xs = values(i);
  state.SetLabel(kIntervals[static_cast<std::size_t>(state.range(0))]);
  std::size_t k = 0;
  for (auto _ : state) {
    benchmark::DoNotOptimize(qvt::zintck2(i, xs[k & 1023], xs[(k + 517) & 1023]));
    ++k;
  }
  state.SetItemsProcessed(state.iterations());
}

BENCHMARK(BM_zintnx2)->DenseRange(0, static_cast<int>(kIntervals.size()) - 1);
BENCHMARK(BM_zintck2)->DenseRange(0, static_cast<int>(kIntervals.size()) - 1);

}  // namespace

BENCHMARK_MAIN();
