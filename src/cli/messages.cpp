#include "cli/messages.h"

#include <iostream>

#include "platform/logging.h"
#include "text/text_fields.h"

namespace fabscope::internal {

Messages::Messages() {
  SetScreenSink([](std::string_view text) { WriteForPeople(text, std::cerr); });
  SetLogFileSink([this](std::string_view text) { log_ += TextForPeople(text); });
}

Messages::~Messages() {
  SetScreenSink({});
  SetLogFileSink({});
}

void Messages::Tell(std::string_view line) {
  // Names of files may hold what a terminal would obey.
  const std::string text = "fabscope: " + TextForPeople(CleanText(line)) + '\n';
  std::cerr << text;
  log_ += text;
}

}  // namespace fabscope::internal
