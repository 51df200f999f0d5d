#include "formats/fabric_formats.h"

#include <algorithm>

#include "formats/fabric_document.h"
#include "formats/graph_writers.h"
#include "formats/net_file_writer.h"
#include "formats/topology_dump.h"
#include "formats/topology_dump_writer.h"

namespace fabscope::internal {
namespace {

MaybeError ReadDocument(Input& input, const NodeNameMap* names, const regExp*,
                        FabricBuilder& builder, Warnings& warnings) {
  InputText text;
  if (MaybeError error = ReadAll(input, text)) return error;
  return LoadFabricDocument(text, names, builder, warnings);
}

void WriteDocument(const IBFabric& fabric, std::ostream& stream) {
  stream << FabricDocumentText(fabric);
}

constexpr unsigned limitsOfGraphs = NamesAreUtf8 | NamesAreOneLine | OnlyDiscovered | OnlyGraph;

constexpr std::array<FormatEntry, 6> table{{
    {.format = FabricFormat::Document,
     .name = "document",
     .title = "Fabric document",
     .endings = {".json"},
     .limits = TextsAreJson,
     .write = WriteDocument,
     .read = ReadDocument,
     .detect = IsFabricDocument},
    {.format = FabricFormat::TopologyDump,
     .name = "ibnetdiscover",
     .title = "topology dump",
     .endings = {".topo"},
     .limits = NamesAreOneLine | OnlyDiscovered | ReadLikeDump | SpecialByName,
     .write = WriteTopologyDump,
     .read = LoadTopologyDump},
    // It reads as a topology dump.
    {.format = FabricFormat::NetFile,
     .name = "ibsim",
     .title = "net file of the simulator ibsim",
     .endings = {".net"},
     .limits = NamesAreNetFiles | OnlyDiscovered | ReadLikeDump | NodesHavePorts,
     .write = WriteNetFile},
    {.format = FabricFormat::Dot,
     .name = "dot",
     .title = "Graphviz",
     .endings = {".dot", ".gv"},
     .limits = limitsOfGraphs | NoPortCounts,
     .write = WriteDot},
    {.format = FabricFormat::GraphMl,
     .name = "graphml",
     .title = "GraphML",
     .endings = {".graphml"},
     .limits = limitsOfGraphs,
     .write = WriteGraphMl},
    {.format = std::nullopt,
     .name = "slurm",
     .title = "Slurm's topology.conf",
     .endings = {".conf"},
     .limits = NoLimit},
}};

constexpr std::size_t fabricFormats = static_cast<std::size_t>(FabricFormat::Count_);
constexpr auto writtenFormats = static_cast<std::size_t>(
    std::count_if(table.begin(), table.end(),
                  [](const FormatEntry& entry) { return entry.format || entry.IsMadeOfTree(); }));

constexpr bool IsInOrder() {
  for (std::size_t i = 0; i < table.size(); ++i) {
    const FormatEntry& entry = table.at(i);
    if (entry.format.has_value() != (i < fabricFormats)) return false;
    if (entry.format.has_value() != (entry.write != nullptr)) return false;
    if (entry.format && static_cast<std::size_t>(*entry.format) != i) return false;
    if (entry.IsMadeOfTree() && i >= writtenFormats) return false;
  }
  return table.size() >= fabricFormats;
}
static_assert(IsInOrder(),
              "first a writer for each FabricFormat, in the order of their values, then what is "
              "made of a tree, then what is only read");

}  // namespace

std::span<const FormatEntry> AllFormats() { return table; }

std::span<const FormatEntry> WrittenFormats() { return AllFormats().first(writtenFormats); }

std::span<const FormatEntry> FabricFormats() { return AllFormats().first(fabricFormats); }

std::span<const FormatEntry> TreeFormats() { return WrittenFormats().subspan(fabricFormats); }

const FormatEntry& EntryOf(FabricFormat format) {
  return table.at(static_cast<std::size_t>(format));
}

const FormatEntry* FormatOfName(std::span<const FormatEntry> formats, std::string_view name) {
  for (const FormatEntry& entry : formats) {
    if (name == entry.name) return &entry;
  }
  return nullptr;
}

const FormatEntry* FormatOfFile(std::span<const FormatEntry> formats, std::string_view path) {
  for (const FormatEntry& entry : formats) {
    for (const char* ending : entry.endings) {
      if (ending != nullptr && path.ends_with(ending)) return &entry;
    }
  }
  return nullptr;
}

std::optional<FabricFormat> FabricFormatOfName(std::string_view name) {
  const FormatEntry* entry = FormatOfName(FabricFormats(), name);
  return entry != nullptr ? entry->format : std::nullopt;
}

std::optional<FabricFormat> FabricFormatOfFile(std::string_view path) {
  const FormatEntry* entry = FormatOfFile(FabricFormats(), path);
  return entry != nullptr ? entry->format : std::nullopt;
}

void WriteFabric(const IBFabric& fabric, FabricFormat format, std::ostream& stream) {
  EntryOf(format).write(fabric, stream);
}

}  // namespace fabscope::internal
