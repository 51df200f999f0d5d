#pragma once

#include <cstdint>
#include <functional>
#include <fuzzer/FuzzedDataProvider.h>
#include <memory>
#include <string>
#include <vector>

#include "fabric/fabric_builder.h"

namespace fabscope::internal::fuzz {

// Of what a fabric is made. All parts go together: a builder takes them in any order that puts the
// nodes first.
struct FabricParts {
  struct Port {
    std::uint64_t guid = 0;
    PortSpec spec;
  };
  struct AggregatedPort {
    std::vector<PortRef> ports;
    std::uint64_t asymmetry = 0;
  };

  std::vector<NodeSpec> nodes;
  std::vector<LinkSpec> links;
  std::vector<Port> ports;
  std::vector<AggregatedPort> aports;
};

std::unique_ptr<IBFabric> BuildFabric(const FabricParts& parts);

// A name for a node, as the bytes say.
using MakeName = std::function<std::string(FuzzedDataProvider& bytes)>;

// Something that was a fat tree of 1 to 4 levels with hosts, once, with up to 6 switches a level
// and changes as the bytes say: cables and attributes of all kinds, on nodes and ports. The changes
// take all the bytes.
FabricParts MakeTree(FuzzedDataProvider& bytes, const MakeName& makeName);

}  // namespace fabscope::internal::fuzz
