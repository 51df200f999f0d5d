#include "platform/csv_desc.h"

namespace fabscope::internal {

std::string DescToCsvDesc(const std::string& description) {
  std::string field(description);
  bool hasQuotes = false;
  for (char& c : field) {
    const auto byte = static_cast<unsigned char>(c);
    hasQuotes |= c == '"';
    c = (byte < 0x20 || byte == 0x7f) ? ' ' : c;
  }
  if (!hasQuotes) return field;
  std::string doubled;
  for (const char c : field) {
    if (c == '"') doubled += '"';
    doubled += c;
  }
  return doubled;
}

std::string QuotedCsv(const std::string& description) {
  std::string field = "\"";
  return field.append(DescToCsvDesc(description)).append("\"");
}

}  // namespace fabscope::internal
