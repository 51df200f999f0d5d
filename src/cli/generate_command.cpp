#include "cli/generate_command.h"

#include <memory>

#include "cli/exit_status.h"
#include "cli/outputs.h"
#include "synthetic/fabric_plan.h"
#include "synthetic/random.h"
#include "synthetic/truth.h"

namespace fabscope::internal {
namespace {

class GenerateCommand {
 public:
  explicit GenerateCommand(const GenerateArguments& arguments)
      : arguments_(arguments), plan_(PlanTree(arguments.shape, arguments.speed)) {}

  int Run() {
    if (const auto problem = MakePlan()) {
      messages_.Tell(*problem);
      return ExitFailed;
    }
    // The fabric last: whoever has it has the truth about it too.
    return WriteTruth() && WriteTheFabric() ? ExitClean : ExitFailed;
  }

 private:
  std::optional<std::string> MakePlan();
  std::optional<std::string> MakeFaults();
  bool WriteTruth();
  bool WriteTheFabric();

  const GenerateArguments& arguments_;
  FabricPlan plan_;
  std::vector<InjectedFault> faults_;
  Messages messages_;
};

std::optional<std::string> GenerateCommand::MakePlan() {
  // Only the document has a place for ranks; nobody has asked for them, so nobody is told that they
  // are lost.
  if (arguments_.format == FabricFormat::Document) plan_.GiveRanks();
  if (arguments_.flids) {
    if (const auto problem = plan_.GiveFlids()) return "--flids: " + *problem;
  }
  return MakeFaults();
}

std::optional<std::string> GenerateCommand::MakeFaults() {
  Random random(arguments_.seed);
  FaultInjector injector(plan_, random);
  for (const FaultRequest& request : arguments_.faults) {
    for (int done = 0; done < request.count; ++done) {
      const auto problem = injector.Inject(request.kind, faults_.emplace_back());
      if (!problem) continue;
      return "--fault " + std::string(FaultName(request.kind)) + "=" +
             std::to_string(request.count) + ": only " + std::to_string(done) +
             " can be made: " + *problem;
    }
  }
  return std::nullopt;
}

bool GenerateCommand::WriteTruth() {
  if (arguments_.truthFile.empty()) return true;
  const auto write = [&](std::ostream& stream) {
    stream << TruthText(plan_, arguments_.seed, faults_);
  };
  return WriteOrTell(arguments_.truthFile, write, messages_);
}

bool GenerateCommand::WriteTheFabric() {
  FabricBuilder builder;
  plan_.Fill(builder);
  const std::unique_ptr<IBFabric> fabric = builder.Build();
  for (const std::string& loss : LossesOf(*fabric, arguments_.format)) messages_.Tell(loss);
  const auto write = [&](std::ostream& stream) { WriteFabric(*fabric, arguments_.format, stream); };
  return WriteOrTell(arguments_.outputFile, write, messages_);
}

}  // namespace

int RunGenerateCommand(const GenerateArguments& arguments) {
  return GenerateCommand(arguments).Run();
}

}  // namespace fabscope::internal
