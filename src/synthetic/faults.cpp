#include "synthetic/faults.h"

#include <algorithm>
#include <array>
#include <utility>

namespace fabscope::internal {
namespace {

constexpr std::array<std::pair<FaultKind, std::string_view>, 11> names{{
    {FaultKind::MissingLink, "missing-link"},
    {FaultKind::SwappedCables, "swapped-cables"},
    {FaultKind::MovedCable, "moved-cable"},
    {FaultKind::SameRankLink, "same-rank-link"},
    {FaultKind::RootLink, "root-link"},
    {FaultKind::MissingHost, "missing-host"},
    {FaultKind::SlowLink, "slow-link"},
    {FaultKind::DeadSwitch, "dead-switch"},
    {FaultKind::StrayHost, "stray-host"},
    {FaultKind::AsymmetricAPort, "asymmetric-aport"},
    {FaultKind::SharedFlid, "shared-flid"},
}};

constexpr std::uint64_t strayHostGuids = 0x0200000300000000;

}  // namespace

std::string_view FaultName(FaultKind kind) {
  for (const auto& [known, name] : names) {
    if (known == kind) return name;
  }
  return {};
}

std::optional<FaultKind> FaultOfName(std::string_view name) {
  for (const auto& [kind, known] : names) {
    if (known == name) return kind;
  }
  return std::nullopt;
}

const std::vector<FaultKind>& AllFaultKinds() {
  static const std::vector<FaultKind> kinds = [] {
    std::vector<FaultKind> all;
    all.reserve(names.size());
    for (const auto& [kind, name] : names) all.push_back(kind);
    return all;
  }();
  return kinds;
}

std::optional<std::string> FaultInjector::Inject(FaultKind kind, InjectedFault& done) {
  done = {};
  done.kind = kind;
  switch (kind) {
    case FaultKind::MissingLink:
      return RemoveLink(done);
    case FaultKind::SwappedCables:
      return SwapCables(done);
    case FaultKind::MovedCable:
      return MoveCable(done);
    case FaultKind::SameRankLink:
      return JoinRank(false, done);
    case FaultKind::RootLink:
      return JoinRank(true, done);
    case FaultKind::MissingHost:
      return RemoveHost(done);
    case FaultKind::SlowLink:
      return SlowDown(done);
    case FaultKind::DeadSwitch:
      return KillSwitch(done);
    case FaultKind::StrayHost:
      return AddStrayHost(done);
    case FaultKind::AsymmetricAPort:
      return SlowDownPlane(done);
    case FaultKind::SharedFlid:
      return ShareFlid(done);
  }
  return std::nullopt;
}

// --- What may still be touched.

bool FaultInjector::IsUntouched(std::size_t cable) const {
  return !plan_.cables[cable].removed && !touchedCables_.contains(cable);
}

bool FaultInjector::JoinsSwitches(const PlannedCable& cable) const {
  return plan_.IsSwitch(cable.upper.node) && plan_.IsSwitch(cable.lower.node);
}

FaultInjector::Indices FaultInjector::UntouchedSwitchCables() const {
  Indices found;
  for (std::size_t i = 0; i < plan_.cables.size(); ++i) {
    if (IsUntouched(i) && JoinsSwitches(plan_.cables[i])) found.push_back(i);
  }
  return found;
}

FaultInjector::Indices FaultInjector::UntouchedCablesOf(std::size_t node) {
  Indices found = plan_.CablesOf(node);
  std::erase_if(found,
                [&](std::size_t i) { return !IsUntouched(i) || !JoinsSwitches(plan_.cables[i]); });
  return found;
}

bool FaultInjector::IsTouched(std::size_t node) const { return touchedNodes_.contains(node); }

// --- Hands on cables.

void FaultInjector::Touch(std::size_t cable) {
  touchedCables_.insert(cable);
  touchedNodes_.insert({plan_.cables[cable].upper.node, plan_.cables[cable].lower.node});
}

void FaultInjector::Pull(std::size_t cable, InjectedFault& done) {
  done.before.push_back(plan_.cables[cable]);
  plan_.RemoveCable(cable);
  Touch(cable);
}

void FaultInjector::Plug(const PlannedCable& cable, InjectedFault& done) {
  Touch(plan_.AddCable(cable));
  done.after.push_back(cable);
}

bool FaultInjector::CanTakePort(std::size_t node) {
  return plan_.FreePort(node) != 0 || !UntouchedCablesOf(node).empty();
}

std::uint8_t FaultInjector::TakePort(std::size_t node, InjectedFault& done) {
  if (const std::uint8_t port = plan_.FreePort(node); port != 0) return port;
  const std::size_t pulled = random_.Pick(UntouchedCablesOf(node));
  Pull(pulled, done);
  const PlannedCable& cable = plan_.cables[pulled];
  return cable.upper.node == node ? cable.upper.port : cable.lower.port;
}

void FaultInjector::TakeAway(std::size_t node, InjectedFault& done) {
  done.nodes.push_back(node);
  for (const std::size_t cable : plan_.CablesOf(node)) Pull(cable, done);
  plan_.RemoveNode(node);
}

// --- The faults.

FaultInjector::Problem FaultInjector::RemoveLink(InjectedFault& done) {
  const Indices cables = UntouchedSwitchCables();
  if (cables.empty()) return "no cable between two switches is left to be taken away";
  Pull(random_.Pick(cables), done);
  return std::nullopt;
}

FaultInjector::Problem FaultInjector::SwapCables(InjectedFault& done) {
  Indices firsts = UntouchedSwitchCables();
  const Indices seconds = firsts;
  random_.Shuffle(firsts);
  for (const std::size_t first : firsts) {
    const PlannedCable a = plan_.cables[first];
    Indices others = seconds;
    std::erase_if(others, [&](std::size_t i) {
      const PlannedCable& b = plan_.cables[i];
      return b.upper.node == a.upper.node || b.lower.node == a.lower.node ||
             plan_.nodes[b.upper.node].rank != plan_.nodes[a.upper.node].rank;
    });
    if (others.empty()) continue;
    const std::size_t second = random_.Pick(others);
    const PlannedCable b = plan_.cables[second];
    Pull(first, done);
    Pull(second, done);
    Plug({b.upper, a.lower, a.speed}, done);
    Plug({a.upper, b.lower, b.speed}, done);
    return std::nullopt;
  }
  return "no two cables of different switches are left to be swapped";
}

FaultInjector::Problem FaultInjector::MoveCable(InjectedFault& done) {
  Indices cables = UntouchedSwitchCables();
  random_.Shuffle(cables);
  const bool moveUpper = random_.Below(2) == 0;
  for (const std::size_t index : cables) {
    const PlannedCable cable = plan_.cables[index];
    const PlannedEnd moved = moveUpper ? cable.upper : cable.lower;
    const PlannedEnd kept = moveUpper ? cable.lower : cable.upper;
    Indices targets = plan_.SwitchesOnRank(plan_.nodes[moved.node].rank);
    random_.Shuffle(targets);
    for (const std::size_t target : targets) {
      if (target == moved.node || !CanTakePort(target)) continue;
      Pull(index, done);
      const PlannedEnd end{target, TakePort(target, done)};
      Plug(moveUpper ? PlannedCable{end, kept, cable.speed} : PlannedCable{kept, end, cable.speed},
           done);
      return std::nullopt;
    }
  }
  return "no cable is left that another switch of the rank has a port for";
}

FaultInjector::Problem FaultInjector::JoinRank(bool roots, InjectedFault& done) {
  Indices ranks;
  for (int rank = roots ? 0 : 1; rank < (roots ? 1 : plan_.levels); ++rank) {
    ranks.push_back(static_cast<std::size_t>(rank));
  }
  random_.Shuffle(ranks);
  for (const std::size_t rank : ranks) {
    Indices switches = plan_.SwitchesOnRank(static_cast<int>(rank));
    std::erase_if(switches, [&](std::size_t node) { return !CanTakePort(node); });
    if (switches.size() < 2) continue;
    random_.Shuffle(switches);
    const PlannedEnd a{switches[0], TakePort(switches[0], done)};
    const PlannedEnd b{switches[1], TakePort(switches[1], done)};
    Plug({a, b, plan_.cables.front().speed}, done);
    return std::nullopt;
  }
  return std::string("no two ") + (roots ? "roots" : "switches of one rank below the roots") +
         " are left to be cabled together";
}

FaultInjector::Problem FaultInjector::RemoveHost(InjectedFault& done) {
  Indices hosts;
  for (std::size_t i = 0; i < plan_.nodes.size(); ++i) {
    if (!plan_.IsSwitch(i) && !plan_.nodes[i].removed && !IsTouched(i)) hosts.push_back(i);
  }
  if (hosts.empty()) return "no host is left to be taken away";
  TakeAway(random_.Pick(hosts), done);
  return std::nullopt;
}

template <typename Change>
FaultInjector::Problem FaultInjector::SlowDownBy(Change change, InjectedFault& done) {
  Indices cables = UntouchedSwitchCables();
  std::erase_if(cables, [&](std::size_t i) { return SlowerSpeed(plan_.cables[i].speed) == 0; });
  if (cables.empty()) return "no cable between two switches is left that could be slower";
  const std::size_t index = random_.Pick(cables);
  PlannedCable& cable = plan_.cables[index];
  done.before.push_back(cable);
  change(cable);
  done.after.push_back(cable);
  Touch(index);
  return std::nullopt;
}

FaultInjector::Problem FaultInjector::SlowDown(InjectedFault& done) {
  return SlowDownBy([](PlannedCable& cable) { cable.speed = SlowerSpeed(cable.speed); }, done);
}

FaultInjector::Problem FaultInjector::KillSwitch(InjectedFault& done) {
  Indices switches;
  for (std::size_t i = 0; i < plan_.nodes.size(); ++i) {
    if (plan_.IsSwitch(i) && !plan_.nodes[i].removed && !IsTouched(i)) switches.push_back(i);
  }
  if (switches.empty()) return "no switch without another fault is left to be taken away";
  TakeAway(random_.Pick(switches), done);
  return std::nullopt;
}

FaultInjector::Problem FaultInjector::AddStrayHost(InjectedFault& done) {
  Indices switches;
  for (int rank = 0; rank + 1 < plan_.levels; ++rank) {
    for (const std::size_t node : plan_.SwitchesOnRank(rank)) {
      if (CanTakePort(node)) switches.push_back(node);
    }
  }
  if (switches.empty()) return "no switch above the leaves has a port for a host";
  const std::size_t owner = random_.Pick(switches);
  const PlannedEnd upper{owner, TakePort(owner, done)};
  PlannedNode host;
  host.spec.guid = strayHostGuids + ++strayHosts_;
  host.spec.type = NodeTypeCA;
  host.spec.name = "stray-host" + std::to_string(strayHosts_);
  host.spec.numPorts = 1;
  plan_.nodes.push_back(host);
  done.nodes.push_back(plan_.nodes.size() - 1);
  Plug({upper, {plan_.nodes.size() - 1, 1}, plan_.cables.front().speed}, done);
  return std::nullopt;
}

FaultInjector::Problem FaultInjector::SlowDownPlane(InjectedFault& done) {
  if (plan_.planes < 2) return "a fabric of one plane has no aggregated ports";
  const auto slowOnePlane = [this](PlannedCable& cable) {
    cable.slowPlane = static_cast<unsigned>(random_.Below(plan_.planes)) + 1;
  };
  return SlowDownBy(slowOnePlane, done);
}

FaultInjector::Problem FaultInjector::ShareFlid(InjectedFault& done) {
  Indices owners = plan_.SwitchesOnRank(plan_.levels - 1);
  const Indices leaves = owners;
  random_.Shuffle(owners);
  for (const std::size_t owner : owners) {
    std::vector<std::uint16_t> flids = plan_.nodes[owner].spec.flids;
    std::erase_if(flids, [&](std::uint16_t flid) { return touchedFlids_.contains(flid); });
    Indices others = leaves;
    std::erase_if(others, [&](std::size_t leaf) {
      return plan_.nodes[leaf].leafGroup == plan_.nodes[owner].leafGroup;
    });
    if (flids.empty() || others.empty()) continue;
    const std::uint16_t flid = random_.Pick(flids);
    const std::size_t other = random_.Pick(others);
    plan_.nodes[other].spec.flids.push_back(flid);
    touchedFlids_.insert(flid);
    touchedNodes_.insert({owner, other});
    done.flids.push_back({owner, other, flid});
    return std::nullopt;
  }
  return "no FLID is left that a second group of leaves could have too";
}

}  // namespace fabscope::internal
