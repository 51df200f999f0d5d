#include "reports/prometheus_report.h"

#include <array>
#include <fmt/format.h>
#include <iterator>
#include <map>
#include <string>
#include <string_view>
#include <tuple>

#include "fat_tree/group_label.h"
#include "platform/version.h"
#include "text/escaped_text.h"

namespace fabscope::internal {
namespace {

class Metrics {
 public:
  explicit Metrics(const CheckResult& result)
      : result_(result), fabric_(fmt::format("fabric=\"{}\"", PrometheusLabel(result.input))) {
    for (const Finding& finding : result.findings) {
      ++byKind_.at(finding.index());
      for (const std::uint64_t group : GroupsOf(finding)) {
        ++byGroup_[{finding.index(), !IsOfNeighborhoods(finding), group}];
      }
    }
  }

  std::string Write(const CheckTime& time) {
    WriteTree();
    WriteRoots();
    WriteFindings();
    Begin("check_duration_seconds", "How long the check took.");
    Value("", fmt::format("{:.3f}", time.seconds));
    Begin("last_success_timestamp_seconds", "When the check was finished, in seconds since 1970.");
    Value("", fmt::format("{}", time.finishedAt));
    Begin("tool_info", "What has checked.");
    Value(fmt::format(R"(,tool="{}")", GetToolVersion()), "1");
    return fmt::to_string(text_);
  }

 private:
  template <typename... Values>
  void Add(fmt::format_string<Values...> format, Values&&... values) {
    fmt::format_to(std::back_inserter(text_), format, std::forward<Values>(values)...);
    text_.push_back('\n');
  }

  void Begin(std::string_view name, std::string_view help) {
    name_ = name;
    Add("# HELP fabscope_{} {}", name, help);
    Add("# TYPE fabscope_{} gauge", name);
  }
  // `labels` begins with a comma.
  void Value(std::string_view labels, std::string_view value) {
    Add("fabscope_{}{} {}", name_, fmt::format("{{{}{}}}", fabric_, labels), value);
  }
  void Value(std::string_view labels, std::uint64_t value) { Value(labels, std::to_string(value)); }

  void WriteTree() {
    const FTTopology& topology = *result_.topology;
    const auto& ranks = topology.GetRanks();
    std::size_t ranked = 0;
    Begin("levels", "Ranks of the fat tree.");
    Value("", ranks.size());
    Begin("switches", "Switches by rank, 0 being the roots.");
    for (std::size_t rank = 0; rank < ranks.size(); ++rank) {
      Value(fmt::format(R"(,rank="{}")", rank), ranks[rank].size());
      ranked += ranks[rank].size();
    }
    Begin("switches_outside", "Switches that are not part of the tree.");
    Value("", topology.GetFabric().switches.size() - ranked);
    std::array<std::uint64_t, 2> groups{};
    for (std::size_t rank = 0; rank < topology.GetNeighborhoods().size(); ++rank) {
      groups.at(topology.IsLastRankNeighborhood(rank) ? 0 : 1) +=
          topology.GetNeighborhoods()[rank].size();
    }
    Begin("groups", "Groups of switches by kind.");
    Value(fmt::format(R"(,group_kind="{}")", GroupName(true)), groups[0]);
    Value(fmt::format(R"(,group_kind="{}")", GroupName(false)), groups[1]);
  }

  void WriteRoots() {
    const RootsUsed& roots = result_.roots;
    const std::uint64_t isInferred = roots.method == RootsFrom::Inferred ? 1 : 0;
    const std::uint64_t isDoubted = roots.doubt.empty() ? 0 : 1;
    Begin("roots_inferred", "Whether the roots are inferred from all cables: 1, else 0.");
    Value("", isInferred);
    Begin("roots_misfits", "Cables that must go plus cables that lack until the tree is proper.");
    Value("", roots.misfits);
    Begin("roots_doubted", "Whether something speaks against the tree: 1, else 0.");
    Value("", isDoubted);
  }

  void WriteFindings() {
    Begin("error_records", "Wrong and missing cables.");
    Value("", result_.findings.RecordsCount());
    const std::uint64_t notListed = result_.findings.RecordsNotListed();
    if (notListed != 0) {
      Begin("error_records_not_listed", "Of them those that the findings below do not count.");
      Value("", notListed);
    }
    Begin("issues", "All other issues, as the report counts them.");
    Value("", result_.issuesCount);
    Begin("findings", "Findings by kind.");
    for (std::size_t kind = 0; kind < byKind_.size(); ++kind) {
      Value(fmt::format(R"(,kind="{}")", AllFindings::names.at(kind)), byKind_.at(kind));
    }
    Begin("group_findings", "Findings by kind and group, of groups that have any.");
    for (const auto& [key, count] : byGroup_) {
      const auto& [kind, isConnectivityGroup, group] = key;
      Value(fmt::format(R"(,kind="{}",group_kind="{}",group="{}")", AllFindings::names.at(kind),
                        GroupName(!isConnectivityGroup), group),
            count);
    }
  }

  const CheckResult& result_;
  std::string fabric_;
  std::string_view name_;
  std::array<std::uint64_t, AllFindings::names.size()> byKind_{};
  // By kind, whether it is a connectivity group, and its number.
  std::map<std::tuple<std::size_t, bool, std::uint64_t>, std::uint64_t> byGroup_;
  fmt::memory_buffer text_;
};

}  // namespace

void WritePrometheusReport(const CheckResult& result, const CheckTime& time, std::ostream& stream) {
  stream << Metrics(result).Write(time);
}

}  // namespace fabscope::internal
