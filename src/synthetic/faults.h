#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

#include "synthetic/fabric_plan.h"
#include "synthetic/random.h"

namespace fabscope::internal {

// What goes wrong in machine rooms. Where a cable needs a port and the switch has none left, a
// cable that was there is pulled for it.
enum class FaultKind {
  MissingLink,      // a cable between two switches is not there
  SwappedCables,    // two cables between the same two ranks exchange their upper ends
  MovedCable,       // one end of a cable is in a wrong switch of the right rank
  SameRankLink,     // a cable between two switches of one rank, below the roots
  RootLink,         // a cable between two roots
  MissingHost,      // a host is not there
  SlowLink,         // a cable runs at the next lower speed
  DeadSwitch,       // a switch is not there
  StrayHost,        // a host at a switch that is no leaf
  AsymmetricAPort,  // a cable between two switches runs slower on one of its planes
  SharedFlid,       // a leaf of another group has a FLID of this group too
};

// "missing-link", "swapped-cables", ...
std::string_view FaultName(FaultKind kind);
std::optional<FaultKind> FaultOfName(std::string_view name);
const std::vector<FaultKind>& AllFaultKinds();

// A FLID of a leaf that a leaf of another group has got as well.
struct AddedFlid {
  std::size_t owner = 0;
  std::size_t node = 0;
  std::uint16_t flid = 0;
};

// One fault that was done to a plan. Nodes are indices of the plan.
struct InjectedFault {
  FaultKind kind{};
  std::vector<std::size_t> nodes;    // switches and hosts that came or went
  std::vector<PlannedCable> before;  // cables as they were, where they have changed or gone
  std::vector<PlannedCable> after;   // cables as they are, where they have changed or come
  std::vector<AddedFlid> flids;      // FLIDs that leaves have got
};

// Does faults to a plan, one after another. No two touch the same cable or FLID, so that each stays
// what it was.
class FaultInjector {
 public:
  FaultInjector(FabricPlan& plan, Random& random) : plan_(plan), random_(random) {}

  // Does one fault, or answers why there is no place for it.
  [[nodiscard]] std::optional<std::string> Inject(FaultKind kind, InjectedFault& done);

 private:
  using Problem = std::optional<std::string>;
  using Indices = std::vector<std::size_t>;

  Problem RemoveLink(InjectedFault& done);
  Problem SwapCables(InjectedFault& done);
  Problem MoveCable(InjectedFault& done);
  Problem JoinRank(bool roots, InjectedFault& done);
  Problem RemoveHost(InjectedFault& done);
  Problem SlowDown(InjectedFault& done);
  Problem KillSwitch(InjectedFault& done);
  Problem AddStrayHost(InjectedFault& done);
  Problem SlowDownPlane(InjectedFault& done);
  Problem ShareFlid(InjectedFault& done);

  bool IsUntouched(std::size_t cable) const;
  bool JoinsSwitches(const PlannedCable& cable) const;
  // Whether another fault would be lost with the node.
  bool IsTouched(std::size_t node) const;
  Indices UntouchedSwitchCables() const;
  // Those of one switch.
  Indices UntouchedCablesOf(std::size_t node);
  bool CanTakePort(std::size_t node);
  // A free port, or that of a cable which is pulled for it.
  std::uint8_t TakePort(std::size_t node, InjectedFault& done);
  // Lets `change` slow down a cable that can be slower.
  template <typename Change>
  Problem SlowDownBy(Change change, InjectedFault& done);
  void Touch(std::size_t cable);
  void Pull(std::size_t cable, InjectedFault& done);
  void Plug(const PlannedCable& cable, InjectedFault& done);
  void TakeAway(std::size_t node, InjectedFault& done);

  FabricPlan& plan_;
  Random& random_;
  std::unordered_set<std::size_t> touchedCables_;
  // At the ends of these, also of those that were pulled, and leaves that share a FLID.
  std::unordered_set<std::size_t> touchedNodes_;
  std::unordered_set<std::uint16_t> touchedFlids_;
  std::size_t strayHosts_ = 0;
};

}  // namespace fabscope::internal
