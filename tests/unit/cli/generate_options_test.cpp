#include "cli/generate_options.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace fabscope::internal {
namespace {

using ::testing::ElementsAre;

constexpr const char* faultKinds =
    "expected KIND=COUNT, with a KIND of missing-link, swapped-cables, moved-cable, "
    "same-rank-link, root-link, missing-host, slow-link, dead-switch, stray-host, "
    "asymmetric-aport, shared-flid";

class GenerateOptionsTest : public ::testing::Test {
 protected:
  std::optional<std::string> Take(const std::string& name, const std::string& value) {
    for (const BoundOption& option : BindOptions(arguments)) {
      if (name == LongName(option.text)) return option.take(value);
    }
    return "no such option";
  }
  // Gives options that are fine by themselves and answers what is wrong with all together.
  std::optional<std::string> Settle(
      const std::vector<std::pair<const char*, const char*>>& options) {
    arguments = {};
    for (const auto& [name, value] : options) EXPECT_EQ(Take(name, value), std::nullopt) << name;
    return SettleArguments(arguments);
  }

  GenerateArguments arguments;
};

TEST_F(GenerateOptionsTest, DefaultsAreThoseOfTheContract) {
  ASSERT_EQ(Settle({{"--levels", "3"}, {"--radix", "8"}}), std::nullopt);
  EXPECT_THAT(arguments.shape.children, ElementsAre(4, 4, 8));
  EXPECT_THAT(arguments.shape.parents, ElementsAre(1, 4, 4));
  EXPECT_EQ(arguments.shape.parallel, 1U);
  EXPECT_EQ(arguments.shape.planes, 1U);
  EXPECT_FALSE(arguments.flids);
  EXPECT_EQ(arguments.speed, 0x400U);
  EXPECT_EQ(arguments.seed, 1U);
  EXPECT_TRUE(arguments.faults.empty());
  EXPECT_EQ(arguments.truthFile, "");
  EXPECT_EQ(arguments.outputFile, "-");
  EXPECT_EQ(arguments.format, FabricFormat::Document);
}

TEST_F(GenerateOptionsTest, TheTreeComesFromXgftOrFromLevelsAndRadix) {
  ASSERT_EQ(Settle({{"--xgft", "2; 4,8; 1,3"}, {"--parallel", "2"}, {"--planes", "4"}}),
            std::nullopt);
  EXPECT_THAT(arguments.shape.children, ElementsAre(4, 8));
  EXPECT_THAT(arguments.shape.parents, ElementsAre(1, 3));
  EXPECT_EQ(arguments.shape.parallel, 2U);
  EXPECT_EQ(arguments.shape.planes, 4U);
  ASSERT_EQ(Settle({{"--levels", "3"},
                    {"--radix", "16"},
                    {"--pods", "5"},
                    {"--hosts-per-leaf", "6"},
                    {"--parallel", "2"},
                    {"--planes", "2"}}),
            std::nullopt);
  EXPECT_THAT(arguments.shape.children, ElementsAre(6, 4, 5));
  EXPECT_THAT(arguments.shape.parents, ElementsAre(1, 4, 4));
  EXPECT_EQ(arguments.shape.parallel, 2U);
  EXPECT_EQ(arguments.shape.planes, 2U);
}

TEST_F(GenerateOptionsTest, ATreeIsNeededAndOnlyOne) {
  constexpr const char* none = "no tree is given, expected --xgft or --levels and --radix";
  EXPECT_EQ(Settle({}), none);
  EXPECT_EQ(Settle({{"--levels", "3"}}), none);
  EXPECT_EQ(Settle({{"--radix", "8"}, {"--pods", "2"}}), none);
  for (const char* option : {"--levels", "--radix", "--pods", "--hosts-per-leaf"}) {
    EXPECT_EQ(Settle({{"--xgft", "2;4,8;1,4"}, {option, "4"}}),
              std::string("--xgft and ") + option +
                  " contradict each other: the tree comes from one of them");
  }
  EXPECT_EQ(Settle({{"--levels", "1"}, {"--radix", "8"}, {"--pods", "4"}}),
            "--pods needs --levels 2 or more");
}

TEST_F(GenerateOptionsTest, TreesThatCannotBeAreRefusedWithTheReason) {
  EXPECT_EQ(Settle({{"--levels", "2"}, {"--radix", "7"}}), "half of 7 ports is no whole number");
  EXPECT_EQ(Settle({{"--levels", "4"}, {"--radix", "64"}}),
            "the tree would have more than 1048576 nodes");
  EXPECT_EQ(Settle({{"--xgft", "2;200,2;1,56"}}),
            "a switch of level 1 would need 256 ports, but no switch has more than 255");
}

TEST_F(GenerateOptionsTest, ValuesAreTakenAtTheLimitsOfTheirRangeAndRefusedBeyond) {
  const std::vector<std::tuple<const char*, const char*, const char*, const char*>> ranges{
      {"--levels", "1", "8", "expected a whole number from 1 to 8"},
      {"--radix", "2", "254", "expected a whole number from 2 to 254"},
      {"--pods", "1", "254", "expected a whole number from 1 to 254"},
      {"--hosts-per-leaf", "1", "254", "expected a whole number from 1 to 254"},
      {"--parallel", "1", "255", "expected a whole number from 1 to 255"},
      {"--planes", "1", "16", "expected a whole number from 1 to 16"}};
  for (const auto& [name, least, greatest, problem] : ranges) {
    EXPECT_EQ(Take(name, least), std::nullopt) << name;
    EXPECT_EQ(Take(name, greatest), std::nullopt) << name;
    EXPECT_EQ(Take(name, std::to_string(std::stoi(least) - 1)), problem);
    EXPECT_EQ(Take(name, std::to_string(std::stoi(greatest) + 1)), problem);
  }
}

TEST_F(GenerateOptionsTest, AnySeedOf64BitsIsTaken) {
  EXPECT_EQ(Take("--seed", "0"), std::nullopt);
  EXPECT_EQ(arguments.seed, 0U);
  EXPECT_EQ(Take("--seed", "18446744073709551615"), std::nullopt);
  EXPECT_EQ(arguments.seed, 18446744073709551615U);
  for (const char* value : {"18446744073709551616", "-1", "", "7x", "0x7"}) {
    EXPECT_EQ(Take("--seed", value), "expected a whole number from 0 to 18446744073709551615")
        << value;
  }
}

TEST_F(GenerateOptionsTest, SpeedsAndFormatsGoByTheirNames) {
  EXPECT_EQ(Take("--speed", "XDR"), std::nullopt);
  EXPECT_EQ(arguments.speed, 0x1000000U);
  for (const char* value : {"", "hdr", "HDRX", "1024"}) {
    EXPECT_EQ(Take("--speed", value),
              "expected SDR, DDR, QDR, FDR10, FDR, EDR20, EDR, HDR, NDR or XDR");
  }
  EXPECT_EQ(Take("--format", "yaml"), "expected document, ibnetdiscover, ibsim, dot or graphml");
}

TEST_F(GenerateOptionsTest, TheFormatIsTheOneNamedOrThatOfTheEnding) {
  const auto formatOf = [&](std::vector<std::pair<const char*, const char*>> options) {
    options.emplace_back("--xgft", "2;4,8;1,4");
    EXPECT_EQ(Settle(options), std::nullopt);
    return arguments.format;
  };
  EXPECT_EQ(formatOf({{"--output", "fabric.topo"}}), FabricFormat::TopologyDump);
  EXPECT_EQ(formatOf({{"--output", "fabric.net"}}), FabricFormat::NetFile);
  EXPECT_EQ(formatOf({{"--output", "fabric.json"}}), FabricFormat::Document);
  EXPECT_EQ(formatOf({{"--output", "fabric"}}), FabricFormat::Document);
  EXPECT_EQ(formatOf({{"--output", "fabric.json"}, {"--format", "ibsim"}}), FabricFormat::NetFile);
  EXPECT_EQ(formatOf({{"--format", "ibnetdiscover"}}), FabricFormat::TopologyDump);
}

TEST_F(GenerateOptionsTest, FaultsAreTakenInTheirOrder) {
  EXPECT_EQ(Take("--fault", "root-link=3"), std::nullopt);
  EXPECT_EQ(Take("--fault", "missing-link=1"), std::nullopt);
  EXPECT_EQ(Take("--fault", "root-link=1000000"), std::nullopt);
  ASSERT_EQ(arguments.faults.size(), 3U);
  EXPECT_EQ(arguments.faults[0].kind, FaultKind::RootLink);
  EXPECT_EQ(arguments.faults[0].count, 3);
  EXPECT_EQ(arguments.faults[1].kind, FaultKind::MissingLink);
  EXPECT_EQ(arguments.faults[2].count, 1000000);
}

TEST_F(GenerateOptionsTest, FaultsNeedAKnownKindAndACount) {
  for (const char* value : {"", "=1", "earthquake=1", "missing-links=1", "Missing-link=1"}) {
    EXPECT_EQ(Take("--fault", value), faultKinds) << value;
  }
  for (const char* value : {"missing-link", "missing-link=", "missing-link=0", "missing-link=1=1",
                            "missing-link=1000001", "missing-link= 1"}) {
    EXPECT_EQ(Take("--fault", value),
              "expected a whole number from 1 to 1000000 behind missing-link=")
        << value;
  }
  EXPECT_TRUE(arguments.faults.empty());
}

TEST_F(GenerateOptionsTest, FaultsNeedTheFabricThatTheyAreFaultsOf) {
  const std::pair<const char*, const char*> tree{"--xgft", "3;1,2,2;1,2,2"};
  EXPECT_EQ(Settle({tree, {"--fault", "asymmetric-aport=1"}}),
            "--fault asymmetric-aport needs --planes 2 or more: a fabric of one plane has no "
            "aggregated ports");
  EXPECT_EQ(Settle({tree, {"--fault", "asymmetric-aport=1"}, {"--planes", "2"}}), std::nullopt);
  EXPECT_EQ(Settle({tree, {"--fault", "shared-flid=1"}}), "--fault shared-flid needs --flids");
  EXPECT_EQ(Settle({tree, {"--fault", "shared-flid=1"}, {"--flids", ""}}), std::nullopt);
}

TEST_F(GenerateOptionsTest, FabricAndTruthNeedAFileEach) {
  const std::pair<const char*, const char*> tree{"--xgft", "2;4,8;1,4"};
  EXPECT_EQ(Settle({tree, {"--truth", "-"}}),
            "--output - and --truth - contradict each other: each needs a file of its own");
  EXPECT_EQ(Settle({tree, {"--truth", "./one.json"}, {"--output", "one.json"}}),
            "--output one.json and --truth ./one.json contradict each other: each needs a file of "
            "its own");
  EXPECT_EQ(Settle({tree, {"--truth", "-"}, {"--output", "fabric.json"}}), std::nullopt);
  EXPECT_EQ(Take("--truth", ""), "expected the name of a file");
  EXPECT_EQ(Take("--output", ""), "expected the name of a file");
}

}  // namespace
}  // namespace fabscope::internal
