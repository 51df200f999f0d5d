#pragma once

#include <optional>
#include <string>
#include <vector>

#include "check/check.h"
#include "cli/option_values.h"

namespace fabscope {

// How the tree of a fabric is found, as the command line gives it: for every command that looks for
// one.
struct TreeArguments {
  CheckOptions options;
  std::string roots;  // the value of --roots; empty when it was not given
  // The last one given that only the search looks at, with its value: "--equal 3"; empty if none.
  std::string searchOption;
};

inline constexpr const char* ofRoots = "How the roots are found";
// The heading of what names nodes and puts them into groups.
inline constexpr const char* ofGroups = "How switches are grouped and named";

// Of every command that names switches as the check does.
inline constexpr OptionText showGuidText{
    "--show-guid", "none|system|node", ofGroups, "GUID in front of switch names (default none)",
    "node tells switches of one name apart; system is the GUID that the chips of one system "
    "share."};
OptionProblem TakeShowGuid(int& target, const std::string& value);

std::vector<BoundOption> BindTreeOptions(TreeArguments& arguments);

// Works out what they mean together; answers what contradicts.
std::optional<std::string> SettleTree(TreeArguments& arguments);

}  // namespace fabscope
