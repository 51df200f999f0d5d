// What each kind of finding says in words. Scripts know the records and lines, odd blanks included.

#include "fat_tree/findings.h"

#include "fat_tree/group_label.h"
#include "fat_tree/node_record.h"

namespace fabscope::internal {
namespace {

// A listing breaks its line after this many further switches.
constexpr unsigned listedPerLine = 7;
void AppendEnd(const IBNode* node, std::uint8_t port, int showGuid, std::string& text) {
  AppendNodeRecord(text, node, showGuid);
  text.append(" port: ").append(std::to_string(port));
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

void MissingLink::AppendDescription(int showGuid, std::string& text) const {
  text.append(GroupTitle(isNeighborhood)).append(std::to_string(group));
  text += ": missing link between switches (";
  AppendNodeRecord(text, spine, showGuid);
  text += ") and (";
  AppendNodeRecord(text, line, showGuid);
  text += ')';
}

std::string MissingLink::FaultWords(const std::vector<std::string>& places,
                                    std::int32_t /*links*/) const {
  return "missing link between " + Listed(places);
}

std::vector<std::uint64_t> InvalidLink::Groups() const {
  if (group1 == group2) return {group1};
  return {group1, group2};
}

void InvalidLink::AppendDescription(int showGuid, std::string& text) const {
  if (group1 == group2) {
    text.append(GroupTitle(isNeighborhood)).append(std::to_string(group1));
    text += " : invalid link between switches (";
    AppendEnd(link.node1, link.port1, showGuid, text);
    text += ") and (";
  } else {
    text.append("Invalid link between ").append(GroupName(isNeighborhood));
    text.append(" ").append(std::to_string(group1)).append(" (");
    AppendEnd(link.node1, link.port1, showGuid, text);
    // The second of two connectivity groups is only called "group"; scripts know it so.
    text += isNeighborhood ? ") and neighborhood " : ") and group ";
    text.append(std::to_string(group2)).append(" (");
  }
  AppendEnd(link.node2, link.port2, showGuid, text);
  text += ')';
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

void AppendDescriptionOf(const Finding& finding, int showGuid, std::string& text) {
  std::visit(
      [&](const auto& found) {
        if constexpr (RecordKind<std::decay_t<decltype(found)>>) {
          found.AppendDescription(showGuid, text);
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
