// repairs_long random FIRST COUNT: verifies the repairs of the fabrics of so many seeds.
// repairs_long small SWITCHES: those of every fabric of so many switches, with hosts at any of
// them.
// repairs_long ranks SWITCHES: compares inferred ranks with all others, for every fabric of so many
// switches that hangs together.
// repairs_long random-ranks FIRST COUNT: the same with parallel cables, for so many seeds.
// repairs_long steps FIRST COUNT: tries all shorter sequences of steps where a plan for a fabric of
// up to 8 switches says that no fewer will do.
//
// All end at the first broken promise, with status 1.

#include <cstdint>
#include <functional>
#include <iostream>
#include <string>
#include <vector>

#include "reference/plain_model.h"
#include "reference/small_fabrics.h"
#include "repairs/rank_trial.h"
#include "repairs/repair_cases.h"
#include "repairs/step_trial.h"
#include "repairs/verify_repairs.h"

namespace {

using namespace fabscope::internal;

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

int Tell(const std::string& wrong, const std::string& score) {
  std::cout << (wrong.empty() ? score : wrong) << '\n';
  return wrong.empty() ? 0 : 1;
}

// Ends at the first seed with which something is wrong.
std::string TryEach(std::uint64_t first, std::uint64_t count,
                    const std::function<std::string(std::uint64_t)>& attempt) {
  for (std::uint64_t seed = first; seed < first + count; ++seed) {
    const std::string wrong = attempt(seed);
    if (!wrong.empty()) return "seed " + std::to_string(seed) + ": " + wrong;
  }
  return {};
}

int RunRanks(int switches) {
  RanksScore score;
  const std::string wrong = TryAllSmallFabrics(switches, score);
  return Tell(wrong, score.Text());
}

int RunRandomRanks(std::uint64_t first, std::uint64_t count) {
  RanksScore score;
  const std::string wrong =
      TryEach(first, count, [&](std::uint64_t seed) { return TryRandomFabric(seed, score); });
  return Tell(wrong, score.Text());
}

int RunSteps(std::uint64_t first, std::uint64_t count) {
  constexpr std::size_t mostSwitches = 8;
  StepsScore score;
  const std::string wrong = TryEach(first, count, [&](std::uint64_t seed) -> std::string {
    const RepairCase what = MakeRepairCase(seed);
    if (what.fabric->switches.size() > mostSwitches) return {};
    return TryFewerSteps(what, score);
  });
  return Tell(wrong, score.Text());
}

}  // namespace

int main(int argc, char** argv) {
  const std::vector<std::string> words(argv + 1, argv + argc);
  const bool isRange = words.size() == 3;
  const bool isSize = words.size() == 2;
  if (isRange && words[0] == "random") {
    return Run(std::stoull(words[1]), std::stoull(words[2]), MakeRepairCase);
  }
  if (isSize && words[0] == "small") {
    const reference::SmallFabrics fabrics(std::stoi(words[1]));
    return Run(0, fabrics.CountAutomatic(),
               [&](std::uint64_t number) { return SmallCase(fabrics, number); });
  }
  if (isSize && words[0] == "ranks") return RunRanks(std::stoi(words[1]));
  if (isRange && words[0] == "random-ranks") {
    return RunRandomRanks(std::stoull(words[1]), std::stoull(words[2]));
  }
  if (isRange && words[0] == "steps") {
    return RunSteps(std::stoull(words[1]), std::stoull(words[2]));
  }
  std::cerr << "usage: repairs_long random|random-ranks|steps FIRST COUNT\n"
               "       repairs_long small|ranks SWITCHES\n";
  return 2;
}
