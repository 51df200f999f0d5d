// Fabrics that are written and read again. A document holds all of the model. What a topology dump
// cannot hold, or a net file, whose lines are those of a dump, LossesOf names and counts; nothing
// else is lost: with all that it names taken out beforehand, a fabric comes back as it was.

#include <algorithm>
#include <gtest/gtest.h>
#include <map>
#include <memory>
#include <numeric>
#include <set>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "fabric/fabric_builder.h"
#include "formats/fabric_document.h"
#include "formats/input_text.h"
#include "formats/net_file_writer.h"
#include "formats/node_order.h"
#include "formats/topology_dump.h"
#include "formats/write_fabric.h"
#include "platform/reg_exp.h"
#include "reference/plain_model.h"
#include "reference/random_fabric.h"
#include "reference/random_source.h"

namespace fabscope::internal {
namespace {

using reference::ModelOf;
using reference::PlainFabric;
using reference::PlainNode;
using reference::PlainPort;

constexpr std::uint64_t firstSeed = 60'000;
constexpr std::uint64_t seeds = 500;

constexpr const char* latin1Name = "h\xf6st";

// Adds what the stage does not look at and formats stumble over.
PlainFabric FabricOf(std::uint64_t seed) {
  PlainFabric fabric = reference::RandomCase(seed).fabric;
  reference::RandomSource random(seed);
  const int percent = random.Pick<int>({0, 0, 5, 50});
  for (PlainNode& node : fabric.nodes) {
    if (random.Chance(percent)) {
      node.name = random.Pick<std::string>({"rack \"7\"", " Aggregation Node ", "# lid 3 4xHDR", "",
                                            std::string(70, 'x'), latin1Name, "\" lid 1 4xNDR"});
      if (random.Chance(50)) node.displayName = node.name;
    }
    if (random.Chance(percent)) node.special = !node.special;
    if (random.Chance(percent)) node.systemGuid = random.Pick<std::uint64_t>({0, 1, 0x2c903});
    for (auto& [num, port] : node.ports) {
      if (!random.Chance(percent)) continue;
      port.speed = random.Pick<std::uint32_t>({0, 0x1, 0x8, 0x100, 0x10000, 0x20000, 0x1000000});
    }
  }
  return fabric;
}

std::string Written(const IBFabric& fabric, FabricFormat format) {
  std::ostringstream text;
  WriteFabric(fabric, format, text);
  return text.str();
}

std::unique_ptr<IBFabric> ReadAgain(const IBFabric& fabric, FabricFormat format) {
  Input input("net", Written(fabric, format));
  FabricBuilder builder;
  Warnings warnings;
  const regExp specialNodes("Aggregation Node");
  MaybeError error;
  if (format == FabricFormat::Document) {
    InputText text;
    error = ReadAll(input, text);
    if (!error) error = LoadFabricDocument(text, nullptr, builder, warnings);
  } else {
    error = LoadTopologyDump(input, nullptr, &specialNodes, builder, warnings);
  }
  if (error) throw std::runtime_error(error->Text());
  return builder.Build();
}

// --- A fabric without what a line of LossesOf names. Each answers how many nodes, ports or
// aggregated ports were changed.

struct Lossy {
  PlainFabric& fabric;
  FabricFormat format;
};

std::string NameThere(const PlainNode& node, FabricFormat format) {
  return format == FabricFormat::NetFile ? NetFileName(node.name) : node.name;
}

template <typename Member, typename Value>
int ResetNodes(PlainFabric& fabric, Member PlainNode::*member, const Value& value) {
  int count = 0;
  for (PlainNode& node : fabric.nodes) {
    if (node.*member == Member(value)) continue;
    node.*member = Member(value);
    ++count;
  }
  return count;
}

template <typename Member, typename Value>
int ResetPorts(PlainFabric& fabric, Member PlainPort::*member, const Value& value) {
  int count = 0;
  for (PlainNode& node : fabric.nodes) {
    for (auto& [num, port] : node.ports) {
      if (port.*member == Member(value)) continue;
      port.*member = Member(value);
      ++count;
    }
  }
  return count;
}

int CutNames(Lossy lossy) {
  int count = 0;
  for (PlainNode& node : lossy.fabric.nodes) {
    const std::string name = NameThere(node, lossy.format);
    if (name == node.name) continue;
    if (node.displayName == node.name) node.displayName = name;
    node.name = name;
    ++count;
  }
  return count;
}

int ShowNames(Lossy lossy) {
  int count = 0;
  for (PlainNode& node : lossy.fabric.nodes) {
    if (node.displayName == node.name) continue;
    node.displayName = node.name;
    ++count;
  }
  return count;
}

int MarkByName(Lossy lossy) {
  int count = 0;
  for (PlainNode& node : lossy.fabric.nodes) {
    const std::string name = NameThere(node, lossy.format);
    const bool special = node.type == 1 && name.find("Aggregation Node") != std::string::npos;
    if (node.special != special) ++count;
    node.special = special;
  }
  return count;
}

int LosePlanes(Lossy lossy) {
  int count = 0;
  for (PlainNode& node : lossy.fabric.nodes) {
    if (node.suitablePlane == 1 && node.planes == std::set{1}) continue;
    node.suitablePlane = 1;
    node.planes = {1};
    ++count;
  }
  return count;
}

int LoseStates(Lossy lossy) {
  int count = 0;
  for (PlainNode& node : lossy.fabric.nodes) {
    for (auto& [num, port] : node.ports) {
      const std::uint32_t state = port.remoteNode < 0 ? 1 : 4;
      if (port.state != state) ++count;
      port.state = state;
    }
  }
  return count;
}

bool HasName(std::uint32_t speed) {
  const std::set<std::uint32_t> codes{0x1,   0x2,   0x4,     0x100,   0x200,
                                      0x400, 0x800, 0x10000, 0x20000, 0x1000000};
  return codes.contains(speed);
}

// A cable has one speed, which is that of one of its ends; a name, if one of them has.
int LoseSpeeds(Lossy lossy) {
  const auto read = ReadAgain(*ModelOf(lossy.fabric), lossy.format);
  const auto named = [](const PlainPort& port) { return HasName(port.speed) ? port.speed : 0; };
  std::map<const PlainPort*, std::uint32_t> speeds;
  for (const PlainNode& node : lossy.fabric.nodes) {
    for (const auto& [num, port] : node.ports) {
      std::uint32_t& speed = speeds[&port];
      if (port.remoteNode < 0) continue;
      const PlainNode& farNode = lossy.fabric.nodes[static_cast<std::size_t>(port.remoteNode)];
      const PlainPort& far = farNode.ports.at(port.remotePort);
      const IBPort* there = read->getNodeByGuid(node.guid)->getPort(static_cast<std::uint8_t>(num));
      speed = there->speed;
      EXPECT_EQ(speed, there->remotePort->speed);
      EXPECT_TRUE(speed == named(port) || speed == named(far)) << speed;
      EXPECT_EQ(speed == 0, named(port) == 0 && named(far) == 0) << speed;
    }
  }
  int count = 0;
  for (PlainNode& node : lossy.fabric.nodes) {
    for (auto& [num, port] : node.ports) {
      if (port.speed != speeds[&port]) ++count;
      port.speed = speeds[&port];
    }
  }
  return count;
}

int LoseAPorts(Lossy lossy) {
  const int count = static_cast<int>(lossy.fabric.aportAsymmetry.size());
  lossy.fabric.aportAsymmetry.clear();
  ResetPorts(lossy.fabric, &PlainPort::aport, -1);
  return count;
}

// Puts the nodes in that order; answers how many have another place.
int Reorder(PlainFabric& fabric, const std::vector<std::size_t>& order) {
  int count = 0;
  std::vector<int> newPlace(fabric.nodes.size());
  std::vector<PlainNode> nodes;
  for (std::size_t i = 0; i < order.size(); ++i) {
    newPlace[order[i]] = static_cast<int>(i);
    nodes.push_back(fabric.nodes[order[i]]);
    if (order[i] != i) ++count;
  }
  for (PlainNode& node : nodes) {
    for (auto& [num, port] : node.ports) {
      if (port.remoteNode < 0) continue;
      port.remoteNode = newPlace[static_cast<std::size_t>(port.remoteNode)];
    }
  }
  fabric.nodes = std::move(nodes);
  return count;
}

int LeaveOutNodesWithoutPorts(Lossy lossy) {
  std::vector<std::size_t> left;
  for (std::size_t i = 0; i < lossy.fabric.nodes.size(); ++i) {
    if (lossy.fabric.nodes[i].numPorts != 0) left.push_back(i);
  }
  const std::size_t count = lossy.fabric.nodes.size() - left.size();
  Reorder(lossy.fabric, left);
  return static_cast<int>(count);
}

int SortNodes(Lossy lossy) {
  PlainFabric& fabric = lossy.fabric;
  std::vector<std::size_t> order(fabric.nodes.size());
  std::iota(order.begin(), order.end(), std::size_t{0});
  std::sort(order.begin(), order.end(), [&](std::size_t a, std::size_t b) {
    const PlainNode& nodeA = fabric.nodes[a];
    const PlainNode& nodeB = fabric.nodes[b];
    return CompareNodeOrder(NameThere(nodeA, lossy.format).c_str(), nodeA.guid,
                            NameThere(nodeB, lossy.format).c_str(), nodeB.guid) < 0;
  });
  return Reorder(fabric, order);
}

const std::map<std::string, int (*)(Lossy)>& LossesByName() {
  static const std::map<std::string, int (*)(Lossy)> losses{
      {"full name", CutNames},
      {"display name", ShowNames},
      {"rank", [](Lossy lossy) { return ResetNodes(lossy.fabric, &PlainNode::smdbRank, 255); }},
      {"special flag (not stored; re-derived from the name)", MarkByName},
      {"multi-ASIC flag",
       [](Lossy lossy) { return ResetNodes(lossy.fabric, &PlainNode::multiAsic, false); }},
      {"ASIC", [](Lossy lossy) { return ResetNodes(lossy.fabric, &PlainNode::asic, ""); }},
      {"number of planes",
       [](Lossy lossy) { return ResetNodes(lossy.fabric, &PlainNode::planesNumber, 1); }},
      {"planes", LosePlanes},
      {"FLIDs",
       [](Lossy lossy) { return ResetNodes(lossy.fabric, &PlainNode::flids, std::set<int>()); }},
      {"state", LoseStates},
      {"speed", LoseSpeeds},
      {"not-symmetric flag",
       [](Lossy lossy) { return ResetPorts(lossy.fabric, &PlainPort::symmetric, true); }},
      {"FNM flag", [](Lossy lossy) { return ResetPorts(lossy.fabric, &PlainPort::fnm, false); }},
      {"FNM1 flag", [](Lossy lossy) { return ResetPorts(lossy.fabric, &PlainPort::fnm1, false); }},
      {"place outside of the sub-fabric",
       [](Lossy lossy) { return ResetPorts(lossy.fabric, &PlainPort::inSubFabric, true); }},
      {"plane multiplicity",
       [](Lossy lossy) { return ResetPorts(lossy.fabric, &PlainPort::planeMultiplicity, 1); }},
      {"group",
       [](Lossy lossy) {
         return ResetPorts(lossy.fabric, &PlainPort::group, std::optional<int>());
       }},
      {"ports and asymmetry mark", LoseAPorts},
      {"record (no ports)", LeaveOutNodesWithoutPorts},
      {"place in the order of nodes (re-derived from names and GUIDs)", SortNodes},
  };
  return losses;
}

// What a line says is lost: "2 nodes lose their FLIDs" is about FLIDs.
std::string NameOfLoss(const std::string& line) {
  for (const std::string verb : {" loses its ", " lose their "}) {
    const std::size_t at = line.find(verb);
    if (at != std::string::npos) return line.substr(at + verb.size());
  }
  return {};
}

class FabricFormats : public ::testing::TestWithParam<FabricFormat> {};

TEST_P(FabricFormats, LoseWhatIsNamedAndNothingElse) {
  const FabricFormat format = GetParam();
  std::set<std::string> seen;
  for (std::uint64_t seed = firstSeed; seed < firstSeed + seeds; ++seed) {
    SCOPED_TRACE(seed);
    PlainFabric fabric = FabricOf(seed);
    if (std::none_of(fabric.nodes.begin(), fabric.nodes.end(),
                     [](const PlainNode& node) { return node.numPorts != 0; })) {
      continue;
    }
    const auto model = ModelOf(fabric);
    for (const std::string& line : LossesOf(*model, format)) {
      const std::string name = NameOfLoss(line);
      const auto loss = LossesByName().find(name);
      ASSERT_NE(loss, LossesByName().end()) << line;
      ASSERT_EQ(loss->second({fabric, format}), std::stoi(line)) << line;
      seen.insert(name);
    }
    const auto rest = ModelOf(fabric);
    ASSERT_EQ(FabricDocumentText(*ReadAgain(*model, format)), FabricDocumentText(*rest));
    // Of this fabric nothing is lost any more.
    ASSERT_EQ(LossesOf(*rest, format), std::vector<std::string>());
    ASSERT_EQ(FabricDocumentText(*ReadAgain(*rest, format)), FabricDocumentText(*rest));
  }
  // A dump has names and nodes of all lengths.
  const std::size_t kinds = LossesByName().size();
  EXPECT_EQ(seen.size(), format == FabricFormat::NetFile ? kinds : kinds - 2);
}

INSTANTIATE_TEST_SUITE_P(All, FabricFormats,
                         ::testing::Values(FabricFormat::TopologyDump, FabricFormat::NetFile),
                         [](const auto& test) {
                           return test.param == FabricFormat::NetFile ? "NetFile" : "TopologyDump";
                         });

TEST(FabricDocuments, ComeBackAsTheyWereExceptForNamesThatAreNotUtf8) {
  int whole = 0;
  for (std::uint64_t seed = firstSeed; seed < firstSeed + seeds; ++seed) {
    SCOPED_TRACE(seed);
    const PlainFabric fabric = FabricOf(seed);
    const auto model = ModelOf(fabric);
    ASSERT_EQ(FabricDocumentText(*ReadAgain(*model, FabricFormat::Document)),
              FabricDocumentText(*model));
    const auto isLatin1 = [](const PlainNode& node) { return node.name == latin1Name; };
    const auto count = std::count_if(fabric.nodes.begin(), fabric.nodes.end(), isLatin1);
    std::vector<std::string> losses;
    if (count == 1) losses = {"1 node loses its bytes outside of UTF-8"};
    if (count > 1) losses = {std::to_string(count) + " nodes lose their bytes outside of UTF-8"};
    ASSERT_EQ(LossesOf(*model, FabricFormat::Document), losses);
    if (losses.empty()) ++whole;
  }
  EXPECT_GE(whole, 200);
  EXPECT_LE(whole, 450);
}

}  // namespace
}  // namespace fabscope::internal
