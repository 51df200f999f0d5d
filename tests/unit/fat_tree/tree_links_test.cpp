#include "fat_tree/tree_links.h"

#include <gmock/gmock.h>
#include <string>
#include <vector>

#include "support/test_fabric.h"

namespace fabscope::internal {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class TreeLinksTest : public ::testing::Test {
 protected:
  // "3 to root port 7"
  std::vector<std::string> Links(const std::string& name) {
    std::vector<std::string> texts;
    const TreeLinks links(fabric.Build());
    for (const TreeLink& link : links.Of(*fabric[name])) {
      texts.push_back(std::to_string(link.port) + " to " +
                      std::string(fabric.Build().GetNodes()[link.remote].name) + " port " +
                      std::to_string(link.remotePort));
    }
    return texts;
  }

  void SetPort(const std::string& node, std::uint8_t num, void (*change)(PortSpec&)) {
    PortSpec spec;
    spec.num = num;
    change(spec);
    fabric.Port(node, spec);
  }

  TestFabric fabric;
};

TEST_F(TreeLinksTest, LinksStandInPortOrderWithBothPortNumbers) {
  fabric.Switch("leaf", 255).Switch("a").Switch("b").Host("host");
  fabric.Link("leaf", 255, "a", 1).Link("leaf", 9, "b", 16).Link("leaf", 2, "a", 7);
  fabric.Link("leaf", 1, "host", 1).Link("leaf", 20, "leaf", 21);
  EXPECT_THAT(Links("leaf"), ElementsAre("2 to a port 7", "9 to b port 16", "20 to leaf port 21",
                                         "21 to leaf port 20", "255 to a port 1"));
  EXPECT_THAT(Links("b"), ElementsAre("16 to leaf port 9"));
  EXPECT_THAT(Links("host"), IsEmpty());
}

TEST_F(TreeLinksTest, ASwitchWithoutCablesHasNoLinks) {
  fabric.Switch("alone").Switch("zero", 0);
  EXPECT_THAT(Links("alone"), IsEmpty());
  EXPECT_THAT(Links("zero"), IsEmpty());
}

TEST_F(TreeLinksTest, FnmPortsAndAsymmetricLinksAreNoLinks) {
  fabric.Switch("leaf").Switch("root");
  for (const std::uint8_t num : std::vector<std::uint8_t>{1, 2, 5})
    fabric.Link("leaf", num, "root", num);
  fabric.Link("leaf", 4, "root", 4, /*symmetric=*/false);
  SetPort("leaf", 1, [](PortSpec& port) { port.fnm = true; });
  SetPort("leaf", 2, [](PortSpec& port) { port.fnm1 = true; });
  EXPECT_THAT(Links("leaf"), ElementsAre("5 to root port 5"));
  // From the far end each cable is looked at by itself.
  EXPECT_THAT(Links("root"),
              ElementsAre("1 to leaf port 1", "2 to leaf port 2", "5 to leaf port 5"));
}

TEST_F(TreeLinksTest, HostsAreChannelAdaptersThatAreNotSpecial) {
  NodeSpec special;
  special.type = NodeTypeCA;
  special.name = "special";
  special.numPorts = 1;
  special.special = true;
  NodeSpec router;
  router.type = NodeTypeRouter;
  router.name = "router";
  router.numPorts = 1;
  fabric.Switch("leaf").Host("host", 3).Node(special).Node(router);
  fabric.Cable("leaf", "host").Cable("leaf", "special").Cable("leaf", "router");
  fabric.Cable("leaf", "host").Link("leaf", 9, "host", 3, /*symmetric=*/false);
  const TreeLinks links(fabric.Build());
  EXPECT_EQ(links.HostCables(*fabric["leaf"]), 2U);
  EXPECT_EQ(links.Hosts(*fabric["leaf"]), 2U);
  EXPECT_EQ(links.HostCables(*fabric["host"]), 0U);
}

TEST_F(TreeLinksTest, AMultiAsicSwitchCountsAHostOfGroupedPortsOnce) {
  NodeSpec leaf;
  leaf.name = "leaf";
  leaf.numPorts = 8;
  leaf.multiAsic = true;
  fabric.Node(leaf).Host("grouped", 3).Host("plain", 2);
  fabric.Cable("leaf", "grouped").Cable("leaf", "grouped").Cable("leaf", "grouped");
  fabric.Cable("leaf", "plain").Cable("leaf", "plain");
  for (const std::uint8_t num : std::vector<std::uint8_t>{1, 2, 3}) {
    SetPort("grouped", num, [](PortSpec& port) { port.group = 1; });
  }
  SetPort("plain", 1, [](PortSpec& port) { port.group = 0; });
  const TreeLinks links(fabric.Build());
  EXPECT_EQ(links.HostCables(*fabric["leaf"]), 5U);
  EXPECT_EQ(links.Hosts(*fabric["leaf"]), 3U);
}

TEST_F(TreeLinksTest, PlanePortsAreToldOfSwitchesThatHaveAny) {
  fabric.Switch("plain").Switch("planes");
  SetPort("planes", 16, [](PortSpec& port) { port.planeMultiplicity = 2; });
  SetPort("plain", 16, [](PortSpec& port) { port.planeMultiplicity = 1; });
  const TreeLinks links(fabric.Build());
  EXPECT_TRUE(links.HasPlanePorts(*fabric["planes"]));
  EXPECT_FALSE(links.HasPlanePorts(*fabric["plain"]));
}

}  // namespace
}  // namespace fabscope::internal
