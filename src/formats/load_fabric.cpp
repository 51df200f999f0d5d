#include "formats/load_fabric.h"

#include "formats/fabric_document.h"
#include "formats/input.h"
#include "formats/topology_dump.h"

namespace fabscope {
namespace {

bool IsDocument(Input& input) {
  for (;;) {
    std::string_view text = input.Unread();
    if (text.starts_with(ByteOrderMark)) text.remove_prefix(ByteOrderMark.size());
    const std::size_t first = text.find_first_not_of(" \t\r\n");
    // A pipe may have given only a part of the mark yet.
    const bool isKnown = first != std::string_view::npos && !ByteOrderMark.starts_with(text);
    if (isKnown) return text[first] == '{';
    if (text.size() > Input::MostOfALine) return false;
    if (!input.Fill()) return false;
  }
}

}  // namespace

MaybeError LoadFabric(const std::string& path, const NodeNameMap* names, const regExp* specialNodes,
                      FabricBuilder& builder, Warnings& warnings) {
  Input input;
  if (MaybeError error = input.Open(path)) return error;
  if (!IsDocument(input)) return LoadTopologyDump(input, names, specialNodes, builder, warnings);
  InputText text;
  if (MaybeError error = ReadAll(input, text)) return error;
  return LoadFabricDocument(text, names, builder, warnings);
}

}  // namespace fabscope
