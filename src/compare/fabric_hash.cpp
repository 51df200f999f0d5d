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

namespace fabscope {
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

std::string EndText(const IBPort& port) {
  const std::string number = std::to_string(port.num);
  return GuidText(port.node->guid) + " " + std::string(3 - number.size(), '0') + number;
}

// A line for each node and cable.
std::vector<std::string> LinesOf(const IBFabric& fabric) {
  std::vector<std::string> lines;
  for (const IBNode& node : fabric.GetNodes()) {
    std::string& line = lines.emplace_back("node ");
    line.append(GuidText(node.guid)).append(" ").append(std::to_string(node.nodeType));
  }
  for (const IBPort& port : fabric.GetPorts()) {
    if (port.remotePort == nullptr || !IsFirstEnd(port)) continue;
    const auto [first, second] = std::minmax({EndText(port), EndText(*port.remotePort)});
    lines.emplace_back("cable ").append(first).append(" ").append(second);
  }
  std::sort(lines.begin(), lines.end());
  return lines;
}

}  // namespace

std::string FabricHash(const IBFabric& fabric) {
  Sha256 hash;
  for (const std::string& line : LinesOf(fabric)) {
    hash.Add(line);
    hash.Add("\n");
  }
  return "sha256:" + hash.Take();
}

}  // namespace fabscope
