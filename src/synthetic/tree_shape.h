#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace fabscope::internal {

// An extended generalised fat tree, XGFT(h; m1,...,mh; w1,...,wh): h levels of switches above the
// hosts, which are level 0. A switch of level i has m_i children on level i - 1, and every node of
// level i - 1 has w_i parents on level i. A tree of 64-port switches with three levels and full
// bisection is XGFT(3; 32,32,64; 1,32,32).
struct TreeShape {
  std::vector<unsigned> children;  // m1, ..., mh
  std::vector<unsigned> parents;   // w1, ..., wh
  unsigned parallel = 1;           // cables between a switch and each of its parents
  unsigned radix = 0;              // ports of a switch, if it has more than its cables need
  unsigned planes = 1;             // how often the tree stands side by side, with shared hosts

  std::size_t Levels() const { return children.size(); }
  // How many nodes a level has; level 0 counts the hosts.
  std::uint64_t NodesOnLevel(std::size_t level) const;
  std::uint64_t SwitchCount() const;
  // Cables between a node of level - 1 and each of its parents on that level.
  unsigned CablesBelow(std::size_t level) const { return level == 1 ? 1 : parallel; }
  unsigned DownPorts(std::size_t level) const;
  unsigned UpPorts(std::size_t level) const;
  // Ports of a switch of that level (1 is the leaves').
  unsigned PortsOnLevel(std::size_t level) const;
};

// What is wrong with a shape that is about to be built, in words for a message; nothing if all is
// well. Ports are numbered with 8 bits, and a fabric of more than 2^20 nodes is a slip of the pen.
// On every plane each switch is a node of its own; a host has a port for each.
std::optional<std::string> ProblemOf(const TreeShape& shape);

// Reads "h; m1,...,mh; w1,...,wh". Blanks may stand anywhere between the numbers. Answers what was
// expected when the text is something else.
std::optional<std::string> ParseXgft(std::string_view text, TreeShape& shape);

// The tree of `levels` levels that switches of `radix` ports make with full bisection: half of each
// switch's ports lead down, the roots' all do. `pods` (0: as many as the roots have ports for) is
// the number of subtrees below the roots, leaves in a tree of two levels. With fewer `hostsPerLeaf`
// (0: radix / 2) than half the radix some ports of the leaves stay empty; with more, fewer cables
// lead up, and the tree blocks. `parallel` cables share the ports, so there are fewer switches.
TreeShape RadixTree(unsigned levels, unsigned radix, unsigned pods, unsigned hostsPerLeaf,
                    unsigned parallel = 1);

// Why such a tree cannot be made to measure, in words for a message; nothing if it can. The shape
// has still to be held against ProblemOf.
std::optional<std::string> ProblemOfRadixTree(unsigned levels, unsigned radix, unsigned pods,
                                              unsigned hostsPerLeaf, unsigned parallel);

}  // namespace fabscope::internal
