#pragma once

#include <string>
#include <string_view>

namespace fabscope::internal {

// What a run tells the person at the screen: lines on standard error, and the same for the log
// file. While it lives, what the stage sends to screen and log arrives here too.
class Messages {
 public:
  Messages();
  Messages(const Messages&) = delete;
  Messages& operator=(const Messages&) = delete;
  ~Messages();

  // "fabscope: " and the line.
  void Tell(std::string_view line);

  const std::string& GetLog() const { return log_; }

 private:
  std::string log_;
};

}  // namespace fabscope::internal
