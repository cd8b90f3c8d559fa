// Cost of one fit (esmint + esmfit) of each trend and seasonal model on a
// monthly series of 144 observations (12 seasons) and on 1000 observations.
#include <benchmark/benchmark.h>

#include <vector>

#include "bench_series.hpp"

#include "smoothing/esmfor.hpp"
#include "smoothing/esmtypes.hpp"

namespace {

using namespace qvt;

std::vector<double> series(long n) { return benchSeries(n, 7); }

void fitOnce(benchmark::State& state, int method) {
  const auto n = static_cast<long>(state.range(0));
  const auto x = series(n);
  const INTERVAL none{};
  const bool seasonal = method == kEsmSeasonal || method == kEsmAddWinters ||
                        method == kEsmWinters || method == kEsmMultSeasonal;
  for (auto _ : state) {
    WINMODEL* m = nullptr;
    if (esmint(x.data(), n, &none, 0.0, seasonal ? 12 : 0, 0, method, 0, &m) != 0) {
      state.SkipWithError("esmint failed");
      break;
    }
    benchmark::DoNotOptimize(esmfit(m));
    esmtrm(m);
  }
}

void BM_Linear(benchmark::State& s) { fitOnce(s, kEsmLinear); }
void BM_DampTrend(benchmark::State& s) { fitOnce(s, kEsmDampTrend); }
void BM_Double(benchmark::State& s) { fitOnce(s, kEsmDouble); }
void BM_Seasonal(benchmark::State& s) { fitOnce(s, kEsmSeasonal); }
void BM_MultSeasonal(benchmark::State& s) { fitOnce(s, kEsmMultSeasonal); }
void BM_AddWinters(benchmark::State& s) { fitOnce(s, kEsmAddWinters); }
void BM_Winters(benchmark::State& s) { fitOnce(s, kEsmWinters); }

BENCHMARK(BM_Linear)->Arg(144)->Arg(1000)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_DampTrend)->Arg(144)->Arg(1000)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_Double)->Arg(144)->Arg(1000)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_Seasonal)->Arg(144)->Arg(1000)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_MultSeasonal)->Arg(144)->Arg(1000)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_AddWinters)->Arg(144)->Arg(1000)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_Winters)->Arg(144)->Arg(1000)->Unit(benchmark::kMicrosecond);

}  // namespace

BENCHMARK_MAIN();
