#include "fat_tree/link_errors.h"

#include "platform/csv_desc.h"

namespace fabscope::internal {

FTMissingLinkError::FTMissingLinkError(const MissingLink& found, int showGuid) {
  description.clear();
  found.AppendDescription(showGuid, description);
  level = found.Level();
}

FTMissingLinkError::FTMissingLinkError(std::uint64_t id, const FTLinkIssue& issue,
                                       bool isNeighborhood, int showGuid)
    : FTMissingLinkError(MissingLink{id, issue.node1, issue.node2, isNeighborhood}, showGuid) {}

std::string FTMissingLinkError::GetCSVErrorLine() {
  return EventCsvLine(MissingLink::event, description);
}
std::string FTMissingLinkError::GetErrorLine() { return description; }

FTInvalidLinkError::FTInvalidLinkError(const InvalidLink& found, int showGuid) {
  description.clear();
  found.AppendDescription(showGuid, description);
  level = found.Level();
}

FTInvalidLinkError::FTInvalidLinkError(std::uint64_t id1, std::uint64_t id2,
                                       const FTLinkIssue& issue, bool isNeighborhood, int showGuid)
    : FTInvalidLinkError(InvalidLink{id1, id2, issue, isNeighborhood}, showGuid) {}

std::string FTInvalidLinkError::GetCSVErrorLine() {
  return EventCsvLine(InvalidLink::event, description);
}
std::string FTInvalidLinkError::GetErrorLine() { return description; }

std::string EventCsvLine(const char* event, const std::string& description) {
  std::string line = "CLUSTER,0x0,0x0,0x0,";
  return line.append(event).append(",").append(QuotedCsv(description));
}

}  // namespace fabscope::internal
