// How outputs tell each kind of finding: as data, and each of its faults in words.

#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "reports/fault_text.h"
#include "reports/json_findings.h"
#include "support/test_fabric.h"

namespace fabscope::internal {
namespace {

class FindingKindsTest : public ::testing::Test {
 protected:
  FindingKindsTest() { fabric.Switch("a").Switch("b").Link("a", 3, "b", 15); }

  static std::string Json(const Finding& finding) {
    std::string json;
    AppendFinding(json, finding);
    return json;
  }
  std::string Text(const Finding& finding, const std::vector<Place>& places, int links = 0) {
    return FaultText({&finding, places, links}, NodeNames(fabric.Build()));
  }

  const IBNode* A() { return fabric["a"]; }
  const IBNode* B() { return fabric["b"]; }

  TestFabric fabric;
};

TEST_F(FindingKindsTest, MissingLink) {
  EXPECT_EQ(
      Json(MissingLink{7, A(), B(), true}),
      R"({"kind":"missing-link","level":3,"groupKind":"neighborhood","groups":[7],"issues":0,)"
      R"("spine":"0x0000000000000001","line":"0x0000000000000002"})");
  EXPECT_EQ(Text(MissingLink{0, A(), B(), true}, {{A(), 0}, {B(), 0}}),
            "-E- missing link between a and b");
}

TEST_F(FindingKindsTest, InvalidLinkInsideAGroupNamesItOnce) {
  const FTLinkIssue link{B(), 15, 1, A(), 3, 2};
  EXPECT_EQ(Json(InvalidLink{4, 4, link, false}),
            R"({"kind":"invalid-link","level":3,"groupKind":"connectivity group","groups":[4],)"
            R"("issues":0,"ends":[{"switch":"0x0000000000000002","port":15,"rank":1},)"
            R"({"switch":"0x0000000000000001","port":3,"rank":2}]})");
}

TEST_F(FindingKindsTest, InvalidLinkBetweenGroupsNamesThemInTheOrderOfItsEnds) {
  const FTLinkIssue link{B(), 15, 0, A(), 3, 0};
  EXPECT_EQ(Json(InvalidLink{5, 4, link, true}),
            R"({"kind":"invalid-link","level":2,"groupKind":"neighborhood","groups":[5,4],)"
            R"("issues":0,"ends":[{"switch":"0x0000000000000002","port":15,"rank":0},)"
            R"({"switch":"0x0000000000000001","port":3,"rank":0}]})");
}

TEST_F(FindingKindsTest, AnInvalidLinkInWordsNamesItsEnds) {
  FTLinkIssue link{A(), 1, 1, B(), 2, 1};
  EXPECT_EQ(Text(InvalidLink{0, 0, link, true}, {{A(), 1}, {B(), 2}}),
            "-E- invalid link between a port: 1 and b port: 2");
  link.rank1 = link.rank2 = 0;
  EXPECT_EQ(Text(InvalidLink{0, 0, link, true}, {{A(), 1}, {B(), 2}}),
            "-W- invalid link between a port: 1 and b port: 2");
}

TEST_F(FindingKindsTest, UnevenLinks) {
  UnevenLinks found{};
  found.group = 1;
  found.expected = 9;
  found.others = {{8, {A()}}, {0, {B(), A()}}};
  found.ofSpines = true;
  EXPECT_EQ(Json(found),
            R"({"kind":"uneven-links","level":3,"groupKind":"connectivity group","groups":[1],)"
            R"("issues":3,"set":"spines","direction":"down","expected":9,"counts":[)"
            R"({"count":8,"switches":["0x0000000000000001"]},)"
            R"({"count":0,"switches":["0x0000000000000002","0x0000000000000001"]}]})");
  found.ofSpines = false;
  found.isUp = true;
  EXPECT_NE(Json(found).find(R"("set":"lines","direction":"up")"), std::string::npos);
}

TEST_F(FindingKindsTest, UnevenLinksInWordsSayAmongWhichSwitchesTheyDiffer) {
  EXPECT_EQ(Text(UnevenLinks{0, 4, {}, true, true, false}, {{A(), 0}}, 3),
            "-E- a has 3 uplinks, expected 4 among the spines of its connectivity group");
  EXPECT_EQ(Text(UnevenLinks{0, 4, {}, false, false, true}, {{B(), 0}}, 3),
            "-E- b has 3 downlinks, expected 4 among the lines of its neighborhood");
}

TEST_F(FindingKindsTest, SuspectedBlocking) {
  EXPECT_EQ(Json(SuspectedBlocking{1, 8, 9, true}),
            R"({"kind":"suspected-blocking","level":2,"groupKind":"neighborhood","groups":[1],)"
            R"("issues":1,"uplinks":8,"internalLinks":9})");
  EXPECT_EQ(Text(SuspectedBlocking{0, 4, 8, true}, {{B(), 0}}),
            "-W- suspected blocking in the neighborhood of b: 4 links go up, 8 come from below");
  EXPECT_EQ(Text(SuspectedBlocking{0, 4, 8, false}, {{B(), 0}}),
            "-W- suspected blocking in the connectivity group of b: 4 links go up, 8 come from "
            "below");
}

TEST_F(FindingKindsTest, AsymmetricAPorts) {
  const std::vector<const IBPort*> ports{B()->getPort(15), A()->getPort(3)};
  EXPECT_EQ(Json(AsymmetricAPorts{1, ports, true, true}),
            R"({"kind":"asymmetric-aports","level":2,"groupKind":"neighborhood","groups":[1],)"
            R"("issues":2,"toHosts":true,)"
            R"("ports":[["0x0000000000000002",15],["0x0000000000000001",3]]})");
  EXPECT_EQ(Text(AsymmetricAPorts{0, {}, true, true}, {{B(), 3}}),
            "-W- asymmetric aggregated port to a host at b port: 3");
  EXPECT_EQ(Text(AsymmetricAPorts{0, {}, false, true}, {{B(), 3}}),
            "-W- asymmetric aggregated port at b port: 3");
}

TEST_F(FindingKindsTest, SharedFlid) {
  EXPECT_EQ(Json(SharedFlid{65535, {2, 3, 5}}),
            R"({"kind":"shared-flid","level":2,"groupKind":"neighborhood","groups":[2,3,5],)"
            R"("issues":1,"flid":65535})");
  EXPECT_EQ(Text(SharedFlid{7, {0, 1, 2}}, {{B(), 0}, {A(), 0}, {B(), 0}}),
            "-W- FLID 7 is in the neighborhoods of b, a and b");
}

}  // namespace
}  // namespace fabscope::internal
