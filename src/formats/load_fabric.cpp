#include "formats/load_fabric.h"

#include "formats/fabric_document.h"
#include "formats/input_text.h"
#include "formats/text_fields.h"
#include "formats/topology_dump.h"

namespace fabscope {
namespace {

bool IsDocument(const InputText& input) {
  const std::size_t first = input.bytes.find_first_not_of(" \t\r\n", input.Start());
  return first != std::string::npos && input.bytes[first] == '{';
}

}  // namespace

MaybeError LoadFabric(const std::string& path, const NodeNameMap* names, const regExp* specialNodes,
                      FabricBuilder& builder, Warnings& warnings) {
  InputText input;
  if (MaybeError error = ReadInput(path, input)) return error;
  if (IsDocument(input)) return LoadFabricDocument(input, names, builder);
  return LoadTopologyDump(input, names, specialNodes, builder, warnings);
}

}  // namespace fabscope
