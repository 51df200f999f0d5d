#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "fabric/fabric_err_general.h"
#include "fat_tree/findings.h"

namespace fabscope::internal {

// A spine and a line of one group without a cable between them. `isNeighborhood` says what the
// group is called.
class FTMissingLinkError final : public FabricErrGeneral {
 public:
  explicit FTMissingLinkError(const MissingLink& found, int showGuid = 0);
  FTMissingLinkError(std::uint64_t id, const FTLinkIssue& issue, bool isNeighborhood,
                     int showGuid = 0);
  ~FTMissingLinkError() override = default;
  std::string GetCSVErrorLine() override;
  std::string GetErrorLine() override;
};

// A cable that breaks the tree's layering or crosses between groups: id1 and id2 are the groups of
// its two ends. Its level is 3, but 2 for a cable between two roots.
class FTInvalidLinkError final : public FabricErrGeneral {
 public:
  explicit FTInvalidLinkError(const InvalidLink& found, int showGuid = 0);
  FTInvalidLinkError(std::uint64_t id1, std::uint64_t id2, const FTLinkIssue& issue,
                     bool isNeighborhood, int showGuid = 0);
  ~FTInvalidLinkError() override = default;
  std::string GetCSVErrorLine() override;
  std::string GetErrorLine() override;
};

inline std::unique_ptr<FabricErrGeneral> MakeRecord(const MissingLink& found, int showGuid) {
  return std::make_unique<FTMissingLinkError>(found, showGuid);
}
inline std::unique_ptr<FabricErrGeneral> MakeRecord(const InvalidLink& found, int showGuid) {
  return std::make_unique<FTInvalidLinkError>(found, showGuid);
}

// The line of the CSV report for an event of the cluster as a whole, without a line end. The
// identifier fields are zero: it belongs to no single node or port.
std::string EventCsvLine(const char* event, const std::string& description);

}  // namespace fabscope::internal
