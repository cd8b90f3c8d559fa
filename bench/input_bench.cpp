// BY-group input and accumulation: 10 million daily records (10 BY groups of
// a million consecutive days each, made at run time in a temporary folder
// that is removed afterwards) read by qvtin and accumulated to WEEK or MONTH
// totals. Counters: records per second and the peak resident memory.
#include <benchmark/benchmark.h>
#include <sys/resource.h>

#include <cstdio>
#include <string>

#include "../tests/run/test_host.hpp"
#include "run/qvtin.hpp"

namespace {

constexpr int kGroups = 10;
constexpr long kDaysPerGroup = 1'000'000;

// The input file, written once for all benchmarks of the run.
class DailyInput {
 public:
  DailyInput() {
    const std::string path = folder_.file("daily.csv");
    std::FILE* f = std::fopen(path.c_str(), "w");
    if (!f) return;
    std::fputs("store,date,units\n", f);
    const long first = qvt::testing::day(1700, 1, 1);
    unsigned x = 12345;
    for (int g = 1; g <= kGroups; ++g) {
      for (long d = 0; d < kDaysPerGroup; ++d) {
        x = x * 1103515245u + 12345u;  // a small linear congruential generator keeps this cheap
        std::fprintf(f, "%d,%s,%u\n", g, qvt::testing::isoDate(first + d).c_str(), (x >> 16) % 1000);
      }
    }
    ok_ = std::fclose(f) == 0;
    path_ = path;
  }
  bool ok() const { return ok_; }
  const std::string& path() const { return path_; }

 private:
  qvt::testing::TempDir folder_;
  std::string path_;
  bool ok_ = false;
};

const DailyInput& dailyInput() {
  static const DailyInput input;
  return input;
}

void BM_InputAccumulate(benchmark::State& state, const char* interval) {
  const DailyInput& input = dailyInput();
  if (!input.ok()) {
    state.SkipWithError("the input file could not be written");
    return;
  }
  // enobs: what output set-up expects for a step with BY groups.
  const std::string setup = fmt::format("file={} interval={} id=date series=units by=store acc={} enobs=16384",
                                        input.path(), interval, int(qvt::kAccTotal));
  long records = 0;
  long periods = 0;
  for (auto _ : state) {
    qvt::testing::InputRun r(setup);
    while (r.nextGroup()) {
      qvt::qvtin(&r.com);
      if (r.com.error != 0) {
        state.SkipWithError("a BY group failed");
        return;
      }
      qvt::accumulate(&r.com, qvt::kAccTotal);
      records += r.com.in.nobs;
      periods += r.com.out.nobs;
      benchmark::DoNotOptimize(r.com.out.y[r.com.out.nobs - 1]);
    }
  }
  rusage ru{};
  getrusage(RUSAGE_SELF, &ru);
  state.counters["records/s"] = benchmark::Counter(static_cast<double>(records), benchmark::Counter::kIsRate);
  state.counters["periods"] = benchmark::Counter(static_cast<double>(periods) / static_cast<double>(state.iterations()));
  state.counters["peak_rss_MB"] = static_cast<double>(ru.ru_maxrss) / 1024.0;
}

BENCHMARK_CAPTURE(BM_InputAccumulate, week, "WEEK")->Unit(benchmark::kSecond)->Iterations(2);
BENCHMARK_CAPTURE(BM_InputAccumulate, month, "MONTH")->Unit(benchmark::kSecond)->Iterations(2);

}  // namespace

BENCHMARK_MAIN();
