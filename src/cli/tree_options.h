#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "check/check.h"
#include "cli/option_values.h"
#include "cli/outputs.h"

namespace fabscope::internal {

// How the tree of a fabric is found, as the command line gives it: for every command that looks for
// one.
struct TreeArguments {
  CheckOptions options;
  std::string roots;  // the value of --roots; empty when it was not given
  // The last one given that only the search looks at, with its value: "--equal 3"; empty if none.
  std::string searchOption;
};

inline constexpr const char* ofRoots = "Roots";
// The heading of what names nodes and puts them into groups.
inline constexpr const char* ofGroups = "Groups and names";

// Of every command that names switches as the check does.
inline constexpr OptionText showGuidText{
    "--show-guid", "none|system|node", ofGroups, "GUID in front of switch names (default none)",
    "node tells switches of the same name apart; system is the GUID that all chips of a system "
    "share."};
OptionProblem TakeShowGuid(int& target, const std::string& value);

// Of every command that says what to do.
inline constexpr OptionText locationsText{
    "--locations", "FILE", ofGroups, "where switches stand (CSV: name,rack,unit)",
    "For --work-order and the page. A header line, then a line for each switch: columns guid or "
    "name, rack, and "
    "perhaps unit. Other columns go into the work order as they are."};
inline constexpr OptionText workOrderText{
    "--work-order", "FILE", alsoWritten, "the repairs for a walk along the racks, as CSV",
    "One row for each repair with a box to tick, both ports, and their places if --locations gives "
    "them, in an order that saves steps. With - it replaces the report."};

// Of every command that lists error records.
inline constexpr OptionText maxRecordsText{
    "--max-records", "N", ofReport, "list at most N error records (default 1000000)",
    "A badly damaged fabric can lack as many cables as it has spines times lines. All are counted, "
    "and every output says how many are not listed."};
OptionProblem TakeMaxRecords(std::uint64_t& target, const std::string& value);

// What is wrong with places that nothing shows.
OptionProblem SettleLocations(const CheckOptions& options, const OutputFiles& outputs);

std::vector<BoundOption> BindTreeOptions(TreeArguments& arguments);

// Works out what they mean together; answers what contradicts.
std::optional<std::string> SettleTree(TreeArguments& arguments);

}  // namespace fabscope::internal
