#include <algorithm>
#include <fstream>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "check/check.h"
#include "fat_tree/neighborhood.h"
#include "support/folder_test.h"
#include "support/test_peer.h"

namespace fabscope::internal {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;

// Checks of files that the test writes, from roots that it names.
class RunCheckTest : public FolderTest {
 protected:
  RunCheckTest() {
    options.roots = RootsFrom::Regex;
    options.rootRegex = std::make_shared<regExp>("^root");
  }

  std::string File(const std::string& name, const std::string& text) const {
    std::string path = folder / name;
    std::ofstream(path, std::ios::binary) << text;
    return path;
  }
  // A root over two leaves that are cabled to each other.
  std::string Document(const std::string& firstLeaf, const std::string& secondLeaf) const {
    return File("fabric.json", R"({"format":"fabscope-fabric","version":1,"nodes":[
{"guid":"0x1","type":"switch","name":"root","numPorts":2},
{"guid":"0x2","type":"switch",)" + firstLeaf +
                                   R"(,"numPorts":2},
{"guid":"0x3","type":"switch",)" + secondLeaf +
                                   R"(,"numPorts":2},
{"guid":"0x4","type":"ca","name":"leaf","numPorts":1}],"links":[
{"a":"0x1","aPort":1,"b":"0x2","bPort":1},
{"a":"0x1","aPort":2,"b":"0x3","bPort":1},
{"a":"0x2","aPort":2,"b":"0x3","bPort":2}]}
)");
  }
  std::string Document() const { return Document(R"("name":"one")", R"("name":"two")"); }
  static std::string Dump(const std::string& name) {
    return std::string(FABSCOPE_TEST_DATA "/") + name;
  }
  CheckResult Check(const std::string& fabric) {
    options.fabric = fabric;
    return RunCheck(options);
  }
  static std::vector<std::string> RecordsOf(const CheckResult& result) {
    std::vector<std::string> records;
    for (const Finding& record : result.findings.Records()) {
      const std::string text = DescriptionOf(record, result.showGuid);
      records.push_back(text.substr(text.find(':') + 2));  // behind the group
    }
    return records;
  }

  CheckOptions options;
};

TEST_F(RunCheckTest, AnInputOfAnyKindThatCannotBeReadLeavesItsReasonOnly) {
  const std::string bad = File("bad", "x\n");
  const auto expectReason = [&](const std::string& fabric, const std::string& reason) {
    const CheckResult result = Check(fabric);
    EXPECT_EQ(result.status, CheckStatus::BadInput);
    ASSERT_TRUE(result.inputError);
    EXPECT_EQ(result.inputError->Text(), bad + reason);
    EXPECT_THAT(result.warnings, IsEmpty());
    EXPECT_EQ(result.fabric, nullptr);
    EXPECT_EQ(result.topology, nullptr);
  };
  expectReason(bad,
               ":1:1: no node found, expected a fabric document (JSON) or a topology dump as "
               "`ibnetdiscover` prints it");
  options.ranks = bad;
  expectReason(Document(), ":1:1: not the header line, expected the columns \"guid,rank\"");
  options.ranks.clear();
  options.flids = bad;
  expectReason(Document(), ":1:1: not the header line, expected the columns \"guid,flid\"");
  options.flids.clear();
  options.nodeNameMap = bad;
  expectReason(Document(), ":1:1: not a GUID, expected a line of the form 0xGUID \"name\"");
}

TEST_F(RunCheckTest, EveryFileHasItsOwnTenWarningsOfAKind) {
  std::string ranks = "guid,rank\n0x1,0\n";
  std::string flids = "guid,flid\n";
  for (int i = 0; i < 11; ++i) ranks += "0xa" + std::to_string(i) + ",1\n";
  for (int i = 0; i < 10; ++i) flids += "0xb" + std::to_string(i) + ",1\n";
  options.ranks = File("ranks", ranks);
  options.flids = File("flids", flids);
  options.roots = RootsFrom::Smdb;
  const CheckResult result = Check(Document());
  ASSERT_EQ(result.status, CheckStatus::Done) << result.message;
  ASSERT_THAT(result.warnings, SizeIs(21));
  EXPECT_EQ(result.warnings[0],
            options.ranks + ":3: warning: 0x00000000000000a0 is not a switch of the fabric");
  EXPECT_EQ(result.warnings[9],
            options.ranks + ":12: warning: 0x00000000000000a9 is not a switch of the fabric");
  EXPECT_EQ(result.warnings[10],
            options.ranks + ": warning: 1 more: GUID that is not a switch of the fabric");
  EXPECT_EQ(result.warnings[11],
            options.flids + ":2: warning: 0x00000000000000b0 is not a switch of the fabric");
  EXPECT_EQ(result.warnings[20],
            options.flids + ":11: warning: 0x00000000000000b9 is not a switch of the fabric");
}

TEST_F(RunCheckTest, WarningsOfTheFabricComeBeforeThoseOfItsSideFiles) {
  options.fabric = File("odd.topo", "$ ibnetdiscover\nSwitch 1 \"S-1\" # \"root\" lid 1 lmc 0\n");
  options.ranks = File("ranks", "guid,rank\n0x9,0\n");
  EXPECT_THAT(
      Check(options.fabric).warnings,
      ElementsAre(options.fabric + ":1: warning: line of no known kind, left out",
                  options.ranks + ":2: warning: 0x0000000000000009 is not a switch of the fabric"));
}

TEST_F(RunCheckTest, SwitchesOfSharedNamesAreCountedEach) {
  EXPECT_EQ(Check(Document(R"("name":"leaf")", R"("name":"leaf")")).switchesOfSharedName, 2U);
  EXPECT_EQ(Check(Document(R"("name":"root")", R"("name":"root")")).switchesOfSharedName, 3U);
}

TEST_F(RunCheckTest, ASwitchMayShareItsNameWithAnAdapter) {
  EXPECT_EQ(Check(Document(R"("name":"leaf")", R"("name":"two")")).switchesOfSharedName, 0U);
}

TEST_F(RunCheckTest, GivenNamesTellSwitchesApart) {
  options.nodeNameMap = File("map", "0x2 \"one\"\n");
  const CheckResult result = Check(Document(R"("name":"leaf")", R"("name":"leaf")"));
  EXPECT_EQ(result.switchesOfSharedName, 0U);
  EXPECT_THAT(RecordsOf(result),
              ElementsAre("invalid link between switches (one port: 2) and (leaf port: 2)"));
}

TEST_F(RunCheckTest, GuidsAreShownAsAskedFor) {
  const std::string fabric = Document(R"("name":"one","systemGuid":"0x99")", R"("name":"two")");
  EXPECT_THAT(RecordsOf(Check(fabric)),
              ElementsAre("invalid link between switches (one port: 2) and (two port: 2)"));
  options.showGuid = 1;
  EXPECT_THAT(RecordsOf(Check(fabric)),
              ElementsAre("invalid link between switches (0x0000000000000099 -- one port: 2) and "
                          "(0x0000000000000003 -- two port: 2)"));
  options.showGuid = 2;
  EXPECT_THAT(RecordsOf(Check(fabric)),
              ElementsAre("invalid link between switches (0x0000000000000002 -- one port: 2) and "
                          "(0x0000000000000003 -- two port: 2)"));
  options.showGuid = 0;
  EXPECT_THAT(RecordsOf(Check(fabric)),
              ElementsAre("invalid link between switches (one port: 2) and (two port: 2)"));
}

TEST_F(RunCheckTest, TheDumpIsMadeWhenAskedFor) {
  EXPECT_EQ(Check(Document()).dump, "");
  options.wantDump = true;
  const CheckResult result = Check(Document());
  const std::string id = std::to_string(result.topology->GetNeighborhoods()[0][0]->GetId());
  EXPECT_EQ(result.dump,
            "\n\n\nrank: 0 (Roots)size: 1\n\troot\n\nrank: 1 (Leaves)size: 2\n\tone\n\ttwo\n"
            "\n\n\non ranks (0, 1) -- neighborhoods: 1\n\tneighborhood: " +
                id +
                "\n\t\tspines: 1 switches\n\t\t\troot\n"
                "\t\tlines: 2 switches\n\t\t\tone\n\t\t\ttwo\n\n");
}

TEST_F(RunCheckTest, FindingsAreKept) {
  const CheckResult result = Check(Document());
  ASSERT_THAT(result.findings, SizeIs(1));
  const InvalidLink found = std::get<InvalidLink>(result.findings[0]);
  EXPECT_EQ(found.link.node1->name, "one");
  EXPECT_EQ(found.link.node2->name, "two");
  EXPECT_FALSE(TestPeer::HasFindingSink(*result.topology))
      << "it leads into a result that has moved";
}

TEST_F(RunCheckTest, OfMoreRecordsThanAreListedTheRestIsCounted) {
  options.mostRecords = 0;
  const CheckResult result = Check(Document());
  EXPECT_THAT(result.findings, IsEmpty());
  EXPECT_EQ(result.findings.RecordsCount(), 1U);
  EXPECT_EQ(result.findings.RecordsNotListed(), 1U);
  EXPECT_TRUE(result.HasFindings());
}

TEST_F(RunCheckTest, AFailureLeavesNoDump) {
  options.wantDump = true;
  options.rootRegex = std::make_shared<regExp>("^nothing");
  EXPECT_EQ(Check(Document()).dump, "");
  options.rootRegex = std::make_shared<regExp>("^");
  const CheckResult notValidated = Check(Document());
  EXPECT_EQ(notValidated.status, CheckStatus::NotValidated);
  EXPECT_EQ(notValidated.dump, "");
}

// The cable between the roots is found on the first pair of ranks; the second has more switches
// than a set of up-hops can hold.
TEST_F(RunCheckTest, RecordsUntilAFailureAreKept) {
  constexpr int roots = 9;
  constexpr int middles = 2049;
  const auto guid = [](int number) { return "\"0x" + std::to_string(number) + "\""; };
  const auto node = [&](int number, const std::string& name) {
    return R"({"guid":)" + guid(number) + R"(,"type":"switch","name":")" + name +
           R"(","numPorts":255})";
  };
  const auto link = [&](int a, int aPort, int b, int bPort) {
    return R"({"a":)" + guid(a) + R"(,"aPort":)" + std::to_string(aPort) + R"(,"b":)" + guid(b) +
           R"(,"bPort":)" + std::to_string(bPort) + "}";
  };
  const int leaf = roots + middles + 1;
  std::string nodes = node(leaf, "leaf");
  std::string links = link(1, 255, 2, 255) + "," + link(roots + 1, 2, leaf, 1);
  for (int root = 1; root <= roots; ++root) {
    nodes += "," + node(root, "root" + std::to_string(root));
  }
  for (int i = 0; i < middles; ++i) {
    nodes += "," + node(roots + 1 + i, "middle");
    links += "," + link(1 + i % roots, 1 + i / roots, roots + 1 + i, 1);
  }
  const CheckResult result =
      Check(File("fabric.json", R"({"format":"fabscope-fabric","version":1,"nodes":[)" + nodes +
                                    R"(],"links":[)" + links + "]}"));
  EXPECT_EQ(result.status, CheckStatus::NotValidated);
  EXPECT_EQ(result.message,
            "Cannot validate Fat-Tree topology. Bit-set is too short to story 2049bits");
  const auto& groups = result.topology->GetNeighborhoods()[0];
  ASSERT_THAT(groups, SizeIs(roots));
  ASSERT_EQ(result.findings.RecordsCount(), 1U);
  EXPECT_EQ(DescriptionOf(result.findings[0], 0),
            "Invalid link between connectivity group " + std::to_string(groups[0]->GetId()) +
                " (root1 port: 255) and group " + std::to_string(groups[1]->GetId()) +
                " (root2 port: 255)");
  EXPECT_TRUE(result.HasFindings());
}

TEST_F(RunCheckTest, AgreementIsSoughtAmongAsManyLeavesAsMayBeTried) {
  options.roots = RootsFrom::Search;
  options.retries = 1;
  options.equalClassifications = 2;
  EXPECT_EQ(Check(Dump("tree-32h.topo")).status, CheckStatus::Done);
  options.equalClassifications = 3;
  const CheckResult tooFew = Check(Dump("tree-32h.topo"));
  EXPECT_EQ(tooFew.status, CheckStatus::NotBuilt);
  EXPECT_EQ(tooFew.message,
            "Cannot build Fat-Tree topology. Failed to find 3 equal Classifications out of 1 "
            "retries");
  options.retries = 2;
  EXPECT_EQ(Check(Dump("tree-32h.topo")).status, CheckStatus::Done);
}

TEST_F(RunCheckTest, TheWayToTheRootsIsKeptWhateverBecomesOfTheCheck) {
  const std::string bad = File("bad", "x\n");
  for (const RootsFrom method : {RootsFrom::Search, RootsFrom::Inferred, RootsFrom::Smdb}) {
    options.roots = method;
    EXPECT_EQ(Check(Document()).roots.method, method);
    EXPECT_EQ(Check(bad).roots.method, method);
  }
  options.roots = RootsFrom::Auto;
  EXPECT_EQ(Check(bad).roots.method, RootsFrom::Search);
}

TEST_F(RunCheckTest, ATreeThatLeavesSwitchesOutIsDoubted) {
  EXPECT_EQ(Check(Document()).roots.doubt, "");
  options.roots = RootsFrom::Search;
  const std::string dump = Dump("tree-32h.topo");
  EXPECT_EQ(Check(dump).roots.doubt, "");
  options.roots = RootsFrom::Regex;
  options.rootRegex = std::make_shared<regExp>("^two$");
  const std::string fabric = File("apart.json", R"({"format":"fabscope-fabric","version":1,"nodes":[
{"guid":"0x1","type":"switch","name":"one","numPorts":1},
{"guid":"0x2","type":"switch","name":"two","numPorts":1},
{"guid":"0x3","type":"switch","name":"three","numPorts":1}],"links":[
{"a":"0x1","aPort":1,"b":"0x2","bPort":1}]})");
  EXPECT_EQ(Check(fabric).roots.doubt,
            "1 of 3 switches have no rank and were not checked, the first is three");
}

TEST_F(RunCheckTest, GroupsAreMergedAtThePercentageAskedFor) {
  const std::string fabric = Dump("tree-32h-cross.topo");
  EXPECT_EQ(Check(fabric).findings.RecordsCount(), 1U);
  options.mergePercent = 50;
  EXPECT_EQ(Check(fabric).findings.RecordsCount(), 7U);
  options.mergePercent = 100;
  EXPECT_EQ(Check(fabric).findings.RecordsCount(), 0U);
}

TEST_F(RunCheckTest, AdaptersOfASpecialNameAreSpecialInADump) {
  const std::string fabric = Dump("lines/aggregation-nodes.topo");
  const auto countSpecial = [&] {
    const CheckResult result = Check(fabric);
    const auto& nodes = result.fabric->GetNodes();
    return std::count_if(nodes.begin(), nodes.end(),
                         [](const IBNode& node) { return node.special; });
  };
  options.specialNodes = std::make_shared<regExp>("no adapter is named so");
  EXPECT_EQ(countSpecial(), 0);
  options.specialNodes = std::make_shared<regExp>("Aggregation Node");
  EXPECT_EQ(countSpecial(), 1);
}

}  // namespace
}  // namespace fabscope::internal
