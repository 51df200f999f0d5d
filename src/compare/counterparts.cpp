#include "compare/counterparts.h"

#include <map>
#include <string_view>
#include <utility>

namespace fabscope::internal {
namespace {

// The only node of a type and name; null where there are several.
using Places = std::map<std::pair<std::uint32_t, std::string_view>, const IBNode*>;

Places PlacesOf(const IBFabric& fabric) {
  Places places;
  for (const IBNode& node : fabric.GetNodes()) {
    const std::string_view name = node.name;
    const auto [place, isNew] = places.emplace(std::pair(node.nodeType, name), &node);
    if (!isNew) place->second = nullptr;
  }
  return places;
}

}  // namespace

Counterparts::Counterparts(const IBFabric& was, const IBFabric& is)
    : now_(was.GetNodes().size()), then_(is.GetNodes().size()) {
  for (const IBNode& node : was.GetNodes()) {
    const IBNode* same = is.getNodeByGuid(node.guid);
    if (same != nullptr && same->nodeType == node.nodeType) Join(node, *same);
  }
  const Places places = PlacesOf(is);
  for (const auto& [place, node] : PlacesOf(was)) {
    const auto found = places.find(place);
    if (node == nullptr || found == places.end() || found->second == nullptr) continue;
    if (Now(*node) == nullptr && Then(*found->second) == nullptr) Join(*node, *found->second);
  }
}

}  // namespace fabscope::internal
