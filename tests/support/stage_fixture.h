#pragma once

#include <gtest/gtest.h>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "fat_tree/neighborhood.h"
#include "fat_tree/topology.h"
#include "support/test_fabric.h"
#include "support/test_peer.h"

namespace fabscope::internal {

// A fabric to describe, a topology over it, and what comes out of it. `Topology()` builds the
// fabric on its first call.
class StageTest : public ::testing::Test {
 protected:
  ~StageTest() override {
    for (FabricErrGeneral* error : errors) delete error;
  }

  FTTopology& Topology() {
    if (!topology_) {
      topology_ = std::make_unique<FTTopology>(&fabric.Build(), &out, mergePercent);
      topology_->Show_GUID = showGuid;
    }
    return *topology_;
  }

  NodeSet Nodes(const std::vector<std::string>& names) {
    NodeSet nodes;
    for (const std::string& name : names) nodes.insert(fabric[name]);
    return nodes;
  }

  // Ranks the fabric from the named roots.
  void RankFrom(const std::vector<std::string>& roots) {
    NodeSet nodes = Nodes(roots);
    ASSERT_EQ(Topology().FillRanksFromRoots(nodes), 0);
  }

  // What was written since the last call.
  std::string TakeOutput() {
    std::string text = out.str();
    out.str("");
    return text;
  }

  std::vector<std::string> ErrorLines() {
    std::vector<std::string> lines;
    for (FabricErrGeneral* error : errors) lines.push_back(error->GetErrorLine());
    return lines;
  }

  TestFabric fabric;
  int mergePercent = 70;
  int showGuid = 0;
  std::ostringstream out;
  std::vector<FabricErrGeneral*> errors;
  std::string message;

 private:
  std::unique_ptr<FTTopology> topology_;
};

}  // namespace fabscope::internal
