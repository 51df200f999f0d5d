// The fabric as it will be. Steps are done one after another on a table of what is plugged into
// each changed port, so that a step which finds a port taken or a cable gone is seen where hands
// would see it.

#include <algorithm>
#include <array>
#include <map>
#include <set>
#include <utility>

#include "fabric/fabric_builder.h"
#include "fabric/fabric_copy.h"
#include "fabric/fabric_walk.h"
#include "repair/find_repairs.h"

namespace fabscope::internal {
namespace {

using Place = std::pair<std::uint32_t, std::uint8_t>;  // IBNode::index, port number

Place PlaceOf(const CableEnd& end) { return {end.node, end.port}; }

class Hands {
 public:
  explicit Hands(const IBFabric& fabric) : fabric_(fabric) {}

  bool Do(const RepairStep& step) {
    std::vector<std::uint32_t> speeds;
    for (const CableChange& change : step.cables) {
      std::uint32_t speed = 0;
      if (change.before && !Unplug(*change.before, speed)) return false;
      if (!change.before && change.after) speed = SpeedOfSibling(change.after->lower.node);
      speeds.push_back(speed);
    }
    for (std::size_t i = 0; i < step.cables.size(); ++i) {
      const CableChange& change = step.cables[i];
      if (change.after && !Plug(*change.after, speeds[i])) return false;
    }
    return true;
  }

  std::unique_ptr<IBFabric> Build() const {
    FabricBuilder builder;
    CopyFabric(
        fabric_,
        [this](const IBPort& port) {
          return !far_.contains({port.node->index, port.num});
        },
        builder);
    for (const auto& [place, far] : far_) {
      if (!far || *far < place) continue;
      const auto problem = builder.AddLink({place.first, place.second}, {far->first, far->second},
                                           speeds_.at(place), true);
      if (problem) return nullptr;
    }
    return builder.Build();
  }

 private:
  const IBPort* PortAt(const Place& place) const {
    const IBNode& node = fabric_.GetNodes()[place.first];
    return node.getPort(place.second);
  }
  bool Exists(const Place& place) const {
    if (place.first >= fabric_.GetNodes().size()) return false;
    const IBNode& node = fabric_.GetNodes()[place.first];
    return node.nodeType == NodeTypeSwitch && place.second != 0 && place.second <= node.numPorts;
  }
  // What is plugged in at the far end of the cable in that port.
  std::optional<Place> FarOf(const Place& place) const {
    if (const auto changed = far_.find(place); changed != far_.end()) return changed->second;
    const IBPort* port = PortAt(place);
    if (port == nullptr || port->remotePort == nullptr) return std::nullopt;
    return Place{port->remotePort->node->index, port->remotePort->num};
  }
  bool Unplug(const RepairCable& cable, std::uint32_t& speed) {
    const Place upper = PlaceOf(cable.upper);
    const Place lower = PlaceOf(cable.lower);
    if (!Exists(upper) || !Exists(lower) || FarOf(upper) != lower) return false;
    const auto changed = speeds_.find(upper);
    speed = changed != speeds_.end() ? changed->second : PortAt(upper)->speed;
    far_[upper] = far_[lower] = std::nullopt;
    return true;
  }
  bool Plug(const RepairCable& cable, std::uint32_t speed) {
    const Place upper = PlaceOf(cable.upper);
    const Place lower = PlaceOf(cable.lower);
    if (!Exists(upper) || !Exists(lower) || upper == lower) return false;
    if (FarOf(upper) || FarOf(lower)) return false;
    far_[upper] = lower;
    far_[lower] = upper;
    speeds_[upper] = speeds_[lower] = speed;
    return true;
  }
  std::uint32_t SpeedOfSibling(std::uint32_t node) const {
    for (const IBPort& port : fabric_.GetNodes()[node].ports) {
      if (GetRemoteSwitch(port) != nullptr) return port.speed;
    }
    return 0;
  }

  const IBFabric& fabric_;
  // Ports that steps have touched: where their cable leads now, if anywhere.
  std::map<Place, std::optional<Place>> far_;
  std::map<Place, std::uint32_t> speeds_;
};

}  // namespace

std::unique_ptr<IBFabric> ApplySteps(const IBFabric& fabric, std::span<const RepairStep> steps) {
  Hands hands(fabric);
  for (const RepairStep& step : steps) {
    if (!hands.Do(step)) return nullptr;
  }
  return hands.Build();
}

}  // namespace fabscope::internal
