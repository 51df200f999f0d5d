// Where the time of a check goes, on a real dump of 2,880 switches and 27,648 hosts.

#include <benchmark/benchmark.h>
#include <sstream>

#include "check/check.h"
#include "formats/input_text.h"
#include "formats/topology_dump.h"

namespace fabscope {
namespace {

const InputText& Dump() {
  static const InputText dump = [] {
    InputText input;
    if (const auto error = ReadInput(FABSCOPE_TEST_DATA "/tree-27648h.topo.gz", input)) {
      throw std::runtime_error(error->Text());
    }
    return input;
  }();
  return dump;
}

std::unique_ptr<IBFabric> LoadDump() {
  FabricBuilder builder;
  Warnings warnings;
  if (const auto error = LoadTopologyDump(Dump(), nullptr, nullptr, builder, warnings)) {
    throw std::runtime_error(error->Text());
  }
  return builder.Build();
}

// The floor: every byte of the dump looked at once.
void CountLines(benchmark::State& state) {
  const std::string& text = Dump().bytes;
  for (auto _ : state) benchmark::DoNotOptimize(std::count(text.begin(), text.end(), '\n'));
  state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(text.size()));
}
BENCHMARK(CountLines)->Unit(benchmark::kMillisecond);

void LoadTopologyDumpAndBuildModel(benchmark::State& state) {
  Dump();
  for (auto _ : state) benchmark::DoNotOptimize(LoadDump());
  state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(Dump().bytes.size()));
}
BENCHMARK(LoadTopologyDumpAndBuildModel)->Unit(benchmark::kMillisecond);

void FindRoots(benchmark::State& state) {
  const auto fabric = LoadDump();
  for (auto _ : state) {
    std::ostringstream output;
    std::vector<FabricErrGeneral*> errors;
    std::string message;
    FTTopology topology(fabric.get(), &output, 70);
    if (topology.Build(errors, message, 10, 2) != 0) state.SkipWithError("not built");
  }
}
BENCHMARK(FindRoots)->Unit(benchmark::kMillisecond);

void ValidateTree(benchmark::State& state) {
  const auto fabric = LoadDump();
  for (auto _ : state) {
    state.PauseTiming();
    std::ostringstream output;
    std::vector<FabricErrGeneral*> errors;
    std::string message;
    FTTopology topology(fabric.get(), &output, 70);
    if (topology.Build(errors, message, 10, 2) != 0) state.SkipWithError("not built");
    state.ResumeTiming();
    if (topology.Validate(errors, message) != 0) state.SkipWithError("not validated");
  }
}
BENCHMARK(ValidateTree)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace fabscope

BENCHMARK_MAIN();
