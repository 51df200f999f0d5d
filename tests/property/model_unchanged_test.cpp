// The stage reads the model and never changes it.

#include <gtest/gtest.h>
#include <sstream>

#include "property/recount.h"
#include "property/stage_run.h"

namespace fabscope::internal {
namespace {

constexpr std::uint64_t firstSeed = 30'000;
constexpr std::uint64_t seeds = 1'000;

void Write(std::ostream& text, const IBPort& port) {
  text << "port " << &port << ' ' << int{port.num} << ' ' << port.remotePort << ' ' << port.node
       << ' ' << port.GetAPort() << ' ' << port.GetState() << ' ' << port.speed << ' '
       << port.GetPlaneMultiplicity() << ' ' << port.GetGroup().has_value()
       << (port.GetGroup() ? port.GetGroup()->number : 0) << ' ' << port.symmetric << port.fnm
       << port.fnm1 << port.inSubFabric << '\n';
}

void Write(std::ostream& text, const IBNode& node) {
  text << "node " << &node << ' ' << node.guid << ' ' << node.systemGuid << ' '
       << int{node.nodeType} << ' ' << int{node.smdbRank} << ' ' << int{node.numPorts} << ' '
       << node.special << node.multiAsic << ' ' << node.getPlanesNumber() << ' '
       << node.getSuitablePlane() << " '" << node.name << "' '" << node.getAlternativeName()
       << "' '" << node.getVortaSwitchASIC() << "' planes";
  for (const int plane : node.GetPlanes()) text << ' ' << plane;
  text << " flids";
  for (const int flid : node.GetFlids()) text << ' ' << flid;
  text << " ports " << node.ports.data();
  for (const IBPort& port : node.ports) text << ' ' << &port;
  text << '\n';
}

// Every field of everything, addresses included.
std::string Everything(const IBFabric& model) {
  std::ostringstream text;
  for (const IBNode* node : model.switches) text << "switch " << node << '\n';
  for (const IBNode& node : model.GetNodes()) Write(text, node);
  for (const IBPort& port : model.GetPorts()) Write(text, port);
  for (const APort& aport : model.GetAPorts()) {
    text << "aport " << &aport << ' ' << aport.asymmetry << '\n';
  }
  return text.str();
}

TEST(ModelUnchanged, ByBuildingValidatingAndDumping) {
  int validated = 0;
  for (std::uint64_t seed = firstSeed; seed < firstSeed + seeds; ++seed) {
    SCOPED_TRACE(seed);
    StageRun run(reference::RandomCase(seed));
    const std::string before = Everything(*run.model);
    run.Build();
    ASSERT_EQ(Everything(*run.model), before);
    run.Validate();
    ASSERT_EQ(Everything(*run.model), before);
    run.Dump();
    ASSERT_EQ(Everything(*run.model), before);
    if (run.validateStatus == 0) ++validated;
  }
  EXPECT_GE(validated, 400);
}

}  // namespace
}  // namespace fabscope::internal
