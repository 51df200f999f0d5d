#pragma once

#include <ostream>
#include <string>
#include <string_view>

#include "fabric/ib_fabric.h"

namespace fabscope::internal {

// Writes a fabric as a net file of the fabric simulator ibsim. Its lines are those of a topology
// dump, so that it can be read like one; they say no more than the simulator takes from them:
//
//   - Tools attach to the first node of the file, where it is a channel adapter at its first port.
//     So the first channel adapter whose first port leads to a switch comes first, and the others
//     follow in model order. Of planes that only meet in adapters a tool sees the one at that port.
//   - The head tells the numbers of nodes, switches and ports that the simulator must be started
//     with; by itself it has room for 256 switches.
//   - The simulator knows the speeds from SDR to HDR. FDR10 shows as QDR, any cable of a router as
//     SDR, and of a newer or unknown speed it complains and takes SDR; the file tells the true one
//     all the same.
//   - It refuses a file with a node that has no port. Such nodes, which no cable can reach, are
//     left out.
void WriteNetFile(const IBFabric& fabric, std::ostream& stream);

// A node's name as a net file can hold it: at most 63 bytes, with single quotes for double ones.
std::string NetFileName(std::string_view name);

}  // namespace fabscope::internal
