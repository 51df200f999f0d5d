#pragma once

#include <string>

#include "fabric/fabric_builder.h"
#include "formats/diagnostics.h"

namespace fabscope::internal {

// Side files are CSV: a header line, the columns in any order, "#" comments and blank lines. A GUID
// that is no switch of the fabric is a warning, a malformed line an error. They are applied to a
// builder that has its nodes; what stands before an error has been applied.

// Columns guid and rank (0 to 255). Replaces all ranks the fabric had; switches that are not named
// get 255; of two lines about one switch the last holds.
MaybeError LoadRanks(const std::string& path, FabricBuilder& builder, Warnings& warnings);

// Columns guid and flid (0 to 65535), a line for each FLID. Adds to those the fabric has.
MaybeError LoadFlids(const std::string& path, FabricBuilder& builder, Warnings& warnings);

}  // namespace fabscope::internal
