// Cost of a custom calendar: a user calendar of R weekly rows (BEGIN only),
// registered with a manager whose loader builds the rows in memory. Measured:
// positioning the time IDs of one series of 260 weeks on it (what every
// series of a run does), and stepping a date by one interval. A calendar
// in order finds the row of a date by bisection, so ten times the rows
// should cost little more; the two sizes show it.
#include <benchmark/benchmark.h>

#include <vector>

#include "calendar/interval.hpp"
#include "calendar/zcust.hpp"
#include "calendar/zintti.hpp"
#include "run/missing.hpp"

namespace {

using namespace qvt;

constexpr double kStart = 22646.0;  // 2022-01-02, a Sunday, in days from 1960-01-01

struct Calendar {
  CINTC_MGR mgr;
  INTERVAL week{};
  bool ok = false;

  explicit Calendar(long rows) {
    zcintcInit(&mgr, "WK=WK", [rows](const CUSTOMINTERVAL&, CINTC_INFO* into) {
      into->beginBuffer.resize(static_cast<std::size_t>(rows));
      for (long r = 0; r < rows; ++r) into->beginBuffer[static_cast<std::size_t>(r)] = kStart + 7.0 * static_cast<double>(r);
      into->n = into->nused = rows;
      into->fmt = "DATE";
      into->fmt_w = 9;
      return 0;
    });
    ok = zintstr("WK", 2, &week, &mgr) == 0;
  }
};

void BM_CustomPositions(benchmark::State& state) {
  Calendar cal(state.range(0));
  if (!cal.ok) {
    state.SkipWithError("the calendar couldn't be registered");
    return;
  }
  // 260 weeks that end at the calendar's last rows, a day into each week.
  const long n = 260, from = state.range(0) - n;
  std::vector<double> tid(static_cast<std::size_t>(n));
  for (long t = 0; t < n; ++t) tid[static_cast<std::size_t>(t)] = kStart + 7.0 * static_cast<double>(from + t) + 1.0;
  std::vector<long> pos(tid.size());
  for (auto _ : state) {
    long maxpos = 0;
    double first = 0, last = 0;
    benchmark::DoNotOptimize(
        zinttip(cal.week, "B", tid.data(), n, kMissing, 0, pos.data(), &maxpos, &first, &last));
  }
  state.SetItemsProcessed(state.iterations() * n);
}
BENCHMARK(BM_CustomPositions)->Arg(520)->Arg(5200)->Unit(benchmark::kMicrosecond);

void BM_CustomStep(benchmark::State& state) {
  Calendar cal(state.range(0));
  if (!cal.ok) {
    state.SkipWithError("the calendar couldn't be registered");
    return;
  }
  const double late = kStart + 7.0 * static_cast<double>(state.range(0) - 10) + 3.0;
  for (auto _ : state) benchmark::DoNotOptimize(zintnx2(cal.week, late, 1.0));
  state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_CustomStep)->Arg(520)->Arg(5200)->Unit(benchmark::kNanosecond);

}  // namespace

BENCHMARK_MAIN();
