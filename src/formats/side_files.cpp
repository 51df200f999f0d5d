#include "formats/side_files.h"

#include <functional>
#include <string_view>
#include <vector>

#include "fabric/guid.h"
#include "formats/input_text.h"
#include "formats/lines.h"
#include "formats/text_fields.h"

namespace fabscope {
namespace {

struct Field {
  std::string_view text;
  std::size_t offset;
};

std::vector<Field> SplitFields(std::string_view line, std::size_t offset) {
  std::vector<Field> fields;
  for (std::size_t start = 0;;) {
    const std::size_t comma = line.find(',', start);
    const std::size_t end = comma == std::string_view::npos ? line.size() : comma;
    const std::string_view field = line.substr(start, end - start);
    std::size_t blanks = 0;
    while (blanks < field.size() && IsBlank(field[blanks])) ++blanks;
    fields.push_back({Trimmed(field), offset + start + blanks});
    if (comma == std::string_view::npos) return fields;
    start = comma + 1;
  }
}

// A file of two columns: the GUID of a switch and a number.
class SwitchNumbers {
 public:
  using Apply = std::function<void(std::uint64_t guid, std::uint64_t value)>;

  SwitchNumbers(std::string_view column, std::uint64_t limit) : column_(column), limit_(limit) {}

  MaybeError Load(const std::string& path, const FabricBuilder& builder, Warnings& warnings,
                  const Apply& apply) {
    InputText input;
    if (MaybeError error = ReadInput(path, input)) return error;

    MaybeError error;
    bool haveHeader = false;
    std::size_t lineNumber = 0;
    ForEachLine(input, [&](std::string_view line, std::size_t offset) {
      ++lineNumber;
      const std::string_view content = Trimmed(line);
      if (content.empty() || content.front() == '#') return true;
      const std::vector<Field> fields = SplitFields(line, offset);
      if (!haveHeader) {
        haveHeader = true;
        error = ReadHeader(input, fields);
        return !error;
      }
      std::uint64_t guid = 0;
      std::uint64_t value = 0;
      error = ReadLine(input, fields, guid, value);
      if (error) return false;
      if (builder.IsSwitch(guid)) {
        apply(guid, value);
      } else if (warnings.Count(WarningKind::NotASwitch)) {
        warnings.Add(lineNumber, GuidText(guid) + " is not a switch of the fabric");
      }
      return true;
    });
    if (!error && !haveHeader) {
      error =
          input.ErrorAt(input.bytes.size(), "the file has no header line, expected " + Header());
    }
    return error;
  }

 private:
  std::string Header() const { return "\"guid," + std::string(column_) + "\""; }

  MaybeError ReadHeader(const InputText& input, const std::vector<Field>& fields) {
    if (fields.size() == 2 && fields[0].text == "guid" && fields[1].text == column_) {
      guidField_ = 0;
      return std::nullopt;
    }
    if (fields.size() == 2 && fields[1].text == "guid" && fields[0].text == column_) {
      guidField_ = 1;
      return std::nullopt;
    }
    return input.ErrorAt(fields[0].offset, "not the header line, expected the columns " + Header());
  }

  MaybeError ReadLine(const InputText& input, const std::vector<Field>& fields, std::uint64_t& guid,
                      std::uint64_t& value) const {
    if (fields.size() != 2) {
      return input.ErrorAt(fields[0].offset, "expected 2 fields as in the header, found " +
                                                 std::to_string(fields.size()));
    }
    const Field& guidField = fields[guidField_];
    const auto parsedGuid = ParseGuid(guidField.text);
    if (!parsedGuid) {
      return input.ErrorAt(guidField.offset,
                           "not a GUID, expected 0x and 1 to 16 hexadecimal digits");
    }
    const Field& valueField = fields[1 - guidField_];
    const auto parsedValue = ParseNumber(valueField.text, limit_);
    if (!parsedValue) {
      return input.ErrorAt(valueField.offset, "not a " + std::string(column_) +
                                                  ", expected a number from 0 to " +
                                                  std::to_string(limit_));
    }
    guid = *parsedGuid;
    value = *parsedValue;
    return std::nullopt;
  }

  std::string_view column_;
  std::uint64_t limit_;
  std::size_t guidField_ = 0;
};

}  // namespace

MaybeError LoadRanks(const std::string& path, FabricBuilder& builder, Warnings& warnings) {
  builder.ClearRanks();
  return SwitchNumbers("rank", 255)
      .Load(path, builder, warnings, [&](std::uint64_t guid, std::uint64_t rank) {
        builder.SetRank(guid, static_cast<std::uint8_t>(rank));
      });
}

MaybeError LoadFlids(const std::string& path, FabricBuilder& builder, Warnings& warnings) {
  return SwitchNumbers("flid", 65535)
      .Load(path, builder, warnings, [&](std::uint64_t guid, std::uint64_t flid) {
        builder.AddFlid(guid, static_cast<std::uint16_t>(flid));
      });
}

}  // namespace fabscope
