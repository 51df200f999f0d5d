#include "platform/csv_desc.h"

namespace fabscope::internal {

std::string DescToCsvDesc(const std::string& description) {
  std::string field;
  field.reserve(description.size());
  for (const char c : description) {
    const auto byte = static_cast<unsigned char>(c);
    if (c == '"') field += '"';
    field += (byte < 0x20 || byte == 0x7f) ? ' ' : c;
  }
  return field;
}

}  // namespace fabscope::internal
