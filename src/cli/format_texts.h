#pragma once

#include <span>
#include <string>
#include <vector>

#include "formats/fabric_formats.h"

namespace fabscope::internal {

// What helps and messages say of formats, in the order of the table.

// "a, b or c".
std::string InWords(const std::vector<std::string>& words);

std::string ChoiceOfNames(std::span<const FormatEntry> formats);    // "document|dot"
std::string NamesInWords(std::span<const FormatEntry> formats);     // "document, ibsim or dot"
std::string TitlesInWords(std::span<const FormatEntry> formats);    // "Graphviz or GraphML"
std::string EndingsInWords(std::span<const FormatEntry> formats);   // ".json, .dot or .gv"
std::string EndingsByFormat(std::span<const FormatEntry> formats);  // ".dot or .gv, .graphml"

}  // namespace fabscope::internal
