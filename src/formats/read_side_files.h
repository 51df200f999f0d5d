#pragma once

#include "fabric/fabric_builder.h"
#include "formats/diagnostics.h"
#include "formats/input.h"
#include "formats/locations.h"
#include "formats/node_name_map.h"

namespace fabscope::internal {

// What side_files.h, node_name_map.h and locations.h load by path, of inputs that are open.
MaybeError ReadRanks(Input& input, FabricBuilder& builder, Warnings& warnings);
MaybeError ReadFlids(Input& input, FabricBuilder& builder, Warnings& warnings);
MaybeError ReadLocations(Input& input, Locations& locations, Warnings& warnings);
MaybeError ReadNodeNameMap(Input& input, NodeNameMap& names, Warnings& warnings);

}  // namespace fabscope::internal
