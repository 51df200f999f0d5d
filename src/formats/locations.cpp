#include "formats/locations.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <optional>
#include <string_view>
#include <utility>

#include "formats/lines.h"
#include "formats/read_side_files.h"
#include "text/text_fields.h"

namespace fabscope::internal {
namespace {

struct CsvField {
  std::string text;
  std::size_t offset = 0;
};

// Up to the closing quote; two quotes are one. False where there is none.
bool TakeQuoted(LineCursor& cursor, std::string& text) {
  const auto isText = [](char c) { return c != '"'; };
  cursor.Take('"');
  text = cursor.TakeWhile(isText);
  while (cursor.Take('"')) {
    if (!cursor.Take('"')) return true;
    text += '"';
    text += cursor.TakeWhile(isText);
  }
  return false;
}

class LocationsReader {
 public:
  LocationsReader(Input& input, Locations& locations, Warnings& warnings)
      : lines_(input), locations_(locations), warnings_(warnings) {}

  MaybeError Read() {
    MaybeError error;
    for (Line line; !error && lines_.Next(line);) error = ReadLine(line);
    error = lines_.Finish(std::move(error));
    if (error || !columns_.empty()) return error;
    return lines_.ErrorAtEnd(std::string("the file has no header line, ") + expectedColumns);
  }

 private:
  enum class Column { Guid, Name, Rack, Unit, More };

  MaybeError ReadLine(const Line& line);
  MaybeError Split(const Line& line, std::vector<CsvField>& fields) const;
  MaybeError TakeHeader(const Line& line, const std::vector<CsvField>& fields);
  MaybeError TakeLocation(const Line& line, std::vector<CsvField> fields);

  static constexpr const char* expectedColumns =
      "expected the columns guid or name, rack and perhaps unit";

  LineReader lines_;
  Locations& locations_;
  Warnings& warnings_;
  std::vector<Column> columns_;  // none before the header
};

MaybeError LocationsReader::Split(const Line& line, std::vector<CsvField>& fields) const {
  LineCursor cursor(line.text, line.offset);
  do {
    cursor.SkipBlanks();
    CsvField& field = fields.emplace_back();
    field.offset = cursor.Offset();
    if (cursor.Peek() != '"') {
      field.text = Trimmed(cursor.TakeWhile([](char c) { return c != ','; }));
      continue;
    }
    const bool isClosed = TakeQuoted(cursor, field.text);
    cursor.SkipBlanks();
    if (!isClosed || (!cursor.AtEnd() && cursor.Peek() != ',')) {
      return lines_.ErrorAt(
          line.number, field.offset,
          "expected a closing quote, and a comma or the end of the line behind it");
    }
  } while (cursor.Take(','));
  return std::nullopt;
}

MaybeError LocationsReader::ReadLine(const Line& line) {
  const std::string_view content = Trimmed(line.text);
  if (content.empty() || content.front() == '#') return std::nullopt;
  std::vector<CsvField> fields;
  if (MaybeError error = Split(line, fields)) return error;
  for (CsvField& field : fields) {
    field.text = CleanText(field.text);
    if (CutText(field.text) && warnings_.Count(WarningKind::LongText)) {
      warnings_.Add(line.number, "field longer than 256 bytes, cut there");
    }
  }
  if (columns_.empty()) return TakeHeader(line, fields);
  return TakeLocation(line, std::move(fields));
}

MaybeError LocationsReader::TakeHeader(const Line& line, const std::vector<CsvField>& fields) {
  constexpr std::array<std::string_view, 4> names{"guid", "name", "rack", "unit"};
  std::array<int, 5> counts{};
  for (const CsvField& field : fields) {
    std::string name = field.text;
    std::transform(name.begin(), name.end(), name.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    const auto place =
        static_cast<std::size_t>(std::find(names.begin(), names.end(), name) - names.begin());
    const auto column = static_cast<Column>(place);
    if (++counts.at(place) > 1 && column != Column::More) {
      return lines_.ErrorAt(line.number, field.offset,
                            "the column \"" + name + "\" is there twice");
    }
    if (column == Column::More) locations_.moreColumns.push_back(field.text);
    columns_.push_back(column);
  }
  const auto has = [&](Column column) { return counts.at(static_cast<std::size_t>(column)) != 0; };
  if ((has(Column::Guid) || has(Column::Name)) && has(Column::Rack)) return std::nullopt;
  return lines_.ErrorAt(line.number, fields[0].offset,
                        std::string("not the header line, ") + expectedColumns);
}

MaybeError LocationsReader::TakeLocation(const Line& line, std::vector<CsvField> fields) {
  if (fields.size() != columns_.size()) {
    return lines_.ErrorAt(line.number, fields[0].offset,
                          "expected " + std::to_string(columns_.size()) +
                              " fields as in the header, found " + std::to_string(fields.size()));
  }
  Location location;
  std::optional<std::uint64_t> guid;
  std::string name;
  for (std::size_t i = 0; i < fields.size(); ++i) {
    std::string& text = fields[i].text;
    switch (columns_[i]) {
      case Column::Guid:
        if (text.empty()) break;
        guid = ParseGuid(text);
        if (guid) break;
        return lines_.ErrorAt(line.number, fields[i].offset,
                              "not a GUID, expected 0x and 1 to 16 hexadecimal digits");
      case Column::Name:
        name = std::move(text);
        break;
      case Column::Rack:
        location.rack = std::move(text);
        break;
      case Column::Unit:
        location.unit = std::move(text);
        break;
      case Column::More:
        location.more.push_back(std::move(text));
        break;
    }
  }
  if (guid) {
    locations_.byGuid[*guid] = std::move(location);
  } else if (!name.empty()) {
    locations_.byName[name] = std::move(location);
  } else {
    return lines_.ErrorAt(line.number, fields[0].offset, "the line names no switch");
  }
  return std::nullopt;
}

}  // namespace

const Location* Locations::Of(const IBNode& node) const {
  if (const auto found = byGuid.find(node.guid); found != byGuid.end()) return &found->second;
  for (const std::string_view name : {node.getAlternativeName(), node.name}) {
    if (const auto found = byName.find(name); found != byName.end()) return &found->second;
  }
  return nullptr;
}

MaybeError ReadLocations(Input& input, Locations& locations, Warnings& warnings) {
  return LocationsReader(input, locations, warnings).Read();
}

MaybeError LoadLocations(const std::string& path, Locations& locations, Warnings& warnings) {
  Input input;
  if (MaybeError error = input.Open(path)) return error;
  return ReadLocations(input, locations, warnings);
}

}  // namespace fabscope::internal
