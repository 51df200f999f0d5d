#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "fabric/ib_node.h"

namespace fabscope::internal {

// A value for some nodes of one fabric, found by the node's place in the model. A map would do, but
// the stage looks a node up for every cable of a fabric, many times over.
template <typename T>
class NodeTable {
 public:
  // `none` stands for no value.
  explicit NodeTable(T none) : none_(none) {}

  // Makes room for a fabric of that many nodes at once; others find room as they come.
  void Reserve(std::size_t nodeCount) {
    if (values_.size() < nodeCount) values_.resize(nodeCount, none_);
  }
  void Set(std::uint32_t index, const T& value) {
    Reserve(std::size_t{index} + 1);
    values_[index] = value;
  }
  void Set(const IBNode& node, const T& value) { Set(node.index, value); }

  const T& Get(std::uint32_t index) const {
    return index < values_.size() ? values_[index] : none_;
  }
  const T& Get(const IBNode& node) const { return Get(node.index); }
  bool Has(std::uint32_t index) const { return !(Get(index) == none_); }
  bool Has(const IBNode& node) const { return Has(node.index); }
  // How many nodes have a value. Looks at all of them.
  std::size_t Count() const {
    const auto without = std::count(values_.begin(), values_.end(), none_);
    return values_.size() - static_cast<std::size_t>(without);
  }

 private:
  T none_;
  std::vector<T> values_;
};

// The same for the nodes of one rank: it takes as much room as it has values, since a fabric may
// have nearly as many ranks as nodes. Finding a value takes a little longer.
template <typename T>
class RankTable {
 public:
  explicit RankTable(T none) : none_(none) {}

  void Set(const IBNode& node, const T& value) {
    const auto place = PlaceOf(node);
    if (place != entries_.end() && place->index == node.index) {
      entries_[static_cast<std::size_t>(place - entries_.begin())].value = value;
    } else {
      entries_.insert(place, {node.index, value});
    }
  }

  const T& Get(const IBNode& node) const {
    const auto place = PlaceOf(node);
    return place != entries_.end() && place->index == node.index ? place->value : none_;
  }
  bool Has(const IBNode& node) const { return !(Get(node) == none_); }

 private:
  struct Entry {
    std::uint32_t index;
    T value;
  };

  // Nodes mostly come in ascending order.
  auto PlaceOf(const IBNode& node) const {
    if (entries_.empty()) return entries_.end();
    // The switches of a rank mostly stand together in the model.
    const std::size_t guess = std::size_t{node.index} - entries_.front().index;
    if (guess < entries_.size() && entries_[guess].index == node.index) {
      return entries_.begin() + static_cast<std::ptrdiff_t>(guess);
    }
    if (entries_.back().index < node.index) return entries_.end();
    return std::lower_bound(
        entries_.begin(), entries_.end(), node.index,
        [](const Entry& entry, std::uint32_t index) { return entry.index < index; });
  }

  T none_;
  std::vector<Entry> entries_;  // by ascending index
};

}  // namespace fabscope::internal
