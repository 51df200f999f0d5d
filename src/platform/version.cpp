#include "platform/version.h"

namespace fabscope {

const char* GetToolVersion() { return "fabscope " FABSCOPE_VERSION; }

}  // namespace fabscope
