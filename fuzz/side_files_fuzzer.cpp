// Ranks, FLIDs, node-name maps and places: any bytes at all are such a file or an error with its
// place, in whatever pieces they come; and of a file that could be read each line says what it
// seems to say.

#include <algorithm>
#include <array>
#include <cctype>
#include <cstdint>
#include <map>
#include <set>
#include <sstream>
#include <string>

#include "fabric/guid.h"
#include "formats/locations.h"
#include "formats/node_name_map.h"
#include "formats/side_files.h"
#include "fuzz/files.h"
#include "fuzz/loading.h"
#include "fuzz/require.h"

namespace {

using namespace fabscope::internal;
using namespace fabscope::internal::fuzz;

// A fabric of four switches and a channel adapter.
constexpr std::array<std::uint64_t, 4> switchGuids{1, 2, 0x2c903, ~std::uint64_t{0}};
constexpr std::uint64_t adapterGuid = 3;

bool IsNoSwitch(std::uint64_t guid) {
  return std::find(switchGuids.begin(), switchGuids.end(), guid) == switchGuids.end();
}

void AddNode(FabricBuilder& builder, std::uint64_t guid, std::uint8_t type) {
  NodeSpec node;
  node.guid = guid;
  node.type = type;
  node.smdbRank = 7;
  Require(!builder.AddNode(node), "the fabric is a good one");
}

// What a file makes of it.
template <typename Read>
Loaded LoadAbout(const std::string& path, Read read) {
  return LoadWith([&](FabricBuilder& builder, Warnings& warnings) {
    for (const std::uint64_t guid : switchGuids) AddNode(builder, guid, NodeTypeSwitch);
    AddNode(builder, adapterGuid, NodeTypeCA);
    return read(path, builder, warnings);
  });
}

Loaded Ranks(const std::string& path) { return LoadAbout(path, LoadRanks); }
Loaded Flids(const std::string& path) { return LoadAbout(path, LoadFlids); }

Loaded Failed(const InputError& error) {
  Loaded loaded;
  loaded.error = error.message;
  loaded.line = error.line;
  loaded.column = error.column;
  return loaded;
}

// Names as a map file tells them, in the order of their GUIDs.
Loaded Names(const std::string& path) {
  NodeNameMap names;
  Warnings warnings;
  Loaded loaded;
  if (const MaybeError error = LoadNodeNameMap(path, names, warnings)) return Failed(*error);
  for (const auto& [guid, name] : std::map(names.begin(), names.end())) {
    loaded.document += GuidText(guid) + " \"" + name + "\"\n";
  }
  return loaded;
}

std::string InQuotes(const std::string& text) {
  std::string quoted = "\"";
  for (const char c : text) quoted += c == '"' ? "\"\"" : std::string(1, c);
  return quoted + '"';
}

std::string RowOf(const std::string& guid, const std::string& name, const Location& place) {
  std::string row =
      guid + "," + InQuotes(name) + "," + InQuotes(place.rack) + "," + InQuotes(place.unit);
  for (const std::string& more : place.more) row += "," + InQuotes(more);
  return row + "\n";
}

// A list of places with all columns, those of GUIDs first.
Loaded Places(const std::string& path) {
  Locations places;
  Warnings warnings;
  Loaded loaded;
  if (const MaybeError error = LoadLocations(path, places, warnings)) return Failed(*error);
  loaded.document = "guid,name,rack,unit";
  for (const std::string& column : places.moreColumns) loaded.document += "," + InQuotes(column);
  loaded.document += "\n";
  for (const auto& [guid, place] : places.byGuid)
    loaded.document += RowOf(GuidText(guid), "", place);
  for (const auto& [name, place] : places.byName) loaded.document += RowOf("", name, place);
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
  // The lines of packed bytes are those of what is in them.
  const bool isPacked = bytes.starts_with("\x1f\x8b");
  if (!loaded.error.empty() && !isPacked) RequirePlaceIn(bytes, loaded.line, loaded.column);
  const StandardInputInPieces input(bytes, {bytes.size() % 61, 1, 2, 3, 5, 8, 13, 21, 1});
  RequireSame(load("-"), loaded, "the pieces of a file do not matter");
  if (bytes.find('\r') == std::string::npos && !isPacked) {
    RequireSame(LoadBytes(Replaced(bytes, "\n", "\r\n"), load), loaded,
                "a carriage return before a line's end changes nothing");
  }
  return loaded;
}

// By GUID, the values that belong to it.
using Column = std::map<std::uint64_t, std::set<unsigned long>>;

std::uint64_t GuidOf(const std::string& text) { return std::stoull(text, nullptr, 16); }

// What a document says of its switches behind a key.
Column InDocument(const std::string& document, const std::string& key) {
  Column column;
  std::istringstream lines(document);
  for (std::string line; std::getline(lines, line);) {
    const std::size_t at = line.find(key);
    if (at == std::string::npos || line.find("\"switch\"") == std::string::npos) continue;
    const std::uint64_t guid = GuidOf(line.substr(line.find("0x"), 18));
    std::istringstream values(line.substr(at + key.size()));
    unsigned long value = 0;
    do {
      values >> value;
      column[guid].insert(value);
    } while (values.get() == ',' && std::isdigit(values.peek()) != 0);
  }
  return column;
}

// The same as a file says it that could be read, without a look at what is wrong.
Column InFile(std::string file, bool onlyLast) {
  if (file.starts_with("\xef\xbb\xbf")) file.erase(0, 3);
  Column column;
  std::istringstream lines(file);
  bool haveHeader = false;
  bool isGuidFirst = false;
  for (std::string line; std::getline(lines, line);) {
    const std::size_t first = line.find_first_not_of(" \t\r");
    if (first == std::string::npos || line[first] == '#') continue;
    if (!haveHeader) {
      haveHeader = true;
      isGuidFirst = line.substr(first).starts_with("guid");
      continue;
    }
    const std::size_t comma = line.find(',');
    const std::string left = line.substr(first, comma - first);
    const std::string right = line.substr(line.find_first_not_of(" \t\r", comma + 1));
    std::set<unsigned long>& values = column[GuidOf(isGuidFirst ? left : right)];
    if (onlyLast) values.clear();
    values.insert(std::stoul(isGuidFirst ? right : left));
  }
  return column;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string bytes(reinterpret_cast<const char*>(data), size);
  if (const Loaded ranks = Look(bytes, Ranks); ranks.error.empty()) {
    Column expected = InFile(bytes, true);
    std::erase_if(expected, [](const auto& entry) {
      return IsNoSwitch(entry.first) || entry.second.contains(255);
    });
    Require(InDocument(ranks.document, "\"smdbRank\":") == expected, "ranks are those of the file");
  }
  if (const Loaded flids = Look(bytes, Flids); flids.error.empty()) {
    Column expected = InFile(bytes, false);
    std::erase_if(expected, [](const auto& entry) { return IsNoSwitch(entry.first); });
    Require(InDocument(flids.document, "\"flids\":[") == expected, "FLIDs are those of the file");
  }
  if (const Loaded names = Look(bytes, Names); names.error.empty()) {
    RequireSame(LoadBytes(names.document, Names), names, "a map is read as it was written");
  }
  if (const Loaded places = Look(bytes, Places); places.error.empty()) {
    RequireSame(LoadBytes(places.document, Places), places, "places are read as they were written");
  }
  return 0;
}
