#pragma once

#include <ostream>

#include "fabric/ib_fabric.h"

namespace fabscope::internal {

// A fabric as an undirected graph for other tools: a node for each switch, channel adapter and
// router, known by its GUID, and an edge for each cable. Between a channel adapter and anything
// else the adapter is the edge's far end, otherwise the node that comes later in the model.
//
// Control characters in names become "?", and bytes that are not valid UTF-8 become U+FFFD.

// For Graphviz. An edge is labelled with its ports at its ends and its speed in the middle.
void WriteDot(const IBFabric& fabric, std::ostream& stream);

// GraphML, for graph libraries and editors. The attributes of nodes are name, type ("switch", "ca",
// "router"), guid and ports (their number); those of edges are sourcePort, targetPort and speed.
void WriteGraphMl(const IBFabric& fabric, std::ostream& stream);

}  // namespace fabscope::internal
