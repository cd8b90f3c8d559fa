// Transposition of the series spool: 200 series of 10,000 records (16 MB of
// doubles) turned series-major and back, through temporary files in
// $TMPDIR. Counters: bytes/s of the matrix moved, the memory that a pass of
// the transposition holds, and the process's peak resident size.
#include <benchmark/benchmark.h>
#include <sys/resource.h>

#include <sstream>
#include <vector>

#include "host/process_host.hpp"
#include "output/ztspool.hpp"

namespace {

constexpr long kRecords = 10'000;
constexpr long kSeries = 200;

double peakMegabytes() {
  rusage u{};
  getrusage(RUSAGE_SELF, &u);
  return static_cast<double>(u.ru_maxrss) / 1024.0;  // kilobytes on Linux
}

void BM_ZttransRoundTrip(benchmark::State& state) {
  std::ostringstream log;
  qvt::HostConfig cfg;
  cfg.logStream = &log;
  qvt::ProcessHost host(cfg);
  qvt::SpoolHandle a, b;
  if (host.init() != 0 || qvt::ztinit(host, &a, &b) != 0) {
    state.SkipWithError("no spool");
    return;
  }
  // Record-major input, written a record at a time as the input stage does.
  std::vector<double> row(static_cast<std::size_t>(kSeries));
  for (long i = 0; i < kRecords; ++i) {
    for (long j = 0; j < kSeries; ++j) row[static_cast<std::size_t>(j)] = static_cast<double>(i * kSeries + j);
    if (qvt::ztput(host, a, kSeries, row.data()) != 0) {
      state.SkipWithError("spool write failed");
      return;
    }
  }
  const double before = peakMegabytes();
  for (auto _ : state) {
    // Series-major for the models, then back to record-major: the spool
    // ends as it began, so every iteration does the same work.
    if (qvt::zttrans(host, a, b, kRecords, kSeries) != 0 || qvt::zttrans(host, b, a, kSeries, kRecords) != 0) {
      state.SkipWithError("transposition failed");
      return;
    }
  }
  const long matrixBytes = kRecords * kSeries * static_cast<long>(sizeof(double));
  state.SetBytesProcessed(state.iterations() * 2 * matrixBytes);
  const qvt::ZtPlan there = qvt::zttplan(kRecords, kSeries, qvt::kZtPassBytes);
  const qvt::ZtPlan back = qvt::zttplan(kSeries, kRecords, qvt::kZtPassBytes);
  state.counters["passes_there"] = static_cast<double>(there.passes);
  state.counters["passes_back"] = static_cast<double>(back.passes);
  state.counters["pass_MB"] = static_cast<double>(there.per * kRecords * 8 + kSeries * 8) / 1048576.0;
  state.counters["peak_rss_MB"] = peakMegabytes();
  state.counters["rss_growth_MB"] = peakMegabytes() - before;
  qvt::ztterm(host, a, b);
  host.stepEnd(0);
}
// The work is mostly file reads and writes: rate it by the wall clock.
BENCHMARK(BM_ZttransRoundTrip)->Unit(benchmark::kMillisecond)->UseRealTime();

}  // namespace

BENCHMARK_MAIN();
