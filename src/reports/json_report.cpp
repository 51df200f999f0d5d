#include "reports/json_report.h"

#include <string>

#include "fat_tree/group_label.h"
#include "fat_tree/neighborhood.h"
#include "platform/version.h"
#include "reports/json_findings.h"
#include "reports/repair_report.h"
#include "text/json_members.h"

namespace fabscope::internal {
namespace {

const char* MethodName(RootsFrom method) {
  switch (method) {
    case RootsFrom::Inferred:
      return "inferred";
    case RootsFrom::Smdb:
      return "smdb";
    case RootsFrom::Regex:
      return "regex";
    case RootsFrom::Auto:
    case RootsFrom::Search:
      break;
  }
  return "search";
}

void AppendRoots(std::string& json, const RootsUsed& roots) {
  JsonMembers members(json, '{', '}');
  members.Text("method", MethodName(roots.method));
  members.Number("misfits", roots.misfits);
  members.Text("doubt", roots.doubt);
}

const char* StatusName(const CheckResult& result) {
  if (result.status != CheckStatus::Done) return "failed";
  return result.HasFindings() ? "findings" : "clean";
}

void AppendGuids(std::string& json, const NodeSet& nodes) {
  JsonMembers array(json, '[', ']');
  for (const IBNode* node : nodes) array.Guid(node->guid);
}

void AppendGroup(std::string& json, const FTNeighborhood& group, bool isNeighborhood) {
  JsonMembers members(json, '{', '}');
  members.Text("kind", GroupName(isNeighborhood));
  members.Number("id", group.GetId());
  members.Number("rank", group.GetRank());
  AppendGuids(members.Key("spines"), group.GetSpines());
  AppendGuids(members.Key("lines"), group.GetLines());
  members.Number("totalSpineUplinks", group.GetTotalSpineUplinks());
  members.Number("totalInternalLinks", group.GetTotalInternalLinks());
}

void AppendRecord(std::string& json, const Finding& record, const std::string& description) {
  JsonMembers members(json, '{', '}');
  members.Text("event", EventOf(record));
  members.Number("level", static_cast<int>(LevelOf(record)));
  members.Text("description", description);
}

class JsonReport {
 public:
  JsonReport(const CheckResult& result, const TakePiece& take) : result_(result), take_(take) {}

  void Write(const TextStyle& style) {
    JsonMembers members(json_, '{', '}');
    members.Text("format", "fabscope-result");
    members.Number("version", 1);
    members.Text("tool", GetToolVersion());
    members.Text("input", result_.input);
    members.Text("status", StatusName(result_));
    members.Text("message", result_.inputError ? result_.inputError->Text() : result_.message);
    AppendRoots(members.Key("roots"), result_.roots);
    WriteRanks(members.Key("ranks"));
    WriteGroups(members.Key("groups"));
    WriteRecords(members.Key("records"));
    const std::uint64_t notListed = result_.findings.RecordsNotListed();
    if (notListed != 0) members.Number("recordsNotListed", notListed);
    members.Number("issues", result_.issuesCount);
    WriteFindings(members.Key("findings"));
    WriteRepairs(members.Key("repairs"));
    WriteLines(members.Key("report"), style);
  }
  void Flush() {
    take_(json_);
    json_.clear();
  }

 private:
  // A member of a list that may be long, on a line of its own.
  std::string& NextLine(JsonMembers& list) {
    list.Next() += '\n';
    if (json_.size() > flushSize) Flush();
    return json_;
  }

  void WriteRanks(std::string& json) {
    JsonMembers ranks(json, '[', ']');
    if (!result_.topology) return;
    for (const NodeSet& rank : result_.topology->GetRanks()) AppendGuids(NextLine(ranks), rank);
  }
  void WriteGroups(std::string& json) {
    JsonMembers list(json, '[', ']');
    if (!result_.topology) return;
    for (const auto& groups : result_.topology->GetNeighborhoods()) {
      for (const FTNeighborhood* group : groups) {
        const bool isNeighborhood = result_.topology->IsLastRankNeighborhood(group->GetRank());
        AppendGroup(NextLine(list), *group, isNeighborhood);
      }
    }
  }
  void WriteRecords(std::string& json) {
    JsonMembers list(json, '[', ']');
    std::string description;
    for (const Finding& record : result_.findings.Records()) {
      description.clear();
      AppendDescriptionOf(record, result_.showGuid, description);
      AppendRecord(NextLine(list), record, description);
    }
  }
  void WriteFindings(std::string& json) {
    JsonMembers list(json, '[', ']');
    for (const Finding& finding : result_.findings) AppendFinding(NextLine(list), finding);
  }
  void WriteRepairs(std::string& json) {
    if (!result_.repairs) {
      json += "[]";
      return;
    }
    AppendRepairSteps(json, *result_.repairs, {*result_.topology, result_.findings},
                      result_.showGuid);
  }
  void WriteLines(std::string& json, const TextStyle& style) {
    JsonMembers list(json, '[', ']');
    ForEachReportLine(result_, style,
                      [&](std::string_view line) { AppendJsonString(NextLine(list), line); });
  }

  static constexpr std::size_t flushSize = std::size_t{1} << 16;
  const CheckResult& result_;
  const TakePiece& take_;
  std::string json_;
};

}  // namespace

void WriteJsonReport(const CheckResult& result, const TextStyle& style, std::ostream& stream) {
  ForEachPieceOfJson(result, style, [&](std::string_view piece) { stream << piece; });
  stream << '\n';
}

void ForEachPieceOfJson(const CheckResult& result, const TextStyle& style, const TakePiece& take) {
  JsonReport report(result, take);
  report.Write(style);
  report.Flush();
}

}  // namespace fabscope::internal
