#pragma once

#include <gtest/gtest.h>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "fabric/fabric_walk.h"
#include "formats/load_fabric.h"
#include "formats/topology_dump.h"

namespace fabscope::internal {

inline std::string DataPath(const std::string& name) { return FABSCOPE_TEST_DATA "/" + name; }

inline std::string TypeText(const IBNode& node) {
  if (node.nodeType == NodeTypeSwitch) return "switch";
  return node.nodeType == NodeTypeCA ? "ca" : "router";
}

// A line for each node in model order, then one for each cable; what is usual is left out.
inline std::string ModelText(const IBFabric& fabric) {
  std::ostringstream text;
  text << std::hex;
  for (const IBNode& node : fabric.GetNodes()) {
    text << TypeText(node) << " 0x" << node.guid << " \"" << node.name << "\" ports "
         << std::to_string(node.numPorts);
    if (node.systemGuid != node.guid) text << " system 0x" << node.systemGuid;
    if (node.getAlternativeName() != node.name)
      text << " shown as \"" << node.getAlternativeName() << '"';
    text << (node.special ? " special\n" : "\n");
  }
  for (const IBPort& port : fabric.GetPorts()) {
    const IBPort* far = port.remotePort;
    if (far == nullptr || !IsFirstEnd(port)) continue;
    text << "0x" << port.node->guid << ':' << std::to_string(port.num) << " - 0x" << far->node->guid
         << ':' << std::to_string(far->num) << " speed 0x" << port.speed;
    if (far->speed != port.speed) text << " and 0x" << far->speed;
    text << (port.symmetric && far->symmetric ? "\n" : " not symmetric\n");
  }
  return text.str();
}

class TopologyDumpTest : public ::testing::Test {
 protected:
  std::string Load(const std::string& bytes) {
    FabricBuilder builder;
    Warnings found;
    Input input("net.topo", bytes);
    return Finish(LoadTopologyDump(input, &names, &specialNodes, builder, found), builder, found);
  }

  std::string LoadFile(const std::string& name) {
    FabricBuilder builder;
    Warnings found;
    return Finish(LoadFabric(DataPath(name), &names, &specialNodes, builder, found), builder,
                  found);
  }

  NodeNameMap names;
  regExp specialNodes{"Aggregation Node"};
  std::unique_ptr<IBFabric> fabric;
  std::vector<std::string> warnings;

 private:
  std::string Finish(const MaybeError& error, FabricBuilder& builder, const Warnings& found) {
    warnings = found.Lines("net.topo");
    if (error) return error->Text();
    fabric = builder.Build();
    return ModelText(*fabric);
  }
};

}  // namespace fabscope::internal
