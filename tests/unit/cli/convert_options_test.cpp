#include "cli/convert_options.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace fabscope::internal {
namespace {

using ::testing::Eq;
using ::testing::Optional;

class ConvertOptionsTest : public ::testing::Test {
 protected:
  ConvertOptionsTest() { arguments.operands = {"in.topo"}; }

  std::optional<std::string> Take(const std::string& name, const std::string& value) {
    for (const BoundOption& option : BindOptions(arguments)) {
      if (name == LongName(option.text)) return option.take(value);
    }
    return "no such option";
  }
  std::optional<std::string> Settle() { return SettleArguments(arguments); }

  ConvertArguments arguments;
};

TEST_F(ConvertOptionsTest, EndingOfTheOutputTellsTheFormat) {
  ASSERT_EQ(Take("--output", "out.gv"), std::nullopt);
  ASSERT_EQ(Settle(), std::nullopt);
  EXPECT_EQ(arguments.output, "out.gv");
  EXPECT_EQ(arguments.format, &EntryOf(FabricFormat::Dot));
  EXPECT_EQ(arguments.options.specialNodes->GetExpression(), "Aggregation Node");
}

TEST_F(ConvertOptionsTest, FormatThatIsGivenHoldsAgainstTheEnding) {
  ASSERT_EQ(Take("--output", "out.json"), std::nullopt);
  ASSERT_EQ(Take("--format", "ibsim"), std::nullopt);
  ASSERT_EQ(Settle(), std::nullopt);
  EXPECT_EQ(arguments.format, &EntryOf(FabricFormat::NetFile));
}

TEST_F(ConvertOptionsTest, UnknownFormatIsRefusedWithTheNamesOfAll) {
  for (const char* value : {"", "json", "Dot", "topology"}) {
    EXPECT_THAT(Take("--format", value),
                Optional(Eq("expected document, ibnetdiscover, ibsim, dot, graphml or slurm")))
        << value;
  }
}

TEST_F(ConvertOptionsTest, SlurmIsGivenByNameOrByTheEnding) {
  ASSERT_EQ(Take("--output", "topology.conf"), std::nullopt);
  ASSERT_EQ(Settle(), std::nullopt);
  EXPECT_STREQ(arguments.format->name, "slurm");
  ASSERT_EQ(Take("--format", "dot"), std::nullopt);
  ASSERT_EQ(Settle(), std::nullopt);
  EXPECT_EQ(arguments.format, &EntryOf(FabricFormat::Dot));
  ASSERT_EQ(Take("--output", "-"), std::nullopt);
  ASSERT_EQ(Take("--format", "slurm"), std::nullopt);
  ASSERT_EQ(Settle(), std::nullopt);
  EXPECT_STREQ(arguments.format->name, "slurm");
}

TEST_F(ConvertOptionsTest, SearchForTheTreeIsForSlurmOnly) {
  const std::vector<std::pair<std::string, std::string>> options{
      {"--roots", "auto"}, {"--root-regex", "^root"}, {"--ranks", "ranks.csv"},
      {"--retries", "10"}, {"--equal", "2"},          {"--merge-percent", "70"}};
  for (const auto& [option, value] : options) {
    arguments = {};
    arguments.operands = {"in.topo"};
    ASSERT_EQ(Take(option, value), std::nullopt);
    ASSERT_EQ(Take("--output", "out.json"), std::nullopt);
    EXPECT_THAT(Settle(),
                Optional(Eq(option + " is for --format slurm only: no other looks for a tree")));
    ASSERT_EQ(Take("--format", "slurm"), std::nullopt);
    EXPECT_EQ(Settle(), std::nullopt) << option;
  }
}

TEST_F(ConvertOptionsTest, RootsOfTheTreeMayNotContradictEachOther) {
  ASSERT_EQ(Take("--output", "topology.conf"), std::nullopt);
  ASSERT_EQ(Take("--root-regex", "^root"), std::nullopt);
  ASSERT_EQ(Settle(), std::nullopt);
  EXPECT_EQ(arguments.options.roots, RootsFrom::Regex);
  ASSERT_EQ(Take("--roots", "auto"), std::nullopt);
  EXPECT_THAT(Settle(), Optional(Eq("--roots auto and --root-regex contradict each other: allowed "
                                    "is --roots regex")));
}

TEST_F(ConvertOptionsTest, RanksAreAnInputThatIsNotOverwritten) {
  ASSERT_EQ(Take("--output", "ranks.conf"), std::nullopt);
  ASSERT_EQ(Take("--ranks", "./ranks.conf"), std::nullopt);
  EXPECT_THAT(Settle(), Optional(Eq("--output ranks.conf would overwrite the input ./ranks.conf")));
}

TEST_F(ConvertOptionsTest, OutputIsRequired) {
  ASSERT_EQ(Take("--format", "dot"), std::nullopt);
  EXPECT_THAT(Settle(), Optional(Eq("--output FILE is required")));
  EXPECT_THAT(Take("--output", ""), Optional(Eq("expected the name of a file")));
}

TEST_F(ConvertOptionsTest, OutputWithoutATellingEndingNeedsAFormat) {
  for (const std::string file : {"-", "out", "out.txt", "out.json.gz"}) {
    arguments.format = nullptr;
    ASSERT_EQ(Take("--output", file), std::nullopt);
    EXPECT_THAT(Settle(), Optional(Eq("--output " + file +
                                      " does not tell the format by its ending: give --format "
                                      "document, ibnetdiscover, ibsim, dot, graphml or slurm")));
    ASSERT_EQ(Take("--format", "document"), std::nullopt);
    EXPECT_EQ(Settle(), std::nullopt) << file;
  }
}

TEST_F(ConvertOptionsTest, InputIsNotOverwritten) {
  ASSERT_EQ(Take("--output", "./in.topo"), std::nullopt);
  EXPECT_THAT(Settle(), Optional(Eq("--output ./in.topo would overwrite the input in.topo")));
  ASSERT_EQ(Take("--output", "names.topo"), std::nullopt);
  ASSERT_EQ(Take("--node-name-map", "./names.topo"), std::nullopt);
  EXPECT_THAT(Settle(), Optional(Eq("--output names.topo would overwrite the input ./names.topo")));
}

TEST_F(ConvertOptionsTest, StandardInputIsReadOnce) {
  arguments.operands = {"-"};
  ASSERT_EQ(Take("--output", "out.json"), std::nullopt);
  ASSERT_EQ(Settle(), std::nullopt);
  ASSERT_EQ(Take("--node-name-map", "-"), std::nullopt);
  EXPECT_THAT(Settle(), Optional(Eq("standard input (-) can be read only once")));
}

TEST_F(ConvertOptionsTest, StandardInputAndOutputMayGoTogether) {
  arguments.operands = {"-"};
  ASSERT_EQ(Take("--output", "-"), std::nullopt);
  ASSERT_EQ(Take("--format", "graphml"), std::nullopt);
  EXPECT_EQ(Settle(), std::nullopt);
  EXPECT_EQ(arguments.format, &EntryOf(FabricFormat::GraphMl));
}

TEST_F(ConvertOptionsTest, SpecialNodesAreAnExpression) {
  ASSERT_EQ(Take("--output", "out.json"), std::nullopt);
  EXPECT_THAT(Take("--special-nodes", "("),
              Optional(Eq("expected a POSIX extended regular expression: Unmatched ( or \\(")));
  EXPECT_EQ(Take("--special-nodes", "^sharp"), std::nullopt);
  ASSERT_EQ(Settle(), std::nullopt);
  EXPECT_EQ(arguments.options.specialNodes->GetExpression(), "^sharp");
}

}  // namespace
}  // namespace fabscope::internal
