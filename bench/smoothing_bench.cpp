// Cost of one simple-smoothing model of one series: set-up, estimation and
// forecast (esmint + esmfit + esmprd), and of the estimator's grid search
// alone, for series of 36, 144 and 1000 observations.
#include <benchmark/benchmark.h>

#include <random>
#include <vector>

#include "smoothing/esmest.hpp"
#include "smoothing/esmfor.hpp"
#include "smoothing/esmkset.hpp"

namespace {

using namespace qvt;

std::vector<double> series(std::size_t n) {
  std::mt19937_64 gen(42);
  std::normal_distribution<double> nd;
  std::vector<double> x(n);
  double l = 100;
  for (auto& v : x) {
    const double e = nd(gen);
    v = l + e;
    l += 0.3 * e;
  }
  return x;
}

void BM_SimpleIntFitPrd(benchmark::State& state) {
  const auto n = static_cast<long>(state.range(0));
  const auto x = series(static_cast<std::size_t>(n));
  const int lead = 12;
  std::vector<double> pred(static_cast<std::size_t>(n + lead)), lo(pred.size()), hi(pred.size());
  const INTERVAL none{};
  for (auto _ : state) {
    WINMODEL* m = nullptr;
    esmint(x.data(), n, &none, 0.0, 0, 0, kEsmSimple, 0, &m);
    benchmark::DoNotOptimize(esmfit(m));
    FOR_OUT out;
    out.predicted = pred.data();
    out.lower = lo.data();
    out.upper = hi.data();
    benchmark::DoNotOptimize(esmprd(m, x.data(), n, 0.0, 0, 0.05, lead, &out));
    esmtrm(m);
  }
  state.SetItemsProcessed(state.iterations());
}

// The grid search alone (20 derivative-free passes and one derivative pass)
// on a model that is already set up: its share of the line above.
void BM_SimpleGridOnly(benchmark::State& state) {
  const auto n = static_cast<long>(state.range(0));
  const auto x = series(static_cast<std::size_t>(n));
  const INTERVAL none{};
  WINMODEL* m = nullptr;
  esmint(x.data(), n, &none, 0.0, 0, 0, kEsmSimple, 0, &m);
  for (auto _ : state) {
    FITCON fc;
    esmfitcon(m, fc);
    POINT p;
    benchmark::DoNotOptimize(esmgrid(m, kEs1Kernels, fc, p));
  }
  esmtrm(m);
}

BENCHMARK(BM_SimpleIntFitPrd)->Arg(36)->Arg(144)->Arg(1000)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_SimpleGridOnly)->Arg(36)->Arg(144)->Arg(1000)->Unit(benchmark::kMicrosecond);

}  // namespace

BENCHMARK_MAIN();
