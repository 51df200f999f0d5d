#pragma once

#include "fabric/fabric_builder.h"
#include "formats/diagnostics.h"
#include "formats/input.h"
#include "formats/node_name_map.h"
#include "platform/reg_exp.h"

namespace fabscope::internal {

// Reads a topology dump as `ibnetdiscover` prints it (plain, or grouped by chassis) into an empty
// builder. `names` (may be null) replace the names in it before anything else looks at them;
// channel adapters whose name matches `specialNodes` (may be null) are special nodes.
//
// Nodes are ordered by name, digits as numbers, then by GUID, so that one fabric gives one model
// wherever its discovery started.
MaybeError LoadTopologyDump(Input& input, const NodeNameMap* names, const regExp* specialNodes,
                            FabricBuilder& builder, Warnings& warnings);
// The same without the fast reading of plain lines (PlainDumpLines): only slower, which is for
// tests to see.
MaybeError LoadTopologyDumpClosely(Input& input, const NodeNameMap* names,
                                   const regExp* specialNodes, FabricBuilder& builder,
                                   Warnings& warnings);

}  // namespace fabscope::internal
