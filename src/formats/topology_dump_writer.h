#pragma once

#include <cstdint>
#include <ostream>

#include "fabric/ib_fabric.h"

namespace fabscope::internal {

// Writes a fabric as `ibnetdiscover` prints it, so that every tool that reads its dumps reads this
// one too: switches first, then channel adapters, then routers, each in model order.
//
// What a dump tells and the model does not is made up, always in the same way. The GUID of a port
// is its node's plus the port number. LIDs count from 1 in the order of the records: one for a
// switch, one for each cabled port of another node; when no LID is left, ports get 0, as those do
// that no subnet manager has numbered. The header has no date, so that the same fabric gives the
// same bytes. Cables are 4x wide.
void WriteTopologyDump(const IBFabric& fabric, std::ostream& stream);

// The speed that a port has when the dump is read again: a cable has one speed there, that of the
// end whose line comes first, or if it has none that of the other end.
std::uint32_t DumpedSpeed(const IBPort& port);

inline constexpr std::uint16_t LastUnicastLid = 0xbfff;

}  // namespace fabscope::internal
