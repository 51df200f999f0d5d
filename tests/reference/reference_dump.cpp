#include <cstddef>
#include <set>
#include <string>

#include "reference/reference_run.h"

namespace fabscope::internal::reference::detail {
namespace {

std::string DumpRanks(Run& run) {
  std::string text;
  for (std::size_t rank = 0; rank < run.ranks.size(); ++rank) {
    std::string suffix = " ";
    if (rank == 0) {
      suffix = " (Roots)";
    } else if (rank + 1 == run.ranks.size()) {
      suffix = " (Leaves)";
    } else {
      run.Note("dump of a rank in between");
    }
    text += "\nrank: " + std::to_string(rank) + suffix +
            "size: " + std::to_string(run.ranks[rank].size()) + "\n";
    for (const int node : run.ranks[rank]) text += "\t" + NodeRecord(run, node) + "\n";
  }
  return text;
}

std::string DumpSet(Run& run, const std::set<int>& nodes, const std::string& name) {
  std::string text = "\t\t" + name + ": " + std::to_string(nodes.size()) + " switches\n";
  for (const int node : nodes) text += "\t\t\t" + NodeRecord(run, node) + "\n";
  return text;
}

std::string DumpGroup(Run& run, const Group& group) {
  std::string text =
      AreNeighborhoods(run, group.rank) ? "\tneighborhood: " : "\tconnectivity group: ";
  text += std::to_string(group.id) + "\n";
  if (group.rank != 0) {
    run.Note("dump of link totals");
    text += "\t\ttotal spine uplinks: " + std::to_string(group.totalSpineUplinks) + "\n";
    text += "\t\ttotal internal links: " + std::to_string(group.totalInternalLinks) + "\n";
  }
  return text + DumpSet(run, group.spines, "spines") + DumpSet(run, group.lines, "lines");
}

std::string DoubleQuotes(Run& run, const std::string& text) {
  std::string field;
  for (const char c : text) {
    const auto byte = static_cast<unsigned char>(c);
    if (c == '"') {
      run.Note("double quote doubled in the CSV file");
      field += "\"\"";
    } else {
      field += byte < 0x20 || byte == 0x7f ? ' ' : c;
    }
  }
  return field;
}

}  // namespace

std::string LevelsReport(Run& run) {
  std::string text = std::to_string(run.ranks.size()) + " level Fat-Tree was discovered: \n";
  for (std::size_t rank = 0; rank < run.ranks.size(); ++rank) {
    text += "\t rank: " + std::to_string(rank) + (rank == 0 ? "(Roots)" : "") +
            " #switches: " + std::to_string(run.ranks[rank].size()) + "\n";
  }
  run.Note(run.ranks.size() > 4 ? "more than four levels"
                                : std::to_string(run.ranks.size()) + " levels");
  return text;
}

std::string RecordLines(Run& run) {
  if (run.records.empty()) return "";
  std::string text = "\n";
  for (const Record& record : run.records) {
    text += (record.level == 2 ? "-W- " : "-E- ") + record.description + "\n";
  }
  return text;
}

std::string CsvFile(Run& run) {
  std::string text = "Scope,NodeId,PortId,PortNumber,Event,Description\n";
  for (const Record& record : run.records) {
    text += std::string("CLUSTER,0x0,0x0,0x0,") +
            (record.isMissingLink ? "MISSING_LINK" : "INVALID_LINK") + ",\"" +
            DoubleQuotes(run, record.description) + "\"\n";
  }
  return text;
}

std::string Dump(Run& run) {
  std::string text = "\n\n" + DumpRanks(run) + "\n\n\n";
  for (std::size_t rank = 0; rank < run.groups.size(); ++rank) {
    text += "on ranks (" + std::to_string(rank) + ", " + std::to_string(rank + 1) + ") -- " +
            (AreNeighborhoods(run, rank) ? "neighborhoods: " : "connectivity groups: ") +
            std::to_string(run.groups[rank].size()) + "\n";
    for (const Group& group : run.groups[rank]) text += DumpGroup(run, group);
    text += "\n";
  }
  return text;
}

}  // namespace fabscope::internal::reference::detail
