#include "platform/progress.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "check/check.h"

namespace fabscope::internal {
namespace {

struct Phase {
  std::string name;
  std::size_t steps = 0;
};

// What a check of one of the real dumps tells of its progress.
std::vector<Phase> PhasesOf(const std::string& dump) {
  std::vector<Phase> phases;
  SetProgressSink([&](std::string_view name, std::size_t done, std::size_t total) {
    EXPECT_LT(done, total) << name;
    if (phases.empty() || phases.back().name != name) phases.push_back({std::string(name), 0});
    ++phases.back().steps;
  });
  CheckOptions options;
  options.fabric = FABSCOPE_TEST_DATA "/" + dump;
  const CheckResult result = RunCheck(options);
  SetProgressSink({});
  EXPECT_EQ(result.status, CheckStatus::Done);
  return phases;
}

TEST(ProgressTest, EveryLongPhaseOfACheckIsTold) {
  std::vector<std::string> names;
  for (const Phase& phase : PhasesOf("tree-32h.topo")) names.push_back(phase.name);
  // One round for each pair of neighbouring ranks.
  EXPECT_EQ(names, (std::vector<std::string>{"reading", "finding roots", "grouping switches",
                                             "looking for cross links", "grouping switches",
                                             "looking for cross links", "checking groups"}));
}

TEST(ProgressTest, ReadingIsToldNodeByNode) {
  EXPECT_EQ(PhasesOf("tree-32h.topo").front().steps, 32U + 20U);
}

}  // namespace
}  // namespace fabscope::internal
