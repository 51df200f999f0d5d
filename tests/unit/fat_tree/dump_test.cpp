#include <string_view>

#include "platform/logging.h"
#include "support/stage_fixture.h"
#include "support/streams.h"

namespace fabscope::internal {
namespace {

class DumpTest : public StageTest {
 protected:
  DumpTest() {
    SetScreenSink([this](std::string_view text) {
      screen += text;
      channels.emplace_back("screen");
    });
    SetLogFileSink([this](std::string_view text) {
      logFile += text;
      channels.emplace_back("log file");
    });
  }
  ~DumpTest() override {
    SetScreenSink({});
    SetLogFileSink({});
  }

  // One root, and two pods of a mid and two leaves.
  void GroupTwoPods() {
    AddThreeLevelTree(fabric, 2, 2, 1, 1, 0);
    RankFrom({"root0"});
    ASSERT_EQ(Topology().CreateNeighborhoods(errors), 0);
    ASSERT_EQ(Topology().GetNeighborhoods().at(0).size(), 1U);
    ASSERT_EQ(Topology().GetNeighborhoods().at(1).size(), 2U);
  }
  FTNeighborhood& Group(std::size_t rank, std::size_t index) {
    return *Topology().GetNeighborhoods().at(rank).at(index);
  }
  // The text with each "<rank.index>" replaced by the id of that group.
  std::string WithIds(std::string text) {
    const auto& neighborhoods = Topology().GetNeighborhoods();
    for (std::size_t rank = 0; rank < neighborhoods.size(); ++rank) {
      for (std::size_t i = 0; i < neighborhoods[rank].size(); ++i) {
        const std::string mark = '<' + std::to_string(rank) + '.' + std::to_string(i) + '>';
        const std::size_t place = text.find(mark);
        if (place == std::string::npos) continue;
        text.replace(place, mark.size(), std::to_string(Group(rank, i).GetId()));
      }
    }
    return text;
  }

  std::string screen;
  std::string logFile;
  std::vector<std::string> channels;  // in the order in which they were written to
};

// --- The whole dump.

TEST_F(DumpTest, AValidatedThreeRankTree) {
  AddThreeLevelTree(fabric, 2, 2, 1, 3, 1);
  RankFrom({"root0", "root1", "root2"});
  ASSERT_EQ(Topology().Validate(errors, message), 0);
  TakeOutput();
  EXPECT_EQ(Topology().Dump(), 0);
  EXPECT_EQ(TakeOutput(), WithIds("\n\n"
                                  "\nrank: 0 (Roots)size: 3\n"
                                  "\troot0\n"
                                  "\troot1\n"
                                  "\troot2\n"
                                  "\nrank: 1 size: 2\n"
                                  "\tmid0.0\n"
                                  "\tmid1.0\n"
                                  "\nrank: 2 (Leaves)size: 4\n"
                                  "\tleaf0.0\n"
                                  "\tleaf0.1\n"
                                  "\tleaf1.0\n"
                                  "\tleaf1.1\n"
                                  "\n\n\n"
                                  "on ranks (0, 1) -- connectivity groups: 1\n"
                                  "\tconnectivity group: <0.0>\n"
                                  "\t\tspines: 3 switches\n"
                                  "\t\t\troot0\n"
                                  "\t\t\troot1\n"
                                  "\t\t\troot2\n"
                                  "\t\tlines: 2 switches\n"
                                  "\t\t\tmid0.0\n"
                                  "\t\t\tmid1.0\n"
                                  "\n"
                                  "on ranks (1, 2) -- neighborhoods: 2\n"
                                  "\tneighborhood: <1.0>\n"
                                  "\t\ttotal spine uplinks: 3\n"
                                  "\t\ttotal internal links: 2\n"
                                  "\t\tspines: 1 switches\n"
                                  "\t\t\tmid0.0\n"
                                  "\t\tlines: 2 switches\n"
                                  "\t\t\tleaf0.0\n"
                                  "\t\t\tleaf0.1\n"
                                  "\tneighborhood: <1.1>\n"
                                  "\t\ttotal spine uplinks: 3\n"
                                  "\t\ttotal internal links: 2\n"
                                  "\t\tspines: 1 switches\n"
                                  "\t\t\tmid1.0\n"
                                  "\t\tlines: 2 switches\n"
                                  "\t\t\tleaf1.0\n"
                                  "\t\t\tleaf1.1\n"
                                  "\n"));
  EXPECT_EQ(screen, "");
  EXPECT_EQ(logFile, "");
}

TEST_F(DumpTest, ATwoRankTreeHasRootsAndLeavesAndNoTotals) {
  fabric.Switch("root").Switch("leaf").Cable("root", "leaf");
  RankFrom({"root"});
  ASSERT_EQ(Topology().Validate(errors, message), 0);
  TakeOutput();
  EXPECT_EQ(Topology().Dump(), 0);
  EXPECT_EQ(TakeOutput(), WithIds("\n\n"
                                  "\nrank: 0 (Roots)size: 1\n"
                                  "\troot\n"
                                  "\nrank: 1 (Leaves)size: 1\n"
                                  "\tleaf\n"
                                  "\n\n\n"
                                  "on ranks (0, 1) -- neighborhoods: 1\n"
                                  "\tneighborhood: <0.0>\n"
                                  "\t\tspines: 1 switches\n"
                                  "\t\t\troot\n"
                                  "\t\tlines: 1 switches\n"
                                  "\t\t\tleaf\n"
                                  "\n"));
}

TEST_F(DumpTest, ASingleRankIsTheRootsOnly) {
  fabric.Switch("root");
  RankFrom({"root"});
  EXPECT_EQ(Topology().Dump(), 0);
  EXPECT_EQ(TakeOutput(), "\n\n\nrank: 0 (Roots)size: 1\n\troot\n\n\n\n");
}

TEST_F(DumpTest, WithoutRanksOnlyTheEmptyLinesAreWritten) {
  EXPECT_EQ(Topology().Dump(), 0);
  EXPECT_EQ(TakeOutput(), "\n\n\n\n\n");
}

TEST_F(DumpTest, WithoutRanksThereMayStillBeEntriesOfGroups) {
  TestPeer::Neighborhoods(Topology()).resize(2);
  EXPECT_EQ(Topology().Dump(), 0);
  EXPECT_EQ(TakeOutput(),
            "\n\n\n\n\n"
            "on ranks (0, 1) -- connectivity groups: 0\n"
            "\n"
            "on ranks (1, 2) -- neighborhoods: 0\n"
            "\n");
}

TEST_F(DumpTest, SwitchesAreShownByTheirNodeRecord) {
  NodeSpec root;
  root.name = "root";
  root.displayName = "chassis/A1";
  root.asic = "2";
  root.numPorts = 4;
  fabric.Node(root).Switch("leaf").Cable("root", "leaf");
  RankFrom({"root"});
  ASSERT_EQ(Topology().CreateNeighborhoods(errors), 0);
  Topology().Show_GUID = 2;
  EXPECT_EQ(Topology().Dump(), 0);
  EXPECT_EQ(TakeOutput(), WithIds("\n\n"
                                  "\nrank: 0 (Roots)size: 1\n"
                                  "\t0x0000000000000001 -- chassis/2\n"
                                  "\nrank: 1 (Leaves)size: 1\n"
                                  "\t0x0000000000000002 -- leaf\n"
                                  "\n\n\n"
                                  "on ranks (0, 1) -- neighborhoods: 1\n"
                                  "\tneighborhood: <0.0>\n"
                                  "\t\tspines: 1 switches\n"
                                  "\t\t\t0x0000000000000001 -- chassis/2\n"
                                  "\t\tlines: 1 switches\n"
                                  "\t\t\t0x0000000000000002 -- leaf\n"
                                  "\n"));
}

// --- Ranks.

TEST_F(DumpTest, AnEmptyRankHasItsLineOnly) {
  TestPeer::SetRanks(Topology(), std::vector<NodeSet>(3));
  EXPECT_EQ(Topology().DumpNodesToStream(), 0);
  EXPECT_EQ(TakeOutput(),
            "\nrank: 0 (Roots)size: 0\n"
            "\nrank: 1 size: 0\n"
            "\nrank: 2 (Leaves)size: 0\n");
}

TEST_F(DumpTest, ANullSwitchOnARankEndsTheDumpWithAMessage) {
  fabric.Switch("root").Switch("mid").Switch("leaf");
  fabric.Cable("root", "mid").Cable("mid", "leaf");
  RankFrom({"root"});
  ASSERT_EQ(Topology().CreateNeighborhoods(errors), 0);
  TestPeer::AddNullToRank(Topology(), 1);
  EXPECT_EQ(Topology().Dump(), 4);
  EXPECT_EQ(TakeOutput(),
            "\n\n"
            "\nrank: 0 (Roots)size: 1\n"
            "\troot\n"
            "\nrank: 1 size: 2\n");
  EXPECT_EQ(screen, "-E- One of IBNodes is NULL. Cannot dump it\n");
  EXPECT_EQ(logFile, "-E- One of IBNodes is NULL. Cannot dump it\n");
  EXPECT_EQ(channels, (std::vector<std::string>{"log file", "screen"}));
}

// --- Groups.

TEST_F(DumpTest, TotalsAreShownBelowRankZeroEvenBeforeTheChecksHaveRun) {
  GroupTwoPods();
  std::ostringstream stream;
  EXPECT_EQ(Group(1, 1).DumpToStream(stream), 0);
  EXPECT_EQ(stream.str(), WithIds("\tneighborhood: <1.1>\n"
                                  "\t\ttotal spine uplinks: 0\n"
                                  "\t\ttotal internal links: 0\n"
                                  "\t\tspines: 1 switches\n"
                                  "\t\t\tmid1.0\n"
                                  "\t\tlines: 2 switches\n"
                                  "\t\t\tleaf1.0\n"
                                  "\t\t\tleaf1.1\n"));
  EXPECT_EQ(TakeOutput(), "");
}

TEST_F(DumpTest, ConnectivityGroupsBelowRankZeroHaveTotalsToo) {
  TestPeer::Neighborhoods(Topology()).resize(3);
  FTNeighborhood group(&Topology(), 12, 1);
  TestPeer::TotalSpineUplinks(group) = 10;
  TestPeer::TotalInternalLinks(group) = 12;
  EXPECT_EQ(group.DumpToStream(out), 0);
  EXPECT_EQ(TakeOutput(),
            "\tconnectivity group: 12\n"
            "\t\ttotal spine uplinks: 10\n"
            "\t\ttotal internal links: 12\n"
            "\t\tspines: 0 switches\n"
            "\t\tlines: 0 switches\n");
}

TEST_F(DumpTest, GroupsOnRankZeroHaveNoTotals) {
  TestPeer::Neighborhoods(Topology()).resize(2);
  FTNeighborhood group(&Topology(), 12, 0);
  TestPeer::TotalSpineUplinks(group) = 10;
  TestPeer::TotalInternalLinks(group) = 12;
  EXPECT_EQ(group.DumpToStream(out), 0);
  EXPECT_EQ(TakeOutput(),
            "\tconnectivity group: 12\n"
            "\t\tspines: 0 switches\n"
            "\t\tlines: 0 switches\n");
}

TEST_F(DumpTest, ASetIsShownUnderItsCaptionInModelOrder) {
  fabric.Switch("z").Switch("a").Switch("m");
  const FTNeighborhood group(&Topology(), 1, 0);
  EXPECT_EQ(group.DumpNodesToStream(out, Nodes({"a", "m", "z"}), "strays"), 0);
  EXPECT_EQ(TakeOutput(),
            "\t\tstrays: 3 switches\n"
            "\t\t\tz\n"
            "\t\t\ta\n"
            "\t\t\tm\n");
}

TEST_F(DumpTest, ANullGroupEndsTheDumpWithAMessage) {
  GroupTwoPods();
  FTNeighborhood*& slot = TestPeer::Neighborhoods(Topology())[1][1];
  delete slot;
  slot = nullptr;
  EXPECT_EQ(Topology().DumpNeighborhoodsToStream(), 4);
  EXPECT_EQ(TakeOutput(), WithIds("\n\n\n"
                                  "on ranks (0, 1) -- connectivity groups: 1\n"
                                  "\tconnectivity group: <0.0>\n"
                                  "\t\tspines: 1 switches\n"
                                  "\t\t\troot0\n"
                                  "\t\tlines: 2 switches\n"
                                  "\t\t\tmid0.0\n"
                                  "\t\t\tmid1.0\n"
                                  "\n"
                                  "on ranks (1, 2) -- neighborhoods: 2\n"
                                  "\tneighborhood: <1.0>\n"
                                  "\t\ttotal spine uplinks: 0\n"
                                  "\t\ttotal internal links: 0\n"
                                  "\t\tspines: 1 switches\n"
                                  "\t\t\tmid0.0\n"
                                  "\t\tlines: 2 switches\n"
                                  "\t\t\tleaf0.0\n"
                                  "\t\t\tleaf0.1\n"));
  EXPECT_EQ(screen, "-E- One of FTNeighborhoods is NULL. Cannot dump it\n");
  EXPECT_EQ(logFile, "-E- One of FTNeighborhoods is NULL. Cannot dump it\n");
  EXPECT_EQ(channels, (std::vector<std::string>{"log file", "screen"}));
}

TEST_F(DumpTest, ANullSpineEndsTheDumpWithoutAMessage) {
  GroupTwoPods();
  TestPeer::Spines(Group(0, 0)).insert(nullptr);
  EXPECT_EQ(Topology().Dump(), 4);
  EXPECT_EQ(TakeOutput(), WithIds("\n\n"
                                  "\nrank: 0 (Roots)size: 1\n"
                                  "\troot0\n"
                                  "\nrank: 1 size: 2\n"
                                  "\tmid0.0\n"
                                  "\tmid1.0\n"
                                  "\nrank: 2 (Leaves)size: 4\n"
                                  "\tleaf0.0\n"
                                  "\tleaf0.1\n"
                                  "\tleaf1.0\n"
                                  "\tleaf1.1\n"
                                  "\n\n\n"
                                  "on ranks (0, 1) -- connectivity groups: 1\n"
                                  "\tconnectivity group: <0.0>\n"
                                  "\t\tspines: 2 switches\n"));
  EXPECT_EQ(screen, "");
  EXPECT_EQ(logFile, "");
}

TEST_F(DumpTest, ANullLineEndsTheDumpWithoutAMessage) {
  GroupTwoPods();
  TestPeer::Lines(Group(1, 0)).insert(nullptr);
  EXPECT_EQ(Group(1, 0).DumpToStream(out), 4);
  EXPECT_EQ(TakeOutput(), WithIds("\tneighborhood: <1.0>\n"
                                  "\t\ttotal spine uplinks: 0\n"
                                  "\t\ttotal internal links: 0\n"
                                  "\t\tspines: 1 switches\n"
                                  "\t\t\tmid0.0\n"
                                  "\t\tlines: 3 switches\n"));
  EXPECT_EQ(screen, "");
  EXPECT_EQ(logFile, "");
}

// --- Flushing.

TEST_F(DumpTest, EveryLineEndIsFlushedButTheEmptyLinesBeforeTheGroups) {
  fabric.Switch("root").Switch("leaf").Cable("root", "leaf");
  FlushRecorder stream;
  FTTopology topology(&fabric.Build(), &stream, mergePercent);
  NodeSet roots = Nodes({"root"});
  ASSERT_EQ(topology.FillRanksFromRoots(roots), 0);
  ASSERT_EQ(topology.CreateNeighborhoods(errors), 0);
  ASSERT_EQ(topology.Dump(), 0);
  const std::string id = std::to_string(topology.GetNeighborhoods().at(0).at(0)->GetId());
  EXPECT_EQ(stream.Pieces(), (std::vector<std::string>{
                                 "\n", "\n", "\n", "rank: 0 (Roots)size: 1\n", "\troot\n", "\n",
                                 "rank: 1 (Leaves)size: 1\n", "\tleaf\n",
                                 "\n\n\non ranks (0, 1) -- neighborhoods: 1\n",
                                 "\tneighborhood: " + id + "\n", "\t\tspines: 1 switches\n",
                                 "\t\t\troot\n", "\t\tlines: 1 switches\n", "\t\t\tleaf\n", "\n"}));
}

TEST_F(DumpTest, TheTotalsAreFlushedToo) {
  for (const char* name : {"root", "mid", "leaf"}) fabric.Switch(name);
  fabric.Cable("root", "mid").Cable("mid", "leaf");
  FlushRecorder stream;
  FTTopology topology(&fabric.Build(), &stream, mergePercent);
  NodeSet roots = Nodes({"root"});
  ASSERT_EQ(topology.FillRanksFromRoots(roots), 0);
  ASSERT_EQ(topology.Validate(errors, message), 0);
  const std::size_t start = stream.Pieces().size();
  ASSERT_EQ(topology.Dump(), 0);
  const std::string id = std::to_string(topology.GetNeighborhoods().at(1).at(0)->GetId());
  const std::vector<std::string> pieces(
      stream.Pieces().begin() + static_cast<std::ptrdiff_t>(start), stream.Pieces().end());
  const std::vector<std::string> group{"\tneighborhood: " + id + "\n",
                                       "\t\ttotal spine uplinks: 1\n",
                                       "\t\ttotal internal links: 1\n",
                                       "\t\tspines: 1 switches\n",
                                       "\t\t\tmid\n",
                                       "\t\tlines: 1 switches\n",
                                       "\t\t\tleaf\n",
                                       "\n"};
  ASSERT_GE(pieces.size(), group.size());
  EXPECT_EQ(std::vector<std::string>(pieces.end() - static_cast<std::ptrdiff_t>(group.size()),
                                     pieces.end()),
            group);
}

}  // namespace
}  // namespace fabscope::internal
