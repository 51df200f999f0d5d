// repairs_long random FIRST COUNT: verifies the repairs of the fabrics of so many seeds.
// repairs_long small SWITCHES: those of every fabric of so many switches, with hosts at any of
// them.
//
// Both end at the first broken promise, with status 1.

#include <cstdint>
#include <functional>
#include <iostream>
#include <string>
#include <vector>

#include "reference/plain_model.h"
#include "reference/small_fabrics.h"
#include "repairs/repair_cases.h"
#include "repairs/verify_repairs.h"

namespace {

using namespace fabscope;

int Run(std::uint64_t first, std::uint64_t count,
        const std::function<RepairCase(std::uint64_t)>& make) {
  std::uint64_t repaired = 0;
  std::uint64_t abstained = 0;
  std::uint64_t cuts = 0;
  for (std::uint64_t number = first; number < first + count; ++number) {
    const RepairCase what = make(number);
    const RepairsVerdict verdict = VerifyRepairs(*what.fabric, what.known);
    if (!verdict.complaints.empty()) {
      std::cout << "case " << number << " (" << what.kind << "): " << verdict.complaints;
      return 1;
    }
    if (verdict.plan.status == RepairStatus::Repairs) ++repaired;
    if (verdict.plan.status == RepairStatus::Abstained) ++abstained;
    cuts += verdict.cuts;
    if ((number - first + 1) % 10'000 == 0) {
      std::cout << number - first + 1 << " verified" << std::endl;
    }
  }
  std::cout << count << " fabrics keep every promise: " << repaired << " with repairs, "
            << abstained << " abstained; " << cuts
            << " times a switch with hosts is cut off meanwhile\n";
  return 0;
}

RepairCase SmallCase(const reference::SmallFabrics& fabrics, std::uint64_t number) {
  const reference::PlainCase what = fabrics.Case(number);
  return {what.kind, reference::ModelOf(what.fabric), {}};
}

}  // namespace

int main(int argc, char** argv) {
  const std::vector<std::string> words(argv + 1, argv + argc);
  if (words.size() == 3 && words[0] == "random") {
    return Run(std::stoull(words[1]), std::stoull(words[2]), MakeRepairCase);
  }
  if (words.size() == 2 && words[0] == "small") {
    const reference::SmallFabrics fabrics(std::stoi(words[1]));
    return Run(0, fabrics.CountAutomatic(),
               [&](std::uint64_t number) { return SmallCase(fabrics, number); });
  }
  std::cerr << "usage: repairs_long random FIRST COUNT\n       repairs_long small SWITCHES\n";
  return 2;
}
