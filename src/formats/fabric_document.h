#pragma once

#include <string>

#include "fabric/fabric_builder.h"
#include "formats/diagnostics.h"
#include "formats/input_text.h"
#include "formats/node_name_map.h"

namespace fabscope::internal {

// The fabric document: all of the model as JSON. The order of its nodes is the model's order.

// Whether an input begins as a document does, with "{". Consumes nothing.
bool IsFabricDocument(Input& input);

// Reads a document into an empty builder. `names` (may be null) replace name and display name of
// the nodes that they know. Unknown and repeated keys, values of the wrong kind or out of range,
// and whatever FabricBuilder refuses are errors; texts that are cut are warnings.
MaybeError LoadFabricDocument(const InputText& input, const NodeNameMap* names,
                              FabricBuilder& builder, Warnings& warnings);

// The document of a fabric, a line for each node, link and aggregated port. What has its default
// value is left out. Names that are not valid UTF-8 have the bytes at fault replaced by U+FFFD.
std::string FabricDocumentText(const IBFabric& fabric);

}  // namespace fabscope::internal
