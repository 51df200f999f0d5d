// The whole stage over random fabrics: up to 24 switches and hosts, cabled and marked as the bytes
// say. No fabric may bring it down, and none may take it for ever.

#include <fuzzer/FuzzedDataProvider.h>
#include <sstream>

#include "fabric/fabric_builder.h"
#include "fat_tree/topology.h"

namespace {

using namespace fabscope::internal;

std::unique_ptr<IBFabric> MakeFabric(FuzzedDataProvider& bytes) {
  constexpr std::uint8_t portCount = 12;
  FabricBuilder builder;
  const auto nodeCount = bytes.ConsumeIntegralInRange<std::uint64_t>(1, 24);
  for (std::uint64_t guid = 1; guid <= nodeCount; ++guid) {
    NodeSpec node;
    node.guid = guid;
    node.type = bytes.ConsumeBool() ? NodeTypeSwitch
                                    : bytes.ConsumeIntegralInRange(NodeTypeCA, NodeTypeRouter);
    node.name = "n" + std::to_string(guid);
    node.numPorts = portCount;
    node.smdbRank = bytes.ConsumeIntegralInRange<std::uint8_t>(0, 3);
    node.special = bytes.ConsumeIntegralInRange(0, 7) == 0;
    node.multiAsic = bytes.ConsumeIntegralInRange(0, 7) == 0;
    node.suitablePlane = bytes.ConsumeIntegralInRange(1, 2);
    node.flids.push_back(bytes.ConsumeIntegralInRange<std::uint16_t>(1, 4));
    (void)builder.AddNode(node);
  }
  const auto port = [&] {
    return PortRef{bytes.ConsumeIntegralInRange<std::uint64_t>(1, nodeCount),
                   bytes.ConsumeIntegralInRange<std::uint8_t>(1, portCount)};
  };
  while (bytes.remaining_bytes() > 0) {
    const PortRef a = port();
    switch (bytes.ConsumeIntegralInRange(0, 5)) {
      case 0: {
        PortSpec spec;
        spec.num = a.num;
        spec.fnm = bytes.ConsumeIntegralInRange(0, 3) == 0;
        spec.symmetric = bytes.ConsumeIntegralInRange(0, 3) != 0;
        spec.planeMultiplicity = bytes.ConsumeIntegralInRange(0, 4);
        spec.group = bytes.ConsumeIntegralInRange(0, 2);
        (void)builder.SetPort(a.guid, spec);
        break;
      }
      case 1: {
        const std::vector<PortRef> members{a, port()};
        (void)builder.AddAPort(members, bytes.ConsumeIntegralInRange<std::uint64_t>(0, 1));
        break;
      }
      default:
        (void)builder.AddLink({a, port(), 0x400, true});
    }
  }
  return builder.Build();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  FuzzedDataProvider bytes(data, size);
  const int mergePercent = bytes.ConsumeIntegralInRange(0, 100);
  const bool automaticRoots = bytes.ConsumeBool();
  const auto fabric = MakeFabric(bytes);

  std::ostringstream output;
  std::vector<FabricErrGeneral*> errors;
  std::string message;
  FTTopology topology(fabric.get(), &output, mergePercent);
  const int status = automaticRoots ? topology.Build(errors, message, 5, 1 + mergePercent % 3)
                                    : topology.Build(errors, message);
  if (status == 0 && topology.Validate(errors, message) == 0) topology.Dump();
  for (FabricErrGeneral* error : errors) {
    error->GetErrorLine();
    error->GetCSVErrorLine();
    delete error;
  }
  return 0;
}
