// Finding the roots when nobody names them.
//
// One leaf's view of the fabric (classification.cpp) tells the whole tree, if the cabling around it
// is right. So the fabric is classified from one leaf after another, each far from all leaves used
// before, so that no fault is near to all of them; the ranks are accepted as soon as enough
// classifications agree on roots and leaves.
//
// The first leaf is the switch with most hosts. It is never compared: there is nothing yet that it
// could agree with. Agreement is met when the newest classification equals exactly the required
// number, itself included; with a requirement of 1 that means that it equals no other.

#include <functional>
#include <utility>

#include "fabric/guid.h"
#include "fat_tree/status.h"
#include "fat_tree/topology.h"
#include "platform/progress.h"

namespace fabscope::internal {

FTClassificationHandler::~FTClassificationHandler() {
  for (const FTClassification* classification : classifications) delete classification;
}

FTClassification* FTClassificationHandler::GetNewClassification(const FTTopology& topology) {
  classifications.push_back(new FTClassification(topology));
  return classifications.back();
}

const IBNode* FTTopology::GetFirstLeaf() {
  const TreeLinks& links = GetTreeLinks();
  classificationNodeData.Reserve(fabric->GetNodes().size());
  const IBNode* first = nullptr;
  FTClassification::NodeData most;
  for (const IBNode* node : fabric->switches) {
    if (node == nullptr) return nullptr;
    const FTClassification::NodeData data{links.HostCables(*node),
                                          static_cast<std::uint32_t>(links.Of(*node).size())};
    if (data.caLinks == 0) continue;
    classificationNodeData.Set(*node, data);
    // Of switches with equal counts the last one in model order stays.
    if (data < most) continue;
    first = node;
    most = data;
  }
  return first;
}

const IBNode* FTClassification::GetLeafToClassify(const std::vector<FTClassification*>& all) {
  if (maxThresholdDistance != 2 && maxThresholdDistance != 4 && maxThresholdDistance != 6) {
    errStream << "Wrong Classification. Unexpected maximal distance: " << maxThresholdDistance;
    return nullptr;
  }
  const auto farthest = distanceToNodes.find(maxThresholdDistance);
  if (farthest == distanceToNodes.end()) {
    errStream << "Wrong Classification. There are no nodes at the distance: "
              << maxThresholdDistance;
    return nullptr;
  }
  return GetLeafToClassify(all, farthest->second);
}

const IBNode* FTClassification::GetLeafToClassify(const std::vector<FTClassification*>& all,
                                                  const std::list<const IBNode*>& candidates) {
  constexpr const char* cannotFind = "Cannot find a next leaf to classify. ";
  std::map<NodeData, std::vector<const IBNode*>, std::greater<>> byLinks;
  for (const IBNode* node : candidates) {
    if (node == nullptr) {
      errStream << cannotFind << "DB error - One of IB-Nodes is NULL";
      return nullptr;
    }
    const NodeData* data = topology.GetClassificationNodeData(node);
    if (data != nullptr) byLinks[*data].push_back(node);
  }

  const std::vector<const FTClassification*> newestFirst(all.rbegin(), all.rend());
  for (const auto& [data, nodes] : byLinks) {
    for (const IBNode* node : nodes) {
      // Every classification is asked, also behind one that disagrees: one that never reached the
      // switch ends the search.
      bool allAgree = true;
      for (const FTClassification* entry : newestFirst) {
        if (entry == nullptr) {
          errStream << cannotFind << "One of FT-Classifications is NULL";
          return nullptr;
        }
        if (entry == this) continue;
        bool isFar = false;
        if (entry->CheckDistanceTo(*node, isFar) != StatusSuccess) {
          errStream << cannotFind
                    << "Failed to find a distance to the Switch (GUID: " << GuidText(node->guid)
                    << ')';
          return nullptr;
        }
        allAgree = allAgree && isFar;
      }
      if (allAgree) return node;
    }
  }
  errStream << "Failed to find next leaf to classify out of " << candidates.size()
            << " possible nodes";
  return nullptr;
}

int FTTopology::Build(std::vector<FabricErrGeneral*>& /*errors*/, std::string& message, int retries,
                      int equalClassifications) {
  const std::string prefix = "Cannot build Fat-Tree topology. ";
  if (Show_GUID == 1 || Show_GUID == 2) {
    *outStream << "#Output format: " << (Show_GUID == 2 ? "Node GUID" : "System GUID(/Switch ASIC)")
               << " -- Node Name" << std::endl
               << std::endl;
  }
  *outStream << "-I- Detecting roots by distance classifications" << std::endl;

  const IBNode* leaf = GetFirstLeaf();
  if (leaf == nullptr) {
    message = prefix + "Failed to find a leaf switch to classify";
    return StatusBadData;
  }
  FTClassificationHandler handler;
  const std::vector<FTClassification*>& classifications = handler.GetClassifications();
  FTClassification* classification = handler.GetNewClassification(*this);
  const auto fail = [&] {
    message = prefix + classification->GetErrorText();
    return StatusBadData;
  };
  if (classification->Classify(*leaf) != StatusSuccess) return fail();

  for (int tries = 0; tries < retries; ++tries) {
    ReportProgress("finding roots", static_cast<std::size_t>(tries),
                   static_cast<std::size_t>(retries));
    leaf = classification->GetLeafToClassify(classifications);
    if (leaf == nullptr) return fail();
    classification = handler.GetNewClassification(*this);
    if (classification->Classify(*leaf) != StatusSuccess) return fail();
    if (classification->CountEquals(classifications) == equalClassifications) {
      std::vector<NodeSet> agreed;
      classification->SwapRanks(agreed);
      ranks = RankedSwitches(std::move(agreed));
      return StatusSuccess;
    }
  }
  errStream << prefix << "Failed to find " << equalClassifications
            << " equal Classifications out of " << retries << " retries";
  message = errStream.str();
  return StatusBadData;
}

}  // namespace fabscope::internal
