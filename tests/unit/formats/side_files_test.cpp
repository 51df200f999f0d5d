#include "formats/side_files.h"

#include <cstdio>
#include <fstream>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <memory>
#include <string>
#include <unistd.h>
#include <vector>

#include "support/packed.h"

namespace fabscope::internal {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

// Switches 0x11, 0x12 and host 0x21, which have ranks 1, 2 and 9 and the FLID 100 each.
class SideFilesTest : public ::testing::Test {
 protected:
  SideFilesTest() {
    Add(0x11, NodeTypeSwitch, 1);
    Add(0x12, NodeTypeSwitch, 2);
    Add(0x21, NodeTypeCA, 9);
  }
  ~SideFilesTest() override { (void)std::remove(path.c_str()); }

  // The error without the path in front of it; an empty text when there is none.
  std::string Ranks(const std::string& bytes) { return Load(LoadRanks, bytes); }
  std::string Flids(const std::string& bytes) { return Load(LoadFlids, bytes); }

  int RankOf(std::uint64_t guid) { return Node(guid)->smdbRank; }
  std::vector<std::uint16_t> FlidsOf(std::uint64_t guid) { return Node(guid)->GetFlids(); }

  FabricBuilder builder;
  Warnings warnings;
  const std::string path = ::testing::TempDir() + "side_files_test_" + std::to_string(getpid()) +
                           "_" + ::testing::UnitTest::GetInstance()->current_test_info()->name();

 private:
  void Add(std::uint64_t guid, std::uint8_t type, std::uint8_t rank) {
    NodeSpec node;
    node.guid = guid;
    node.type = type;
    node.smdbRank = rank;
    node.flids = {100};
    ASSERT_EQ(builder.AddNode(node), std::nullopt);
  }

  template <typename Loader>
  std::string Load(Loader loader, const std::string& bytes) {
    std::ofstream(path, std::ios::binary) << bytes;
    const MaybeError error = loader(path, builder, warnings);
    if (!error) return "";
    EXPECT_EQ(error->file, path);
    return error->Text().substr(path.size() + 1);
  }

  const IBNode* Node(std::uint64_t guid) {
    if (!fabric_) fabric_ = builder.Build();
    return fabric_->getNodeByGuid(guid);
  }

  std::unique_ptr<IBFabric> fabric_;
};

// Ranks.

TEST_F(SideFilesTest, RanksReplaceAllThatTheFabricHad) {
  EXPECT_EQ(Ranks("guid,rank\n0x11,0\n"), "");
  EXPECT_EQ(RankOf(0x11), 0);
  EXPECT_EQ(RankOf(0x12), 255);
  EXPECT_EQ(RankOf(0x21), 255);
  EXPECT_THAT(warnings.Lines("r"), IsEmpty());
}

TEST_F(SideFilesTest, ARanksFileWithoutARankTakesAllRanksAway) {
  EXPECT_EQ(Ranks("guid,rank\n"), "");
  EXPECT_EQ(RankOf(0x11), 255);
  EXPECT_EQ(RankOf(0x12), 255);
}

TEST_F(SideFilesTest, TheColumnsMayComeInAnyOrder) {
  EXPECT_EQ(Ranks("rank,guid\n3,0x11\n"), "");
  EXPECT_EQ(RankOf(0x11), 3);
}

TEST_F(SideFilesTest, TheLastLineAboutASwitchHolds) {
  EXPECT_EQ(Ranks("guid,rank\n0x11,1\n0x12,7\n0x0011,4\n"), "");
  EXPECT_EQ(RankOf(0x11), 4);
  EXPECT_EQ(RankOf(0x12), 7);
}

TEST_F(SideFilesTest, ARankIs0To255) {
  EXPECT_EQ(Ranks("guid,rank\n0x11,0\n0x12,255\n"), "");
  EXPECT_EQ(RankOf(0x11), 0);
  EXPECT_EQ(RankOf(0x12), 255);
  const std::string message = "2:6: not a rank, expected a number from 0 to 255";
  for (const std::string value : {"256", "-1", "one", "", "1.0", "0x1", "1 2", "+1"}) {
    EXPECT_EQ(Ranks("guid,rank\n0x11," + value + "\n"), message) << value;
  }
}

TEST_F(SideFilesTest, CommentsAndBlankLinesMayStandAnywhere) {
  EXPECT_EQ(Ranks("# ranks\n\n  # more\nguid,rank\n\n#0x11,5\n0x11,1\n \t\n0x12,2"), "");
  EXPECT_EQ(RankOf(0x11), 1);
  EXPECT_EQ(RankOf(0x12), 2);
}

TEST_F(SideFilesTest, BlanksAroundFieldsCarriageReturnsAndAByteOrderMarkDoNotCount) {
  EXPECT_EQ(Ranks("\xef\xbb\xbf guid ,\trank\r\n 0x11 , 1 \r\n0x12,2\r\n"), "");
  EXPECT_EQ(RankOf(0x11), 1);
  EXPECT_EQ(RankOf(0x12), 2);
}

TEST_F(SideFilesTest, AGuidThatIsNoSwitchIsAWarning) {
  EXPECT_EQ(Ranks("# a\nguid,rank\n0x21,1\n0x11,1\n0x99,2\n"), "");
  EXPECT_THAT(warnings.Lines("r.csv"),
              ElementsAre("r.csv:3: warning: 0x0000000000000021 is not a switch of the fabric",
                          "r.csv:5: warning: 0x0000000000000099 is not a switch of the fabric"));
  EXPECT_EQ(RankOf(0x21), 255);
  EXPECT_EQ(RankOf(0x11), 1);
}

TEST_F(SideFilesTest, OfManyGuidsThatAreNoSwitchTenAreShown) {
  std::string text = "guid,rank\n";
  for (int i = 0; i < 15; ++i) text += "0x99,1\n";
  EXPECT_EQ(Ranks(text + "0x12,3\n"), "");
  const std::vector<std::string> lines = warnings.Lines("r.csv");
  ASSERT_EQ(lines.size(), 11U);
  EXPECT_EQ(lines[9], "r.csv:11: warning: 0x0000000000000099 is not a switch of the fabric");
  EXPECT_EQ(lines[10], "r.csv: warning: 5 more: GUID that is not a switch of the fabric");
  EXPECT_EQ(RankOf(0x12), 3);
}

TEST_F(SideFilesTest, AMalformedLineAboutNoSwitchIsAnErrorAllTheSame) {
  EXPECT_EQ(Ranks("guid,rank\n0x99,256\n"), "2:6: not a rank, expected a number from 0 to 255");
}

TEST_F(SideFilesTest, AGuidHas0xAndOneToSixteenDigits) {
  const std::string message = "2:2: not a GUID, expected 0x and 1 to 16 hexadecimal digits";
  for (const std::string guid : {"11", "0x", "0x1g", "0x12345678901234567", "leaf1", "\"0x11\""}) {
    EXPECT_EQ(Ranks("guid,rank\n " + guid + ",1\n"), message) << guid;
  }
  EXPECT_EQ(Ranks("rank,guid\n1, 11\n"),
            "2:4: not a GUID, expected 0x and 1 to 16 hexadecimal digits");
}

TEST_F(SideFilesTest, ALineHasAFieldForEachColumn) {
  EXPECT_EQ(Ranks("guid,rank\n0x11\n"), "2:1: expected 2 fields as in the header, found 1");
  EXPECT_EQ(Ranks("guid,rank\n 0x11,1,\n"), "2:2: expected 2 fields as in the header, found 3");
}

TEST_F(SideFilesTest, AHeaderLineComesFirst) {
  const std::string message = "not the header line, expected the columns \"guid,rank\"";
  EXPECT_EQ(Ranks("\n0x11,1\n"), "2:1: " + message);
  EXPECT_EQ(Ranks("guid\n"), "1:1: " + message);
  EXPECT_EQ(Ranks(" guid,flid\n"), "1:2: " + message);
  EXPECT_EQ(Ranks("guid,guid\n"), "1:1: " + message);
  EXPECT_EQ(Ranks("rank,rank\n"), "1:1: " + message);
  EXPECT_EQ(Ranks("guid,rank,name\n"), "1:1: " + message);
}

TEST_F(SideFilesTest, AFileWithoutAHeaderLineIsAnError) {
  const std::string message = "the file has no header line, expected \"guid,rank\"";
  EXPECT_EQ(Ranks(""), "1:1: " + message);
  EXPECT_EQ(Ranks("# nothing\n\n"), "3:1: " + message);
}

// What stands in a packed file that was cut may not be all that was written.
TEST_F(SideFilesTest, AFileThatCannotBeReadToItsEndIsAnError) {
  const std::string packed = Packed("guid,rank\n0x11,1\n");
  EXPECT_EQ(Ranks(packed), "");
  EXPECT_EQ(Ranks(packed.substr(0, packed.size() - 1)),
            "3:1: the gzip data is damaged or cut short: this is the last place that could be "
            "unpacked");
}

TEST_F(SideFilesTest, AMissingFileIsAnError) {
  const MaybeError error = LoadRanks("/nowhere/ranks.csv", builder, warnings);
  ASSERT_NE(error, std::nullopt);
  EXPECT_EQ(error->Text(), "/nowhere/ranks.csv: No such file or directory");
}

// FLIDs.

TEST_F(SideFilesTest, FlidsAreAddedToThoseOfTheFabric) {
  EXPECT_EQ(Flids("guid,flid\n0x11,300\n0x11,7\n0x11,300\n0x12,100\n"), "");
  EXPECT_THAT(FlidsOf(0x11), ElementsAre(7, 100, 300));
  EXPECT_THAT(FlidsOf(0x12), ElementsAre(100));
  EXPECT_THAT(FlidsOf(0x21), ElementsAre(100));
  EXPECT_EQ(RankOf(0x11), 1);
}

TEST_F(SideFilesTest, AFlidIs0To65535) {
  EXPECT_EQ(Flids("flid,guid\n0,0x11\n65535,0x11\n"), "");
  const std::string message = ": not a flid, expected a number from 0 to 65535";
  EXPECT_EQ(Flids("flid,guid\n65536,0x11\n"), "2:1" + message);
  EXPECT_EQ(Flids("guid,flid\n0x11,-1\n"), "2:6" + message);
  EXPECT_THAT(FlidsOf(0x11), ElementsAre(0, 100, 65535));
}

TEST_F(SideFilesTest, AFlidOfNoSwitchIsAWarning) {
  EXPECT_EQ(Flids("guid,flid\n0x21,1\n"), "");
  EXPECT_THAT(warnings.Lines("f.csv"),
              ElementsAre("f.csv:2: warning: 0x0000000000000021 is not a switch of the fabric"));
  EXPECT_THAT(FlidsOf(0x21), ElementsAre(100));
}

TEST_F(SideFilesTest, AFlidsFileHasItsOwnHeader) {
  EXPECT_EQ(Flids("guid,rank\n"), "1:1: not the header line, expected the columns \"guid,flid\"");
  EXPECT_EQ(Flids(""), "1:1: the file has no header line, expected \"guid,flid\"");
}

}  // namespace
}  // namespace fabscope::internal
