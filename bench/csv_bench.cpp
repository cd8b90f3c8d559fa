// Reading and writing numeric CSV data sets: 10 million cells (1 million
// records of 10 numbers), made at run time in a temporary folder that is
// removed afterwards. Counters: bytes/s of the file and cells/s.
#include <benchmark/benchmark.h>
#include <stdlib.h>

#include <filesystem>
#include <random>
#include <string>

#include "host/csv_engine.hpp"

namespace {

constexpr std::size_t kRows = 1'000'000;
constexpr std::size_t kCols = 10;

class ScratchDir {
 public:
  ScratchDir() {
    std::string t = (std::filesystem::temp_directory_path() / "qvt-csv-bench-XXXXXX").string();
    if (::mkdtemp(t.data())) path_ = t;
  }
  ~ScratchDir() {
    std::error_code ec;
    if (!path_.empty()) std::filesystem::remove_all(path_, ec);
  }
  const std::string& path() const { return path_; }

 private:
  std::string path_;
};

// Writes the table; the file's size in bytes, or 0 on failure.
std::uintmax_t writeTable(qvt::CsvEngine& eng, const std::string& dir) {
  const qvt::DsLocation loc = eng.locate("B", dir, "numbers");
  qvt::DsDiag d;
  auto w = eng.openWrite(loc, d);
  if (!w) return 0;
  std::vector<qvt::VarInfo> vars;
  for (std::size_t c = 0; c < kCols; ++c) vars.push_back(qvt::VarInfo{"x" + std::to_string(c), "", qvt::VarType::Numeric, 8, ""});
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

void BM_CsvWrite(benchmark::State& state) {
  ScratchDir dir;
  qvt::CsvEngine eng;
  std::uintmax_t bytes = 0;
  for (auto _ : state) {
    bytes = writeTable(eng, dir.path());
    if (bytes == 0) state.SkipWithError("writing failed");
  }
  state.counters["MB/s"] = benchmark::Counter(static_cast<double>(bytes) / 1e6,
                                              benchmark::Counter::kIsIterationInvariantRate);
  state.counters["cells/s"] = benchmark::Counter(static_cast<double>(kRows * kCols),
                                                 benchmark::Counter::kIsIterationInvariantRate);
}

void BM_CsvRead(benchmark::State& state) {
  ScratchDir dir;
  qvt::CsvEngine eng;
  const std::uintmax_t bytes = writeTable(eng, dir.path());
  if (bytes == 0) {
    state.SkipWithError("writing the input failed");
    return;
  }
  const qvt::DsLocation loc = eng.locate("B", dir.path(), "numbers");
  double sum = 0;
  for (auto _ : state) {
    qvt::DsDiag d;
    std::vector<qvt::DsDiag> notes;
    auto rd = eng.openRead(loc, d, notes);  // both passes: inference, then the records
    if (!rd) {
      state.SkipWithError("reading failed");
      break;
    }
    qvt::DsRow row;
    while (rd->next(row, d) == 1) sum += row.num[0];
  }
  benchmark::DoNotOptimize(sum);
  state.counters["MB/s"] = benchmark::Counter(static_cast<double>(bytes) / 1e6,
                                              benchmark::Counter::kIsIterationInvariantRate);
  state.counters["cells/s"] = benchmark::Counter(static_cast<double>(kRows * kCols),
                                                 benchmark::Counter::kIsIterationInvariantRate);
}

}  // namespace

BENCHMARK(BM_CsvWrite)->Unit(benchmark::kMillisecond)->Iterations(3);
BENCHMARK(BM_CsvRead)->Unit(benchmark::kMillisecond)->Iterations(3);
BENCHMARK_MAIN();
