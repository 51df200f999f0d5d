// Which host stands under which switch.
//
// Slurm takes a node once, but a host may have several adapters, ports and leaves: the rails of a
// cluster for learning, say, where adapter i of every host goes to leaf i of its rack. Such a host
// stands under the lowest of its switches, of these under the one with most of its cables, of these
// under the first in model order. So hosts that share all of their leaves come to stand together.
//
// A host is known by the first word of its adapters' descriptions. It is not asked whether a cable
// counts for the tree at both of its ends: a host is where its cable leads.

#include "reports/slurm_hosts.h"

#include <set>
#include <utility>

#include "reports/slurm_names.h"

namespace fabscope::internal {
namespace {

// The cables of one host by switch.
using Cables = std::map<const IBNode*, std::size_t>;

// Nodes of one kind, to be told with the first of them as an example.
struct Told {
  std::size_t count = 0;
  std::string first;

  void Add(const std::string& name) {
    if (count++ == 0) first = name;
  }
};

class Placing {
 public:
  explicit Placing(const FTTopology& topology) : topology_(topology) {}

  SlurmHosts Run() {
    for (const IBNode& node : topology_.GetFabric().GetNodes()) {
      if (node.nodeType == NodeTypeCA && !node.isSpecialNode()) AddAdapter(node);
    }
    for (const auto& [host, cables] : cables_) Place(host, cables);
    CountLeaves();
    TellLosses();
    return std::move(hosts_);
  }

 private:
  void AddAdapter(const IBNode& node) {
    const auto host = SlurmHostName(node.name);
    if (!host) return nameless_.Add('"' + std::string(node.name) + '"');
    Cables& cables = cables_[*host];
    for (const IBPort& port : node.ports) {
      const IBNode* remote = port.get_remote_node();
      if (remote != nullptr && topology_.GetNodeRank(remote) >= 0) ++cables[remote];
    }
  }

  void Place(const std::string& host, const Cables& cables) {
    if (cables.empty()) return outside_.Add(host);
    if (cables.size() > 1) several_.Add(host);
    auto best = cables.begin();
    for (auto at = cables.begin(); at != cables.end(); ++at) {
      if (Worth(*at) > Worth(*best)) best = at;
      cabled_.insert(at->first);
    }
    hosts_.bySwitch[best->first].push_back(host);
    ++hosts_.count;
  }
  std::pair<int, std::size_t> Worth(const Cables::value_type& cables) const {
    return {topology_.GetNodeRank(cables.first), cables.second};
  }

  void CountLeaves() {
    for (const IBNode* leaf : topology_.GetRanks().back()) {
      if (hosts_.bySwitch.contains(leaf)) continue;
      (cabled_.contains(leaf) ? lent_ : bare_).Add(std::string(leaf->name));
    }
  }

  void TellLosses() {
    Tell("left out: ", nameless_, "adapter", "adapters", " of a host that Slurm cannot name");
    Tell("left out: ", outside_, "host", "hosts", " without a cable to a switch of the tree");
    Tell("put under one switch: ", several_, "host", "hosts", " with cables to several");
    Tell("left out: ", bare_, "leaf", "leaves", " without hosts");
    Tell("left out: ", lent_, "leaf", "leaves", " with hosts that stand under others");
  }
  void Tell(const std::string& what, const Told& told, const char* one, const char* many,
            const std::string& which) {
    if (told.count == 0) return;
    const bool isOne = told.count == 1;
    hosts_.losses.push_back(what + std::to_string(told.count) + " " + (isOne ? one : many) + which +
                            (isOne ? ", " : ", the first is ") + told.first);
  }

  const FTTopology& topology_;
  std::map<std::string, Cables> cables_;
  std::set<const IBNode*> cabled_;  // switches that hosts are cabled to
  Told nameless_;
  Told outside_;
  Told several_;
  Told bare_;
  Told lent_;
  SlurmHosts hosts_;
};

}  // namespace

SlurmHosts PlaceSlurmHosts(const FTTopology& topology) { return Placing(topology).Run(); }

}  // namespace fabscope::internal
