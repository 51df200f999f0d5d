#include "os/ordered_work.h"

#include <array>
#include <atomic>
#include <chrono>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <set>
#include <stdexcept>
#include <thread>
#include <vector>

namespace fabscope::internal {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Le;

using Work = std::function<int(std::size_t index)>;

std::vector<int> ResultsOf(std::size_t count, std::size_t cores, const Work& work) {
  std::vector<int> results;
  DoInOrder<int>(count, cores, work, [&](int result) { results.push_back(result); });
  return results;
}

// Both wait for the other, so neither ends without it.
TEST(OrderedWorkTest, WorksAreDoneAtTheSameTime) {
  std::array<std::promise<void>, 2> arrived;
  const std::array<std::shared_future<void>, 2> met{arrived[0].get_future(),
                                                    arrived[1].get_future()};
  const auto meet = [&](std::size_t index) {
    arrived.at(index).set_value();
    const auto status = met.at(1 - index).wait_for(std::chrono::seconds(60));
    return status == std::future_status::ready ? 1 : 0;
  };
  EXPECT_THAT(ResultsOf(2, 2, meet), ElementsAre(1, 1));
}

TEST(OrderedWorkTest, ResultsComeInOrderWhicheverIsDoneFirst) {
  std::promise<void> isSecondDone;
  const auto work = [&](std::size_t index) {
    if (index == 0) isSecondDone.get_future().wait();
    if (index == 1) isSecondDone.set_value();
    return static_cast<int>(index) * 10;
  };
  EXPECT_THAT(ResultsOf(3, 2, work), ElementsAre(0, 10, 20));
}

TEST(OrderedWorkTest, NoWorkIsNoResult) {
  EXPECT_THAT(ResultsOf(0, 2, [](std::size_t) { return 1; }), IsEmpty());
}

TEST(OrderedWorkTest, NoMoreWorksThanCoresAreDoneAtTheSameTime) {
  std::atomic<int> working = 0;
  std::atomic<int> most = 0;
  ResultsOf(50, 2, [&](std::size_t) {
    const int now = ++working;
    if (now > most) most = now;
    std::this_thread::yield();
    return --working;
  });
  EXPECT_THAT(most.load(), Le(2));
}

TEST(OrderedWorkTest, EveryWorkHasAThreadOfItsOwnAndResultsAreTakenByTheCaller) {
  thread_local int worksOfThread = 0;
  std::set<std::thread::id> takers;
  const auto work = [](std::size_t) { return ++worksOfThread; };
  DoInOrder<int>(20, 2, work, [&](int result) {
    EXPECT_EQ(result, 1);
    takers.insert(std::this_thread::get_id());
  });
  EXPECT_THAT(takers, ElementsAre(std::this_thread::get_id()));
}

TEST(OrderedWorkTest, WorkStaysNearTheResultThatIsTakenNext) {
  std::atomic<std::size_t> taken = 0;
  std::atomic<std::size_t> farthest = 0;
  const auto work = [&](std::size_t index) {
    const std::size_t ahead = index - taken;
    if (ahead > farthest) farthest = ahead;
    return 0;
  };
  DoInOrder<int>(1000, 2, work, [&](int) {
    if (taken == 0) std::this_thread::sleep_for(std::chrono::milliseconds(50));
    ++taken;
  });
  EXPECT_THAT(farthest.load(), Le(8U));
}

TEST(OrderedWorkTest, WhatAWorkThrowsArrivesInItsPlace) {
  std::vector<int> taken;
  const auto work = [](std::size_t index) {
    if (index == 2) throw std::runtime_error("no memory");
    return static_cast<int>(index);
  };
  EXPECT_THROW(DoInOrder<int>(100, 2, work, [&](int result) { taken.push_back(result); }),
               std::runtime_error);
  EXPECT_THAT(taken, ElementsAre(0, 1));
}

TEST(OrderedWorkTest, NoFurtherWorkBeginsWhenAResultCannotBeTaken) {
  std::atomic<int> done = 0;
  const auto work = [&](std::size_t) { return ++done; };
  const auto take = [](int) { throw std::runtime_error("disk full"); };
  EXPECT_THROW(DoInOrder<int>(1000, 2, work, take), std::runtime_error);
  EXPECT_THAT(done.load(), Le(8));
}

}  // namespace
}  // namespace fabscope::internal
