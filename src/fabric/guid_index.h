#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <map>
#include <vector>

namespace fabscope::internal {

// Nodes by GUID: a hash table in one array. Every cable is looked up here, on the largest fabrics
// some hundred thousand times, which a table of linked entries makes the slowest part of loading.
//
// GUIDs can be made up to share their place. Of those that would stand too far from theirs, the
// table takes none: they go into a map, so no GUIDs at all make a search long.
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
    const bool isNew = Place(guid, index);
    count_ += isNew ? 1 : 0;
    return isNew;
  }

  // The GUID will soon be asked for or inserted. Where it would stand comes from memory meanwhile.
  void Expect(std::uint64_t guid) const {
    if (!entries_.empty()) __builtin_prefetch(&entries_[HomeOf(guid)]);
  }

  // The index that was given for the GUID, or None.
  std::uint32_t Find(std::uint64_t guid) const {
    if (count_ == 0 || guid == 0) return None;
    const std::size_t place = PlaceOf(guid);
    return place != nowhere ? entries_[place].index : FindCrowdedOut(guid);
  }

 private:
  struct Entry {
    std::uint64_t guid = 0;  // 0: nobody's place
    std::uint32_t index = None;
  };

  // Places that are tried for a GUID. On ordinary fabrics hardly one of them needs as many.
  static constexpr std::size_t maxTries = 64;
  static constexpr std::size_t nowhere = ~std::size_t{0};

  std::size_t HomeOf(std::uint64_t guid) const {
    // GUIDs differ mostly in a few of their digits; all of them must count for the place.
    std::uint64_t mixed = (guid ^ guid >> 33U) * 0xff51afd7ed558ccdU;
    mixed = (mixed ^ mixed >> 33U) * 0xc4ceb9fe1a85ec53U;
    return (mixed ^ mixed >> 33U) & (entries_.size() - 1);
  }

  // Where the GUID stands or would stand in the table.
  std::size_t PlaceOf(std::uint64_t guid) const {
    std::size_t place = HomeOf(guid);
    for (std::size_t tries = 0; tries < maxTries; ++tries) {
      if (entries_[place].guid == guid || entries_[place].guid == 0) return place;
      place = (place + 1) & (entries_.size() - 1);
    }
    return nowhere;
  }

  bool Place(std::uint64_t guid, std::uint32_t index) {
    const std::size_t place = PlaceOf(guid);
    if (place == nowhere) return crowdedOut_.emplace(guid, index).second;
    if (entries_[place].guid == guid) return false;
    entries_[place] = {guid, index};
    return true;
  }

  std::uint32_t FindCrowdedOut(std::uint64_t guid) const {
    const auto found = crowdedOut_.find(guid);
    return found != crowdedOut_.end() ? found->second : None;
  }

  void Resize(std::size_t size) {
    std::vector<Entry> entries(size);
    entries.swap(entries_);
    std::map<std::uint64_t, std::uint32_t> crowdedOut;
    crowdedOut.swap(crowdedOut_);
    for (const Entry& entry : entries) {
      if (entry.guid != 0) Place(entry.guid, entry.index);
    }
    for (const auto& [guid, index] : crowdedOut) Place(guid, index);
  }

  std::vector<Entry> entries_;  // a power of two, at least a quarter of them free
  std::map<std::uint64_t, std::uint32_t> crowdedOut_;
  std::size_t count_ = 0;
};

}  // namespace fabscope::internal
