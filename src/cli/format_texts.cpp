#include "cli/format_texts.h"

namespace fabscope::internal {
namespace {

using Words = std::vector<std::string>;

std::string Joined(const Words& words, const char* between) {
  std::string text;
  for (const std::string& word : words) text += (text.empty() ? "" : between) + word;
  return text;
}

Words Collected(std::span<const FormatEntry> formats, const char* FormatEntry::*text) {
  Words texts;
  for (const FormatEntry& format : formats) texts.emplace_back(format.*text);
  return texts;
}

Words EndingsOf(const FormatEntry& format) {
  Words endings;
  for (const char* ending : format.endings) {
    if (ending != nullptr) endings.emplace_back(ending);
  }
  return endings;
}

}  // namespace

std::string InWords(const Words& words) {
  std::string text;
  for (std::size_t i = 0; i < words.size(); ++i) {
    const char* between = i + 1 < words.size() ? ", " : " or ";
    text += (i == 0 ? "" : between) + words[i];
  }
  return text;
}

std::string ChoiceOfNames(std::span<const FormatEntry> formats) {
  return Joined(Collected(formats, &FormatEntry::name), "|");
}

std::string NamesInWords(std::span<const FormatEntry> formats) {
  return InWords(Collected(formats, &FormatEntry::name));
}

std::string TitlesInWords(std::span<const FormatEntry> formats) {
  return InWords(Collected(formats, &FormatEntry::title));
}

std::string EndingsInWords(std::span<const FormatEntry> formats) {
  Words all;
  for (const FormatEntry& format : formats) {
    for (const std::string& ending : EndingsOf(format)) all.push_back(ending);
  }
  return InWords(all);
}

std::string EndingsByFormat(std::span<const FormatEntry> formats) {
  Words ofFormats;
  for (const FormatEntry& format : formats) ofFormats.push_back(InWords(EndingsOf(format)));
  return Joined(ofFormats, ", ");
}

}  // namespace fabscope::internal
