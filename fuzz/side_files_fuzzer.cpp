// Ranks, FLIDs and node-name maps: any bytes at all are such a file or an error with its place, in
// whatever pieces they come; and what was read, written and read again says the same.

#include <cstdint>
#include <map>

#include "fabric/guid.h"
#include "formats/node_name_map.h"
#include "formats/side_files.h"
#include "fuzz/files.h"
#include "fuzz/loading.h"
#include "fuzz/require.h"

namespace {

using namespace fabscope;
using namespace fabscope::fuzz;

constexpr std::uint64_t lastGuid = ~std::uint64_t{0};

// A fabric of four switches and a channel adapter, and what a file says of them.
template <typename Read>
Loaded LoadAbout(const std::string& path, Read read) {
  return LoadWith([&](FabricBuilder& builder, Warnings& warnings) {
    for (const std::uint64_t guid :
         {std::uint64_t{1}, std::uint64_t{2}, std::uint64_t{3}, std::uint64_t{0x2c903}, lastGuid}) {
      NodeSpec node;
      node.guid = guid;
      node.type = guid == 3 ? NodeTypeCA : NodeTypeSwitch;
      node.smdbRank = 7;
      Require(!builder.AddNode(std::move(node)), "the fabric is a good one");
    }
    return read(path, builder, warnings);
  });
}

Loaded Ranks(const std::string& path) { return LoadAbout(path, LoadRanks); }
Loaded Flids(const std::string& path) { return LoadAbout(path, LoadFlids); }

// Names as a map file tells them, in the order of their GUIDs.
Loaded Names(const std::string& path) {
  NodeNameMap names;
  Loaded loaded;
  if (const MaybeError error = LoadNodeNameMap(path, names)) {
    loaded.error = error->message;
    loaded.line = error->line;
    loaded.column = error->column;
    return loaded;
  }
  for (const auto& [guid, name] : std::map(names.begin(), names.end())) {
    loaded.document += GuidText(guid) + " \"" + name + "\"\n";
  }
  return loaded;
}

using LoadFile = Loaded (*)(const std::string& path);

Loaded LoadBytes(const std::string& bytes, LoadFile load) {
  static const MemoryFile file;
  file.Write(bytes);
  return load(file.Path());
}

Loaded Look(const std::string& bytes, LoadFile load) {
  Loaded loaded = LoadBytes(bytes, load);
  if (!loaded.error.empty()) RequirePlaceIn(bytes, loaded.line, loaded.column);
  const StandardInputInPieces input(bytes, {bytes.size() % 61, 1, 2, 3, 5, 8, 13, 21, 1});
  RequireSame(load("-"), loaded, "the pieces of a file do not matter");
  if (bytes.find('\r') == std::string::npos) {
    RequireSame(LoadBytes(Replaced(bytes, "\n", "\r\n"), load), loaded,
                "a carriage return before a line's end changes nothing");
  }
  return loaded;
}

// The file of a column that says what a document of the fabric says.
std::string ColumnOf(const std::string& document, const std::string& column, const char* key) {
  std::string file = " # written again\n\n" + column + " , guid\n";
  std::size_t at = 0;
  for (const std::string guid :
       {"0x0000000000000001", "0x0000000000000002", "0x000000000002c903", "0xffffffffffffffff"}) {
    at = document.find(guid, at);
    const std::string node = document.substr(at, document.find('\n', at) - at);
    const std::size_t value = node.find(key);
    if (value == std::string::npos) continue;
    const std::size_t first = value + std::string_view(key).size();
    std::string numbers = node.substr(first, node.find_first_of("]}", first) - first);
    file += Replaced(numbers, ",", "," + guid + "\n") + "," + guid + "\n";
  }
  return file;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string bytes(reinterpret_cast<const char*>(data), size);
  Loaded loaded = Look(bytes, Ranks);
  if (loaded.error.empty()) {
    loaded.warnings.clear();
    const std::string again = ColumnOf(loaded.document, "rank", "\"smdbRank\":");
    RequireSame(LoadBytes(again, Ranks), loaded, "ranks that were written are read as they were");
  }
  loaded = Look(bytes, Flids);
  if (loaded.error.empty()) {
    loaded.warnings.clear();
    const std::string again = ColumnOf(loaded.document, "flid", "\"flids\":[");
    RequireSame(LoadBytes(again, Flids), loaded, "FLIDs that were written are read as they were");
  }
  loaded = Look(bytes, Names);
  if (loaded.error.empty()) {
    RequireSame(LoadBytes(loaded.document, Names), loaded, "a map is read as it was written");
  }
  return 0;
}
