#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <sstream>
#include <string>
#include <vector>

#include "check/proven_plan.h"
#include "fabric/ib_fabric.h"
#include "fat_tree/finding_list.h"
#include "fat_tree/topology.h"
#include "formats/diagnostics.h"
#include "formats/locations.h"
#include "platform/reg_exp.h"

namespace fabscope::internal {

// The switches that are taken for the roots.
enum class RootsFrom {
  Auto,      // those of the search, unless the inferred ones fit the cables better
  Search,    // which leaves agree on by their distances
  Inferred,  // which all cables together speak for
  Smdb,      // those of rank 0
  Regex      // those whose name matches
};

struct LoadedInput;

// One check as the user asked for it. Paths may be "-" for standard input; an empty path means that
// the file was not given.
struct CheckOptions {
  std::string fabric;
  std::string ranks;
  std::string flids;
  std::string nodeNameMap;
  std::string locations;
  RootsFrom roots = RootsFrom::Auto;
  std::shared_ptr<regExp> rootRegex;     // set when roots is Regex
  std::shared_ptr<regExp> specialNodes;  // may be null: no channel adapter is special
  int retries = 10;
  int equalClassifications = 2;
  int mergePercent = 70;
  int showGuid = 0;
  std::uint64_t mostRecords = FindingList::defaultMostRecords;  // of more the rest is counted
  bool wantDump = false;
  bool wantRepairs = false;
  bool wantMisfits = false;
};

// The roots that a tree was built from, and how far they can be trusted.
struct RootsUsed {
  RootsFrom method = RootsFrom::Search;  // how they were found; never Auto
  // The edit distance from the fabric to a proper tree of these ranks. 0 without a tree; may be 0
  // when it was not asked for.
  std::uint64_t misfits = 0;
  std::string notice;  // the report's first line where Auto has preferred inferred roots, or empty
  std::string doubt;   // why the tree may be a wrong one; empty if nothing says so
};

enum class CheckStatus {
  BadInput,      // nothing was loaded: only inputError is set
  NotBuilt,      // buildOutput and message are set
  NotValidated,  // all but the dump, until the failure
  Done,
};

// Everything a report may tell of one check. What the stage wrote stands as it wrote it.
struct CheckResult {
  CheckStatus status = CheckStatus::BadInput;
  std::string input;  // the fabric as the user named it
  int showGuid = 0;   // as the user asked: how texts name switches
  MaybeError inputError;
  std::vector<std::string> warnings;  // oddities of the input files, a line each
  // How many switches a name alone does not tell from another switch.
  std::size_t switchesOfSharedName = 0;
  std::string message;  // why building or validating failed
  std::string advice;   // what the user can do when building failed
  RootsUsed roots;

  std::string buildOutput;
  std::string levelsReport;
  std::string validateOutput;
  std::string dump;  // empty unless it was asked for
  FindingList findings;
  std::uint64_t issuesCount = 0;

  // What would cure them, found with the ranks of this check; null when nothing is known to, or
  // when nobody asked.
  std::unique_ptr<ProvenPlan> repairs;
  // What no cable cures, where somebody asked for repairs.
  std::vector<RepairNote> notes;

  std::shared_ptr<const Locations> locations;  // null when none were given

  // The texts do not need them, the findings do.
  std::shared_ptr<const IBFabric> fabric;
  std::unique_ptr<std::ostringstream> stream;  // what `topology` writes to
  std::unique_ptr<FTTopology> topology;

  bool HasFindings() const { return findings.RecordsCount() != 0 || issuesCount != 0; }
};

// Loads a fabric, builds its tree, validates it and collects what was found. Threads may run checks
// at the same time.
CheckResult RunCheck(const CheckOptions& options);
// The same of a fabric that is loaded; files that the options name are not looked at.
CheckResult RunCheck(const LoadedInput& input, const CheckOptions& options);

}  // namespace fabscope::internal
