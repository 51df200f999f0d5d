// Any bytes at all are a topology dump or an error with its place.

#include <cstdlib>

#include "formats/topology_dump.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace fabscope;
  static const regExp specialNodes("Aggregation Node");
  Input input("fuzz", std::string(reinterpret_cast<const char*>(data), size));
  FabricBuilder builder;
  Warnings warnings;
  const MaybeError error = LoadTopologyDump(input, nullptr, &specialNodes, builder, warnings);
  warnings.Lines("fuzz");
  if (error) {
    if (error->line == 0 || error->column == 0) std::abort();
    return 0;
  }
  if (builder.Build()->GetNodes().empty()) std::abort();
  return 0;
}
