// A perfect tree, laid out by coordinates.
//
// A node of level l is told by h digits, d_1 to d_h. Digit d_i counts children (below m_i) where
// the node lies under level i, and parents (below w_i) where it does not. A node of level l - 1 and
// one of level l are cabled exactly if all their digits but d_l agree: the child's d_l says which
// child it is, the parent's which parent. So in XGFT(2; 2,3; 1,2), two spines over three leaves of
// two hosts, leaf (d_2 = 0..2) is cabled to spine (d_2 = 0..1), each to each.
//
// The top digit d_h is the most significant one of a node's number on its level. Below the roots it
// names the pod, so the nodes of a pod stand together.

#include <algorithm>
#include <string>

#include "synthetic/fabric_plan.h"

namespace fabscope::internal {
namespace {

// GUIDs with the local bit set: nobody's hardware has them.
constexpr std::uint64_t switchGuids = 0x0200000100000000;
constexpr std::uint64_t hostGuids = 0x0200000200000000;
constexpr unsigned levelShift = 24;  // above it the number of the chip, see FabricPlan

std::string Numbered(const std::string& what, std::uint64_t index, std::uint64_t count) {
  std::string number = std::to_string(index + 1);
  const std::size_t width = std::max<std::size_t>(2, std::to_string(count).size());
  return what + std::string(width - number.size(), '0') + number;
}

class TreePlanner {
 public:
  TreePlanner(const TreeShape& shape, std::uint32_t speed) : shape_(shape), speed_(speed) {}

  FabricPlan Plan() {
    plan_.levels = static_cast<int>(shape_.Levels());
    plan_.planes = shape_.planes;
    for (std::size_t level = shape_.Levels() + 1; level-- > 0;) AddLevel(level);
    for (std::size_t level = shape_.Levels(); level > 0; --level) CableLevel(level);
    return std::move(plan_);
  }

 private:
  unsigned Limit(std::size_t level, std::size_t digit) const {
    return digit <= level ? shape_.parents[digit - 1] : shape_.children[digit - 1];
  }
  // How far apart on a level two nodes stand that differ by one in a digit.
  std::size_t Stride(std::size_t level, std::size_t digit) const {
    std::size_t stride = 1;
    for (std::size_t i = 1; i < digit; ++i) stride *= Limit(level, i);
    return stride;
  }
  std::size_t Digit(std::size_t level, std::size_t index, std::size_t digit) const {
    return index / Stride(level, digit) % Limit(level, digit);
  }

  void AddLevel(std::size_t level);
  std::string SwitchName(std::size_t level, std::size_t index) const;
  void CableLevel(std::size_t level);
  void CableToParents(std::size_t level, std::size_t child);

  const TreeShape& shape_;
  std::uint32_t speed_;
  FabricPlan plan_;
  std::vector<std::size_t> firstOfLevel_ = std::vector<std::size_t>(shape_.Levels() + 1);
};

std::string TreePlanner::SwitchName(std::size_t level, std::size_t index) const {
  const std::size_t top = shape_.Levels();
  const std::uint64_t count = shape_.NodesOnLevel(level);
  if (level == top && top > 1) return Numbered("spine", index, count);
  if (top <= 2) return Numbered("leaf", index, count);

  const std::size_t pods = shape_.children[top - 1];
  const std::size_t perPod = Stride(level, top);
  const std::string pod = Numbered("pod", index / perPod, pods) + "-";
  const std::size_t place = index % perPod;
  if (level == 1) return pod + Numbered("leaf", place, perPod);
  if (level == 2) return pod + Numbered("agg", place, perPod);
  if (level == 3) return pod + Numbered("core", place, perPod);
  return pod + Numbered("tier" + std::to_string(level) + "-", place, perPod);
}

void TreePlanner::AddLevel(std::size_t level) {
  const std::size_t top = shape_.Levels();
  firstOfLevel_[level] = plan_.nodes.size();
  const std::uint64_t count = shape_.NodesOnLevel(level);
  for (std::size_t index = 0; index < count; ++index) {
    PlannedNode node;
    if (level == 0) {
      node.spec.guid = hostGuids + index + 1;
      node.spec.type = NodeTypeCA;
      node.spec.name = Numbered("host", index, count);
      node.spec.numPorts = static_cast<std::uint8_t>(shape_.parents[0]);
    } else {
      node.spec.guid = switchGuids + (std::uint64_t{level} << levelShift) + index + 1;
      node.spec.name = SwitchName(level, index);
      node.spec.numPorts = static_cast<std::uint8_t>(shape_.PortsOnLevel(level));
      node.rank = static_cast<int>(top - level);
    }
    if (level < top) node.pod = Digit(level, index, top);
    if (level == 1 && top > 1) {
      // All digits but the one that tells leaves of the same parents apart.
      const std::size_t stride = Stride(1, 2);
      node.leafGroup = index / (stride * Limit(1, 2)) * stride + index % stride;
    }
    plan_.nodes.push_back(std::move(node));
  }
}

void TreePlanner::CableLevel(std::size_t level) {
  const std::uint64_t count = shape_.NodesOnLevel(level - 1);
  for (std::size_t child = 0; child < count; ++child) CableToParents(level, child);
}

// Parents and children agree in all digits but that of the parents' level, below which (and so in
// whose stride) their numbers are alike too.
void TreePlanner::CableToParents(std::size_t level, std::size_t child) {
  const std::size_t stride = Stride(level - 1, level);
  const std::size_t below = child % stride;
  const std::size_t above = child / stride / Limit(level - 1, level);
  const std::size_t place = Digit(level - 1, child, level);
  const unsigned width = shape_.CablesBelow(level);
  const unsigned firstUpPort = level == 1 ? 0 : shape_.DownPorts(level - 1);
  for (unsigned parent = 0; parent < Limit(level, level); ++parent) {
    const std::size_t upper = (above * Limit(level, level) + parent) * stride + below;
    for (unsigned i = 0; i < width; ++i) {
      const auto upperPort = static_cast<std::uint8_t>(place * width + i + 1);
      const auto lowerPort = static_cast<std::uint8_t>(firstUpPort + parent * width + i + 1);
      plan_.AddCable({{firstOfLevel_[level] + upper, upperPort},
                      {firstOfLevel_[level - 1] + child, lowerPort},
                      speed_});
    }
  }
}

}  // namespace

FabricPlan PlanTree(const TreeShape& shape, std::uint32_t speed) {
  return TreePlanner(shape, speed).Plan();
}

}  // namespace fabscope::internal
