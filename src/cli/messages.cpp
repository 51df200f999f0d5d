#include "cli/messages.h"

#include <iostream>

#include "platform/logging.h"

namespace fabscope {

Messages::Messages() {
  SetScreenSink([](std::string_view text) { std::cerr << text; });
  SetLogFileSink([this](std::string_view text) { log_ += text; });
}

Messages::~Messages() {
  SetScreenSink({});
  SetLogFileSink({});
}

void Messages::Tell(std::string_view line) {
  const std::string text = "fabscope: " + std::string(line) + '\n';
  std::cerr << text;
  log_ += text;
}

}  // namespace fabscope
