#include "formats/side_files.h"

#include <functional>
#include <string_view>
#include <vector>

#include "fabric/guid.h"
#include "formats/lines.h"
#include "formats/read_side_files.h"
#include "text/text_fields.h"

namespace fabscope::internal {
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

  MaybeError Read(Input& input, const FabricBuilder& builder, Warnings& warnings,
                  const Apply& apply) {
    LineReader lines(input);
    MaybeError error;
    for (Line line; !error && lines.Next(line);) {
      error = ReadLine(lines, line, builder, warnings, apply);
    }
    error = lines.Finish(std::move(error));
    if (error || haveHeader_) return error;
    return lines.ErrorAtEnd("the file has no header line, expected " + Header());
  }

 private:
  std::string Header() const { return "\"guid," + std::string(column_) + "\""; }

  MaybeError ReadLine(const LineReader& lines, const Line& line, const FabricBuilder& builder,
                      Warnings& warnings, const Apply& apply) {
    const std::string_view content = Trimmed(line.text);
    if (content.empty() || content.front() == '#') return std::nullopt;
    const std::vector<Field> fields = SplitFields(line.text, line.offset);
    const auto wrong = [&](std::size_t offset, std::string message) {
      return lines.ErrorAt(line.number, offset, std::move(message));
    };

    if (!haveHeader_) {
      haveHeader_ = true;
      if (IsHeader(fields)) return std::nullopt;
      return wrong(fields[0].offset, "not the header line, expected the columns " + Header());
    }
    if (fields.size() != 2) {
      return wrong(fields[0].offset,
                   "expected 2 fields as in the header, found " + std::to_string(fields.size()));
    }
    const Field& guidField = fields[guidField_];
    const auto guid = ParseGuid(guidField.text);
    if (!guid) {
      return wrong(guidField.offset, "not a GUID, expected 0x and 1 to 16 hexadecimal digits");
    }
    const Field& valueField = fields[1 - guidField_];
    const auto value = ParseNumber(valueField.text, limit_);
    if (!value) {
      return wrong(valueField.offset, "not a " + std::string(column_) +
                                          ", expected a number from 0 to " +
                                          std::to_string(limit_));
    }
    if (builder.IsSwitch(*guid)) {
      apply(*guid, *value);
    } else if (warnings.Count(WarningKind::NotASwitch)) {
      warnings.Add(line.number, GuidText(*guid) + " is not a switch of the fabric");
    }
    return std::nullopt;
  }

  // The two columns may stand in either order.
  bool IsHeader(const std::vector<Field>& fields) {
    if (fields.size() != 2) return false;
    guidField_ = fields[0].text == "guid" ? 0 : 1;
    return fields[guidField_].text == "guid" && fields[1 - guidField_].text == column_;
  }

  std::string_view column_;
  std::uint64_t limit_;
  bool haveHeader_ = false;
  std::size_t guidField_ = 0;
};

}  // namespace

MaybeError ReadRanks(Input& input, FabricBuilder& builder, Warnings& warnings) {
  builder.ClearRanks();
  return SwitchNumbers("rank", 255)
      .Read(input, builder, warnings, [&](std::uint64_t guid, std::uint64_t rank) {
        builder.SetRank(guid, static_cast<std::uint8_t>(rank));
      });
}

MaybeError LoadRanks(const std::string& path, FabricBuilder& builder, Warnings& warnings) {
  Input input;
  if (MaybeError error = input.Open(path)) return error;
  return ReadRanks(input, builder, warnings);
}

MaybeError ReadFlids(Input& input, FabricBuilder& builder, Warnings& warnings) {
  return SwitchNumbers("flid", 65535)
      .Read(input, builder, warnings, [&](std::uint64_t guid, std::uint64_t flid) {
        builder.AddFlid(guid, static_cast<std::uint16_t>(flid));
      });
}

MaybeError LoadFlids(const std::string& path, FabricBuilder& builder, Warnings& warnings) {
  Input input;
  if (MaybeError error = input.Open(path)) return error;
  return ReadFlids(input, builder, warnings);
}

}  // namespace fabscope::internal
