#include "platform/progress.h"

#include <utility>

namespace fabscope::internal {
namespace {

ProgressSink& Sink() {
  thread_local ProgressSink sink;
  return sink;
}

}  // namespace

void SetProgressSink(ProgressSink sink) { Sink() = std::move(sink); }

void ReportProgress(std::string_view phase, std::size_t done, std::size_t total) {
  if (Sink()) Sink()(phase, done, total);
}

}  // namespace fabscope::internal
