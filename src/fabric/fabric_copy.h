#pragma once

#include <functional>

#include "fabric/fabric_builder.h"

namespace fabscope::internal {

// Adds all of a fabric to an empty builder: its nodes in their order, its links, what its ports
// have of their own, its aggregated ports. Links are left out for which `keeps` answers false; it
// is asked with the first end of each (see IsFirstEnd).
void CopyFabric(const IBFabric& fabric, const std::function<bool(const IBPort&)>& keeps,
                FabricBuilder& builder);

}  // namespace fabscope::internal
