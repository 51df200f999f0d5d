#include "formats/write_fabric.h"

#include <array>

#include "formats/fabric_document.h"
#include "formats/graph_writers.h"
#include "formats/net_file_writer.h"
#include "formats/topology_dump_writer.h"

namespace fabscope {
namespace {

struct FormatWord {
  std::string_view word;
  FabricFormat format;
};

constexpr std::array<FormatWord, 5> names{{{"document", FabricFormat::Document},
                                           {"ibnetdiscover", FabricFormat::TopologyDump},
                                           {"ibsim", FabricFormat::NetFile},
                                           {"dot", FabricFormat::Dot},
                                           {"graphml", FabricFormat::GraphMl}}};

constexpr std::array<FormatWord, 6> endings{{{".json", FabricFormat::Document},
                                             {".topo", FabricFormat::TopologyDump},
                                             {".net", FabricFormat::NetFile},
                                             {".dot", FabricFormat::Dot},
                                             {".gv", FabricFormat::Dot},
                                             {".graphml", FabricFormat::GraphMl}}};

}  // namespace

std::optional<FabricFormat> FabricFormatOfName(std::string_view name) {
  for (const auto& [word, format] : names) {
    if (name == word) return format;
  }
  return std::nullopt;
}

std::optional<FabricFormat> FabricFormatOfFile(std::string_view path) {
  for (const auto& [word, format] : endings) {
    if (path.ends_with(word)) return format;
  }
  return std::nullopt;
}

void WriteFabric(const IBFabric& fabric, FabricFormat format, std::ostream& stream) {
  switch (format) {
    case FabricFormat::Document:
      stream << FabricDocumentText(fabric);
      return;
    case FabricFormat::TopologyDump:
      return WriteTopologyDump(fabric, stream);
    case FabricFormat::NetFile:
      return WriteNetFile(fabric, stream);
    case FabricFormat::Dot:
      return WriteDot(fabric, stream);
    case FabricFormat::GraphMl:
      return WriteGraphMl(fabric, stream);
  }
}

}  // namespace fabscope
