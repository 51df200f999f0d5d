#pragma once

#include <memory>

#include "fabric/ib_fabric.h"
#include "reference/plain_fabric.h"

namespace fabscope::internal::reference {

// The fabric as the stage's model. A plain fabric that the model refuses is a mistake in the test,
// and is thrown.
std::unique_ptr<IBFabric> ModelOf(const PlainFabric& fabric);

}  // namespace fabscope::internal::reference
