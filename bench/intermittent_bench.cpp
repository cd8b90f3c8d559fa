// Cost of the intermittent path for one demand series of 144 months, with
// the statement defaults (both forms tried, BESTN and AUTO on each
// component): the split into demands, the choice, the fit, the demand rate
// and its spreading over the grid. Also the split alone on a long series,
// which should grow linearly with its length.
#include <benchmark/benchmark.h>

#include <cmath>
#include <random>
#include <vector>

#include "calendar/interval.hpp"
#include "intermittent/idmodel.hpp"
#include "intermittent/idseries.hpp"
#include "run/missing.hpp"

namespace {

using namespace qvt;

// Demands in about one period of three, of random size; monthly time IDs
// counted as days from the first of January 2000.
struct Demand {
  std::vector<double> y, tid;
};

Demand demand(long n, const INTERVAL& month) {
  std::mt19937_64 gen(5);
  std::uniform_real_distribution<double> u;
  Demand d;
  d.y.resize(static_cast<std::size_t>(n));
  d.tid.resize(static_cast<std::size_t>(n));
  for (long t = 0; t < n; ++t) {
    d.y[static_cast<std::size_t>(t)] = u(gen) < 0.3 ? 1.0 + std::floor(20.0 * u(gen)) : 0.0;
    d.tid[static_cast<std::size_t>(t)] = zintnx3(month, 14610.0, static_cast<double>(t), "B", nullptr);
  }
  return d;
}

INTERVAL monthInterval() {
  INTERVAL m{};
  zintstr("MONTH", 5, &m);
  return m;
}

void BM_DemandSplit(benchmark::State& state) {
  const long n = state.range(0);
  const INTERVAL month = monthInterval();
  const Demand d = demand(n, month);
  IDSERIES* ids = nullptr;
  if (idsint(0, 0, &month, "B", 0, &ids) != 0) {
    state.SkipWithError("idsint failed");
    return;
  }
  for (auto _ : state) benchmark::DoNotOptimize(idsset(ids, n, d.y.data(), d.tid.data(), nullptr, 0.0, 0, 0));
  idstrm(&ids);
  state.SetItemsProcessed(state.iterations() * n);
}
BENCHMARK(BM_DemandSplit)->Arg(144)->Arg(100'000)->Unit(benchmark::kMicrosecond);

void BM_IntermittentSeries(benchmark::State& state) {
  const long n = 144, lead = 12;
  const INTERVAL month = monthInterval();
  const Demand d = demand(n, month);
  IDSERIES* ids = nullptr;
  IDMODEL* idm = nullptr;
  if (idsint(0, 0, &month, "B", 0, &ids) != 0 || idmint(0, 0, &idm) != 0) {
    state.SkipWithError("set-up failed");
    return;
  }
  std::vector<double> pred(static_cast<std::size_t>(n + lead)), sd(pred.size()), lo(pred.size()),
      up(pred.size()), res(pred.size());
  FOR_OUT out;
  out.predicted = pred.data();
  out.std = sd.data();
  out.lower = lo.data();
  out.upper = up.data();
  out.residual = res.data();
  IDMSPEC spec;
  idmsdft(&spec);
  for (auto _ : state) {
    idsset(ids, n, d.y.data(), d.tid.data(), nullptr, 0.0, 0, 0);
    idstrn(ids, spec.intv.trnscode, spec.intv.trnsparm, spec.size.trnscode, spec.size.trnsparm,
           spec.adem.trnscode, spec.adem.trnsparm);
    idsss(ids, 1, 2);
    idmspc(idm, &spec, 1);
    int r = idmset(idm, ids);
    if (r >= 0) r = idmsel(idm, 0.05);
    if (r >= 0) r = idmfit(idm, 1);
    if (r >= 0) r = idmdem(idm, 1, 0.05);
    if (r >= 0) r = idmprd(idm, d.y.data(), n, 0, kMissing, d.tid[0], lead, 0.05, &out);
    if (r < 0) {
      state.SkipWithError("the intermittent model failed");
      break;
    }
  }
  idstrm(&ids);
  idmtrm(&idm);
  state.SetItemsProcessed(state.iterations());  // series forecast
}
BENCHMARK(BM_IntermittentSeries)->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
