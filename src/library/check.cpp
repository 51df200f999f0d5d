#include <fabscope/check.h>
#include <stdexcept>
#include <string>
#include <utility>

#include "fat_tree/neighborhood.h"
#include "library/access.h"
#include "library/findings.h"

namespace fabscope {
namespace internal {
namespace {

RootsFrom MethodOf(Roots roots) {
  switch (roots) {
    case Roots::Auto:
      return RootsFrom::Auto;
    case Roots::Search:
      return RootsFrom::Search;
    case Roots::Inferred:
      return RootsFrom::Inferred;
    case Roots::Smdb:
      return RootsFrom::Smdb;
    case Roots::Regex:
      return RootsFrom::Regex;
  }
  ThrowOptionError("CheckOptions::roots: expected one of Roots");
}

Roots RootsOf(RootsFrom method) {
  switch (method) {
    case RootsFrom::Auto:
      return Roots::Auto;
    case RootsFrom::Search:
      return Roots::Search;
    case RootsFrom::Inferred:
      return Roots::Inferred;
    case RootsFrom::Smdb:
      return Roots::Smdb;
    case RootsFrom::Regex:
      break;
  }
  return Roots::Regex;
}

std::vector<Node> NodesOf(const NodeSet& set) {
  std::vector<Node> nodes;
  for (const IBNode* node : set) nodes.push_back(Access::MakeNode(*node));
  return nodes;
}

}  // namespace

CheckOptions InnerOptions(const fabscope::CheckOptions& options) {
  if (options.retries < 0) ThrowOptionError("CheckOptions::retries: expected 0 or more");
  if (options.equalClassifications < 1) {
    ThrowOptionError("CheckOptions::equalClassifications: expected 1 or more");
  }
  if (options.mergePercent < 0 || options.mergePercent > 100) {
    ThrowOptionError("CheckOptions::mergePercent: expected 0 to 100");
  }
  CheckOptions inner;
  inner.roots = MethodOf(options.roots);
  if (options.roots == Roots::Regex) inner.rootRegex = CompiledRegex(options.rootRegex);
  inner.retries = options.retries;
  inner.equalClassifications = options.equalClassifications;
  inner.mergePercent = options.mergePercent;
  inner.showGuid = static_cast<int>(options.showGuid);
  inner.mostRecords = options.maxRecords;
  inner.wantRepairs = options.withRepairs;
  inner.wantMisfits = options.withRepairs;
  return inner;
}

}  // namespace internal

using internal::Access;

bool CheckResult::IsComplete() const { return data_->result.status == internal::CheckStatus::Done; }
const std::string& CheckResult::Message() const { return data_->result.message; }
const std::string& CheckResult::Advice() const { return data_->result.advice; }
bool CheckResult::HasFindings() const { return data_->result.HasFindings(); }
std::uint64_t CheckResult::RecordCount() const { return data_->result.findings.RecordsCount(); }
std::uint64_t CheckResult::IssueCount() const { return data_->result.issuesCount; }
std::size_t CheckResult::FindingCount() const { return data_->result.findings.size(); }

Finding CheckResult::FindingAt(std::size_t index) const {
  const internal::FindingList& findings = data_->result.findings;
  if (index >= findings.size()) {
    throw std::out_of_range("fabscope::CheckResult::FindingAt: " + std::to_string(index) + " of " +
                            std::to_string(findings.size()));
  }
  return internal::PublicFinding(findings[index], data_->result.showGuid);
}

std::vector<Finding> CheckResult::Findings() const {
  std::vector<Finding> all;
  all.reserve(FindingCount());
  for (const internal::Finding& finding : data_->result.findings) {
    all.push_back(internal::PublicFinding(finding, data_->result.showGuid));
  }
  return all;
}

std::vector<std::vector<Node>> CheckResult::Ranks() const {
  std::vector<std::vector<Node>> ranks;
  for (const internal::NodeSet& rank : data_->result.topology->GetRanks()) {
    ranks.push_back(internal::NodesOf(rank));
  }
  return ranks;
}

int CheckResult::RankOf(const Node& node) const {
  return data_->result.topology->GetNodeRank(&Access::NodeOf(node));
}

std::vector<Group> CheckResult::Groups() const {
  const internal::FTTopology& topology = *data_->result.topology;
  std::vector<Group> all;
  for (const auto& groups : topology.GetNeighborhoods()) {
    for (const internal::FTNeighborhood* group : groups) {
      const std::size_t rank = group->GetRank();
      all.push_back({group->GetId(), topology.IsLastRankNeighborhood(rank), rank,
                     internal::NodesOf(group->GetSpines()), internal::NodesOf(group->GetLines())});
    }
  }
  return all;
}

Roots CheckResult::RootsUsed() const { return internal::RootsOf(data_->result.roots.method); }
const std::string& CheckResult::Doubt() const { return data_->result.roots.doubt; }
Fabric CheckResult::CheckedFabric() const { return Access::MakeFabric(data_->input); }

CheckResult Check(const Fabric& fabric, const CheckOptions& options) {
  const auto& input = Access::InputOf(fabric);
  return Access::MakeResult(
      std::make_shared<const internal::CheckedFabricData>(internal::CheckedFabricData{
          input, internal::RunCheck(*input, internal::InnerOptions(options))}));
}

}  // namespace fabscope
