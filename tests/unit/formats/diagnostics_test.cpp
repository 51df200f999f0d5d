#include "formats/diagnostics.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string>

namespace fabscope::internal {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

void AddTo(Warnings& warnings, WarningKind kind, std::size_t line, const std::string& message) {
  if (warnings.Count(kind)) warnings.Add(line, message);
}

TEST(DiagnosticsTest, AnErrorNamesFileLineAndColumn) {
  EXPECT_EQ((InputError{"a:b.topo", 12, 3, "it is wrong"}).Text(), "a:b.topo:12:3: it is wrong");
}

TEST(DiagnosticsTest, AnErrorOfAWholeFileNamesNoPlace) {
  EXPECT_EQ((InputError{"net.topo", 0, 0, "Permission denied"}).Text(),
            "net.topo: Permission denied");
}

TEST(DiagnosticsTest, LinesAndColumnsCountBytesFromOne) {
  const std::string text =
      "ab\n\nc\xc3\xa9"
      "d\n";
  const auto place = [&](std::size_t offset) { return ErrorAt("f", text, offset, "x").Text(); };
  EXPECT_EQ(place(0), "f:1:1: x");
  EXPECT_EQ(place(1), "f:1:2: x");
  EXPECT_EQ(place(2), "f:1:3: x");  // the newline belongs to its line
  EXPECT_EQ(place(3), "f:2:1: x");
  EXPECT_EQ(place(4), "f:3:1: x");
  EXPECT_EQ(place(7), "f:3:4: x");
  EXPECT_EQ(place(8), "f:3:5: x");
  EXPECT_EQ(place(9), "f:4:1: x");
}

TEST(DiagnosticsTest, APlaceBehindTheTextIsItsEnd) {
  EXPECT_EQ(ErrorAt("f", "ab", 99, "x").Text(), "f:1:3: x");
  EXPECT_EQ(ErrorAt("f", "", 99, "x").Text(), "f:1:1: x");
}

TEST(DiagnosticsTest, NoWarningNoLine) { EXPECT_THAT(Warnings().Lines("f"), IsEmpty()); }

TEST(DiagnosticsTest, WarningsAreShownInTheOrderOfTheirLines) {
  Warnings warnings;
  AddTo(warnings, WarningKind::UnknownSpeed, 20, "second");
  AddTo(warnings, WarningKind::EndsDisagree, 3, "first");
  AddTo(warnings, WarningKind::UnknownLine, 20, "third");
  EXPECT_THAT(warnings.Lines("f"),
              ElementsAre("f:3: warning: first", "f:20: warning: second", "f:20: warning: third"));
}

TEST(DiagnosticsTest, TenOfAKindAreWantedAndTheOthersCounted) {
  Warnings warnings;
  for (int i = 0; i < 10; ++i) EXPECT_TRUE(warnings.Count(WarningKind::RepeatedPort));
  EXPECT_FALSE(warnings.Count(WarningKind::RepeatedPort));
  EXPECT_FALSE(warnings.Count(WarningKind::RepeatedPort));
  EXPECT_TRUE(warnings.Count(WarningKind::UnknownSpeed));
  EXPECT_THAT(warnings.Lines("f"), ElementsAre("f: warning: 2 more: port given twice"));
}

TEST(DiagnosticsTest, EveryKindIsCountedForItselfUnderItsName) {
  Warnings warnings;
  for (int kind = 0; kind < static_cast<int>(WarningKind::Count_); ++kind) {
    for (int i = 0; i < 11 + kind; ++i) warnings.Count(static_cast<WarningKind>(kind));
  }
  warnings.Add(5, "the only one shown");
  EXPECT_THAT(warnings.Lines("net.topo"),
              ElementsAre("net.topo:5: warning: the only one shown",
                          "net.topo: warning: 1 more: line of no known kind",
                          "net.topo: warning: 2 more: node of unknown type",
                          "net.topo: warning: 3 more: port line outside of a node's record",
                          "net.topo: warning: 4 more: port given twice",
                          "net.topo: warning: 5 more: text longer than 256 bytes",
                          "net.topo: warning: 6 more: unknown link speed",
                          "net.topo: warning: 7 more: peer without a record of its own",
                          "net.topo: warning: 8 more: two ends of a link that disagree",
                          "net.topo: warning: 9 more: port cabled to itself",
                          "net.topo: warning: 10 more: GUID that is not a switch of the fabric"));
}

}  // namespace
}  // namespace fabscope::internal
