#include "formats/link_speeds.h"

#include <algorithm>
#include <array>

namespace fabscope::internal {
namespace {

struct Speed {
  std::string_view name;
  std::uint32_t code;
};

constexpr std::array<Speed, 10> speeds{{{"SDR", 0x1},
                                        {"DDR", 0x2},
                                        {"QDR", 0x4},
                                        {"FDR", 0x100},
                                        {"EDR", 0x200},
                                        {"HDR", 0x400},
                                        {"NDR", 0x800},
                                        {"FDR10", 0x10000},
                                        {"EDR20", 0x20000},
                                        {"XDR", 0x1000000}}};

}  // namespace

std::optional<std::uint32_t> SpeedCode(std::string_view name) {
  for (const Speed& speed : speeds) {
    // Every cable's end has one: names are told apart by length and first letter, mostly.
    if (name.starts_with(speed.name.front()) && speed.name == name) return speed.code;
  }
  return std::nullopt;
}

bool IsPrefixOfSpeed(std::string_view text) {
  return std::any_of(speeds.begin(), speeds.end(),
                     [&](const Speed& speed) { return speed.name.starts_with(text); });
}

std::string_view SpeedName(std::uint32_t code) {
  for (const Speed& speed : speeds) {
    if (speed.code == code) return speed.name;
  }
  return {};
}

std::string SpeedText(std::uint32_t code) {
  const std::string_view name = SpeedName(code);
  if (!name.empty()) return std::string(name);
  return code == 0 ? std::string() : std::to_string(code);
}

std::string SpeedText(const IBPort& source, const IBPort& target) {
  if (source.speed == target.speed) return SpeedText(source.speed);
  return SpeedText(source.speed) + "/" + SpeedText(target.speed);
}

}  // namespace fabscope::internal
