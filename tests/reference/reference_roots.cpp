#include <cstddef>
#include <functional>
#include <optional>
#include <regex.h>
#include <set>
#include <stdexcept>
#include <string>

#include "reference/reference_run.h"

namespace fabscope::internal::reference::detail {
namespace {

const std::string kCannotBuild = "Cannot build Fat-Tree topology. ";

// The first switch that is wanted fixes the plane of all roots.
std::set<int> PickRoots(Run& run, const std::function<bool(const PlainNode&)>& isWanted) {
  std::set<int> roots;
  int plane = 0;
  for (int node = 0; node < run.NodeCount(); ++node) {
    const PlainNode& here = run.Node(node);
    if (here.type != 2 || !isWanted(here)) continue;
    if (roots.empty()) {
      plane = here.suitablePlane;
    } else if (!IsOnPlane(here, plane)) {
      run.Note("root on another plane left out");
      continue;
    }
    roots.insert(node);
  }
  return roots;
}

std::set<int> PickRootsByRegex(Run& run) {
  regex_t expression;
  if (regcomp(&expression, run.options.rootRegex.c_str(), REG_EXTENDED) != 0) {
    throw std::invalid_argument("not a regular expression: " + run.options.rootRegex);
  }
  std::set<int> roots = PickRoots(run, [&expression](const PlainNode& node) {
    return regexec(&expression, node.name.c_str(), 0, nullptr, 0) == 0;
  });
  regfree(&expression);
  return roots;
}

bool FillRanksFromRoots(Run& run, const std::set<int>& roots) {
  if (roots.empty()) {
    run.errors += "No root was provided for creating topology";
    return false;
  }
  const int plane = run.Node(*roots.begin()).suitablePlane;
  run.ranks = {roots};
  while (true) {
    const int last = static_cast<int>(run.ranks.size()) - 1;
    std::set<int> next;
    for (const int node : run.ranks.back()) {
      for (const Cable& cable : SwitchCables(run, node)) {
        const PlainNode& remote = run.Node(cable.remoteNode);
        if (!IsOnPlane(remote, plane)) {
          if (!remote.multiAsic) {
            run.Note("switch on another plane not ranked");
            continue;
          }
          run.Note("multi-ASIC switch on another plane ranked");
        }
        const int rank = RankOf(run, cable.remoteNode);
        if (rank >= 0) {
          // Such a link counts from its lower end only, or the rank would be smaller by now.
          if (rank < last - 1) run.Note("switch two ranks back not ranked again");
          continue;
        }
        next.insert(cable.remoteNode);
      }
    }
    if (next.empty()) return true;
    run.ranks.push_back(next);
  }
}

}  // namespace

std::optional<std::string> Build(Run& run) {
  if (run.options.roots == PlainRoots::Smdb) {
    run.Note("roots by database rank");
    run.out += "-I- Taking roots from the SMDB file\n";
    const std::set<int> roots =
        PickRoots(run, [](const PlainNode& node) { return node.smdbRank == 0; });
    if (FillRanksFromRoots(run, roots)) return std::nullopt;
    run.Note("no root by database rank");
    return kCannotBuild + "Failed to fill tree's ranks by SMDB: " + run.errors;
  }
  if (run.options.roots == PlainRoots::Regex) {
    run.Note("roots by regular expression");
    run.out += "-I- Detecting roots by the regular exp: " + run.options.rootRegex + "\n";
    const std::set<int> roots = PickRootsByRegex(run);
    if (FillRanksFromRoots(run, roots)) return std::nullopt;
    run.Note("no root by regular expression");
    return kCannotBuild + "Failed to fill tree's ranks by the regular expression: " + run.errors;
  }
  run.Note("roots by classification");
  return BuildByClassification(run);
}

}  // namespace fabscope::internal::reference::detail
