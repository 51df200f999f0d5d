#include "cli/load_plan.h"

namespace fabscope::internal {

bool LoadPlan(const std::string& file, RepairDocument& plan, Messages& messages) {
  if (const MaybeError error = LoadRepairDocument(file, plan)) {
    messages.Tell(error->Text());
    return false;
  }
  if (plan.status != "failed") return true;
  messages.Tell(plan.file + ": there is no plan in it: " + plan.message);
  return false;
}

}  // namespace fabscope::internal
