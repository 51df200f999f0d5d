#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace fabscope::internal::fuzz {

// Readers of all that the commands write. They share nothing with the writers, and take only what
// others would take too: what they cannot read is a broken promise.

// A result as JSON: that it is JSON at all, and the text of one of its members at the top.
std::string RequireJson(std::string_view text, std::string_view member);

// The lines of the member "report", each with its end.
std::string ReportInJson(std::string_view text);

// An SVG picture, which an XML parser reads to its end.
void RequireSvg(std::string_view text);

// The page: the same around its data in all pages, and the data are JSON that ends no element.
void RequireHtml(std::string_view text);

// As RFC 4180 has it, but for the line ends, with as many fields in each line as in the header. The
// records without the header.
std::vector<std::vector<std::string>> RequireCsv(std::string_view text);

// The text format of Prometheus: help and type before the values of a name, no value twice.
void RequirePrometheus(std::string_view text);

// Nothing that a terminal would obey, and no line without its end.
void RequirePlainText(std::string_view text);

// A text with "?" for what turns the order of characters, and U+FFFD for each byte outside of
// UTF-8.
std::string AsPeopleSee(std::string_view text);

}  // namespace fabscope::internal::fuzz
