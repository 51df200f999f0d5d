#pragma once

#include <cstdint>
#include <string>

#include "fabric/fabric_err_general.h"
#include "fabric/ib_node.h"

namespace fabscope {

// A link at fault between two switches. For a link between an upper and a lower switch node1 is
// the upper one. A missing link has port 0 and a rank of all ones at both ends: there is no port.
struct FTLinkIssue {
  const IBNode* node1 = nullptr;
  std::uint8_t port1 = 0;
  std::uint64_t rank1 = 0;
  const IBNode* node2 = nullptr;
  std::uint8_t port2 = 0;
  std::uint64_t rank2 = 0;
};

// A spine and a line of one group without a cable between them. `isNeighborhood` says what the
// group is called.
class FTMissingLinkError final : public FabricErrGeneral {
 public:
  FTMissingLinkError(std::uint64_t id, const FTLinkIssue& issue, bool isNeighborhood);
  // The same with the switches' node records: a group can miss millions of links among few
  // switches.
  FTMissingLinkError(std::uint64_t id, const std::string& spine, const std::string& line,
                     bool isNeighborhood);
  ~FTMissingLinkError() override = default;
  std::string GetCSVErrorLine() override;
  std::string GetErrorLine() override;
};

// A cable that breaks the tree's layering or crosses between groups: id1 and id2 are the groups of
// its two ends. Its level is 3, but 2 for a cable between two roots.
class FTInvalidLinkError final : public FabricErrGeneral {
 public:
  FTInvalidLinkError(std::uint64_t id1, std::uint64_t id2, const FTLinkIssue& issue,
                     bool isNeighborhood);
  ~FTInvalidLinkError() override = default;
  std::string GetCSVErrorLine() override;
  std::string GetErrorLine() override;
};

// What CSV and JSON call the kind of a record of this stage: "MISSING_LINK" or "INVALID_LINK".
const char* GetEventName(const FabricErrGeneral& record);

}  // namespace fabscope
