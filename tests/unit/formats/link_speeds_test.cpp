#include "formats/link_speeds.h"

#include <gtest/gtest.h>
#include <optional>

namespace fabscope::internal {
namespace {

TEST(LinkSpeedsTest, SpeedsAreKnownByNameAndByCode) {
  EXPECT_EQ(SpeedCode("FDR"), 0x100U);
  EXPECT_EQ(SpeedCode("FDR10"), 0x10000U);
  EXPECT_EQ(SpeedCode("FDR1"), std::nullopt);
  EXPECT_EQ(SpeedCode("hdr"), std::nullopt);
  EXPECT_EQ(SpeedCode(""), std::nullopt);
  EXPECT_EQ(SpeedName(0x100), "FDR");
  EXPECT_EQ(SpeedName(0x1000000), "XDR");
  EXPECT_EQ(SpeedName(0), "");
  EXPECT_EQ(SpeedName(0x3), "");
}

}  // namespace
}  // namespace fabscope::internal
