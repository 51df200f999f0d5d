#pragma once

namespace fabscope::internal {

// How the memory of this process is handed out: for the begin of main.
void SetUpMemory();

}  // namespace fabscope::internal
