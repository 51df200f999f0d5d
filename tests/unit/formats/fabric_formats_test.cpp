#include "formats/fabric_formats.h"

#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <sstream>
#include <string>

#include "formats/load_fabric.h"
#include "support/input_fixture.h"
#include "support/test_fabric.h"

namespace fabscope::internal {
namespace {

class FabricFormatsTest : public InputTest {};

TEST_F(FabricFormatsTest, NamesAndEndingsAreOfOneFormat) {
  for (const FormatEntry& entry : AllFormats()) {
    EXPECT_EQ(FormatOfName(AllFormats(), entry.name), &entry) << entry.name;
    for (const char* ending : entry.endings) {
      if (ending == nullptr) continue;
      EXPECT_EQ(FormatOfFile(AllFormats(), std::string("file") + ending), &entry) << ending;
    }
  }
}

TEST_F(FabricFormatsTest, FormatsOfATreeAreNoneOfAFabric) {
  ASSERT_EQ(TreeFormats().size(), 1U);
  EXPECT_STREQ(TreeFormats().front().name, "slurm");
  EXPECT_EQ(FabricFormats().size() + TreeFormats().size(), WrittenFormats().size());
  EXPECT_EQ(FabricFormatOfName("slurm"), std::nullopt);
  EXPECT_EQ(FabricFormatOfFile("topology.conf"), std::nullopt);
  for (const FormatEntry& entry : FabricFormats()) EXPECT_FALSE(entry.IsMadeOfTree()) << entry.name;
}

// Else nobody would claim an input, or one of two would never be asked.
TEST_F(FabricFormatsTest, OneReaderTakesWhatNoOtherClaims) {
  int takers = 0;
  for (const FormatEntry& entry : AllFormats()) {
    if (entry.read != nullptr && entry.detect == nullptr) ++takers;
    EXPECT_TRUE(entry.read != nullptr || entry.detect == nullptr) << entry.name;
  }
  EXPECT_EQ(takers, 1);
}

TEST_F(FabricFormatsTest, WhatCanBeReadIsFoundByItsContent) {
  TestFabric made;
  made.Switch("leaf").Host("h1").Cable("leaf", "h1");
  const IBFabric& fabric = made.Build();
  std::size_t read = 0;
  for (const FormatEntry& entry : FabricFormats()) {
    if (entry.read == nullptr) continue;
    std::ostringstream text;
    entry.write(fabric, text);
    Write(text.str());
    FabricBuilder builder;
    Warnings warnings;
    ASSERT_EQ(LoadFabric(path, nullptr, nullptr, builder, warnings), std::nullopt) << entry.name;
    std::ostringstream again;
    entry.write(*builder.Build(), again);
    EXPECT_EQ(again.str(), text.str());
    ++read;
  }
  EXPECT_GE(read, 2U);
}

TEST_F(FabricFormatsTest, EachIsTold) {
  std::ifstream file(FABSCOPE_TEST_DATA "/../../docs/convert.md");
  const std::string page(std::istreambuf_iterator<char>(file), {});
  for (const FormatEntry& entry : WrittenFormats()) {
    const std::string row = std::string("| `") + entry.name + "` | `" + entry.endings.front();
    EXPECT_NE(page.find(row), std::string::npos) << row;
  }
}

}  // namespace
}  // namespace fabscope::internal
