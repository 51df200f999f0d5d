// reference_long random FIRST COUNT: compares the fabrics of so many seeds with the reference.
// reference_long small SWITCHES: compares every fabric of so many switches, with all roots.
// reference_long automatic-roots FIRST COUNT: compares automatic roots on the fabrics of so many
// seeds with those of the search and with inferred ones.
//
// All end at the first difference, with status 1.

#include <cstdint>
#include <functional>
#include <iostream>
#include <string>
#include <vector>

#include "reference/automatic_roots.h"
#include "reference/comparison.h"
#include "reference/small_fabrics.h"

namespace {

using namespace fabscope::internal::reference;

int Run(std::uint64_t first, std::uint64_t count,
        const std::function<std::string(std::uint64_t)>& compare) {
  for (std::uint64_t number = first; number < first + count; ++number) {
    if (const std::string difference = compare(number); !difference.empty()) {
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

int RunAutomaticRoots(std::uint64_t first, std::uint64_t count) {
  AutomaticRoots roots;
  const int status = Run(first, count, [&](std::uint64_t seed) { return roots.Compare(seed); });
  std::cout << "of the search: " << roots.Kept()
            << ", inferred as they fit better: " << roots.Replaced()
            << ", inferred where the search refuses: " << roots.Helped()
            << ", none: " << roots.Refused() << "\n";
  return status;
}

}  // namespace

int main(int argc, char** argv) {
  const std::vector<std::string> words(argv + 1, argv + argc);
  if (words.size() == 3 && words[0] == "random") {
    Comparison comparison;
    return Run(std::stoull(words[1]), std::stoull(words[2]),
               [&](std::uint64_t seed) { return comparison.Compare(seed); });
  }
  if (words.size() == 3 && words[0] == "automatic-roots") {
    return RunAutomaticRoots(std::stoull(words[1]), std::stoull(words[2]));
  }
  if (words.size() == 2 && words[0] == "small") {
    const SmallFabrics fabrics(std::stoi(words[1]));
    Comparison comparison;
    return Run(0, fabrics.Count(), [&](std::uint64_t number) {
      return comparison.Compare(fabrics.Case(number), number);
    });
  }
  std::cerr << "usage: reference_long random FIRST COUNT\n       reference_long small SWITCHES\n"
               "       reference_long automatic-roots FIRST COUNT\n";
  return 2;
}
