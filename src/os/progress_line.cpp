#include "os/progress_line.h"

#include <iostream>

#include "platform/progress.h"

namespace fabscope::internal {
namespace {

// To the start of the line, and clear it.
constexpr const char* cleanLine = "\r\033[K";

}  // namespace

ProgressLine::ProgressLine(bool isWanted) : isWanted_(isWanted), next_(Clock::now() + FirstAfter) {
  if (!isWanted_) return;
  SetProgressSink([this](std::string_view phase, std::size_t done, std::size_t total) {
    Show(phase, done, total);
  });
}

ProgressLine::~ProgressLine() {
  if (!isWanted_) return;
  SetProgressSink({});
  Hide();
}

void ProgressLine::Hide() {
  if (isShown_) std::cerr << cleanLine << std::flush;
  isShown_ = false;
}

void ProgressLine::Show(std::string_view phase, std::size_t done, std::size_t total) {
  const Clock::time_point now = Clock::now();
  if (now < next_) return;
  next_ = now + ThenEvery;
  isShown_ = true;
  std::cerr << cleanLine << "fabscope: " << phase;
  if (total != 0) std::cerr << ' ' << done * 100 / total << " %";
  std::cerr << std::flush;
}

}  // namespace fabscope::internal
