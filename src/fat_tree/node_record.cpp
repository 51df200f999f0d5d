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

void AppendNodeRecord(std::string& text, const IBNode* node, int showGuid) {
  const std::string asic = GetSwitchASIC(node);
  if (showGuid == 1) {
    // The ASIC stands here and after the name: the GUID of a system with its ASIC is a key of its
    // own in other reports.
    AppendGuidText(text, node->systemGuid);
    text.append(asic).append(" -- ");
  } else if (showGuid == 2) {
    AppendGuidText(text, node->guid);
    text += " -- ";
  }
  text += WithoutChipPart(node->getAlternativeName());
  text += asic;
}

std::string GetNodeRecord(const IBNode* node, int showGuid) {
  std::string text;
  AppendNodeRecord(text, node, showGuid);
  return text;
}

}  // namespace fabscope::internal
