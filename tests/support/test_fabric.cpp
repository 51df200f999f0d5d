#include "support/test_fabric.h"

#include <stdexcept>
#include <utility>

namespace fabscope::internal {
namespace {

void Require(const FabricBuilder::Problem& problem) {
  if (problem) throw std::logic_error("test fabric: " + *problem);
}

std::string Numbered(const std::string& name, int a) { return name + std::to_string(a); }
std::string Numbered(const std::string& name, int a, int b) {
  return Numbered(name, a) + "." + std::to_string(b);
}
std::string Numbered(const std::string& name, int a, int b, int c) {
  return Numbered(name, a, b) + "." + std::to_string(c);
}

}  // namespace

TestFabric& TestFabric::Switch(const std::string& name, std::uint8_t numPorts) {
  NodeSpec spec;
  spec.name = name;
  spec.numPorts = numPorts;
  return Node(std::move(spec));
}

TestFabric& TestFabric::SwitchOfGuid(std::uint64_t guid, const std::string& name,
                                     std::vector<std::uint16_t> flids) {
  NodeSpec spec;
  spec.guid = guid;
  spec.name = name;
  spec.numPorts = 16;
  spec.flids = std::move(flids);
  return Node(std::move(spec));
}

TestFabric& TestFabric::Host(const std::string& name, std::uint8_t numPorts) {
  NodeSpec spec;
  spec.type = NodeTypeCA;
  spec.name = name;
  spec.numPorts = numPorts;
  return Node(std::move(spec));
}

TestFabric& TestFabric::Node(NodeSpec spec) {
  if (spec.guid == 0) spec.guid = nodes_.size() + 1;
  nodes_[spec.name] = {spec.guid, spec.numPorts};
  Require(builder_.AddNode(spec));
  return *this;
}

TestFabric& TestFabric::Link(const std::string& a, std::uint8_t aPort, const std::string& b,
                             std::uint8_t bPort, bool symmetric, std::uint32_t speed) {
  Require(builder_.AddLink(
      {{nodes_.at(a).first, aPort}, {nodes_.at(b).first, bPort}, speed, symmetric}));
  return *this;
}

std::uint8_t TestFabric::NextFreePort(const std::string& name) {
  const auto [guid, numPorts] = nodes_.at(name);
  for (unsigned num = 1; num <= numPorts; ++num) {
    if (!builder_.HasLink({builder_.FindNode(guid), static_cast<std::uint8_t>(num)})) {
      return static_cast<std::uint8_t>(num);
    }
  }
  throw std::logic_error("test fabric: no free port on " + name);
}

TestFabric& TestFabric::Cable(const std::string& a, const std::string& b, std::uint32_t speed) {
  return Link(a, NextFreePort(a), b, NextFreePort(b), true, speed);
}

TestFabric& TestFabric::Port(const std::string& node, const PortSpec& spec) {
  Require(builder_.SetPort(nodes_.at(node).first, spec));
  return *this;
}

TestFabric& TestFabric::AggregatedPort(
    const std::vector<std::pair<std::string, std::uint8_t>>& ports, std::uint64_t asymmetry) {
  std::vector<PortRef> members;
  for (const auto& [name, num] : ports) members.push_back({nodes_.at(name).first, num});
  Require(builder_.AddAPort(members, asymmetry));
  return *this;
}

IBFabric& TestFabric::Build() {
  if (!fabric_) fabric_ = builder_.Build();
  return *fabric_;
}

const IBNode* TestFabric::operator[](const std::string& name) {
  return Build().getNodeByGuid(nodes_.at(name).first);
}

void AddTwoLevelTree(TestFabric& fabric, int roots, int leaves, int hostsPerLeaf) {
  const auto leafPorts = static_cast<std::uint8_t>(roots + hostsPerLeaf + 4);
  for (int r = 0; r < roots; ++r) {
    fabric.Switch(Numbered("root", r), static_cast<std::uint8_t>(leaves + 4));
  }
  for (int l = 0; l < leaves; ++l) fabric.Switch(Numbered("leaf", l), leafPorts);
  for (int l = 0; l < leaves; ++l) {
    for (int h = 0; h < hostsPerLeaf; ++h) fabric.Host(Numbered("host", l, h));
  }
  for (int l = 0; l < leaves; ++l) {
    for (int h = 0; h < hostsPerLeaf; ++h)
      fabric.Cable(Numbered("leaf", l), Numbered("host", l, h));
    for (int r = 0; r < roots; ++r) fabric.Cable(Numbered("leaf", l), Numbered("root", r));
  }
}

void AddThreeLevelTree(TestFabric& fabric, int pods, int leavesPerPod, int midsPerPod,
                       int rootsPerGroup, int hostsPerLeaf) {
  const auto ports = [](int used) { return static_cast<std::uint8_t>(used + 4); };
  for (int r = 0; r < midsPerPod * rootsPerGroup; ++r) {
    fabric.Switch(Numbered("root", r), ports(pods));
  }
  for (int p = 0; p < pods; ++p) {
    for (int m = 0; m < midsPerPod; ++m) {
      fabric.Switch(Numbered("mid", p, m), ports(leavesPerPod + rootsPerGroup));
    }
  }
  for (int p = 0; p < pods; ++p) {
    for (int l = 0; l < leavesPerPod; ++l) {
      fabric.Switch(Numbered("leaf", p, l), ports(midsPerPod + hostsPerLeaf));
    }
  }
  for (int p = 0; p < pods; ++p) {
    for (int l = 0; l < leavesPerPod; ++l) {
      for (int h = 0; h < hostsPerLeaf; ++h) fabric.Host(Numbered("host", p, l, h));
    }
  }
  for (int p = 0; p < pods; ++p) {
    for (int l = 0; l < leavesPerPod; ++l) {
      for (int h = 0; h < hostsPerLeaf; ++h) {
        fabric.Cable(Numbered("leaf", p, l), Numbered("host", p, l, h));
      }
      for (int m = 0; m < midsPerPod; ++m) {
        fabric.Cable(Numbered("leaf", p, l), Numbered("mid", p, m));
      }
    }
    for (int m = 0; m < midsPerPod; ++m) {
      for (int r = 0; r < rootsPerGroup; ++r) {
        fabric.Cable(Numbered("mid", p, m), Numbered("root", m * rootsPerGroup + r));
      }
    }
  }
}

}  // namespace fabscope::internal
