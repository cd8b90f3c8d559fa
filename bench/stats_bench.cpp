// Calls per second of the numerical functions the model fits and their
// p values lean on: the normal distribution and quantile, the F and t tails,
// the sweep of a small cross-product matrix, the median by selection, and
// the start-value regression with seasonal dummies. Each iteration walks a
// fixed list of arguments so that no single branch is measured alone.
#include <benchmark/benchmark.h>

#include <cmath>
#include <vector>

#include "stats/numeric.hpp"
#include "stats/startreg.hpp"
#include "stats/sweep.hpp"

namespace {

using namespace qvt;

std::vector<double> spread(double lo, double hi, std::size_t n) {
  std::vector<double> v(n);
  for (std::size_t k = 0; k < n; ++k) v[k] = lo + (hi - lo) * static_cast<double>((k * 7919) % n) / static_cast<double>(n);
  return v;
}

void BM_NormalCdf(benchmark::State& st) {
  const auto xs = spread(-30.0, 8.0, 1024);
  for (auto _ : st)
    for (double x : xs) benchmark::DoNotOptimize(zprbnrm(x));
  st.SetItemsProcessed(st.iterations() * static_cast<long>(xs.size()));
}
BENCHMARK(BM_NormalCdf);

void BM_Probit(benchmark::State& st) {
  std::vector<double> ps = spread(1e-12, 1.0 - 1e-12, 1024);
  for (auto _ : st)
    for (double p : ps) benchmark::DoNotOptimize(zprobit(p));
  st.SetItemsProcessed(st.iterations() * static_cast<long>(ps.size()));
}
BENCHMARK(BM_Probit);

void BM_TTail(benchmark::State& st) {
  const auto ts = spread(0.0, 40.0, 256);
  const long df = st.range(0);
  for (auto _ : st)
    for (double t : ts) benchmark::DoNotOptimize(zpgt2(t * t, df));
  st.SetItemsProcessed(st.iterations() * static_cast<long>(ts.size()));
}
BENCHMARK(BM_TTail)->Arg(3)->Arg(30)->Arg(1000);

void BM_FTail(benchmark::State& st) {
  const auto fs = spread(0.01, 20.0, 256);
  for (auto _ : st)
    for (double f : fs) benchmark::DoNotOptimize(zprbf(f, 11.0, static_cast<double>(st.range(0))));
  st.SetItemsProcessed(st.iterations() * static_cast<long>(fs.size()));
}
BENCHMARK(BM_FTail)->Arg(24)->Arg(500);

void BM_SweepOrder4(benchmark::State& st) {
  const double base[10] = {6, 1, 5, 0.5, -1, 7, 2, 0, 1.5, 8};
  for (auto _ : st) {
    double a[10];
    for (int i = 0; i < 10; ++i) a[i] = base[i];
    char cc[4] = {'0', '0', '0', '0'};
    double wrk[4];
    for (int k = 0; k < 3; ++k) hostSweep(1e-12, a, k, 4, cc, wrk);
    benchmark::DoNotOptimize(a[9]);
  }
}
BENCHMARK(BM_SweepOrder4);

void BM_Median(benchmark::State& st) {
  const auto src = spread(-5.0, 5.0, static_cast<std::size_t>(st.range(0)));
  std::vector<double> x(src.size());
  const double pos = static_cast<double>(src.size() / 2 - 1);
  for (auto _ : st) {
    x = src;
    double xj = 0, xj1 = 0;
    zqpsort(static_cast<long>(x.size()), x.data(), nullptr, 1, &pos, &xj, &xj1, nullptr, 0, nullptr);
    benchmark::DoNotOptimize(xj + xj1);
  }
  st.SetItemsProcessed(st.iterations() * st.range(0));
}
BENCHMARK(BM_Median)->Arg(144)->Arg(10000);

void BM_TrendAndDummies(benchmark::State& st) {
  const auto n = static_cast<long>(st.range(0));
  std::vector<double> y(static_cast<std::size_t>(n));
  for (long i = 0; i < n; ++i) y[static_cast<std::size_t>(i)] = 100.0 + 0.5 * static_cast<double>(i) + 10.0 * std::sin(static_cast<double>(i) * 0.5236);
  std::vector<char> flag(static_cast<std::size_t>(n), 0);
  double cc = 0, tc = 0, sd[12];
  for (auto _ : st) {
    ztsrdmy(y.data(), flag.data(), n, 12, &cc, &tc, nullptr, sd, nullptr);
    benchmark::DoNotOptimize(tc);
  }
  st.SetItemsProcessed(st.iterations() * n);
}
BENCHMARK(BM_TrendAndDummies)->Arg(36)->Arg(144)->Arg(1000);

}  // namespace

BENCHMARK_MAIN();
