#include "formats/node_name_map.h"

#include "formats/lines.h"
#include "formats/read_side_files.h"
#include "text/text_fields.h"

namespace fabscope::internal {
namespace {

MaybeError ReadLine(const LineReader& lines, const Line& line, NodeNameMap& names,
                    Warnings& warnings) {
  LineCursor cursor(line.text, line.offset);
  cursor.SkipBlanks();
  if (cursor.AtEnd() || cursor.Peek() == '#') return std::nullopt;

  const std::size_t guidOffset = cursor.Offset();
  const auto guid = ParseGuid(cursor.TakeWord());
  if (!guid) {
    return lines.ErrorAt(line.number, guidOffset,
                         "not a GUID, expected a line of the form 0xGUID \"name\"");
  }
  cursor.SkipBlanks();
  const std::size_t nameOffset = cursor.Offset();
  const bool opened = cursor.Take('"');
  const std::string_view name = cursor.TakeWhile([](char c) { return c != '"'; });
  const bool closed = cursor.Take('"');
  cursor.SkipBlanks();
  if (!opened || !closed || (!cursor.AtEnd() && cursor.Peek() != '#')) {
    return lines.ErrorAt(line.number, nameOffset,
                         "expected a name in double quotes and nothing behind it");
  }
  std::string kept = CleanText(name);
  if (CutText(kept) && warnings.Count(WarningKind::LongText)) {
    warnings.Add(line.number, "name longer than 256 bytes, cut there");
  }
  names.emplace(*guid, std::move(kept));
  return std::nullopt;
}

}  // namespace

MaybeError ReadNodeNameMap(Input& input, NodeNameMap& names, Warnings& warnings) {
  LineReader lines(input);
  MaybeError error;
  for (Line line; !error && lines.Next(line);) error = ReadLine(lines, line, names, warnings);
  return lines.Finish(std::move(error));
}

MaybeError LoadNodeNameMap(const std::string& path, NodeNameMap& names, Warnings& warnings) {
  Input input;
  if (MaybeError error = input.Open(path)) return error;
  return ReadNodeNameMap(input, names, warnings);
}

bool TakeMappedName(const NodeNameMap* names, std::uint64_t guid, std::string& name) {
  if (names == nullptr) return false;
  const auto named = names->find(guid);
  if (named == names->end()) return false;
  name = named->second;
  return true;
}

}  // namespace fabscope::internal
