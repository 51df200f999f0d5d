// How far automatic roots can be trusted: over seeded fabrics with faults, how often the search
// finds the true roots. Prints the tables of docs/roots.md.

#include <array>
#include <cstdio>
#include <fmt/format.h>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "fabric/fabric_builder.h"
#include "fat_tree/topology.h"
#include "synthetic/fabric_plan.h"
#include "synthetic/faults.h"
#include "synthetic/random.h"

namespace {

using namespace fabscope;

constexpr int fabricsPerCell = 200;
constexpr std::array<int, 4> faultCounts{1, 2, 4, 8};
constexpr std::array<int, 3> levelCounts{2, 3, 4};
constexpr std::array<int, 3> equals{2, 3, 4};
constexpr std::array<int, 2> retryCounts{10, 30};
constexpr std::uint32_t hdr = 0x400;

const std::vector<FaultKind> kinds{FaultKind::MissingLink, FaultKind::SwappedCables,
                                   FaultKind::SameRankLink, FaultKind::MovedCable,
                                   FaultKind::DeadSwitch, FaultKind::MissingHost,
                                   FaultKind::StrayHost};

// Small to middling trees: the smaller a tree is, the more a fault weighs.
TreeShape RandomShape(int levels, Random& random) {
  const auto between = [&](unsigned least, unsigned greatest) {
    return least + static_cast<unsigned>(random.Below(greatest - least + 1));
  };
  TreeShape shape;
  switch (levels) {
    case 2:
      shape.children = {between(2, 8), between(4, 18)};
      shape.parents = {1, between(2, 8)};
      break;
    case 3:
      shape.children = {between(2, 4), between(2, 6), between(3, 9)};
      shape.parents = {1, between(2, 4), between(2, 4)};
      break;
    default:
      shape.children = {between(2, 3), between(2, 3), between(2, 3), between(3, 5)};
      shape.parents = {1, between(2, 3), between(2, 3), between(2, 3)};
  }
  return shape;
}

struct Setting {
  int equal;
  int retries;
};

bool FindsTrueRoots(const IBFabric& fabric, const std::set<std::uint64_t>& trueRoots,
                    const Setting& setting) {
  std::ostringstream output;
  std::vector<FabricErrGeneral*> errors;
  std::string message;
  FTTopology topology(&fabric, &output, 70);
  if (topology.Build(errors, message, setting.retries, setting.equal) != 0) return false;
  std::set<std::uint64_t> found;
  for (const IBNode* node : topology.GetRanks().front()) found.insert(node->guid);
  return found == trueRoots;
}

struct Cell {
  int fabrics = 0;
  std::vector<int> found;  // by setting
};

Cell Measure(FaultKind kind, int faults, int levels, const std::vector<Setting>& settings) {
  Cell cell;
  cell.found.resize(settings.size());
  for (std::uint64_t seed = 1; cell.fabrics < fabricsPerCell; ++seed) {
    Random random(seed * 1000 + static_cast<std::uint64_t>(levels * 10 + faults));
    FabricPlan plan = PlanTree(RandomShape(levels, random), hdr);
    FaultInjector injector(plan, random);
    bool refused = false;
    for (int i = 0; i < faults; ++i) {
      InjectedFault done;
      refused |= injector.Inject(kind, done).has_value();
    }
    if (refused) continue;  // too small a tree for so many faults
    ++cell.fabrics;
    std::set<std::uint64_t> trueRoots;
    for (const std::size_t root : plan.SwitchesOnRank(0)) {
      trueRoots.insert(plan.nodes[root].spec.guid);
    }
    FabricBuilder builder;
    plan.Fill(builder);
    const auto fabric = builder.Build();
    for (std::size_t i = 0; i < settings.size(); ++i) {
      cell.found[i] += FindsTrueRoots(*fabric, trueRoots, settings[i]) ? 1 : 0;
    }
  }
  return cell;
}

}  // namespace

int main() {
  std::vector<Setting> settings;
  for (const int retries : retryCounts) {
    for (const int equal : equals) settings.push_back({equal, retries});
  }
  std::vector<long> totals(settings.size());
  long fabrics = 0;

  fmt::print("| levels | fault |");
  for (const int faults : faultCounts) fmt::print(" {} |", faults);
  fmt::print("\n|---|---|---|---|---|---|\n");
  for (const int levels : levelCounts) {
    for (const FaultKind kind : kinds) {
      fmt::print("| {} | {} |", levels, FaultName(kind));
      for (const int faults : faultCounts) {
        const Cell cell = Measure(kind, faults, levels, settings);
        std::string shares;
        for (std::size_t i = 0; i < settings.size(); ++i) {
          totals[i] += cell.found[i];
          shares += (i == 0 ? "" : "/") + fmt::format("{:.1f}", 100.0 * cell.found[i] / cell.fabrics);
        }
        fabrics += cell.fabrics;
        fmt::print(" {} |", shares);
      }
      fmt::print("\n");
      std::fflush(stdout);
    }
  }
  fmt::print("\n| --equal | --retries | true roots found |\n|---|---|---|\n");
  for (std::size_t i = 0; i < settings.size(); ++i) {
    fmt::print("| {} | {} | {:.2f} % |\n", settings[i].equal, settings[i].retries,
               100.0 * static_cast<double>(totals[i]) / static_cast<double>(fabrics));
  }
  return 0;
}
