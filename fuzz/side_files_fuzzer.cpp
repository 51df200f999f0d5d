// Ranks, FLIDs and node-name maps, read through real files as users give them.

#include <cstdlib>
#include <sys/mman.h>
#include <unistd.h>

#include "formats/node_name_map.h"
#include "formats/side_files.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace fabscope;
  static const int file = memfd_create("fuzz", 0);
  static const std::string path = "/proc/self/fd/" + std::to_string(file);
  if (ftruncate(file, 0) != 0 || pwrite(file, data, size, 0) != static_cast<ssize_t>(size)) {
    std::abort();
  }
  FabricBuilder builder;
  NodeSpec node;
  node.guid = 1;
  if (builder.AddNode(std::move(node))) std::abort();
  Warnings warnings;
  NodeNameMap names;
  LoadRanks(path, builder, warnings);
  LoadFlids(path, builder, warnings);
  LoadNodeNameMap(path, names);
  builder.Build();
  return 0;
}
