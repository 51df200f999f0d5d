#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <utility>

#include "fat_tree/findings.h"

namespace fabscope::internal {

// What a check has found, in the order in which it was found: the error records, then what the
// issues count. A group can lack as many links as it has spines times lines, so only so many
// records are kept; the others are counted.
class FindingList {
 public:
  using List = std::deque<Finding>;
  using value_type = Finding;
  using const_iterator = List::const_iterator;

  static constexpr std::uint64_t defaultMostRecords = 1'000'000;

  explicit FindingList(std::uint64_t mostRecords = defaultMostRecords)
      : mostRecords_(mostRecords) {}

  void Add(Finding&& finding) {
    const bool isRecord = IsRecord(finding);
    if (isRecord && recordsCount_++ >= mostRecords_) return;
    findings_.push_back(std::move(finding));
    if (isRecord) ++recordsListed_;
  }

  const_iterator begin() const { return findings_.begin(); }
  const_iterator end() const { return findings_.end(); }
  std::size_t size() const { return findings_.size(); }
  bool empty() const { return findings_.empty(); }
  const Finding& operator[](std::size_t place) const { return findings_[place]; }

  // The error records that are kept.
  struct RecordRange {
    const_iterator first;
    const_iterator last;
    const_iterator begin() const { return first; }
    const_iterator end() const { return last; }
  };
  RecordRange Records() const {
    return {begin(), begin() + static_cast<std::ptrdiff_t>(recordsListed_)};
  }
  // All error records, kept or not.
  std::uint64_t RecordsCount() const { return recordsCount_; }
  std::uint64_t RecordsNotListed() const { return recordsCount_ - recordsListed_; }

 private:
  std::uint64_t mostRecords_;
  std::uint64_t recordsCount_ = 0;
  std::size_t recordsListed_ = 0;
  List findings_;
};

}  // namespace fabscope::internal
