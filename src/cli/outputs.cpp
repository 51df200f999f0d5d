#include "cli/outputs.h"

namespace fabscope::internal {

const std::string& OutputFiles::Of(std::string_view option) const {
  static const std::string none;
  const auto file = files_.find(option);
  return file != files_.end() ? file->second : none;
}

BoundOption OutputFiles::Bind(const OptionText& text) {
  std::string& file = files_[text.name];
  return {text, [&file](const std::string& value) { return TakePath(file, value); }, false};
}

bool WriteOrTell(const std::string& file, const WriteTo& write, Messages& messages) {
  const auto problem = WriteOutput(file, write);
  if (problem) messages.Tell(*problem);
  return !problem;
}

void TellLosses(const std::string& file, const std::vector<std::string>& losses,
                Messages& messages) {
  const std::string start = (file == standardStream ? "<stdout>" : file) + ": warning: ";
  for (const std::string& loss : losses) messages.Tell(start + loss);
}

}  // namespace fabscope::internal
