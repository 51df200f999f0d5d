#pragma once

#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "fat_tree/neighborhood.h"
#include "fat_tree/topology.h"
#include "reference/random_fabric.h"

namespace fabscope::internal {

// One case taken through the stage, with everything that came out of it.
class StageRun {
 public:
  explicit StageRun(const reference::PlainCase& what);
  StageRun(const StageRun&) = delete;
  StageRun& operator=(const StageRun&) = delete;
  ~StageRun();

  // All three do what the options of the case say. A tree that was not built is not validated, one
  // that was not validated is not dumped.
  void Build();
  void Validate();
  void Dump();

  // Builds, validates and dumps; true when all of it was done.
  bool RunAll();

  // The groups of all ranks in report order.
  std::vector<const FTNeighborhood*> Groups() const;
  // Texts of the records of one event ("MISSING_LINK" or "INVALID_LINK"), in order.
  std::vector<std::string> Records(const std::string& event) const;

  std::unique_ptr<IBFabric> model;
  std::unique_ptr<FTTopology> topology;
  std::vector<FabricErrGeneral*> errors;
  std::string message;
  int buildStatus = -1;
  int validateStatus = -1;
  std::string buildText;
  std::string validateText;
  std::string dumpText;

 private:
  std::string TakeOutput();

  reference::PlainOptions options_;
  std::ostringstream out_;
};

}  // namespace fabscope::internal
