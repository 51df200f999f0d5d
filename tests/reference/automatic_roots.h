#pragma once

#include <cstdint>
#include <string>

#include "reference/memory_file.h"
#include "reference/random_fabric.h"

namespace fabscope::internal::reference {

// What is promised of `--roots auto`: the search's answer to the byte, or one line and the answer
// with inferred roots; the latter exactly where the search refuses or its tree fits worse.
class AutomaticRoots {
 public:
  // The broken promise in words; empty when all are kept. The number chooses how the document is
  // written, and stands in the words.
  std::string Compare(const PlainCase& what, std::uint64_t number);
  std::string Compare(std::uint64_t seed) { return Compare(RandomCase(seed), seed); }

  std::uint64_t Kept() const { return kept_; }          // trees of the search
  std::uint64_t Refused() const { return refused_; }    // fabrics without a tree
  std::uint64_t Replaced() const { return replaced_; }  // trees that fit worse than the inferred
  std::uint64_t Helped() const { return helped_; }      // inferred roots where there were none

 private:
  MemoryFile document_;
  std::uint64_t kept_ = 0;
  std::uint64_t refused_ = 0;
  std::uint64_t replaced_ = 0;
  std::uint64_t helped_ = 0;
};

}  // namespace fabscope::internal::reference
