// reference_long random FIRST COUNT: compares the fabrics of so many seeds with the reference.
// reference_long small SWITCHES: compares every fabric of so many switches, with all roots.
//
// Both end at the first difference, with status 1.

#include <cstdint>
#include <functional>
#include <iostream>
#include <string>
#include <vector>

#include "reference/comparison.h"
#include "reference/small_fabrics.h"

namespace {

using namespace fabscope::reference;

int Run(std::uint64_t first, std::uint64_t count,
        const std::function<PlainCase(std::uint64_t)>& make) {
  Comparison comparison;
  for (std::uint64_t number = first; number < first + count; ++number) {
    if (const std::string difference = comparison.Compare(make(number), number);
        !difference.empty()) {
      std::cout << difference;
      return 1;
    }
    if ((number - first + 1) % 100'000 == 0) {
      std::cout << number - first + 1 << " compared" << std::endl;
    }
  }
  std::cout << count << " fabrics without a difference\n";
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  const std::vector<std::string> words(argv + 1, argv + argc);
  if (words.size() == 3 && words[0] == "random") {
    return Run(std::stoull(words[1]), std::stoull(words[2]), RandomCase);
  }
  if (words.size() == 2 && words[0] == "small") {
    const SmallFabrics fabrics(std::stoi(words[1]));
    return Run(0, fabrics.Count(), [&](std::uint64_t number) { return fabrics.Case(number); });
  }
  std::cerr << "usage: reference_long random FIRST COUNT\n       reference_long small SWITCHES\n";
  return 2;
}
