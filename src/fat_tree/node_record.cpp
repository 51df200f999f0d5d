#include "fat_tree/node_record.h"

#include "fabric/fabric_walk.h"
#include "fabric/guid.h"

namespace fabscope::internal {
namespace {

// Chips of one chassis carry their place behind "/A" or "/U"; a report names the chassis.
std::string_view WithoutChipPart(std::string_view name) {
  std::size_t end = name.find("/A");
  if (end == std::string_view::npos) end = name.find("/U");
  return name.substr(0, end);
}

}  // namespace

std::string GetNodeRecord(const IBNode* node, int showGuid) {
  const std::string asic = GetSwitchASIC(node);
  std::string record;
  if (showGuid == 1) {
    // The ASIC stands here and after the name: the GUID of a system with its ASIC is a key of its
    // own in other reports.
    record = GuidText(node->systemGuid) + asic + " -- ";
  } else if (showGuid == 2) {
    record = GuidText(node->guid) + " -- ";
  }
  record += WithoutChipPart(node->getAlternativeName());
  record += asic;
  return record;
}

}  // namespace fabscope::internal
