#include "check/load_input.h"

#include <iterator>
#include <map>
#include <string_view>
#include <utility>

#include "fabric/fabric_builder.h"
#include "formats/load_fabric.h"
#include "formats/side_files.h"

namespace fabscope::internal {
namespace {

std::size_t CountSwitchesOfSharedName(const IBFabric& fabric) {
  std::map<std::string_view, std::size_t> counts;
  for (const IBNode* node : fabric.switches) ++counts[node->name];
  std::size_t shared = 0;
  for (const auto& [name, count] : counts) shared += count > 1 ? count : 0;
  return shared;
}

// Reads one of the files that go with a fabric, and keeps its warnings.
template <typename Read>
bool LoadFile(const std::string& path, LoadedInput& input, Read read) {
  Warnings warnings;
  input.error = read(warnings);
  if (input.error) return false;
  std::vector<std::string> lines = warnings.Lines(path == "-" ? "<stdin>" : path);
  std::move(lines.begin(), lines.end(), std::back_inserter(input.warnings));
  return true;
}

// The name map comes first: its names decide the order of a dump's nodes.
template <typename Load>
bool LoadFiles(const CheckOptions& options, FabricBuilder& builder, LoadedInput& input, Load load) {
  NodeNameMap names;
  if (!options.nodeNameMap.empty() &&
      !LoadFile(options.nodeNameMap, input, [&](Warnings& warnings) {
        return LoadNodeNameMap(options.nodeNameMap, names, warnings);
      })) {
    return false;
  }
  const bool loaded =
      LoadFile(options.fabric, input, [&](Warnings& warnings) { return load(names, warnings); });
  if (!loaded) return false;
  if (!options.ranks.empty() && !LoadFile(options.ranks, input, [&](Warnings& warnings) {
        return LoadRanks(options.ranks, builder, warnings);
      })) {
    return false;
  }
  if (!options.flids.empty() && !LoadFile(options.flids, input, [&](Warnings& warnings) {
        return LoadFlids(options.flids, builder, warnings);
      })) {
    return false;
  }
  if (options.locations.empty()) return true;
  auto locations = std::make_shared<Locations>();
  input.locations = locations;
  return LoadFile(options.locations, input, [&](Warnings& warnings) {
    return LoadLocations(options.locations, *locations, warnings);
  });
}

template <typename Load>
LoadedInput LoadAll(const CheckOptions& options, FabricBuilder& builder, Load load) {
  LoadedInput input;
  input.name = options.fabric;
  if (!LoadFiles(options, builder, input, load)) return input;
  input.fabric = builder.Build();
  input.switchesOfSharedName = CountSwitchesOfSharedName(*input.fabric);
  return input;
}

}  // namespace

LoadedInput LoadInput(const CheckOptions& options) {
  FabricBuilder builder;
  return LoadAll(options, builder, [&](const NodeNameMap& names, Warnings& warnings) {
    return LoadFabric(options.fabric, &names, options.specialNodes.get(), builder, warnings);
  });
}

LoadedInput LoadInput(const CheckOptions& options, std::string text) {
  FabricBuilder builder;
  Input open(options.fabric, std::move(text));
  return LoadAll(options, builder, [&](const NodeNameMap& names, Warnings& warnings) {
    return LoadFabric(open, &names, options.specialNodes.get(), builder, warnings);
  });
}

}  // namespace fabscope::internal
