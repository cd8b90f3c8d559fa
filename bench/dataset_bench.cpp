// Reading and writing 10 million numeric cells (1 million records of 10
// numbers) through each data set engine on the same values, made at run time
// in a temporary folder that is removed afterwards. Counters by the wall clock
// (every engine waits for the disk): MB/s of the stored file, records/s and
// cells/s. A SQLite write includes its commit (the copy from the private stage
// into the library in one transaction); every read includes the pass that
// finds the columns' kinds.
#include <benchmark/benchmark.h>
#include <stdlib.h>

#include <filesystem>
#include <random>
#include <string>

#include "../tests/common/shared.hpp"
#include "host/csv_engine.hpp"
#include "host/sqlite_engine.hpp"

namespace {

constexpr std::size_t kRows = 1'000'000;
constexpr std::size_t kCols = 10;

// The library of an engine: the folder for CSV, a database file in it for SQLite.
std::string where(const qvt::DsEngine& eng, const std::string& dir) {
  return dynamic_cast<const qvt::SqliteEngine*>(&eng) ? dir + "/bench.db" : dir;
}

// Writes the table; the size of the stored file in bytes, or 0 on failure.
std::uintmax_t writeTable(qvt::DsEngine& eng, const std::string& dir) {
  const qvt::DsLocation loc = eng.locate("B", where(eng, dir), "numbers");
  qvt::DsDiag d;
  auto w = eng.openWrite(loc, d);
  if (!w) return 0;
  std::vector<qvt::VarInfo> vars;
  for (std::size_t c = 0; c < kCols; ++c)
    vars.push_back(qvt::VarInfo{"x" + std::to_string(c), "", qvt::VarType::Numeric, 8, ""});
  if (w->begin(vars, d) != 0) return 0;
  std::mt19937_64 rng(20240331);
  std::normal_distribution<double> z(100.0, 15.0);
  qvt::DsRow row;
  row.resize(kCols);
  for (std::size_t r = 0; r < kRows; ++r) {
    for (std::size_t c = 0; c < kCols; ++c) row.num[c] = z(rng);
    if (w->append(row, d) != 0) return 0;
  }
  if (w->commit("", d) != 0) return 0;
  return std::filesystem::file_size(loc.path);
}

void counters(benchmark::State& state, std::uintmax_t bytes) {
  const auto rate = [](double per_iteration) {
    return benchmark::Counter(per_iteration, benchmark::Counter::kIsIterationInvariantRate);
  };
  state.counters["MB/s"] = rate(static_cast<double>(bytes) / 1e6);
  state.counters["records/s"] = rate(static_cast<double>(kRows));
  state.counters["cells/s"] = rate(static_cast<double>(kRows * kCols));
}

template <class Engine>
void BM_Write(benchmark::State& state) {
  qvt::testing::TempDir dir;
  Engine eng;
  std::uintmax_t bytes = 0;
  for (auto _ : state) {
    bytes = writeTable(eng, dir.path());
    if (bytes == 0) state.SkipWithError("writing failed");
  }
  counters(state, bytes);
}

template <class Engine>
void BM_Read(benchmark::State& state) {
  qvt::testing::TempDir dir;
  Engine eng;
  const std::uintmax_t bytes = writeTable(eng, dir.path());
  if (bytes == 0) {
    state.SkipWithError("writing the input failed");
    return;
  }
  const qvt::DsLocation loc = eng.locate("B", where(eng, dir.path()), "numbers");
  double sum = 0;
  for (auto _ : state) {
    qvt::DsDiag d;
    std::vector<qvt::DsDiag> notes;
    auto rd = eng.openRead(loc, d, notes);
    if (!rd) {
      state.SkipWithError("reading failed");
      break;
    }
    qvt::DsRow row;
    while (rd->next(row, d) == 1) sum += row.num[0];
  }
  benchmark::DoNotOptimize(sum);
  counters(state, bytes);
}

}  // namespace

BENCHMARK(BM_Write<qvt::CsvEngine>)->Name("CsvWrite")->Unit(benchmark::kMillisecond)->Iterations(3)->UseRealTime();
BENCHMARK(BM_Read<qvt::CsvEngine>)->Name("CsvRead")->Unit(benchmark::kMillisecond)->Iterations(3)->UseRealTime();
BENCHMARK(BM_Write<qvt::SqliteEngine>)->Name("SqliteWrite")->Unit(benchmark::kMillisecond)->Iterations(3)->UseRealTime();
BENCHMARK(BM_Read<qvt::SqliteEngine>)->Name("SqliteRead")->Unit(benchmark::kMillisecond)->Iterations(3)->UseRealTime();
BENCHMARK_MAIN();
