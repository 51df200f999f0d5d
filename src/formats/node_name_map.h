#pragma once

#include <cstdint>
#include <map>
#include <string>

#include "formats/diagnostics.h"

namespace fabscope::internal {

// Names that an administrator gave to nodes, by node GUID.
using NodeNameMap = std::map<std::uint64_t, std::string>;

// Reads a node-name map in the form of the standard InfiniBand diagnostics: lines 0xGUID "name",
// with "#" comments and blank lines. As there, the first of two lines about one GUID holds. GUIDs
// that no fabric has are welcome: a map usually serves a whole site.
MaybeError LoadNodeNameMap(const std::string& path, NodeNameMap& names, Warnings& warnings);

// Replaces the name of a node where a map (may be null) has one for it; false where it has none.
bool TakeMappedName(const NodeNameMap* names, std::uint64_t guid, std::string& name);

}  // namespace fabscope::internal
