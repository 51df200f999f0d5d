// How far repairs can be trusted: over seeded trees with labelled faults, how often the ranks are
// right, how often the steps bring back the cables that were meant, and how often a step that is
// told as sure is wrong. Prints tables by set, kind of fault, levels and number of faults.
//
//   repair_trust --set spare --list     the fabrics of a set that did not come out right, too
//   repair_trust --set spare --kind moved-cable --levels 3 --faults 4 --seed 17 --dump FILE
//                                       one of them: its faults and its plan in words
//
// A method is never judged by the seeds it was tuned with. Tuning starts at seed 1, the tables far
// behind.

#include <CLI/CLI.hpp>
#include <algorithm>
#include <array>
#include <atomic>
#include <cstdio>
#include <exception>
#include <fmt/format.h>
#include <fstream>
#include <iostream>
#include <set>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "formats/write_fabric.h"
#include "labelled_fabric.h"
#include "repair_score.h"

namespace {

using namespace fabscope::internal;

constexpr std::uint64_t firstSeedOfTables = 1'000'001;
constexpr std::uint64_t mostSeedsPerFabric = 20;  // a cell that needs more has no room

struct Options {
  std::string set;
  std::string kind;
  int levels = 0;   // 0: all
  int faults = -1;  // -1: all
  std::uint64_t firstSeed = firstSeedOfTables;
  int fabrics = 0;  // 0: as many as the set usually takes
  unsigned jobs = 1;
  bool ranksOnly = false;
  bool list = false;
  std::uint64_t seed = 0;
  std::string dump;
};

bool IsWanted(const Cell& cell, const Options& options) {
  return (options.set.empty() || cell.set == options.set) &&
         (options.kind.empty() || cell.kind == options.kind) &&
         (options.levels == 0 || cell.levels == options.levels) &&
         (options.faults < 0 || cell.faults == options.faults);
}

std::string NameOf(const Cell& cell) {
  return fmt::format("{} {} {} {}", cell.set, cell.levels, cell.kind, cell.faults);
}

// --- Counting.

struct Score {
  long fabrics = 0;
  std::array<long, MarkCount> counts{};

  void Add(Marks marks) {
    ++fabrics;
    for (std::size_t i = 0; i < MarkCount; ++i) counts.at(i) += marks[i] ? 1 : 0;
  }
  void Add(const Score& other) {
    fabrics += other.fabrics;
    for (std::size_t i = 0; i < MarkCount; ++i) counts.at(i) += other.counts.at(i);
  }
};

struct Measured {
  Cell cell;
  Score score;
  std::string failures;  // a line for each fabric that did not come out right
};

void Measure(const Options& options, Measured& measured) {
  const Cell& cell = measured.cell;
  const long wanted = options.fabrics > 0 ? options.fabrics : cell.usualCount;
  const std::uint64_t end =
      options.firstSeed + mostSeedsPerFabric * static_cast<std::uint64_t>(wanted);
  for (std::uint64_t seed = options.firstSeed; seed < end; ++seed) {
    if (measured.score.fabrics == wanted) return;
    const auto made = MakeFabric(cell, seed);
    if (!made) continue;
    const Marks marks = Judge(*made, options.ranksOnly).marks;
    measured.score.Add(marks);
    const auto failures = FailuresOf(marks, options.ranksOnly);
    if (failures.empty()) continue;
    measured.failures += fmt::format("{} {}: {}\n", NameOf(cell), seed, fmt::join(failures, ", "));
  }
}

std::vector<Measured> MeasureAll(const Options& options) {
  std::vector<Measured> all;
  for (const Cell& cell : AllCells()) {
    if (IsWanted(cell, options)) all.push_back({cell, {}, {}});
  }
  std::atomic<std::size_t> next = 0;
  const auto work = [&] {
    for (std::size_t i = next++; i < all.size(); i = next++) Measure(options, all[i]);
  };
  std::vector<std::jthread> helpers;
  for (unsigned i = 1; i < options.jobs; ++i) helpers.emplace_back(work);
  work();
  helpers.clear();
  return all;
}

// --- Tables.

struct Column {
  std::string_view title;
  std::vector<Mark> marks;  // shares of these, divided by slashes
  bool isCount = false;     // a number of fabrics instead
};

const std::vector<Column>& ColumnsOf(const Options& options) {
  static const Column inferred{"ranks: inferred / searched", {RanksInferred, RanksSearched}};
  static const Column roots{"roots: inferred / searched", {RootsInferred, RootsSearched}};
  static const std::vector<Column> ofRanks{inferred, roots};
  static const std::vector<Column> all{inferred,
                                       roots,
                                       {"ranks", {RanksOfPlan}},
                                       {"pairs", {PairsRight}},
                                       {"ports", {PortsRight}},
                                       {"proven", {Proven}},
                                       {"sure", {ToldSure}},
                                       {"wrong while sure", {WrongSure}, true},
                                       {"likely", {ToldLikely}},
                                       {"ask", {ToldAsk}},
                                       {"abstained", {Abstained}},
                                       {"clean", {ToldClean}},
                                       {"needless", {Needless}, true},
                                       {"no note", {NoteLacking}, true},
                                       {"cannot be done", {CannotBeDone}, true}};
  return options.ranksOnly ? ofRanks : all;
}

void PrintHead(const Options& options, std::string_view head, int labels) {
  fmt::print("\n{} fabrics |", head);
  const auto& columns = ColumnsOf(options);
  for (const Column& column : columns) fmt::print(" {} |", column.title);
  fmt::print("\n|");
  for (std::size_t i = 0; i < columns.size() + static_cast<std::size_t>(labels) + 1; ++i) {
    fmt::print("---|");
  }
  fmt::print("\n");
}

void PrintRow(const Options& options, const std::string& labels, const Score& score) {
  fmt::print("{} {} |", labels, score.fabrics);
  for (const Column& column : ColumnsOf(options)) {
    std::vector<std::string> shares;
    for (const Mark mark : column.marks) {
      const long count = score.counts.at(mark);
      const double percent =
          100.0 * static_cast<double>(count) / static_cast<double>(std::max(1L, score.fabrics));
      shares.push_back(column.isCount ? std::to_string(count) : fmt::format("{:.1f}", percent));
    }
    fmt::print(" {} |", fmt::join(shares, " / "));
  }
  fmt::print("\n");
}

// A row for each value that `nameOf` has, in the order in which they come.
template <typename NameOfCell>
void PrintSums(const Options& options, const std::vector<Measured>& all, std::string_view title,
               NameOfCell nameOf) {
  PrintHead(options, fmt::format("| {} |", title), 1);
  std::set<std::string> printed;
  for (const Measured& first : all) {
    const std::string name = nameOf(first.cell);
    if (!printed.insert(name).second) continue;
    Score sum;
    for (const Measured& measured : all) {
      if (nameOf(measured.cell) == name) sum.Add(measured.score);
    }
    PrintRow(options, fmt::format("| {} |", name), sum);
  }
}

void PrintTables(const Options& options, const std::vector<Measured>& all) {
  const auto setOf = [](const Cell& cell) { return cell.set; };
  const auto kindOf = [](const Cell& cell) { return cell.set + ", " + cell.kind; };
  PrintSums(options, all, "set", setOf);
  PrintSums(options, all, "set and kind", kindOf);
  PrintHead(options, "| set | kind | levels | faults |", 4);
  for (const Measured& measured : all) {
    const Cell& cell = measured.cell;
    PrintRow(options,
             fmt::format("| {} | {} | {} | {} |", cell.set, cell.kind, cell.levels, cell.faults),
             measured.score);
  }
}

// --- One fabric in words.

std::string Words(const PlannedCable& cable, const FabricPlan& plan) {
  return fmt::format("{}/{} - {}/{}", plan.nodes[cable.upper.node].spec.name, cable.upper.port,
                     plan.nodes[cable.lower.node].spec.name, cable.lower.port);
}

void PrintTruth(const LabelledFabric& made) {
  for (const InjectedFault& fault : made.faults) {
    fmt::print("fault: {}\n", FaultName(fault.kind));
    for (const std::size_t node : fault.nodes) {
      fmt::print("  node {}\n", made.plan.nodes[node].spec.name);
    }
    for (const PlannedCable& cable : fault.before) {
      fmt::print("  meant {}\n", Words(cable, made.plan));
    }
    for (const PlannedCable& cable : fault.after) {
      fmt::print("  is    {}\n", Words(cable, made.plan));
    }
  }
}

std::string Words(const RepairCable& cable, const IBFabric& fabric) {
  return fmt::format("{}/{} - {}/{}", fabric.GetNodes()[cable.upper.node].name, cable.upper.port,
                     fabric.GetNodes()[cable.lower.node].name, cable.lower.port);
}

void PrintChanges(const CableChanges& changes, const IBFabric& fabric) {
  for (const CableChange& change : changes) {
    if (change.before) fmt::print("    unplug {}\n", Words(*change.before, fabric));
    if (change.after) fmt::print("    plug   {}\n", Words(*change.after, fabric));
  }
}

std::string_view NameOf(RepairAction action) {
  constexpr std::array<std::string_view, 4> names{"swap", "move", "connect", "disconnect"};
  return names.at(static_cast<std::size_t>(action));
}

std::string_view NameOf(RepairClass trust) {
  constexpr std::array<std::string_view, 3> names{"sure", "likely", "ask"};
  return names.at(static_cast<std::size_t>(trust));
}

std::string_view NameOf(RepairReason reason) {
  constexpr std::array<std::string_view, 6> names{"wrong group", "wrong spine", "same rank",
                                                  "skips rank",  "too many",    "link lacking"};
  return names.at(static_cast<std::size_t>(reason));
}

std::string_view NameOf(RepairStatus status) {
  constexpr std::array<std::string_view, 3> names{"clean", "repairs", "abstained"};
  return names.at(static_cast<std::size_t>(status));
}

std::string_view NameOf(RepairNote::Kind kind) {
  constexpr std::array<std::string_view, 6> names{"dead switch",     "self-loop",
                                                  "hosts on spines", "unusual group",
                                                  "uncertain group", "switch without tree"};
  return names.at(static_cast<std::size_t>(kind));
}

void PrintNote(const RepairNote& note, const IBFabric& fabric) {
  fmt::print("note: {}, rank {}:", NameOf(note.kind), note.rank);
  for (const std::uint32_t index : note.switches) fmt::print(" {}", fabric.GetNodes()[index].name);
  if (!note.ports.empty()) fmt::print(", ports {}", fmt::join(note.ports, " "));
  fmt::print("\n");
}

void PrintPlan(const RepairPlan& plan, const IBFabric& fabric) {
  fmt::print("plan: {}{}{}, {} misfits, {} levels, at least {} steps\n", NameOf(plan.status),
             plan.message.empty() ? "" : ": ", plan.message, plan.misfits, plan.ranks.levels,
             plan.lowerBound);
  for (const RepairStep& step : plan.steps) {
    fmt::print("  {} ({}): {}\n", NameOf(step.action), NameOf(step.trust), NameOf(step.reason));
    PrintChanges(step.cables, fabric);
    for (const CableChanges& alternative : step.alternatives) {
      fmt::print("   or\n");
      PrintChanges(alternative, fabric);
    }
  }
  for (const RepairNote& note : plan.notes) PrintNote(note, fabric);
}

void PrintWrongRanks(const LabelledFabric& made, const Judged& judged) {
  for (const PlannedNode& node : made.plan.nodes) {
    if (node.rank < 0 || node.removed) continue;
    const IBNode* found = judged.fabric->getNodeByGuid(node.spec.guid);
    const int rank = judged.plan.ranks.ofNode[found->index];
    if (rank != node.rank) fmt::print("{}: rank {} taken for {}\n", found->name, node.rank, rank);
  }
}

// Answers what is wrong with the request.
std::string ShowOne(const Options& options) {
  std::vector<Cell> cells = AllCells();
  std::erase_if(cells, [&](const Cell& cell) { return !IsWanted(cell, options); });
  if (cells.size() != 1) return "--seed needs the set, kind, levels and faults of one fabric";
  const auto made = MakeFabric(cells.front(), options.seed);
  if (!made) return "that tree is too small for so many faults";
  const Judged judged = Judge(*made, false);
  PrintTruth(*made);
  PrintWrongRanks(*made, judged);
  PrintPlan(judged.plan, *judged.fabric);
  fmt::print("not right: {}\n", fmt::join(FailuresOf(judged.marks, false), ", "));
  if (options.dump.empty()) return {};
  std::ofstream file(options.dump);
  WriteFabric(*judged.fabric, FabricFormat::TopologyDump, file);
  return file.flush() ? "" : "cannot write " + options.dump;
}

int Run(const Options& options) {
  if (options.seed != 0) {
    const std::string problem = ShowOne(options);
    if (problem.empty()) return 0;
    fmt::print(stderr, "repair_trust: {}\n", problem);
    return 2;
  }
  const std::vector<Measured> all = MeasureAll(options);
  if (options.list) {
    for (const Measured& measured : all) fmt::print("{}", measured.failures);
  }
  PrintTables(options, all);
  return 0;
}

int ReadAndRun(int argc, char** argv) {
  Options options;
  CLI::App app("How far repairs can be trusted, on trees with labelled faults");
  app.add_option("--set", options.set,
                 "roots, spare, full, trunks, shuffled, full-shuffled or special");
  app.add_option("--kind", options.kind, "one kind of fault, as the tables name it");
  app.add_option("--levels", options.levels, "trees of so many levels");
  app.add_option("--faults", options.faults, "trees with so many faults");
  app.add_option("--first-seed", options.firstSeed, "where the seeds begin");
  app.add_option("--fabrics", options.fabrics, "fabrics of each kind, levels and faults");
  app.add_option("--jobs", options.jobs, "threads");
  app.add_flag("--ranks-only", options.ranksOnly, "infer ranks, look for no repair");
  app.add_flag("--list", options.list, "the fabrics that did not come out right, a line each");
  app.add_option("--seed", options.seed, "show one fabric's faults and plan");
  app.add_option("--dump", options.dump, "with --seed: write it as a topology dump");
  CLI11_PARSE(app, argc, argv);
  return Run(options);
}

}  // namespace

int main(int argc, char** argv) {
  try {
    return ReadAndRun(argc, argv);
  } catch (const std::exception& error) {
    static_cast<void>(std::fprintf(stderr, "repair_trust: %s\n", error.what()));
    return 2;
  }
}
