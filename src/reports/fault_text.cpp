#include "reports/fault_text.h"

#include <algorithm>
#include <string_view>
#include <variant>
#include <vector>

#include "fabric/guid.h"

namespace fabscope::internal {

NodeNames::NodeNames(const IBFabric& fabric) {
  std::vector<std::string_view> names;
  names.reserve(fabric.GetNodes().size());
  for (const IBNode& node : fabric.GetNodes()) names.push_back(node.getAlternativeName());
  std::sort(names.begin(), names.end());
  for (auto name = names.begin(); name != names.end();) {
    const auto end = std::upper_bound(name, names.end(), *name);
    if (end - name > 1) shared_.push_back(*name);
    name = end;
  }
}

std::string NodeNames::Of(const IBNode& node) const {
  std::string name(node.getAlternativeName());
  if (!std::binary_search(shared_.begin(), shared_.end(), std::string_view(name))) return name;
  return name + " (" + GuidText(node.guid) + ")";
}

std::string NodeNames::Of(const IBNode& node, std::uint8_t port) const {
  return port == 0 ? Of(node) : Of(node) + " port: " + std::to_string(port);
}

std::string FaultText(const Fault& fault, const NodeNames& names) {
  std::vector<std::string> places;
  for (const Place& place : fault.places) places.push_back(names.Of(*place.node, place.port));
  return TagOf(LevelOf(*fault.finding)) +
         std::visit([&](const auto& found) { return found.FaultWords(places, fault.links); },
                    *fault.finding);
}

}  // namespace fabscope::internal
