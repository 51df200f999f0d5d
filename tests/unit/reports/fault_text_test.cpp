#include "reports/fault_text.h"

#include <gtest/gtest.h>
#include <string>

#include "support/test_fabric.h"

namespace fabscope::internal {
namespace {

class FaultTextTest : public ::testing::Test {
 protected:
  FaultTextTest() { fabric.Switch("same").SwitchOfGuid(9, "same"); }

  std::string Text(const Finding& finding, const std::vector<Place>& places, int links = 0) {
    return FaultText({&finding, places, links}, NodeNames(fabric.Build()));
  }

  TestFabric fabric;
};

TEST_F(FaultTextTest, ASharedNameComesWithTheGuid) {
  const IBNode* ninth = fabric.Build().getNodeByGuid(9);
  EXPECT_EQ(Text(UnevenLinks{0, 2, {}, false, true, true}, {{ninth, 0}}, 1),
            "-E- same (0x0000000000000009) has 1 uplinks, expected 2 among the lines of its "
            "neighborhood");
}

}  // namespace
}  // namespace fabscope::internal
