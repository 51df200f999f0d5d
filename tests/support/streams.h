// Streams that see each flush, of which the stage does one behind each line it writes.
#pragma once

#include <functional>
#include <ostream>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

namespace fabscope::internal {

// Acts at each flush, so that a test can interfere while the checks run. What was written is kept.
class HookedStream : private std::stringbuf, public std::ostream {
 public:
  // `hook` is given the number of flushes so far, 1 at the first.
  explicit HookedStream(std::function<void(int)> hook)
      : std::ostream(this), action(std::move(hook)) {}

  std::string Text() const { return std::stringbuf::str(); }

 private:
  int sync() override {
    action(++flushes);
    return 0;
  }

  std::function<void(int)> action;
  int flushes = 0;
};

// Remembers what was written between one flush and the next.
class FlushRecorder : private std::stringbuf, public std::ostream {
 public:
  FlushRecorder() : std::ostream(this) {}

  const std::vector<std::string>& Pieces() const { return pieces; }

 private:
  int sync() override {
    pieces.push_back(std::stringbuf::str());
    std::stringbuf::str("");
    return 0;
  }

  std::vector<std::string> pieces;
};

}  // namespace fabscope::internal
