#pragma once

#include <string>
#include <string_view>

namespace fabscope::internal {

// Texts from a fabric for other languages, without their quotes. Control characters become '?', and
// bytes that are not valid UTF-8 U+FFFD.

// For a label of Graphviz, which reads escapes such as "\N" there, and entities as HTML has them.
std::string DotLabel(std::string_view text);
// For a label of a Prometheus metric.
std::string PrometheusLabel(std::string_view text);
// For XML, as content or in an attribute.
std::string XmlText(std::string_view text);

}  // namespace fabscope::internal
