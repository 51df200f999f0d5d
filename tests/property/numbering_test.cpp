// Each tree numbers its groups from 0, so that the texts of a fabric are the same in every run and
// on every thread.

#include <array>
#include <cstdint>
#include <gtest/gtest.h>
#include <numeric>
#include <string>
#include <thread>
#include <vector>

#include "property/stage_run.h"

namespace fabscope::internal {
namespace {

constexpr std::uint64_t firstSeed = 40'000;
constexpr std::uint64_t seeds = 1'000;
constexpr int leastValidated = 400;

std::string AllTexts(StageRun& run) {
  run.RunAll();
  std::string text = run.message + run.buildText + run.topology->LevelsReport() + run.validateText;
  for (FabricErrGeneral* error : run.errors) {
    text += error->GetErrorLine() + "\n" + error->GetCSVErrorLine() + "\n";
  }
  return text + run.dumpText;
}

std::string TextsOf(std::uint64_t seed) {
  StageRun run(reference::RandomCase(seed));
  return AllTexts(run);
}

// The numbers of neighborhoods, or of connectivity groups, in report order.
std::vector<std::uint64_t> Ids(const StageRun& run, bool ofNeighborhoods) {
  std::vector<std::uint64_t> ids;
  for (const FTNeighborhood* group : run.Groups()) {
    if (run.topology->IsLastRankNeighborhood(group->GetRank()) == ofNeighborhoods) {
      ids.push_back(group->GetId());
    }
  }
  return ids;
}

TEST(Numbering, OfBothKindsOfGroupsBeginsAt0InEachTree) {
  int validated = 0;
  for (std::uint64_t seed = firstSeed; seed < firstSeed + seeds; ++seed) {
    SCOPED_TRACE(seed);
    StageRun run(reference::RandomCase(seed));
    if (!run.RunAll()) continue;
    ++validated;
    for (const bool ofNeighborhoods : {true, false}) {
      const std::vector<std::uint64_t> ids = Ids(run, ofNeighborhoods);
      std::vector<std::uint64_t> expected(ids.size());
      std::iota(expected.begin(), expected.end(), std::uint64_t{0});
      ASSERT_EQ(ids, expected);
    }
  }
  EXPECT_GE(validated, leastValidated);
}

TEST(Numbering, AndAllTextsAreTheSameOnThreadsThatCheckOneFabricAtTheSameTime) {
  std::array<std::string, 4> texts;
  for (std::uint64_t seed = firstSeed; seed < firstSeed + seeds / 10; ++seed) {
    const std::string expected = TextsOf(seed);
    std::vector<std::thread> threads;
    for (std::string& text : texts) {
      threads.emplace_back([&text, seed] { text = TextsOf(seed); });
    }
    for (std::thread& thread : threads) thread.join();
    for (const std::string& text : texts) ASSERT_EQ(text, expected) << seed;
  }
}

}  // namespace
}  // namespace fabscope::internal
