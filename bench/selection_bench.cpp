// Cost of the automatic choice for one series: the seasonality test on its
// own (its generalised least squares step is closed-form, so the cost should
// grow with the length only through the passes over the series) and esmbest
// over the six candidates of MODEL=BEST, with and without a hold-out.
#include <benchmark/benchmark.h>

#include <vector>

#include "bench_series.hpp"

#include "smoothing/esmbest.hpp"
#include "stats/seastest.hpp"

namespace {

using namespace qvt;

std::vector<double> series(long n) { return benchSeries(n, 11); }

void BM_SeasonalityTest(benchmark::State& state) {
  const long n = state.range(0);
  const auto x = series(n);
  double aic[3];
  for (auto _ : state) benchmark::DoNotOptimize(zssntst(x.data(), n, nullptr, 0, 1, 12, 1.11e-16, 0.01, aic));
  state.SetItemsProcessed(state.iterations() * n);
}
BENCHMARK(BM_SeasonalityTest)->Arg(144)->Arg(10'000)->Arg(1'000'000)->Unit(benchmark::kMicrosecond);

void BM_ChooseAmongSix(benchmark::State& state) {
  const long n = 144;
  const long holdout = state.range(0);
  const auto x = series(n);
  const INTERVAL none{};
  const int methods[] = {1, 2, 3, 5, 6, 7};  // SIMPLE .. WINTERS
  double criteria[6];
  constexpr int kRmse = 3;
  for (auto _ : state) {
    const int r = esmbest(x.data(), n, 12, &none, 0.0, 12, 0, kRmse, holdout, 0, methods, 6, 0, 0.0, 0,
                          criteria, nullptr);
    if (r < 0) {
      state.SkipWithError("esmbest failed");
      break;
    }
  }
  state.SetItemsProcessed(state.iterations());  // series chosen for
}
BENCHMARK(BM_ChooseAmongSix)->Arg(0)->Arg(12)->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
