#pragma once

#include <cstddef>
#include <gtest/gtest.h>
#include <memory>
#include <optional>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "check/repair_run.h"
#include "fabric/fabric_copy.h"
#include "repair/find_repairs.h"
#include "support/test_fabric.h"

namespace fabscope::internal {

// A clean tree whose cables a test has mixed up, and a plan that puts them right. Ends of cables
// are "leaf0.1:2": a switch and a port.
class RepairTest : public ::testing::Test {
 protected:
  CableEnd End(const std::string& text) {
    const std::size_t colon = text.find(':');
    return {tree[text.substr(0, colon)]->index,
            static_cast<std::uint8_t>(std::stoi(text.substr(colon + 1)))};
  }
  RepairCable Cable(const std::string& upper, const std::string& lower) {
    return {End(upper), End(lower)};
  }
  // The first cable between two switches of the tree.
  RepairCable CableBetween(const std::string& upper, const std::string& lower) {
    for (const IBPort& port : tree[upper]->ports) {
      if (port.get_remote_node() == tree[lower]) {
        return {{tree[upper]->index, port.num}, {tree[lower]->index, port.remotePort->num}};
      }
    }
    ADD_FAILURE() << upper << " has no cable to " << lower;
    return {};
  }
  // The lowest port of a switch of the tree without a cable.
  CableEnd FreeEnd(const std::string& name) {
    const IBNode& node = *tree[name];
    std::uint8_t num = 1;
    while (node.getPort(num) != nullptr && node.getPort(num)->remotePort != nullptr) ++num;
    EXPECT_LE(num, node.numPorts) << name << " has no free port";
    return {node.index, num};
  }
  // The cables between each of two pairs exchange their upper ends.
  CableChanges SwapUpperEnds(const std::string& upper1, const std::string& lower1,
                             const std::string& upper2, const std::string& lower2) {
    const RepairCable one = CableBetween(upper1, lower1);
    const RepairCable other = CableBetween(upper2, lower2);
    return {{one, RepairCable{other.upper, one.lower}},
            {other, RepairCable{one.upper, other.lower}}};
  }
  static RepairStep Step(RepairAction action, RepairReason reason, CableChanges cables,
                         RepairClass trust = RepairClass::Sure) {
    return {action, trust, reason, std::move(cables), {}};
  }
  // Exchanges the upper ends of two cables.
  CableChanges Exchange(const std::string& upper1, const std::string& lower1,
                        const std::string& upper2, const std::string& lower2) {
    return {{Cable(upper1, lower1), Cable(upper2, lower1)},
            {Cable(upper2, lower2), Cable(upper1, lower2)}};
  }
  CableChanges Move(const std::string& from, const std::string& to, const std::string& kept) {
    return {{Cable(from, kept), Cable(to, kept)}};
  }
  CableChanges Plug(const std::string& upper, const std::string& lower) {
    return {{std::nullopt, Cable(upper, lower)}};
  }
  CableChanges Unplug(const std::string& upper, const std::string& lower) {
    return {{Cable(upper, lower), std::nullopt}};
  }
  static CableChanges Undo(CableChanges changes) {
    for (CableChange& change : changes) std::swap(change.before, change.after);
    return changes;
  }

  // The tree once these changes are done.
  std::unique_ptr<IBFabric> Changed(const std::vector<CableChanges>& changes) {
    std::vector<RepairStep> steps;
    for (const CableChanges& cables : changes) {
      steps.push_back(Step(RepairAction::Move, RepairReason::WrongGroup, cables));
    }
    auto fabric = ApplySteps(tree.Build(), steps);
    EXPECT_NE(fabric, nullptr);
    return fabric;
  }

  // By the start of the switches' names.
  TreeRanks Ranks(const std::vector<std::string>& starts) {
    const std::vector<IBNode>& nodes = tree.Build().GetNodes();
    TreeRanks ranks{std::vector<int>(nodes.size(), TreeRanks::none),
                    static_cast<int>(starts.size())};
    for (const IBNode& node : nodes) {
      for (std::size_t rank = 0; rank < starts.size(); ++rank) {
        if (node.name.starts_with(starts[rank])) ranks.ofNode[node.index] = static_cast<int>(rank);
      }
    }
    return ranks;
  }

  // The result of a search in a fabric that found that plan.
  static RepairResult Result(std::unique_ptr<IBFabric> fabric, RepairPlan plan,
                             const std::string& input = "fabric") {
    RepairResult result;
    result.input = input;
    result.fabric = std::move(fabric);
    result.before = CheckTree(*result.fabric, plan.ranks, 70);
    EXPECT_EQ(result.before.problem, "");
    const bool hasSteps = !plan.steps.empty();
    if (plan.status == RepairStatus::Clean && hasSteps) plan.status = RepairStatus::Repairs;
    if (hasSteps) {
      result.proven = ProvePlan(*result.fabric, std::move(plan), 70);
    } else {
      result.proven.plan = std::move(plan);
    }
    EXPECT_EQ(result.proven.problem, "");
    return result;
  }

  TestFabric tree;
};

}  // namespace fabscope::internal
