#include "platform/version.h"

namespace fabscope::internal {

const char* GetToolVersion() { return "fabscope " FABSCOPE_VERSION; }

}  // namespace fabscope::internal
