#pragma once

#include <fabscope/check.h>
#include <fabscope/fabric.h>
#include <fabscope/repair.h>
#include <memory>
#include <utility>

#include "check/check.h"
#include "check/load_input.h"
#include "check/repair_run.h"

namespace fabscope::internal {

// What stands behind a fabscope::CheckResult. The fabric is what its findings point into.
struct CheckedFabricData {
  std::shared_ptr<const LoadedInput> input;
  CheckResult result;
};

// What stands behind a fabscope::RepairPlan.
struct PlannedFabricData {
  std::shared_ptr<const LoadedInput> input;
  RepairResult result;
};

// The way from what programs see to what stands behind it, and back.
struct Access {
  static Node MakeNode(const IBNode& node) { return Node(node); }
  static Port MakePort(const IBNode& node, int number) { return {node, number}; }
  static Fabric MakeFabric(std::shared_ptr<const LoadedInput> input) {
    return Fabric(std::move(input));
  }
  static fabscope::CheckResult MakeResult(std::shared_ptr<const CheckedFabricData> data) {
    return fabscope::CheckResult(std::move(data));
  }
  static fabscope::RepairPlan MakePlan(std::shared_ptr<const PlannedFabricData> data) {
    return fabscope::RepairPlan(std::move(data));
  }

  static const std::shared_ptr<const LoadedInput>& InputOf(const Fabric& fabric) {
    return fabric.input_;
  }
  static const IBNode& NodeOf(const Node& node) { return *node.node_; }
  static const CheckResult& ResultOf(const fabscope::CheckResult& result) {
    return result.data_->result;
  }
};

// The options of a check as the inside has them. Throws Error if they cannot be used.
CheckOptions InnerOptions(const fabscope::CheckOptions& options);
// A POSIX extended regular expression; throws Error if it is none.
std::shared_ptr<regExp> CompiledRegex(const std::string& expression);

[[noreturn]] void ThrowInputError(const InputError& error);
[[noreturn]] void ThrowOptionError(const std::string& reason);

}  // namespace fabscope::internal
