#include "reports/fault_text.h"

#include <algorithm>
#include <string_view>
#include <variant>
#include <vector>

#include "fabric/guid.h"
#include "fat_tree/group_label.h"

namespace fabscope::internal {

namespace {

std::string Join(const std::vector<std::string>& words, const char* last) {
  std::string text = words.front();
  for (std::size_t i = 1; i < words.size(); ++i) {
    text += (i + 1 == words.size() ? last : ", ") + words[i];
  }
  return text;
}

struct Words {
  const Fault& fault;
  std::vector<std::string> places;

  std::string operator()(const MissingLink&) const {
    return "missing link between " + Join(places, " and ");
  }
  std::string operator()(const InvalidLink&) const {
    return "invalid link between " + Join(places, " and ");
  }
  std::string operator()(const UnevenLinks& found) const {
    return places.front() + " has " + std::to_string(fault.links) +
           (found.isUp ? " uplinks" : " downlinks") + ", expected " +
           std::to_string(found.expected) + " among the " + (found.ofSpines ? "spines" : "lines") +
           " of its " + GroupName(found.isNeighborhood);
  }
  std::string operator()(const SuspectedBlocking& found) const {
    return std::string("suspected blocking in the ") + GroupName(found.isNeighborhood) + " of " +
           places.front() + ": " + std::to_string(found.spineUplinks) + " links go up, " +
           std::to_string(found.internalLinks) + " come from below";
  }
  std::string operator()(const AsymmetricAPorts& found) const {
    return std::string("asymmetric aggregated port") + (found.toHosts ? " to a host at " : " at ") +
           places.front();
  }
  std::string operator()(const SharedFlid& found) const {
    return "FLID " + std::to_string(found.flid) + " is in the neighborhoods of " +
           Join(places, " and ");
  }
};

}  // namespace

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
  const std::string& name = node.getAlternativeName();
  if (!std::binary_search(shared_.begin(), shared_.end(), std::string_view(name))) return name;
  return name + " (" + GuidText(node.guid) + ")";
}

std::string NodeNames::Of(const IBNode& node, std::uint8_t port) const {
  return port == 0 ? Of(node) : Of(node) + " port: " + std::to_string(port);
}

std::string FaultText(const Fault& fault, const NodeNames& names) {
  Words words{fault, {}};
  for (const Place& place : fault.places) {
    words.places.push_back(names.Of(*place.node, place.port));
  }
  return TagOf(LevelOf(*fault.finding)) + std::visit(words, *fault.finding);
}

}  // namespace fabscope::internal
