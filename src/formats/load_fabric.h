#pragma once

#include <string>

#include "fabric/fabric_builder.h"
#include "formats/diagnostics.h"
#include "formats/input.h"
#include "formats/node_name_map.h"
#include "platform/reg_exp.h"

namespace fabscope::internal {

// Reads a fabric of any format into an empty builder; "-" is standard input. The format is found
// from the content: gzip of any format, a fabric document (first character "{"), otherwise a
// topology dump. `names` and `specialNodes` may be null; the latter is for dumps only, which do not
// tell special nodes. After an error the builder holds a part of the fabric.
MaybeError LoadFabric(const std::string& path, const NodeNameMap* names, const regExp* specialNodes,
                      FabricBuilder& builder, Warnings& warnings);
// The same of an input that is open.
MaybeError LoadFabric(Input& input, const NodeNameMap* names, const regExp* specialNodes,
                      FabricBuilder& builder, Warnings& warnings);

}  // namespace fabscope::internal
