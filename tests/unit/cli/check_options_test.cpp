#include "cli/check_options.h"

#include <fstream>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <iterator>
#include <sstream>

namespace fabscope::internal {
namespace {

using ::testing::Eq;
using ::testing::Optional;

class CheckOptionsTest : public ::testing::Test {
 protected:
  std::optional<std::string> Take(const std::string& name, const std::string& value) {
    for (const BoundOption& option : BindOptions(arguments)) {
      if (name == LongName(option.text)) return option.take(value);
    }
    return "no such option";
  }
  std::optional<std::string> Settle() { return SettleArguments(arguments); }
  static std::vector<std::string> OutputNames() {
    std::vector<std::string> names;
    for (const Output<CheckRun>& output : CheckOutputs()) names.emplace_back(output.text.name);
    return names;
  }

  CheckArguments arguments;
};

TEST_F(CheckOptionsTest, DefaultsAreThoseOfTheContract) {
  ASSERT_EQ(Settle(), std::nullopt);
  EXPECT_EQ(arguments.options.roots, RootsFrom::Auto);
  EXPECT_EQ(arguments.options.retries, 10);
  EXPECT_EQ(arguments.options.equalClassifications, 2);
  EXPECT_EQ(arguments.options.mergePercent, 70);
  EXPECT_EQ(arguments.options.showGuid, 0);
  EXPECT_EQ(arguments.options.specialNodes->GetExpression(), "Aggregation Node");
  EXPECT_FALSE(arguments.options.wantDump);
}

TEST_F(CheckOptionsTest, NumbersAreTakenAtBothLimitsOfTheirRange) {
  EXPECT_EQ(Take("--retries", "0"), std::nullopt);
  EXPECT_EQ(arguments.options.retries, 0);
  EXPECT_EQ(Take("--retries", "2147483647"), std::nullopt);
  EXPECT_EQ(Take("--equal", "1"), std::nullopt);
  EXPECT_EQ(arguments.options.equalClassifications, 1);
  EXPECT_EQ(Take("--merge-percent", "0"), std::nullopt);
  EXPECT_EQ(Take("--merge-percent", "100"), std::nullopt);
  EXPECT_EQ(arguments.options.mergePercent, 100);
}

TEST_F(CheckOptionsTest, NumbersBeyondTheirRangeAndOtherTextAreRefused) {
  for (const char* value : {"101", "-1", "", "7x", " 7", "99999999999", "0x10"}) {
    EXPECT_THAT(Take("--merge-percent", value),
                Optional(Eq("expected a whole number from 0 to 100")))
        << value;
  }
  EXPECT_NE(Take("--equal", "0"), std::nullopt);
  EXPECT_NE(Take("--retries", "-1"), std::nullopt);
  EXPECT_NE(Take("--retries", "2147483648"), std::nullopt);
}

TEST_F(CheckOptionsTest, LeadingZerosDoNotMakeANumberLarger) {
  EXPECT_EQ(Take("--retries", "0000000000000000000007"), std::nullopt);
  EXPECT_EQ(arguments.options.retries, 7);
}

TEST_F(CheckOptionsTest, RootsNamesItsFiveWays) {
  for (const char* value : {"auto", "search", "inferred", "smdb", "regex"}) {
    EXPECT_EQ(Take("--roots", value), std::nullopt);
    EXPECT_EQ(arguments.roots, value);
  }
  for (const char* value : {"", "Auto", "regexp"}) {
    EXPECT_THAT(Take("--roots", value),
                Optional(Eq("expected auto, search, inferred, smdb or regex")))
        << value;
  }
}

TEST_F(CheckOptionsTest, AnExpressionThatDoesNotCompileIsRefusedWithTheReason) {
  const std::string reason = regExp("(").GetError();  // the words are the C library's
  for (const char* option : {"--root-regex", "--special-nodes"}) {
    EXPECT_EQ(Take(option, "("), "expected a POSIX extended regular expression: " + reason);
  }
  EXPECT_EQ(arguments.options.rootRegex, nullptr);
  EXPECT_EQ(arguments.options.specialNodes, nullptr);
}

TEST_F(CheckOptionsTest, EachExpressionIsKeptForItsOwnUse) {
  EXPECT_EQ(Take("--root-regex", "^spine"), std::nullopt);
  EXPECT_EQ(Take("--special-nodes", "^sharp"), std::nullopt);
  ASSERT_EQ(Settle(), std::nullopt);
  EXPECT_EQ(arguments.options.rootRegex->GetExpression(), "^spine");
  EXPECT_EQ(arguments.options.specialNodes->GetExpression(), "^sharp");
}

TEST_F(CheckOptionsTest, AFileHasAName) {
  for (const char* option :
       {"--ranks", "--flids", "--node-name-map", "--dump", "--csv", "--json", "--log"}) {
    EXPECT_THAT(Take(option, ""), Optional(Eq("expected the name of a file"))) << option;
  }
}

TEST_F(CheckOptionsTest, QuietIsAskedFor) {
  EXPECT_FALSE(arguments.quiet);
  EXPECT_EQ(Take("--quiet", ""), std::nullopt);
  EXPECT_TRUE(arguments.quiet);
}

TEST_F(CheckOptionsTest, ShowGuidNamesItsThreeForms) {
  EXPECT_EQ(Take("--show-guid", "system"), std::nullopt);
  EXPECT_EQ(arguments.options.showGuid, 1);
  EXPECT_EQ(Take("--show-guid", "node"), std::nullopt);
  EXPECT_EQ(arguments.options.showGuid, 2);
  EXPECT_EQ(Take("--show-guid", "none"), std::nullopt);
  EXPECT_EQ(arguments.options.showGuid, 0);
  EXPECT_THAT(Take("--show-guid", "both"), Optional(Eq("expected none, system or node")));
}

TEST_F(CheckOptionsTest, RootRegexImpliesRootsByRegex) {
  EXPECT_EQ(Take("--root-regex", "^spine"), std::nullopt);
  ASSERT_EQ(Settle(), std::nullopt);
  EXPECT_EQ(arguments.options.roots, RootsFrom::Regex);
}

TEST_F(CheckOptionsTest, RanksImplyRootsBySubnetManager) {
  EXPECT_EQ(Take("--ranks", "ranks.csv"), std::nullopt);
  ASSERT_EQ(Settle(), std::nullopt);
  EXPECT_EQ(arguments.options.roots, RootsFrom::Smdb);
}

TEST_F(CheckOptionsTest, RootsBySubnetManagerNeedNoFile) {
  EXPECT_EQ(Take("--roots", "smdb"), std::nullopt);
  ASSERT_EQ(Settle(), std::nullopt);
  EXPECT_EQ(arguments.options.roots, RootsFrom::Smdb);
}

TEST_F(CheckOptionsTest, RootsByRegexNeedTheExpression) {
  EXPECT_EQ(Take("--roots", "regex"), std::nullopt);
  EXPECT_THAT(Settle(), Optional(Eq("--roots regex needs --root-regex ERE")));
}

TEST_F(CheckOptionsTest, RootsComeFromOnePlace) {
  EXPECT_EQ(Take("--root-regex", "^spine"), std::nullopt);
  EXPECT_EQ(Take("--ranks", "ranks.csv"), std::nullopt);
  EXPECT_THAT(Settle(), Optional(Eq("--root-regex and --ranks contradict each other: roots come "
                                    "from one of them")));
}

TEST_F(CheckOptionsTest, RootsMaySayWhatTheOtherOptionSays) {
  EXPECT_EQ(Take("--root-regex", "^spine"), std::nullopt);
  EXPECT_EQ(Take("--roots", "regex"), std::nullopt);
  EXPECT_EQ(Settle(), std::nullopt);
  EXPECT_EQ(arguments.options.roots, RootsFrom::Regex);

  arguments = {};
  EXPECT_EQ(Take("--ranks", "ranks.csv"), std::nullopt);
  EXPECT_EQ(Take("--roots", "smdb"), std::nullopt);
  EXPECT_EQ(Settle(), std::nullopt);
  EXPECT_EQ(arguments.options.roots, RootsFrom::Smdb);
}

TEST_F(CheckOptionsTest, RootsMayNotSayOtherwise) {
  for (const std::string value : {"auto", "search", "inferred", "smdb"}) {
    arguments = {};
    EXPECT_EQ(Take("--root-regex", "^spine"), std::nullopt);
    EXPECT_EQ(Take("--roots", value), std::nullopt);
    EXPECT_EQ(Settle(), "--roots " + value +
                            " and --root-regex contradict each other: allowed is --roots regex");
  }
  for (const std::string value : {"auto", "search", "inferred", "regex"}) {
    arguments = {};
    EXPECT_EQ(Take("--ranks", "ranks.csv"), std::nullopt);
    EXPECT_EQ(Take("--roots", value), std::nullopt);
    EXPECT_EQ(Settle(),
              "--roots " + value + " and --ranks contradict each other: allowed is --roots smdb");
  }
}

TEST_F(CheckOptionsTest, RootsByThemselvesComeTheWayThatIsAskedFor) {
  const std::map<std::string, RootsFrom> ways{
      {"auto", RootsFrom::Auto}, {"search", RootsFrom::Search}, {"inferred", RootsFrom::Inferred}};
  for (const auto& [value, way] : ways) {
    arguments = {};
    EXPECT_EQ(Take("--roots", value), std::nullopt);
    ASSERT_EQ(Settle(), std::nullopt);
    EXPECT_EQ(arguments.options.roots, way) << value;
  }
}

TEST_F(CheckOptionsTest, InferredRootsNeedNoLeavesToAgree) {
  EXPECT_EQ(Take("--equal", "3"), std::nullopt);
  EXPECT_EQ(Take("--roots", "inferred"), std::nullopt);
  EXPECT_THAT(Settle(), Optional(Eq("--roots inferred and --equal 3 contradict each other: allowed "
                                    "is --roots auto or search")));
  arguments = {};
  EXPECT_EQ(Take("--roots", "inferred"), std::nullopt);
  EXPECT_EQ(Take("--retries", "10"), std::nullopt);
  EXPECT_THAT(Settle(), Optional(Eq("--roots inferred and --retries 10 contradict each other: "
                                    "allowed is --roots auto or search")));
}

TEST_F(CheckOptionsTest, WhatTheSearchLooksAtMayStandBesideOtherRoots) {
  for (const char* value : {"auto", "search", "smdb"}) {
    arguments = {};
    EXPECT_EQ(Take("--roots", value), std::nullopt);
    EXPECT_EQ(Take("--equal", "3"), std::nullopt);
    EXPECT_EQ(Take("--retries", "3"), std::nullopt);
    EXPECT_EQ(Settle(), std::nullopt) << value;
  }
  arguments = {};
  EXPECT_EQ(Take("--root-regex", "^spine"), std::nullopt);
  EXPECT_EQ(Take("--equal", "3"), std::nullopt);
  EXPECT_EQ(Settle(), std::nullopt);
}

TEST_F(CheckOptionsTest, MisfitsAreCountedForOutputsThatTellThem) {
  ASSERT_EQ(Settle(), std::nullopt);
  EXPECT_FALSE(arguments.options.wantMisfits);
  for (const char* option : {"--json", "--html", "--prometheus"}) {
    arguments = {};
    EXPECT_EQ(Take(option, "file"), std::nullopt);
    ASSERT_EQ(Settle(), std::nullopt);
    EXPECT_TRUE(arguments.options.wantMisfits) << option;
  }
}

TEST_F(CheckOptionsTest, ColorNamesItsThreeWays) {
  EXPECT_EQ(arguments.color, ColorWhen::Auto);
  EXPECT_EQ(Take("--color", "always"), std::nullopt);
  EXPECT_EQ(arguments.color, ColorWhen::Always);
  EXPECT_EQ(Take("--color", "never"), std::nullopt);
  EXPECT_EQ(arguments.color, ColorWhen::Never);
  EXPECT_EQ(Take("--color", "auto"), std::nullopt);
  EXPECT_EQ(arguments.color, ColorWhen::Auto);
  EXPECT_THAT(Take("--color", "red"), Optional(Eq("expected auto, always or never")));
}

TEST_F(CheckOptionsTest, EveryOutputNeedsAFileOfItsOwn) {
  const std::vector<std::string> outputs = OutputNames();
  for (std::size_t second = 1; second < outputs.size(); ++second) {
    for (std::size_t first = 0; first < second; ++first) {
      arguments = {};
      EXPECT_EQ(Take(outputs[first], "out"), std::nullopt);
      EXPECT_EQ(Take(outputs[second], "./out"), std::nullopt);
      EXPECT_EQ(Settle(), outputs[first] + " out and " + outputs[second] +
                              " ./out contradict each other: each needs a file of its own");
    }
  }
}

TEST_F(CheckOptionsTest, NoOutputMayOverwriteAnInput) {
  for (const std::string& output : OutputNames()) {
    for (const char* input : {"--ranks", "--flids", "--node-name-map"}) {
      arguments = {};
      EXPECT_EQ(Take(input, "in"), std::nullopt);
      EXPECT_EQ(Take(output, "./in"), std::nullopt);
      EXPECT_EQ(Settle(), output + " ./in would overwrite the input in");
    }
  }
}

TEST_F(CheckOptionsTest, NoOutputMayOverwriteTheFabric) {
  arguments.operands = {"./fabric.topo"};
  EXPECT_EQ(Take("--csv", "fabric.topo"), std::nullopt);
  EXPECT_THAT(Settle(), Optional(Eq("--csv fabric.topo would overwrite the input ./fabric.topo")));
}

TEST_F(CheckOptionsTest, StandardInputIsReadOnceButMayGoToStandardOutput) {
  arguments.operands = {"-"};
  EXPECT_EQ(Take("--csv", "-"), std::nullopt);
  EXPECT_EQ(Settle(), std::nullopt);
  for (const char* option : {"--ranks", "--flids", "--node-name-map"}) {
    arguments = {};
    arguments.operands = {"-"};
    EXPECT_EQ(Take(option, "-"), std::nullopt);
    EXPECT_THAT(Settle(), Optional(Eq("standard input (-) can be read only once")));
  }
}

TEST_F(CheckOptionsTest, SeveralFabricsReadStandardInputOnce) {
  arguments.operands = {"-", "a.topo", "-"};
  EXPECT_THAT(Settle(), Optional(Eq("standard input (-) can be read only once")));
}

TEST_F(CheckOptionsTest, NoOutputMayOverwriteOneOfSeveralFabrics) {
  arguments.operands = {"a.topo", "b.topo"};
  EXPECT_EQ(Take("--json", "./b.topo"), std::nullopt);
  EXPECT_THAT(Settle(), Optional(Eq("--json ./b.topo would overwrite the input b.topo")));
}

TEST_F(CheckOptionsTest, FilesThatTellOfOneFabricAreRefusedForSeveral) {
  for (const std::string option : {"--dump", "--csv", "--html", "--svg", "--prometheus"}) {
    arguments = {};
    arguments.operands = {"a.topo", "b.topo"};
    EXPECT_EQ(Take(option, "out"), std::nullopt);
    EXPECT_EQ(Settle(), option + " out takes one FABRIC: of several there is --json");
    arguments.operands.pop_back();
    EXPECT_EQ(Settle(), std::nullopt);
  }
}

TEST_F(CheckOptionsTest, WhatGivesItsBytesOnceIsNotReadForSeveralFabrics) {
  for (const char* option : {"--ranks", "--flids", "--node-name-map"}) {
    arguments = {};
    arguments.operands = {"a.topo", "b.topo"};
    EXPECT_EQ(Take(option, "-"), std::nullopt);
    EXPECT_EQ(Settle(), std::string(option) +
                            " - can be read only once, and there are several fabrics: give a file");
    arguments.operands.pop_back();
    EXPECT_EQ(Settle(), std::nullopt);
  }
}

TEST_F(CheckOptionsTest, SeveralFabricsMayHaveAResultAndALog) {
  arguments.operands = {"a.topo", "b.topo"};
  EXPECT_EQ(Take("--json", "results"), std::nullopt);
  EXPECT_EQ(Take("--log", "log"), std::nullopt);
  EXPECT_EQ(Settle(), std::nullopt);
}

TEST_F(CheckOptionsTest, ADeviceMayTakeSeveralOutputsAndAnInput) {
  arguments.operands = {"/dev/null"};
  EXPECT_EQ(Take("--csv", "/dev/null"), std::nullopt);
  EXPECT_EQ(Take("--json", "/dev/null"), std::nullopt);
  EXPECT_EQ(Settle(), std::nullopt);
}

// The outputs will fail, but for what is really the matter with them.
TEST_F(CheckOptionsTest, FilesThatCannotBeLookedAtAreNotTakenForOne) {
  const std::string longName(300, 'x');
  arguments.operands = {longName + ".topo"};
  EXPECT_EQ(Take("--csv", longName + ".csv"), std::nullopt);
  EXPECT_EQ(Take("--json", longName + ".json"), std::nullopt);
  EXPECT_EQ(Settle(), std::nullopt);
}

TEST_F(CheckOptionsTest, DumpFileAsksForTheDump) {
  EXPECT_EQ(Take("--dump", "dump.txt"), std::nullopt);
  ASSERT_EQ(Settle(), std::nullopt);
  EXPECT_TRUE(arguments.options.wantDump);
}

TEST_F(CheckOptionsTest, RepairsAreLookedForForOutputsThatTellThem) {
  for (const std::string& output : OutputNames()) {
    arguments = {};
    EXPECT_EQ(Take(output, "file"), std::nullopt);
    ASSERT_EQ(Settle(), std::nullopt);
    EXPECT_EQ(arguments.options.wantRepairs,
              output == "--json" || output == "--html" || output == "--work-order")
        << output;
  }
}

// Whatever else a check was asked for.
TEST_F(CheckOptionsTest, EachOutputIsMadeOfWhatItAsksFor) {
  for (const Output<CheckRun>& output : CheckOutputs()) {
    arguments = {};
    arguments.operands = {FABSCOPE_TEST_DATA "/tree-32h-missing.topo"};
    EXPECT_EQ(Take(output.text.name, "file"), std::nullopt);
    ASSERT_EQ(Settle(), std::nullopt);
    CheckRun run;
    ::testing::internal::CaptureStderr();
    run.messages.Tell("a message");
    EXPECT_EQ(::testing::internal::GetCapturedStderr(), "fabscope: a message\n");
    run.result = RunCheck(arguments.options);
    ASSERT_EQ(run.result.status, CheckStatus::Done);
    std::ostringstream text;
    output.write(run, text);
    EXPECT_NE(text.str(), "") << output.text.name;
  }
}

TEST_F(CheckOptionsTest, EachOutputIsTold) {
  std::ifstream file(FABSCOPE_TEST_DATA "/../../docs/outputs.md");
  const std::string page(std::istreambuf_iterator<char>(file), {});
  for (const std::string& output : OutputNames()) {
    EXPECT_THAT(page, ::testing::HasSubstr("| `" + output + " FILE` | ")) << output;
  }
}

}  // namespace
}  // namespace fabscope::internal
