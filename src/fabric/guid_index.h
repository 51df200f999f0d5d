#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace fabscope {

// Nodes by GUID: a hash table in one array. Every cable is looked up here, on the largest fabrics
// some hundred thousand times, which a table of linked entries makes the slowest part of loading.
class GuidIndex {
 public:
  static constexpr std::uint32_t None = ~std::uint32_t{0};

  void Reserve(std::size_t count) {
    const std::size_t size = count + count / 3 + 1;
    if (size > entries_.size()) Resize(std::bit_ceil(size));
  }

  // False when the GUID, which is not 0, is there already.
  bool Insert(std::uint64_t guid, std::uint32_t index) {
    Reserve(count_ + 1);
    Entry& entry = entries_[PlaceOf(guid)];
    if (entry.guid == guid) return false;
    entry = {guid, index};
    ++count_;
    return true;
  }

  // The index that was given for the GUID, or None.
  std::uint32_t Find(std::uint64_t guid) const {
    if (count_ == 0 || guid == 0) return None;
    return entries_[PlaceOf(guid)].index;
  }

 private:
  struct Entry {
    std::uint64_t guid = 0;  // 0: nobody's place
    std::uint32_t index = None;
  };

  // Where the GUID stands or would stand. At least a quarter of the places is free, so there is
  // one.
  std::size_t PlaceOf(std::uint64_t guid) const {
    // GUIDs differ mostly in a few of their digits; all of them must count for the place.
    std::uint64_t mixed = (guid ^ guid >> 33U) * 0xff51afd7ed558ccdU;
    mixed = (mixed ^ mixed >> 33U) * 0xc4ceb9fe1a85ec53U;
    std::size_t place = (mixed ^ mixed >> 33U) & (entries_.size() - 1);
    while (entries_[place].guid != guid && entries_[place].guid != 0) {
      place = (place + 1) & (entries_.size() - 1);
    }
    return place;
  }

  void Resize(std::size_t size) {
    std::vector<Entry> old(size);
    old.swap(entries_);
    for (const Entry& entry : old) {
      if (entry.guid != 0) entries_[PlaceOf(entry.guid)] = entry;
    }
  }

  std::vector<Entry> entries_;  // a power of two
  std::size_t count_ = 0;
};

}  // namespace fabscope
