// Threads that the system does not give.

#include <array>
#include <cerrno>
#include <dlfcn.h>
#include <functional>
#include <gtest/gtest.h>
#include <pthread.h>
#include <string>

#include "cli/command_line.h"

namespace {

// Whether the system refuses the thread that is asked for as the `number`th; empty: none.
std::function<bool(int number)> isRefused;
int asked = 0;

}  // namespace

// NOLINTNEXTLINE(readability-inconsistent-declaration-parameter-name): its names are reserved ones.
extern "C" int pthread_create(pthread_t* thread, const pthread_attr_t* attributes,
                              void* (*start)(void*), void* argument) {
  if (isRefused && isRefused(++asked)) return EAGAIN;
  using Create = int (*)(pthread_t*, const pthread_attr_t*, void* (*)(void*), void*);
  static const auto create = reinterpret_cast<Create>(dlsym(RTLD_NEXT, "pthread_create"));
  return create(thread, attributes, start, argument);
}

namespace fabscope::internal {
namespace {

struct Answer {
  int status = 0;
  std::string out;
  std::string err;
};

Answer CheckSeveralFabrics(std::function<bool(int number)> refusal) {
  constexpr const char* dump = FABSCOPE_TEST_DATA "/tree-32h.topo";
  const std::array<const char*, 7> words{"fabscope", "check", dump, dump, dump, dump, dump};
  isRefused = std::move(refusal);
  asked = 0;
  ::testing::internal::CaptureStdout();
  ::testing::internal::CaptureStderr();
  Answer answer;
  answer.status = RunCommandLine(static_cast<int>(words.size()), words.data());
  answer.out = ::testing::internal::GetCapturedStdout();
  answer.err = ::testing::internal::GetCapturedStderr();
  isRefused = {};
  return answer;
}

TEST(ThreadsTest, FewAreEnough) {
  const Answer whole = CheckSeveralFabrics([](int) { return false; });
  EXPECT_GE(asked, 5);
  EXPECT_EQ(whole.status, 0);
  EXPECT_EQ(whole.err, "");
  const Answer few = CheckSeveralFabrics([](int number) { return number % 2 == 0; });
  EXPECT_GT(asked, 5);
  EXPECT_EQ(few.status, 0);
  EXPECT_EQ(few.out, whole.out);
  EXPECT_EQ(few.err, "");
}

TEST(ThreadsTest, NoneAtAllEndsTheRunWithTheReason) {
  const Answer answer = CheckSeveralFabrics([](int) { return true; });
  EXPECT_EQ(answer.status, 2);
  EXPECT_EQ(answer.out, "");
  EXPECT_EQ(answer.err, "fabscope: cannot start a thread: Resource temporarily unavailable\n");
}

}  // namespace
}  // namespace fabscope::internal
