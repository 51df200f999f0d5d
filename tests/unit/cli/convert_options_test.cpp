#include "cli/convert_options.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace fabscope {
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
  EXPECT_EQ(arguments.format, FabricFormat::Dot);
  EXPECT_EQ(arguments.specialNodes->GetExpression(), "Aggregation Node");
}

TEST_F(ConvertOptionsTest, FormatThatIsGivenHoldsAgainstTheEnding) {
  ASSERT_EQ(Take("--output", "out.json"), std::nullopt);
  ASSERT_EQ(Take("--format", "ibsim"), std::nullopt);
  ASSERT_EQ(Settle(), std::nullopt);
  EXPECT_EQ(arguments.format, FabricFormat::NetFile);
}

TEST_F(ConvertOptionsTest, UnknownFormatIsRefusedWithTheNamesOfAll) {
  for (const char* value : {"", "json", "Dot", "topology"}) {
    EXPECT_THAT(Take("--format", value),
                Optional(Eq("expected document, ibnetdiscover, ibsim, dot or graphml")))
        << value;
  }
}

TEST_F(ConvertOptionsTest, OutputIsRequired) {
  ASSERT_EQ(Take("--format", "dot"), std::nullopt);
  EXPECT_THAT(Settle(), Optional(Eq("--output FILE is required")));
  EXPECT_THAT(Take("--output", ""), Optional(Eq("expected the name of a file")));
}

TEST_F(ConvertOptionsTest, OutputWithoutATellingEndingNeedsAFormat) {
  for (const std::string file : {"-", "out", "out.txt", "out.json.gz"}) {
    arguments.format.reset();
    ASSERT_EQ(Take("--output", file), std::nullopt);
    EXPECT_THAT(Settle(), Optional(Eq("--output " + file +
                                      " does not tell the format by its ending: give --format "
                                      "document, ibnetdiscover, ibsim, dot or graphml")));
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
  EXPECT_EQ(arguments.format, FabricFormat::GraphMl);
}

TEST_F(ConvertOptionsTest, SpecialNodesAreAnExpression) {
  ASSERT_EQ(Take("--output", "out.json"), std::nullopt);
  EXPECT_THAT(Take("--special-nodes", "("),
              Optional(Eq("expected a POSIX extended regular expression: Unmatched ( or \\(")));
  EXPECT_EQ(Take("--special-nodes", "^sharp"), std::nullopt);
  ASSERT_EQ(Settle(), std::nullopt);
  EXPECT_EQ(arguments.specialNodes->GetExpression(), "^sharp");
}

}  // namespace
}  // namespace fabscope
