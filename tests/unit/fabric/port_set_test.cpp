#include "fabric/port_set.h"

#include <cstddef>
#include <gtest/gtest.h>

namespace fabscope::internal {
namespace {

TEST(PortSetTest, HasWhatWasInsertedAndNothingElse) {
  PortSet ports;
  ports.Grow(200);
  for (const std::size_t port : {0U, 63U, 64U, 199U}) ports.Insert(port);
  for (std::size_t port = 0; port < ports.size(); ++port) {
    EXPECT_EQ(ports.Has(port), port == 0 || port == 63 || port == 64 || port == 199) << port;
  }
}

TEST(PortSetTest, WhatWasErasedIsGoneAndItsNeighborsStay) {
  PortSet ports;
  ports.Grow(66);
  for (const std::size_t port : {63U, 64U, 65U}) ports.Insert(port);
  ports.Erase(64);
  EXPECT_TRUE(ports.Has(63));
  EXPECT_FALSE(ports.Has(64));
  EXPECT_TRUE(ports.Has(65));
}

TEST(PortSetTest, GrowingKeepsWhatIsInIt) {
  PortSet ports;
  ports.Grow(3);
  ports.Insert(2);
  ports.Grow(1000);
  EXPECT_EQ(ports.size(), 1000U);
  EXPECT_TRUE(ports.Has(2));
  EXPECT_FALSE(ports.Has(3));
  EXPECT_FALSE(ports.Has(999));
}

}  // namespace
}  // namespace fabscope::internal
