// The repairs of what was a fat tree once, with ranks inferred or by distance from the subnet
// manager's roots. Whatever the fabric, the plan can be done as it is told and keeps what it
// promises, which is verified by code that shares nothing with what finds it.

#include <optional>
#include <sstream>
#include <string>
#include <vector>

#include "fat_tree/topology.h"
#include "fuzz/fabric_parts.h"
#include "fuzz/require.h"
#include "repairs/verify_repairs.h"

namespace {

using namespace fabscope::internal;
using namespace fabscope::internal::fuzz;

std::string Name(FuzzedDataProvider& bytes) {
  return "n" + std::to_string(bytes.ConsumeIntegralInRange(0, 60));
}

// Nothing where no switch is a root.
std::optional<TreeRanks> KnownRanks(const IBFabric& fabric) {
  std::ostringstream output;
  std::vector<FabricErrGeneral*> records;
  std::string message;
  FTTopology topology(&fabric, &output, 70);
  if (topology.Build(records, message) != 0) return std::nullopt;
  TreeRanks ranks{std::vector<int>(fabric.GetNodes().size(), TreeRanks::none), 0};
  for (const IBNode* node : fabric.switches) ranks.ofNode[node->index] = topology.GetNodeRank(node);
  ranks.levels = static_cast<int>(topology.GetRanks().size());
  return ranks;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  FuzzedDataProvider bytes(data, size);
  const bool areRanksKnown = bytes.ConsumeBool();
  const auto fabric = BuildFabric(MakeTree(bytes, Name));
  const auto known = areRanksKnown ? KnownRanks(*fabric) : std::nullopt;
  RequireSame(VerifyRepairs(*fabric, known).complaints, "", "repairs keep what they promise");
  return 0;
}
