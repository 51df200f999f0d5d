#include "reports/json_findings.h"

#include <gtest/gtest.h>
#include <string>

#include "support/test_fabric.h"

namespace fabscope::internal {
namespace {

class JsonFindingsTest : public ::testing::Test {
 protected:
  JsonFindingsTest() { fabric.Switch("a").Switch("b").Link("a", 3, "b", 15); }

  static std::string Json(const Finding& finding) {
    std::string json;
    AppendFinding(json, finding);
    return json;
  }

  TestFabric fabric;
};

TEST_F(JsonFindingsTest, MissingLink) {
  EXPECT_EQ(
      Json(MissingLink{7, fabric["a"], fabric["b"], true}),
      R"({"kind":"missing-link","level":3,"groupKind":"neighborhood","groups":[7],"issues":0,)"
      R"("spine":"0x0000000000000001","line":"0x0000000000000002"})");
}

TEST_F(JsonFindingsTest, InvalidLinkInsideAGroupNamesItOnce) {
  const FTLinkIssue link{fabric["b"], 15, 1, fabric["a"], 3, 2};
  EXPECT_EQ(Json(InvalidLink{4, 4, link, false}),
            R"({"kind":"invalid-link","level":3,"groupKind":"connectivity group","groups":[4],)"
            R"("issues":0,"ends":[{"switch":"0x0000000000000002","port":15,"rank":1},)"
            R"({"switch":"0x0000000000000001","port":3,"rank":2}]})");
}

TEST_F(JsonFindingsTest, InvalidLinkBetweenGroupsNamesThemInTheOrderOfItsEnds) {
  const FTLinkIssue link{fabric["b"], 15, 0, fabric["a"], 3, 0};
  EXPECT_EQ(Json(InvalidLink{5, 4, link, true}),
            R"({"kind":"invalid-link","level":2,"groupKind":"neighborhood","groups":[5,4],)"
            R"("issues":0,"ends":[{"switch":"0x0000000000000002","port":15,"rank":0},)"
            R"({"switch":"0x0000000000000001","port":3,"rank":0}]})");
}

TEST_F(JsonFindingsTest, UnevenLinks) {
  UnevenLinks found{};
  found.group = 1;
  found.expected = 9;
  found.others = {{8, {fabric["a"]}}, {0, {fabric["b"], fabric["a"]}}};
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

TEST_F(JsonFindingsTest, SuspectedBlocking) {
  EXPECT_EQ(Json(SuspectedBlocking{1, 8, 9, true}),
            R"({"kind":"suspected-blocking","level":2,"groupKind":"neighborhood","groups":[1],)"
            R"("issues":1,"uplinks":8,"internalLinks":9})");
}

TEST_F(JsonFindingsTest, AsymmetricAPorts) {
  const std::vector<const IBPort*> ports{fabric["b"]->getPort(15), fabric["a"]->getPort(3)};
  EXPECT_EQ(Json(AsymmetricAPorts{1, ports, true, true}),
            R"({"kind":"asymmetric-aports","level":2,"groupKind":"neighborhood","groups":[1],)"
            R"("issues":2,"toHosts":true,)"
            R"("ports":[["0x0000000000000002",15],["0x0000000000000001",3]]})");
}

TEST_F(JsonFindingsTest, SharedFlid) {
  EXPECT_EQ(Json(SharedFlid{65535, {2, 3, 5}}),
            R"({"kind":"shared-flid","level":2,"groupKind":"neighborhood","groups":[2,3,5],)"
            R"("issues":1,"flid":65535})");
}

}  // namespace
}  // namespace fabscope::internal
