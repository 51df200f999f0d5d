#include "check/check.h"

#include <iterator>
#include <string_view>
#include <unordered_map>
#include <utility>

#include "check/advice.h"
#include "check/build_tree.h"
#include "fabric/fabric_builder.h"
#include "fat_tree/status.h"
#include "formats/load_fabric.h"
#include "formats/side_files.h"

namespace fabscope {
namespace {

std::size_t CountSwitchesOfSharedName(const IBFabric& fabric) {
  std::unordered_map<std::string_view, std::size_t> counts;
  for (const IBNode* node : fabric.switches) ++counts[node->name];
  std::size_t shared = 0;
  for (const auto& [name, count] : counts) shared += count > 1 ? count : 0;
  return shared;
}

// What was written since the last time.
std::string TakeText(std::ostringstream& stream) {
  std::string text = stream.str();
  stream.str({});
  return text;
}

class CheckRun {
 public:
  explicit CheckRun(const CheckOptions& options) : options_(options) {
    result_.input = options.fabric;
    if (options.roots != RootsFrom::Auto) result_.roots.method = options.roots;
    result_.stream = std::make_unique<std::ostringstream>();
    // Or a text that finds no memory would be left out of the report.
    result_.stream->exceptions(std::ios::badbit);
  }

  CheckResult Run() {
    if (!Load()) return std::move(result_);
    if (Build() && Validate() && options_.wantDump) Dump();
    Collect();
    return std::move(result_);
  }

 private:
  bool Load();
  bool Build();
  bool Validate();
  void Dump();
  void Collect();

  // Reads one of the files that go with a fabric, and keeps its warnings.
  template <typename Read>
  bool LoadFile(const std::string& path, Read read) {
    Warnings warnings;
    result_.inputError = read(warnings);
    if (result_.inputError) return false;
    std::vector<std::string> lines = warnings.Lines(path == "-" ? "<stdin>" : path);
    std::move(lines.begin(), lines.end(), std::back_inserter(result_.warnings));
    return true;
  }

  const CheckOptions& options_;
  CheckResult result_;
  std::vector<FabricErrGeneral*> records_;
};

// The name map comes first: its names decide the order of a dump's nodes.
bool CheckRun::Load() {
  NodeNameMap names;
  if (!options_.nodeNameMap.empty()) {
    result_.inputError = LoadNodeNameMap(options_.nodeNameMap, names);
    if (result_.inputError) return false;
  }
  FabricBuilder builder;
  const bool loaded = LoadFile(options_.fabric, [&](Warnings& warnings) {
    return LoadFabric(options_.fabric, &names, options_.specialNodes.get(), builder, warnings);
  });
  if (!loaded) return false;
  if (!options_.ranks.empty() && !LoadFile(options_.ranks, [&](Warnings& warnings) {
        return LoadRanks(options_.ranks, builder, warnings);
      })) {
    return false;
  }
  if (!options_.flids.empty() && !LoadFile(options_.flids, [&](Warnings& warnings) {
        return LoadFlids(options_.flids, builder, warnings);
      })) {
    return false;
  }
  result_.fabric = builder.Build();
  result_.switchesOfSharedName = CountSwitchesOfSharedName(*result_.fabric);
  return true;
}

bool CheckRun::Build() {
  // Checks that other threads do meanwhile read it; all want the same.
  if (FTTopology::Show_GUID != options_.showGuid) FTTopology::Show_GUID = options_.showGuid;
  BuiltTree tree = BuildTree(*result_.fabric, options_, *result_.stream, records_);
  result_.topology = std::move(tree.topology);
  result_.buildOutput = std::move(tree.output);
  result_.message = std::move(tree.message);
  result_.roots = std::move(tree.roots);
  FTTopology& topology = *result_.topology;
  if (options_.wantFindings) {
    topology.SetFindingSink(
        [this](Finding&& finding) { result_.findings.push_back(std::move(finding)); });
  }
  if (!tree.isBuilt) {
    result_.status = CheckStatus::NotBuilt;
    result_.advice = AdviceOnBuilding(topology, options_);
    return false;
  }
  result_.levelsReport = topology.LevelsReport();
  result_.roots.doubt = AdviceOnTree(topology, result_.roots.method);
  return true;
}

bool CheckRun::Validate() {
  const int status = result_.topology->Validate(records_, result_.message);
  result_.validateOutput = TakeText(*result_.stream);
  result_.status = status == StatusSuccess ? CheckStatus::Done : CheckStatus::NotValidated;
  return status == StatusSuccess;
}

void CheckRun::Dump() {
  result_.topology->Dump();
  result_.dump = TakeText(*result_.stream);
}

void CheckRun::Collect() {
  result_.records.reserve(records_.size());
  for (FabricErrGeneral* record : records_) result_.records.emplace_back(record);
  result_.issuesCount = result_.topology->GetIssuesCount();
  result_.topology->SetFindingSink(nullptr);
}

}  // namespace

CheckResult RunCheck(const CheckOptions& options) { return CheckRun(options).Run(); }

}  // namespace fabscope
