// The order of the checks. Groups are formed on every pair of ranks before any check runs; then the
// checks go group by group, both of one group before the next; FLIDs come last. The first failure
// ends it, with the records and lines until then standing.

#include "fat_tree/neighborhood.h"
#include "fat_tree/status.h"
#include "fat_tree/topology.h"
#include "platform/progress.h"

namespace fabscope::internal {

int FTTopology::Validate(std::vector<FabricErrGeneral*>& errors, std::string& message) {
  if (const int status = CreateNeighborhoods(errors); status != StatusSuccess) {
    message = "Cannot validate Fat-Tree topology. " + errStream.str();
    return status;
  }
  if (const int status = CheckUpDownLinksAndAPorts(errors); status != StatusSuccess) {
    message = "Cannot validate Fat-Tree topology. " + errStream.str();
    return status;
  }
  if (const int status = CheckFLIDs(); status != StatusSuccess) {
    message = "Cannot validate FLIDs distribution. " + errStream.str();
    return status;
  }
  return StatusSuccess;
}

int FTTopology::CreateNeighborhoods(std::vector<FabricErrGeneral*>& errors) {
  // A tree without ranks or with roots only has no pair of ranks to group.
  neighborhoods.resize(GetRanks().empty() ? 0 : GetRanks().size() - 1);
  for (std::size_t rank = 0; rank < neighborhoods.size(); ++rank) {
    const int status = CreateNeighborhoodsOnRank(errors, rank);
    if (status != StatusSuccess) return status;
  }
  return StatusSuccess;
}

int FTTopology::SetNeighborhoodsOnRank(std::vector<FTNeighborhood*>& groups, std::size_t rank) {
  if (rank >= neighborhoods.size()) {
    errStream << "Cannot set neighborhoods/connectivity groups on rank: " << rank
              << " container size: " << neighborhoods.size();
    return StatusBadData;
  }
  neighborhoods[rank].swap(groups);
  return StatusSuccess;
}

int FTTopology::CheckUpDownLinksAndAPorts(std::vector<FabricErrGeneral*>& errors) {
  if (const int status = CalculateUpDownLinksMinRatio(); status != StatusSuccess) return status;
  return CheckNeighborhoodsLinksAndAPorts(errors);
}

int FTTopology::CheckNeighborhoodsLinksAndAPorts(std::vector<FabricErrGeneral*>& errors) {
  if (neighborhoods.empty()) {
    errStream << "Cannot calculate Up/Down links. Map is empty";
    return StatusBadData;
  }
  for (const std::vector<FTNeighborhood*>& groups : neighborhoods) {
    std::size_t done = 0;
    for (FTNeighborhood* group : groups) {
      ReportProgress("checking groups", done++, groups.size());
      if (group == nullptr) {
        errStream << "Cannot calculate Up/Down links. One of FTNeighborhoods is NULL";
        return StatusLookupFailed;
      }
      int status = group->CheckUpDownLinks(errors, *outStream);
      if (status == StatusSuccess) status = group->CheckAsymmetricAPorts(*outStream);
      if (status != StatusSuccess) {
        errStream << group->GetErrorText();
        return status;
      }
    }
  }
  return StatusSuccess;
}

}  // namespace fabscope::internal
