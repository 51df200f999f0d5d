// What each kind of finding says in words. Scripts know the records and lines, odd blanks included.

#include "fat_tree/findings.h"

#include "fat_tree/group_label.h"
#include "fat_tree/node_record.h"

namespace fabscope::internal {
namespace {

// A listing breaks its line after this many further switches.
constexpr unsigned listedPerLine = 7;

// Few descriptions are longer.
constexpr std::size_t usualDescription = 120;

std::string EndText(const IBNode* node, std::uint8_t port, int showGuid) {
  return GetNodeRecord(node, showGuid) + " port: " + std::to_string(port);
}

// With at least one of them.
std::string Listed(const std::vector<std::string>& words) {
  std::string text = words.front();
  for (std::size_t i = 1; i < words.size(); ++i) {
    text += (i + 1 == words.size() ? " and " : ", ") + words[i];
  }
  return text;
}

}  // namespace

std::string MissingLink::Description(int showGuid) const {
  // A check may describe millions of them.
  std::string text;
  text.reserve(usualDescription);
  text.append(GroupTitle(isNeighborhood)).append(std::to_string(group));
  text += ": missing link between switches (";
  AppendNodeRecord(text, spine, showGuid);
  text += ") and (";
  AppendNodeRecord(text, line, showGuid);
  text += ')';
  return text;
}

std::string MissingLink::FaultWords(const std::vector<std::string>& places,
                                    std::int32_t /*links*/) const {
  return "missing link between " + Listed(places);
}

std::vector<std::uint64_t> InvalidLink::Groups() const {
  if (group1 == group2) return {group1};
  return {group1, group2};
}

std::string InvalidLink::Description(int showGuid) const {
  const std::string end1 = EndText(link.node1, link.port1, showGuid);
  const std::string end2 = EndText(link.node2, link.port2, showGuid);
  if (group1 == group2) {
    return GroupTitle(isNeighborhood) + std::to_string(group1) +
           " : invalid link between switches (" + end1 + ") and (" + end2 + ")";
  }
  // The second of two connectivity groups is only called "group"; scripts know it so.
  return std::string("Invalid link between ") + GroupName(isNeighborhood) + ' ' +
         std::to_string(group1) + " (" + end1 + ") and " +
         (isNeighborhood ? "neighborhood " : "group ") + std::to_string(group2) + " (" + end2 + ")";
}

std::string InvalidLink::FaultWords(const std::vector<std::string>& places,
                                    std::int32_t /*links*/) const {
  return "invalid link between " + Listed(places);
}

void UnevenLinks::WriteLines(std::ostream& stream, int showGuid) const {
  const char* setName = ofSpines ? "spines" : "lines";
  const char* linkName = isUp ? "uplinks" : "downlinks";
  stream << TagOf(level) << GroupTitle(isNeighborhood) << group << ": " << setName
         << " with different number of " << linkName << " (expected  " << expected << ' '
         << linkName << ')';
  ListSwitches(others, listedPerLine, linkName, showGuid, stream);
  stream << std::endl;
}

std::string UnevenLinks::FaultWords(const std::vector<std::string>& places,
                                    std::int32_t links) const {
  return places.front() + " has " + std::to_string(links) + (isUp ? " uplinks" : " downlinks") +
         ", expected " + std::to_string(expected) + " among the " +
         (ofSpines ? "spines" : "lines") + " of its " + GroupName(isNeighborhood);
}

void ListSwitches(const std::vector<LinkCount>& counts, unsigned perLine,
                  const std::string& linkName, int showGuid, std::ostream& stream) {
  for (const LinkCount& count : counts) {
    stream << std::endl << "\t " << count.links << ' ' << linkName << ": ";
    unsigned onLine = 0;
    for (const IBNode* node : count.nodes) {
      stream << GetNodeRecord(node, showGuid) << ' ';
      // The break comes behind a full line even when nothing follows it.
      if (onLine >= perLine) {
        stream << std::endl << "\t\t";
        onLine = 0;
      } else {
        ++onLine;
      }
    }
  }
}

void SuspectedBlocking::WriteLines(std::ostream& stream, int /*showGuid*/) const {
  stream << TagOf(Level()) << GroupTitle(isNeighborhood) << group
         << ": suspected blocking configuration  --  total number of spine's uplinks "
         << spineUplinks << " is less then total number of internal links " << internalLinks
         << std::endl;
}

std::string SuspectedBlocking::FaultWords(const std::vector<std::string>& places,
                                          std::int32_t /*links*/) const {
  return std::string("suspected blocking in the ") + GroupName(isNeighborhood) + " of " +
         places.front() + ": " + std::to_string(spineUplinks) + " links go up, " +
         std::to_string(internalLinks) + " come from below";
}

void AsymmetricAPorts::WriteLines(std::ostream& stream, int /*showGuid*/) const {
  stream << TagOf(Level()) << GroupTitle(isNeighborhood) << group << ": found " << ports.size()
         << " asymmetric APort" << (ports.size() == 1 ? "" : "s")
         << (toHosts ? " connected to CAs" : "") << std::endl;
}

std::string AsymmetricAPorts::FaultWords(const std::vector<std::string>& places,
                                         std::int32_t /*links*/) const {
  return (toHosts ? "asymmetric aggregated port to a host at " : "asymmetric aggregated port at ") +
         places.front();
}

void SharedFlid::WriteLines(std::ostream& stream, int /*showGuid*/) const {
  stream << TagOf(Level()) << "FLID=" << flid << " appears in the following neighborhoods: ";
  const char* separator = "";
  for (const std::uint64_t id : groups) {
    stream << separator << id;
    separator = ", ";
  }
  stream << std::endl;
}

std::string SharedFlid::FaultWords(const std::vector<std::string>& places,
                                   std::int32_t /*links*/) const {
  return "FLID " + std::to_string(flid) + " is in the neighborhoods of " + Listed(places);
}

std::string DescriptionOf(const Finding& finding, int showGuid) {
  return std::visit(
      [showGuid](const auto& found) -> std::string {
        if constexpr (RecordKind<std::decay_t<decltype(found)>>) {
          return found.Description(showGuid);
        } else {
          return {};
        }
      },
      finding);
}

std::uint64_t IssuesOf(const Finding& finding) {
  return std::visit(
      [](const auto& found) -> std::uint64_t {
        if constexpr (IssueKind<std::decay_t<decltype(found)>>) {
          return found.Issues();
        } else {
          return 0;
        }
      },
      finding);
}

}  // namespace fabscope::internal
