#pragma once

#include <cstdint>
#include <set>
#include <string>

#include "reference/memory_file.h"
#include "reference/random_fabric.h"
#include "reference/reference_check.h"

namespace fabscope::internal::reference {

// Takes random fabrics through the command's own road, from the document on disk to the finished
// reports, and through the reference.
class Comparison {
 public:
  // The first difference in the answers to a case, in words; empty when there is none. The number
  // chooses how the document is written, and stands in the words.
  std::string Compare(const PlainCase& what, std::uint64_t number);
  // The same for the random case of that seed.
  std::string Compare(std::uint64_t seed) { return Compare(RandomCase(seed), seed); }

  // The rules that the reference went through so far.
  const std::set<std::string>& Reached() const { return reached_; }

 private:
  MemoryFile document_;
  std::set<std::string> reached_;
};

}  // namespace fabscope::internal::reference
