#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

namespace fabscope::internal {

// For some upper switches by index, how many lower switches reach them. A map in one piece: there
// is one for every set of a histogram, and most are small.
class UpHopCounts {
 public:
  using Entry = std::pair<std::uint32_t, std::int32_t>;  // index and count
  using value_type = Entry;
  using const_iterator = std::vector<Entry>::const_iterator;

  // By ascending index.
  const_iterator begin() const { return entries_.begin(); }
  const_iterator end() const { return entries_.end(); }

  // The count of an index, 0 if it had none.
  std::int32_t& operator[](std::size_t index) {
    const auto place = PlaceOf(index);
    if (place != entries_.end() && place->first == index) return place->second;
    return entries_.insert(place, {static_cast<std::uint32_t>(index), 0})->second;
  }
  // Null when it has none.
  const std::int32_t* Find(std::size_t index) const {
    const auto place = std::lower_bound(begin(), end(), index, IsBefore);
    return place != end() && place->first == index ? &place->second : nullptr;
  }
  bool Erase(std::size_t index) {
    const auto place = PlaceOf(index);
    if (place == entries_.end() || place->first != index) return false;
    entries_.erase(place);
    return true;
  }

  void Reserve(std::size_t count) { entries_.reserve(count); }
  // For an index beyond all that have a count.
  void Append(std::uint32_t index, std::int32_t count) { entries_.emplace_back(index, count); }

 private:
  static bool IsBefore(const Entry& entry, std::size_t index) { return entry.first < index; }
  std::vector<Entry>::iterator PlaceOf(std::size_t index) {
    return std::lower_bound(entries_.begin(), entries_.end(), index, IsBefore);
  }

  std::vector<Entry> entries_;
};

}  // namespace fabscope::internal
