#include "formats/load_fabric.h"

#include <algorithm>

#include "formats/fabric_formats.h"

namespace fabscope::internal {
namespace {

// The one that claims the input; where none does, the one that takes the rest.
const FormatEntry& FormatOf(Input& input) {
  const std::span<const FormatEntry> formats = AllFormats();
  const auto claims = [&input](const FormatEntry& entry) {
    return entry.detect != nullptr && entry.detect(input);
  };
  const auto takesRest = [](const FormatEntry& entry) {
    return entry.read != nullptr && entry.detect == nullptr;
  };
  const auto claimant = std::find_if(formats.begin(), formats.end(), claims);
  if (claimant != formats.end()) return *claimant;
  return *std::find_if(formats.begin(), formats.end(), takesRest);
}

}  // namespace

MaybeError LoadFabric(const std::string& path, const NodeNameMap* names, const regExp* specialNodes,
                      FabricBuilder& builder, Warnings& warnings) {
  Input input;
  if (MaybeError error = input.Open(path)) return error;
  return LoadFabric(input, names, specialNodes, builder, warnings);
}

MaybeError LoadFabric(Input& input, const NodeNameMap* names, const regExp* specialNodes,
                      FabricBuilder& builder, Warnings& warnings) {
  return FormatOf(input).read(input, names, specialNodes, builder, warnings);
}

}  // namespace fabscope::internal
