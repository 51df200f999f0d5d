#pragma once

#include <cstdint>
#include <filesystem>
#include <set>
#include <string>

#include "reference/random_fabric.h"
#include "reference/reference_check.h"

namespace fabscope::reference {

// Takes random fabrics through the command's own road, from the document on disk to the finished
// reports, and through the reference. Both number groups for the whole process, so there is at most
// one of these in a process, and nothing else there runs the stage.
class Comparison {
 public:
  Comparison();
  Comparison(const Comparison&) = delete;
  Comparison& operator=(const Comparison&) = delete;
  ~Comparison();

  // The first difference in the fabric of that seed, in words; empty when there is none.
  std::string Compare(std::uint64_t seed);

  // The rules that the reference went through so far.
  const std::set<std::string>& Reached() const { return reached_; }

 private:
  std::filesystem::path document_;
  Counters counters_;
  std::set<std::string> reached_;
};

}  // namespace fabscope::reference
