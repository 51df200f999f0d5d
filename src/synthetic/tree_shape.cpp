#include "synthetic/tree_shape.h"

#include <algorithm>
#include <charconv>
#include <limits>

namespace fabscope::internal {
namespace {

constexpr std::uint64_t maxNodes = std::uint64_t{1} << 20;
constexpr unsigned maxPorts = 255;
constexpr std::size_t maxLevels = 8;
constexpr unsigned maxPlanes = 16;

// A product that stays at the greatest number instead of running over.
std::uint64_t Times(std::uint64_t a, std::uint64_t b) {
  constexpr std::uint64_t greatest = std::numeric_limits<std::uint64_t>::max();
  return b != 0 && a > greatest / b ? greatest : a * b;
}

// Takes numbers and separators off the front of a text.
class NotationReader {
 public:
  explicit NotationReader(std::string_view text) : text_(text) {}

  bool TakeNumber(unsigned& number) {
    SkipBlanks();
    const auto [end, status] = std::from_chars(text_.data(), text_.data() + text_.size(), number);
    if (status != std::errc()) return false;
    text_.remove_prefix(static_cast<std::size_t>(end - text_.data()));
    return true;
  }
  bool Take(char separator) {
    SkipBlanks();
    if (text_.empty() || text_.front() != separator) return false;
    text_.remove_prefix(1);
    return true;
  }
  bool TakeList(std::vector<unsigned>& numbers, unsigned count) {
    for (unsigned i = 0; i < count; ++i) {
      unsigned number = 0;
      if (i > 0 && !Take(',')) return false;
      if (!TakeNumber(number)) return false;
      numbers.push_back(number);
    }
    return true;
  }
  bool AtEnd() {
    SkipBlanks();
    return text_.empty();
  }

 private:
  void SkipBlanks() { text_.remove_prefix(std::min(text_.find_first_not_of(" \t"), text_.size())); }

  std::string_view text_;
};

}  // namespace

// A node of a level is told by a number below m_i for each level above it and one below w_i for
// each level up to its own.
std::uint64_t TreeShape::NodesOnLevel(std::size_t level) const {
  std::uint64_t count = 1;
  for (std::size_t i = 0; i < Levels(); ++i) {
    count = Times(count, i < level ? parents[i] : children[i]);
  }
  return count;
}

std::uint64_t TreeShape::SwitchCount() const {
  std::uint64_t count = 0;
  for (std::size_t level = 1; level <= Levels(); ++level) count += NodesOnLevel(level);
  return count;
}

unsigned TreeShape::DownPorts(std::size_t level) const {
  return children[level - 1] * CablesBelow(level);
}

unsigned TreeShape::UpPorts(std::size_t level) const {
  return level == Levels() ? 0 : parents[level] * CablesBelow(level + 1);
}

unsigned TreeShape::PortsOnLevel(std::size_t level) const {
  return std::max(radix, DownPorts(level) + UpPorts(level));
}

std::optional<std::string> ProblemOf(const TreeShape& shape) {
  if (shape.Levels() == 0 || shape.Levels() > maxLevels) {
    return "a tree has 1 to " + std::to_string(maxLevels) + " levels of switches";
  }
  for (const std::vector<unsigned>* numbers : {&shape.children, &shape.parents}) {
    for (const unsigned number : *numbers) {
      if (number == 0 || number > maxPorts) {
        return "children and parents of a switch are 1 to " + std::to_string(maxPorts);
      }
    }
  }
  if (shape.parallel == 0 || shape.parallel > maxPorts) {
    return "parallel cables are 1 to " + std::to_string(maxPorts);
  }
  if (shape.planes == 0 || shape.planes > maxPlanes) {
    return "planes are 1 to " + std::to_string(maxPlanes);
  }
  if (const unsigned ports = shape.parents.front() * shape.planes; ports > maxPorts) {
    return "a host would need " + std::to_string(ports) + " ports, but no host has more than " +
           std::to_string(maxPorts);
  }
  for (std::size_t level = 1; level <= shape.Levels(); ++level) {
    if (const unsigned ports = shape.PortsOnLevel(level); ports > maxPorts) {
      return "a switch of level " + std::to_string(level) + " would need " + std::to_string(ports) +
             " ports, but no switch has more than " + std::to_string(maxPorts);
    }
  }
  std::uint64_t nodes = 0;
  for (std::size_t level = 0; level <= shape.Levels(); ++level) {
    const unsigned chips = level == 0 ? 1 : shape.planes;
    nodes += chips * std::min(shape.NodesOnLevel(level), maxNodes + 1);
  }
  if (nodes > maxNodes) {
    return "the tree would have more than " + std::to_string(maxNodes) + " nodes";
  }
  return std::nullopt;
}

std::optional<std::string> ParseXgft(std::string_view text, TreeShape& shape) {
  NotationReader reader(text);
  unsigned levels = 0;
  TreeShape parsed;
  const bool complete = reader.TakeNumber(levels) && levels <= maxLevels && reader.Take(';') &&
                        reader.TakeList(parsed.children, levels) && reader.Take(';') &&
                        reader.TakeList(parsed.parents, levels) && reader.AtEnd();
  if (!complete) {
    return "expected \"h; m1,...,mh; w1,...,wh\": the number of levels, then for each the children "
           "of its switches, then for each the parents of the nodes below";
  }
  shape.children = std::move(parsed.children);
  shape.parents = std::move(parsed.parents);
  return std::nullopt;
}

TreeShape RadixTree(unsigned levels, unsigned radix, unsigned pods, unsigned hostsPerLeaf,
                    unsigned parallel) {
  const unsigned half = radix / 2;
  TreeShape shape;
  shape.radix = radix;
  shape.parallel = parallel;
  shape.children.assign(levels, half / parallel);
  shape.parents.assign(levels, half / parallel);
  if (levels == 0) return shape;
  shape.children.back() = radix / shape.CablesBelow(levels);
  if (pods != 0) shape.children.back() = pods;
  shape.parents.front() = 1;
  if (levels > 1) shape.children.front() = half;
  if (hostsPerLeaf != 0) shape.children.front() = hostsPerLeaf;
  if (levels == 1) return shape;
  shape.parents[1] = std::min(half, radix - std::min(radix, hostsPerLeaf)) / parallel;
  return shape;
}

std::optional<std::string> ProblemOfRadixTree(unsigned levels, unsigned radix, unsigned pods,
                                              unsigned hostsPerLeaf, unsigned parallel) {
  const auto ports = [radix] { return std::to_string(radix) + " ports"; };
  if (radix % 2 != 0) return "half of " + ports() + " is no whole number";
  if (levels == 1) return std::nullopt;
  if (hostsPerLeaf >= radix) {
    return "leaves of " + ports() + " with " + std::to_string(hostsPerLeaf) +
           " hosts have none left for cables up";
  }
  const unsigned up = std::min(radix / 2, radix - hostsPerLeaf);
  if ((radix / 2) % parallel != 0 || up % parallel != 0) {
    return std::to_string(parallel) + " parallel cables do not go evenly into " +
           std::to_string((radix / 2) % parallel != 0 ? radix / 2 : up) + " ports";
  }
  if (pods > radix / parallel) {
    return "roots of " + ports() + " cannot serve " + std::to_string(pods) + " pods";
  }
  return std::nullopt;
}

}  // namespace fabscope::internal
