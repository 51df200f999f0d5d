#include "repairs/unlike_fabrics.h"

#include <algorithm>
#include <numeric>
#include <set>

namespace fabscope::internal {
namespace {

using plain::CableCounts;
using plain::SwitchSet;
using Order = std::vector<std::size_t>;

CableCounts InOrder(const CableCounts& cables, const Order& order) {
  CableCounts ordered = cables;
  for (std::size_t a = 0; a < order.size(); ++a) {
    for (std::size_t b = 0; b < order.size(); ++b) ordered[a][b] = cables[order[a]][order[b]];
  }
  return ordered;
}

// Those orders in which switches with more cables come first, so that fewer must be tried.
std::vector<Order> OrdersOf(const CableCounts& cables) {
  std::vector<int> degree;
  for (const auto& row : cables) degree.push_back(std::accumulate(row.begin(), row.end(), 0));
  const auto isBefore = [&](std::size_t a, std::size_t b) {
    return degree[a] != degree[b] ? degree[a] > degree[b] : a < b;
  };
  Order order(cables.size());
  std::iota(order.begin(), order.end(), std::size_t{0});
  std::sort(order.begin(), order.end(), isBefore);
  std::vector<Order> orders{order};
  const auto isEqual = [&](std::size_t a, std::size_t b) { return degree[a] == degree[b]; };
  for (std::size_t first = 0; first < order.size();) {
    std::size_t end = first + 1;
    while (end < order.size() && isEqual(order[first], order[end])) ++end;
    std::vector<Order> more;
    for (Order next : orders) {
      const auto from = next.begin() + static_cast<std::ptrdiff_t>(first);
      const auto to = next.begin() + static_cast<std::ptrdiff_t>(end);
      do {
        more.push_back(next);
      } while (std::next_permutation(from, to));
    }
    orders = std::move(more);
    first = end;
  }
  return orders;
}

CableCounts LeastOf(const CableCounts& cables) {
  CableCounts least;
  for (const Order& order : OrdersOf(cables)) {
    CableCounts ordered = InOrder(cables, order);
    if (least.empty() || ordered < least) least = std::move(ordered);
  }
  return least;
}

}  // namespace

// Some switch of a connected cabling can be left out so that the others hang together still.
std::vector<CableCounts> UnlikeCablings(int switches) {
  if (switches == 1) return {{{0}}};
  std::set<CableCounts> unlike;
  for (const CableCounts& smaller : UnlikeCablings(switches - 1)) {
    const SwitchSet all = (SwitchSet{1} << smaller.size()) - 1;
    for (SwitchSet neighbors = 1; neighbors <= all; ++neighbors) {
      CableCounts cables = smaller;
      cables.emplace_back(smaller.size(), 0);
      for (std::size_t a = 0; a < cables.size(); ++a) cables[a].resize(cables.size());
      for (std::size_t a = 0; a < smaller.size(); ++a) {
        cables[a].back() = cables.back()[a] = (neighbors >> a & 1U) != 0 ? 1 : 0;
      }
      unlike.insert(LeastOf(cables));
    }
  }
  return {unlike.begin(), unlike.end()};
}

std::vector<SwitchSet> UnlikeHosts(const CableCounts& cables) {
  const std::vector<Order> orders = OrdersOf(cables);
  const Order& first = orders.front();
  std::vector<Order> alike;  // the cabling is the same in them as in the first
  for (const Order& order : orders) {
    if (InOrder(cables, order) == InOrder(cables, first)) alike.push_back(order);
  }
  std::vector<SwitchSet> unlike;
  for (SwitchSet hosts = 1; hosts < SwitchSet{1} << cables.size(); ++hosts) {
    const bool isLeast = std::all_of(alike.begin(), alike.end(), [&](const Order& order) {
      SwitchSet other = 0;
      for (std::size_t a = 0; a < order.size(); ++a) {
        if ((hosts >> order[a] & 1U) != 0) other |= SwitchSet{1} << first[a];
      }
      return hosts <= other;
    });
    if (isLeast) unlike.push_back(hosts);
  }
  return unlike;
}

}  // namespace fabscope::internal
