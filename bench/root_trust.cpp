// How far automatic roots can be trusted: over seeded fabrics with faults, how often the search
// finds the true roots, refuses, or finds others, and how often the user is told to doubt them.
// Prints the table of docs/roots.md, then the shares by height, fault and setting.

#include <algorithm>
#include <array>
#include <fmt/format.h>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "check/advice.h"
#include "check/check.h"
#include "fabric/fabric_builder.h"
#include "fat_tree/topology.h"
#include "random_shape.h"
#include "synthetic/fabric_plan.h"
#include "synthetic/faults.h"
#include "synthetic/random.h"

namespace {

using namespace fabscope::internal;

constexpr int fabricsPerCell = 200;
constexpr std::uint32_t hdr = 0x400;

struct Setting {
  int equal = 0;
  int retries = 0;
};

const std::vector<Setting> settings{{2, 10}, {2, 30}, {3, 10}, {3, 30}, {4, 10}, {4, 30}};

enum Outcome : std::size_t { Found, FoundDoubted, Refused, WrongTold, WrongSilent, OutcomeCount };

using Guids = std::set<std::uint64_t>;

Outcome Search(const IBFabric& fabric, const Guids& trueRoots, const Setting& setting) {
  std::ostringstream output;
  std::vector<FabricErrGeneral*> errors;
  std::string message;
  FTTopology topology(&fabric, &output, CheckOptions().mergePercent);
  if (topology.Build(errors, message, setting.retries, setting.equal) != 0) return Refused;
  Guids found;
  for (const IBNode* node : topology.GetRanks().front()) found.insert(node->guid);
  const bool doubted = !AdviceOnTree(topology, RootsFrom::Search).empty();
  if (found == trueRoots) return doubted ? FoundDoubted : Found;
  return doubted ? WrongTold : WrongSilent;
}

// How many of a cell's fabrics came out which way.
using Cell = std::array<int, OutcomeCount>;

std::string Shares(const Cell& cell) {
  const auto percent = [](int count) { return 100.0 * count / fabricsPerCell; };
  return fmt::format("{:g} / {:g} / {:g} / {:g}", percent(cell[Found] + cell[FoundDoubted]),
                     percent(cell[Refused]), percent(cell[WrongTold]), percent(cell[WrongSilent]));
}

// The cells of all settings, from the same fabrics.
std::vector<Cell> Measure(FaultKind kind, int faults, int levels) {
  std::vector<Cell> cells(settings.size());
  int fabrics = 0;
  for (std::uint64_t seed = 1; fabrics < fabricsPerCell; ++seed) {
    Random random = RandomOf(seed, levels, faults);
    FabricPlan plan = PlanTree(RandomShape(levels, random), hdr);
    FaultInjector injector(plan, random);
    bool refused = false;
    for (int i = 0; i < faults; ++i) {
      InjectedFault done;
      refused |= injector.Inject(kind, done).has_value();
    }
    if (refused) continue;  // too small a tree for so many faults
    ++fabrics;
    Guids trueRoots;
    for (const std::size_t root : plan.SwitchesOnRank(0)) {
      trueRoots.insert(plan.nodes[root].spec.guid);
    }
    FabricBuilder builder;
    plan.Fill(builder);
    const auto fabric = builder.Build();
    for (std::size_t i = 0; i < settings.size(); ++i) {
      ++cells[i][Search(*fabric, trueRoots, settings[i])];
    }
  }
  return cells;
}

struct Row {
  int levels = 0;
  FaultKind kind{};
  std::vector<std::vector<Cell>> cells;  // by number of faults, by setting
};

void PrintTable(const std::vector<Row>& rows, std::size_t setting) {
  fmt::print("\n| levels | fault |");
  for (const int faults : measuredFaults) fmt::print(" {} |", faults);
  fmt::print("\n|---|---|---|---|---|---|\n");
  for (const Row& row : rows) {
    fmt::print("| {} | {} |", row.levels, FaultName(row.kind));
    for (const auto& cells : row.cells) fmt::print(" {} |", Shares(cells[setting]));
    fmt::print("\n");
  }
}

bool AreAlike(const std::vector<Row>& rows, std::size_t a, std::size_t b) {
  for (const Row& row : rows) {
    for (const auto& cells : row.cells) {
      if (cells[a] != cells[b]) return false;
    }
  }
  return true;
}

void PrintTotals(const std::vector<Row>& rows) {
  fmt::print(
      "| --equal | --retries | found | of these doubted | refused | wrong, doubted | wrong, "
      "silently |\n|---|---|---|---|---|---|---|\n");
  for (std::size_t i = 0; i < settings.size(); ++i) {
    std::array<long, OutcomeCount> sums{};
    long fabrics = 0;
    for (const Row& row : rows) {
      for (const auto& cells : row.cells) {
        for (std::size_t outcome = 0; outcome < sums.size(); ++outcome) {
          sums[outcome] += cells[i][outcome];
        }
        fabrics += fabricsPerCell;
      }
    }
    sums[Found] += sums[FoundDoubted];
    fmt::print("| {} | {} |", settings[i].equal, settings[i].retries);
    for (const long sum : sums) {
      fmt::print(" {:.2f} % |", 100.0 * static_cast<double>(sum) / static_cast<double>(fabrics));
    }
    fmt::print("\n");
  }
}

}  // namespace

int main() {
  std::vector<Row> rows;
  for (const int levels : measuredLevels) {
    for (const FaultKind kind : MeasuredKinds()) {
      rows.push_back({levels, kind, {}});
      for (const int faults : measuredFaults) {
        rows.back().cells.push_back(Measure(kind, faults, levels));
      }
    }
  }
  PrintTotals(rows);
  for (std::size_t i = 0; i < settings.size(); ++i) {
    fmt::print("\n--equal {} --retries {}:", settings[i].equal, settings[i].retries);
    const bool alike = i % 2 == 1 && AreAlike(rows, i - 1, i);
    if (alike) {
      fmt::print(" every cell as with --retries {}\n", settings[i - 1].retries);
    } else {
      fmt::print("\n");
      PrintTable(rows, i);
    }
  }
  return 0;
}
