// The page finds its data in a script element that is no script:
//
//   {"result": the JSON result,
//    "switches": [[GUID, name, rank, hosts, up-links, down-links], ...],
//    "cables": [switch, port, switch, port, ...],
//    "told": {"verdict": text, "notes": [text, ...], "advice": text,
//             "date": text, "places": [[switch, rack, unit], ...]}}
//
// `told` has the words of the terminal. Switches stand in model order and cables name them by
// their place there. What is not known is -1: the rank of a switch outside the tree, and its link
// counts.

#include "reports/html_report.h"

#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "fat_tree/node_record.h"
#include "reports/json_report.h"
#include "reports/repair_text.h"
#include "reports/summary_report.h"
#include "reports/tree_cables.h"
#include "text/json_members.h"

namespace fabscope::internal {

extern const std::string_view pageTemplate;

namespace {

constexpr std::string_view dataMark = "@FABSCOPE_DATA@";

// Whether a JSON text begins with a bidirectional control, which always is an escape there.
bool StartsWithBidirectionalControl(std::string_view json) {
  return json.starts_with("\\u202") || json.starts_with("\\u206");
}

// Nothing that could end the element or begin another, nor show a name as another. Pieces end
// outside of strings.
void WriteInert(std::string_view json, std::ostream& stream) {
  constexpr std::size_t unicodeEscape = 6;
  while (!json.empty()) {
    const std::size_t at = json.find_first_of("<\\");
    stream << json.substr(0, at);
    if (at == std::string_view::npos) return;
    json.remove_prefix(at);
    std::size_t length = 1;
    if (json[0] == '<') {
      stream << "\\u003c";
    } else if (StartsWithBidirectionalControl(json)) {
      stream << '?';
      length = unicodeEscape;
    } else {
      length = 2;
      stream << json.substr(0, length);
    }
    json.remove_prefix(length);
  }
}

UpDownLinks LinksOf(const FTTopology& topology, const IBNode& node, int rank) {
  const bool isCounted = rank >= 0 && topology.GetRanks().size() > 1;
  if (!isCounted) return {-1, -1};
  return topology.CalculateSwitchUpDownLinks(static_cast<std::uint64_t>(rank), node);
}

class PageData {
 public:
  PageData(const FTTopology& topology, std::ostream& stream)
      : topology_(topology), switches_(topology.GetFabric().switches), stream_(stream) {
    std::int32_t place = 0;
    places_.resize(topology.GetFabric().GetNodes().size());
    for (const IBNode* node : switches_) places_[node->index] = place++;
  }

  void WriteSwitches() {
    JsonMembers list(json_, '[', ']');
    for (const IBNode* node : switches_) {
      WriteSwitch(list.Next(), *node);
      Flush();
    }
  }

  void WriteCables() {
    JsonMembers list(json_, '[', ']');
    ForEachTreeCable(topology_, [&](const IBNode& node, const TreeLink& link) {
      for (const std::int32_t number : {places_[node.index], std::int32_t{link.port},
                                        places_[link.remote], std::int32_t{link.remotePort}}) {
        list.Next() += std::to_string(number);
      }
      Flush();
    });
  }

  void Flush() {
    WriteInert(json_, stream_);
    json_.clear();
  }

 private:
  void WriteSwitch(std::string& json, const IBNode& node) const {
    const int rank = topology_.GetNodeRank(&node);
    const UpDownLinks links = LinksOf(topology_, node, rank);
    JsonMembers members(json, '[', ']');
    members.Guid(node.guid);
    AppendJsonString(members.Next(), GetNodeRecord(&node, topology_.Show_GUID));
    members.Next() += std::to_string(rank);
    members.Next() += std::to_string(topology_.GetTreeLinks().Hosts(node));
    members.Next() += std::to_string(links.up);
    members.Next() += std::to_string(links.down);
  }

  const FTTopology& topology_;
  const std::set<IBNode*>& switches_;
  std::ostream& stream_;
  std::vector<std::int32_t> places_;  // by IBNode::index
  std::string json_;
};

// Of the switches that the site's own list has.
void AppendPlaces(std::string& json, const CheckResult& result) {
  JsonMembers list(json, '[', ']');
  if (!result.locations) return;
  std::size_t number = 0;
  for (const IBNode* node : result.topology->GetFabric().switches) {
    const Location* place = result.locations->Of(*node);
    if (place != nullptr) {
      JsonMembers members(list.Next(), '[', ']');
      members.Next() += std::to_string(number);
      AppendJsonString(members.Next(), place->rack);
      AppendJsonString(members.Next(), place->unit);
    }
    ++number;
  }
}

std::string WhatIsTold(const CheckResult& result) {
  std::string json;
  JsonMembers members(json, '{', '}');
  members.Text("verdict", VerdictOf(result));
  {
    JsonMembers notes(members.Key("notes"), '[', ']');
    const SwitchNames names(result.topology->GetFabric(), result.showGuid);
    for (const RepairNote& note : result.notes) {
      AppendJsonString(notes.Next(), NoteText(note, names));
    }
  }
  members.Text("advice", result.advice);
  members.Text("date", result.topology->GetFabric().GetDate());
  AppendPlaces(members.Key("places"), result);
  return json;
}

}  // namespace

void WriteHtmlReport(const CheckResult& result, std::ostream& stream) {
  const std::size_t at = pageTemplate.find(dataMark);
  stream << pageTemplate.substr(0, at) << R"({"result":)";
  ForEachPieceOfJson(result, {}, [&](std::string_view piece) { WriteInert(piece, stream); });
  stream << R"(,"switches":)";
  PageData data(*result.topology, stream);
  data.WriteSwitches();
  data.Flush();
  stream << R"(,"cables":)";
  data.WriteCables();
  data.Flush();
  stream << R"(,"told":)";
  WriteInert(WhatIsTold(result), stream);
  stream << '}' << pageTemplate.substr(at + dataMark.size());
}

}  // namespace fabscope::internal
