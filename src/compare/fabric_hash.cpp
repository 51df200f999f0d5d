#include "compare/fabric_hash.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <nettle/sha2.h>
#include <string_view>
#include <utility>
#include <vector>

#include "fabric/fabric_walk.h"
#include "fabric/guid.h"

namespace fabscope::internal {
namespace {

class Sha256 {
 public:
  Sha256() { sha256_init(&state_); }
  void Add(std::string_view text) {
    // Bytes of a text may be read as what they are.
    sha256_update(&state_, text.size(), reinterpret_cast<const std::uint8_t*>(text.data()));
  }
  std::string Take() {
    constexpr std::string_view digits = "0123456789abcdef";
    std::array<std::uint8_t, SHA256_DIGEST_SIZE> bytes{};
    sha256_digest(&state_, bytes.size(), bytes.data());
    std::string text;
    for (const std::uint8_t byte : bytes) {
      text += digits[byte >> 4U];
      text += digits[byte & 0xfU];
    }
    return text;
  }

 private:
  sha256_ctx state_{};
};

using End = std::pair<std::uint64_t, std::uint8_t>;  // GUID and port

End EndOf(const IBPort& port) { return {port.node->guid, port.num}; }

std::string EndText(const End& end) {
  const std::string number = std::to_string(end.second);
  return GuidText(end.first) + " " + std::string(3 - number.size(), '0') + number;
}

std::vector<std::pair<End, End>> SortedCables(const IBFabric& fabric) {
  std::vector<std::pair<End, End>> cables;
  for (const IBPort& port : fabric.GetPorts()) {
    if (port.remotePort == nullptr || !IsFirstEnd(port)) continue;
    cables.emplace_back(std::minmax({EndOf(port), EndOf(*port.remotePort)}));
  }
  std::sort(cables.begin(), cables.end());
  return cables;
}

std::vector<std::pair<std::uint64_t, int>> SortedNodes(const IBFabric& fabric) {
  std::vector<std::pair<std::uint64_t, int>> nodes;
  for (const IBNode& node : fabric.GetNodes()) nodes.emplace_back(node.guid, node.nodeType);
  std::sort(nodes.begin(), nodes.end());
  return nodes;
}

}  // namespace

// A line for each cable and node. Numbers have a fixed width, so that the lines are sorted, too.
std::string FabricHash(const IBFabric& fabric) {
  Sha256 hash;
  for (const auto& [first, second] : SortedCables(fabric)) {
    hash.Add("cable " + EndText(first) + " " + EndText(second) + "\n");
  }
  for (const auto& [guid, type] : SortedNodes(fabric)) {
    hash.Add("node " + GuidText(guid) + " " + std::to_string(type) + "\n");
  }
  return "sha256:" + hash.Take();
}

}  // namespace fabscope::internal
