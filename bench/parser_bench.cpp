// Scanning and parsing a generated step of 10,000 statements.
#include <benchmark/benchmark.h>

#include <string>

#include "host/host.hpp"
#include "statements/parser.hpp"
#include "statements/scanner.hpp"
#include "statements/steps.hpp"

namespace {

class QuietHost : public qvt::Host {
 public:
  int count = 0;
  void msgLog(int, int, std::span<const qvt::MsgArg>, const qvt::SourcePos*) override { ++count; }
};

std::string program(int statements) {
  std::string s = "qvt data=sales out=work.o lead=12 print=(estimates forecasts) plot=spectrum(alpha=0.1);\n";
  s += "  id date interval=month accumulate=total setmissing=0 zeromiss=both;\n";
  s += "  idm interval=(method=simple levelrest=(0.1 0.9)) base=auto;\n";
  for (int k = 3; k < statements; ++k)
    s += "  forecast y" + std::to_string(k) + " z1-z9 / model=bestall criterion=mape transform=boxcox(0.5) alpha=0.05;\n";
  s += "run;\n";
  return s;
}

void BM_ScanAndParse10k(benchmark::State& state) {
  const std::string text = program(10000);
  for (auto _ : state) {
    QuietHost h;
    qvt::Program prog;
    qvt::scanProgram(text, qvt::SourcePos{"bench.qvt", 1, 1}, h, prog);
    const auto steps = qvt::splitSteps(prog, h);
    qvt::PROCSTR p;
    qvt::xsparse(prog, steps.at(0), h, p);
    if (p.error != 0 || h.count != 0 || p.head.size() != 9998) state.SkipWithError("the generated program did not parse");
    benchmark::DoNotOptimize(p.head.data());
  }
  state.SetItemsProcessed(state.iterations() * 10000);
  state.SetBytesProcessed(state.iterations() * static_cast<long long>(text.size()));
}
BENCHMARK(BM_ScanAndParse10k)->Unit(benchmark::kMillisecond);

void BM_Scan10k(benchmark::State& state) {
  const std::string text = program(10000);
  for (auto _ : state) {
    QuietHost h;
    qvt::Program prog;
    qvt::scanProgram(text, qvt::SourcePos{"bench.qvt", 1, 1}, h, prog);
    benchmark::DoNotOptimize(prog.tokens.data());
  }
  state.SetBytesProcessed(state.iterations() * static_cast<long long>(text.size()));
}
BENCHMARK(BM_Scan10k)->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
