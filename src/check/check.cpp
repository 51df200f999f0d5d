#include "check/check.h"

#include <utility>

#include "check/advice.h"
#include "check/build_tree.h"
#include "check/load_input.h"
#include "fat_tree/status.h"
#include "repair/find_repairs.h"

namespace fabscope::internal {
namespace {

// What was written since the last time.
std::string TakeText(std::ostringstream& stream) {
  std::string text = stream.str();
  stream.str({});
  return text;
}

class CheckRun {
 public:
  explicit CheckRun(const CheckOptions& options) : options_(options) {
    result_.showGuid = options.showGuid;
    result_.findings = FindingList(options.mostRecords);
    if (options.roots != RootsFrom::Auto) result_.roots.method = options.roots;
    result_.stream = std::make_unique<std::ostringstream>();
    // Or a text that finds no memory would be left out of the report.
    result_.stream->exceptions(std::ios::badbit);
  }

  CheckResult Run(const LoadedInput& input) {
    Take(input);
    if (result_.inputError) return std::move(result_);
    const bool isDone = Build() && Validate();
    if (isDone && options_.wantDump) Dump();
    Collect();
    if (isDone && options_.wantRepairs) LookForRepairs();
    return std::move(result_);
  }

 private:
  void Take(const LoadedInput& input);
  bool Build();
  bool Validate();
  void Dump();
  void Collect();
  void LookForRepairs();

  const CheckOptions& options_;
  CheckResult result_;
};

void CheckRun::Take(const LoadedInput& input) {
  result_.input = input.name;
  result_.inputError = input.error;
  result_.warnings = input.warnings;
  result_.switchesOfSharedName = input.switchesOfSharedName;
  result_.fabric = input.fabric;
  result_.locations = input.locations;
}

bool CheckRun::Build() {
  BuiltTree tree = BuildTree(*result_.fabric, options_, *result_.stream);
  result_.topology = std::move(tree.topology);
  result_.buildOutput = std::move(tree.output);
  result_.message = std::move(tree.message);
  result_.roots = std::move(tree.roots);
  FTTopology& topology = *result_.topology;
  topology.SetFindingSink([this](Finding&& finding) { result_.findings.Add(std::move(finding)); });
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
  std::vector<FabricErrGeneral*> none;  // there is a sink for them
  const int status = result_.topology->Validate(none, result_.message);
  result_.validateOutput = TakeText(*result_.stream);
  result_.status = status == StatusSuccess ? CheckStatus::Done : CheckStatus::NotValidated;
  if (status != StatusSuccess) result_.advice = AdviceOnSize(*result_.fabric);
  return status == StatusSuccess;
}

void CheckRun::Dump() {
  result_.topology->Dump();
  result_.dump = TakeText(*result_.stream);
}

void CheckRun::Collect() {
  result_.issuesCount = result_.topology->GetIssuesCount();
  result_.topology->SetFindingSink(nullptr);
}

void CheckRun::LookForRepairs() {
  // Behind inferred roots stand ranks that wrong cables do not change.
  RepairPlan plan = result_.roots.method == RootsFrom::Inferred
                        ? FindRepairs(*result_.fabric)
                        : FindRepairs(*result_.fabric, RanksOf(*result_.topology));
  result_.notes = plan.notes;
  if (plan.steps.empty()) return;
  auto proven = std::make_unique<ProvenPlan>(
      ProvePlan(*result_.fabric, std::move(plan), options_.mergePercent));
  if (proven->problem.empty()) result_.repairs = std::move(proven);
}

}  // namespace

CheckResult RunCheck(const CheckOptions& options) { return RunCheck(LoadInput(options), options); }

CheckResult RunCheck(const LoadedInput& input, const CheckOptions& options) {
  return CheckRun(options).Run(input);
}

}  // namespace fabscope::internal
