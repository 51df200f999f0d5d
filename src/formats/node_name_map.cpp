#include "formats/node_name_map.h"

#include "formats/input_text.h"
#include "formats/lines.h"
#include "formats/text_fields.h"

namespace fabscope {

MaybeError LoadNodeNameMap(const std::string& path, NodeNameMap& names) {
  InputText input;
  if (MaybeError error = ReadInput(path, input)) return error;

  MaybeError error;
  ForEachLine(input, [&](std::string_view line, std::size_t offset) {
    LineCursor cursor(line, offset);
    cursor.SkipBlanks();
    if (cursor.AtEnd() || cursor.Peek() == '#') return true;

    const std::size_t guidOffset = cursor.Offset();
    const auto guid = ParseGuid(cursor.TakeWord());
    if (!guid) {
      error = input.ErrorAt(guidOffset, "not a GUID, expected a line of the form 0xGUID \"name\"");
      return false;
    }
    cursor.SkipBlanks();
    const std::size_t nameOffset = cursor.Offset();
    const bool opened = cursor.Take('"');
    const std::string_view name = cursor.TakeWhile([](char c) { return c != '"'; });
    const bool closed = cursor.Take('"');
    cursor.SkipBlanks();
    if (!opened || !closed || (!cursor.AtEnd() && cursor.Peek() != '#')) {
      error = input.ErrorAt(nameOffset, "expected a name in double quotes and nothing behind it");
      return false;
    }
    names.emplace(*guid, CleanText(name));
    return true;
  });
  return error;
}

}  // namespace fabscope
