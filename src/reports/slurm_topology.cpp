// A fat tree as a tree in which everything has one parent.
//
// Slurm asks where nodes are close to each other. Leaves of one neighborhood are, so a neighborhood
// becomes a switch of Slurm's, with its leaves below it. Above that a fat tree is no tree: a
// neighborhood's spines are lines of several connectivity groups, each of which reaches the same
// neighborhoods by another spine. Which of them a job's traffic takes is nothing to choose by, so
// groups that are reached from one group below are one switch of Slurm's: in a tree of three levels
// all of rank 0, in one of four levels those of one half of the building.
//
// A wrong cable must not make one of two halves. Where the check cannot tell whose an upper switch
// is, two groups hold it as a spine; here it belongs to the one with more lines that reach it, of
// equals to the first. A group that no spine is left to goes by all that it has.
//
// Every ranked switch but a root is a line of exactly one group, so all of them find a parent. A
// switch with hosts above the leaves stands beside the leaves of the group whose spine it is. What
// is above no host is left out: Slurm does not start with a switch that leads nowhere.

#include "reports/slurm_topology.h"

#include <algorithm>
#include <map>
#include <set>
#include <utility>

#include "fat_tree/containers/node_table.h"
#include "fat_tree/neighborhood.h"
#include "platform/version.h"
#include "reports/slurm_hosts.h"
#include "reports/slurm_names.h"
#include "text/text_fields.h"

namespace fabscope::internal {
namespace {

constexpr const char* rootName = "root";

class SlurmTree {
 public:
  explicit SlurmTree(const FTTopology& topology) : topology_(topology) {}

  SlurmTopology Make() {
    ListGroups();
    GiveSpines();
    JoinGroups();
    hosts_ = PlaceSlurmHosts(topology_);
    AddLeaves();
    AddGroups();
    result_.hosts = hosts_.count;
    result_.losses.insert(result_.losses.begin(), hosts_.losses.begin(), hosts_.losses.end());
    return std::move(result_);
  }

 private:
  // Groups go by their places in groups_; a set of joined groups by the first of them.
  using Place = std::int32_t;
  static constexpr Place none = -1;

  void ListGroups();
  void GiveSpines();
  void JoinGroups();
  void JoinAbove(std::size_t rank);
  void AddLeaves();
  void AddGroups();

  // Shortens the way for those who ask later.
  Place SetOf(Place place) {
    while (joined_[At(place)] != place) {
      Place& next = joined_[At(place)];
      next = joined_[At(next)];
      place = next;
    }
    return place;
  }
  void Join(Place a, Place b) {
    const auto [first, second] = std::minmax({SetOf(a), SetOf(b)});
    joined_[At(second)] = first;
  }
  static std::size_t At(Place place) { return static_cast<std::size_t>(place); }

  std::string NameOf(const FTNeighborhood& group) const {
    const bool isNeighborhood = topology_.IsLastRankNeighborhood(group.GetRank());
    return (isNeighborhood ? "neighborhood-" : "connectivity-group-") +
           std::to_string(group.GetId());
  }

  const FTTopology& topology_;
  std::vector<const FTNeighborhood*> groups_;  // the roots' first
  std::vector<Place> joined_;                  // a group before it of the same set, or itself
  std::map<Place, Place> above_;               // of a set, a group of the set above it
  NodeTable<Place> groupOfLine_{none};
  NodeTable<Place> groupOfSpine_{none};
  SlurmHosts hosts_;
  // By set, what is right below it; below the root what has no group above it.
  std::map<Place, std::vector<std::string>> below_;
  SlurmTopology result_;
};

void SlurmTree::ListGroups() {
  for (const auto& groups : topology_.GetNeighborhoods()) {
    for (const FTNeighborhood* group : groups) {
      const auto place = static_cast<Place>(groups_.size());
      groups_.push_back(group);
      joined_.push_back(place);
      for (const IBNode* line : group->GetLines()) groupOfLine_.Set(*line, place);
    }
  }
}

void SlurmTree::GiveSpines() {
  NodeTable<std::int32_t> most{-1};
  for (std::size_t i = 0; i < groups_.size(); ++i) {
    std::map<std::uint32_t, std::int32_t> reached;
    for (const IBNode* line : groups_[i]->GetLines()) {
      std::set<std::uint32_t> remotes;
      for (const TreeLink& link : topology_.GetTreeLinks().Of(*line)) remotes.insert(link.remote);
      for (const std::uint32_t remote : remotes) ++reached[remote];
    }
    for (const IBNode* spine : groups_[i]->GetSpines()) {
      const std::int32_t count = reached[spine->index];
      if (count <= most.Get(*spine)) continue;
      most.Set(*spine, count);
      groupOfSpine_.Set(*spine, static_cast<Place>(i));
    }
  }
}

// From the leaves up: which groups are one is settled before those above them are asked.
void SlurmTree::JoinGroups() {
  for (std::size_t rank = topology_.GetNeighborhoods().size(); rank-- > 1;) JoinAbove(rank);
}

void SlurmTree::JoinAbove(std::size_t rank) {
  std::map<Place, std::vector<Place>> own;
  std::map<Place, std::vector<Place>> all;
  for (std::size_t i = 0; i < groups_.size(); ++i) {
    if (groups_[i]->GetRank() != rank) continue;
    const auto place = static_cast<Place>(i);
    for (const IBNode* spine : groups_[i]->GetSpines()) {
      const Place above = groupOfLine_.Get(*spine);
      all[SetOf(place)].push_back(above);
      if (groupOfSpine_.Get(*spine) == place) own[SetOf(place)].push_back(above);
    }
  }
  own.merge(all);  // takes over what it has not
  for (const auto& [set, above] : own) {
    for (const Place place : above) Join(above.front(), place);
    above_[set] = above.front();
  }
}

void SlurmTree::AddLeaves() {
  std::vector<const IBNode*> leaves;
  for (const auto& [leaf, hosts] : hosts_.bySwitch) leaves.push_back(leaf);
  std::set<std::string> taken{rootName};
  for (const FTNeighborhood* group : groups_) taken.insert(NameOf(*group));
  const SlurmSwitchNames names(leaves, std::move(taken));
  for (const IBNode* leaf : leaves) {
    const Place group =
        groupOfSpine_.Has(*leaf) ? groupOfSpine_.Get(*leaf) : groupOfLine_.Get(*leaf);
    below_[group == none ? none : SetOf(group)].push_back(names.Of(*leaf));
    result_.switches.push_back({names.Of(*leaf), {}, std::move(hosts_.bySwitch[leaf]), {}});
  }
  const std::vector<const IBNode*> renamed = names.GetRenamed();
  if (renamed.empty()) return;
  const bool isOne = renamed.size() == 1;
  result_.losses.push_back(
      "renamed: " + std::to_string(renamed.size()) + (isOne ? " leaf" : " leaves") +
      " that Slurm could not take or tell apart" + (isOne ? ", " : ", the first is ") +
      std::string(renamed.front()->name) + ", now " + names.Of(*renamed.front()));
}

// From the leaves up, so that what is below a set is complete when its turn comes. A set above
// which nothing is may be the root; several of them get one more.
void SlurmTree::AddGroups() {
  std::map<Place, std::vector<std::string>> groups;
  for (Place place = 0; At(place) < groups_.size(); ++place) {
    groups[SetOf(place)].push_back(NameOf(*groups_[At(place)]));
  }
  std::vector<Place> highest;
  for (std::size_t rank = topology_.GetNeighborhoods().size(); rank-- > 0;) {
    for (const auto& [set, names] : groups) {
      if (groups_[At(set)]->GetRank() != rank || !below_.contains(set)) continue;
      if (!above_.contains(set)) {
        highest.push_back(set);
        continue;
      }
      below_[SetOf(above_.at(set))].push_back(names.front());
      result_.switches.push_back({names.front(), names, {}, std::move(below_[set])});
    }
  }
  if (highest.size() == 1 && !below_.contains(none)) {
    const Place set = highest.front();
    result_.switches.push_back({rootName, groups[set], {}, std::move(below_[set])});
    return;
  }
  for (const Place set : highest) {
    below_[none].push_back(groups[set].front());
    result_.switches.push_back({groups[set].front(), groups[set], {}, std::move(below_[set])});
  }
  if (below_.contains(none)) {
    result_.switches.push_back({rootName, {}, {}, std::move(below_[none])});
  }
}

}  // namespace

SlurmTopology MakeSlurmTopology(const FTTopology& tree) { return SlurmTree(tree).Make(); }

void WriteSlurmTopology(const CheckResult& result, const SlurmTopology& topology,
                        std::ostream& stream) {
  const auto leaves = std::count_if(topology.switches.begin(), topology.switches.end(),
                                    [](const auto& entry) { return !entry.hosts.empty(); });
  const std::string input = result.input == "-" ? "<stdin>" : CleanText(result.input);
  stream << "# topology.conf of Slurm, for TopologyPlugin=topology/tree, made by "
         << GetToolVersion() << "\n# of " << input << ": hosts " << topology.hosts << ", leaves "
         << leaves << ", levels of switches " << result.topology->GetRanks().size() << "\n";
  for (const SlurmTopology::Switch& entry : topology.switches) {
    if (!entry.groups.empty() && entry.groups != std::vector{entry.name}) {
      stream << "# " << entry.name << " stands for " << SlurmHostList(entry.groups) << "\n";
    }
    stream << "SwitchName=" << entry.name;
    if (entry.hosts.empty()) {
      stream << " Switches=" << SlurmHostList(entry.switches) << "\n";
    } else {
      stream << " Nodes=" << SlurmHostList(entry.hosts) << "\n";
    }
  }
}

}  // namespace fabscope::internal
