#pragma once

#include <array>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <ostream>
#include <string>
#include <type_traits>
#include <variant>
#include <vector>

#include "fabric/fabric_err_general.h"
#include "fabric/ib_node.h"
#include "fat_tree/link_issue.h"

namespace fabscope::internal {

// What the checks find. A check makes each finding once, as data (FTTopology::Record and Report);
// the report, the error records and every other output are written from that data.
//
// A kind of finding has a name for programs (`kind`), words for people, a level, and the IDs of the
// groups that it is about, without duplicates; `isNeighborhood` says which of the two kinds of
// groups they are. It is either an error record or an issue. A record is a single missing or wrong
// cable: it has the name of its event, a description of one line, and a MakeRecord in
// link_errors.h. Everything else is an issue: it writes its own lines to the report. Both name
// switches as GetNodeRecord does with `showGuid`. Nodes and ports belong to the fabric.
//
// TellParts passes all other fields, under their JSON names, to a visitor with
//
//   Switch(name, node), Ends(name, link), Counts(name, counts), Ports(name, ports)
//   Number(name, number), Flag(name, isSet), Choice(name, isFirst, first, second): one of two words
//
// JSON, the library's findings and the comparison of two checks know nothing else of a kind. A kind
// is about one Counts, one Ports, one Ends, one or two Switches, or whole groups. For comparisons
// that is where the fault is; numbers, flags and choices tell it from others there.
//
// FaultWords describes one fault (compare/faults.h) without the IDs of groups, which change from
// run to run. `places` are the names of its switches or ports, or of the first line switch of each
// group if it is about groups; `links` is the switch's count if the kind has Counts, else 0.
//
// IsAboutCables: whether moving cables between switches can cure it.

// What people call findings of a kind: one of them, and more.
struct KindWords {
  const char* one;
  const char* more;
};

// The switches that have one number of links.
struct LinkCount {
  std::int32_t links;
  std::vector<const IBNode*> nodes;
};

// A spine and a line of one group without a cable between them.
struct MissingLink {
  static constexpr const char* kind = "missing-link";
  static constexpr KindWords words{"missing link", "missing links"};
  static constexpr const char* event = "MISSING_LINK";

  std::uint64_t group;
  const IBNode* spine;
  const IBNode* line;
  bool isNeighborhood;

  EnFabricErrLevel_t Level() const { return EN_FABRIC_ERR_ERROR; }
  std::vector<std::uint64_t> Groups() const { return {group}; }
  void AppendDescription(int showGuid, std::string& text) const;
  bool IsAboutCables() const { return true; }
  template <typename Parts>
  void TellParts(Parts& parts) const {
    parts.Switch("spine", *spine);
    parts.Switch("line", *line);
  }
  std::string FaultWords(const std::vector<std::string>& places, std::int32_t links) const;
};

// A cable inside a rank or between groups: of its first end's group and of its second end's.
struct InvalidLink {
  static constexpr const char* kind = "invalid-link";
  static constexpr KindWords words{"invalid link", "invalid links"};
  static constexpr const char* event = "INVALID_LINK";

  std::uint64_t group1;
  std::uint64_t group2;
  FTLinkIssue link;
  bool isNeighborhood;

  // A cable between two roots may be meant.
  EnFabricErrLevel_t Level() const {
    return link.rank1 == 0 && link.rank2 == 0 ? EN_FABRIC_ERR_WARNING : EN_FABRIC_ERR_ERROR;
  }
  // In the order of its ends.
  std::vector<std::uint64_t> Groups() const;
  void AppendDescription(int showGuid, std::string& text) const;
  bool IsAboutCables() const { return true; }
  template <typename Parts>
  void TellParts(Parts& parts) const {
    parts.Ends("ends", link);
  }
  std::string FaultWords(const std::vector<std::string>& places, std::int32_t links) const;
};

// Spines or lines of a group that differ in their number of links up or down.
struct UnevenLinks {
  static constexpr const char* kind = "uneven-links";
  static constexpr KindWords words{"uneven count", "uneven counts"};

  std::uint64_t group;
  std::int32_t expected;          // the greatest number there is
  std::vector<LinkCount> others;  // all with fewer, the most first
  bool ofSpines;
  bool isUp;
  bool isNeighborhood;
  EnFabricErrLevel_t level = EN_FABRIC_ERR_ERROR;

  EnFabricErrLevel_t Level() const { return level; }
  std::vector<std::uint64_t> Groups() const { return {group}; }
  // One for each number that occurs.
  std::uint64_t Issues() const { return others.size() + 1; }
  void WriteLines(std::ostream& stream, int showGuid) const;
  // Below the leaves are hosts.
  bool IsAboutCables() const { return !isNeighborhood || ofSpines || isUp; }
  template <typename Parts>
  void TellParts(Parts& parts) const {
    parts.Choice("set", ofSpines, "spines", "lines");
    parts.Choice("direction", isUp, "up", "down");
    parts.Number("expected", static_cast<std::uint64_t>(expected));
    parts.Counts("counts", others);
  }
  std::string FaultWords(const std::vector<std::string>& places, std::int32_t links) const;
};

// A line for each of the numbers, without an end behind the last; it breaks after one switch more
// than `perLine`.
void ListSwitches(const std::vector<LinkCount>& counts, unsigned perLine,
                  const std::string& linkName, int showGuid, std::ostream& stream);

// A group that more links enter from below than leave upwards.
struct SuspectedBlocking {
  static constexpr const char* kind = "suspected-blocking";
  static constexpr KindWords words{"case of suspected blocking", "cases of suspected blocking"};

  std::uint64_t group;
  std::uint64_t spineUplinks;
  std::uint64_t internalLinks;
  bool isNeighborhood;

  EnFabricErrLevel_t Level() const { return EN_FABRIC_ERR_WARNING; }
  std::vector<std::uint64_t> Groups() const { return {group}; }
  std::uint64_t Issues() const { return 1; }
  void WriteLines(std::ostream& stream, int showGuid) const;
  bool IsAboutCables() const { return false; }
  template <typename Parts>
  void TellParts(Parts& parts) const {
    parts.Number("uplinks", spineUplinks);
    parts.Number("internalLinks", internalLinks);
  }
  std::string FaultWords(const std::vector<std::string>& places, std::int32_t links) const;
};

// Plane ports of a group's switches whose aggregated port is asymmetric.
struct AsymmetricAPorts {
  static constexpr const char* kind = "asymmetric-aports";
  static constexpr KindWords words{"case of asymmetric ports", "cases of asymmetric ports"};

  std::uint64_t group;
  // Inside the group all such ports; towards hosts the first of each aggregated port.
  std::vector<const IBPort*> ports;
  bool toHosts;
  bool isNeighborhood;

  EnFabricErrLevel_t Level() const { return EN_FABRIC_ERR_WARNING; }
  std::vector<std::uint64_t> Groups() const { return {group}; }
  std::uint64_t Issues() const { return ports.size(); }
  void WriteLines(std::ostream& stream, int showGuid) const;
  bool IsAboutCables() const { return false; }
  template <typename Parts>
  void TellParts(Parts& parts) const {
    parts.Flag("toHosts", toHosts);
    parts.Ports("ports", ports);
  }
  std::string FaultWords(const std::vector<std::string>& places, std::int32_t links) const;
};

// A FLID that occurs in more than one neighborhood.
struct SharedFlid {
  static constexpr const char* kind = "shared-flid";
  static constexpr KindWords words{"shared FLID", "shared FLIDs"};
  static constexpr bool isNeighborhood = true;

  std::uint16_t flid;
  std::vector<std::uint64_t> groups;  // ascending

  EnFabricErrLevel_t Level() const { return EN_FABRIC_ERR_WARNING; }
  std::vector<std::uint64_t> Groups() const { return groups; }
  std::uint64_t Issues() const { return 1; }
  void WriteLines(std::ostream& stream, int showGuid) const;
  bool IsAboutCables() const { return false; }
  template <typename Parts>
  void TellParts(Parts& parts) const {
    parts.Number("flid", flid);
  }
  std::string FaultWords(const std::vector<std::string>& places, std::int32_t links) const;
};

// An error record.
template <typename Kind>
concept RecordKind = requires(const Kind& found, std::string& text) {
  { Kind::event } -> std::convertible_to<const char*>;
  found.AppendDescription(0, text);
};

// What raises the count of issues.
template <typename Kind>
concept IssueKind = requires(const Kind& found, std::ostream& stream) {
  { found.Issues() } -> std::same_as<std::uint64_t>;
  found.WriteLines(stream, 0);
};

// Takes the parts of a finding and leaves them alone: for those that want only some.
struct IgnoredParts {
  void Switch(const char* /*name*/, const IBNode& /*node*/) {}
  void Ends(const char* /*name*/, const FTLinkIssue& /*link*/) {}
  void Counts(const char* /*name*/, const std::vector<LinkCount>& /*counts*/) {}
  void Ports(const char* /*name*/, const std::vector<const IBPort*>& /*ports*/) {}
  void Number(const char* /*name*/, std::uint64_t /*number*/) {}
  void Flag(const char* /*name*/, bool /*isSet*/) {}
  void Choice(const char* /*name*/, bool /*isFirst*/, const char* /*first*/,
              const char* /*second*/) {}
};

// One of the two, and never both.
template <typename Kind>
concept FindingKind = RecordKind<Kind>
!= IssueKind<Kind>&& requires(const Kind& found, IgnoredParts& parts) {
  { Kind::kind } -> std::convertible_to<const char*>;
  { Kind::words } -> std::convertible_to<KindWords>;
  { found.Level() } -> std::same_as<EnFabricErrLevel_t>;
  { found.Groups() } -> std::same_as<std::vector<std::uint64_t>>;
  { found.isNeighborhood } -> std::convertible_to<bool>;
  { found.IsAboutCables() } -> std::same_as<bool>;
  { found.FaultWords({}, 0) } -> std::same_as<std::string>;
  found.TellParts(parts);
};

// Kinds of findings, and what they are called, in the same order.
template <FindingKind... Kinds>
struct KindsOfFindings {
  using Variant = std::variant<Kinds...>;
  static constexpr std::array<const char*, sizeof...(Kinds)> names{Kinds::kind...};
  static constexpr std::array<KindWords, sizeof...(Kinds)> words{Kinds::words...};
};

// Every kind, new ones last.
using AllFindings = KindsOfFindings<MissingLink, InvalidLink, UnevenLinks, SuspectedBlocking,
                                    AsymmetricAPorts, SharedFlid>;
using Finding = AllFindings::Variant;
using FindingSink = std::function<void(Finding&& finding)>;

// How a line of a report begins.
inline const char* TagOf(EnFabricErrLevel_t level) {
  return level == EN_FABRIC_ERR_WARNING ? "-W- " : "-E- ";
}

inline const char* KindOf(const Finding& finding) { return AllFindings::names.at(finding.index()); }
inline EnFabricErrLevel_t LevelOf(const Finding& finding) {
  return std::visit([](const auto& found) { return found.Level(); }, finding);
}
inline std::vector<std::uint64_t> GroupsOf(const Finding& finding) {
  return std::visit([](const auto& found) { return found.Groups(); }, finding);
}
// Whether these number neighborhoods.
inline bool IsOfNeighborhoods(const Finding& finding) {
  return std::visit([](const auto& found) { return bool{found.isNeighborhood}; }, finding);
}

// The name of the event of an error record; null for an issue.
inline const char* EventOf(const Finding& finding) {
  return std::visit(
      [](const auto& found) -> const char* {
        using Kind = std::decay_t<decltype(found)>;
        if constexpr (RecordKind<Kind>) {
          return Kind::event;
        } else {
          return nullptr;
        }
      },
      finding);
}
inline bool IsAboutCables(const Finding& finding) {
  return std::visit([](const auto& found) { return found.IsAboutCables(); }, finding);
}
template <typename Parts>
void TellPartsOf(const Finding& finding, Parts& parts) {
  std::visit([&](const auto& found) { found.TellParts(parts); }, finding);
}

inline bool IsRecord(const Finding& finding) { return EventOf(finding) != nullptr; }

// What an error record says, in one line without a tag; nothing for an issue.
void AppendDescriptionOf(const Finding& finding, int showGuid, std::string& text);
inline std::string DescriptionOf(const Finding& finding, int showGuid) {
  std::string text;
  AppendDescriptionOf(finding, showGuid, text);
  return text;
}

// By how much a finding raises the count of issues: 0 for an error record.
std::uint64_t IssuesOf(const Finding& finding);

}  // namespace fabscope::internal
