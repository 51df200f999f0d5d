#include "fat_tree/link_errors.h"

#include <array>
#include <cstddef>
#include <numeric>
#include <string_view>

#include "fat_tree/group_label.h"
#include "fat_tree/node_record.h"
#include "platform/csv_desc.h"

namespace fabscope {
namespace {

constexpr const char* missingLinkEvent = "MISSING_LINK";
constexpr const char* invalidLinkEvent = "INVALID_LINK";

// The identifier fields are zero: the record belongs to no single node or port.
std::string CsvLine(const char* event, const std::string& description) {
  return std::string("CLUSTER,0x0,0x0,0x0,") + event + ",\"" + DescToCsvDesc(description) + '"';
}

std::string EndText(const IBNode* node, std::uint8_t port) {
  return GetNodeRecord(node) + " port: " + std::to_string(port);
}

}  // namespace

FTMissingLinkError::FTMissingLinkError(std::uint64_t id, const FTLinkIssue& issue,
                                       bool isNeighborhood)
    : FTMissingLinkError(id, GetNodeRecord(issue.node1), GetNodeRecord(issue.node2),
                         isNeighborhood) {}

FTMissingLinkError::FTMissingLinkError(std::uint64_t id, const std::string& spine,
                                       const std::string& line, bool isNeighborhood) {
  const std::string number = std::to_string(id);
  const std::string_view title = GroupTitle(isNeighborhood);
  const std::array<std::string_view, 7> pieces{
      title, number, ": missing link between switches (", spine, ") and (", line, ")"};
  description.clear();
  // As much room as it takes, and no more.
  description.reserve(
      std::accumulate(pieces.begin(), pieces.end(), std::size_t{0},
                      [](std::size_t sum, std::string_view piece) { return sum + piece.size(); }));
  for (const std::string_view piece : pieces) description += piece;
}

std::string FTMissingLinkError::GetCSVErrorLine() { return CsvLine(missingLinkEvent, description); }
std::string FTMissingLinkError::GetErrorLine() { return description; }

FTInvalidLinkError::FTInvalidLinkError(std::uint64_t id1, std::uint64_t id2,
                                       const FTLinkIssue& issue, bool isNeighborhood) {
  const std::string end1 = EndText(issue.node1, issue.port1);
  const std::string end2 = EndText(issue.node2, issue.port2);
  if (id1 != id2) {
    // The second of two connectivity groups is only called "group"; scripts know it so.
    description = std::string("Invalid link between ") + GroupName(isNeighborhood) + ' ' +
                  std::to_string(id1) + " (" + end1 + ") and " +
                  (isNeighborhood ? "neighborhood " : "group ") + std::to_string(id2) + " (" +
                  end2 + ")";
  } else {
    description = GroupTitle(isNeighborhood) + std::to_string(id1) +
                  " : invalid link between switches (" + end1 + ") and (" + end2 + ")";
  }
  if (issue.rank1 == 0 && issue.rank2 == 0) level = EN_FABRIC_ERR_WARNING;
}

std::string FTInvalidLinkError::GetCSVErrorLine() { return CsvLine(invalidLinkEvent, description); }
std::string FTInvalidLinkError::GetErrorLine() { return description; }

const char* GetEventName(const FabricErrGeneral& record) {
  const bool isMissing = dynamic_cast<const FTMissingLinkError*>(&record) != nullptr;
  return isMissing ? missingLinkEvent : invalidLinkEvent;
}

}  // namespace fabscope
