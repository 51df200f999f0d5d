#pragma once

#include <atomic>
#include <cstddef>
#include <deque>
#include <functional>
#include <future>
#include <memory>
#include <semaphore>
#include <system_error>

namespace fabscope::internal {

// Does works 0 to count - 1, `cores` at the same time and each on a thread of its own, and hands
// their results over in this order on the calling thread. Works begin only a few places ahead of
// the result that is taken next, so that a slow one does not fill the memory with the results
// behind it. What a work or `take` throws is thrown here, once the works that have begun are done;
// std::system_error when there can be no thread at all.
template <typename Result>
void DoInOrder(std::size_t count, std::size_t cores,
               const std::function<Result(std::size_t index)>& work,
               const std::function<void(Result&& result)>& take) {
  constexpr std::size_t aheadPerCore = 4;
  std::counting_semaphore<> free(static_cast<std::ptrdiff_t>(cores));
  std::atomic<bool> isStopped = false;
  const auto doWork = [&](std::size_t index) {
    free.acquire();
    const auto release = [](std::counting_semaphore<>* core) { core->release(); };
    const std::unique_ptr<std::counting_semaphore<>, decltype(release)> core(&free, release);
    return isStopped ? Result() : work(index);
  };

  std::deque<std::future<Result>> begun;  // awaits them when it is destroyed
  const auto stop = [](std::atomic<bool>* stopped) { *stopped = true; };
  const std::unique_ptr<std::atomic<bool>, decltype(stop)> stopped(&isStopped, stop);
  for (std::size_t next = 0, taken = 0; taken < count; ++taken) {
    while (next < count && next < taken + aheadPerCore * cores) {
      try {
        begun.push_back(std::async(std::launch::async, doWork, next));
        ++next;
      } catch (const std::system_error&) {
        if (begun.empty()) throw;
        break;  // as many as the system has left for us
      }
    }
    take(begun.front().get());
    begun.pop_front();
  }
}

}  // namespace fabscope::internal
