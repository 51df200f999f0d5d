// How well faults are found: over seeded trees with labelled faults, how many of them a record or a
// warning names, how many records name something else, and how many groups come out as they were
// meant, by --merge-percent. Ranks are given, so that the search for roots has no part in it.
//
//   detection        the tables of which docs/detection.md shows the rows that users need
//   detection all    every cell as CSV

#include <algorithm>
#include <array>
#include <fmt/format.h>
#include <map>
#include <memory>
#include <set>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include "fabric/fabric_builder.h"
#include "fat_tree/neighborhood.h"
#include "fat_tree/topology.h"
#include "synthetic/fabric_plan.h"
#include "synthetic/faults.h"
#include "synthetic/random.h"

namespace {

using namespace fabscope::internal;

constexpr int fabricsPerCell = 200;
constexpr std::uint64_t seedLimit = 10ULL * fabricsPerCell;  // a cell that needs more has no room
constexpr std::array<int, 3> levelCounts{2, 3, 4};
constexpr std::array<unsigned, 4> arities{3, 4, 6, 10};
constexpr std::array<int, 3> faultCounts{1, 4, 16};
constexpr std::array<int, 6> percents{50, 60, 65, 70, 75, 80};
constexpr int defaultPercent = 70;
constexpr std::uint32_t hdr = 0x400;
constexpr unsigned sparePorts = 4;

const std::vector<FaultKind> kinds{
    FaultKind::MissingLink,  FaultKind::SwappedCables, FaultKind::MovedCable,
    FaultKind::SameRankLink, FaultKind::RootLink,      FaultKind::DeadSwitch,
    FaultKind::MissingHost,  FaultKind::SlowLink,      FaultKind::StrayHost};

// Trees whose groups of leaves have `arity` spines each.
TreeShape ShapeOf(int levels, unsigned arity) {
  TreeShape shape;
  if (levels == 2) shape = {.children = {3, 2 * arity}, .parents = {1, arity}};
  if (levels == 3) shape = {.children = {3, arity, 4}, .parents = {1, arity, 2}};
  if (levels == 4) shape = {.children = {2, arity, 2, 3}, .parents = {1, arity, 2, 2}};
  for (std::size_t level = 1; level <= shape.Levels(); ++level) {
    shape.radix = std::max(shape.radix, shape.PortsOnLevel(level) + sparePorts);
  }
  return shape;
}

struct Score {
  long fabrics = 0;
  long faults = 0;
  long named = 0;  // faults of which a record or a warning names a switch
  long records = 0;
  long strayRecords = 0;  // records that name no switch of a fault
  long groups = 0;        // groups of leaves that were meant
  long recovered = 0;     // of these, found with exactly their leaves

  void Add(const Score& other) {
    fabrics += other.fabrics;
    faults += other.faults;
    named += other.named;
    records += other.records;
    strayRecords += other.strayRecords;
    groups += other.groups;
    recovered += other.recovered;
  }
};

using Names = std::set<std::string>;

// The switches of a fault: those that came or went, and those at the ends of its cables.
Names SwitchesOf(const InjectedFault& fault, const FabricPlan& plan) {
  Names names;
  const auto add = [&](std::size_t node) {
    if (plan.IsSwitch(node)) names.insert(plan.nodes[node].spec.name);
  };
  for (const std::size_t node : fault.nodes) add(node);
  for (const auto* cables : {&fault.before, &fault.after}) {
    for (const PlannedCable& cable : *cables) {
      add(cable.upper.node);
      add(cable.lower.node);
    }
  }
  return names;
}

bool NamesOneOf(std::string_view text, const Names& names) {
  return std::any_of(names.begin(), names.end(), [&](const std::string& name) {
    return text.find(name) != std::string_view::npos;
  });
}

// The lines of a report that are no mere information.
std::string WarningsOf(const std::string& report) {
  std::string warnings;
  std::istringstream lines(report);
  for (std::string line; std::getline(lines, line);) {
    if (!line.starts_with("-I- ")) warnings += line + '\n';
  }
  return warnings;
}

// The groups of leaves, each as its leaves' names.
std::set<Names> MeantGroups(const FabricPlan& plan) {
  std::map<std::size_t, Names> groups;
  for (const std::size_t leaf : plan.SwitchesOnRank(plan.levels - 1)) {
    groups[plan.nodes[leaf].leafGroup].insert(plan.nodes[leaf].spec.name);
  }
  std::set<Names> result;
  for (auto& [number, names] : groups) result.insert(std::move(names));
  return result;
}

std::set<Names> FoundGroups(const FTTopology& topology) {
  std::set<Names> result;
  if (topology.GetNeighborhoods().empty()) return result;
  for (const FTNeighborhood* group : topology.GetNeighborhoods().back()) {
    Names names;
    for (const IBNode* leaf : group->GetLines()) names.emplace(leaf->name);
    result.insert(std::move(names));
  }
  return result;
}

// A plan with its faults, and what they are.
struct Case {
  FabricPlan plan;
  std::vector<Names> faults;
  std::unique_ptr<IBFabric> fabric;
};

std::unique_ptr<Case> MakeCase(int levels, unsigned arity, FaultKind kind, int count,
                               std::uint64_t seed) {
  auto made = std::make_unique<Case>();
  Random random(seed);
  made->plan = PlanTree(ShapeOf(levels, arity), hdr);
  for (PlannedNode& node : made->plan.nodes) {
    if (node.rank >= 0) node.spec.smdbRank = static_cast<std::uint8_t>(node.rank);
  }
  FaultInjector injector(made->plan, random);
  for (int i = 0; i < count; ++i) {
    InjectedFault fault;
    if (injector.Inject(kind, fault)) return nullptr;
    made->faults.push_back(SwitchesOf(fault, made->plan));
  }
  FabricBuilder builder;
  made->plan.Fill(builder);
  made->fabric = builder.Build();
  return made;
}

Score Check(const Case& what, int percent) {
  std::ostringstream stream;
  std::vector<FabricErrGeneral*> errors;
  std::string message;
  FTTopology topology(what.fabric.get(), &stream, percent);
  Score score;
  score.fabrics = 1;
  score.faults = static_cast<long>(what.faults.size());
  Names faulty;
  for (const Names& names : what.faults) faulty.insert(names.begin(), names.end());
  if (topology.Build(errors, message) == 0) topology.Validate(errors, message);

  std::string said = WarningsOf(stream.str());
  for (FabricErrGeneral* error : errors) {
    const std::string line = error->GetErrorLine();
    ++score.records;
    if (!NamesOneOf(line, faulty)) ++score.strayRecords;
    said += line + '\n';
    delete error;
  }
  for (const Names& names : what.faults) score.named += NamesOneOf(said, names) ? 1 : 0;
  const std::set<Names> found = FoundGroups(topology);
  for (const Names& group : MeantGroups(what.plan)) {
    ++score.groups;
    score.recovered += found.contains(group) ? 1 : 0;
  }
  return score;
}

struct Cell {
  int levels = 0;
  unsigned arity = 0;
  FaultKind kind{};
  int count = 0;
  std::array<Score, percents.size()> scores;  // by merge percent
};

Cell Measure(int levels, unsigned arity, FaultKind kind, int count) {
  Cell cell{levels, arity, kind, count, {}};
  for (std::uint64_t seed = 1; seed <= seedLimit && cell.scores.front().fabrics < fabricsPerCell;
       ++seed) {
    const auto made = MakeCase(levels, arity, kind, count, seed);
    if (!made) continue;  // no room for so many faults
    for (std::size_t i = 0; i < percents.size(); ++i) {
      cell.scores[i].Add(Check(*made, percents[i]));
    }
  }
  return cell;
}

double Percent(long part, long whole) {
  return whole == 0 ? 0.0 : 100.0 * static_cast<double>(part) / static_cast<double>(whole);
}

double PerFabric(const Score& score) {
  return static_cast<double>(score.strayRecords) / static_cast<double>(score.fabrics);
}

template <typename Select>
Score Sum(const std::vector<Cell>& cells, std::size_t percent, Select select) {
  Score sum;
  for (const Cell& cell : cells) {
    if (select(cell)) sum.Add(cell.scores[percent]);
  }
  return sum;
}

void PrintByPercent(const std::vector<Cell>& cells) {
  fmt::print("| spines in a group | faults |");
  for (const int percent : percents) fmt::print(" {} |", percent);
  fmt::print("\n|---|---|---|---|---|---|---|---|\n");
  for (const unsigned arity : arities) {
    for (const int count : faultCounts) {
      fmt::print("| {} | {} |", arity, count);
      for (std::size_t i = 0; i < percents.size(); ++i) {
        const Score sum = Sum(
            cells, i, [&](const Cell& cell) { return cell.arity == arity && cell.count == count; });
        fmt::print(" {:.1f} / {:.1f} / {:.2f} |", Percent(sum.named, sum.faults),
                   Percent(sum.recovered, sum.groups), PerFabric(sum));
      }
      fmt::print("\n");
    }
  }
}

void PrintByKind(const std::vector<Cell>& cells) {
  const auto percent = static_cast<std::size_t>(
      std::distance(percents.begin(), std::find(percents.begin(), percents.end(), defaultPercent)));
  fmt::print("| fault | levels |");
  for (const int count : faultCounts) fmt::print(" {} |", count);
  fmt::print("\n|---|---|---|---|---|\n");
  for (const FaultKind kind : kinds) {
    for (const int levels : levelCounts) {
      fmt::print("| {} | {} |", FaultName(kind), levels);
      for (const int count : faultCounts) {
        const Score sum = Sum(cells, percent, [&](const Cell& cell) {
          return cell.kind == kind && cell.levels == levels && cell.count == count;
        });
        fmt::print(" {:.1f} / {:.1f} / {:.2f} |", Percent(sum.named, sum.faults),
                   Percent(sum.recovered, sum.groups), PerFabric(sum));
      }
      fmt::print("\n");
    }
  }
}

void PrintAll(const std::vector<Cell>& cells) {
  fmt::print(
      "levels,spines,fault,count,merge_percent,fabrics,faults,named,records,stray_records,groups,"
      "recovered\n");
  for (const Cell& cell : cells) {
    for (std::size_t i = 0; i < percents.size(); ++i) {
      const Score& score = cell.scores[i];
      fmt::print("{},{},{},{},{},{},{},{},{},{},{},{}\n", cell.levels, cell.arity,
                 FaultName(cell.kind), cell.count, percents[i], score.fabrics, score.faults,
                 score.named, score.records, score.strayRecords, score.groups, score.recovered);
    }
  }
}

}  // namespace

int main(int argc, char** argv) {
  std::vector<Cell> cells;
  for (const int levels : levelCounts) {
    for (const unsigned arity : arities) {
      for (const FaultKind kind : kinds) {
        for (const int count : faultCounts) cells.push_back(Measure(levels, arity, kind, count));
      }
    }
  }
  if (argc > 1 && std::string_view(argv[1]) == "all") {
    PrintAll(cells);
    return 0;
  }
  fmt::print(
      "Faults named / groups of leaves recovered, in percent / stray records a fabric, by "
      "--merge-percent:\n\n");
  PrintByPercent(cells);
  fmt::print("\nThe same at {} percent, by fault, levels and number of faults:\n\n",
             defaultPercent);
  PrintByKind(cells);
  return 0;
}
