#pragma once

#include <cstddef>
#include <cstdint>
#include <fabscope/export.h>
#include <fabscope/fabric.h>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace fabscope {

namespace internal {
struct CheckedFabricData;
}  // namespace internal

/// Which switches are taken for the roots.
enum class Roots {
  Auto,      ///< those of the search, unless the inferred ones fit the cables better
  Search,    ///< those that leaves agree on, by their distances
  Inferred,  ///< those that all cables together speak for
  Smdb,      ///< those of rank 0 in LoadOptions::ranks
  Regex,     ///< those whose name matches CheckOptions::rootRegex
};

/// Which GUID stands in front of the name of a switch in texts.
enum class GuidStyle { None, System, Node };

/// The defaults are those of the command.
struct CheckOptions {
  Roots roots = Roots::Auto;
  /// For Roots::Regex: a POSIX extended regular expression.
  std::string rootRegex;
  /// For the search: further leaves to try, 0 or more.
  int retries = 10;
  /// For the search: leaves that must agree, 1 or more.
  int equalClassifications = 2;
  /// How alike, in percent, the up-links of switches in one group are: 0 to 100.
  int mergePercent = 70;
  GuidStyle showGuid = GuidStyle::None;
  /// Error records beyond these are only counted.
  std::uint64_t maxRecords = 1'000'000;
  /// Look for repairs, too, and say how many misfits the tree has. WriteJson and WriteHtml write
  /// what the command writes only with this.
  bool withRepairs = false;
};

enum class Level { Warning, Error };

/// Something that is wrong. Nodes and ports hold as long as the result or its fabric.
struct Finding {
  /// "missing-link", "invalid-link" and so on; docs/findings.md describes each. Later versions may
  /// have more.
  std::string_view kind;
  Level level = Level::Error;
  /// An error record. Anything else counts as `issues`.
  bool isRecord = false;
  /// 0 for an error record.
  std::uint64_t issues = 0;
  /// The groups that it is about. Neighborhoods and connectivity groups are numbered apart.
  std::vector<std::uint64_t> groups;
  bool ofNeighborhoods = false;
  /// Of a missing link its spine and its line; of uneven links the switches with too few.
  std::vector<Node> switches;
  /// Of uneven links: how many each of `switches` has.
  std::vector<int> links;
  /// Of an invalid link its ends, of asymmetric aggregated ports all plane ports.
  std::vector<Port> ports;
  /// What the kind counts, by the name that it has in JSON, such as "expected" of uneven links or
  /// "flid" of a shared FLID. 1 and 0 stand for true and false.
  std::map<std::string, std::uint64_t, std::less<>> numbers;
  /// Likewise its words: the "direction" of uneven links is "up" or "down".
  std::map<std::string, std::string, std::less<>> words;
  /// As the report says it, without "-E- " or "-W- " at its beginning. May have several lines.
  std::string text;
};

/// Switches of two neighboring ranks that belong together.
struct Group {
  std::uint64_t id = 0;
  /// On the last pair of ranks, where the leaves are. Groups above are connectivity groups.
  bool isNeighborhood = false;
  /// Of the spines; the lines are one rank below.
  std::size_t rank = 0;
  std::vector<Node> spines;
  std::vector<Node> lines;
};

/// What a check has found. A copy is the same result and costs next to nothing. Any number of
/// threads may use one.
class FABSCOPE_API CheckResult {
 public:
  /// Whether there is a tree, and all of it was checked.
  bool IsComplete() const;
  /// Why not; empty if it is complete.
  const std::string& Message() const;
  /// What the user can do about it, in a line; may be empty.
  const std::string& Advice() const;

  bool HasFindings() const;
  /// All error records, listed or not.
  std::uint64_t RecordCount() const;
  std::uint64_t IssueCount() const;
  /// How many findings are listed.
  std::size_t FindingCount() const;
  /// In the order of the report; std::out_of_range from FindingCount() on.
  Finding FindingAt(std::size_t index) const;
  std::vector<Finding> Findings() const;

  /// The switches by rank, roots first. Empty without a tree.
  std::vector<std::vector<Node>> Ranks() const;
  /// Of a node of this fabric; -1 if it has none.
  int RankOf(const Node& node) const;
  /// By the rank of their spines.
  std::vector<Group> Groups() const;

  /// How the roots were found; never Auto.
  Roots RootsUsed() const;
  /// Why the tree may be a wrong one, in a line; empty if nothing says so.
  const std::string& Doubt() const;

  Fabric CheckedFabric() const;

 private:
  friend struct internal::Access;
  explicit CheckResult(std::shared_ptr<const internal::CheckedFabricData> data)
      : data_(std::move(data)) {}
  std::shared_ptr<const internal::CheckedFabricData> data_;
};

/// Recognises a fabric as a fat tree and checks it. That there is no tree is a result, not an
/// error. Throws Error for options that cannot be used, or std::bad_alloc. Threads may check the
/// same or different fabrics at the same time.
FABSCOPE_API CheckResult Check(const Fabric& fabric, const CheckOptions& options = {});

}  // namespace fabscope
