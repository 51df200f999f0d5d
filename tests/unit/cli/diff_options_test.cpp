#include "cli/diff_options.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace fabscope::internal {
namespace {

using ::testing::Eq;
using ::testing::Optional;

class DiffOptionsTest : public ::testing::Test {
 protected:
  DiffOptionsTest() { arguments.operands = {"old.topo", "new.topo"}; }

  std::optional<std::string> Take(const std::string& name, const std::string& value) {
    for (const BoundOption& option : BindOptions(arguments)) {
      if (name == LongName(option.text)) return option.take(value);
    }
    return "no such option";
  }
  std::optional<std::string> Settle() { return SettleArguments(arguments); }

  DiffArguments arguments;
};

TEST_F(DiffOptionsTest, FindingsAreAskedFor) {
  ASSERT_EQ(Settle(), std::nullopt);
  EXPECT_EQ(arguments.options.specialNodes->GetExpression(), "Aggregation Node");
}

TEST_F(DiffOptionsTest, RootsAreFoundAsForACheck) {
  EXPECT_EQ(Take("--root-regex", "^spine"), std::nullopt);
  EXPECT_EQ(Take("--ranks", "ranks.csv"), std::nullopt);
  EXPECT_THAT(Settle(), Optional(Eq("--root-regex and --ranks contradict each other: roots come "
                                    "from one of them")));
}

TEST_F(DiffOptionsTest, NoInputIsOverwritten) {
  for (const char* file : {"./old.topo", "./new.topo", "./ranks.csv", "./names.map"}) {
    arguments = {};
    arguments.operands = {"old.topo", "new.topo"};
    EXPECT_EQ(Take("--ranks", "ranks.csv"), std::nullopt);
    EXPECT_EQ(Take("--node-name-map", "names.map"), std::nullopt);
    EXPECT_EQ(Take("--json", file), std::nullopt);
    EXPECT_EQ(Settle(), "--json " + std::string(file) + " would overwrite the input " +
                            std::string(file).substr(2));
  }
}

TEST_F(DiffOptionsTest, StandardInputIsReadOnce) {
  arguments.operands = {"-", "new.topo"};
  EXPECT_EQ(Settle(), std::nullopt);
  arguments.operands = {"-", "-"};
  EXPECT_THAT(Settle(), Optional(Eq("standard input (-) can be read only once")));
}

TEST_F(DiffOptionsTest, WhatGivesItsBytesOnceIsNotReadForBoth) {
  for (const char* option : {"--ranks", "--node-name-map"}) {
    for (const char* file : {"-", "/dev/null"}) {
      arguments = {};
      arguments.operands = {"old.topo", "new.topo"};
      EXPECT_EQ(Take(option, file), std::nullopt);
      EXPECT_EQ(Settle(), std::string(option) + " " + file +
                              " can be read only once, and there are several fabrics: give a file");
    }
  }
}

TEST_F(DiffOptionsTest, ReportIsQuietOrColouredWhenAskedFor) {
  EXPECT_EQ(Take("--quiet", ""), std::nullopt);
  EXPECT_EQ(Take("--color", "always"), std::nullopt);
  EXPECT_TRUE(arguments.quiet);
  EXPECT_EQ(arguments.color, ColorWhen::Always);
}

}  // namespace
}  // namespace fabscope::internal
