#pragma once

namespace fabscope::internal {

// "fabscope 1.2.3": how the tool names itself to people and in its results.
const char* GetToolVersion();

}  // namespace fabscope::internal
