#pragma once

#include <optional>
#include <ostream>
#include <string>
#include <string_view>
#include <vector>

#include "fabric/ib_fabric.h"

namespace fabscope::internal {

// What a fabric can be written as. The first two can be read again.
enum class FabricFormat {
  Document,      // the fabric document (JSON): all of the model
  TopologyDump,  // what ibnetdiscover prints
  NetFile,       // what the fabric simulator ibsim reads
  Dot,           // Graphviz
  GraphMl,       // GraphML, for graph libraries and editors
  Count_,
};

// The format of a name that a user gives: document, ibnetdiscover, ibsim, dot, graphml.
std::optional<FabricFormat> FabricFormatOfName(std::string_view name);
// The format that a file's ending tells: .json, .topo, .net, .dot or .gv, .graphml.
std::optional<FabricFormat> FabricFormatOfFile(std::string_view path);

// Whether all of it could be written is the stream's to say.
void WriteFabric(const IBFabric& fabric, FabricFormat format, std::ostream& stream);

// What of this fabric the format cannot hold, a line for each attribute with the number of nodes,
// ports or links that lose it ("12 nodes lose their FLIDs"); empty when all of it is kept.
std::vector<std::string> LossesOf(const IBFabric& fabric, FabricFormat format);

}  // namespace fabscope::internal
