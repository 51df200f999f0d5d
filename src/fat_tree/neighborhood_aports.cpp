// Asymmetric aggregated ports, counted per group.
//
// Inside a group every eligible plane port whose aggregated port is asymmetric counts, at both ends
// of a cable; towards the hosts each aggregated port of a leaf counts once, and the host's own is
// not looked at. A null switch ends the check; what was found until then counts.

#include "fat_tree/group_label.h"
#include "fat_tree/neighborhood.h"
#include "fat_tree/status.h"
#include "fat_tree/topology.h"

namespace fabscope::internal {
namespace {

bool IsEligible(const IBPort& port) {
  return port.GetPlaneMultiplicity() > 1 && port.getInSubFabric() && !port.isFNMPort() &&
         !port.isFNM1Port() && port.get_remote_node() != nullptr;
}

bool IsAsymmetric(const APort* aport) { return aport != nullptr && aport->asymmetry != 0; }

}  // namespace

int FTNeighborhood::CheckAsymmetricAPorts(std::ostream& stream) {
  if (const int status = CheckInternalAPorts(stream); status != StatusSuccess) return status;
  return IsNeighborhood() ? CheckExternalAPorts(stream) : StatusSuccess;
}

int FTNeighborhood::CheckInternalAPorts(std::ostream& stream) {
  std::vector<const IBPort*> found;
  for (const IBNode* spine : spines) {
    if (spine == nullptr) {
      topology->AddIssues(found.size());
      errStream << "Cannot check APorts internal links symmetry for the "
                << GroupLabel(IsNeighborhood(), id) << ". One of its IB-Nodes is NULL";
      return StatusLookupFailed;
    }
    if (!topology->GetTreeLinks().HasPlanePorts(*spine)) continue;
    for (const IBPort& port : spine->ports) {
      if (!IsEligible(port) || !lines.contains(port.get_remote_node())) continue;
      for (const IBPort* end : {&port, static_cast<const IBPort*>(port.remotePort)}) {
        if (!IsAsymmetric(end->GetAPort())) continue;
        found.push_back(end);
      }
    }
  }
  if (!found.empty()) {
    topology->Report(AsymmetricAPorts{id, std::move(found), false, IsNeighborhood()}, stream);
  }
  return StatusSuccess;
}

int FTNeighborhood::CheckExternalAPorts(std::ostream& stream) {
  std::vector<const IBPort*> found;
  for (const IBNode* line : lines) {
    if (line == nullptr) {
      topology->AddIssues(found.size());
      // Only neighborhoods come here; that the text says otherwise is its settled form.
      errStream << "Cannot check APorts external links symmetry for the " << GroupLabel(false, id)
                << ". One of its IB-Nodes is NULL";
      return StatusLookupFailed;
    }
    if (!topology->GetTreeLinks().HasPlanePorts(*line)) continue;
    std::set<const APort*> counted;
    for (const IBPort& port : line->ports) {
      if (!IsEligible(port) || port.get_remote_node()->nodeType != NodeTypeCA) continue;
      const APort* aport = port.GetAPort();
      if (!IsAsymmetric(aport) || !counted.insert(aport).second) continue;
      found.push_back(&port);
    }
  }
  // Only neighborhoods have switches with hosts.
  if (!found.empty()) {
    topology->Report(AsymmetricAPorts{id, std::move(found), true, true}, stream);
  }
  return StatusSuccess;
}

}  // namespace fabscope::internal
