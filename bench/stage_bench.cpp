// Where the time of a check goes: each stage by itself, on the largest tree that 64-port switches
// make (65,536 hosts, 5,120 switches), as it was meant and with 200 faults. Only the stage itself
// is timed, not the making of what it works on, nor the freeing of what it made.

#include <algorithm>
#include <benchmark/benchmark.h>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <sstream>
#include <stdexcept>
#include <string>
#include <unistd.h>
#include <utility>
#include <vector>

#include "check/check.h"
#include "fat_tree/neighborhood.h"
#include "fat_tree/up_hop_histogram.h"
#include "formats/load_fabric.h"
#include "formats/write_fabric.h"
#include "reports/json_report.h"
#include "reports/text_report.h"
#include "synthetic/fabric_plan.h"
#include "synthetic/faults.h"
#include "synthetic/random.h"

namespace fabscope::internal {
namespace {

constexpr std::uint32_t hdr = 0x400;
constexpr int manyFaults = 200;

// A mix with which the roots are still found by themselves: the one that bench/whole_process.py
// asks `fabscope generate` for, in the same order.
const std::vector<std::pair<FaultKind, int>> mixedFaults{
    {FaultKind::MissingLink, 90},   {FaultKind::MissingHost, 50}, {FaultKind::SlowLink, 40},
    {FaultKind::SwappedCables, 10}, {FaultKind::MovedCable, 4},   {FaultKind::DeadSwitch, 2},
    {FaultKind::SameRankLink, 1},   {FaultKind::RootLink, 1},     {FaultKind::StrayHost, 2}};

std::unique_ptr<IBFabric> MakeFabric(bool withFaults) {
  FabricPlan plan = PlanTree(RadixTree(3, 64, 0, 0), hdr);
  if (withFaults) {
    Random random(1);
    FaultInjector injector(plan, random);
    for (const auto& [kind, count] : mixedFaults) {
      for (int i = 0; i < count; ++i) {
        InjectedFault done;
        if (const auto problem = injector.Inject(kind, done)) throw std::runtime_error(*problem);
      }
    }
  }
  FabricBuilder builder;
  plan.Fill(builder);
  return builder.Build();
}

// As the command has it by default.
CheckOptions DefaultOptions(const std::string& path) {
  CheckOptions options;
  options.fabric = path;
  options.specialNodes = std::make_shared<regExp>("Aggregation Node");
  return options;
}

// A temporary folder that goes with all that is in it.
class Folder {
 public:
  explicit Folder(const std::string& name)
      : path_(std::filesystem::temp_directory_path() / (name + std::to_string(getpid()))) {
    std::filesystem::create_directory(path_);
  }
  Folder(const Folder&) = delete;
  Folder& operator=(const Folder&) = delete;
  ~Folder() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
  }

  std::string File(const char* name) const { return path_ / name; }

 private:
  std::filesystem::path path_;
};

// A fabric in all the forms that a stage may start from.
class Sample {
 public:
  explicit Sample(bool withFaults)
      : folder_(withFaults ? "fabscope-faults-" : "fabscope-clean-"),
        fabric_(MakeFabric(withFaults)) {
    Write(FabricFormat::TopologyDump, Dump());
    Write(FabricFormat::Document, Document());
    result_ = RunCheck(DefaultOptions(Dump()));
    if (result_.status != CheckStatus::Done) throw std::runtime_error(result_.message);
  }
  std::string Dump() const { return folder_.File("fabric.topo"); }
  std::string Document() const { return folder_.File("fabric.json"); }
  const IBFabric& Fabric() const { return *fabric_; }
  const CheckResult& Result() const { return result_; }

 private:
  void Write(FabricFormat format, const std::string& path) const {
    std::ofstream stream(path, std::ios::binary);
    WriteFabric(*fabric_, format, stream);
    if (!stream.flush()) throw std::runtime_error("cannot write " + path);
  }

  Folder folder_;
  std::unique_ptr<IBFabric> fabric_;
  CheckResult result_;
};

const Sample& SampleOf(const benchmark::State& state) {
  static const Sample clean(false);
  static const Sample faulty(true);
  return state.range(0) == 0 ? clean : faulty;
}

// A topology with what it writes to, and the records that its caller must own.
struct Tree {
  std::ostringstream output;
  std::vector<FabricErrGeneral*> errors;
  std::string message;
  FTTopology topology;

  explicit Tree(const IBFabric& fabric) : topology(&fabric, &output, CheckOptions().mergePercent) {}
  Tree(const Tree&) = delete;
  Tree& operator=(const Tree&) = delete;
  ~Tree() {
    for (const FabricErrGeneral* error : errors) delete error;
  }

  void FindRoots() {
    const CheckOptions options;
    Expect(topology.Build(errors, message, options.retries, options.equalClassifications));
  }
  void Group() { Expect(topology.CreateNeighborhoods(errors)); }
  void Check() {
    Expect(topology.CheckUpDownLinksAndAPorts(errors));
    Expect(topology.CheckFLIDs());
  }

 private:
  void Expect(int status) const {
    if (status != 0) throw std::runtime_error(message + topology.GetErrorText());
  }
};

// By the processor's time, which other programs do not add to: nothing here waits.
template <typename Work>
double SecondsOf(Work work) {
  const std::clock_t start = std::clock();
  work();
  return static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC;
}

template <typename Work>
void Time(benchmark::State& state, Work work) {
  state.SetIterationTime(SecondsOf(work));
}

void SetBytes(benchmark::State& state, const std::string& path) {
  const auto size = static_cast<std::int64_t>(std::filesystem::file_size(path));
  state.SetBytesProcessed(state.iterations() * size);
}

void Load(const std::string& path, FabricBuilder& builder) {
  Warnings warnings;
  const CheckOptions options = DefaultOptions(path);
  const NodeNameMap noNames;
  const auto error = LoadFabric(path, &noNames, options.specialNodes.get(), builder, warnings);
  if (error) throw std::runtime_error(error->Text());
}

// Every byte of the file looked at once, read through a stream.
void CountLines(benchmark::State& state) {
  const std::string path = SampleOf(state).Dump();
  for (auto _ : state) {
    Time(state, [&] {
      std::ifstream stream(path, std::ios::binary);
      std::vector<char> bytes(std::size_t{1} << 16);
      std::ptrdiff_t lines = 0;
      while (stream.read(bytes.data(), static_cast<std::streamsize>(bytes.size())),
             stream.gcount() > 0) {
        lines += std::count(bytes.begin(), bytes.begin() + stream.gcount(), '\n');
      }
      benchmark::DoNotOptimize(lines);
    });
  }
  SetBytes(state, path);
}

void ReadDocument(benchmark::State& state) {
  const std::string path = SampleOf(state).Document();
  for (auto _ : state) {
    FabricBuilder builder;
    Time(state, [&] { Load(path, builder); });
  }
  SetBytes(state, path);
}

void OneClassification(benchmark::State& state) {
  Tree tree(SampleOf(state).Fabric());
  const IBNode* leaf = tree.topology.GetFirstLeaf();
  for (auto _ : state) {
    FTClassification classification(tree.topology);
    Time(state, [&] { classification.Classify(*leaf); });
  }
}

void RanksFromRoots(benchmark::State& state) {
  Tree found(SampleOf(state).Fabric());
  found.FindRoots();
  for (auto _ : state) {
    Tree tree(SampleOf(state).Fabric());
    NodeSet roots = found.topology.GetRanks().front();
    Time(state, [&] { tree.topology.FillRanksFromRoots(roots); });
  }
}

// The sets of up-links of one pair of ranks; rank 1 is the leaves with the switches above them.
template <std::uint64_t rank>
void FillHistogram(benchmark::State& state) {
  for (auto _ : state) {
    Tree tree(SampleOf(state).Fabric());
    tree.FindRoots();
    FTUpHopHistogram histogram(tree.topology, rank);
    Time(state, [&] { histogram.Init(); });
  }
}

// What becomes of them: merging, cross links, groups, missing links.
template <std::uint64_t rank>
void MakeGroups(benchmark::State& state) {
  for (auto _ : state) {
    Tree tree(SampleOf(state).Fabric());
    tree.FindRoots();
    tree.Group();  // makes room for the groups of every rank
    FTUpHopHistogram histogram(tree.topology, rank);
    histogram.Init();
    Time(state, [&] { histogram.CreateNeighborhoods(tree.errors); });
  }
}

void PrintJson(benchmark::State& state) {
  const CheckResult& result = SampleOf(state).Result();
  for (auto _ : state) {
    std::ostringstream stream;
    Time(state, [&] { WriteJsonReport(result, {}, stream); });
  }
}

// A check stage by stage and then at once, in milliseconds: what the stages leave out shows beside
// their sum.
void SplitCheck(benchmark::State& state) {
  const Sample& sample = SampleOf(state);
  for (auto _ : state) {
    double sum = 0;
    const auto take = [&](const char* stage, auto work) {
      const double seconds = SecondsOf(work);
      state.counters[stage] = 1000 * seconds;
      sum += seconds;
    };
    FabricBuilder builder;
    take("Read", [&] { Load(sample.Dump(), builder); });
    std::unique_ptr<IBFabric> fabric;
    take("BuildModel", [&] { fabric = builder.Build(); });
    auto tree = std::make_unique<Tree>(*fabric);
    take("FindRoots", [&] { tree->FindRoots(); });
    take("Group", [&] { tree->Group(); });
    take("CheckGroups", [&] { tree->Check(); });
    take("Free", [&] {
      tree.reset();
      fabric.reset();
    });
    std::ostringstream report;
    const auto print = [&](const CheckResult& result) { WriteTextReport(result, {}, report); };
    take("Print", [&] { print(sample.Result()); });

    const double whole = SecondsOf([&] { print(RunCheck(DefaultOptions(sample.Dump()))); });
    state.counters["Sum"] = 1000 * sum;
    state.counters["Whole"] = 1000 * whole;
    state.SetIterationTime(whole);
  }
}

void ForBothFabrics(benchmark::internal::Benchmark* stage) {
  stage->ArgName("faults")->Arg(0)->Arg(manyFaults);
  stage->Iterations(1)->Repetitions(9)->ReportAggregatesOnly();
  stage->UseManualTime()->Unit(benchmark::kMillisecond);
}

BENCHMARK(SplitCheck)->Apply(ForBothFabrics);
BENCHMARK(CountLines)->Apply(ForBothFabrics);
BENCHMARK(ReadDocument)->Apply(ForBothFabrics);
BENCHMARK(OneClassification)->Apply(ForBothFabrics);
BENCHMARK(RanksFromRoots)->Apply(ForBothFabrics);
BENCHMARK(FillHistogram<0>)->Apply(ForBothFabrics);
BENCHMARK(MakeGroups<0>)->Apply(ForBothFabrics);
BENCHMARK(FillHistogram<1>)->Apply(ForBothFabrics);
BENCHMARK(MakeGroups<1>)->Apply(ForBothFabrics);
BENCHMARK(PrintJson)->Apply(ForBothFabrics);

}  // namespace
}  // namespace fabscope::internal

// Single runs in random order, so that what else the machine does falls on all stages alike.
int main(int argc, char** argv) {
  std::vector<char*> arguments(argv, argv + argc);
  std::string interleaved = "--benchmark_enable_random_interleaving=true";
  arguments.push_back(interleaved.data());
  int count = static_cast<int>(arguments.size());
  benchmark::Initialize(&count, arguments.data());
  if (benchmark::ReportUnrecognizedArguments(count, arguments.data())) return 1;
  try {
    benchmark::RunSpecifiedBenchmarks();
  } catch (const std::exception& problem) {
    std::cerr << "stage_bench: " << problem.what() << '\n';
    return 1;
  }
  return 0;
}
