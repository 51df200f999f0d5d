#include "formats/node_name_map.h"

#include "formats/lines.h"
#include "formats/text_fields.h"

namespace fabscope {
namespace {

MaybeError ReadLine(const LineReader& lines, const Line& line, NodeNameMap& names) {
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
  names.emplace(*guid, CleanText(name));
  return std::nullopt;
}

}  // namespace

MaybeError LoadNodeNameMap(const std::string& path, NodeNameMap& names) {
  Input input;
  if (MaybeError error = input.Open(path)) return error;
  LineReader lines(input);
  MaybeError error;
  for (Line line; !error && lines.Next(line);) error = ReadLine(lines, line, names);
  return lines.Finish(std::move(error));
}

}  // namespace fabscope
