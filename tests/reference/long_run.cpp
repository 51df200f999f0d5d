// reference_long FIRST COUNT: compares so many seeds from the first on with the reference, and ends
// at the first difference.

#include <cstdint>
#include <iostream>
#include <string>

#include "reference/comparison.h"

int main(int argc, char** argv) {
  if (argc != 3) {
    std::cerr << "usage: reference_long FIRST COUNT\n";
    return 2;
  }
  const std::uint64_t first = std::stoull(argv[1]);
  const std::uint64_t count = std::stoull(argv[2]);
  fabscope::reference::Comparison comparison;
  for (std::uint64_t seed = first; seed < first + count; ++seed) {
    if (const std::string difference = comparison.Compare(seed); !difference.empty()) {
      std::cout << difference;
      return 1;
    }
    if ((seed - first + 1) % 10'000 == 0) std::cout << seed + 1 - first << " compared" << std::endl;
  }
  std::cout << count << " fabrics without a difference\n";
  for (const std::string& rule : fabscope::reference::AllRules()) {
    if (!comparison.Reached().contains(rule)) std::cout << "not reached: " << rule << '\n';
  }
  return 0;
}
