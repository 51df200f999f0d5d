#pragma once

#include <chrono>
#include <string>
#include <string_view>

namespace fabscope::internal {

// While it lives, shows on standard error how far long work has come ("grouping switches 42 %"), on
// one line that is gone again at the end. Nothing is shown of work that is done at once.
class ProgressLine {
 public:
  using Clock = std::chrono::steady_clock;
  static constexpr std::chrono::milliseconds FirstAfter{300};
  static constexpr std::chrono::milliseconds ThenEvery{100};

  // `isWanted`: whether there is somebody to see it.
  explicit ProgressLine(bool isWanted);
  ProgressLine(const ProgressLine&) = delete;
  ProgressLine& operator=(const ProgressLine&) = delete;
  ~ProgressLine();

  // Makes room for what others write to the terminal.
  void Hide();

 private:
  void Show(std::string_view phase, std::size_t done, std::size_t total);

  bool isWanted_;
  bool isShown_ = false;
  Clock::time_point next_;
};

}  // namespace fabscope::internal
